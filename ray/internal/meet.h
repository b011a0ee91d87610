#pragma once

#include "math/internal/solve.h"

// Where a ray meets planes and triangles.
namespace korvale::ray {

/// A ray must come towards a plane by this much per unit of its length to meet it.
constexpr double kLeastApproach = 1e-06;

/// The other two axes of each axis.
constexpr int kAcross[3][2] = {{1, 2}, {0, 2}, {0, 1}};

/// The plane across an axis where that is at `at`.
struct AxisPlane {
    int axis;
    double at;
};

/// Where a ray meets such a plane, in the coordinates of the other two axes.
struct Meeting {
    double a, b;
};

/// Whether the ray meets the plane, and where: nothing is written when it does not.
inline bool meets_plane(const double* o, const double* d, const AxisPlane& plane, Meeting& meeting)
{
    const int k = plane.axis, a = kAcross[k][0], b = kAcross[k][1];
    if (plane.at > o[k] && d[k] < kLeastApproach)
        return false;
    if (o[k] > plane.at && d[k] > -kLeastApproach)
        return false;
    if (o[k] == plane.at) {
        meeting = {o[a], o[b]};
        return true;
    }
    const double t = (plane.at - o[k]) / d[k];
    meeting = {o[a] + t * d[a], o[b] + t * d[b]};
    return true;
}

/// False for NaN.
inline bool lies_between(double value, double least, double greatest)
{
    return value >= least && value <= greatest;
}

/// Whether the ray meets a face of a box, which lies in that plane.
inline bool meets_face(const double* o, const double* d, const AxisPlane& plane, const double* box)
{
    const int a = kAcross[plane.axis][0], b = kAcross[plane.axis][1];
    Meeting at;
    return meets_plane(o, d, plane, at) && lies_between(at.a, box[a], box[a + 3]) &&
           lies_between(at.b, box[b], box[b + 3]);
}

inline bool meets_box(const double* o, const double* d, const double* box)
{
    for (int k = 0; k < 3; ++k)
        if (meets_face(o, d, {k, box[k]}, box) || meets_face(o, d, {k, box[k + 3]}, box))
            return true;
    return false;
}

/// Whether coordinate `k` of the point lies above those of all vertices.
inline bool lies_above(const double* p, const double* t, int k)
{
    return p[k] > t[k] && p[k] > t[k + 3] && p[k] > t[k + 6];
}

inline bool lies_below(const double* p, const double* t, int k)
{
    return p[k] < t[k] && p[k] < t[k + 3] && p[k] < t[k + 6];
}

/// Whether the ray from `p` along +z meets triangle t[9], and at which height.
inline bool meets_triangle(const double* p, const double* t, double* z)
{
    if (lies_above(p, t, 0) || lies_below(p, t, 0) || lies_above(p, t, 1) || lies_below(p, t, 1) || lies_above(p, t, 2))
        return false;
    const double *p0 = t, *p1 = t + 3, *p2 = t + 6;
    const double system[2][3] = {{p0[0] - p2[0], p1[0] - p2[0], p[0] - p2[0]},
                                 {p0[1] - p2[1], p1[1] - p2[1], p[1] - p2[1]}};
    double w0, w1;
    if (!solve_two_by_two(system, &w0, &w1))
        return false;
    if (w0 < 0 || w1 < 0 || w0 + w1 > 1) // Deliberate: weights that are not numbers pass
        return false;
    *z = w1 * (p1[2] - p2[2]) + w0 * (p0[2] - p2[2]) + p2[2];
    return !(*z < p[2]);
}

} // namespace korvale::ray
