// DATA_to_xy_xfms: open polylines, proper corners, and the ray that tells reflex ones.
#include "path/flatten.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "math/rotation.h"
#include "platform/layer.h"
#include "tests/path/transforms.h"
#include "tests/support/bits.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

constexpr double kDegreesPerRadian = 57.2957795;

Flattened open(const std::vector<double>& xyz)
{
    return flattened_points<DATAstruct>(xyz, 0);
}

Flattened closed(const std::vector<double>& xyz)
{
    return flattened_points<DATAstruct>(xyz, 1);
}

/// A counter-clockwise square whose first corner is convex and faces its opposite along the test line.
std::vector<double> square(double side)
{
    return {0, 0, 0, side, 0, 0, side, side, 0, 0, side, 0};
}

/// The random numbers `body` draws when the generator starts from `seed`.
template <class Body>
int draws(unsigned seed, Body body)
{
    constexpr int kMost = 1000, kCompared = 5;
    Mwsrand(seed);
    std::vector<int> sequence;
    for (int i = 0; i < kMost + kCompared; ++i)
        sequence.push_back(Mwrand());
    Mwsrand(seed);
    body();
    std::vector<int> following;
    for (int i = 0; i < kCompared; ++i)
        following.push_back(Mwrand());
    for (int n = 0; n <= kMost; ++n)
        if (std::equal(following.begin(), following.end(), sequence.begin() + n))
            return n;
    return -1;
}

std::vector<double> reversed(const std::vector<double>& xyz)
{
    std::vector<double> out;
    for (size_t i = xyz.size(); i > 0; i -= 3)
        out.insert(out.end(), xyz.begin() + static_cast<long>(i) - 3, xyz.begin() + static_cast<long>(i));
    return out;
}

} // namespace

// ---- The record

TEST(DATA_to_xy_xfms, ABufferAllocatedTooSmallGivesIdentities)
{
    double values[9] = {0, 0, 7, 1, 0, 7, 0, 1, 7};
    auto path = wrapped<DATAstruct>(values, 3, 3);
    path.alloc_dim = 3;
    path.alloc_count = 2;
    EXPECT_TRUE(equal(kIdentity, flattened(&path, 1).forward));
    path.alloc_count = 3;
    EXPECT_FALSE(equal(kIdentity, flattened(&path, 1).forward));
}

// ---- Open paths

TEST(DATA_to_xy_xfms, AnOpenPathLiesInTheFrameAtItsFirstPoint)
{
    const Flattened f = open({1, 2, 3, 1, 4, 3, 1, 9, 3, 1, 4, 9});
    // d = y, the first point off that line is p3 with e = (0, 2, 6); the normal is y x e = x, and y = x x y = z.
    EXPECT_TRUE(equal({{0, 1, 0, -2}, {0, 0, 1, -3}, {1, 0, 0, -1}, {0, 0, 0, 1}}, f.forward));
    EXPECT_TRUE(equal({{0, 0, 1, 1}, {1, 0, 0, 2}, {0, 1, 0, 3}, {0, 0, 0, 1}}, f.reverse));
}

TEST(DATA_to_xy_xfms, AnOpenPathIsNotTurnedCounterClockwise)
{
    EXPECT_EQ(open({0, 0, 0, 0, 1, 0, 1, 1, 0, 1, 0, 0}).forward.m[2][2], -1.0);
    EXPECT_EQ(open({0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0}).forward.m[2][2], 1.0);
}

TEST(DATA_to_xy_xfms, PointsAtTheFirstPointAreSkipped)
{
    const Flattened f = open({0, 0, 0, 0, 0, 0, 0, 5e-07, 0, 2, 0, 0, 0, 0, 0, 2, 0, 2});
    // d = x from p3; p4 is skipped; p5 gives the normal x x z = -y.
    EXPECT_EQ(f.forward.m[0][0], 1.0);
    EXPECT_EQ(f.forward.m[2][1], -1.0);
}

TEST(DATA_to_xy_xfms, TheFirstPointApartMustBeFartherThanTheThreshold)
{
    // The x axis points to p1 = (0, y, 0) when it is apart, else to p2 = (1, 0, 0).
    const auto turned = [](double y) { return open({0, 0, 0, 0, y, 0, 1, 0, 0, 1, 1, 0}).forward.m[0][1]; };
    EXPECT_EQ(turned(1.000001e-06), 1.0);
    EXPECT_EQ(turned(1e-06), 0.0);
    EXPECT_EQ(turned(9.99999e-07), 0.0);
}

TEST(DATA_to_xy_xfms, ALaterPointAtTheThresholdIsApart)
{
    // p2 = (0, y, 0) gives the plane when it is not skipped, p3 = (0, 0, 1) otherwise.
    const auto normal_z = [](double y) { return open({0, 0, 0, 1, 0, 0, 0, y, 0, 0, 0, 1}).forward.m[2][2]; };
    EXPECT_EQ(normal_z(1.000001e-06), 1.0);
    EXPECT_EQ(normal_z(1e-06), 1.0);
    EXPECT_EQ(normal_z(9.99999e-07), 0.0);
}

TEST(DATA_to_xy_xfms, TheSineOfThePlaneMustExceedTheThreshold)
{
    // p2 = (1, y, 0) has the sine y / |(1, y)|; p3 = (0, 0, 1) gives the plane otherwise.
    const auto normal_z = [](double y) { return open({0, 0, 0, 1, 0, 0, 1, y, 0, 0, 0, 1}).forward.m[2][2]; };
    EXPECT_EQ(normal_z(1.00001e-06), 1.0);
    EXPECT_EQ(normal_z(1.0000000000005e-06), 0.0); // a sine of exactly 1e-06
    EXPECT_EQ(normal_z(9.9999e-07), 0.0);
}

TEST(DATA_to_xy_xfms, PointsOnALineTurnAboutYByTheAngleOfXAndZ)
{
    for (const int mode : {0, 1}) {
        const Flattened f = flattened_points<DATAstruct>({1, 2, 3, 4, 2, 7, 7, 2, 11}, mode); // along (0.6, 0, 0.8)
        double angles[3] = {0, std::atan2(0.8, 0.6) * kDegreesPerRadian, 0};
        Matrix forward, reverse;
        RotationMatrix(angles, forward.m);
        double p0[3] = {1, 2, 3}, q[3];
        TransformPoint(forward.m, p0, q);
        for (int r = 0; r < 3; ++r)
            forward.m[r][3] = -q[r];
        angles[1] = -angles[1];
        RotationMatrix(angles, reverse.m);
        for (int r = 0; r < 3; ++r)
            reverse.m[r][3] = p0[r];
        EXPECT_TRUE(equal(forward, f.forward));
        EXPECT_TRUE(equal(reverse, f.reverse));
        // By hand: p0 goes to (0.6 + 2.4, 2, -0.8 + 1.8) before the move. The two short factors leave 1e-6
        // of each unit.
        EXPECT_NEAR(f.forward.m[0][3], -3, 3e-6);
        EXPECT_EQ(f.forward.m[1][3], -2);
        EXPECT_NEAR(f.forward.m[2][3], -1, 3e-6);
    }
}

TEST(DATA_to_xy_xfms, TheReverseOfALineIsTheInverse)
{
    const std::vector<double> xyz = {1, 2, 3, 4, 4, 7, 7, 6, 11};
    const Flattened f = open(xyz);
    const std::vector<double> back = carried(carried(xyz, f.forward), f.reverse);
    for (size_t i = 0; i < xyz.size(); ++i)
        EXPECT_NEAR(back[i], xyz[i], 1e-14); // coordinates of up to 11: rounded by 9e-16 a few times
}

TEST(DATA_to_xy_xfms, TwoPointsAreALine)
{
    const Flattened f = closed({0, 0, 0, 1, 0, 1});
    EXPECT_NEAR(f.forward.m[0][2], std::sqrt(0.5), 1e-6); // 45 degrees, by x and z, but for the short factors
}

TEST(DATA_to_xy_xfms, PointsWithinTheThresholdOfTheFirstCountAsOne)
{
    for (const int mode : {0, 1}) {
        const Flattened f = flattened_points<DATAstruct>({1, 2, 4, 1, 2 + 9e-07, 4, 1 - 5e-07, 2, 4}, mode);
        EXPECT_TRUE(equal({{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, -4}, {0, 0, 0, 1}}, f.forward));
        EXPECT_TRUE(equal({{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 4}, {0, 0, 0, 1}}, f.reverse));
    }
}

TEST(DATA_to_xy_xfms, ANotANumberPointGivesNoPlaneOfAnOpenPath)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    // p1 is not apart, p2 is; p3 is not skipped, but its cross product does not exceed the threshold; p4 decides.
    const Flattened f = open({0, 0, 0, nan, 0, 0, 2, 0, 0, nan, 1, 0, 0, 0, 3});
    EXPECT_EQ(f.forward.m[0][0], 1.0);
    EXPECT_EQ(f.forward.m[2][1], -1.0);
}

// ---- Closed outlines

TEST(DATA_to_xy_xfms, AClockwiseSquareGetsANormalOfMinusZ)
{
    const Flattened f = closed({0, 0, 0, 0, 1, 0, 1, 1, 0, 1, 0, 0});
    // The origin is the first corner, x the edge that leaves it.
    EXPECT_TRUE(equal({{0, 1, 0, 0}, {1, 0, 0, 0}, {0, 0, -1, 0}, {0, 0, 0, 1}}, f.forward));
    EXPECT_TRUE(equal({{0, 1, 0, 0}, {1, 0, 0, 0}, {0, 0, -1, 0}, {0, 0, 0, 1}}, f.reverse));
}

TEST(DATA_to_xy_xfms, ACounterClockwiseSquareGetsANormalOfPlusZ)
{
    const Flattened f = closed({2, 3, 4, 3, 3, 4, 3, 4, 4, 2, 4, 4});
    EXPECT_TRUE(equal({{1, 0, 0, -2}, {0, 1, 0, -3}, {0, 0, 1, -4}, {0, 0, 0, 1}}, f.forward));
    EXPECT_TRUE(equal({{1, 0, 0, 2}, {0, 1, 0, 3}, {0, 0, 1, 4}, {0, 0, 0, 1}}, f.reverse));
}

TEST(DATA_to_xy_xfms, AReflexFirstCornerStillGivesACounterClockwiseOutline)
{
    const std::vector<double> chevron = {1, 0.5, 0, 2, 2, 0, 0, 2, 0, 0, 0, 0, 2, 0, 0}; // the notch comes first
    EXPECT_EQ(closed(chevron).forward.m[2][2], 1.0);
    EXPECT_GT(doubled_area(carried(chevron, closed(chevron).forward)), 0);
    const std::vector<double> around = reversed(chevron);
    EXPECT_EQ(closed(around).forward.m[2][2], -1.0);
    EXPECT_GT(doubled_area(carried(around, closed(around).forward)), 0);
}

TEST(DATA_to_xy_xfms, ARayThatCrossesTheOutlineTwiceLeavesAConvexCorner)
{
    // A U whose first corner is convex and looks across the gap into the other arm.
    const std::vector<double> u = {2, 5, 0, 0, 5.5, 0, 0, 0, 0, 9, 0, 0, 9, 9, 0, 7, 9, 0, 7, 2, 0, 2, 2, 0};
    EXPECT_GT(doubled_area(u), 0);
    EXPECT_EQ(closed(u).forward.m[2][2], 1.0);
}

TEST(DATA_to_xy_xfms, AnEdgeThroughTheFirstCornerDoesNotCrossItsRay)
{
    // The corner at p0 looks straight down; the edge from p3 to p4 passes through p0.
    const std::vector<double> xyz = {0, 0, 0, 1, 1, 0, 2, 0.5, 0, 1, 0, 0, -1, 0, 0, -2, 0.5, 0, -1, 1, 0};
    EXPECT_EQ(closed(xyz).forward.m[2][2], 1.0);
    // A little further down it does.
    const std::vector<double> below = {0, 0, 0, 1, 1, 0, 2, 0.5, 0, 1, -0.1, 0, -1, -0.1, 0, -2, 0.5, 0, -1, 1, 0};
    EXPECT_EQ(closed(below).forward.m[2][2], -1.0);
}

TEST(DATA_to_xy_xfms, DoubledPointsAndStraightCornersAreNotProperCorners)
{
    const Flattened f = closed({0, 0, 0, 0, 0, 0, 1, 0, 0, 2, 0, 0, 2, 5e-07, 0, 2, 3, 0, -1, 3, 0, -1, 0, 0});
    // p0 and p1 coincide, p2 lies straight, p3 is too near to p4, and p4 to p3; p5 = (2, 3, 0) is the first.
    EXPECT_TRUE(equal({{-1, 0, 0, 2}, {0, -1, 0, 3}, {0, 0, 1, 0}, {0, 0, 0, 1}}, f.forward));
}

TEST(DATA_to_xy_xfms, EdgesOfTheThresholdMakeACorner)
{
    // p0 is the corner when the edge (0, y, 0) that leaves it is long enough; else p2 = (-2, y, 0) is.
    const auto origin_x = [](double y) { return closed({0, 0, 0, 0, y, 0, -2, y, 0, -2, 0, 0}).reverse.m[0][3]; };
    EXPECT_EQ(origin_x(1.000001e-06), 0.0);
    EXPECT_EQ(origin_x(1e-06), 0.0);
}

TEST(DATA_to_xy_xfms, EdgesBelowTheThresholdMakeNoCorner)
{
    // The edge between p0 and p1 is too short for either; p2 is the first corner.
    const Flattened f = closed({0, 0, 0, 0, 9.99999e-07, 0, -1, 9.99999e-07, 0, -2, 5, 0, -3, 0, 0});
    EXPECT_EQ(f.reverse.m[0][3], -1.0);
}

TEST(DATA_to_xy_xfms, TheSineOfACornerMustExceedTheThreshold)
{
    // p0 turns from x to (1, y): the sine is y / |(1, y)|. The next corner is p1.
    const auto origin_x = [](double y) {
        return closed({0, 0, 0, 1, y, 0, 1, 2, 0, -1, 2, 0, -1, 0, 0}).reverse.m[0][3];
    };
    EXPECT_EQ(origin_x(1.00001e-06), 0.0);
    EXPECT_EQ(origin_x(1.0000000000005e-06), 1.0); // a sine of exactly 1e-06
    EXPECT_EQ(origin_x(9.9999e-07), 1.0);
}

TEST(DATA_to_xy_xfms, ATriangleDrawsNoRandomNumber)
{
    EXPECT_EQ(draws(1, [] { closed({0, 0, 0, 3, 0, 0, 0, 4, 0}); }), 0);
}

TEST(DATA_to_xy_xfms, AVertexAtTheThresholdIsNotOnTheLine)
{
    // The bisector at p0 is -y, so the distance of a vertex from the test line is its x.
    const auto drawn = [](double x) { return draws(1, [x] { closed({0, 0, 0, 3, 4, 0, x, 8, 0, -3, 4, 0}); }); };
    EXPECT_EQ(drawn(1.000001e-06), 0);
    EXPECT_EQ(drawn(1e-06), 0);
    EXPECT_EQ(drawn(-1e-06), 0);
    EXPECT_GT(drawn(9.99999e-07), 0);
    EXPECT_GT(drawn(-9.99999e-07), 0);
    EXPECT_EQ(drawn(9.99999e-07) % 3, 0);
}

TEST(DATA_to_xy_xfms, ALargeSquareNeedsFewJitters)
{
    for (unsigned seed = 1; seed <= 200; ++seed) {
        Flattened f;
        const int drawn = draws(seed, [&f] { f = closed(square(10)); });
        EXPECT_GT(drawn, 0) << "seed " << seed;
        EXPECT_LE(drawn, 15) << "seed " << seed;
        EXPECT_EQ(drawn % 3, 0) << "seed " << seed;
        EXPECT_EQ(f.forward.m[2][2], 1.0) << "seed " << seed;
    }
}

TEST(DATA_to_xy_xfms, ASmallCounterClockwiseSquareComesOutClockwise)
{
    // No jitter moves the line 1e-06 away from the opposite corner: 101 restarts, each with three draws.
    for (const unsigned seed : {1u, 2u, 3u, 4711u}) {
        Flattened f;
        EXPECT_EQ(draws(seed, [&f] { f = closed(square(0.01)); }), 303) << "seed " << seed;
        EXPECT_EQ(f.forward.m[2][2], -1.0) << "seed " << seed;
        EXPECT_LT(doubled_area(carried(square(0.01), f.forward)), 0) << "seed " << seed;
    }
}

TEST(DATA_to_xy_xfms, ASmallClockwiseSquareIsNegatedAsWell)
{
    // At its first corner the cross product is -z; negated unseen it is +z, and the square stays clockwise.
    const std::vector<double> around = {0, 0, 0, 0, 0.01, 0, 0.01, 0.01, 0, 0.01, 0, 0};
    EXPECT_EQ(closed(around).forward.m[2][2], 1.0);
    EXPECT_LT(doubled_area(carried(around, closed(around).forward)), 0);
}

TEST(DATA_to_xy_xfms, ASmallOutlineThatStartsAtAReflexCornerStaysAsItIs)
{
    // The notch at p0 looks along -x at p3, which no jitter leaves behind. There the normal has to be negated.
    const std::vector<double> notched = {0.001, 0.0005, 0, 0.002, 0.001, 0, 0,     0.001, 0,
                                         0,     0.0005, 0, 0,     0,     0, 0.002, 0,     0};
    EXPECT_GT(doubled_area(notched), 0);
    for (const unsigned seed : {1u, 2u, 3u, 4711u}) {
        Flattened f;
        EXPECT_EQ(draws(seed, [&] { f = closed(notched); }), 303) << "seed " << seed;
        EXPECT_EQ(f.forward.m[2][2], 1.0) << "seed " << seed;
        EXPECT_GT(doubled_area(carried(notched, f.forward)), 0) << "seed " << seed;
    }
}

/// Whether `xyz`, counter-clockwise about +z, comes out counter-clockwise for each of `seeds` seeds; -1 if they differ.
int keeps_its_turn(const std::vector<double>& xyz, int seeds)
{
    int kept = 0;
    for (int seed = 1; seed <= seeds; ++seed) {
        Mwsrand(static_cast<unsigned>(seed));
        kept += doubled_area(carried(xyz, closed(xyz).forward)) > 0 ? 1 : 0;
    }
    return kept == seeds ? 1 : kept == 0 ? 0 : -1;
}

std::vector<double> starting_at(int corner, std::vector<double> xyz)
{
    std::rotate(xyz.begin(), xyz.begin() + 3 * corner, xyz.end());
    return xyz;
}

TEST(DATA_to_xy_xfms, WhichCornerOfASmallSquareComesFirstDecides)
{
    // Each jitter adds to the components of the line alike; along one diagonal of the square that turns it, along the
    // other it hardly does.
    EXPECT_EQ(keeps_its_turn(starting_at(0, square(0.01)), 200), 0);
    EXPECT_EQ(keeps_its_turn(starting_at(1, square(0.01)), 200), 1);
    EXPECT_EQ(keeps_its_turn(starting_at(2, square(0.01)), 200), 0);
    EXPECT_EQ(keeps_its_turn(starting_at(3, square(0.01)), 200), 1);
}

TEST(DATA_to_xy_xfms, AVertexNearTheFirstCornerOnItsBisectorTurnsALargeOutlineOver)
{
    // 5 x 5, but for a step of 0.01 at the first corner whose end lies on the corner's bisector.
    const std::vector<double> stepped = {0, 0, 0, 0.01, 0, 0, 0.01, 0.01, 0, 5, 0.01, 0, 5, 5, 0, 0, 5, 0};
    EXPECT_GT(doubled_area(stepped), 0);
    EXPECT_EQ(keeps_its_turn(stepped, 200), 0);
    EXPECT_EQ(keeps_its_turn(starting_at(3, stepped), 200), 1);
    // As near, but beside the bisector.
    const std::vector<double> aside = {0, 0, 0, 0.01, 0, 0, 0.01, 0.005, 0, 5, 0.005, 0, 5, 5, 0, 0, 5, 0};
    EXPECT_EQ(keeps_its_turn(aside, 200), 1);
}

TEST(DATA_to_xy_xfms, AboutASideOfATenthTheSeedDecides)
{
    EXPECT_EQ(keeps_its_turn(square(0.1), 2000), -1);
    EXPECT_EQ(keeps_its_turn(square(0.2), 2000), 1);
}

TEST(DATA_to_xy_xfms, FewSeedsTurnASquareOverUpToASideOf28Hundredths)
{
    const auto is_turned_over = [](unsigned seed, double side) {
        Mwsrand(seed);
        return doubled_area(carried(square(side), closed(square(side)).forward)) < 0;
    };
    EXPECT_TRUE(is_turned_over(879008, 0.2)); // the first of about one in half a million
    EXPECT_FALSE(is_turned_over(879008, 0.25));
    // Of all states of the generator this is the one whose numbers keep the line on the farthest corner.
    EXPECT_TRUE(is_turned_over(1616763046, 0.2785));
    EXPECT_FALSE(is_turned_over(1616763046, 0.279));
}

// Sides and seeds found by trying: the walk of the jitters first leaves the opposite corner by 1e-06 after exactly so
// many restarts.

TEST(DATA_to_xy_xfms, TheHundredthAttemptMayStillCount)
{
    Flattened f;
    EXPECT_EQ(draws(3872, [&f] { f = closed(square(0.0805)); }), 297);
    EXPECT_EQ(f.forward.m[2][2], 1.0);
}

TEST(DATA_to_xy_xfms, TheHundredAndFirstAttemptNegatesEvenWhenItCompletes)
{
    Flattened f;
    EXPECT_EQ(draws(3425, [&f] { f = closed(square(0.0935)); }), 300);
    EXPECT_EQ(f.forward.m[2][2], -1.0);
}

TEST(DATA_to_xy_xfms, ANotANumberVertexIsNotOnTheLine)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    Flattened f;
    EXPECT_EQ(draws(1, [&] { f = closed({0, 0, 0, 1, 0, 0, nan, 1, 0, 0, 1, 0}); }), 0);
    EXPECT_EQ(f.forward.m[2][2], 1.0); // and its edges do not cross the ray
}

TEST(DATA_to_xy_xfms, OutlinesEndUpCounterClockwise)
{
    Random random(63);
    Mwsrand(63);
    for (int round = 0; round < rounds(2000); ++round) {
        // Star-shaped with deep notches, starting at any corner, either way round, turned and moved.
        const int n = random.between(3, 40);
        std::vector<double> xyz;
        for (int i = 0; i < n; ++i) {
            const double angle = (i + random.uniform(-0.3, 0.3)) * 6.283185307179586 / n;
            const double radius = random.uniform(1, 10);
            xyz.insert(xyz.end(), {radius * std::cos(angle), radius * std::sin(angle), 0});
        }
        if (random.one_in(2))
            xyz = reversed(xyz);
        Matrix pose;
        double scale[3] = {1, 1, 1};
        double turn[3] = {random.uniform(-3, 3), random.uniform(-3, 3), random.uniform(-3, 3)};
        double move[3] = {random.uniform(-9, 9), random.uniform(-9, 9), random.uniform(-9, 9)};
        SRT2Transform(scale, turn, move, pose.m);
        xyz = carried(xyz, pose);
        ASSERT_GT(doubled_area(carried(xyz, closed(xyz).forward)), 0) << "round " << round;
    }
}

} // namespace korvale::test
