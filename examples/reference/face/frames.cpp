#include "../example.h"

using korvale::Point;

EXAMPLE("korvale::flatten korvale::Flattening korvale::FlattenOptions")
{
    std::vector<Point> wall = {{0, 5, 0}, {4, 5, 0}, {4, 5, 3}, {0, 5, 3}}; // upright, at y = 5
    const korvale::Flattening way = korvale::flatten(wall);
    way.to_plane.apply(wall);
    std::printf("z is %.3f %.3f %.3f %.3f\n", wall[0][2], wall[1][2], wall[2][2], wall[3][2]);
    way.from_plane.apply(wall);
    std::printf("%g %g %g\n", wall[2][0], wall[2][1], wall[2][2]);
    // > z is 0.000 0.000 0.000 0.000
    // > 4 5 3
}

EXAMPLE("korvale::frames")
{
    const std::vector<Point> path = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}};
    for (const korvale::Transform& frame : korvale::frames(path)) {
        const Point back = frame.vector({0, 0, 1}); // its z axis
        std::printf("%.4f %.4f %.4f\n", back[0], back[1], back[2]);
    }
    // > -1.0000 0.0000 0.0000
    // > -0.7071 -0.7071 0.0000
    // > 0.0000 -1.0000 0.0000
}
