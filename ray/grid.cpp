#include "ray/grid.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "data/internal/buffers.h"
#include "data/operations.h"
#include "math/internal/box.h"
#include "platform/internal/scratch.h"
#include "ray/internal/grid.h"

// A grid has planes along each axis, one more than cells, found by repeated addition of the step; a cell's box lies
// between two neighbouring planes of each axis. Where the planes are in order, the cells that touch a triangle's box
// are consecutive along each axis: a guess and a few comparisons find the first and the last of them, by the very
// comparisons that hold every cell against the box. A grid whose planes are not in order (a box that is not finite) is
// searched cell by cell.

static_assert(sizeof(RayStatus) == 112 && offsetof(RayStatus, triangles) == 0 && offsetof(RayStatus, bbox) == 8 &&
              offsetof(RayStatus, tri_marks) == 48 && offsetof(RayStatus, cells) == 88 &&
              offsetof(RayStatus, nx) == 96 && offsetof(RayStatus, ny) == 100 && offsetof(RayStatus, nz) == 104);

namespace korvale::inside {
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
    const int64_t slab = components(s.ny, s.nz);
    if (slab > kMostElements || components(s.nx, slab) > kMostElements)
        return 0;
    return static_cast<int32_t>(s.nx * slab);
}

/// What stands behind the box of the first cell; the planes of x, y and z follow, then the bits of the cells.
struct GridHeader {
    int32_t cells[3];
    int32_t in_order;
};
constexpr size_t kHeaderBytes = kBoxBytes + sizeof(GridHeader);
static_assert(kHeaderBytes % sizeof(double) == 0);

/// The 64-bit words that a bit for each cell takes.
size_t words_of_bits(int32_t cells)
{
    return (static_cast<size_t>(cells) + 63) / 64;
}

size_t bytes_of_first_cell(const int32_t (&n)[3], int32_t cells)
{
    const int64_t planes = int64_t{n[0]} + n[1] + n[2] + 3;
    return kHeaderBytes + static_cast<size_t>(planes) * sizeof(double) + words_of_bits(cells) * sizeof(uint64_t);
}

void release_cells(data_list_struct* cells, int32_t count)
{
    for (int32_t c = 0; c < count; ++c)
        DataListDispose(&cells[c]);
    std::free(cells);
}

/// New cells with room for their boxes, in the first with room for the grid as well; null when the heap is exhausted.
data_list_struct* make_cells(int32_t count, size_t bytes_of_first)
{
    auto* const cells =
        static_cast<data_list_struct*>(std::malloc(static_cast<size_t>(count) * sizeof(data_list_struct)));
    if (cells == nullptr)
        return nullptr;
    for (int32_t c = 0; c < count; ++c) {
        DataListInitialize(&cells[c]);
        cells[c].dim = kBoxValues;
        cells[c].count = 1;
        cells[c].dvals = static_cast<double*>(std::malloc(c == 0 ? bytes_of_first : kBoxBytes));
        if (cells[c].dvals == nullptr) {
            release_cells(cells, c);
            return nullptr;
        }
    }
    return cells;
}

void drop_cells(RayStatus& s)
{
    release_cells(s.cells, grid_of(s).count());
    s.cells = nullptr;
}

/// Writes the n + 1 planes of one axis: the next slab starts exactly where the last one ended. Whether they are in
/// order.
bool place_planes(double least, double greatest, int32_t n, double* planes)
{
    const double step = (greatest - least) / n;
    bool in_order = least == least;
    planes[0] = least;
    for (int32_t i = 0; i < n; ++i) {
        planes[i + 1] = planes[i] + step;
        in_order = in_order && planes[i] <= planes[i + 1];
    }
    return in_order;
}

/// Writes a grid of empty cells behind the first cell's box.
void write_grid(data_list_struct& first, const double* bbox, const int32_t (&n)[3], int32_t cells)
{
    GridHeader header = {{n[0], n[1], n[2]}, 1};
    double* planes = first.dvals + kHeaderBytes / sizeof(double);
    for (int k = 0; k < 3; ++k) {
        if (!place_planes(bbox[k], bbox[k + 3], n[k], planes))
            header.in_order = 0;
        planes += n[k] + 1;
    }
    std::memset(planes, 0, words_of_bits(cells) * sizeof(uint64_t));
    std::memcpy(first.dvals + kBoxValues, &header, sizeof header);
}

/// Gives every cell its box.
void place_cells(data_list_struct* cell, const Grid& grid)
{
    const GridAxis &x = grid.axes[0], &y = grid.axes[1], &z = grid.axes[2];
    for (int32_t ix = 0; ix < x.cells; ++ix)
        for (int32_t iy = 0; iy < y.cells; ++iy)
            for (int32_t iz = 0; iz < z.cells; ++iz, ++cell) {
                const double box[kBoxValues] = {x.planes[ix],     y.planes[iy],     z.planes[iz],
                                                x.planes[ix + 1], y.planes[iy + 1], z.planes[iz + 1]};
                std::memcpy(cell->dvals, box, sizeof box);
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

/// Appends a number to the chain that ends in `last`; its first node never takes numbers. Returns the node that ends
/// the chain afterwards.
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

/// The cells of an axis in order that nothing separates from [least, greatest]; all of them where that is NaN.
CellRange cells_touching(const GridAxis& axis, double least, double greatest)
{
    int32_t first = axis.guess_cell(least);
    while (first > 0 && !(least > axis.planes[first]))
        --first;
    while (first < axis.cells && least > axis.planes[first + 1])
        ++first;
    int32_t last = axis.guess_cell(greatest);
    while (last < axis.cells - 1 && !(axis.planes[last + 1] > greatest))
        ++last;
    while (last >= 0 && axis.planes[last] > greatest)
        --last;
    return {first, last};
}

/// Appends a number to the chain of a cell, which ends in `last`. Returns the node that ends it afterwards.
data_list_struct* list_triangle(const Grid& grid, int32_t cell, data_list_struct* last, int32_t triangle)
{
    data_list_struct* const end = append(last, triangle);
    if (end->type == DATA_TYPE_INT)
        grid.note_triangles(cell);
    return end;
}

/// Lists triangles in the cells of a grid while it is filled, remembering where each chain ends.
class Filling {
public:
    Filling(RayStatus& s, const Grid& grid) : s_(s), grid_(grid), ends_(grid.count())
    {
        for (int32_t c = 0; ends_.exists() && c < grid.count(); ++c)
            ends_[c] = &s.cells[c];
    }
    void list(int32_t triangle, int32_t cell)
    {
        if (ends_.exists())
            ends_[cell] = list_triangle(grid_, cell, ends_[cell], triangle);
        else
            ray_add_tri_to_bbox(&s_, triangle, cell);
    }

private:
    RayStatus& s_;
    const Grid& grid_;
    Scratch<data_list_struct*> ends_;
};

/// Lists every triangle in the cells its box touches.
void fill_cells(RayStatus& s, const double* triangles, int32_t count)
{
    const Grid grid = grid_of(s);
    Filling filling(s, grid);
    for (int32_t t = 0; t < count; ++t) {
        double box[kBoxValues];
        find_triangle_box(triangles + 9 * static_cast<int64_t>(t), box);
        if (!grid.in_order) {
            for (int32_t c = 0; c < grid.count(); ++c)
                if (boxes_meet(s.cells[c].dvals, box))
                    filling.list(t, c);
            continue;
        }
        const CellRange x = cells_touching(grid.axes[0], box[0], box[3]);
        const CellRange y = cells_touching(grid.axes[1], box[1], box[4]);
        const CellRange z = cells_touching(grid.axes[2], box[2], box[5]);
        for (int32_t ix = x.first; ix <= x.last; ++ix)
            for (int32_t iy = y.first; iy <= y.last; ++iy)
                for (int32_t iz = z.first; iz <= z.last; ++iz)
                    filling.list(t, (ix * grid.axes[1].cells + iy) * grid.axes[2].cells + iz);
    }
}

} // namespace

Grid grid_of(const RayStatus& s)
{
    Grid grid = {};
    if (s.cells == nullptr || s.cells[0].dvals == nullptr)
        return grid;
    const double* const behind_box = s.cells[0].dvals + kBoxValues;
    GridHeader header;
    std::memcpy(&header, behind_box, sizeof header);
    grid.in_order = header.in_order != 0;
    double* planes = s.cells[0].dvals + kHeaderBytes / sizeof(double);
    for (int k = 0; k < 3; ++k) {
        const int32_t n = header.cells[k];
        grid.axes[k] = {planes, n, n / (planes[n] - planes[0])};
        planes += n + 1;
    }
    grid.holding = reinterpret_cast<uint64_t*>(planes);
    return grid;
}

} // namespace korvale::inside

using namespace korvale::inside;

int ray_initialize(RayStatus* s)
{
    if (s == nullptr)
        return -1;
    DataInitialize(&s->tri_marks);
    DataInitialize(&s->bbox);
    s->bbox.dim = kBoxValues;
    s->bbox.count = 1;
    const int result = DataAllocate(&s->bbox);
    if (result == 1)
        std::memset(s->bbox.dvals, 0, kBoxBytes);
    s->triangles = nullptr;
    s->cells = nullptr;
    s->nx = s->ny = s->nz = kDefaultCells;
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
        if (points.type != DATA_TYPE_DOUBLE || points.dvals == nullptr || components(points.count, 9) > kMostElements) {
            drop_cells(*s);
            return;
        }
        points.dim = 3;
        points.count *= 3;
        DataBBox(&points, &s->bbox);
    }

    ray_make_sub_bbox(s);
    if (s->cells != nullptr)
        fill_cells(*s, points.dvals, s->triangles->count);
}

void ray_make_sub_bbox(RayStatus* s)
{
    if (s == nullptr)
        return;
    for (int32_t* n : {&s->nx, &s->ny, &s->nz})
        if (*n < 1)
            *n = 1;
    drop_cells(*s);
    const int32_t count = cells_wanted(*s);
    if (count == 0 || !holds(s->bbox, DATA_TYPE_DOUBLE, kBoxValues))
        return;
    const int32_t n[3] = {s->nx, s->ny, s->nz};
    s->cells = make_cells(count, bytes_of_first_cell(n, count));
    if (s->cells == nullptr)
        return;
    write_grid(s->cells[0], s->bbox.dvals, n, count);
    place_cells(s->cells, grid_of(*s));
}

void ray_add_tri_to_bbox(RayStatus* s, int triangle, int cell)
{
    if (s == nullptr)
        return;
    const Grid grid = grid_of(*s);
    if (cell < 0 || cell >= grid.count())
        return;
    data_list_struct* last = &s->cells[cell];
    while (last->next != nullptr)
        last = last->next;
    list_triangle(grid, cell, last, triangle);
}

void ray_declassify(RayStatus* s)
{
    if (s == nullptr)
        return;
    DataDispose(&s->tri_marks);
    drop_cells(*s);
}
