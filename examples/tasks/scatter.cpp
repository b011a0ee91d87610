// Points scattered over two triangles, evenly by area, with colours blended from the corners.

#include <cstdio>
#include <vector>

#include <korvale.hpp>

int main()
{
    const std::vector<korvale::Point> vertices = {{0, 0, 0}, {3, 0, 0}, {3, 1, 0}, {0, 1, 0}, {3, 4, 0}};
    const std::vector<korvale::Triangle> triangles = {{0, 1, 2}, {3, 2, 4}}; // areas 1.5 and 4.5
    const std::vector<double> red_and_blue = {1, 0, 1, 0, 0, 0, 0, 1, 0, 1}; // two values a vertex
    const auto seeds = korvale::scatter(vertices, triangles, 4000, 42, red_and_blue);

    int in_large = 0;
    for (const korvale::Point& p : seeds.points)
        in_large += p[1] > 1;
    std::printf("%.1f %% of the points on 75 %% of the area\n", 100.0 * in_large / 4000);
    for (size_t i = 0; i < 3; ++i)
        std::printf("(%.4f, %.4f)  red %.4f  blue %.4f\n", seeds.points[i][0], seeds.points[i][1],
                    seeds.attributes[2 * i], seeds.attributes[2 * i + 1]);
}
