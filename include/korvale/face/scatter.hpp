#pragma once

#include "mesh.hpp"
#include "progress.hpp"

namespace korvale {

/// How `scatter` works.
struct ScatterOptions {
    std::span<const double> weights = {}; ///< one a triangle, which is as likely as its area times this; none: all 1
    Progress progress = {};               ///< told while many points are made; it may stop that
};

/// Points on triangles, and what they carry.
struct Scattered {
    Points points;                 ///< as they were drawn
    Array<double> attributes;      ///< [points][width], point after point
    std::size_t width = 0;         ///< attributes of a point
    Array<std::int32_t> triangles; ///< [points] the triangle that each point lies on

    /// The same in memory of its own.
    Scattered clone() const { return {points.clone(), attributes.clone(), width, triangles.clone()}; }

    /// The same points on the same triangles, with the same attributes.
    friend bool operator==(const Scattered&, const Scattered&) = default;
};

namespace detail {

/// Attributes of corners or vertices: `rows` rows of them.
struct Attributes {
    std::span<const double> values;
    std::size_t rows;
    const char* argument;
    const char* noun; ///< what has a row
};

inline Result<Scattered> scatter(const korvale_triangles& triangles, std::size_t count, unsigned seed,
                                 const Attributes& attributes, const ScatterOptions& options)
{
    return within_memory("scatter", [&]() -> Result<Scattered> {
        const auto& [given, rows, argument, noun] = attributes;
        const std::size_t width = rows == 0 ? 0 : given.size() / rows;
        if (std::optional<Failure> failure = refuse_count("scatter", argument, given.size(), 1))
            return *std::move(failure);
        if (rows != 0 && width * rows != given.size())
            return Failure("scatter", argument, "divide by the " + text_of(rows) + " " + noun,
                           "there are " + text_of(given.size()));
        if (std::optional<Failure> failure = refuse_count("scatter", "count", count, std::max<std::size_t>(3, width)))
            return *std::move(failure);
        Scattered result{Points(count), Array<double>(count * width), width, Array<std::int32_t>(count)};
        const korvale_points_out output = view_of_output(result.points);
        const korvale_numbers values = {given.data(), static_cast<std::int64_t>(rows), 0,
                                        static_cast<std::int32_t>(width), KORVALE_DOUBLE};
        const korvale_numbers_out blended = {result.attributes.data(), static_cast<std::int64_t>(count), 0,
                                             static_cast<std::int32_t>(width), KORVALE_DOUBLE};
        const auto weights = static_cast<std::int64_t>(options.weights.size());
        const Result<void> done =
            detail::done("scatter", options.progress, [&](korvale_progress told, void* user, korvale_error* error) {
                const korvale_scatter_options how = {
                    sizeof how, 0, {options.weights.data(), weights, 0, 1, KORVALE_DOUBLE}, told, user};
                return korvale_scatter(&triangles, seed, &how, &output, result.triangles.data(),
                                       width > 0 ? &values : nullptr, &blended, error);
            });
        if (!done)
            return done.error();
        return result;
    });
}

} // namespace detail

/// `scatter`, telling of failures by its result.
///@{
inline Result<Scattered> try_scatter(AnyCorners triangles, std::size_t count, unsigned seed,
                                     std::span<const double> attributes = {}, const ScatterOptions& options = {})
{
    const PointView corners = triangles.view().corners();
    return detail::scatter({detail::view_of(corners), {}}, count, seed,
                           {attributes, corners.size(), "attributes", "corners of the triangles"}, options);
}
inline Result<Scattered> try_scatter(AnyPoints vertices, AnyTriangles triangles, std::size_t count, unsigned seed,
                                     std::span<const double> vertex_attributes = {}, const ScatterOptions& options = {})
{
    return detail::scatter(detail::triangles_of(vertices, triangles), count, seed,
                           {vertex_attributes, vertices.size(), "vertex_attributes", "vertices"}, options);
}
///@}

/// Scatters `count` points over triangles, uniformly by area. `attributes` holds the same number of values for each
/// corner of each triangle, in order; they are blended to the points by the same weights.
///
/// The call has random generators of its own: the same seed gives the same points, in any number of threads, and the
/// generator of the process is neither seeded nor drawn from. Seeds that follow each other begin almost alike: spread
/// numbers that you count, as by `2654435761u * number`. Every triangle gets its share of the points, however many
/// there are. Wherever one of 32,768 equal steps of the area lies within one triangle the points are those of
/// `DATATriSample`.
///
/// ```
/// korvale::Scattered seeds = korvale::scatter(corners, 5000, 42); // nine doubles a triangle
/// ```
///
/// Weights make triangles likelier or less likely, such as flat ones and steep ones: the chance of each is its weight
/// times its area, and one of weight 0 gets no point.
///
/// Throws `Error` for no triangles, numbers that are not finite, an area of 0 on the whole, weights below 0 or not one
/// a triangle, attributes that do not divide by the corners, and where `progress` has stopped it.
inline Scattered scatter(AnyCorners triangles, std::size_t count, unsigned seed,
                         std::span<const double> attributes = {}, const ScatterOptions& options = {})
{
    return try_scatter(triangles.view(), count, seed, attributes, options).value();
}

/// The same over a mesh, with attributes of its vertices.
///
/// ```
/// auto [points, normals, width, on] = korvale::scatter(vertices, triangles, 5000, 42, vertex_normals);
///
/// std::vector<double> weights; // gentle slopes rather than steep ones
/// for (const korvale::Point& normal : korvale::Mesh{vertices, triangles}.normals())
///     weights.push_back(normal[2] * normal[2]);
/// korvale::Scattered snow = korvale::scatter(vertices, triangles, 5000, 42, {}, {.weights = weights});
/// ```
inline Scattered scatter(AnyPoints vertices, AnyTriangles triangles, std::size_t count, unsigned seed,
                         std::span<const double> vertex_attributes = {}, const ScatterOptions& options = {})
{
    return detail::scatter(detail::triangles_of(vertices, triangles), count, seed,
                           {vertex_attributes, vertices.size(), "vertex_attributes", "vertices"}, options)
        .value();
}

} // namespace korvale
