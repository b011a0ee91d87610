// Closed outlines moved sideways: the documented steps of a border, on an outline brought to an ordinary size by a
// power of two. It is laid flat once, where the plain calls do so twice, and without random numbers. What is left is
// looked at before it is brought back to its size, so that what counts as nothing is relative to small outlines too.
#include "door/internal/motion.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "door/internal/sound.h"
#include "door/internal/vectors.h"
#include "path/internal/flatten.h"

namespace korvale::door {
namespace {

/// Twice the area that an outline goes round, or zero where its parts cancel but for rounding.
Point doubled_area(Outline outline)
{
    Point area = {};
    return path::find_doubled_area(outline[0].data(), static_cast<int>(outline.size()), area.data()) ? area : Point{};
}

/// Whether no area is left of an outline: fewer than three points, or all near one line.
bool is_thin(Outline live)
{
    if (live.size() < 3)
        return true;
    Point along = {};
    for (const Point& p : live)
        if (const Point d = minus(p, live[0]); dot(d, d) > dot(along, along))
            along = d;
    const double reach = length(along);
    return reach < border::kHair || std::all_of(live.begin(), live.end(), [&](const Point& p) {
               return length(cross(along, minus(p, live[0]))) < border::kHair * reach;
           });
}

/// A sweep in progress.
struct Course {
    const Telling& telling;
    double distance;

    static bool ask(double remaining, void* user)
    {
        const auto& self = *static_cast<const Course*>(user);
        return self.telling.goes_on(1.0 - remaining / self.distance);
    }
};

/// The points of vertices that are left, side by side.
Outline live_points(Outline border, const uint8_t* dead, size_t vertices, Point* room)
{
    if (border.size() < vertices || std::memchr(dead, 1, vertices) == nullptr)
        return border;
    size_t live = 0;
    for (size_t i = 0; i < vertices; ++i)
        if (dead[i] == 0)
            room[live++] = border[i];
    return {room, live};
}

} // namespace

void Flattening::place(Outline outline, Point* places)
{
    carry(planes.to_plane, scaled(outline, scale, places), places);
}

Flattening lay_flat(Outline outline, const Motion& motion, Point* places)
{
    Flattening flat = {};
    const Extent extent = extent_of(outline);
    flat.scale = scale_for(extent, std::max(std::fabs(motion.distance), std::fabs(motion.height)));
    const Outline work = scaled(outline, flat.scale, places);
    path::flatten_for_sure(work[0].data(), static_cast<int32_t>(work.size()), flat.scale * extent.greatest,
                           flat.planes.to_plane, flat.planes.from_plane, true);
    if (!motion.split)
        flat.area = doubled_area(work);
    carry(flat.planes.to_plane, work, places);
    return flat;
}

void lift(std::span<Point> points, Planes& planes, double height)
{
    carry(planes.to_plane, points, points.data());
    for (Point& p : points)
        p.z += height;
    carry(planes.from_plane, points, points.data());
}

bool is_collapsed(Outline live, const Motion& motion, const Point& area)
{
    return is_thin(live) || (!motion.split && dot(doubled_area(live), area) < 0.0);
}

border::Sweep sweep_in(SweepArrays& arrays, size_t n)
{
    arrays.numbers.make_room(14 * n);
    arrays.dead.make_room(n);
    arrays.merge.make_room(n);
    double* const numbers = arrays.numbers.data();
    return {{static_cast<int32_t>(n), numbers, numbers + 3 * n, numbers + 6 * n, numbers + 9 * n, numbers + 12 * n,
             numbers + 13 * n, arrays.dead.data(), arrays.merge.data()},
            {}};
}

void run_to_end(border::Sweep& sweep, const Telling& telling)
{
    Course course = {telling, sweep.progress.remaining};
    if (telling.progress != nullptr) {
        sweep.request.ask = &Course::ask;
        sweep.request.user = &course;
    }
    if (!border::run_sweep(sweep))
        throw std::bad_alloc();
    if (sweep.found.is_stopped)
        throw Stop();
}

Vector<Place> live_places(const border::Rows& rows)
{
    Vector<Place> places;
    for (int64_t i = 0; i < rows.n; ++i)
        if (rows.dead[i] == 0)
            places.push_back({rows.flat[3 * i], rows.flat[3 * i + 1]});
    return places;
}

void Suspects::see(const border::DroppedPiece& piece)
{
    if (sweep.found.has_missed)
        for_each_vertex(piece, sweep.rows, [&places = pieces.emplace_back()](int32_t, double x, double y) {
            places.push_back({x, y});
        });
}

bool Suspects::are_sound(double before, double distance, const Telling& telling) const
{
    return is_sound(live_places(sweep.rows), before, telling) &&
           std::all_of(pieces.begin(), pieces.end(),
                       [&](const Vector<Place>& piece) { return is_piece_sound(piece, before, distance, telling); });
}

bool Suspects::is_piece_sound(const Vector<Place>& piece, double before, double distance, const Telling& telling)
{
    const bool grows = distance * before > 0.0;
    return is_sound(piece, grows ? area_of(piece) : before, telling);
}

void Mover::move_into(Outline outline, const Motion& motion, BorderOut& output, const Planes* lifted_in)
{
    const size_t n = outline.size();
    border::Sweep sweep = sweep_in(arrays_, n);
    border::Rows& rows = sweep.rows;
    border::Request& request = sweep.request;
    double& remaining = sweep.progress.remaining;
    auto* const places = reinterpret_cast<Point*>(+rows.flat);
    Flattening flat = lay_flat(outline, motion, places);
    const double scale = flat.scale;
    remaining = scale * motion.distance;
    request.split_events = motion.split;
    request.keep_whole = motion.keep_whole;
    Planes lifting = lifted_in == nullptr ? flat.planes : lifted_in->scaled(scale);
    Suspects suspects = {sweep};
    request.drop = &Suspects::drop;
    request.receiver = &suspects;
    run_to_end(sweep, motion.telling);
    const Telling at_end = motion.telling.part(1.0, 0.0);
    const border::Findings& found = sweep.found;
    if (found.has_lost || (found.has_missed && !suspects.are_sound(kCounterClockwise, motion.distance, at_end))) {
        const auto run_again = [&](bool catch_up) {
            flat.place(outline, places);
            remaining = scale * motion.distance;
            request.catch_up = catch_up;
            run_to_end(sweep, at_end);
        };
        const bool was_nothing = live_places(rows).size() < 3;
        run_again(true);
        if (was_nothing && live_places(rows).size() < 3) // it lies where the plain call leaves it
            run_again(false);
    }
    output.left = motion.keep_whole ? remaining / scale : 0.0;
    output.size = n;
    if (!motion.keep_vertices)
        output.size = static_cast<size_t>(border::pack_live_positions(rows));
    else if (!border::join_dead_vertices(rows))
        throw std::bad_alloc();

    const std::span<Point> border(output.points, output.size);
    carry(flat.planes.from_plane, {places, output.size}, border.data());
    lift(border, lifting, scale * motion.height);
    auto* const room = reinterpret_cast<Point*>(+rows.direction); // free after the sweep
    output.collapsed = is_collapsed(live_points(border, rows.dead, n, room), motion, flat.area);
    scaled(border, 1.0 / scale, border.data());
    if (output.removed != nullptr)
        std::memcpy(output.removed, rows.dead, n);
    if (output.merged_into != nullptr)
        std::memcpy(output.merged_into, rows.merge, n * sizeof *rows.merge);
}

void Mover::move(Outline outline, const Motion& motion, Border& border, const Planes* lifted_in)
{
    if (motion.joins.are_some()) {
        move_with_joins(outline, motion, border, lifted_in);
        return;
    }
    const size_t n = outline.size();
    border.points.make_room(n);
    border.removed.make_room(n);
    border.merged_into.make_room(n);
    BorderOut output = {border.points.data(), border.removed.data(), border.merged_into.data(), 0, false};
    move_into(outline, motion, output, lifted_in);
    border.size = output.size;
    border.vertices = n;
    border.collapsed = output.collapsed;
    border.left = output.left;
}

void Mover::move_with_holes(std::span<const Outline> outlines, const Motion& motion, std::span<Border> borders)
{
    const Planes planes = flatten(outlines[0]);
    Motion of_outline = motion;
    const double share = 1.0 / static_cast<double>(outlines.size());
    size_t before = 0;
    for (size_t k = 0; k < outlines.size(); ++k) {
        of_outline.telling = motion.telling.part(static_cast<double>(k) * share, share);
        of_outline.joins = motion.joins.part(before, outlines[k].size());
        before += outlines[k].size();
        move(outlines[k], of_outline, borders[k], &planes);
        of_outline.distance = -motion.distance;
    }
}

} // namespace korvale::door
