// Planes of outlines and frames along paths through the C interface.
#include <korvale.h>

#include <array>
#include <cmath>
#include <cstring>

#include <gmock/gmock.h>

#include "support.h"
#include "tests/support/heap.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

using testing::Each;
using testing::ElementsAre;
using Rows = std::array<double, 16>;

korvale_flatten_options options_of(int32_t open, int32_t by_extremes = 0)
{
    korvale_flatten_options options;
    korvale_flatten_defaults(&options, sizeof options);
    options.open = open;
    options.by_extremes = by_extremes;
    return options;
}

struct Ways {
    Rows to_plane, from_plane;
    bool operator==(const Ways&) const = default;
};

Ways flattened(const Numbers& path, korvale_flatten_options options = options_of(0))
{
    const korvale_points points = points_of(path);
    Ways ways;
    EXPECT_EQ(korvale_flatten(&points, &options, ways.to_plane.data(), ways.from_plane.data(), nullptr), KORVALE_OK);
    return ways;
}

std::string refusal(const korvale_points* path, korvale_flatten_options options)
{
    korvale_error error;
    Rows rows;
    rows.fill(9);
    EXPECT_EQ(korvale_flatten(path, &options, rows.data(), rows.data(), &error), KORVALE_BAD_ARGUMENT);
    EXPECT_THAT(rows, Each(9));
    return error.text;
}

TEST(DoorFlatten, LaysAClockwiseSquareFlatFromBehind)
{
    const Ways ways = flattened({0, 0, 5, 0, 4, 5, 4, 4, 5, 4, 0, 5});
    EXPECT_THAT(ways.to_plane, ElementsAre(0, 1, 0, 0, 1, 0, 0, 0, 0, 0, -1, 5, 0, 0, 0, 1));
    EXPECT_THAT(ways.from_plane, ElementsAre(0, 1, 0, 0, 1, 0, 0, 0, 0, 0, -1, 5, 0, 0, 0, 1));
}

TEST(DoorFlatten, EitherTransformMayBeLeftOut)
{
    const Numbers square = {0, 0, 5, 0, 4, 5, 4, 4, 5, 4, 0, 5};
    const korvale_points points = points_of(square);
    Rows rows;
    EXPECT_EQ(korvale_flatten(&points, nullptr, rows.data(), nullptr, nullptr), KORVALE_OK);
    EXPECT_EQ(rows, flattened(square).to_plane);
    EXPECT_EQ(korvale_flatten(&points, nullptr, nullptr, rows.data(), nullptr), KORVALE_OK);
    EXPECT_EQ(rows, flattened(square).from_plane);
}

TEST(DoorFlatten, ASmallSquareFromItsLeastCornerIsNotTurnedOver)
{
    for (const double side : {0.1, 0.01, 1e-9})
        EXPECT_EQ(flattened({0, 0, 0, side, 0, 0, side, side, 0, 0, side, 0}).to_plane,
                  (Rows{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}));
}

TEST(DoorFlatten, SmallAndHugePathsTurnAsOrdinaryOnes)
{
    Random random(1220);
    for (int round = 0; round < rounds(200); ++round) {
        Numbers path;
        for (int i = 3 * random.between(3, 12); i > 0; --i)
            path.push_back(random.uniform(-4, 4));
        path.insert(path.end(), {5, 5, 5}); // reaches 1 and more
        for (const korvale_flatten_options options : {options_of(0), options_of(1), options_of(0, 1)}) {
            const Ways plain = flattened(path, options);
            for (const int exponent : {-30, -8, 28}) {
                const double scale = std::ldexp(1.0, exponent);
                Ways expected = plain;
                for (const size_t k : {3u, 7u, 11u}) {
                    expected.to_plane[k] *= scale;
                    expected.from_plane[k] *= scale;
                }
                ASSERT_EQ(flattened(times(scale, path), options), expected) << "round " << round << ", 2^" << exponent;
            }
        }
    }
}

TEST(DoorFlatten, IsThePlainCallToTheBitWhereThatDrawsNothing)
{
    Random random(1221);
    int compared = 0;
    for (int round = 0; round < rounds(400); ++round) {
        Numbers path;
        for (int i = 3 * random.between(1, 12); i > 0; --i)
            path.push_back(random.uniform(-9, 9));
        const int closed = random.between(0, 1);
        DATAstruct record;
        DATAInitialize(&record);
        record.type = DATA_TYPE_DOUBLE;
        record.count = static_cast<int32_t>(path.size() / 3);
        record.dim = 3;
        record.dvals = path.data();
        Mwsrand(3);
        const int next = Mwrand();
        Mwsrand(3);
        Xfm to_plane, from_plane;
        DATA_to_xy_xfms(&record, to_plane, from_plane, closed);
        if (Mwrand() != next)
            continue;
        const Ways ways = flattened(path, options_of(1 - closed));
        ASSERT_EQ(std::memcmp(ways.to_plane.data(), to_plane, sizeof to_plane), 0) << "round " << round;
        ASSERT_EQ(std::memcmp(ways.from_plane.data(), from_plane, sizeof from_plane), 0) << "round " << round;
        ++compared;
    }
    EXPECT_GT(compared, 300);
}

TEST(DoorFlatten, SaysWhatItRefuses)
{
    EXPECT_EQ(refusal(nullptr, options_of(0)), "korvale_flatten: path must be given, but it is null");
    const korvale_points none = points_of({});
    EXPECT_EQ(refusal(&none, options_of(0)), "korvale_flatten: path must have at least 1 point, but it has 0");
    const Numbers infinite = {0, 0, INFINITY};
    const korvale_points not_finite = points_of(infinite);
    EXPECT_EQ(refusal(&not_finite, options_of(0)),
              "korvale_flatten: path must be finite, but its point 0 is (0, 0, inf)");
    const Numbers straight = {0, 0, 0, 1, 1, 1, 2, 2, 2};
    const korvale_points line = points_of(straight);
    EXPECT_EQ(refusal(&line, options_of(0, 1)),
              "korvale_flatten: path must span a plane, but its points lie on one line or too close together");
}

TEST(DoorFlatten, AnExhaustedHeapWritesNothing)
{
    NEEDS_HEAP_FAILURES();
    const Numbers small = {0, 0, 0, 0.1, 0, 0, 0, 0.1, 0};
    const korvale_points points = points_of(small);
    const int64_t failed = fail_each_allocation([&](int64_t) {
        Rows rows;
        rows.fill(9);
        if (korvale_flatten(&points, nullptr, rows.data(), nullptr, nullptr) == KORVALE_NO_MEMORY) {
            EXPECT_THAT(rows, Each(9));
        }
    });
    EXPECT_EQ(failed, 1);
}

TEST(DoorFrames, StandAtThePointsWithZBackAlongThePath)
{
    const Numbers path = {0, 0, 0, 0, 0, 2, 0, 0, 5};
    const korvale_points points = points_of(path);
    double frames[48];
    ASSERT_EQ(korvale_frames(&points, 0, frames, nullptr), KORVALE_OK);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(frames[16 * i + 10], -1); // z axis
        EXPECT_EQ(frames[16 * i + 11], path[static_cast<size_t>(3 * i + 2)]);
    }
}

TEST(DoorFrames, OfASmallPathTurnAsThoseOfAnOrdinaryOne)
{
    Random random(1222);
    for (int round = 0; round < rounds(100); ++round) {
        Numbers path = {0, 0, 0, 5, 0, 0};
        for (int i = 3 * random.between(1, 12); i > 0; --i)
            path.push_back(random.uniform(-4, 4));
        const int closed = random.between(0, 1);
        const auto frames_of = [&](const Numbers& points) {
            const korvale_points view = points_of(points);
            Numbers frames(16 * points.size() / 3);
            EXPECT_EQ(korvale_frames(&view, closed, frames.data(), nullptr), KORVALE_OK);
            return frames;
        };
        Numbers expected = frames_of(path);
        for (size_t i = 0; i < path.size() / 3; ++i)
            for (const size_t r : {0u, 1u, 2u})
                expected[16 * i + 4 * r + 3] *= 0x1p-30;
        ASSERT_EQ(frames_of(times(0x1p-30, path)), expected) << "round " << round;
    }
}

TEST(DoorFrames, OfPlanarLoopsAreNumbers)
{
    for (int k = 0; k < 50; ++k) {
        Numbers loop = {0, 0, 0, 4, 0, 0, 4, 3 + 0.1 * k, 0, 1, 5, 0, -1, 2, 0};
        double turn[16];
        const double radians[] = {0.1 * k, 0.7, 0.05 * k};
        korvale_transform_rotation(radians, turn);
        const korvale_points points = points_of(loop);
        const korvale_points_out output = {loop.data(), 5, 0, 3, KORVALE_DOUBLE};
        korvale_transform_points(turn, &points, &output, nullptr);
        double frames[80];
        ASSERT_EQ(korvale_frames(&points, 1, frames, nullptr), KORVALE_OK);
        for (const double number : frames)
            ASSERT_TRUE(std::isfinite(number)) << "loop " << k;
    }
}

TEST(DoorFrames, SaysWhatItRefuses)
{
    korvale_error error;
    double frames[16];
    const korvale_points one = {frames, 1, 0, 3, KORVALE_DOUBLE};
    EXPECT_EQ(korvale_frames(nullptr, 0, frames, &error), KORVALE_BAD_ARGUMENT);
    EXPECT_STREQ(error.text, "korvale_frames: path must be given, but it is null");
    frames[0] = frames[1] = frames[2] = 0;
    EXPECT_EQ(korvale_frames(&one, 0, frames, &error), KORVALE_BAD_ARGUMENT);
    EXPECT_STREQ(error.text, "korvale_frames: path must have at least 2 points, but it has 1");
    const Numbers path = {0, 0, 0, 1, 0, 0};
    const korvale_points two = points_of(path);
    EXPECT_EQ(korvale_frames(&two, 0, nullptr, &error), KORVALE_BAD_ARGUMENT);
    EXPECT_STREQ(error.text, "korvale_frames: frames must be given, but it is null");
}

TEST(DoorFrames, AnExhaustedHeapWritesNothing)
{
    NEEDS_HEAP_FAILURES();
    const Numbers loop = {0, 0, 0, 0.4, 0, 0, 0.4, 0.3, 0};
    const korvale_points points = points_of(loop);
    const int64_t failed = fail_each_allocation([&](int64_t) {
        std::array<double, 48> frames;
        frames.fill(9);
        if (korvale_frames(&points, 1, frames.data(), nullptr) == KORVALE_NO_MEMORY) {
            EXPECT_THAT(frames, Each(9));
        }
    });
    EXPECT_EQ(failed, 3);
}

} // namespace
} // namespace korvale::test
