#pragma once

#include "../platform/export.h"
#include "status.h"

/// Moves `points` towards the preserved shape, in place, by exactly `iterations` steps of steepest descent.
///
/// A step goes along the force by a distance as large as the energy. While the energy has not fallen below its value
/// before the step, the step is halved, at most 20 times; the last trial is kept whatever its energy. Tagged points do
/// not move. Points already in shape (an energy of exactly 0.0) stay as they are, and so do all points for fewer than
/// one iteration; the measures and the energy are refreshed nevertheless. The array stays referenced by the status as
/// `cur_points`. Nothing is allocated.
///
/// Returns 1, or -1, with nothing changed, for a null status or an array that is not points, has another count than the
/// reference points or lacks its buffer.
///
/// Deliberate: without force the step is infinite, or 0 / 0, and all coordinates become NaN, those of tagged points
/// included. There is energy without force when all points that could lower it are tagged, and when volume or area
/// alone is off by less than 1e-06, as the rounding of a rigid move leaves it. There is neither when an energy falls to
/// exactly 0.0 before the last iteration; one iteration a call stops there.
KORVALE_API int PreserveCompute(PreserveStatus* status, DATAstruct* points, int iterations);

/// Evaluates energy and force at `points` and copies the force, [points][3] doubles, to `force_out`, which is shaped as
/// needed. The array `points` stays referenced by the status as `cur_points`. Nothing is allocated where `force_out`
/// fits.
///
/// Returns 1, also when `force_out` is null or cannot be allocated, or -1 as `PreserveCompute`.
///
/// Deliberate: the forces of tagged points are not zeroed here.
KORVALE_API int PreserveGetForce(PreserveStatus* status, DATAstruct* points, DATAstruct* force_out);
