// Edges and the tree of them, against all edges one by one.
#include "door/internal/edges.h"

#include <algorithm>
#include <limits>

#include <gtest/gtest.h>

#include "places.h"

namespace korvale::test {
using namespace door;

namespace {

/// Edges that are short or long, points, one over the other, or all at one place.
Vector<Edge> random_edges(Random& random, int n)
{
    const int steps = random.one_in(4) ? 1 : random.between(2, 64);
    const bool are_short = random.one_in(2);
    Vector<Edge> edges;
    for (int i = 0; i < n; ++i) {
        const Place from = lattice_place(random, steps), to = lattice_place(random, steps);
        edges.push_back({from, are_short && !random.one_in(8) ? from + 0.02 * (to - from) : to});
    }
    return edges;
}

constexpr double kRounding = 1e-14; // pieces of an edge end beside it but for that

TEST(EdgeTree, TheNearestPointOfAllIsFound)
{
    Random random(1);
    for (int round = 0; round < rounds(400) && !testing::Test::HasFailure(); ++round) {
        const Vector<Edge> edges = random_edges(random, random.below(round % 10 == 0 ? 500 : 40));
        const EdgeTree tree(edges);
        ASSERT_EQ(tree.size(), edges.size());
        for (int i = 0; i < 20; ++i) {
            const double x = random.uniform(-0.5, 1.5), y = random.uniform(-0.5, 1.5);
            const Place p = random.one_in(3) ? lattice_place(random, 4) : Place{x, y};
            double least = std::numeric_limits<double>::infinity();
            for (const Edge& e : edges) {
                const Place away = nearest_of(e, p) - p;
                least = std::min(least, std::sqrt(dot(away, away)));
            }
            const double reach = random.uniform(0, 1);
            const std::optional<Place> found = tree.nearest(p, reach);
            if (std::fabs(least - reach) > kRounding) {
                ASSERT_EQ(found.has_value(), least < reach) << edges.size() << " edges";
            }
            if (found) {
                const Place away = *found - p;
                ASSERT_NEAR(std::sqrt(dot(away, away)), least, kRounding) << edges.size() << " edges";
            }
        }
    }
}

TEST(EdgeTree, WhatComesNearAnEdgeIsSeenAndNothingFar)
{
    Random random(2);
    for (int round = 0; round < rounds(200) && !testing::Test::HasFailure(); ++round) {
        const Vector<Edge> edges = random_edges(random, random.below(round % 10 == 0 ? 300 : 40));
        const EdgeTree tree(edges);
        const Edge probe = {lattice_place(random, 16), lattice_place(random, 16)};
        const double reach = random.one_in(3) ? 0.0 : random.uniform(0, 0.3);
        std::vector<uint8_t> is_seen(edges.size(), 0);
        tree.for_each_near(probe, reach, [&](size_t k) { is_seen[k] = 1; });
        const Box box = box_of(probe);
        const double far = reach + kRounding;
        for (size_t k = 0; k < edges.size(); ++k) {
            if (distance_of(probe, edges[k]) < reach - kRounding || do_touch(probe, edges[k])) {
                EXPECT_EQ(is_seen[k], 1) << k << " of " << edges.size();
            }
            if (is_seen[k] != 0) {
                EXPECT_TRUE(Box({box.low_x - far, box.low_y - far, box.high_x + far, box.high_y + far})
                                .meets(box_of(edges[k])));
            }
        }
    }
}

TEST(EdgeTree, EdgesThatMeetOneAreSeenFromIt)
{
    Random random(3);
    for (int round = 0; round < rounds(100) && !testing::Test::HasFailure(); ++round) {
        const Vector<Edge> edges = random_edges(random, random.between(1, 120));
        const EdgeTree tree(edges);
        for (size_t i = 0; i < edges.size(); ++i) {
            std::vector<uint8_t> is_seen(edges.size(), 0);
            tree.for_each_near(i, [&](size_t k) { is_seen[k] = 1; });
            for (size_t k = 0; k < edges.size(); ++k)
                if (do_touch(edges[i], edges[k])) {
                    ASSERT_EQ(is_seen[k], 1) << i << " and " << k << " of " << edges.size();
                }
        }
    }
}

TEST(EdgeTree, WithoutEdgesThereIsNothingToFind)
{
    const EdgeTree tree({});
    EXPECT_FALSE(tree.nearest({0, 0}, 1e300));
    tree.for_each_near({{-1, -1}, {1, 1}}, 10, [](size_t) { FAIL(); });
}

TEST(Edges, TheLowerOneIsToldWhereBothRunAlongTheSamePartOfTheXAxis)
{
    Random random(4);
    int told[3] = {};
    for (int round = 0; round < rounds(20000); ++round) {
        Edge e = {lattice_place(random, 4), lattice_place(random, 4)},
             f = {lattice_place(random, 4), lattice_place(random, 4)};
        for (Edge* edge : {&e, &f})
            if (edge->to.x < edge->from.x)
                std::swap(edge->from, edge->to);
        const double from = std::max(e.from.x, f.from.x), to = std::min(e.to.x, f.to.x);
        if (!(from < to))
            continue;
        const auto height = [](const Edge& edge, double x) { // multiplied by both widths, without rounding
            return edge.from.y * (edge.to.x - edge.from.x) + (x - edge.from.x) * (edge.to.y - edge.from.y);
        };
        const auto above = [&](double x) {
            return sign_of(height(e, x) * (f.to.x - f.from.x) - height(f, x) * (e.to.x - e.from.x));
        };
        if (above(from) * above(to) < 0)
            continue; // they cross
        const int expected = sign_of(above(from) + above(to));
        ASSERT_EQ(height_beside(e, f), expected);
        ASSERT_EQ(height_beside(f, e), -expected);
        ++told[expected + 1];
    }
    for (const int count : told)
        EXPECT_GT(count, 100);
}

TEST(Edges, AnUprightOneCountsFromItsLowerEnd)
{
    const Edge upright = {{1, 1}, {1, 3}};
    EXPECT_EQ(height_beside(upright, {{0, 0}, {2, 0}}), 1);
    EXPECT_EQ(height_beside(upright, {{0, 4}, {2, 4}}), -1);
    EXPECT_EQ(height_beside({{1, 2}, {2, 2}}, upright), -1); // from which on the upright one is met higher up
    EXPECT_EQ(height_beside(upright, upright), 0);
}

TEST(Edges, TheirEndsAreWithinReachOfThem)
{
    const Edge e = {{0, 0}, {4, 0}}, point = {{1, 1}, {1, 1}};
    EXPECT_TRUE(is_within(0, e, {4, 0}));
    EXPECT_TRUE(is_within(2, e, {1, 2}));
    EXPECT_FALSE(is_within(2, e, {1, 2.0000001}));
    EXPECT_TRUE(is_within(5, e, {7, 4})); // beyond the end, 3 along and 4 across
    EXPECT_FALSE(is_within(4.9999999, e, {7, 4}));
    EXPECT_TRUE(is_within(1, point, {2, 1}));
    EXPECT_EQ(crossing_of(e, {{1, -1}, {3, 1}}), (Place{2, 0}));
}

} // namespace
} // namespace korvale::test
