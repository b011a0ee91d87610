// Sweeps that keep outlines whole, beside the documented steps: where they lose a part first, and what the outline is
// there.
#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "tests/border/shapes.h"
#include "tests/border/twins.h"
#include "tests/support/bits.h"
#include "tests/support/outlines.h"

namespace korvale::test {
namespace {

using reference::Corners;
using reference::Event;

constexpr double kSpeck = 1e-05;

enum class End { at_distance, split, ridge, limb, early };

/// How far the vertices that have died since `before` reach along an axis, with `vertex` among them.
double reach_of_new_dead(const reference::Sweep& s, const std::vector<uint8_t>& before, int32_t vertex)
{
    double low[] = {s.flat[3 * vertex], s.flat[3 * vertex + 1]}, high[] = {low[0], low[1]};
    for (int32_t i = 0; i < s.n; ++i)
        for (int k = 0; s.dead[i] != before[static_cast<size_t>(i)] && k < 2; ++k) {
            low[k] = std::min(low[k], s.flat[3 * i + k]);
            high[k] = std::max(high[k], s.flat[3 * i + k]);
        }
    return std::max(high[0] - low[0], high[1] - low[1]);
}

int32_t previous_live(const reference::Sweep& s, int32_t i)
{
    do
        i = (i + s.n - 1) % s.n;
    while (s.dead[i]);
    return i;
}

/// Goes on by the documented steps until a part would be lost, and leaves the vertices that live then where they are.
End run_whole(reference::Sweep& s)
{
    const double distance = s.remaining;
    std::fill_n(s.dead, s.n, uint8_t{0});
    for (int64_t round = 0; round < 4 * s.n + 64; ++round) {
        if (!measure_edges(s))
            return End::early;
        fit_edge_lines(s);
        const std::vector<uint8_t> before(s.dead, s.dead + s.n);
        const Corners corners = aim_vertices(s);
        if (corners != Corners::aimed) {
            const auto tip =
                static_cast<int32_t>(std::mismatch(before.begin(), before.end(), s.dead).first - before.begin());
            if (s.remaining != distance && std::min(s.length[previous_live(s, tip)], s.length[tip]) > kSpeck) {
                s.dead[tip] = 0;
                return End::limb;
            }
            if (corners == Corners::outline_gone)
                return End::early;
            continue;
        }
        set_length_rates(s);
        const Event event = earlier_split_event(s, first_edge_event(s));
        if (std::fabs(event.time) > std::fabs(s.remaining)) {
            move_all(s, s.remaining);
            s.remaining = 0.0;
            return End::at_distance;
        }
        s.remaining -= event.time;
        if (event.vertex < 0) {
            int left = 0;
            for (int32_t i = 0; i < s.n; ++i)
                left += s.dead[i] == 0 && !(event.time * s.rate[i] + s.length[i] <= 1e-06);
            if (left < 3) {
                move_all(s, event.time);
                return End::ridge;
            }
            collapse_edges(s, event.time);
        } else {
            move_all(s, event.time);
            std::vector<uint8_t> dead = before;
            std::vector<int32_t> merge(s.merge, s.merge + s.n);
            reference::Sweep after = s;
            after.dead = dead.data();
            after.merge = merge.data();
            drop_smaller_piece(after, event.vertex, event.edge);
            if (reach_of_new_dead(after, before, event.vertex) > kSpeck)
                return End::split;
            drop_smaller_piece(s, event.vertex, event.edge);
        }
        if (s.remaining == 0.0)
            return End::at_distance;
    }
    return End::early;
}

} // namespace

TEST(WholeSweep, EndsWhereTheDocumentedStepsLoseAPart)
{
    Random random(61);
    int ends[5] = {};
    for (int round = 0; round < rounds(6000) && !testing::Test::HasFailure(); ++round) {
        const Coordinates path = any_outline(round % 10 == 0 ? 80 : 16, random);
        const auto n = path.size() / 3;
        const double distance = random.uniform(-3, 1.5);
        reference::SweepArrays documented(n), quick(n);
        std::copy(path.begin(), path.end(), documented.flat.begin());
        std::copy(path.begin(), path.end(), quick.flat.begin());
        for (size_t i = 0; i < n; ++i)
            documented.merge[i] = static_cast<int32_t>(i);
        reference::Sweep steps = documented.sweep(distance, true);
        border::Sweep s = quick_sweep(quick, distance);
        s.request.keep_whole = true;
        ASSERT_TRUE(border::run_sweep(s));
        const End end = run_whole(steps);
        ++ends[static_cast<int>(end)];
        SCOPED_TRACE(testing::Message() << "outline " << round << " of " << n << " points, distance "
                                        << describe(distance) << ", end " << static_cast<int>(end));
        ASSERT_TRUE(same_bits({steps.remaining}, &s.progress.remaining));
        int live = 0;
        for (size_t i = 0; i < n; ++i)
            if (quick.dead[i] == 0) {
                ++live;
                ASSERT_EQ(steps.dead[i], 0);
                ASSERT_TRUE(same_bits({steps.flat[3 * i], steps.flat[3 * i + 1]}, &quick.flat[3 * i]));
            } else if (end != End::ridge) {
                ASSERT_EQ(steps.dead[i], 1);
            }
        ASSERT_GT(live, 0);
    }
    for (const End end : {End::at_distance, End::split, End::ridge, End::limb, End::early})
        EXPECT_GT(ends[static_cast<int>(end)], rounds(6000) / 300) << static_cast<int>(end);
}

} // namespace korvale::test
