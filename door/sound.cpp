// Rings that a motion may have turned inside out: their sides have passed through each other where they should have
// met.
#include "door/internal/sound.h"

#include <algorithm>
#include <cmath>

#include "border/internal/sweep.h"
#include "door/internal/edges.h"
#include "door/internal/self_crossing.h"

namespace korvale::door {
namespace {

double length_of(std::span<const Place> ring)
{
    double length = 0.0;
    for (size_t i = 0; i < ring.size(); ++i) {
        const auto [from, to] = edge_of(ring, i);
        const Place d = to - from;
        length += std::sqrt(dot(d, d));
    }
    return length;
}

bool does_cross(std::span<const Place> ring, const Telling& telling)
{
    constexpr size_t kMostAPlace = 4; // pairs of edges that are kept: of a scribble not all. Chosen
    constexpr int32_t kEdgesPerQuestion = 256;
    const size_t n = ring.size();
    const EdgeTree tree(edges_of(ring));
    Vector<EdgePair> meeting;
    Asking asking(telling, kEdgesPerQuestion);
    for (size_t i = 0; i < n && meeting.size() < kMostAPlace * n; ++i) {
        asking.step(0.0);
        tree.for_each_near(i, [&](size_t k) {
            const auto a = static_cast<int32_t>(i), b = static_cast<int32_t>(k);
            if (k < i && do_meet(ring, a, b))
                meeting.emplace_back(b, a);
        });
    }
    if (meeting.empty())
        return false;
    std::sort(meeting.begin(), meeting.end());
    meeting.erase(std::unique(meeting.begin(), meeting.end()), meeting.end());
    const auto lowest = std::min_element(ring.begin(), ring.end(), [](const Place& a, const Place& b) {
        return a.y < b.y || (a.y == b.y && a.x < b.x);
    });
    return find_self_crossing(ring, meeting, static_cast<int32_t>(lowest - ring.begin()), 2.0 * border::kHair, telling)
        .has_value();
}

} // namespace

double area_of(std::span<const Place> ring)
{
    double twice = 0.0;
    for (size_t i = 1; i + 1 < ring.size(); ++i)
        twice += cross(ring[i] - ring[0], ring[i + 1] - ring[0]);
    return 0.5 * std::fabs(twice) > border::kHair * length_of(ring) ? 0.5 * twice : 0.0;
}

bool is_sound(std::span<const Place> ring, double before, const Telling& telling)
{
    const double area = area_of(ring);
    return (area == 0.0 || area * before > 0.0) && !does_cross(ring, telling);
}

} // namespace korvale::door
