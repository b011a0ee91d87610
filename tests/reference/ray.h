#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "ray/grid.h"

// What the triangle grid and its queries do, one cell and one triangle after the other.
namespace korvale::reference {

struct RayCell {
    double box[6];
    std::vector<int32_t> numbers;
};

/// The cells of a grid in `bbox` and the numbers of the triangles[count][9] in each: every triangle's box is held
/// against every cell.
std::vector<RayCell> sort_triangles(const double* triangles, int32_t count, const double* bbox, int32_t nx, int32_t ny,
                                    int32_t nz);

/// `ray_intersect` on a record with cells: the ray is held against every one that has a box, in index order. `boxes`
/// say where the library has made the cells; null for cells of a host, which are where their boxes stand.
int intersect(const double* origin, const double* direction, RayStatus& s, double* distance,
              const std::array<double, 6>* boxes = nullptr);

/// The power of two by which a grid that owns its triangles multiplies all lengths: for a model that reaches less than
/// 1 along each axis the one that makes it reach 64 to 128; then the least one that makes twice the area of the
/// smallest triangle 1/64 or more, as long as no coordinate reaches 4096 by it or the model 128.
double grid_scale(const double* triangles, int32_t count);

/// Makes a direction that reaches less than 1, or 2^500 and more, reach 1 to 2.
void bring_to_length(double* direction);

} // namespace korvale::reference
