// TwoByTwoDeterminant and SolveTwoByTwo.
#include "math/solve.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "tests/support/bits.h"

namespace korvale::test {
namespace {

TEST(TwoByTwoDeterminant, IsTheDifferenceOfTheDiagonals)
{
    double m[2][2] = {{2, 3}, {5, 7}};
    EXPECT_EQ(TwoByTwoDeterminant(m), -1.0);
}

TEST(SolveTwoByTwo, SolvesADiagonalSystem)
{
    double m[2][3] = {{2, 0, 4}, {0, 1, 3}}, x = 0, y = 0;
    EXPECT_EQ(SolveTwoByTwo(m, &x, &y), 1);
    EXPECT_EQ(x, 2.0);
    EXPECT_EQ(y, 3.0);
}

TEST(SolveTwoByTwo, SolvesAFullSystem)
{
    // 3 x + 5 y = 1, 7 x + 2 y = 12: x = 2, y = -1.
    double m[2][3] = {{3, 5, 1}, {7, 2, 12}}, x = 0, y = 0;
    EXPECT_EQ(SolveTwoByTwo(m, &x, &y), 1);
    EXPECT_EQ(x, 2.0);
    EXPECT_EQ(y, -1.0);
}

TEST(SolveTwoByTwo, WritesNothingForASingularSystem)
{
    double m[2][3] = {{1, 0, 5}, {0, 1e-07, 1}}, x = 11, y = 12;
    EXPECT_EQ(SolveTwoByTwo(m, &x, &y), 0);
    EXPECT_EQ(x, 11.0);
    EXPECT_EQ(y, 12.0);
}

TEST(SolveTwoByTwo, TakesTheThresholdOfEitherSign)
{
    for (const double d : {1e-06, -1e-06}) {
        double m[2][3] = {{d, 0, 3 * d}, {0, 1, 4}}, x = 0, y = 0;
        EXPECT_EQ(SolveTwoByTwo(m, &x, &y), 1);
        EXPECT_TRUE(same_bits(3 * d / d, x));
        EXPECT_EQ(y, 4.0);
    }
}

TEST(SolveTwoByTwo, RefusesWhatLiesBetweenTheThresholds)
{
    const double below = std::nextafter(1e-06, 0.0);
    for (const double d : {below, -below, 0.0, -0.0}) {
        double m[2][3] = {{d, 0, 1}, {0, 1, 4}}, x = 11, y = 12;
        EXPECT_EQ(SolveTwoByTwo(m, &x, &y), 0) << d;
        EXPECT_EQ(x, 11.0);
        EXPECT_EQ(y, 12.0);
    }
}

TEST(SolveTwoByTwo, LetsADeterminantThatIsNotANumberPass)
{
    double m[2][3] = {{std::numeric_limits<double>::quiet_NaN(), 0, 1}, {0, 1, 4}}, x = 11, y = 12;
    EXPECT_EQ(SolveTwoByTwo(m, &x, &y), 1);
    EXPECT_TRUE(std::isnan(x));
    EXPECT_TRUE(std::isnan(y));
}

} // namespace
} // namespace korvale::test
