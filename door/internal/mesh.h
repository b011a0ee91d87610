#pragma once

#include "door/internal/triangulate.h"

/// Triangles on shared points.
struct korvale_mesh {
    korvale::door::Vector<korvale::door::Point> points;
    korvale::door::Vector<korvale::door::Triangle> triangles;
    korvale::door::Vector<double> reached; ///< the distance of each layer of a bevel
};

namespace korvale::door {

/// Points of a mesh. Each has three coordinates and up to two triangles of three corners: an int32_t counts them all.
constexpr int64_t kMostMeshPoints = std::numeric_limits<int32_t>::max() / 9;

/// Joins two rings of `n` points by a strip. Seen from outside, the first runs to the right below the second, or to the
/// left where the strip is `turned`.
void add_strip(korvale_mesh& mesh, int32_t first, int32_t second, int32_t n, bool turned);

/// Makes points at exactly one place one, and drops the triangles that lose their area by it and unused points.
void weld(korvale_mesh& mesh);

/// Turns triangles around that face inwards.
void turn_outwards(korvale_mesh& mesh);

} // namespace korvale::door
