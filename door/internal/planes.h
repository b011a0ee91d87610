#pragma once

#include "door/internal/views.h"
#include "math/transform.h"

// Planes of outlines and paths, found without random numbers and for points of any size.
namespace korvale::door {

/// How large points are.
struct Extent {
    double half;     ///< of how far they reach along the axis on which they reach furthest: the whole may be infinite
    double greatest; ///< coordinate, without its sign
};

/// Of 1 or more points.
Extent extent_of(std::span<const Point> points);

/// The power of two that brings points into the sizes for which the library's absolute thresholds are meant: 1 where
/// they reach 1 to 2^24 along the axis on which they reach furthest, else such that they reach 1 to 2, or 2^23 to 2^24.
/// Thresholds of small outlines are relative to the outline that way, and no other bit changes.
///
/// `distance` is what goes along with the points; it stays finite.
///@{
double scale_for(const Extent& extent, double distance = 0.0);
inline double scale_for(std::span<const Point> points, double distance = 0.0)
{
    return scale_for(extent_of(points), distance);
}
///@}

/// The points times a power of two: the points themselves where that is 1, else a copy in `room`, which may be where
/// they are.
///@{
std::span<const Point> scaled(std::span<const Point> points, double scale, Point* room);
std::span<const Point> scaled(std::span<const Point> points, double scale, Vector<Point>& room);
///@}

/// Writes points moved by a transform to `to`, which may be where they are.
void carry(Xfm& xfm, std::span<const Point> from, Point* to);

/// A transform into the plane z = 0 and its way back.
struct Planes {
    Xfm to_plane;
    Xfm from_plane;

    /// Those of the points times a power of two.
    Planes scaled(double scale) const;
};

/// Lays 1 or more points into the plane z = 0. A closed outline runs counter-clockwise there.
///@{
Planes flatten(std::span<const Point> points, bool closed = true);
inline Planes flatten(const PointsIn& points, bool closed = true)
{
    return flatten(points.points(), closed);
}
///@}

/// Writes a frame for each of 2 or more points, one in a row of 16 numbers.
void find_frames(std::span<const Point> path, bool closed, Xfm* frames);

} // namespace korvale::door
