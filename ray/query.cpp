#include "ray/query.h"

#include <cstring>

#include "data/internal/scratch.h"
#include "data/internal/shape.h"
#include "math/internal/mat.h"
#include "math/internal/solve.h"
#include "math/internal/vec.h"
#include "platform/module_start.h"
#include "ray/internal/grid.h"

namespace korvale {
namespace {

/// A ray must come towards a plane by this much per unit of its length to meet it.
constexpr double kLeastApproach = 1e-06;

/// Where the ray meets the plane at `plane` of axis `k`, in the coordinates of axes `a` and `b`.
bool meets_plane(const double* o, const double* d, double plane, int k, int a, int b, double* at_a, double* at_b)
{
    if (plane > o[k] && d[k] < kLeastApproach)
        return false;
    if (o[k] > plane && d[k] > -kLeastApproach)
        return false;
    if (o[k] == plane) {
        *at_a = o[a];
        *at_b = o[b];
        return true;
    }
    const double t = (plane - o[k]) / d[k];
    *at_a = o[a] + t * d[a];
    *at_b = o[b] + t * d[b];
    return true;
}

bool lies_between(double value, double least, double greatest)
{
    return value >= least && value <= greatest;
}

bool meets_face(const double* o, const double* d, double plane, int k, int a, int b, const double* box)
{
    double at_a, at_b;
    return meets_plane(o, d, plane, k, a, b, &at_a, &at_b) && lies_between(at_a, box[a], box[a + 3]) &&
           lies_between(at_b, box[b], box[b + 3]);
}

bool meets_box(const double* o, const double* d, const double* box)
{
    return meets_face(o, d, box[0], 0, 1, 2, box) || meets_face(o, d, box[3], 0, 1, 2, box) ||
           meets_face(o, d, box[1], 1, 0, 2, box) || meets_face(o, d, box[4], 1, 0, 2, box) ||
           meets_face(o, d, box[2], 2, 1, 0, box) || meets_face(o, d, box[5], 2, 1, 0, box);
}

void find_ray_frame(const double* origin, const double* d, double (*m)[4])
{
    set_identity(m);
    const double up[3] = {0, 0, 1};
    double a[3];
    cross(d, up, a);
    if (make_unit(a)) {
        double b[3];
        cross(d, a, b);
        copy3(a, m[0]);
        copy3(b, m[1]);
        copy3(d, m[2]);
    } else if (d[2] < 0) {
        m[1][1] = -1;
        m[2][2] = -1;
    }
    double q[3];
    carry_point(m, origin, q);
    for (int i = 0; i < 3; ++i)
        m[i][3] = -q[i];
}

/// Whether coordinate `k` of the point lies outside the triangle's range, on the upper side.
bool lies_above(const double* p, const double* t, int k)
{
    return p[k] > t[k] && p[k] > t[k + 3] && p[k] > t[k + 6];
}

bool lies_below(const double* p, const double* t, int k)
{
    return p[k] < t[k] && p[k] < t[k + 3] && p[k] < t[k + 6];
}

bool meets_triangle(const double* p, const double* t, double* z)
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

/// One query.
struct Cast {
    Xfm frame;               // into the frame of the ray
    const double* triangles; // [9 count]
    int32_t count;
    uint8_t* marks; // [count] 1 once tested
    int hits;
    double nearest; // meaningful once there are hits
};

void test_triangle(Cast& cast, int32_t t)
{
    if (t < 0 || t >= cast.count || cast.marks[t] != 0)
        return;
    cast.marks[t] = 1;
    const double start[3] = {0, 0, 0};
    double seen[9], z;
    for (int v = 0; v < 9; v += 3)
        carry_point(cast.frame, cast.triangles + 9 * static_cast<int64_t>(t) + v, seen + v);
    if (!meets_triangle(start, seen, &z))
        return;
    if (cast.hits == 0 || z < cast.nearest)
        cast.nearest = z;
    ++cast.hits;
}

void test_cell(Cast& cast, const data_list_struct& cell)
{
    for (const data_list_struct* node = cell.next; node != nullptr; node = node->next)
        for (int32_t i = 0; i < node->count; ++i)
            test_triangle(cast, node->ivals[i]);
}

} // namespace
} // namespace korvale

int ray_intersect(double* origin, double* direction, RayStatus* s, double* distance)
{
    if (origin == nullptr || direction == nullptr || s == nullptr || s->triangles == nullptr || s->triangles->count < 1)
        return 0;
    const Data& triangles = *s->triangles;
    Data& marks = s->tri_marks;
    if (korvale::holds(marks, DATA_TYPE_BYTE, 1))
        std::memset(marks.bvals, 0, static_cast<size_t>(korvale::elements(marks.count, marks.dim)));
    double d[3];
    korvale::copy3(direction, d);
    if (!korvale::make_unit(d) || s->cells == nullptr || triangles.type != DATA_TYPE_DOUBLE ||
        triangles.dvals == nullptr)
        return 0;

    // A record whose marks do not cover the triangles does without its own.
    const bool has_marks = korvale::holds(marks, DATA_TYPE_BYTE, triangles.count);
    korvale::Scratch<uint8_t> own_marks(has_marks ? 0 : triangles.count);
    if (!has_marks) {
        if (!own_marks.exists())
            return 0;
        std::memset(own_marks.get(), 0, static_cast<size_t>(triangles.count));
    }

    korvale::Cast cast;
    korvale::find_ray_frame(origin, d, cast.frame);
    cast.triangles = triangles.dvals;
    cast.count = triangles.count;
    cast.marks = has_marks ? marks.bvals : own_marks.get();
    cast.hits = 0;
    cast.nearest = 0;
    const int32_t cells = korvale::cells_made(*s);
    for (int32_t c = 0; c < cells; ++c)
        if (korvale::meets_box(origin, d, s->cells[c].dvals))
            korvale::test_cell(cast, s->cells[c]);
    if (cast.hits > 0 && distance != nullptr)
        *distance = cast.nearest;
    return cast.hits;
}

void ray_compute_xfm(double* origin, double* direction, Xfm m)
{
    korvale::find_ray_frame(origin, direction, m);
}

int ray_int_bbox(double* origin, double* direction, double* box)
{
    return korvale::meets_box(origin, direction, box) ? 1 : 0;
}

int ray_int_x_plane(double* origin, double* direction, double plane, double* y, double* z)
{
    return korvale::meets_plane(origin, direction, plane, 0, 1, 2, y, z) ? 1 : 0;
}

int ray_int_y_plane(double* origin, double* direction, double plane, double* x, double* z)
{
    return korvale::meets_plane(origin, direction, plane, 1, 0, 2, x, z) ? 1 : 0;
}

int ray_int_z_plane(double* origin, double* direction, double plane, double* x, double* y)
{
    return korvale::meets_plane(origin, direction, plane, 2, 0, 1, x, y) ? 1 : 0;
}

int z_intersect(double* point, double* triangle, double* z)
{
    return korvale::meets_triangle(point, triangle, z) ? 1 : 0;
}
