// The packed container against lists from which the dead are erased one by one.
#include "border/internal/wavefront.h"

#include <algorithm>
#include <numeric>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "tests/border/twins.h"
#include "tests/support/random.h"

namespace korvale::test {
using namespace border;

namespace {

using Values = std::vector<double>;

/// Arrays of a sweep in which nobody has died, every double SweepArrays::kUntouched, and room for a wavefront over it.
struct Arrays : reference::SweepArrays {
    explicit Arrays(int n)
        : SweepArrays(static_cast<size_t>(n)), rows(rows_in(*this)),
          memory(static_cast<size_t>(Wavefront::doubles_for(n)))
    {
        std::fill(dead.begin(), dead.end(), uint8_t{0});
        std::iota(merge.begin(), merge.end(), 0);
        for (int i = 0; i < n; ++i)
            flat[3 * i] = i;
    }

    Rows rows;
    Values memory;
};

/// Fills the columns of a round so that each value tells its vertex and its column.
void fill(Wavefront& w)
{
    for (int32_t i = 0; i < w.live; ++i) {
        const double v = w.id[i];
        w.edge.dx[i] = v + 0.25;
        w.edge.dy[i] = v + 0.375;
        w.edge.length[i] = v + 0.5;
        w.velocity.x[i] = v + 0.625;
        w.velocity.y[i] = v + 0.75;
        w.rate[i] = v + 0.875;
    }
    w.line_at = w.at;
    w.line_edge = w.edge;
    w.written = Wavefront::lines | Wavefront::velocities | Wavefront::rates | Wavefront::edges;
    w.spread = 0;
}

} // namespace

TEST(RemoveValues, LeavesWhatIsBetweenThem)
{
    Random random(1);
    for (int round = 0; round < rounds(2000); ++round) {
        const int n = 1 + random.below(40);
        std::vector<int32_t> values(n), gaps, expected;
        std::iota(values.begin(), values.end(), 100);
        for (int i = 0; i < n; ++i)
            if (random.one_in(3))
                gaps.push_back(i);
            else
                expected.push_back(100 + i);
        if (gaps.empty())
            continue;
        remove_values(values.data(), sizeof values[0], gaps.data(), static_cast<int32_t>(gaps.size()), n);
        values.resize(expected.size());
        EXPECT_EQ(values, expected);
    }
}

TEST(Column, AConstOneGivesNothingToWriteThrough)
{
    EXPECT_FALSE((std::is_convertible_v<const Column<double>&, double*>));
    EXPECT_FALSE((std::is_constructible_v<Column<double>, const Column<double>&>));
    EXPECT_FALSE((std::is_constructible_v<Points, const Points&>));
    EXPECT_FALSE((std::is_assignable_v<EdgeColumns&, const EdgeColumns&>));
    EXPECT_TRUE((std::is_convertible_v<const Column<double>&, const double*>));
    EXPECT_TRUE((std::is_convertible_v<Column<double>&, double*>));
}

TEST(Wavefront, TheLiveStayInOrderThroughManyDeaths)
{
    Random random(2);
    for (int round = 0; round < rounds(300) && !testing::Test::HasFailure(); ++round) {
        const int n = 3 + random.below(60);
        Arrays arrays(n);
        Wavefront w(arrays.rows, random.one_in(2), arrays.memory.data());
        std::vector<int32_t> expected(n);
        std::iota(expected.begin(), expected.end(), 0);
        while (w.live > 2) {
            fill(w);
            for (int deaths = 1 + random.below(std::min(5, w.live - 2)); deaths > 0; --deaths) {
                int32_t i = random.below(w.live);
                if (w.gone[i])
                    i = next_live(w, i);
                const int32_t id = w.id[i], heir = w.id[next_live(w, i)];
                bury(w, i, next_live(w, i));
                EXPECT_EQ(arrays.dead[id], 1);
                EXPECT_EQ(arrays.merge[id], heir);
                EXPECT_EQ(arrays.rate[id], id + 0.875);
                std::erase(expected, id);
            }
            pack(w);
            ASSERT_EQ(w.live, static_cast<int32_t>(expected.size()));
            EXPECT_EQ(std::vector<int32_t>(w.id + 0, w.id + w.live), expected);
            for (int32_t i = 0; i < w.live; ++i)
                EXPECT_EQ(w.at.x[i], expected[i]);
            std::swap(w.edge, w.edge_before); // as the next round does
            if (random.one_in(2)) {
                refresh(w);
                for (int32_t i = 0; i < w.live; ++i) {
                    EXPECT_EQ(w.edge_before.dy[i], expected[i] + 0.375);
                    EXPECT_EQ(w.edge_before.length[i], expected[i] + 0.5);
                    EXPECT_EQ(w.velocity.y[i], expected[i] + 0.75);
                    EXPECT_EQ(w.rate[i], expected[i] + 0.875);
                }
            }
        }
    }
}

TEST(Wavefront, LinesFollowFromTheEdgesTheyWereFittedTo)
{
    Arrays arrays(4);
    Wavefront w(arrays.rows, true, arrays.memory.data());
    fill(w);
    std::swap(w.at, w.ahead); // the vertices have moved
    for (int i = 0; i < 4; ++i)
        w.at.x[i] = w.at.y[i] = -1;
    hand_back(w);
    for (int i = 0; i < 4; ++i) {
        const double dx = i + 0.25, dy = i + 0.375;
        EXPECT_EQ(arrays.line[3 * i], -dy);
        EXPECT_EQ(arrays.line[3 * i + 1], dx);
        EXPECT_EQ(arrays.line[3 * i + 2], dy * i - dx * 7.25);
        EXPECT_EQ(arrays.flat[3 * i], -1);
    }
}

TEST(Wavefront, WhatNoStepHasWrittenStaysInTheArrays)
{
    Arrays arrays(3);
    Wavefront w(arrays.rows, true, arrays.memory.data());
    hand_back(w);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(arrays.velocity[3 * i], 7.25);
        EXPECT_EQ(arrays.direction[3 * i + 1], 7.25);
        EXPECT_EQ(arrays.line[3 * i + 2], 7.25);
        EXPECT_EQ(arrays.length[i], 7.25);
        EXPECT_EQ(arrays.rate[i], 7.25);
    }
}

TEST(Wavefront, ARefreshFetchesVelocitiesThatNoStepHasWritten)
{
    Arrays arrays(3);
    arrays.velocity[4] = 3.5;
    Wavefront w(arrays.rows, false, arrays.memory.data());
    refresh(w);
    EXPECT_EQ(w.velocity.x[1], 7.25);
    EXPECT_EQ(w.velocity.y[1], 3.5);
}

TEST(Wavefront, NeighboursAreFoundAcrossTheDeadAndTheEnds)
{
    Arrays arrays(5);
    Wavefront w(arrays.rows, false, arrays.memory.data());
    bury(w, 0, 1);
    bury(w, 3, 4);
    EXPECT_EQ(next_live(w, 2), 4);
    EXPECT_EQ(next_live(w, 4), 1);
    EXPECT_EQ(previous_live(w, 1), 4);
    EXPECT_EQ(previous_live(w, 4), 2);
}

} // namespace korvale::test
