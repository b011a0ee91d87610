#pragma once

#include <cstdint>

#include "ray/internal/cells.h"

namespace korvale::ray {

/// Room for the cells that one ray meets. A ray crosses about nx + ny + nz cells, and each is found about twice, by the
/// face it enters and the one it leaves. Only a grid of empty thickness makes a ray meet more than there is room for.
/// Chosen.
constexpr int32_t kMostCellsMet = 2048;

/// Finds the cells of a grid in order that can be met and a face of which the ray meets: those that `ray_int_bbox`
/// accepts where the grid has them. Writes their numbers, ascending, and returns how many there are, or -1 when there
/// are more than there is room for.
int32_t find_cells_met(const double* o, const double* d, const Cells& cells, int32_t (&met)[kMostCellsMet]);

} // namespace korvale::ray
