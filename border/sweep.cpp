// The border sweep. Every edge of a closed outline travels to its right at unit speed, so a vertex moves along the
// bisector of its two edges and an edge's length changes at a constant rate. That goes on until something happens: an
// edge shrinks to nothing and its vertex dies, or (where wanted) a vertex runs into an edge that is not its own, which
// cuts the outline in two; the piece with the smaller box dies. Then all is measured again and the rest of the
// distance travelled. Every round returns, buries a vertex, or moves by the time of its event.
#include "border/internal/sweep.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

#include "border/internal/meeting.h"
#include "border/internal/rounds.h"
#include "border/internal/wavefront.h"
#include "border/internal/workroom.h"
#include "math/internal/vector.h"

namespace korvale::border {
namespace {

void start_live(Sweep& s)
{
    std::memset(s.dead, 0, static_cast<size_t>(s.n));
    for (int32_t i = 0; i < s.n; ++i)
        s.merge[i] = i;
}

/// Fewer vertices have no area between them.
constexpr int32_t kLeast = 3;

/// Tells of the piece of those that have been buried from number `first` on.
void tell_of_piece(Wavefront& w, int32_t vertex, int32_t first)
{
    const Sweep& s = w.s();
    const int32_t count = w.buried_count - first;
    for (int32_t k = 0; k < count; ++k)
        w.list[k] = w.id[w.buried[first + k]];
    std::sort(+w.list, w.list + count);
    s.drop({s.remaining, w.id[vertex], w.at.x[vertex], w.at.y[vertex], count, w.list}, s.receiver);
}

/// Tells of the next stop. The live vertices are written `time` ahead of where they are; the sweep does not read that.
void tell_of_stop(Wavefront& w, double time)
{
    Sweep& s = w.s();
    for (int32_t i = 0; i < w.live; ++i)
        if (!w.gone[i]) {
            double* const place = s.flat + 3 * int64_t{w.id[i]};
            place[0] = time == 0.0 ? w.at.x[i] : w.at.x[i] + time * w.velocity.x[i];
            place[1] = time == 0.0 ? w.at.y[i] : w.at.y[i] + time * w.velocity.y[i];
        }
    s.pass(s.passed++, s.receiver);
}

/// Tells of the stops that have been reached.
void tell_of_reached(Wavefront& w)
{
    Sweep& s = w.s();
    while (s.passed < s.stop_count && s.stops[s.passed] == 0.0)
        tell_of_stop(w, 0.0);
}

/// Tells of the stops that come before the event.
///
/// A sweep of less than the whole distance differs from this one in nothing before it ends: an event within a distance
/// is the same for all farther ones, and what else a round does is the same for all. Only the search for meetings looks
/// as far ahead as there is to go, so which vertices it sees that have missed an edge may differ.
void tell_of_stops_before(Wavefront& w, const Event& event)
{
    Sweep& s = w.s();
    while (s.passed < s.stop_count && std::fabs(event.time) > std::fabs(s.stops[s.passed])) {
        const double time = std::exchange(s.stops[s.passed], 0.0);
        tell_of_stop(w, time);
    }
}

/// Tells of the stops that are left where the sweep has ended, unless it has been stopped.
void tell_of_rest(Sweep& s)
{
    while (s.passed < s.stop_count && !s.is_stopped)
        s.pass(s.passed++, s.receiver);
}

void sweep_wavefront(Wavefront& w, MeetingSearch& search)
{
    Sweep& s = w.s();
    const double distance = s.remaining;
    int64_t looked_at = 0;
    Round round;
    for (int64_t rounds = 0; rounds < most_rounds(s.n) && s.remaining != 0.0; ++rounds) {
        tell_of_reached(w);
        looked_at += w.live;
        if (looked_at >= kVerticesPerQuestion) {
            looked_at = 0;
            if (!goes_on(s))
                return; // the host ends it
        }
        const Round before = std::exchange(round, Round{s.remaining});
        if (!measure_live(w, search.watch, before, round))
            return; // a single vertex is left
        fit_edge_lines(w);
        const Corners corners = aim_vertices(w, search.watch, before, round);
        if (corners != Corners::aimed && s.keep_whole && s.remaining != distance && is_tip_of_limb(w, round.hairpin)) {
            unearth(w);
            return; // before a limb vanishes
        }
        if (corners == Corners::outline_gone)
            return; // a hairpin was all of it
        if (corners == Corners::hairpin_removed)
            continue; // measure again, from the same distance
        Event event = first_edge_event(w, round);
        if (s.split_events)
            event = earlier_split_event(search, w, round, event);
        if (s.is_stopped)
            return; // the host has ended the search
        tell_of_stops_before(w, event);
        if (std::fabs(event.time) > std::fabs(s.remaining)) {
            move_vertices(w, s.remaining); // nothing more happens on the way
            s.remaining = 0.0;
            return; // at the distance
        }
        s.remaining -= event.time;
        for (int32_t k = s.passed; k < s.stop_count; ++k)
            s.stops[k] -= event.time;
        if (event.vertex < 0) {
            if (s.keep_whole && w.live - count_collapsing(w, event.time) < kLeast) {
                end_at_ridge(w, event.time);
                return; // before nothing is left
            }
            collapse_edges(w, event.time);
        } else {
            move_vertices(w, event.time);
            if (s.keep_whole && is_piece(w, event.vertex, event.edge))
                return; // before the outline falls apart
            const int32_t buried = w.buried_count;
            drop_smaller_piece(w, event.vertex, event.edge);
            if (s.drop != nullptr)
                tell_of_piece(w, event.vertex, buried);
        }
    }
}

/// The live vertex that `i` ends at, with path compression: the links on the way are pointed at it, so that all chains
/// together take little more than linear time. A vertex merges into a live one, so there are no cycles.
int32_t find_heir(const Sweep& s, int32_t* heir, int32_t i)
{
    int32_t last = i;
    while (s.dead[last])
        last = heir[last];
    while (s.dead[i]) {
        const int32_t following = heir[i];
        heir[i] = last;
        i = following;
    }
    return last;
}

} // namespace

bool run_sweep(Sweep& s)
{
    start_live(s);
    if (s.remaining == 0.0) {
        for (int64_t k = 2; k < 3 * int64_t{s.n}; k += 3)
            s.direction[k] = s.velocity[k] = 0.0;
        tell_of_rest(s);
        return true;
    }
    const int64_t of_wavefront = Wavefront::doubles_for(s);
    const Workroom room(of_wavefront + MeetingSearch::doubles_for(s));
    if (!room.exists())
        return false;
    Wavefront w(s, room.get());
    MeetingSearch search(s, room.get() + of_wavefront);
    sweep_wavefront(w, search);
    hand_back(w);
    tell_of_rest(s);
    return true;
}

bool join_dead_vertices(Sweep& s)
{
    if (std::memchr(s.dead, 1, static_cast<size_t>(s.n)) == nullptr)
        return true;
    const Workroom room((s.n + 1) / 2);
    if (!room.exists())
        return false;
    auto* const heir = reinterpret_cast<int32_t*>(room.get());
    std::memcpy(heir, s.merge, static_cast<size_t>(s.n) * sizeof *s.merge);
    for (int32_t i = 0; i < s.n; ++i)
        if (s.dead[i])
            copy3(s.flat + 3 * int64_t{find_heir(s, heir, i)}, s.flat + 3 * int64_t{i});
    return true;
}

int32_t pack_live_positions(Sweep& s)
{
    int32_t live = 0;
    for (int32_t i = 0; i < s.n; ++i)
        if (!s.dead[i])
            copy3(s.flat + 3 * int64_t{i}, s.flat + 3 * int64_t{live++});
    return live;
}

} // namespace korvale::border
