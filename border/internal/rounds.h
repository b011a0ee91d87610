#pragma once

#include <cstdint>

#include "border/internal/round.h"
#include "border/internal/watch.h"
#include "border/internal/wavefront.h"

// What a round does, in this order.
namespace korvale::border {

/// A pair farther apart than kLater times the distance that closes until time t meets after t, even with its own time
/// rounded, which moves it by a few parts in 1e16. Chosen: far above that.
constexpr double kLater = 1.0000000001;

enum class Corners { aimed, hairpin_removed, outline_gone };

/// Sets direction and length of every edge. False when some are too short to have a direction.
bool measure_edges(Wavefront& w);

/// Measures the edges of the live vertices, none of them short any more. False when a single vertex is left.
bool measure_live(Wavefront& w, Watch& watch, const Round& before, Round& round);

/// The lines of the edges are from now on those of the current edges and positions.
void fit_edge_lines(Wavefront& w);

/// Sets the velocity of every vertex from place `first_unaimed` on such that both its edges move at unit speed, up to
/// the first hairpin, which is buried and ends the watch. While watched, lists the vertices that have turned.
Corners aim_vertices(Wavefront& w, Watch& watch, const Round& before, Round& round);

/// Sets the rate at which every edge changes its length. Returns when the first edge shrinks to nothing; a time beyond
/// the remaining distance when none does.
Event first_edge_event(Wavefront& w, const Round& round);

/// Moves the vertices by `time`; where they were is `ahead` from then on.
void move_vertices(Wavefront& w, double time);

/// The number of edges that `time` brings to nothing.
int32_t count_collapsing(const Wavefront& w, double time);

/// Moves the vertices by `time` and buries those whose edge has shrunk to nothing.
void collapse_edges(Wavefront& w, double time);

/// Moves the vertices by `time` and buries those whose edge has shrunk to nothing, but for one where all have.
void end_at_ridge(Wavefront& w, double time);

/// Whether the corner at place i, a hairpin that was the last to be buried, is the tip of a limb whose sides have met,
/// and no speck.
bool is_tip_of_limb(const Wavefront& w, int32_t i);

/// Whether the smaller of the two pieces that `vertex` makes by running into `edge` is more than a speck.
bool is_piece(const Wavefront& w, int32_t vertex, int32_t edge, bool catch_up, Findings& found);

/// Buries the smaller of the two pieces that `vertex` makes by running into `edge`. The end of the edge outlives it in
/// either case: it is not the vertex itself. With `catch_up` a real piece is not dropped for a speck.
void drop_smaller_piece(Wavefront& w, int32_t vertex, int32_t edge, bool catch_up, Findings& found);

} // namespace korvale::border
