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
// boxes, renews the boxes of the few that are not, and examines the candidates. Invariants while `registered`: every
// vertex and edge whose boxes meet are candidates, except those of edges in `changed_edges`; every vertex, where it is,
// is inside its box by `allowance`; the edges of a stretch lie in its box.
#include "border/internal/meeting.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace korvale::inside {
namespace {

/// A vertex and an edge that approach each other more slowly than this never meet.
constexpr double kSlowestApproach = 1e-06;
/// A pair is skipped only where its distance exceeds kLater times the way it closes until the event: then it meets
/// after the event however the division rounds. kLaterAtLeast keeps that true where the product underflows.
constexpr double kLater = 1.0000000001, kLaterAtLeast = 1e-290;
/// Below this many vertices every pair is tested.
constexpr int32_t kFewVertices = 24;
/// Coordinates beyond this leave no room for the arithmetic of boxes.
constexpr double kFarthestBox = 1e100;
/// Widening of boxes for rounding, per unit of the largest coordinate.
constexpr double kRounding = 1e-12;
/// Boxes look kRoundsAhead rounds ahead, but no farther than kAheadOfEdge of an average edge: larger boxes meet too
/// many others.
constexpr double kRoundsAhead = 24.0;
constexpr double kAheadOfEdge = 0.5;
/// Candidates kept per vertex, on average.
constexpr int64_t kCandidatesPerVertex = 24;
/// A window this many times the average edge is searched in stages.
constexpr double kWideWindow = 4.0;
constexpr double kStageGrowth = 8.0;
/// Boxes are all made anew where more than this many change, and one in this many.
constexpr int32_t kFewChanges = 4, kShareOfChanges = 64;

/// Whether the point is in the box; one that is not a number is in none.
bool holds_point(const Box& box, double x, double y)
{
    return x >= box.low_x && x <= box.high_x && y >= box.low_y && y <= box.high_y;
}

bool comes_before(const Event& event, double time, int32_t vertex, int32_t edge)
{
    const double t = std::fabs(time), best = std::fabs(event.time);
    if (t != best)
        return t < best;
    return vertex < event.vertex || (vertex == event.vertex && edge < event.edge);
}

/// Makes the meeting of vertex m with edge e the event if it comes first.
inline void meet(const Wavefront& w, bool outwards, int32_t m, int32_t e, Event& event)
{
    const double vx = w.velocity.x[m], vy = w.velocity.y[m], dx = w.edge.dx[e], dy = w.edge.dy[e];
    const double a = -dy, b = dx, c = dy * w.at.x[e] - dx * w.at.y[e]; // the line of the edge
    const double approach = a * vx + b * vy + 1.0;
    if (std::fabs(approach) < kSlowestApproach)
        return;
    const double apart = a * w.at.x[m] + b * w.at.y[m] + c;
    if (std::fabs(apart) > std::fabs(event.time) * std::fabs(approach) * kLater + kLaterAtLeast)
        return;
    const double time = -apart / approach;
    if (!(outwards ? time >= 0.0 : time <= 0.0) || !comes_before(event, time, m, e))
        return;
    const bool by_x = std::fabs(dx) > kDominantComponent;
    const double *const p = by_x ? w.at.x : w.at.y, *const v = by_x ? w.velocity.x : w.velocity.y;
    const double along = by_x ? dx : dy;
    const double q = p[m] + time * v[m];
    if ((q - (p[e] + time * v[e])) / along < 0.0 || (q - (p[e + 1] + time * v[e + 1])) / along > 0.0)
        return;
    event = {time, m, e};
}

/// Whether edge e ends at vertex m or starts there.
inline bool is_own(const Wavefront& w, int32_t m, int32_t e)
{
    return (e == m) | ((e + 1 == w.live ? 0 : e + 1) == m);
}

/// Lists those of the edges from e on, as many as V has lanes, that vertex m may meet within `window`.
template <class V>
KORVALE_OVER_LANES void list_near_edges(const Wavefront& w, int32_t m, int32_t e, double window, int32_t& count)
{
    const V dx = load<V>(w.edge.dx + e), dy = load<V>(w.edge.dy + e);
    const V approach = absolute(dx * w.velocity.y[m] - dy * w.velocity.x[m] + 1.0);
    const V c = dy * load<V>(w.at.x + e) - dx * load<V>(w.at.y + e);
    const V apart = absolute(dx * w.at.y[m] - dy * w.at.x[m] + c);
    add_places(e, bits(apart > window * approach + kLaterAtLeast) ^ kAllBits<V>, w.list, count);
}

/// `test_all_pairs` with V for lanes.
template <class V>
KORVALE_OVER_LANES Event test_pairs(const Wavefront& w, Event event)
{
    const bool outwards = w.s.remaining > 0.0;
    for (int32_t m = 0; m < w.live; ++m) {
        const double window = std::min(std::fabs(event.time), std::fabs(w.s.remaining)) * kLater;
        int32_t count = 0, e = 0;
        for (; w.live - e >= width_of<V>; e += width_of<V>)
            list_near_edges<V>(w, m, e, window, count);
        for (; w.live - e >= 2; e += 2)
            list_near_edges<Pair>(w, m, e, window, count);
        if (e < w.live)
            list_near_edges<double>(w, m, e, window, count);
        for (int32_t k = 0; k < count; ++k)
            if (!is_own(w, m, w.list[k]))
                meet(w, outwards, m, w.list[k], event);
    }
    return event;
}

KORVALE_FOUR_LANES Event test_pairs_by_four(const Wavefront& w, Event event)
{
    return test_pairs<Quad>(w, event);
}

Event test_all_pairs(const Wavefront& w, Event event)
{
    return widest([&] { return test_pairs_by_four(w, event); }, [&] { return test_pairs<Pair>(w, event); });
}

/// The box around vertex i and where it is after `time`, widened by `margin`.
Box swept_box(const Wavefront& w, int32_t i, double time, double margin)
{
    const double x = w.at.x[i], y = w.at.y[i];
    Box box = box_at(x, y);
    widen(box, x + time * w.velocity.x[i], y + time * w.velocity.y[i]);
    return {box.low_x - margin, box.low_y - margin, box.high_x + margin, box.high_y + margin};
}

/// What boxes have to allow for.
struct Allowance {
    double reach;    ///< the largest coordinate
    double edge;     ///< the average length
    bool is_regular; ///< all are finite and far from the limits
};

Allowance measure_allowance(const Wavefront& w)
{
    const Points at = w.at, ahead = w.ahead;
    bool is_regular = true;
    for_lanes(0, w.live, [at, ahead, &is_regular]<class V>(int32_t i) {
        const V farthest = all<V>(kFarthestBox);
        const auto is_near = (absolute(load<V>(at.x + i)) < farthest) & (absolute(load<V>(at.y + i)) < farthest) &
                             (absolute(load<V>(ahead.x + i)) < farthest) & (absolute(load<V>(ahead.y + i)) < farthest);
        if (any_false(is_near))
            is_regular = false;
    });
    const double reach = greatest_over(0, w.live, 0.0, [at, ahead]<class V>(int32_t i) {
        return greater(greater(absolute(load<V>(at.x + i)), absolute(load<V>(at.y + i))),
                       greater(absolute(load<V>(ahead.x + i)), absolute(load<V>(ahead.y + i))));
    });
    double length[4] = {};
    for (int32_t i = 0; i < w.live; ++i)
        length[i % 4] += w.edge.length[i];
    return {reach, (length[0] + length[1] + length[2] + length[3]) / w.live, is_regular};
}

/// By how much boxes are wider than the motion, so that rounding never takes a meeting outside.
double slack_of(double drift, double reach, double window)
{
    return 2.5 * window * drift + kRounding * reach;
}

/// Makes the boxes of all vertices around their motion.
void make_boxes(const MeetingSearch& search, const Wavefront& w, double time, double margin)
{
    const Points at = w.at, velocity = w.velocity;
    const Boxes boxes = search.boxes;
    for_lanes(0, w.live, [=]<class V>(int32_t i) {
        const V x = load<V>(at.x + i), y = load<V>(at.y + i);
        const V to_x = x + time * load<V>(velocity.x + i), to_y = y + time * load<V>(velocity.y + i);
        store(boxes.low_x + i, lesser(x, to_x) - margin);
        store(boxes.low_y + i, lesser(y, to_y) - margin);
        store(boxes.high_x + i, greater(x, to_x) + margin);
        store(boxes.high_y + i, greater(y, to_y) + margin);
    });
    boxes.set(w.live, boxes[0]);
}

/// Searches boxes made for this round only. A window that is wide for the outline is widened in stages, since most
/// boxes of a wide one meet and an early meeting makes the rest of it unnecessary.
Event search_once(MeetingSearch& search, const Wavefront& w, const Allowance& allow, double window, Event event)
{
    search.registered = false;
    const bool outwards = w.s.remaining > 0.0;
    double stage = std::min(window, kWideWindow * allow.edge);
    for (;;) {
        make_boxes(search, w, outwards ? stage : -stage, slack_of(w.drift, allow.reach, window));
        const BoxTree tree = grow_tree(search.boxes, w.live, search.tree_memory);
        for_meeting_boxes(tree, search.boxes, w.live, [&w, &event, outwards](int32_t m, int32_t e) {
            meet(w, outwards, m, e, event);
            return true;
        });
        window = std::min(window, std::fabs(event.time));
        if (stage >= window)
            return event;
        stage = std::min(window, kStageGrowth * stage);
    }
}

bool add_candidate(MeetingSearch& search, int32_t m, int32_t e)
{
    if (search.candidate_count == search.most_candidates)
        return false;
    search.candidates[search.candidate_count++] = {m, e};
    return true;
}

/// How far ahead boxes look, as a signed distance.
double box_ahead(const MeetingSearch& search, const Wavefront& w, double window)
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

/// The largest coordinate of a box.
double reach_of(const Box& box)
{
    return greater(greater(std::fabs(box.low_x), std::fabs(box.low_y)),
                   greater(std::fabs(box.high_x), std::fabs(box.high_y)));
}

/// Parts the outline into the stretches that a level of the tree has.
void make_stretches(MeetingSearch& search, const BoxTree& tree, int32_t live)
{
    const int level = std::min(2, tree.levels - 1);
    const int32_t length = level == 1 ? BoxTree::kFan : BoxTree::kFan * BoxTree::kFan;
    search.stretches = tree.level[level];
    search.stretch_count = tree.count[level];
    for (int32_t k = 0; k < search.stretch_count; ++k)
        search.stretch_begin[k] = k * length;
    search.stretch_begin[search.stretch_count] = live;
}

/// Makes all boxes and candidates anew. False when there are too many candidates.
bool collect_candidates(MeetingSearch& search, const Wavefront& w, const Allowance& allow, double window)
{
    search.candidate_count = 0;
    search.changed_count = 0;
    search.edge = allow.edge;
    const double ahead = box_ahead(search, w, window);
    search.allowance = 2.0 * slack_of(w.drift, allow.reach, std::fabs(ahead));
    make_boxes(search, w, ahead, room_around(ahead, search.allowance));
    const BoxTree tree = grow_tree(search.boxes, w.live, search.tree_memory);
    make_stretches(search, tree, w.live);
    search.reach = reach_of(box_around(tree));
    search.registered = search.reach < kFarthestBox &&
                        for_meeting_boxes(tree, search.boxes, w.live,
                                          [&search](int32_t m, int32_t e) { return add_candidate(search, m, e); });
    return search.registered;
}

/// Lists the vertices that would not be inside their boxes by the allowance when they arrive, in ascending order.
/// Returns their number. A coordinate that is not a number is in no box.
int32_t list_leaving(const MeetingSearch& search, const Wavefront& w)
{
    const Points ahead = w.ahead;
    const Boxes boxes = search.boxes;
    const double allowance = search.allowance;
    int32_t* const list = search.leaving;
    int32_t count = 0;
    for_lanes(0, w.live, [=, &count]<class V>(int32_t i) {
        const V x = load<V>(ahead.x + i), y = load<V>(ahead.y + i);
        const auto is_inside =
            (x - allowance >= load<V>(boxes.low_x + i)) & (x + allowance <= load<V>(boxes.high_x + i)) &
            (y - allowance >= load<V>(boxes.low_y + i)) & (y + allowance <= load<V>(boxes.high_y + i));
        add_places(i, bits(is_inside) ^ kAllBits<V>, list, count);
    });
    return count;
}

/// How many boxes and edges may change before all is better made anew.
int32_t most_changes(const Wavefront& w)
{
    return kFewChanges + w.live / kShareOfChanges;
}

int32_t stretch_of(const MeetingSearch& search, int32_t edge)
{
    const int32_t* const begin = search.stretch_begin;
    return static_cast<int32_t>(std::upper_bound(begin, begin + search.stretch_count, edge) - begin) - 1;
}

Box edge_box(const MeetingSearch& search, int32_t e)
{
    return hull(search.boxes[e], search.boxes[e + 1]);
}

/// Keeps edge e in the box of its stretch.
void widen_stretch(const MeetingSearch& search, int32_t e)
{
    const int32_t k = stretch_of(search, e);
    search.stretches.set(k, hull(search.stretches[k], edge_box(search, e)));
}

/// Calls step(begin, end) for the places of every stretch whose box shares a point with `box`.
template <class Step>
void for_stretches_near(const MeetingSearch& search, const Box& box, const Step& step)
{
    for (int32_t first = 0; first < search.stretch_count; first += BoxTree::kFan)
        for (unsigned near = find_overlaps<Pair>(search.stretches, first, box); near != 0; near &= near - 1) {
            const int32_t k = first + std::countr_zero(near);
            step(search.stretch_begin[k], search.stretch_begin[k + 1]);
        }
}

/// Adds the vertices whose box meets that of edge e. False when there are too many candidates.
bool add_vertices_near(MeetingSearch& search, const Wavefront& w, int32_t e)
{
    const Boxes boxes = search.boxes;
    const Box box = edge_box(search, e);
    int32_t* const list = w.list;
    int32_t count = 0;
    for_stretches_near(search, box, [=, &count](int32_t begin, int32_t end) {
        for_lanes(begin, end, [=, &count]<class V>(int32_t i) {
            const auto is_apart = boxes_apart<V>(boxes, i, box);
            add_places(i, bits(is_apart) ^ kAllBits<V>, list, count);
        });
    });
    for (int32_t k = 0; k < count; ++k)
        if (!is_own(w, list[k], e) && !add_candidate(search, list[k], e))
            return false;
    return true;
}

/// Adds the edges whose box meets that of vertex m. False when there are too many candidates.
bool add_edges_near(MeetingSearch& search, const Wavefront& w, int32_t m)
{
    const Boxes boxes = search.boxes;
    const Box box = boxes[m];
    int32_t* const list = w.list;
    int32_t count = 0;
    for_stretches_near(search, box, [=, &count](int32_t begin, int32_t end) {
        for_lanes(begin, end, [=, &count]<class V>(int32_t i) {
            const auto is_apart = hulls_apart<V>(boxes, i, box);
            add_places(i, bits(is_apart) ^ kAllBits<V>, list, count);
        });
    });
    for (int32_t k = 0; k < count; ++k)
        if (!is_own(w, m, list[k]) && !add_candidate(search, m, list[k]))
            return false;
    return true;
}

/// Renews what has changed since the last search. False when so much has that all is better made anew.
bool renew(MeetingSearch& search, const Wavefront& w, double window)
{
    if (slack_of(w.drift, search.reach, window) > search.allowance)
        return false;
    const int32_t count = list_leaving(search, w);
    if (count + search.changed_count > most_changes(w))
        return false;
    const double ahead = box_ahead(search, w, window);
    for (int32_t k = 0; k < count; ++k) {
        const int32_t m = search.leaving[k];
        const Box box = swept_box(w, m, ahead, room_around(ahead, search.allowance));
        if (!(reach_of(box) <= search.reach) || !holds_point(box, w.ahead.x[m], w.ahead.y[m]))
            return false;
        search.boxes.set(m, box);
    }
    search.boxes.set(w.live, search.boxes[0]);
    for (int32_t k = 0; k < count; ++k) {
        const int32_t m = search.leaving[k];
        search.changed_edges[search.changed_count++] = m == 0 ? w.live - 1 : m - 1;
        search.changed_edges[search.changed_count++] = m;
    }
    for (int32_t k = 0; k < search.changed_count; ++k)
        widen_stretch(search, search.changed_edges[k]);
    for (int32_t k = 0; k < search.changed_count; ++k)
        if (!add_vertices_near(search, w, search.changed_edges[k]))
            return false;
    for (int32_t k = 0; k < count; ++k)
        if (!add_edges_near(search, w, search.leaving[k]))
            return false;
    search.changed_count = 0;
    return true;
}

Event test_candidates(const MeetingSearch& search, const Wavefront& w, Event event)
{
    const bool outwards = w.s.remaining > 0.0;
    const Points at = w.at, velocity = w.velocity;
    const Edges edge = w.edge;
    double window = std::fabs(event.time) * kLater;
    for (int64_t k = 0; k < search.candidate_count; ++k) {
        const int32_t m = search.candidates[k].vertex, e = search.candidates[k].edge;
        const double dx = edge.dx[e], dy = edge.dy[e], c = dy * at.x[e] - dx * at.y[e];
        const double approach = std::fabs(dx * velocity.y[m] - dy * velocity.x[m] + 1.0);
        if (std::fabs(dx * at.y[m] - dy * at.x[m] + c) > window * approach + kLaterAtLeast)
            continue; // most do not meet before the event
        meet(w, outwards, m, e, event);
        window = std::fabs(event.time) * kLater;
    }
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

/// The place that i has after the last packing, -1 for a gap.
int32_t place_after(const Wavefront& w, int32_t i)
{
    const int32_t *const gaps = w.gaps, *const end = gaps + w.gap_count;
    const int32_t* const gap = std::lower_bound(gaps, end, i);
    return gap != end && *gap == i ? -1 : i - static_cast<int32_t>(gap - gaps);
}

/// Where one vertex died, which is how most rounds end, only its neighbours have become neighbours.
int64_t follow_one_death(Candidate* candidates, int64_t count, const Wavefront& w)
{
    const int32_t gap = w.gaps[0], before = gap == 0 ? w.live - 1 : gap - 1, after = gap == w.live ? 0 : gap;
    int64_t kept = 0;
    for (int64_t k = 0; k < count; ++k) {
        const int32_t vertex = candidates[k].vertex, edge = candidates[k].edge;
        const int32_t m = vertex - (vertex > gap), e = edge - (edge > gap);
        candidates[kept] = {m, e};
        kept += !((vertex == gap) | (edge == gap) | ((m == after) & (e == before)));
    }
    return kept;
}

int64_t follow_deaths(Candidate* candidates, int64_t count, const Wavefront& w)
{
    int64_t kept = 0;
    for (int64_t k = 0; k < count; ++k) {
        const int32_t m = place_after(w, candidates[k].vertex), e = place_after(w, candidates[k].edge);
        if (m >= 0 && e >= 0 && !is_own(w, m, e))
            candidates[kept++] = {m, e};
    }
    return kept;
}

/// The edges that ended at the dead end elsewhere now.
void follow_changed_edges(MeetingSearch& search, const Wavefront& w)
{
    int32_t kept = 0;
    for (int32_t k = 0; k < search.changed_count; ++k)
        if (const int32_t e = place_after(w, search.changed_edges[k]); e >= 0)
            search.changed_edges[kept++] = e;
    search.changed_count = kept;
    int32_t previous = -1;
    for (int32_t g = 0; g < w.gap_count; ++g) {
        const int32_t place = w.gaps[g] - g, before = place == 0 ? w.live - 1 : place - 1;
        if (before == previous)
            continue; // a neighbour died as well
        previous = before;
        search.changed_edges[search.changed_count++] = before;
    }
}

bool has_search(const Sweep& s)
{
    return s.split_events && s.n >= kFewVertices;
}

} // namespace

int64_t MeetingSearch::doubles_for(const Sweep& s)
{
    if (!has_search(s))
        return 0;
    const int64_t n = s.n, places = 4 * n + 2;
    return 4 * boxes_for_vertices(n) + doubles_for_tree(n) + places / 2 + kCandidatesPerVertex * n;
}

MeetingSearch::MeetingSearch(const Sweep& s, double* memory) : registered(false)
{
    if (!has_search(s))
        return; // nothing else is looked at
    const int64_t n = s.n;
    is_calm = true;
    rounds = 0;
    previous_remaining = s.remaining;
    pace = 0.0;
    boxes = boxes_in(memory, boxes_for_vertices(n));
    tree_memory = memory + 4 * boxes_for_vertices(n);
    leaving = reinterpret_cast<int32_t*>(tree_memory + doubles_for_tree(n));
    stretch_begin = leaving + n;
    changed_edges = stretch_begin + n;
    candidates = reinterpret_cast<Candidate*>(leaving + 4 * n + 2);
    most_candidates = kCandidatesPerVertex * n;
}

void follow_packing(MeetingSearch& search, const Wavefront& w)
{
    search.is_calm = w.gap_count <= most_changes(w);
    search.registered = search.registered && search.changed_count + w.gap_count <= most_changes(w);
    if (!search.registered)
        return;
    for (double* const column : {search.boxes.low_x, search.boxes.low_y, search.boxes.high_x, search.boxes.high_y}) {
        close_gaps(column, sizeof *column, w.gaps, w.gap_count, w.live + w.gap_count);
        column[w.live] = column[0];
    }
    int32_t gap = 0;
    for (int32_t k = 0; k <= search.stretch_count; ++k) {
        while (gap < w.gap_count && w.gaps[gap] < search.stretch_begin[k])
            ++gap;
        search.stretch_begin[k] -= gap;
    }
    search.candidate_count =
        (w.gap_count == 1 ? follow_one_death : follow_deaths)(search.candidates, search.candidate_count, w);
    follow_changed_edges(search, w);
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
    const Allowance allow = measure_allowance(w);
    if (!allow.is_regular)
        return test_all_pairs(w, event);
    if (search.rounds < 2 || !search.is_calm || !collect_candidates(search, w, allow, window))
        return search_once(search, w, allow, window, event);
    return test_candidates(search, w, event);
}

} // namespace korvale::inside
