// The guard behind a sweep. No input that a host can hand in is known to reach it.
#include <algorithm>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "tests/border/twins.h"
#include "tests/support/outlines.h"

namespace korvale::test {
TEST(SweepRounds, AreFourAVertexAnd64AtMost)
{
    EXPECT_EQ(korvale::border::most_rounds(0), 64);
    EXPECT_EQ(korvale::border::most_rounds(10), 104);
    EXPECT_EQ(korvale::border::most_rounds(2147483647), 8589934652);
}

// An infinite distance, which the doors refuse, is never spent: infinity less infinity is no number, and never zero.
TEST(SweepRounds, EndASweepWhoseDistanceIsInfinite)
{
    const Coordinates circle = wiggly(64, 1, 0.0); // no edge shrinks
    for (const bool split_events : {false, true}) {
        korvale::reference::SweepArrays arrays(64);
        std::copy(circle.begin(), circle.end(), arrays.flat.begin());
        auto steps = arrays.sweep(std::numeric_limits<double>::infinity(), split_events);
        korvale::border::Sweep s = quick_sweep(arrays, steps.remaining, split_events);
        EXPECT_TRUE(korvale::border::run_sweep(s));
        EXPECT_TRUE(std::isnan(s.progress.remaining));
        std::copy(circle.begin(), circle.end(), arrays.flat.begin());
        korvale::reference::run_sweep(steps);
        EXPECT_EQ(steps.rounds, 4 * 64 + 64);
    }
}

} // namespace korvale::test
