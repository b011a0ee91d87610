#include "ray/grid.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "data/internal/shape.h"
#include "math/internal/box.h"
#include "platform/module_start.h"
#include "ray/internal/grid.h"

// The grid has planes along each axis, one more than cells, found by repeated addition of the step. A cell's box lies
// between two neighbouring planes of each axis, so neighbours share the very same bound.

static_assert(sizeof(RayStatus) == 112 && offsetof(RayStatus, triangles) == 0 && offsetof(RayStatus, bbox) == 8 &&
              offsetof(RayStatus, tri_marks) == 48 && offsetof(RayStatus, cells) == 88 &&
              offsetof(RayStatus, nx) == 96 && offsetof(RayStatus, ny) == 100 && offsetof(RayStatus, nz) == 104);

namespace korvale {
namespace {

constexpr int32_t kDefaultCells = 4;

/// Triangle numbers in one node of a chain.
constexpr int32_t kNodeRoom = 100;

/// Widens a triangle's box, so that one lying in a coordinate plane still meets the cells around it.
constexpr double kTrianglePadding = 1e-06;

constexpr int32_t kBoxValues = 6;
constexpr size_t kBoxBytes = kBoxValues * sizeof(double);

/// nx * ny * nz, or 0 when that leaves 31 bits.
int32_t cells_wanted(const RayStatus& s)
{
    const int64_t slab = elements(s.ny, s.nz);
    if (slab > kMostElements || elements(s.nx, slab) > kMostElements)
        return 0;
    return static_cast<int32_t>(s.nx * slab);
}

/// Makes `cell` an empty chain whose box has room, with `extra` bytes behind it. False when the heap is exhausted.
bool make_cell(data_list_struct& cell, size_t extra)
{
    DataListInitialize(&cell);
    cell.dim = kBoxValues;
    cell.count = 1;
    cell.dvals = static_cast<double*>(std::malloc(kBoxBytes + extra));
    return cell.dvals != nullptr;
}

void release_cells(data_list_struct* cells, int32_t count)
{
    for (int32_t c = 0; c < count; ++c)
        DataListDispose(&cells[c]);
    std::free(cells);
}

/// New cells without boxes, the first of which knows the size of the grid; null when the heap is exhausted.
data_list_struct* make_cells(int32_t count, GridSize size)
{
    auto* const cells =
        static_cast<data_list_struct*>(std::malloc(static_cast<size_t>(count) * sizeof(data_list_struct)));
    if (cells == nullptr)
        return nullptr;
    for (int32_t c = 0; c < count; ++c)
        if (!make_cell(cells[c], c == 0 ? sizeof size : 0)) {
            release_cells(cells, c);
            return nullptr;
        }
    std::memcpy(cells[0].dvals + kBoxValues, &size, sizeof size);
    return cells;
}

void drop_cells(RayStatus& s)
{
    release_cells(s.cells, cells_made(s));
    s.cells = nullptr;
}

/// Gives every cell its box. The next slab starts exactly where the last one ended.
void place_cells(data_list_struct* cell, GridSize size, const double* bbox)
{
    const double step_x = (bbox[3] - bbox[0]) / size.nx;
    const double step_y = (bbox[4] - bbox[1]) / size.ny;
    const double step_z = (bbox[5] - bbox[2]) / size.nz;
    double x = bbox[0];
    for (int32_t ix = 0; ix < size.nx; ++ix, x += step_x) {
        double y = bbox[1];
        for (int32_t iy = 0; iy < size.ny; ++iy, y += step_y) {
            double z = bbox[2];
            for (int32_t iz = 0; iz < size.nz; ++iz, z += step_z, ++cell) {
                const double box[kBoxValues] = {x, y, z, x + step_x, y + step_y, z + step_z};
                std::memcpy(cell->dvals, box, sizeof box);
            }
        }
    }
}

data_list_struct* new_node()
{
    data_list_struct* const node = DataListNew();
    if (node == nullptr)
        return nullptr;
    node->type = DATA_TYPE_INT;
    node->dim = 1;
    node->count = kNodeRoom;
    if (DataAllocate(node) != 1) {
        std::free(node);
        return nullptr;
    }
    node->count = 0;
    return node;
}

/// Appends a number to the chain that ends in `last`; its first node never takes numbers. Returns the node that ends the
/// chain afterwards.
data_list_struct* append(data_list_struct* last, int32_t triangle)
{
    if (last->type != DATA_TYPE_INT || last->count >= kNodeRoom) {
        data_list_struct* const node = new_node();
        if (node == nullptr)
            return last;
        last->next = node;
        last = node;
    }
    last->ivals[last->count++] = triangle;
    return last;
}

/// The box of triangle[9], padded around vertex 0.
void find_triangle_box(const double* triangle, double* box)
{
    for (int k = 0; k < 3; ++k) {
        box[k] = triangle[k] - kTrianglePadding;
        box[k + 3] = triangle[k] + kTrianglePadding;
    }
    for (int i = 3; i < 9; ++i) {
        const int k = i % 3;
        if (triangle[i] < box[k])
            box[k] = triangle[i];
        else if (triangle[i] > box[k + 3])
            box[k + 3] = triangle[i];
    }
}

} // namespace

GridSize size_made(const RayStatus& s)
{
    GridSize size = {0, 0, 0};
    if (s.cells != nullptr)
        std::memcpy(&size, s.cells[0].dvals + kBoxValues, sizeof size);
    return size;
}

} // namespace korvale

int ray_initialize(RayStatus* s)
{
    if (s == nullptr)
        return -1;
    DataInitialize(&s->tri_marks);
    DataInitialize(&s->bbox);
    s->bbox.dim = korvale::kBoxValues;
    s->bbox.count = 1;
    const int result = DataAllocate(&s->bbox);
    if (result == 1)
        std::memset(s->bbox.dvals, 0, korvale::kBoxBytes);
    s->triangles = nullptr;
    s->cells = nullptr;
    s->nx = s->ny = s->nz = korvale::kDefaultCells;
    return result;
}

void ray_set_triangles(Data* triangles, RayStatus* s)
{
    if (s == nullptr)
        return;
    s->triangles = triangles;
    if (triangles == nullptr || triangles->count < 1)
        return;
    DataDispose(&s->tri_marks);
    s->tri_marks.dim = 1;
    s->tri_marks.type = DATA_TYPE_BYTE;
    s->tri_marks.count = triangles->count;
    DataAllocate(&s->tri_marks);
}

void ray_classify(RayStatus* s)
{
    if (s == nullptr || s->triangles == nullptr)
        return;
    Data points = *s->triangles;
    s->triangles->dim = 9;
    if (points.count >= 1) {
        if (points.type != DATA_TYPE_DOUBLE || points.dvals == nullptr ||
            korvale::elements(points.count, 9) > korvale::kMostElements) {
            korvale::drop_cells(*s);
            return;
        }
        points.dim = 3;
        points.count *= 3;
        DataBBox(&points, &s->bbox);
    }

    ray_make_sub_bbox(s);
    const int32_t cells = korvale::cells_made(*s);
    for (int32_t t = 0; t < s->triangles->count; ++t) {
        double box[korvale::kBoxValues];
        korvale::find_triangle_box(points.dvals + 9 * static_cast<int64_t>(t), box);
        for (int32_t c = 0; c < cells; ++c)
            if (korvale::boxes_meet(s->cells[c].dvals, box))
                ray_add_tri_to_bbox(s, t, c);
    }
}

void ray_make_sub_bbox(RayStatus* s)
{
    if (s == nullptr)
        return;
    for (int32_t* n : {&s->nx, &s->ny, &s->nz})
        if (*n < 1)
            *n = 1;
    korvale::drop_cells(*s);
    const int32_t count = korvale::cells_wanted(*s);
    if (count == 0 || !korvale::holds(s->bbox, DATA_TYPE_DOUBLE, korvale::kBoxValues))
        return;
    const korvale::GridSize size = {s->nx, s->ny, s->nz};
    s->cells = korvale::make_cells(count, size);
    if (s->cells != nullptr)
        korvale::place_cells(s->cells, size, s->bbox.dvals);
}

void ray_add_tri_to_bbox(RayStatus* s, int triangle, int cell)
{
    if (s == nullptr || cell < 0 || cell >= korvale::cells_made(*s))
        return;
    data_list_struct* last = &s->cells[cell];
    while (last->next != nullptr)
        last = last->next;
    korvale::append(last, triangle);
}

void ray_declassify(RayStatus* s)
{
    if (s == nullptr)
        return;
    DataDispose(&s->tri_marks);
    korvale::drop_cells(*s);
}
