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

namespace detail {

/// Throws unless every corner is a vertex.
inline void require_corners(const char* function, const char* argument, std::span<const std::int32_t> corners,
                            std::size_t vertices)
{
    for (std::size_t i = 0; i < corners.size(); ++i)
        if (corners[i] < 0 || static_cast<std::size_t>(corners[i]) >= vertices)
            throw Error(function, argument, "name vertices 0 to " + text_of(static_cast<std::ptrdiff_t>(vertices) - 1),
                        "its corner " + text_of(i) + " is " + text_of(corners[i]));
}

/// Throws unless the corners are vertices and as many as the faces have together.
inline void require_faces(const char* function, std::span<const std::int32_t> face_sizes,
                          std::span<const std::int32_t> corners, std::size_t vertices)
{
    require_corners(function, "corners", corners, vertices);
    std::size_t wanted = 0;
    for (std::size_t f = 0; f < face_sizes.size(); ++f) {
        if (face_sizes[f] < 0)
            throw Error(function, "face_sizes", "be 0 or more",
                        "face " + text_of(f) + " has " + text_of(face_sizes[f]));
        wanted += static_cast<std::size_t>(face_sizes[f]);
    }
    if (wanted != corners.size())
        throw Error(function, "corners", "be as many as the faces have together, " + text_of(wanted),
                    "there are " + text_of(corners.size()));
}

inline std::span<const std::int32_t> corners_of(std::span<const Triangle> triangles)
{
    return {triangles.empty() ? nullptr : triangles[0].data(), 3 * triangles.size()};
}

} // namespace detail

/// Points on triangles, and what they carry.
struct Scattered {
    Points points;            ///< as they were drawn
    Array<double> attributes; ///< [points][width], point after point
    std::size_t width = 0;    ///< attributes of a point
};

/// Scatters `count` points over triangles, uniformly by area. `attributes` holds the same number of values for each
/// corner of each triangle, in order; they are blended to the points by the same weights.
///
/// Seeds the random generator of the process with `seed`: the same seed gives the same points, as long as no other
/// thread draws meanwhile.
///
/// ```
/// korvale::Scattered seeds = korvale::scatter(corners, 5000, 42); // nine doubles a triangle
/// ```
///
/// Throws `Error` for no triangles, numbers that are not finite, and attributes that do not divide by the corners.
inline Scattered scatter(TriangleView triangles, std::size_t count, unsigned seed,
                         std::span<const double> attributes = {})
{
    if (triangles.size() == 0)
        throw Error("scatter", "triangles", "have at least 1 triangle", "there is none");
    detail::count_for("scatter", "triangles", triangles.size(), 9);
    detail::require_finite("scatter", "triangles", PointView::at(triangles.data(), 3 * triangles.size()));
    const std::size_t width = attributes.size() / (3 * triangles.size());
    if (attributes.size() % (3 * triangles.size()) != 0)
        throw Error("scatter", "attributes",
                    "divide by the " + detail::text_of(3 * triangles.size()) + " corners of the triangles",
                    "there are " + detail::text_of(attributes.size()));
    detail::count_for("scatter", "attributes", attributes.size(), 1);
    detail::count_for("scatter", "count", count, std::max<std::size_t>(3, width));

    Scattered result{Points(count), Array<double>(count * width), width};
    if (count == 0)
        return result;
    DATAstruct from = detail::record_over(triangles.coordinates(), 9), to = detail::record_over(result.points);
    DATAstruct corner_values = detail::record_over(attributes, std::max<std::size_t>(1, width));
    DATAstruct point_values = detail::record_over(DATA_TYPE_DOUBLE, count, width);
    point_values.dvals = result.attributes.data();
    // Where the heap is exhausted nothing is written, which a value that no arithmetic makes shows.
    constexpr std::uint64_t kUntouched = 0x7ff4d1f3a5c6b7e9u;
    result.points[0][0] = std::bit_cast<double>(kUntouched);
    DATATriSample(&from, seed, &to, width > 0 ? &corner_values : nullptr, width > 0 ? &point_values : nullptr);
    if (std::bit_cast<std::uint64_t>(result.points[0][0]) == kUntouched)
        throw std::bad_alloc();
    return result;
}

/// The same over a mesh, with attributes of its vertices.
///
/// ```
/// auto [points, normals, width] = korvale::scatter(vertices, triangles, 5000, 42, vertex_normals);
/// ```
inline Scattered scatter(PointView vertices, std::span<const Triangle> triangles, std::size_t count, unsigned seed,
                         std::span<const double> vertex_attributes = {})
{
    const auto corners = detail::corners_of(triangles);
    detail::require_corners("scatter", "triangles", corners, vertices.size());
    const std::size_t width = vertices.empty() ? 0 : vertex_attributes.size() / vertices.size();
    if (width * vertices.size() != vertex_attributes.size())
        throw Error("scatter", "vertex_attributes", "divide by the " + detail::text_of(vertices.size()) + " vertices",
                    "there are " + detail::text_of(vertex_attributes.size()));
    std::vector<Point> places;
    std::vector<double> values;
    places.reserve(corners.size());
    values.reserve(corners.size() * width);
    for (const std::int32_t c : corners) {
        const auto v = static_cast<std::size_t>(c);
        places.push_back(vertices[v]);
        values.insert(values.end(), vertex_attributes.begin() + static_cast<std::ptrdiff_t>(v * width),
                      vertex_attributes.begin() + static_cast<std::ptrdiff_t>((v + 1) * width));
    }
    return scatter(places, count, seed, values);
}

} // namespace korvale
