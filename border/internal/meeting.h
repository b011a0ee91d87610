#pragma once

#include <cstdint>

#include "border/internal/box_tree.h"
#include "border/internal/steps.h"
#include "border/internal/wavefront.h"

namespace korvale::inside {

/// A vertex and an edge that may meet, by their places in the columns.
struct Candidate {
    int32_t vertex, edge;
};

/// What the search for meetings remembers from round to round: a box around each vertex that holds some rounds of its
/// motion, and every vertex and edge whose boxes meet (that of an edge is the hull of those of its ends).
struct MeetingSearch {
    /// Takes `memory`, of `doubles_for` the sweep.
    MeetingSearch(const Sweep& s, double* memory);
    static int64_t doubles_for(const Sweep& s);

    bool registered;           ///< boxes and candidates are up to date
    bool is_calm;              ///< few died at the last packing: boxes for some rounds are worth making
    int32_t rounds;            ///< searches made
    double previous_remaining; ///< distance before the last of them
    double pace;               ///< distance that a round spends, on average
    double reach;              ///< no box holds a larger coordinate
    double allowance;          ///< by how much the boxes are wider than the motion that was tested, at least
    double edge;               ///< average length when the boxes were made
    Boxes boxes;               ///< [live + 1] of the vertices, the first repeated at the end
    double* tree_memory;
    int32_t stretch_count;
    int32_t* stretch_begin; ///< [stretch_count + 1] places: the outline in stretches of some neighbours
    Boxes stretches;        ///< around the edges of a stretch
    int32_t changed_count;
    int32_t* changed_edges; ///< places of edges whose end has died since the last search
    int32_t* leaving;       ///< places of vertices that leave their boxes
    int64_t candidate_count, most_candidates;
    Candidate* candidates;
};

/// Takes note of the vertices that `pack` has just removed.
void follow_packing(MeetingSearch& search, const Wavefront& w);

/// The first meeting of a vertex with an edge that is not its own, where that comes before `event`. Among equal times
/// the first vertex wins, then the first edge. The vertices have looked ahead to `event`, or over the remaining
/// distance where that is less.
Event earlier_split_event(MeetingSearch& search, const Wavefront& w, Event event);

} // namespace korvale::inside
