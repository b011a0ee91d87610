// Which rings lie in which, against all pairs of rectangles.
#include "door/internal/nesting.h"

#include <gmock/gmock.h>

#include "door/internal/contacts.h"
#include "places.h"

namespace korvale::test {
using namespace door;

namespace {

using testing::ElementsAre;

/// Looks at all others: the outer one of a rectangle is the smallest that goes round it, or itself.
std::vector<int32_t> outer_of(const std::vector<Rectangle>& rectangles)
{
    std::vector<int32_t> outer;
    for (size_t k = 0; k < rectangles.size(); ++k) {
        int depth = 0;
        auto smallest = static_cast<int32_t>(k);
        for (size_t i = 0; i < rectangles.size(); ++i) {
            if (i == k || !rectangles[i].contains(rectangles[k]))
                continue;
            if (++depth == 1 || rectangles[i].area() < rectangles[static_cast<size_t>(smallest)].area())
                smallest = static_cast<int32_t>(i);
        }
        outer.push_back(depth % 2 == 0 ? static_cast<int32_t>(k) : smallest);
    }
    return outer;
}

TEST(Nesting, EachRectangleHasTheSmallestAroundItForItsOuterOne)
{
    constexpr int kSteps = 16;
    Random random(1);
    int nested = 0;
    for (int round = 0; round < rounds(500) && !testing::Test::HasFailure(); ++round) {
        std::vector<Rectangle> rectangles;
        std::vector<Ring> all;
        const int tries = random.below(100);
        const bool is_leaning = random.one_in(2);
        for (int k = 0; k < tries; ++k) {
            const Rectangle r = random_rectangle(random, kSteps);
            if (std::ranges::any_of(rectangles, [&](const Rectangle& other) { return r == other || r.crosses(other); }))
                continue;
            rectangles.push_back(r);
            all.push_back(ring_of(r, kSteps, is_leaning, random));
        }
        const Rings rings = rings_of(all);
        Contours contours(rings, 0.0, {});
        const std::vector<int32_t> expected = outer_of(rectangles);
        const Vector<int32_t> exact = find_outer(contours, Vector<uint8_t>(all.size(), 0), {});
        const Vector<int32_t> careful = find_outer(contours, Contacts(contours, 0.0, true, {}).touches(), {});
        EXPECT_EQ(std::vector(exact.begin(), exact.end()), expected) << "by what is below";
        EXPECT_EQ(std::vector(careful.begin(), careful.end()), expected) << "by places inside";
        for (size_t k = 0; k < expected.size(); ++k)
            nested += expected[k] != static_cast<int32_t>(k);
    }
    EXPECT_GT(nested, 1000);
}

TEST(Nesting, DepthIsCountedPastAnyNumberOfRings)
{
    constexpr int kDepth = 500;
    std::vector<Ring> all;
    for (int i = 0; i < kDepth; ++i) {
        const double low = i / 1024.0, high = 1 - low;
        all.push_back({{low, low}, {high, low}, {high, high}, {low, high}});
    }
    std::ranges::reverse(all); // the innermost first
    const Rings rings = rings_of(all);
    Contours contours(rings, 0.0, {});
    const Vector<int32_t> outer = find_outer(contours, Vector<uint8_t>(all.size(), 0), {});
    for (int32_t k = 0; k < kDepth; ++k)
        EXPECT_EQ(outer[static_cast<size_t>(k)], k % 2 == 0 ? k + 1 : k);
}

TEST(Nesting, RingsWithoutPlacesAndRepeatsHaveNumbersOfTheirOwn)
{
    const Ring plate = {{0, 0}, {1, 0}, {1, 1}, {0, 1}}, hole = {{0.25, 0.25}, {0.5, 0.25}, {0.5, 0.5}};
    const Rings rings = rings_of({{}, plate, hole, plate, hole, {}});
    Contours contours(rings, 0.0, {});
    EXPECT_THAT(find_outer(contours, Vector<uint8_t>(6, 0), {}), ElementsAre(-1, 1, 1, -3, -4, -1));
    const Rings none;
    Contours nothing(none, 0.0, {});
    EXPECT_TRUE(find_outer(nothing, {}, {}).empty());
}

} // namespace
} // namespace korvale::test
