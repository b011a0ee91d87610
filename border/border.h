#pragma once

#include "../platform/export.h"
#include "status.h"

/// @file
/// Offsetting of closed planar outlines.
///
/// Every edge of the outline moves sideways by `distance` within the outline's plane: to its right in the flattened
/// plane z = 0, so outwards for a positive distance where the outline runs counter-clockwise there. Corners stay sharp:
/// a corner moves by distance / cos(half its turning angle). On the way
///
/// - an edge that shrinks to nothing is removed: its first vertex merges into the next one;
/// - with `split_events`, a vertex that runs into an edge of another part of the outline cuts it in two, and the piece
///   whose bounding box has the smaller area is removed: its vertices merge into the one that ran into the edge;
/// - before each step, two neighbouring points closer than 1.2e-06 merge, and the tip of a spike that turns back on
///   itself is removed.
///
/// With `keep_collapsed` the border has one point per input point and a removed vertex takes the place of the one it
/// merged into; without it the removed vertices are left out, and a single point may remain. A distance of 0 returns
/// the outline, carried to the plane z = 0 and back. Lengths are absolute: scale outlines so that 1e-06 is negligible.
///
/// In arrays that fit, a call allocates nothing once one before it has needed as much working memory, which is kept for
/// the next ones: at most four blocks of at most 4 MiB for all threads together. A point takes 17.1 doubles, and 37.7
/// with `split_events`, so the first call with splits after calls without asks once more. Outlines of more than 30,610
/// points, with splits 13,890, ask the heap at every call. Unloading the library releases the blocks.
///
/// Edges shrinking to nothing cost time in proportion to n at every event, meetings of vertices and edges more, which
/// is why `split_events` can be switched off. Coordinates that are not finite do no harm; the border is then
/// unspecified.

/// Makes `status->output` the border of `status->path`, lifted by `height` along the normal of the flattened plane.
///
/// The outline is flattened by `data_to_xy_xfms`, which looks at the extremes of the outline and may turn it over: a
/// counter-clockwise triangle, for example, comes out clockwise. A positive distance then moves inwards.
/// `BORDER_BORDER` looks which way the outline runs.
///
/// Any previous output is released first, also when the call fails, except where it is `path` itself. The new one is
/// the caller's, to be released with `DataDispose` and `free`.
///
/// Returns 1, or -1 for a null record, a path that is null, empty, not of doubles or not 3 wide, a distance that is not
/// finite, an exhausted heap, or where `data_to_xy_xfms` finds no plane: for three or more points on one line and for
/// outlines less than about 0.001 across. One and two points have a border.
///
/// Deliberate: the eight work arrays of a call, 16 blocks of the heap, stay allocated. Prefer `BORDER_BORDER` in loops.
KORVALE_API int Border(BorderStatus* status);

/// Makes `status->output` the border of `status->path`. `height` is not looked at.
///
/// The outline is flattened by `DATA_to_xy_xfms`, so a positive distance moves outwards whichever way it runs, unless
/// another vertex lies on the bisector of its first proper corner, within about 0.4 of that corner: the outline may be
/// turned over then. The output and the eight work arrays keep their capacity from call to call; a null output is
/// replaced by a new record. The output may be the path itself; one that wraps memory of the host gets a buffer of its
/// own. Afterwards the work arrays show how every input vertex ended; `flat` holds the points of the border in the
/// plane z = 0 and has their count.
///
/// An outline of which nothing is left is no failure. With `split_events` its points then lie upon each other, and
/// fewer than three entries of `dead` are 0; at exactly the distance at which its last edges vanish two places may be
/// left. Without `split_events` three or more vertices may live on: what has gone through itself runs clockwise in
/// `flat` and grows, so look at the signed area as well.
///
/// Returns 1, or -1 for a null record, a path that is null, empty, not of doubles or not 3 wide, a distance that is not
/// finite, a null work array or an exhausted heap. Points of the output are not written then; where the heap had no
/// room for them, the buffer of the output is gone: `dvals` is null, whatever `count` says.
KORVALE_API int BORDER_BORDER(BORDERStatus* status);
