// Points scattered over triangles.
#include "support.h"

namespace korvale::python {
namespace {

using Doubles = py::array_t<double, py::array::c_style>;
using Ints = py::array_t<std::int32_t, py::array::c_style>;

py::tuple arrays_of(Scattered scattered)
{
    const auto n = static_cast<py::ssize_t>(scattered.points.size());
    const auto width = static_cast<py::ssize_t>(scattered.width);
    const py::array points = adopted(scattered.points.release(), {n, 3});
    const py::array triangles = adopted(scattered.triangles.release(), {n});
    if (width == 0)
        return py::make_tuple(points, py::none(), triangles);
    return py::make_tuple(points, adopted(scattered.attributes.release(), {n, width}), triangles);
}

std::span<const double> values_of(const py::object& attributes)
{
    if (attributes.is_none())
        return {};
    const py::array array = attributes;
    return {static_cast<const double*>(array.data()), static_cast<std::size_t>(array.size())};
}

/// How to scatter; `report` is told of the thousandths done. All arrays are plain.
ScatterOptions options_of(const py::object& weights, py::handle report)
{
    return {values_of(weights), Signals(report)};
}

/// Over corners [.][9] with attributes of the corners.
py::tuple scatter_corners(const Doubles& corners, std::size_t count, unsigned seed, const py::object& attributes,
                          const py::object& weights, py::handle report)
{
    const PointView points = PointView::at(corners.data(), static_cast<std::size_t>(corners.size()) / 3);
    const std::span<const double> values = values_of(attributes);
    const ScatterOptions options = options_of(weights, report);
    Scattered result;
    {
        const py::gil_scoped_release unlocked;
        result = scatter(TriangleView(points), count, seed, values, options);
    }
    return arrays_of(std::move(result));
}

/// Over triangles on shared vertices with attributes of the vertices.
py::tuple scatter_mesh(const Doubles& vertices, const Ints& triangles, std::size_t count, unsigned seed,
                       const py::object& attributes, const py::object& weights, py::handle report)
{
    const PointView points = PointView::at(vertices.data(), static_cast<std::size_t>(vertices.size()) / 3);
    const std::span<const Triangle> faces(reinterpret_cast<const Triangle*>(triangles.data()),
                                          static_cast<std::size_t>(triangles.size()) / 3);
    const std::span<const double> values = values_of(attributes);
    const ScatterOptions options = options_of(weights, report);
    Scattered result;
    {
        const py::gil_scoped_release unlocked;
        result = scatter(points, faces, count, seed, values, options);
    }
    return arrays_of(std::move(result));
}

} // namespace

void bind_scatter(py::module_& m)
{
    m.def("scatter_corners", &scatter_corners);
    m.def("scatter_mesh", &scatter_mesh);
}

} // namespace korvale::python
