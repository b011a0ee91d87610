// orientation_xfm and orientation_xfm_and_reverse.
#include "math/orientation.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "math/vector.h"
#include "tests/support/bits.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(orientation_xfm, TakesTheOriginToZero)
{
    double origin[] = {1, 2, 3}, z[] = {0, 0, 2}, ref[] = {0, 5, 0}, out[16];
    EXPECT_EQ(orientation_xfm(origin, z, ref, out), 1);
    // x = y-axis x z-axis = x-axis, y = z x x = y-axis.
    EXPECT_TRUE(same_bits({1, 0, 0, -1, 0, 1, 0, -2, 0, 0, 1, -3, 0, 0, 0, 1}, out));
    double p[3];
    xfm_pnt(out, origin, p);
    EXPECT_TRUE(same_bits({0, 0, 0}, p));
}

TEST(orientation_xfm, BuildsItsAxesFromTheReferenceAndZ)
{
    double origin[] = {1, 2, 3}, z[] = {3, 0, 4}, ref[] = {0, 1, 0}, out[16];
    EXPECT_EQ(orientation_xfm(origin, z, ref, out), 1);
    const double a = 3.0 / 5.0, b = 4.0 / 5.0;
    // x = ref x z = (b, 0, -a), already of length 1; y = z x x = (0, 1, 0).
    const double n = std::sqrt(b * b + 0.0 * 0.0 + -a * -a);
    const double x[] = {b / n, 0.0 / n, -a / n};
    const double y[] = {0.0 * x[2] - b * x[1], b * x[0] - a * x[2], a * x[1] - 0.0 * x[0]};
    EXPECT_TRUE(same_bits({x[0], x[1], x[2], -(x[0] * 1 + x[1] * 2 + x[2] * 3), //
                           y[0], y[1], y[2], -(y[0] * 1 + y[1] * 2 + y[2] * 3), //
                           a, 0.0, b, -(a * 1 + 0.0 * 2 + b * 3),               //
                           0, 0, 0, 1},
                          out));
}

TEST(orientation_xfm, WritesNothingWhenItFails)
{
    double origin[] = {1, 2, 3}, ref[] = {0, 1, 0};
    const double below = std::nextafter(1e-06, 0.0);
    double out[16] = {9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9};
    const std::vector<double> untouched(16, 9.0);
    double short_z[] = {0, 0, below};
    EXPECT_EQ(orientation_xfm(origin, short_z, ref, out), -1);
    EXPECT_TRUE(same_bits(untouched, out));
    double z[] = {0, 2, 0};
    EXPECT_EQ(orientation_xfm(origin, z, ref, out), -1) << "the reference is parallel to z";
    EXPECT_TRUE(same_bits(untouched, out));
    double short_ref[] = {below, 0, 0};
    EXPECT_EQ(orientation_xfm(origin, z, short_ref, out), -1);
    EXPECT_TRUE(same_bits(untouched, out));
}

TEST(orientation_xfm, TakesLengthsAtTheThreshold)
{
    double origin[] = {0, 0, 0}, z[] = {0, 0, 1e-06}, ref[] = {0, 1e-06, 0}, out[16];
    EXPECT_EQ(orientation_xfm(origin, z, ref, out), 1);
    EXPECT_TRUE(same_bits({1, 0, 0, -0.0, 0, 1, 0, -0.0, 0, 0, 1, -0.0, 0, 0, 0, 1}, out));
}

TEST(orientation_xfm, LeavesItsInputAlone)
{
    double origin[] = {1, 2, 3}, z[] = {0, 0, 2}, ref[] = {0, 5, 0}, out[16];
    EXPECT_EQ(orientation_xfm(origin, z, ref, out), 1);
    EXPECT_TRUE(same_bits({0, 0, 2}, z));
    EXPECT_TRUE(same_bits({0, 5, 0}, ref));
}

TEST(orientation_xfm_and_reverse, WritesAFrameAndItsInverse)
{
    double origin[] = {1, 2, 3}, x[] = {0, 2, 0}, z[] = {0, 0, 3};
    Xfm fwd, rev;
    EXPECT_EQ(orientation_xfm_and_reverse(origin, x, z, fwd, rev), 1);
    // y = z x x = -x-axis.
    EXPECT_TRUE(same_bits({0, 1, 0, -2, -1, 0, 0, 1, 0, 0, 1, -3, 0, 0, 0, 1}, &fwd[0][0]));
    EXPECT_TRUE(same_bits({0, -1, 0, 1, 1, 0, 0, 2, 0, 0, 1, 3, 0, 0, 0, 1}, &rev[0][0]));
    EXPECT_TRUE(same_bits({0, 2, 0}, x));
    EXPECT_TRUE(same_bits({0, 0, 3}, z));
}

TEST(orientation_xfm_and_reverse, MakesXPerpendicularButNotUnit)
{
    double origin[] = {0, 0, 0}, x[] = {3, 0, 4}, z[] = {0, 0, 1};
    Xfm fwd, rev;
    EXPECT_EQ(orientation_xfm_and_reverse(origin, x, z, fwd, rev), 1);
    EXPECT_TRUE(same_bits({3.0 / 5.0, 0, 0}, fwd[0]) && fwd[0][0] < 1.0);
    EXPECT_EQ(fwd[1][1], 3.0 / 5.0);
}

TEST(orientation_xfm_and_reverse, GivesAZeroAxisForParallelDirections)
{
    double origin[] = {1, 2, 3}, x[] = {0, 0, 5}, z[] = {0, 0, 1};
    Xfm fwd, rev;
    EXPECT_EQ(orientation_xfm_and_reverse(origin, x, z, fwd, rev), 1);
    EXPECT_TRUE(same_bits({0, 0, 0, -0.0}, fwd[0]));
    EXPECT_EQ(fwd[1][0], 0.0);
    EXPECT_EQ(fwd[1][1], 0.0);
    EXPECT_EQ(fwd[1][2], 0.0);
}

TEST(orientation_xfm_and_reverse, KeepsXWhereTheCosineIsAtTheThreshold)
{
    const double at = 0x1.0c6f7a0b5f6c6p-20; // normalised with 1 beside it: exactly 1e-06
    const double above = at * (1 + 0x1p-50);
    double origin[] = {0, 0, 0}, z[] = {0, 0, 1};
    for (const double sign : {1.0, -1.0}) {
        double x[] = {1, 0, sign * at}, slanted[] = {1, 0, sign * above};
        Xfm fwd;
        EXPECT_EQ(orientation_xfm_and_reverse(origin, x, z, fwd, nullptr), 0);
        EXPECT_EQ(fwd[0][2], sign * 1e-06);
        EXPECT_EQ(orientation_xfm_and_reverse(origin, slanted, z, fwd, nullptr), 0);
        EXPECT_EQ(fwd[0][2], 0.0);
    }
}

TEST(orientation_xfm_and_reverse, ReturnsZeroWithoutAReverse)
{
    double origin[] = {1, 2, 3}, x[] = {0, 2, 0}, z[] = {0, 0, 3};
    Xfm fwd;
    EXPECT_EQ(orientation_xfm_and_reverse(origin, x, z, fwd, nullptr), 0);
    EXPECT_TRUE(same_bits({0, 1, 0, -2, -1, 0, 0, 1, 0, 0, 1, -3, 0, 0, 0, 1}, &fwd[0][0]));
}

TEST(orientation_xfm_and_reverse, WritesNothingWhenItFails)
{
    const double below = std::nextafter(1e-06, 0.0);
    double origin[] = {1, 2, 3}, good[] = {0, 0, 1}, bad[] = {below, 0, 0}, other[] = {0, 1, 0};
    Xfm fwd = {{9}}, rev = {{9}};
    EXPECT_EQ(orientation_xfm_and_reverse(origin, bad, good, fwd, rev), -1);
    EXPECT_EQ(orientation_xfm_and_reverse(origin, other, bad, fwd, rev), -1);
    EXPECT_EQ(fwd[0][0], 9.0);
    EXPECT_EQ(fwd[3][3], 0.0);
    EXPECT_EQ(rev[0][0], 9.0);
    EXPECT_EQ(rev[3][3], 0.0);
}

TEST(orientation_xfm_and_reverse, LetsNaNPass)
{
    double origin[] = {1, 2, 3}, x[] = {kNaN, 0, 0}, z[] = {0, 0, 1};
    Xfm fwd, rev;
    EXPECT_EQ(orientation_xfm_and_reverse(origin, x, z, fwd, rev), 1);
    EXPECT_TRUE(same_bits({kNaN, kNaN, kNaN, kNaN}, fwd[0]));
    EXPECT_TRUE(same_bits({0, 0, 1, -3}, fwd[2]));
}

TEST(orientation_xfm_and_reverse, IsUndoneByItsReverse)
{
    Random random(6);
    for (int i = 0; i < korvale::test::rounds(1000); ++i) {
        double origin[3], x[3], z[3], y[3], p[3], out[3];
        for (int k = 0; k < 3; ++k) {
            origin[k] = random.uniform(-10, 10);
            x[k] = random.uniform(-1, 1);
            y[k] = random.uniform(-1, 1);
            p[k] = random.uniform(-10, 10);
        }
        cross_product(x, y, z);
        if (norm(z) < 0.01)
            continue;
        Xfm fwd, rev;
        ASSERT_EQ(orientation_xfm_and_reverse(origin, x, z, fwd, rev), 1);
        TransformPoint(fwd, p, out);
        TransformPoint(rev, out, out);
        for (int k = 0; k < 3; ++k)
            ASSERT_NEAR(out[k], p[k], 4e-14); // coordinates up to 20; x and z are perpendicular to 1e-14
    }
}

} // namespace
} // namespace korvale::test
