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
           std::ranges::equal(a.removed, b.removed) && std::ranges::equal(a.merged_into, b.merged_into) &&
           std::ranges::equal(a.sources, b.sources);
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

/// The vertex that each point belongs to: what joins have told, or what follows from the vertices that are left out.
py::array sources_of(py::object self)
{
    auto& offset = self.cast<Offset&>();
    if (offset.sources.data() != nullptr)
        return view_of(offset.sources.data(), {static_cast<py::ssize_t>(offset.sources.size())}, self);
    const std::size_t n = offset.points.size();
    py::array_t<std::int32_t> sources(static_cast<py::ssize_t>(n));
    std::int32_t* to = sources.mutable_data();
    for (std::size_t i = 0; i < offset.removed.size(); ++i)
        if (n == offset.removed.size() || offset.removed[i] == 0)
            *to++ = static_cast<std::int32_t>(i);
    return sources;
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
    if (!state[4].is_none()) {
        const auto sources = state[4].cast<py::array_t<std::int32_t, py::array::c_style>>();
        result.sources = Array<std::int32_t>(static_cast<std::size_t>(sources.size()));
        std::copy_n(sources.data(), result.sources.size(), result.sources.data());
    }
    return result;
}

py::tuple state_of(py::object self)
{
    const auto& offset = self.cast<Offset&>();
    const py::object sources = offset.sources.data() == nullptr ? py::object(py::none()) : py::object(sources_of(self));
    return py::make_tuple(points_of(self), removed_of(self), merged_into_of(self), offset.collapsed, sources);
}

/// How outlines are moved; the options show the joins of corners.
struct How {
    korvale_offset_options options;
    py::array_t<std::int32_t, py::array::c_style> joins; ///< of corners, or empty

    /// What may give a vertex more than one point.
    bool has_joins() const
    {
        return options.join != KORVALE_JOIN_MITER || options.miter_limit != 0.0 || joins.size() > 0;
    }
};

/// Borders of an outer outline and its holes.
std::vector<Offset> offset_of(std::span<const PointView> views, std::size_t points, double distance, How how,
                              py::handle report)
{
    struct Free {
        void operator()(korvale_offsetter* offsetter) const noexcept { korvale_offsetter_free(offsetter); }
    };
    std::vector<korvale_points> outlines;
    for (const PointView& outline : views)
        outlines.push_back(detail::view_of(outline));
    const auto n = static_cast<std::int64_t>(outlines.size());
    korvale_offsetter* made = nullptr;
    korvale_error failure;
    detail::check("offset", korvale_offsetter_new(&made, &failure), failure);
    const std::unique_ptr<korvale_offsetter, Free> offsetter(made);
    Watched(report).run("offset", points >= kLongOutline, [&](auto progress, void* user, korvale_error* error) {
        how.options.progress = progress;
        how.options.user = user;
        return korvale_offsetter_run(made, outlines.data(), n, distance, &how.options, error);
    });
    std::vector<Offset> borders;
    for (std::int64_t k = 0; k < n; ++k) {
        Array<std::int32_t> sources;
        if (const std::int32_t* const from = korvale_offsetter_sources(made, k); from != nullptr) {
            sources = Array<std::int32_t>(static_cast<std::size_t>(korvale_offsetter_border(made, k).count));
            std::copy_n(from, sources.size(), sources.data());
        }
        const korvale_border border = korvale_offsetter_take(made, k);
        const auto vertices = static_cast<std::size_t>(border.vertices);
        borders.push_back({Points(border.points, static_cast<std::size_t>(border.count)),
                           {border.removed, vertices},
                           {border.merged_into, vertices},
                           border.collapsed != 0,
                           std::move(sources)});
    }
    return borders;
}

Offset offset_of(PointView outline, double distance, How how, py::handle report)
{
    if (how.has_joins())
        return std::move(offset_of({&outline, 1}, outline.size(), distance, std::move(how), report)[0]);
    Offset border;
    border.points = Points(outline.size());
    border.removed = Array<std::uint8_t>(outline.size());
    border.merged_into = Array<std::int32_t>(outline.size());
    korvale_border to = {
        border.points.coordinates().data(), border.removed.data(), border.merged_into.data(), 0, 0, 0, 0};
    const korvale_points points = detail::view_of(outline);
    Watched(report).run("offset", outline.size() >= kLongOutline, [&](auto progress, void* user, korvale_error* error) {
        how.options.progress = progress;
        how.options.user = user;
        return korvale_offset(&points, distance, &how.options, &to, error);
    });
    border.points = Points(border.points.release(), static_cast<std::size_t>(to.count));
    border.collapsed = to.collapsed != 0;
    return border;
}

/// `joins` is a tuple of the join, the numbers of those of corners, or None, the miter limit and the tolerance.
How how_of(py::handle height, py::handle keep_vertices, py::handle split, const py::tuple& joins, const char* function)
{
    How how;
    korvale_offset_defaults(&how.options, sizeof how.options);
    how.options.height = number_of(height, function, "height");
    how.options.keep_vertices = flag_of(keep_vertices, function, "keep_vertices");
    how.options.split = flag_of(split, function, "split");
    how.options.join = joins[0].cast<std::int32_t>();
    how.options.miter_limit = joins[2].cast<double>();
    how.options.tolerance = joins[3].cast<double>();
    if (!joins[1].is_none()) {
        how.joins = joins[1].cast<py::array_t<std::int32_t, py::array::c_style>>();
        how.options.corner_joins = {how.joins.data(), how.joins.size(), 0, KORVALE_INT32};
    }
    return how;
}

/// An `Offset` for an outline, a list of them for a list of outlines.
py::object offset_any(py::handle outline, py::handle distance, py::handle height, py::handle keep_vertices,
                      py::handle split, const py::tuple& joins, py::handle report)
{
    const double d = number_of(distance, "offset", "distance");
    const How how = how_of(height, keep_vertices, split, joins, "offset");
    if (is_plain_points(outline))
        return py::cast(offset_of(PointsIn(outline, "offset", "outline").outline(), d, how, report));

    const py::object input = converted("outline_or_shape", outline, "offset", "outline");
    if (!py::isinstance<py::list>(input))
        return py::cast(offset_of(PointsIn(input, "offset", "outline").outline(), d, how, report));
    py::list list;
    const ShapeIn shape(input, "offset", "outline");
    for (Offset& border : offset_of(shape.views(), shape.points(), d, how, report))
        list.append(std::move(border));
    return list;
}

/// The fields of `korvale.Borders`, for outlines (N, 2) or (N, 3) that do not repeat their first point.
py::tuple offset_many(const Doubles& points, const Longs& starts, const Doubles& distances, py::handle height,
                      py::handle keep_vertices, py::handle split, const py::tuple& joins, py::handle report)
{
    How how = how_of(height, keep_vertices, split, joins, "offset_many");
    korvale_offset_options& options = how.options;
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

/// The fields of `korvale.Rings`; `make` calls the library.
template <class Make>
py::tuple rings_of(py::handle outline, How how, py::handle report, const Make& make)
{
    korvale_offset_options& options = how.options;
    const PointsIn points(outline, "offset", "outline");
    const korvale_points from = detail::view_of(points.outline());
    korvale_rings* made = nullptr;
    Watched(report).run("offset", points.view().size() >= kLongOutline,
                        [&](auto progress, void* user, korvale_error* error) {
                            options.progress = progress;
                            options.user = user;
                            return make(&from, &options, &made, error);
                        });
    const korvale_ring_arrays all = korvale_rings_take(made);
    korvale_rings_free(made);
    const auto n = static_cast<py::ssize_t>(all.starts[all.rings]);
    return py::make_tuple(adopted(all.points, {n, 3}), adopted(all.starts, {all.rings + 1}), adopted(all.sources, {n}),
                          adopted(all.parents, {all.rings}), adopted(all.births, {all.rings}),
                          adopted(all.ends, {all.rings}), adopted_truths(all.collapsed, all.rings));
}

py::tuple offset_rings(py::handle outline, py::handle distance, py::handle height, py::handle keep_vertices,
                       py::handle split, const py::tuple& joins, py::handle report)
{
    const double d = number_of(distance, "offset", "distance");
    return rings_of(outline, how_of(height, keep_vertices, split, joins, "offset"), report,
                    [d](auto* from, auto... rest) { return korvale_offset_rings(from, d, rest...); });
}

/// Those of each distance one behind the other.
py::tuple offset_distances(py::handle outline, const Doubles& distances, py::handle height, py::handle keep_vertices,
                           py::handle split, const py::tuple& joins, py::handle report)
{
    const korvale_numbers each = {distances.data(), distances.size(), 0, 1, KORVALE_DOUBLE};
    return rings_of(outline, how_of(height, keep_vertices, split, joins, "offset"), report,
                    [&each](auto* from, auto... rest) { return korvale_offset_distances(from, &each, rest...); });
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
        .def_property_readonly("sources", &sources_of,
                               "int32, one for each point of the border: the vertex of the outline it belongs to.")
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
            "collapsed. Refused where it meets itself, and in an upright plane, of which Shapely sees nothing.")
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
    m.def("offset_distances", &offset_distances);
}

} // namespace korvale::python
