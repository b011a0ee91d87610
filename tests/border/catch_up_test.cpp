// Sweeps that rounding leads astray, as the documented steps go, and with the mode that keeps to the way.
#include <cmath>

#include <gtest/gtest.h>

#include "tests/border/twins.h"
#include "tests/support/outlines.h"

namespace korvale::test {
namespace {

/// A sweep of an outline, done.
struct Swept {
    Swept(const Coordinates& path, double distance, bool catch_up) : arrays(path.size() / 3)
    {
        arrays.flat = path;
        border::Sweep s = quick_sweep(arrays, distance);
        s.request.catch_up = catch_up;
        EXPECT_TRUE(border::run_sweep(s));
        found = s.found;
    }

    /// What the vertices that are left go round counter-clockwise.
    double area() const
    {
        const std::vector<double>& flat = arrays.flat;
        const size_t n = arrays.dead.size();
        double twice = 0;
        for (size_t i = 0; i < n; ++i) {
            if (arrays.dead[i] != 0)
                continue;
            size_t j = i;
            do
                j = j + 1 < n ? j + 1 : 0;
            while (arrays.dead[j] != 0);
            twice += flat[3 * i] * flat[3 * j + 1] - flat[3 * j] * flat[3 * i + 1];
        }
        return twice / 2;
    }

    reference::SweepArrays arrays;
    border::Findings found;
};

} // namespace

TEST(CatchUp, CutsOffWhatRoundingHasPutPastAnEdge)
{
    int missed = 0, astray = 0;
    for (int turn = 0; turn < 300; ++turn) {
        const Swept plain(turned(corridors(), turn), -1.1, false), caught(turned(corridors(), turn), -1.1, true);
        ASSERT_GT(caught.area(), -1e-9) << turn;
        ASSERT_LT(caught.area(), 0.0759077) << turn;
        missed += plain.found.has_missed;
        if (plain.area() < -1e-9) {
            ++astray;
            ASSERT_TRUE(plain.found.has_missed) << turn;
        }
    }
    EXPECT_GT(astray, 0);
    EXPECT_LT(missed, 300);
}

TEST(CatchUp, KeepsAPieceWhoseBoxHasNoArea)
{
    // One end of its third edge, which shrinks to nothing, runs into the second one; the first has a box without area.
    const Coordinates room = {0, 0, 0, 7, 0, 0, 5, 6, 0, 3, 5, 0};
    const Swept plain(room, -1.866845998564908, false), caught(room, -1.866845998564908, true);
    EXPECT_TRUE(plain.found.has_lost);
    EXPECT_NEAR(caught.area(), 0.6632495848230422, 1e-14); // of products of coordinates below 7, rounded by 4e-15
}

TEST(CatchUp, NotesNothingWhereNothingIsClose)
{
    const Coordinates notched = {0, 0, 0, 10, 0, 0, 10, 10, 0, 6, 10, 0, 5, 3, 0, 4, 10, 0, 0, 10, 0};
    for (const double distance : {-1.7, -1.0, 1.0, 3.0}) {
        const Swept plain(notched, distance, false);
        EXPECT_FALSE(plain.found.has_missed || plain.found.has_lost) << distance;
    }
}

} // namespace korvale::test
