#pragma once

#include <cstdint>

#include "ray/grid.h"

namespace korvale::inside {

/// One axis of a grid: cell i reaches from planes[i] to planes[i + 1], so neighbours share the very same bound.
struct GridAxis {
    const double* planes; // [cells + 1]
    int32_t cells;
    double per_unit; // cells per unit of length, roughly; not finite for an axis without extent

    /// A cell near `value`; any cell for a value beyond them.
    int32_t guess_cell(double value) const
    {
        const double i = (value - planes[0]) * per_unit;
        if (!(i > 0))
            return 0;
        return i < cells ? static_cast<int32_t>(i) : cells - 1;
    }
};

/// The grid as it was made, whatever the record's nx, ny and nz have been set to since. It stands in the buffer of the
/// first cell, behind its box, and is released with it.
struct Grid {
    GridAxis axes[3];
    bool in_order;     // no plane lies before its predecessor, and none is NaN
    uint64_t* holding; // [cells] bits, 1 where a cell holds triangles: far fewer lines of memory than the cells

    int32_t count() const { return axes[0].cells * axes[1].cells * axes[2].cells; }
    bool holds_triangles(int32_t cell) const { return (holding[cell / 64] >> (cell % 64) & 1) != 0; }
    void note_triangles(int32_t cell) const { holding[cell / 64] |= uint64_t{1} << (cell % 64); }
};

/// The grid of `s`; all zero when there is none.
Grid grid_of(const RayStatus& s);

/// Consecutive cells of an axis; none when `last` is before `first`.
struct CellRange {
    int32_t first, last;
};

} // namespace korvale::inside
