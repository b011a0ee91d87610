// Frames along a polyline. The z axis of a frame follows from the point's neighbours alone. The x axis is carried along
// from point to point: what of it runs along the new z axis is taken away. A closed path ends with an x axis that is
// turned against the first; every frame is then turned about its z axis by its share of that angle.
//
// A direction that cannot be normalised because it is too short is the sign of a degenerate place throughout.
#include "path/frames.h"

#include <cmath>
#include <cstring>

#include "data/internal/buffers.h"
#include "math/internal/mat.h"
#include "math/internal/vec.h"

namespace korvale::inside {
namespace {

/// Turns against the first frame down to this sine count as positive.
constexpr double kBackwardSine = -1e-06;

/// A polyline of two points or more, borrowed.
struct Polyline {
    const double* points; // [3 n]
    int n;
    bool closed;

    const double* point(int i) const { return points + 3 * static_cast<int64_t>(i); }
    const double* last() const { return point(n - 1); }
};

/// The axes of a frame; y is z x x.
struct Axes {
    double x[3];
    double z[3];
};

inline void set3(double x, double y, double z, double* out)
{
    out[0] = x;
    out[1] = y;
    out[2] = z;
}

inline void set4(double x, double y, double z, double w, double* out)
{
    set3(x, y, z, out);
    out[3] = w;
}

/// The direction from one point to another, of length 1 unless it is too short for that.
inline void unit_direction(const double* from, const double* to, double* out)
{
    subtract(to, from, out);
    make_unit(out);
}

/// The z axis between the direction that arrives and the one that leaves, not normalised.
inline void bisect(const double* leaving, const double* arriving, double* z)
{
    set3(-leaving[0] - arriving[0], -leaving[1] - arriving[1], -leaving[2] - arriving[2], z);
}

/// Takes away what of `x` runs along `z`. False, with `x` shortened only, when nothing is left.
inline bool make_perpendicular(double* x, const double* z)
{
    const double along = dot(x, z);
    set3(x[0] - along * z[0], x[1] - along * z[1], x[2] - along * z[2], x);
    return make_unit(x);
}

inline void write_frame(const Axes& axes, const double* point, Xfm& frame)
{
    double y[3];
    cross(axes.z, axes.x, y);
    set4(axes.x[0], y[0], axes.z[0], point[0], frame[0]);
    set4(axes.x[1], y[1], axes.z[1], point[1], frame[1]);
    set4(axes.x[2], y[2], axes.z[2], point[2], frame[2]);
    set4(0.0, 0.0, 0.0, 1.0, frame[3]);
}

/// Where the start has no direction, the steps of the path are added up until there is one.
void find_first_z(const Polyline& path, double* z)
{
    if (make_unit(z))
        return;
    for (int k = 1; k <= path.n - 2; ++k) {
        double step[3];
        subtract(path.point(k + 1), path.point(k), step);
        subtract(z, step, z);
        if (make_unit(z))
            return;
    }
    set3(0.0, 0.0, 1.0, z);
}

/// Where the path starts straight, the first bend gives the x axis; a path without one takes the normal of its first
/// step in the xy plane. `leaving` is that step.
void find_first_x(const Polyline& path, const double* leaving, double* x)
{
    if (make_unit(x))
        return;
    double step[3], step_before[3];
    copy3(leaving, step);
    for (int k = 1; k <= path.n - 2; ++k) {
        copy3(step, step_before);
        subtract(path.point(k + 1), path.point(k), step);
        cross(step, step_before, x);
        if (make_unit(x))
            return;
    }
    const double* const p0 = path.point(0);
    const double* const p1 = path.point(1);
    set3(p0[1] - p1[1], p1[0] - p0[0], 0.0, x);
    if (!make_unit(x))
        set3(1.0, 0.0, 0.0, x);
}

Axes first_axes(const Polyline& path)
{
    Axes axes;
    double leaving[3], arriving[3] = {0.0, 0.0, 0.0};
    subtract(path.point(1), path.point(0), leaving);
    set3(-leaving[0], -leaving[1], -leaving[2], axes.z);
    make_unit(axes.z);
    if (path.closed) {
        unit_direction(path.last(), path.point(0), arriving);
        subtract(axes.z, arriving, axes.z);
    }
    cross(leaving, arriving, axes.x);

    find_first_z(path, axes.z); // Deliberate: an open path's z is normalised twice
    find_first_x(path, leaving, axes.x);
    if (!make_perpendicular(axes.x, axes.z)) {
        set3(-axes.z[1], axes.z[0], 0.0, axes.x);
        if (!make_unit(axes.x))
            set3(1.0, 0.0, 0.0, axes.x);
    }
    return axes;
}

/// Carries the axes of the frame before on to a frame whose z axis runs along `z`.
inline void carry_on(Axes& axes, double* z)
{
    if (!make_unit(z))
        copy3(axes.z, z);
    double x[3];
    copy3(axes.x, x);
    if (!make_perpendicular(x, z))
        return;
    copy3(x, axes.x);
    copy3(z, axes.z);
}

/// A row of a matrix in lanes.
typedef double Row __attribute__((vector_size(4 * sizeof(double))));

/// frame = frame * turn, the full product, so that signed zeros and points that are not finite come out the same. Each
/// lane sums its column from the left.
inline void turn_about_z(double c, double s, Xfm& frame)
{
    const Row turn[4] = {{c, -s, 0.0, 0.0}, {s, c, 0.0, 0.0}, {0.0, 0.0, 1.0, 0.0}, {0.0, 0.0, 0.0, 1.0}};
    for (auto& row : frame) {
        const Row product = row[0] * turn[0] + row[1] * turn[1] + row[2] * turn[2] + row[3] * turn[3];
        std::memcpy(row, &product, sizeof product);
    }
}

/// Turns frame i about its z axis by i / n of the angle between the last x axis and the first.
///
/// Deliberate: a cosine beyond 1 is not clamped, so the angle and with it the turned axes are NaN.
void spread_twist(const Axes& first, const Axes& last, double full_turn, int n, Xfm* frames)
{
    double axis[3];
    const double cosine = dot(last.x, first.x);
    cross(last.x, first.x, axis);
    const double sine = dot(axis, first.z);
    const double angle = sine > kBackwardSine ? std::acos(cosine) : full_turn - std::acos(cosine);
    const double share = angle / static_cast<double>(n);
    const double cos_share = std::cos(share), sin_share = std::sin(share);

    double c = 1.0, s = 0.0;
    for (int i = 1; i < n; ++i) {
        const double next_c = cos_share * c - sin_share * s;
        s = s * cos_share + c * sin_share;
        c = next_c;
        turn_about_z(c, s, frames[i]);
    }
}

void find_frames(const Polyline& path, double full_turn, Xfm* frames)
{
    const Axes first = first_axes(path);
    write_frame(first, path.point(0), frames[0]);

    // The direction that leaves a point is the one that arrives at the next.
    Axes axes = first;
    double leaving[3], arriving[3], z[3];
    unit_direction(path.point(0), path.point(1), leaving);
    for (int i = 1; i < path.n - 1; ++i) {
        copy3(leaving, arriving);
        unit_direction(path.point(i), path.point(i + 1), leaving);
        bisect(leaving, arriving, z);
        carry_on(axes, z);
        write_frame(axes, path.point(i), frames[i]);
    }
    if (path.closed) {
        copy3(leaving, arriving);
        unit_direction(path.last(), path.point(0), leaving);
        bisect(leaving, arriving, z);
    } else {
        subtract(path.point(path.n - 2), path.last(), z);
    }
    carry_on(axes, z);
    write_frame(axes, path.last(), frames[path.n - 1]);

    if (path.closed)
        spread_twist(first, axes, full_turn, path.n, frames);
}

/// Whether the record is of points at all.
template <class Array>
bool is_path(const Array* path)
{
    return path != nullptr && path->count >= 1 && path->dim == 3;
}

template <class Array>
void frames_along(const Array& path, bool closed, double full_turn, Xfm* frames)
{
    if (frames == nullptr)
        return;
    if (path.count == 1) {
        set_identity(frames[0]);
        return;
    }
    if (holds(path, DATA_TYPE_DOUBLE, components(path.count, path.dim)))
        find_frames({path.dvals, path.count, closed}, full_turn, frames);
}

constexpr double kFullTurnData = 6.2831852; // Deliberate: short
constexpr double kFullTurnDATA = 6.283185307179586;

} // namespace
} // namespace korvale::inside

using namespace korvale::inside;

// path2xfm looks at count and dim only and closes loops with the short full turn;
// PATH2xfm also wants doubles and uses the full-precision turn. Nothing else differs.

void path2xfm(Data* path, int closed, Xfm* frames)
{
    if (is_path(path))
        frames_along(*path, closed != 0, kFullTurnData, frames);
}

void PATH2xfm(DATAstruct* path, int closed, Xfm* frames)
{
    if (is_path(path) && path->type == DATA_TYPE_DOUBLE)
        frames_along(*path, closed != 0, kFullTurnDATA, frames);
}
