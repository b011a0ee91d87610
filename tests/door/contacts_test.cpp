// Rings that touch and rings that cross, against all pairs of rectangles.
#include "door/internal/contacts.h"

#include <gmock/gmock.h>

#include "places.h"

namespace korvale::test {
using namespace door;

namespace {

using testing::ElementsAre;

struct Scene {
    std::vector<Rectangle> rectangles;
    std::vector<Ring> rings;
};

Scene random_scene(Random& random, int most, bool may_cross)
{
    constexpr int kSteps = 16;
    Scene scene;
    const int count = random.below(most);
    const bool is_leaning = random.one_in(2);
    for (int k = 0; k < count; ++k) {
        const Rectangle r = random_rectangle(random, kSteps);
        const auto excludes = [&](const Rectangle& other) { return r == other || (!may_cross && r.crosses(other)); };
        if (std::ranges::any_of(scene.rectangles, excludes))
            continue;
        scene.rectangles.push_back(r);
        scene.rings.push_back(ring_of(r, kSteps, is_leaning, random));
    }
    return scene;
}

TEST(Contacts, TheFirstTwoThatCrossAreFound)
{
    Random random(1);
    int crossing = 0, clear = 0;
    for (int round = 0; round < rounds(1000) && !testing::Test::HasFailure(); ++round) {
        const auto [rectangles, all] = random_scene(random, 2 + round % 12, true);
        const Rings rings = rings_of(all);
        Contours contours(rings, 0.0, {});
        Contacts contacts(contours, 0.0, false, {});
        std::optional<std::pair<int32_t, int32_t>> expected;
        std::vector<uint8_t> crosses(all.size(), 0);
        for (size_t a = 0; a < all.size(); ++a)
            for (size_t b = a + 1; b < all.size(); ++b)
                if (rectangles[a].crosses(rectangles[b])) {
                    crosses[a] = crosses[b] = 1;
                    if (!expected)
                        expected.emplace(static_cast<int32_t>(a), static_cast<int32_t>(b));
                }
        const std::optional<Crossing> found = contacts.find_crossing({});
        ASSERT_EQ(found.has_value(), expected.has_value());
        EXPECT_EQ(std::vector(contacts.crosses().begin(), contacts.crosses().end()), crosses);
        ++(found ? crossing : clear);
        if (found) {
            EXPECT_EQ(std::pair(found->first, found->second), *expected);
        }
    }
    EXPECT_GT(crossing, 100);
    EXPECT_GT(clear, 100);
}

TEST(Contacts, RingsWithAPlaceInCommonTouch)
{
    Random random(2);
    int touching = 0;
    for (int round = 0; round < rounds(500) && !testing::Test::HasFailure(); ++round) {
        const auto [rectangles, all] = random_scene(random, 40, false);
        const Rings rings = rings_of(all);
        Contours contours(rings, 0.0, {});
        const Contacts contacts(contours, 0.0, random.one_in(2), {});
        const Vector<uint8_t> found = contacts.touches();
        for (size_t k = 0; k < all.size(); ++k) {
            const bool expected = std::ranges::any_of(
                rectangles, [&, &one = rectangles[k]](const Rectangle& r) { return r != one && r.touches(one); });
            ASSERT_EQ(found[k], expected ? 1 : 0);
            touching += expected;
        }
    }
    EXPECT_GT(touching, 1000);
}

TEST(Contacts, WhatIsWithinTheToleranceDoesNotCross)
{
    const Ring plate = {{0, 0}, {1, 0}, {1, 1}, {0, 1}}, over = {{0.25, 0.5}, {1.0625, 0.5}, {0.25, 0.75}};
    const Rings rings = rings_of({plate, over});
    for (const double tolerance : {0.0, 0.03125, 0.0625, 0.125}) {
        Contours contours(rings, tolerance, {});
        Contacts contacts(contours, tolerance, false, {});
        EXPECT_EQ(contacts.find_crossing({}).has_value(), tolerance < 0.0625) << tolerance;
        if (tolerance >= 0.0625) {
            EXPECT_THAT(contacts.touches(), ElementsAre(1, 1)) << tolerance;
        }
    }
}

TEST(Contacts, ThereAreNoneOfRingsWithoutArea)
{
    for (const std::vector<Ring>& all :
         {std::vector<Ring>{}, {{}}, {{{0.5, 0.5}}}, {{{0, 0}, {1, 1}}, {{0, 1}, {1, 0}}}}) {
        const Rings rings = rings_of(all);
        Contours contours(rings, 0.0, {});
        Contacts contacts(contours, 0.0, false, {});
        EXPECT_FALSE(contacts.find_crossing({}).has_value());
        EXPECT_EQ(contacts.touches(), Vector<uint8_t>(all.size(), 0));
    }
}

} // namespace
} // namespace korvale::test
