// BORDERAddWings, BORDERRemoveWings and BORDERMakePipe: their results, and the arrays they leave alone.
#include "border/band.h"

#include <cmath>
#include <limits>
#include <numeric>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "border/outlines.h"
#include "tests/border/records.h"
#include "tests/support/arrays.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

const Coordinates kBend = {0, 0, 0, 1, 0, 0, 2, 1, 0};

/// The ways in which a host shapes a record around its own memory: capacities unset, or a zero-filled record.
enum class Wrapping { unset, zero_filled };

DATAstruct wrap(Coordinates& points, Wrapping wrapping)
{
    auto d = wrapped<DATAstruct>(points.data(), static_cast<int32_t>(points.size() / 3), 3);
    if (wrapping == Wrapping::zero_filled)
        d.alloc_count = d.alloc_dim = 0;
    return d;
}

/// Whether `d` is as `wrap` made it.
void expect_untouched(const DATAstruct& d, const Coordinates& points, const Coordinates& before, Wrapping wrapping)
{
    const int32_t capacity = wrapping == Wrapping::unset ? -1 : 0;
    EXPECT_EQ(d.count, static_cast<int32_t>(before.size() / 3));
    EXPECT_EQ(d.dvals, points.data());
    EXPECT_EQ(d.alloc_count, capacity);
    EXPECT_EQ(d.alloc_dim, capacity);
    EXPECT_TRUE(same_bits(before, points.data()));
}

/// A polyline swept as the page on borders tells, with splits off.
struct Band {
    Coordinates points;    ///< the border, then the polyline backwards
    std::vector<int> died; ///< 1 for a vertex that died, wings included
    int dead;              ///< how many of them
};

Band band_along(const Coordinates& line, double distance)
{
    OwnedBORDERStatus status(line);
    status->distance = distance;
    status->split_events = 0;
    BORDERAddWings(status);
    EXPECT_EQ(BORDER(status), 1);
    const std::vector<int> died(status->dead->bvals, status->dead->bvals + status->dead->count);
    BORDERRemoveWings(status);
    BORDERMakePipe(status);
    return {points_of(status->output), died, std::accumulate(died.begin(), died.end(), 0)};
}

/// How far point i of the border lies to the left of the polyline's segment k.
double left_of(const Band& band, const Coordinates& line, int i, int k)
{
    const double *const p = &line[3 * k], *const q = p + 3, *const b = &band.points[3 * i];
    return ((q[0] - p[0]) * (b[1] - p[1]) - (q[1] - p[1]) * (b[0] - p[0])) / std::hypot(q[0] - p[0], q[1] - p[1]);
}

/// A sine from 0 to `turns` half turns, 41 points.
Coordinates wave(int turns)
{
    Coordinates points;
    for (int i = 0; i <= 40; ++i) {
        const double angle = 3.14159 * turns * i / 40;
        points.insert(points.end(), {2 * angle, 2 * std::sin(angle), 0});
    }
    return points;
}

} // namespace

TEST(BORDERAddWings, ExtendsBothEndsByTheLengthOfTheEndSegments)
{
    OwnedBORDERStatus status(kBend);
    BORDERAddWings(status);
    EXPECT_EQ(status->path->count, 5);
    EXPECT_EQ(status->path->alloc_count, 5);
    EXPECT_TRUE(same_bits({-1, 0, 0, 0, 0, 0, 1, 0, 0, 2, 1, 0, 3, 2, 0}, points_of(status->path)));
}

TEST(BORDERAddWings, TwoPointsAreEnough)
{
    OwnedBORDERStatus status({1, 2, 3, 2, 4, 6});
    BORDERAddWings(status);
    EXPECT_TRUE(same_bits({0, 0, 0, 1, 2, 3, 2, 4, 6, 3, 6, 9}, points_of(status->path)));
}

TEST(BORDERAddWings, FewerThanTwoPointsStayAsTheyAre)
{
    OwnedBORDERStatus one({1, 2, 3}), none;
    BORDERAddWings(one);
    BORDERAddWings(none);
    EXPECT_TRUE(same_bits({1, 2, 3}, points_of(one->path)));
    EXPECT_EQ(none->path->count, -1);
}

TEST(BORDERAddWings, IgnoresOtherKindsWidthsAndMissingRecords)
{
    BORDERAddWings(nullptr);
    OwnedBORDERStatus status(kBend);
    status->path->type = DATA_TYPE_INT;
    BORDERAddWings(status);
    EXPECT_EQ(status->path->count, 3);
    status->path->type = DATA_TYPE_DOUBLE;
    status->path->dim = 1;
    BORDERAddWings(status);
    EXPECT_EQ(status->path->count, 3);
    status->path->dim = 3;
    DATAstruct* const path = status->path;
    status->path = nullptr;
    BORDERAddWings(status);
    status->path = path;
    EXPECT_TRUE(same_bits(kBend, points_of(path)));
}

TEST(BORDERAddWings, MemoryThatTheHostWrappedIsLeftAlone)
{
    for (const Wrapping wrapping : {Wrapping::unset, Wrapping::zero_filled}) {
        OwnedBORDERStatus status;
        DATAstruct* const own = status->path;
        Coordinates points = kBend;
        DATAstruct path = wrap(points, wrapping);
        status->path = &path;
        BORDERAddWings(status);
        expect_untouched(path, points, kBend, wrapping);
        status->path = own;
    }
}

TEST(BORDERAddWings, MoreElementsThanAnArrayMayHaveAreRefused)
{
    OwnedBORDERStatus status(kBend);
    for (const int32_t capacity : {715827881, 715827882}) { // times 3 is 2^31 - 5, 2^31 - 2
        DATAstruct path = *status->path;
        DATAstruct* const own = status->path;
        path.count = path.alloc_count = capacity; // never read: two more points are too many
        status->path = &path;
        BORDERAddWings(status);
        EXPECT_EQ(path.count, capacity);
        EXPECT_EQ(path.dvals, own->dvals);
        status->path = own;
    }
}

TEST(BORDERAddWings, AnExhaustedHeapLeavesThePath)
{
    NEEDS_HEAP_FAILURES();
    OwnedBORDERStatus status(kBend);
    const HeapFailure failure(1);
    BORDERAddWings(status);
    EXPECT_TRUE(failure.happened());
    EXPECT_EQ(status->path->count, 3);
    EXPECT_TRUE(same_bits(kBend, points_of(status->path)));
}

TEST(BORDERRemoveWings, RestoresThePolyline)
{
    OwnedBORDERStatus status(kBend);
    BORDERAddWings(status);
    fill_points(*status->output, {9, 9, 9, 1, 2, 3, 4, 5, 6, 7, 8, 9, 9, 9, 9});
    double* const buffer = status->path->dvals;
    BORDERRemoveWings(status);
    EXPECT_TRUE(same_bits(kBend, points_of(status->path)));
    EXPECT_TRUE(same_bits({1, 2, 3, 4, 5, 6, 7, 8, 9}, points_of(status->output)));
    EXPECT_EQ(status->path->dvals, buffer);
    EXPECT_EQ(status->path->alloc_count, 5);
    EXPECT_EQ(status->output->alloc_count, 5);
}

TEST(BORDERRemoveWings, MovesAsManyPointsAsThePathHas)
{
    OwnedBORDERStatus status({0, 0, 0, 1, 1, 1, 2, 2, 2, 3, 3, 3}); // 2 of 4 points stay
    fill_points(*status->output, {0, 0, 0, 1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4, 5, 5, 5});
    BORDERRemoveWings(status);
    EXPECT_TRUE(same_bits({1, 1, 1, 2, 2, 2}, points_of(status->path)));
    EXPECT_TRUE(same_bits({1, 1, 1, 2, 2, 2, 2, 2, 2, 3, 3, 3}, points_of(status->output)));
}

TEST(BORDERRemoveWings, OfAnOutputTooShortMovesWhatExists)
{
    OwnedBORDERStatus status({0, 0, 0, 1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4});
    fill_points(*status->output, {0, 0, 0, 5, 6, 7});
    BORDERRemoveWings(status);
    EXPECT_EQ(status->path->count, 3);
    EXPECT_EQ(status->output->count, 0);
    EXPECT_TRUE(same_bits({5, 6, 7, 5, 6, 7}, status->output->dvals));
}

TEST(BORDERRemoveWings, OfArraysWithoutBuffersTheCountsDrop)
{
    OwnedBORDERStatus status;
    status->path->count = 4;
    status->path->dim = 3;
    status->output->count = 1;
    BORDERRemoveWings(status);
    EXPECT_EQ(status->path->count, 2);
    EXPECT_EQ(status->output->count, -1);
}

TEST(BORDERRemoveWings, CountsBelowZeroDropAndWrap)
{
    OwnedBORDERStatus status;
    const int32_t least = std::numeric_limits<int32_t>::min(), greatest = std::numeric_limits<int32_t>::max();
    const std::pair<int32_t, int32_t> counts[] = {{1, -1}, {-1, -3}, {least + 1, greatest}, {least, greatest - 1}};
    for (const auto& [before, after] : counts) {
        status->path->count = status->output->count = before;
        BORDERRemoveWings(status);
        EXPECT_EQ(status->path->count, after);
        EXPECT_EQ(status->output->count, after);
    }
    status->path->count = status->output->count = -1;
}

TEST(BORDERRemoveWings, IgnoresOtherKindsAndMissingRecords)
{
    BORDERRemoveWings(nullptr);
    OwnedBORDERStatus status(kBend);
    fill_points(*status->output, kBend);
    status->path->type = DATA_TYPE_BYTE;
    BORDERRemoveWings(status);
    EXPECT_EQ(status->path->count, 3);
    EXPECT_EQ(status->output->count, 3);
    status->path->type = DATA_TYPE_DOUBLE;
    DATAstruct* const output = status->output;
    status->output = nullptr;
    BORDERRemoveWings(status);
    EXPECT_EQ(status->path->count, 3);
    status->output = output;
}

TEST(BORDERMakePipe, AppendsThePathInReverseOrder)
{
    OwnedBORDERStatus status(kBend);
    fill_points(*status->output, {0, -1, 0, 1, -1, 0, 3, 0, 0});
    BORDERMakePipe(status);
    EXPECT_EQ(status->output->count, 6);
    EXPECT_EQ(status->output->alloc_count, 6);
    EXPECT_TRUE(same_bits({0, -1, 0, 1, -1, 0, 3, 0, 0, 2, 1, 0, 1, 0, 0, 0, 0, 0}, points_of(status->output)));
}

TEST(BORDERMakePipe, WithoutPointsOnEitherSideOnlyTheCountGrows)
{
    OwnedBORDERStatus bare(kBend);
    bare->output->count = 2;
    bare->output->dim = 2;
    BORDERMakePipe(bare); // an output 2 wide
    EXPECT_EQ(bare->output->count, 5);
    EXPECT_EQ(bare->output->alloc_dim, 2);

    OwnedBORDERStatus whole(kBend);
    whole->output->type = DATA_TYPE_INT;
    whole->output->dim = 3;
    whole->output->count = 1;
    ASSERT_EQ(DATAAllocate(whole->output), 1);
    BORDERMakePipe(whole); // an output of another kind
    EXPECT_EQ(whole->output->count, 4);
    EXPECT_EQ(whole->output->alloc_count, 4);
    EXPECT_NE(whole->output->ivals, nullptr);

    OwnedBORDERStatus pathless;
    pathless->path->count = 2;
    pathless->path->dim = 3;
    fill_points(*pathless->output, {1, 2, 3});
    BORDERMakePipe(pathless); // a path without a buffer
    EXPECT_EQ(pathless->output->count, 3);
    EXPECT_EQ(pathless->output->alloc_count, 3);
    EXPECT_TRUE(same_bits(Coordinates({1, 2, 3}).data(), pathless->output->dvals, 3));
}

TEST(BORDERMakePipe, AnUnsetCountOfTheOutputLeavesRoomForFewerPoints)
{
    OwnedBORDERStatus status(kBend);
    status->output->dim = 3; // count is -1
    BORDERMakePipe(status);
    EXPECT_EQ(status->output->count, 2);
    EXPECT_TRUE(same_bits({1, 0, 0, 0, 0, 0}, points_of(status->output)));
}

TEST(BORDERMakePipe, IgnoresMissingRecords)
{
    BORDERMakePipe(nullptr);
    OwnedBORDERStatus status(kBend);
    DATAstruct *const path = status->path, *const output = status->output;
    status->output = nullptr;
    BORDERMakePipe(status);
    status->output = output;
    status->path = nullptr;
    BORDERMakePipe(status);
    EXPECT_EQ(output->count, -1);
    status->path = path;
}

TEST(BORDERMakePipe, MemoryThatTheHostWrappedIsLeftAlone)
{
    const Coordinates border = {0, -1, 0, 1, -1, 0, 3, 0, 0};
    for (const Wrapping wrapping : {Wrapping::unset, Wrapping::zero_filled}) {
        OwnedBORDERStatus status(kBend);
        DATAstruct* const own = status->output;
        Coordinates points = border;
        DATAstruct output = wrap(points, wrapping);
        status->output = &output;
        BORDERMakePipe(status);
        expect_untouched(output, points, border, wrapping);
        status->output = own;
        EXPECT_TRUE(same_bits(kBend, points_of(status->path)));
    }
}

TEST(BORDERMakePipe, APathThatTheHostWrappedIsRead)
{
    OwnedBORDERStatus status;
    fill_points(*status->output, {7, 8, 9});
    DATAstruct* const own = status->path;
    Coordinates points = kBend;
    DATAstruct path = wrap(points, Wrapping::unset);
    status->path = &path;
    BORDERMakePipe(status);
    EXPECT_TRUE(same_bits({7, 8, 9, 2, 1, 0, 1, 0, 0, 0, 0, 0}, points_of(status->output)));
    status->path = own;
}

TEST(BORDERMakePipe, AnExhaustedHeapLeavesAnOutputThatHadNoPoints)
{
    NEEDS_HEAP_FAILURES();
    for (const int32_t kind : {DATA_TYPE_DOUBLE, DATA_TYPE_INT}) {
        OwnedBORDERStatus status(kBend);
        status->output->type = kind;
        status->output->dim = 3;
        status->output->count = 0;
        const HeapFailure failure(1);
        BORDERMakePipe(status);
        EXPECT_TRUE(failure.happened());
        EXPECT_EQ(status->output->count, 0);
        EXPECT_EQ(status->output->dvals, nullptr);
        EXPECT_EQ(status->output->ivals, nullptr);
    }
}

TEST(BORDERMakePipe, MoreElementsThanAnArrayMayHaveLeaveTheOutput)
{
    OwnedBORDERStatus status(kBend);
    DATAstruct* const own = status->output;
    fill_points(*own, {1, 2, 3});
    DATAstruct output = *own;
    output.count = output.alloc_count = 715827880; // with three more points the coordinates are too many
    status->output = &output;
    BORDERMakePipe(status);
    EXPECT_EQ(output.count, 715827880);
    EXPECT_EQ(output.dvals, own->dvals);
    status->output = own;
}

TEST(BORDERMakePipe, AnExhaustedHeapLeavesTheOutput)
{
    NEEDS_HEAP_FAILURES();
    OwnedBORDERStatus status(kBend);
    fill_points(*status->output, {1, 2, 3});
    const HeapFailure failure(1);
    BORDERMakePipe(status);
    EXPECT_TRUE(failure.happened());
    EXPECT_TRUE(same_bits({1, 2, 3}, points_of(status->output)));
}

TEST(BORDERMakePipe, WingsBorderAndPipeMakeABandAlongAPolyline)
{
    const Coordinates road = {0, 0, 0, 4, 0, 0, 8, 3, 0};
    OwnedBORDERStatus status(road);
    status->distance = 0.5;
    BORDERAddWings(status);
    ASSERT_EQ(BORDER(status), 1);
    BORDERRemoveWings(status);
    BORDERMakePipe(status);
    ASSERT_EQ(status->output->count, 6);
    const Coordinates band = points_of(status->output);
    // The ends of the border stand beside those of the road, at right angles and at the distance.
    EXPECT_EQ(band[0], 0.0);
    EXPECT_EQ(std::fabs(band[1]), 0.5);
    // Each coordinate, of less than 8, is rounded by 4e-16 a few times; a product by 4 and 3 enlarges that.
    EXPECT_NEAR(std::hypot(band[6] - 8, band[7] - 3), 0.5, 2e-15);
    EXPECT_NEAR((band[6] - 8) * 4 + (band[7] - 3) * 3, 0.0, 1e-14);
    EXPECT_TRUE(same_bits({8, 3, 0, 4, 0, 0, 0, 0, 0}, Coordinates(band.begin() + 9, band.end())));
}

// What the page on borders promises about bands.

TEST(Band, APositiveDistanceMovesAwayFromTheClosingEdge)
{
    const Coordinates arch = {0, 0, 0, 2, 3, 0, 6, 3, 0, 8, 0, 0}; // its ends below it: away is up, to the left
    const Band away = band_along(arch, 0.5), towards = band_along(arch, -0.5);
    EXPECT_EQ(away.dead, 0);
    EXPECT_EQ(towards.dead, 0);
    constexpr double kRounding = 1e-14; // of coordinates below 9, each by 9e-16 a few times
    for (int i = 0; i < 4; ++i) {
        const int k = i < 3 ? i : 2;
        EXPECT_NEAR(left_of(away, arch, i, k), 0.5, kRounding);
        EXPECT_NEAR(left_of(towards, arch, i, k), -0.5, kRounding);
    }
    const Coordinates backwards = {8, 0, 0, 6, 3, 0, 2, 3, 0, 0, 0, 0};
    EXPECT_NEAR(left_of(band_along(backwards, 0.5), backwards, 0, 0), -0.5, kRounding); // still up
}

TEST(Band, AWaveThatCrossesTheClosingEdgeKeepsItsDistanceWithSplitsOff)
{
    for (const int turns : {2, 3})
        for (const double distance : {0.25, -0.25}) {
            const Coordinates line = wave(turns);
            const Band band = band_along(line, distance);
            for (int i = 0; i < 41;
                 ++i) // each coordinate is rounded in each round of the sweep: by 4e-15 in all, if so
                EXPECT_NEAR(std::fabs(left_of(band, line, i, i < 40 ? i : 39)), 0.25, 1e-13)
                    << turns << ", point " << i;
        }
}

TEST(Band, AStraightPolylineCollapsesAndItsVerticesAreDead)
{
    const Band band = band_along({0, 0, 0, 1, 0, 0, 2, 0, 0, 3, 0, 0}, 0.5);
    EXPECT_EQ(band.dead, 5); // of 6, the wings included
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(band.points[3 * i], 4.0);
}

TEST(Band, AnEndIsSquareToItsSegmentWhileItsWingAndItsNeighbourLive)
{
    Random random(1);
    int right = 0, dead = 0;
    for (int round = 0; round < 2000; ++round) {
        const int n = 3 + random.below(8);
        Coordinates line;
        for (int i = 0; i < n; ++i)
            line.insert(line.end(), {3.0 * i + random.uniform(-1, 1), random.uniform(-4, 4), 0.0});
        const double distance = random.uniform(-1.5, 1.5);
        const Band band = band_along(line, distance);
        if (band.died[0] + band.died[1] + band.died[2] != 0) {
            ++dead;
            continue;
        }
        ++right;
        const double dx = band.points[0] - line[0], dy = band.points[1] - line[1];
        const double along = dx * (line[3] - line[0]) + dy * (line[4] - line[1]);
        // Coordinates of up to 31 are rounded by 4e-15 in each round; `along` is multiplied by an edge of up to 9.
        EXPECT_NEAR(std::hypot(dx, dy), std::fabs(distance), 3e-14);
        EXPECT_NEAR(along, 0.0, 3e-13);
    }
    EXPECT_GT(right, 1000);
    EXPECT_GT(dead, 10);
}

} // namespace korvale::test
