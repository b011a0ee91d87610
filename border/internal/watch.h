#pragma once

#include <cstdint>

#include "border/internal/box_tree.h"
#include "border/internal/slots.h"
#include "border/internal/wavefront.h"

namespace korvale::inside {

/// Coordinates beyond this leave no room for the arithmetic of boxes: every pair is tested.
constexpr double kFarthestBoxed = 1e100;

/// A vertex and an edge that may meet, by their slots.
struct Candidate {
    int32_t vertex, edge;
};

/// The pairs that may meet before `horizon`, kept over rounds while the wavefront is watched. Distances count from
/// where the watch began.
struct Watch {
    /// Takes `memory`, of `doubles_for` n vertices.
    Watch(int32_t n, double* memory);
    static int64_t doubles_for(int32_t n);

    int32_t rounds;   ///< searched since it began
    double spent;     ///< distance travelled
    double horizon;   ///< distance up to which the boxes hold the motion
    double reach;     ///< no box holds a larger coordinate
    double allowance; ///< every vertex is inside its box by at least this
    Slots slots;
    Boxes boxes;     ///< [slots + 1] of the vertices, a dead one's that of the next live; then the first again
    Boxes stretches; ///< around the edges of `stretch_length` neighbouring slots
    int32_t stretch_length, stretch_count;
    int32_t changed_count;
    Column<int32_t> changed; ///< slots of vertices whose predecessor has died since the last search
    int64_t candidate_count, most_candidates;
    Column<Candidate> candidates;
    Column<double> due; ///< distance before which a candidate does not meet
    Column<double> tree_memory;
};

/// More vertices than this turning or dying in a round make a new watch cheaper.
int32_t most_changes(const Wavefront& w);

/// How far beside its edge a meeting within `window` may lie, and so how much wider than the motion boxes are. The ends
/// of an edge leave its line by window * drift; on the axis across the dominant one that is up to twice as much, and a
/// quarter is to spare. The arithmetic of positions and lines rounds by less than kRounding of the largest coordinate,
/// `reach`.
double slack_of(double drift, double reach, double window);

/// Makes the boxes of all vertices around their motion over `time`, widened by `margin`, and the tree over them.
BoxTree grow_boxes(Watch& watch, const Wavefront& w, double time, double margin);

/// Watches the wavefront for a signed distance. Nothing is watched where there are too many candidates.
void start_watch(Watch& watch, Wavefront& w, double ahead, double reach);

/// Follows `pack`: the vertices that it has just removed leave their slots.
void follow_packing(Watch& watch, Wavefront& w);

/// Adds the candidates of the vertices that have turned or changed. False when a new watch is better: so many have, or
/// the motion over `window` may leave the boxes.
bool keep_up(Watch& watch, Wavefront& w, double window);

/// Candidate k, at places m and e, has been tested: sets the distance at which it is due again.
void renew_due(Watch& watch, const Wavefront& w, int64_t k, int32_t m, int32_t e);

/// Candidate k will not meet any more. The last one takes its place.
void drop_candidate(Watch& watch, int64_t k);

} // namespace korvale::inside
