// Where does a vertex first run into an edge that is not its own? Testing every vertex against every edge answers it;
// what is done here leaves out pairs that cannot meet and so finds the same answer.
//
// A pair can meet within a distance `window` only where their swept boxes meet: the vertex's, around its two positions,
// and the edge's, around those of its two ends. On the axis along which an edge is measured that holds to the bit, as a
// rounded position lies between the rounded positions at both ends of the motion. On the other axis the meeting point
// lies on the edge's line as the line was computed. The ends of the edge may have left that line by rounding and by the
// window times the speed at which they drift off it, |a vx + b vy + 1|, both divided by a component of the direction
// that is at least a half. Boxes are widened by a little more than that.
//
// The boxes of one round would serve that round only. So boxes are made around the motion of some rounds to come, and
// the pairs whose boxes meet are kept as candidates. Each round then tests that all vertices still are inside their
// boxes, renews the boxes of the few that are not, and examines the candidates. Invariant while `registered`: every
// vertex and edge whose boxes meet are candidates, except those of edges in `changed_edges`.
#include "border/internal/meeting.h"

#include <algorithm>
#include <cmath>

namespace korvale::inside {
namespace {

/// A vertex and an edge that approach each other more slowly than this never meet.
constexpr double kSlowestApproach = 1e-06;
/// A pair farther apart than this much more than its approach until the event covers meets later, however the division
/// of the two is rounded.
constexpr double kLater = 1.0000000001, kLaterAtLeast = 1e-290;
/// Below this many vertices every pair is tested.
constexpr int32_t kFewVertices = 24;
/// Coordinates beyond this leave no room for the arithmetic of boxes.
constexpr double kFarthest = 1e100;
/// Widening of boxes for rounding, per unit of the largest coordinate.
constexpr double kRounding = 1e-12;
/// Rounds that a box is meant to hold, as far as it then is no larger than this share of the average edge; boxes that
/// are large for the outline meet too many others.
constexpr double kRoundsAhead = 24.0;
constexpr double kAheadOfEdge = 0.5;
/// Candidates kept per vertex, on average.
constexpr int64_t kCandidatesPerVertex = 24;
/// Children of a node of the tree of boxes, and vertices that descend it together.
constexpr int32_t kFan = 8;
/// A window this many times the average edge is searched in stages.
constexpr double kWideWindow = 4.0;
constexpr double kStageGrowth = 8.0;

constexpr int kMostLevels = 12;

bool comes_before(const Event& event, double time, int32_t vertex, int32_t edge)
{
    const double t = std::fabs(time), best = std::fabs(event.time);
    if (t != best)
        return t < best;
    return vertex < event.vertex || (vertex == event.vertex && edge < event.edge);
}

/// Makes the meeting of vertex m with edge e the event if it comes first.
inline void meet(const Columns& col, bool outwards, int32_t m, int32_t e, Event& event)
{
    const double vx = col.vx[m], vy = col.vy[m];
    const double approach = col.a[e] * vx + col.b[e] * vy + 1.0;
    if (std::fabs(approach) < kSlowestApproach)
        return;
    const double apart = col.a[e] * col.x[m] + col.b[e] * col.y[m] + col.c[e];
    if (std::fabs(apart) > std::fabs(event.time) * std::fabs(approach) * kLater + kLaterAtLeast)
        return;
    const double time = -apart / approach;
    if (!(outwards ? time >= 0.0 : time <= 0.0) || !comes_before(event, time, m, e))
        return;
    const bool by_x = std::fabs(col.dx[e]) > kDominantComponent;
    const double *const p = by_x ? col.x : col.y, *const v = by_x ? col.vx : col.vy;
    const double along = by_x ? col.dx[e] : col.dy[e];
    const double q = p[m] + time * v[m];
    if ((q - (p[e] + time * v[e])) / along < 0.0 || (q - (p[e + 1] + time * v[e + 1])) / along > 0.0)
        return;
    event = {time, m, e};
}

/// Whether edge e ends at vertex m or starts there.
bool is_own(const Wavefront& w, int32_t m, int32_t e)
{
    return e == m || (e + 1 == w.live ? 0 : e + 1) == m;
}

Event test_all_pairs(const Wavefront& w, Event event)
{
    const Columns col = w.col;
    const bool outwards = w.s.remaining > 0.0;
    for (int32_t m = 0; m < w.live; ++m) {
        const double x = col.x[m], y = col.y[m], vx = col.vx[m], vy = col.vy[m];
        const double window = std::min(std::fabs(event.time), std::fabs(w.s.remaining)) * kLater;
        for_lanes(0, w.live, [&w, &col, &event, outwards, m, x, y, vx, vy, window](int32_t i, auto lanes) {
            using V = decltype(lanes);
            const V a = load<V>(col.a + i), b = load<V>(col.b + i);
            const V approach = magnitude(a * vx + b * vy + 1.0);
            const V apart = magnitude(a * x + b * y + load<V>(col.c + i));
            if (!any_false(apart > window * approach + kLaterAtLeast))
                return;
            for (int32_t e = i; e < i + static_cast<int32_t>(sizeof(V) / sizeof(double)); ++e)
                if (!is_own(w, m, e))
                    meet(col, outwards, m, e, event);
        });
    }
    return event;
}

bool overlap(const SweptBox& a, const SweptBox& b)
{
    return !any((a.low > b.high) | (b.low > a.high));
}

SweptBox hull(const SweptBox& a, const SweptBox& b)
{
    return {lesser(a.low, b.low), greater(a.high, b.high)};
}

/// The box around `count` boxes.
SweptBox around(const SweptBox* boxes, int32_t count)
{
    SweptBox all = boxes[0];
    for (int32_t k = 1; k < count; ++k)
        all = hull(all, boxes[k]);
    return all;
}

/// The box around vertex i and where it is after `time`, widened by `margin`.
SweptBox swept_box(const Wavefront& w, int32_t i, double time, double margin)
{
    const Pair from = {w.col.x[i], w.col.y[i]}, speed = {w.col.vx[i], w.col.vy[i]};
    const Pair to = from + time * speed;
    return {lesser(from, to) - margin, greater(from, to) + margin};
}

/// What the boxes of a round must allow for.
struct Motion {
    double drift;    ///< the greatest speed at which an end leaves the line of its edge
    double reach;    ///< the largest coordinate
    double edge;     ///< the average length
    bool is_regular; ///< all are finite and far from the limits
};

double measure_drift(const Wavefront& w)
{
    const Columns col = w.col;
    Pair drift = {};
    double last = 0.0;
    for_lanes(0, w.live, [&drift, &last, col](int32_t i, auto lanes) {
        using V = decltype(lanes);
        const V a = load<V>(col.a + i), b = load<V>(col.b + i);
        const V start = magnitude(a * load<V>(col.vx + i) + b * load<V>(col.vy + i) + 1.0);
        const V end = magnitude(a * load<V>(col.vx + i + 1) + b * load<V>(col.vy + i + 1) + 1.0);
        if constexpr (sizeof(V) == sizeof(Pair))
            drift = greater(drift, greater(start, end));
        else
            last = greater(start, end);
    });
    return std::max({drift[0], drift[1], last});
}

Motion measure_motion(const Wavefront& w, double window)
{
    Motion motion{};
    double total = 0.0, length = 0.0;
    for (int32_t i = 0; i < w.live; ++i) {
        const double x = std::fabs(w.col.x[i]) + window * std::fabs(w.col.vx[i]);
        const double y = std::fabs(w.col.y[i]) + window * std::fabs(w.col.vy[i]);
        motion.reach = std::max({motion.reach, x, y});
        total += x + y;
        length += w.col.length[i];
    }
    motion.edge = length / w.live;
    motion.is_regular = total < kFarthest; // false where a value is not a number
    motion.drift = measure_drift(w);
    return motion;
}

/// By how much boxes are wider than the motion, so that rounding never takes a meeting outside.
double slack_of(double drift, double reach, double window)
{
    return 2.5 * window * drift + kRounding * reach;
}

/// A tree over the edges in order: `kFan` neighbours share a node, and so on upwards.
struct EdgeTree {
    SweptBox* level[kMostLevels]; ///< level[0] are the edges
    int32_t count[kMostLevels];
    int levels;
};

/// Boxes that the tree needs over n edges.
int64_t boxes_of_tree(int64_t n)
{
    int64_t total = n;
    while (n > kFan) {
        n = (n + kFan - 1) / kFan;
        total += n;
    }
    return total;
}

EdgeTree grow_tree(const SweptBox* vertices, int32_t n, SweptBox* room)
{
    EdgeTree tree{};
    tree.level[0] = room;
    tree.count[0] = n;
    for (int32_t e = 0; e < n; ++e)
        room[e] = hull(vertices[e], vertices[e + 1]);
    int top = 0;
    while (tree.count[top] > kFan) {
        const SweptBox* const children = tree.level[top];
        const int32_t child_count = tree.count[top];
        SweptBox* const nodes = tree.level[top + 1] = tree.level[top] + child_count;
        const int32_t node_count = tree.count[top + 1] = (child_count + kFan - 1) / kFan;
        for (int32_t k = 0; k < node_count; ++k) {
            nodes[k] = around(children + k * kFan, std::min(kFan, child_count - k * kFan));
        }
        ++top;
    }
    tree.levels = top + 1;
    return tree;
}

/// A run of vertices that descend the tree together.
struct Bunch {
    SweptBox box;
    int32_t begin, end;
};

/// Calls emit(vertex, edge) for those of the bunch and of node k's edges whose boxes meet, until it returns false.
template <class Emit>
bool descend(const EdgeTree& tree, int level, int32_t k, const SweptBox* vertices, const Bunch& bunch, Emit& emit)
{
    const int32_t begin = k * kFan, end = std::min((k + 1) * kFan, tree.count[level - 1]);
    if (level > 1) {
        for (int32_t c = begin; c < end; ++c)
            if (overlap(tree.level[level - 1][c], bunch.box) && !descend(tree, level - 1, c, vertices, bunch, emit))
                return false;
        return true;
    }
    for (int32_t m = bunch.begin; m < bunch.end; ++m) {
        if (!overlap(tree.level[1][k], vertices[m]))
            continue;
        for (int32_t e = begin; e < end; ++e)
            if (overlap(tree.level[0][e], vertices[m]) && !emit(m, e))
                return false;
    }
    return true;
}

/// Calls emit(vertex, edge) for every vertex and edge whose boxes meet, until it returns false. n is above kFan.
template <class Emit>
bool for_meeting_boxes(const EdgeTree& tree, const SweptBox* vertices, int32_t n, Emit emit)
{
    const int top = tree.levels - 1;
    for (int32_t begin = 0; begin < n; begin += kFan) {
        const int32_t end = std::min(begin + kFan, n);
        const Bunch bunch = {around(vertices + begin, end - begin), begin, end};
        for (int32_t k = 0; k < tree.count[top]; ++k)
            if (overlap(tree.level[top][k], bunch.box) && !descend(tree, top, k, vertices, bunch, emit))
                return false;
    }
    return true;
}

EdgeTree make_boxes(MeetingSearch& search, const Wavefront& w, double time, double margin)
{
    SweptBox* const boxes = search.boxes.get();
    for (int32_t i = 0; i < w.live; ++i)
        boxes[i] = swept_box(w, i, time, margin);
    boxes[w.live] = boxes[0];
    return grow_tree(boxes, w.live, boxes + w.live + 1);
}

/// Searches boxes made for this round only. A window that is wide for the outline is widened in stages, since most
/// boxes of a wide one meet and an early meeting makes the rest of it unnecessary.
Event search_once(MeetingSearch& search, const Wavefront& w, const Motion& motion, double window, Event event)
{
    search.registered = false;
    const bool outwards = w.s.remaining > 0.0;
    double stage = window > kWideWindow * motion.edge ? kWideWindow * motion.edge : window;
    for (;;) {
        const EdgeTree tree =
            make_boxes(search, w, outwards ? stage : -stage, slack_of(motion.drift, motion.reach, window));
        for_meeting_boxes(tree, search.boxes.get(), w.live, [&w, &event, outwards](int32_t m, int32_t e) {
            if (!is_own(w, m, e))
                meet(w.col, outwards, m, e, event);
            return true;
        });
        window = std::min(window, std::fabs(event.time));
        if (stage >= window)
            return event;
        stage = std::min(window, kStageGrowth * stage);
    }
}

bool add_candidate(MeetingSearch& search, const Wavefront& w, int32_t m, int32_t e)
{
    if (is_own(w, m, e))
        return true;
    if (search.candidate_count == search.most_candidates)
        return false;
    search.candidates[search.candidate_count++] = {w.id[m], w.id[e]};
    return true;
}

/// How far ahead boxes look, as a signed distance.
double look_ahead(const MeetingSearch& search, const Wavefront& w, double window)
{
    const double wanted = std::min(kRoundsAhead * search.pace, kAheadOfEdge * search.edge);
    const double ahead = std::min(std::fabs(w.s.remaining), std::max(wanted, 2.0 * window));
    return w.s.remaining > 0.0 ? ahead : -ahead;
}

/// Room beyond the motion, for velocities that change a little from round to round.
double room_around(double ahead, double slack)
{
    return 4.0 * slack + 1e-3 * std::fabs(ahead);
}

/// Makes all boxes and candidates anew. False when there are too many candidates.
bool register_all(MeetingSearch& search, const Wavefront& w, const Motion& motion, double window)
{
    search.candidate_count = 0;
    search.changed_count = 0;
    search.edge = motion.edge;
    const double ahead = look_ahead(search, w, window);
    const double margin = room_around(ahead, slack_of(motion.drift, motion.reach, window));
    const EdgeTree tree = make_boxes(search, w, ahead, margin);
    const SweptBox all = around(tree.level[tree.levels - 1], tree.count[tree.levels - 1]);
    const Pair reach = greater(magnitude(all.low), magnitude(all.high));
    search.reach = std::max(reach[0], reach[1]);
    search.registered = search.reach < kFarthest &&
                        for_meeting_boxes(tree, search.boxes.get(), w.live, [&search, &w](int32_t m, int32_t e) {
                            return add_candidate(search, w, m, e);
                        });
    return search.registered;
}

/// Adds the vertices whose box meets that of edge e. False when there are too many candidates.
bool add_vertices_near(MeetingSearch& search, const Wavefront& w, int32_t e)
{
    const SweptBox* const boxes = search.boxes.get();
    const SweptBox box = hull(boxes[e], boxes[e + 1]);
    const int32_t n = w.live;
    for (int32_t m = 0; m < n; ++m)
        if (overlap(boxes[m], box) && !add_candidate(search, w, m, e))
            return false;
    return true;
}

/// Adds the edges whose box meets that of vertex m. False when there are too many candidates.
bool add_edges_near(MeetingSearch& search, const Wavefront& w, int32_t m)
{
    const SweptBox* const boxes = search.boxes.get();
    const SweptBox box = boxes[m];
    const int32_t n = w.live;
    for (int32_t e = 0; e < n; ++e)
        if (overlap(hull(boxes[e], boxes[e + 1]), box) && !add_candidate(search, w, m, e))
            return false;
    return true;
}

/// Lists the vertices that would leave their boxes within the window, in ascending order, as far as `most`. Returns
/// their number, or `most` + 1. A coordinate that is not a number is in no box.
int32_t list_leaving(const MeetingSearch& search, const Wavefront& w, double time, double slack, int32_t* list,
                     int32_t most)
{
    const SweptBox* const boxes = search.boxes.get();
    const Columns col = w.col;
    const Pair ahead = Pair() + time, margin = Pair() + slack;
    const int32_t n = w.live;
    int32_t count = 0;
    for (int32_t i = 0; i < n; ++i) {
        const Pair from = {col.x[i], col.y[i]}, speed = {col.vx[i], col.vy[i]};
        const Pair to = from + ahead * speed;
        const Pair low = lesser(from, to) - margin, high = greater(from, to) + margin;
        if (!any_false((low >= boxes[i].low) & (high <= boxes[i].high)))
            continue;
        if (count == most)
            return most + 1;
        list[count++] = i;
    }
    return count;
}

/// Renews what has changed since the last search. False when so much has that all is better made anew.
bool renew(MeetingSearch& search, const Wavefront& w, double window)
{
    SweptBox* const boxes = search.boxes.get();
    const int32_t most = 4 + w.live / 64;
    int32_t* const leaving = w.gaps; // free, as no column waits for its packing now
    const double time = w.s.remaining > 0.0 ? window : -window, ahead = look_ahead(search, w, window);
    const double slack = slack_of(measure_drift(w), search.reach, window);
    const int32_t count = list_leaving(search, w, time, slack, leaving, most);
    if (count + search.changed_count > most)
        return false;
    for (int32_t k = 0; k < count; ++k) {
        const SweptBox box = swept_box(w, leaving[k], ahead, room_around(ahead, slack));
        const Pair reach = greater(magnitude(box.low), magnitude(box.high));
        if (!(std::max(reach[0], reach[1]) <= search.reach))
            return false;
        boxes[leaving[k]] = box;
    }
    boxes[w.live] = boxes[0];
    for (int32_t k = 0; k < count; ++k) {
        const int32_t m = leaving[k], before = m == 0 ? w.live - 1 : m - 1;
        if (!add_edges_near(search, w, m) || !add_vertices_near(search, w, m) || !add_vertices_near(search, w, before))
            return false;
    }
    for (int32_t k = 0; k < search.changed_count; ++k) {
        const int32_t e = w.place[search.changed_edges[k]];
        if (e >= 0 && !add_vertices_near(search, w, e))
            return false;
    }
    search.changed_count = 0;
    return true;
}

/// Tests the candidates and forgets those of the dead.
Event test_candidates(MeetingSearch& search, const Wavefront& w, Event event)
{
    const bool outwards = w.s.remaining > 0.0;
    Candidate* const candidates = search.candidates.get();
    int64_t kept = 0;
    for (int64_t k = 0; k < search.candidate_count; ++k) {
        const Candidate pair = candidates[k];
        const int32_t m = w.place[pair.vertex], e = w.place[pair.edge];
        if (m < 0 || e < 0 || is_own(w, m, e))
            continue;
        candidates[kept++] = pair;
        meet(w.col, outwards, m, e, event);
    }
    search.candidate_count = kept;
    return event;
}

/// Keeps the average of what a round spends.
void note_pace(MeetingSearch& search, double remaining)
{
    const double spent = std::fabs(search.previous_remaining - remaining);
    search.pace += (spent - search.pace) * (search.rounds < 16 ? 1.0 / (search.rounds + 1) : 1.0 / 16.0);
    search.previous_remaining = remaining;
    ++search.rounds;
}

} // namespace

MeetingSearch::MeetingSearch(const Sweep& s)
    : wanted(s.split_events && s.n >= kFewVertices), registered(false), rounds(0), previous_remaining(s.remaining),
      pace(0.0), reach(0.0), edge(0.0), candidate_count(0), most_candidates(kCandidatesPerVertex * s.n),
      changed_count(0), boxes(wanted ? s.n + 1 + boxes_of_tree(s.n) : 0), candidates(wanted ? most_candidates : 0),
      changed_edges(wanted ? s.n : 0)
{
}

void follow_packing(MeetingSearch& search, const Wavefront& w)
{
    if (!search.registered)
        return;
    SweptBox* const boxes = search.boxes.get();
    const int32_t n = w.live + w.gap_count;
    close_gaps(boxes, sizeof *boxes, w.gaps, w.gap_count, n);
    boxes[w.live] = boxes[0];
    int32_t previous = -1;
    for (int32_t g = 0; g < w.gap_count; ++g) {
        const int32_t before = w.gaps[g] - g == 0 ? w.live - 1 : w.gaps[g] - g - 1;
        if (before == previous)
            continue; // a neighbour died as well
        previous = before;
        if (search.changed_count == w.s.n) {
            search.registered = false;
            return;
        }
        search.changed_edges[search.changed_count++] = w.id[before];
    }
}

Event earlier_split_event(MeetingSearch& search, const Wavefront& w, Event event)
{
    if (w.live < kFewVertices)
        return test_all_pairs(w, event);
    const double window = std::min(std::fabs(event.time), std::fabs(w.s.remaining));
    note_pace(search, w.s.remaining);
    if (search.registered && renew(search, w, window))
        return test_candidates(search, w, event);
    search.registered = false;
    const Motion motion = measure_motion(w, window);
    if (!motion.is_regular)
        return test_all_pairs(w, event);
    if (search.rounds < 2 || !register_all(search, w, motion, window))
        return search_once(search, w, motion, window, event);
    return test_candidates(search, w, event);
}

} // namespace korvale::inside
