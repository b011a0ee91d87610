#pragma once

#include <algorithm>
#include <array>
#include <optional>

#include "door/internal/side.h"
#include "door/internal/views.h"

namespace korvale::door {

using Triangle = std::array<int32_t, 3>;

/// How points of a plane in space become places: two of their coordinates, seen from the side from which an outline
/// runs counter-clockwise. Dropping a coordinate rounds nothing, so points on one line stay on one line.
struct Seen {
    int x, y;     ///< the coordinates that stay
    double scale; ///< a power of two, which brings the largest coordinate near 1
};

/// The largest coordinate.
double largest_of(std::span<const Point> points);

/// The power of two that brings a number near 1.
double scale_to_one(double largest);

/// The side from which `outline` runs counter-clockwise.
Seen seen_upright(std::span<const Point> outline);

inline Place place_of(const Point& p, const Seen& seen)
{
    return {p[seen.x] * seen.scale, p[seen.y] * seen.scale};
}

/// Rings after one another, each closed.
struct Rings {
    Vector<Place> places;
    Vector<int32_t> ends; ///< one past the last place of each ring

    size_t size() const { return ends.size(); }
    std::span<const Place> operator[](size_t k) const
    {
        const auto first = static_cast<size_t>(k == 0 ? 0 : ends[k - 1]);
        return {places.data() + first, static_cast<size_t>(ends[k]) - first};
    }
    void add(std::span<const Point> points, const Seen& seen)
    {
        const size_t old = places.size();
        places.resize(old + points.size());
        std::transform(points.begin(), points.end(), places.begin() + static_cast<ptrdiff_t>(old),
                       [&](const Point& p) { return place_of(p, seen); });
        ends.push_back(static_cast<int32_t>(places.size()));
    }
};

/// How a ring bends at its lowest corner on the left, as it does around most of what it goes round: 1
/// counter-clockwise, -1 clockwise, 0 where it runs there and back.
int turn_of(std::span<const Place> ring);

/// Whether a ring runs clockwise around most of what it goes round.
bool is_mostly_clockwise(std::span<const Place> ring);

/// Cuts the first ring, with the others as its holes, into triangles of places: as many as places less two, and two
/// more for each hole. They run counter-clockwise seen like this, whichever way round the rings run, and have no area
/// where places are on one line and nothing else is left; those of rings that cross may run either way.
///
/// Holes are joined to the first ring by bridges, then ears are clipped (David Eberly, Triangulation by Ear Clipping,
/// 2002).
Vector<Triangle> cut(const Rings& rings, const Telling& telling = {});

/// The same of rings that run as those of `like` do, where they have an area at all.
Vector<Triangle> cut(const Rings& rings, const Rings& like, const Telling& telling = {});

/// A ring with its holes joined to it: corners that name a place each and the corners before and after.
struct LinkedCorners {
    Vector<int32_t> place, before, after;

    int32_t size() const { return static_cast<int32_t>(place.size()); }
    void link(int32_t from, int32_t to)
    {
        after[static_cast<size_t>(from)] = to;
        before[static_cast<size_t>(to)] = from;
    }
};

/// Joins the holes to the first ring by bridges inside of it, which run there and back. The first ring runs
/// counter-clockwise, all others clockwise.
void join_holes(const Rings& rings, LinkedCorners& corners, const Telling& telling);

/// How rings touch that are kept apart.
enum class Touching { but_for_rounding, at_all };

/// The rings with those holes a little smaller that come within rounding of other rings, where any does so, or does so
/// without touching it exactly. Rings run as those of `like` do.
std::optional<Rings> keep_apart(const Rings& rings, const Rings& like, Touching touching, const Telling& telling);

} // namespace korvale::door
