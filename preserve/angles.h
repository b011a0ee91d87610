#pragma once

#include "../platform/export.h"
#include "status.h"

/// @file
/// The angles at the corners of faces, as cosines: their reference, their energy and the force that lowers it.

/// Measures the cosine of every corner at the reference points into `ofang`. `PreservePreserve` calls this.
///
/// `ofang` and `nfang` are made when they are missing, and enlarged when there are more corners than they were made
/// for. A corner with a neighbour at its own place has the cosine 0.0.
///
/// Returns 1, or -1 with the term switched off when there are no positions to measure, no face sizes, no face points or
/// no memory.
KORVALE_API int PreserveInitOfang(PreserveStatus* status);

/// Measures the cosine of every corner into `nfang` and adds the energy of those with an untagged point among the
/// corner and its two neighbours to `energy`. A corner with a neighbour at its own place has the cosine 0.0 and no
/// energy.
///
/// Returns 1, or -1 for a null status. A term without its arrays is skipped, see `PreserveFindEnergy`.
KORVALE_API int PreserveFindNfang(PreserveStatus* status);

/// Adds the three forces of every corner to `force`. A corner of exactly its reference cosine, or with a neighbour at
/// its own place, has none.
///
/// Returns 1, or -1 for a null status. A term without its arrays is skipped, see `PreserveFindForce`.
KORVALE_API int PreserveFindFaceAngleForce(PreserveStatus* status);
