// Planes of outlines and frames along paths, through flattening and frames of the library. What is added is that no
// random number is drawn, and that points of any size are brought to an ordinary one first, by a power of two: turns
// stay the same to the bit then, and only translations have to be brought back.
#include "door/internal/planes.h"

#include <algorithm>
#include <cmath>

#include "data/data.h"
#include "data/internal/kernels.h"
#include "data/operations.h"
#include "path/frames.h"
#include "path/internal/flatten.h"

namespace korvale::door {
namespace {

/// Points whose reach has an exponent of two from this on are large ...
constexpr int kLarge = 24;
/// ... and no number gets an exponent beyond this.
constexpr int kLargestExponent = 1000;

/// False where the points lie on one line.
bool flatten_by_extremes(std::span<const Point> points, bool closed, Planes& planes)
{
    Data path;
    DataInitialize(&path);
    path.count = static_cast<int32_t>(points.size());
    path.dim = 3;
    path.dvals = record_over(points).dvals;
    return path::flatten(&path, planes.to_plane, planes.from_plane, closed) == 1;
}

struct Frame {
    Xfm m;
};

/// A planar loop has a turn left over that is nothing but rounding and can be no number. Its frames are those of an
/// open path that runs once around then, from the last point over all points to the first. The room for these comes
/// first, so that nothing is written where there is none.
void find_frames_of_loop(std::span<const Point> path, Xfm* frames)
{
    const size_t n = path.size();
    Block<Point> around;
    Block<Frame> open;
    around.make_room(n + 2);
    open.make_room(n + 2);

    DATAstruct record = record_over(path);
    PATH2xfm(&record, 1, frames);
    if (!is_nan(frames[1][0][0]))
        return;
    Point* const turn = around.data();
    turn[0] = path.back();
    std::copy(path.begin(), path.end(), turn + 1);
    turn[n + 1] = path.front();
    record = record_over({turn, n + 2});
    PATH2xfm(&record, 0, &open.data()->m);
    std::memcpy(frames, open.data() + 1, n * sizeof *frames);
}

} // namespace

Extent extent_of(std::span<const Point> points)
{
    double box[6];
    data::find_bounds(points[0].data(), static_cast<int64_t>(points.size()), 3, box);
    Extent extent = {0.0, 0.0};
    for (int k = 0; k < 3; ++k) {
        extent.half = std::max(extent.half, 0.5 * box[k + 3] - 0.5 * box[k]);
        extent.greatest = std::max({extent.greatest, std::fabs(box[k]), std::fabs(box[k + 3])});
    }
    return extent;
}

double scale_for(const Extent& extent, double distance)
{
    const double half = extent.half;
    if (half >= 0.5 && half < 0x1p23)
        return 1.0;
    if (half == 0.0)
        return 1.0;
    const int exponent = std::ilogb(half) + 1;
    const int wanted = exponent < 0 ? -exponent : kLarge - 1 - exponent;
    const int most = kLargestExponent - (distance == 0.0 ? 0 : std::ilogb(distance));
    return std::ldexp(1.0, wanted < most ? wanted : most);
}

std::span<const Point> scaled(std::span<const Point> points, double scale, Point* room)
{
    if (scale == 1.0)
        return points;
    for (size_t i = 0; i < points.size(); ++i)
        room[i] = {points[i].x * scale, points[i].y * scale, points[i].z * scale};
    return {room, points.size()};
}

std::span<const Point> scaled(std::span<const Point> points, double scale, Vector<Point>& room)
{
    if (scale != 1.0)
        room.resize(points.size());
    return scaled(points, scale, room.data());
}

void carry(Xfm& xfm, std::span<const Point> from, Point* to)
{
    DATAstruct source = record_over(from), output = record_over({to, from.size()});
    TransformDATA(xfm, &source, &output);
}

Planes Planes::scaled(double scale) const
{
    Planes result = *this;
    for (int r = 0; r < 3; ++r) {
        result.to_plane[r][3] *= scale;
        result.from_plane[r][3] *= scale;
    }
    return result;
}

Planes flatten(std::span<const Point> points, bool closed)
{
    Planes planes;
    Vector<Point> room;
    const Extent extent = extent_of(points);
    const double scale = scale_for(extent);
    const std::span<const Point> work = scaled(points, scale, room);
    path::flatten_for_sure(work[0].data(), static_cast<int>(work.size()), scale * extent.greatest, planes.to_plane,
                           planes.from_plane, closed);
    return planes.scaled(1.0 / scale);
}

void find_frames(std::span<const Point> path, bool closed, Xfm* frames)
{
    Vector<Point> room;
    const std::span<const Point> work = scaled(path, scale_for(path), room);
    if (closed) {
        find_frames_of_loop(work, frames);
    } else {
        DATAstruct record = record_over(work);
        PATH2xfm(&record, 0, frames);
    }
    if (work.data() == path.data())
        return;
    for (size_t i = 0; i < path.size(); ++i)
        for (int r = 0; r < 3; ++r)
            frames[i][r][3] = path[i][r];
}

} // namespace korvale::door

using namespace korvale::door;

void korvale_flatten_defaults(korvale_flatten_options* options, size_t size)
{
    give_defaults(options, size, korvale_flatten_options{sizeof *options, 0, 0, 0});
}

korvale_status korvale_flatten(const korvale_points* path, const korvale_flatten_options* options, double* to_plane,
                               double* from_plane, korvale_error* error)
{
    return answer(error, "korvale_flatten", [&] {
        const korvale_flatten_options how = options_of(options, korvale_flatten_defaults);
        const PointsIn in(path, "path");
        require_points(in, "path", 1);
        Planes planes;
        if (how.by_extremes == 0) {
            planes = flatten(in, how.open == 0);
        } else {
            Vector<Point> room;
            const double scale = scale_for(in.points());
            if (!flatten_by_extremes(scaled(in.points(), scale, room), how.open == 0, planes))
                throw Refusal("path", "span a plane", "its points lie on one line or too close together");
            planes = planes.scaled(1.0 / scale);
        }
        if (to_plane != nullptr)
            std::memcpy(to_plane, planes.to_plane, sizeof planes.to_plane);
        if (from_plane != nullptr)
            std::memcpy(from_plane, planes.from_plane, sizeof planes.from_plane);
    });
}

korvale_status korvale_frames(const korvale_points* path, int32_t closed, double* frames, korvale_error* error)
{
    return answer(error, "korvale_frames", [&] {
        const PointsIn in(path, "path");
        require_points(in, "path", 2);
        require(frames, "frames");
        find_frames(in.points(), closed != 0, reinterpret_cast<Xfm*>(frames));
    });
}
