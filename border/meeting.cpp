// Where does a vertex first run into an edge that is not its own? Testing every vertex against every edge answers it.
// The search culls pairs that cannot meet by their boxes (the broad phase) and tests the others as documented (the
// narrow phase, `meet`), so it finds the same answer.
//
// A pair can meet within a distance `window` only where their swept boxes meet: the vertex's, around its two positions,
// and the edge's, around those of its two ends. The step accepts a meeting on the line of the edge, between its ends on
// the axis along which the edge is measured, the dominant one.
//
// - On the dominant axis that puts the meeting into the edge's box to the bit, as rounding never reverses an order.
// - On the other axis the ends may have left the line: by rounding, and by the window times the speed at which they
//   drift off it, |a vx + b vy + 1|. Both are divided by the dominant component of the direction, which is at least a
//   half.
//
// Boxes are widened by more than that, see `slack_of`.
//
// The boxes of one round would serve that round only. So a watch is kept over some rounds, and each round tests those
// of its candidates that are due.
#include "border/internal/meeting.h"

#include <algorithm>
#include <cmath>

#include "border/internal/rounds.h"

namespace korvale::border {
namespace {

/// A vertex and an edge that approach each other more slowly than this never meet.
constexpr double kSlowestApproach = 1e-06;
/// A pair is skipped only where its distance exceeds kLater times the way it closes until the event. Where that product
/// underflows it is off by up to 2^-1075; adding this, which is far more, keeps the test certain.
constexpr double kLaterAtLeast = 1e-290;
/// Below this many vertices every pair is tested: a search would cost more than it saves. Chosen.
constexpr int32_t kFewVertices = 24;
/// A watch looks kRoundsAhead rounds ahead, but no farther than kAheadOfEdge of an average edge: larger boxes meet too
/// many others. Measured: looking farther, or fewer rounds ahead, helped nowhere.
constexpr double kRoundsAhead = 48.0;
constexpr double kAheadOfEdge = 0.5;
/// A window this many times the average edge is searched in stages, each kStageGrowth times as wide. Chosen.
constexpr double kWideWindow = 4.0;
constexpr double kStageGrowth = 8.0;

/// Candidates that are listed at a time, on the stack.
constexpr int32_t kListed = 512;

/// The search of one round: what it is told, and what it has come upon so far.
struct Query {
    const Request& request;
    const Round& round;
    Event event; ///< the first one
    Findings& found;
};

bool comes_before(const Event& event, double time, int32_t vertex, int32_t edge)
{
    const double t = std::fabs(time), best = std::fabs(event.time);
    if (t != best)
        return t < best;
    return vertex < event.vertex || (vertex == event.vertex && edge < event.edge);
}

/// Whether vertex m is next to an end of edge e, but none itself. It comes to that end where the edge between them
/// shrinks to nothing.
bool is_next_to(const Wavefront& w, int32_t m, int32_t e)
{
    const int32_t ahead = m > e ? m - e : m + w.live - e;
    return ahead == 2 || ahead == w.live - 1;
}

/// Makes the meeting of vertex m with edge e the event if it comes first.
inline void meet(Query& query, const Wavefront& w, int32_t m, int32_t e)
{
    Event& event = query.event;
    const double vx = w.velocity.x[m], vy = w.velocity.y[m], dx = w.edge.dx[e], dy = w.edge.dy[e];
    const double a = -dy, b = dx, c = dy * w.at.x[e] - dx * w.at.y[e]; // the line of the edge
    const double approach = a * vx + b * vy + 1.0;
    if (std::fabs(approach) < kSlowestApproach)
        return;
    const double apart = a * w.at.x[m] + b * w.at.y[m] + c;
    if (std::fabs(apart) > std::fabs(event.time) * std::fabs(approach) * kLater + kLaterAtLeast)
        return;
    double time = -apart / approach;
    const bool is_past = !(query.round.remaining > 0.0 ? time >= 0.0 : time <= 0.0);
    if (is_past) {
        if (!(std::fabs(apart) <= kHair && approach > 0.0))
            return;
        time = 0.0;
    } else if (!comes_before(event, time, m, e)) {
        return;
    }
    const bool by_x = std::fabs(dx) > kDominantComponent;
    const double *const p = by_x ? w.at.x : w.at.y, *const v = by_x ? w.velocity.x : w.velocity.y;
    const double along = by_x ? dx : dy;
    const double q = p[m] + time * v[m];
    const double behind = (q - (p[e] + time * v[e])) / along, beyond = (q - (p[e + 1] + time * v[e + 1])) / along;
    const bool is_beside = behind < 0.0 || beyond > 0.0;
    if (is_past || is_beside) {
        if (behind < -kHair || beyond > kHair || (is_beside && is_next_to(w, m, e)))
            return;
        query.found.has_missed = true;
        if (!query.request.catch_up || !comes_before(event, time, m, e))
            return;
    }
    event = {time, m, e};
}

/// Lists the edges that vertex m may meet within `window`, of those from e on, one per lane.
template <class V>
KORVALE_OVER_LANES void list_near_edges(const Wavefront& w, int32_t m, int32_t e, double window, int32_t* list,
                                        int32_t& count)
{
    const V dx = load<V>(w.edge.dx + e), dy = load<V>(w.edge.dy + e);
    const V approach = absolute(dx * w.velocity.y[m] - dy * w.velocity.x[m] + 1.0);
    const V c = dy * load<V>(w.at.x + e) - dx * load<V>(w.at.y + e);
    const V apart = absolute(dx * w.at.y[m] - dy * w.at.x[m] + c);
    // Not `<=`: what is not a number is listed as well, and decided where the documented test stands.
    add_places(e, bits(apart > window * approach + kLaterAtLeast) ^ kAllBits<V>, list, count);
}

/// `test_all_pairs` with V for lanes.
template <class V>
KORVALE_OVER_LANES void test_pairs(Query& query, Wavefront& w)
{
    int32_t* const list = w.list;
    for (int32_t m = 0; m < w.live; ++m) {
        const double window = std::min(std::fabs(query.event.time), std::fabs(query.round.remaining)) * kLater;
        int32_t count = 0, e = 0;
        for (; w.live - e >= width_of<V>; e += width_of<V>)
            list_near_edges<V>(w, m, e, window, list, count);
        for (; w.live - e >= 2; e += 2)
            list_near_edges<Pair>(w, m, e, window, list, count);
        if (e < w.live)
            list_near_edges<double>(w, m, e, window, list, count);
        for (int32_t k = 0; k < count; ++k)
            if (!is_own(w, m, list[k]))
                meet(query, w, m, list[k]);
    }
}

/// Tests every vertex against every edge.
void test_all_pairs(Query& query, Wavefront& w)
{
    over_lanes([&]<class V>() { test_pairs<V>(query, w); });
}

/// What boxes have to allow for.
struct Allowance {
    double reach;    ///< the largest coordinate
    double edge;     ///< the average length
    bool is_regular; ///< all are finite and far from the limits
};

/// Looks at the vertices where they are and where they will be after `time`.
Allowance measure_allowance(const Wavefront& w, double time)
{
    const ConstPoints at = w.at, velocity = w.velocity;
    bool is_regular = true;
    const double reach = greatest_over(0, w.live, 0.0, [at, velocity, time, &is_regular]<class V>(int32_t i) {
        const V x = load<V>(at.x + i), y = load<V>(at.y + i);
        const V to_x = absolute(x + time * load<V>(velocity.x + i)),
                to_y = absolute(y + time * load<V>(velocity.y + i));
        const V farthest = all<V>(kFarthestBoxed);
        if (any_false((absolute(x) < farthest) & (absolute(y) < farthest) & (to_x < farthest) & (to_y < farthest)))
            is_regular = false;
        return greater(greater(absolute(x), absolute(y)), greater(to_x, to_y));
    });
    double length[4] = {}; // four sums: each addition to one waits for the last; only a heuristic reads the mean
    for (int32_t i = 0; i < w.live; ++i)
        length[i % 4] += w.edge.length[i];
    return {reach, (length[0] + length[1] + length[2] + length[3]) / w.live, is_regular};
}

/// Searches boxes made for this round only. A wide window is searched in stages of growing width: most boxes of a wide
/// one meet, and a meeting found early makes the rest of it unnecessary.
void search_once(Query& query, Watch& watch, const Wavefront& w, const Allowance& allow, double window)
{
    const bool outwards = query.round.remaining > 0.0;
    double stage = std::min(window, kWideWindow * allow.edge);
    for (;;) {
        const BoxTree tree =
            grow_boxes(watch, w, outwards ? stage : -stage, slack_of(query.round.drift, allow.reach, window));
        const auto look = [&query, &w](int32_t m, int32_t e) {
            meet(query, w, m, e);
            return true;
        };
        int64_t leaves = kVerticesPerQuestion / BoxTree::kFan;
        const auto ask = [&query, &leaves] {
            if (--leaves > 0)
                return true;
            leaves = kVerticesPerQuestion / BoxTree::kFan;
            return goes_on(query.request, query.round.remaining, query.found);
        };
        const bool is_done = for_meeting_boxes(tree, watch.boxes, w.live, look, ask);
        if (!is_done)
            return;
        window = std::min(window, std::fabs(query.event.time));
        if (stage >= window)
            return;
        stage = std::min(window, kStageGrowth * stage);
    }
}

/// Starts a watch, unless it would hardly outlast this round.
void watch_some_rounds(const Query& query, MeetingSearch& search, const Wavefront& w, const Allowance& allow,
                       double window)
{
    const Round& round = query.round;
    const double farthest = std::min(std::fabs(round.remaining), kAheadOfEdge * allow.edge), least = 2.0 * window;
    if (!(least < farthest) || count_collapsing(w, query.event.time) > most_changes(w.live))
        return;
    const double pace = search.rounds == 0 ? window : search.pace;
    const double ahead = std::min(farthest, std::max(kRoundsAhead * pace, least));
    start_watch(search.watch, w, round, round.remaining > 0.0 ? ahead : -ahead, allow.reach);
}

/// Tests the candidates that are due before the event.
void test_candidates(Query& query, Watch& watch, const Wavefront& w, double window)
{
    const double soon = watch.spent + window * kLater;
    const double* const due = watch.due;
    for (int64_t begin, end = watch.candidate_count; end > 0; end = begin) {
        begin = std::max<int64_t>(0, end - kListed);
        int32_t listed[kListed], *const list = listed, count = 0;
        for_lanes(begin, end, [due, soon, begin, list, &count]<class V>(int64_t k) {
            const auto is_later = load<V>(due + k) > all<V>(soon);
            add_places(static_cast<int32_t>(k - begin), bits(is_later) ^ kAllBits<V>, list, count);
        });
        while (count-- > 0) { // backwards: the last candidate replaces one that is dropped
            const int64_t k = begin + list[count];
            const int32_t m = place_of(watch.slots, watch.candidates[k].vertex);
            const int32_t e = place_of(watch.slots, watch.candidates[k].edge);
            if (m < 0 || e < 0 || is_own(w, m, e)) {
                drop_candidate(watch, k);
            } else {
                meet(query, w, m, e);
                renew_due(watch, w, query.round, k, m, e);
            }
        }
    }
}

/// Notes what a round spends, and the average of that.
void note_spent(MeetingSearch& search, double spent)
{
    search.watch.spent += spent;
    search.pace += (spent - search.pace) * (search.rounds < 16 ? 1.0 / (search.rounds + 1) : 1.0 / 16.0);
    ++search.rounds;
}

/// `earlier_split_event` within `window`, for enough vertices that a search pays.
void search_meetings(Query& query, MeetingSearch& search, Wavefront& w, double window)
{
    Watch& watch = search.watch;
    keep_up(watch, w, query.round, window);
    if (!watch.is_on) {
        const Allowance allow = measure_allowance(w, query.round.remaining > 0.0 ? window : -window);
        if (!allow.is_regular)
            return test_all_pairs(query, w);
        watch_some_rounds(query, search, w, allow, window);
        if (!watch.is_on)
            return search_once(query, watch, w, allow, window);
    }
    test_candidates(query, watch, w, window);
}

/// Vertices that may ever be watched.
int32_t watched_of(int32_t n, bool split_events)
{
    return split_events && n >= kFewVertices ? n : 0;
}

} // namespace

int64_t MeetingSearch::doubles_for(int32_t n, bool split_events)
{
    return Watch::doubles_for(watched_of(n, split_events));
}

MeetingSearch::MeetingSearch(int32_t n, bool split_events, double* memory) : watch(watched_of(n, split_events), memory)
{
}

Event earlier_split_event(MeetingSearch& search, Wavefront& w, const Request& request, const Round& round, Event event,
                          Findings& found)
{
    Query query = {request, round, event, found};
    if (w.live < kFewVertices) {
        end_watch(search.watch);
        test_all_pairs(query, w);
        return query.event;
    }
    const double window = std::min(std::fabs(event.time), std::fabs(round.remaining));
    search_meetings(query, search, w, window);
    note_spent(search, std::min(window, std::fabs(query.event.time)));
    return query.event;
}

} // namespace korvale::border
