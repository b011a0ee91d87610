// The watch over a wavefront against all pairs of vertices and edges. What it promises is looked at after every round
// of whole sweeps, since a promise that is broken rarely changes a border.
#include "border/internal/watch.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "border/internal/meeting.h"
#include "border/internal/rounds.h"
#include "tests/border/shapes.h"
#include "tests/border/twins.h"

namespace korvale::test {
using namespace border;

namespace {

constexpr double kNever = std::numeric_limits<double>::infinity();

struct Vector {
    double x, y;
};

Vector operator-(const Vector& a, const Vector& b)
{
    return {a.x - b.x, a.y - b.y};
}

double cross(const Vector& a, const Vector& b)
{
    return a.x * b.y - a.y * b.x;
}

double dot(const Vector& a, const Vector& b)
{
    return a.x * b.x + a.y * b.y;
}

/// A point that goes straight on.
struct Moving {
    Vector at, velocity;

    Vector after(double distance) const { return {at.x + distance * velocity.x, at.y + distance * velocity.y}; }
};

/// The first distance from 0 to `most` at which `m` lies between `a` and `b`, all three going straight on. The area
/// between them is a quadratic function of the distance, and looked at where it is nothing.
double first_meeting(const Moving& m, const Moving& a, const Moving& b, double most)
{
    const Vector e = b.at - a.at, f = b.velocity - a.velocity, p = m.at - a.at, v = m.velocity - a.velocity;
    const double c0 = cross(e, p), c1 = cross(e, v) + cross(f, p), c2 = cross(f, v);
    const double discriminant = c1 * c1 - 4 * c2 * c0;
    if (discriminant < 0)
        return kNever;
    const double q = -0.5 * (c1 + std::copysign(std::sqrt(discriminant), c1));
    double first = kNever;
    for (const double t : {q / c2, c0 / q}) {
        if (!(t >= 0 && t <= most))
            continue;
        const Vector along = b.after(t) - a.after(t), reached = m.after(t) - a.after(t);
        const double square = dot(along, along), share = dot(along, reached) / square;
        if (dot(along, e) > 1e-6 * dot(e, e) && share >= 0 && share <= 1) // unless the edge has shrunk to nothing
            first = std::min(first, t);
    }
    return first;
}

/// A sweep that can be looked at between its rounds. It ends where edges are too short or corners too sharp.
class Rounds {
public:
    Rounds(const Coordinates& path, double distance)
        : twins_(path, distance), remaining_(distance),
          memory_(static_cast<size_t>(MeetingSearch::doubles_for(twins_.w.live, true))), w(twins_.w),
          search(w.live, true, memory_.data())
    {
    }

    /// Goes on up to where it is known what happens next. False at the end.
    bool look()
    {
        if (remaining_ == 0.0)
            return false;
        if (w.buried_count > 0) {
            pack(w);
            follow_packing(search.watch, w);
        }
        if (w.live < 24 || !measure_edges(w))
            return false;
        fit_edge_lines(w);
        round_ = Round{remaining_};
        if (aim_vertices(w, search.watch, Round(), round_) != Corners::aimed)
            return false;
        look_at_steadiness();
        event_ = first_edge_event(w, round_);
        spent_ = search.watch.spent;
        const bool was_watched = search.watch.is_on;
        event_ = earlier_split_event(search, w, {}, round_, event_, found_);
        if (!was_watched || search.watch.rounds == 0)
            spent_ = 0.0; // a new one
        look_at_what_is_due();
        return true;
    }

    /// Lets it happen, but of the piece that would die only the vertex that ran into the edge does: so crowds last. And
    /// a vertex may die for no reason, which turns its neighbours. False at the end.
    bool happen(Random& random)
    {
        if (std::fabs(event_.time) > std::fabs(remaining_))
            return false;
        if (event_.vertex < 0) {
            collapse_edges(w, event_.time);
        } else {
            move_vertices(w, event_.time);
            bury(w, event_.vertex, next_live(w, event_.vertex));
        }
        if (const int32_t i = random.below(w.live); random.one_in(2) && !w.gone[i])
            bury(w, i, next_live(w, i));
        remaining_ -= event_.time;
        return true;
    }

    /// Where a vertex goes while the sweep goes forwards, for either sign of the distance.
    Moving vertex(int32_t i) const
    {
        const double sign = remaining_ > 0.0 ? 1.0 : -1.0;
        i = i == w.live ? 0 : i;
        return {{w.at.x[i], w.at.y[i]}, {sign * w.velocity.x[i], sign * w.velocity.y[i]}};
    }

    const Round& round() const { return round_; }

    /// What the watch had spent when the vertices were where they are.
    double spent() const { return spent_; }

private:
    /// Every vertex that goes on as expected may be left alone, no other.
    void look_at_steadiness() const
    {
        const Watch& watch = search.watch;
        const int32_t *const turned = watch.unsteady.turned, *const end = turned + watch.unsteady.turned_count;
        for (int32_t i = 0; watch.is_on && i < w.live; ++i) {
            const bool is_steady = std::fabs(w.velocity.x[i] - watch.expected.x[i]) <= 5e-04 &&
                                   std::fabs(w.velocity.y[i] - watch.expected.y[i]) <= 5e-04;
            EXPECT_NE(std::binary_search(turned, end, i), is_steady) << "vertex " << i;
        }
    }

    /// Of what was due before this round's event, nothing is left that can never meet.
    void look_at_what_is_due() const
    {
        const Watch& watch = search.watch;
        for (int64_t k = 0; watch.is_on && k < watch.candidate_count; ++k) {
            const int32_t m = place_of(watch.slots, watch.candidates[k].vertex);
            const int32_t e = place_of(watch.slots, watch.candidates[k].edge);
            if (m < 0 || e < 0 || is_own(w, m, e)) {
                EXPECT_GT(watch.due[k], watch.spent) << "vertex " << m << ", edge " << e;
            }
        }
    }

    Twins twins_;
    double remaining_;
    std::vector<double> memory_;
    Findings found_;
    Round round_;
    Event event_ = {};
    double spent_ = 0.0;

public:
    Wavefront& w;
    MeetingSearch search;
};

bool holds(const Box& box, const Vector& p, double margin)
{
    return p.x - margin >= box.low_x && p.x + margin <= box.high_x && p.y - margin >= box.low_y &&
           p.y + margin <= box.high_y;
}

bool holds(const Box& outer, const Box& inner)
{
    return holds(outer, {inner.low_x, inner.low_y}, 0.0) && holds(outer, {inner.high_x, inner.high_y}, 0.0);
}

/// Boxes hold the motion up to the horizon, the box behind that of an edge is that of its end, stretches hold their
/// edges.
void look_at_boxes(const Rounds& sweep)
{
    const Watch& watch = sweep.search.watch;
    for (int32_t i = 0; i < sweep.w.live; ++i) {
        const int32_t slot = watch.slots.slot[i], next = watch.slots.slot[i + 1 == sweep.w.live ? 0 : i + 1];
        const Moving vertex = sweep.vertex(i);
        EXPECT_TRUE(holds(watch.boxes[slot], vertex.at, watch.bounds.allowance)) << "vertex " << i;
        EXPECT_TRUE(
            holds(watch.boxes[slot], vertex.after(watch.bounds.horizon - sweep.spent()), watch.bounds.allowance))
            << "vertex " << i;
        const Box end = watch.boxes[next], behind = watch.boxes[slot + 1];
        EXPECT_TRUE(holds(end, behind) && holds(behind, end)) << "edge " << i;
        EXPECT_TRUE(holds(watch.stretches[slot / watch.bounds.stretch_length], hull(watch.boxes[slot], behind)))
            << "edge " << i;
    }
}

/// Every pair that meets before the horizon is a candidate that is due by then. Returns how many such pairs there are.
int look_at_candidates(const Rounds& sweep)
{
    const Watch& watch = sweep.search.watch;
    const double rest = watch.bounds.horizon - sweep.spent();
    std::vector<double> due(static_cast<size_t>(watch.slots.count) * watch.slots.count, kNever);
    const auto due_of = [&due, &watch](int32_t vertex, int32_t edge) -> double& {
        return due[static_cast<size_t>(vertex) * watch.slots.count + edge];
    };
    for (int64_t k = 0; k < watch.candidate_count; ++k) { // a pair may be there twice
        double& known = due_of(watch.candidates[k].vertex, watch.candidates[k].edge);
        known = std::min(known, watch.due[k]);
    }
    int meetings = 0;
    for (int32_t m = 0; m < sweep.w.live; ++m)
        for (int32_t e = 0; e < sweep.w.live; ++e) {
            if (is_own(sweep.w, m, e))
                continue;
            const double meeting = first_meeting(sweep.vertex(m), sweep.vertex(e), sweep.vertex(e + 1), rest);
            if (meeting == kNever)
                continue;
            ++meetings;
            EXPECT_LE(due_of(watch.slots.slot[m], watch.slots.slot[e]), sweep.spent() + meeting)
                << "vertex " << m << ", edge " << e;
        }
    return meetings;
}

/// Towers on a plate, their roofs of three edges each. Where a small one vanishes the corner at the wall behind it
/// turns along that wall only: in y, or in x for towers that lie.
Coordinates skyline(Random& random)
{
    Coordinates path = {-1, 0, 0, -1, -9, 0};
    const int towers = 10 + random.below(10);
    path.insert(path.end(), {3.0 * towers, -9, 0, 3.0 * towers, 0, 0});
    for (int k = towers - 1; k >= 0; --k) {
        const double x = 3 * k, high = random.uniform(2, 6), chamfer = random.uniform(0.05, 0.3);
        path.insert(path.end(), {x + 2, random.uniform(0, 0.1), 0, x + 2, high, 0, x + 2 - chamfer, high + 0.5, 0});
        path.insert(path.end(), {x + chamfer, high + 0.7, 0, x, high, 0, x, random.uniform(0, 0.1), 0});
    }
    if (random.one_in(2))
        for (size_t i = 0; i < path.size(); i += 3)
            path[i + 1] = -std::exchange(path[i], path[i + 1]);
    return path;
}

/// A ring that goes round twice, so that it is near itself all along.
Coordinates double_ring(int n, Random& random)
{
    Coordinates path;
    for (int i = 0; i < n; ++i) {
        const double angle = 4 * std::numbers::pi * i / n,
                     radius = 10 + std::cos(angle / 2) + random.uniform(-0.2, 0.2);
        path.insert(path.end(), {radius * std::cos(angle), radius * std::sin(angle), 0.0});
    }
    return path;
}

/// A channel with blunt thorns on one side and a jagged wall on the other. A thorn that loses one end of its tip
/// becomes sharp: outwards it shoots ahead, and its flanks reach vertices that they would have missed.
Coordinates channel(Random& random)
{
    Coordinates path = {0, -3, 0, 17, -3, 0, 17, 5, 0, 0, 5, 0};
    for (int k = 0; k < 24; ++k)
        path.insert(path.end(), {0.6 * k, random.uniform(1.5, 2.1), 0});
    for (int k = 11; k >= 0; --k) {
        const double x = 0.6 + 1.2 * k + random.uniform(-0.05, 0.05), high = random.uniform(0.7, 1.0);
        path.insert(path.end(), {x + 0.5, 0, 0, x + 0.1, high, 0, x - 0.1, random.uniform(0.7, 1.0), 0, x - 0.5, 0, 0});
    }
    return path;
}

Coordinates any_crowd(Random& random)
{
    const int n = 40 + random.below(90);
    switch (random.below(8)) {
    case 0:
        return rough(wiggly(n, n / 16, 0.5), 0.02, random);
    case 1:
        return wiggly(n, n / 8, 1.5);
    case 2:
        return rough(gear(8 + random.below(20), 8, 10), random.uniform(0, 0.05), random);
    case 3:
        return rough(comb(5 + random.below(15), random.uniform(0.1, 1.5)), random.uniform(1e-6, 0.02), random);
    case 4:
        return skyline(random);
    case 5:
        return channel(random);
    case 6:
        return double_ring(60 + n, random);
    default:
        return coast(4 + random.below(2), 0.3, random);
    }
}

} // namespace

TEST(Watch, HoldsEveryMeetingBeforeItsHorizonThroughWholeSweeps)
{
    Random random(1);
    int kept_up = 0, meetings = 0;
    for (int round = 0; round < rounds(130) && !testing::Test::HasFailure(); ++round) {
        const double distance = random.one_in(2) ? random.uniform(0.5, 6) : random.uniform(-6, -0.5);
        Rounds sweep(any_crowd(random), distance);
        for (int looks = 0; looks < 60 && sweep.look(); ++looks) {
            SCOPED_TRACE(testing::Message() << "outline " << round << ", round " << looks);
            if (sweep.search.watch.is_on) {
                kept_up += sweep.search.watch.rounds > 0;
                look_at_boxes(sweep);
                meetings += look_at_candidates(sweep);
            }
            if (testing::Test::HasFailure() || !sweep.happen(random))
                break;
        }
    }
    EXPECT_GT(kept_up, 100);
    EXPECT_GT(meetings, 3000);
}

TEST(Watch, NoPairMeetsBeforeItIsDueThoughAllThreeTurnByTwiceWhatIsSteady)
{
    constexpr double kTurn = 2 * 5e-04 * (1 - 1e-9);
    Random random(2);
    int tested = 0;
    for (int round = 0; round < rounds(6) && !testing::Test::HasFailure(); ++round) {
        const double noise = random.uniform(1e-5, 1e-3);
        Rounds sweep(rough(comb(5 + random.below(10), random.uniform(0.02, 0.2)), noise, random), 1.0);
        if (!sweep.look() || !sweep.search.watch.is_on)
            continue;
        Watch& watch = sweep.search.watch;
        watch.most_candidates = watch.candidate_count = 1; // one after the other takes its place
        watch.spent = 0.0;
        for (int32_t m = 0; m < sweep.w.live; ++m)
            for (int32_t e = 0; e < sweep.w.live; ++e) {
                if (is_own(sweep.w, m, e))
                    continue;
                watch.candidate_count = 1;
                renew_due(watch, sweep.w, sweep.round(), 0, m, e);
                const double due = watch.candidate_count == 0 ? watch.bounds.horizon : watch.due[0];
                if (due <= 0.0)
                    continue;
                ++tested;
                for (int signs = 0; signs < 64; ++signs) {
                    Moving moving[] = {sweep.vertex(m), sweep.vertex(e), sweep.vertex(e + 1)};
                    for (int k = 0; k < 3; ++k) {
                        moving[k].velocity.x += (signs >> k & 1) != 0 ? kTurn : -kTurn;
                        moving[k].velocity.y += (signs >> (3 + k) & 1) != 0 ? kTurn : -kTurn;
                    }
                    EXPECT_EQ(first_meeting(moving[0], moving[1], moving[2], due), kNever)
                        << "outline " << round << ", vertex " << m << ", edge " << e << ", due " << due;
                }
            }
    }
    EXPECT_GT(tested, 1000);
}

} // namespace korvale::test
