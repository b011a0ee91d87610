// Lines in the plane: found, normalised, intersected.
#include "math/line.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "tests/support/bits.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(find_line, TurnsTheDirectionAQuarterTurnCounterClockwise)
{
    double p0[] = {1, 2, 50}, p1[] = {5, 5, -50}, line[3];
    EXPECT_EQ(find_line(p0, p1, line), 1);
    EXPECT_TRUE(same_bits({-3.0 / 5.0, 4.0 / 5.0, -(-3.0 / 5.0) * 1.0 - (4.0 / 5.0) * 2.0}, line));
}

TEST(find_line, GivesTheVerticalLineForEqualPoints)
{
    double p0[] = {3, 4, 0}, p1[] = {3, 4, 9}, line[3] = {7, 7, 7};
    EXPECT_EQ(find_line(p0, p1, line), -1);
    EXPECT_TRUE(same_bits({1.0, 0.0, -3.0}, line));
}

TEST(find_line, TakesPointsAtTheThreshold)
{
    double p0[] = {0, 0, 0}, p1[] = {1e-06, 0, 0}, line[3];
    EXPECT_EQ(find_line(p0, p1, line), 1);
    EXPECT_TRUE(same_bits({0.0, 1.0, -0.0}, line));
    p1[0] = std::nextafter(1e-06, 0.0);
    EXPECT_EQ(find_line(p0, p1, line), -1);
    EXPECT_TRUE(same_bits({1.0, 0.0, -0.0}, line));
}

TEST(find_line, LetsNaNPass)
{
    double p0[] = {kNaN, 0, 0}, p1[] = {1, 0, 0}, line[3];
    EXPECT_EQ(find_line(p0, p1, line), 1);
    EXPECT_TRUE(same_bits({kNaN, kNaN, kNaN}, line));
}

TEST(line_normalize, DividesAllThreeByTheLengthOfTheFirstTwo)
{
    double line[] = {3, -4, 10};
    line_normalize(line);
    EXPECT_TRUE(same_bits({3.0 / 5.0, -4.0 / 5.0, 2.0}, line));
}

TEST(line_normalize, DoesNotGuardAZeroNormal)
{
    double line[] = {0, 0, 10};
    line_normalize(line);
    EXPECT_TRUE(same_bits({kNaN, kNaN, std::numeric_limits<double>::infinity()}, line));
}

TEST(find_intersect, FindsTheCommonPoint)
{
    // x = 2 and y = 3; the sine from the first to the second is 1.
    double line1[] = {1, 0, -2}, line2[] = {0, 1, -3}, out[] = {9, 9, 9};
    EXPECT_EQ(find_intersect(line1, line2, out), 1.0);
    EXPECT_TRUE(same_bits({2, 3, 0}, out));
}

TEST(find_intersect, ReturnsMinusOneForAQuarterTurnClockwiseAsWell)
{
    double line1[] = {0, 1, -3}, line2[] = {1, 0, -2}, out[] = {9, 9, 9};
    EXPECT_EQ(find_intersect(line1, line2, out), -1.0);
    EXPECT_TRUE(same_bits({2, 3, 0}, out));
}

TEST(find_intersect, NormalisesBothLinesInPlace)
{
    double line1[] = {3, 4, 5}, line2[] = {0, 2, 8}, out[3];
    EXPECT_EQ(find_intersect(line1, line2, out), 3.0 / 5.0);
    EXPECT_TRUE(same_bits({3.0 / 5.0, 4.0 / 5.0, 1}, line1));
    EXPECT_TRUE(same_bits({0, 1, 4}, line2));
}

TEST(find_intersect, LeavesTheOutputForParallelLines)
{
    double line1[] = {3, 4, 5}, line2[] = {6, 8, -5}, out[] = {9, 9, 9};
    EXPECT_EQ(find_intersect(line1, line2, out), -1.0);
    EXPECT_TRUE(same_bits({9, 9, 9}, out));
    EXPECT_TRUE(same_bits({3.0 / 5.0, 4.0 / 5.0, 1}, line1));
    EXPECT_TRUE(same_bits({6.0 / 10.0, 8.0 / 10.0, -0.5}, line2));
}

TEST(find_intersect, TakesASineAtTheThreshold)
{
    // (1, 0) and (sqrt(1 - s^2), s): normalising leaves s as it is where 1 + s^2 rounds as chosen here.
    const double at = 0x1.0c6f7a0b5f6c6p-20, below = 0x1.0c6f7a0b5f6c5p-20;
    for (const double sign : {1.0, -1.0}) {
        double line1[] = {1, 0, 0}, line2[] = {1, sign * at, 0}, out[] = {9, 9, 9};
        EXPECT_EQ(find_intersect(line1, line2, out), sign * 1e-06);
        EXPECT_EQ(out[2], 0.0);
        double line3[] = {1, 0, 0}, line4[] = {1, sign * below, 0}, untouched[] = {9, 9, 9};
        EXPECT_EQ(find_intersect(line3, line4, untouched), -1.0);
        EXPECT_TRUE(same_bits({9, 9, 9}, untouched));
    }
}

TEST(find_intersect, LetsASineThatIsNotANumberPass)
{
    double line1[] = {0, 0, 1}, line2[] = {0, 1, 4}, out[] = {9, 9, 9};
    EXPECT_TRUE(std::isnan(find_intersect(line1, line2, out)));
    EXPECT_TRUE(same_bits({kNaN, kNaN, 0.0}, out));
}

TEST(find_intersect, LiesOnBothLines)
{
    Random random(5);
    for (int i = 0; i < korvale::test::rounds(1000); ++i) {
        double p[4][3] = {};
        for (auto& point : p)
            for (int k = 0; k < 2; ++k)
                point[k] = random.uniform(-10, 10);
        double line1[3], line2[3], out[3];
        ASSERT_EQ(find_line(p[0], p[1], line1), 1);
        ASSERT_EQ(find_line(p[2], p[3], line2), 1);
        const double sine = find_intersect(line1, line2, out);
        if (std::fabs(sine) < 0.01)
            continue;
        // Coordinates of up to 10 / 0.01, and a few products of them, are rounded by 1e-13 each.
        ASSERT_NEAR(line1[0] * out[0] + line1[1] * out[1] + line1[2], 0.0, 1e-12);
        ASSERT_NEAR(line2[0] * out[0] + line2[1] * out[1] + line2[2], 0.0, 1e-12);
    }
}

} // namespace
} // namespace korvale::test
