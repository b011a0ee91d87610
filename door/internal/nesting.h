#pragma once

#include "door/internal/contours.h"

namespace korvale::door {

/// For each ring its outer one: itself where it lies in an even number of others, -1 where it has no places, and -2 - m
/// where it repeats ring m. `touches` tells which rings come within rounding of others.
Vector<int32_t> find_outer(Contours& contours, std::span<const uint8_t> touches, const Telling& telling);

} // namespace korvale::door
