// Outlines moved with all pieces: what a split drops is a ring of its own, swept from where it was cut off. A border
// with joins is the first ring of these.
#include "door/internal/rings.h"

#include <algorithm>
#include <numeric>

#include "door/internal/sound.h"

namespace korvale::door {
namespace {

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
        rings.push_back({number, distance - piece.remaining / scale, piece.remaining,
                         start_of(piece, sweep.rows, ring.start.sources)});
        waiting += rings.back().start.places.size();
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

} // namespace

double area_before(const RingStart& ring, bool is_outline)
{
    if (is_outline)
        return kCounterClockwise;
    Vector<Place> places;
    for (const Point& p : ring.places)
        places.push_back({p.x, p.y});
    return area_of(places);
}

bool is_ring(const border::DroppedPiece& piece)
{
    return piece.count >= 2;
}

RingStart start_of(const border::DroppedPiece& piece, const border::Rows& rows, const Vector<int32_t>& sources)
{
    RingStart start;
    const auto n = static_cast<size_t>(piece.count) + 1;
    start.places.reserve(n);
    start.sources.reserve(n);
    for_each_vertex(piece, rows, [&](int32_t i, double x, double y) {
        start.places.push_back({x, y, rows.flat[3 * int64_t{i} + 2]});
        start.sources.push_back(sources[static_cast<size_t>(i)]);
    });
    return start;
}

Laid::Laid(Outline outline, const Motion& how, const Planes* lifted_in)
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

Swept Laid::finish(border::Rows& rows, double remaining, const Vector<int32_t>& sources)
{
    if (remaining == 0.0)
        joined.settle(rows, sources);
    Swept swept = {{}, {}, motion.distance - remaining / scale, false};
    const auto* const places = reinterpret_cast<const Point*>(+rows.flat);
    for (size_t i = 0; i < sources.size(); ++i)
        if (rows.dead[i] == 0) {
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

bool RingQueue::add_shared(NewRing& ring, int32_t number)
{
    SharedRing& from = shared_rings[static_cast<size_t>(ring.shared_number)];
    const Outcome& outcome = from.outcomes[distance - from.first];
    if (!outcome.is_sure) {
        ring.start = from.start;
        waiting += ring.start.places.size();
        return false;
    }
    add(rings, ring, outcome.swept);
    for (size_t c = 0; c < outcome.children; ++c) {
        const size_t child = from.children[c];
        const double remaining = shared_rings[child].remaining[distance - shared_rings[child].first];
        all.push_back(
            {number, laid.motion.distance - remaining / laid.scale, remaining, {}, static_cast<int32_t>(child)});
    }
    return true;
}

void sweep_rings(SweepArrays& arrays, RingQueue& queue, const Trace* trace)
{
    Laid& laid = queue.laid;
    const Motion& motion = laid.motion;
    double& done = queue.done;
    for (size_t k = 0; k < queue.all.size(); ++k) {
        NewRing ring = std::move(queue.all[k]);
        const auto number = static_cast<int32_t>(k);
        if (ring.shared_number >= 0 && queue.add_shared(ring, number))
            continue;
        const size_t vertices = ring.start.places.size();
        border::Sweep sweep = sweep_in(arrays, vertices);
        Keeper keeper = {sweep, ring, number, motion.distance, laid.scale, queue.all, queue.waiting};
        const auto run_anew = [&](const Telling& telling) {
            std::copy(ring.start.places.begin(), ring.start.places.end(), reinterpret_cast<Point*>(+sweep.rows.flat));
            sweep.progress.remaining = ring.remaining;
            sweep.request.split_events = motion.split;
            sweep.request.drop = &Keeper::drop;
            sweep.request.receiver = &keeper;
            run_to_end(sweep, telling);
        };
        const double share = (1.0 - done) * static_cast<double>(vertices) / static_cast<double>(queue.waiting);
        queue.waiting -= vertices;
        const size_t known = queue.all.size(), known_waiting = queue.waiting;
        run_anew(queue.telling.part(done, share));
        done += share;
        const Telling at_end = queue.telling.part(std::min(done, 1.0), 0.0);
        const border::Findings& found = sweep.found;
        if (found.has_lost || (found.has_missed && !keeper.suspects.are_sound(area_before(ring.start, ring.parent < 0),
                                                                              ring.remaining, at_end))) {
            queue.all.resize(known);
            queue.waiting = known_waiting;
            sweep.request.catch_up = true;
            run_anew(at_end);
        }
        queue.telling.tell(std::min(done, 1.0));
        add(queue.rings, ring, laid.finish(sweep.rows, sweep.progress.remaining, ring.start.sources));
        if (trace != nullptr) {
            laid.joined.follow(sweep.rows, trace->removed, trace->merged_into);
            return; // without the pieces
        }
    }
}

void Mover::move_rings(Outline outline, const Motion& motion, RingList& rings, const Planes* lifted_in,
                       const Trace* trace)
{
    Laid laid(outline, motion, lifted_in);
    RingQueue queue = {laid, motion.telling, rings};
    queue.waiting = laid.start.places.size();
    queue.all.push_back({-1, 0.0, laid.scale * motion.distance, std::move(laid.start)});
    sweep_rings(arrays_, queue, trace);
}

void Mover::move_with_joins(Outline outline, const Motion& motion, Border& border, const Planes* lifted_in)
{
    const size_t n = outline.size();
    border.removed.make_room(n);
    border.merged_into.make_room(n);
    RingList rings;
    const Trace trace = {border.removed.data(), border.merged_into.data()};
    move_rings(outline, motion, rings, lifted_in, &trace);
    border.size = rings.points.size();
    border.points.make_room(std::max(border.size, n));
    border.sources.make_room(std::max(border.size, n));
    std::copy(rings.points.begin(), rings.points.end(), border.points.data());
    std::copy(rings.sources.begin(), rings.sources.end(), border.sources.data());
    border.vertices = n;
    border.collapsed = rings.collapsed[0] != 0;
    border.left = 0.0;
}

} // namespace korvale::door
