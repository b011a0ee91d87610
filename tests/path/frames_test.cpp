// What distinguishes path2xfm and PATH2xfm.
#include "path/frames.h"

#include <cmath>
#include <limits>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "math/vector.h"
#include "tests/path/matrix.h"
#include "tests/support/arrays.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

void find_frames(Data* path, int closed, Xfm* frames)
{
    path2xfm(path, closed, frames);
}

void find_frames(DATAstruct* path, int closed, Xfm* frames)
{
    PATH2xfm(path, closed, frames);
}

/// The frames of the points, one matrix each.
template <class Array>
std::vector<Matrix> frames_of(const std::vector<double>& xyz, int closed)
{
    auto path = points<Array>(xyz);
    std::vector<Matrix> frames(xyz.size() / 3);
    static_assert(sizeof(Matrix) == sizeof(Xfm));
    find_frames(path.get(), closed, &frames.data()->m);
    return frames;
}

std::vector<double> column(const Matrix& frame, int j)
{
    return {frame.m[0][j], frame.m[1][j], frame.m[2][j]};
}

double product(std::vector<double> a, std::vector<double> b)
{
    return dot_product(a.data(), b.data());
}

/// Frames have unit axes: each component is rounded by 1e-16 a few times. A larger tolerance has a reason of its own.
testing::AssertionResult near(const std::vector<double>& expected, const std::vector<double>& actual,
                              double tolerance = 1e-15)
{
    for (size_t k = 0; k < expected.size(); ++k)
        if (!(std::fabs(expected[k] - actual[k]) <= tolerance))
            return testing::AssertionFailure()
                   << "component " << k << " is " << actual[k] << ", expected " << expected[k];
    return testing::AssertionSuccess();
}

using Vector = std::vector<double>;

template <class Array>
class Frames : public testing::Test {
protected:
    static std::vector<Matrix> open(const Vector& xyz) { return frames_of<Array>(xyz, 0); }
    static std::vector<Matrix> closed(const Vector& xyz) { return frames_of<Array>(xyz, 1); }

    static void expect_untouched(Array* path)
    {
        for (const int mode : {0, 1}) {
            std::vector<Matrix> frames(4);
            find_frames(path, mode, &frames.data()->m);
            for (const Matrix& frame : frames)
                EXPECT_TRUE(equal(Matrix(), frame));
        }
    }
};

using Generations = testing::Types<Data, DATAstruct>;
TYPED_TEST_SUITE(Frames, Generations, GenerationNames);

const double kHalf = std::sqrt(0.5);

} // namespace

// ---- What is accepted

TYPED_TEST(Frames, ANullPathWritesNothing)
{
    this->expect_untouched(nullptr);
}

TYPED_TEST(Frames, APathWithoutPointsOrOfAnotherWidthWritesNothing)
{
    double values[12] = {};
    for (const auto& [count, dim] :
         std::vector<std::pair<int, int>>{{0, 3}, {-1, 3}, {1, 2}, {3, 4}, {3, 0}, {3, -1}}) {
        auto path = wrapped<TypeParam>(values, count, dim);
        this->expect_untouched(&path);
    }
}

TYPED_TEST(Frames, PointsWithoutABufferWriteNothing)
{
    auto path = wrapped<TypeParam>(nullptr, 2, 3);
    this->expect_untouched(&path);
}

TYPED_TEST(Frames, MoreCoordinatesThan31BitsWriteNothing)
{
    double values[12] = {};
    auto path = wrapped<TypeParam>(values, 715827883, 3);
    this->expect_untouched(&path);
}

TYPED_TEST(Frames, MissingFramesAreNotWritten)
{
    auto path = points<TypeParam>({0, 0, 0, 1, 2, 3});
    find_frames(path.get(), 0, nullptr);
    auto single = points<TypeParam>({1, 2, 3});
    find_frames(single.get(), 0, nullptr);
    EXPECT_EQ(path->count, 2);
}

TYPED_TEST(Frames, ASinglePointGivesTheIdentityWithoutThePoint)
{
    for (const int mode : {0, 1}) {
        EXPECT_TRUE(equal(kIdentity, frames_of<TypeParam>({5, 6, 7}, mode)[0]));
        auto without_buffer = wrapped<TypeParam>(nullptr, 1, 3);
        Matrix frame;
        find_frames(&without_buffer, mode, &frame.m);
        EXPECT_TRUE(equal(kIdentity, frame));
    }
}

TYPED_TEST(Frames, AnyValueButZeroMeansClosed)
{
    const Vector xyz = {0, 0, 0, 4, 0, 0, 4, 3, 1, 0, 3, 0};
    for (const int value : {-1, 2, 256})
        EXPECT_TRUE(equal(this->closed(xyz)[1], frames_of<TypeParam>(xyz, value)[1]));
    EXPECT_FALSE(equal(this->closed(xyz)[1], this->open(xyz)[1]));
}

// ---- Open paths

TYPED_TEST(Frames, AVerticalSegmentTakesXAlongX)
{
    const auto frames = this->open({0, 0, 0, 0, 0, 1});
    EXPECT_TRUE(equal({{1, 0, 0, 0}, {0, -1, 0, 0}, {0, 0, -1, 0}, {0, 0, 0, 1}}, frames[0]));
    EXPECT_TRUE(equal({{1, 0, 0, 0}, {0, -1, 0, 0}, {0, 0, -1, 1}, {0, 0, 0, 1}}, frames[1]));
}

TYPED_TEST(Frames, AStraightPathTakesItsNormalInTheXyPlane)
{
    const auto frames = this->open({0, 0, 0, 1, 0, 0, 2, 0, 0});
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(equal({{0, 0, -1, double(i)}, {1, 0, 0, 0}, {0, -1, 0, 0}, {0, 0, 0, 1}}, frames[i]));
}

TYPED_TEST(Frames, ASlantedStraightPathTakesItsNormalInTheXyPlane)
{
    // Along (3, 4, 12) / 13; the normal in the plane is (-4, 3, 0) / 5.
    const auto frames = this->open({0, 0, 0, 3, 4, 12, 6, 8, 24});
    for (const Matrix& frame : frames) {
        EXPECT_TRUE(near({-0.8, 0.6, 0}, column(frame, 0)));
        EXPECT_TRUE(near({-3.0 / 13, -4.0 / 13, -12.0 / 13}, column(frame, 2)));
    }
}

TYPED_TEST(Frames, ARightAngleIsHalvedAtTheJoint)
{
    const auto frames = this->open({0, 0, 0, 1, 0, 0, 1, 1, 0});
    // x is the second segment crossed with the first, y x x = -z, all along.
    EXPECT_TRUE(equal({{0, 0, -1, 0}, {0, -1, 0, 0}, {-1, 0, 0, 0}, {0, 0, 0, 1}}, frames[0]));
    EXPECT_TRUE(near({0, 0, -1}, column(frames[1], 0)));
    EXPECT_TRUE(near({kHalf, -kHalf, 0}, column(frames[1], 1)));
    EXPECT_TRUE(near({-kHalf, -kHalf, 0}, column(frames[1], 2)));
    EXPECT_TRUE(near({1, 0, 0}, column(frames[1], 3)));
    EXPECT_TRUE(equal({{0, 1, 0, 1}, {0, 0, -1, 1}, {-1, 0, 0, 0}, {0, 0, 0, 1}}, frames[2]));
}

TYPED_TEST(Frames, TheJointIsHalvedWhateverTheSegmentsLengths)
{
    const auto frames = this->open({0, 0, 0, 5, 0, 0, 5, 0.01, 0});
    EXPECT_TRUE(near({-kHalf, -kHalf, 0}, column(frames[1], 2)));
}

TYPED_TEST(Frames, TheXAxisIsCarriedByProjection)
{
    // The path turns out of its first plane: up z at the end.
    const auto frames = this->open({0, 0, 0, 1, 0, 0, 1, 1, 0, 1, 1, 1});
    EXPECT_TRUE(near({0, 0, -1}, column(frames[1], 0)));
    // z there is -(0, 1, 1) / sqrt(2); what of (0, 0, -1) is left is (0, 0.5, -0.5).
    EXPECT_TRUE(near({0, -kHalf, -kHalf}, column(frames[2], 2)));
    EXPECT_TRUE(near({0, kHalf, -kHalf}, column(frames[2], 0)));
    EXPECT_TRUE(near({0, 0, -1}, column(frames[3], 2)));
    EXPECT_TRUE(near({0, 1, 0}, column(frames[3], 0)));
}

TYPED_TEST(Frames, TheFirstBendGivesTheFirstXAxis)
{
    // Straight over three segments, then a turn to y.
    const auto frames = this->open({0, 0, 0, 1, 0, 0, 2, 0, 0, 3, 0, 0, 3, 1, 0});
    EXPECT_TRUE(near({0, 0, -1}, column(frames[0], 0)));
    EXPECT_TRUE(near({0, 0, -1}, column(frames[4], 0)));
}

TYPED_TEST(Frames, ADoubledStartLooksAlongThePath)
{
    const auto frames = this->open({0, 0, 0, 0, 0, 0, 0, 2, 0, 0, 2, 2});
    EXPECT_TRUE(near({0, -1, 0}, column(frames[0], 2)));
    EXPECT_TRUE(near({-1, 0, 0}, column(frames[0], 0))); // (0, 0, 2) x (0, 2, 0)
}

TYPED_TEST(Frames, ShortStepsAtTheStartAddUp)
{
    // The steps are 4e-07 along x and 8e-07 along y: the first two together are shorter than 1e-06, the first three are
    // (4, 16) e-07.
    const auto frames = this->open({0, 0, 0, 4e-07, 0, 0, 4e-07, 8e-07, 0, 4e-07, 16e-07, 0, 4e-07, 16e-07, 5});
    EXPECT_TRUE(near({-4 / std::sqrt(272), -16 / std::sqrt(272), 0}, column(frames[0], 2)));
}

TYPED_TEST(Frames, TheThresholdItselfIsADirection)
{
    const auto z = [](double x) { return column(frames_of<TypeParam>({0, 0, 0, x, 0, 0}, 0)[0], 2); };
    EXPECT_TRUE(near({-1, 0, 0}, z(1.000001e-06)));
    EXPECT_TRUE(near({-1, 0, 0}, z(1e-06)));
    EXPECT_TRUE(near({0, 0, 1}, z(9.99999e-07)));
}

TYPED_TEST(Frames, CoincidentPointsTakeTheLastResort)
{
    for (const int mode : {0, 1})
        for (const int n : {2, 3, 7}) {
            Vector xyz;
            for (int i = 0; i < n; ++i)
                xyz.insert(xyz.end(), {1, 2, 3});
            for (const Matrix& frame : frames_of<TypeParam>(xyz, mode))
                EXPECT_TRUE(equal({{1, 0, 0, 1}, {0, 1, 0, 2}, {0, 0, 1, 3}, {0, 0, 0, 1}}, frame));
        }
}

TYPED_TEST(Frames, AnXAxisAlongTheFirstZIsReplaced)
{
    // The first two points coincide, so z comes from the second step and x from its last resort: both along x.
    const auto frames = this->open({0, 0, 0, 0, 0, 0, 5, 0, 0});
    EXPECT_TRUE(equal({{0, 0, -1, 0}, {-1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 0, 1}}, frames[0]));
}

TYPED_TEST(Frames, AnXAxisAlongAVerticalFirstZIsReplacedByX)
{
    // The first and the last segment are the same but for 5e-07, so z comes from the second step, along z; and they are
    // so long that their cross product, along z too, passes for an x axis.
    const auto frames = this->closed({0, 0, 0, 1e6, 0, 0, 1e6, 0, 1, 1e6, 0.5, 0});
    EXPECT_TRUE(near({1, 0, 0}, column(frames[0], 0), 0));
    EXPECT_TRUE(near({0, 0, -1}, column(frames[0], 2), 5e-07)); // it goes 5e-07 aside for each unit
}

TYPED_TEST(Frames, APointBetweenDoubledPointsTakesOverTheAxes)
{
    // The path bends up after three points in one place; no bend is seen, so x is (0, 1, 0) from the first step.
    const auto frames = this->open({0, 0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 3});
    EXPECT_TRUE(near({-1, 0, 0}, column(frames[1], 2))); // arrives along x, leaves nowhere
    EXPECT_TRUE(near({-1, 0, 0}, column(frames[2], 2))); // neither arrives nor leaves
    EXPECT_TRUE(near({0, 0, -1}, column(frames[3], 2)));
    EXPECT_TRUE(near({0, 0, -1}, column(frames[4], 2)));
    for (int i = 0; i < 5; ++i)
        EXPECT_TRUE(near({0, 1, 0}, column(frames[i], 0))) << i;
}

TYPED_TEST(Frames, ABendAlongTheXAxisTakesOverBothAxes)
{
    // As above, but it bends along the x axis (0, 1, 0), at an interior and at the last point.
    const auto frames = this->open({0, 0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1, 3, 0});
    for (int i = 0; i < 5; ++i) {
        EXPECT_TRUE(near({0, 1, 0}, column(frames[i], 0), 0)) << i;
        EXPECT_TRUE(near({-1, 0, 0}, column(frames[i], 2), 0)) << i;
    }
    EXPECT_TRUE(near({1, 3, 0}, column(frames[4], 3), 0));
}

TYPED_TEST(Frames, AHairpinTakesOverTheZAxis)
{
    const auto frames = this->open({0, 0, 0, 1, 0, 0, 2, 1, 0, 1, 0, 0});
    EXPECT_TRUE(near(column(frames[1], 2), column(frames[2], 2), 0));
    EXPECT_TRUE(near(column(frames[1], 0), column(frames[2], 0)));
    EXPECT_TRUE(near({2, 1, 0}, column(frames[2], 3), 0));
}

TYPED_TEST(Frames, AnXAxisAlongANewZTakesOverBothAxes)
{
    // A hairpin that rises by so little that its z axis is (0, -rise / 2, 1) while x is (0, 0, -1): rise / 2 is left of
    // x.
    const auto frames = [](double rise) {
        return frames_of<TypeParam>({0, 0, 0, 1, 0, 0, 1, 1, 0, 1, 0, -rise, 2, 2, 2}, 0);
    };
    const auto taken_over = frames(1.9e-06);
    EXPECT_TRUE(near(column(taken_over[1], 0), column(taken_over[2], 0), 0));
    EXPECT_TRUE(near(column(taken_over[1], 2), column(taken_over[2], 2), 0));
    const auto own = frames(2.1e-06);
    EXPECT_TRUE(near({0, 0, 1}, column(own[2], 2), 2.1e-06)); // but for the rise
    EXPECT_TRUE(near({0, -1, 0}, column(own[2], 0), 2.1e-06));
}

TYPED_TEST(Frames, TheLastFrameOfAnOpenPathTakesOverWhatItLacks)
{
    const auto frames = this->open({0, 0, 0, 1, 0, 0, 1, 1, 0, 1, 1, 0});
    EXPECT_TRUE(near({0, -1, 0}, column(frames[2], 2)));
    EXPECT_TRUE(near({0, -1, 0}, column(frames[3], 2)));
}

// ---- Closed paths

TYPED_TEST(Frames, ASquareKeepsItsXAxisAcrossThePlane)
{
    const auto frames = this->closed({0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0});
    const Vector z[4] = {{-kHalf, kHalf, 0}, {-kHalf, -kHalf, 0}, {kHalf, -kHalf, 0}, {kHalf, kHalf, 0}};
    for (int i = 0; i < 4; ++i) {
        EXPECT_TRUE(near({0, 0, -1}, column(frames[i], 0))) << i;
        EXPECT_TRUE(near(z[i], column(frames[i], 2))) << i;
    }
}

TYPED_TEST(Frames, TwoPointsThereAndBackHaveNoDirection)
{
    const auto frames = this->closed({0, 0, 0, 1, 0, 0});
    EXPECT_TRUE(equal({{0, -1, 0, 0}, {1, 0, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}, frames[0]));
    EXPECT_TRUE(equal({{0, -1, 0, 1}, {1, 0, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}, frames[1]));
}

TYPED_TEST(Frames, ATriangleHalvesItsLastCornerToo)
{
    const auto frames = this->closed({0, 0, 0, 1, 0, 0, 0, 1, 0});
    EXPECT_TRUE(near({0, 0, -1}, column(frames[2], 0)));
    const double half_turn = std::atan(1) / 2; // of 45 degrees between -y and the middle of the corner
    EXPECT_TRUE(near({std::cos(half_turn), std::sin(half_turn), 0}, // it arrives along (-1, 1) and leaves along -y
                     column(frames[2], 2), 1e-15));
}

TYPED_TEST(Frames, TheTurnLeftOverIsSpreadEvenly)
{
    const Vector xyz = {0, 0, 0, 4, 0, 0, 4, 3, 1, 0, 3, 0};
    const auto frames = this->closed(xyz);
    // Carry the first x axis around by hand.
    const Vector x0 = column(frames[0], 0);
    std::vector<Vector> carried = {x0};
    for (int i = 1; i < 4; ++i) {
        const Vector z = column(frames[i], 2);
        Vector x = carried.back();
        const double along = product(x, z);
        for (int k = 0; k < 3; ++k)
            x[k] -= along * z[k];
        normalize(x.data());
        carried.push_back(x);
    }
    const double angle = std::acos(product(carried[3], x0));
    ASSERT_GT(angle, 0.1);
    for (int i = 1; i < 4; ++i) {
        Vector z = column(frames[i], 2), y(3), expected(3);
        cross_product(z.data(), carried[i].data(), y.data());
        for (int k = 0; k < 3; ++k)
            expected[k] = std::cos(i * angle / 4) * carried[i][k] + std::sin(i * angle / 4) * y[k];
        EXPECT_TRUE(near(expected, column(frames[i], 0), 1e-14)) << i;
        cross_product(z.data(), expected.data(), y.data());
        EXPECT_TRUE(near(y, column(frames[i], 1), 1e-14)) << i;
        EXPECT_TRUE(near({xyz[3 * i], xyz[3 * i + 1], xyz[3 * i + 2]}, column(frames[i], 3), 0)) << i;
    }
}

TYPED_TEST(Frames, ATurnBackwardsIsMadeAllTheWayRound)
{
    // With the third point below, the turn is the other way: close to a full one, a quarter of it at the second point.
    const auto forwards = this->closed({0, 0, 0, 4, 0, 0, 4, 3, 0.001, 0, 3, 0});
    const auto backwards = this->closed({0, 0, 0, 4, 0, 0, 4, 3, -0.001, 0, 3, 0});
    EXPECT_TRUE(near({0, 0, -1}, column(forwards[1], 0), 1e-3)); // the point is so far off the plane
    EXPECT_TRUE(near({kHalf, -kHalf, 0}, column(backwards[1], 0), 1e-3));
}

TYPED_TEST(Frames, AWeeTurnBackwardsCountsAsForwards)
{
    // At this height of the third point the sine of the turn passes -1e-06.
    const double height = -5.6568542494992941e-06;
    const auto second_x = [](double h) {
        return column(frames_of<TypeParam>({0, 0, 0, 4, 0, 0, 4, 3, h, 0, 3, 0}, 1)[1], 0);
    };
    EXPECT_TRUE(near({0, 0, -1}, second_x(0.99999 * height), 6e-06)); // the point is so far off the plane
    EXPECT_TRUE(near({kHalf, -kHalf, 0}, second_x(1.00001 * height), 6e-06));
}

TYPED_TEST(Frames, ATurnOfExactlyTheThresholdBackwardsCountsAsBackwards)
{
    // Heights found by trying: the sine of the turn is -1e-06 at the middle one and a neighbour of it at the others.
    const auto second_x = [](double h) {
        return column(frames_of<TypeParam>({0, 0, 0, 4, 0, 0, 4, 1, h, 0, 1, 0}, 1)[1], 0);
    };
    EXPECT_TRUE(near({0, 0, -1}, second_x(-0x1.7ba004189202fp-18), 6e-06)); // as far off the plane
    EXPECT_FALSE(near({0, 0, -1}, second_x(-0x1.7ba004189202ap-18), 0.5));
    EXPECT_FALSE(near({0, 0, -1}, second_x(-0x1.7ba004189202bp-18), 0.5));
}

TYPED_TEST(Frames, ACosineAboveOneMakesAllTurnedAxesNaN)
{
    // A planar loop whose x axis is longer than 1 by one rounding.
    const Vector xyz = {0, 0, 0, 1, 0, 1, 1, 1, 1, 0, 1, 0};
    const auto frames = this->closed(xyz);
    const Vector x0 = column(frames[0], 0);
    ASSERT_GT(product(x0, x0), 1.0);
    for (int j = 0; j < 4; ++j)
        for (int i = 0; i < 4; ++i)
            EXPECT_TRUE(std::isfinite(frames[0].m[i][j]));
    for (int f = 1; f < 4; ++f)
        for (int i = 0; i < 4; ++i) {
            EXPECT_TRUE(std::isnan(frames[f].m[i][0])) << f << i;
            EXPECT_TRUE(std::isnan(frames[f].m[i][1])) << f << i;
            EXPECT_TRUE(std::isfinite(frames[f].m[i][2])) << f << i;
            EXPECT_EQ(frames[f].m[i][3], i < 3 ? xyz[3 * f + i] : 1.0) << f << i;
        }
}

/// A planar loop of n points about the origin, in a plane turned at random.
Vector planar_loop(Random& random, int n)
{
    double axis[3], across[3], normal[3] = {random.uniform(-1, 1), random.uniform(-1, 1), random.uniform(0.1, 1)};
    double reference[3] = {1, 0, 0};
    normalize(normal);
    cross_product(normal, reference, axis);
    normalize(axis);
    cross_product(normal, axis, across);
    Vector xyz;
    for (int i = 0; i < n; ++i) {
        const double turn = i * 6.283185307179586 / n, radius = random.uniform(1, 3);
        for (int k = 0; k < 3; ++k)
            xyz.push_back(radius * (std::cos(turn) * axis[k] + std::sin(turn) * across[k]));
    }
    return xyz;
}

TYPED_TEST(Frames, TwoInFiveTiltedPlanarLoopsHaveNoAxesLeft)
{
    Random random(73);
    int lost = 0;
    const int loops = rounds(1000);
    for (int round = 0; round < loops; ++round)
        lost += std::isnan(this->closed(planar_loop(random, random.between(4, 40)))[1].m[0][0]) ? 1 : 0;
    EXPECT_GT(lost, loops / 4);
    EXPECT_LT(lost, loops / 2);
}

TYPED_TEST(Frames, AnOpenPathOnceAroundGivesTheFramesOfAPlanarLoop)
{
    Random random(74);
    int compared = 0;
    for (int round = 0; round < rounds(300); ++round) {
        const int n = random.between(4, 40);
        const Vector loop = planar_loop(random, n);
        Vector around(loop.end() - 3, loop.end()); // the last point, all points, the first
        around.insert(around.end(), loop.begin(), loop.end());
        around.insert(around.end(), loop.begin(), loop.begin() + 3);
        const auto frames = this->closed(loop), unrolled = this->open(around);
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < 4; ++j) {
                const Vector seen = column(unrolled[i + 1], j);
                ASSERT_TRUE(std::isfinite(seen[0] + seen[1] + seen[2])) << "round " << round;
                if (std::isnan(frames[1].m[0][0]))
                    continue;
                // A cosine of 1 up to rounding is a turn of up to 2e-08 or so, spread over the loop.
                ASSERT_TRUE(near(column(frames[i], j), seen, 5e-08)) << "round " << round;
                ++compared;
            }
    }
    EXPECT_GT(compared, 1000);
}

TYPED_TEST(Frames, TheLastFrameOfALoopTakesOverBothAxes)
{
    // Doubled points lead the x axis from (0, 1, 0) over (-1, 1, 0) to (-1, 0, 0), and the loop closes along it.
    const Vector xyz = {5, 1, -3, 0, 1, 0, 0, 1, 0, 1, 2, 0, 0, 3, 0, 0, 3, 0, 0, 4, 0, 0, 4, 0, 0, 1, -3, 0, 1, -3};
    const auto frames = this->closed(xyz);
    EXPECT_TRUE(near({0, kHalf, kHalf}, column(frames[8], 2)));
    EXPECT_TRUE(near({0, kHalf, kHalf}, column(frames[9], 2)));
    EXPECT_TRUE(near({0, 1, -3}, column(frames[9], 3), 0));
}

TYPED_TEST(Frames, TheLastFrameOfALoopTakesOverTheZAxisOfAHairpin)
{
    const auto frames = this->closed({0, 0, 0, 1, 0, 0, 1, 1, 0.5, 0, 2, 0, 0, 3, 0});
    EXPECT_TRUE(near(column(frames[3], 2), column(frames[4], 2), 0));
}

// ---- Properties

TYPED_TEST(Frames, FramesAreOrthonormalAndStandAtThePoints)
{
    Random random(71);
    for (int round = 0; round < rounds(300); ++round) {
        const int n = random.between(4, 50); // a loop of three is planar and may be NaN
        const Vector xyz = random.uniforms(3 * n, -10, 10);
        for (const int mode : {0, 1}) {
            const auto frames = frames_of<TypeParam>(xyz, mode);
            for (int i = 0; i < n; ++i) {
                for (int a = 0; a < 3; ++a)
                    for (int b = 0; b < 3; ++b)
                        ASSERT_NEAR(product(column(frames[i], a), column(frames[i], b)), a == b ? 1 : 0,
                                    1e-12); // carried on for 40 frames
                ASSERT_TRUE(near({xyz[3 * i], xyz[3 * i + 1], xyz[3 * i + 2]}, column(frames[i], 3), 0));
            }
        }
    }
}

TYPED_TEST(Frames, AFullRoundOfFramesOfALoopComesBackToTheFirst)
{
    Random random(72);
    for (int round = 0; round < rounds(100); ++round) {
        // A smooth loop that winds in space: the step from the last frame to the first turns like all others.
        const int n = 400;
        const double lift = random.uniform(0.2, 1), phase = random.uniform(0, 6);
        Vector xyz;
        for (int i = 0; i < n; ++i) {
            const double t = i * 6.283185307179586 / n;
            xyz.insert(xyz.end(), {3 * std::cos(t), 3 * std::sin(t), lift * std::sin(2 * t + phase)});
        }
        const auto frames = this->closed(xyz);
        for (int i = 0; i < n;
             ++i) // neighbouring x axes differ by the bend and the share of the turn, at most 2 pi / n
            ASSERT_GT(product(column(frames[i], 0), column(frames[(i + 1) % n], 0)), std::cos(0.06)) << i;
    }
}

// ---- The differences

TEST(path2xfm, DoesNotLookAtTheKind)
{
    double values[6] = {0, 0, 0, 0, 0, 1};
    for (const int kind : {-1, 1, 2, 9}) {
        auto path = wrapped<Data>(values, 2, 3);
        path.type = kind;
        std::vector<Matrix> frames(2);
        path2xfm(&path, 0, &frames.data()->m);
        EXPECT_EQ(frames[1].m[2][3], 1.0) << kind;
    }
}

TEST(PATH2xfm, WantsDoubles)
{
    double values[6] = {0, 0, 0, 0, 0, 1};
    for (const int kind : {-1, 1, 2, 3, 4, 9})
        for (const int count : {1, 2}) {
            auto path = wrapped<DATAstruct>(values, count, 3);
            path.type = kind;
            Matrix frames[2];
            PATH2xfm(&path, 0, &frames[0].m);
            EXPECT_TRUE(equal(Matrix(), frames[0])) << kind;
        }
}

TEST(PATH2xfm, ABufferAllocatedTooSmallWritesNothing)
{
    auto path = points<DATAstruct>({0, 0, 0, 0, 0, 1});
    path->count = 3;
    Matrix frames[3];
    PATH2xfm(path, 0, &frames[0].m);
    EXPECT_TRUE(equal(Matrix(), frames[0]));
}

TEST(path2xfm, TurnsBackwardsByTheShortFullTurn)
{
    const Vector xyz = {0, 0, 0, 4, 0, 0, 4, 3, -1, 0, 3, 0};
    const auto shorter = frames_of<Data>(xyz, 1), full = frames_of<DATAstruct>(xyz, 1);
    // The turns of the second frames differ by a quarter of 2 pi - 6.2831852 = 1.0717958e-07.
    Vector short_x = column(shorter[1], 0), full_x = column(full[1], 0), axis(3);
    cross_product(short_x.data(), full_x.data(), axis.data());
    EXPECT_NEAR(product(axis, column(full[1], 2)), 1.0717958e-07 / 4, 1e-14);
    EXPECT_TRUE(equal(shorter[0], full[0]));
}

TEST(path2xfm, TurnsForwardsLikePATH2xfm)
{
    const Vector xyz = {0, 0, 0, 4, 0, 0, 4, 3, 1, 0, 3, 0};
    const auto data = frames_of<Data>(xyz, 1), datastruct = frames_of<DATAstruct>(xyz, 1);
    for (int i = 0; i < 4; ++i)
        EXPECT_TRUE(equal(data[i], datastruct[i]));
}

} // namespace korvale::test
