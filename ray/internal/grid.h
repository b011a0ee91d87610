#pragma once

#include <cstdint>

namespace korvale::ray {

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

/// A box divided into cells. Cell (ix, iy, iz) is number (ix * axes[1].cells + iy) * axes[2].cells + iz.
struct Grid {
    GridAxis axes[3];
    bool in_order; // no plane lies before its predecessor, and none is NaN

    int32_t count() const { return axes[0].cells * axes[1].cells * axes[2].cells; }

    /// Calls `visit` with the number and the box[6] of every cell, ascending.
    template <class Visit>
    void for_each_cell(Visit visit) const
    {
        const GridAxis &x = axes[0], &y = axes[1], &z = axes[2];
        int32_t cell = 0;
        for (int32_t ix = 0; ix < x.cells; ++ix)
            for (int32_t iy = 0; iy < y.cells; ++iy)
                for (int32_t iz = 0; iz < z.cells; ++iz) {
                    const double box[6] = {x.planes[ix],     y.planes[iy],     z.planes[iz],
                                           x.planes[ix + 1], y.planes[iy + 1], z.planes[iz + 1]};
                    visit(cell++, box);
                }
    }
};

/// Consecutive cells of an axis; none when `last` is before `first`.
struct CellRange {
    int32_t first, last;
};

/// Writes the n + 1 planes of one axis: the next slab starts exactly where the last one ended. Whether they are in
/// order.
inline bool set_planes(double least, double greatest, int32_t n, double* planes)
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

/// How many planes a grid of n[3] cells has.
inline int64_t count_planes(const int32_t (&n)[3])
{
    return int64_t{n[0]} + n[1] + n[2] + 3;
}

/// The grid of n[3] cells in a box[6]. Its planes are written to `planes`, which must last as long.
inline Grid grid_in(const double* box, const int32_t (&n)[3], double* planes)
{
    Grid grid;
    grid.in_order = true;
    for (int k = 0; k < 3; ++k) {
        if (!set_planes(box[k], box[k + 3], n[k], planes))
            grid.in_order = false;
        grid.axes[k] = {planes, n[k], n[k] / (planes[n[k]] - planes[0])};
        planes += n[k] + 1;
    }
    return grid;
}

/// Widens a triangle's box, so that one lying in a coordinate plane still meets the cells around it.
constexpr double kTrianglePadding = 1e-06;

/// The box of triangle[9], padded around vertex 0.
inline void find_triangle_box(const double* triangle, double* box)
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
inline CellRange cells_touching(const GridAxis& axis, double least, double greatest)
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

} // namespace korvale::ray
