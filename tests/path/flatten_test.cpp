// What both flattening functions do alike: paths without points, the single point, the second matrix that may be
// missing, and that the transforms flatten.
#include "path/flatten.h"

#include <cmath>
#include <limits>
#include <type_traits>

#include "math/rotation.h"
#include "tests/path/transforms.h"
#include "tests/support/bits.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

template <class Array>
class Flattening : public testing::Test {
protected:
    /// Both transforms are identities, and the flavour with a result reports success.
    static void expect_identities(Array* path)
    {
        for (const int closed : {0, 1}) {
            const Flattened f = flattened(path, closed);
            EXPECT_TRUE(equal(kIdentity, f.forward));
            EXPECT_TRUE(equal(kIdentity, f.reverse));
            if constexpr (std::is_same_v<Array, Data>) {
                EXPECT_EQ(f.result, 1);
            }
        }
    }

    /// Calls the flavour with a null second matrix.
    static void flatten_forward_only(Array* path, Matrix& forward, int closed)
    {
        if constexpr (std::is_same_v<Array, Data>)
            data_to_xy_xfms(path, forward.m, nullptr, closed);
        else
            DATA_to_xy_xfms(path, forward.m, nullptr, closed);
    }
};

using Generations = testing::Types<Data, DATAstruct>;
TYPED_TEST_SUITE(Flattening, Generations, GenerationNames);

} // namespace

TYPED_TEST(Flattening, ANullPathGivesIdentities)
{
    this->expect_identities(nullptr);
}

TYPED_TEST(Flattening, AnEmptyPathGivesIdentities)
{
    double values[3] = {1, 2, 3};
    for (const int count : {0, -1}) {
        auto path = wrapped<TypeParam>(values, count, 3);
        this->expect_identities(&path);
    }
}

TYPED_TEST(Flattening, APathOfAnotherWidthGivesIdentities)
{
    double values[12] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    for (const int dim : {-1, 0, 2, 4}) {
        auto path = wrapped<TypeParam>(values, 3, dim);
        this->expect_identities(&path);
    }
}

TYPED_TEST(Flattening, APathOfAnotherKindGivesIdentities)
{
    double values[3] = {1, 2, 3};
    int32_t whole[3] = {1, 2, 3};
    uint8_t bytes[3] = {1, 2, 3};
    for (const int kind : {-7, -1, 1, 2, 3, 4, 5, 1000}) {
        auto path = wrapped<TypeParam>(values, 1, 3);
        path.ivals = whole;
        path.bvals = bytes;
        path.type = kind;
        this->expect_identities(&path);
    }
}

TYPED_TEST(Flattening, APathWithoutABufferGivesIdentities)
{
    auto path = wrapped<TypeParam>(nullptr, 4, 3);
    this->expect_identities(&path);
}

TYPED_TEST(Flattening, ASinglePointIsMovedAlongZAlone)
{
    for (const int closed : {0, 1}) {
        const Flattened f = flattened_points<TypeParam>({1, 2, 5}, closed);
        EXPECT_TRUE(equal({{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, -5}, {0, 0, 0, 1}}, f.forward));
        EXPECT_TRUE(equal({{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 5}, {0, 0, 0, 1}}, f.reverse));
    }
}

TYPED_TEST(Flattening, TwoCoincidentPointsCountAsOne)
{
    for (const int closed : {0, 1}) {
        const Flattened f = flattened_points<TypeParam>({1, 2, 5, 1, 2, 5}, closed);
        EXPECT_TRUE(equal({{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, -5}, {0, 0, 0, 1}}, f.forward));
        EXPECT_TRUE(equal({{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 5}, {0, 0, 0, 1}}, f.reverse));
    }
}

TYPED_TEST(Flattening, AMissingSecondMatrixChangesNothingInTheFirst)
{
    const std::vector<std::vector<double>> paths = {
        {1, 2, 5},                                  // one point
        {1, 2, 5, 1, 2, 5},                         // two in one place
        {1, 2, 3, 4, 6, 8},                         // a segment
        {1, 2, 3, 2, 4, 6, 3, 6, 9},                // a line
        {0, 0, 2, 3, 0, 1, 3, 4, 1.5, -1, 4, 2.25}, // an outline
    };
    for (const auto& xyz : paths)
        for (const int closed : {0, 1}) {
            auto path = points<TypeParam>(xyz);
            Matrix alone;
            this->flatten_forward_only(path.get(), alone, closed);
            EXPECT_TRUE(equal(flattened(path.get(), closed).forward, alone));
        }
}

TYPED_TEST(Flattening, AMissingFirstMatrixIsRefused)
{
    auto path = points<TypeParam>({0, 0, 0, 1, 0, 0, 0, 1, 0});
    const Matrix untouched;
    Matrix reverse;
    if constexpr (std::is_same_v<TypeParam, Data>)
        EXPECT_EQ(data_to_xy_xfms(path, nullptr, reverse.m, 1), -1);
    else
        DATA_to_xy_xfms(path, nullptr, reverse.m, 1);
    EXPECT_TRUE(equal(untouched, reverse));
}

TYPED_TEST(Flattening, MoreCoordinatesThan31BitsAreRefused)
{
    double values[9] = {0, 0, 7, 1, 0, 7, 0, 1, 7};
    auto path = wrapped<TypeParam>(values, 715827883, 3); // 2^31 + 1 coordinates
    for (const int closed : {0, 1}) {
        const Flattened f = flattened(&path, closed);
        EXPECT_TRUE(equal(kIdentity, f.forward));
        EXPECT_TRUE(equal(kIdentity, f.reverse));
        if constexpr (std::is_same_v<TypeParam, Data>) {
            EXPECT_EQ(f.result, -1);
        }
    }
}

TYPED_TEST(Flattening, AnyValueButZeroMeansClosed)
{
    auto path = points<TypeParam>({5, 0, 1, 9, 0, 2, 9, 8, 4, 4, 8, 3, 1, 3, 1});
    const Flattened closed = flattened(path.get(), 1);
    for (const int value : {-1, 2, 256, std::numeric_limits<int>::min()})
        EXPECT_TRUE(equal(closed.forward, flattened(path.get(), value).forward));
    EXPECT_FALSE(equal(closed.forward, flattened(path.get(), 0).forward));
}

TYPED_TEST(Flattening, ThePointsAreOnlyRead)
{
    const std::vector<double> xyz = {5, 0, 1, 9, 0, 2, 9, 8, 4, 4, 8, 3, 1, 3, 1};
    auto path = points<TypeParam>(xyz);
    for (const int closed : {0, 1})
        flattened(path.get(), closed);
    EXPECT_TRUE(same_bits(xyz, path->dvals));
}

TYPED_TEST(Flattening, PlanarOutlinesEndUpInThePlaneAndComeBack)
{
    Random random(61);
    for (int round = 0; round < rounds(300); ++round) {
        // A star-shaped outline of any size from 1 to 1000, turned and moved.
        const int n = random.between(3, 40);
        const double size = std::pow(10.0, random.uniform(0, 3));
        Matrix pose;
        double scale[3] = {1, 1, 1};
        double turn[3] = {random.uniform(-3, 3), random.uniform(-3, 3), random.uniform(-3, 3)};
        double move[3] = {random.uniform(-size, size), random.uniform(-size, size), random.uniform(-size, size)};
        SRT2Transform(scale, turn, move, pose.m);
        std::vector<double> xyz;
        for (int i = 0; i < n; ++i) {
            const double angle = (i + random.uniform(-0.3, 0.3)) * 6.283185307179586 / n;
            const double radius = size * random.uniform(0.5, 1);
            xyz.insert(xyz.end(), {radius * std::cos(angle), radius * std::sin(angle), 0});
        }
        xyz = carried(xyz, pose);

        for (const int closed : {0, 1}) {
            const Flattened f = flattened_points<TypeParam>(xyz, closed);
            const std::vector<double> flat = carried(xyz, f.forward);
            const std::vector<double> back = carried(flat, f.reverse);
            // Rounding is relative to the coordinates, amplified by at most the sine of 1e-6 the open method accepts;
            // these outlines have corners above 1e-2.
            const double tolerance = 1e-10 * size;
            for (int i = 0; i < n; ++i)
                ASSERT_NEAR(flat[3 * i + 2], 0, tolerance) << "point " << i << ", closed " << closed;
            for (int i = 0; i < 3 * n; ++i)
                ASSERT_NEAR(back[i], xyz[i], tolerance) << "closed " << closed;
        }
    }
}

TYPED_TEST(Flattening, NumbersThatAreNoneDoNoHarm)
{
    Random random(62);
    for (int round = 0; round < rounds(3000); ++round) {
        const std::vector<double> xyz = random.awkwards(3 * random.between(1, 8));
        auto path = points<TypeParam>(xyz);
        for (const int closed : {0, 1}) {
            const Flattened f = flattened(path.get(), closed);
            ASSERT_TRUE(same_bits(xyz, path->dvals));
            ASSERT_NE(f.forward.m[0][0], Matrix().m[0][0]);
            ASSERT_NE(f.reverse.m[0][0], Matrix().m[0][0]);
            if constexpr (std::is_same_v<TypeParam, Data>) {
                ASSERT_TRUE(f.result == 1 || f.result == -1);
            }
        }
    }
}

} // namespace korvale::test
