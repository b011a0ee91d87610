// Scattering of the C++ face, beside the direct calls.
#include "direct.h"

namespace korvale::test {
namespace {

TEST(FaceScatter, IsTheDirectCallToTheBit)
{
    const Mesh mesh = cube();
    std::vector<double> corners, values;
    for (const Triangle& t : mesh.triangles)
        for (const int32_t v : t)
            for (const double c : mesh.vertices[static_cast<size_t>(v)])
                corners.push_back(c);
    for (int i = 0; i < 72; ++i)
        values.push_back(i);
    auto triangles = doubles<DATAstruct>(9, corners), attributes = doubles<DATAstruct>(2, values);
    auto points = array_of<DATAstruct>(DATA_TYPE_DOUBLE, 50, 3),
         carried = array_of<DATAstruct>(DATA_TYPE_DOUBLE, 50, 2);
    DATATriSample(triangles, 42, points, attributes, carried);

    const Scattered scattered = scatter(corners, 50, 42, values);
    EXPECT_EQ(scattered.width, 2u);
    EXPECT_TRUE(same_bits(points->dvals, scattered.points.coordinates().data(), 150));
    EXPECT_TRUE(same_bits(carried->dvals, scattered.attributes.data(), 100));
    EXPECT_TRUE(same_bits(points->dvals, scatter(corners, 50, 42).points.coordinates().data(), 150));
    EXPECT_TRUE(
        same_bits(points->dvals, scatter(mesh.vertices, mesh.triangles, 50, 42).points.coordinates().data(), 150));
}

TEST(FaceScatter, CarriesValuesOfVertices)
{
    const Mesh mesh = cube();
    std::vector<double> positions = coordinates(mesh.vertices);
    const Scattered scattered = scatter(mesh.vertices, mesh.triangles, 20, 7, positions);
    ASSERT_EQ(scattered.width, 3u);
    EXPECT_TRUE(same_bits(scattered.points.coordinates().data(), scattered.attributes.data(), 60));
}

TEST(FaceScatter, TellsTheTriangleOfEachPointAndLeavesTheGeneratorAlone)
{
    const std::vector<Point> vertices = {{0, 0, 0}, {3, 0, 0}, {3, 1, 0}, {0, 1, 0}, {3, 4, 0}};
    const std::vector<Triangle> triangles = {{0, 1, 2}, {3, 2, 4}}; // below and above y = 1
    Mwsrand(9);
    const int first = Mwrand(), second = Mwrand();
    Mwsrand(9);
    EXPECT_EQ(Mwrand(), first);
    const Scattered scattered = scatter(vertices, triangles, 100, 3);
    EXPECT_EQ(Mwrand(), second);
    ASSERT_EQ(scattered.triangles.size(), 100u);
    for (size_t i = 0; i < 100; ++i)
        EXPECT_EQ(scattered.triangles[i], scattered.points[i][1] > 1 ? 1 : 0);
}

TEST(FaceScatter, TakesWeightsAndAProgress)
{
    const std::vector<Point> vertices = {{0, 0, 0}, {3, 0, 0}, {3, 1, 0}, {0, 1, 0}, {3, 4, 0}};
    const std::vector<Triangle> triangles = {{0, 1, 2}, {3, 2, 4}}; // below and above y = 1
    const std::vector<double> none_above = {2, 0}, three = {1, 1, 1};
    for (const Point& p : scatter(vertices, triangles, 100, 3, {}, {.weights = none_above}).points)
        EXPECT_LT(p[1], 1);
    EXPECT_EQ(refusal_of([&] { scatter(vertices, triangles, 9, 3, {}, {.weights = three}); }),
              "scatter: options.weights must have a row for each of 2 triangles, but it has 3");
    double told = -1;
    const auto half = [&](double done) { return (told = done) < 0.5; };
    EXPECT_EQ(refusal_of([&] { scatter(vertices, triangles, 65536, 3, {}, {.progress = half}); }),
              "scatter: progress must go on, but it has stopped the work");
    EXPECT_EQ(told, 0.5);
    std::stop_source stop;
    stop.request_stop();
    EXPECT_EQ(try_scatter(vertices, triangles, 9, 3, {}, {.progress = stop.get_token()}).error().status(),
              KORVALE_STOPPED);
}

TEST(FaceScatter, SaysWhatItRefuses)
{
    const Mesh mesh = cube();
    EXPECT_EQ(refusal_of([] { scatter(std::vector<double>(), 5, 1); }),
              "scatter: triangles must have at least 1 triangle, but there is none");
    EXPECT_EQ(refusal_of([] { scatter(std::vector<double>(9), 5, 1, std::vector<double>(4)); }),
              "scatter: attributes must divide by the 3 corners of the triangles, but there are 4");
    EXPECT_EQ(refusal_of([&] { scatter(mesh.vertices, mesh.triangles, 5, 1, std::vector<double>(9)); }),
              "scatter: vertex_attributes must divide by the 8 vertices, but there are 9");
    EXPECT_TRUE(scatter(mesh.vertices, mesh.triangles, 0, 1).points.empty());
}

} // namespace
} // namespace korvale::test
