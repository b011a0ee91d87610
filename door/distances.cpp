// One outline moved by many distances. Where they lay the outline and its joins into the same places, the farthest is
// swept and passes the others on the way: what it leaves there is theirs, wherever a sweep of that distance alone would
// make the same of it. The rest are swept alone.
#include <algorithm>
#include <cmath>
#include <numeric>

#include "door/internal/rings.h"
#include "door/internal/sound.h"

namespace korvale::door {
namespace {

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

/// A sweep of one ring past several distances.
struct Passage {
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
        static_cast<Passage*>(receiver)->keep(piece);
    }

    static void pass(int32_t stop, void* receiver) { static_cast<Passage*>(receiver)->look(static_cast<size_t>(stop)); }

    /// Asks whether to go on where the sweep is.
    Telling here() const
    {
        const double distance = ring.remaining.back();
        return telling.part(distance == 0.0 ? 1.0 : 1.0 - sweep.progress.remaining / distance, 0.0);
    }

    void keep(const border::DroppedPiece& piece)
    {
        suspects.see(piece);
        const auto stops_behind = static_cast<size_t>(sweep.progress.passed);
        if (are_pieces_sound && stops_behind + 1 < distances.size()) {
            Vector<Place> places;
            for_each_vertex(piece, sweep.rows, [&](int32_t, double x, double y) { places.push_back({x, y}); });
            are_pieces_sound = suspects.is_piece_sound(places, before, ring.remaining.back(), here());
        }
        if (!is_ring(piece))
            return;
        SharedRing made = {start_of(piece, sweep.rows, ring.start.sources), ring.first + stops_behind,
                           Vector<double>(left.begin() + static_cast<ptrdiff_t>(stops_behind), left.end())};
        made.remaining.back() = piece.remaining;
        waiting += made.start.places.size();
        ring.children.push_back(rings.size());
        rings.push_back(std::move(made));
    }

    /// A sweep of this distance alone would look for meetings less far ahead, and so may have seen other vertices that
    /// have missed an edge. Where what it leaves is sound that makes no difference.
    void look(size_t stop)
    {
        const bool is_sure =
            !sweep.found.has_lost && are_pieces_sound && is_sound(live_places(sweep.rows), before, here());
        note(stop, is_sure, left[stop]);
    }

    void note(size_t number, bool is_sure, double remaining)
    {
        Outcome& outcome = ring.outcomes.emplace_back();
        outcome.is_sure = is_sure;
        outcome.children = ring.children.size();
        if (!is_sure)
            return;
        Laid& laid = distances[number];
        border::Rows rows = sweep.rows;
        if (laid.joined.is_sharp()) {
            outcome.swept = laid.finish(rows, remaining, ring.start.sources);
            return;
        }
        Vector<double> flat(+rows.flat, rows.flat + 3 * int64_t{rows.n});
        Vector<uint8_t> dead(+rows.dead, rows.dead + rows.n);
        Vector<int32_t> merge(+rows.merge, rows.merge + rows.n);
        rows.flat = flat.data();
        rows.dead = dead.data();
        rows.merge = merge.data();
        outcome.swept = laid.finish(rows, remaining, ring.start.sources);
    }
};

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
        border::Sweep sweep = sweep_in(arrays, vertices);
        const double before = area_before(ring.start, k == 0);
        Passage passage = {sweep, ring, before, distances.subspan(ring.first), rings, waiting, now};
        std::copy(ring.start.places.begin(), ring.start.places.end(), reinterpret_cast<Point*>(+sweep.rows.flat));
        sweep.progress = {ring.remaining.back(), passage.left.data(), static_cast<int32_t>(ring.remaining.size()) - 1};
        sweep.request.split_events = farthest.motion.split;
        sweep.request.drop = &Passage::drop;
        sweep.request.pass = &Passage::pass;
        sweep.request.receiver = &passage;
        run_to_end(sweep, now);
        done = std::min(done + share, 1.0);
        const bool is_missing = sweep.found.has_missed &&
                                !passage.suspects.are_sound(before, ring.remaining.back(), telling.part(done, 0.0));
        passage.note(ring.remaining.size() - 1, !sweep.found.has_lost && !is_missing, sweep.progress.remaining);
        telling.tell(done);
        rings[k] = std::move(ring);
    }
    return rings;
}

} // namespace

void Mover::move_rings_by_each(Outline outline, const Motion& motion, std::span<const double> distances,
                               std::span<RingList> rings)
{
    Vector<size_t> order(distances.size());
    std::iota(order.begin(), order.end(), 0);
    std::sort(order.begin(), order.end(), [&](size_t a, size_t b) {
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
        std::reverse(alike.begin(), alike.end());
        const size_t count = end - begin;
        const Telling telling =
            motion.telling.part(share * static_cast<double>(order.size() - end), share * static_cast<double>(count));
        if (count == 1) {
            Motion alone = motion_by(farthest);
            alone.telling = telling;
            move_rings(outline, alone, rings[order[begin]]);
            continue;
        }
        Vector<SharedRing> shared_rings = share_rings(arrays_, alike, telling);
        const Telling at_end = telling.part(1.0, 0.0);
        for (size_t i = 0; i < count; ++i) {
            RingQueue queue = {alike[i], at_end, rings[order[begin + i]], shared_rings, i};
            queue.all.push_back({-1, 0.0, shared_rings[0].remaining[i], {}, 0});
            sweep_rings(arrays_, queue);
        }
    }
}

} // namespace korvale::door
