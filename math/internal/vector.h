#pragma once

#include <cmath>

#include "platform/internal/lanes3.h"

// The vector arithmetic of the library, inline. The exported functions of math/vector.h are doors to these.
namespace korvale::math {

/// A vector shorter than this has no direction.
constexpr double kShortestVector = 1e-06;

inline double dot(const double* a, const double* b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

/// `out` is written component by component and must be neither `a` nor `b`.
inline void cross(const double* a, const double* b, double* out)
{
    out[0] = a[1] * b[2] - a[2] * b[1];
    out[1] = a[2] * b[0] - a[0] * b[2];
    out[2] = a[0] * b[1] - a[1] * b[0];
}

inline double length(const double* v)
{
    return std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
}

/// Makes `v` a unit vector. False, with `v` untouched, when it is too short; a NaN length counts as long enough.
inline bool make_unit(double* v)
{
    const double n = length(v);
    if (n < kShortestVector)
        return false;
    v[0] /= n;
    v[1] /= n;
    v[2] /= n;
    return true;
}

/// Reads `v` one double at a time. Hosts have often just stored it that way, and a 16-byte load cannot be forwarded
/// from two 8-byte stores: it stalls until both have reached the cache. `volatile` keeps the compiler from combining
/// the loads.
inline Lanes3<double> vector_of(const double* v)
{
    const volatile double* const numbers = v;
    return {numbers[0], numbers[1], numbers[2]};
}

/// out = a + b; `out` may be either.
inline void add(const double* a, const double* b, double* out)
{
    out[0] = a[0] + b[0];
    out[1] = a[1] + b[1];
    out[2] = a[2] + b[2];
}

/// out = a - b; `out` may be either.
inline void subtract(const double* a, const double* b, double* out)
{
    out[0] = a[0] - b[0];
    out[1] = a[1] - b[1];
    out[2] = a[2] - b[2];
}

inline void copy3(const double* from, double* to)
{
    to[0] = from[0];
    to[1] = from[1];
    to[2] = from[2];
}

} // namespace korvale::math
