#pragma once

#include <cstdint>

#include "border/internal/steps.h"
#include "border/internal/watch.h"
#include "border/internal/wavefront.h"

namespace korvale::inside {

/// What the search for meetings remembers from round to round.
struct MeetingSearch {
    /// Takes `memory`, of `doubles_for` the sweep.
    MeetingSearch(const Sweep& s, double* memory);
    static int64_t doubles_for(const Sweep& s);

    int32_t rounds; ///< searched
    double pace;    ///< distance that a round spends, on average
    Watch watch;
};

/// The first meeting of a vertex with an edge that is not its own, where that comes before `event`. Among equal times
/// the first vertex wins, then the first edge.
Event earlier_split_event(MeetingSearch& search, Wavefront& w, Event event);

} // namespace korvale::inside
