// Rings in a plane z = const, for tests.
#pragma once

#include <algorithm>
#include <cmath>
#include <span>
#include <vector>

#include "tests/support/random.h"

namespace korvale::test {

using Numbers = std::vector<double>;

/// A ring around the origin, with corners from `least` to 10 away from it.
inline Numbers star(Random& random, int corners, double least)
{
    Numbers outline;
    for (int i = 0; i < corners; ++i) {
        const double angle = 6.283185307179586 * (i + random.uniform(0, 0.9)) / corners, r = random.uniform(least, 10);
        outline.insert(outline.end(), {r * std::cos(angle), r * std::sin(angle), 0});
    }
    return outline;
}

/// The area that a ring runs around counter-clockwise.
inline double area_of(const Numbers& ring)
{
    double twice = 0;
    for (size_t i = 0, n = ring.size(); i < n; i += 3) {
        const size_t next = i + 3 < n ? i + 3 : 0;
        twice += ring[i] * ring[next + 1] - ring[next] * ring[i + 1];
    }
    return twice / 2;
}

inline double length_of(const Numbers& ring)
{
    double length = 0;
    for (size_t i = 0, n = ring.size(); i < n; i += 3) {
        const size_t next = i + 3 < n ? i + 3 : 0;
        length += std::hypot(ring[next] - ring[i], ring[next + 1] - ring[i + 1]);
    }
    return length;
}

/// A place to the left of the line from a to b has a positive one.
inline double side(const double* a, const double* b, const double* p)
{
    return ((b[0] - a[0]) * (p[1] - a[1]) - (b[1] - a[1]) * (p[0] - a[0])) / std::hypot(b[0] - a[0], b[1] - a[1]);
}

/// Whether two edges of the rings cross by more than rounding and what counts as collapsed.
inline bool do_cross(std::span<const Numbers> rings)
{
    struct Edge {
        const double *a, *b;
    };
    constexpr double kNear = 1e-05;
    std::vector<Edge> edges;
    for (const Numbers& ring : rings)
        for (size_t i = 0; i < ring.size(); i += 3)
            edges.push_back({&ring[i], &ring[i + 3 < ring.size() ? i + 3 : 0]});
    const auto parts = [&](const Edge& e, const Edge& f) {
        const double p = side(e.a, e.b, f.a), q = side(e.a, e.b, f.b);
        return std::min(p, q) < -kNear && std::max(p, q) > kNear;
    };
    for (size_t i = 0; i < edges.size(); ++i)
        for (size_t k = 0; k < i; ++k)
            if (parts(edges[i], edges[k]) && parts(edges[k], edges[i]))
                return true;
    return false;
}

} // namespace korvale::test
