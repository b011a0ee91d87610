#include "door/internal/runs.h"

#include <bit>

namespace korvale::door {

void RunTree::add_runs(int32_t ring, Vector<Run>& runs, Vector<Place>& middles)
{
    const auto n = static_cast<int32_t>(rings_[static_cast<size_t>(ring)].size());
    first_run_[static_cast<size_t>(ring)] = static_cast<int32_t>(runs.size());
    for (int32_t first = 0; first < n; first += kRun) {
        const int32_t count = std::min(kRun, n - first);
        Box box = kNowhere;
        int ways = 15;
        for (int32_t i = first; i < first + count; ++i) {
            const auto [a, b] = edge(ring, i);
            box.cover(a);
            box.cover(b);
            ways &= (a.x < b.x ? 1 : 0) | (b.x < a.x ? 2 : 0) | (a.y < b.y ? 4 : 0) | (b.y < a.y ? 8 : 0);
        }
        const Place start = edge(ring, first).from, along = edge(ring, first + count - 1).to - start;
        const double length = std::sqrt(dot(along, along));
        const Place across = length > 0.0 ? Place{-along.y / length, along.x / length} : Place{0.0, 0.0};
        double low = dot(across, start), high = low;
        for (int32_t i = first; i < first + count; ++i) {
            const double at = dot(across, edge(ring, i).to);
            low = std::min(low, at);
            high = std::max(high, at);
        }
        runs.push_back({ring, first, count, static_cast<uint8_t>(ways), across, low, high});
        boxes_.push_back(box);
        middles.push_back({(box.low_x + box.high_x) / 2, (box.low_y + box.high_y) / 2});
    }
}

void RunTree::sort(const Vector<Run>& runs, const Vector<Place>& middles)
{
    nodes_.assign(2 * std::bit_ceil(std::max<size_t>(1, runs.size())), kNowhere);
    for (const size_t i : order_along_curve(middles)) {
        nodes_[first_leaf() + runs_.size()] = boxes_[i];
        runs_.push_back(runs[i]);
    }
    raise(nodes_);
}

} // namespace korvale::door
