// Rays at a box: how far, through how many walls, how thick, inside or outside, and many at a time.

#include <cstdio>
#include <vector>

#include <korvale.hpp>

int main()
{
    const std::vector<korvale::Point> square = {{0, 0, 0}, {4, 0, 0}, {4, 2, 0}, {0, 2, 0}};
    const korvale::BevelStep walls[] = {{0, 0}, {0, 3}};
    const korvale::Mesh box = korvale::bevel({square}, walls);
    korvale::RayGrid grid(box.vertices, box.triangles);

    const korvale::Point above = {1, 0.5, 10}, down = {0, 0, -1};
    std::printf("walls %d, distance %.3f\n", grid.count(above, down), *grid.distance(above, down));
    const auto hits = grid.hits(above, down);
    std::printf("thickness %.3f\n", hits.back().distance - hits.front().distance);
    for (const korvale::Point& p : {korvale::Point{1, 1, 1}, korvale::Point{5, 1, 1}})
        std::printf("(%g, %g, %g) is %s\n", p[0], p[1], p[2], grid.count(p, {0.3, 0.2, 1}) % 2 ? "inside" : "outside");

    std::vector<korvale::Point> origins;
    for (int i = 0; i < 6; ++i)
        origins.push_back({-0.5 + i, 0.7, 8});
    std::vector<double> depth(origins.size());
    std::vector<int> counts(origins.size());
    grid.cast(origins, {{0, 0.05, -1}}, {.distances = depth, .counts = counts});
    for (size_t i = 0; i < origins.size(); ++i)
        std::printf("x %4.1f: %d walls, %.3f\n", origins[i][0], counts[i], depth[i]);
}
