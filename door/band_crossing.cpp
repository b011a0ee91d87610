// Where the outlines of a band meet themselves: they are brought into the plane of the line, points that share a place
// count as one corner, and a tree of edges tells which two meet.
#include "door/internal/band_crossing.h"

#include <algorithm>
#include <cmath>

#include "border/internal/sweep.h"
#include "door/internal/edges.h"

namespace korvale::door {
namespace {

/// Points of outlines in the plane, those that follow each other at one place once: points that gave way share a place.
struct Places {
    struct Corner {
        Place place;
        int64_t number; ///< of the last point there, from which the edge to the next corner runs
    };
    Vector<Corner> corners;
    Vector<size_t> next;   ///< [corners] the corner at which the edge from one ends
    Vector<size_t> models; ///< for each point of the outlines the one whose place it has

    /// Points of one half, `half` points long, are at one place where they are nearer to each other than `same`, as far
    /// as they are among the first `movable` ones; all others only where they are there to the bit.
    void add(std::span<const Point> outline, size_t half, const LinePlane& plane, double same, size_t movable)
    {
        const size_t first = corners.size(), first_number = models.size();
        const auto is_at = [&](size_t i, const Place& place, size_t model, const Place& there) {
            return place == there || (i < movable && i / half == model / half && std::fabs(place.x - there.x) < same &&
                                      std::fabs(place.y - there.y) < same);
        };
        for (size_t i = 0, model = 0; i < outline.size(); ++i) {
            const Place place = plane.place_of(outline[i]);
            if (i == 0 || !is_at(i, place, model, corners.back().place)) {
                corners.push_back({place, 0});
                model = i;
            }
            corners.back().number = static_cast<int64_t>(first_number + i);
            models.push_back(first_number + model);
        }
        for (size_t i = outline.size(); corners.size() > first + 1;) { // what ends where it begins
            const size_t model = models[first_number + i - 1] - first_number;
            if (!is_at(model, corners.back().place, 0, corners[first].place))
                break;
            corners.pop_back();
            while (i > model)
                models[first_number + --i] = first_number;
        }
        for (size_t i = first; i < corners.size(); ++i)
            next.push_back(i + 1 < corners.size() ? i + 1 : first);
    }
};

bool share_a_point(const Edge& e, const Edge& f)
{
    const Place &a = e.from, &b = e.to, &c = f.from, &d = f.to;
    const int tc = side(a, b, c), td = side(a, b, d), ta = side(c, d, a), tb = side(c, d, b);
    if (tc * td < 0 && ta * tb < 0)
        return true;
    const Box box = box_of(e), other = box_of(f);
    return (tc == 0 && box.holds(c)) || (td == 0 && box.holds(d)) || (ta == 0 && other.holds(a)) ||
           (tb == 0 && other.holds(b));
}

/// Whether an edge runs back over the one before it.
bool does_fold(const Edge& e, const Edge& next)
{
    return side(e.from, e.to, next.to) == 0 && dot(e.to - e.from, next.to - next.from) < 0;
}

/// Finds two edges that meet, neighbours only where one runs back over the other: the first ones along the plane's
/// first axis.
bool find_crossing(const Places& places, int64_t* crossing)
{
    const size_t n = places.corners.size();
    Vector<Edge> list(n);
    Vector<size_t> order(n), rank(n);
    for (size_t i = 0; i < n; ++i) {
        list[i] = {places.corners[i].place, places.corners[places.next[i]].place};
        order[i] = i;
    }
    const auto least = [&](size_t i) { return std::min(list[i].from.x, list[i].to.x); };
    std::sort(order.begin(), order.end(),
              [&](size_t a, size_t b) { return least(a) != least(b) ? least(a) < least(b) : a < b; });
    for (size_t k = 0; k < n; ++k)
        rank[order[k]] = k;
    const EdgeTree edges(list);
    for (const size_t i : order) {
        size_t first = rank[i];
        edges.for_each_near(i, [&](size_t k) {
            if (rank[k] >= first)
                return;
            const bool is_next = k == places.next[i], is_before = i == places.next[k];
            if (is_next || is_before
                    ? (is_next && does_fold(edges[i], edges[k])) || (is_before && does_fold(edges[k], edges[i]))
                    : share_a_point(edges[i], edges[k]))
                first = rank[k];
        });
        if (first == rank[i])
            continue;
        const int64_t a = places.corners[i].number, b = places.corners[order[first]].number;
        crossing[0] = std::min(a, b);
        crossing[1] = std::max(a, b);
        return true;
    }
    return false;
}

/// The outlines of a band in the plane. Points nearer to each other than `same` are at one place, but for those of a
/// line that is a side of its own band: it stays as it was given.
Places places_of(const Band& band, const LinePlane& plane, const korvale_band_options& how, double same)
{
    const std::span<const Point> outline = band.outline;
    const size_t n = outline.size() / 2, movable = how.both_sides != 0 ? 2 * n : n;
    Places places;
    if (how.closed != 0) {
        places.add(outline.first(n), n, plane, same, n);
        places.add(outline.subspan(n), n, plane, same, movable - n);
    } else {
        places.add(outline, n, plane, same, movable);
    }
    return places;
}

} // namespace

void look_for_crossing(const LinePlane& plane, const korvale_band_options& how, Band& band)
{
    band.crosses = find_crossing(places_of(band, plane, how, 0.0), band.crossing);
    if (!band.crosses)
        return;
    const Places places = places_of(band, plane, how, border::kHair);
    band.crosses = find_crossing(places, band.crossing);
    if (band.crosses)
        return;
    band.crossing[0] = band.crossing[1] = 0;
    const size_t n = band.removed.size();
    for (size_t i = 0; i < 2 * n; ++i) {
        const Point model = band.outline[places.models[i]];
        if (plane.place_of(model) == plane.place_of(band.outline[i]))
            continue;
        band.outline[i] = plane.above(model, band.outline[i]);
        band.removed[i < n ? i : 2 * n - 1 - i] = 1;
    }
}

void look_for_crossing_of_caps(const LinePlane& plane, Band& band)
{
    const Vector<Point> outline = band.whole();
    Places places;
    places.add(outline, outline.size(), plane, 0.0, 0);
    band.crosses = find_crossing(places, band.crossing);
    if (!band.crosses)
        band.crossing[0] = band.crossing[1] = 0;
}

} // namespace korvale::door
