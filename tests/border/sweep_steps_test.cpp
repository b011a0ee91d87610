// The sweep on random outlines: the library against the documented steps, bit for bit in everything that can be seen,
// and properties that hold whatever the outline.
#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include <gtest/gtest.h>

#include "border/border.h"
#include "data/operations.h"
#include "path/flatten.h"
#include "platform/layer.h"
#include "tests/border/records.h"
#include "tests/border/shapes.h"
#include "tests/reference/sweep.h"
#include "tests/support/bits.h"

namespace korvale::test {
namespace {

/// What the arrays hold before a sweep, so that entries that it must not write are seen as well.
constexpr double kUntouched = korvale::reference::SweepArrays::kUntouched;

/// All that `BORDER_BORDER` leaves, computed by the documented steps.
struct Expected : korvale::reference::SweepArrays {
    using SweepArrays::SweepArrays;

    int32_t points;
    int64_t rounds;
    Coordinates border;
};

Expected expect(const Outline& outline, int seed)
{
    const size_t n = outline.path.size() / 3;
    Expected expected(n);
    OwnedBORDERStatus arrays(outline.path);
    fill_points(*arrays->flat, outline.path);
    Xfm xfm, reverse;
    Mwsrand(static_cast<unsigned>(seed));
    DATA_to_xy_xfms(arrays->path, xfm, reverse, 1);
    TransformDATA(xfm, arrays->path, arrays->flat);
    std::copy_n(arrays->flat->dvals, 3 * n, expected.flat.begin());

    korvale::reference::Sweep s = expected.sweep(outline.distance, outline.split_events);
    korvale::reference::run_sweep(s);
    expected.rounds = s.rounds;
    expected.points = s.n;
    if (outline.keep_collapsed)
        korvale::reference::join_dead_vertices(s);
    else
        expected.points = korvale::reference::pack_live_positions(s);

    Coordinates border(expected.flat.begin(), expected.flat.begin() + 3 * expected.points);
    fill_points(*arrays->flat, border);
    fill_points(*arrays->output, border);
    TransformDATA(reverse, arrays->flat, arrays->output);
    expected.border = points_of(arrays->output);
    return expected;
}

void prefill(DATAstruct& d, int32_t kind, size_t n, int32_t dim)
{
    d.type = kind;
    d.count = static_cast<int32_t>(n);
    d.dim = dim;
    ASSERT_EQ(DATAAllocate(&d), 1);
    if (kind == DATA_TYPE_DOUBLE)
        std::fill_n(d.dvals, n * static_cast<size_t>(dim), kUntouched);
    else if (kind == DATA_TYPE_INT)
        std::fill_n(d.ivals, n, 99);
    else
        std::fill_n(d.bvals, n, uint8_t{99});
}

/// Whether all coordinates are of a size at which rounding cannot keep an edge from collapsing.
bool is_moderate(const Coordinates& points)
{
    return std::all_of(points.begin(), points.end(), [](double c) { return std::fabs(c) < 1e3; });
}

/// Whether the library leaves what the documented steps leave.
void compare(const Outline& outline, int seed)
{
    const Expected expected = expect(outline, seed);
    const size_t n = outline.path.size() / 3;

    OwnedBORDERStatus status(outline.path);
    for (DATAstruct* const d : {status->flat, status->direction, status->velocity, status->line})
        prefill(*d, DATA_TYPE_DOUBLE, n, 3);
    prefill(*status->length, DATA_TYPE_DOUBLE, n, 1);
    prefill(*status->rate, DATA_TYPE_DOUBLE, n, 1);
    prefill(*status->dead, DATA_TYPE_BYTE, n, 1);
    prefill(*status->merge, DATA_TYPE_INT, n, 1);
    status->distance = outline.distance;
    status->keep_collapsed = outline.keep_collapsed;
    status->split_events = outline.split_events;
    Mwsrand(static_cast<unsigned>(seed));
    ASSERT_EQ(BORDER_BORDER(status), 1);

    if (is_moderate(outline.path)) {
        EXPECT_LT(expected.rounds, 4 * static_cast<int64_t>(n) + 64);
    }
    EXPECT_EQ(status->flat->count, expected.points);
    EXPECT_EQ(status->distance, outline.distance);
    EXPECT_TRUE(same_values(expected.dead.data(), status->dead->bvals, n)) << "dead";
    EXPECT_TRUE(same_values(expected.merge.data(), status->merge->ivals, n)) << "merge";
    EXPECT_TRUE(same_bits(expected.flat, status->flat->dvals)) << "flat";
    EXPECT_TRUE(same_bits(expected.direction, status->direction->dvals)) << "direction";
    EXPECT_TRUE(same_bits(expected.velocity, status->velocity->dvals)) << "velocity";
    EXPECT_TRUE(same_bits(expected.line, status->line->dvals)) << "line";
    EXPECT_TRUE(same_bits(expected.length, status->length->dvals)) << "length";
    EXPECT_TRUE(same_bits(expected.rate, status->rate->dvals)) << "rate";
    EXPECT_TRUE(same_bits(expected.border, points_of(status->output))) << "output";
}

double any_distance(Random& random)
{
    const double sign = random.one_in(2) ? -1.0 : 1.0;
    switch (random.below(6)) {
    case 0:
        return sign * random.between(1, 8) * 0.25;
    case 1:
        return sign * std::fabs(random.spread());
    case 2:
        return sign * random.uniform(0, 10);
    default:
        return sign * random.uniform(0, 1.5);
    }
}

void compare_many(uint64_t seed, int rounds, int most_points)
{
    Random random(seed);
    for (int round = 0; round < korvale::test::rounds(rounds) && !testing::Test::HasFailure(); ++round) {
        const Outline outline = {any_outline(most_points, random), any_distance(random), random.one_in(2),
                                 !random.one_in(4)};
        SCOPED_TRACE(testing::Message() << "outline " << round << " of " << outline.path.size() / 3
                                        << " points, distance " << describe(outline.distance) << ", splits "
                                        << outline.split_events);
        compare(outline, round);
    }
}

} // namespace

TEST(SweepSteps, LeaveTheSameOfSmallOutlines)
{
    compare_many(1, 20000, 12);
}

TEST(SweepSteps, LeaveTheSameOfMiddlingOutlines)
{
    compare_many(2, 3000, 60);
}

TEST(SweepSteps, LeaveTheSameOfLargeOutlines)
{
    compare_many(3, 300, 300);
}

TEST(SweepSteps, LeaveTheSameThroughManyEvents)
{
    Random random(4);
    for (const int n : {300, 600}) {
        compare({rough(wiggly(n, n / 16, 0.5), 0.02, random), -6.0, true, true}, n);
        compare({wiggly(n, n / 40, 1.5), 3.0, false, true}, n);
        compare({wiggly(n, n / 16, 0.5), -20.0, true, false}, n);
    }
    compare({coast(7, 0.3, random), -4.0, true, true}, 1);
    compare({coast(7, 0.3, random), 4.0, true, true}, 1);
    compare({gear(100, 8, 10), -3.0, true, true}, 1);
    compare({comb(80, 0.5), 0.4, true, true}, 1);
}

// Teeth of a comb vanish all at once and leave spikes, whose removal brings their feet together.
TEST(SweepSteps, LeaveTheSameWhereSpikesCollapse)
{
    Random random(7);
    for (int round = 0; round < rounds(400) && !testing::Test::HasFailure(); ++round) {
        Coordinates path = comb(1 + random.below(25), random.one_in(2) ? 0.5 : random.uniform(0.1, 1.5));
        if (random.one_in(3)) // begin anywhere
            std::rotate(path.begin(), path.begin() + 3 * random.below(static_cast<int>(path.size() / 3)), path.end());
        if (random.one_in(3))
            path = rough(path, 1e-6, random);
        const double distance = random.one_in(2) ? random.uniform(-1, 1) : random.one_in(2) ? -0.6 : 0.5;
        compare({path, distance, random.one_in(2), random.one_in(2)}, round);
    }
}

// A plate whose long foot has many short edges between two long ones, so that none vanishes before a dent on the other
// side has come all the way: a search in stages finds the meeting in a late one.
TEST(SweepSteps, LeaveTheSameWhereFarSidesMeetBeforeAnyEdgeVanishes)
{
    Random random(9);
    int met = 0;
    for (int round = 0; round < rounds(200) && !testing::Test::HasFailure(); ++round) {
        const int n = 20 + random.below(150);
        const double depth = random.uniform(1, 9), tip = random.uniform(16, 24);
        Coordinates path = {0, 0, 0};
        for (int i = 0; i <= n; ++i)
            path.insert(path.end(), {15 + 10.0 * i / n, 0.0, 0.0});
        path.insert(path.end(), {40, 0, 0, 40, 10, 0, tip + 1, 10, 0, tip, 10 - depth, 0, tip - 1, 10, 0, 0, 10, 0});
        if (random.one_in(2))
            path = rough(path, 1e-4, random);
        const Outline outline = {path, random.uniform(-6, -3), false, true};
        compare(outline, round);
        met += border_of<SecondFlavour>(outline).border.size() <
               border_of<SecondFlavour>({path, outline.distance, false, false}).border.size();
    }
    EXPECT_GT(met, 50);
}

// Points on a line, a few times the length below which edges merge: every corner is straight or the tip of a spike.
TEST(SweepSteps, LeaveTheSameWhereNothingButSpikesAndShortEdgesAreLeft)
{
    Random random(8);
    for (int round = 0; round < rounds(3000) && !testing::Test::HasFailure(); ++round) {
        const int n = 3 + random.below(60);
        const double width = random.uniform(2e-06, 2e-05);
        Coordinates path;
        for (int i = 0; i < n; ++i)
            path.insert(path.end(), {random.uniform(0, width), 0.0, 0.0});
        if (random.one_in(2)) // something is left
            path.insert(path.end(), {-3.0, 4.0, 0.0, -3.0, -4.0, 0.0});
        compare({path, random.uniform(-1, 1), random.one_in(2), random.one_in(2)}, round);
    }
}

TEST(SweepSteps, MakeTheSameBorderOfTheFirstGeneration)
{
    Random random(5);
    for (int round = 0; round < rounds(2000) && !testing::Test::HasFailure(); ++round) {
        const Outline outline = {any_outline(40, random), any_distance(random), random.one_in(2), random.one_in(2)};
        OwnedBorderStatus status(outline.path);
        status->distance = outline.distance;
        status->keep_collapsed = outline.keep_collapsed;
        status->split_events = outline.split_events;
        status->height = random.uniform(-1, 1);
        Xfm xfm, reverse;
        if (data_to_xy_xfms(status->path, xfm, reverse, 1) < 0) {
            EXPECT_EQ(Border(status), -1);
            continue;
        }
        ASSERT_EQ(Border(status), 1);

        const size_t n = outline.path.size() / 3;
        OwnedBorderStatus flat(outline.path);
        TransformData(xfm, status->path, flat->path);
        korvale::reference::SweepArrays steps(n);
        korvale::reference::Sweep s = steps.sweep(outline.distance, outline.split_events);
        s.flat = flat->path->dvals;
        korvale::reference::run_sweep(s);
        if (outline.keep_collapsed)
            korvale::reference::join_dead_vertices(s);
        else
            flat->path->count = korvale::reference::pack_live_positions(s);
        for (int i = 0; i < flat->path->count; ++i)
            flat->path->dvals[3 * i + 2] = status->height;
        TransformData(reverse, flat->path, flat->path);
        EXPECT_TRUE(same_bits(points_of(flat->path), points_of(status->output)));
    }
}

// With no events every edge of the border lies at the signed distance from its edge of the outline.
TEST(BORDER_BORDER, WithoutEventsEveryEdgeLiesAtTheDistance)
{
    Random random(6);
    int tested = 0;
    for (int round = 0; round < rounds(400); ++round) {
        const int n = 3 + random.below(100);
        const Coordinates path = rough(wiggly(n, 1 + n / 12, random.uniform(0, 1.5)), random.uniform(0, 0.3), random);
        const double distance = random.uniform(-0.4, 2);
        OwnedBORDERStatus status(path);
        status->distance = distance;
        ASSERT_EQ(BORDER_BORDER(status), 1);
        const Coordinates border = points_of(status->output);
        bool is_plain = std::count(status->dead->bvals, status->dead->bvals + n, 0) == n;
        std::vector<double> ux(n), uy(n);
        for (int i = 0; i < n; ++i) {
            const double *const p = &path[3 * i], *const q = &path[3 * ((i + 1) % n)];
            const double length = std::hypot(q[0] - p[0], q[1] - p[1]);
            ux[i] = (q[0] - p[0]) / length;
            uy[i] = (q[1] - p[1]) / length;
        }
        for (int i = 0; i < n; ++i) { // no corner sharper than one degree
            const int k = (i + n - 1) % n;
            is_plain = is_plain && ux[k] * ux[i] + uy[k] * uy[i] > -std::cos(std::numbers::pi / 180);
        }
        if (!is_plain)
            continue;
        ++tested;
        for (int i = 0; i < n; ++i)
            for (const int end : {i, (i + 1) % n}) {
                const double x = border[3 * end] - path[3 * i], y = border[3 * end + 1] - path[3 * i + 1];
                // Coordinates of about 12 and the distance are rounded; a corner of one degree enlarges that by 115.
                EXPECT_NEAR(x * uy[i] - y * ux[i], distance, 115 * 1e-15 * (12 + std::fabs(distance)));
            }
    }
    EXPECT_GT(tested, 100);
}

} // namespace korvale::test
