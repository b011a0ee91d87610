// Sections carried along paths.
#include <korvale.h>

#include <algorithm>
#include <cmath>

#include <gmock/gmock.h>

#include "solids.h"
#include "support.h"
#include "tests/support/heap.h"

namespace korvale::test {
namespace {

using testing::ElementsAre;

korvale_tube_options tube_options(int32_t closed)
{
    korvale_tube_options options;
    korvale_tube_defaults(&options, sizeof options);
    options.closed = closed;
    return options;
}

Solid tube_of(const Numbers& path, const Numbers& section, int32_t closed = 0)
{
    const korvale_points along = points_of(path), around = points_of(section);
    const korvale_tube_options options = tube_options(closed);
    korvale_mesh* mesh = nullptr;
    EXPECT_EQ(korvale_tube(&along, &around, &options, &mesh, nullptr), KORVALE_OK);
    return taken(mesh);
}

const Numbers kDiamond = {1, 0, 0, 0, 1, 0, -1, 0, 0, 0, -1, 0};

TEST(DoorTube, AlongALineIsABar)
{
    const Solid bar = tube_of({0, 0, 0, 0, 0, 5}, kDiamond);
    EXPECT_EQ(bar.points.size(), 24u);
    EXPECT_EQ(bar.corners.size(), 36u);
    EXPECT_EQ(bar.volume, 10);
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(bar.points[3 * i + 2], 0);
        EXPECT_EQ(bar.points[3 * i + 14], 5);
    }
}

TEST(DoorTube, CarriesTheSectionByTheFrames)
{
    const Numbers path = {0, 0, 0, 3, 0, 0, 3, 3, 1, 4, 5, 6};
    const korvale_points along = points_of(path), around = points_of(kDiamond);
    for (const int32_t closed : {0, 1}) {
        const Solid tube = tube_of(path, kDiamond, closed);
        Numbers frames(64), ring(12);
        ASSERT_EQ(korvale_frames(&along, closed, frames.data(), nullptr), KORVALE_OK);
        for (size_t i = 0; i < 4; ++i) {
            const korvale_points_out output = points_to(ring);
            ASSERT_EQ(korvale_transform_points(&frames[16 * i], &around, &output, nullptr), KORVALE_OK);
            EXPECT_TRUE(std::equal(ring.begin(), ring.end(), tube.points.begin() + static_cast<ptrdiff_t>(12 * i)));
        }
    }
}

TEST(DoorTube, FacesOutwardsWhicheverWayTheSectionRuns)
{
    const Numbers turned = {0, -1, 0, -1, 0, 0, 0, 1, 0, 1, 0, 0};
    const Numbers path = {0, 0, 0, 9, 0, 0, 9, 9, 0, 0, 9, 0};
    for (const int32_t closed : {0, 1}) {
        const double thin = std::sqrt(0.5); // at mitres
        const double volume = 2 * 9 * (closed ? 4 * thin : (1 + thin) / 2 + thin + (thin + 1) / 2);
        // Sums of products of coordinates below 10, rounded by 1e-13 or less.
        EXPECT_NEAR(tube_of(path, kDiamond, closed).volume, volume, 1e-13);
        EXPECT_NEAR(tube_of(path, turned, closed).volume, volume, 1e-13);
    }
}

TEST(DoorTube, OfASmallPathIsThatOfAnOrdinaryOne)
{
    const Numbers path = {0, 0, 0, 3, 0, 0, 6, 3, 1, 4, 9, 6};
    const Solid plain = tube_of(path, kDiamond), small = tube_of(times(0x1p-30, path), times(0x1p-30, kDiamond));
    EXPECT_EQ(small.points, times(0x1p-30, plain.points));
    EXPECT_EQ(small.corners, plain.corners);
}

TEST(DoorTube, WithoutCapsIsOpen)
{
    const Numbers path = {0, 0, 0, 0, 0, 5};
    const korvale_points along = points_of(path), around = points_of(kDiamond);
    korvale_tube_options options = tube_options(0);
    options.caps = 0;
    korvale_mesh* mesh = nullptr;
    ASSERT_EQ(korvale_tube(&along, &around, &options, &mesh, nullptr), KORVALE_OK);
    const korvale_triangles view = korvale_mesh_view(mesh);
    EXPECT_EQ(view.corners.count, 24);
    double volume = 9;
    EXPECT_EQ(korvale_mesh_volume(&view, &volume, nullptr), KORVALE_BAD_ARGUMENT);
    korvale_mesh_free(mesh);
}

TEST(DoorTube, OfAPathAtOnePlaceIsMadeAllTheSame)
{
    const Numbers path(9, 1.0), section(9, 0.0);
    EXPECT_EQ(tube_of(path, kDiamond).points.size(), 36u);
    EXPECT_THAT(tube_of({0, 0, 0, 0, 0, 5}, section).volume, 0);
}

TEST(DoorTube, SaysWhatItRefuses)
{
    korvale_mesh* mesh = nullptr;
    const auto refusal = [&](const Numbers& path, const Numbers& section, int32_t closed) {
        const korvale_points along = points_of(path), around = points_of(section);
        const korvale_tube_options options = tube_options(closed);
        int place = 0;
        mesh = reinterpret_cast<korvale_mesh*>(&place);
        const std::string sentence = sentence_of(KORVALE_BAD_ARGUMENT, [&](korvale_error* error) {
            return korvale_tube(&along, &around, &options, &mesh, error);
        });
        EXPECT_EQ(mesh, nullptr);
        return sentence;
    };
    const Numbers line = {0, 0, 0, 1, 0, 0}, wrong = {0, 0, 0, 1, NAN, 0, 1, 1, 1};
    EXPECT_EQ(refusal({}, kDiamond, 0), "korvale_tube: path must have at least 2 points, but it has 0");
    EXPECT_EQ(refusal({1, 2, 3}, kDiamond, 0), "korvale_tube: path must have at least 2 points, but it has 1");
    EXPECT_EQ(refusal(line, kDiamond, 1), "korvale_tube: path must have at least 3 points, but it has 2");
    EXPECT_EQ(refusal(line, line, 0), "korvale_tube: section must have at least 3 points, but it has 2");
    EXPECT_EQ(refusal(wrong, kDiamond, 0), "korvale_tube: path must be finite, but its point 1 is (1, nan, 0)");
    EXPECT_EQ(refusal(line, wrong, 0), "korvale_tube: section must be finite, but its point 1 is (1, nan, 0)");
    const Numbers many(3 * 16000);
    EXPECT_EQ(refusal(many, many, 0),
              "korvale_tube: path times section must have at most 238609294 elements, but it has 256000000");
    const korvale_points good = points_of(kDiamond);
    const auto missing = [&](const korvale_points* path, const korvale_points* section, korvale_mesh** to) {
        return sentence_of(KORVALE_BAD_ARGUMENT,
                           [&](korvale_error* error) { return korvale_tube(path, section, nullptr, to, error); });
    };
    EXPECT_EQ(missing(nullptr, &good, &mesh), "korvale_tube: path must be given, but it is null");
    EXPECT_EQ(missing(&good, nullptr, &mesh), "korvale_tube: section must be given, but it is null");
    EXPECT_EQ(missing(&good, &good, nullptr), "korvale_tube: mesh must be given, but it is null");
}

TEST(DoorTube, AnExhaustedHeapMakesNothing)
{
    NEEDS_HEAP_FAILURES();
    const Numbers path = {0, 0, 0, 0.3, 0, 0, 0.6, 0.3, 0.1};
    const korvale_points along = points_of(path), around = points_of(kDiamond);
    const int64_t failed = fail_each_allocation([&](int64_t) {
        for (const int32_t closed : {0, 1}) {
            korvale_mesh* mesh = nullptr;
            const korvale_tube_options options = tube_options(closed);
            if (korvale_tube(&along, &around, &options, &mesh, nullptr) == KORVALE_NO_MEMORY) {
                EXPECT_EQ(mesh, nullptr);
            } else {
                EXPECT_EQ(korvale_mesh_view(mesh).points.count, 12);
            }
            korvale_mesh_free(mesh);
        }
    });
    EXPECT_GT(failed, 20);
}

TEST(DoorTube, TellsOfManyPointsAndStopsWhenAsked)
{
    Numbers path;
    for (int i = 0; i < 16384; ++i)
        path.insert(path.end(), {0, 0, double(i)});
    const Numbers section = {1, 0, 0, 0, 1, 0, -1, 0, 0, 0, -1, 0};
    const korvale_points along = points_of(path), around = points_of(section);
    Told told;
    korvale_tube_options options = tube_options(0);
    options.progress = &Told::tell;
    options.user = &told;
    korvale_mesh* mesh = nullptr;
    ASSERT_EQ(korvale_tube(&along, &around, &options, &mesh, nullptr), KORVALE_OK);
    korvale_mesh_free(mesh);
    // Each 4,096 rings of 4 points, moved first and joined then; between 16,384 there are 16,383 strips.
    EXPECT_THAT(told.done, ElementsAre(0.5 * 4095 / 16384, 0.5 * 8191 / 16384, 0.5 * 12287 / 16384, 0.5 * 16383 / 16384,
                                       0.5 + 0.5 * 4095 / 16384, 0.5 + 0.5 * 8191 / 16384, 0.5 + 0.5 * 12287 / 16384));
    told = {{}, 0.6};
    korvale_error error;
    EXPECT_EQ(korvale_tube(&along, &around, &options, &mesh, &error), KORVALE_STOPPED);
    EXPECT_STREQ(error.text, "korvale_tube: it was asked to stop");
    EXPECT_EQ(mesh, nullptr);
    EXPECT_EQ(told.done.size(), 5u);
}

TEST(DoorTube, DefaultsFillWhatTheHostKnows)
{
    Told told;
    korvale_tube_options tube = {77, 77, 77, 77, &Told::tell, &told};
    korvale_tube_defaults(&tube, sizeof tube);
    EXPECT_EQ(tube.size, sizeof tube);
    EXPECT_EQ(tube.closed, 0);
    EXPECT_EQ(tube.caps, 1);
    EXPECT_EQ(tube.reserved, 0);
    EXPECT_EQ(tube.progress, nullptr);
    EXPECT_EQ(tube.user, nullptr);
    korvale_tube_defaults(nullptr, sizeof tube);
}

} // namespace
} // namespace korvale::test
