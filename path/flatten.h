#pragma once

#include "../data/data.h"
#include "../data/datastruct.h"
#include "../math/transform.h"
#include "../platform/export.h"

/// Transforms between an outline's own plane and the plane z = 0.
///
/// `path` holds points: doubles [n][3]. `xfm` becomes the transform that lays them into the plane z = 0 and `reverse`,
/// unless it is null, the one that carries that plane back. `closed` selects how the plane is found: 0 treats the path
/// as an open polyline, anything else as a closed outline. Both matrices start as the identity and stay so for a null
/// path, an empty one, one without a buffer, and one that is not of doubles or not 3 wide. A single point is only moved
/// along z: xfm[2][3] is minus its z, reverse[2][3] its z.
///
/// The points are read only. Lengths below 1e-06 have no direction here, and sideways distances below 1e-06 are not
/// told from zero, so work in units in which an outline is about 1 or larger.

/// Flattens by the first three points (`closed` 0) or by the extremes of the outline; the plane's normal points to
/// whichever side the points suggest.
///
/// - Two points: a turn about y by atan2(z, y) of their direction, and a move along z only. Deliberate: the angle is
///   taken from y although it is applied about y, and `reverse` moves by the z of the first point as it stood.
/// - First three points: the frame at p0 along p1 - p0, provided that one of the two segments is longer than 0.1 and
///   the sine between them is above 0.1; otherwise the extremes are used.
/// - Extremes: the longest axis of the bounds gives the direction from its least to its greatest point; the edges that
///   leave the greatest, leave the least and enter the least are tried in turn as second direction. Deliberate: an edge
///   shorter than 1e-06 that has a normal is taken as well, and leaves identities.
///
/// Returns 1, also for the identities above, or -1 for a null `xfm`, for more than 2^31 - 1 coordinates, and when the
/// extremes find no plane: the points lie on one line, or the extent of the outline times the length of those edges is
/// below 1e-06, as in a square of side 0.0009 or a circle of radius 0.01 with 10,000 points.
KORVALE_API int data_to_xy_xfms(Data* path, Xfm xfm, Xfm reverse, int closed);

/// Flattens so that a closed outline runs counter-clockwise in the plane z = 0.
///
/// - Closed: the frame at the first proper corner along its outgoing edge. Whether the corner is convex or reflex is
///   found by counting how often a ray from it crosses the outline; where the ray's line runs through another vertex it
///   is turned a little by random numbers of `Mwrand`, three each time; what other threads draw or seed meanwhile
///   changes which. An outline without a proper corner is treated as open.
/// - Open: the frame at p0 towards the first point apart from it, in the plane of the first point off that line.
/// - All points on one line: a turn about y by atan2(z, x) of its direction that also moves p0 to the origin.
/// - All points within 1e-06 of the first: as a single point.
///
/// Deliberate: after 101 attempts the normal is negated unseen, which is right at a reflex corner and turns the outline
/// over at a convex one. A vertex on the bisector of the first proper corner and within about 0.4 of it may use them
/// up, as the numbers drawn decide; a very near one does. A counter-clockwise square of side 0.01 that starts at its
/// least corner comes out clockwise, and so does a large outline that starts with such a step.
KORVALE_API void DATA_to_xy_xfms(DATAstruct* path, Xfm xfm, Xfm reverse, int closed);
