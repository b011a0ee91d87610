// Rings joined where they touch, against all corners that lie on each of their edges.
#include "door/internal/joined_rings.h"

#include <map>

#include <gtest/gtest.h>

#include "places.h"

namespace korvale::test {
using namespace door;

namespace {

constexpr int kSteps = 8;

/// Places of different rings that are one are moved apart by less than a third of it; all others are farther apart.
constexpr double kTolerance = 0.005;

/// Rectangles that touch, also along their sides, lie in each other and do not cross.
std::vector<Ring> random_rectangles(Random& random, int most)
{
    std::vector<Rectangle> rectangles;
    std::vector<Ring> rings;
    const int tries = random.between(1, most);
    const bool is_leaning = random.one_in(2);
    for (int k = 0; k < tries; ++k) {
        const Rectangle r = random_rectangle(random, kSteps);
        if (std::ranges::any_of(rectangles, [&](const Rectangle& other) { return r.crosses(other); }))
            continue;
        rectangles.push_back(r);
        rings.push_back(ring_of(r, kSteps, is_leaning, random));
    }
    return rings;
}

/// A ring with all corners of others that lie on its edges, and without places that follow themselves.
Ring with_corners_on(const Ring& ring, const std::vector<Ring>& all)
{
    Ring joined;
    for (const Edge& e : edges_of(ring)) {
        const auto share = [&](const Place& p) { return dot(p - e.from, e.to - e.from); };
        Ring on = {e.from};
        for (const Ring& other : all)
            for (const Place& p : other)
                if (side(e.from, e.to, p) == 0 && box_of(e).holds(p) && p != e.to)
                    on.push_back(p);
        std::sort(on.begin(), on.end(), [&](const Place& p, const Place& q) { return share(p) < share(q); });
        joined.insert(joined.end(), on.begin(), on.end());
    }
    joined.erase(std::unique(joined.begin(), joined.end()), joined.end());
    while (joined.size() > 1 && joined.back() == joined.front())
        joined.pop_back();
    return joined;
}

/// Each place of a ring moved by at most `most` along each axis; one that is there twice moves as one.
Ring moved(const Ring& ring, double most, Random& random)
{
    std::map<std::pair<double, double>, Place> ways;
    Ring result;
    for (const Place& p : ring) {
        const double x = random.uniform(-most, most), y = random.uniform(-most, most);
        result.push_back(p + ways.try_emplace({p.x, p.y}, Place{x, y}).first->second);
    }
    return result;
}

JoinedRings unjoined(const std::vector<Ring>& all)
{
    JoinedRings joined;
    joined.rings = rings_of(all);
    for (const Ring& ring : all)
        for (size_t i = 0; i < ring.size(); ++i)
            joined.origins.push_back({static_cast<int32_t>(i), 0.0});
    return joined;
}

double distance(const Place& p, const Place& q)
{
    return std::sqrt(dot(p - q, p - q));
}

/// Joins rings whose places are those of `all` but for being moved, and compares them with all corners on all edges.
/// Counts the corners of others among them.
void compare(const std::vector<Ring>& all, const std::vector<Ring>& rings, double near, size_t& found)
{
    JoinedRings joined = unjoined(rings);
    join_rings(joined, std::vector<uint8_t>(all.size(), 1), kTolerance, {});
    ASSERT_EQ(joined.rings.size(), all.size());
    std::map<std::pair<double, double>, Place> nodes; // by where they are when nothing is moved
    for (size_t k = 0, first = 0; k < all.size(); first = static_cast<size_t>(joined.rings.ends[k++])) {
        SCOPED_TRACE(testing::Message() << "ring " << k);
        const Ring expected = with_corners_on(all[k], all);
        const std::span<const Place> ring = joined.rings[k];
        ASSERT_EQ(ring.size(), expected.size());
        found += expected.size() - std::min(expected.size(), all[k].size());
        for (size_t i = 0; i < ring.size(); ++i) {
            EXPECT_LE(distance(ring[i], expected[i]), near);
            EXPECT_EQ(nodes.try_emplace({expected[i].x, expected[i].y}, ring[i]).first->second, ring[i]);
            const Origin origin = joined.origins[first + i];
            const auto from = static_cast<size_t>(origin.place);
            const Place a = rings[k][from], b = rings[k][(from + 1) % rings[k].size()];
            EXPECT_LE(distance(ring[i], a + origin.share * (b - a)), near);
        }
    }
}

TEST(JoinRings, PutsTheCornersOfAllOnTheEdgesTheyLieOn)
{
    constexpr double kRounding = 1e-15; // a place on an edge is a share of its way: a few roundings of 1.1e-16
    Random random(1);
    size_t found = 0;
    for (int round = 0; round < rounds(300) && !testing::Test::HasFailure(); ++round) {
        SCOPED_TRACE(testing::Message() << "round " << round);
        const std::vector<Ring> all = random_rectangles(random, 2 + round % 30);
        compare(all, all, kRounding, found);
    }
    EXPECT_GT(found, static_cast<size_t>(rounds(300)));
}

TEST(JoinRings, MakesPlacesWithinTheToleranceOne)
{
    Random random(2);
    size_t found = 0;
    for (int round = 0; round < rounds(300) && !testing::Test::HasFailure(); ++round) {
        SCOPED_TRACE(testing::Message() << "round " << round);
        const std::vector<Ring> all = random_rectangles(random, 2 + round % 30);
        std::vector<Ring> rings;
        for (const Ring& ring : all)
            rings.push_back(moved(ring, 0.1 * kTolerance, random));
        compare(all, rings, kTolerance, found);
    }
    EXPECT_GT(found, static_cast<size_t>(rounds(300)));
}

} // namespace
} // namespace korvale::test
