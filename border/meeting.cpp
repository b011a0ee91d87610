// Where does a vertex first run into an edge that is not its own? Testing every vertex against every edge answers it; what
// is done here leaves out pairs that cannot meet and so finds the same answer.
//
// A pair can meet within a distance `window` only where their swept boxes meet: the vertex's, around its two positions,
// and the edge's, around those of its two ends. On the axis along which an edge is measured that holds to the bit, since
// a rounded position lies between the rounded positions at both ends of the motion. On the other axis the meeting point
// lies on the edge's line as the line was computed. The ends of the edge may have left that line by the window times
// |a vx + b vy + 1|, the speed at which they drift off it, and by rounding, both divided by a component of the direction
// that is larger than a half. Boxes are widened by a little more than that.
//
// The boxes of one round would serve that round only. So boxes are made around the motion of some rounds to come, and
// the pairs whose boxes meet are kept as candidates. Each round then tests that all vertices still are inside their
// boxes, renews the boxes of the few that are not, and examines the candidates. Invariant while `registered`: every
// vertex and edge whose boxes meet are candidates, except those of edges in `changed_edges`.
#include "border/internal/meeting.h"

#include <algorithm>
#include <cmath>

#include "platform/module_start.h"

namespace korvale {
namespace {

/// A vertex and an edge that approach each other more slowly than this never meet.
constexpr double kSlowestApproach = 1e-06;
/// Below this many vertices every pair is tested.
constexpr int32_t kFewVertices = 24;
/// Coordinates beyond this leave no room for the arithmetic of boxes.
constexpr double kFarthest = 1e100;
/// Widening of boxes for rounding, per unit of the largest coordinate.
constexpr double kRounding = 1e-12;
/// Rounds that a box is meant to hold.
constexpr double kRoundsAhead = 24.0;
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
    // Far too late: the division would give a time beyond the event's.
    if (std::fabs(apart) > std::fabs(event.time) * std::fabs(approach) * 1.0000000001 + 1e-290)
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
    const bool outwards = w.s.remaining > 0.0;
    for (int32_t m = 0; m < w.live; ++m)
        for (int32_t e = 0; e < w.live; ++e)
            if (!is_own(w, m, e))
                meet(w.col, outwards, m, e, event);
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

Motion measure_motion(const Wavefront& w, double window)
{
    const Columns col = w.col;
    Pair drift = {}, reach = {}, total = {}, length = {};
    double last_drift = 0.0, last_reach = 0.0, last_total = 0.0, last_length = 0.0;
    for_lanes(0, w.live, [&, col, window](int32_t i, auto lanes) {
        using V = decltype(lanes);
        const V a = load<V>(col.a + i), b = load<V>(col.b + i);
        const V vx = load<V>(col.vx + i), vy = load<V>(col.vy + i);
        const V start = magnitude(a * vx + b * vy + 1.0);
        const V end = magnitude(a * load<V>(col.vx + i + 1) + b * load<V>(col.vy + i + 1) + 1.0);
        const V x = magnitude(load<V>(col.x + i)) + window * magnitude(vx);
        const V y = magnitude(load<V>(col.y + i)) + window * magnitude(vy);
        if constexpr (sizeof(V) == sizeof(Pair)) {
            drift = greater(drift, greater(start, end));
            reach = greater(reach, greater(x, y));
            total += start + end + x + y;
            length += load<V>(col.length + i);
        } else {
            last_drift = greater(start, end);
            last_reach = greater(x, y);
            last_total = start + end + x + y;
            last_length = col.length[i];
        }
    });
    Motion motion{};
    motion.drift = std::max({drift[0], drift[1], last_drift});
    motion.reach = std::max({reach[0], reach[1], last_reach});
    motion.edge = (length[0] + length[1] + last_length) / w.live;
    motion.is_regular = total[0] + total[1] + last_total < kFarthest; // false where a value is not a number
    return motion;
}

/// By how much boxes are wider than the motion, so that rounding never takes a meeting outside.
double slack_of(const Motion& motion, double window)
{
    return 2.5 * window * motion.drift + kRounding * motion.reach;
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
            SweptBox box = children[k * kFan];
            for (int32_t c = k * kFan + 1; c < std::min((k + 1) * kFan, child_count); ++c)
                box = hull(box, children[c]);
            nodes[k] = box;
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
        Bunch bunch = {vertices[begin], begin, std::min(begin + kFan, n)};
        for (int32_t m = begin + 1; m < bunch.end; ++m)
            bunch.box = hull(bunch.box, vertices[m]);
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
        const EdgeTree tree = make_boxes(search, w, outwards ? stage : -stage, slack_of(motion, window));
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
    const double remaining = std::fabs(w.s.remaining);
    const double ahead = std::min(remaining, std::max(kRoundsAhead * search.pace, 2.0 * window));
    return w.s.remaining > 0.0 ? ahead : -ahead;
}

/// Room beyond the motion, for velocities that change a little from round to round.
double room_around(double ahead, double slack)
{
    return 4.0 * slack + 1e-3 * std::fabs(ahead);
}

/// Makes all boxes and candidates anew. False when there are too many candidates.
bool register_all(MeetingSearch& search, const Wavefront& w, double ahead, double slack)
{
    search.candidate_count = 0;
    search.changed_count = 0;
    const EdgeTree tree = make_boxes(search, w, ahead, room_around(ahead, slack));
    search.registered = for_meeting_boxes(tree, search.boxes.get(), w.live, [&search, &w](int32_t m, int32_t e) {
        return add_candidate(search, w, m, e);
    });
    return search.registered;
}

/// Adds the edges whose box meets that of vertex m. False when there are too many candidates.
bool add_edges_near(MeetingSearch& search, const Wavefront& w, int32_t m)
{
    const SweptBox* const boxes = search.boxes.get();
    const SweptBox box = boxes[m];
    for (int32_t e = 0; e < w.live; ++e)
        if (overlap(hull(boxes[e], boxes[e + 1]), box) && !add_candidate(search, w, m, e))
            return false;
    return true;
}

/// Adds the vertices whose box meets that of edge e. False when there are too many candidates.
bool add_vertices_near(MeetingSearch& search, const Wavefront& w, int32_t e)
{
    const SweptBox* const boxes = search.boxes.get();
    const SweptBox box = hull(boxes[e], boxes[e + 1]);
    for (int32_t m = 0; m < w.live; ++m)
        if (overlap(boxes[m], box) && !add_candidate(search, w, m, e))
            return false;
    return true;
}

/// Lists the vertices that would leave their boxes within the window, in ascending order, as far as `most`. Returns
/// their number, or `most` + 1.
int32_t list_leaving(MeetingSearch& search, const Wavefront& w, double time, double slack, int32_t* list, int32_t most)
{
    const SweptBox* const boxes = search.boxes.get();
    int32_t count = 0;
    for (int32_t i = 0; i < w.live; ++i) {
        const SweptBox now = swept_box(w, i, time, slack);
        if (!any((now.low < boxes[i].low) | (now.high > boxes[i].high)))
            continue;
        if (count == most)
            return most + 1;
        list[count++] = i;
    }
    return count;
}

/// Renews what has changed since the last search. False when so much has that all is better made anew.
bool renew(MeetingSearch& search, const Wavefront& w, double time, double ahead, double slack)
{
    SweptBox* const boxes = search.boxes.get();
    const int32_t most = 4 + w.live / 64;
    int32_t* const leaving = w.gaps; // free, as no column waits for its packing now
    const int32_t count = list_leaving(search, w, time, slack, leaving, most);
    if (count + search.changed_count > most)
        return false;
    for (int32_t k = 0; k < count; ++k)
        boxes[leaving[k]] = swept_box(w, leaving[k], ahead, room_around(ahead, slack));
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
      pace(0.0), candidate_count(0), most_candidates(kCandidatesPerVertex * s.n), changed_count(0),
      boxes(wanted ? s.n + 1 + boxes_of_tree(s.n) : 0), candidates(wanted ? most_candidates : 0),
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
    const Motion motion = measure_motion(w, window);
    if (!motion.is_regular)
        return test_all_pairs(w, event);
    note_pace(search, w.s.remaining);
    if (search.rounds < 2)
        return search_once(search, w, motion, window, event);
    const double slack = slack_of(motion, window);
    const double ahead = look_ahead(search, w, window);
    if (search.registered)
        search.registered = renew(search, w, w.s.remaining > 0.0 ? window : -window, ahead, slack);
    if (!search.registered && !register_all(search, w, ahead, slack))
        return search_once(search, w, motion, window, event);
    return test_candidates(search, w, event);
}

} // namespace korvale
