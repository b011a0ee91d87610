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
};

/// Tells where outlines meet themselves. Where they do so only beside points that are one but for rounding, or for
/// events of a sweep at nearly the same time, these become one to the bit, and nothing meets.
void look_for_crossing(const LinePlane& plane, const korvale_band_options& how, Band& band);

} // namespace korvale::door
