#pragma once

#include "../platform/export.h"

/// Lines in the xy plane: three doubles a, b, c for a x + b y + c = 0.

/// The line through p0 and p1, with (a, b) the unit direction from p0 to p1 turned a quarter turn counter-clockwise. z
/// is not read.
///
/// Returns 1, or -1 with the vertical line (1, 0, -p0.x) when the points are closer than 1e-06.
KORVALE_API int find_line(double* p0, double* p1, double* line);

/// Divides a, b and c by the length of (a, b).
///
/// Deliberate: a length of 0 is not caught.
KORVALE_API void line_normalize(double* line);

/// Where two lines meet, with z = 0.
///
/// Returns the sine of the angle from line1 to line2, or -1.0 with `out` untouched when its size is below 1e-06. Lines
/// that meet at a right angle can return -1.0 as well.
///
/// Deliberate: both lines are normalised in place.
KORVALE_API double find_intersect(double* line1, double* line2, double* out);
