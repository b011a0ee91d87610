// Meshes of the C++ face, and the solids made of outlines.
#include "direct.h"

namespace korvale::test {
namespace {

const std::vector<Outline> kPlate = {{{0, 0, 0}, {10, 0, 0}, {10, 10, 0}, {0, 10, 0}},
                                     {{3, 3, 0}, {7, 3, 0}, {7, 7, 0}, {3, 7, 0}}};
constexpr BevelStep kWall[] = {{0, 0}, {0, 8}};

double doubled_area(const Outline& outline)
{
    double sum = 0;
    for (size_t i = 0; i < outline.size(); ++i) {
        const Point &p = outline[i], &q = outline[(i + 1) % outline.size()];
        sum += p[0] * q[1] - q[0] * p[1];
    }
    return sum;
}

Outline circle(int n, double radius)
{
    Outline points;
    for (int i = 0; i < n; ++i)
        points.push_back(
            {radius * std::cos(6.283185307179586 * i / n), radius * std::sin(6.283185307179586 * i / n), 0});
    return points;
}

TEST(FaceMesh, MeasuresItsTriangles)
{
    const Mesh mesh = cube();
    EXPECT_EQ(mesh.normals()[0], (Point{0, 0, -1}));
    EXPECT_EQ(mesh.normals()[11], (Point{1, 0, 0}));
    EXPECT_EQ(mesh.areas(), std::vector<double>(12, 2));
    EXPECT_EQ(mesh.bounds(), (Bounds{{-1, -1, -1}, {1, 1, 1}}));
    EXPECT_EQ(mesh.volume(), 8);
}

TEST(FaceMesh, OfNothingHasNoBounds)
{
    Mesh mesh;
    EXPECT_TRUE(mesh.normals().empty());
    EXPECT_TRUE(mesh.areas().empty());
    EXPECT_EQ(mesh.volume(), 0);
    EXPECT_EQ(refusal_of([&] { mesh.bounds(); }),
              "Mesh::bounds: triangles must have at least 1 triangle, but there is none");
    mesh.vertices = {{1, 2, 3}, {0, 5, 3}, {1, 1, 1}, {0, 0, 0}};
    EXPECT_TRUE(mesh.normals().empty()); // vertices alone are no triangles
    EXPECT_EQ(mesh.volume(), 0);
    EXPECT_THROW(mesh.bounds(), Error);
}

TEST(FaceMesh, ComparesItsVerticesAndTriangles)
{
    Mesh mesh = cube();
    EXPECT_EQ(mesh, cube());
    std::swap(mesh.triangles[0][1], mesh.triangles[0][2]);
    EXPECT_NE(mesh, cube());
}

TEST(FaceMesh, SaysWhatItRefuses)
{
    Mesh open = cube();
    open.triangles.pop_back();
    EXPECT_EQ(refusal_of([&] { open.volume(); }),
              "Mesh::volume: triangles must be closed and face one way, but the edge between points 1 and 5 "
              "runs one way in 1 and the other way in 0 of the triangles");
    open.triangles[0][1] = 8;
    EXPECT_EQ(refusal_of([&] { open.normals(); }),
              "Mesh::normals: triangles must name vertices 0 to 7, but its corner 1 is 8");
    EXPECT_EQ(refusal_of([&] { open.areas(); }),
              "Mesh::areas: triangles must name vertices 0 to 7, but its corner 1 is 8");
    EXPECT_EQ(refusal_of([&] { open.bounds(); }),
              "Mesh::bounds: triangles must name vertices 0 to 7, but its corner 1 is 8");
}

TEST(FaceBevel, TellsHowFarEachStepHasCome)
{
    Mesh mesh = bevel(kPlate, {{0, 0}, {-1, 1}, {-2, 2}}); // a frame 3 wide
    ASSERT_EQ(mesh.reached.size(), 3u);
    EXPECT_EQ(mesh.reached[1], -1);
    EXPECT_EQ(mesh.reached[2], -1.5);
    EXPECT_TRUE(is_closed(mesh));
    const Mesh same = mesh;
    mesh.reached.clear();
    EXPECT_EQ(mesh, same); // which is about the triangles
    EXPECT_TRUE(tube(kPlate[0], kPlate[1]).reached.empty());
}

TEST(FaceBevel, ClosesAPlateWithAHole)
{
    const Mesh mesh = bevel(kPlate, kWall);
    EXPECT_TRUE(is_closed(mesh));
    EXPECT_EQ(mesh.vertices.size(), 16u);
    EXPECT_EQ(mesh.triangles.size(), 32u);
    EXPECT_EQ(mesh.volume(), (100 - 16) * 8);
    EXPECT_EQ(refusal_of([] {
                  bevel({kPlate[0], kPlate[0]}, kWall);
              }),
              "bevel: outline 1 must leave some of outline 0, but it goes round all of it");
}

TEST(FaceBevel, FacesOutwardsForAnyPlaneWindingAndProfile)
{
    Random random(1204);
    for (int round = 0; round < rounds(40); ++round) {
        std::vector<Outline> shape = kPlate;
        const Transform placement = random_placement(random);
        for (Outline& outline : shape) {
            placement.apply(outline);
            if (random.one_in(2))
                std::ranges::reverse(outline);
        }
        const double height = random.one_in(2) ? 8 : -8;
        const BevelStep profile[] = {{0, 0}, {0, height}, {-1, 1.25 * height}};
        const Mesh mesh = bevel(shape, profile);
        EXPECT_TRUE(is_closed(mesh));
        // the chamfer is a frustum of the outer square less one of the hole
        const double top = (64 + 100 + 80) / 3.0 - (36 + 16 + 24) / 3.0;
        EXPECT_NEAR(mesh.volume(), 84 * 8 + top * 2, 1e-11); // a sum of some 60 products of up to 1,000
    }
}

TEST(FaceBevel, LayersAreOffsets)
{
    const BevelStep profile[] = {{0.5, 0}, {-0.25, 3}};
    const Mesh mesh = bevel(kPlate, profile);
    for (const BevelStep& step : profile)
        for (const Offset& border : offset(kPlate, step.distance, {.height = step.height}))
            for (const Point& p : border.points)
                EXPECT_NE(std::ranges::find(mesh.vertices, p), mesh.vertices.end());
}

TEST(FaceBevel, ClosesARoofWhoseEdgesShrinkToNothing)
{
    const std::vector<Outline> house = {{{0, 0, 0}, {6, 0, 0}, {6, 4, 0}, {0, 4, 0}}};
    const BevelStep roof[] = {{0, 0}, {-2.5, 2.5}}; // past the ridge: one point is left
    const Mesh mesh = bevel(house, roof);
    EXPECT_TRUE(is_closed(mesh));
    const BevelStep hips[] = {{0, 0}, {-2, 2}};
    const Mesh hipped = bevel(house, hips);
    EXPECT_TRUE(is_closed(hipped));
    EXPECT_EQ(hipped.volume(), 6 * 4 * 2 / 2.0 - 2 * (4 * 2 * 2 / 6.0));
}

TEST(FaceBevel, ALayerThatWouldTurnInsideOutIsMadeWithSplits)
{
    const std::vector<Outline> notched = {{{0, 0, 0}, {16, 0, 0}, {16, 7.5, 0}, {8, 1.5, 0}, {0, 7.5, 0}}};
    const BevelStep past[] = {{0, 0}, {-4, 3}}, narrow[] = {{0, 0}, {-0.5, 1}};
    const Mesh whole = bevel(notched, past), quick = bevel(notched, past, false);
    EXPECT_EQ(quick.vertices, whole.vertices);
    EXPECT_EQ(quick.triangles, whole.triangles);
    EXPECT_TRUE(is_closed(quick));
    EXPECT_TRUE(is_closed(bevel(notched, narrow, false)));
}

TEST(FaceBevel, TakesAProfileWrittenOut)
{
    EXPECT_EQ(bevel(kPlate, {{0, 0}, {0, 8}}), bevel(kPlate, kWall));
}

TEST(FaceBevel, SaysWhatItRefuses)
{
    const BevelStep one[] = {{0, 0}};
    const Outline bow = {{0, 0, 0}, {4, 4, 0}, {4, 0, 0}, {0, 5, 0}};
    EXPECT_EQ(refusal_of([&] { bevel(bow, kWall); }),
              "bevel: outline 0 must not cross itself, but its edges from points 0 and 2 do");
    EXPECT_EQ(bevel(bow, {{0, 0}, {-1, 8}}, true, {}, true).reached, (std::vector<double>{0, 0}));
    EXPECT_EQ(refusal_of([&] { bevel(kPlate, one); }), "bevel: profile must have at least 2 steps, but it has 1");
    const std::vector<Outline> pair = {{{0, 0, 0}, {1, 0, 0}}};
    EXPECT_EQ(refusal_of([&] { bevel(pair, kWall); }), "bevel: outline 0 must have at least 3 points, but it has 2");
    EXPECT_EQ(refusal_of([&] { bevel(std::vector<Outline>(), kWall); }),
              "bevel: outlines must have an outer outline, but there is none");
}

TEST(FaceTriangulate, CoversTheShapeOnceEitherWayRound)
{
    Random random(1205);
    for (int round = 0; round < rounds(50); ++round) {
        std::vector<Outline> shape = {random_outline(random, random.between(8, 60), 0, 0, 40)};
        for (int hole = random.between(0, 3); hole > 0; --hole)
            shape.push_back(random_outline(random, random.between(3, 12), 8.0 * hole - 16, 2.0 * hole, 3));
        double area = 0;
        size_t points = 0;
        Mesh mesh;
        for (size_t k = 0; k < shape.size(); ++k) {
            area += (k == 0 ? 1 : -1) * doubled_area(shape[k]);
            if (k > 0 && random.one_in(2))
                std::ranges::reverse(shape[k]);
            points += shape[k].size();
            mesh.vertices.insert(mesh.vertices.end(), shape[k].begin(), shape[k].end());
        }
        mesh.triangles = triangulate(shape);
        EXPECT_EQ(mesh.triangles.size(), points + 2 * (shape.size() - 1) - 2);
        double covered = 0;
        for (const Triangle& t : mesh.triangles) {
            const Point& a = mesh.vertices[static_cast<size_t>(t[0])];
            const double twice = detail::cross(detail::minus(mesh.vertices[static_cast<size_t>(t[1])], a),
                                               detail::minus(mesh.vertices[static_cast<size_t>(t[2])], a))[2];
            EXPECT_GE(twice, 0);
            covered += twice;
        }
        EXPECT_NEAR(covered, area, 1e-14 * area); // sums of products, each rounded by 1e-16 of itself
    }
}

TEST(FaceTriangulate, SaysWhatItRefuses)
{
    EXPECT_EQ(refusal_of([] { triangulate(std::vector<Outline>()); }),
              "triangulate: outlines must have an outer outline, but there is none");
    EXPECT_EQ(refusal_of([] {
                  triangulate({kPlate[0], {{3, 3, 0}, {7, 3, 0}}});
              }),
              "triangulate: outline 1 must have at least 3 points, but it has 2");
}

TEST(FaceShapes, ListsHolesAfterTheirOuterOutline)
{
    const Outline far = {{20, 0, 0}, {30, 0, 0}, {30, 10, 0}};
    EXPECT_EQ(shapes({kPlate[1], far, {}, kPlate[0], kPlate[1]}), (std::vector<std::vector<size_t>>{{1}, {3, 0}}));
    EXPECT_TRUE(shapes(std::vector<Outline>()).empty());
    const Outline point = {{1, 1, 0}}, edge = {{1, 1, 0}, {2, 1, 0}};
    EXPECT_EQ(shapes({kPlate[0], point, edge}), (std::vector<std::vector<size_t>>{{0}}));
    EXPECT_EQ(refusal_of([] {
                  shapes({{{0, 0, 0}, {1, std::nan(""), 0}, {0, 1, 0}}});
              }),
              "shapes: outline 0 must be finite, but its point 1 is (1, nan, 0)");
}

TEST(FaceShapes, GiveOutlinesThatDoNotOverlap)
{
    const Outline beside = {{9.99, 3, 0}, {12, 3, 0}, {12, 7, 0}, {9.99, 7, 0}};
    Rings joined;
    EXPECT_EQ(shapes({kPlate[0], beside}, {.tolerance = 0.02, .joined = &joined}),
              (std::vector<std::vector<size_t>>{{0}, {1}}));
    ASSERT_EQ(joined.size(), 2u);
    EXPECT_EQ(joined[0].size(), 6u);
    EXPECT_EQ(joined[0][2], (Point{10, 3, 0}));
    EXPECT_EQ(joined[1][0], (Point{10, 3, 0}));
    EXPECT_EQ(joined.sources[2], 1);
}

TEST(FaceTube, FacesOutwardsAndCloses)
{
    Outline helix, section = circle(12, 0.5);
    for (int i = 0; i < 50; ++i)
        helix.push_back({5 * std::cos(0.3 * i), 5 * std::sin(0.3 * i), 0.4 * i});
    const double length_of_section = doubled_area(section) / 2;
    for (const bool turned : {false, true}) {
        if (turned)
            std::ranges::reverse(section);
        const Mesh open = tube(helix, section), loop = tube(circle(40, 6), section, {.closed = true});
        EXPECT_TRUE(is_closed(open));
        EXPECT_TRUE(is_closed(loop));
        EXPECT_FALSE(is_closed(tube(helix, section, {.caps = false})));
        EXPECT_GT(open.volume(), 0);
        EXPECT_NEAR(loop.volume(), length_of_section * 6.283185307 * 6, 1.0); // chords for arcs: less
        EXPECT_EQ(loop.vertices.size(), 480u);
    }
}

TEST(FaceTube, CarriesTheSectionByTheFrames)
{
    const Outline path = {{0, 0, 0}, {3, 0, 0}, {3, 3, 1}}, section = circle(5, 1);
    const Mesh mesh = tube(path, section);
    const auto places = frames(path);
    for (size_t i = 0; i < 3; ++i)
        for (size_t k = 0; k < 5; ++k)
            EXPECT_EQ(mesh.vertices[i * 5 + k], places[i].point(section[k]));
}

TEST(FaceTube, SaysWhatItRefuses)
{
    const Outline path = {{0, 0, 0}, {3, 0, 0}}, section = circle(5, 1);
    EXPECT_EQ(refusal_of([&] { tube(std::span(path).first(1), section); }),
              "tube: path must have at least 2 points, but it has 1");
    EXPECT_EQ(refusal_of([&] { tube(path, section, {.closed = true}); }),
              "tube: path must have at least 3 points, but it has 2");
    EXPECT_EQ(refusal_of([&] { tube(path, path); }), "tube: section must have at least 3 points, but it has 2");
}

} // namespace
} // namespace korvale::test
