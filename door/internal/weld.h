#pragma once

#include "door/internal/views.h"

namespace korvale::door {

/// For each point the number of the first one at exactly its place.
Vector<int32_t> first_at_place(std::span<const Point> points, const Telling& telling = {});

} // namespace korvale::door
