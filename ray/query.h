#pragma once

#include "../math/transform.h"
#include "../platform/export.h"
#include "grid.h"

/// Counts the triangles that the ray from origin[3] along direction[3] meets, and finds the nearest.
///
/// `direction` need not be of unit length; one shorter than 1e-06 meets nothing. One beyond about 1.3e154, whose length
/// comes out infinite, becomes zero: it meets nothing, unless the origin lies exactly in a face of a cell, whose
/// triangles are then looked for along +z. Only triangles in front of the origin count, a meeting at distance 0
/// included, each once however many cells list it; those seen edge-on (less than 1e-06 of twice their area shows) never
/// do. The vertices are read as they are now.
///
/// The number nodes of the cells, too, are read as they stand, and a cell without a box (an emptied one) is not met.
/// Nodes that are no number nodes and numbers of triangles that do not exist are passed over. In an array that the
/// library has made every cell with a box is met where the library made it, whatever box that is. The cells of an array
/// that a host has put there itself are met where their boxes stand, nx * ny * nz of them.
///
/// Returns the number of triangles met. `distance` receives the distance to the nearest from `origin` when there is one
/// and is untouched otherwise. Before classification there is none to meet. A triangle or a ray that is not finite may
/// count as met at a distance that is not a number; when it is the first one met, `distance` keeps that. It may not lie
/// in `origin`, `direction` or anything that `s` leads to.
///
/// Afterwards the marks of `s` are 1 for each triangle tested and 0 for the rest; they are all 0 where they are fewer
/// than the triangles. They stay as they are where the triangle array has a count below 1, and where there is none.
///
/// Deliberate: in an array that the library has made, neither a box that is moved by hand nor one that an emptied cell
/// is given anew is followed; the cell stays where it was.
KORVALE_API int ray_intersect(double* origin, double* direction, RayStatus* s, double* distance);

/// Makes `m` the transform into the frame of a ray: origin[3] comes to (0, 0, 0), direction[3], which has to be of unit
/// length, to +z.
///
/// A direction within 1e-06 of the z axis is taken to lie on it, and the frame is then turned by nothing, or by half a
/// turn about x when it points down. Nothing happens where one of the three is null.
KORVALE_API void ray_compute_xfm(double* origin, double* direction, Xfm m);

/// Whether the ray from origin[3] along direction[3] meets a face of box[6] (xmin, ymin, zmin, xmax, ymax, zmax); the
/// rim of a face counts. Returns 1 or 0; 0 where one of the three is null.
///
/// Deliberate: a face that the ray nearly runs along, by less than 1e-06 per unit, is met only when the origin lies
/// exactly in its plane.
KORVALE_API int ray_int_bbox(double* origin, double* direction, double* box);

/// Where the ray from origin[3] along direction[3] meets the plane x = `plane`: its y to `y` and z to `z`. The other
/// two do the same for the planes y = `plane` and z = `plane`.
///
/// Returns 1, or 0 with nothing written when the plane lies behind the ray or the ray comes towards it by less than
/// 1e-06 per unit, or where a pointer is null. An origin exactly in the plane meets it there, whatever the direction.
KORVALE_API int ray_int_x_plane(double* origin, double* direction, double plane, double* y, double* z);
KORVALE_API int ray_int_y_plane(double* origin, double* direction, double plane, double* x, double* z);
KORVALE_API int ray_int_z_plane(double* origin, double* direction, double plane, double* x, double* y);

/// Whether the ray from point[3] along +z meets triangle[9]. Returns 1 when it does at a `z` not below the point's,
/// else 0.
///
/// `z` receives the height of the meeting, also where that lies below the point; it is untouched when there is none,
/// and when all three vertices lie below the point. A triangle whose determinant in the x-y plane (twice its area) is
/// below 1e-06 is not met, and nothing is where one of the three is null.
///
/// Deliberate: coordinates that are not numbers pass every test that looks at them. The triangle counts as met unless
/// its other coordinates rule that out.
KORVALE_API int z_intersect(double* point, double* triangle, double* z);
