#pragma once

#include <span>

#include "door/internal/failure.h"
#include "door/internal/side.h"

namespace korvale::door {

/// The area that a ring goes round counter-clockwise: 0 where that is no more than a hair of its length.
double area_of(std::span<const Place> ring);

/// Whether a ring can be what has become of one that went round the area `before` when it began to move: it does not
/// cross itself by more than a hair, and runs the same way or goes round nothing. `telling` is asked whether to go on.
bool is_sound(std::span<const Place> ring, double before, const Telling& telling);

} // namespace korvale::door
