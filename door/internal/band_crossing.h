#pragma once

#include "door/internal/heap.h"
#include "door/internal/side.h"
#include "door/internal/vectors.h"

// Bands along lines, and where their outlines meet themselves.
namespace korvale::door {

/// The plane in which a band lies.
struct LinePlane {
    Point normal;
    Point x, y;
    bool is_flat;     ///< the line lies in the plane, up to rounding
    bool is_straight; ///< so seen from the normal
    double extent;    ///< how far the line gets from its first point

    Place place_of(const Point& p) const { return {dot(p, x), dot(p, y)}; }

    /// A point above or below another one, as high over the plane as a third one. Of a line in the plane it is the
    /// point itself.
    Point above(const Point& p, const Point& as_high) const
    {
        return is_flat ? p : plus(plus(p, -dot(p, normal), normal), dot(as_high, normal), normal);
    }
};

/// A band in the making, where its host wants it once all is done.
struct Band {
    Vector<Point> outline;
    Vector<uint8_t> removed, narrowed;
    bool collapsed = true; // until a side has a border
    bool crosses = false;
    int64_t crossing[2] = {0, 0};
    Vector<Point> caps[2] = {}; ///< of its outline at the beginning and at the end of the line

    /// The outline with its caps.
    Vector<Point> whole() const
    {
        const auto half = outline.begin() + static_cast<std::ptrdiff_t>(outline.size() / 2);
        Vector<Point> points(outline.begin(), half);
        points.insert(points.end(), caps[1].begin(), caps[1].end());
        points.insert(points.end(), half, outline.end());
        points.insert(points.end(), caps[0].begin(), caps[0].end());
        return points;
    }
};

/// Tells where outlines meet themselves. Where they do so only beside points that are one but for rounding, or for
/// events of a sweep at nearly the same time, these become one to the bit, and nothing meets.
void look_for_crossing(const LinePlane& plane, const korvale_band_options& how, Band& band);

/// The same of an open band with its caps, once that is done.
void look_for_crossing_of_caps(const LinePlane& plane, Band& band);

} // namespace korvale::door
