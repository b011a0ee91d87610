#pragma once

#include <optional>

#include "progress.hpp"
#include "scatter.hpp"

namespace korvale {

/// Cells of a `RayGrid` along x, y and z.
struct GridSize {
    std::int32_t x = 4; ///< cells along x
    std::int32_t y = 4; ///< cells along y
    std::int32_t z = 4; ///< cells along z
};

/// One triangle met by a ray.
struct RayHit {
    double distance;                 ///< from the origin of the ray, in units of length whatever the direction's
    std::int32_t triangle;           ///< its number
    Triangle corners = {-1, -1, -1}; ///< the numbers of its points; 3 k and so on for one that shares none
    std::array<double, 3> weights = {0, 0, 0}; ///< of the corners at the meeting; they add up to 1

    /// The same triangle at the same distance.
    friend bool operator==(const RayHit& a, const RayHit& b)
    {
        return a.distance == b.distance && a.triangle == b.triangle;
    }
};

/// What `RayGrid::cast` writes, one value a ray; leave out what is not wanted.
struct RayColumns {
    std::span<double> distances = {};       ///< to the nearest triangle, infinity where there is none
    std::span<std::int32_t> triangles = {}; ///< the nearest triangle, -1 where there is none
    std::span<std::int32_t> counts = {};    ///< the number of triangles met
    PointSpan weights = {};                 ///< of the corners of the nearest triangle, zeros where there is none
};

namespace detail {

/// A single triangle between braces.
struct OneTriangle {
    OneTriangle(const Triangle& triangle) : corners(triangle) {}
    Triangle corners;
};

} // namespace detail

/// Triangles for rays: those met are those of a grid of cells.
///
/// ```
/// korvale::RayGrid grid(vertices, triangles);
/// if (auto hit = grid.nearest(eye, direction))
///     select(hit->triangle, hit->distance);
/// const bool inside = grid.contains({point})[0];
/// ```
///
/// Any number of threads may ask one grid at a time; a grid `over` triangles that stay the caller's belongs to one
/// thread at a time, as its queries write marks. Directions may be of any length but 0. Triangles may be of any size,
/// unless their sides are below 1/8 of a unit, 6e-05 of the largest coordinate and 1/500 of the model, all three. But
/// for a grid `over` triangles work in units in which they measure about 0.1 or more: one that shows less than half of
/// 1e-06 square units to a ray is not met.
class RayGrid {
public:
    /// Triangles given by their corners, which are copied. Without a `size`, one that suits them is chosen.
    explicit RayGrid(AnyCorners triangles, std::optional<GridSize> size = {}, const Progress& progress = {})
        : RayGrid(try_make(triangles.view(), size, progress).value())
    {
    }

    /// Triangles on shared vertices, in a range or, two and more, written out.
    ///@{
    template <std::convertible_to<AnyTriangles> Triangles>
    RayGrid(AnyPoints vertices, Triangles&& triangles, std::optional<GridSize> size = {}, const Progress& progress = {})
        : RayGrid(make(detail::triangles_of(vertices, triangles), false, size, progress).value())
    {
    }
    template <std::size_t n>
    requires(n > 1) RayGrid(AnyPoints vertices, const Triangle (&triangles)[n], std::optional<GridSize> size = {},
                            const Progress& progress = {})
        : RayGrid(make(detail::triangles_of(vertices, triangles), false, size, progress).value())
    {
    }
    // {{0, 1, 3}} may be a triangle or a size: write std::vector<Triangle>{{0, 1, 3}}, or GridSize{4, 4, 4}
    RayGrid(AnyPoints vertices, detail::OneTriangle triangle, const Progress& progress = {}) = delete;
    ///@}

    /// Faces of any number of corners, `corners` face after face; each is cut into triangles about its first corner.
    /// `face` tells which face a triangle is of.
    RayGrid(AnyPoints vertices, AnyIndices face_sizes, AnyIndices corners, std::optional<GridSize> size = {},
            const Progress& progress = {})
        : RayGrid(make({detail::view_of(vertices), detail::view_of_sizes(face_sizes), corners.layout()}, size, progress)
                      .value())
    {
    }

    /// A grid over triangles that stay the caller's, packed doubles: they are read by every query, may move, and must
    /// outlive the grid.
    static RayGrid over(TriangleView triangles KORVALE_LIFETIMEBOUND, std::optional<GridSize> size = {})
    {
        return try_over(triangles, size).value();
    }

    /// The same four, telling of failures by their result: of KORVALE_STOPPED where `progress` has stopped the work.
    ///@{
    static Result<RayGrid> try_make(AnyCorners triangles, std::optional<GridSize> size = {},
                                    const Progress& progress = {})
    {
        return make({detail::view_of(triangles.view().corners()), {}}, false, size, progress);
    }
    template <std::convertible_to<AnyTriangles> Triangles>
    static Result<RayGrid> try_make(AnyPoints vertices, Triangles&& triangles, std::optional<GridSize> size = {},
                                    const Progress& progress = {})
    {
        return make(detail::triangles_of(vertices, triangles), false, size, progress);
    }
    template <std::size_t n>
    requires(n > 1) static Result<RayGrid> try_make(AnyPoints vertices, const Triangle (&triangles)[n],
                                                    std::optional<GridSize> size = {}, const Progress& progress = {})
    {
        return make(detail::triangles_of(vertices, triangles), false, size, progress);
    }
    static Result<RayGrid> try_make(AnyPoints vertices, detail::OneTriangle triangle,
                                    const Progress& progress = {}) = delete; // as above
    static Result<RayGrid> try_make(AnyPoints vertices, AnyIndices face_sizes, AnyIndices corners,
                                    std::optional<GridSize> size = {}, const Progress& progress = {})
    {
        return make({detail::view_of(vertices), detail::view_of_sizes(face_sizes), corners.layout()}, size, progress);
    }
    static Result<RayGrid> try_over(TriangleView triangles KORVALE_LIFETIMEBOUND, std::optional<GridSize> size = {})
    {
        return make({detail::view_of(triangles.corners()), {}}, true, size, {});
    }
    ///@}

    /// Moves; what is left behind may only be destroyed or assigned to.
    ///@{
    RayGrid(RayGrid&&) noexcept = default;
    RayGrid& operator=(RayGrid&&) noexcept = default;
    ///@}

    /// The number of triangles.
    std::size_t size() const { return static_cast<std::size_t>(korvale_grid_size(handle_.get())); }

    /// The cells that were made.
    GridSize grid_size() const
    {
        std::int32_t cells[3] = {};
        korvale_grid_cells(handle_.get(), cells);
        return {cells[0], cells[1], cells[2]};
    }

    /// The triangles, nine doubles each, as the grid reads them.
    ///@{
    TriangleView triangles() const& KORVALE_LIFETIMEBOUND
    {
        return PointView::at(korvale_grid_triangles(handle_.get()), 3 * size());
    }
    void triangles() const&& = delete; // they would be gone: give the grid a name
    ///@}

    /// The face that a triangle is of; its own number where the grid was made of triangles.
    std::int32_t face(std::int32_t triangle) const { return try_face(triangle).value(); }

    /// The same, telling of failures by its result.
    Result<std::int32_t> try_face(std::int32_t triangle) const
    {
        const std::int32_t face = korvale_grid_face(handle_.get(), triangle);
        if (face < 0)
            return Failure("RayGrid::face", "triangle", "be one of the grid's " + detail::text_of(size()),
                           "it is " + detail::text_of(triangle));
        return face;
    }

    /// The number of triangles that the ray from `origin` along `direction` meets. A ray aimed at an edge or a corner,
    /// up to rounding, may meet any of the triangles there, or none; `contains` knows how to ask.
    int count(const Point& origin, const Point& direction) const
    {
        return korvale_grid_count(handle_.get(), origin.data(), direction.data(), nullptr);
    }

    /// The distance to the nearest triangle, if there is one.
    std::optional<double> distance(const Point& origin, const Point& direction) const
    {
        double distance = 0.0;
        if (korvale_grid_count(handle_.get(), origin.data(), direction.data(), &distance) > 0)
            return distance;
        return {};
    }

    /// The nearest triangle, if there is one; the one with the least number of several at the same distance.
    std::optional<RayHit> nearest(const Point& origin, const Point& direction) const
    {
        const korvale_hit hit = korvale_grid_nearest(handle_.get(), origin.data(), direction.data());
        if (hit.triangle < 0)
            return {};
        return hit_of(hit);
    }

    /// Whether a triangle is met at a distance of at most `reach`. It stops at the first.
    bool any(const Point& origin, const Point& direction, double reach = std::numeric_limits<double>::infinity()) const
    {
        return korvale_grid_any(handle_.get(), origin.data(), direction.data(), reach) != 0;
    }

    /// All triangles on the ray, nearest first; those at one distance by their numbers.
    std::vector<RayHit> hits(const Point& origin, const Point& direction) const
    {
        return try_hits(origin, direction).value();
    }

    /// The same, telling of failures by its result.
    Result<std::vector<RayHit>> try_hits(const Point& origin, const Point& direction) const
    {
        return detail::within_memory("RayGrid::hits", [&]() -> Result<std::vector<RayHit>> {
            std::vector<korvale_hit> met(8);
            std::int64_t n = 0;
            do {
                met.resize(std::max(met.size(), static_cast<std::size_t>(n)));
                const Result<void> done = detail::done("RayGrid::hits", [&](korvale_error* error) {
                    return korvale_grid_hits(handle_.get(), origin.data(), direction.data(), met.data(),
                                             static_cast<std::int64_t>(met.size()), &n, error);
                });
                if (!done)
                    return done.error();
            } while (static_cast<std::size_t>(n) > met.size());
            std::vector<RayHit> hits;
            for (std::size_t i = 0; i < static_cast<std::size_t>(n); ++i)
                hits.push_back(hit_of(met[i]));
            return hits;
        });
    }

    /// Casts many rays: `origins` and `directions` have as many points, or one of them a single point for all. Returns
    /// false where `progress` has stopped it, with the columns partly written.
    ///
    /// ```
    /// korvale::RayGrid grid(vertices, triangles);
    /// std::vector<double> depth(directions.size());
    /// grid.cast({eye}, directions, {.distances = depth});
    /// ```
    bool cast(AnyPoints origins, AnyPoints directions, const RayColumns& columns, const Progress& progress = {}) const
    {
        const Result<void> done = try_cast(origins.view(), directions.view(), columns, progress);
        if (!done && done.error().status() == KORVALE_STOPPED)
            return false;
        done.value();
        return true;
    }

    /// The same, telling of failures by its result: of KORVALE_STOPPED where `progress` has stopped it. What `progress`
    /// throws is thrown on.
    Result<void> try_cast(AnyPoints origins, AnyPoints directions, const RayColumns& columns,
                          const Progress& progress = {}) const
    {
        const std::size_t n = origins.size() == 1 ? directions.size() : origins.size();
        if (directions.size() != n && directions.size() != 1)
            return Failure("RayGrid::cast", "directions", "be 1 or as many as the " + detail::text_of(n) + " origins",
                           "there are " + detail::text_of(directions.size()));
        const std::pair<const char*, std::size_t> lengths[] = {{"columns.distances", columns.distances.size()},
                                                               {"columns.triangles", columns.triangles.size()},
                                                               {"columns.counts", columns.counts.size()},
                                                               {"columns.weights", columns.weights.size()}};
        for (const auto& [name, length] : lengths)
            if (length != 0 && length != n)
                return Failure("RayGrid::cast", name, "be empty or have " + detail::text_of(n) + " values",
                               "it has " + detail::text_of(length));
        if (!columns.weights.is_packed())
            return Failure("RayGrid::cast", "columns.weights", "be packed doubles, three a ray",
                           "it is laid out otherwise");
        const korvale_points from = detail::view_of(origins), along = detail::view_of(directions);
        const korvale_ray_columns to = {data_of(columns.distances), data_of(columns.triangles), data_of(columns.counts),
                                        columns.weights.empty() ? nullptr : columns.weights.data()};
        return detail::done("RayGrid::cast", progress, [&](korvale_progress told, void* user, korvale_error* error) {
            return korvale_grid_cast(handle_.get(), &from, &along, &to, told, user, error);
        });
    }

    /// Whether each point lies inside the closed meshes that the triangles make: a ray from it meets an odd number of
    /// them. Of rays that come within 1e-09 of an edge, as a weight of a corner, up to four others are tried; the last
    /// is taken as it is. Points on the surface come out either way.
    ///
    /// Throws `Error` where an edge between two places is that of an odd number of triangles, and so open, and where
    /// `progress` has stopped it. The first call looks for open edges.
    std::vector<bool> contains(AnyPoints points, const Progress& progress = {}) const
    {
        return try_contains(points.view(), progress).value();
    }

    /// The same, telling of failures by its result: of KORVALE_STOPPED where `progress` has stopped it. What `progress`
    /// throws is thrown on.
    Result<std::vector<bool>> try_contains(AnyPoints points, const Progress& progress = {}) const
    {
        return detail::within_memory("RayGrid::contains", [&]() -> Result<std::vector<bool>> {
            const korvale_points at = detail::view_of(points);
            std::vector<std::uint8_t> inside(points.size() + 1);
            const Result<void> done = detail::done(
                "RayGrid::contains", progress, [&](korvale_progress told, void* user, korvale_error* error) {
                    return korvale_grid_contains(handle_.get(), &at, inside.data(), told, user, error);
                });
            if (!done)
                return done.error();
            return std::vector<bool>(inside.begin(), inside.end() - 1);
        });
    }

    /// A record of the triangles in the cells: of a grid `over` triangles its own, of another one that it does not use,
    /// made by the first call. It is a `RayStatus&`; include korvale.hpp for it.
    template <class Grid = korvale_grid>
    detail::Record<Grid>& status()
    {
        void* const record = korvale_grid_record(handle_.get());
        if (record == nullptr)
            detail::raise(std::bad_alloc());
        return *static_cast<detail::Record<Grid>*>(record);
    }

private:
    struct Free {
        void operator()(korvale_grid* grid) const noexcept { korvale_grid_free(grid); }
    };

    explicit RayGrid(korvale_grid* made) noexcept : handle_(made) {}

    static Result<RayGrid> make(const korvale_triangles& triangles, bool borrow, std::optional<GridSize> size,
                                const Progress& progress)
    {
        return make_by(borrow, size, progress,
                       [&](const korvale_grid_options* options, korvale_grid** made, korvale_error* error) {
                           return korvale_grid_new(&triangles, options, made, error);
                       });
    }

    static Result<RayGrid> make(const korvale_faces& faces, std::optional<GridSize> size, const Progress& progress)
    {
        return make_by(false, size, progress,
                       [&](const korvale_grid_options* options, korvale_grid** made, korvale_error* error) {
                           return korvale_grid_of_faces(&faces, options, made, error);
                       });
    }

    template <class Make>
    static Result<RayGrid> make_by(bool borrow, std::optional<GridSize> size, const Progress& progress, Make make)
    {
        korvale_grid* made = nullptr;
        const Result<void> done =
            detail::done("RayGrid", progress, [&](korvale_progress told, void* user, korvale_error* error) {
                korvale_grid_options options;
                korvale_grid_defaults(&options, sizeof options);
                options.borrow = borrow ? 1 : 0;
                if (size) { // all 0 would be chosen
                    options.cells[0] = std::max(1, size->x);
                    options.cells[1] = std::max(1, size->y);
                    options.cells[2] = std::max(1, size->z);
                }
                options.progress = told;
                options.user = user;
                return make(&options, &made, error);
            });
        if (!done)
            return done.error();
        return RayGrid(made);
    }

    static RayHit hit_of(const korvale_hit& hit)
    {
        return {hit.distance,
                hit.triangle,
                {hit.corners[0], hit.corners[1], hit.corners[2]},
                {hit.weights[0], hit.weights[1], hit.weights[2]}};
    }

    template <class T>
    static T* data_of(std::span<T> column)
    {
        return column.empty() ? nullptr : column.data();
    }

    std::unique_ptr<korvale_grid, Free> handle_;
};

} // namespace korvale
