#pragma once

#include "preserve/internal/mesh.h"

// The measures of a mesh at positions p [3 points].
namespace korvale::inside {

/// The distance of point a from point b.
double edge_length(const double* p, int32_t a, int32_t b);

/// The cosine of the corner at `point`. False, with the cosine 0.0, where a neighbour is at the same place.
bool corner_cosine(const double* p, int32_t point, int32_t previous, int32_t next, double& cosine);

/// The sum over the corners of a face of each point x the next: twice its area, along its normal.
void area_vector(const double* p, const int32_t* corners, int32_t n, double* out);

/// Adds six times the volume of the fan between the origin and a face, which has none below three corners, and twice
/// the face's area.
void add_face_measures(const double* p, const int32_t* corners, int32_t n, double& volume, double& area);

/// The two sums over all faces, in order.
void measure_faces(const double* p, const Faces& faces, double& volume, double& area);

} // namespace korvale::inside
