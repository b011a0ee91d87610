#pragma once

#include <cstdint>

#include "border/internal/box_tree.h"
#include "border/internal/slots.h"
#include "border/internal/wavefront.h"

namespace korvale::inside {

/// A vertex and an edge that may meet, by their slots.
struct Candidate {
    int32_t vertex, edge;
};

/// The pairs that may meet before `horizon`, from round to round, while the wavefront is watched. Distances count from
/// where the watch began.
struct Watch {
    /// Takes `memory`, of `doubles_for` n vertices.
    Watch(int32_t n, double* memory);
    static int64_t doubles_for(int32_t n);

    int32_t rounds;   ///< searched since it began
    double spent;     ///< distance travelled
    double horizon;   ///< distance up to which the boxes hold the motion
    double reach;     ///< no box holds a larger coordinate
    double allowance; ///< by how much every vertex is inside its box, at least
    Slots slots;
    Boxes boxes;     ///< [slots + 1] of the vertices, of the dead that of the next live one; then the first again
    Boxes stretches; ///< around the edges of `stretch_length` neighbouring slots
    int32_t stretch_length, stretch_count;
    int32_t changed_count;
    int32_t* changed; ///< slots of vertices that have another one before them since the last search
    int64_t candidate_count, most_candidates;
    Candidate* candidates;
    double* due; ///< distance before which a candidate does not meet
    double* tree_memory;
};

/// How many vertices may turn or die in a round before a watch is better started anew.
int32_t most_changes(const Wavefront& w);

/// By how much boxes are wider than the motion over `window`, so that rounding never takes a meeting outside.
double slack_of(double drift, double reach, double window);

/// Makes the boxes of all vertices around their motion over `time`, widened by `margin`, and the tree over them.
BoxTree grow_boxes(const Watch& watch, const Wavefront& w, double time, double margin);

/// Watches the wavefront for a signed distance. Nothing is watched where there are too many candidates.
void start_watch(Watch& watch, Wavefront& w, double ahead, double reach);

/// Takes note of the vertices that `pack` has just removed.
void follow_packing(Watch& watch, Wavefront& w);

/// Adds the candidates of the vertices that have turned or changed. False when so many have that the watch is better
/// started anew, or when the motion over `window` may leave the boxes.
bool keep_up(Watch& watch, const Wavefront& w, double window);

/// Candidate k, by its places, has been tested: from when on it is due again.
void renew_due(Watch& watch, const Wavefront& w, int64_t k, int32_t m, int32_t e);

/// Candidate k will not meet any more. The last one takes its place.
void drop_candidate(Watch& watch, int64_t k);

} // namespace korvale::inside
