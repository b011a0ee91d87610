#include "border/band.h"

#include <cmath>

#include <gtest/gtest.h>

#include "border/border.h"
#include "tests/border/records.h"
#include "tests/support/arrays.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"

using namespace korvale::test;

namespace {

const Coordinates kBend = {0, 0, 0, 1, 0, 0, 2, 1, 0};

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
    EXPECT_NEAR(band[0], 0.0, 1e-12);
    EXPECT_NEAR(std::fabs(band[1]), 0.5, 1e-12);
    EXPECT_NEAR(std::hypot(band[6] - 8, band[7] - 3), 0.5, 1e-12);
    EXPECT_NEAR((band[6] - 8) * 4 + (band[7] - 3) * 3, 0.0, 1e-12);
    EXPECT_TRUE(same_bits({8, 3, 0, 4, 0, 0, 0, 0, 0}, Coordinates(band.begin() + 9, band.end())));
}
