// dot_product, cross_product, norm, normalize and angle.
#include "math/vector.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "tests/support/bits.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(dot_product, SumsThreeProducts)
{
    double a[] = {1, 2, 3}, b[] = {4, -5, 6};
    EXPECT_EQ(dot_product(a, b), 12.0);
}

TEST(dot_product, SumsFromTheLeft)
{
    // (1e16 + 1) - 1e16 is 0 and 1e16 + (1 - 1e16) would be 0 as well, but 1 + (1e16 - 1e16) is 1.
    double a[] = {1, 1e16, -1e16}, b[] = {1, 1, 1};
    EXPECT_EQ(dot_product(a, b), 0.0);
    double c[] = {1e16, -1e16, 1};
    EXPECT_EQ(dot_product(c, b), 1.0);
}

TEST(cross_product, IsPerpendicularToBoth)
{
    double a[] = {1, 2, 3}, b[] = {4, 5, 6}, out[3];
    cross_product(a, b, out);
    EXPECT_TRUE(same_bits({-3, 6, -3}, out));
}

TEST(cross_product, FollowsTheRightHand)
{
    double x[] = {1, 0, 0}, y[] = {0, 1, 0}, out[3];
    cross_product(x, y, out);
    EXPECT_TRUE(same_bits({0, 0, 1}, out));
}

TEST(cross_product, MakesPositiveZerosOfEqualVectors)
{
    double a[] = {1, -2, 3}, out[3];
    cross_product(a, a, out);
    EXPECT_TRUE(same_bits({0.0, 0.0, 0.0}, out));
}

TEST(norm, IsTheLength)
{
    double v[] = {2, -3, 6};
    EXPECT_EQ(norm(v), 7.0);
}

TEST(norm, SumsTheSquaresFromTheLeft)
{
    // 1 is lost when it is added to the square of 1e8 and kept when the small squares come first.
    double lost[] = {1e8, 1, 1}, kept[] = {1, 1, 1e8};
    EXPECT_TRUE(same_bits(1e8, norm(lost)));
    EXPECT_TRUE(same_bits(std::sqrt(10000000000000002.0), norm(kept)));
}

TEST(norm, OverflowsToInfinity)
{
    double v[] = {1e200, 0, 0};
    EXPECT_EQ(norm(v), kInfinity);
}

TEST(normalize, DividesEachComponent)
{
    double v[] = {2, -3, 6};
    EXPECT_EQ(normalize(v), 1);
    EXPECT_TRUE(same_bits({2.0 / 7.0, -3.0 / 7.0, 6.0 / 7.0}, v));
}

TEST(normalize, DividesRatherThanMultipliesByTheReciprocal)
{
    double v[] = {3, 0, 4};
    ASSERT_NE(3.0 * (1.0 / 5.0), 3.0 / 5.0);
    EXPECT_EQ(normalize(v), 1);
    EXPECT_TRUE(same_bits({3.0 / 5.0, 0.0, 4.0 / 5.0}, v));
}

TEST(normalize, LeavesATooShortVectorAlone)
{
    double v[] = {1e-07, 0, 0};
    EXPECT_EQ(normalize(v), -1);
    EXPECT_TRUE(same_bits({1e-07, 0, 0}, v));
    const double below = std::nextafter(1e-06, 0.0);
    double w[] = {0, -below, 0};
    EXPECT_EQ(normalize(w), -1);
    EXPECT_TRUE(same_bits({0, -below, 0}, w));
}

TEST(normalize, TakesTheThresholdItself)
{
    double v[] = {1e-06, 0, 0};
    EXPECT_EQ(normalize(v), 1);
    EXPECT_TRUE(same_bits({1, 0, 0}, v));
}

TEST(normalize, LeavesTheZeroVectorAlone)
{
    double v[] = {0.0, -0.0, 0.0};
    EXPECT_EQ(normalize(v), -1);
    EXPECT_TRUE(same_bits({0.0, -0.0, 0.0}, v));
}

TEST(normalize, LetsALengthThatIsNotANumberPass)
{
    double v[] = {kNaN, 1, 2};
    EXPECT_EQ(normalize(v), 1);
    EXPECT_TRUE(same_bits({kNaN, kNaN, kNaN}, v));
}

TEST(normalize, DividesByAnInfiniteLength)
{
    double v[] = {kInfinity, 1, -1};
    EXPECT_EQ(normalize(v), 1);
    EXPECT_TRUE(same_bits({kNaN, 0.0, -0.0}, v));
}

TEST(normalize, GivesUnitVectors)
{
    Random random(1);
    for (int i = 0; i < korvale::test::rounds(1000); ++i) {
        double v[] = {random.uniform(-9, 9), random.uniform(-9, 9), random.uniform(-9, 9)};
        ASSERT_EQ(normalize(v), 1);
        ASSERT_NEAR(norm(v), 1.0, 4e-16); // three roundings of at most half a unit each
    }
}

TEST(angle, IsAQuarterTurnBetweenAxes)
{
    double a[] = {1, 0, 0}, b[] = {0, 2, 0};
    EXPECT_TRUE(same_bits(std::acos(0.0), angle(a, b)));
}

TEST(angle, IsAHalfTurnBetweenOpposites)
{
    double a[] = {3, 0, 0}, b[] = {-2, 0, 0};
    EXPECT_TRUE(same_bits(std::acos(-1.0), angle(a, b)));
}

TEST(angle, IsNotANumberForAZeroVector)
{
    double a[] = {0, 0, 0}, b[] = {0, 2, 0};
    EXPECT_TRUE(std::isnan(angle(a, b)));
}

TEST(angle, DoesNotClampTheCosine)
{
    // The square of the rounded square root of 3 is below 3, so the cosine comes out above 1.
    double a[] = {1, 1, 1};
    ASSERT_GT(dot_product(a, a) / (norm(a) * norm(a)), 1.0);
    EXPECT_TRUE(std::isnan(angle(a, a)));
}

} // namespace
} // namespace korvale::test
