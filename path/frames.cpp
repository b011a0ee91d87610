// Frames along a polyline. The z axis of a frame follows from the point's neighbours alone. The x axis is carried along
// from point to point: what of it runs along the new z axis is taken away. A closed path ends with an x axis that is
// turned against the first; every frame is then turned about its z axis by its share of that angle.
//
// Only the x axis depends on the frame before. So the z axes of a batch of points are found first, in lanes. A vector
// too short to be normalised marks a degenerate place throughout.
//
// The steps one point at a time: tests/reference/frames.cpp.
#include "path/frames.h"

#include <algorithm>
#include <cmath>

#include "data/internal/buffers.h"
#include "math/internal/matrix.h"
#include "math/internal/vector.h"
#include "platform/internal/lanes3.h"

namespace korvale::path {
namespace {

/// Turns against the first frame down to this sine count as positive.
constexpr double kBackwardSine = -1e-06;

/// A polyline of two points or more, borrowed.
struct Polyline {
    const double* points; ///< [n][3]
    int n;
    bool closed;

    const double* point(int64_t i) const { return points + 3 * i; }
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

/// Projects `x` onto the plane across `z` and normalises it. False, with `x` projected only, when it is too short then.
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

/// Carries the axes on to a frame with the unit z axis `z`. Both stay as they are when x runs along z.
inline void carry_on(Axes& axes, const double* z)
{
    double x[3];
    copy3(axes.x, x);
    if (!make_perpendicular(x, z))
        return;
    copy3(x, axes.x);
    copy3(z, axes.z);
}

/// The z axes of a batch of consecutive points, in columns.
struct Batch {
    static constexpr int kMost = 64; ///< points, whose columns take 3.6 KB. Chosen

    double step[3][kMost + 1]; ///< the direction from the point before the first, from the first, and so on
    double z[3][kMost];        ///< unit z axes
    double size[kMost];        ///< their lengths before they were normalised
};

/// Divides by `size`, the length of `v`, unless that is too short.
template <class V>
KORVALE_OVER_LANES Lanes3<V> unit_of(const Lanes3<V>& v, const V& size)
{
    const auto is_short = size < all<V>(kShortestVector);
    const Lanes3<V> unit = v / size;
    return {select(is_short, v.x, unit.x), select(is_short, v.y, unit.y), select(is_short, v.z, unit.z)};
}

template <class V>
KORVALE_OVER_LANES void store_columns(double* x, double* y, double* z, const Lanes3<V>& v)
{
    store(x, v.x);
    store(y, v.y);
    store(z, v.z);
}

/// Finds the z axes of `count` inner points from `first` on.
void find_batch(const Polyline& path, int first, int count, Batch& batch)
{
    const double* const before = path.point(first - 1);
    for_lanes(0, count + 1, [before, &batch]<class V>(int i) {
        const Lanes3<V> along = load_points<V>(before + 3 * (i + 1)) - load_points<V>(before + 3 * i);
        store_columns(batch.step[0] + i, batch.step[1] + i, batch.step[2] + i, unit_of(along, root(dot(along, along))));
    });
    for_lanes(0, count, [&batch]<class V>(int i) {
        const Lanes3<V> arriving = {load<V>(batch.step[0] + i), load<V>(batch.step[1] + i), load<V>(batch.step[2] + i)};
        const double *const x = batch.step[0] + 1, *const y = batch.step[1] + 1, *const z = batch.step[2] + 1;
        const Lanes3<V> back = {-load<V>(x + i), -load<V>(y + i), -load<V>(z + i)};
        const Lanes3<V> halving = back - arriving;
        const V size = root(dot(halving, halving));
        store(batch.size + i, size);
        store_columns(batch.z[0] + i, batch.z[1] + i, batch.z[2] + i, unit_of(halving, size));
    });
}

/// Paths of fewer points are walked one by one. `find_batch` loads vectors that lie one value off those just stored:
/// such a load spans two stores, which cannot be forwarded to it. In longer paths the stores have reached the cache by
/// then. Measured.
constexpr int kFewestInLanes = 10;

/// Carries the axes along the inner points and writes their frames. Returns the last ones.
Axes walk(const Polyline& path, Axes axes, Xfm* frames)
{
    Batch batch;
    for (int first = 1; first < path.n - 1; first += Batch::kMost) {
        const int count = std::min(path.n - 1 - first, Batch::kMost);
        find_batch(path, first, count, batch);
        for (int i = 0; i < count; ++i) {
            double z[3] = {batch.z[0][i], batch.z[1][i], batch.z[2][i]};
            if (batch.size[i] < kShortestVector)
                copy3(axes.z, z);
            carry_on(axes, z);
            write_frame(axes, path.point(first + i), frames[first + i]);
        }
    }
    return axes;
}

/// `walk` for a few points, one by one. The direction that leaves a point is the one that arrives at the next.
Axes walk_few(const Polyline& path, Axes axes, Xfm* frames)
{
    double leaving[3], arriving[3], z[3];
    unit_direction(path.point(0), path.point(1), leaving);
    for (int i = 1; i < path.n - 1; ++i) {
        copy3(leaving, arriving);
        unit_direction(path.point(i), path.point(i + 1), leaving);
        bisect(leaving, arriving, z);
        if (!make_unit(z))
            copy3(axes.z, z);
        carry_on(axes, z);
        write_frame(axes, path.point(i), frames[i]);
    }
    return axes;
}

/// The turns of frames 1, 2, ..., each by a share of the angle more than the one before.
struct Shares {
    double cos_share, sin_share;
    double c = 1.0, s = 0.0;

    void next()
    {
        const double next_c = cos_share * c - sin_share * s;
        s = s * cos_share + c * sin_share;
        c = next_c;
    }
};

/// frame i = frame i * turn i for i = 1 ... n - 1. The full product, zeros of the turn included, so that signed zeros
/// and points that are not finite come out as documented. The last row (0, 0, 0, 1) is its own product unless the turn
/// is NaN.
template <class V>
KORVALE_OVER_LANES void turn_frames(Shares shares, int n, Xfm* frames)
{
    const int rows = std::isnan(shares.cos_share) ? 4 : 3;
    for (int i = 1; i < n; ++i) {
        shares.next();
        const double c = shares.c, s = shares.s;
        const Row<V> turn[4] = {row_of<V>(c, -s, 0.0, 0.0), row_of<V>(s, c, 0.0, 0.0), row_of<V>(0.0, 0.0, 1.0, 0.0),
                                row_of<V>(0.0, 0.0, 0.0, 1.0)};
        for (int r = 0; r < rows; ++r)
            store_row(frames[i][r], row_product(frames[i][r], turn));
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
    const Shares shares = {std::cos(share), std::sin(share)};
    over_lanes([&]<class V>() { turn_frames<V>(shares, n, frames); });
}

/// The z axis of the last frame, not normalised.
void find_last_z(const Polyline& path, double* z)
{
    const double* const before = path.point(path.n - 2);
    if (!path.closed) {
        subtract(before, path.last(), z);
        return;
    }
    double leaving[3], arriving[3];
    unit_direction(before, path.last(), arriving);
    unit_direction(path.last(), path.point(0), leaving);
    bisect(leaving, arriving, z);
}

void find_frames(const Polyline& path, double full_turn, Xfm* frames)
{
    const Axes first = first_axes(path);
    write_frame(first, path.point(0), frames[0]);

    Axes axes = path.n < kFewestInLanes ? walk_few(path, first, frames) : walk(path, first, frames);
    double z[3];
    find_last_z(path, z);
    if (!make_unit(z))
        copy3(axes.z, z);
    carry_on(axes, z);
    write_frame(axes, path.last(), frames[path.n - 1]);

    if (path.closed)
        spread_twist(first, axes, full_turn, path.n, frames);
}

/// Whether the record is of points, by its count and dim alone.
template <class Array>
bool has_path_shape(const Array* path)
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

constexpr double kFullTurnData = 6.2831852;         // Deliberate: short
constexpr double kFullTurnDATA = 6.283185307179586; // the double nearest to it

} // namespace
} // namespace korvale::path

using namespace korvale::path;

// path2xfm looks at count and dim only and closes loops with the short full turn;
// PATH2xfm also wants doubles and uses the full-precision turn. Nothing else differs.

void path2xfm(Data* path, int closed, Xfm* frames)
{
    if (has_path_shape(path))
        frames_along(*path, closed != 0, kFullTurnData, frames);
}

void PATH2xfm(DATAstruct* path, int closed, Xfm* frames)
{
    if (has_path_shape(path) && path->type == DATA_TYPE_DOUBLE)
        frames_along(*path, closed != 0, kFullTurnDATA, frames);
}
