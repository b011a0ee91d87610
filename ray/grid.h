#pragma once

#include <cstdint>

#include "../data/data.h"
#include "../platform/export.h"

/// Triangles sorted into a regular grid of cells, so that a ray (`ray_intersect`) is tested against the few near it.
///
/// Calling order: `ray_initialize`; set nx, ny, nz if 4 each do not suit; `ray_set_triangles`; `ray_classify`; any
/// number of queries; `ray_declassify` before other triangles are classified and before the record is discarded. After
/// the last `ray_declassify`, `DataDispose(&s.bbox)` releases what is left; the triangle array stays the caller's.
///
/// Beside the record the library keeps the planes between the cells, nx + ny + nz + 3 numbers, until the cells are
/// released, or it is unloaded. A query on a record with marks for all triangles takes no memory.
struct RayStatus {
    Data* triangles; ///< [triangles][9], borrowed: three vertices x, y, z each; null until set
    Data bbox;       ///< [1][6], owned: xmin, ymin, zmin, xmax, ymax, zmax of all vertices
    Data tri_marks;  ///< [triangles] bytes, owned: which triangles the last query tested
    /// [nx * ny * nz], owned, from the C heap; null until classified. Cell (ix, iy, iz) is number (ix * ny + iy) * nz +
    /// iz. Its first node holds its box [1][6]. The nodes that follow hold triangle numbers, ascending along the chain:
    /// `DATA_TYPE_INT`, dim 1, room for 100 and 1 to 100 in use. See `ray_intersect` for what a host may change.
    ///
    /// An array that the library has made is known by its address, whatever stands in it, until `ray_classify`,
    /// `ray_make_sub_bbox` or `ray_declassify` releases it. Only these three may: never pass it to `free` or `realloc`.
    data_list_struct* cells;
    int32_t nx; ///< cells along x; 4 by default
    int32_t ny; ///< cells along y; 4 by default
    int32_t nz; ///< cells along z; 4 by default
};

/// Makes `s` a record without triangles and cells, with a 4 x 4 x 4 grid and a box of zeros. Releases nothing.
///
/// Returns 1, or -1 for a null record or when the heap is exhausted: the box then has no buffer and nothing can be
/// classified.
KORVALE_API int ray_initialize(RayStatus* s);

/// Makes `triangles` the array to cast rays at and gives every triangle its mark.
///
/// The array stays the caller's and must outlive its use. Its vertices are read by `ray_classify` and again by every
/// query. Marks held before are released; an array without triangles leaves them.
KORVALE_API void ray_set_triangles(Data* triangles, RayStatus* s);

/// Measures the box around all triangles, divides it into nx * ny * nz cells and lists every triangle in each cell that
/// its own box, widened by 1e-06 around vertex 0, touches. An array of cells that the library made before is released;
/// one of a host stays with it.
///
/// The triangle array is left with dim 9 whatever it had before; its count alone says how many triangles it holds, and
/// `dvals` must hold 9 values for each: 12 points as [12][3] are 4 triangles and need count 4. An array without a
/// buffer leaves no cells, one with count below 1 leaves empty cells in the box as it stands. Nothing happens while no
/// array is set. When the heap is exhausted `cells` is null.
KORVALE_API void ray_classify(RayStatus* s);

/// Divides `bbox` into empty cells, after raising each of nx, ny and nz below 1 to 1. `ray_classify` calls it.
///
/// An array of cells that the library made before is released; one of a host stays with it. `cells` is null afterwards
/// when more than 2^31 - 1 cells are wanted, the heap is exhausted or the box has no buffer.
KORVALE_API void ray_make_sub_bbox(RayStatus* s);

/// Lists triangle number `triangle` at the end of cell number `cell`: in the last node, if that holds less than 100
/// numbers, else in a new one. The first node of a cell takes none. An emptied cell keeps the number, too.
///
/// Nothing happens for a cell that does not exist, or when the heap is exhausted.
KORVALE_API void ray_add_tri_to_bbox(RayStatus* s, int triangle, int cell);

/// Releases the cells, a host's own array included, and the marks. `bbox` and `triangles` stay as they are.
///
/// Before the same triangles are classified again, `ray_set_triangles` gives them marks; without marks of its own a
/// record takes working memory in each query.
KORVALE_API void ray_declassify(RayStatus* s);
