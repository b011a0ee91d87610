// data_to_xy_xfms: two points, first three points, extremes.
#include "path/flatten.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "math/rotation.h"
#include "platform/layer.h"
#include "tests/path/transforms.h"
#include "tests/support/bits.h"

namespace korvale::test {
namespace {

constexpr double kDegreesPerRadian = 57.2957795;

Flattened open(const std::vector<double>& xyz)
{
    return flattened_points<Data>(xyz, 0);
}

Flattened closed(const std::vector<double>& xyz)
{
    return flattened_points<Data>(xyz, 1);
}

/// The turn about y by degrees.
Matrix turn_about_y(double degrees)
{
    double angles[3] = {0, degrees, 0};
    Matrix turn;
    RotationMatrix(angles, turn.m);
    return turn;
}

} // namespace

// ---- Two points

TEST(data_to_xy_xfms, TwoPointsTurnAboutYByTheAngleOfYAndZ)
{
    const Flattened f = open({1, 2, 3, 1, 5, 7}); // the direction is (0, 0.6, 0.8)
    EXPECT_EQ(f.result, 1);
    const double degrees = std::atan2(0.8, 0.6) * kDegreesPerRadian;
    Matrix forward = turn_about_y(degrees);
    double p0[3] = {1, 2, 3}, q[3];
    TransformPoint(forward.m, p0, q);
    forward.m[2][3] = -q[2];
    Matrix reverse = turn_about_y(-degrees);
    reverse.m[2][3] = 3;
    EXPECT_TRUE(equal(forward, f.forward));
    EXPECT_TRUE(equal(reverse, f.reverse));
    // By hand: cosine 0.6, sine 0.8, so z of p0 goes to -0.8 + 1.8 = 1. The two short factors, whose product is 1 +
    // 4e-7, leave 1e-6, and of a coordinate of 3 three times that.
    EXPECT_NEAR(f.forward.m[0][0], 0.6, 1e-6);
    EXPECT_NEAR(f.forward.m[0][2], 0.8, 1e-6);
    EXPECT_NEAR(f.forward.m[2][3], -1, 3e-6);
    EXPECT_EQ(f.forward.m[0][3], 0);
    EXPECT_EQ(f.forward.m[1][3], 0);
}

TEST(data_to_xy_xfms, TwoPointsAlongXAreNotTurned)
{
    const Flattened f = closed({0, 0, 4, 2, 0, 4});
    EXPECT_EQ(f.result, 1);
    EXPECT_TRUE(equal({{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, -4}, {0, 0, 0, 1}}, f.forward));
    EXPECT_TRUE(equal({{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 4}, {0, 0, 0, 1}}, f.reverse));
}

TEST(data_to_xy_xfms, TwoPointsRisingAlongXTurnByAQuarter)
{
    // atan2(z, x) would give 45 degrees; y is 0, so it is 90.
    const Flattened f = closed({0, 0, 0, 1, 0, 1});
    EXPECT_TRUE(equal(turn_about_y(std::atan2(1.0, 0.0) * kDegreesPerRadian), f.forward));
    EXPECT_NEAR(f.forward.m[0][2], 1, 1e-12); // the square of what the short factors leave
}

TEST(data_to_xy_xfms, TheReverseOfTwoPointsIsNotTheInverse)
{
    const std::vector<double> xyz = {1, 2, 3, 1, 5, 7};
    const Flattened f = open(xyz);
    const std::vector<double> back = carried(carried(xyz, f.forward), f.reverse);
    // The forward turn sends p0 to z = 0; the turn back and the move by 3 bring it to (1.8, 2, 5.4), not (1, 2, 3).
    // The short factors leave a millionth or so of each turn.
    EXPECT_NEAR(back[0], 1.8, 3e-6);
    EXPECT_EQ(back[1], 2.0);
    EXPECT_NEAR(back[2], 5.4, 3e-6);
}

TEST(data_to_xy_xfms, TwoPointsApartByTheThresholdHaveADirection)
{
    // A quarter turn, but for the square of what the short factors leave.
    EXPECT_NEAR(open({0, 0, 0, 0, 0, 1e-06}).forward.m[0][2], 1, 1e-12);
    EXPECT_NEAR(open({0, 0, 0, 0, 0, 1.000001e-06}).forward.m[0][2], 1, 1e-12);
    EXPECT_TRUE(equal(kIdentity, open({0, 0, 0, 0, 0, 9.99999e-07}).forward));
}

// ---- First three points

TEST(data_to_xy_xfms, AnOpenPathLiesInTheFrameOfItsFirstThreePoints)
{
    const Flattened f = open({1, 2, 3, 1, 4, 3, 1, 4, 9, -50, 70, 8}); // the last point is not looked at
    EXPECT_EQ(f.result, 1);
    // x runs along p1 - p0 = y, the normal is (p2 - p1) x (p1 - p0) = z x y = -x, and y = normal x x = -z.
    EXPECT_TRUE(equal({{0, 1, 0, -2}, {0, 0, -1, 3}, {-1, 0, 0, 1}, {0, 0, 0, 1}}, f.forward));
    EXPECT_TRUE(equal({{0, 0, -1, 1}, {1, 0, 0, 2}, {0, -1, 0, 3}, {0, 0, 0, 1}}, f.reverse));
}

TEST(data_to_xy_xfms, OneOfTheFirstTwoSegmentsMustBeLongerThanATenth)
{
    // By the first three points x stays x; by the extremes the x axis is the edge that leaves the greatest point, y.
    const auto stays = [](double b, double a) { return open({0, 0, 0, b, 0, 0, b, a, 0}).forward.m[0][0]; };
    EXPECT_EQ(stays(0.1, 0.1), 0.0);
    EXPECT_EQ(stays(0.0999999, 0.0999999), 0.0);
    EXPECT_EQ(stays(0.1000001, 0.05), 1.0);
    EXPECT_EQ(stays(0.1, 0.1000001), 1.0);
}

TEST(data_to_xy_xfms, TheSineOfTheFirstCornerMustExceedATenth)
{
    // The corner at p1 turns from x by a sine of y / |(x, y)|. By the first three points the origin is p0.
    const auto origin_x = [](double x, double y) { return open({-1, 0, 0, 0, 0, 0, x, y, 0}).forward.m[0][3]; };
    EXPECT_EQ(origin_x(9.9498743710662, 1.0001), 1.0);
    EXPECT_NE(origin_x(9.9498743710662, 1.0), 1.0); // exactly 0.1
    EXPECT_NE(origin_x(9.9498743710662, 0.9999), 1.0);
}

TEST(data_to_xy_xfms, ADoubledPointAmongTheFirstThreeLeavesThemOut)
{
    const Flattened f = open({0, 0, 0, 5, 0, 0, 5, 0, 0, 5, 3, 0});
    EXPECT_EQ(f.result, 1);
    // Extremes: x, from p0 to p1; the edge that leaves p1 is zero, the one that leaves p0 runs along the line, the one
    // that enters p0 comes from p3: u = (5, 0, 0), w = (-5, -3, 0), so the normal is -z and the origin p3.
    EXPECT_EQ(f.forward.m[2][2], -1.0);
    const std::vector<double> p3 = carried({5, 3, 0}, f.forward);
    EXPECT_EQ(p3[0], 0);
    EXPECT_EQ(p3[1], 0);
}

// ---- Extremes

TEST(data_to_xy_xfms, AClosedPathLiesInTheFrameOfItsWidestExtent)
{
    const Flattened f = closed({0, 0, 5, 2, 0, 5, 2, 1, 5, 0, 1, 5});
    EXPECT_EQ(f.result, 1);
    // u = p1 - p0 = (2, 0, 0); the edge that leaves p1 is (0, 1, 0) and ends at the origin of the frame, (2, 1, 5).
    EXPECT_TRUE(equal({{0, 1, 0, -1}, {-1, 0, 0, 2}, {0, 0, 1, -5}, {0, 0, 0, 1}}, f.forward));
    EXPECT_TRUE(equal({{0, -1, 0, 2}, {1, 0, 0, 1}, {0, 0, 1, 5}, {0, 0, 0, 1}}, f.reverse));
}

TEST(data_to_xy_xfms, ALongPathIsNotAskedForItsFirstThreePointsWhenClosed)
{
    const std::vector<double> xyz = {0, 0, 0, 1, 0, 0, 1, 1, 0};
    EXPECT_EQ(open(xyz).forward.m[0][0], 1.0);
    EXPECT_EQ(closed(xyz).forward.m[0][0], 0.0);
}

TEST(data_to_xy_xfms, EqualExtentsTakeTheEarlierAxis)
{
    // Extents (1, 1, 0): x, from p0 to p1, then the edge (0, 1, 0); by y it would be the edge (-1, 0, 0) that leaves
    // p2.
    const Flattened xy = closed({0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0});
    EXPECT_EQ(xy.forward.m[0][1], 1.0);
    // Extents (0, 1, 1): y, from p0 to p1.
    const Flattened yz = closed({0, 0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1});
    EXPECT_EQ(yz.forward.m[0][2], 1.0);
}

TEST(data_to_xy_xfms, AWiderLaterAxisWins)
{
    // y is wider: from p0 to p2, the edge that leaves p2 is (-1, 0, 0).
    EXPECT_EQ(closed({0, 0, 0, 1, 0, 0, 1, 2, 0, 0, 2, 0}).forward.m[0][0], -1.0);
    // z is wider than y, and y than x.
    EXPECT_EQ(closed({0, 0, 0, 0, 2, 0, 0, 2, 3, 0, 0, 3}).forward.m[0][1], -1.0);
    // z is wider than x, y is not.
    EXPECT_EQ(closed({0, 0, 0, 2, 0, 0, 2, 0, 3, 0, 0, 3}).forward.m[0][0], -1.0);
}

TEST(data_to_xy_xfms, TheSecondTryLeavesTheLeastPoint)
{
    // x from p0 to p3; p4 goes on in the same direction as u backwards, so the edge leaving p3 is no help; the edge
    // that leaves p0 ends at p1 = (1, 2, 0).
    const Flattened f = closed({0, 0, 0, 1, 2, 0, 3, 2, 0, 4, 0, 0, 2, 0, 0});
    EXPECT_EQ(f.result, 1);
    // u = (4, 0, 0), w = (1, 2, 0): the normal is +z, the origin p1.
    EXPECT_EQ(f.forward.m[2][2], 1.0);
    const std::vector<double> p1 = carried({1, 2, 0}, f.forward);
    EXPECT_EQ(p1[0], 0);
    EXPECT_EQ(p1[1], 0);
    const std::vector<double> p0 = carried({0, 0, 0}, f.forward);
    EXPECT_EQ(p0[0], -std::sqrt(5.0)); // w points from p0 to p1
}

TEST(data_to_xy_xfms, TheThirdTryEntersTheLeastPoint)
{
    // Neither the edge leaving p2 nor the one leaving p0 departs from the line; the one from p4 = (1, -2, 0) does.
    const Flattened f = closed({0, 0, 0, 2, 0, 0, 4, 0, 0, 3, 0, 0, 1, -2, 0});
    EXPECT_EQ(f.result, 1);
    // u = (4, 0, 0), w = p0 - p4 = (-1, 2, 0): the normal is +z, the origin p4.
    EXPECT_EQ(f.forward.m[2][2], 1.0);
    const std::vector<double> p4 = carried({1, -2, 0}, f.forward);
    EXPECT_EQ(p4[0], 0);
    EXPECT_EQ(p4[1], 0);
    const std::vector<double> p0 = carried({0, 0, 0}, f.forward);
    EXPECT_EQ(p0[0], std::sqrt(5.0));
}

TEST(data_to_xy_xfms, NeighboursOfTheExtremesWrapAround)
{
    // The greatest point is the last one: the edge that leaves it goes to p0.
    const Flattened last = closed({0.5, 1, 0, 0, 0, 0, 3, 0, 0});
    EXPECT_EQ(last.forward.m[2][2], 1.0); // u = (3, 0, 0), w = (-2.5, 1, 0)
    const std::vector<double> p0 = carried({0.5, 1, 0}, last.forward);
    EXPECT_EQ(p0[0], 0);
    EXPECT_EQ(p0[1], 0);
}

TEST(data_to_xy_xfms, TheNeighbourBeforeTheFirstPointIsTheLast)
{
    // The least point is p0, and only the edge that enters it from p5 departs from the line.
    const Flattened first = closed({0, 0, 0, 1, 0, 0, 4, 0, 0, 3, 0, 0, 2, 0, 0, 1, -2, 0});
    EXPECT_EQ(first.forward.m[2][2], 1.0);
    const std::vector<double> p5 = carried({1, -2, 0}, first.forward);
    EXPECT_EQ(p5[0], 0);
    EXPECT_EQ(p5[1], 0);
}

TEST(data_to_xy_xfms, TheFirstOfEqualExtremesCounts)
{
    // The greatest x is reached at p1 and p2, the least at p0 and p3. From p2 the edge would be (-2, 0, 0).
    EXPECT_EQ(closed({0, 0, 0, 2, 0, 0, 2, 1, 0, 0, 1, 0}).forward.m[0][1], 1.0);
    // The least x at p1 and p2; p1 counts: u = (2, 1, 0), w = (-2, 0, 0).
    const Flattened f = closed({2, 1, 0, 0, 0, 0, 0, 1, 0});
    EXPECT_EQ(f.forward.m[2][2], 1.0);
}

TEST(data_to_xy_xfms, CollinearPointsHaveNoPlane)
{
    for (const int mode : {0, 1}) {
        const Flattened f = flattened_points<Data>({0, 0, 0, 1, 1, 1, 2, 2, 2}, mode);
        EXPECT_EQ(f.result, -1);
        EXPECT_TRUE(equal(kIdentity, f.forward));
        EXPECT_TRUE(equal(kIdentity, f.reverse));
    }
}

TEST(data_to_xy_xfms, AnExtentTimesAnEdgeBelowTheThresholdGivesNoPlane)
{
    const auto square = [](double side) { return closed({0, 0, 0, side, 0, 0, side, side, 0, 0, side, 0}).result; };
    EXPECT_EQ(square(0.0009), -1); // 0.0009 x 0.0009 is below 1e-06
    EXPECT_EQ(square(0.0011), 1);
    const auto circle = [](int n) {
        std::vector<double> xyz;
        for (int i = 0; i < n; ++i)
            xyz.insert(xyz.end(),
                       {0.01 * std::cos(i * 6.283185307179586 / n), 0.01 * std::sin(i * 6.283185307179586 / n), 0.0});
        return closed(xyz).result;
    };
    EXPECT_EQ(circle(10000), -1); // edges of 6e-06 over an extent of 0.02
    EXPECT_EQ(circle(100), 1);
}

TEST(data_to_xy_xfms, ThreeCoincidentPointsHaveNoPlane)
{
    EXPECT_EQ(closed({1, 2, 3, 1, 2, 3, 1, 2, 3}).result, -1);
}

TEST(data_to_xy_xfms, ACrossProductOfTheThresholdGivesAPlane)
{
    // u = (1, 0, 0) and an edge of the given height, which every try sees.
    const auto result = [](double height) { return closed({0, 0, 0, 1, 0, 0, 1, height, 0}).result; };
    EXPECT_EQ(result(1e-06), 1);
    EXPECT_EQ(result(1.000001e-06), 1);
    EXPECT_EQ(result(9.99999e-07), -1);
}

TEST(data_to_xy_xfms, AnEdgeTooShortForAnAxisLeavesIdentitiesAndSucceeds)
{
    const Flattened f = closed({0, 0, 3, 10, 0, 3, 10, 5e-07, 3});
    EXPECT_EQ(f.result, 1);
    EXPECT_TRUE(equal(kIdentity, f.forward));
    EXPECT_TRUE(equal(kIdentity, f.reverse));
}

TEST(data_to_xy_xfms, TheNormalFallsAsTheCrossProductDoes)
{
    // Both ways round; nothing makes the outline counter-clockwise.
    EXPECT_EQ(closed({0, 0, 0, 2, 0, 0, 2, 1, 0, 0, 1, 0}).forward.m[2][2], 1.0);
    EXPECT_EQ(closed({0, 1, 0, 2, 1, 0, 2, 0, 0, 0, 0, 0}).forward.m[2][2], -1.0);
}

TEST(data_to_xy_xfms, ANotANumberCountsAsAPlane)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const Flattened f = closed({0, 0, 0, 1, 0, 0, nan, 1, 0});
    EXPECT_EQ(f.result, 1); // no try finds its cross product too short
    EXPECT_TRUE(std::isnan(f.forward.m[0][0]));
    EXPECT_EQ(f.forward.m[3][3], 1.0);
}

TEST(data_to_xy_xfms, ANotANumberLengthIsNotLong)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    // Neither segment is longer than 0.1, so the extremes decide: u = (0.05, 0, 0) from p0 to p1 ...
    const Flattened f = open({0, 0, 0, 0.05, 0, 0, nan, 0, 0, 0.01, 0.02, 0});
    EXPECT_EQ(f.result, 1);
    EXPECT_TRUE(std::isnan(f.forward.m[0][0])); // ... and the edge to p2
    EXPECT_TRUE(std::isnan(f.forward.m[0][3])); // which is also the origin
}

TEST(data_to_xy_xfms, NoRandomNumberIsDrawn)
{
    Mwsrand(7);
    const int next = Mwrand();
    Mwsrand(7);
    closed({0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0});
    open({0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0});
    EXPECT_EQ(Mwrand(), next);
}

} // namespace korvale::test
