#pragma once

#include "preserve/internal/mesh.h"

// Adjacency: edges from faces, and the edges and faces at each point. An array is made whole or not at all.
namespace korvale::preserve {

/// A new array from the heap, or null. One of 0 elements has no buffer.
DATAstruct* new_list(int32_t type, int32_t count, int32_t dim);

/// Disposes and frees an array, or null, and forgets it.
void release(DATAstruct*& d);

/// Whether every size and index that the connectivity is made from stays inside the arrays, and the arrays made from
/// them inside 31 bits. `face_sizes` and `face_points` are both given or both ignored.
bool is_sound_mesh(const DATAstruct& points, const DATAstruct* edges, const DATAstruct* face_sizes,
                   const DATAstruct* face_points);

/// Where each face starts in the face point list. Null without memory.
DATAstruct* new_starts(const Faces& faces);

/// One edge for every pair of neighbouring corners, in order of first appearance, the smaller index first; null without
/// memory. At most as many are listed as the face point list is long, and the face that reaches that number is the last
/// one examined. False where faces that share corners have more edges.
bool find_edges(const Faces& faces, DATAstruct*& edges);

/// Groups the edges and faces of `s` by point: makes the four `point_` arrays.
void group_by_point(PreserveStatus& s);

} // namespace korvale::preserve
