#pragma once

#include <cstdint>

#include "border/internal/round.h"
#include "border/internal/watch.h"
#include "border/internal/wavefront.h"

namespace korvale::border {

/// What the search for meetings remembers from round to round, as long as the sweep lasts.
struct MeetingSearch {
    /// Takes `memory`, of `doubles_for` the sweep.
    MeetingSearch(Sweep& s, double* memory);
    static int64_t doubles_for(const Sweep& s);

    Sweep& s;           ///< asked whether to go on
    int32_t rounds = 0; ///< searched: counted by `earlier_split_event`
    double pace = 0.0;  ///< distance that a round spends, on average: as `rounds`, read where a watch starts
    Watch watch;
};

/// The first meeting of a vertex with an edge that is not its own, where that comes before `event`. Among equal times
/// the first vertex wins, then the first edge.
Event earlier_split_event(MeetingSearch& search, Wavefront& w, const Round& round, Event event);

} // namespace korvale::border
