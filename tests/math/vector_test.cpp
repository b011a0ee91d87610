#include "math/vector.h"

#include <gtest/gtest.h>

TEST(normalize, LeavesATooShortVectorAlone)
{
    double v[3] = {1e-07, 0, 0};
    EXPECT_EQ(normalize(v), -1);
    EXPECT_EQ(v[0], 1e-07);
}

TEST(normalize, TakesTheThresholdItself)
{
    double v[3] = {1e-06, 0, 0};
    EXPECT_EQ(normalize(v), 1);
    EXPECT_EQ(v[0], 1.0);
}
