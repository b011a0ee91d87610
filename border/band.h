#pragma once

#include "../platform/export.h"
#include "status.h"

/// @file
/// The border of an open polyline and the band between the two: `BORDERAddWings`, `BORDER` with `keep_collapsed` and
/// without `split_events`, `BORDERRemoveWings`, `BORDERMakePipe`, in this order. The wings take the edge that closes
/// the outline beyond the ends of the polyline, so that it does not disturb the offset there. Arrays are of doubles
/// [n][3].
///
/// A positive distance moves away from the inside of the outline that polyline and closing edge make, so away from the
/// closing edge where both ends lie on one side of the polyline. With `split_events` half of a band is lost where the
/// closing edge crosses the polyline. A straight polyline collapses to one point, and no call fails: entry i + 1 of
/// `dead` tells whether point i of the polyline has merged into another. `docs/border.md` has an example.

/// Extends `path` by one point at each end, as far beyond the end point as its neighbour is before it.
///
/// The path grows by 2 points; its buffer may move. Nothing happens for a null record or path, a path of another kind
/// or dim, fewer than 2 points, a missing buffer, one that is memory of the host (`alloc_count` or `alloc_dim` below 1:
/// it cannot grow), or an exhausted heap.
KORVALE_API void BORDERAddWings(BORDERStatus* status);

/// Takes the first and the last point off `path` and `output` again, by moving the others down; both counts drop by 2
/// and no buffer changes.
///
/// How many points are moved comes from the count of `path` alone, so `output` must have as many, as it has after a
/// sweep with `keep_collapsed`. In arrays too short for that the points they have are moved. Nothing happens for a null
/// record, path or output, or a path that is not of doubles.
KORVALE_API void BORDERRemoveWings(BORDERStatus* status);

/// Appends the points of `path` in reverse order to `output`, so that both together form one closed outline.
///
/// The output grows by the count of the path; its kind is not checked. Where either is not an array of doubles [n][3]
/// the points appended are unspecified. Nothing happens for a null record, path or output, an output whose buffer is
/// memory of the host (`alloc_count` or `alloc_dim` below 1: it cannot grow), more than 2^31 - 1 elements, or when the
/// heap is exhausted.
KORVALE_API void BORDERMakePipe(BORDERStatus* status);
