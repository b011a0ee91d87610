// Solids of outlines and paths.
#include "support.h"

namespace korvale::python {
namespace {

/// From so many points on, cutting a shape into triangles is likely to take 20 microseconds or more.
constexpr std::size_t kLongShape = 32;

/// From so many vertices and triangles on copying a mesh takes 20 microseconds or more.
constexpr std::size_t kLargeMesh = 5000;

/// From so many triangles on measuring a mesh takes 20 microseconds or more.
constexpr std::size_t kMeasuredMesh = 300;

py::array vertices_of(py::object self)
{
    return view_of(std::span(self.cast<Mesh&>().vertices), self);
}

py::array triangles_of(py::object self)
{
    std::vector<Triangle>& triangles = self.cast<Mesh&>().triangles;
    return view_of(triangles.empty() ? nullptr : triangles[0].data(), {static_cast<py::ssize_t>(triangles.size()), 3},
                   self);
}

py::array reached_of(py::object self)
{
    std::vector<double>& reached = self.cast<Mesh&>().reached;
    return view_of(reached.data(), {static_cast<py::ssize_t>(reached.size())}, self);
}

Mesh mesh_of(const py::object& vertices, const py::object& triangles)
{
    const PointsIn points(vertices, "Mesh", "vertices");
    const auto corners = py::array_t<std::int32_t, py::array::c_style>(
        converted("triangles", triangles, points.view().size(), "Mesh", "triangles"));
    const std::int32_t* const numbers = corners.data();
    const auto triangle_count = static_cast<std::size_t>(corners.shape(0));
    Mesh mesh;
    const Unlocked unlocked(points.view().size() + triangle_count >= kLargeMesh);
    mesh.vertices.resize(points.view().size());
    std::ranges::copy(points.view().coordinates(), mesh.vertices.empty() ? nullptr : mesh.vertices[0].data());
    mesh.triangles.resize(triangle_count);
    std::copy_n(numbers, 3 * triangle_count, mesh.triangles.empty() ? nullptr : mesh.triangles[0].data());
    return mesh;
}

py::tuple state_of(py::object self)
{
    return py::make_tuple(vertices_of(self), triangles_of(self), reached_of(self));
}

Mesh restored(const py::tuple& state)
{
    Mesh mesh = mesh_of(state[0], state[1]);
    const auto reached = state[2].cast<py::array_t<double, py::array::c_style>>();
    mesh.reached.assign(reached.data(), reached.data() + reached.size());
    return mesh;
}

py::array normals_of(const Mesh& mesh)
{
    py::array_t<double> normals({static_cast<py::ssize_t>(mesh.triangles.size()), py::ssize_t{3}});
    const korvale_triangles all = detail::triangles_of(mesh.vertices, mesh.triangles);
    double* const to = normals.mutable_data();
    const Unlocked unlocked(mesh.triangles.size() >= kMeasuredMesh);
    detail::call("Mesh.normals", [&](korvale_error* error) { return korvale_mesh_normals(&all, to, error); });
    return normals;
}

py::array areas_of(const Mesh& mesh)
{
    py::array_t<double> areas(static_cast<py::ssize_t>(mesh.triangles.size()));
    const korvale_triangles all = detail::triangles_of(mesh.vertices, mesh.triangles);
    double* const to = areas.mutable_data();
    const Unlocked unlocked(mesh.triangles.size() >= kMeasuredMesh);
    detail::call("Mesh.areas", [&](korvale_error* error) { return korvale_mesh_areas(&all, to, error); });
    return areas;
}

py::array bounds_of(const Mesh& mesh)
{
    const Bounds box = mesh.bounds();
    py::array_t<double> bounds({2, 3});
    std::ranges::copy(box.least, bounds.mutable_data(0));
    std::ranges::copy(box.greatest, bounds.mutable_data(1));
    return bounds;
}

double volume_of(const Mesh& mesh)
{
    const Unlocked unlocked(mesh.triangles.size() >= kMeasuredMesh);
    return mesh.volume();
}

Mesh bevel_of(const py::list& outlines, const py::array_t<double, py::array::c_style>& profile, py::handle split,
              py::handle crossing, py::handle report)
{
    const ShapeIn shape(outlines, "bevel", "outline");
    const std::vector<PointView> views = shape.views();
    const bool is_split = flag_of(split, "bevel", "split"), is_crossing = flag_of(crossing, "bevel", "crossing");
    static_assert(sizeof(BevelStep) == 2 * sizeof(double));
    std::vector<BevelStep> steps;
    for (py::ssize_t i = 0; i < profile.shape(0); ++i)
        steps.push_back({profile.at(i, 0), profile.at(i, 1)});
    const Progress signals = Signals(report);
    const py::gil_scoped_release unlocked;
    return bevel(views, steps, is_split, signals, is_crossing);
}

Mesh tube_of(py::handle path, py::handle section, py::handle closed, py::handle caps, py::handle report)
{
    const PointsIn points(path, "tube", "path"), around(section, "tube", "section");
    const TubeOptions options = {flag_of(closed, "tube", "closed"), flag_of(caps, "tube", "caps"), Signals(report)};
    const PointView along = options.closed ? points.outline() : points.view();
    const py::gil_scoped_release unlocked;
    return tube(along, around.outline(), options);
}

/// The triangles' own array, which keeps the vector alive.
py::array triangulate_of(const py::list& outlines, py::handle report)
{
    const ShapeIn shape(outlines, "triangulate", "outline");
    auto triangles = std::make_unique<std::vector<Triangle>>();
    const Progress signals = Signals(report);
    {
        const Unlocked unlocked(shape.points() >= kLongShape);
        *triangles = triangulate(shape.views(), signals);
    }
    std::vector<Triangle>* const block = triangles.get();
    const py::capsule owner(triangles.release(), [](void* p) { delete static_cast<std::vector<Triangle>*>(p); });
    return view_of(block->empty() ? nullptr : block->data()->data(), {static_cast<py::ssize_t>(block->size()), 3},
                   owner);
}

/// For each outline the number of its outer one, as `korvale_shapes` has them, and with a tolerance the points of the
/// outlines as they are joined, and where each begins.
py::tuple shapes_of(const py::list& outlines, py::handle tolerance, py::handle crossing, py::handle report)
{
    const ShapeIn shape(outlines, "shapes", "path");
    std::vector<korvale_points> views;
    for (const PointView& outline : shape.views())
        views.push_back(detail::view_of(outline));
    const bool is_crossing = flag_of(crossing, "shapes", "crossing");
    const double near = number_of(tolerance, "shapes", "tolerance");
    const Progress signals = Signals(report);
    py::array_t<std::int32_t> outer(static_cast<py::ssize_t>(views.size()));
    std::int32_t* const to = outer.mutable_data();
    const bool joins = near != 0 && !is_crossing;
    korvale_rings* joined = nullptr;
    {
        const Unlocked unlocked(shape.points() >= kLongShape);
        detail::done("shapes", signals, [&](korvale_progress tell, void* user, korvale_error* error) {
            const korvale_shapes_options how = {sizeof how, is_crossing, near, tell, user, joins ? &joined : nullptr};
            return korvale_shapes(views.data(), static_cast<std::int64_t>(views.size()), &how, to, error);
        }).value();
    }
    if (!joins)
        return py::make_tuple(outer, py::none());
    const std::unique_ptr<korvale_rings, void (*)(korvale_rings*)> owner(joined, &korvale_rings_free);
    const korvale_ring_arrays all = korvale_rings_view(joined);
    const auto n = static_cast<py::ssize_t>(all.starts[all.rings]);
    return py::make_tuple(outer, py::make_tuple(py::array_t<double>({n, py::ssize_t{3}}, all.points),
                                                py::array_t<std::int64_t>(all.rings + 1, all.starts)));
}

} // namespace

void bind_mesh(py::module_& m)
{
    py::class_<Mesh>(
        m, "Mesh",
        "Mesh(vertices, triangles)\n--\n\n"
        "Triangles on shared vertices, as `bevel` and `tube` make them.\n\n"
        "vertices: numbers (V, 3); triangles: int (T, 3), each counter-clockwise seen from outside.\n"
        "`vertices, triangles = mesh` takes it apart. Meshes of the same vertices and triangles are equal, whatever "
        "their steps have reached.")
        .def(py::init(&mesh_of), py::arg("vertices"), py::arg("triangles"))
        .def_property_readonly("vertices", &vertices_of, "float64 (V, 3); the mesh's own memory.")
        .def_property_readonly("triangles", &triangles_of, "int32 (T, 3): the vertices of each triangle.")
        .def_property_readonly("reached", &reached_of,
                               "float64 (S,): the distance that each step of a bevel has reached, the one asked for "
                               "unless it was held back; empty for other meshes.")
        .def_property_readonly("faces", &triangles_of, "The triangles, by the name other packages have for them.")
        .def_property_readonly(
            "normals", &normals_of,
            "float64 (T, 3): the unit normal of each triangle, outwards where it is counter-clockwise "
            "seen from outside; 0 0 0 where it has no area.")
        .def_property_readonly("areas", &areas_of, "float64 (T,): the area of each triangle.")
        .def_property_readonly("bounds", &bounds_of,
                               "float64 (2, 3): the least and the greatest coordinates of the vertices.")
        .def_property_readonly("volume", &volume_of,
                               "The volume inside; negative where the triangles face inwards. Only a closed mesh has "
                               "one.")
        .def(
            "save",
            [](const py::object& self, const py::object& path) {
                py::module_::import("korvale._files").attr("save")(self, path);
            },
            py::arg("path"),
            "save(self, path)\n--\n\n"
            "Writes the mesh to a file: Wavefront OBJ, binary STL or binary PLY, as the path ends in .obj, .stl or "
            ".ply.\n\n"
            "OBJ and PLY keep every bit of the vertices; STL rounds them to 32-bit numbers and repeats them for each "
            "triangle.")
        .def("_repr_svg_", [](py::object self) { return shown("mesh_svg", vertices_of(self), triangles_of(self)); })
        .def("__iter__",
             [](py::object self) { return py::iter(py::make_tuple(vertices_of(self), triangles_of(self))); })
        .def(
            "__eq__",
            [](const Mesh& a, const Mesh& b) { return a.vertices == b.vertices && a.triangles == b.triangles; },
            py::is_operator())
        .def("__repr__",
             [](const Mesh& self) {
                 return "<korvale.Mesh of " + detail::text_of(self.vertices.size()) + " vertices, " +
                        detail::counted(self.triangles.size(), "triangle") + ">";
             })
        .def(py::pickle(&state_of, &restored));
    m.def("bevel", &bevel_of);
    m.def("tube", &tube_of);
    m.def("triangulate", &triangulate_of);
    m.def("shapes", &shapes_of);
}

} // namespace korvale::python
