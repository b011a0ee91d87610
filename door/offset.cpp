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
border::Sweep sweep_in(SweepArrays& arrays, size_t n)
{
    arrays.numbers.make_room(14 * n);
    arrays.dead.make_room(n);
    arrays.merge.make_room(n);
    border::Sweep s = {};
    s.n = static_cast<int32_t>(n);
    s.flat = arrays.numbers.data();
    s.direction = s.flat + 3 * n;
    s.velocity = s.direction + 3 * n;
    s.line = s.velocity + 3 * n;
    s.length = s.line + 3 * n;
    s.rate = s.length + n;
    s.dead = arrays.dead.data();
    s.merge = arrays.merge.data();
    return s;
}

/// Where the vertices of a ring are in the plane before it is swept, in the order of the outline, and the vertex of the
/// outline that each belongs to.
struct Start {
    Vector<Point> places;
    Vector<int32_t> sources;
};

/// A ring before it is swept.
struct NewRing {
    int32_t parent;
    double birth;        ///< in the outline's own size
    double remaining;    ///< in that of the sweep
    Start start;         ///< or nothing, where it is shared
    int32_t shared = -1; ///< its number among rings that distances share, or -1
};

/// The area that a ring goes round before it is swept: of the outline itself no more than its sign.
double area_before(const Start& ring, bool is_outline)
{
    if (is_outline)
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
        return is_sound(live_places(sweep), before, telling) &&
               std::ranges::all_of(pieces, [&](const Vector<Place>& piece) {
                   return is_piece_sound(piece, before, distance, telling);
               });
    }

    static bool is_piece_sound(const Vector<Place>& piece, double before, double distance, const Telling& telling)
    {
        const bool grows = distance * before > 0.0;
        return is_sound(piece, grows ? area_of(piece) : before, telling);
    }
};

/// A piece that a split has dropped of a ring whose vertices belong to these of the outline.
Start start_of(const border::DroppedPiece& piece, const border::Sweep& sweep, const Vector<int32_t>& sources)
{
    Start start;
    const auto n = static_cast<size_t>(piece.count) + 1;
    start.places.reserve(n);
    start.sources.reserve(n);
    for_each_vertex(piece, sweep, [&](int32_t i, double x, double y) {
        start.places.push_back({x, y, sweep.flat[3 * int64_t{i} + 2]});
        start.sources.push_back(sources[static_cast<size_t>(i)]);
    });
    return start;
}

/// Whether a piece is more than an edge there and back.
bool is_ring(const border::DroppedPiece& piece)
{
    return piece.count >= 2;
}

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
        if (!is_ring(piece))
            return;
        rings.push_back(
            {number, distance - piece.remaining / scale, piece.remaining, start_of(piece, sweep, ring.start.sources)});
        waiting += rings.back().start.places.size();
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

/// What has become of a ring.
struct Swept {
    Vector<Point> points;    ///< none where it has come to nothing
    Vector<int32_t> sources; ///< the vertex of the outline that each belongs to
    double end;
    bool collapsed;
};

/// An outline with its joins, laid flat to be moved with all pieces.
struct Laid {
    Laid(Outline outline, const Motion& how, const Planes* lifted_in = nullptr)
        : motion(how), start{Vector<Point>(outline.size()), {}}, flat(lay_flat(outline, how, start.places.data())),
          lifting(lifted_in == nullptr ? flat.planes : lifted_in->scaled(flat.scale)),
          joined(start.places, flat.scale * how.distance, how.joins), scale(joined.zoom() * flat.scale)
    {
        if (!joined.is_sharp()) {
            start.places.resize(joined.size());
            for (size_t i = 0; i < joined.size(); ++i)
                start.places[i] = joined.place(i);
        }
        start.sources.resize(start.places.size());
        std::iota(start.sources.begin(), start.sources.end(), 0);
    }

    /// What a sweep has made of a ring whose vertices belong to these. Joins that are left are settled in its arrays.
    Swept finish(border::Sweep& s, const Vector<int32_t>& sources)
    {
        joined.settle(s, sources);
        Swept swept = {{}, {}, motion.distance - s.remaining / scale, false};
        const auto* const places = reinterpret_cast<const Point*>(s.flat);
        for (size_t i = 0; i < sources.size(); ++i)
            if (s.dead[i] == 0) {
                swept.points.push_back(places[i]);
                swept.sources.push_back(joined.corner(static_cast<size_t>(sources[i])));
            }
        const std::span<Point> live = swept.points;
        scaled(live, 1.0 / joined.zoom(), live.data());
        carry(flat.planes.from_plane, live, live.data());
        lift(live, lifting, flat.scale * motion.height);
        swept.collapsed = is_collapsed(live, motion, flat.area);
        scaled(live, 1.0 / flat.scale, live.data());
        if (swept.collapsed) {
            swept.points.clear();
            swept.sources.clear();
        }
        return swept;
    }

    Motion motion;
    Start start;
    Flattening flat;
    Planes lifting;
    JoinedOutline joined;
    double scale; ///< from the outline's own size to that of the sweep
};

/// Whether distances can share a sweep: they lay the outline and its joins into the same places.
bool lie_alike(const Laid& a, const Laid& b)
{
    const auto are_alike = [](const Point& p, const Point& q) { return p.x == q.x && p.y == q.y && p.z == q.z; };
    if (a.scale != b.scale || a.flat.scale != b.flat.scale || a.joined.is_sharp() != b.joined.is_sharp())
        return false;
    if (a.joined.is_sharp())
        return true;
    if (a.joined.size() != b.joined.size())
        return false;
    for (size_t i = 0; i < a.joined.size(); ++i)
        if (a.joined.corner(i) != b.joined.corner(i) || !are_alike(a.joined.place(i), b.joined.place(i)))
            return false;
    return true;
}

/// What a sweep that goes on has made of a ring for a shorter distance.
struct Passed {
    bool is_sure;    ///< a sweep of this distance alone makes the same of it
    Swept swept;     ///< only where that is so
    size_t children; ///< those of the ring that have been cut off by then
};

/// A ring that distances share: swept once for all of them.
struct SharedRing {
    Start start;
    size_t first;                 ///< the least distance at which it is there
    Vector<double> remaining;     ///< [distances from the first on] in the size of the sweep
    Vector<size_t> children = {}; ///< the numbers of those cut from it, in their order
    Vector<Passed> passed = {};   ///< [distances from the first on]
};

/// A sweep of one ring for several distances.
struct SharedSweep {
    border::Sweep& sweep;
    SharedRing& ring;
    double before;             ///< the area that the ring goes round before
    std::span<Laid> distances; ///< from the first one of the ring on
    Vector<SharedRing>& rings; ///< added to
    size_t& waiting;           ///< vertices of rings that are not swept yet: added to
    const Telling& telling;
    Vector<double> left = ring.remaining; ///< of all distances but the farthest: kept by the sweep
    Suspects suspects = {sweep};
    bool are_pieces_sound = true;

    static void drop(const border::DroppedPiece& piece, void* receiver)
    {
        static_cast<SharedSweep*>(receiver)->keep(piece);
    }

    static void pass(int32_t stop, void* receiver)
    {
        static_cast<SharedSweep*>(receiver)->look(static_cast<size_t>(stop));
    }

    /// Asks whether to go on where the sweep is.
    Telling here() const
    {
        const double distance = ring.remaining.back();
        return telling.part(distance == 0.0 ? 1.0 : 1.0 - sweep.remaining / distance, 0.0);
    }

    void keep(const border::DroppedPiece& piece)
    {
        suspects.see(piece);
        const auto passed = static_cast<size_t>(sweep.passed);
        if (are_pieces_sound && passed + 1 < distances.size()) {
            Vector<Place> places;
            for_each_vertex(piece, sweep, [&](int32_t, double x, double y) { places.push_back({x, y}); });
            are_pieces_sound = suspects.is_piece_sound(places, before, ring.remaining.back(), here());
        }
        if (!is_ring(piece))
            return;
        SharedRing made = {start_of(piece, sweep, ring.start.sources), ring.first + passed,
                           Vector<double>(left.begin() + static_cast<ptrdiff_t>(passed), left.end())};
        made.remaining.back() = piece.remaining;
        waiting += made.start.places.size();
        ring.children.push_back(rings.size());
        rings.push_back(std::move(made));
    }

    /// A sweep of this distance alone would look for meetings less far ahead, and so may have seen other vertices that
    /// have missed an edge. Where what it leaves is sound that makes no difference.
    void look(size_t stop)
    {
        const bool is_sure = !sweep.has_lost && are_pieces_sound && is_sound(live_places(sweep), before, here());
        note(stop, is_sure, left[stop]);
    }

    void note(size_t number, bool is_sure, double remaining)
    {
        Passed& passed = ring.passed.emplace_back();
        passed.is_sure = is_sure;
        passed.children = ring.children.size();
        if (!is_sure)
            return;
        Laid& laid = distances[number];
        border::Sweep s = sweep;
        s.remaining = remaining;
        if (laid.joined.is_sharp()) {
            passed.swept = laid.finish(s, ring.start.sources);
            return;
        }
        Vector<double> flat(s.flat, s.flat + 3 * int64_t{s.n});
        Vector<uint8_t> dead(s.dead, s.dead + s.n);
        Vector<int32_t> merge(s.merge, s.merge + s.n);
        s.flat = flat.data();
        s.dead = dead.data();
        s.merge = merge.data();
        passed.swept = laid.finish(s, ring.start.sources);
    }
};

void add(RingList& rings, const NewRing& ring, const Swept& swept)
{
    if (rings.starts.empty())
        rings.starts.push_back(0);
    rings.points.insert(rings.points.end(), swept.points.begin(), swept.points.end());
    rings.sources.insert(rings.sources.end(), swept.sources.begin(), swept.sources.end());
    rings.starts.push_back(static_cast<int64_t>(rings.points.size()));
    rings.parents.push_back(ring.parent);
    rings.births.push_back(ring.birth);
    rings.ends.push_back(swept.end);
    rings.collapsed.push_back(swept.collapsed);
}

/// Rings of one distance, each swept alone but for those that distances share.
struct RingQueue {
    Laid& laid;
    const Telling& telling;
    RingList& rings;
    std::span<SharedRing> shared = {};
    size_t distance = 0; ///< the number of this one among those that share rings
    Vector<NewRing> all = {};
    size_t waiting = 0; ///< vertices of rings that are not swept yet
    double done = 0.0;

    /// Adds a shared ring and its children. False where it has to be swept alone.
    bool add_shared(NewRing& ring, int32_t number)
    {
        SharedRing& from = shared[static_cast<size_t>(ring.shared)];
        const Passed& passed = from.passed[distance - from.first];
        if (!passed.is_sure) {
            ring.start = from.start;
            waiting += ring.start.places.size();
            return false;
        }
        add(rings, ring, passed.swept);
        for (size_t c = 0; c < passed.children; ++c) {
            const size_t child = from.children[c];
            const double remaining = shared[child].remaining[distance - shared[child].first];
            all.push_back(
                {number, laid.motion.distance - remaining / laid.scale, remaining, {}, static_cast<int32_t>(child)});
        }
        return true;
    }
};

/// Sweeps the rings of a queue, in the order in which they are cut off.
void sweep_rings(SweepArrays& arrays, RingQueue& queue, const Trace* trace = nullptr)
{
    Laid& laid = queue.laid;
    const Motion& motion = laid.motion;
    double& done = queue.done;
    for (size_t k = 0; k < queue.all.size(); ++k) {
        NewRing ring = std::move(queue.all[k]);
        const auto number = static_cast<int32_t>(k);
        if (ring.shared >= 0 && queue.add_shared(ring, number))
            continue;
        const size_t vertices = ring.start.places.size();
        border::Sweep s = sweep_in(arrays, vertices);
        Keeper keeper = {s, ring, number, motion.distance, laid.scale, queue.all, queue.waiting};
        const auto sweep = [&](const Telling& telling) {
            std::ranges::copy(ring.start.places, reinterpret_cast<Point*>(s.flat));
            s.remaining = ring.remaining;
            s.split_events = motion.split;
            s.drop = &Keeper::drop;
            s.receiver = &keeper;
            run(s, telling);
        };
        const double share = (1.0 - done) * static_cast<double>(vertices) / static_cast<double>(queue.waiting);
        queue.waiting -= vertices;
        const size_t known = queue.all.size(), known_waiting = queue.waiting;
        sweep(queue.telling.part(done, share));
        done += share;
        const Telling at_end = queue.telling.part(std::min(done, 1.0), 0.0);
        if (s.has_lost || (s.has_missed && !keeper.suspects.are_sound(area_before(ring.start, ring.parent < 0),
                                                                      ring.remaining, at_end))) {
            queue.all.resize(known);
            queue.waiting = known_waiting;
            s.catch_up = true;
            sweep(at_end);
        }
        queue.telling.tell(std::min(done, 1.0));
        add(queue.rings, ring, laid.finish(s, ring.start.sources));
        if (trace != nullptr) {
            laid.joined.follow(s, trace->removed, trace->merged_into);
            return; // without the pieces
        }
    }
}

/// The rings that distances share, the farthest last.
Vector<SharedRing> share_rings(SweepArrays& arrays, std::span<Laid> distances, const Telling& telling)
{
    Vector<SharedRing> rings;
    double done = 0.0;
    Laid& farthest = distances.back();
    size_t waiting = farthest.start.places.size();
    Vector<double> remaining;
    for (const Laid& laid : distances)
        remaining.push_back(laid.scale * laid.motion.distance);
    rings.push_back({std::move(farthest.start), 0, std::move(remaining)});
    for (size_t k = 0; k < rings.size(); ++k) {
        SharedRing ring = std::move(rings[k]);
        const size_t vertices = ring.start.places.size();
        const double share = (1.0 - done) * static_cast<double>(vertices) / static_cast<double>(waiting);
        const Telling now = telling.part(done, share);
        waiting -= vertices;
        border::Sweep s = sweep_in(arrays, vertices);
        const double before = area_before(ring.start, k == 0);
        SharedSweep shared = {s, ring, before, distances.subspan(ring.first), rings, waiting, now};
        std::ranges::copy(ring.start.places, reinterpret_cast<Point*>(s.flat));
        s.remaining = ring.remaining.back();
        s.split_events = farthest.motion.split;
        s.stops = shared.left.data();
        s.stop_count = static_cast<int32_t>(ring.remaining.size()) - 1;
        s.drop = &SharedSweep::drop;
        s.pass = &SharedSweep::pass;
        s.receiver = &shared;
        run(s, now);
        done = std::min(done + share, 1.0);
        const bool is_missing =
            s.has_missed && !shared.suspects.are_sound(before, ring.remaining.back(), telling.part(done, 0.0));
        shared.note(ring.remaining.size() - 1, !s.has_lost && !is_missing, s.remaining);
        telling.tell(done);
        rings[k] = std::move(ring);
    }
    return rings;
}

} // namespace

Motion motion_of(double distance, const korvale_offset_options& options)
{
    require_finite(distance, "distance");
    require_finite(options.height, "options.height");
    return {distance, options.height, options.keep_vertices != 0, options.split != 0, {options.progress, options.user}};
}

NumbersIn distances_in(const korvale_numbers* distances)
{
    NumbersIn numbers(distances, "distances");
    if (numbers.width() != 1)
        throw Refusal("distances", "have a width of 1", Text() << "it is " << numbers.width());
    for (int64_t i = 0; i < numbers.size(); ++i)
        if (const double distance = numbers.data()[i]; !is_finite(distance))
            throw Refusal("distances", "be finite", Text() << "number " << i << " is " << distance);
    return numbers;
}

void Sweep::move(Outline outline, const Motion& motion, BorderOut& output, const Planes* lifted_in)
{
    const size_t n = outline.size();
    border::Sweep s = sweep_in(arrays_, n);
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
    Laid laid(outline, motion, lifted_in);
    RingQueue queue = {laid, motion.telling, rings};
    queue.waiting = laid.start.places.size();
    queue.all.push_back({-1, 0.0, laid.scale * motion.distance, std::move(laid.start)});
    sweep_rings(arrays_, queue, trace);
}

void Sweep::move(Outline outline, const Motion& motion, std::span<const double> distances, std::span<RingList> rings)
{
    Vector<size_t> order(distances.size());
    std::iota(order.begin(), order.end(), 0);
    std::ranges::sort(order, [&](size_t a, size_t b) {
        const double p = distances[a], q = distances[b];
        return (p > 0.0) != (q > 0.0) ? q > 0.0 : std::fabs(p) < std::fabs(q);
    });
    const double share = 1.0 / static_cast<double>(distances.size());
    const auto motion_by = [&](double distance) {
        Motion moved = motion;
        moved.distance = distance;
        return moved;
    };
    for (size_t begin = order.size(), end = begin; begin > 0; end = begin) {
        const double farthest = distances[order[--begin]];
        Vector<Laid> alike; // the farthest first
        alike.emplace_back(outline, motion_by(farthest));
        for (; begin > 0; --begin) {
            const double distance = distances[order[begin - 1]];
            if (distance == 0.0 || (distance > 0.0) != (farthest > 0.0))
                break;
            Laid next(outline, motion_by(distance));
            if (!lie_alike(alike[0], next))
                break;
            next.start = {};
            alike.push_back(std::move(next));
        }
        std::ranges::reverse(alike);
        const size_t count = end - begin;
        const Telling telling =
            motion.telling.part(share * static_cast<double>(order.size() - end), share * static_cast<double>(count));
        if (count == 1) {
            Motion alone = motion_by(farthest);
            alone.telling = telling;
            move(outline, alone, rings[order[begin]]);
            continue;
        }
        Vector<SharedRing> shared = share_rings(arrays_, alike, telling);
        const Telling at_end = telling.part(1.0, 0.0);
        for (size_t i = 0; i < count; ++i) {
            RingQueue queue = {alike[i], at_end, rings[order[begin + i]], shared, i};
            queue.all.push_back({-1, 0.0, shared[0].remaining[i], {}, 0});
            sweep_rings(arrays_, queue);
        }
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
