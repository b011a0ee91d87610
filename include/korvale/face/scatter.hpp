#pragma once

#include "mesh.hpp"

namespace korvale {

/// Triangles of someone else, nine doubles each: made from any contiguous range of doubles or of points, three a
/// triangle, without a copy. It must not outlive the range.
class TriangleView {
public:
    TriangleView() = default;

    /// All of a range.
    template <class R>
    requires(!std::same_as<std::remove_cvref_t<R>, TriangleView> && detail::Coordinates<R, const double>)
        TriangleView(R&& corners) // NOLINT: views are made in passing
        : TriangleView(PointView(corners))
    {
    }

    /// Corners, which have to come in threes.
    TriangleView(PointView corners) : data_(corners.data()), count_(corners.size() / 3) // NOLINT
    {
        if (corners.size() % 3 != 0)
            throw Error("triangles", "the corners", "come in threes", "there are " + detail::text_of(corners.size()));
    }

    /// Corners written out, three points a triangle: for an argument, whose call they outlive.
    TriangleView(std::initializer_list<Point> corners) : TriangleView(PointView(corners)) {} // NOLINT

    /// How many triangles there are, and their numbers.
    ///@{
    std::size_t size() const noexcept { return count_; }
    const double* data() const noexcept { return data_; }
    std::span<const double> coordinates() const noexcept { return {data_, 9 * count_}; }
    ///@}

private:
    const double* data_ = nullptr;
    std::size_t count_ = 0;
};

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
inline Scattered scatter(TriangleView triangles, std::size_t count, unsigned seed,
                         std::span<const double> attributes = {})
{
    const std::size_t corners = 3 * triangles.size();
    const std::size_t width =
        corners == 0 ? 0 : detail::width_of(attributes, corners, "attributes", "corners of the triangles");
    return detail::scatter({detail::view_of(PointView::at(triangles.data(), corners)), {}}, count, seed, attributes,
                           corners, width);
}

/// The same over a mesh, with attributes of its vertices.
///
/// ```
/// auto [points, normals, width, on] = korvale::scatter(vertices, triangles, 5000, 42, vertex_normals);
/// ```
inline Scattered scatter(PointView vertices, std::span<const Triangle> triangles, std::size_t count, unsigned seed,
                         std::span<const double> vertex_attributes = {})
{
    const std::size_t width = detail::width_of(vertex_attributes, vertices.size(), "vertex_attributes", "vertices");
    if (triangles.empty())
        return scatter(TriangleView(), count, seed);
    return detail::scatter({detail::view_of(vertices), detail::view_of(detail::corners_of(triangles))}, count, seed,
                           vertex_attributes, vertices.size(), width);
}

} // namespace korvale
