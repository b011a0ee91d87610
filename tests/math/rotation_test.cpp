// Rotations by radians and by degrees, and transforms made of scale, rotation and translation.
#include "math/rotation.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "tests/support/bits.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

constexpr double kQuarterTurn = 1.5707963267948966;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(rotation_matrix, TurnsXToYAboutZ)
{
    double radians[] = {0, 0, kQuarterTurn}, p[] = {1, 0, 0};
    Xfm m;
    rotation_matrix(radians, m);
    TransformPoint(m, p, p);
    EXPECT_TRUE(same_bits({std::cos(kQuarterTurn), 1, 0}, p));
}

TEST(rotation_matrix, TurnsYToZAboutX)
{
    double radians[] = {kQuarterTurn, 0, 0}, p[] = {0, 1, 0};
    Xfm m;
    rotation_matrix(radians, m);
    TransformPoint(m, p, p);
    EXPECT_TRUE(same_bits({0, std::cos(kQuarterTurn), 1}, p));
}

TEST(rotation_matrix, TurnsZToXAboutY)
{
    double radians[] = {0, kQuarterTurn, 0}, p[] = {0, 0, 1};
    Xfm m;
    rotation_matrix(radians, m);
    TransformPoint(m, p, p);
    EXPECT_TRUE(same_bits({1, 0, std::cos(kQuarterTurn)}, p));
}

TEST(rotation_matrix, IsZTimesTheProductOfYAndX)
{
    Random random(7);
    for (int i = 0; i < korvale::test::rounds(1000); ++i) {
        double radians[] = {random.uniform(-7, 7), random.uniform(-7, 7), random.uniform(-7, 7)};
        const double c0 = std::cos(radians[0]), s0 = std::sin(radians[0]);
        const double c1 = std::cos(radians[1]), s1 = std::sin(radians[1]);
        const double c2 = std::cos(radians[2]), s2 = std::sin(radians[2]);
        Xfm m;
        rotation_matrix(radians, m);
        ASSERT_TRUE(same_bits({c2 * c1, c2 * (s1 * s0) + -s2 * c0, c2 * (s1 * c0) + -s2 * -s0, 0, //
                               s2 * c1, s2 * (s1 * s0) + c2 * c0, s2 * (s1 * c0) + c2 * -s0, 0,   //
                               -s1, c1 * s0, c1 * c0, 0,                                          //
                               0, 0, 0, 1},
                              &m[0][0]));
    }
}

TEST(RotationMatrix, ConvertsDegreesWithTheShortFactor)
{
    double degrees[] = {90, -30, 10}, radians[] = {90 * 0.0174533, -30 * 0.0174533, 10 * 0.0174533};
    Xfm by_degrees, by_radians, second_name;
    RotationMatrix(degrees, by_degrees);
    rotation_matrix(radians, by_radians);
    RotateMatrix(degrees, second_name);
    EXPECT_TRUE(same_bits(&by_radians[0][0], &by_degrees[0][0], 16));
    EXPECT_TRUE(same_bits(&by_radians[0][0], &second_name[0][0], 16));
}

TEST(RotationMatrix, DiffersFromTheExactQuarterTurn)
{
    double degrees[] = {90, 0, 0};
    Xfm m;
    RotationMatrix(degrees, m);
    EXPECT_TRUE(same_bits(std::cos(90 * 0.0174533), m[1][1]));
    EXPECT_NEAR(m[1][1], -6.7320510339e-07, 1e-15); // a quarter turn less 1.570797
}

TEST(SRT2Transform, ScalesThenTurnsThenMoves)
{
    double scale[] = {2, 3, 4}, rot[] = {0, 0, kQuarterTurn}, trans[] = {5, 6, 7}, p[] = {1, 0, 0};
    Xfm m;
    SRT2Transform(scale, rot, trans, m);
    TransformPoint(m, p, p);
    EXPECT_TRUE(same_bits({2 * std::cos(kQuarterTurn) + 5, 8, 7}, p));
}

TEST(SRT2Transform, IsTheProductOfTAndRS)
{
    Random random(8);
    double scale[3], rot[3], trans[3];
    for (int k = 0; k < 3; ++k) {
        scale[k] = random.uniform(-3, 3);
        rot[k] = random.uniform(-3, 3);
        trans[k] = random.uniform(-3, 3);
    }
    Xfm s, r, t, expected, m;
    ScaleMatrix(scale, s);
    rotation_matrix(rot, r);
    TranslateMatrix(trans, t);
    MatrixMultiply(r, s, expected);
    MatrixMultiply(t, expected, expected);
    SRT2Transform(scale, rot, trans, m);
    EXPECT_TRUE(same_bits(&expected[0][0], &m[0][0], 16));
}

TEST(SRT2InvTransform, UndoesTheTransform)
{
    Random random(9);
    for (int i = 0; i < korvale::test::rounds(1000); ++i) {
        double scale[3], rot[3], trans[3];
        for (int k = 0; k < 3; ++k) {
            scale[k] = random.uniform(0.5, 2) * (random.one_in(2) ? -1 : 1);
            rot[k] = random.uniform(-3, 3);
            trans[k] = random.uniform(-10, 10);
        }
        Xfm m, inverse, both, identity;
        make_identity(identity);
        SRT2Transform(scale, rot, trans, m);
        SRT2InvTransform(scale, rot, trans, inverse);
        MatrixMultiply(inverse, m, both);
        for (int k = 0; k < 16; ++k)
            ASSERT_NEAR((&both[0][0])[k], (&identity[0][0])[k], 2e-14); // entries up to 40, a few roundings each
    }
}

TEST(SRT2InvTransform, IsTheProductOfSAndTheTransposedRotationAndT)
{
    double scale[] = {2, -4, 3}, rot[] = {0.1, -0.2, 0.3}, trans[] = {5, 6, 7};
    double inverse_scale[] = {0.5, -0.25, 1 / 3.0}, back[] = {-5, -6, -7};
    Xfm s, r, turned, t, expected, m;
    ScaleMatrix(inverse_scale, s);
    rotation_matrix(rot, r);
    MatrixTranspose(r, turned);
    TranslateMatrix(back, t);
    MatrixMultiply(turned, t, expected);
    MatrixMultiply(s, expected, expected);
    SRT2InvTransform(scale, rot, trans, m);
    EXPECT_TRUE(same_bits(&expected[0][0], &m[0][0], 16));
}

TEST(SRT2InvTransform, InvertsATinyScaleToAMillion)
{
    const double below = std::nextafter(1e-06, 0.0), above = std::nextafter(1e-06, 1.0);
    double rot[] = {0, 0, 0}, trans[] = {0, 0, 0};
    const struct {
        double scale, inverse;
    } cases[] = {{0.0, 1000000.0},    {-0.0, 1000000.0},    {below, 1000000.0},
                 {-below, 1000000.0}, {1e-06, 1 / 1e-06},   {-1e-06, 1 / -1e-06},
                 {above, 1 / above},  {-above, 1 / -above}, {kNaN, kNaN}};
    for (const auto& c : cases) {
        double scale[] = {1, c.scale, 1};
        Xfm m;
        SRT2InvTransform(scale, rot, trans, m);
        EXPECT_TRUE(same_bits(c.inverse, m[1][1])) << c.scale;
    }
}

TEST(Transform2SRT, TakesATransformApart)
{
    double scale[] = {2, 3, 4}, rot[] = {0.1, 0.2, 0.3}, trans[] = {5, 6, 7}, s[3], r[3], t[3];
    Xfm m;
    SRT2Transform(scale, rot, trans, m);
    Transform2SRT(m, s, r, t);
    EXPECT_TRUE(same_bits({5, 6, 7}, t));
    for (int k = 0; k < 3; ++k) {
        EXPECT_EQ(s[k], scale[k]);
        EXPECT_NEAR(r[k], rot[k], 1e-16); // roundings of the angle in radians, below 1
    }
}

TEST(Transform2SRT, FollowsItsSteps)
{
    Random random(10);
    for (int i = 0; i < korvale::test::rounds(1000); ++i) {
        Xfm m;
        for (auto& row : m)
            for (double& value : row)
                value = random.uniform(-5, 5);
        double s[3], r[3], t[3];
        Transform2SRT(m, s, r, t);
        double turned[3][3];
        for (int j = 0; j < 3; ++j) {
            const double size = std::sqrt(m[0][j] * m[0][j] + m[1][j] * m[1][j] + m[2][j] * m[2][j]);
            ASSERT_TRUE(same_bits(size, s[j]));
            ASSERT_TRUE(same_bits(m[j][3], t[j]));
            for (int k = 0; k < 3; ++k)
                turned[k][j] = m[k][j] / size;
        }
        ASSERT_TRUE(same_bits(
            {std::atan2(turned[2][1], turned[2][2]), std::asin(-turned[2][0]), std::atan2(turned[1][0], turned[0][0])},
            r));
    }
}

TEST(Transform2SRT, PinsTheAnglesAtThePole)
{
    double scale[] = {1, 1, 1}, rot[] = {0, kQuarterTurn, 0}, trans[] = {0, 0, 0}, s[3], r[3], t[3];
    Xfm m;
    SRT2Transform(scale, rot, trans, m);
    Transform2SRT(m, s, r, t);
    EXPECT_TRUE(same_bits({0.0, 1.5707963, -0.0}, r));
    rot[1] = -kQuarterTurn;
    SRT2Transform(scale, rot, trans, m);
    Transform2SRT(m, s, r, t);
    EXPECT_TRUE(same_bits({0.0, -1.5707963, -0.0}, r));
}

TEST(Transform2SRT, ReadsTheZTurnAtThePoleFromTheFirstRow)
{
    // Column 1 is (-3/5, 4/5, 0), row 2 is (-1, 0, 0).
    Xfm m = {{0, -3, 0, 0}, {0, 4, 1, 0}, {-1, 0, 0, 0}, {0, 0, 0, 1}};
    double s[3], r[3], t[3];
    Transform2SRT(m, s, r, t);
    EXPECT_TRUE(same_bits({1, 5, 1}, s));
    EXPECT_TRUE(same_bits({0.0, 1.5707963, std::asin(3.0 / 5.0)}, r));
}

TEST(Transform2SRT, TakesTheUpperPoleWhereTheThirdRowDoesNotTell)
{
    for (const double undecided : {0.0, -0.0, kNaN}) {
        Xfm m = {{1, 0, 0, 0}, {0, 1, 1, 0}, {undecided, 0, 0, 0}, {0, 0, 0, 1}};
        double s[3], r[3], t[3];
        Transform2SRT(m, s, r, t);
        EXPECT_TRUE(same_bits({0.0, 1.5707963, -0.0}, r));
    }
}

TEST(Transform2SRT, TakesTheOpenBranchAtTheThreshold)
{
    const double at = 0x1.0c6f7a0b5f6c6p-20, below = 0x1.0c6f7a0b5f6c5p-20; // beside 1, normalised: 1e-06 and less
    Xfm m = {{0, 0, 1, 0}, {0, 1, 0, 0}, {-1, 0, at, 0}, {0, 0, 0, 1}};
    double s[3], r[3], t[3];
    Transform2SRT(m, s, r, t);
    EXPECT_TRUE(same_bits(std::asin(1.0), r[1]));
    m[2][2] = below;
    Transform2SRT(m, s, r, t);
    EXPECT_EQ(r[1], 1.5707963);
}

TEST(Transform2SRT, DoesNotGuardAZeroColumn)
{
    Xfm m = {{1, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
    double s[3], r[3], t[3];
    Transform2SRT(m, s, r, t);
    EXPECT_TRUE(same_bits({1, 0, 1}, s));
    EXPECT_TRUE(same_bits({kNaN, -0.0, 0.0}, r));
}

} // namespace
} // namespace korvale::test
