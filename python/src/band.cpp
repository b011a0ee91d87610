// Bands along open lines.
#include "support.h"

namespace korvale::python {
namespace {

/// From so many points on a band is likely to take 20 microseconds or more.
constexpr std::size_t kLongLine = 16;

/// A band that remembers whether its line was closed.
struct LaidBand : Band {
    bool closed = false;
};

bool is_equal(const LaidBand& a, const LaidBand& b)
{
    const auto edges = [](const Band& band) {
        return band.crossing ? std::array{band.crossing->first, band.crossing->second} : std::array{SIZE_MAX, SIZE_MAX};
    };
    return a.closed == b.closed && a.collapsed == b.collapsed && edges(a) == edges(b) &&
           std::ranges::equal(a.outline, b.outline) && std::ranges::equal(a.removed, b.removed) &&
           std::ranges::equal(a.narrowed, b.narrowed) && std::ranges::equal(a.sources, b.sources);
}

py::array outline_of(py::object self)
{
    Points& outline = self.cast<LaidBand&>().outline;
    return view_of(std::span(outline.data(), outline.size()), self);
}

/// One side of a band, in its outline.
py::array side_of(py::object self, std::span<const Point> side)
{
    Points& outline = self.cast<LaidBand&>().outline;
    return view_of(std::span(outline.data() + (side.data() - outline.data()), side.size()), self);
}

py::array border_of(py::object self)
{
    return side_of(self, static_cast<const Band&>(self.cast<LaidBand&>()).border());
}

py::array removed_of(py::object self)
{
    Array<std::uint8_t>& removed = self.cast<LaidBand&>().removed;
    return truths_of(removed.data(), removed.size(), self);
}

py::array narrowed_of(py::object self)
{
    Array<std::uint8_t>& narrowed = self.cast<LaidBand&>().narrowed;
    return truths_of(narrowed.data(), narrowed.size(), self);
}

py::array sources_of(py::object self)
{
    LaidBand& band = self.cast<LaidBand&>();
    if (!band.sources.empty())
        return view_of(band.sources.data(), {static_cast<py::ssize_t>(band.sources.size())}, self);
    const std::size_t n = band.removed.size();
    py::array_t<std::int32_t> sources(static_cast<py::ssize_t>(2 * n));
    std::int32_t* const to = sources.mutable_data();
    for (std::size_t i = 0; i < n; ++i)
        to[i] = to[2 * n - 1 - i] = static_cast<std::int32_t>(i);
    return sources;
}

py::array other_side_of(py::object self)
{
    return side_of(self, static_cast<const Band&>(self.cast<LaidBand&>()).other_side());
}

py::list outlines_of(py::object self)
{
    py::list outlines;
    if (self.cast<LaidBand&>().closed) {
        outlines.append(border_of(self));
        outlines.append(other_side_of(self));
    } else {
        outlines.append(outline_of(self));
    }
    return outlines;
}

py::object crossing_of(const LaidBand& band)
{
    if (!band.crossing)
        return py::none();
    return py::make_tuple(band.crossing->first, band.crossing->second);
}

py::tuple state_of(py::object self)
{
    const LaidBand& band = self.cast<LaidBand&>();
    const py::object sources = band.sources.empty() ? py::object(py::none()) : py::object(sources_of(self));
    return py::make_tuple(outline_of(self), removed_of(self), band.collapsed, crossing_of(band), narrowed_of(self),
                          band.closed, sources);
}

LaidBand restored(const py::tuple& state)
{
    const auto outline = state[0].cast<py::array_t<double, py::array::c_style>>();
    const auto removed = state[1].cast<py::array_t<bool, py::array::c_style>>();
    LaidBand band;
    band.closed = state[5].cast<bool>();
    band.outline = Points(static_cast<std::size_t>(outline.size()) / 3);
    std::copy_n(outline.data(), 3 * band.outline.size(), band.outline.coordinates().data());
    band.removed = Array<std::uint8_t>(static_cast<std::size_t>(removed.size()));
    std::copy_n(removed.data(), band.removed.size(), band.removed.data());
    const auto narrowed = state[4].cast<py::array_t<bool, py::array::c_style>>();
    band.narrowed = Array<std::uint8_t>(static_cast<std::size_t>(narrowed.size()));
    std::copy_n(narrowed.data(), band.narrowed.size(), band.narrowed.data());
    band.collapsed = state[2].cast<bool>();
    if (!state[3].is_none()) {
        const py::tuple edges = state[3];
        band.crossing = Crossing{edges[0].cast<std::size_t>(), edges[1].cast<std::size_t>()};
    }
    if (!state[6].is_none()) {
        const auto sources = state[6].cast<py::array_t<std::int32_t, py::array::c_style>>();
        band.sources = Array<std::int32_t>(static_cast<std::size_t>(sources.size()));
        std::copy_n(sources.data(), band.sources.size(), band.sources.data());
    }
    return band;
}

LaidBand band_of(py::handle line, py::handle distance, py::handle height, py::handle both_sides, py::handle up,
                 py::handle closed, py::handle miter_limit, int cap, double tolerance, py::handle report)
{
    const PointsIn points(line, "band", "line");
    korvale_band_options options;
    korvale_band_defaults(&options, sizeof options);
    options.height = number_of(height, "band", "height");
    options.both_sides = flag_of(both_sides, "band", "both_sides");
    options.closed = closed.is_none() ? converted("is_ring", line).cast<bool>() : flag_of(closed, "band", "closed");
    options.miter_limit = number_of(miter_limit, "band", "miter_limit");
    options.has_up = !up.is_none();
    if (options.has_up != 0)
        std::ranges::copy(PointsIn(converted("point", up, "band", "up"), "band", "up").view()[0], options.up);
    options.cap = cap;
    options.tolerance = tolerance;
    korvale_rings* whole = nullptr;
    options.outlines = cap == KORVALE_CAP_FLAT ? nullptr : &whole;
    const double d = number_of(distance, "band", "distance");
    const PointView view = options.closed != 0 ? points.outline() : points.view();
    const std::size_t n = view.size();
    LaidBand band;
    band.closed = options.closed != 0;
    band.outline = Points(2 * n);
    band.removed = Array<std::uint8_t>(n);
    band.narrowed = Array<std::uint8_t>(n);
    korvale_band_result result = {
        band.outline.coordinates().data(), band.removed.data(), band.narrowed.data(), 0, 0, {0, 0}};
    const korvale_points places = detail::view_of(view);
    Watched(report).run("band", n >= kLongLine, [&](auto progress, void* user, korvale_error* error) {
        options.progress = progress;
        options.user = user;
        return korvale_band(&places, d, &options, &result, error);
    });
    if (whole != nullptr) {
        Rings rings = detail::taken(whole);
        band.outline = std::move(rings.points);
        band.sources = std::move(rings.sources);
    }
    band.collapsed = result.collapsed != 0;
    if (result.crosses != 0)
        band.crossing =
            Crossing{static_cast<std::size_t>(result.crossing[0]), static_cast<std::size_t>(result.crossing[1])};
    return band;
}

py::array thin_of(py::handle line, py::handle tolerance)
{
    const PointsIn points(line, "thin", "line");
    const double t = number_of(tolerance, "thin", "tolerance");
    std::vector<std::size_t> kept;
    {
        const Unlocked unlocked(points.view().size() >= kLongLine);
        kept = thin(points.view(), t);
    }
    py::array_t<std::int64_t> numbers(static_cast<py::ssize_t>(kept.size()));
    std::ranges::copy(kept, numbers.mutable_data());
    return numbers;
}

} // namespace

void bind_band(py::module_& m)
{
    py::class_<LaidBand>(m, "Band",
                         "A closed outline along a line. Made by `band`.\n\n"
                         "It is its outline where NumPy asks: numpy.asarray(result), len(result), for point in result.")
        .def_property_readonly("outline", &outline_of,
                               "float64 (2 N, 3): the border in the order of the line, then the other side backwards, "
                               "and behind each of them the points of a cap; the library's own memory.")
        .def_property_readonly("border", &border_of,
                               "float64 (N, 3): the border alone, one point for each point of the line.")
        .def_property_readonly("removed", &removed_of,
                               "bool, one for each point of the line: it gave way and shares the place of others.")
        .def_property_readonly("narrowed", &narrowed_of,
                               "bool, one for each point of the line: it gave way in part, as another part of the line "
                               "is nearer than the distance, or its corner is sharper than the miter limit and ends "
                               "there.")
        .def_property_readonly("sources", &sources_of,
                               "int32, one for each point of the outline: the point of the line that it belongs to.")
        .def_property_readonly("other_side", &other_side_of,
                               "float64 (N, 3): the rest of the outline, the line or its other border, backwards.")
        .def_readonly("collapsed", &LaidBand::collapsed,
                      "True where no part of the line has a border at this distance, on any side that was asked for.")
        .def_property_readonly("crossing", &crossing_of,
                               "Two edges at which the outline meets itself, (i, k), or None. Edge i runs from point i "
                               "to the next.")
        .def("__len__", [](const LaidBand& self) { return self.outline.size(); })
        .def("__iter__", [](py::object self) { return py::iter(outline_of(self)); })
        .def("__getitem__", [](py::object self, py::object key) { return py::object(outline_of(self)[key]); })
        .def(
            "__array__",
            [](py::object self, py::object dtype, py::object copy) {
                return array_of_points(outline_of(self), dtype, copy);
            },
            py::arg("dtype") = py::none(), py::arg("copy") = py::none())
        .def_readonly("closed", &LaidBand::closed, "True for a ring, which has two outlines.")
        .def_property_readonly("outlines", &outlines_of,
                               "The outline in a list; of a ring both, `border` and `other_side`.")
        .def(
            "to_shapely", [](py::object self) { return shown("band_to_shapely", self); },
            "The band as a polygon of Shapely; of a ring one with a hole, unless nothing is left inside; an empty one "
            "of a line at one place. Refused where it meets itself, see `crossing`, and in an upright plane, of which "
            "Shapely sees nothing.")
        .def("_repr_svg_",
             [](py::object self) { return shown("outlines_svg", outlines_of(self), self.cast<LaidBand&>().collapsed); })
        .def("__eq__", &is_equal, py::is_operator())
        .def("__repr__",
             [](const LaidBand& self) {
                 return "<korvale.Band of " + detail::counted(self.outline.size(), "point") +
                        (self.collapsed ? ", collapsed" : "") + (self.crossing ? ", meets itself>" : ">");
             })
        .def(py::pickle(&state_of, &restored));
    m.def("band", &band_of);
    m.def("thin", &thin_of);
}

} // namespace korvale::python
