// Outlines moved sideways. One outline in a plain array goes from the caller's memory through the sweep to the result
// without a line of Python.
#include "support.h"

namespace korvale::python {
namespace {

using Doubles = py::array_t<double, py::array::c_style>;
using Longs = py::array_t<std::int64_t, py::array::c_style>;

/// From so many points on a sweep is likely to take 20 microseconds or more.
constexpr std::size_t kLongOutline = 32;

bool is_equal(const Offset& a, const Offset& b)
{
    return a.collapsed == b.collapsed && std::ranges::equal(a.points, b.points) &&
           std::ranges::equal(a.removed, b.removed) && std::ranges::equal(a.merged_into, b.merged_into);
}

py::array points_of(py::object self)
{
    Points& points = self.cast<Offset&>().points;
    return view_of(std::span(points.data(), points.size()), self);
}

py::array removed_of(py::object self)
{
    Array<std::uint8_t>& removed = self.cast<Offset&>().removed;
    return truths_of(removed.data(), removed.size(), self);
}

py::array merged_into_of(py::object self)
{
    Array<std::int32_t>& merged = self.cast<Offset&>().merged_into;
    return view_of(merged.data(), {static_cast<py::ssize_t>(merged.size())}, self);
}

/// A copy made of what `state_of` gave.
Offset restored(const py::tuple& state)
{
    const auto points = state[0].cast<py::array_t<double, py::array::c_style>>();
    const auto removed = state[1].cast<py::array_t<bool, py::array::c_style>>();
    const auto merged = state[2].cast<py::array_t<std::int32_t, py::array::c_style>>();
    Offset result;
    result.points = Points(static_cast<std::size_t>(points.size()) / 3);
    std::copy_n(points.data(), 3 * result.points.size(), result.points.coordinates().data());
    result.removed = Array<std::uint8_t>(static_cast<std::size_t>(removed.size()));
    std::copy_n(removed.data(), result.removed.size(), result.removed.data());
    result.merged_into = Array<std::int32_t>(static_cast<std::size_t>(merged.size()));
    std::copy_n(merged.data(), result.merged_into.size(), result.merged_into.data());
    result.collapsed = state[3].cast<bool>();
    return result;
}

py::tuple state_of(py::object self)
{
    return py::make_tuple(points_of(self), removed_of(self), merged_into_of(self), self.cast<Offset&>().collapsed);
}

Offset offset_of(PointView outline, double distance, korvale_offset_options options, py::handle report)
{
    Offset border;
    border.points = Points(outline.size());
    border.removed = Array<std::uint8_t>(outline.size());
    border.merged_into = Array<std::int32_t>(outline.size());
    korvale_border to = {
        border.points.coordinates().data(), border.removed.data(), border.merged_into.data(), 0, 0, 0, 0};
    const korvale_points points = detail::view_of(outline);
    Watched(report).run("offset", outline.size() >= kLongOutline, [&](auto progress, void* user, korvale_error* error) {
        options.progress = progress;
        options.user = user;
        return korvale_offset(&points, distance, &options, &to, error);
    });
    border.points = Points(border.points.release(), static_cast<std::size_t>(to.count));
    border.collapsed = to.collapsed != 0;
    return border;
}

/// Of an outer outline and its holes.
std::vector<Offset> offset_of(const ShapeIn& shape, double distance, korvale_offset_options options, py::handle report)
{
    struct Free {
        void operator()(korvale_offsetter* offsetter) const noexcept { korvale_offsetter_free(offsetter); }
    };
    std::vector<korvale_points> outlines;
    for (const PointView& outline : shape.views())
        outlines.push_back(detail::view_of(outline));
    const auto n = static_cast<std::int64_t>(outlines.size());
    korvale_offsetter* made = nullptr;
    korvale_error failure;
    detail::check("offset", korvale_offsetter_new(&made, &failure), failure);
    const std::unique_ptr<korvale_offsetter, Free> offsetter(made);
    Watched(report).run("offset", shape.points() >= kLongOutline, [&](auto progress, void* user, korvale_error* error) {
        options.progress = progress;
        options.user = user;
        return korvale_offsetter_run(made, outlines.data(), n, distance, &options, error);
    });
    std::vector<Offset> borders;
    for (std::int64_t k = 0; k < n; ++k) {
        const korvale_border border = korvale_offsetter_take(made, k);
        const auto vertices = static_cast<std::size_t>(border.vertices);
        borders.push_back({Points(border.points, static_cast<std::size_t>(border.count)),
                           {border.removed, vertices},
                           {border.merged_into, vertices},
                           border.collapsed != 0});
    }
    return borders;
}

korvale_offset_options options_of(py::handle height, py::handle keep_vertices, py::handle split, const char* function)
{
    korvale_offset_options options;
    korvale_offset_defaults(&options, sizeof options);
    options.height = number_of(height, function, "height");
    options.keep_vertices = flag_of(keep_vertices, function, "keep_vertices");
    options.split = flag_of(split, function, "split");
    return options;
}

/// An `Offset` for an outline, a list of them for a list of outlines.
py::object offset_any(py::handle outline, py::handle distance, py::handle height, py::handle keep_vertices,
                      py::handle split, py::handle report)
{
    const double d = number_of(distance, "offset", "distance");
    const korvale_offset_options options = options_of(height, keep_vertices, split, "offset");
    if (is_plain_points(outline))
        return py::cast(offset_of(PointsIn(outline, "offset", "outline").outline(), d, options, report));

    const py::object input = converted("outline_or_shape", outline, "offset", "outline");
    if (!py::isinstance<py::list>(input))
        return py::cast(offset_of(PointsIn(input, "offset", "outline").outline(), d, options, report));
    py::list list;
    for (Offset& border : offset_of(ShapeIn(input, "offset", "outline"), d, options, report))
        list.append(std::move(border));
    return list;
}

/// The fields of `korvale.Borders`, for outlines (N, 2) or (N, 3) that do not repeat their first point.
py::tuple offset_many(const Doubles& points, const Longs& starts, const Doubles& distances, py::handle height,
                      py::handle keep_vertices, py::handle split, py::handle report)
{
    korvale_offset_options options = options_of(height, keep_vertices, split, "offset_many");
    const korvale_points from = {points.data(), points.shape(0), 0, static_cast<std::int32_t>(points.shape(1)),
                                 KORVALE_DOUBLE};
    const korvale_indices begins = {starts.data(), starts.size(), 0, KORVALE_INT64};
    const korvale_numbers each = {distances.data(), distances.size(), 0, 1, KORVALE_DOUBLE};
    const bool is_long = static_cast<std::size_t>(points.shape(0)) >= kLongOutline;
    korvale_borders* made = nullptr;
    Watched(report).run("offset_many", is_long, [&](auto progress, void* user, korvale_error* error) {
        options.progress = progress;
        options.user = user;
        return korvale_offset_many(&from, &begins, &each, &options, &made, error);
    });
    const korvale_border_arrays all = korvale_borders_take(made);
    korvale_borders_free(made);
    const auto n = static_cast<py::ssize_t>(all.starts[all.outlines]);
    return py::make_tuple(adopted(all.points, {n, 3}), adopted(all.starts, {all.outlines + 1}),
                          adopted(all.sources, {n}), adopted_truths(all.collapsed, all.outlines),
                          adopted_truths(all.removed, all.vertices), adopted(all.merged_into, {all.vertices}));
}

/// The fields of `korvale.Rings`.
py::tuple offset_rings(py::handle outline, py::handle distance, py::handle height, py::handle keep_vertices,
                       py::handle split, py::handle report)
{
    const double d = number_of(distance, "offset", "distance");
    korvale_offset_options options = options_of(height, keep_vertices, split, "offset");
    const PointsIn points(outline, "offset", "outline");
    const korvale_points from = detail::view_of(points.outline());
    korvale_rings* made = nullptr;
    Watched(report).run("offset", points.view().size() >= kLongOutline,
                        [&](auto progress, void* user, korvale_error* error) {
                            options.progress = progress;
                            options.user = user;
                            return korvale_offset_rings(&from, d, &options, &made, error);
                        });
    const korvale_ring_arrays all = korvale_rings_take(made);
    korvale_rings_free(made);
    const auto n = static_cast<py::ssize_t>(all.starts[all.rings]);
    return py::make_tuple(adopted(all.points, {n, 3}), adopted(all.starts, {all.rings + 1}), adopted(all.sources, {n}),
                          adopted(all.parents, {all.rings}), adopted(all.births, {all.rings}),
                          adopted(all.ends, {all.rings}), adopted_truths(all.collapsed, all.rings));
}

} // namespace

void bind_offset(py::module_& m)
{
    py::class_<Offset>(m, "Offset",
                       "One border, and what became of every vertex of its outline. Made by `offset`.\n\n"
                       "It is its points where NumPy asks: numpy.asarray(result), len(result), for point in result.")
        .def_property_readonly("points", &points_of, "The border, float64 (N, 3); the library's own memory.")
        .def_property_readonly(
            "xy",
            [](py::object self) {
                return py::object(points_of(self)[py::make_tuple(py::ellipsis(), py::slice(0, 2, 1))]);
            },
            "The border without z, float64 (N, 2): a view of `points`.")
        .def_property_readonly("removed", &removed_of, "bool, one for each vertex of the outline: removed on the way.")
        .def_property_readonly("merged_into", &merged_into_of,
                               "int32, one for each vertex of the outline: the vertex it merged into, itself while it "
                               "stayed.")
        .def_readonly("collapsed", &Offset::collapsed,
                      "True where nothing is left: fewer than three vertices, all on one line, or, with split=False, "
                      "an outline that has turned inside out.")
        .def("__len__", [](const Offset& self) { return self.points.size(); })
        .def("__iter__", [](py::object self) { return py::iter(points_of(self)); })
        .def("__getitem__", [](py::object self, py::object key) { return py::object(points_of(self)[key]); })
        .def(
            "__array__",
            [](py::object self, py::object dtype, py::object copy) {
                return array_of_points(points_of(self), dtype, copy);
            },
            py::arg("dtype") = py::none(), py::arg("copy") = py::none())
        .def(
            "to_shapely", [](py::object self) { return shown("offset_to_shapely", self); },
            "The border as a polygon of Shapely, without the points of removed vertices; an empty one where it is "
            "collapsed.")
        .def("_repr_svg_",
             [](py::object self) {
                 return shown("outlines_svg", py::make_tuple(points_of(self)), self.cast<Offset&>().collapsed);
             })
        .def("__eq__", &is_equal, py::is_operator())
        .def("__repr__",
             [](const Offset& self) {
                 return "<korvale.Offset of " + detail::counted(self.points.size(), "point") +
                        (self.collapsed ? ", collapsed>" : ">");
             })
        .def(py::pickle(&state_of, &restored));
    m.def("offset", &offset_any);
    m.def("offset_many", &offset_many);
    m.def("offset_rings", &offset_rings);
}

} // namespace korvale::python
