#pragma once

#include "../platform/export.h"
#include "status.h"

/// @file
/// The lengths of edges: their reference, their energy and the force that lowers it.

/// Measures every edge at the reference points into `olen`. `PreservePreserve` calls this.
///
/// `olen` and `nlen` are made when they are missing, and enlarged when there are more edges than they were made for.
///
/// Returns 1, or -1 with the term switched off when there are no positions to measure, no edges or no memory.
KORVALE_API int PreserveInitOlen(PreserveStatus* status);

/// Measures every edge into `nlen` and adds the energy of those with an untagged end to `energy`.
///
/// Returns 1, or -1 for a null status. A term without its arrays is skipped, see `PreserveFindEnergy`.
KORVALE_API int PreserveFindNlen(PreserveStatus* status);

/// Adds the pull of every edge to the `force` of both its points. An edge of exactly its reference length, or shorter
/// than 1e-06, has none.
///
/// Returns 1, or -1 for a null status. A term without its arrays is skipped, see `PreserveFindForce`.
KORVALE_API int PreserveFindEdgeLengthForce(PreserveStatus* status);
