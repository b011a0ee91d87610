#pragma once

#include "mesh.hpp"

namespace korvale {

/// Points on triangles, and what they carry.
struct Scattered {
    Points points;                 ///< as they were drawn
    Array<double> attributes;      ///< [points][width], point after point
    std::size_t width = 0;         ///< attributes of a point
    Array<std::int32_t> triangles; ///< [points] the triangle that each point lies on
};

namespace detail {

/// `rows` rows of attributes, `width` each.
inline Scattered scatter(const korvale_triangles& triangles, std::size_t count, unsigned seed,
                         std::span<const double> attributes, std::size_t rows, std::size_t width)
{
    count_for("scatter", "count", count, std::max<std::size_t>(3, width));
    Scattered result{Points(count), Array<double>(count * width), width, Array<std::int32_t>(count)};
    const korvale_points_out output = view_of_output(result.points);
    const korvale_numbers values = {attributes.data(), static_cast<std::int64_t>(rows), 0,
                                    static_cast<std::int32_t>(width), KORVALE_DOUBLE};
    const korvale_numbers_out blended = {result.attributes.data(), static_cast<std::int64_t>(count), 0,
                                         static_cast<std::int32_t>(width), KORVALE_DOUBLE};
    call("scatter", [&](korvale_error* error) {
        return korvale_scatter(&triangles, seed, &output, result.triangles.data(), width > 0 ? &values : nullptr,
                               &blended, error);
    });
    return result;
}

/// How many attributes each of `rows` rows has.
inline std::size_t width_of(std::span<const double> attributes, std::size_t rows, const char* argument,
                            const std::string& noun)
{
    count_for("scatter", argument, attributes.size(), 1);
    const std::size_t width = rows == 0 ? 0 : attributes.size() / rows;
    if (width * rows != attributes.size())
        throw Error("scatter", argument, "divide by the " + text_of(rows) + " " + noun,
                    "there are " + text_of(attributes.size()));
    return width;
}

} // namespace detail

/// Scatters `count` points over triangles, uniformly by area. `attributes` holds the same number of values for each
/// corner of each triangle, in order; they are blended to the points by the same weights.
///
/// The call has a random generator of its own: the same seed gives the same points, in any number of threads, and the
/// generator of the process is neither seeded nor drawn from.
///
/// ```
/// korvale::Scattered seeds = korvale::scatter(corners, 5000, 42); // nine doubles a triangle
/// ```
///
/// Throws `Error` for no triangles, numbers that are not finite, and attributes that do not divide by the corners.
inline Scattered scatter(AnyCorners triangles, std::size_t count, unsigned seed,
                         std::span<const double> attributes = {})
{
    const PointView points = triangles.view().corners();
    const std::size_t corners = points.size();
    const std::size_t width =
        corners == 0 ? 0 : detail::width_of(attributes, corners, "attributes", "corners of the triangles");
    return detail::scatter({detail::view_of(points), {}}, count, seed, attributes, corners, width);
}

/// The same over a mesh, with attributes of its vertices.
///
/// ```
/// auto [points, normals, width, on] = korvale::scatter(vertices, triangles, 5000, 42, vertex_normals);
/// ```
inline Scattered scatter(AnyPoints vertices, AnyTriangles triangles, std::size_t count, unsigned seed,
                         std::span<const double> vertex_attributes = {})
{
    const std::size_t width = detail::width_of(vertex_attributes, vertices.size(), "vertex_attributes", "vertices");
    if (triangles.size() == 0)
        return scatter(TriangleView(), count, seed);
    return detail::scatter(detail::triangles_of(vertices, triangles), count, seed, vertex_attributes, vertices.size(),
                           width);
}

} // namespace korvale
