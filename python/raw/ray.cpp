// Triangles in a grid, and rays.
#include <limits>

#include "bind.h"

namespace korvale::raw {
namespace {

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

    void look(Call& call) override
    {
        if (triangles == nullptr)
            return;
        const Data* const array = call.take(triangles, "the triangles", Use::read);
        const auto room = triangles->room(DATA_TYPE_DOUBLE) / sizeof(double);
        if (array->type == DATA_TYPE_DOUBLE && array->dvals != nullptr && array->count > 0 &&
            static_cast<size_t>(array->count) * 9 > room)
            call.refuse("count is the number of triangles, nine numbers each: " + std::to_string(array->count) +
                        " do not fit the buffer of " + std::to_string(room));
    }

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

void set_triangles(Call& call, const std::shared_ptr<Table>& triangles, Grid& grid)
{
    Data* const array = call.take_optional(triangles, "triangles", Use::read);
    grid.parts_stand_apart();
    ray_set_triangles(array, &grid.status);
    grid.triangles = triangles;
}

void add_status(py::module_& m)
{
    py::class_<Grid, Whole, std::shared_ptr<Grid>> type(m, "RayStatus", described("RayStatus"));
    const auto def_axis = [&type](const char* name, int32_t RayStatus::*field, const char* text) {
        type.def_property(
            name, [field](const Grid& grid) { return grid.status.*field; },
            [field](Grid& grid, int32_t cells) { grid.set_cells(field, cells); }, text);
    };
    type.def(py::init<>())
        .def_readonly(FIELD(Grid, triangles))
        .def_property_readonly("bbox", [](Grid& grid) { return grid.part(&grid.status.bbox, true); })
        .def_property_readonly("tri_marks", [](Grid& grid) { return grid.part(&grid.status.tri_marks, true); })
        .def("cell", &cell, py::arg("number"),
             "The box [6] of a cell, or None, and the numbers of the triangles in it, both copied.");
    def_axis(FIELD(RayStatus, nx), "Cells along x.");
    def_axis(FIELD(RayStatus, ny), "Cells along y.");
    def_axis(FIELD(RayStatus, nz), "Cells along z.");
}

} // namespace

template <>
struct ObjectOf<RayStatus> : std::type_identity<Grid> {
};

void add_ray(py::module_& m)
{
    add_status(m);
    def(m, "ray_initialize", &Grid::initialize, status("s"));
    def(m, "ray_set_triangles", set_triangles, plain("triangles"), status("s"));
    def_unlocked(m, NAMED(ray_classify), moving("s"));
    def_unlocked(m, NAMED(ray_make_sub_bbox), moving("s"));
    def_unlocked(m, NAMED(ray_declassify), moving("s"));
    def(m, NAMED(ray_add_tri_to_bbox), status("s"), plain("triangle"), plain("cell"));
    def_unlocked(m, NAMED(ray_intersect), in<3>("origin"), in<3>("direction"), status("s"),
                 address("distance", std::numeric_limits<double>::infinity()));
    def(m, NAMED(ray_compute_xfm), in<3>("origin"), in<3>("direction"), out<4, 4>("m"));
    def(m, NAMED(ray_int_bbox), in<3>("origin"), in<3>("direction"), in<6>("box"));
    def(m, NAMED(ray_int_x_plane), in<3>("origin"), in<3>("direction"), plain("plane"), address("y", 0.0),
        address("z", 0.0));
    def(m, NAMED(ray_int_y_plane), in<3>("origin"), in<3>("direction"), plain("plane"), address("x", 0.0),
        address("z", 0.0));
    def(m, NAMED(ray_int_z_plane), in<3>("origin"), in<3>("direction"), plain("plane"), address("x", 0.0),
        address("y", 0.0));
    def(m, NAMED(z_intersect), in<3>("point"), in<9>("triangle"), address("z", 0.0));
}

} // namespace korvale::raw
