// Which pairs may meet within some rounds to come? Vertices and edges whose boxes meet, boxes being made around the
// motion up to a horizon. A vertex whose edges live on keeps its velocity, but for rounding; so no vertex has to be
// looked at again as long as all are steady, that is, their velocities stay within kSteady of those expected. A vertex
// that has turned, or that has another one before it, gets a new box, and its pairs are looked for again.
//
// For the same reason the distance between a vertex and the line of an edge shrinks evenly, and a pair is not due
// before it can have shrunk to nothing. What that leaves out is bounded: the ends of the edge may leave its line by the
// speed at which they drift off it; the velocities of all three may be off by twice kSteady on each axis; and a meeting
// lies on the edge up to the allowance, which covers rounding.
//
// Names are slots, since places change with every death. Invariants while the wavefront is watched: a pair that meets
// before the horizon is a candidate that is due by then, except those of vertices in `changed` or just turned and of
// their edges; every vertex is inside its box by `allowance`. And but for those: box e + 1 is that of the end of
// edge e, even where vertices between them have died; the edges of a stretch lie in its box.
#include "border/internal/watch.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace korvale::inside {
namespace {

/// Coordinates beyond this leave no room for the arithmetic of boxes.
constexpr double kFarthestBox = 1e100;
/// Widening of boxes for rounding, per unit of the largest coordinate.
constexpr double kRounding = 1e-12;
/// Candidates kept per vertex, on average.
constexpr int64_t kCandidatesPerVertex = 4;
/// All is made anew where more than this many change, and one in this many.
constexpr int32_t kFewChanges = 8, kShareOfChanges = 32;
/// After this many rounds all is made anew, so that rounding errors of positions stay far below kRounding.
constexpr int32_t kMostRounds = 256;

/// Room beyond the motion: twice what velocities may turn and still be steady.
double room_around(double ahead, double allowance)
{
    return 4.0 * allowance + 2.0 * kSteady * std::fabs(ahead);
}

/// The largest coordinate of a box.
double reach_of(const Box& box)
{
    return greater(greater(std::fabs(box.low_x), std::fabs(box.low_y)),
                   greater(std::fabs(box.high_x), std::fabs(box.high_y)));
}

Box edge_box(const Watch& watch, int32_t e)
{
    return hull(watch.boxes[e], watch.boxes[e + 1]);
}

/// Gives the vertex its box, and the dead right before it as well.
void set_box(const Watch& watch, int32_t slot, const Box& box)
{
    const int32_t count = watch.slots.count;
    do {
        watch.boxes.set(slot, box);
        slot = (slot == 0 ? count : slot) - 1;
    } while (place_of(watch.slots, slot) < 0);
    watch.boxes.set(count, watch.boxes[0]);
}

/// Renews the box of the vertex at place m. False where it does not lie where boxes may. The motion is finite: the
/// vertex is where boxes may lie, and no corner that is no hairpin moves faster than a million.
bool renew_box(const Watch& watch, const Wavefront& w, int32_t m, double ahead)
{
    const double x = w.at.x[m], y = w.at.y[m], room = room_around(ahead, watch.allowance);
    const double to_x = x + ahead * w.velocity.x[m], to_y = y + ahead * w.velocity.y[m];
    const Box box = {lesser(x, to_x) - room, lesser(y, to_y) - room, greater(x, to_x) + room, greater(y, to_y) + room};
    set_box(watch, watch.slots.slot[m], box);
    w.expected.x[m] = w.velocity.x[m];
    w.expected.y[m] = w.velocity.y[m];
    return reach_of(box) <= watch.reach;
}

/// Keeps edge e in the box of its stretch.
void widen_stretch(const Watch& watch, int32_t e)
{
    const int32_t k = e / watch.stretch_length;
    watch.stretches.set(k, hull(watch.stretches[k], edge_box(watch, e)));
}

/// The vertex has to be looked at again.
void note_changed(Watch& watch, int32_t slot)
{
    int32_t *const changed = watch.changed, *const end = changed + watch.changed_count;
    if (std::find(changed, end, slot) == end)
        changed[watch.changed_count++] = slot;
}

/// The distance before which the vertex at place m does not meet the edge at place e.
double due_of(const Watch& watch, const Wavefront& w, int32_t m, int32_t e)
{
    const double dx = w.edge.dx[e], dy = w.edge.dy[e];
    const double apart = dx * (w.at.y[m] - w.at.y[e]) - dy * (w.at.x[m] - w.at.x[e]);
    const double approach = dx * w.velocity.y[m] - dy * w.velocity.x[m] + 1.0;
    const bool is_closing = ((apart < 0.0) == (approach > 0.0)) == (w.s.remaining > 0.0);
    const double fastest = (is_closing ? std::fabs(approach) : 0.0) + 3.0 * w.drift + 12.0 * kSteady;
    const double certain = std::fabs(apart) - 3.0 * watch.allowance;
    return watch.spent + (1.0 - 1e-6) * (certain / fastest) - kRounding * watch.horizon;
}

/// Adds a pair, by its places, unless it does not meet before the horizon. False when there are too many candidates.
bool add_candidate(Watch& watch, const Wavefront& w, int32_t m, int32_t e)
{
    const double due = due_of(watch, w, m, e);
    if (due > watch.horizon)
        return true;
    if (watch.candidate_count == watch.most_candidates)
        return false;
    watch.due[watch.candidate_count] = due;
    watch.candidates[watch.candidate_count++] = {watch.slots.slot[m], watch.slots.slot[e]};
    return true;
}

/// Lists the slots of the edges whose boxes share a point with `box`, and so of all such vertices, as these start
/// edges. Only stretches that do so are gone through. Returns their number.
int32_t list_near(const Watch& watch, const Box& box, int32_t* list)
{
    const Boxes boxes = watch.boxes;
    int32_t count = 0;
    for (int32_t first = 0; first < watch.stretch_count; first += BoxTree::kFan)
        for (unsigned near = find_overlaps<Pair>(watch.stretches, first, box); near != 0; near &= near - 1) {
            const int32_t begin = (first + std::countr_zero(near)) * watch.stretch_length;
            const int32_t end = std::min(begin + watch.stretch_length, watch.slots.count);
            for_lanes(begin, end, [boxes, box, list, &count]<class V>(int32_t i) {
                const auto is_apart = hulls_apart<V>(boxes, i, box);
                add_places(i, bits(is_apart) ^ kAllBits<V>, list, count);
            });
        }
    return count;
}

/// Adds the pairs of the vertex at place m and of its two edges. False when there are too many candidates.
bool add_pairs_of(Watch& watch, const Wavefront& w, int32_t m)
{
    const int32_t before = m == 0 ? w.live - 1 : m - 1;
    const int32_t vertex = watch.slots.slot[m], edge = watch.slots.slot[before];
    const Box box = watch.boxes[vertex], box_before = edge_box(watch, edge), box_after = edge_box(watch, vertex);
    const int32_t count = list_near(watch, hull(box_before, box_after), w.list);
    for (int32_t k = 0; k < count; ++k) {
        const int32_t slot = w.list[k], place = place_of(watch.slots, slot);
        if (place < 0)
            continue;
        const Box other = watch.boxes[slot];
        if ((overlap(other, box_before) && !is_own(w, place, before) && !add_candidate(watch, w, place, before)) ||
            (overlap(other, box_after) && !is_own(w, place, m) && !add_candidate(watch, w, place, m)) ||
            (overlap(box, edge_box(watch, slot)) && !is_own(w, m, place) && !add_candidate(watch, w, m, place)))
            return false;
    }
    return true;
}

} // namespace

int64_t Watch::doubles_for(int32_t n)
{
    return 4 * boxes_for_vertices(n) + doubles_for_tree(n) + 2 * int64_t{n} + 2 * kCandidatesPerVertex * n;
}

Watch::Watch(int32_t n, double* memory) : spent(0.0)
{
    if (n == 0)
        return; // nothing is ever watched
    boxes = boxes_in(memory, boxes_for_vertices(n));
    tree_memory = memory + 4 * boxes_for_vertices(n);
    due = tree_memory + doubles_for_tree(n);
    most_candidates = kCandidatesPerVertex * n;
    candidates = reinterpret_cast<Candidate*>(due + most_candidates);
    changed = reinterpret_cast<int32_t*>(candidates + most_candidates);
    slots.slot = changed + n;
    slots.place = due + 2 * most_candidates + n;
}

int32_t most_changes(const Wavefront& w)
{
    return kFewChanges + w.live / kShareOfChanges;
}

double slack_of(double drift, double reach, double window)
{
    return 2.5 * window * drift + kRounding * reach;
}

BoxTree grow_boxes(const Watch& watch, const Wavefront& w, double time, double margin)
{
    const Points at = w.at, velocity = w.velocity;
    const Boxes boxes = watch.boxes;
    for_lanes(0, w.live, [=]<class V>(int32_t i) {
        const V x = load<V>(at.x + i), y = load<V>(at.y + i);
        const V to_x = x + time * load<V>(velocity.x + i), to_y = y + time * load<V>(velocity.y + i);
        store(boxes.low_x + i, lesser(x, to_x) - margin);
        store(boxes.low_y + i, lesser(y, to_y) - margin);
        store(boxes.high_x + i, greater(x, to_x) + margin);
        store(boxes.high_y + i, greater(y, to_y) + margin);
    });
    boxes.set(w.live, boxes[0]);
    return grow_tree(boxes, w.live, watch.tree_memory);
}

void start_watch(Watch& watch, Wavefront& w, double ahead, double reach)
{
    watch.rounds = 0;
    watch.spent = 0.0;
    watch.horizon = std::fabs(ahead);
    watch.allowance = 2.0 * slack_of(w.drift, reach, watch.horizon);
    name_places(watch.slots, w.live);
    watch.changed_count = 0;
    watch.candidate_count = 0;
    const BoxTree tree = grow_boxes(watch, w, ahead, room_around(ahead, watch.allowance));
    const int level = std::min(2, tree.levels - 1);
    watch.stretches = tree.level[level];
    watch.stretch_length = level == 1 ? BoxTree::kFan : BoxTree::kFan * BoxTree::kFan;
    watch.stretch_count = tree.count[level];
    watch.reach = reach_of(box_around(tree));
    w.is_watched = watch.reach < kFarthestBox &&
                   for_meeting_boxes(tree, watch.boxes, w.live,
                                     [&watch, &w](int32_t m, int32_t e) { return add_candidate(watch, w, m, e); });
    expect_velocities(w);
}

void follow_packing(Watch& watch, Wavefront& w)
{
    w.is_watched = w.is_watched && watch.changed_count + w.gap_count <= most_changes(w);
    if (!w.is_watched)
        return;
    bury_places(watch.slots, w.gaps, w.gap_count, w.live + w.gap_count);
    for (int32_t g = 0; g < w.gap_count; ++g) {
        const int32_t after = w.gaps[g] - g;
        note_changed(watch, watch.slots.slot[after == w.live ? 0 : after]);
    }
}

bool keep_up(Watch& watch, const Wavefront& w, double window)
{
    if (++watch.rounds > kMostRounds || watch.spent + window > watch.horizon ||
        slack_of(w.drift, watch.reach, window) > watch.allowance || w.turned_count > most_changes(w))
        return false;
    for (int32_t k = 0; k < w.turned_count; ++k)
        note_changed(watch, watch.slots.slot[w.turned[k]]);
    const double rest = watch.horizon - watch.spent, ahead = w.s.remaining > 0.0 ? rest : -rest;
    int32_t* const places = w.turned; // of all that have changed, the dead left out
    int32_t count = 0;
    for (int32_t k = 0; k < watch.changed_count; ++k)
        if (const int32_t m = place_of(watch.slots, watch.changed[k]); m >= 0)
            places[count++] = m;
    watch.changed_count = 0;
    for (int32_t k = 0; k < count; ++k)
        if (!renew_box(watch, w, places[k], ahead))
            return false;
    for (int32_t k = 0; k < count; ++k) {
        widen_stretch(watch, watch.slots.slot[places[k] == 0 ? w.live - 1 : places[k] - 1]);
        widen_stretch(watch, watch.slots.slot[places[k]]);
    }
    for (int32_t k = 0; k < count; ++k)
        if (!add_pairs_of(watch, w, places[k]))
            return false;
    return true;
}

void renew_due(Watch& watch, const Wavefront& w, int64_t k, int32_t m, int32_t e)
{
    watch.due[k] = due_of(watch, w, m, e);
    if (watch.due[k] > watch.horizon)
        drop_candidate(watch, k);
}

void drop_candidate(Watch& watch, int64_t k)
{
    --watch.candidate_count;
    watch.candidates[k] = watch.candidates[watch.candidate_count];
    watch.due[k] = watch.due[watch.candidate_count];
}

} // namespace korvale::inside
