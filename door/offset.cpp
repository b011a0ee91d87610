// Closed outlines moved sideways: the documented steps of a border, on an outline brought to an ordinary size by a
// power of two. It is laid flat once, where the plain calls do so twice, and without random numbers. What is left is
// looked at before it is brought back to its size, so that what counts as nothing is relative to small outlines too.
#include "door/internal/offset.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>

#include "border/internal/sweep.h"
#include "door/internal/sound.h"
#include "door/internal/vectors.h"
#include "path/internal/flatten.h"

namespace korvale::door {
namespace {

/// Twice the area that an outline goes round, along the normal from which it runs counter-clockwise. Zero where its
/// parts cancel but for rounding.
Point doubled_area(Outline outline)
{
    constexpr double kRounding = 1e-12;
    Point sum = {};
    double size = 0.0;
    for (size_t i = 1; i + 1 < outline.size(); ++i) {
        const Point part = cross(minus(outline[i], outline[0]), minus(outline[i + 1], outline[0]));
        sum = plus(sum, 1.0, part);
        size += std::fabs(part.x) + std::fabs(part.y) + std::fabs(part.z);
    }
    return length(sum) > kRounding * size ? sum : Point{};
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
    return reach < border::kHair || std::ranges::all_of(live, [&](const Point& p) {
               return length(cross(along, minus(p, live[0]))) < border::kHair * reach;
           });
}

/// Lifts points along the normal of a plane.
void lift(std::span<Point> points, Planes& planes, double height)
{
    carry(planes.to_plane, points, points.data());
    for (Point& p : points)
        p.z += height;
    carry(planes.from_plane, points, points.data());
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

/// Runs a sweep that tells of its progress; throws where the heap is exhausted or the work has been stopped.
void run(border::Sweep& s, const Telling& telling)
{
    Course course = {telling, s.remaining};
    if (telling.progress != nullptr) {
        s.ask = &Course::ask;
        s.user = &course;
    }
    if (!border::run_sweep(s))
        throw std::bad_alloc();
    if (s.is_stopped)
        throw Stop();
}

/// The sign of the area of an outline that has been laid flat: it runs counter-clockwise.
constexpr double kCounterClockwise = 1.0;

/// Where the vertices of a sweep are that are left.
Vector<Place> live_places(const border::Sweep& s)
{
    Vector<Place> places;
    for (int64_t i = 0; i < s.n; ++i)
        if (s.dead[i] == 0)
            places.push_back({s.flat[3 * i], s.flat[3 * i + 1]});
    return places;
}

/// A sweep of n vertices in these arrays.
border::Sweep sweep_in(Block<double>& numbers, Block<uint8_t>& dead, Block<int32_t>& merge, size_t n)
{
    numbers.make_room(14 * n);
    dead.make_room(n);
    merge.make_room(n);
    border::Sweep s = {};
    s.n = static_cast<int32_t>(n);
    s.flat = numbers.data();
    s.direction = s.flat + 3 * n;
    s.velocity = s.direction + 3 * n;
    s.line = s.velocity + 3 * n;
    s.length = s.line + 3 * n;
    s.rate = s.length + n;
    s.dead = dead.data();
    s.merge = merge.data();
    return s;
}

/// A ring before it is swept: where the vertices are in the plane, in the order of the outline.
struct NewRing {
    int32_t parent;
    double birth;     ///< in the outline's own size
    double remaining; ///< in that of the sweep
    Vector<Point> places;
    Vector<int32_t> sources;
};

/// The area that a ring goes round before it is swept.
double area_of(const NewRing& ring)
{
    if (ring.parent < 0)
        return kCounterClockwise;
    Vector<Place> places;
    for (const Point& p : ring.places)
        places.push_back({p.x, p.y});
    return area_of(places);
}

/// Calls see(i, x, y) for the vertices of a piece, in their order.
template <class See>
void for_each_vertex(const border::DroppedPiece& piece, const border::Sweep& s, See see)
{
    const std::span dropped(piece.dropped, static_cast<size_t>(piece.count));
    const auto behind = std::ranges::upper_bound(dropped, piece.vertex);
    for (auto i = dropped.begin(); i != dropped.end(); ++i) {
        if (i == behind)
            see(piece.vertex, piece.x, piece.y);
        see(*i, s.flat[3 * int64_t{*i}], s.flat[3 * int64_t{*i} + 1]);
    }
    if (behind == dropped.end())
        see(piece.vertex, piece.x, piece.y);
}

/// What a sweep may have made of a ring once a vertex has missed an edge: the pieces that it has dropped since.
struct Suspects {
    const border::Sweep& sweep;
    Vector<Vector<Place>> pieces = {};

    static void drop(const border::DroppedPiece& piece, void* receiver)
    {
        static_cast<Suspects*>(receiver)->see(piece);
    }

    void see(const border::DroppedPiece& piece)
    {
        if (sweep.has_missed)
            for_each_vertex(piece, sweep, [&places = pieces.emplace_back()](int32_t, double x, double y) {
                places.push_back({x, y});
            });
    }

    /// Whether they and what is left can be what has become of a ring that went round the area `before` and
    /// moved by `distance`. One that shrinks falls into parts that run as it does.
    bool are_sound(double before, double distance, const Telling& telling) const
    {
        const bool grows = distance * before > 0.0;
        return is_sound(live_places(sweep), before, telling) &&
               std::ranges::all_of(pieces, [&](const Vector<Place>& piece) {
                   return is_sound(piece, grows ? area_of(piece) : before, telling);
               });
    }
};

/// Keeps what splits drop of a ring that is being swept.
struct Keeper {
    const border::Sweep& sweep;
    const NewRing& ring;
    int32_t number; ///< of the ring
    double distance, scale;
    Vector<NewRing>& rings; ///< added to
    size_t& waiting;        ///< vertices of rings that are not swept yet: added to
    Suspects suspects = {sweep};

    static void drop(const border::DroppedPiece& piece, void* receiver) { static_cast<Keeper*>(receiver)->keep(piece); }

    void keep(const border::DroppedPiece& piece)
    {
        suspects.see(piece);
        if (piece.count < 2)
            return; // an edge there and back
        NewRing made = {number, distance - piece.remaining / scale, piece.remaining, {}, {}};
        const auto n = static_cast<size_t>(piece.count) + 1;
        made.places.reserve(n);
        made.sources.reserve(n);
        for_each_vertex(piece, sweep, [&](int32_t i, double x, double y) {
            made.places.push_back({x, y, sweep.flat[3 * int64_t{i} + 2]});
            made.sources.push_back(ring.sources[static_cast<size_t>(i)]);
        });
        rings.push_back(std::move(made));
        waiting += n;
    }
};

/// How an outline has been laid flat to be swept.
struct Flattening {
    double scale; ///< from its own size to that of the sweep
    Planes planes;
    Point area; ///< twice that of the outline before it moves; only without splits

    /// Writes where the outline lies.
    void place(Outline outline, Point* places) { carry(planes.to_plane, scaled(outline, scale, places), places); }
};

/// Lays an outline flat and writes where it lies.
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

/// Whether nothing is left of an outline. Without splits a part that has shrunk to nothing goes on, inside out.
bool is_collapsed(Outline live, const Motion& motion, const Point& area)
{
    return is_thin(live) || (!motion.split && dot(doubled_area(live), area) < 0.0);
}

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

Motion motion_of(double distance, const korvale_offset_options& options)
{
    require_finite(distance, "distance");
    require_finite(options.height, "options.height");
    return {distance, options.height, options.keep_vertices != 0, options.split != 0, {options.progress, options.user}};
}

void Sweep::move(Outline outline, const Motion& motion, BorderOut& output, const Planes* lifted_in)
{
    const size_t n = outline.size();
    border::Sweep s = sweep_in(numbers_, dead_, merge_, n);
    auto* const places = reinterpret_cast<Point*>(s.flat);
    Flattening flat = lay_flat(outline, motion, places);
    const double scale = flat.scale;
    s.remaining = scale * motion.distance;
    s.split_events = motion.split;
    s.keep_whole = motion.keep_whole;
    Planes lifting = lifted_in == nullptr ? flat.planes : lifted_in->scaled(scale);
    Suspects suspects = {s};
    s.drop = &Suspects::drop;
    s.receiver = &suspects;
    run(s, motion.telling);
    const Telling at_end = motion.telling.part(1.0, 0.0);
    if (s.has_lost || (s.has_missed && !suspects.are_sound(kCounterClockwise, motion.distance, at_end))) {
        const auto run_again = [&](bool catch_up) {
            flat.place(outline, places);
            s.remaining = scale * motion.distance;
            s.catch_up = catch_up;
            run(s, at_end);
        };
        const bool was_nothing = live_places(s).size() < 3;
        run_again(true);
        if (was_nothing && live_places(s).size() < 3) // it lies where the plain call leaves it
            run_again(false);
    }
    output.left = motion.keep_whole ? s.remaining / scale : 0.0;
    output.size = n;
    if (!motion.keep_vertices)
        output.size = static_cast<size_t>(border::pack_live_positions(s));
    else if (!border::join_dead_vertices(s))
        throw std::bad_alloc();

    const std::span<Point> border(output.points, output.size);
    carry(flat.planes.from_plane, {places, output.size}, border.data());
    lift(border, lifting, scale * motion.height);
    auto* const room = reinterpret_cast<Point*>(s.direction); // free after the sweep
    output.collapsed = is_collapsed(live_points(border, s.dead, n, room), motion, flat.area);
    scaled(border, 1.0 / scale, border.data());
    if (output.removed != nullptr)
        std::memcpy(output.removed, s.dead, n);
    if (output.merged_into != nullptr)
        std::memcpy(output.merged_into, s.merge, n * sizeof *s.merge);
}

void Sweep::move(Outline outline, const Motion& motion, Border& border, const Planes* lifted_in)
{
    if (motion.joins.are_some()) {
        move_joined(outline, motion, border, lifted_in);
        return;
    }
    const size_t n = outline.size();
    border.points.make_room(n);
    border.removed.make_room(n);
    border.merged_into.make_room(n);
    BorderOut output = {border.points.data(), border.removed.data(), border.merged_into.data(), 0, false};
    move(outline, motion, output, lifted_in);
    border.size = output.size;
    border.vertices = n;
    border.collapsed = output.collapsed;
    border.left = output.left;
}

void Sweep::move_joined(Outline outline, const Motion& motion, Border& border, const Planes* lifted_in)
{
    const size_t n = outline.size();
    border.removed.make_room(n);
    border.merged_into.make_room(n);
    RingList rings;
    const Trace trace = {border.removed.data(), border.merged_into.data()};
    move(outline, motion, rings, lifted_in, &trace);
    border.size = rings.points.size();
    border.points.make_room(std::max(border.size, n));
    border.sources.make_room(std::max(border.size, n));
    std::ranges::copy(rings.points, border.points.data());
    std::ranges::copy(rings.sources, border.sources.data());
    border.vertices = n;
    border.collapsed = rings.collapsed[0] != 0;
    border.left = 0.0;
}

void Sweep::move(Outline outline, const Motion& motion, RingList& rings, const Planes* lifted_in, const Trace* trace)
{
    const size_t n = outline.size();
    Vector<NewRing> all(1);
    all[0] = {-1, 0.0, 0.0, Vector<Point>(n), {}};
    Flattening flat = lay_flat(outline, motion, all[0].places.data());
    const double scale = flat.scale;
    Planes lifting = lifted_in == nullptr ? flat.planes : lifted_in->scaled(scale);
    const JoinedOutline joined(all[0].places, scale * motion.distance, motion.joins);
    if (!joined.is_sharp()) {
        all[0].places.resize(joined.size());
        for (size_t i = 0; i < joined.size(); ++i)
            all[0].places[i] = joined.place(i);
    }
    all[0].remaining = joined.zoom() * scale * motion.distance;
    all[0].sources.resize(all[0].places.size());
    std::iota(all[0].sources.begin(), all[0].sources.end(), 0);

    double done = 0.0;
    size_t waiting = all[0].places.size();
    rings.starts.push_back(0);
    for (size_t k = 0; k < all.size(); ++k) {
        const NewRing ring = std::move(all[k]);
        const size_t vertices = ring.places.size();
        border::Sweep s = sweep_in(numbers_, dead_, merge_, vertices);
        Keeper keeper = {s, ring, static_cast<int32_t>(k), motion.distance, joined.zoom() * scale, all, waiting};
        const auto sweep = [&](const Telling& telling) {
            std::ranges::copy(ring.places, reinterpret_cast<Point*>(s.flat));
            s.remaining = ring.remaining;
            s.split_events = motion.split;
            s.drop = &Keeper::drop;
            s.receiver = &keeper;
            run(s, telling);
        };
        const double share = (1.0 - done) * static_cast<double>(vertices) / static_cast<double>(waiting);
        waiting -= vertices;
        const size_t known = all.size(), known_waiting = waiting;
        sweep(motion.telling.part(done, share));
        done += share;
        const Telling at_end = motion.telling.part(std::min(done, 1.0), 0.0);
        if (s.has_lost || (s.has_missed && !keeper.suspects.are_sound(area_of(ring), ring.remaining, at_end))) {
            all.resize(known);
            waiting = known_waiting;
            s.catch_up = true;
            sweep(at_end);
        }
        motion.telling.tell(std::min(done, 1.0));

        joined.settle(s, ring.sources);
        if (trace != nullptr)
            joined.follow(s, trace->removed, trace->merged_into);
        Vector<int32_t> sources;
        for (size_t i = 0; i < vertices; ++i)
            if (s.dead[i] == 0)
                sources.push_back(joined.corner(static_cast<size_t>(ring.sources[i])));
        const std::span<Point> live(reinterpret_cast<Point*>(s.flat),
                                    static_cast<size_t>(border::pack_live_positions(s)));
        scaled(live, 1.0 / joined.zoom(), live.data());
        carry(flat.planes.from_plane, live, live.data());
        lift(live, lifting, scale * motion.height);
        const bool collapsed = is_collapsed(live, motion, flat.area);
        scaled(live, 1.0 / scale, live.data());
        if (!collapsed) {
            rings.points.insert(rings.points.end(), live.begin(), live.end());
            rings.sources.insert(rings.sources.end(), sources.begin(), sources.end());
        }
        rings.starts.push_back(static_cast<int64_t>(rings.points.size()));
        rings.parents.push_back(ring.parent);
        rings.births.push_back(ring.birth);
        rings.ends.push_back(motion.distance - s.remaining / (joined.zoom() * scale));
        rings.collapsed.push_back(collapsed);
        if (trace != nullptr)
            return; // without the pieces
    }
}

void Sweep::move(std::span<const Outline> outlines, const Motion& motion, std::span<Border> borders)
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

using namespace korvale::door;

/// The borders of the latest run.
struct korvale_offsetter {
    Sweep sweep;
    Vector<Border> borders;
    size_t count = 0; ///< borders that there are; the others keep their memory
    bool has_sources = false;
};

namespace korvale::door {
namespace {

void require_outline(const PointsIn& outline, std::string_view argument)
{
    require_points(outline, argument, 3);
}

void run(korvale_offsetter& offsetter, std::span<const Outline> outlines, Motion motion, const Joins& joins)
{
    motion.joins = joins;
    offsetter.has_sources = joins.are_some();
    offsetter.count = 0;
    if (offsetter.borders.size() < outlines.size())
        offsetter.borders.resize(outlines.size());
    if (outlines.size() == 1)
        offsetter.sweep.move(outlines[0], motion, offsetter.borders[0]);
    else
        offsetter.sweep.move(outlines, motion, offsetter.borders);
    offsetter.count = outlines.size();
}

/// Border k of an offsetter, or null.
const Border* find_border(const korvale_offsetter* offsetter, int64_t k)
{
    if (offsetter == nullptr || k < 0 || k >= static_cast<int64_t>(offsetter->count))
        return nullptr;
    const Border& border = offsetter->borders[static_cast<size_t>(k)];
    return border.points.data() != nullptr ? &border : nullptr;
}

korvale_border shown(const Border& border)
{
    return {border.points.data()->data(),
            border.removed.data(),
            border.merged_into.data(),
            static_cast<int64_t>(border.size),
            static_cast<int64_t>(border.vertices),
            border.collapsed,
            0};
}

} // namespace
} // namespace korvale::door

void korvale_offset_defaults(korvale_offset_options* options, size_t size)
{
    give_defaults(
        options, size,
        korvale_offset_options{sizeof *options, 1, 1, 0, 0.0, nullptr, nullptr, KORVALE_JOIN_MITER, 0, 0.0, 0.0, {}});
}

korvale_status korvale_offset(const korvale_points* outline, double distance, const korvale_offset_options* options,
                              korvale_border* border, korvale_error* error)
{
    return answer(error, "korvale_offset", [&] {
        const PointsIn in(outline, "outline");
        require_outline(in, "outline");
        const korvale_offset_options how = options_of(options, korvale_offset_defaults);
        const Motion motion = motion_of(distance, how);
        if (JoinsIn(how, in.size()).joins().are_some())
            throw Refusal("options.join", "leave corners sharp where there is no room for more points", "it does not");
        require(border, "border");
        require(border->points, "border.points");
        BorderOut output = {reinterpret_cast<Point*>(border->points), border->removed, border->merged_into, 0, false};
        Sweep().move(in.points(), motion, output);
        border->count = static_cast<int64_t>(output.size);
        border->vertices = in.size();
        border->collapsed = output.collapsed;
    });
}

korvale_status korvale_offsetter_new(korvale_offsetter** offsetter, korvale_error* error)
{
    return answer(error, "korvale_offsetter_new", [&] {
        require(offsetter, "offsetter");
        *offsetter = nullptr;
        *offsetter = make_handle<korvale_offsetter>();
    });
}

korvale_status korvale_offsetter_run(korvale_offsetter* offsetter, const korvale_points* outlines, int64_t count,
                                     double distance, const korvale_offset_options* options, korvale_error* error)
{
    return answer(error, "korvale_offsetter_run", [&] {
        require(offsetter, "offsetter");
        if (count < 1)
            throw Refusal("outlines", "have an outer outline", "there is none");
        require(outlines, "outlines");
        if (count == 1) { // without a list, for the sake of speed
            const PointsIn in(outlines, "outline 0");
            require_outline(in, "outline 0");
            const Outline outline = in.points();
            const korvale_offset_options how = options_of(options, korvale_offset_defaults);
            const JoinsIn joins(how, in.size());
            run(*offsetter, {&outline, 1}, motion_of(distance, how), joins.joins());
            return;
        }
        Vector<PointsIn> ins;
        Vector<Outline> views;
        ins.reserve(static_cast<size_t>(count));
        views.reserve(static_cast<size_t>(count));
        int64_t points = 0;
        for (int64_t k = 0; k < count; ++k) {
            const Text name = Text() << "outline " << k;
            ins.emplace_back(&outlines[k], name);
            require_outline(ins.back(), name);
            views.push_back(ins.back().points());
            points += ins.back().size();
        }
        const korvale_offset_options how = options_of(options, korvale_offset_defaults);
        const JoinsIn joins(how, points);
        run(*offsetter, views, motion_of(distance, how), joins.joins());
    });
}

int64_t korvale_offsetter_count(const korvale_offsetter* offsetter)
{
    return offsetter == nullptr ? 0 : static_cast<int64_t>(offsetter->count);
}

korvale_border korvale_offsetter_border(const korvale_offsetter* offsetter, int64_t k)
{
    const Border* const border = find_border(offsetter, k);
    return border == nullptr ? korvale_border{} : shown(*border);
}

const int32_t* korvale_offsetter_sources(const korvale_offsetter* offsetter, int64_t k)
{
    const Border* const border = find_border(offsetter, k);
    return border == nullptr || !offsetter->has_sources ? nullptr : border->sources.data();
}

korvale_border korvale_offsetter_take(korvale_offsetter* offsetter, int64_t k)
{
    if (find_border(offsetter, k) == nullptr)
        return {};
    Border& border = offsetter->borders[static_cast<size_t>(k)];
    const korvale_border taken = shown(border);
    border.points.release();
    border.removed.release();
    border.merged_into.release();
    return taken;
}

void korvale_offsetter_free(korvale_offsetter* offsetter)
{
    free_handle(offsetter);
}
