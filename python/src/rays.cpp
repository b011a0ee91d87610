// Rays into a grid of triangles.
#include <pybind11/stl.h>

#include "support.h"

namespace korvale::python {
namespace {

using Doubles = py::array_t<double, py::array::c_style>;
using Ints = py::array_t<std::int32_t, py::array::c_style>;

/// From so many rays on a cast may take 20 microseconds or more; through so many triangles a single one may.
constexpr std::size_t kManyRays = 4;
constexpr std::size_t kManyTriangles = 500;

/// Points between two looks for signals: each may be asked for five times.
constexpr std::size_t kPoints = 1024;

/// From so many corners on cutting faces into triangles takes 20 microseconds or more.
constexpr py::ssize_t kManyCorners = 3000;

std::optional<GridSize> size_of(const py::object& cells)
{
    if (cells.is_none())
        return {};
    const auto [x, y, z] = cells.cast<std::array<std::int32_t, 3>>();
    return GridSize{x, y, z};
}

/// A grid with what keeps its triangles alive.
class Grid {
public:
    Grid(RayGrid grid, py::object borrowed) : grid_(std::move(grid)), borrowed_(std::move(borrowed)) {}

    const RayGrid& get() const { return grid_; }
    std::size_t size() const { return grid_.size(); }

    /// A turn at a grid that serves one thread at a time; any number of threads may ask one that owns its triangles.
    void take_turn(std::optional<Turns::Turn>& turn, const char* function, bool unlocked)
    {
        if (!borrowed_.is_none())
            turn.emplace(turns_, function, unlocked);
    }

    /// The triangles [.][9] as the grid reads them, in an array that keeps `self` alive.
    static py::object corners(const py::object& self)
    {
        const Grid& grid = self.cast<const Grid&>();
        if (!grid.borrowed_.is_none())
            return grid.borrowed_;
        py::array corners = py::array_t<double>({static_cast<py::ssize_t>(grid.size()), py::ssize_t{9}},
                                                grid.get().triangles().data(), self);
        corners.attr("setflags")(false);
        return corners;
    }

private:
    RayGrid grid_;
    py::object borrowed_; // the array that the grid reads, [.][9], or None
    Turns turns_;
};

/// Of corners [.][9], which are copied or read by every query.
std::unique_ptr<Grid> grid_of(const Doubles& corners, const py::object& cells, bool borrow, const py::object& report)
{
    const std::optional<GridSize> size = size_of(cells);
    const PointView points = PointView::at(corners.data(), static_cast<std::size_t>(corners.size()) / 3);
    std::optional<RayGrid> grid;
    {
        const py::gil_scoped_release unlocked;
        if (borrow)
            grid.emplace(RayGrid::over(TriangleView(points), size));
        else
            grid.emplace(TriangleView(points), size, Signals(report));
    }
    return std::make_unique<Grid>(std::move(*grid), borrow ? py::object(corners) : py::none());
}

/// Of triangles on shared vertices.
std::unique_ptr<Grid> grid_of_mesh(const Doubles& vertices, const Ints& triangles, const py::object& cells,
                                   const py::object& report)
{
    const std::optional<GridSize> size = size_of(cells);
    const PointView points = PointView::at(vertices.data(), static_cast<std::size_t>(vertices.size()) / 3);
    const std::span<const Triangle> numbers(reinterpret_cast<const Triangle*>(triangles.data()),
                                            static_cast<std::size_t>(triangles.size()) / 3);
    std::optional<RayGrid> grid;
    {
        const py::gil_scoped_release unlocked;
        grid.emplace(points, numbers, size, Signals(report));
    }
    return std::make_unique<Grid>(std::move(*grid), py::none());
}

/// (sizes, corners) of faces cut into triangles about their first corners, and the face of each triangle.
py::tuple fans_of(const Ints& sizes, const Ints& corners)
{
    std::vector<std::int32_t> triangles, faces;
    {
        const Unlocked unlocked(corners.size() >= kManyCorners);
        const std::int32_t* at = corners.data();
        for (std::int32_t f = 0; f < sizes.size(); ++f) {
            const std::int32_t n = sizes.data()[f];
            for (std::int32_t k = 2; k < n; ++k) {
                triangles.insert(triangles.end(), {at[0], at[k - 1], at[k]});
                faces.push_back(f);
            }
            at += n;
        }
    }
    return py::make_tuple(Ints({static_cast<py::ssize_t>(faces.size()), py::ssize_t{3}}, triangles.data()),
                          Ints(static_cast<py::ssize_t>(faces.size()), faces.data()));
}

/// Runs a query on one ray in the grid's turn.
template <class Query>
auto ask(Grid& grid, const char* function, py::handle origin, py::handle direction, Query query)
{
    const Point from = PointsIn(origin, function, "origin").view()[0];
    const Point along = PointsIn(direction, function, "direction").view()[0];
    detail::require_finite(function, "origin", PointView(std::span(&from, 1)));
    detail::require_finite(function, "direction", PointView(std::span(&along, 1)));
    const Unlocked unlocked(grid.size() >= kManyTriangles);
    std::optional<Turns::Turn> turn;
    grid.take_turn(turn, function, grid.size() >= kManyTriangles);
    return query(grid.get(), from, along);
}

py::tuple tuple_of(const RayHit& hit)
{
    return py::make_tuple(hit.distance, hit.triangle, py::tuple(py::cast(hit.corners)),
                          py::tuple(py::cast(hit.weights)));
}

py::object nearest_of(Grid& grid, py::handle origin, py::handle direction)
{
    const auto hit =
        ask(grid, "RayGrid.nearest", origin, direction, [](auto& g, auto& o, auto& d) { return g.nearest(o, d); });
    if (!hit)
        return py::none();
    return tuple_of(*hit);
}

py::list hits_of(Grid& grid, py::handle origin, py::handle direction)
{
    py::list list;
    for (const RayHit& hit :
         ask(grid, "RayGrid.hits", origin, direction, [](auto&g, auto&o, auto&d) { return g.hits(o, d); }))
        list.append(tuple_of(hit));
    return list;
}

int count_of(Grid& grid, py::handle origin, py::handle direction)
{
    return ask(grid, "RayGrid.count", origin, direction, [](auto& g, auto& o, auto& d) { return g.count(o, d); });
}

bool any_of(Grid& grid, py::handle origin, py::handle direction, double reach)
{
    return ask(grid, "RayGrid.any", origin, direction,
               [reach](auto& g, auto& o, auto& d) { return g.any(o, d, reach); });
}

/// Which points from row `first` to before `last` are inside, to `inside`.
void contains(Grid& grid, const Doubles& points, py::array_t<bool> inside, std::size_t first, std::size_t last)
{
    bool* const to = inside.mutable_data();
    const Unlocked unlocked(true);
    std::optional<Turns::Turn> turn;
    grid.take_turn(turn, "RayGrid.contains", true);
    const Progress signals = Signals();
    for (std::size_t i = first; i < last; i += kPoints) {
        const std::size_t n = std::min(kPoints, last - i);
        const std::vector<bool> answers = grid.get().contains(PointView::at(points.data() + 3 * i, n), signals);
        std::copy(answers.begin(), answers.end(), to + i);
    }
}

template <class T>
std::span<T> span_of(const py::object& array)
{
    if (array.is_none())
        return {};
    py::array_t<T> out = array;
    return {out.mutable_data(), static_cast<std::size_t>(out.size())};
}

/// Rays from row `first` to before `last` into arrays that are there; those that are None are not wanted.
void cast_rays(Grid& grid, const Doubles& origins, const Doubles& directions, const py::object& distances,
               const py::object& triangles, const py::object& counts, const py::object& weights, std::size_t first,
               std::size_t last)
{
    const auto rows = [&](const Doubles& points) {
        const auto n = static_cast<std::size_t>(points.shape(0));
        return n == 1 ? PointView::at(points.data(), 1) : PointView::at(points.data() + 3 * first, last - first);
    };
    const auto part = [&](auto all) { return all.empty() ? all : all.subspan(first, last - first); };
    RayColumns columns = {part(span_of<double>(distances)), part(span_of<std::int32_t>(triangles)),
                          part(span_of<std::int32_t>(counts))};
    if (const std::span<double> all = span_of<double>(weights); !all.empty())
        columns.weights = PointSpan::at(all.data() + 3 * first, last - first);
    const PointView from = rows(origins), along = rows(directions);
    const bool is_long = last - first >= kManyRays || grid.size() >= kManyTriangles;
    const Unlocked unlocked(is_long);
    std::optional<Turns::Turn> turn;
    grid.take_turn(turn, "RayGrid.cast", is_long);
    grid.get().cast(from, along, columns, is_long ? Progress(Signals()) : Progress());
}

} // namespace

void bind_rays(py::module_& m)
{
    py::class_<Grid>(m, "Grid")
        .def(py::init(&grid_of))
        .def_static("of_mesh", &grid_of_mesh)
        .def("__len__", &Grid::size)
        .def_property_readonly("cells",
                               [](Grid& self) {
                                   const GridSize size = self.get().grid_size();
                                   return py::make_tuple(size.x, size.y, size.z);
                               })
        .def_property_readonly("corners", &Grid::corners)
        .def("any", &any_of)
        .def("contains", &contains)
        .def("nearest", &nearest_of)
        .def("hits", &hits_of)
        .def("count", &count_of)
        .def("cast", &cast_rays);
    m.def("fans", &fans_of);
}

} // namespace korvale::python
