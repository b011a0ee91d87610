// A grid has planes along each axis, one more than cells, found by repeated addition of the step; a cell's box lies
// between two neighbouring planes of each axis. Where the planes are in order, the cells that touch a triangle's box
// are consecutive along each axis. A guess finds one near, and the exact comparisons that would hold every cell against
// the box find the first and the last from there. A grid whose planes are not in order (a box that is not finite) is
// searched cell by cell.
#include "ray/grid.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "data/internal/buffers.h"
#include "data/operations.h"
#include "math/internal/box.h"
#include "platform/internal/large_pages.h"
#include "platform/internal/pointers.h"
#include "platform/internal/scratch.h"
#include "ray/internal/cells.h"
#include "ray/internal/grid.h"

static_assert(korvale::platform::kNarrowPointers ||
              (sizeof(RayStatus) == 112 && offsetof(RayStatus, triangles) == 0 && offsetof(RayStatus, bbox) == 8 &&
               offsetof(RayStatus, tri_marks) == 48 && offsetof(RayStatus, cells) == 88 &&
               offsetof(RayStatus, nx) == 96 && offsetof(RayStatus, ny) == 100 && offsetof(RayStatus, nz) == 104));

namespace korvale::ray {
namespace {

constexpr int32_t kDefaultCells = 4;

constexpr size_t kBoxBytes = kBoxValues * sizeof(double);

/// Frees all numbers before the boxes: malloc merges adjacent free blocks, and has fewer to merge in this order.
void release_cells(data_list_struct* cells, int32_t count)
{
    for (int32_t c = 0; c < count; ++c)
        free_chain(cells[c].next);
    for (int32_t c = 0; c < count; ++c)
        free_buffers(cells[c]);
    std::free(cells);
}

/// Releases what follows a node.
void end_chain(data_list_struct& last)
{
    free_chain(last.next);
    last.next = nullptr;
}

/// Makes a record a cell with a box and without numbers. False when the heap is exhausted.
bool make_cell(data_list_struct& cell, const double* box)
{
    DataListInitialize(&cell);
    cell.dim = kBoxValues;
    cell.count = 1;
    cell.dvals = static_cast<double*>(std::malloc(kBoxBytes));
    if (cell.dvals == nullptr)
        return false;
    std::memcpy(cell.dvals, box, kBoxBytes);
    return true;
}

/// `make_cell` for a cell that the library has made before: its box is written in place, its nodes stay behind it.
bool renew_cell(data_list_struct& cell, const double* box)
{
    const bool is_as_made = cell.dvals != nullptr && cell.type == DATA_TYPE_DOUBLE && cell.dim == kBoxValues &&
                            cell.count == 1 && cell.ivals == nullptr && cell.bvals == nullptr;
    if (is_as_made) {
        std::memcpy(cell.dvals, box, kBoxBytes);
        return true;
    }
    data_list_struct* const nodes = cell.next;
    free_buffers(cell);
    const bool is_made = make_cell(cell, box);
    cell.next = nodes;
    return is_made;
}

/// Releases the cells of a record. Those of a host stay with it: they may not even come from the heap.
void drop_cells(RayStatus& s)
{
    if (const Cells cells = cells_of(s); cells.grid != nullptr) {
        forget_cells(s.cells);
        release_cells(s.cells, cells.count);
    }
    s.cells = nullptr;
}

/// Makes the cells of a record, or none where the heap is exhausted. Returns whether they are those that stood there
/// before, with all their nodes.
bool make_grid(RayStatus& s)
{
    for (int32_t* n : {&s.nx, &s.ny, &s.nz})
        if (*n < 1)
            *n = 1;
    const int32_t count = cells_wanted(s);
    if (count == 0 || !holds(s.bbox, DATA_TYPE_DOUBLE, kBoxValues)) {
        drop_cells(s);
        return false;
    }
    const Cells before = cells_of(s);
    const bool is_again = before.grid != nullptr && before.count == count;
    if (is_again) {
        forget_cells(s.cells);
    } else {
        drop_cells(s);
        const size_t bytes = static_cast<size_t>(count) * sizeof(data_list_struct);
        s.cells = static_cast<data_list_struct*>(new_block(bytes)); // a ray touches cells all over it
        if (s.cells == nullptr)
            return false;
    }
    const Grid* const grid = remember_cells(s.cells, {s.nx, s.ny, s.nz}, s.bbox.dvals);
    int32_t made = 0;
    if (grid != nullptr)
        grid->for_each_cell([&](int32_t c, const double* box) {
            if (made == c)
                made += is_again ? renew_cell(s.cells[c], box) : make_cell(s.cells[c], box);
        });
    if (made == count)
        return is_again;
    forget_cells(s.cells);
    release_cells(s.cells, is_again ? count : made);
    s.cells = nullptr;
    return false;
}

/// Whether a node behind the first has a place left.
bool takes_numbers(const data_list_struct& node)
{
    return node.type == DATA_TYPE_INT && node.ivals != nullptr && node.dim >= 1 && node.count >= 0 &&
           node.count < kNodeRoom;
}

data_list_struct* last_node(data_list_struct& cell)
{
    data_list_struct* last = &cell;
    while (last->next != nullptr)
        last = last->next;
    return last;
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

/// Makes a node of a chain one without numbers. False when the heap is exhausted.
bool empty_node(data_list_struct& node)
{
    // Where a host has made the node its buffer may be of any size; one that fits stays where it is.
    void* const numbers = std::realloc(node.ivals, kNodeRoom * sizeof(int32_t));
    if (numbers == nullptr)
        return false;
    node.ivals = static_cast<int32_t*>(numbers);
    free_buffer(node.dvals);
    free_buffer(node.bvals);
    node.dvals = nullptr;
    node.bvals = nullptr;
    node.type = DATA_TYPE_INT;
    node.dim = 1;
    node.count = 0;
    return true;
}

/// The node behind `last`, emptied, or a new one; null when the heap is exhausted.
data_list_struct* next_node(data_list_struct& last)
{
    if (last.next == nullptr)
        return last.next = new_node();
    return empty_node(*last.next) ? last.next : nullptr;
}

/// Appends a number to the chain of `cell` that ends in `last`; the first node never takes numbers. Returns the node
/// that ends the chain afterwards, or null when the heap is exhausted.
[[gnu::always_inline]] inline data_list_struct* append(const data_list_struct& cell, data_list_struct* last,
                                                       int32_t triangle)
{
    if (last == &cell || !takes_numbers(*last))
        last = next_node(*last);
    if (last != nullptr)
        last->ivals[last->count++] = triangle;
    return last;
}

/// Lists triangles in cells, reusing the nodes that the cells have already.
class Filling {
public:
    Filling(RayStatus& s, int32_t cells) : s_(s), count_(cells), ends_(cells)
    {
        for (int32_t c = 0; exists() && c < count_; ++c)
            ends_[c] = &s.cells[c];
    }

    /// False when the heap is exhausted.
    bool exists() const { return ends_.exists(); }

    /// False when the heap is exhausted.
    bool list(int32_t triangle, int32_t cell)
    {
        return (ends_[cell] = append(s_.cells[cell], ends_[cell], triangle)) != nullptr;
    }

    /// Releases the nodes that nothing was listed in.
    void end_chains()
    {
        for (int32_t c = 0; c < count_; ++c)
            end_chain(*ends_[c]);
    }

private:
    RayStatus& s_;
    int32_t count_;
    Scratch<data_list_struct*> ends_; // of the chains, as far as they are filled
};

/// Lists a triangle in the cells that its box[6] touches. False when the heap is exhausted.
bool list_triangle(Filling& filling, const Grid& grid, int32_t t, const double* box)
{
    if (!grid.in_order) {
        bool is_listed = true;
        grid.for_each_cell([&](int32_t cell, const double* cell_box) {
            if (is_listed && boxes_meet(cell_box, box))
                is_listed = filling.list(t, cell);
        });
        return is_listed;
    }
    const CellRange x = cells_touching(grid.axes[0], box[0], box[3]);
    const CellRange y = cells_touching(grid.axes[1], box[1], box[4]);
    const CellRange z = cells_touching(grid.axes[2], box[2], box[5]);
    for (int32_t ix = x.first; ix <= x.last; ++ix)
        for (int32_t iy = y.first; iy <= y.last; ++iy)
            for (int32_t iz = z.first; iz <= z.last; ++iz)
                if (!filling.list(t, (ix * grid.axes[1].cells + iy) * grid.axes[2].cells + iz))
                    return false;
    return true;
}

/// Lists every triangle in the cells its box touches. False when the heap is exhausted.
bool fill_cells(RayStatus& s, const Grid& grid, const double* triangles, int32_t count, bool has_nodes)
{
    Filling filling(s, grid.count());
    if (!filling.exists())
        return false;
    for (int32_t t = 0; t < count; ++t) {
        double box[kBoxValues];
        find_triangle_box(triangles + 9 * int64_t{t}, box);
        if (!list_triangle(filling, grid, t, box))
            return false;
    }
    if (has_nodes)
        filling.end_chains();
    return true;
}

} // namespace
} // namespace korvale::ray

using namespace korvale::ray;

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

    const bool has_nodes = make_grid(*s);
    if (const Cells cells = cells_of(*s);
        cells.grid != nullptr && !fill_cells(*s, *cells.grid, points.dvals, s->triangles->count, has_nodes))
        drop_cells(*s);
}

void ray_make_sub_bbox(RayStatus* s)
{
    if (s == nullptr)
        return;
    if (!make_grid(*s))
        return;
    for (int32_t c = 0; c < cells_wanted(*s); ++c)
        end_chain(s->cells[c]);
}

void ray_add_tri_to_bbox(RayStatus* s, int triangle, int cell)
{
    if (s == nullptr || cell < 0 || cell >= cells_of(*s).count)
        return;
    append(s->cells[cell], last_node(s->cells[cell]), triangle);
}

void ray_declassify(RayStatus* s)
{
    if (s == nullptr)
        return;
    DataDispose(&s->tri_marks);
    const int32_t count = cells_of(*s).count;
    forget_cells(s->cells);
    release_cells(s->cells, count);
    s->cells = nullptr;
}
