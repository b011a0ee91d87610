#pragma once

#include "platform/internal/lanes3.h"
#include "preserve/internal/mesh.h"
#include "preserve/internal/terms.h"

// Volume and area as sums over the faces, in the order of the faces. Any walk over all faces may add them on its way.
namespace korvale::preserve {

struct Measures {
    double volume = 0.0, area = 0.0;
};

/// The corners of triangles, one triangle per lane.
template <class V>
struct Triangles {
    Lanes3<V> p0, p1, p2;
};

template <class V>
KORVALE_OVER_LANES Triangles<V> triangles_at(const double* p, const int32_t* corners)
{
    return {points_at<V>(p, corners, 3), points_at<V>(p, corners + 1, 3), points_at<V>(p, corners + 2, 3)};
}

/// Measures triangles in lanes, and adds the measures one after the other.
template <class V>
KORVALE_OVER_LANES void add_triangles(const Triangles<V>& t, Measures& sums)
{
    constexpr int n = width_of<V>;
    const Lanes3<V> far = cross(t.p1, t.p2), normal = cross(t.p0, t.p1) + far + cross(t.p2, t.p0);
    double volumes[n], areas[n];
    store(volumes, dot(t.p0, far));
    store(areas, root(dot(normal, normal)));
    sums = {with_all<n>(sums.volume, volumes), with_all<n>(sums.area, areas)};
}

/// Adds the measures of face f, whose first corner is `first`.
void add_measures_of(const double* p, const Faces& faces, int32_t f, int32_t first, Measures& sums);

/// Notes the measures, and their energies in `ceiling`, as far as they are among its terms.
void note_measures(PreserveStatus& s, const Measures& measures, Ceiling& ceiling);

/// Measures volume and area as far as they are among the terms of `ceiling`, in one walk, and notes them. Nothing is
/// noted where neither is, or there are faces but no positions.
void measure_volume_and_area(PreserveStatus& s, const Mesh& mesh, Ceiling& ceiling);

} // namespace korvale::preserve
