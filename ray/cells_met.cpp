// Where a ray meets a face depends on nothing but the plane of the face, and all cells of a grid share nx + ny + nz + 3
// planes. So each plane is met once, and the cells whose faces hold the meeting point are those whose closed ranges
// hold its two coordinates: consecutive cells along both axes, on either side of the plane.
#include "ray/internal/cells_met.h"

#include <algorithm>

#include "ray/internal/meet.h"

namespace korvale::ray {
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

/// The cells found so far, in any order and some more than once. A fine grid is far larger than the caches. So a cell
/// is prefetched when it is found, and read together with the many that are found after it.
class Found {
public:
    Found(const data_list_struct* cells, int32_t* met) : cells_(cells), met_(met) {}

    /// False when there is no more room.
    bool add(int32_t cell)
    {
        __builtin_prefetch(&cells_[cell].next);
        waiting_[added_++] = cell;
        return added_ < kWaiting || look_into_all();
    }

    /// How many cells can be met, or -1 when there is no room for them.
    int32_t finish() { return look_into_all() ? count_ : -1; }

private:
    bool look_into_all()
    {
        for (int32_t i = 0; i < added_; ++i) {
            const int32_t cell = waiting_[i];
            if (!can_be_met(cells_[cell]))
                continue;
            if (count_ == kMostCellsMet)
                return false;
            met_[count_++] = cell;
        }
        added_ = 0;
        return true;
    }

    static constexpr int32_t kWaiting = 256;
    const data_list_struct* cells_;
    int32_t* met_;
    int32_t count_ = 0;
    int32_t added_ = 0;
    int32_t waiting_[kWaiting];
};

/// The planes of axis `k` in the order in which the ray comes to them, `step` apart, up to `end`. The rest lie behind
/// it or are not approached.
struct PlaneWalk {
    int32_t i, end, step;
};

PlaneWalk planes_ahead(const GridAxis& axis, double o, double d)
{
    const int32_t n = axis.cells;
    int32_t i = axis.guess_cell(o);
    if (d > -kLeastApproach) { // up, or only the planes that hold the origin
        while (i > 0 && axis.planes[i - 1] >= o)
            --i;
        while (i <= n && axis.planes[i] < o)
            ++i;
        return {i, n + 1, 1};
    }
    while (i < n && axis.planes[i + 1] <= o)
        ++i;
    while (i >= 0 && axis.planes[i] > o)
        --i;
    return {i, -1, -1};
}

/// Whether a meeting point at `value` has left the axis for good: rounded or not, it moves on in the direction of `d`.
bool is_past(const GridAxis& axis, double value, double d)
{
    return d > 0 ? value > axis.planes[axis.cells] : d < 0 && value < axis.planes[0];
}

/// Adds the cells whose faces across axis `k` the ray meets.
bool add_cells_across(const double* o, const double* d, const Grid& grid, int k, Found& found)
{
    const int a = kAcross[k][0], b = kAcross[k][1];
    const int32_t strides[3] = {grid.axes[1].cells * grid.axes[2].cells, grid.axes[2].cells, 1};
    const GridAxis& axis = grid.axes[k];
    const PlaneWalk walk = planes_ahead(axis, o[k], d[k]);
    for (int32_t i = walk.i; i != walk.end; i += walk.step) {
        Meeting at;
        if (!meets_plane(o, d, {k, axis.planes[i]}, at))
            break; // nor any farther plane
        if (is_past(grid.axes[a], at.a, d[a]) || is_past(grid.axes[b], at.b, d[b]))
            break;
        const CellRange along_a = cells_holding(grid.axes[a], at.a);
        const CellRange along_b = cells_holding(grid.axes[b], at.b);
        if (along_a.last < 0 || along_b.last < 0)
            continue;
        const int32_t near_slab = walk.step > 0 ? i - 1 : i;
        for (const int32_t slab : {near_slab, near_slab + walk.step}) {
            if (slab < 0 || slab >= axis.cells)
                continue;
            for (int32_t ia = along_a.first; ia <= along_a.last; ++ia)
                for (int32_t ib = along_b.first; ib <= along_b.last; ++ib)
                    if (!found.add(slab * strides[k] + ia * strides[a] + ib * strides[b]))
                        return false;
        }
    }
    return true;
}

} // namespace

int32_t find_cells_met(const double* o, const double* d, const Cells& cells, int32_t (&met)[kMostCellsMet])
{
    Found found(cells.first, met);
    for (int k = 0; k < 3; ++k)
        if (!add_cells_across(o, d, *cells.grid, k, found))
            return -1;
    const int32_t count = found.finish();
    if (count < 0)
        return -1;
    std::sort(met, met + count);
    return static_cast<int32_t>(std::unique(met, met + count) - met);
}

} // namespace korvale::ray
