#pragma once

#include "../platform/export.h"

/// The determinant of a 2x2 matrix.
KORVALE_API double TwoByTwoDeterminant(double m[2][2]);

/// Solves the 2x2 system whose row r is (a_r0, a_r1, b_r), for a_r0 x + a_r1 y = b_r, by Cramer's rule.
///
/// Returns 1, or 0 with nothing written when the determinant lies strictly between -1e-06 and 1e-06. A determinant of
/// NaN is not caught.
KORVALE_API int SolveTwoByTwo(double m[2][3], double* x, double* y);
