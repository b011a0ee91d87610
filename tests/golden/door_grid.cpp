// The fixed results of rays into triangles through the C interface.
#include "include/korvale_c.h"
#include "tests/golden/workload.h"
#include "tests/support/draws.h"

namespace korvale::test {

/// Corners of `count` tetrahedra, each on four points of its own.
std::vector<int32_t> closed_triangles(int32_t count)
{
    std::vector<int32_t> corners;
    for (int32_t first = 0; first < 4 * count; first += 4)
        for (const int32_t corner : {0, 2, 1, 0, 1, 3, 0, 3, 2, 1, 2, 3})
            corners.push_back(first + corner);
    return corners;
}

WORKLOAD(DoorGrid, 40, 0x48813f4da3550143u, 100)
{
    Draws random(1107);
    for (int i = 0; i < rounds; ++i) {
        const int n = random.between(1, 300), rays = 50;
        std::vector<double> corners, origins, directions, distances(rays), weights(3 * rays);
        std::vector<int32_t> triangles(rays), counts(rays);
        std::vector<uint8_t> inside(rays);
        for (int k = 0; k < 9 * n; ++k)
            corners.push_back(random.one_in(9) ? random.between(-3, 3) : random.uniform(-3, 3));
        for (int k = 0; k < 3 * rays; ++k) {
            origins.push_back(random.one_in(9) ? random.between(-3, 3) : random.uniform(-5, 5));
            directions.push_back(random.one_in(4) ? random.between(-1, 1) : random.uniform(-1, 1));
        }
        const korvale_triangles mesh = {{corners.data(), 3 * n, 0, 3, KORVALE_DOUBLE}, {}};
        const korvale_points from = {origins.data(), rays, 0, 3, KORVALE_DOUBLE};
        const korvale_points along = {directions.data(), rays, 0, 3, KORVALE_DOUBLE};
        const korvale_ray_columns columns = {distances.data(), triangles.data(), counts.data(), weights.data()};
        korvale_grid* grid = nullptr;
        hash.add(korvale_grid_new(&mesh, nullptr, &grid, nullptr));
        hash.add(korvale_grid_cast(grid, &from, &along, &columns, nullptr, nullptr, nullptr));
        korvale_grid_free(grid);
        const std::vector<int32_t> tetrahedra = closed_triangles(3 * n / 4);
        const korvale_triangles solids = {
            mesh.points, {tetrahedra.data(), static_cast<int64_t>(tetrahedra.size()), 0, KORVALE_INT32}};
        hash.add(korvale_grid_new(&solids, nullptr, &grid, nullptr));
        hash.add(korvale_grid_contains(grid, &from, inside.data(), nullptr, nullptr, nullptr));
        hash.add(distances.data(), rays).add(weights.data(), 3 * rays);
        for (size_t k = 0; k < rays; ++k)
            hash.add(triangles[k]).add(counts[k]).add(int{inside[k]});
        korvale_grid_free(grid);
    }
}

} // namespace korvale::test
