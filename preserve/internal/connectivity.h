#pragma once

#include "preserve/status.h"

// Who is next to whom: edges from faces, and the edges and faces at each point.
namespace korvale::inside {

/// A new array of `count` elements of `dim` ints from the heap. Without memory it lacks its buffer, or is null.
DATAstruct* new_ints(int32_t count, int32_t dim);

/// Whether every size and index that the connectivity is made from stays inside the arrays, and the arrays made from
/// them inside 31 bits. `face_sizes` and `face_points` are both there or not looked at.
bool is_sound_mesh(const DATAstruct& points, const DATAstruct* edges, const DATAstruct* face_sizes,
                   const DATAstruct* face_points);

/// Where each face starts in the face point list.
DATAstruct* new_starts(const DATAstruct& face_sizes);

/// One edge for every pair of neighbouring corners, in order of first appearance, the smaller index first.
/// Null without memory.
DATAstruct* new_edges(const DATAstruct& face_sizes, const DATAstruct& face_points);

/// Groups the edges and faces of `s` by point: makes the four `point_` arrays.
void group_by_point(PreserveStatus& s);

} // namespace korvale::inside
