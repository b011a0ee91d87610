#pragma once

#include "door/internal/views.h"
#include "math/internal/vector.h"

// Vectors where a value reads better than an array to fill.
namespace korvale::door {

inline Point minus(const Point& a, const Point& b)
{
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}

inline Point plus(const Point& a, double s, const Point& b)
{
    return {a.x + s * b.x, a.y + s * b.y, a.z + s * b.z};
}

inline double dot(const Point& a, const Point& b)
{
    return math::dot(a.data(), b.data());
}

inline Point cross(const Point& a, const Point& b)
{
    Point c;
    math::cross(a.data(), b.data(), c.data());
    return c;
}

inline double length(const Point& v)
{
    return math::length(v.data());
}

/// The vector at length 1, or as it is where it has no direction.
inline Point unit_of(const Point& v)
{
    Point u = v;
    math::make_unit(u.data());
    return u;
}

} // namespace korvale::door
