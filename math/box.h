#pragma once

#include "../platform/export.h"

/// Whether two axis-aligned boxes, each xmin, ymin, zmin, xmax, ymax, zmax, share a point; touching counts. A bound
/// that is not a number separates nothing.
KORVALE_API bool bbox_intersect(double* box1, double* box2);
