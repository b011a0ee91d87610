#pragma once

#include "../platform/export.h"
#include "transform.h"

/// The rotation by the angles radians[3] about x first, then y, then z: Rz (Ry Rx).
KORVALE_API void rotation_matrix(double* radians, Xfm out);

/// `rotation_matrix` of degrees[3].
///
/// Deliberate: degrees are converted with the short factor 0.0174533.
KORVALE_API void RotationMatrix(double* degrees, Xfm out);

/// `RotationMatrix` under a second name.
KORVALE_API void RotateMatrix(double* degrees, Xfm out);

/// T (R S): scales by scale[3], then turns by rot[3] in radians, then moves by trans[3].
KORVALE_API void SRT2Transform(double* scale, double* rot, double* trans, Xfm out);

/// The inverse of `SRT2Transform` for the same triple, S' (R^T T').
///
/// Deliberate: a scale strictly between -1e-06 and 1e-06 is inverted to 1000000, so that the result stays finite.
KORVALE_API void SRT2InvTransform(double* scale, double* rot, double* trans, Xfm out);

/// Takes m = T R S apart into scale[3], rot[3] in radians and trans[3].
///
/// Deliberate: at the pole, where the cosine of ry is below 1e-06, rx is 0 and ry the short constant -1.5707963 or
/// 1.5707963. A zero column is not caught and gives NaN.
KORVALE_API void Transform2SRT(Xfm m, double* scale, double* rot, double* trans);
