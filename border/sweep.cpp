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

void start_live(Rows& rows)
{
    std::memset(rows.dead, 0, static_cast<size_t>(rows.n));
    for (int32_t i = 0; i < rows.n; ++i)
        rows.merge[i] = i;
}

/// Fewer vertices have no area between them.
constexpr int32_t kLeast = 3;

/// Tells of the piece of those that have been buried from number `first` on.
void tell_of_piece(const Request& request, const Progress& progress, Wavefront& w, int32_t vertex, int32_t first)
{
    const int32_t count = w.buried_count - first;
    for (int32_t k = 0; k < count; ++k)
        w.list[k] = w.id[w.buried[first + k]];
    std::sort(+w.list, w.list + count);
    request.drop({progress.remaining, w.id[vertex], w.at.x[vertex], w.at.y[vertex], count, w.list}, request.receiver);
}

/// Tells of the next stop. The rows of the live vertices are written `time` ahead of where they are; the sweep does not
/// read that.
void tell_of_stop(const Request& request, Progress& progress, Wavefront& w, double time)
{
    for (int32_t i = 0; i < w.live; ++i)
        if (!w.gone[i]) {
            double* const place = w.rows.flat + 3 * int64_t{w.id[i]};
            place[0] = time == 0.0 ? w.at.x[i] : w.at.x[i] + time * w.velocity.x[i];
            place[1] = time == 0.0 ? w.at.y[i] : w.at.y[i] + time * w.velocity.y[i];
        }
    request.pass(progress.passed++, request.receiver);
}

/// Tells of the stops that have been reached.
void tell_of_reached(const Request& request, Progress& progress, Wavefront& w)
{
    while (progress.passed < progress.stop_count && progress.stops[progress.passed] == 0.0)
        tell_of_stop(request, progress, w, 0.0);
}

/// Tells of the stops that come before the event.
///
/// A sweep of less than the whole distance differs from this one in nothing before it ends: an event within a distance
/// is the same for all farther ones, and what else a round does is the same for all. Only the search for meetings looks
/// as far ahead as there is to go, so which vertices it sees that have missed an edge may differ.
void tell_of_stops_before(const Request& request, Progress& progress, Wavefront& w, const Event& event)
{
    while (progress.passed < progress.stop_count &&
           std::fabs(event.time) > std::fabs(progress.stops[progress.passed])) {
        const double time = std::exchange(progress.stops[progress.passed], 0.0);
        tell_of_stop(request, progress, w, time);
    }
}

/// Tells of the stops that are left where the sweep has ended.
void tell_of_rest(const Request& request, Progress& progress)
{
    while (progress.passed < progress.stop_count)
        request.pass(progress.passed++, request.receiver);
}

/// The vertices have travelled `distance`.
void spend(Progress& progress, double distance)
{
    progress.remaining -= distance;
    for (int32_t k = progress.passed; k < progress.stop_count; ++k)
        progress.stops[k] -= distance;
}

void sweep_wavefront(const Request& request, Wavefront& w, MeetingSearch& search, Progress& progress, Findings& found)
{
    const double distance = progress.remaining;
    int64_t looked_at = 0;
    Round round;
    for (int64_t rounds = 0; rounds < most_rounds(w.rows.n) && progress.remaining != 0.0; ++rounds) {
        tell_of_reached(request, progress, w);
        looked_at += w.live;
        if (looked_at >= kVerticesPerQuestion) {
            looked_at = 0;
            if (!goes_on(request, progress.remaining, found))
                return; // the host ends it
        }
        const Round before = std::exchange(round, Round{progress.remaining});
        if (!measure_live(w, search.watch, before, round))
            return; // a single vertex is left
        fit_edge_lines(w);
        const Corners corners = aim_vertices(w, search.watch, before, round);
        if (corners != Corners::aimed && request.keep_whole && progress.remaining != distance &&
            is_tip_of_limb(w, round.hairpin)) {
            unearth(w);
            return; // before a limb vanishes
        }
        if (corners == Corners::outline_gone)
            return; // a hairpin was all of it
        if (corners == Corners::hairpin_removed)
            continue; // measure again, from the same distance
        Event event = first_edge_event(w, round);
        if (request.split_events)
            event = earlier_split_event(search, w, request, round, event, found);
        if (found.is_stopped)
            return; // the host has ended the search
        tell_of_stops_before(request, progress, w, event);
        if (std::fabs(event.time) > std::fabs(progress.remaining)) {
            move_vertices(w, progress.remaining); // nothing more happens on the way
            progress.remaining = 0.0;
            return; // at the distance
        }
        spend(progress, event.time);
        if (event.vertex < 0) {
            if (request.keep_whole && w.live - count_collapsing(w, event.time) < kLeast) {
                end_at_ridge(w, event.time);
                return; // before nothing is left
            }
            collapse_edges(w, event.time);
        } else {
            move_vertices(w, event.time);
            if (request.keep_whole && is_piece(w, event.vertex, event.edge, request.catch_up, found))
                return; // before the outline falls apart
            const int32_t buried = w.buried_count;
            drop_smaller_piece(w, event.vertex, event.edge, request.catch_up, found);
            if (request.drop != nullptr)
                tell_of_piece(request, progress, w, event.vertex, buried);
        }
    }
}

/// The live vertex that `i` ends at, with path compression: the links on the way are pointed at it, so that all chains
/// together take little more than linear time. A vertex merges into a live one, so there are no cycles.
int32_t find_heir(const Rows& rows, int32_t* heir, int32_t i)
{
    int32_t last = i;
    while (rows.dead[last])
        last = heir[last];
    while (rows.dead[i]) {
        const int32_t following = heir[i];
        heir[i] = last;
        i = following;
    }
    return last;
}

} // namespace

bool run_sweep(Sweep& s)
{
    const Request& request = s.request;
    Rows& rows = s.rows;
    start_live(rows);
    if (s.progress.remaining == 0.0) {
        for (int64_t k = 2; k < 3 * int64_t{rows.n}; k += 3)
            rows.direction[k] = rows.velocity[k] = 0.0;
        tell_of_rest(request, s.progress);
        return true;
    }
    const int64_t of_wavefront = Wavefront::doubles_for(rows.n);
    const Workroom room(of_wavefront + MeetingSearch::doubles_for(rows.n, request.split_events));
    if (!room.exists())
        return false;
    Wavefront w(rows, request.split_events, room.get());
    MeetingSearch search(rows.n, request.split_events, room.get() + of_wavefront);
    sweep_wavefront(request, w, search, s.progress, s.found);
    hand_back(w);
    if (!s.found.is_stopped)
        tell_of_rest(request, s.progress);
    return true;
}

bool join_dead_vertices(Rows& rows)
{
    if (std::memchr(rows.dead, 1, static_cast<size_t>(rows.n)) == nullptr)
        return true;
    const Workroom room((rows.n + 1) / 2);
    if (!room.exists())
        return false;
    auto* const heir = reinterpret_cast<int32_t*>(room.get());
    std::memcpy(heir, rows.merge, static_cast<size_t>(rows.n) * sizeof *rows.merge);
    for (int32_t i = 0; i < rows.n; ++i)
        if (rows.dead[i])
            copy3(rows.flat + 3 * int64_t{find_heir(rows, heir, i)}, rows.flat + 3 * int64_t{i});
    return true;
}

int32_t pack_live_positions(Rows& rows)
{
    int32_t live = 0;
    for (int32_t i = 0; i < rows.n; ++i)
        if (!rows.dead[i])
            copy3(rows.flat + 3 * int64_t{i}, rows.flat + 3 * int64_t{live++});
    return live;
}

} // namespace korvale::border
