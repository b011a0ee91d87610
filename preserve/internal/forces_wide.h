#pragma once

#include "preserve/internal/forces.h"
#include "preserve/internal/quad.h"

#ifdef KORVALE_HAS_WIDE_LANES

// The forces of all edges or faces, computed for four at a time and added in order.
namespace korvale::inside {

KORVALE_AVX2 void pull_edges_wide(const LengthTerm& term, double* force);
KORVALE_AVX2 void turn_faces_wide(const AngleTerm& term, double* force);
KORVALE_AVX2 void press_faces_wide(const double* p, const Faces& faces, double pressure, double* force);
KORVALE_AVX2 void tighten_faces_wide(const double* p, const Faces& faces, double tension, double* force);

} // namespace korvale::inside

#endif
