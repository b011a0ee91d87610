// Triangles in a grid, and rays.
#include <limits>

#include "records.h"

namespace korvale::raw {
namespace {

using Array = py::array_t<double>;

double* doubles(const Array& array)
{
    return const_cast<double*>(array.data()); // the library takes its inputs by plain pointers
}

/// A `RayStatus` and the triangles it borrows.
class Grid : public Whole {
public:
    RayStatus status = {};
    std::shared_ptr<Table> triangles;

    Grid() { initialize(); }
    ~Grid() override { release(); }

    int initialize()
    {
        release();
        return ray_initialize(&status);
    }

    /// Before the library releases marks and cells.
    void stand_apart() { parts_stand_apart(); }

    void set_cells(int32_t RayStatus::*axis, int32_t cells)
    {
        if (status.cells != nullptr)
            throw py::value_error("the triangles are in cells: ray_declassify before the number of cells is changed");
        status.*axis = cells;
    }

private:
    void release()
    {
        parts_die();
        ray_declassify(&status);
        DataDispose(&status.bbox);
        status = {};
        triangles.reset();
    }
};

using Held = std::shared_ptr<Grid>;

Grid& used(Call& call, const Held& s)
{

    call.use(s, "s");
    if (s->triangles != nullptr) {
        const Data* const triangles = call.read(s->triangles, "the triangles");
        const auto room = s->triangles->room(DATA_TYPE_DOUBLE) / sizeof(double);
        if (triangles->type == DATA_TYPE_DOUBLE && triangles->dvals != nullptr && triangles->count > 0 &&
            static_cast<size_t>(triangles->count) * 9 > room)
            call.refuse("count is the number of triangles, nine numbers each: " + std::to_string(triangles->count) +
                        " do not fit the buffer of " + std::to_string(room));
    }
    return *s;
}

/// The box and the triangle numbers of one cell, copied: cells come and go with every classification.
py::tuple cell(const Grid& grid, int number)
{
    const RayStatus& s = grid.status;
    const int64_t cells = s.cells == nullptr ? 0 : int64_t{s.nx} * s.ny * s.nz;
    if (number < 0 || number >= cells)
        throw py::index_error("there are " + std::to_string(cells) + " cells");
    const data_list_struct& first = s.cells[number];
    py::list listed;
    for (const data_list_struct* node = first.next; node != nullptr; node = node->next)
        for (int32_t i = 0; node->type == DATA_TYPE_INT && node->ivals != nullptr && i < node->count; ++i)
            listed.append(node->ivals[i]);
    const auto numbers_of = py::module_::import("numpy").attr("array")(listed, py::dtype::of<int32_t>());
    return py::make_tuple(first.dvals == nullptr ? py::object(py::none()) : py::object(Array(6, first.dvals)),
                          numbers_of);
}

void add_status(py::module_& m)
{
    const auto axis = [](int32_t RayStatus::*field) {
        return std::pair([field](const Grid& grid) { return grid.status.*field; },
                         [field](Grid& grid, int32_t cells) { grid.set_cells(field, cells); });
    };
    py::class_<Grid, Whole, Held> type(m, "RayStatus", described("RayStatus"));
    type.def(py::init<>())
        .def_property_readonly("triangles", [](const Grid& grid) { return grid.triangles; })
        .def_property_readonly("bbox", [](Grid& grid) { return grid.part(&grid.status.bbox, true); })
        .def_property_readonly("tri_marks", [](Grid& grid) { return grid.part(&grid.status.tri_marks, true); })
        .def_property("nx", axis(&RayStatus::nx).first, axis(&RayStatus::nx).second, "Cells along x.")
        .def_property("ny", axis(&RayStatus::ny).first, axis(&RayStatus::ny).second, "Cells along y.")
        .def_property("nz", axis(&RayStatus::nz).first, axis(&RayStatus::nz).second, "Cells along z.")
        .def("cell", &cell, py::arg("number"),
             "The box [6] of a cell, or None, and the numbers of the triangles in it, both copied.");
}

void add_grid(py::module_& m)
{
    const auto def_on_status = [&m](const char* name, void (*function)(RayStatus*)) {
        m.def(
            name,
            [name, function](const Held& s) {
                Call call(name);
                Grid& grid = used(call, s);
                grid.stand_apart();
                call.run([&] { function(&grid.status); });
            },
            py::arg("s"), described(name));
    };
    m.def(
        "ray_initialize",
        [](const Held& s) {
            Call call("ray_initialize");
            return used(call, s).initialize();
        },
        py::arg("s"), described("ray_initialize"));
    m.def(
        "ray_set_triangles",
        [](const std::shared_ptr<Table>& triangles, const Held& s) {
            Call call("ray_set_triangles");
            Grid& grid = used(call, s);
            Data* const array = call.read_optional(triangles, "triangles");
            grid.stand_apart();
            ray_set_triangles(array, &grid.status);
            grid.triangles = triangles;
        },
        py::arg("triangles"), py::arg("s"), described("ray_set_triangles"));
    def_on_status("ray_classify", ray_classify);
    def_on_status("ray_make_sub_bbox", ray_make_sub_bbox);
    def_on_status("ray_declassify", ray_declassify);
    m.def(
        "ray_add_tri_to_bbox",
        [](const Held& s, int triangle, int number) {
            Call call("ray_add_tri_to_bbox");
            ray_add_tri_to_bbox(&used(call, s).status, triangle, number);
        },
        py::arg("s"), py::arg("triangle"), py::arg("cell"), described("ray_add_tri_to_bbox"));
}

void add_queries(py::module_& m)
{
    m.def(
        "ray_intersect",
        [](const py::object& origin, const py::object& direction, const Held& s, double distance) {
            Call call("ray_intersect");
            const Array from = numbers(origin, 3, "ray_intersect", "origin");
            const Array along = numbers(direction, 3, "ray_intersect", "direction");
            Grid& grid = used(call, s);
            const int met =
                call.run([&] { return ray_intersect(doubles(from), doubles(along), &grid.status, &distance); });
            return py::make_tuple(met, distance);
        },
        py::arg("origin"), py::arg("direction"), py::arg("s"),
        py::arg("distance") = std::numeric_limits<double>::infinity(), described("ray_intersect"));
    m.def(
        "ray_compute_xfm",
        [](const py::object& origin, const py::object& direction, const py::object& out) {
            const Array from = numbers(origin, 3, "ray_compute_xfm", "origin");
            const Array along = numbers(direction, 3, "ray_compute_xfm", "direction");
            const Array result = place(out, {4, 4}, "ray_compute_xfm", "m");
            ray_compute_xfm(doubles(from), doubles(along), reinterpret_cast<double(*)[4]>(doubles(result)));
            return result;
        },
        py::arg("origin"), py::arg("direction"), py::arg("m") = py::none(), described("ray_compute_xfm"));
    m.def(
        "ray_int_bbox",
        [](const py::object& origin, const py::object& direction, const py::object& box) {
            const Array from = numbers(origin, 3, "ray_int_bbox", "origin");
            const Array along = numbers(direction, 3, "ray_int_bbox", "direction");
            const Array corners = numbers(box, 6, "ray_int_bbox", "box");
            return ray_int_bbox(doubles(from), doubles(along), doubles(corners));
        },
        py::arg("origin"), py::arg("direction"), py::arg("box"), described("ray_int_bbox"));
    const auto def_plane = [&m](const char* name, int (*function)(double*, double*, double, double*, double*),
                                const char* first, const char* second) {
        m.def(
            name,
            [name, function](const py::object& origin, const py::object& direction, double plane, double a, double b) {
                const Array from = numbers(origin, 3, name, "origin"), along = numbers(direction, 3, name, "direction");
                const int met = function(doubles(from), doubles(along), plane, &a, &b);
                return py::make_tuple(met, a, b);
            },
            py::arg("origin"), py::arg("direction"), py::arg("plane"), py::arg(first) = 0.0, py::arg(second) = 0.0,
            described(name));
    };
    def_plane("ray_int_x_plane", ray_int_x_plane, "y", "z");
    def_plane("ray_int_y_plane", ray_int_y_plane, "x", "z");
    def_plane("ray_int_z_plane", ray_int_z_plane, "x", "y");
    m.def(
        "z_intersect",
        [](const py::object& point, const py::object& triangle, double z) {
            const Array from = numbers(point, 3, "z_intersect", "point");
            const Array corners = numbers(triangle, 9, "z_intersect", "triangle");
            const int met = z_intersect(doubles(from), doubles(corners), &z);
            return py::make_tuple(met, z);
        },
        py::arg("point"), py::arg("triangle"), py::arg("z") = 0.0, described("z_intersect"));
}

} // namespace

void add_ray(py::module_& m)
{
    add_status(m);
    add_grid(m);
    add_queries(m);
}

} // namespace korvale::raw
