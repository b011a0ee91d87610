#include "border/border.h"

#include <gtest/gtest.h>

#include "tests/border/records.h"
#include "tests/support/arrays.h"
#include "tests/support/bits.h"

using namespace korvale::test;

namespace {

Coordinates square(double low, double high, double z = 0.0)
{
    return {low, low, z, high, low, z, high, high, z, low, high, z};
}

void expect_near(const Coordinates& expected, const Coordinates& actual)
{
    ASSERT_EQ(expected.size(), actual.size());
    for (size_t i = 0; i < expected.size(); ++i)
        EXPECT_NEAR(expected[i], actual[i], 1e-13) << "coordinate " << i;
}

} // namespace

TEST(BORDER, AnOutlineIsLiftedByTheHeight)
{
    OwnedBORDERStatus status(square(0, 1));
    status->height = 2.0;
    ASSERT_EQ(BORDER(status), 1);
    expect_near(square(-1, 2, 2), points_of(status->output));
}

TEST(BORDER, AListGrowsTheOuterOutlineAndShrinksTheHoles)
{
    OwnedBORDERStatus status;
    DATAstruct* const single = status->path;
    Owned<DATAstruct> list = parent({new_doubles(3, square(-5, 5)), new_doubles(3, square(-2, 2))});
    DATAstruct* const outputs = status->output;
    status->path = list;
    ASSERT_EQ(BORDER(status), 1);
    EXPECT_EQ(status->path, list.get());
    EXPECT_EQ(status->output, outputs);
    EXPECT_EQ(status->distance, 1.0);
    ASSERT_EQ(outputs->type, DATA_TYPE_DATA);
    ASSERT_EQ(outputs->count, 2);
    expect_near(square(-6, 6), points_of(static_cast<DATAstruct*>(outputs->pvals[0])));
    expect_near(square(-1, 1), points_of(static_cast<DATAstruct*>(outputs->pvals[1])));
    status->path = single;
}
