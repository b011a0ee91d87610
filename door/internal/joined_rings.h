#pragma once

#include "door/internal/triangulate.h"

namespace korvale::door {

/// Where a place of a joined ring comes from.
struct Origin {
    int32_t place; ///< of the ring before it was joined, from 0: the place itself, or that at which its edge begins
    double share;  ///< of that edge before it; 0 of a place itself
};

/// Rings, and where their places come from.
struct JoinedRings {
    Rings rings;
    Vector<Origin> origins;
};

/// Joins rings where they come within `tolerance` of each other: those for which `is_joined` has a number other than 0,
/// and those that hang together with such a ring by coming within twice the tolerance of each other. All others stay.
/// No place moves farther than the tolerance, but for loops no larger than twice that, which are cut off. Rings keep
/// their numbers; one of which nothing is left is empty.
void join_rings(JoinedRings& joined, std::span<const uint8_t> is_joined, double tolerance, const Telling& telling);

} // namespace korvale::door
