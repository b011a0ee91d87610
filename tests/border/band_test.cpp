#include "border/band.h"

#include <gtest/gtest.h>

#include "tests/border/records.h"
#include "tests/support/arrays.h"
#include "tests/support/bits.h"

using namespace korvale::test;

TEST(BORDERAddWings, ExtendsBothEndsByTheLengthOfTheEndSegments)
{
    OwnedBORDERStatus status({0, 0, 0, 1, 0, 0, 2, 1, 0});
    BORDERAddWings(status);
    EXPECT_EQ(status->path->count, 5);
    EXPECT_TRUE(same_bits({-1, 0, 0, 0, 0, 0, 1, 0, 0, 2, 1, 0, 3, 2, 0}, points_of(status->path)));
}

TEST(BORDERRemoveWings, RestoresThePolyline)
{
    OwnedBORDERStatus status({0, 0, 0, 1, 0, 0, 2, 1, 0});
    BORDERAddWings(status);
    fill_points(*status->output, {9, 9, 9, 1, 2, 3, 4, 5, 6, 7, 8, 9, 9, 9, 9});
    BORDERRemoveWings(status);
    EXPECT_TRUE(same_bits({0, 0, 0, 1, 0, 0, 2, 1, 0}, points_of(status->path)));
    EXPECT_TRUE(same_bits({1, 2, 3, 4, 5, 6, 7, 8, 9}, points_of(status->output)));
}

TEST(BORDERMakePipe, AppendsThePathInReverseOrder)
{
    OwnedBORDERStatus status({0, 0, 0, 1, 0, 0, 2, 1, 0});
    fill_points(*status->output, {0, -1, 0, 1, -1, 0, 3, 0, 0});
    BORDERMakePipe(status);
    EXPECT_TRUE(same_bits({0, -1, 0, 1, -1, 0, 3, 0, 0, 2, 1, 0, 1, 0, 0, 0, 0, 0}, points_of(status->output)));
}
