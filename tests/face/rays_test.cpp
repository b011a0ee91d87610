// Ray grids of the C++ face, beside the direct calls.
#include "direct.h"

namespace korvale::test {
namespace {

std::vector<double> random_triangles(Random& random, int n)
{
    std::vector<double> triangles;
    for (int i = 0; i < n; ++i) {
        const Point c = {random.uniform(-10, 10), random.uniform(-10, 10), random.uniform(-10, 10)};
        for (int k = 0; k < 9; ++k)
            triangles.push_back(c[static_cast<size_t>(k % 3)] + random.uniform(-2, 2));
    }
    return triangles;
}

Point random_point(Random& random, double size)
{
    return {random.uniform(-size, size), random.uniform(-size, size), random.uniform(-size, size)};
}

TEST(FaceRayGrid, AnswersLikeTheDirectCallToTheBit)
{
    Random random(1214);
    for (int round = 0; round < rounds(20); ++round) {
        const auto corners = random_triangles(random, random.between(1, 300));
        auto record = doubles<Data>(9, corners);
        RayGrid grid(corners);
        RayStatus direct;
        ASSERT_EQ(ray_initialize(&direct), 1);
        direct.nx = grid.grid_size().x;
        direct.ny = grid.grid_size().y;
        direct.nz = grid.grid_size().z;
        ray_set_triangles(record, &direct);
        ray_classify(&direct);
        for (int ray = 0; ray < 50; ++ray) {
            Point origin = random_point(random, 15), direction = random_point(random, 1);
            double distance = -1;
            const int met = ray_intersect(origin.data(), direction.data(), &direct, &distance);
            ASSERT_EQ(grid.count(origin, direction), met);
            const auto nearest = grid.nearest(origin, direction);
            const auto all = grid.hits(origin, direction);
            ASSERT_EQ(all.size(), static_cast<size_t>(met));
            ASSERT_EQ(nearest.has_value(), met > 0);
            ASSERT_EQ(grid.distance(origin, direction).has_value(), met > 0);
            if (met > 0) {
                ASSERT_TRUE(same_bits(distance, nearest->distance));
                ASSERT_TRUE(same_bits(distance, *grid.distance(origin, direction)));
                ASSERT_EQ(all[0], *nearest);
                ASSERT_TRUE(std::ranges::is_sorted(all, {}, &RayHit::distance));
            }
            for (const RayHit& hit : all) { // that triangle alone is met at that distance
                auto one =
                    doubles<Data>(9, {corners.begin() + 9 * hit.triangle, corners.begin() + 9 * hit.triangle + 9});
                RayGrid alone = RayGrid::over(std::span<const double>(one->dvals, 9));
                ASSERT_TRUE(same_bits(hit.distance, alone.distance(origin, direction).value_or(-1)));
            }
        }
        ray_declassify(&direct);
        DataDispose(&direct.bbox);
    }
}

TEST(FaceRayGrid, CastsManyRaysLikeSingleOnes)
{
    Random random(1215);
    const auto corners = random_triangles(random, 200);
    RayGrid grid(corners);
    Outline origins, directions;
    for (int i = 0; i < 100; ++i) {
        origins.push_back(random_point(random, 15));
        directions.push_back(random_point(random, 1));
    }
    std::vector<double> distances(100);
    std::vector<int32_t> triangles(100), counts(100);
    grid.cast(origins, directions, {distances, triangles, counts});
    int met = 0;
    for (size_t i = 0; i < 100; ++i) {
        const auto nearest = grid.nearest(origins[i], directions[i]);
        met += nearest.has_value();
        EXPECT_EQ(counts[i], grid.count(origins[i], directions[i]));
        EXPECT_EQ(triangles[i], nearest ? nearest->triangle : -1);
        EXPECT_EQ(distances[i], nearest ? nearest->distance : std::numeric_limits<double>::infinity());
    }
    EXPECT_GT(met, 10);
    grid.cast({origins[0]}, directions, {.counts = counts});
    EXPECT_EQ(counts[7], grid.count(origins[0], directions[7]));
    EXPECT_EQ(refusal_of([&] {
                  grid.cast(origins, {directions[0], directions[1]}, {});
              }),
              "RayGrid::cast: directions must be 1 or as many as the 100 origins, but there are 2");
    EXPECT_EQ(refusal_of([&] { grid.cast(origins, directions, {.distances = std::span(distances).first(3)}); }),
              "RayGrid::cast: columns.distances must be empty or have 100 values, but it has 3");
}

TEST(FaceRayGrid, TellsWhereInATriangleARayMeetsIt)
{
    const std::vector<Point> vertices = {{9, 9, 9}, {0, 0, 0}, {4, 0, 0}, {0, 4, 0}};
    const std::vector<Triangle> triangles = {{3, 1, 2}};
    const RayGrid grid(vertices, triangles);
    const auto hit = grid.nearest({1, 2, 5}, {0, 0, -1});
    ASSERT_TRUE(hit);
    EXPECT_EQ(hit->corners, (Triangle{3, 1, 2}));
    EXPECT_EQ(hit->weights, (std::array<double, 3>{0.5, 0.25, 0.25}));
    EXPECT_TRUE(grid.any({1, 2, 5}, {0, 0, -1}));
    EXPECT_FALSE(grid.any({1, 2, 5}, {0, 0, -1}, 4.5));
    EXPECT_EQ(grid.triangles().data()[1], 4);
    const RayGrid loose({{0, 0, 0}, {4, 0, 0}, {0, 4, 0}});
    EXPECT_EQ(loose.nearest({1, 2, 5}, {0, 0, -1})->corners, (Triangle{0, 1, 2}));
    std::vector<Point> weights(2);
    loose.cast({{1, 2, 5}, {9, 9, 5}}, {{0, 0, -1}}, {.weights = weights});
    EXPECT_EQ(weights, (std::vector<Point>{{0.25, 0.25, 0.5}, {0, 0, 0}}));
}

TEST(FaceRayGrid, KnowsInsideFromOutside)
{
    const Mesh mesh = cube();
    const RayGrid grid(mesh.vertices, mesh.triangles);
    const Point low = mesh.vertices[0], high = mesh.vertices[mesh.vertices.size() - 1];
    const Point middle = {(low[0] + high[0]) / 2, (low[1] + high[1]) / 2, (low[2] + high[2]) / 2};
    EXPECT_EQ(grid.contains({middle, {99, 99, 99}}), (std::vector<bool>{true, false}));
    EXPECT_TRUE(grid.contains(PointView()).empty());
}

TEST(FaceRayGrid, ProgressStopsAndThrows)
{
    const Mesh mesh = cube();
    const RayGrid grid(mesh.vertices, mesh.triangles);
    const Outline from(1000, Point{1, 2, 9});
    std::vector<int32_t> counts(1000, -1);
    int told = 0;
    EXPECT_FALSE(grid.cast(from, {{0, 0, -1}}, {.counts = counts}, [&](double) { return ++told < 3; }));
    EXPECT_EQ(told, 3);
    EXPECT_EQ(counts[999], -1);
    EXPECT_THROW(
        grid.cast(from, {{0, 0, -1}}, {.counts = counts}, [](double) -> bool { throw std::domain_error("x"); }),
        std::domain_error);
    EXPECT_TRUE(grid.cast(from, {{0, 0, -1}}, {.counts = counts}, [](double) { return true; }));
    EXPECT_EQ(refusal_of([&] { RayGrid(mesh.vertices, mesh.triangles, {}, [](double) { return false; }); }),
              "RayGrid: progress must go on, but it has stopped the work");
    EXPECT_EQ(refusal_of([&] { grid.face(-1); }), "RayGrid::face: triangle must be one of the grid's 12, but it is -1");
}

TEST(FaceRayGrid, NamesTheFaceOfATriangle)
{
    const Outline corners = {{0, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}, {4, 0, 0}};
    const std::vector<int32_t> sizes = {4, 3}, points = {0, 1, 2, 3, 1, 4, 2};
    RayGrid grid(corners, sizes, points);
    EXPECT_EQ(grid.size(), 3u);
    EXPECT_EQ(grid.face(grid.nearest({0.5, 1.5, 5}, {0, 0, -1})->triangle), 0);
    EXPECT_EQ(grid.face(grid.nearest({2.5, 0.5, 5}, {0, 0, -3})->triangle), 1);
    EXPECT_EQ(grid.nearest({2.5, 0.5, 5}, {0, 0, -3})->distance, 5);
    EXPECT_FALSE(grid.nearest({9, 9, 5}, {0, 0, -1}));
}

TEST(FaceRayGrid, ChoosesCellsByNumberAndExtent)
{
    const auto cells = [](const Point& extent, int n) {
        std::vector<double> corners;
        for (int i = 0; i < n; ++i)
            for (int k = 0; k < 9; ++k)
                corners.push_back((i % 2 == 0 ? 0.0 : 1.0) * extent[static_cast<size_t>(k % 3)]);
        const GridSize size = RayGrid(corners).grid_size();
        return std::vector<int>{size.x, size.y, size.z};
    };
    EXPECT_EQ(cells({1, 1, 1}, 1000), (std::vector<int>{5, 5, 5}));
    EXPECT_EQ(cells({1, 1, 0}, 1000), (std::vector<int>{5, 5, 1}));
    EXPECT_EQ(cells({8, 1, 1}, 1000), (std::vector<int>{20, 3, 3}));
    EXPECT_EQ(cells({0, 0, 0}, 10), (std::vector<int>{1, 1, 1}));
}

TEST(FaceRayGrid, OverBorrowsAndTheOthersCopy)
{
    std::vector<double> corners = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    RayGrid borrowed = RayGrid::over(corners), copied(corners);
    for (size_t k = 2; k < 9; k += 3)
        corners[k] = 1e-7;
    EXPECT_EQ(copied.distance({0.2, 0.2, 1}, {0, 0, -1}), 1.0);
    EXPECT_EQ(borrowed.distance({0.2, 0.2, 1}, {0, 0, -1}), 1.0 - 1e-7);
}

TEST(FaceRayGrid, RefusesFacesByTheirOwnNumbers)
{
    const std::vector<Point> square = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
    const auto refusal = [&](std::vector<std::int32_t> sizes, std::vector<std::int32_t> corners) {
        return refusal_of([&] { RayGrid(square, sizes, corners); });
    };
    EXPECT_EQ(refusal({4}, {0, 1, 2}),
              "RayGrid: corners must be as many as the faces have together, 4, but there are 3");
    EXPECT_EQ(refusal({3}, {0, 1, 2, 3}),
              "RayGrid: corners must be as many as the faces have together, 3, but there are 4");
    EXPECT_EQ(refusal({4}, {0, 1, 2, 4}), "RayGrid: corners must name vertices 0 to 3, but its corner 3 is 4");
    EXPECT_EQ(refusal({-1}, {}), "RayGrid: face_sizes must be 0 or more, but face 0 has -1");
}

TEST(FaceRayGrid, MovesAndTakesNoTriangles)
{
    RayGrid grid{std::vector<double>()};
    EXPECT_EQ(grid.count({0, 0, 0}, {0, 0, 1}), 0);
    RayGrid other(std::move(grid));
    EXPECT_TRUE(other.hits({0, 0, 0}, {0, 0, 1}).empty());
    EXPECT_EQ(refusal_of([] {
                  RayGrid(std::vector<double>{1, 2, 3});
              }),
              "triangles: the corners must come in threes, but there are 1");
}

} // namespace
} // namespace korvale::test
