#pragma once

#include "../data/data.h"
#include "../data/datastruct.h"
#include "../math/transform.h"
#include "../platform/export.h"

/// One frame for every point of a polyline, for placing a cross-section there.
///
/// `path` holds n points [n][3]; `frames` has room for n matrices, which is not checked. The columns of frame i are its
/// unit x axis, y axis and z axis and the point i itself, so the frame carries the plane z = 0 to the point. The z axis
/// points back along the path and halves the angle at a joint, so that sections meet in mitres. The x axis is carried
/// on from the frame before by projection, so that sections turn as little as possible. `closed` other than 0 joins the
/// last point to the first and spreads the turn left over between the last frame and the first evenly over all frames.
///
/// Where a direction is shorter than 1e-06 the frame takes the axes of the frame before; at the start it looks further
/// along the path and ends at z = (0, 0, 1) and x = (1, 0, 0). A single point gives the identity, without the point.
///
/// Nothing is written for a null argument, fewer than one point, a dim other than 3, or two or more points without a
/// buffer for them; `PATH2xfm` also wants kind double, `path2xfm` does not look at the kind. Nothing is reported.
///
/// Deliberate: the two differ in their full turn, 6.2831852 in `path2xfm` and 6.283185307179586 in `PATH2xfm`. The
/// cosine of the turn left over is not clamped: where rounding makes it exceed 1, as in about two of five planar loops
/// that lie in no coordinate plane, columns 0 and 1 of all frames but the first are NaN, row 3 included. The frames of
/// such a loop are frames 1 to n of the open path P[n-1], P[0] ... P[n-1], P[0].
KORVALE_API void path2xfm(Data* path, int closed, Xfm* frames);
KORVALE_API void PATH2xfm(DATAstruct* path, int closed, Xfm* frames);
