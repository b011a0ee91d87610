// Solids of outlines and paths.
#include "support.h"

namespace korvale::python {
namespace {

/// From so many points on, cutting a shape into triangles is likely to take 20 microseconds or more.
constexpr std::size_t kLongShape = 32;

/// From so many vertices and triangles on copying a mesh takes 20 microseconds or more.
constexpr std::size_t kLargeMesh = 5000;

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

Mesh bevel_of(const py::list& outlines, const py::array_t<double, py::array::c_style>& profile, py::handle split)
{
    const ShapeIn shape(outlines, "bevel", "outline");
    const std::vector<PointView> views = shape.views();
    const bool is_split = flag_of(split, "bevel", "split");
    static_assert(sizeof(BevelStep) == 2 * sizeof(double));
    std::vector<BevelStep> steps;
    for (py::ssize_t i = 0; i < profile.shape(0); ++i)
        steps.push_back({profile.at(i, 0), profile.at(i, 1)});
    const py::gil_scoped_release unlocked;
    return bevel(views, steps, is_split);
}

Mesh tube_of(py::handle path, py::handle section, py::handle closed, py::handle caps)
{
    const PointsIn points(path, "tube", "path"), around(section, "tube", "section");
    const TubeOptions options = {flag_of(closed, "tube", "closed"), flag_of(caps, "tube", "caps")};
    const PointView along = options.closed ? points.outline() : points.view();
    const py::gil_scoped_release unlocked;
    return tube(along, around.outline(), options);
}

/// The triangles' own array, which keeps the vector alive.
py::array triangulate_of(const py::list& outlines)
{
    const ShapeIn shape(outlines, "triangulate", "outline");
    auto triangles = std::make_unique<std::vector<Triangle>>();
    {
        const Unlocked unlocked(shape.points() >= kLongShape);
        *triangles = triangulate(shape.views());
    }
    std::vector<Triangle>* const block = triangles.get();
    const py::capsule owner(triangles.release(), [](void* p) { delete static_cast<std::vector<Triangle>*>(p); });
    return view_of(block->empty() ? nullptr : block->data()->data(), {static_cast<py::ssize_t>(block->size()), 3},
                   owner);
}

} // namespace

void bind_mesh(py::module_& m)
{
    py::class_<Mesh>(m, "Mesh",
                     "Mesh(vertices, triangles)\n--\n\n"
                     "Triangles on shared vertices, as `bevel` and `tube` make them.\n\n"
                     "vertices: numbers (V, 3); triangles: int (T, 3), each counter-clockwise seen from outside.\n"
                     "`vertices, triangles = mesh` takes it apart.")
        .def(py::init(&mesh_of), py::arg("vertices"), py::arg("triangles"))
        .def_property_readonly("vertices", &vertices_of, "float64 (V, 3); the mesh's own memory.")
        .def_property_readonly("triangles", &triangles_of, "int32 (T, 3): the vertices of each triangle.")
        .def_property_readonly("faces", &triangles_of, "The triangles, by the name other packages have for them.")
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
        .def("__reduce__", [](py::object self) {
            return py::make_tuple(py::type::of(self), py::make_tuple(vertices_of(self), triangles_of(self)));
        });
    m.def("bevel", &bevel_of);
    m.def("tube", &tube_of);
    m.def("triangulate", &triangulate_of);
}

} // namespace korvale::python
