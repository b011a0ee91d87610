#include "../example.h"

using korvale::Point;

EXAMPLE("korvale::scatter korvale::Scattered korvale::ScatterOptions")
{
    const std::vector<Point> vertices = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}};
    const std::vector<korvale::Triangle> triangles = {{0, 1, 2}, {0, 2, 3}};
    const std::vector<double> heights = {7, 7, 7, 7}, only_first = {1, 0};
    const korvale::Scattered trees = korvale::scatter(vertices, triangles, 5, 42, heights, {.weights = only_first});
    for (std::size_t i = 0; i < trees.points.size(); ++i)
        std::printf("on triangle %d at height %.6f\n", trees.triangles[i], trees.attributes[i]);
    // > on triangle 0 at height 7.000000
    // > on triangle 0 at height 7.000000
    // > on triangle 0 at height 7.000000
    // > on triangle 0 at height 7.000000
    // > on triangle 0 at height 7.000000
}
