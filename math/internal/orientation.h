#pragma once

#include "platform/internal/namespaces.h"

namespace korvale::math {

/// What `orientation_xfm_and_reverse` does; `rev` may be null.
int orient(const double* origin, const double* xdir, const double* zdir, double (*fwd)[4], double (*rev)[4]);

} // namespace korvale::math
