// What a round of a sweep does, over packed columns. The documented steps of the same names, one vertex at a time, are
// in tests/reference/sweep.cpp. What a step computes for a vertex does not depend on the results of other vertices, so
// whole columns are computed in lanes. Only deaths depend on the order: the few places where a vertex may die are
// listed first, and the function goes through them in order. Invariant: every live vertex gets its value by the
// operations of the documented steps, in their order, once a round.
#include "border/internal/rounds.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <utility>

#include "platform/internal/lanes.h"

namespace korvale::border {
namespace {

/// Directions that differ by less than this are taken for the same.
constexpr double kLeastTurn = 1e-06;
/// 1 + cos(turn) is 2 cos^2 of the half turn, 2e-12 where that is kHairpinCosine. A corner above half as much again is
/// no hairpin, however the root is rounded.
constexpr double kHairpinTurn = 3e-12;
/// An edge that an event leaves no longer than this has collapsed.
constexpr double kCollapsedLength = 1e-06;
/// What reaches no farther than this along each axis is a speck, which nobody misses. Chosen: ten times what counts as
/// collapsed.
constexpr double kSpeck = 1e-05;
/// Distance beyond the remaining one at which "no event" is placed.
constexpr double kBeyond = 1.0;

/// Sets edge i, which ends at vertex j, without dividing by its length.
void measure_edge(Wavefront& w, int32_t i, int32_t j)
{
    const double dx = w.at.x[j] - w.at.x[i], dy = w.at.y[j] - w.at.y[i];
    w.edge.dx[i] = dx;
    w.edge.dy[i] = dy;
    w.edge.length[i] = std::sqrt(dx * dx + dy * dy);
}

/// Edge i is as it was before the round.
void keep_edge(Wavefront& w, int32_t i)
{
    const bool was_measured = (w.written & Wavefront::lines) != 0;
    const int64_t vertex = w.id[i];
    w.edge.dx[i] = was_measured ? w.edge_before.dx[i] : w.rows.direction[3 * vertex];
    w.edge.dy[i] = was_measured ? w.edge_before.dy[i] : w.rows.direction[3 * vertex + 1];
    w.edge.length[i] = was_measured ? w.edge_before.length[i] : w.rows.length[vertex];
}

bool is_short(const Wavefront& w, int32_t i)
{
    return !w.gone[i] && w.edge.length[i] < kHair;
}

/// Buries vertex i, whose edge is short, and the vertices before it as long as the edge to what follows is short as
/// well. False when a single vertex is left.
bool merge_from(Wavefront& w, int32_t i)
{
    for (;;) {
        const int32_t j = next_live(w, i);
        measure_edge(w, i, j);
        bury(w, i, j);
        const int32_t k = previous_live(w, i);
        if (j == k) {
            if (j > i)
                keep_edge(w, j); // the documented loop reaches vertex j later; alone by then, it keeps its old edge
            return false;
        }
        measure_edge(w, k, j);
        const double length = w.edge.length[k];
        if (k < i && length < kHair) {
            i = k;
            continue;
        }
        w.edge.dx[k] /= length;
        w.edge.dy[k] /= length;
        return true;
    }
}

/// Copies the edges before they change: the lines handed back are those of the edges as they are now.
void keep_edges(Wavefront& w)
{
    copy_values(w.edge.dx, w.live, w.edge_before.dx);
    copy_values(w.edge.dy, w.live, w.edge_before.dy);
    copy_values(w.edge.length, w.live, w.edge_before.length);
    w.line_edge = w.edge_before;
}

/// Buries the vertices whose edge has been measured and is too short, and measures the edges that change with that.
/// False when a single vertex is left.
bool merge_short_edges(Wavefront& w)
{
    refresh(w);
    // The documented loop measures an edge when it reaches it. A death before that changes only the last edge, which
    // ends at the first vertex; that one is measured again with every such death.
    for (int32_t i = 0; i < w.live; ++i)
        if (is_short(w, i) && !merge_from(w, i))
            return false;
    return true;
}

/// `measure_edges` and `merge_short_edges` after a hairpin has been buried that leaves two vertices or more. Nothing
/// has moved since the edges were measured. So only the edge across the hairpin changes, and those that change because
/// it is too short. Returns the first place whose corner may have changed.
int32_t measure_over_hairpin(Wavefront& w, int32_t hairpin)
{
    const int32_t before = previous_live(w, hairpin), j = next_live(w, hairpin);
    const double dx = w.at.x[j] - w.at.x[before], dy = w.at.y[j] - w.at.y[before];
    const double length = std::sqrt(dx * dx + dy * dy);
    if (length < kHair) {
        keep_edges(w);
        // A death of the first vertex changes the length of the last edge, which is merged last. Two vertices stay: of
        // the last two edges one is as it was, hence not short, and the other is as long.
        int32_t at = before;
        do {
            merge_from(w, at);
            at = previous_live(w, j);
        } while (is_short(w, at));
    } else {
        w.edge.length[before] = length;
        w.edge.dx[before] = dx / length;
        w.edge.dy[before] = dy / length;
    }
    const int32_t changed = previous_live(w, j);
    return changed < hairpin && hairpin < j ? changed : 0;
}

/// Packs the dead away and tells the watch.
void pack_dead(Wavefront& w, Watch& watch)
{
    if (w.buried_count == 0)
        return;
    pack(w);
    follow_packing(watch, w);
}

/// 1 + the cosine of the turn from unit edge direction e to f.
template <class V>
KORVALE_OVER_LANES V turn(const V& ex, const V& ey, const V& fx, const V& fy)
{
    return 1.0 + (ex * fx + ey * fy);
}

/// The direction in which the corner between unit edge directions e and f moves.
template <class V>
KORVALE_OVER_LANES void find_bisector(const V& ex, const V& ey, const V& fx, const V& fy, V& bx, V& by)
{
    const V dx = ex - fx, dy = ey - fy;
    const V size = root(dx * dx + dy * dy);
    const auto bends = size >= all<V>(kLeastTurn);
    const auto bends_back = ex * fy - ey * fx < all<V>(0.0);
    const V ux = dx / size, uy = dy / size;
    bx = select(bends_back, -ux, ux);
    by = select(bends_back, -uy, uy);
    if (any_false(bends)) {
        bx = select(bends, bx, fy);
        by = select(bends, by, -fx);
    }
}

/// The speed at which a vertex of velocity v leaves the line of an edge that it starts or ends.
template <class V>
KORVALE_OVER_LANES V drift_of(const V& dx, const V& dy, const V& vx, const V& vy)
{
    return absolute(dx * vy - dy * vx + 1.0);
}

/// Lists the corners from place `first` on that may be hairpins.
int32_t list_sharp_corners(Wavefront& w, int32_t first)
{
    const ConstEdges edge = w.edge;
    int32_t* const list = w.list;
    int32_t count = 0;
    for_lanes(first, w.live, [edge, list, &count]<class V>(int32_t i) {
        const V ex = load<V>(edge.dx + i - 1), ey = load<V>(edge.dy + i - 1);
        const V c = turn(ex, ey, load<V>(edge.dx + i), load<V>(edge.dy + i));
        const auto is_sharp = c < all<V>(kHairpinTurn);
        add_places(i, bits(is_sharp), list, count);
    });
    return count;
}

/// Aims the corners from `begin` to `end`. Returns the greatest of `drift` and theirs, infinity where one is so sharp
/// that it may be a hairpin. While watched, lists those that turn. That is nearly free: the comparisons run in the
/// shadow of the roots' and divisions' latency.
template <bool kIsWatched>
double aim_corners(Wavefront& w, Watch& watch, int32_t begin, int32_t end, double drift)
{
    const ConstEdges edge = w.edge;
    const ConstPoints expected = watch.expected;
    double *const velocity_x = w.velocity.x, *const velocity_y = w.velocity.y;
    int32_t *const turned = watch.unsteady.turned, *const turned_count = &watch.unsteady.turned_count;
    return greatest_over(begin, end, drift, [=]<class V>(int32_t i) {
        const V ex = load<V>(edge.dx + i - 1), ey = load<V>(edge.dy + i - 1);
        const V fx = load<V>(edge.dx + i), fy = load<V>(edge.dy + i);
        V bx, by;
        find_bisector(ex, ey, fx, fy, bx, by);
        const V c = turn(ex, ey, fx, fy), speed = 1.0 / root(0.5 * c);
        const V vx = bx * speed, vy = by * speed;
        store(velocity_x + i, vx);
        store(velocity_y + i, vy);
        if constexpr (kIsWatched) {
            const V off_x = absolute(vx - load<V>(expected.x + i)), off_y = absolute(vy - load<V>(expected.y + i));
            const auto is_steady = (off_x <= all<V>(kSteady)) & (off_y <= all<V>(kSteady));
            add_places(i, bits(is_steady) ^ kAllBits<V>, turned, *turned_count);
        }
        const V leaving = greater(drift_of(ex, ey, vx, vy), drift_of(fx, fy, vx, vy));
        return select(c < all<V>(kHairpinTurn), all<V>(std::numeric_limits<double>::infinity()), leaving);
    });
}

double aim_corners(Wavefront& w, Watch& watch, int32_t begin, int32_t end, double drift)
{
    return watch.is_on ? aim_corners<true>(w, watch, begin, end, drift)
                       : aim_corners<false>(w, watch, begin, end, drift);
}

/// The optimistic way: aims all corners without listing sharp ones first. False, with the velocities of before, where
/// there are some.
bool aim_blunt_corners(Wavefront& w, Watch& watch, Round& round)
{
    std::swap(w.velocity, w.velocity_before);
    const double drift = aim_corners(w, watch, 0, w.live, 0.0);
    if (drift < std::numeric_limits<double>::infinity()) {
        round.drift = drift;
        return true;
    }
    std::swap(w.velocity, w.velocity_before);
    watch.unsteady.turned_count = 0;
    return false;
}

/// Aims corner i. False for a hairpin, of which only the direction of motion is set.
bool aim_sharp_corner(Wavefront& w, Watch& watch, Round& round, int32_t i)
{
    const double ex = w.edge.dx[i - 1], ey = w.edge.dy[i - 1], fx = w.edge.dx[i], fy = w.edge.dy[i];
    double &vx = w.velocity.x[i], &vy = w.velocity.y[i];
    find_bisector(ex, ey, fx, fy, vx, vy);
    const double c = turn(ex, ey, fx, fy);
    const double cos_half_turn = c < 0.0 ? 0.0 : std::sqrt(0.5 * c);
    if (cos_half_turn < kHairpinCosine)
        return false;
    const double speed = 1.0 / cos_half_turn;
    vx *= speed;
    vy *= speed;
    round.drift = greater(greater(drift_of(ex, ey, vx, vy), drift_of(fx, fy, vx, vy)), round.drift);
    if (watch.is_on)
        watch.unsteady.turned[watch.unsteady.turned_count++] = i; // without asking: such corners are rare
    return true;
}

/// Whether edges of these lengths and rates have shrunk to nothing after `time`.
template <class V>
KORVALE_OVER_LANES auto has_collapsed(const double* length, const double* rate, double time)
{
    return time * load<V>(rate) + load<V>(length) <= all<V>(kCollapsedLength);
}

/// Lists the edges that `time` brings to nothing. Returns their number.
int32_t list_collapsing(Wavefront& w, double time)
{
    const double *const lengths = w.edge.length, *const rates = w.rate;
    int32_t* const list = w.list;
    int32_t count = 0;
    for_lanes(0, w.live, [lengths, rates, time, list, &count]<class V>(int32_t i) {
        add_places(i, bits(has_collapsed<V>(lengths + i, rates + i, time)), list, count);
    });
    return count;
}

/// Widens the box by the vertices from `first` forwards up to and including `last`. None of them is gone.
void widen_by(Box& box, const Wavefront& w, int32_t first, int32_t last)
{
    if (last < first) {
        widen_by(box, w, first, w.live - 1);
        first = 0;
    }
    const ConstPoints at = w.at;
    box.low_x = least_over(first, last + 1, box.low_x, [at]<class V>(int32_t i) { return load<V>(at.x + i); });
    box.low_y = least_over(first, last + 1, box.low_y, [at]<class V>(int32_t i) { return load<V>(at.y + i); });
    box.high_x = greatest_over(first, last + 1, box.high_x, [at]<class V>(int32_t i) { return load<V>(at.x + i); });
    box.high_y = greatest_over(first, last + 1, box.high_y, [at]<class V>(int32_t i) { return load<V>(at.y + i); });
}

/// The box around the vertices from `first` to `last`, forwards, that starts from the one at `start`.
Box box_of_piece(const Wavefront& w, int32_t start, int32_t first, int32_t last)
{
    Box box = box_at(w.at.x[start], w.at.y[start]);
    widen_by(box, w, first, last);
    return box;
}

/// Whether a piece is a speck: a vertex, and others in a box.
bool is_speck(const Wavefront& w, int32_t vertex, Box box)
{
    widen(box, w.at.x[vertex], w.at.y[vertex]);
    return std::max(box.high_x - box.low_x, box.high_y - box.low_y) <= kSpeck;
}

/// Whether the smaller of the two pieces that `vertex` makes by running into `edge` is the one that follows the vertex.
///
/// The area of a box does not tell a long flat piece from a speck, or from an edge there and back. So the piece to keep
/// may be one of these while the other is real. That is noted in `has_lost`, and with `catch_up` the real one is kept.
bool is_smaller_after(const Wavefront& w, int32_t vertex, int32_t edge, bool catch_up, Findings& found)
{
    const int32_t after = next_live(w, vertex), before = previous_live(w, vertex), behind_edge = next_live(w, edge);
    if (after == edge)
        return true;
    const Box ahead = box_of_piece(w, after, after, edge);
    const Box behind = box_of_piece(w, before, behind_edge, before);
    const bool is_after = !(area(ahead) > area(behind));
    const Box& kept = is_after ? behind : ahead;
    if (area(kept) > kSpeck * kSpeck)
        return is_after;
    const bool is_two_sided = behind_edge == before;
    const bool is_nothing_behind = is_two_sided || is_speck(w, vertex, behind);
    const bool is_nothing_ahead = is_speck(w, vertex, ahead);
    if (is_nothing_ahead == is_nothing_behind || is_after != is_nothing_behind)
        return is_after;
    found.has_lost = true;
    return is_after != catch_up;
}

} // namespace

bool measure_edges(Wavefront& w)
{
    std::swap(w.edge, w.edge_before);
    wrap_ends(w.at, w.live);
    const ConstPoints at = w.at;
    double *const to_x = w.edge.dx, *const to_y = w.edge.dy, *const lengths = w.edge.length;
    const double shortest = least_over(0, w.live, kHair, [at, to_x, to_y, lengths]<class V>(int32_t i) {
        const V dx = load<V>(at.x + i + 1) - load<V>(at.x + i), dy = load<V>(at.y + i + 1) - load<V>(at.y + i);
        const V length = root(dx * dx + dy * dy);
        store(lengths + i, length);
        store(to_x + i, dx / length);
        store(to_y + i, dy / length);
        return length;
    });
    note_written(w, Wavefront::edges);
    return !(shortest < kHair);
}

bool measure_live(Wavefront& w, Watch& watch, const Round& before, Round& round)
{
    if (w.live - w.buried_count == 1)
        return false;
    if (before.hairpin >= 0) {
        round.first_unaimed = measure_over_hairpin(w, before.hairpin);
    } else {
        pack_dead(w, watch);
        if (!measure_edges(w) && !merge_short_edges(w))
            return false;
    }
    if (w.buried_count > 0) {
        pack_dead(w, watch);
        close_gaps(w, w.edge);
    }
    return true;
}

void fit_edge_lines(Wavefront& w)
{
    wrap_ends(w.at, w.live); // again: some may have died since measure_edges
    wrap_ends(w.edge.dx, w.live);
    wrap_ends(w.edge.dy, w.live);
    w.line_at = w.at;
    w.line_edge = w.edge;
    note_written(w, Wavefront::lines);
}

Corners aim_vertices(Wavefront& w, Watch& watch, const Round& before, Round& round)
{
    int32_t done = round.first_unaimed;
    round.drift = done > 0 ? before.drift : 0.0;
    watch.unsteady.turned_count = 0;
    if (done > 0 || before.has_sharp_corners || !aim_blunt_corners(w, watch, round)) {
        const int32_t sharp = list_sharp_corners(w, done);
        round.has_sharp_corners = sharp > 0;
        if (sharp > 0)
            refresh(w); // a hairpin leaves the velocities behind it as they were
        for (int32_t at = 0; at < sharp; ++at) {
            const int32_t i = w.list[at];
            round.drift = aim_corners(w, watch, done, i, round.drift);
            if (!aim_sharp_corner(w, watch, round, i)) {
                const int32_t j = next_live(w, i), k = previous_live(w, i);
                bury(w, i, w.edge.length[k] > w.edge.length[i] ? j : k);
                round.hairpin = i;
                end_watch(watch); // `turned` holds places, which the next packing changes
                return j != k ? Corners::hairpin_removed : Corners::outline_gone;
            }
            done = i + 1;
        }
        round.drift = aim_corners(w, watch, done, w.live, round.drift);
    }
    wrap_ends(w.velocity, w.live);
    note_written(w, Wavefront::velocities);
    return Corners::aimed;
}

Event first_edge_event(Wavefront& w, const Round& round)
{
    // Times are counted along the motion and so positive; `sign` turns the rates accordingly. A product tells whether
    // an edge may shrink to nothing before the first event known so far. Few may, and only these are divided by their
    // rates.
    const bool outwards = round.remaining > 0.0;
    const double sign = outwards ? -1.0 : 1.0;
    double first = outwards ? round.remaining + kBeyond : -(round.remaining - kBeyond), soon = first * kLater;
    const ConstEdges edge = w.edge;
    const ConstPoints velocity = w.velocity;
    double* const rates = w.rate;
    for_lanes(0, w.live, [edge, velocity, rates, sign, &first, &soon]<class V>(int32_t i) {
        const V dx = load<V>(edge.dx + i), dy = load<V>(edge.dy + i), length = load<V>(edge.length + i);
        const V along_x = load<V>(velocity.x + i + 1) - load<V>(velocity.x + i);
        const V along_y = load<V>(velocity.y + i + 1) - load<V>(velocity.y + i);
        const auto by_x = absolute(dx) > all<V>(kDominantComponent);
        const V rate = select(by_x, along_x, along_y) / select(by_x, dx, dy);
        store(rates + i, rate);
        const V shrinking = sign * rate;
        if (any(length < soon * shrinking)) {
            const V time = select(shrinking > all<V>(0.0), length / shrinking, all<V>(first));
            first = reduce_least(lesser(time, all<V>(first)));
            soon = first * kLater;
        }
    });
    note_written(w, Wavefront::rates);
    return {outwards ? first : -first, -1, -1};
}

void move_vertices(Wavefront& w, double time)
{
    const ConstPoints at = w.at, velocity = w.velocity;
    double *const to_x = w.ahead.x, *const to_y = w.ahead.y;
    for_lanes(0, w.live, [at, velocity, to_x, to_y, time]<class V>(int32_t i) {
        store(to_x + i, load<V>(at.x + i) + time * load<V>(velocity.x + i));
        store(to_y + i, load<V>(at.y + i) + time * load<V>(velocity.y + i));
    });
    std::swap(w.at, w.ahead);
}

int32_t count_collapsing(const Wavefront& w, double time)
{
    const double *const lengths = w.edge.length, *const rates = w.rate;
    int32_t count = 0;
    for_lanes(0, w.live, [lengths, rates, time, &count]<class V>(int32_t i) {
        count += std::popcount(static_cast<unsigned>(bits(has_collapsed<V>(lengths + i, rates + i, time))));
    });
    return count;
}

void collapse_edges(Wavefront& w, double time)
{
    const int32_t count = list_collapsing(w, time);
    move_vertices(w, time);
    for (int32_t k = 0; k < count; ++k) {
        const int32_t i = w.list[k], j = next_live(w, i);
        bury(w, i, j);
        if (j == previous_live(w, i)) { // Deliberate: the vertices after i stay where they are
            copy_values(w.ahead.x + i + 1, w.live - i - 1, w.at.x + i + 1);
            copy_values(w.ahead.y + i + 1, w.live - i - 1, w.at.y + i + 1);
            return;
        }
    }
}

void end_at_ridge(Wavefront& w, double time)
{
    const int32_t count = list_collapsing(w, time);
    move_vertices(w, time);
    for (int32_t k = 0; k < count && k + 1 < w.live; ++k)
        bury(w, w.list[k], next_live(w, w.list[k]));
}

bool is_tip_of_limb(const Wavefront& w, int32_t i)
{
    return std::min(w.edge.length[previous_live(w, i)], w.edge.length[i]) > kSpeck;
}

bool is_piece(const Wavefront& w, int32_t vertex, int32_t edge, bool catch_up, Findings& found)
{
    const bool is_after = is_smaller_after(w, vertex, edge, catch_up, found);
    return !is_speck(w, vertex,
                     is_after ? box_of_piece(w, vertex, next_live(w, vertex), edge)
                              : box_of_piece(w, vertex, next_live(w, edge), previous_live(w, vertex)));
}

void drop_smaller_piece(Wavefront& w, int32_t vertex, int32_t edge, bool catch_up, Findings& found)
{
    if (is_smaller_after(w, vertex, edge, catch_up, found)) {
        for (int32_t i = next_live(w, vertex); i != edge; i = next_live(w, i))
            bury(w, i, vertex);
        bury(w, edge, vertex);
    } else {
        for (int32_t i = previous_live(w, vertex); i != edge; i = previous_live(w, i))
            bury(w, i, vertex);
    }
}

} // namespace korvale::border
