#pragma once

#include <cstdint>

#include "border/internal/wavefront.h"

namespace korvale::border {

/// Names for the vertices of a wavefront that outlast deaths: a slot is the place that a vertex had when the naming
/// began.
struct Slots {
    int32_t count; ///< slots, those of the dead included
    /// [count] Today's place, negative for the dead. A double, since lanes hold doubles: a death subtracts 1 from many
    /// places at a time.
    Column<double> place;
    Column<int32_t> slot; ///< [live] of the vertex at a place
};

/// Names n vertices by their places.
inline void name_places(Slots& slots, int32_t n)
{
    slots.count = n;
    for (int32_t i = 0; i < n; ++i)
        slots.place[i] = slots.slot[i] = i;
}

/// The place of a slot, negative for a dead one.
inline int32_t place_of(const Slots& slots, int32_t slot)
{
    return static_cast<int32_t>(slots.place[slot]);
}

/// The vertices at `count` of n places, ascending, have died; the others have moved up to close the gaps.
inline void bury_places(Slots& slots, const int32_t* gaps, int32_t count, int32_t n)
{
    double* const place = slots.place;
    for (int32_t g = 0; g < count; ++g) {
        const int32_t slot = slots.slot[gaps[g]];
        place[slot] = -1.0;
        for_lanes(slot + 1, slots.count, [place]<class V>(int32_t i) { store(place + i, load<V>(place + i) - 1.0); });
    }
    remove_values(slots.slot, sizeof *slots.slot, gaps, count, n);
}

} // namespace korvale::border
