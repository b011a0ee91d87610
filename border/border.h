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
/// - two neighbouring points closer than 1.2e-06 merge, and the tip of a spike that turns back on itself is removed,
///   before anything moves.
///
/// With `keep_collapsed` the border has one point per input point and a removed vertex takes the place of the one it
/// merged into; without it the removed vertices are left out, and a single point may remain. A distance of 0 returns
/// the outline, carried to the plane z = 0 and back. Lengths are absolute: scale outlines so that 1e-06 is negligible.
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
/// another vertex lies on the bisector of its first proper corner, within about 0.15 of that corner: the outline may be
/// turned over then. The output and the eight work arrays keep their capacity from call to call; a null output is
/// replaced by a new record. The output may be the path itself; one that wraps memory of the host gets a buffer of its
/// own. Afterwards the work arrays show how every input vertex ended; `flat` holds the points of the border in the
/// plane z = 0 and has their count.
///
/// An outline of which nothing is left is no failure: its points then lie upon each other, and fewer than three entries
/// of `dead` are 0.
///
/// Returns 1, or -1 for a null record, a path that is null, empty, not of doubles or not 3 wide, a distance that is not
/// finite, a null work array or an exhausted heap; points of the output are not written then.
KORVALE_API int BORDER_BORDER(BORDERStatus* status);

/// Makes `status->output` the border of an outline, or of every outline of a list, lifted by `height`.
///
/// For a path of kind double this is `BORDER_BORDER` followed by a lift of every point by `height` along the normal
/// that `DATA_to_xy_xfms` finds for the path. For a path of kind `DATA_TYPE_DATA` child 0 is the outer outline and the
/// others are holes: the output becomes a list of the same size with one border per child in the same order; children
/// that it already holds are reused, null ones made. Holes are offset by minus `distance`, so that a positive distance
/// grows the outer outline and shrinks the holes. Every child is flattened on its own and offset without regard to the
/// others; all are lifted along the normal of child 0.
///
/// Returns 1, or -1 for a null record or path, a path of another kind, a list without children or without an output
/// record (nothing changes then), an exhausted heap, or where `BORDER_BORDER` fails.
///
/// Deliberate: when an outline of a list fails, or a child is null, the record is left as it stands: `path` and
/// `output` point to that child and its output, and `distance` is negated when it was a hole. Put them back before the
/// record is used again.
KORVALE_API int BORDER(BORDERStatus* status);
