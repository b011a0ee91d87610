#pragma once

#include "../platform/export.h"
#include "status.h"

/// The energy of the mesh at `cur_points`, and the force that lowers it.
///
/// The energy of a term is its weight times the squared deviation of every measure from its reference; the force is the
/// negative gradient. Energies come first: the forces use the measures that the energies leave in the status, and mean
/// something only right after an energy evaluation at the same positions.
///
/// All return 1, or -1 for a null status. A term whose arrays are missing or too short for the mesh, or that has no
/// positions to look at, is skipped. Nothing is allocated.

/// Sets `energy` to 0.0 and adds every term that is switched on, in the order length, face angle, volume, area.
KORVALE_API int PreserveFindEnergy(PreserveStatus* status);

/// Measures every edge into `nlen` and adds the energy of those with an untagged end.
KORVALE_API int PreserveFindNlen(PreserveStatus* status);

/// Measures the cosine of every corner into `nfang` and adds the energy of those with an untagged point among the
/// corner and its two neighbours. A corner with a neighbour at its own place has the cosine 0.0 and no energy.
KORVALE_API int PreserveFindNfang(PreserveStatus* status);

/// Measures six times the enclosed volume into `nvolume`, 0.0 without faces, and adds its energy. Tags play no part.
KORVALE_API int PreserveFindNvolume(PreserveStatus* status);

/// Measures twice the surface area into `narea`, 0.0 without faces, and adds its energy. Tags play no part.
KORVALE_API int PreserveFindNarea(PreserveStatus* status);

/// Zeroes `force` and adds every term that is switched on, in the order length, face angle, volume, area. Tags play no
/// part: only `PreserveCompute` holds points fixed.
KORVALE_API int PreserveFindForce(PreserveStatus* status);

/// Adds the pull of every edge to both its points. An edge of exactly its reference length, or shorter than 1e-06, has
/// none.
KORVALE_API int PreserveFindEdgeLengthForce(PreserveStatus* status);

/// Adds the three forces of every corner. A corner of exactly its reference cosine, or with a neighbour at its own
/// place, has none.
KORVALE_API int PreserveFindFaceAngleForce(PreserveStatus* status);

/// Adds the pressure of the volume, unless it is within 1e-06 of its reference.
///
/// Deliberate: every corner of every face follows the rule for triangles, which for larger faces is not the gradient of
/// the measure.
KORVALE_API int PreserveFindVolumeForce(PreserveStatus* status);

/// Adds the tension of the area, unless it is within 1e-06 of its reference. A face with an area vector shorter than
/// 1e-06 pulls with that vector in place of its unit normal.
KORVALE_API int PreserveFindSurfaceAreaForce(PreserveStatus* status);
