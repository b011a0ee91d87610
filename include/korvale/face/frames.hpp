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

    /// The same two transforms.
    friend bool operator==(const Flattening&, const Flattening&) = default;
};

/// `flatten`, telling of failures by its result.
inline Result<Flattening> try_flatten(AnyPoints path, const FlattenOptions& options = {})
{
    const korvale_points points = detail::view_of(path);
    const korvale_flatten_options how = {sizeof how, !options.closed, options.by_extremes, 0};
    Flattening way;
    return detail::given("flatten", way, [&](korvale_error* error) {
        return korvale_flatten(&points, &how, &way.to_plane.m[0][0], &way.from_plane.m[0][0], error);
    });
}

/// The transforms that lay a planar outline into the plane z = 0, running counter-clockwise there, and carry it back.
///
/// No random number is drawn. Paths may have any size: lengths have no direction below 1e-06, or, where a path reaches
/// less than 1 along each axis, below about a millionth of that.
///
/// ```
/// const korvale::Flattening way = korvale::flatten(outline);
/// way.to_plane.apply(outline); // z is 0 now
/// // ... work in two dimensions ...
/// way.from_plane.apply(outline);
/// ```
///
/// Throws `Error` without points, for numbers that are not finite, and, by extremes, where all points lie on one line.
inline Flattening flatten(AnyPoints path, const FlattenOptions& options = {})
{
    return try_flatten(path.view(), options).value();
}

/// `frames`, telling of failures by its result.
inline Result<void> try_frames(AnyPoints path, std::span<Transform> output, bool closed = false)
{
    const korvale_points points = detail::view_of(path);
    if (path.size() >= 2 && output.size() != path.size())
        return Failure("frames", "output", "have " + detail::counted(path.size(), "frame"),
                       "it has " + detail::text_of(output.size()));
    double* const numbers = output.empty() ? nullptr : &output[0].m[0][0];
    return detail::done("frames",
                        [&](korvale_error* error) { return korvale_frames(&points, closed, numbers, error); });
}

/// `frames`, telling of failures by its result.
inline Result<std::vector<Transform>> try_frames(AnyPoints path, bool closed = false)
{
    return detail::within_memory("frames", [&]() -> Result<std::vector<Transform>> {
        std::vector<Transform> output(path.size());
        if (Result<void> done = try_frames(path.view(), output, closed); !done)
            return done.error();
        return output;
    });
}

/// Writes one frame for every point of a polyline to `output`, which has as many.
///
/// The columns of a frame are its x axis, y axis and z axis and the point, so it carries the plane z = 0 to the point.
/// z points back along the path and halves the angle at a joint; x turns as little as it can from frame to frame.
/// `closed` joins the last point to the first (do not repeat it) and spreads the turn left over evenly over all frames.
///
/// In a planar loop the turn left over is nothing but rounding and can be no number; the loop's frames then come from
/// an open path that runs once around, from the last point over all points to the first.
inline void frames(AnyPoints path, std::span<Transform> output, bool closed = false)
{
    try_frames(path.view(), output, closed).value();
}

/// One frame for every point of a polyline.
///
/// ```
/// for (const korvale::Transform& frame : korvale::frames(path))
///     draw_at(frame.point({0, 0.5, 0})); // half a unit along the y axis of every frame
/// ```
inline std::vector<Transform> frames(AnyPoints path, bool closed = false)
{
    return try_frames(path.view(), closed).value();
}

} // namespace korvale
