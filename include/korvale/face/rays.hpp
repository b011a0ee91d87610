#pragma once

#include <optional>

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
    double distance;       ///< from the origin of the ray, in units of length whatever the direction's
    std::int32_t triangle; ///< its number

    /// The same triangle at the same distance.
    friend bool operator==(const RayHit&, const RayHit&) = default;
};

/// What `RayGrid::cast` writes, one value a ray; leave out what is not wanted.
struct RayColumns {
    std::span<double> distances = {};       ///< to the nearest triangle, infinity where there is none
    std::span<std::int32_t> triangles = {}; ///< the nearest triangle, -1 where there is none
    std::span<std::int32_t> counts = {};    ///< the number of triangles met
};

/// Triangles sorted into a grid of cells, for rays.
///
/// ```
/// korvale::RayGrid grid(vertices, triangles);
/// if (auto hit = grid.nearest(eye, direction))
///     select(hit->triangle, hit->distance);
/// const bool inside = grid.count(point, {0, 0, 1}) % 2 == 1;
/// ```
///
/// Queries write marks into the grid, so one grid belongs to one thread at a time; make one for each thread. A triangle
/// that shows less than half of 1e-06 square units to a ray is not met: work in units in which triangles measure about
/// 0.01 or more. The length of a direction does not matter, but one shorter than 1e-06 meets nothing.
class RayGrid {
public:
    /// Triangles given by their corners, which are copied. Without a `size`, one that suits them is chosen.
    explicit RayGrid(TriangleView triangles, std::optional<GridSize> size = {})
        : RayGrid(std::vector<double>(triangles.data(), triangles.data() + 9 * triangles.size()), TriangleView(), size)
    {
    }

    /// Triangles on shared vertices.
    RayGrid(PointView vertices, std::span<const Triangle> triangles, std::optional<GridSize> size = {})
        : RayGrid(gather(vertices, detail::corners_of(triangles)), TriangleView(), size)
    {
    }

    /// Faces of any number of corners, `corners` face after face; each is cut into triangles about its first corner.
    /// `face` tells which face a triangle is of.
    RayGrid(PointView vertices, std::span<const std::int32_t> face_sizes, std::span<const std::int32_t> corners,
            std::optional<GridSize> size = {})
        : RayGrid(fan(vertices, face_sizes, corners), size)
    {
    }

    /// A grid over triangles that stay the caller's: they are read by every query and must outlive the grid.
    static RayGrid over(TriangleView triangles, std::optional<GridSize> size = {})
    {
        return RayGrid(std::vector<double>(), triangles, size);
    }

    /// Moves; what is left behind may only be destroyed or assigned to.
    ///@{
    RayGrid(RayGrid&&) noexcept = default;
    RayGrid& operator=(RayGrid&&) noexcept = default;
    ///@}

    /// The number of triangles.
    std::size_t size() const { return static_cast<std::size_t>(state_->triangles.count); }

    /// The cells that were made.
    GridSize grid_size() const { return {state_->status.nx, state_->status.ny, state_->status.nz}; }

    /// The face that a triangle is of; its own number where the grid was made of triangles.
    std::int32_t face(std::int32_t triangle) const
    {
        return state_->faces.empty() ? triangle : state_->faces.at(static_cast<std::size_t>(triangle));
    }

    /// The number of triangles that the ray from `origin` along `direction` meets.
    int count(const Point& origin, const Point& direction)
    {
        double distance = 0.0;
        return query(origin, direction, distance);
    }

    /// The distance to the nearest triangle, if there is one.
    std::optional<double> distance(const Point& origin, const Point& direction)
    {
        double distance = 0.0;
        if (query(origin, direction, distance) > 0)
            return distance;
        return {};
    }

    /// The nearest triangle, if there is one; the one with the least number of several at the same distance.
    std::optional<RayHit> nearest(const Point& origin, const Point& direction)
    {
        double distance = 0.0;
        if (query(origin, direction, distance) == 0)
            return {};
        return RayHit{distance, nearest_triangle(origin, direction)};
    }

    /// All triangles on the ray, nearest first; those at one distance by their numbers.
    std::vector<RayHit> hits(const Point& origin, const Point& direction)
    {
        std::vector<RayHit> met;
        double distance = 0.0;
        if (query(origin, direction, distance) == 0)
            return met;
        visit(origin, direction, [&](const RayHit& hit) { met.push_back(hit); });
        std::ranges::stable_sort(met, {}, &RayHit::distance);
        return met;
    }

    /// Casts many rays: `origins` and `directions` have as many points, or one of them a single point for all.
    ///
    /// ```
    /// korvale::RayGrid grid(vertices, triangles);
    /// std::vector<double> depth(directions.size());
    /// grid.cast({eye}, directions, {.distances = depth});
    /// ```
    void cast(PointView origins, PointView directions, const RayColumns& columns)
    {
        const std::size_t n = origins.size() == 1 ? directions.size() : origins.size();
        if (directions.size() != n && directions.size() != 1)
            throw Error("RayGrid::cast", "directions", "be 1 or as many as the " + detail::text_of(n) + " origins",
                        "there are " + detail::text_of(directions.size()));
        require_rows("columns.distances", columns.distances.size(), n);
        require_rows("columns.triangles", columns.triangles.size(), n);
        require_rows("columns.counts", columns.counts.size(), n);
        for (std::size_t i = 0; i < n; ++i) {
            const Point o = origins[origins.size() == 1 ? 0 : i], d = directions[directions.size() == 1 ? 0 : i];
            double distance = std::numeric_limits<double>::infinity();
            const int met = query(o, d, distance);
            if (!columns.distances.empty())
                columns.distances[i] = distance;
            if (!columns.triangles.empty())
                columns.triangles[i] = met > 0 ? nearest_triangle(o, d) : -1;
            if (!columns.counts.empty())
                columns.counts[i] = met;
        }
    }

    /// The record behind the grid.
    RayStatus& status() { return state_->status; }

private:
    struct State {
        State() { DataInitialize(&triangles); }
        ~State()
        {
            ray_declassify(&status);
            DataDispose(&status.bbox);
        }
        State(const State&) = delete;
        State& operator=(const State&) = delete;

        std::vector<double> corners; // empty where the triangles are the caller's
        std::vector<std::int32_t> faces;
        Data triangles; // borrows its buffer
        RayStatus status = {};
    };

    struct Fan {
        std::vector<double> corners;
        std::vector<std::int32_t> faces;
    };

    RayGrid(Fan fan, std::optional<GridSize> size) : RayGrid(std::move(fan.corners), TriangleView(), size)
    {
        state_->faces = std::move(fan.faces);
    }

    RayGrid(std::vector<double> corners, TriangleView borrowed, std::optional<GridSize> size)
        : state_(std::make_unique<State>())
    {
        State& s = *state_;
        s.corners = std::move(corners);
        const bool owns = borrowed.size() == 0;
        const std::size_t n = owns ? s.corners.size() / 9 : borrowed.size();
        s.triangles.dim = 9;
        s.triangles.count = detail::count_for("RayGrid", "triangles", n, 9);
        s.triangles.dvals = owns ? s.corners.data() : detail::unconst(borrowed.data());
        detail::require_finite("RayGrid", "triangles", PointView::at(s.triangles.dvals, 3 * n));
        if (ray_initialize(&s.status) != 1)
            throw std::bad_alloc();
        const GridSize cells = size ? *size : size_for(PointView::at(s.triangles.dvals, 3 * n));
        s.status.nx = cells.x;
        s.status.ny = cells.y;
        s.status.nz = cells.z;
        ray_set_triangles(&s.triangles, &s.status);
        ray_classify(&s.status);
        if (n > 0 && (s.status.cells == nullptr || s.status.tri_marks.bvals == nullptr))
            throw std::bad_alloc();
    }

    static std::vector<double> gather(PointView vertices, std::span<const std::int32_t> corners)
    {
        detail::require_corners("RayGrid", "triangles", corners, vertices.size());
        std::vector<double> gathered;
        gathered.reserve(3 * corners.size());
        for (const std::int32_t c : corners) {
            const Point p = vertices[static_cast<std::size_t>(c)];
            gathered.insert(gathered.end(), p.begin(), p.end());
        }
        return gathered;
    }

    static Fan fan(PointView vertices, std::span<const std::int32_t> face_sizes, std::span<const std::int32_t> corners)
    {
        detail::require_faces("RayGrid", face_sizes, corners, vertices.size());
        std::vector<std::int32_t> triangles, faces;
        std::size_t first = 0;
        for (std::size_t f = 0; f < face_sizes.size(); ++f) {
            const auto n = static_cast<std::size_t>(face_sizes[f]);
            for (std::size_t k = 2; k < n; ++k) {
                triangles.insert(triangles.end(), {corners[first], corners[first + k - 1], corners[first + k]});
                faces.push_back(static_cast<std::int32_t>(f));
            }
            first += n;
        }
        return {gather(vertices, triangles), std::move(faces)};
    }

    /// Half the cube root of the number of triangles along each axis, more along the longer ones, 1 along one without
    /// extent.
    static GridSize size_for(PointView corners)
    {
        constexpr double kThin = 1e-06; // of the longest side
        if (corners.empty())
            return {1, 1, 1};
        Point low = corners[0], high = corners[0];
        for (std::size_t i = 1; i < corners.size(); ++i)
            for (std::size_t k = 0; k < 3; ++k) {
                low[k] = std::min(low[k], corners[i][k]);
                high[k] = std::max(high[k], corners[i][k]);
            }
        const Point extent = detail::minus(high, low);
        const double longest = std::ranges::max(extent);
        double product = 1.0, axes = 0.0;
        for (const double e : extent) {
            if (e > kThin * longest) {
                product *= e / longest;
                axes += 1.0;
            }
        }
        const double along = 0.5 * std::cbrt(static_cast<double>(corners.size()) / 3.0);
        const double mean = axes > 0.0 ? std::pow(product, 1.0 / axes) : 1.0;
        std::int32_t cells[3];
        for (std::size_t k = 0; k < 3; ++k) {
            const double wanted = extent[k] > kThin * longest ? along * (extent[k] / longest) / mean : 1.0;
            cells[k] = static_cast<std::int32_t>(std::clamp(std::round(wanted), 1.0, 256.0));
        }
        return {cells[0], cells[1], cells[2]};
    }

    static void require_rows(const char* argument, std::size_t rows, std::size_t rays)
    {
        if (rows != 0 && rows != rays)
            throw Error("RayGrid::cast", argument, "be empty or have " + detail::text_of(rays) + " values",
                        "it has " + detail::text_of(rows));
    }

    int query(const Point& origin, const Point& direction, double& distance)
    {
        return ray_intersect(detail::unconst(origin.data()), detail::unconst(direction.data()), &state_->status,
                             &distance);
    }

    std::int32_t nearest_triangle(const Point& origin, const Point& direction)
    {
        RayHit best = {std::numeric_limits<double>::infinity(), -1};
        visit(origin, direction, [&](const RayHit& hit) {
            if (hit.distance < best.distance)
                best = hit;
        });
        return best.triangle;
    }

    /// Hands over the triangles met by the latest query, in the order of their numbers: of those it tested, which it
    /// has marked, the ones that the ray meets in its own frame.
    template <class Visitor>
    void visit(const Point& origin, const Point& direction, Visitor visitor)
    {
        Point unit = direction, start = {0.0, 0.0, 0.0};
        normalize(unit.data());
        Xfm into;
        ray_compute_xfm(detail::unconst(origin.data()), unit.data(), into);
        const std::uint8_t* const marks = state_->status.tri_marks.bvals;
        const std::size_t n = size();
        std::size_t t = 0;
        while (t < n) {
            const void* const found = std::memchr(marks + t, 1, n - t);
            if (found == nullptr)
                return;
            t = static_cast<std::size_t>(static_cast<const std::uint8_t*>(found) - marks);
            double corners[9], z = 0.0;
            for (std::size_t k = 0; k < 3; ++k)
                TransformPoint(into, state_->triangles.dvals + 9 * t + 3 * k, corners + 3 * k);
            if (z_intersect(start.data(), corners, &z) == 1)
                visitor(RayHit{z, static_cast<std::int32_t>(t)});
            ++t;
        }
    }

    std::unique_ptr<State> state_;
};

} // namespace korvale
