#pragma once

#include "../platform/export.h"
#include "transform.h"

/// The transform from world points into the frame at `origin` whose z axis runs along `zdir`, whose x axis is
/// ref x z and whose y axis is z x x; out16 is a flat matrix [16].
///
/// Returns 1, or -1 with nothing written when `zdir` or the cross product is shorter than 1e-06.
KORVALE_API int orientation_xfm(double* origin, double* zdir, double* ref, double* out16);

/// The transform `fwd` from world points into the frame at `origin` with the axes `xdir` (made perpendicular to z) and
/// `zdir`, and, unless `rev` is null, its inverse.
///
/// Returns 1, 0 when `rev` is null, or -1 with nothing written when a direction is shorter than 1e-06.
///
/// Deliberate: the x axis is not normalised again after it was made perpendicular, so an `xdir` parallel to `zdir`
/// gives an x axis of zero, and `rev` is the inverse only where the axes are orthonormal.
KORVALE_API int orientation_xfm_and_reverse(double* origin, double* xdir, double* zdir, Xfm fwd, Xfm rev);
