#pragma once

#include <span>

#include "door/internal/edges.h"

// Knots in a line: where a track stood still, and wherever else it goes back and forth on the spot.
namespace korvale::door {

/// Points of a line that follow each other and count as one.
struct Bundle {
    size_t first; ///< their first point
    size_t count; ///< how many they are; of a closed line they may go on from its last point to its first
    size_t steps; ///< how many there are without those that repeat the one before
    Place place;  ///< the mean of these
    bool is_knot; ///< they go back and forth
};

/// The points of a line, those of a knot together, and those that repeat each other, in the order of the line; of a
/// closed one they may begin anywhere.
///
/// A knot is a run of points within `reach` of its first one in which the line turns back, by more than 96 degrees, to
/// both sides, or around, and what zigzags close beside it. A line that lies within `reach` of its first point has
/// none.
Vector<Bundle> bundle_knots(std::span<const Place> line, bool closed, double reach);

} // namespace korvale::door
