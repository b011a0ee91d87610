// Rays into triangles that a grid owns, found through its tree, beside the same rays into cells: counts, distances and
// numbers of triangles. Some models are small, so that the grid multiplies lengths.
#include <algorithm>
#include <cstring>
#include <limits>
#include <vector>

#include "fuzz/input.h"
#include "include/korvale_c.h"
#include "ray/grid.h"
#include "ray/query.h"
#include "tests/reference/ray.h"

using namespace korvale::fuzz;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// Numbers from the input, and from a generator once it is used up, so that short inputs make large models.
class Numbers {
public:
    Numbers(const uint8_t* bytes, size_t count) : in_(bytes, count) {}

    /// 0 .. n - 1, for n up to 256.
    int below(int n) { return in_.below(n); }

    /// Mostly a small multiple of 1/8, so that things touch, or a number between; now and then any double.
    double next()
    {
        if (in_.is_used_up()) {
            state_ = state_ * 6364136223846793005u + 1442695040888963407u;
            return static_cast<double>(state_ >> 40) * 0x1p-21 - 4.0;
        }
        switch (in_.below(16)) {
        case 0:
            return in_.any<double>();
        case 1:
        case 2:
        case 3:
            return in_.any<int16_t>() / 1024.0;
        default:
            return in_.any<int8_t>() / 8.0;
        }
    }

private:
    Input in_;
    uint64_t state_ = 1;
};

void compare(const korvale_grid* grid, RayStatus& s, double scale, Numbers& in)
{
    double origin[3], direction[3], to_cells[3], along[3];
    bool is_beyond = false; // where no number is
    for (int k = 0; k < 3; ++k) {
        origin[k] = in.next();
        direction[k] = along[k] = in.next();
        to_cells[k] = scale * origin[k];
        is_beyond = is_beyond || (std::isfinite(origin[k]) && !std::isfinite(to_cells[k]));
    }
    korvale::reference::bring_to_length(along);
    double distance = -1, of_cells = -1;
    const int met = is_beyond ? 0 : ray_intersect(to_cells, along, &s, &of_cells);
    require(korvale_grid_count(grid, origin, direction, &distance) == met);
    const double expected = met > 0 ? of_cells / scale : -1;
    require(is_same(distance, expected));
    std::vector<korvale_hit> hits(static_cast<size_t>(met) + 1);
    int64_t found = 0;
    require(korvale_grid_hits(grid, origin, direction, hits.data(), met + 1, &found, nullptr) == KORVALE_OK);
    require(found == met);
    const korvale_hit nearest = korvale_grid_nearest(grid, origin, direction);
    if (std::isnan(of_cells)) // the first one met; others may be nearer
        return;
    require(korvale_grid_any(grid, origin, direction, kInfinity) == (met > 0 ? 1 : 0));
    require(nearest.triangle == (met > 0 && hits[0].distance < kInfinity ? hits[0].triangle : -1));
    require(met == 0 || nearest.distance == expected);
    for (int i = 0; i < met; ++i)
        require(s.tri_marks.bvals[hits[static_cast<size_t>(i)].triangle] == 1);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count)
{
    Numbers in(bytes, count);
    korvale_grid_options options;
    korvale_grid_defaults(&options, sizeof options);
    for (int32_t& n : options.cells)
        n = in.below(7);
    const int rays = 1 + in.below(8), shrink = in.below(3) == 0 ? in.below(40) : 0;
    const int32_t triangles = in.below(256);
    std::vector<double> corners(9 * static_cast<size_t>(triangles));
    for (double& c : corners)
        c = std::ldexp(in.next(), -shrink);

    const korvale_triangles mesh = {{corners.data(), 3 * int64_t{triangles}, 0, 3, KORVALE_DOUBLE}, {}};
    korvale_grid* grid = nullptr;
    const bool are_finite = std::all_of(corners.begin(), corners.end(), [](double c) { return std::isfinite(c); });
    require(korvale_grid_new(&mesh, &options, &grid, nullptr) == (are_finite ? KORVALE_OK : KORVALE_BAD_ARGUMENT));
    if (!are_finite)
        return 0;

    const double scale = korvale::reference::grid_scale(corners.data(), triangles);
    std::vector<double> in_cells = corners;
    for (double& c : in_cells)
        c *= scale;
    Data array = {9, triangles, DATA_TYPE_DOUBLE, in_cells.data(), nullptr, nullptr};
    RayStatus s;
    require(ray_initialize(&s) == 1);
    int32_t cells[3];
    korvale_grid_cells(grid, cells);
    s.nx = cells[0];
    s.ny = cells[1];
    s.nz = cells[2];
    ray_set_triangles(&array, &s);
    ray_classify(&s);
    for (int i = 0; i < rays; ++i)
        compare(grid, s, scale, in);
    ray_declassify(&s);
    DataDispose(&s.bbox);
    korvale_grid_free(grid);
    return 0;
}
