// Holes that touch something but for rounding, as those of a turned plate do: corners lie on edges by a last bit more
// or less, so rings cross where they should touch, and no bridge or ear between them would be right. Such holes are
// made a little smaller for the time of cutting, by much more than rounding and much less than anybody sees.
#include "door/internal/runs.h"
#include "door/internal/triangulate.h"

namespace korvale::door {

namespace {

/// How far edges of a hole move. Chosen: far enough beyond what counts as touching that they do so no more.
constexpr double kGap = 10.0 * kNegligible;
/// How far the sharpest corner moves, in gaps. Chosen: it stays below 1e-09 of the drawing.
constexpr double kMostGaps = 100.0;

/// Marks the rings that come within rounding of others; true where one does so as is asked for.
bool find_touching(const Rings& rings, Touching touching, const Telling& telling, Vector<uint8_t>& touches)
{
    RunTree tree(rings);
    tree.grow([](size_t) { return true; });
    bool is_found = false;
    tree.for_each_near_pair(kNegligible, false, telling, [&](int32_t ring, int32_t i, int32_t other, int32_t k) {
        const auto look = [&](const Edge& e, const Place& p) {
            const Place away = nearest_of(e, p) - p;
            if (dot(away, away) > kNegligible * kNegligible)
                return;
            touches[static_cast<size_t>(ring)] = touches[static_cast<size_t>(other)] = 1;
            is_found |= touching == Touching::at_all ||
                        (p != e.from && p != e.to && (side(e.from, e.to, p) != 0 || !box_of(e).holds(p)));
        };
        const Edge e = tree.edge(ring, i), f = tree.edge(other, k);
        look(e, f.from);
        look(f, e.from);
    });
    return is_found;
}

Place unit(const Place& v)
{
    return 1.0 / std::sqrt(dot(v, v)) * v;
}

/// Moves the corners of a ring such that its edges move inwards, or a little less at sharp corners and short edges.
void shrink(std::span<Place> ring, bool is_clockwise)
{
    const Vector<Place> old(ring.begin(), ring.end());
    const size_t n = old.size();
    const auto other_place = [&](size_t i, size_t step) {
        size_t k = (i + step) % n;
        while (k != i && old[k] == old[i])
            k = (k + step) % n;
        return old[k];
    };
    for (size_t i = 0; i < n; ++i) {
        const Place in = old[i] - other_place(i, n - 1), out = other_place(i, 1) - old[i];
        const double least = std::min(dot(in, in), dot(out, out));
        if (!(least > 0.0))
            continue; // a ring at one place
        const Place a = unit(in), b = unit(out);
        const double turn = is_clockwise ? -cross(a, b) : cross(a, b), share = 1.0 + dot(a, b);
        // the way on which both edges have moved by 1, in full or until it is long enough
        const Place left = {-a.y - b.y, a.x + b.x};
        Place way = share * kMostGaps > 2.0 ? (is_clockwise ? -1.0 : 1.0) / share * left
                                            : (turn >= 0.0 ? -kMostGaps : kMostGaps) * a;
        constexpr double kPart = 0.25; // of the shorter edge, whose two ends leave half of it then
        way = std::min(kGap, kPart * std::sqrt(least / std::max(1.0, dot(way, way)))) * way;
        ring[i] = old[i] + way;
    }
}

} // namespace

std::optional<Rings> keep_apart(const Rings& rings, const Rings& like, Touching touching, const Telling& telling)
{
    Vector<uint8_t> touches(rings.size(), 0);
    if (!find_touching(rings, touching, telling, touches))
        return {};
    Rings apart = rings;
    for (size_t k = 1, first = static_cast<size_t>(rings.ends[0]); k < rings.size(); ++k) {
        const auto end = static_cast<size_t>(rings.ends[k]);
        if (touches[k] != 0)
            shrink(std::span(apart.places).subspan(first, end - first), is_mostly_clockwise(like[k]));
        first = end;
    }
    return apart;
}

} // namespace korvale::door
