#pragma once

#include "preserve/internal/mesh.h"

// The measures of a mesh at positions p [3 points].
namespace korvale {

/// The distance of point a from point b.
double edge_length(const double* p, int32_t a, int32_t b);

/// The cosine of the corner at `point`. False, with the cosine 0.0, where a neighbour is at the same place.
bool corner_cosine(const double* p, int32_t point, int32_t previous, int32_t next, double& cosine);

/// Six times the volume inside a closed mesh, summed as a fan about the first corner of every face.
double volume_measure(const double* p, const Faces& faces);

/// The sum over the corners of a face of each point x the next: twice its area, along its normal.
void area_vector(const double* p, const int32_t* corners, int32_t n, double* out);

/// Twice the area of all faces.
double area_measure(const double* p, const Faces& faces);

} // namespace korvale
