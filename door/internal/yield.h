#pragma once

#include <span>

#include "door/internal/edges.h"
#include "door/internal/failure.h"

// What a border beside a line gives way to: bends that are too tight, and other parts of the line.
namespace korvale::door {

/// A line in the plane and the side of it on which its border lies.
struct Beside {
    std::span<const Place> line;
    const EdgeTree& edges; ///< of the line, in order
    bool closed;
    double distance; ///< to the right where it is positive
    double miter_limit;
    double slack;    ///< distances that differ by no more are the same
    double rounding; ///< what is farther than the miter limit by no more is at it
    Telling telling = {};
};

/// The border of a line in the making, a point for each point of the line.
struct Settling {
    std::span<Place> border;
    std::span<uint8_t> removed;    ///< 1: shares the place of others
    std::span<uint8_t> narrowed;   ///< written; 1: nearer to the line than the distance, or a corner cut off
    std::span<uint8_t> moved;      ///< written; 1: has been given another place
    std::span<const int32_t> heir; ///< what each point shares the place of
};

/// How many points have no border at the distance where they would have it alone. `telling` only stops it.
size_t count_crowded(const Beside& b, const Telling& telling);

/// Looks at every point of a swept border. Those that are neither nearer to the line than the distance nor farther from
/// their own stretch of it than the miter limit allows stay, points that share a place beyond the limit from their own
/// points of the line only where they give up little room. The others are placed anew: as far as nothing else of the
/// line is nearer.
///
/// With `all` each of them is placed anew: the sweep has turned the border of a closed line inside out.
void settle(const Beside& beside, const Settling& s, bool all);

/// Where no part of a closed line has a border at the distance, all of its border gives way, to the place farthest from
/// the line. Returns whether it does.
bool vanish(const Beside& beside, const Settling& s);

/// Holds the border of a line whose knots were points while it was made. What is farther from its own stretch of the
/// line than the miter limit allows is brought up to the limit; what is nearer to the line than the distance is told.
void hold(const Beside& beside, const Settling& s);

} // namespace korvale::door
