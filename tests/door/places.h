// Places of a lattice and rings of them, for tests from inside.
#pragma once

#include <vector>

#include "door/internal/edges.h"
#include "door/internal/triangulate.h"
#include "tests/support/random.h"

namespace korvale::test {

using Ring = std::vector<door::Place>;

inline door::Rings rings_of(const std::vector<Ring>& all)
{
    door::Rings rings;
    for (const Ring& ring : all) {
        rings.places.insert(rings.places.end(), ring.begin(), ring.end());
        rings.ends.push_back(static_cast<int32_t>(rings.places.size()));
    }
    return rings;
}

/// One of (steps + 1)^2 places with coordinates from 0 to 1.
inline door::Place lattice_place(Random& random, int steps)
{
    const double x = random.between(0, steps), y = random.between(0, steps);
    return {x / steps, y / steps};
}

inline Ring lattice_ring(Random& random, int places, int steps)
{
    Ring ring;
    for (int i = 0; i < places; ++i)
        ring.push_back(lattice_place(random, steps));
    return ring;
}

inline std::vector<door::Edge> edges_of(const Ring& ring)
{
    std::vector<door::Edge> edges;
    for (size_t i = 0; i < ring.size(); ++i)
        edges.push_back({ring[i], ring[(i + 1) % ring.size()]});
    return edges;
}

/// Whether two edges have a place in common.
inline bool do_touch(const door::Edge& e, const door::Edge& f)
{
    const auto parts = [](const door::Edge& a, const door::Edge& b) {
        return door::side(a.from, a.to, b.from) * door::side(a.from, a.to, b.to) > 0;
    };
    return box_of(e).meets(box_of(f)) && !parts(e, f) && !parts(f, e);
}

/// The distance between two edges.
inline double distance_of(const door::Edge& e, const door::Edge& f)
{
    if (do_touch(e, f))
        return 0.0;
    const auto away = [](const door::Edge& a, const door::Place& p) {
        const door::Place d = nearest_of(a, p) - p;
        return std::sqrt(dot(d, d));
    };
    return std::min({away(e, f.from), away(e, f.to), away(f, e.from), away(f, e.to)});
}

/// A rectangle of a lattice, from corner to corner.
struct Rectangle {
    int low_x, low_y, high_x, high_y;

    friend bool operator==(const Rectangle&, const Rectangle&) = default;

    bool contains(const Rectangle& r) const
    {
        return low_x <= r.low_x && r.high_x <= high_x && low_y <= r.low_y && r.high_y <= high_y;
    }
    /// Whether both have more than their rims in common.
    bool overlaps(const Rectangle& r) const
    {
        return low_x < r.high_x && r.low_x < high_x && low_y < r.high_y && r.low_y < high_y;
    }
    bool crosses(const Rectangle& r) const { return overlaps(r) && !contains(r) && !r.contains(*this); }
    /// Whether the rims have a place in common.
    bool touches(const Rectangle& r) const
    {
        const bool meets = low_x <= r.high_x && r.low_x <= high_x && low_y <= r.high_y && r.low_y <= high_y;
        const auto holds_within = [](const Rectangle& a, const Rectangle& b) {
            return a.low_x < b.low_x && b.high_x < a.high_x && a.low_y < b.low_y && b.high_y < a.high_y;
        };
        return meets && !holds_within(*this, r) && !holds_within(r, *this);
    }
    int area() const { return (high_x - low_x) * (high_y - low_y); }
};

inline Rectangle random_rectangle(Random& random, int steps)
{
    const int x = random.below(steps), y = random.below(steps);
    const int high_x = random.between(x + 1, steps), high_y = random.between(y + 1, steps);
    return {x, y, high_x, high_y};
}

/// It as a ring, either way round and from any corner on, with places on its sides and some that are there twice;
/// `leaning` turns the lattice by an eighth, which rounds nothing.
inline Ring ring_of(const Rectangle& r, int steps, bool leaning, Random& random)
{
    const int corners[][2] = {{r.low_x, r.low_y}, {r.high_x, r.low_y}, {r.high_x, r.high_y}, {r.low_x, r.high_y}};
    const bool is_backwards = random.one_in(2);
    const int first = random.below(4);
    Ring ring;
    for (int i = 0; i < 4; ++i) {
        const int at = first + (is_backwards ? 4 - i : i), next = is_backwards ? at + 3 : at + 1;
        const int *const a = corners[at % 4], *const b = corners[next % 4];
        const int between = random.below(3);
        for (int k = 0; k <= between; ++k) {
            const double share = between == 2 ? 0.5 * std::min(k, 1) : 0.5 * k; // with 2 the middle is there twice
            const double x = (a[0] + share * (b[0] - a[0])) / steps, y = (a[1] + share * (b[1] - a[1])) / steps;
            ring.push_back(leaning ? door::Place{0.5 * (x + y), 0.5 * (x - y)} : door::Place{x, y});
        }
    }
    return ring;
}

} // namespace korvale::test
