// What is known of a ring by itself, against all of its edges.
#include "door/internal/contours.h"

#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

#include "places.h"

namespace korvale::test {
using namespace door;

namespace {

double twice_area_of(const Ring& ring)
{
    double twice = 0;
    for (const Edge& e : edges_of(ring))
        twice += cross(e.from, e.to);
    return twice;
}

/// A ring around a place of its own that is seen whole from there.
Ring star(Random& random, int places)
{
    const bool is_backwards = random.one_in(2);
    Ring ring;
    for (int i = 0; i < places; ++i) {
        const double angle = 2 * std::numbers::pi * (is_backwards ? places - i : i) / places;
        const double far = random.uniform(0.1, 0.4);
        ring.push_back({0.5 + far * std::cos(angle), 0.5 + far * std::sin(angle)});
    }
    return ring;
}

TEST(Contour, TellsAreaBoundsAndTheLowestPlace)
{
    Random random(1);
    for (int round = 0; round < rounds(2000) && !testing::Test::HasFailure(); ++round) {
        const int places = random.between(1, 12), steps = random.one_in(2) ? 2 : 32;
        const Ring ring = lattice_ring(random, places, steps);
        const Contour contour = measure(ring);
        EXPECT_EQ(contour.size, std::fabs(twice_area_of(ring)));
        Box box = kNowhere;
        for (const Place& p : ring)
            box.cover(p);
        EXPECT_EQ(contour.box, box);
        const Place lowest = ring[static_cast<size_t>(contour.lowest)];
        for (const Place& p : ring)
            EXPECT_TRUE(lowest.y < p.y || (lowest.y == p.y && lowest.x <= p.x));
        const auto is_elsewhere = [&](int32_t i) { return ring[static_cast<size_t>(i)] != lowest; };
        for (int32_t i = (contour.lowest + 1) % places; i != contour.after; i = (i + 1) % places)
            EXPECT_FALSE(is_elsewhere(i));
        for (int32_t i = (contour.lowest + places - 1) % places; i != contour.before; i = (i + places - 1) % places)
            EXPECT_FALSE(is_elsewhere(i));
    }
}

TEST(Contour, OneThatDoesNotMeetItselfRunsAsItsAreaSays)
{
    Random random(2);
    for (int round = 0; round < rounds(500); ++round) {
        const Ring ring = star(random, 3 + round % 40);
        EXPECT_EQ(measure(ring).turn, sign_of(twice_area_of(ring)));
        const Rectangle rectangle = random_rectangle(random, 8);
        const Ring box = ring_of(rectangle, 8, random.one_in(2), random);
        EXPECT_EQ(measure(box).turn, sign_of(twice_area_of(box)));
    }
}

TEST(Contour, FewPlacesHaveNoArea)
{
    for (const Ring& ring : {Ring{}, {{1, 1}}, {{0, 0}, {1, 1}}, {{0, 0}, {1, 1}, {0, 0}}, {{1, 1}, {1, 1}, {1, 1}}}) {
        EXPECT_EQ(measure(ring).turn, 0);
        EXPECT_EQ(measure(ring).size, 0);
    }
    EXPECT_EQ(measure({}).box, kNowhere);
}

TEST(Contours, APlaceIsInsideWhereARayDownMeetsAnOddNumberOfEdges)
{
    Random random(3);
    int inside = 0;
    for (int round = 0; round < rounds(300) && !testing::Test::HasFailure(); ++round) {
        std::vector<Ring> all;
        for (int k = 0; k < 3; ++k) {
            const int places = random.between(3, 50);
            all.push_back(lattice_ring(random, places, 16));
        }
        const Rings rings = rings_of(all);
        const Contours contours(rings, 0.0, {});
        for (int32_t k = 0; k < contours.count(); ++k)
            for (int i = 0; contours.takes_part(k) && i < 20; ++i) {
                const int x = random.between(-1, 16), y = random.between(-1, 16);
                const Place p = {(x + 0.5) / 16, y / 16.0 + 1 / 64.0}; // above no place
                bool is_odd = false;
                for (const auto& [from, to] : edges_of(all[static_cast<size_t>(k)]))
                    is_odd ^= (from.x < p.x) != (to.x < p.x) && (side(from, to, p) > 0) == (from.x < to.x) &&
                              side(from, to, p) != 0;
                ASSERT_EQ(contours.is_inside(k, p), is_odd);
                inside += is_odd;
            }
    }
    EXPECT_GT(inside, 1000);
}

TEST(Contours, APlaceInsideHasRoomAroundIt)
{
    Random random(4);
    for (int round = 0; round < rounds(300); ++round) {
        const Ring ring = star(random, 3 + round % 40);
        const Rings rings = rings_of({ring});
        Contours contours(rings, 0.0, {});
        const Place p = contours.place_inside(0);
        EXPECT_TRUE(contours.is_inside(0, p));
        for (const Edge& e : edges_of(ring))
            EXPECT_FALSE(is_within(1e-6, e, p));
        EXPECT_EQ(contours.place_inside(0), p);
    }
}

} // namespace
} // namespace korvale::test
