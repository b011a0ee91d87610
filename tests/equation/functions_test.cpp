#include "equation/system.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "tests/support/bits.h"

namespace {

using korvale::test::same_bits;

// From state = state * 214013 + 2531011 mod 2^32, (state >> 16) & 0x7fff.
constexpr int kFromSeven[] = {61, 17422, 15215, 7040, 15521, 6516, 30152, 11794};
constexpr int kFromOne[] = {41, 18467, 6334, 26500, 19169, 15724, 11478, 29358};

TEST(EqSeed, FixesTheSequenceForTwoSeeds)
{
    EqSeed(7);
    for (int draw : kFromSeven)
        EXPECT_EQ(EqFuncRand(), draw / 32767.0);
    EqSeed(1);
    for (int draw : kFromOne)
        EXPECT_EQ(EqFuncRand(), draw / 32767.0);
}

TEST(gauss_init, SeedsLikeEqSeed)
{
    gauss_init(7);
    for (int draw : kFromSeven)
        EXPECT_EQ(EqFuncRand(), draw / 32767.0);
}

TEST(gauss, ScalesTheSumOfFourDraws)
{
    EqSeed(1);
    EXPECT_TRUE(same_bits((41 / 32767.0 + 18467 / 32767.0 + 6334 / 32767.0 + 26500 / 32767.0) * 1.7320508 - 3.4641016,
                          gauss()));
    EXPECT_TRUE(same_bits(
        (19169 / 32767.0 + 15724 / 32767.0 + 11478 / 32767.0 + 29358 / 32767.0) * 1.7320508 - 3.4641016, gauss()));
}

TEST(gauss, IsAboutNormal)
{
    EqSeed(7);
    constexpr int n = 100000;
    double sum = 0, squares = 0;
    for (int i = 0; i < n; ++i) {
        const double x = gauss();
        ASSERT_LE(std::fabs(x), 3.4641016);
        sum += x;
        squares += x * x;
    }
    EXPECT_LT(std::fabs(sum / n), 5 / std::sqrt(n)); // five standard errors
    EXPECT_NEAR(squares / n, 1.0, 5 * std::sqrt(2.0 / n));
}

TEST(EqFuncRand, StaysInTheUnitInterval)
{
    EqSeed(7);
    double least = 1, greatest = 0;
    for (int i = 0; i < 1000000; ++i) {
        const double x = EqFuncRand();
        least = std::fmin(least, x);
        greatest = std::fmax(greatest, x);
    }
    EXPECT_EQ(least, 0.0);
    EXPECT_EQ(greatest, 1.0);
}

TEST(EqFuncDivide, GivesZeroForAZeroDivisorOfEitherSign)
{
    EXPECT_TRUE(same_bits(0.0, EqFuncDivide(1.0, 0.0)));
    EXPECT_TRUE(same_bits(0.0, EqFuncDivide(1.0, -0.0)));
    EXPECT_TRUE(same_bits(0.0, EqFuncDivide(-1.0, 0.0)));
    EXPECT_TRUE(same_bits(0.0, EqFuncDivide(std::numeric_limits<double>::quiet_NaN(), 0.0)));
    EXPECT_TRUE(same_bits(-0.5, EqFuncDivide(1.0, -2.0)));
    EXPECT_TRUE(std::isinf(EqFuncDivide(1.0, std::numeric_limits<double>::denorm_min())));
    EXPECT_TRUE(std::isnan(EqFuncDivide(1.0, std::numeric_limits<double>::quiet_NaN())));
}

TEST(EqFuncNegate, FlipsTheSignBit)
{
    EXPECT_TRUE(same_bits(-0.0, EqFuncNegate(0.0)));
    EXPECT_TRUE(same_bits(0.0, EqFuncNegate(-0.0)));
    EXPECT_TRUE(same_bits(2.5, EqFuncNegate(-2.5)));
    EXPECT_TRUE(std::signbit(EqFuncNegate(std::copysign(std::numeric_limits<double>::quiet_NaN(), 1.0))));
}

TEST(EqFunc, AddsSubtractsAndMultiplies)
{
    EXPECT_TRUE(same_bits(0.30000000000000004, EqFuncAdd(0.1, 0.2)));
    EXPECT_TRUE(same_bits(-0.1, EqFuncSubtract(0.1, 0.2)));
    EXPECT_TRUE(same_bits(0.020000000000000004, EqFuncMultiply(0.1, 0.2)));
    EXPECT_TRUE(same_bits(-0.0, EqFuncMultiply(-0.0, 2.0)));
}

} // namespace
