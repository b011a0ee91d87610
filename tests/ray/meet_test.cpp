// Where a ray meets planes, boxes and triangles, and the frame it is moved to.
#include "ray/query.h"

#include <cmath>
#include <limits>
#include <ostream>

#include <gtest/gtest.h>

#include "math/transform.h"
#include "math/vector.h"
#include "tests/support/bits.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kThreshold = 1e-06;

double below(double value)
{
    return std::nextafter(value, -kInfinity);
}

double above(double value)
{
    return std::nextafter(value, kInfinity);
}

struct Vector {
    double values[3];
    operator double*() { return values; }
};

// ------------------------------------------------------------------------------------------------- planes and boxes

using PlaneFunction = int (*)(double*, double*, double, double*, double*);

/// One of the plane functions, its axis and the axes it reports.
struct Plane {
    PlaneFunction meets;
    int axis, first, second;
};

/// For messages, which would else show the bytes of it, the unused ones too.
void PrintTo(const Plane& plane, std::ostream* out)
{
    *out << "the plane across axis " << plane.axis;
}

class EveryPlane : public testing::TestWithParam<Plane> {
protected:
    /// The function applied to a ray whose coordinate and direction along the axis are `o` and `d`, which starts at 2
    /// and 3 in the others and moves by 4 and 5.
    int meets(double o, double d, double plane)
    {
        const Plane& p = GetParam();
        Vector origin, direction;
        origin[p.axis] = o;
        direction[p.axis] = d;
        origin[p.first] = 2;
        origin[p.second] = 3;
        direction[p.first] = 4;
        direction[p.second] = 5;
        first = second = -7;
        return p.meets(origin, direction, plane, &first, &second);
    }
    bool untouched() const { return first == -7 && second == -7; }

    double first, second;
};

INSTANTIATE_TEST_SUITE_P(ray_int, EveryPlane,
                         testing::Values(Plane{ray_int_x_plane, 0, 1, 2}, Plane{ray_int_y_plane, 1, 0, 2},
                                         Plane{ray_int_z_plane, 2, 0, 1}),
                         [](const auto& plane) { return std::string(1, "xyz"[plane.param.axis]) + "_plane"; });

TEST_P(EveryPlane, IsMetWhereTheRayReachesIt)
{
    EXPECT_EQ(meets(1, 2, 4), 1);
    EXPECT_EQ(first, 2 + 1.5 * 4);
    EXPECT_EQ(second, 3 + 1.5 * 5);
    EXPECT_EQ(meets(1, -2, -4), 1);
    EXPECT_EQ(first, 2 + 2.5 * 4);
    EXPECT_EQ(second, 3 + 2.5 * 5);
}

TEST_P(EveryPlane, BehindTheRayIsNotMet)
{
    EXPECT_EQ(meets(1, 2, 0), 0);
    EXPECT_TRUE(untouched());
    EXPECT_EQ(meets(1, -2, 2), 0);
    EXPECT_TRUE(untouched());
}

TEST_P(EveryPlane, AheadNeedsAnApproachOfTheThreshold)
{
    EXPECT_EQ(meets(0, kThreshold, 1), 1);
    EXPECT_EQ(meets(0, above(kThreshold), 1), 1);
    EXPECT_EQ(meets(0, below(kThreshold), 1), 0);
    EXPECT_TRUE(untouched());
    EXPECT_EQ(meets(0, 0, 1), 0);
}

TEST_P(EveryPlane, OnTheOtherSideNeedsTheNegativeThreshold)
{
    EXPECT_EQ(meets(0, -kThreshold, -1), 1);
    EXPECT_EQ(meets(0, below(-kThreshold), -1), 1);
    EXPECT_EQ(meets(0, above(-kThreshold), -1), 0);
    EXPECT_TRUE(untouched());
    EXPECT_EQ(meets(0, 0, -1), 0);
}

TEST_P(EveryPlane, HoldingTheOriginIsMetThere)
{
    for (const double d : {1.0, -1.0, 0.0, kNaN}) {
        EXPECT_EQ(meets(5, d, 5), 1);
        EXPECT_EQ(first, 2);
        EXPECT_EQ(second, 3);
    }
}

TEST_P(EveryPlane, OfNaNIsMetAtNaN)
{
    EXPECT_EQ(meets(0, 1, kNaN), 1);
    EXPECT_TRUE(std::isnan(first) && std::isnan(second));
    EXPECT_EQ(meets(0, kNaN, 1), 1);
    EXPECT_TRUE(std::isnan(first) && std::isnan(second));
}

int meets_box(Vector o, Vector d, std::vector<double> box = {0, 0, 0, 1, 2, 3})
{
    return ray_int_bbox(o, d, box.data());
}

TEST(ray_int_bbox, IsMetThroughEachFace)
{
    EXPECT_EQ(meets_box({-1, 1, 1}, {1, 0, 0}), 1);
    EXPECT_EQ(meets_box({2, 1, 1}, {-1, 0, 0}), 1);
    EXPECT_EQ(meets_box({0.5, -1, 1}, {0, 1, 0}), 1);
    EXPECT_EQ(meets_box({0.5, 3, 1}, {0, -1, 0}), 1);
    EXPECT_EQ(meets_box({0.5, 1, -1}, {0, 0, 1}), 1);
    EXPECT_EQ(meets_box({0.5, 1, 4}, {0, 0, -1}), 1);
}

TEST(ray_int_bbox, IsMetFromWithin)
{
    const Vector axes[] = {{1, 0, 0}, {-1, 0, 0}, {0, 1, 0}, {0, -1, 0}, {0, 0, 1}, {0, 0, -1}};
    for (const Vector& d : axes)
        EXPECT_EQ(meets_box({0.5, 1, 1}, d), 1);
}

TEST(ray_int_bbox, IsMissedBesideAndBehind)
{
    EXPECT_EQ(meets_box({-1, 2.5, 1}, {1, 0, 0}), 0);
    EXPECT_EQ(meets_box({-1, 1, 3.5}, {1, 0, 0}), 0);
    EXPECT_EQ(meets_box({-1, 1, -0.5}, {1, 0, 0}), 0);
    EXPECT_EQ(meets_box({-1, 1, 1}, {-1, 0, 0}), 0);
    EXPECT_EQ(meets_box({2, 1, 1}, {1, 0, 0}), 0);
}

TEST(ray_int_bbox, IsMetOnTheRimOfAFace)
{
    EXPECT_EQ(meets_box({-1, 0, 0}, {1, 0, 0}), 1);
    EXPECT_EQ(meets_box({-1, 2, 3}, {1, 0, 0}), 1);
    EXPECT_EQ(meets_box({-1, above(2), 3}, {1, 0, 0}), 0);
    EXPECT_EQ(meets_box({-1, 2, above(3)}, {1, 0, 0}), 0);
    EXPECT_EQ(meets_box({-1, -1e-300, 0}, {1, 0, 0}), 0);
    EXPECT_EQ(meets_box({-1, 0, -1e-300}, {1, 0, 0}), 0);
    EXPECT_EQ(meets_box({1, -1, 3}, {0, 1, 0}), 1);
    EXPECT_EQ(meets_box({above(1), -1, 3}, {0, 1, 0}), 0);
    EXPECT_EQ(meets_box({1, 2, -1}, {0, 0, 1}), 1);
    EXPECT_EQ(meets_box({1, above(2), -1}, {0, 0, 1}), 0);
}

TEST(ray_int_bbox, AlongAFaceIsMetOnlyFromItsPlane)
{
    // Moving in the plane x = 0 with y and z inside from the start: no face lies ahead but those of y.
    EXPECT_EQ(meets_box({0, 1, 1}, {0, 1, 0}), 1);
    // Standing still along every axis, the origin in the plane of one face.
    EXPECT_EQ(meets_box({0, 1, 1}, {0, 0, 0}), 1);
    EXPECT_EQ(meets_box({1, 1, 1}, {0, 0, 0}), 1);
    EXPECT_EQ(meets_box({0.5, 1, 1}, {0, 0, 0}), 0);
    // Too slow along x to meet x = 1 and x = 0.
    EXPECT_EQ(meets_box({-1, 1, 1}, {below(kThreshold), 0, 0}), 0);
    EXPECT_EQ(meets_box({-1, 1, 1}, {kThreshold, 0, 0}), 1);
}

TEST(ray_int_bbox, WithoutExtentIsMet)
{
    const std::vector<double> flat = {0, 0, 0, 1, 2, 0};
    EXPECT_EQ(meets_box({0.5, 1, -1}, {0, 0, 1}, flat), 1);
    EXPECT_EQ(meets_box({0.5, 1, 0}, {1, 0, 0}, flat), 1);
    EXPECT_EQ(meets_box({0.5, 1, 1}, {0, 0, 1}, flat), 0);
    EXPECT_EQ(meets_box({0, 0, -1}, {0, 0, 1}, {0, 0, 0, 0, 0, 0}), 1);
}

TEST(ray_int_bbox, IsNotMetAtNaN)
{
    EXPECT_EQ(meets_box({-1, kNaN, 1}, {1, 0, 0}), 0);
    EXPECT_EQ(meets_box({-1, 1, 1}, {kNaN, kNaN, kNaN}), 0);
    EXPECT_EQ(meets_box({-1, 1, 1}, {1, 0, 0}, {kNaN, kNaN, kNaN, kNaN, kNaN, kNaN}), 0);
    EXPECT_EQ(meets_box({-1, 1, 1}, {1, 0, 0}, {0, 0, 0, 1, kNaN, 3}), 0);
}

TEST_P(EveryPlane, TakesNull)
{
    Vector o = {0, 0, 0}, d = {1, 1, 1};
    double a = -7, b = -7;
    EXPECT_EQ(GetParam().meets(nullptr, d, 1, &a, &b), 0);
    EXPECT_EQ(GetParam().meets(o, nullptr, 1, &a, &b), 0);
    EXPECT_EQ(GetParam().meets(o, d, 1, nullptr, &b), 0);
    EXPECT_EQ(GetParam().meets(o, d, 1, &a, nullptr), 0);
    EXPECT_EQ(a, -7);
    EXPECT_EQ(b, -7);
}

TEST(ray_int_bbox, TakesNull)
{
    Vector o = {-1, 1, 1}, d = {1, 0, 0};
    double box[6] = {0, 0, 0, 1, 2, 3};
    EXPECT_EQ(ray_int_bbox(nullptr, d, box), 0);
    EXPECT_EQ(ray_int_bbox(o, nullptr, box), 0);
    EXPECT_EQ(ray_int_bbox(o, d, nullptr), 0);
}

// ---------------------------------------------------------------------------------------------------- the ray's frame

void expect_frame(Vector o, Vector d, const std::vector<double>& expected)
{
    Xfm m;
    ray_compute_xfm(o, d, m);
    EXPECT_TRUE(same_bits(expected, &m[0][0]));
}

TEST(ray_compute_xfm, KeepsARayStraightUp)
{
    expect_frame({2, 3, 4}, {0, 0, 1}, {1, 0, 0, -2, 0, 1, 0, -3, 0, 0, 1, -4, 0, 0, 0, 1});
}

TEST(ray_compute_xfm, TurnsARayStraightDownAboutX)
{
    expect_frame({2, 3, 4}, {0, 0, -1}, {1, 0, 0, -2, 0, -1, 0, 3, 0, 0, -1, 4, 0, 0, 0, 1});
}

TEST(ray_compute_xfm, TurnsAnyOtherRayToZ)
{
    // a = d x z = (0, -1, 0), b = d x a = (0, 0, -1)
    expect_frame({2, 3, 4}, {1, 0, 0}, {0, -1, 0, 3, 0, 0, -1, 4, 1, 0, 0, -2, 0, 0, 0, 1});
    // a = (1, 0, 0), b = (0, 0, -1)
    expect_frame({2, 3, 4}, {0, 1, 0}, {1, 0, 0, -2, 0, 0, -1, 4, 0, 1, 0, -3, 0, 0, 0, 1});
}

TEST(ray_compute_xfm, SnapsToTheAxisBelowTheThreshold)
{
    expect_frame({0, 0, 0}, {below(kThreshold), 0, 1}, {1, 0, 0, -0.0, 0, 1, 0, -0.0, 0, 0, 1, -0.0, 0, 0, 0, 1});
    expect_frame({0, 0, 0}, {0, -below(kThreshold), -1}, {1, 0, 0, -0.0, 0, -1, 0, -0.0, 0, 0, -1, -0.0, 0, 0, 0, 1});
    Vector o = {0, 0, 0}, d = {kThreshold, 0, 1};
    Xfm m;
    ray_compute_xfm(o, d, m);
    EXPECT_EQ(m[0][1], -1);
    EXPECT_EQ(m[1][2], -kThreshold);
    EXPECT_EQ(m[2][0], kThreshold);
}

TEST(ray_compute_xfm, TakesNull)
{
    Vector o = {2, 3, 4}, d = {0, 0, 1};
    Xfm m = {{7}};
    ray_compute_xfm(nullptr, d, m);
    ray_compute_xfm(o, nullptr, m);
    EXPECT_EQ(m[0][0], 7);
    EXPECT_EQ(m[3][3], 0);
    ray_compute_xfm(o, d, nullptr);
}

TEST(ray_compute_xfm, BringsTheOriginToZeroAndTheDirectionToZ)
{
    Random random(501);
    for (int i = 0; i < rounds(1000); ++i) {
        Vector o, d, seen;
        for (int k = 0; k < 3; ++k) {
            o[k] = random.uniform(-10, 10);
            d[k] = random.uniform(-1, 1);
        }
        normalize(d);
        Xfm m;
        ray_compute_xfm(o, d, m);
        TransformPoint(m, o, seen);
        TransformVector(m, d, d);
        for (int k = 0; k < 3; ++k) { // a direction has terms of size 1, rounded three times
            EXPECT_EQ(seen[k], 0);
            EXPECT_NEAR(d[k], k == 2, 1e-15);
        }
    }
}

// --------------------------------------------------------------------------------------------------------- triangles

struct Meeting {
    int met;
    double z;
};

/// z is -7 where it was not written.
Meeting meet(Vector p, std::vector<double> triangle)
{
    Meeting m = {0, -7};
    m.met = z_intersect(p, triangle.data(), &m.z);
    return m;
}

/// A triangle over (0, 0), (1, 0), (0, 1) with a height for each.
std::vector<double> corner(double z0, double z1, double z2)
{
    return {0, 0, z0, 1, 0, z1, 0, 1, z2};
}

TEST(z_intersect, FindsTheHeightWithin)
{
    // w0 = 0.5, w1 = 0.25, the rest is the third vertex
    const Meeting m = meet({0.25, 0.25, 0}, corner(4, 8, 16));
    EXPECT_EQ(m.met, 1);
    EXPECT_EQ(m.z, 0.5 * 4 + 0.25 * 8 + 0.25 * 16);
}

TEST(z_intersect, AddsTheThirdHeightLast)
{
    // 0.25 (-4e16 - 1) + 0.5 (2e16 - 1) + 1: the two large terms cancel first.
    EXPECT_EQ(meet({0.25, 0.25, 0}, corner(2e16, -4e16, 1)).z, 1.0);
}

TEST(z_intersect, TakesEitherSenseOfRotation)
{
    EXPECT_EQ(meet({0.25, 0.25, 0}, {0, 0, 1, 0, 1, 1, 1, 0, 1}).met, 1);
    EXPECT_EQ(meet({0.25, 0.25, 0}, {0, 0, 1, 1, 0, 1, 0, 1, 1}).met, 1);
}

TEST(z_intersect, RejectsATriangleBeside)
{
    for (const Vector& p : {Vector{-0.5, 0.5, 0}, Vector{1.5, 0.5, 0}, Vector{0.5, -0.5, 0}, Vector{0.5, 1.5, 0},
                            Vector{0.75, 0.75, 0}}) {
        const Meeting m = meet(p, corner(1, 1, 1));
        EXPECT_EQ(m.met, 0);
        EXPECT_EQ(m.z, -7);
    }
}

TEST(z_intersect, TakesEdgesAndVertices)
{
    for (const Vector& p : {Vector{0, 0, 0}, Vector{1, 0, 0}, Vector{0, 1, 0}, Vector{0.5, 0, 0}, Vector{0, 0.5, 0},
                            Vector{0.5, 0.5, 0}}) {
        const Meeting m = meet(p, corner(1, 1, 1));
        EXPECT_EQ(m.met, 1);
        EXPECT_EQ(m.z, 1);
    }
    EXPECT_EQ(meet({-1e-300, 0.5, 0}, corner(1, 1, 1)).met, 0);
    EXPECT_EQ(meet({0.5, -1e-300, 0}, corner(1, 1, 1)).met, 0);
    EXPECT_EQ(meet({0.5, above(0.5), 0}, corner(1, 1, 1)).met, 0);
}

TEST(z_intersect, RejectsATriangleWhollyBehind)
{
    Meeting m = meet({0.25, 0.25, 2}, corner(1, 1, 1));
    EXPECT_EQ(m.met, 0);
    EXPECT_EQ(m.z, -7);
    m = meet({0.25, 0.25, 1}, corner(1, 1, 1));
    EXPECT_EQ(m.met, 1);
    EXPECT_EQ(m.z, 1);
    EXPECT_EQ(meet({0.25, 0.25, above(1)}, corner(1, 1, 1)).met, 0);
}

TEST(z_intersect, WritesAHeightBelowThePointAsWell)
{
    const Meeting m = meet({0.25, 0.25, 5}, corner(0, 0, 10));
    EXPECT_EQ(m.met, 0);
    EXPECT_EQ(m.z, 2.5);
}

TEST(z_intersect, RejectsATriangleSeenEdgeOn)
{
    const Meeting m = meet({0, 0.5, 0}, {0, 0, 1, 0, 1, 1, 0, 0.5, 2});
    EXPECT_EQ(m.met, 0);
    EXPECT_EQ(m.z, -7);
}

TEST(z_intersect, NeedsADeterminantOfTheThreshold)
{
    const auto with_determinant = [](double d) { return std::vector<double>{d, 0, 1, 0, 1, 1, 0, 0, 1}; };
    EXPECT_EQ(meet({0, 0, 0}, with_determinant(kThreshold)).met, 1);
    EXPECT_EQ(meet({0, 0, 0}, with_determinant(above(kThreshold))).met, 1);
    EXPECT_EQ(meet({0, 0, 0}, with_determinant(below(kThreshold))).met, 0);
    EXPECT_EQ(meet({0, 0, 0}, with_determinant(-kThreshold)).met, 1);
    EXPECT_EQ(meet({0, 0, 0}, with_determinant(above(-kThreshold))).met, 0);
}

TEST(z_intersect, CountsNaNAsMet)
{
    Meeting m = meet({0.25, 0.25, 0}, {kNaN, kNaN, kNaN, kNaN, kNaN, kNaN, kNaN, kNaN, kNaN});
    EXPECT_EQ(m.met, 1);
    EXPECT_TRUE(std::isnan(m.z));
    m = meet({0.25, 0.25, 0}, corner(kNaN, 1, 1));
    EXPECT_EQ(m.met, 1);
    EXPECT_TRUE(std::isnan(m.z));
    m = meet({kNaN, 0.25, 0}, corner(1, 1, 1));
    EXPECT_EQ(m.met, 1);
    EXPECT_TRUE(std::isnan(m.z));
}

TEST(z_intersect, RejectsNaNByTheOtherCoordinates)
{
    EXPECT_EQ(meet({0.25, 0.25, 0}, {1, kNaN, 1, 2, 0, 1, 1, 1, 1}).met, 0); // all beside in x
    EXPECT_EQ(meet({0.25, 0.25, 0}, {0, 0, kNaN, 1, 0, kNaN, 1, 1, kNaN}).met, 1);
    EXPECT_EQ(meet({0.25, 0.75, 0}, {0, 0, kNaN, 1, 0, kNaN, 1, 1, kNaN}).met, 0); // beside the long edge
    EXPECT_EQ(meet({0.25, 0.25, 2}, {0, kNaN, 1, 1, 0, 1, 0, 1, 1}).met, 0);       // all behind
}

TEST(z_intersect, TakesNull)
{
    Vector p = {0.25, 0.25, 0};
    std::vector<double> triangle = corner(1, 1, 1);
    double z = -7;
    EXPECT_EQ(z_intersect(nullptr, triangle.data(), &z), 0);
    EXPECT_EQ(z_intersect(p, nullptr, &z), 0);
    EXPECT_EQ(z_intersect(p, triangle.data(), nullptr), 0);
    EXPECT_EQ(z, -7);
}

} // namespace
} // namespace korvale::test
