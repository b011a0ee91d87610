// A picker: a pinhole camera turns a pixel into a ray, and the grid tells which face lies under it, and where.

#include <cmath>
#include <cstdio>
#include <vector>

#include <korvale.hpp>

using korvale::Point;

namespace {

struct Camera {
    Point eye;
    korvale::Transform to_world; // its columns: right, up, back
    double half_height;          // tangent of half the angle of view
    int width, height;           // pixels

    Point direction(int column, int row) const
    {
        return to_world.vector(
            {half_height * (2 * column + 1 - width) / height, half_height * (height - 2 * row - 1) / height, -1});
    }
};

} // namespace

int main()
{
    // A floor of 3 x 2 squares with a step in it.
    std::vector<Point> vertices;
    std::vector<int32_t> sizes, corners;
    for (int y = 0; y <= 2; ++y)
        for (int x = 0; x <= 3; ++x)
            vertices.push_back({double(x), double(y), x == 3 ? 1.0 : 0.0});
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 3; ++x) {
            const int v = 4 * y + x;
            sizes.push_back(4);
            corners.insert(corners.end(), {v, v + 1, v + 5, v + 4});
        }
    korvale::RayGrid grid(vertices, sizes, corners);

    const Camera camera = {{1.5, 1, 6}, {}, std::tan(0.25), 24, 12};
    for (int row = 0; row < camera.height; ++row) {
        for (int column = 0; column < camera.width; ++column) {
            const auto hit = grid.nearest(camera.eye, camera.direction(column, row));
            std::putchar(hit ? 'A' + grid.face(hit->triangle) : '.');
        }
        std::putchar('\n');
    }

    const Point ray = camera.direction(17, 3);
    if (const auto hit = grid.nearest(camera.eye, ray)) {
        const double scale = hit->distance / std::sqrt(ray[0] * ray[0] + ray[1] * ray[1] + ray[2] * ray[2]);
        std::printf("pixel (17, 3): face %c at (%.3f, %.3f, %.3f)\n", 'A' + grid.face(hit->triangle),
                    camera.eye[0] + scale * ray[0], camera.eye[1] + scale * ray[1], camera.eye[2] + scale * ray[2]);
    }
}
