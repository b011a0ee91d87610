#pragma once

#include "../platform/export.h"
#include "data.h"
#include "datastruct.h"

/// Scatters points at random over triangles, uniformly by area.
///
/// `triangles` holds nine doubles an element: the vertices' x y z in turn. `points` is allocated by the caller: its
/// count is the number of points to make, and x, y, z are written to each. Point s is u P0 + v P1 + w P2 of its
/// triangle.
///
/// `vertex_attributes` may be null; else it holds k values for each vertex, triangle 0 vertex 0 first, where 3 k times
/// the number of triangles is its count * dim. They are carried by the same weights to `point_attributes`, allocated by
/// the caller with the count of `points` and dim k. Attributes that do not divide so, or have no place, are ignored.
///
/// The platform's generator is seeded with `seed` on every call and draws three numbers a point (triangle, u, v), so a
/// seed gives the same points again. The whole process shares that generator: the call changes what all others draw
/// next, and while other threads draw or seed, a seed gives other points.
///
/// Nothing happens, and the generator is left alone, when either array is null or has no elements, no buffer or one too
/// small for them, when an element of `triangles` has fewer than nine components or one of `points` fewer than three,
/// and, in `DATATriSample`, when either is not of kind double. More than 16 triangles ask the heap; where it is
/// exhausted the generator is seeded and no point is written. Many points on two triangles or more (16,385 on 16, fewer
/// on more) ask it once again, for a table without which they come out the same. Triangles without area, or with
/// coordinates that are not finite, give points that mean nothing.
KORVALE_API void DataTriSample(Data* triangles, unsigned int seed, Data* points, Data* vertex_attributes,
                               Data* point_attributes);
KORVALE_API void DATATriSample(DATAstruct* triangles, unsigned int seed, DATAstruct* points,
                               DATAstruct* vertex_attributes, DATAstruct* point_attributes);
