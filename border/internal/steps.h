#pragma once

#include <cstdint>

#include "border/internal/wavefront.h"

// The steps of a round, in the order in which a sweep takes them.
namespace korvale::inside {

/// A component of a unit direction larger than this is used to divide by.
constexpr double kDominantComponent = 0.5;

/// What is farther away than this times the way that closes until some time comes after it, however the time of its own
/// is rounded.
constexpr double kLater = 1.0000000001;

/// What stops the motion next: at `time`, an edge shrinks to nothing, or `vertex` (when not -1) meets `edge`. Both are
/// places in the columns.
struct Event {
    double time;
    int32_t vertex;
    int32_t edge;
};

enum class Corners { aimed, hairpin_removed, outline_gone };

/// Sets direction and length of every edge. False when some are too short to have a direction.
bool measure_edges(Wavefront& w);

/// Buries the vertices whose edge has been measured and is too short, and measures the edges that change with that.
/// False when a single vertex is left.
bool merge_short_edges(Wavefront& w);

/// The same after a hairpin has been buried that leaves two vertices or more. Nothing has moved since the edges were
/// measured, so only the edge that ended there changes, and those that change because it is too short. Returns a place
/// before which no vertex sees a difference.
int32_t measure_over_hairpin(Wavefront& w);

/// From here on the lines of the edges are those of the edges and positions as they are now.
void fit_edge_lines(Wavefront& w);

/// Sets the velocity of every vertex from place `from` on such that both its edges move at unit speed, up to the first
/// hairpin, which is buried. Those before `from` have theirs from the round before. Sets `drift` as well. While the
/// wavefront is watched, lists the vertices that have turned.
Corners aim_vertices(Wavefront& w, int32_t from);

/// Sets at which rate every edge changes its length. When the first shrinks to nothing; beyond the remaining distance
/// when none does.
Event first_edge_event(Wavefront& w);

/// Moves the vertices by `time`; where they were is `ahead` from then on.
void move_vertices(Wavefront& w, double time);

/// Lists the edges that `time` brings to nothing in `list`. Returns their number.
int32_t list_collapsing(const Wavefront& w, double time);

/// Moves the vertices by `time` and buries those whose edge has shrunk to nothing.
void collapse_edges(Wavefront& w, double time);

} // namespace korvale::inside
