#pragma once

#include "../platform/export.h"
#include "status.h"

/// @file
/// The enclosed volume and the surface area: their reference, their energy and the force that lowers it. Tags play no
/// part in either.

/// Measures six times the enclosed volume, or twice the surface area, at the reference points into `ovolume` or
/// `oarea`. `PreservePreserve` calls these.
///
/// The volume is that of a closed, consistently oriented mesh, summed face by face as a fan about the first corner,
/// seen from the origin; a face of fewer than three corners has none.
///
/// Both return 1, or -1 with the term switched off when there are no positions to measure, no face sizes or no face
/// points.
KORVALE_API int PreserveInitOvolume(PreserveStatus* status);
KORVALE_API int PreserveInitOarea(PreserveStatus* status);

/// Measures six times the enclosed volume into `nvolume`, 0.0 without faces, and adds its energy to `energy`.
///
/// Returns 1, or -1 for a null status. Nothing happens without positions, see `PreserveFindEnergy`.
KORVALE_API int PreserveFindNvolume(PreserveStatus* status);

/// Measures twice the surface area into `narea`, 0.0 without faces, and adds its energy to `energy`.
///
/// Returns 1, or -1 for a null status. Nothing happens without positions, see `PreserveFindEnergy`.
KORVALE_API int PreserveFindNarea(PreserveStatus* status);

/// Adds the pressure of the volume to `force`, unless it is within 1e-06 of its reference.
///
/// Returns 1, or -1 for a null status. Nothing happens without positions, see `PreserveFindForce`.
///
/// Deliberate: every corner of every face follows the rule for triangles, which for larger faces is not the gradient of
/// the measure.
KORVALE_API int PreserveFindVolumeForce(PreserveStatus* status);

/// Adds the tension of the area to `force`, unless it is within 1e-06 of its reference. A face with an area vector
/// shorter than 1e-06 pulls with that vector in place of its unit normal.
///
/// Returns 1, or -1 for a null status. Nothing happens without positions, see `PreserveFindForce`.
KORVALE_API int PreserveFindSurfaceAreaForce(PreserveStatus* status);
