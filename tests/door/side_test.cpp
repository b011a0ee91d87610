// Where points lie of each other, against whole numbers.
#include "door/internal/side.h"

#include <cmath>

#include <gtest/gtest.h>

#include "tests/support/random.h"

namespace korvale::test {
using namespace door;

namespace {

__extension__ using Whole = __int128;

TEST(Side, IsThatOfWholeNumbersOf50Bits)
{
    Random random(1);
    int told[3] = {};
    for (int round = 0; round < rounds(20000); ++round) {
        const auto coordinate = [&] { return static_cast<int64_t>(random.bits() >> 14) - (int64_t{1} << 49); };
        int64_t a[2], b[2], c[2];
        for (int k = 0; k < 2; ++k) {
            a[k] = coordinate();
            b[k] = coordinate();
        }
        const int64_t share = random.between(1, 9);
        for (int k = 0; k < 2; ++k) { // on the line, or beside it by a unit or two
            b[k] = a[k] + (b[k] - a[k]) / 10 * 10;
            c[k] = a[k] + (b[k] - a[k]) / 10 * share + (random.one_in(2) ? random.between(-2, 2) : 0);
        }
        const Whole left = Whole{b[0] - a[0]} * (c[1] - a[1]), right = Whole{b[1] - a[1]} * (c[0] - a[0]);
        const int expected = (left > right) - (left < right);
        const auto place = [](const int64_t* p) { // with the size of coordinates that are at most 1
            return Place{std::ldexp(static_cast<double>(p[0]), -50), std::ldexp(static_cast<double>(p[1]), -50)};
        };
        const Place p = place(a), q = place(b), r = place(c);
        ASSERT_EQ(side(p, q, r), expected);
        ASSERT_EQ(side(q, r, p), expected);
        ASSERT_EQ(side(q, p, r), -expected);
        ++told[expected + 1];
    }
    for (const int count : told)
        EXPECT_GT(count, 1000);
}

TEST(Side, ThreePlacesOfWhichTwoAreOneLieOnALine)
{
    const Place p = {0.1, 0.7}, q = {1.0 / 3, -1e-200};
    EXPECT_EQ(side(p, p, q), 0);
    EXPECT_EQ(side(p, q, q), 0);
    EXPECT_EQ(side(p, q, p), 0);
    EXPECT_EQ(side(p, p, p), 0);
}

} // namespace
} // namespace korvale::test
