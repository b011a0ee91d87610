// A query moves the ray to the z axis, finds the cells it meets and tests their triangles: cells by their numbers,
// triangles by their places in the chain, each once, as its mark tells. The order is part of the result: a distance
// that is not a number stays when it comes first.
//
// In the library's own cells the planes between them lead to the cells met. Every cell is tried where that is no way:
// among cells of a host, in a grid whose planes are not in order, and where a ray meets more cells than there is room
// for.
#include "ray/query.h"

#include <cstring>

#include "data/internal/buffers.h"
#include "math/internal/matrix.h"
#include "math/internal/vector.h"
#include "platform/internal/scratch.h"
#include "ray/internal/cast.h"
#include "ray/internal/cells.h"
#include "ray/internal/cells_met.h"
#include "ray/internal/meet.h"

namespace korvale::ray {
namespace {

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

/// Clears the marks, and hides the latency of two prefetches behind that: of the first node of each cell that is met,
/// and then of its numbers.
void clear_and_fetch(Cast& cast, const data_list_struct* cells, const int32_t* met, int32_t count)
{
    const size_t half = cast.marks_held / 2;
    for (int32_t i = 0; i < count; ++i)
        __builtin_prefetch(cells[met[i]].next);
    std::memset(cast.marks, 0, half);
    for (int32_t i = 0; i < count; ++i)
        __builtin_prefetch(cells[met[i]].next->ivals);
    std::memset(cast.marks + half, 0, cast.marks_held - half);
}

/// Takes all triangles of the cells that the ray meets, in the order of the cells.
void take_cells(Cast& cast, const double* o, const double* d, const Cells& cells)
{
    int32_t met[kMostCellsMet];
    const bool has_order = cells.grid != nullptr && cells.grid->in_order;
    const int32_t count = has_order ? find_cells_met(o, d, cells, met) : -1;
    if (count >= 0) {
        clear_and_fetch(cast, cells.first, met, count);
        for (int32_t i = 0; i < count; ++i)
            take_cell(cast, cells.first[met[i]]);
        return;
    }
    clear_and_fetch(cast, nullptr, nullptr, 0);
    const auto take_if_met = [&](int32_t c, const double* box) {
        if (can_be_met(cells.first[c]) && meets_box(o, d, box))
            take_cell(cast, cells.first[c]);
    };
    if (cells.grid != nullptr)
        cells.grid->for_each_cell(take_if_met);
    else
        for (int32_t c = 0; c < cells.count; ++c)
            take_if_met(c, cells.first[c].dvals);
}

/// What the three plane tests do.
int find_meeting(const double* o, const double* d, const AxisPlane& plane, double* a, double* b)
{
    Meeting meeting;
    if (o == nullptr || d == nullptr || a == nullptr || b == nullptr || !meets_plane(o, d, plane, meeting))
        return 0;
    *a = meeting.a;
    *b = meeting.b;
    return 1;
}

} // namespace
} // namespace korvale::ray

using namespace korvale::ray;

int ray_intersect(double* origin, double* direction, RayStatus* s, double* distance)
{
    if (origin == nullptr || direction == nullptr || s == nullptr || s->triangles == nullptr || s->triangles->count < 1)
        return 0;
    const Data& triangles = *s->triangles;
    Data& marks = s->tri_marks;
    const int64_t marks_claimed = components(marks.count, marks.dim);
    const size_t marks_held =
        marks_claimed > 0 && holds(marks, DATA_TYPE_BYTE, marks_claimed) ? static_cast<size_t>(marks_claimed) : 0;
    const bool has_marks = marks_held >= static_cast<size_t>(triangles.count);
    double d[3];
    copy3(direction, d);
    const bool can_meet =
        make_unit(d) && s->cells != nullptr && triangles.type == DATA_TYPE_DOUBLE && triangles.dvals != nullptr;
    if ((!can_meet || !has_marks) && marks_held > 0)
        std::memset(marks.bvals, 0, marks_held);
    if (!can_meet)
        return 0;

    // Marks of this call alone, for a record whose own do not cover the triangles.
    Scratch<uint8_t> spare_marks(has_marks ? 0 : triangles.count);
    if (!spare_marks.exists())
        return 0;

    Cast cast;
    find_ray_frame(origin, d, cast.frame);
    cast.triangles = triangles.dvals;
    cast.count = triangles.count;
    cast.marks = has_marks ? marks.bvals : spare_marks.get();
    cast.marks_held = has_marks ? marks_held : static_cast<size_t>(triangles.count);
    cast.hits = 0;
    cast.nearest = 0;
    cast.waiting = 0;
    take_cells(cast, origin, d, cells_of(*s));
    test_waiting(cast);
    if (cast.hits > 0 && distance != nullptr)
        *distance = cast.nearest;
    return cast.hits;
}

void ray_compute_xfm(double* origin, double* direction, Xfm m)
{
    if (origin != nullptr && direction != nullptr && m != nullptr)
        find_ray_frame(origin, direction, m);
}

int ray_int_bbox(double* origin, double* direction, double* box)
{
    return origin != nullptr && direction != nullptr && box != nullptr && meets_box(origin, direction, box) ? 1 : 0;
}

int ray_int_x_plane(double* origin, double* direction, double plane, double* y, double* z)
{
    return find_meeting(origin, direction, {0, plane}, y, z);
}

int ray_int_y_plane(double* origin, double* direction, double plane, double* x, double* z)
{
    return find_meeting(origin, direction, {1, plane}, x, z);
}

int ray_int_z_plane(double* origin, double* direction, double plane, double* x, double* y)
{
    return find_meeting(origin, direction, {2, plane}, x, y);
}

int z_intersect(double* point, double* triangle, double* z)
{
    return point != nullptr && triangle != nullptr && z != nullptr && meets_triangle(point, triangle, z) ? 1 : 0;
}
