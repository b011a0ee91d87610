#pragma once

#include "math/transform.h"

namespace korvale::reference {

/// The frames along points[n][3], n of 1 or more, every direction made anew and every turn a full matrix product.
void frames_along(const double* points, int n, bool closed, double full_turn, Xfm* frames);

} // namespace korvale::reference
