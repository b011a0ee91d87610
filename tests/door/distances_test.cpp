// Outlines moved by many distances in one call: against each distance alone.

#include <gmock/gmock.h>

#include "moved_rings.h"
#include "tests/support/random.h"

namespace korvale::test {
TEST(DoorOffsetDistances, GiveTheRingsOfEachInTheOrderOfTheDistances)
{
    // Two squares of side 4 with a neck of 1 between them, which closes at 0.5; nothing is left at 2.
    const Numbers distances = {-1, 0.5, -3, 0, -0.25, -1};
    const std::vector<Copied> rings = rings_of(beads(2), distances);
    const std::vector<int64_t> left = {2, 1, 0, 1, 1, 2};
    const Numbers ends = {-1, 0.5, -2, 0, -0.25, -1}, areas = {4, 50, 0, 33, 25.25, 4}; // of the first ring
    for (size_t i = 0; i < distances.size(); ++i) {
        EXPECT_EQ(rings[i].left(), left[i]) << i;
        EXPECT_EQ(rings[i].ends[0], ends[i]) << i;
        const auto end = rings[i].points.begin() + 3 * rings[i].starts[1];
        EXPECT_NEAR(area_of(Numbers(rings[i].points.begin(), end)), areas[i], 1e-14)
            << i; // products of coordinates below 10
    }
    EXPECT_NEAR(rings[0].births[1], -0.5, 2e-16); // a rounding
    EXPECT_EQ(rings[0].parents[1], 0);
    EXPECT_EQ(difference(rings[0], rings[5]), "");
    EXPECT_EQ(rings_of(beads(2), {}).size(), 0u);
}

TEST(DoorOffsetDistances, KeepTheBitsOfEachAlone)
{
    Random random(1286);
    int64_t many = 0;
    for (int round = 0; round < rounds(1500) && !testing::Test::HasFailure(); ++round) {
        const Numbers outline = random.one_in(3) ? any_crowd(random) : any_outline(random);
        korvale_offset_options options = offset_options(random.one_in(2) ? 0 : 1.5, 0, !random.one_in(8));
        if (random.one_in(4)) {
            options.join = random.between(KORVALE_JOIN_MITER, KORVALE_JOIN_ROUND);
            options.miter_limit = random.uniform(1, 2);
            options.tolerance = random.one_in(2) ? 0 : 0.1;
        }
        const bool on_a_grid = random.one_in(3);
        Numbers distances;
        for (int i = random.below(12); i >= 0; --i) {
            const double distance = random.one_in(12) ? 0 : random.uniform(-4, 2);
            distances.push_back(on_a_grid ? std::round(4 * distance) / 4 : distance);
        }
        const std::vector<Copied> rings = rings_of(outline, distances, options);
        for (size_t i = 0; i < distances.size(); ++i) {
            const Rings alone(outline, distances[i], options);
            ASSERT_EQ(difference(rings[i], alone), "")
                << "outline " << round << ", distance " << describe(distances[i]) << ", joins " << options.join;
            many += alone.size() > 1;
        }
    }
    EXPECT_GT(many, rounds(1500));
}

TEST(DoorOffsetDistances, KeepTheBitsOfOutlinesThatAreScaledForSome)
{
    // Small outlines are brought to a size that leaves room for the distance, so far ones lie at others.
    Random random(1287);
    for (int round = 0; round < rounds(50) && !testing::Test::HasFailure(); ++round) {
        Numbers outline = star(random, 20, 1);
        for (double& number : outline)
            number = std::ldexp(number, -1000);
        const Numbers distances = {std::ldexp(-1, -1000), 1, 0x1p900, std::ldexp(-2, -1000)};
        const std::vector<Copied> rings = rings_of(outline, distances);
        for (size_t i = 0; i < distances.size(); ++i)
            ASSERT_EQ(difference(rings[i], Rings(outline, distances[i])), "") << round << ", " << i;
    }
}

TEST(DoorOffsetDistances, SayWhatTheyRefuse)
{
    const Numbers square = {0, 0, 0, 4, 0, 0, 4, 4, 0, 0, 4, 0}, distances = {-1, NAN};
    const korvale_points points = points_of(square);
    int anything = 0;
    auto* rings = reinterpret_cast<korvale_rings*>(&anything);
    const auto refusal = [&](const korvale_numbers* each, korvale_rings** to) {
        return sentence_of(KORVALE_BAD_ARGUMENT, [&](korvale_error* error) {
            return korvale_offset_distances(&points, each, nullptr, to, error);
        });
    };
    korvale_numbers each = numbers_of(distances);
    EXPECT_EQ(refusal(&each, &rings), "korvale_offset_distances: distances must be finite, but number 1 is nan");
    EXPECT_EQ(rings, nullptr);
    each.count = 1;
    EXPECT_EQ(refusal(&each, nullptr), "korvale_offset_distances: rings must be given, but it is null");
    each.width = 2;
    EXPECT_EQ(refusal(&each, &rings), "korvale_offset_distances: distances must have a width of 1, but it is 2");
    EXPECT_EQ(refusal(nullptr, &rings), "korvale_offset_distances: distances must be given, but it is null");
}

TEST(DoorOffsetDistances, TellHowFarTheyAreAndStopWhenAsked)
{
    const Numbers distances = {-1, -0.25, 0.25, -1.5};
    const korvale_numbers each = numbers_of(distances);
    expect_telling(
        [&](const korvale_points& points, const korvale_offset_options& options, korvale_rings** rings,
            korvale_error* error) { return korvale_offset_distances(&points, &each, &options, rings, error); });
}

TEST(DoorOffsetDistances, AnExhaustedHeapLeavesNone)
{
    const Numbers distances = {-1, 0.5, -0.25};
    const korvale_numbers each = numbers_of(distances);
    expect_heap_failures([&](const korvale_points& points, korvale_rings** rings, korvale_error* error) {
        return korvale_offset_distances(&points, &each, nullptr, rings, error);
    });
}

} // namespace korvale::test
