#pragma once

#include "../platform/export.h"

/// Vectors and points: three consecutive doubles x, y, z. Arguments are not checked for null.

/// The dot product of `a` and `b`, summed x, y, z from the left.
KORVALE_API double dot_product(double* a, double* b);

/// out = a x b. Each component is stored as soon as it is known, so `out` must be neither `a` nor `b`.
KORVALE_API void cross_product(double* a, double* b, double* out);

/// The length of `v`.
KORVALE_API double norm(double* v);

/// Divides `v` by its length.
///
/// Returns 1, or -1 for a length below 1e-06 (`v` is untouched then). A length that is not a number is not caught: the
/// components become NaN and the result is 1.
KORVALE_API int normalize(double* v);

/// The angle between `a` and `b` in radians: the arc cosine of their dot product over the product of their lengths.
///
/// Deliberate: the cosine is not clamped and zero lengths are not caught; both give NaN.
KORVALE_API double angle(double* a, double* b);
