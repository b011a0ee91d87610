// Flattening and frames of the C++ face, beside the direct calls.
#include "direct.h"

namespace korvale::test {
namespace {

Outline random_path(Random& random, int n)
{
    Outline path;
    for (int i = 0; i < n; ++i)
        path.push_back({random.uniform(-10, 10), random.uniform(-10, 10), random.uniform(-10, 10)});
    return path;
}

TEST(FaceFlatten, IsTheDirectCallToTheBit)
{
    Random random(1206);
    for (int round = 0; round < rounds(100); ++round) {
        Outline outline = random_outline(random, random.between(3, 20), 0, 0, 10);
        random_placement(random).apply(outline);
        const bool closed = random.one_in(2);
        Xfm flat, back;
        auto record = points<DATAstruct>(coordinates(outline));
        DATA_to_xy_xfms(record, flat, back, closed);
        const Flattening way = flatten(outline, {.closed = closed});
        ASSERT_TRUE(same_bits(&flat[0][0], way.to_plane.rows().data(), 16));
        ASSERT_TRUE(same_bits(&back[0][0], way.from_plane.rows().data(), 16));

        auto data = points<Data>(coordinates(outline));
        ASSERT_EQ(data_to_xy_xfms(data, flat, back, closed), 1);
        const Flattening by_extremes = flatten(outline, {.closed = closed, .by_extremes = true});
        ASSERT_TRUE(same_bits(&flat[0][0], by_extremes.to_plane.rows().data(), 16));
        ASSERT_TRUE(same_bits(&back[0][0], by_extremes.from_plane.rows().data(), 16));
    }
}

TEST(FaceFlatten, SaysWhatItRefuses)
{
    EXPECT_EQ(refusal_of([] {
                  flatten({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}}, {.by_extremes = true});
              }),
              "flatten: path must span a plane, but its points lie on one line or too close together");
    EXPECT_EQ(refusal_of([] { flatten(Outline{}); }), "flatten: path must have at least 1 point, but it has 0");
}

TEST(FaceFrames, AreTheDirectCallToTheBit)
{
    Random random(1207);
    for (int round = 0; round < rounds(100); ++round) {
        const Outline path = random_path(random, random.between(4, 30)); // three points are a planar loop
        const bool closed = random.one_in(2);
        std::vector<Transform> direct(path.size());
        auto record = points<DATAstruct>(coordinates(path));
        PATH2xfm(record, closed, &direct[0].m);
        const std::vector<Transform> places = frames(path, closed);
        for (size_t i = 0; i < path.size(); ++i)
            ASSERT_TRUE(same_bits(direct[i].rows().data(), places[i].rows().data(), 16));
    }
}

TEST(FaceFrames, OfPlanarLoopsAreNeverNaN)
{
    Random random(1208);
    int mended = 0;
    for (int round = 0; round < rounds(200); ++round) {
        Outline loop = random_outline(random, random.between(3, 20), 0, 0, 10);
        random_placement(random).apply(loop);
        std::vector<Transform> direct(loop.size());
        auto record = points<DATAstruct>(coordinates(loop));
        PATH2xfm(record, 1, &direct[0].m);
        const bool is_nan = std::isnan(direct[1].m[0][0]);
        mended += is_nan;
        const std::vector<Transform> places = frames(loop, true);
        for (size_t i = 0; i < loop.size(); ++i) {
            for (const double v : places[i].rows())
                ASSERT_TRUE(std::isfinite(v));
            if (!is_nan) {
                ASSERT_TRUE(same_bits(direct[i].rows().data(), places[i].rows().data(), 16));
            }
            for (size_t k = 0; k < 3; ++k) { // z axes and points are right in the direct call as well
                ASSERT_EQ(places[i](k, 2), direct[i](k, 2));
                ASSERT_EQ(places[i](k, 3), loop[i][k]);
            }
        }
        // The frames turn with the loop: x stays perpendicular to its plane.
        Point normal = detail::cross(detail::minus(loop[1], loop[0]), detail::minus(loop[2], loop[0]));
        normalize(normal.data());
        for (const Transform& place : places)
            ASSERT_NEAR(std::fabs(detail::dot(normal, {place(0, 0), place(1, 0), place(2, 0)})), 1,
                        1e-14); // unit vectors: a few roundings of 1e-16 a turn
    }
    EXPECT_GT(mended, 20); // about two in five
}

TEST(FaceFrames, SayWhatTheyRefuse)
{
    EXPECT_EQ(refusal_of([] { frames({{0, 0, 0}}); }), "frames: path must have at least 2 points, but it has 1");
    std::vector<Transform> few(1);
    EXPECT_EQ(refusal_of([&] {
                  frames({{0, 0, 0}, {1, 0, 0}}, few);
              }),
              "frames: output must have 2 frames, but it has 1");
}

} // namespace
} // namespace korvale::test
