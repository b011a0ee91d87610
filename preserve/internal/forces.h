#pragma once

#include "preserve/internal/energy.h"

// The forces of the terms. Each point's force is a sum in order, term after term, edge after edge, corner after corner.
namespace korvale::inside {

/// An edge shorter than this has no direction to pull in.
constexpr double kShortestEdge = 1e-06;

/// Adds the forces of an edge on its two points, `stretch` times the way from the other one.
inline void pull_ends(const double* p, const int32_t* ends, double stretch, double* force)
{
    const double *const a = p + 3 * int64_t{ends[0]}, *const b = p + 3 * int64_t{ends[1]};
    double *const fa = force + 3 * int64_t{ends[0]}, *const fb = force + 3 * int64_t{ends[1]};
    const double x = stretch * (a[0] - b[0]), y = stretch * (a[1] - b[1]), z = stretch * (a[2] - b[2]);
    fa[0] -= x;
    fa[1] -= y;
    fa[2] -= z;
    const double back_x = stretch * (b[0] - a[0]), back_y = stretch * (b[1] - a[1]), back_z = stretch * (b[2] - a[2]);
    fb[0] -= back_x;
    fb[1] -= back_y;
    fb[2] -= back_z;
}

/// Adds the forces of edge e on its points.
void pull_edge(const LengthTerm& term, int32_t e, double* force);

/// Adds the forces of the corners of face f, whose first corner is `first`.
void turn_face(const AngleTerm& term, int32_t f, int32_t first, double* force);

/// Adds the forces of one face by its part in the volume, the deviation of which is in `pressure`.
void press_face(const double* p, const int32_t* corners, int32_t n, double pressure, double* force);

/// Adds the forces of one face by its part in the area, the deviation of which is in `tension`.
void tighten_face(const double* p, const int32_t* corners, int32_t n, double tension, double* force);

} // namespace korvale::inside
