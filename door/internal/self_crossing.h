#pragma once

#include <optional>
#include <span>
#include <utility>

#include "door/internal/failure.h"
#include "door/internal/heap.h"
#include "door/internal/side.h"

namespace korvale::door {

/// Two edges of a ring, by the places they begin at.
using EdgePair = std::pair<int32_t, int32_t>;

/// Whether two edges of a ring have a place in common, other than that at which one follows the other.
bool do_meet(std::span<const Place> ring, int32_t i, int32_t k);

/// Where a ring crosses itself by more than `slack`, if it does: looked for from its lowest place on, which has the
/// number `lowest`. `meeting` are its edges that meet, or many of them. `telling` is asked whether to go on.
std::optional<Place> find_self_crossing(std::span<const Place> ring, std::span<const EdgePair> meeting, int32_t lowest,
                                        double slack, const Telling& telling);

} // namespace korvale::door
