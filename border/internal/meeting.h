#pragma once

#include <cstdint>

#include "border/internal/round.h"
#include "border/internal/watch.h"
#include "border/internal/wavefront.h"

namespace korvale::border {

/// What the search for meetings remembers from round to round, as long as the sweep lasts.
struct MeetingSearch {
    /// Takes `memory`, of `doubles_for` the vertices. Without splits there is nothing to search for.
    MeetingSearch(int32_t n, bool split_events, double* memory);
    static int64_t doubles_for(int32_t n, bool split_events);

    int32_t rounds = 0; ///< searched: counted by `earlier_split_event`
    double pace = 0.0;  ///< distance that a round spends, on average: as `rounds`, read where a watch starts
    Watch watch;
};

/// The first meeting of a vertex with an edge that is not its own, where that comes before `event`. Among equal times
/// the first vertex wins, then the first edge. Also finds vertices that have missed an edge, and asks whether to go on
/// where it takes long.
Event earlier_split_event(MeetingSearch& search, Wavefront& w, const Request& request, const Round& round, Event event,
                          Findings& found);

} // namespace korvale::border
