// Rings measured, each by itself.
//
// How a ring bends at its lowest corner tells which way round it runs; the sum of its area tells only where it runs
// there and back at that corner.
//
// A place well inside of a ring is in the middle of the widest stretch across it, halfway up one of the highest strips
// in which it has no corner: as far from its edges as can be found in a few looks.
#include "door/internal/contours.h"

#include <algorithm>
#include <functional>

#include "door/internal/repeats.h"

namespace korvale::door {

namespace {

/// A stretch across a ring that is inside of it, and how high the strip is in which it meets no corner.
struct Stretch {
    Place middle;
    double width, height;

    double room() const { return std::min(width, height); }
};

/// The widest one at a height.
Stretch stretch_at(std::span<const Place> ring, double y, const Stretch& none)
{
    Vector<double> ends;
    for (size_t i = 0; i < ring.size(); ++i)
        if (const auto [from, to] = edge_of(ring, i); (from.y <= y) != (to.y <= y))
            ends.push_back(from.x + (y - from.y) / (to.y - from.y) * (to.x - from.x));
    std::sort(ends.begin(), ends.end());
    Stretch widest = none;
    for (size_t i = 0; i + 1 < ends.size(); i += 2)
        if (const double width = ends[i + 1] - ends[i]; width > widest.width)
            widest = {{ends[i] + 0.5 * width, y}, width, none.height};
    return widest;
}

Place find_inside(std::span<const Place> ring, const Place& lowest)
{
    constexpr size_t kStrips = 4; // of which each costs a look at all edges. Chosen
    Vector<double> heights;
    for (const Place& p : ring)
        heights.push_back(p.y);
    std::sort(heights.begin(), heights.end());
    Vector<std::pair<double, double>> strips; // how high, and from where
    for (size_t i = 1; i < heights.size(); ++i)
        strips.emplace_back(heights[i] - heights[i - 1], heights[i - 1]);
    const auto last = strips.begin() + static_cast<ptrdiff_t>(std::min(kStrips, strips.size()));
    std::partial_sort(strips.begin(), last, strips.end(), std::greater<>());
    Stretch best = {lowest, 0.0, 0.0};
    for (auto strip = strips.begin(); strip != last; ++strip)
        if (const Stretch s = stretch_at(ring, strip->second + 0.5 * strip->first, {lowest, 0.0, strip->first});
            s.room() > best.room())
            best = s;
    return best.middle;
}

} // namespace

Contour measure(std::span<const Place> ring)
{
    Contour contour;
    if (ring.empty())
        return contour;
    double sum = 0.0, size = 0.0;
    const Place origin = ring[0];
    Place a = ring.back();
    size_t lowest = 0;
    for (size_t i = 0; i < ring.size(); ++i) {
        const Place b = ring[i];
        contour.box.cover(b);
        if (b.y < ring[lowest].y || (b.y == ring[lowest].y && b.x < ring[lowest].x))
            lowest = i;
        const double left = (a.x - origin.x) * (b.y - origin.y), right = (a.y - origin.y) * (b.x - origin.x);
        sum += left - right;
        size += std::fabs(left) + std::fabs(right);
        a = b;
    }
    size_t before = lowest, after = lowest;
    for (size_t i = 1; i < ring.size() && ring[before] == ring[lowest]; ++i)
        before = (lowest + ring.size() - i) % ring.size();
    for (size_t i = 1; i < ring.size() && ring[after] == ring[lowest]; ++i)
        after = (lowest + i) % ring.size();
    contour.size = std::fabs(sum);
    contour.turn = side(ring[before], ring[lowest], ring[after]);
    if (contour.turn == 0 && std::fabs(sum) > kNegligible * size)
        contour.turn = sign_of(sum);
    contour.lowest = static_cast<int32_t>(lowest);
    contour.before = static_cast<int32_t>(before);
    contour.after = static_cast<int32_t>(after);
    return contour;
}

Contours::Contours(const Rings& rings, double tolerance, const Telling& telling) : rings_(rings), tree_(rings)
{
    contours_.reserve(rings.size());
    for (size_t k = 0; k < rings.size(); ++k)
        contours_.push_back(measure(rings[k]));
    repeats_ = find_repeats(rings, contours_, tolerance, telling);
    tree_.grow([&](size_t k) { return takes_part(static_cast<int32_t>(k)); });
    insides_.resize(rings.size());
}

bool Contours::is_inside(int32_t ring, const Place& p) const
{
    bool is_in = false;
    if (!(*this)[ring].box.holds(p))
        return false;
    int32_t first = 0;
    for (const Box& box : tree_.boxes_of(ring)) {
        if (box.low_x <= p.x && p.x <= box.high_x && box.low_y <= p.y)
            for_each_below(ring, first, p, [&] { is_in = !is_in; });
        first += RunTree::kRun;
    }
    return is_in;
}

const Place& Contours::place_inside(int32_t ring)
{
    std::optional<Place>& inside = insides_[static_cast<size_t>(ring)];
    if (!inside)
        inside = find_inside(places(ring), place(ring, (*this)[ring].lowest));
    return *inside;
}

} // namespace korvale::door
