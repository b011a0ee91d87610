#pragma once

#include "../platform/export.h"
#include "status.h"

/// @file
/// Borders of outlines with holes, lifted off their plane.

/// Makes `status->output` the border of an outline, or of every outline of a list, lifted by `height`.
///
/// For a path of kind double this is `BORDER_BORDER` followed by a lift of every point by `height` along the normal
/// that `DATA_to_xy_xfms` finds for the path. For a path of kind `DATA_TYPE_DATA` child 0 is the outer outline and the
/// others are holes: the output becomes a list of the same size with one border per child in the same order. While it
/// has slots enough, the borders in them are used again; null ones are made. Holes are offset by minus `distance`, so
/// that a positive distance grows the outer outline and shrinks the holes. Every child is flattened on its own and
/// offset without regard to the others; all are lifted along the normal of child 0.
///
/// Returns 1, or -1 for a null record or path, a path of another kind, a list without children or without an output
/// record (nothing changes then), an exhausted heap, or where `BORDER_BORDER` fails.
///
/// Deliberate: an output list that has to grow gets new slots, and one that becomes a single outline none. The borders
/// in the old ones are the caller's to release then; `DATADispose(output)` before the call releases them all.
///
/// Deliberate: when an outline of a list fails, or a child is null, the record is left as it stands: `path` and
/// `output` point to that child and its output, and `distance` is negated when it was a hole. Where the slot of that
/// child was null, `output` is in no slot, and yours to release. Put them back before the record is used again.
KORVALE_API int BORDER(BORDERStatus* status);
