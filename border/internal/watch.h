#pragma once

#include <cstdint>

#include "border/internal/box_tree.h"
#include "border/internal/round.h"
#include "border/internal/slots.h"
#include "border/internal/wavefront.h"

namespace korvale::border {

/// Coordinates beyond this leave no room for the arithmetic of boxes: every pair is tested.
constexpr double kFarthestBoxed = 1e100;

/// A vertex and an edge that may meet, by their slots.
struct Candidate {
    int32_t vertex, edge;
};

/// A vertex is steady while its velocity differs from the expected one by no more than this on each axis. Chosen: far
/// above the rounding of velocities, far below the unit speed of edges.
constexpr double kSteady = 5e-04;

/// What a watch is limited by: set by `start_watch`, the same until it ends. Distances count from where it began.
struct WatchBounds {
    double horizon = 0.0;       ///< distance up to which the boxes hold the motion
    double allowance = 0.0;     ///< every vertex is inside its box by at least this
    double reach = 0.0;         ///< no box holds a larger coordinate
    int32_t stretch_length = 0; ///< slots of a stretch
    int32_t stretch_count = 0;
};

/// What a round has seen of the watched vertices that asks for another look, up to `keep_up`, which takes it.
struct Unsteady {
    Column<int32_t> changed; ///< [changed_count] slots whose predecessor has died: listed by `follow_packing`
    int32_t changed_count = 0;
    Column<int32_t> turned; ///< [turned_count] places of vertices that are not steady, ascending: by `aim_vertices`
    int32_t turned_count = 0;
};

/// The pairs that may meet before the horizon. The record and its memory are there for the sweep; what it holds is kept
/// up from round to round while it is on, but for `bounds` and `unsteady`.
struct Watch {
    /// Takes `memory`, of `doubles_for` n vertices. For 0 vertices nothing is ever watched.
    Watch(int32_t n, double* memory);
    static int64_t doubles_for(int32_t n);

    /// Whether the rest holds. Set by `start_watch`; `follow_packing`, `keep_up` and `end_watch` clear it.
    bool is_on = false;

    WatchBounds bounds;
    int32_t rounds = 0; ///< searched since it began: counted by `keep_up`
    double spent = 0.0; ///< distance travelled: added to by the search, after each round
    Points expected;    ///< [live] velocities when the vertices were looked at last: read by `aim_vertices`, renewed by
                        ///< `keep_up`, packed by `follow_packing`
    Slots slots;        ///< names of the vertices: kept up by `follow_packing`
    Boxes boxes;        ///< [slots + 1] of the vertices, a dead one's that of the next live; then the first again
    Boxes stretches;    ///< [bounds.stretch_count] around the edges of neighbouring slots: widened by `keep_up`
    int64_t candidate_count = 0, most_candidates = 0;
    Column<Candidate> candidates; ///< [candidate_count] added by `keep_up`, dropped when they are tested
    Column<double> due;           ///< [candidate_count] distance before which a candidate does not meet

    Unsteady unsteady;
    Column<double> tree_memory; ///< of the tree that `grow_boxes` returns, until it grows the next one
};

/// More of `live` vertices than this turning or dying in a round make a new watch cheaper.
int32_t most_changes(int32_t live);

/// How far beside its edge a meeting within `window` may lie, and so how much wider than the motion boxes are. The ends
/// of an edge leave its line by window * drift; on the axis across the dominant one that is up to twice as much, and a
/// quarter is to spare. The arithmetic of positions and lines rounds by less than kRounding of the largest coordinate,
/// `reach`.
double slack_of(double drift, double reach, double window);

/// Makes the boxes of all vertices around their motion over `time`, widened by `margin`, and the tree over them.
BoxTree grow_boxes(Watch& watch, const Wavefront& w, double time, double margin);

/// Watches the wavefront for a signed distance. Nothing is watched where there are too many candidates.
void start_watch(Watch& watch, const Wavefront& w, const Round& round, double ahead, double reach);

/// Nothing is watched any more.
inline void end_watch(Watch& watch)
{
    watch.is_on = false;
}

/// Follows `pack`: the vertices that it has just removed leave their slots. Ends the watch where too many have.
void follow_packing(Watch& watch, const Wavefront& w);

/// Adds the candidates of the vertices that have turned or changed. Ends the watch where a new one is better: so many
/// have, or the motion over `window` may leave the boxes.
void keep_up(Watch& watch, const Wavefront& w, const Round& round, double window);

/// Candidate k, at places m and e, has been tested: sets the distance at which it is due again.
void renew_due(Watch& watch, const Wavefront& w, const Round& round, int64_t k, int32_t m, int32_t e);

/// Candidate k will not meet any more. The last one takes its place.
void drop_candidate(Watch& watch, int64_t k);

} // namespace korvale::border
