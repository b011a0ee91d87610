#pragma once

#include "transform.hpp"

namespace korvale {

/// How `flatten` finds the plane.
struct FlattenOptions {
    bool closed = true;       ///< the path is an outline; else an open polyline
    bool by_extremes = false; ///< take the plane from the extremes of the bounds, whichever way the outline then runs
};

/// A transform into the plane z = 0 and its way back.
struct Flattening {
    Transform to_plane;   ///< into z = 0
    Transform from_plane; ///< and back
};

/// The transforms that lay a planar outline into the plane z = 0, running counter-clockwise there, and carry it back.
///
/// Measure in units in which an outline is about 1 or larger; lengths below 1e-06 have no direction here.
///
/// ```
/// const korvale::Flattening way = korvale::flatten(outline);
/// way.to_plane.apply(outline); // z is 0 now
/// // ... work in two dimensions ...
/// way.from_plane.apply(outline);
/// ```
///
/// Throws `Error` without points, for numbers that are not finite, and, by extremes, where all points lie on one line.
inline Flattening flatten(PointView path, const FlattenOptions& options = {})
{
    detail::require_points("flatten", "path", path, 1);
    Flattening way;
    if (!options.by_extremes) {
        DATAstruct record = detail::record_over(path);
        DATA_to_xy_xfms(&record, way.to_plane.m, way.from_plane.m, options.closed);
        return way;
    }
    Data record;
    DataInitialize(&record);
    record.dim = 3;
    record.count = static_cast<std::int32_t>(path.size());
    record.dvals = detail::unconst(path.data());
    if (data_to_xy_xfms(&record, way.to_plane.m, way.from_plane.m, options.closed) != 1)
        throw Error("flatten", "path", "span a plane", "its points lie on one line or too close together");
    return way;
}

/// Writes one frame for every point of a polyline to `output`, which has as many.
///
/// The columns of a frame are its x axis, y axis and z axis and the point, so it carries the plane z = 0 to the point.
/// z points back along the path and halves the angle at a joint; x turns as little as it can from frame to frame.
/// `closed` joins the last point to the first (do not repeat it) and spreads the turn left over evenly over all frames.
///
/// In a planar loop the turn left over is nothing but rounding and can be no number; the loop's frames then come from
/// an open path that runs once around, from the last point over all points to the first.
inline void frames(PointView path, std::span<Transform> output, bool closed = false)
{
    detail::require_points("frames", "path", path, 2);
    if (output.size() != path.size())
        throw Error("frames", "output", "have " + detail::counted(path.size(), "frame"),
                    "it has " + detail::text_of(output.size()));
    DATAstruct record = detail::record_over(path);
    PATH2xfm(&record, closed, &output[0].m);
    if (!closed || !detail::is_nan(output[1].m[0][0]))
        return;

    const std::size_t n = path.size();
    std::vector<double> around(3 * (n + 2));
    std::ranges::copy(path.coordinates(), around.begin() + 3);
    std::ranges::copy(path[n - 1], around.begin());
    std::ranges::copy(path[0], around.end() - 3);
    std::vector<Transform> open(n + 2);
    record = detail::record_over(PointView(around));
    PATH2xfm(&record, 0, &open[0].m);
    std::copy_n(open.begin() + 1, n, output.begin());
}

/// One frame for every point of a polyline.
///
/// ```
/// for (const korvale::Transform& frame : korvale::frames(path))
///     draw_at(frame.point({0, 0.5, 0})); // half a unit along the y axis of every frame
/// ```
inline std::vector<Transform> frames(PointView path, bool closed = false)
{
    std::vector<Transform> output(path.size());
    frames(path, output, closed);
    return output;
}

} // namespace korvale
