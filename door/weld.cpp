// Points at one place, found in a table of their numbers that is at most half full.
#include "door/internal/weld.h"

#include <bit>

namespace korvale::door {
namespace {

/// Mixes the bits of a place, the same for 0 and -0 (Sebastiano Vigna's splitmix64, 2015).
uint64_t hash_of(const Point& p)
{
    uint64_t h = 0;
    for (int k = 0; k < 3; ++k) {
        h += platform::bit_cast<uint64_t>(p[k] + 0.0) + 0x9e3779b97f4a7c15u;
        h = (h ^ (h >> 30)) * 0xbf58476d1ce4e5b9u;
        h = (h ^ (h >> 27)) * 0x94d049bb133111ebu;
        h ^= h >> 31;
    }
    return h;
}

} // namespace

Vector<int32_t> first_at_place(std::span<const Point> points, const Telling& telling)
{
    constexpr int32_t kPointsPerQuestion = 1 << 16;
    Asking asking(telling, kPointsPerQuestion);
    const size_t mask = std::bit_ceil(2 * points.size() + 2) - 1;
    Vector<int32_t> table(mask + 1, -1), first(points.size());
    for (size_t i = 0; i < points.size(); ++i) {
        size_t at = hash_of(points[i]) & mask;
        while (table[at] >= 0 && points[static_cast<size_t>(table[at])] != points[i])
            at = (at + 1) & mask;
        if (table[at] < 0)
            table[at] = static_cast<int32_t>(i);
        first[i] = table[at];
        asking.step(static_cast<double>(i) / static_cast<double>(points.size()));
    }
    return first;
}

} // namespace korvale::door
