#pragma once

#include <cstdint>

#include "data/internal/buffers.h"
#include "ray/grid.h"
#include "ray/internal/grid.h"

// The cells of a record and their contents, which a host may read, change and make itself.
namespace korvale::ray {

/// Triangle numbers in one node of a chain.
constexpr int32_t kNodeRoom = 100;

constexpr int32_t kBoxValues = 6;

/// The cells that may be read, and the grid they were made for where they are the library's own.
struct Cells {
    data_list_struct* first;
    int32_t count;
    const Grid* grid; // null for cells that a host has made, whose boxes alone say where they are
};

/// The cells of `s`:
///
/// - In an array that the library made, those that it made, whatever a host has done to them and to nx, ny and nz
///   since.
/// - In an array of a host, nx * ny * nz.
/// - In an array of a host at the address of one of the library's that the host has freed, no more than fit its block.
Cells cells_of(const RayStatus& s);

/// Registers `cells`, an array of the library with as many as its grid of n[3] cells over bbox[6], and returns the
/// grid; null when the heap is exhausted. Call `forget_cells`, which releases the grid, before the array is released.
const Grid* remember_cells(data_list_struct* cells, const int32_t (&n)[3], const double* bbox);
void forget_cells(const data_list_struct* cells);

/// nx * ny * nz, or 0 when one is below 1 or the product leaves 31 bits.
int32_t cells_wanted(const RayStatus& s);

/// Whether a cell has its box; an emptied one has none and is not met.
inline bool has_box(const data_list_struct& cell)
{
    return cell.type == DATA_TYPE_DOUBLE && holds(cell, DATA_TYPE_DOUBLE, kBoxValues);
}

/// Whether a ray can find anything in a cell.
inline bool can_be_met(const data_list_struct& cell)
{
    return cell.next != nullptr && has_box(cell);
}

/// How many triangle numbers a node behind the first holds in `ivals`: none where it is no number node.
inline int32_t numbers_held(const data_list_struct& node)
{
    return node.type == DATA_TYPE_INT && node.ivals != nullptr && node.dim >= 1 ? node.count : 0;
}

} // namespace korvale::ray
