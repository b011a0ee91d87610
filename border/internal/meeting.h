#pragma once

#include <cstdint>

#include "border/internal/lanes.h"
#include "border/internal/wavefront.h"
#include "platform/internal/scratch.h"

namespace korvale::inside {

/// An axis-aligned box in the plane, as (x, y) pairs.
struct SweptBox {
    Pair low, high;
};

/// A vertex and an edge, by their indices in the sweep, that may meet.
struct Candidate {
    int32_t vertex, edge;
};

/// What the search for meetings remembers from round to round: a box around each vertex that holds some rounds of its
/// motion, and every vertex and edge whose boxes meet (that of an edge spans those of its ends).
struct MeetingSearch {
    explicit MeetingSearch(const Sweep& s);

    bool exists() const { return !wanted || (boxes.exists() && candidates.exists() && changed_edges.exists()); }

    bool wanted;               ///< the sweep looks for meetings
    bool registered;           ///< boxes and candidates are up to date
    int32_t rounds;            ///< searches made
    double previous_remaining; ///< distance before the last of them
    double pace;               ///< distance that a round spends, on average
    double reach;              ///< no box holds a larger coordinate
    double edge;               ///< average length when the boxes were made
    int64_t candidate_count;
    int64_t most_candidates;
    int32_t changed_count;   ///< edges whose end has died since the last search
    Scratch<SweptBox> boxes; ///< [live + 1] of the vertices, the first repeated at the end
    Scratch<Candidate> candidates;
    Scratch<int32_t> changed_edges; ///< indices in the sweep
};

/// Takes note of the vertices that `pack` has just removed.
void follow_packing(MeetingSearch& search, const Wavefront& w);

/// The first meeting of a vertex with an edge that is not its own, where that comes before `event`. Among equal times
/// the first vertex wins, then the first edge.
Event earlier_split_event(MeetingSearch& search, const Wavefront& w, Event event);

} // namespace korvale::inside
