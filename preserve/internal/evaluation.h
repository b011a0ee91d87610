#pragma once

#include <limits>

#include "preserve/internal/mesh.h"

namespace korvale::preserve {

/// The energy of the terms that are on, all measures renewed; or `bound` or more as soon as that is known, with some
/// measures left as they were.
double evaluate(PreserveStatus& s, const Mesh& mesh, double bound = std::numeric_limits<double>::quiet_NaN());

/// The force of the terms that are on, by their latest measures.
void find_force(const PreserveStatus& s, const Mesh& mesh);

} // namespace korvale::preserve
