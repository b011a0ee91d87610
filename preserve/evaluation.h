#pragma once

#include "../platform/export.h"
#include "status.h"

/// @file
/// The energy of the mesh at `cur_points`, and the force that lowers it.
///
/// The energy of a term is its weight times the squared deviation of every measure from its reference; the force is the
/// negative gradient. Energies come first: the forces use the measures that the energies leave in the status, and mean
/// something only right after an energy evaluation at the same positions. The terms one by one: lengths.h, angles.h,
/// volume_area.h.
///
/// A term whose arrays are missing or too short for the mesh, or that has no positions to look at, is skipped. Nothing
/// is allocated.

/// Sets `energy` to 0.0 and adds every term that is switched on, in the order length, face angle, volume, area.
///
/// Returns 1, or -1 for a null status.
KORVALE_API int PreserveFindEnergy(PreserveStatus* status);

/// Zeroes `force` and adds every term that is switched on, in the order length, face angle, volume, area. Tags play no
/// part: only `PreserveCompute` holds points fixed.
///
/// Returns 1, or -1 for a null status.
KORVALE_API int PreserveFindForce(PreserveStatus* status);
