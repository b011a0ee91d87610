#pragma once

#include <cstdint>

#include "ray/grid.h"

namespace korvale {

/// How many cells were made along each axis. The record's nx, ny and nz may have been set to something else since, so
/// the size made stands in the buffer of the first cell, behind its box, and is released with it.
struct GridSize {
    int32_t nx, ny, nz;
};

/// The size of the grid that `s.cells` points to; 0 along each axis when there is none.
GridSize size_made(const RayStatus& s);

/// The number of cells that `s.cells` points to.
inline int32_t cells_made(const RayStatus& s)
{
    const GridSize size = size_made(s);
    return size.nx * size.ny * size.nz;
}

} // namespace korvale
