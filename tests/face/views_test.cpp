// Views on points of any layout.
#include "direct.h"

#include <gmock/gmock.h>

namespace korvale::test {
namespace {

using testing::ElementsAre;

struct Flat {
    double x, y;
};

struct Vec3 {
    float x, y, z;
};

struct Aligned {
    alignas(16) float x;
    float y, z, w;
};

struct Vertex {
    std::uint32_t colour;
    float x, y, z;
    float u, v;
};

struct Node {
    std::string name;
    std::array<float, 3> position;
};

// A square of side 4 in each layout that is taken.
const Outline kSquare = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}};
const std::vector<double> kDoubles = {0, 0, 0, 4, 0, 0, 4, 4, 0, 0, 4, 0};
const std::vector<float> kFloats = {0, 0, 0, 4, 0, 0, 4, 4, 0, 0, 4, 0};
const std::vector<std::array<float, 3>> kArrays = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}};
const std::vector<std::array<double, 2>> kPairs = {{0, 0}, {4, 0}, {4, 4}, {0, 4}};
const Flat kFlat[] = {{0, 0}, {4, 0}, {4, 4}, {0, 4}};
const Vec3 kVec3[] = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}};
const Aligned kAligned[] = {{0, 0, 0, 9}, {4, 0, 0, 9}, {4, 4, 0, 9}, {0, 4, 0, 9}};
const Vertex kVertices[] = {{7, 0, 0, 0, 9, 9}, {7, 4, 0, 0, 9, 9}, {7, 4, 4, 0, 9, 9}, {7, 0, 4, 0, 9, 9}};
const std::vector<Node> kNodes = {{"a", {0, 0, 0}}, {"b", {4, 0, 0}}, {"c", {4, 4, 0}}, {"d", {0, 4, 0}}};
const float kRows[4][3] = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}};

void expect_square(PointView view)
{
    ASSERT_EQ(view.size(), 4u);
    for (size_t i = 0; i < 4; ++i)
        EXPECT_EQ(view[i], kSquare[i]);
    EXPECT_EQ(offset(view, 1).points, offset(kSquare, 1).points);
}

TEST(FaceViews, SeePointsOfAnyLayout)
{
    expect_square(kSquare);
    expect_square(kDoubles);
    expect_square(kFloats);
    expect_square(kArrays);
    expect_square(kPairs);
    expect_square(kFlat);
    expect_square(kVec3);
    expect_square(kAligned);
    expect_square(kVertices);
    expect_square(kRows);
    expect_square(PointView(kNodes, &Node::position));
    expect_square(PointView::at(&kVertices[0].x, 4, sizeof(Vertex)));
    expect_square(PointView::at(&kFlat[0].x, 4, 0, 2));
}

TEST(FaceViews, GoBackwardsWithANegativeStride)
{
    const PointView backwards = PointView::at(&kVec3[3].x, 4, -std::ptrdiff_t{sizeof(Vec3)});
    EXPECT_EQ(backwards[0], kSquare[3]);
    EXPECT_EQ(backwards[3], kSquare[0]);
    EXPECT_EQ(offset(backwards, 1).points, offset(Outline(kSquare.rbegin(), kSquare.rend()), 1).points);
}

TEST(FaceViews, ShowTheirNumbersOnlyWherePointsArePackedDoubles)
{
    EXPECT_EQ(PointView(kSquare).data(), kSquare[0].data());
    EXPECT_EQ(PointView(kDoubles).coordinates().size(), 12u);
    EXPECT_TRUE(PointView(kSquare).is_packed());
    for (const PointView view : {PointView(kFloats), PointView(kVertices), PointView(kFlat), PointView(kPairs)}) {
        EXPECT_FALSE(view.is_packed());
        EXPECT_EQ(view.data(), nullptr);
        EXPECT_TRUE(view.coordinates().empty());
    }
}

TEST(FaceViews, OfNothingHaveNoPoints)
{
    EXPECT_TRUE(PointView(std::span<const Vertex>()).empty());
    EXPECT_TRUE(PointView(std::span<const Node>(), &Node::position).empty());
    EXPECT_TRUE(PointView(std::span<const double>()).empty());
    EXPECT_EQ(refusal_of([] { offset(std::vector<Vec3>(), 1); }),
              "offset: outline must have at least 3 points, but it has 0");
}

TEST(FaceViews, RefuseNumbersThatAreNoPoints)
{
    EXPECT_EQ(refusal_of([] { offset(std::vector<float>(7), 1); }),
              "points: the coordinates must come in threes, but there are 7");
    EXPECT_EQ(refusal_of([] { scatter(std::vector<Vec3>(4), 1, 1); }),
              "triangles: the corners must come in threes, but there are 4");
    EXPECT_EQ(refusal_of([] {
                  Relaxer(kSquare, std::vector<std::uint16_t>{0, 1, 2, 3});
              }),
              "triangles: the corners must come in threes, but there are 4");
    EXPECT_EQ(refusal_of([] {
                  Relaxer::of_edges(kSquare, std::vector<int>{0, 1, 2});
              }),
              "edges: the ends must come in twos, but there are 3");
}

TEST(FaceViews, ArePartsOfShapes)
{
    const std::vector<std::vector<Vec3>> shape = {{{0, 0, 0}, {9, 0, 0}, {9, 9, 0}, {0, 9, 0}},
                                                  {{3, 3, 0}, {6, 3, 0}, {6, 6, 0}, {3, 6, 0}}};
    const auto borders = offset(shape, 1);
    ASSERT_EQ(borders.size(), 2u);
    EXPECT_EQ(borders[1].points[2], (Point{5, 5, 0}));
    const auto named = offset({shape[0], PointView::at(&shape[1][0].x, 4)}, 1);
    EXPECT_EQ(named[0].points, borders[0].points);
    EXPECT_EQ(named[1].points, borders[1].points);
}

TEST(FaceViews, SpansOfNumbersAreOutlines)
{
    std::vector<double> numbers = kDoubles;
    const std::vector<std::span<double>> shape = {numbers, numbers};
    EXPECT_EQ(offset(shape, 1)[0].points, offset(kSquare, 1).points);
}

TEST(FaceShapes, MayBeASingleOutline)
{
    const Mesh expected = bevel(std::vector<Outline>{kSquare}, {{0, 0}, {0, 1}});
    EXPECT_EQ(expected.vertices.size(), 8u);
    EXPECT_EQ(bevel(kSquare, {{0, 0}, {0, 1}}), expected);
    EXPECT_EQ(bevel({kSquare}, {{0, 0}, {0, 1}}), expected);
    EXPECT_EQ(bevel(kVertices, {{0, 0}, {0, 1}}), expected);
    EXPECT_EQ(bevel(PointView(kSquare), {{0, 0}, {0, 1}}), expected);
    EXPECT_EQ(bevel(Outline(kSquare), {{0, 0}, {0, 1}}), expected);
    EXPECT_EQ(bevel({{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}}, {{0, 0}, {0, 1}}), expected);
    EXPECT_EQ(triangulate(kSquare).size(), 2u);
    EXPECT_EQ(triangulate(kDoubles), triangulate(std::vector<Outline>{kSquare}));
    EXPECT_EQ(triangulate({{0, 0, 0}, {4, 0, 0}, {4, 4, 0}}).size(), 1u);
    EXPECT_EQ(triangulate(ShapeView{kSquare}), triangulate(kSquare));
}

TEST(FaceViews, PointsOfAnyLayoutAreChangedInPlace)
{
    const Transform place = Transform::translation({10, 20, 30});
    std::vector<Vertex> vertices(std::begin(kVertices), std::end(kVertices));
    place.apply(vertices);
    EXPECT_EQ(vertices[2].x, 14.0f);
    EXPECT_EQ(vertices[2].z, 30.0f);
    EXPECT_EQ(vertices[2].colour, 7u);
    EXPECT_EQ(vertices[2].u, 9.0f);
    std::vector<Node> nodes = kNodes;
    place.apply(kFlat, PointSpan(nodes, &Node::position));
    EXPECT_THAT(nodes[2].position, ElementsAre(14.0f, 24.0f, 30.0f));
    EXPECT_EQ(nodes[2].name, "c");
}

TEST(FaceViews, RelaxersMoveFloats)
{
    const Mesh mesh = cube();
    Outline doubles = mesh.vertices;
    doubles[0][0] -= 0.25;
    std::vector<Vec3> floats;
    for (const auto& [x, y, z] : doubles)
        floats.push_back({static_cast<float>(x), static_cast<float>(y), static_cast<float>(z)});
    Relaxer relaxer(floats, mesh.triangles);
    EXPECT_EQ(relaxer.keep("lengths").energy(doubles), 0);
    Relaxer exact(mesh.vertices, mesh.triangles);
    const double energy = exact.keep("lengths").energy(floats);
    EXPECT_EQ(energy, exact.energy(doubles));
    EXPECT_EQ(exact.step(floats), exact.step(doubles));
    for (size_t i = 0; i < floats.size(); ++i)
        EXPECT_EQ(floats[i].x, static_cast<float>(doubles[i][0]));
}

size_t edges_of(const Relaxer& relaxer)
{
    return relaxer.edges().size();
}

template <class Index>
void expect_the_grid_of_a_cube(const Mesh& mesh)
{
    std::vector<Index> flat;
    std::vector<std::array<Index, 3>> groups;
    for (const auto& [a, b, c] : mesh.triangles) {
        groups.push_back({static_cast<Index>(a), static_cast<Index>(b), static_cast<Index>(c)});
        flat.insert(flat.end(), groups.back().begin(), groups.back().end());
    }
    const RayGrid expected(mesh.vertices, mesh.triangles);
    const auto wanted = expected.hits({-5, 0.1, 0.2}, {1, 0, 0});
    ASSERT_EQ(wanted.size(), 2u);
    EXPECT_EQ(RayGrid(mesh.vertices, flat).hits({-5, 0.1, 0.2}, {1, 0, 0}), wanted);
    EXPECT_EQ(RayGrid(mesh.vertices, groups).hits({-5, 0.1, 0.2}, {1, 0, 0}), wanted);
    EXPECT_EQ(RayGrid(mesh.vertices, std::vector<Index>(12, 3), flat).hits({-5, 0.1, 0.2}, {1, 0, 0}), wanted);
    EXPECT_EQ(edges_of(Relaxer(mesh.vertices, flat)), 18u);
    EXPECT_EQ(scatter(mesh.vertices, groups, 9, 1).points, scatter(mesh.vertices, mesh.triangles, 9, 1).points);
}

TEST(FaceIndices, MayBeOfAnyKind)
{
    const Mesh mesh = cube();
    expect_the_grid_of_a_cube<std::int16_t>(mesh);
    expect_the_grid_of_a_cube<std::uint16_t>(mesh);
    expect_the_grid_of_a_cube<std::int32_t>(mesh);
    expect_the_grid_of_a_cube<std::uint32_t>(mesh);
    expect_the_grid_of_a_cube<std::int64_t>(mesh);
    expect_the_grid_of_a_cube<std::size_t>(mesh);
}

TEST(FaceIndices, ThatNameNoPointAreRefused)
{
    EXPECT_EQ(refusal_of([] {
                  RayGrid(kSquare, std::vector<std::uint32_t>{0, 1, 4294967295u});
              }),
              "RayGrid: triangles must name vertices 0 to 3, but its corner 2 is 4294967295");
    EXPECT_EQ(refusal_of([] {
                  RayGrid(kSquare, std::vector<std::uint16_t>{0, 1, 4});
              }),
              "RayGrid: triangles must name vertices 0 to 3, but its corner 2 is 4");
}

TEST(FaceLists, StandForPointsAndTriangles)
{
    EXPECT_EQ(scatter({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, 9, 1).points.size(), 9u);
    EXPECT_EQ(scatter(kSquare, {{0, 1, 2}}, 9, 1).points.size(), 9u);
    EXPECT_EQ(RayGrid(kSquare, {{0, 1, 2}, {0, 2, 3}}).size(), 2u);
    EXPECT_EQ(RayGrid(kSquare, {4}, {0, 1, 2, 3}).size(), 2u);
    EXPECT_EQ(RayGrid({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, GridSize{4, 4, 4}).grid_size().x, 4);
    EXPECT_EQ(edges_of(Relaxer(kSquare, {{0, 1, 2}, {0, 2, 3}})), 5u);
    EXPECT_EQ(edges_of(Relaxer(kSquare, {4}, {0, 1, 2, 3})), 4u);
    EXPECT_EQ(edges_of(Relaxer::of_edges(kSquare, {{0, 1}, {1, 2}})), 2u);
    const std::vector<Triangle> all = {{0, 1, 2}};
    EXPECT_EQ(RayGrid(kSquare, all, {}).size(), 1u);
}

} // namespace
} // namespace korvale::test
