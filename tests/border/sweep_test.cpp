// The sweep seen through the borders it makes. Outlines are written so that the flattened plane is known: z = 0, with
// the outline counter-clockwise in it.
#include "border/border.h"

#include <algorithm>
#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/border/records.h"
#include "tests/support/bits.h"

namespace korvale::test {
using testing::Pointwise;

namespace {

const Coordinates kUnitSquare = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};

/// How fast both coordinates of the unit square's corners move: (1 / |D|) * (1 / sqrt(0.5)) in doubles.
const double kCornerSpeed = 0x1.ffffffffffffep-1;

template <class Flavour>
class Sweep : public testing::Test {
};

struct FlavourNames {
    template <class Flavour>
    static std::string GetName(int)
    {
        return std::is_same_v<Flavour, FirstFlavour> ? "Border" : "BORDER_BORDER";
    }
};

using Flavours = testing::Types<FirstFlavour, SecondFlavour>;
TYPED_TEST_SUITE(Sweep, Flavours, FlavourNames);

size_t points_in(const Result& result)
{
    return result.border.size() / 3;
}

/// The farthest that two points of the border lie apart in x or y.
double spread_of(const Result& result)
{
    double spread = 0.0;
    for (size_t k = 0; k < 2; ++k)
        for (size_t i = k; i < result.border.size(); i += 3)
            for (size_t j = k; j < i; j += 3)
                spread = std::max(spread, std::fabs(result.border[i] - result.border[j]));
    return spread;
}

MATCHER_P(Near, tolerance, "")
{
    return std::fabs(std::get<0>(arg) - std::get<1>(arg)) <= tolerance;
}

} // namespace

TYPED_TEST(Sweep, GrowsTheUnitSquareToASquareOfSideThree)
{
    const Result result = border_of<TypeParam>({kUnitSquare, 1.0});
    ASSERT_EQ(result.code, 1);
    const double low = -kCornerSpeed, high = 1.0 + kCornerSpeed;
    EXPECT_TRUE(same_bits({low, low, 0, high, low, 0, high, high, 0, low, high, 0}, result.border));
}

TYPED_TEST(Sweep, ShrinksTheUnitSquareByANegativeDistance)
{
    const Result result = border_of<TypeParam>({kUnitSquare, -0.25});
    ASSERT_EQ(result.code, 1);
    const double low = 0.25 * kCornerSpeed, high = 1.0 - low;
    // The first flavour flattens about another corner and rounds once more.
    EXPECT_THAT(result.border,
                Pointwise(Near(2e-16), Coordinates({low, low, 0, high, low, 0, high, high, 0, low, high, 0})));
}

TYPED_TEST(Sweep, ADistanceOfZeroReturnsTheOutline)
{
    const Coordinates path = {0, 0, 0, 3, 0, 0, 3, 0, 0, 3, 2, 0, 1, 1, 0};
    for (const double zero : {0.0, -0.0}) {
        const Result result = border_of<TypeParam>({path, zero, false, true});
        ASSERT_EQ(result.code, 1);
        EXPECT_THAT(result.border, Pointwise(Near(1e-15), path));
    }
}

TYPED_TEST(Sweep, AtHalfItsSideTheUnitSquareKeepsFourPointsOnOneSpot)
{
    const Result result = border_of<TypeParam>({kUnitSquare, -0.5, false, true});
    ASSERT_EQ(result.code, 1);
    EXPECT_EQ(points_in(result), 4u);
    EXPECT_LT(spread_of(result), 3e-16);
}

TYPED_TEST(Sweep, BelowHalfItsSideTheUnitSquareIsASinglePoint)
{
    for (const double distance : {-0.5000001, -0.6, -100.0}) {
        const Result kept = border_of<TypeParam>({kUnitSquare, distance, true, true});
        EXPECT_EQ(points_in(kept), 4u);
        EXPECT_EQ(spread_of(kept), 0.0);
        const Result single = border_of<TypeParam>({kUnitSquare, distance, false, true});
        ASSERT_EQ(points_in(single), 1u);
        EXPECT_TRUE(same_bits(single.border.data(), kept.border.data(), 3));
    }
}

TEST(BORDER_BORDER, TheCollapsedSquareSitsOnTheVertexLeftUnmoved)
{
    for (const double distance : {-0.5000001, -0.6})
        EXPECT_TRUE(
            same_bits({0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1, 0}, border_of<SecondFlavour>({kUnitSquare, distance}).border));
}

TYPED_TEST(Sweep, MergesPointsThatLieCloserThanTheShortestEdge)
{
    const auto with_gap = [](double gap) {
        return border_of<TypeParam>({{0, 0, 0, 3, 0, 0, 3, gap, 0, 3, 2, 0, 0, 2, 0}, 1.0, false, true});
    };
    EXPECT_EQ(points_in(with_gap(1.0e-06)), 4u);
    EXPECT_EQ(points_in(with_gap(std::nextafter(1.2e-06, 0.0))), 4u);
    EXPECT_EQ(points_in(with_gap(1.2e-06)), 5u);
    EXPECT_EQ(points_in(with_gap(1.3e-06)), 5u);
}

TYPED_TEST(Sweep, RemovesASpikeBeforeAnyMovement)
{
    // The spike leaves the bottom edge at (2, 0) and comes back to it.
    const Coordinates spiked = {0, 0, 0, 2, 0, 0, 2, -3, 0, 2, 0, 0, 4, 0, 0, 4, 4, 0, 0, 4, 0};
    const Result result = border_of<TypeParam>({spiked, 1.0, false, false});
    ASSERT_EQ(result.code, 1);
    for (size_t i = 1; i < result.border.size(); i += 3)
        EXPECT_GE(result.border[i], -1.0 - 1e-12);
}

TYPED_TEST(Sweep, ANarrowWaistSplitsAndTheLargerPieceSurvives)
{
    // Two rooms, 4 x 4 on the left and 2 x 4 on the right, joined by a corridor of height 1.
    const Coordinates rooms = {0, 0, 0, 4, 0, 0, 4, 1.5, 0, 6, 1.4, 0, 6, 0, 0, 8, 0, 0,
                               8, 4, 0, 6, 4, 0, 6, 2.6, 0, 4, 2.5, 0, 4, 4, 0, 0, 4, 0};
    const Result split = border_of<TypeParam>({rooms, -0.75, false, true});
    ASSERT_EQ(split.code, 1);
    ASSERT_GE(points_in(split), 4u);
    for (size_t i = 0; i < split.border.size(); i += 3)
        EXPECT_LT(split.border[i], 4.0);
    const Result whole = border_of<TypeParam>({rooms, -0.75, false, false});
    double right = 0.0;
    for (size_t i = 0; i < whole.border.size(); i += 3)
        right = std::max(right, whole.border[i]);
    EXPECT_GT(right, 6.0);
}

} // namespace korvale::test
