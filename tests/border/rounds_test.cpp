// What a round does, piece by piece, on random columns: each against the documented step of its name, bit for bit.
#include "border/internal/rounds.h"

#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "tests/border/shapes.h"
#include "tests/border/twins.h"
#include "tests/support/bits.h"

namespace korvale::test {

using border::Corners;
using border::Event;
using border::Round;
using border::Watch;

namespace {

/// Some vertices anywhere, often three to five, often on a grid, so that many are at the same place or in one line.
Coordinates any_points(Random& random)
{
    const int n = 3 + random.below(random.one_in(4) ? 200 : random.one_in(2) ? 30 : 3);
    Coordinates points = random.one_in(3) ? grid_walk(n, 4, random) : scramble(n, random);
    if (random.one_in(8)) // so small that edges are too short
        for (double& c : points)
            c *= 2e-7;
    return points;
}

double any_distance(Random& random)
{
    return random.uniform(0.1, 2) * (random.one_in(2) ? 1 : -1);
}

/// Calls look(twins, random) for twins in the middle of a sweep: all columns have been written, some vertices died.
template <class Look>
void for_twins(uint64_t seed, int count, const Look& look)
{
    Random random(seed);
    for (int round = 0; round < rounds(count) && !testing::Test::HasFailure(); ++round) {
        SCOPED_TRACE(testing::Message() << "twins " << round);
        Twins twins(any_points(random), any_distance(random));
        if (!random.one_in(4)) {
            twins.set_anything(random);
            twins.bury_some(4, random);
        }
        look(twins, random);
    }
}

/// Whether both pieces of a round say the same of the corners.
bool is_same(Corners quick, reference::Corners documented)
{
    return static_cast<int>(quick) == static_cast<int>(documented);
}

} // namespace

TEST(Rounds, MeasureEdgesAndMergeShortOnesAsDocumented)
{
    int merged = 0, gone = 0;
    for_twins(1, 3000, [&](Twins& twins, Random&) {
        Watch watch(0, nullptr);
        Round round;
        const int32_t before = twins.w.live;
        const bool goes_on = reference::measure_edges(twins.steps);
        ASSERT_EQ(measure_live(twins.w, watch, Round(), round), goes_on);
        EXPECT_EQ(round.first_unaimed, 0);
        EXPECT_TRUE(twins.are_equal());
        merged += goes_on && twins.w.live < before;
        gone += !goes_on;
    });
    EXPECT_GT(merged, 100);
    EXPECT_GT(gone, 20);
}

TEST(Rounds, AimVerticesAsDocumentedUpToTheFirstHairpin)
{
    int seen[3] = {};
    for_twins(2, 3000, [&](Twins& twins, Random& random) {
        twins.set_any_edges(random);
        fit_edge_lines(twins.w);
        reference::fit_edge_lines(twins.steps);
        Watch watch(0, nullptr);
        Round before, round;
        before.has_sharp_corners = random.one_in(2); // a guess, right or wrong
        const reference::Corners corners = reference::aim_vertices(twins.steps);
        EXPECT_TRUE(is_same(aim_vertices(twins.w, watch, before, round), corners));
        EXPECT_EQ(round.hairpin >= 0, corners != reference::Corners::aimed);
        EXPECT_TRUE(twins.are_equal());
        ++seen[static_cast<int>(corners)];
    });
    for (const int count : {seen[0], seen[1]})
        EXPECT_GT(count, 100);
}

TEST(Rounds, GoOnAfterAHairpinAsIfMeasuredFromTheStart)
{
    int resumed = 0, started_over = 0;
    Random random(3);
    for (int k = 0; k < rounds(3000) && !HasFailure(); ++k) {
        Coordinates path = random.one_in(2) ? comb(1 + random.below(12), 0.5) : any_points(random);
        if (random.one_in(2)) // folded onto a line: all corners are straight or hairpins
            for (size_t i = 0; i < path.size(); i += 3)
                path[i + 1] = random.one_in(6) ? path[i + 1] : 0.0;
        SCOPED_TRACE(testing::Message() << "twins " << k << " of " << path.size() / 3);
        Twins twins(path, any_distance(random));
        Watch watch(0, nullptr);
        Round before;
        for (;;) {
            Round round;
            const bool goes_on = reference::measure_edges(twins.steps);
            ASSERT_EQ(measure_live(twins.w, watch, before, round), goes_on);
            if (!goes_on)
                break;
            resumed += round.first_unaimed > 0;
            started_over += before.hairpin >= 0 && round.first_unaimed == 0;
            fit_edge_lines(twins.w);
            reference::fit_edge_lines(twins.steps);
            const reference::Corners corners = reference::aim_vertices(twins.steps);
            ASSERT_TRUE(is_same(aim_vertices(twins.w, watch, before, round), corners));
            if (corners != reference::Corners::hairpin_removed)
                break;
            before = round;
        }
        EXPECT_TRUE(twins.are_equal());
    }
    EXPECT_GT(resumed, 200);
    EXPECT_GT(started_over, 200);
}

TEST(Rounds, DriftIsTheGreatestSpeedAtWhichAnEndLeavesItsLine)
{
    for_twins(4, 1000, [](Twins& twins, Random& random) {
        twins.set_any_edges(random);
        fit_edge_lines(twins.w);
        Watch watch(0, nullptr);
        Round round;
        if (aim_vertices(twins.w, watch, Round(), round) != Corners::aimed)
            return;
        const auto& w = twins.w;
        double drift = 0.0;
        for (int32_t i = 0; i < w.live; ++i)
            for (const int32_t e : {i - 1, i})
                drift =
                    std::max(drift, std::fabs(w.edge.dx[e] * w.velocity.y[i] - w.edge.dy[e] * w.velocity.x[i] + 1.0));
        EXPECT_EQ(round.drift, drift);
    });
}

TEST(Rounds, FindTheFirstEdgeEventAndTheRatesAsDocumented)
{
    int events = 0;
    for_twins(5, 3000, [&](Twins& twins, Random& random) {
        twins.set_any_edges(random);
        fit_edge_lines(twins.w);
        reference::fit_edge_lines(twins.steps);
        twins.set_any_velocities(random);
        reference::set_length_rates(twins.steps);
        const reference::Event documented = reference::first_edge_event(twins.steps);
        const Event quick = first_edge_event(twins.w, {twins.steps.remaining});
        EXPECT_TRUE(same_bits(documented.time, quick.time));
        EXPECT_EQ(quick.vertex, -1);
        EXPECT_TRUE(twins.are_equal());
        events += std::fabs(quick.time) < std::fabs(twins.steps.remaining);
    });
    EXPECT_GT(events, 1000);
}

TEST(Rounds, MoveAllVerticesAsDocumented)
{
    for_twins(6, 1000, [](Twins& twins, Random& random) {
        twins.set_anything(random);
        const double time = any_distance(random);
        reference::move_all(twins.steps, time);
        move_vertices(twins.w, time);
        EXPECT_TRUE(twins.are_equal());
    });
}

TEST(Rounds, CollapseEdgesAsDocumentedAndCountThemBefore)
{
    int collapsed = 0, ended = 0;
    for_twins(7, 3000, [&](Twins& twins, Random& random) {
        twins.set_anything(random);
        const double time = any_distance(random) * (random.one_in(3) ? 8 : random.one_in(2) ? 1 : 0.01);
        reference::collapse_edges(twins.steps, time);
        const int32_t count = count_collapsing(twins.w, time);
        collapse_edges(twins.w, time);
        EXPECT_LE(twins.w.buried_count, count);
        ended += twins.w.buried_count < count; // where a single vertex was left
        collapsed += count;
        EXPECT_TRUE(twins.are_equal());
    });
    EXPECT_GT(collapsed, 1000);
    EXPECT_GT(ended, 10);
}

TEST(Rounds, DropTheSmallerPieceAsDocumented)
{
    int behind = 0, ahead = 0;
    for_twins(8, 3000, [&](Twins& twins, Random& random) {
        twins.set_anything(random);
        const int32_t m = random.below(twins.w.live), e = random.below(twins.w.live);
        if (is_own(twins.w, m, e))
            return;
        reference::drop_smaller_piece(twins.steps, twins.vertex_at(m), twins.vertex_at(e));
        border::Findings found;
        drop_smaller_piece(twins.w, m, e, false, found);
        (twins.w.gone[e] != 0 ? ahead : behind) += 1;
        EXPECT_TRUE(twins.are_equal());
    });
    EXPECT_GT(ahead, 300);
    EXPECT_GT(behind, 300);
}

} // namespace korvale::test
