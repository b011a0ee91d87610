#pragma once

#include "door/internal/contours.h"

namespace korvale::door {

/// For each ring the first one that goes round the same area, whichever way; -1 of that one, and where no other does.
/// With a tolerance above 0 also rings go round the same area that are within it of each other everywhere, corners
/// within twice as much, and those that hang together by such.
Vector<int32_t> find_repeats(const Rings& rings, std::span<const Contour> contours, double tolerance,
                             const Telling& telling);

} // namespace korvale::door
