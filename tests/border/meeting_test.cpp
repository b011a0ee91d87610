// The search for the first meeting against all pairs, as the documented step tests them, each way that it takes.
#include "border/internal/meeting.h"

#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "border/internal/rounds.h"
#include "tests/border/shapes.h"
#include "tests/border/twins.h"
#include "tests/support/bits.h"

namespace korvale::test {

using border::Corners;
using border::Event;
using border::MeetingSearch;
using border::Round;

namespace {

/// The first search of a sweep.
struct Search {
    Search(const Coordinates& path, double distance)
        : twins(path, distance), memory(static_cast<size_t>(MeetingSearch::doubles_for(twins.w.live, true)), -7.5),
          search(twins.w.live, true, memory.data()), round{distance}
    {
    }

    /// Measures and aims. False where a corner is too sharp or an edge too short.
    bool start()
    {
        if (!measure_edges(twins.w) || !reference::measure_edges(twins.steps))
            return false;
        fit_edge_lines(twins.w);
        reference::fit_edge_lines(twins.steps);
        const Corners corners = aim_vertices(twins.w, search.watch, Round(), round);
        reference::aim_vertices(twins.steps);
        edge = 0.0;
        for (int32_t i = 0; i < twins.w.live; ++i)
            edge += twins.w.edge.length[i] / twins.w.live;
        first_edge_event(twins.w, round);
        return corners == Corners::aimed;
    }

    /// The first meeting before `time`, looked for both ways.
    Event find_before(double time)
    {
        const reference::Event first = reference::earlier_split_event(twins.steps, {time, -1, -1});
        const Event found = earlier_split_event(search, twins.w, request, round, {time, -1, -1}, findings);
        EXPECT_TRUE(same_bits(first.time, found.time));
        EXPECT_EQ(found.vertex, first.vertex);
        EXPECT_EQ(found.edge, first.edge);
        return found;
    }

    Twins twins;
    std::vector<double> memory;
    MeetingSearch search;
    border::Request request;
    Round round;
    border::Findings findings;
    double edge = 0.0; ///< the average length
};

Coordinates any_crowd(int n, Random& random)
{
    switch (random.below(4)) {
    case 0:
        return rough(wiggly(n, n / 8, random.uniform(0.2, 2)), 0.3, random);
    case 1:
        return rough(comb(n / 4, random.uniform(0.3, 1.5)), 0.01, random);
    case 2:
        return rough(gear(n / 4, 8, 10), 0.05, random);
    default:
        return scramble(n, random);
    }
}

/// Searches with an event at `window` average edges, or up to ten times as far. Returns how many found a meeting.
int search_windows(uint64_t seed, int n, double window, int& watched)
{
    Random random(seed);
    int found = 0;
    for (int round = 0; round < rounds(200) && !testing::Test::HasFailure(); ++round) {
        SCOPED_TRACE(testing::Message() << "outline " << round);
        const double sign = random.one_in(2) ? 1 : -1;
        Search search(any_crowd(n, random), 1e6 * sign);
        if (!search.start())
            continue;
        found += search.find_before(sign * window * search.edge * random.uniform(1, 10)).vertex >= 0;
        watched += search.search.watch.is_on;
    }
    return found;
}

} // namespace

TEST(Meeting, OfFewVerticesIsThatOfAllPairs)
{
    int watched = 0;
    EXPECT_GT(search_windows(1, 20, 0.5, watched), 50);
    EXPECT_EQ(watched, 0);
}

TEST(Meeting, InANarrowWindowIsThatOfAllPairsAndStartsAWatch)
{
    int watched = 0;
    EXPECT_GT(search_windows(2, 150, 0.01, watched), 20);
    EXPECT_GT(watched, 50);
}

TEST(Meeting, InAWideWindowIsThatOfAllPairsWithoutAWatch)
{
    int watched = 0;
    EXPECT_GT(search_windows(3, 150, 0.4, watched), 100);
    EXPECT_EQ(watched, 0);
}

// Boxes of a window above four edges are made in stages.
TEST(Meeting, InAnEarlyStageIsThatOfAllPairs)
{
    int watched = 0;
    EXPECT_GT(search_windows(4, 150, 4.5, watched), 100);
    EXPECT_GT(search_windows(5, 60, 300, watched), 100);
    EXPECT_EQ(watched, 0);
}

// A dent comes down on a floor with many short edges between two long ones, so that nothing meets before.
TEST(Meeting, InALateStageIsThatOfAllPairs)
{
    Random random(8);
    int late = 0;
    for (int round = 0; round < rounds(40) && !HasFailure(); ++round) {
        SCOPED_TRACE(testing::Message() << "outline " << round);
        const int n = 300 + random.below(300);
        const double high = random.uniform(20, 300), wide = 3 * high, tip = 0.5 * wide + random.uniform(-2, 2);
        Coordinates path = {0, 0, 0};
        for (int i = 0; i <= n; ++i)
            path.insert(path.end(), {0.5 * wide - 5 + 10.0 * i / n, 0.0, 0.0});
        path.insert(path.end(), {wide, 0, 0, wide, high, 0});
        path.insert(path.end(), {tip + 9, high, 0, tip, random.uniform(0.5, 0.9) * high, 0, tip - 9, high, 0});
        path.insert(path.end(), {0, high, 0});
        Search search(path, -1e6);
        if (!search.start())
            continue;
        const Event event = search.find_before(-0.6 * high);
        late += event.vertex >= 0 && std::fabs(event.time) > 4 * search.edge;
    }
    EXPECT_GT(late, 10);
}

TEST(Meeting, OfVerticesTooFarAwayForBoxesIsThatOfAllPairs)
{
    Random random(6);
    for (int round = 0; round < rounds(50); ++round) {
        Coordinates path = any_crowd(40, random);
        for (double& c : path)
            c *= 1e101;
        Search search(path, 1e103);
        if (search.start())
            search.find_before(1e102);
        EXPECT_FALSE(search.search.watch.is_on);
    }
}

// Two notches of one depth reach the floor at once.
TEST(Meeting, OfEqualOnesIsThatOfTheFirstVertex)
{
    Search search({0, 0, 0, 20, 0, 0, 20, 9, 0, 15, 9, 0, 14, 4, 0, 13, 9, 0, 7, 9, 0, 6, 4, 0, 5, 9, 0, 0, 9, 0},
                  -9.0);
    ASSERT_TRUE(search.start());
    const Event event = search.find_before(-9.0);
    EXPECT_EQ(event.vertex, 4);
    EXPECT_EQ(event.edge, 0);
}

// A search that is told to stop goes back without the rest, and says so.
TEST(Meeting, SearchEndsWhereTheHostEndsTheSweep)
{
    Random random(7);
    Search search(rough(wiggly(40000, 4000, 1.0), 0.2, random), 1e6);
    ASSERT_TRUE(search.start());
    search.request.ask = [](double, void*) { return false; };
    earlier_split_event(search.search, search.twins.w, search.request, search.round, {30.0, -1, -1}, search.findings);
    EXPECT_TRUE(search.findings.is_stopped);
}

} // namespace korvale::test
