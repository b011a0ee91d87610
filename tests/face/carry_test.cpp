// Values carried along with points: whose value each point takes, and when nothing is copied.
#include "direct.h"

#include <numeric>

namespace korvale::test {
namespace {

using Names = std::vector<std::string>;

// Moved in by 1 its edge of 0.28 is lost, and vertex 2 merges into 3.
const Outline kChamfered = {{0, 0, 0}, {4, 0, 0}, {4, 3.8, 0}, {3.8, 4, 0}, {0, 4, 0}};
const Names kNames = {"south", "east", "chamfer", "north", "west"};

template <class T>
std::vector<T> copy_of(const Carried<T>& carried)
{
    return {carried.begin(), carried.end()};
}

double mean(std::span<const double> values)
{
    return std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
}

TEST(FaceCarry, GivesTheValuesThemselvesWherePointsAreTheVertices)
{
    for (const double distance : {1.0, -1.0}) { // also where one was removed and is kept
        const Offset border = offset(kChamfered, distance);
        const Carried<std::string> names = carry(kNames, border);
        EXPECT_TRUE(names.is_view());
        EXPECT_EQ(names.data(), kNames.data());
        EXPECT_EQ(names.size(), 5u);
        EXPECT_FALSE(names.empty());
        EXPECT_EQ(names[4], "west");
    }
}

TEST(FaceCarry, LeavesOutTheValuesOfVerticesThatAreLeftOut)
{
    const Carried<std::string> names = carry(kNames, offset(kChamfered, -1, {.keep_vertices = false}));
    EXPECT_FALSE(names.is_view());
    EXPECT_EQ(copy_of(names), (Names{"south", "east", "north", "west"}));
}

TEST(FaceCarry, GivesAllPointsOfAJoinTheValueOfTheirVertex)
{
    const Offset border = offset(kChamfered, 1, {.join = Join::bevel});
    ASSERT_EQ(border.points.size(), 10u);
    EXPECT_EQ(copy_of(carry(kNames, border)),
              (Names{"south", "south", "east", "east", "chamfer", "chamfer", "north", "north", "west", "west"}));
    const Offset sharp = offset(kChamfered, 1, {.miter_limit = 4}); // joins that cut nothing
    EXPECT_TRUE(carry(kNames, sharp).is_view());
}

TEST(FaceCarry, MixesWhatMerged)
{
    const std::vector<double> heat = {0, 1, 2, 4, 8};
    const Offset left = offset(kChamfered, -1, {.keep_vertices = false});
    EXPECT_EQ(copy_of(carry(heat, left, mean)), (std::vector<double>{0, 1, 3, 8}));
    const Offset kept = offset(kChamfered, -1);
    EXPECT_EQ(copy_of(carry(heat, kept, mean)), (std::vector<double>{0, 1, 3, 3, 8}));
    const Offset joined = offset(kChamfered, -1, {.join = Join::round});
    EXPECT_EQ(copy_of(carry(heat, joined, mean)), (std::vector<double>{0, 1, 3, 8}));
    EXPECT_TRUE(carry(heat, offset(kChamfered, 1), mean).is_view());
}

TEST(FaceCarry, MixesChainsOfMerges)
{
    Offset chain = offset(kChamfered, 1);
    chain.merged_into = Array<std::int32_t>(5);
    std::ranges::copy(std::vector{1, 2, 3, 3, 4}, chain.merged_into.begin()); // 0 into 1 into 2 into 3
    std::ranges::fill_n(chain.removed.begin(), 3, std::uint8_t{1});
    const Carried<std::string> names = carry(kNames, chain, [](std::span<const std::string> merged) {
        return std::accumulate(merged.begin(), merged.end(), std::string());
    });
    const std::string all = "southeastchamfernorth";
    EXPECT_EQ(copy_of(names), (Names{all, all, all, all, "west"}));
}

TEST(FaceCarry, TakesValuesOfManyOutlines)
{
    Outline points = {{9, 9, 9}}; // of no outline
    for (int copies = 0; copies < 2; ++copies)
        points.insert(points.end(), kChamfered.begin(), kChamfered.end());
    std::vector<double> values(11);
    std::iota(values.begin(), values.end(), 0);
    const Borders borders = offset_many(points, {1, 6, 11}, {1, -1}, {.keep_vertices = false});
    EXPECT_EQ(copy_of(carry(values, borders)), (std::vector<double>{1, 2, 3, 4, 5, 6, 7, 9, 10}));
    EXPECT_EQ(copy_of(carry(values, borders, mean)), (std::vector<double>{1, 2, 3, 4, 5, 6, 7, 8.5, 10}));
    EXPECT_EQ(copy_of(carry(values, offset_many(points, {6, 11}, -1), mean)),
              (std::vector<double>{6, 7, 8.5, 8.5, 10}));
    values.pop_back();
    EXPECT_EQ(refusal_of([&] { carry(values, borders); }),
              "carry: values must be at least 11, one for each point of the outline, but there are 10");
}

TEST(FaceCarry, TakesValuesToAllPieces)
{
    const Outline waist = {{0, 0, 0},  {9, 0, 0},  {11, 4, 0}, {13, 0, 0}, {22, 0, 0},
                           {22, 9, 0}, {13, 9, 0}, {11, 5, 0}, {9, 9, 0},  {0, 9, 0}};
    std::vector<int> numbers(10);
    std::iota(numbers.begin(), numbers.end(), 0);
    const Rings rings = offset_rings(waist, -1);
    EXPECT_EQ(copy_of(carry(numbers, rings)), std::vector<int>(rings.sources.begin(), rings.sources.end()));
    EXPECT_TRUE(carry(numbers, offset_rings(waist, 1)).is_view());
}

TEST(FaceCarry, TakesValuesAlongALineAndBack)
{
    const Band road = band({{0, 0, 0}, {4, 0, 0}, {8, 3, 0}}, 0.5, {.both_sides = true});
    EXPECT_EQ(copy_of(carry(Names{"a", "b", "c"}, road)), (Names{"a", "b", "c", "c", "b", "a"}));
}

TEST(FaceCarry, MayGoOnFromWhatItGave)
{
    const Offset first = offset(kChamfered, -1, {.keep_vertices = false});
    const Carried<std::string> names = carry(kNames, first), more = carry(names, offset(first.points, 0.5));
    EXPECT_EQ(more.data(), names.data());
    const Carried<std::string> copy = names;
    EXPECT_NE(copy.data(), names.data());
    EXPECT_EQ(copy[3], "west");
}

TEST(FaceCarry, RefusesOtherThanOneValueForEachPoint)
{
    const Offset border = offset(kChamfered, 1);
    const std::vector<double> four(4);
    EXPECT_EQ(refusal_of([&] { carry(four, border); }),
              "carry: values must be 5, one for each point of the outline, but there are 4");
    EXPECT_EQ(refusal_of([&] { carry(four, border, mean); }),
              "carry: values must be 5, one for each point of the outline, but there are 4");
    EXPECT_EQ(try_carry(four, border).error().argument(), "values");
    EXPECT_TRUE(try_carry(kNames, border)->is_view());
}

} // namespace
} // namespace korvale::test
