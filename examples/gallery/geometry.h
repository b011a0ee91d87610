#pragma once

#include <array>
#include <cmath>
#include <vector>

// The gallery's own points, outlines and boxes. The library takes plain doubles; a host has types of its own.
namespace gallery {

struct Point {
    double x = 0, y = 0;
};

inline Point operator+(Point a, Point b)
{
    return {a.x + b.x, a.y + b.y};
}

inline Point operator-(Point a, Point b)
{
    return {a.x - b.x, a.y - b.y};
}

inline Point operator*(double s, Point a)
{
    return {s * a.x, s * a.y};
}

/// Positive when c lies to the left of the line from a to b.
inline double side(Point a, Point b, Point c)
{
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

struct Vec3 {
    double x = 0, y = 0, z = 0;
};

inline Vec3 operator+(Vec3 a, Vec3 b)
{
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}

inline Vec3 operator-(Vec3 a, Vec3 b)
{
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}

inline Vec3 operator*(double s, Vec3 a)
{
    return {s * a.x, s * a.y, s * a.z};
}

inline double dot(Vec3 a, Vec3 b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

inline Vec3 cross(Vec3 a, Vec3 b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

inline double length(Vec3 a)
{
    return std::sqrt(dot(a, a));
}

/// `a` made one long; a vector without length stays as it is.
inline Vec3 unit(Vec3 a)
{
    const double l = length(a);
    return l > 0 ? (1 / l) * a : a;
}

/// A closed outline or an open polyline; a closed one does not repeat its first point.
using Outline = std::vector<Point>;

/// An outer outline followed by its holes.
using Shape = std::vector<Outline>;

double signed_area(const Outline& outline);

struct Box2 {
    Point low{1e300, 1e300}, high{-1e300, -1e300};

    void include(Point p);
    void include(const Outline& outline);
    Point size() const { return high - low; }
    Point middle() const { return 0.5 * (low + high); }
};

/// Carries the plane, y upwards, into a rectangle of a picture, y downwards, without distortion.
class View {
public:
    /// `content` comes to lie in the middle of the rectangle, as large as it fits.
    View(const Box2& content, Point corner, Point size);

    Point operator()(Point p) const;
    Outline operator()(const Outline& outline) const;
    Shape operator()(const Shape& shape) const;

private:
    Point world_middle_, picture_middle_;
    double scale_;
};

/// Cuts a shape into triangles, by clipping ears after its holes have been joined to the outer outline.
///
/// The result numbers the points of all outlines in their order. The outer outline runs counter-clockwise, holes
/// clockwise, and so do the triangles run counter-clockwise. Points that coincide are allowed; a shape that crosses
/// itself still gets triangles, some of which overlap.
std::vector<std::array<int, 3>> triangulate(const Shape& shape);

} // namespace gallery
