#pragma once

#include "platform/internal/namespaces.h"

namespace korvale::math {

/// The rotation Rz (Ry Rx) by radians[3].
void rotation_from_radians(const double* radians, double (*out)[4]);

/// The rotation Rz (Ry Rx) by degrees[3], converted with the short factor 0.0174533.
void rotation_from_degrees(const double* degrees, double (*out)[4]);

} // namespace korvale::math
