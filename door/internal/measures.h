#pragma once

#include <algorithm>
#include <cmath>

#include "door/internal/vectors.h"

// What triangles measure, in any size: lengths are brought near 1 by powers of two, which rounds nothing.
namespace korvale::door {

/// 2^-exponent, or the largest power of two.
inline double shrinking(int exponent)
{
    return std::ldexp(1.0, std::min(-exponent, 1023));
}

inline double largest_of(const Point& v)
{
    return std::max({std::fabs(v.x), std::fabs(v.y), std::fabs(v.z)});
}

inline Point half_way(const Point& a, const Point& b)
{
    return {0.5 * b.x - 0.5 * a.x, 0.5 * b.y - 0.5 * a.y, 0.5 * b.z - 0.5 * a.z};
}

inline Point times(double s, const Point& v)
{
    return {s * v.x, s * v.y, s * v.z};
}

/// Six times the volume inside triangles; negative where they are turned inside out. `corner(t, k)` is corner k of
/// triangle t.
template <class Corner>
double sixfold_volume(size_t triangles, Corner corner)
{
    if (triangles == 0)
        return 0.0;
    const Point& origin = corner(0, 0);
    double reach = 0.0;
    for (size_t t = 0; t < triangles; ++t)
        for (size_t k = 0; k < 3; ++k)
            reach = std::max(reach, largest_of(half_way(origin, corner(t, k))));
    if (reach == 0.0)
        return 0.0;
    const int exponent = std::ilogb(reach);
    const double scale = shrinking(exponent);
    const auto from_origin = [&](size_t t, size_t k) { return times(scale, half_way(origin, corner(t, k))); };
    double sum = 0.0;
    for (size_t t = 0; t < triangles; ++t)
        sum += dot(from_origin(t, 0), cross(from_origin(t, 1), from_origin(t, 2)));
    return std::ldexp(sum, 3 * (exponent + 1));
}

} // namespace korvale::door
