// The tree of runs of edges, against all pairs of edges.
#include "door/internal/runs.h"

#include <map>
#include <set>
#include <tuple>

#include <gtest/gtest.h>

#include "door/internal/self_crossing.h"
#include "places.h"

namespace korvale::test {
using namespace door;

namespace {

using Pair = std::tuple<int32_t, int32_t, int32_t, int32_t>; // of an edge, ring and number, and another

/// Rings of few and many places, on few lines or many, some of them points.
std::vector<Ring> random_rings(Random& random)
{
    std::vector<Ring> rings;
    const int count = random.below(7), steps = random.one_in(3) ? 3 : 50;
    for (int k = 0; k < count; ++k) {
        const int places = random.one_in(3) ? random.below(3) : random.below(60);
        rings.push_back(lattice_ring(random, places, steps));
        for (Place& p : rings.back())
            if (steps == 50 && k % 2 == 1)
                p = 0.2 * p + Place{0.1 * k, 0.1 * k};
    }
    return rings;
}

TEST(RunTree, EachEdgeOfTheRingsThatItTakesUpIsInOneRun)
{
    Random random(1);
    for (int round = 0; round < rounds(200) && !testing::Test::HasFailure(); ++round) {
        const std::vector<Ring> all = random_rings(random);
        const Rings rings = rings_of(all);
        RunTree tree(rings);
        tree.grow([&](size_t k) { return k % 3 != 1; });
        std::map<std::pair<int32_t, int32_t>, int> times;
        size_t runs = 0;
        for (size_t k = 0; k < all.size(); ++k)
            runs += k % 3 != 1 ? (all[k].size() + RunTree::kRun - 1) / RunTree::kRun : 0;
        for (size_t leaf = tree.first_leaf(); leaf < tree.first_leaf() + runs; ++leaf) {
            const door::Run& run = tree.run_at(leaf);
            for (int32_t i = run.first; i < run.first + run.count; ++i) {
                ++times[{run.ring, i}];
                Box box = tree.nodes()[leaf];
                box.cover(box_of(tree.edge(run.ring, i)));
                EXPECT_EQ(box, tree.nodes()[leaf]);
            }
            EXPECT_EQ(tree.boxes_of(run.ring)[static_cast<size_t>(run.first / RunTree::kRun)], tree.nodes()[leaf]);
        }
        for (size_t leaf = tree.first_leaf() + runs; leaf < tree.nodes().size(); ++leaf)
            EXPECT_EQ(tree.nodes()[leaf], kNowhere);
        for (size_t k = 0; k < all.size(); ++k)
            for (size_t i = 0; i < all[k].size(); ++i)
                EXPECT_EQ((times[{static_cast<int32_t>(k), static_cast<int32_t>(i)}]), k % 3 != 1 ? 1 : 0);
    }
}

TEST(RunTree, EachTwoEdgesThatComeNearAreSeenOnce)
{
    Random random(2);
    int near = 0, own = 0;
    for (int round = 0; round < rounds(300) && !testing::Test::HasFailure(); ++round) {
        const std::vector<Ring> all = random_rings(random);
        const Rings rings = rings_of(all);
        const bool sees_own = random.one_in(2);
        const double slack = random.one_in(2) ? 0.0 : random.uniform(0, 0.1);
        RunTree tree(rings);
        tree.grow([&](size_t k) { return !all[k].empty(); });
        std::set<Pair> seen;
        tree.for_each_near_pair(slack, sees_own, {}, [&](int32_t ring, int32_t i, int32_t other, int32_t k) {
            EXPECT_TRUE(seen.emplace(std::min(Pair(ring, i, other, k), Pair(other, k, ring, i))).second)
                << "edge " << i << " of ring " << ring << " and " << k << " of " << other;
            EXPECT_TRUE(sees_own || ring != other);
        });
        for (int32_t a = 0; a < static_cast<int32_t>(all.size()); ++a)
            for (int32_t b = a; b < static_cast<int32_t>(all.size()); ++b) {
                const std::vector<Edge> edges = edges_of(all[static_cast<size_t>(a)]),
                                        others = edges_of(all[static_cast<size_t>(b)]);
                for (size_t i = 0; i < edges.size(); ++i)
                    for (size_t k = a == b ? i + 1 : 0; k < others.size(); ++k) {
                        const auto e = static_cast<int32_t>(i), f = static_cast<int32_t>(k);
                        const bool is_near = a == b ? sees_own && do_meet(rings[static_cast<size_t>(a)], e, f)
                                                    : distance_of(edges[i], others[k]) <= slack;
                        if (!is_near)
                            continue;
                        ++(a == b ? own : near);
                        ASSERT_TRUE(seen.contains({a, e, b, f}))
                            << "edge " << e << " of ring " << a << " and " << f << " of " << b;
                    }
            }
    }
    EXPECT_GT(near, 1000);
    EXPECT_GT(own, 1000);
}

TEST(RunTree, WithoutRingsThereAreNoPairs)
{
    for (const std::vector<Ring>& all : {std::vector<Ring>{}, {{}}, {{{0.5, 0.5}}}}) {
        const Rings rings = rings_of(all);
        RunTree tree(rings);
        tree.grow([](size_t) { return true; });
        tree.for_each_near_pair(1, true, {}, [](int32_t, int32_t, int32_t, int32_t) { FAIL(); });
    }
}

} // namespace
} // namespace korvale::test
