// The broad phase of the search for meetings, kept from round to round: which pairs may meet within some rounds to
// come? Vertices and edges whose boxes meet, boxes being made around the motion up to a horizon. A vertex is steady
// while its velocity stays within kSteady of the expected one. It is, but for rounding, as long as both its edges live,
// and a steady vertex stays in its box. A vertex that has turned, or whose predecessor has died, gets a new box, and
// its pairs are looked for again.
//
// The distance between a steady vertex and the line of a steady edge shrinks evenly. So a pair is not due before it can
// have shrunk to nothing, see `due_of`.
//
// Boxes and candidates are numbered by slots, since places change with every death. Invariants while watched. For every
// pair of which neither the vertex nor an end of the edge is in `changed` or in `turned`:
//
// - If it meets before the horizon it is a candidate, and `due` is not later than the meeting.
// - The vertex is inside its box by `allowance`.
// - Box e + 1 is that of the end of edge e, also after deaths between them.
// - The box of the edge's stretch holds the edge.
#include "border/internal/watch.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <span>

namespace korvale::border {
namespace {

/// Bounds rounding, as a share of the largest coordinate or distance. Over kMostRounds rounds a position rounds by 256
/// * 2^-53 = 3e-14 of it on each axis; the arithmetic of a line adds a few 2^-53.
constexpr double kRounding = 1e-12;
/// Candidates kept per vertex, on average. With more the watch would cost more than it saves. Chosen.
constexpr int64_t kCandidatesPerVertex = 4;
/// A watch starts anew where more vertices than kFewChanges and one in kShareOfChanges change in a round. Chosen.
constexpr int32_t kFewChanges = 8, kShareOfChanges = 32;
/// A watch starts anew after this many rounds, which keeps the rounding of positions far below kRounding.
constexpr int32_t kMostRounds = 256;

/// Edges of a stretch, at most.
constexpr int32_t kLongestStretch = BoxTree::kFan * BoxTree::kFan;

/// How much wider than the motion over `ahead` a box is made. Steady velocities take a vertex off the motion by kSteady
/// per unit of distance. The invariant asks for one allowance more, rounding of positions for less than half of one.
/// The box has at least twice each.
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

/// Gives a vertex its box, and the dead ones right before it the same.
void set_box(Watch& watch, int32_t slot, const Box& box)
{
    const int32_t count = watch.slots.count;
    do {
        watch.boxes.set(slot, box);
        slot = (slot == 0 ? count : slot) - 1;
    } while (place_of(watch.slots, slot) < 0);
    watch.boxes.set(count, watch.boxes[0]);
}

/// Renews the box of the vertex at place m. False where it leaves `reach`. The motion is finite: the vertex is within
/// `reach`, and a corner that is no hairpin moves at most 1 / kHairpinCosine, a million, per unit of distance.
bool renew_box(Watch& watch, const Wavefront& w, int32_t m, double ahead)
{
    const double x = w.at.x[m], y = w.at.y[m], room = room_around(ahead, watch.bounds.allowance);
    const double to_x = x + ahead * w.velocity.x[m], to_y = y + ahead * w.velocity.y[m];
    const Box box = {lesser(x, to_x) - room, lesser(y, to_y) - room, greater(x, to_x) + room, greater(y, to_y) + room};
    set_box(watch, watch.slots.slot[m], box);
    watch.expected.x[m] = w.velocity.x[m];
    watch.expected.y[m] = w.velocity.y[m];
    return reach_of(box) <= watch.bounds.reach;
}

/// Widens the box of its stretch to hold edge e.
void widen_stretch(Watch& watch, int32_t e)
{
    const int32_t k = e / watch.bounds.stretch_length;
    watch.stretches.set(k, hull(watch.stretches[k], edge_box(watch, e)));
}

/// Lists the vertex, once, to be looked at again.
void note_changed(Watch& watch, int32_t slot)
{
    int32_t *const changed = watch.unsteady.changed, *const end = changed + watch.unsteady.changed_count;
    if (std::find(changed, end, slot) == end)
        changed[watch.unsteady.changed_count++] = slot;
}

/// How much faster than at present a pair may close. Velocities stay within kSteady of the expected ones, so within 2
/// kSteady of the present ones, on each axis: that makes 4 kSteady for the vertex and 4 for each end of the edge.
constexpr double kUnsteadiness = 3.0 * 2.0 * 2.0 * kSteady;
/// Each end of the edge leaves its line at `drift` or less: one for each, and one to spare.
constexpr double kDrifts = 3.0;
/// Allowances by which a pair may meet while still apart. A meeting lies beside the edge by up to `slack_of` of its
/// round, which `keep_up` holds below the allowance; positions round by less than half of one. This is twice both.
constexpr double kMeetsAside = 3.0;
/// Covers the rounding of the speed. A corner moves at most a million, so an approach or a drift is off by less than
/// 5e-10. Four of them are off by less than 4e-7 of kUnsteadiness, which the speed never falls below.
constexpr double kSpeedRounding = 1e-6;

/// The distance before which the vertex at place m does not meet the edge at place e: how far they are apart, divided
/// by the greatest speed at which that may shrink. kRounding of the horizon covers the rounding of the sum in `spent`.
double due_of(const Watch& watch, const Wavefront& w, const Round& round, int32_t m, int32_t e)
{
    const double dx = w.edge.dx[e], dy = w.edge.dy[e];
    const double apart = dx * (w.at.y[m] - w.at.y[e]) - dy * (w.at.x[m] - w.at.x[e]);
    const double approach = dx * w.velocity.y[m] - dy * w.velocity.x[m] + 1.0;
    const bool is_closing = ((apart < 0.0) == (approach > 0.0)) == (round.remaining > 0.0);
    const double fastest = (is_closing ? std::fabs(approach) : 0.0) + kDrifts * round.drift + kUnsteadiness;
    const double certain = std::fabs(apart) - kMeetsAside * watch.bounds.allowance;
    return watch.spent + (1.0 - kSpeedRounding) * (certain / fastest) - kRounding * watch.bounds.horizon;
}

/// Adds a pair, by its places, unless it does not meet before the horizon. False when there are too many candidates.
bool add_candidate(Watch& watch, const Wavefront& w, const Round& round, int32_t m, int32_t e)
{
    const double due = due_of(watch, w, round, m, e);
    if (due > watch.bounds.horizon)
        return true;
    if (watch.candidate_count == watch.most_candidates)
        return false;
    watch.due[watch.candidate_count] = due;
    watch.candidates[watch.candidate_count++] = {watch.slots.slot[m], watch.slots.slot[e]};
    return true;
}

/// Lists the slots of those edges of a stretch whose boxes share a point with `box`. A vertex starts an edge, so
/// vertices whose boxes do are listed with them. Returns their number.
int32_t list_near(const Watch& watch, int32_t stretch, const Box& box, int32_t* list)
{
    const ConstBoxes boxes = watch.boxes;
    const int32_t begin = stretch * watch.bounds.stretch_length;
    const int32_t end = std::min(begin + watch.bounds.stretch_length, watch.slots.count);
    int32_t count = 0;
    for_lanes(begin, end, [boxes, box, list, &count]<class V>(int32_t i) {
        const auto is_apart = hulls_apart<V>(boxes, i, box);
        add_places(i, bits(is_apart) ^ kAllBits<V>, list, count);
    });
    return count;
}

/// Adds the pairs of the vertex at place m and those of its two edges. Only stretches whose boxes share a point with
/// theirs are gone through. False when there are too many candidates.
bool add_pairs_of(Watch& watch, const Wavefront& w, const Round& round, int32_t m)
{
    const int32_t before = m == 0 ? w.live - 1 : m - 1;
    const int32_t vertex = watch.slots.slot[m], edge = watch.slots.slot[before];
    const Box box = watch.boxes[vertex], box_before = edge_box(watch, edge), box_after = edge_box(watch, vertex);
    const Box around = hull(box_before, box_after);
    const auto add_near = [&watch, &w, &round](bool is_near, int32_t v, int32_t e) {
        return !is_near || is_own(w, v, e) || add_candidate(watch, w, round, v, e);
    };
    const auto add_pairs_with = [&](int32_t slot) {
        const int32_t place = place_of(watch.slots, slot);
        if (place < 0)
            return true;
        const Box other = watch.boxes[slot];
        return add_near(overlap(other, box_before), place, before) && add_near(overlap(other, box_after), place, m) &&
               add_near(overlap(box, edge_box(watch, slot)), m, place);
    };
    for (int32_t first = 0; first < watch.bounds.stretch_count; first += BoxTree::kFan)
        for (unsigned near = find_overlaps<Pair>(watch.stretches, first, around); near != 0; near &= near - 1) {
            int32_t list[kLongestStretch];
            const int32_t count = list_near(watch, first + std::countr_zero(near), around, list);
            for (int32_t k = 0; k < count; ++k)
                if (!add_pairs_with(list[k]))
                    return false;
        }
    return true;
}

/// Whether the watch serves a round that moves by `window`.
bool lasts(const Watch& watch, const Wavefront& w, const Round& round, double window)
{
    return !(watch.rounds == kMostRounds || watch.spent + window > watch.bounds.horizon ||
             slack_of(round.drift, watch.bounds.reach, window) > watch.bounds.allowance ||
             watch.unsteady.turned_count > most_changes(w.live));
}

/// Gives the vertices that have turned or changed new boxes, then adds their pairs. False where the watch cannot go on.
bool look_again(Watch& watch, const Wavefront& w, const Round& round)
{
    ++watch.rounds;
    for (int32_t k = 0; k < watch.unsteady.turned_count; ++k)
        note_changed(watch, watch.slots.slot[watch.unsteady.turned[k]]);
    int32_t* const changed = watch.unsteady.changed;
    const auto is_dead = [&watch](int32_t slot) { return place_of(watch.slots, slot) < 0; };
    const std::span<const int32_t> again(changed,
                                         std::remove_if(changed, changed + watch.unsteady.changed_count, is_dead));
    watch.unsteady.changed_count = 0;
    const double rest = watch.bounds.horizon - watch.spent, ahead = round.remaining > 0.0 ? rest : -rest;
    for (const int32_t slot : again)
        if (!renew_box(watch, w, place_of(watch.slots, slot), ahead))
            return false;
    for (const int32_t slot : again) {
        const int32_t m = place_of(watch.slots, slot);
        widen_stretch(watch, watch.slots.slot[m == 0 ? w.live - 1 : m - 1]);
        widen_stretch(watch, slot);
    }
    for (const int32_t slot : again)
        if (!add_pairs_of(watch, w, round, place_of(watch.slots, slot)))
            return false;
    return true;
}

/// Doubles of a column of expected velocities, so many that the next one is aligned for four lanes too.
int64_t velocities_of(int64_t n)
{
    return (n + 3) / 4 * 4;
}

/// The longest `changed` of n vertices: as many as a watch survives in `follow_packing`, and again in `keep_up`.
int64_t most_changed(int32_t n)
{
    return 2 * most_changes(n);
}

} // namespace

int64_t Watch::doubles_for(int32_t n)
{
    if (n == 0)
        return 0;
    return 2 * velocities_of(n) + 4 * boxes_for_vertices(n) + doubles_for_tree(n) + (2 * kCandidatesPerVertex + 1) * n +
           (2 * int64_t{n} + most_changed(n) + 1) / 2;
}

Watch::Watch(int32_t n, double* memory)
{
    if (n == 0)
        return;
    expected = {memory, memory + velocities_of(n)};
    memory += 2 * velocities_of(n);
    boxes = boxes_in(memory, boxes_for_vertices(n));
    tree_memory = memory + 4 * boxes_for_vertices(n);
    due = tree_memory + doubles_for_tree(n);
    most_candidates = kCandidatesPerVertex * n;
    candidates = reinterpret_cast<Candidate*>(due + most_candidates);
    slots.place = due + 2 * most_candidates;
    slots.slot = reinterpret_cast<int32_t*>(slots.place + n);
    unsteady.turned = slots.slot + n;
    unsteady.changed = unsteady.turned + n;
}

int32_t most_changes(int32_t live)
{
    return kFewChanges + live / kShareOfChanges;
}

double slack_of(double drift, double reach, double window)
{
    constexpr double kAside = 1.25 / kDominantComponent; // of a miter, as its declaration derives
    return kAside * window * drift + kRounding * reach;
}

BoxTree grow_boxes(Watch& watch, const Wavefront& w, double time, double margin)
{
    const ConstPoints at = w.at, velocity = w.velocity;
    Boxes& boxes = watch.boxes;
    double *const low_x = boxes.low_x, *const low_y = boxes.low_y;
    double *const high_x = boxes.high_x, *const high_y = boxes.high_y;
    for_lanes(0, w.live, [=]<class V>(int32_t i) {
        const V x = load<V>(at.x + i), y = load<V>(at.y + i);
        const V to_x = x + time * load<V>(velocity.x + i), to_y = y + time * load<V>(velocity.y + i);
        store(low_x + i, lesser(x, to_x) - margin);
        store(low_y + i, lesser(y, to_y) - margin);
        store(high_x + i, greater(x, to_x) + margin);
        store(high_y + i, greater(y, to_y) + margin);
    });
    boxes.set(w.live, boxes[0]);
    return grow_tree(boxes, w.live, watch.tree_memory);
}

void start_watch(Watch& watch, const Wavefront& w, const Round& round, double ahead, double reach)
{
    watch.rounds = 0;
    watch.spent = 0.0;
    name_places(watch.slots, w.live);
    watch.unsteady.changed_count = 0;
    watch.candidate_count = 0;
    const double horizon = std::fabs(ahead), allowance = 2.0 * slack_of(round.drift, reach, horizon);
    BoxTree tree = grow_boxes(watch, w, ahead, room_around(ahead, allowance));
    const int level = std::min(2, tree.levels - 1);
    watch.stretches = tree.level[level];
    watch.bounds = {horizon, allowance, reach_of(box_around(tree)), level == 1 ? BoxTree::kFan : kLongestStretch,
                    tree.count[level]};
    watch.is_on = watch.bounds.reach < kFarthestBoxed &&
                  for_meeting_boxes(tree, watch.boxes, w.live, [&watch, &w, &round](int32_t m, int32_t e) {
                      return add_candidate(watch, w, round, m, e);
                  });
    copy_values(w.velocity.x, w.live, watch.expected.x);
    copy_values(w.velocity.y, w.live, watch.expected.y);
}

void follow_packing(Watch& watch, const Wavefront& w)
{
    watch.is_on = watch.is_on && watch.unsteady.changed_count + w.gap_count <= most_changes(w.live);
    if (!watch.is_on)
        return;
    close_gaps(w, watch.expected);
    bury_places(watch.slots, w.gaps, w.gap_count, w.live + w.gap_count);
    for (int32_t g = 0; g < w.gap_count; ++g) {
        const int32_t after = w.gaps[g] - g;
        note_changed(watch, watch.slots.slot[after == w.live ? 0 : after]);
    }
}

void keep_up(Watch& watch, const Wavefront& w, const Round& round, double window)
{
    watch.is_on = watch.is_on && lasts(watch, w, round, window) && look_again(watch, w, round);
}

void renew_due(Watch& watch, const Wavefront& w, const Round& round, int64_t k, int32_t m, int32_t e)
{
    watch.due[k] = due_of(watch, w, round, m, e);
    if (watch.due[k] > watch.bounds.horizon)
        drop_candidate(watch, k);
}

void drop_candidate(Watch& watch, int64_t k)
{
    --watch.candidate_count;
    watch.candidates[k] = watch.candidates[watch.candidate_count];
    watch.due[k] = watch.due[watch.candidate_count];
}

} // namespace korvale::border
