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

/// The outline at height z.
std::vector<Vec3> lifted(const Outline& outline, double z = 0);

/// Every outline at height 0, outer and holes.
std::vector<std::vector<Vec3>> lifted(const Shape& shape);

/// The x and y of points: of the gallery's own, or of the library's.
template <class Points>
Outline plan(const Points& points)
{
    Outline outline;
    for (const auto& [x, y, z] : points)
        outline.push_back({x, y});
    return outline;
}

} // namespace gallery
