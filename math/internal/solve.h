#pragma once

#include "platform/internal/namespaces.h"

namespace korvale::math {

/// A 2x2 system whose determinant lies strictly between minus this and this counts as singular.
constexpr double kSingularDeterminant = 1e-06;

inline double determinant(double m00, double m01, double m10, double m11)
{
    return m00 * m11 - m01 * m10;
}

/// Solves the system of rows (a_r0, a_r1, b_r). False, with nothing written, when it is singular.
inline bool solve_two_by_two(const double (*m)[3], double* x, double* y)
{
    const double d = determinant(m[0][0], m[0][1], m[1][0], m[1][1]);
    if (-kSingularDeterminant < d && d < kSingularDeterminant)
        return false;
    *x = determinant(m[0][2], m[0][1], m[1][2], m[1][1]) / d;
    *y = determinant(m[0][0], m[0][2], m[1][0], m[1][2]) / d;
    return true;
}

} // namespace korvale::math
