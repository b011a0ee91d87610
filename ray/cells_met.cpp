#include "ray/internal/cells_met.h"

#include <algorithm>

#include "platform/module_start.h"
#include "ray/internal/meet.h"

// Where a ray meets a face depends on nothing but the plane of the face, and all cells of a grid share nx + ny + nz + 3
// planes. So each plane is met once, and the cells whose faces hold the meeting point are those whose closed ranges hold
// its two coordinates: consecutive cells along both axes, on either side of the plane.

namespace korvale {
namespace {

/// The cells of an axis in order whose closed range holds `value`.
CellRange cells_holding(const GridAxis& axis, double value)
{
    if (!lies_between(value, axis.planes[0], axis.planes[axis.cells]))
        return {0, -1};
    int32_t last = axis.guess_cell(value);
    while (last > 0 && axis.planes[last] > value)
        --last;
    while (last < axis.cells - 1 && axis.planes[last + 1] <= value)
        ++last;
    int32_t first = last;
    while (first > 0 && axis.planes[first] >= value)
        --first;
    return {first, last};
}

/// The cells found so far, in any order and some more than once.
struct Found {
    const data_list_struct* cells;
    int32_t* met;
    int32_t count;

    /// False when there is no more room.
    bool add(int32_t cell)
    {
        if (cells[cell].next == nullptr)
            return true;
        if (count == kMostCellsMet)
            return false;
        met[count++] = cell;
        return true;
    }
};

/// Adds the cells whose faces across axis `k` the ray meets.
bool add_cells_across(const double* o, const double* d, const Grid& grid, int k, Found& found)
{
    const int a = k == 0 ? 1 : 0, b = k == 2 ? 1 : 2;
    const int32_t strides[3] = {grid.axes[1].cells * grid.axes[2].cells, grid.axes[2].cells, 1};
    const GridAxis& axis = grid.axes[k];
    for (int32_t i = 0; i <= axis.cells; ++i) {
        double at_a, at_b;
        if (!meets_plane(o, d, axis.planes[i], k, a, b, &at_a, &at_b))
            continue;
        const CellRange along_a = cells_holding(grid.axes[a], at_a);
        const CellRange along_b = cells_holding(grid.axes[b], at_b);
        for (int32_t slab = std::max(i - 1, 0); slab <= std::min(i, axis.cells - 1); ++slab)
            for (int32_t ia = along_a.first; ia <= along_a.last; ++ia)
                for (int32_t ib = along_b.first; ib <= along_b.last; ++ib)
                    if (!found.add(slab * strides[k] + ia * strides[a] + ib * strides[b]))
                        return false;
    }
    return true;
}

} // namespace

int32_t find_cells_met(const double* o, const double* d, const Grid& grid, const data_list_struct* cells,
                       int32_t (&met)[kMostCellsMet])
{
    Found found = {cells, met, 0};
    for (int k = 0; k < 3; ++k)
        if (!add_cells_across(o, d, grid, k, found))
            return -1;
    std::sort(met, met + found.count);
    return static_cast<int32_t>(std::unique(met, met + found.count) - met);
}

} // namespace korvale
