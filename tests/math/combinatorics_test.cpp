// factorial, binomial and power, also where they wrap.
#include "math/combinatorics.h"

#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

#include "tests/support/bits.h"

namespace korvale::test {
namespace {

TEST(factorial, IsOneForZeroAndBelow)
{
    EXPECT_EQ(factorial(0), 1);
    EXPECT_EQ(factorial(-3), 1);
    EXPECT_EQ(factorial(std::numeric_limits<int>::min()), 1);
}

TEST(factorial, IsExactUpToTwelve)
{
    const int expected[] = {1, 1, 2, 6, 24, 120, 720, 5040, 40320, 362880, 3628800, 39916800, 479001600};
    for (int n = 0; n <= 12; ++n)
        EXPECT_EQ(factorial(n), expected[n]) << n;
}

TEST(factorial, WrapsBeyond)
{
    EXPECT_EQ(factorial(13), 1932053504);
    EXPECT_EQ(factorial(17), -288522240);
    EXPECT_EQ(factorial(33), std::numeric_limits<int>::min());
    EXPECT_EQ(factorial(34), 0);
    EXPECT_EQ(factorial(std::numeric_limits<int>::max()), 0);
}

TEST(binomial, CountsSubsets)
{
    EXPECT_EQ(binomial(5, 2), 10);
    EXPECT_EQ(binomial(12, 6), 924);
    EXPECT_EQ(binomial(4, 1), 4);
    EXPECT_EQ(binomial(4, 3), 4);
}

TEST(binomial, IsOneOutsideItsRange)
{
    EXPECT_EQ(binomial(5, 5), 1);
    EXPECT_EQ(binomial(3, 7), 1);
    EXPECT_EQ(binomial(0, 0), 1);
    EXPECT_EQ(binomial(-2, 1), 1);
    EXPECT_EQ(binomial(5, 0), 1);
    EXPECT_EQ(binomial(5, -1), 1);
}

TEST(binomial, DividesWhatHasWrapped)
{
    EXPECT_EQ(binomial(13, 6), 532); // 1932053504 / (720 * 5040), truncated
    EXPECT_EQ(binomial(20, 10), 11); // both have wrapped to negative numbers
    EXPECT_EQ(binomial(30, 15), -4); // truncated towards zero
}

TEST(binomial, IsZeroWhereTheDivisorWrapsToZero)
{
    EXPECT_EQ(binomial(34, 2), 0);
    EXPECT_EQ(binomial(36, 18), 0);
}

TEST(power, MultipliesInOrder)
{
    EXPECT_EQ(power(2.0, 10), 1024.0);
    EXPECT_EQ(power(3.0, 1), 3.0);
    EXPECT_EQ(power(3.0, 2), 9.0);
    EXPECT_EQ(power(-2.0, 3), -8.0);
}

TEST(power, IsOneForExponentsBelowOne)
{
    EXPECT_EQ(power(2.0, 0), 1.0);
    EXPECT_EQ(power(2.0, -1), 1.0);
    EXPECT_EQ(power(std::numeric_limits<double>::quiet_NaN(), 0), 1.0);
    EXPECT_EQ(power(2.0, std::numeric_limits<int>::min()), 1.0);
}

TEST(power, EndsSoonWhereTheSizeNoLongerChanges)
{
    constexpr int most = std::numeric_limits<int>::max();
    EXPECT_TRUE(same_bits(1.0, power(1.0, most)));
    EXPECT_TRUE(same_bits(-1.0, power(-1.0, most)));
    EXPECT_TRUE(same_bits(1.0, power(-1.0, most - 1)));
    EXPECT_TRUE(same_bits(-0.0, power(-0.0, most)));
    EXPECT_TRUE(same_bits(0.0, power(-0.5, most - 1)));
    EXPECT_TRUE(same_bits(-std::numeric_limits<double>::infinity(), power(-2.0, most)));
}

} // namespace
} // namespace korvale::test
