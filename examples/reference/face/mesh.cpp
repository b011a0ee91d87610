#include "../example.h"

using korvale::Point;

EXAMPLE("korvale::Mesh korvale::Mesh::volume korvale::Mesh::bounds")
{
    const korvale::Mesh box = korvale::bevel({{0, 0, 0}, {2, 0, 0}, {2, 3, 0}, {0, 3, 0}}, {{0, 0}, {0, 4}});
    std::printf("%zu vertices, %zu triangles, volume %g\n", box.vertices.size(), box.triangles.size(), box.volume());
    const Point top = box.bounds().greatest;
    std::printf("up to %g %g %g\n", top[0], top[1], top[2]);
    // > 8 vertices, 12 triangles, volume 24
    // > up to 2 3 4
}

EXAMPLE("korvale::Mesh::areas korvale::Mesh::normals")
{
    const korvale::Mesh roof = {{{0, 0, 0}, {4, 0, 0}, {0, 3, 0}}, {{0, 1, 2}}};
    const Point up = roof.normals()[0];
    std::printf("area %g, normal %g %g %g\n", roof.areas()[0], up[0], up[1], up[2]);
    // > area 6, normal 0 0 1
}

EXAMPLE("korvale::Mesh::try_volume")
{
    const korvale::Mesh sheet = {{{0, 0, 0}, {4, 0, 0}, {0, 3, 0}}, {{0, 1, 2}}};
    if (auto volume = sheet.try_volume(); !volume)
        std::printf("%s: they enclose nothing\n", volume.error().argument().data());
    // > triangles: they enclose nothing
}

EXAMPLE("korvale::Bounds")
{
    const korvale::Mesh roof = {{{0, 1, 0}, {4, 0, 2}, {0, 3, 0}}, {{0, 1, 2}}};
    const auto [least, greatest] = roof.bounds();
    std::printf("%g %g %g to %g %g %g\n", least[0], least[1], least[2], greatest[0], greatest[1], greatest[2]);
    // > 0 0 0 to 4 3 2
}

EXAMPLE("korvale::triangulate")
{
    const std::vector<Point> arrow = {{0, 0, 0}, {4, 2, 0}, {0, 4, 0}, {1, 2, 0}};
    for (const korvale::Triangle& triangle : korvale::triangulate(arrow))
        std::printf("%d %d %d\n", triangle[0], triangle[1], triangle[2]);
    // > 3 0 1
    // > 1 2 3
}

EXAMPLE("korvale::shapes korvale::ShapesOptions")
{
    const std::vector<std::vector<Point>> letters = {{{2, 1, 0}, {3, 1, 0}, {3, 2, 0}}, // inside the next one
                                                     {{0, 0, 0}, {9, 0, 0}, {9, 9, 0}},
                                                     {{20, 0, 0}, {22, 0, 0}, {22, 2, 0}}};
    for (const std::vector<std::size_t>& shape : korvale::shapes(letters))
        std::printf("outline %zu with %zu holes\n", shape[0], shape.size() - 1);
    // > outline 1 with 1 holes
    // > outline 2 with 0 holes
}

EXAMPLE("korvale::bevel korvale::BevelStep")
{
    // A wall of height 3 with a hipped roof, which closes where nothing is left.
    const korvale::Mesh house = korvale::bevel({{0, 0, 0}, {8, 0, 0}, {8, 4, 0}, {0, 4, 0}}, {{0, 0}, {0, 3}, {-2, 5}});
    std::printf("volume %g, up to z = %g\n", house.volume(), house.bounds().greatest[2]);
    const korvale::Mesh steep = korvale::bevel({{0, 0, 0}, {8, 0, 0}, {8, 4, 0}, {0, 4, 0}}, {{0, 0}, {-3, 5}});
    std::printf("the way in is held back at %g\n", steep.reached[1]);
    // > volume 122.667, up to z = 5
    // > the way in is held back at -2
}

EXAMPLE("korvale::tube korvale::TubeOptions")
{
    const std::vector<Point> path = {{0, 0, 0}, {10, 0, 0}};
    const korvale::Mesh pipe = korvale::tube(path, {{1, 1, 0}, {-1, 1, 0}, {-1, -1, 0}, {1, -1, 0}});
    std::printf("%zu triangles, volume %g\n", pipe.triangles.size(), pipe.volume());
    // > 12 triangles, volume 40
}
