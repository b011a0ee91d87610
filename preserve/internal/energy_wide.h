#pragma once

#include "preserve/internal/energy.h"
#include "preserve/internal/quad.h"

#ifdef KORVALE_HAS_WIDE_LANES

// Four edges or triangles at a time: the same bits as the plain functions of the same names.
namespace korvale::inside {

KORVALE_AVX2 double add_energies_wide(const LengthTerm& term, double energy, const Refusal& refusal);
KORVALE_AVX2 double add_energies_wide(const AngleTerm& term, double energy, const Refusal& refusal);

/// The volume and area measures.
KORVALE_AVX2 void measure_faces_wide(const double* p, const Faces& faces, double& volume, double& area);

} // namespace korvale::inside

#endif
