#include "../example.h"

using korvale::Point, korvale::RayGrid;

EXAMPLE("korvale::RayGrid korvale::RayGrid::nearest korvale::RayHit korvale::RayGrid::distance")
{
    const std::vector<Point> walls = {{5, -1, -1}, {5, 1, -1}, {5, 0, 1}, {9, -1, -1}, {9, 1, -1}, {9, 0, 1}};
    const RayGrid grid(walls, {{0, 1, 2}, {3, 4, 5}});
    if (const auto hit = grid.nearest({0, 0, 0}, {1, 0, 0}))
        std::printf("triangle %d, %g away, weights %g %g %g\n", hit->triangle, hit->distance, hit->weights[0],
                    hit->weights[1], hit->weights[2]);
    std::printf("%s behind\n", grid.distance({0, 0, 0}, {-1, 0, 0}) ? "something" : "nothing");
    // > triangle 0, 5 away, weights 0.25 0.25 0.5
    // > nothing behind
}

EXAMPLE("korvale::RayGrid::hits korvale::RayGrid::count korvale::RayGrid::any")
{
    const std::vector<Point> walls = {{5, -1, -1}, {5, 1, -1}, {5, 0, 1}, {9, -1, -1}, {9, 1, -1}, {9, 0, 1}};
    const RayGrid grid(walls, {{0, 1, 2}, {3, 4, 5}});
    for (const korvale::RayHit& hit : grid.hits({0, 0, 0}, {1, 0, 0}))
        std::printf("triangle %d, %g away\n", hit.triangle, hit.distance);
    std::printf("%d of them\n", grid.count({0, 0, 0}, {1, 0, 0}));
    std::printf("%d within 4\n", grid.any({0, 0, 0}, {1, 0, 0}, 4)); // as for shadows
    // > triangle 0, 5 away
    // > triangle 1, 9 away
    // > 2 of them
    // > 0 within 4
}

EXAMPLE("korvale::RayGrid::cast korvale::RayColumns")
{
    const RayGrid grid(std::vector<double>{5, -1, -1, 5, 1, -1, 5, 0, 1});
    const std::vector<Point> directions = {{1, 0, 0}, {1, 1, 0}, {2, 0.1, 0}};
    std::vector<double> depth(directions.size());
    std::vector<std::int32_t> met(directions.size());
    grid.cast({{0, 0, 0}}, directions, {.distances = depth, .triangles = met}); // one eye for all
    for (std::size_t i = 0; i < depth.size(); ++i)
        std::printf("%.4f to triangle %d\n", depth[i], met[i]);
    // > 5.0000 to triangle 0
    // > inf to triangle -1
    // > 5.0062 to triangle 0
}

EXAMPLE("korvale::RayGrid::contains korvale::RayGrid::try_contains")
{
    const korvale::Mesh box = korvale::bevel({{0, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}}, {{0, 0}, {0, 2}});
    for (bool inside : RayGrid(box.vertices, box.triangles).contains({{1, 1, 1}, {1, 1, 3}}))
        std::printf("%s\n", inside ? "inside" : "outside");
    const RayGrid open(std::vector<double>{5, -1, -1, 5, 1, -1, 5, 0, 1});
    if (auto none = open.try_contains({{1, 1, 1}}); !none)
        std::printf("%s\n", none.error().what());
    // > inside
    // > outside
    // > RayGrid::contains: the grid must be of closed meshes, but 3 edges are open, one of them between corners 0 and 1
}

EXAMPLE("korvale::RayGrid::face")
{
    // A square and a triangle, as faces: three triangles.
    const RayGrid grid({{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}, {2, 6, 0}}, {4, 3}, {0, 1, 2, 3, 3, 2, 4});
    const auto hit = grid.nearest({2, 5, 1}, {0, 0, -1});
    std::printf("triangle %d of face %d\n", hit->triangle, grid.face(hit->triangle));
    // > triangle 2 of face 1
}

EXAMPLE("korvale::RayGrid::over")
{
    std::vector<double> door = {5, -1, -1, 5, 1, -1, 5, 0, 1};
    const RayGrid grid = RayGrid::over(door); // it reads them where they are
    std::printf("%g, ", *grid.distance({0, 0, 0}, {1, 0, 0}));
    door[8] = -0.5; // its tip below the ray
    std::printf("%s\n", grid.distance({0, 0, 0}, {1, 0, 0}) ? "still in the way" : "then free");
    // > 5, then free
}

EXAMPLE("korvale::RayGrid::try_make")
{
    const std::vector<Point> points = {{0, 0, 0}, {4, 0, 0}, {0, 4, 0}};
    const std::vector<korvale::Triangle> triangles = {{0, 1, 3}};
    if (auto none = RayGrid::try_make(points, triangles); !none)
        std::printf("%s\n", none.error().what());
    // > RayGrid: triangles must name vertices 0 to 2, but its corner 2 is 3
}

EXAMPLE("korvale::RayGrid::size korvale::RayGrid::grid_size korvale::GridSize korvale::RayGrid::triangles")
{
    const RayGrid grid(std::vector<double>{5, -1, -1, 5, 1, -1, 5, 0, 1}, korvale::GridSize{1, 2, 2});
    std::printf("%zu triangle in %d x %d x %d cells\n", grid.size(), grid.grid_size().x, grid.grid_size().y,
                grid.grid_size().z);
    std::printf("from %g %g %g on\n", grid.triangles().data()[0], grid.triangles().data()[1],
                grid.triangles().data()[2]);
    // > 1 triangle in 1 x 2 x 2 cells
    // > from 5 -1 -1 on
}

EXAMPLE("korvale::RayGrid::status")
{
    RayGrid grid(std::vector<double>{5, -1, -1, 5, 1, -1, 5, 0, 1});
    RayStatus& record = grid.status(); // for the functions of korvale.h
    double from[] = {0, 0, 0}, along[] = {1, 0, 0}, distance = 0;
    const int hits = ray_intersect(from, along, &record, &distance);
    std::printf("%d hit, %g away\n", hits, distance);
    // > 1 hit, 5 away
}
