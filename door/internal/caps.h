#pragma once

#include "door/internal/edges.h"
#include "include/korvale_c.h"

// What a band has beyond the ends of its line.
namespace korvale::door {

/// How caps are made.
struct Caps {
    bool are_some;
    bool both_sides;
    int halvings; ///< of each quarter turn
};

/// Caps as the options of a band want them, for a distance above 0.
Caps caps_of(const korvale_band_options& options, double distance);

/// The corners of a cap, from the end of the line on: from the border, to which `step` leads, past the place that is as
/// far `beyond`, to the border on the other side, or, of one side, to that place.
Vector<Place> cap_from(const Caps& caps, const Place& step, const Place& beyond);

} // namespace korvale::door
