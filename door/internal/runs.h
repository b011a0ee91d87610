#pragma once

#include <algorithm>

#include "door/internal/boxes.h"
#include "door/internal/edges.h"
#include "door/internal/triangulate.h"

namespace korvale::door {

/// Edges of a ring, one after the other.
struct Run {
    int32_t ring, first, count;
    uint8_t ways;     ///< bits of a monotone chain: all edges go right, left, up, down
    Place across;     ///< of length 1, square to the way from its first place to its last; 0 where these are one
    double low, high; ///< where its places lie along that
};

/// The edges of rings in a tree of boxes of runs, and boxes of these boxes (Antonin Guttman, R-Trees: A Dynamic Index
/// Structure for Spatial Searching, 1984).
class RunTree {
public:
    /// Edges of a run, at most. Measured in instructions: 4 take 5 % more for outlines side by side and 6 % less for
    /// nested ones, 16 take 12 and 15 % more.
    static constexpr int32_t kRun = 8;

    explicit RunTree(const Rings& rings) : rings_(rings) {}

    /// Takes up those rings for which `is_wanted(k)`.
    template <class IsWanted>
    void grow(IsWanted is_wanted)
    {
        Vector<Run> runs;
        Vector<Place> middles;
        first_run_.assign(rings_.size(), 0);
        for (size_t k = 0; k < rings_.size(); ++k)
            if (is_wanted(k))
                add_runs(static_cast<int32_t>(k), runs, middles);
        sort(runs, middles);
    }

    /// The edge from place i of a ring.
    Edge edge(int32_t ring, int32_t i) const
    {
        return edge_of(rings_[static_cast<size_t>(ring)], static_cast<size_t>(i));
    }

    /// Nodes of the tree: node i lies above nodes 2 i and 2 i + 1, the root is node 1, and the leaves are the second
    /// half, the first of them runs.
    const Vector<Box>& nodes() const { return nodes_; }
    size_t first_leaf() const { return nodes_.size() / 2; }
    const Run& run_at(size_t leaf) const { return runs_[leaf - first_leaf()]; }

    /// The boxes of the runs of a ring, in their order.
    std::span<const Box> boxes_of(int32_t ring) const
    {
        const size_t n = rings_[static_cast<size_t>(ring)].size();
        return std::span(boxes_).subspan(static_cast<size_t>(first_run_[static_cast<size_t>(ring)]), runs_for(n));
    }

    /// Calls `see(ring, i, other, k)` for each two edges whose boxes come within `slack` of each other, once: for those
    /// of one ring only if `sees_own`, and not for edges of one monotone chain.
    template <class See>
    void for_each_near_pair(double slack, bool sees_own, const Telling& telling, See see) const
    {
        const auto widened = [&](const Box& b) {
            return Box{b.low_x - slack, b.low_y - slack, b.high_x + slack, b.high_y + slack};
        };
        Vector<std::pair<size_t, size_t>> waiting = {{1, 1}};
        const auto wait = [&](size_t a, size_t b) {
            if (nodes_[a].low_x <= nodes_[a].high_x && widened(nodes_[a]).meets(nodes_[b]))
                waiting.emplace_back(a, b);
        };
        const size_t leaves = first_leaf();
        Asking asking(telling, kStepsPerQuestion);
        double done = 0.0; // leaves are paired with themselves from the last to the first
        while (!waiting.empty()) {
            const auto [a, b] = waiting.back(); // nodes of one height
            waiting.pop_back();
            if (a >= leaves && a == b)
                done = 1.0 - static_cast<double>(a - leaves) / static_cast<double>(leaves);
            asking.step(done);
            if (a < leaves) {
                wait(2 * a, 2 * b);
                wait(2 * a, 2 * b + 1);
                wait(2 * a + 1, 2 * b + 1);
                if (a != b)
                    wait(2 * a + 1, 2 * b);
            } else if (a - leaves < runs_.size()) {
                const Run &run = runs_[a - leaves], &other = runs_[b - leaves];
                if (run.ring != other.ring ? !lie_apart(run, other, slack) && !lie_apart(other, run, slack)
                                           : sees_own && may_meet_itself(run, other)) {
                    const Box box = widened(nodes_[a]), &near = nodes_[b];
                    compare(run, other, slack,
                            {std::max(box.low_x, near.low_x), std::max(box.low_y, near.low_y),
                             std::min(box.high_x, near.high_x), std::min(box.high_y, near.high_y)},
                            see);
                }
            }
        }
    }

private:
    static constexpr int32_t kStepsPerQuestion = 256;

    static size_t runs_for(size_t edges) { return (edges + kRun - 1) / kRun; }

    void add_runs(int32_t ring, Vector<Run>& runs, Vector<Place>& middles);
    void sort(const Vector<Run>& runs, const Vector<Place>& middles);

    /// Of one ring. False for runs that are one, or follow each other, and are monotone in a common direction: such a
    /// chain does not meet itself.
    bool may_meet_itself(const Run& a, const Run& b) const
    {
        const auto n = static_cast<int32_t>(rings_[static_cast<size_t>(a.ring)].size());
        const auto is_next = [&](const Run& p, const Run& q) { return (p.first + p.count) % n == q.first; };
        return (a.ways & b.ways) == 0 || !(a.first == b.first || is_next(a, b) || is_next(b, a));
    }

    /// A separating axis test: whether `run` lies beside the strip around `strip`.
    bool lie_apart(const Run& strip, const Run& run, double slack) const
    {
        constexpr double kRounding = 1e-14; // 90 roundings of products by coordinates of at most 1. Chosen
        const std::span<const Place> places = rings_[static_cast<size_t>(run.ring)];
        const auto first = static_cast<size_t>(run.first), end = first + static_cast<size_t>(run.count);
        double low = dot(strip.across, places[end < places.size() ? end : 0]), high = low;
        for (const Place& p : places.subspan(first, end - first)) {
            const double at = dot(strip.across, p);
            low = std::min(low, at);
            high = std::max(high, at);
        }
        const double gap = std::max(low - strip.high, strip.low - high);
        return gap > slack + kRounding * (1.0 + slack);
    }

    /// Looks at the edges of two runs that come into what is common to their boxes.
    template <class See>
    void compare(const Run& run, const Run& other, double slack, const Box& common, See& see) const
    {
        const std::span<const Place> places = rings_[static_cast<size_t>(run.ring)],
                                     other_places = rings_[static_cast<size_t>(other.ring)];
        struct Near {
            Box box;
            int32_t edge;
        } near[kRun];
        int32_t count = 0;
        for (int32_t k = other.first; k < other.first + other.count; ++k)
            if (const Box box = box_of(edge_of(other_places, static_cast<size_t>(k))); box.meets(common))
                near[count++] = {box, k};
        const bool is_one = run.ring == other.ring && run.first == other.first;
        for (int32_t i = run.first; count > 0 && i < run.first + run.count; ++i) {
            const Box own = box_of(edge_of(places, static_cast<size_t>(i)));
            const Box box = {own.low_x - slack, own.low_y - slack, own.high_x + slack, own.high_y + slack};
            if (box.meets(common))
                for (int32_t k = 0; k < count; ++k)
                    if (box.meets(near[k].box) && (!is_one || i < near[k].edge))
                        see(run.ring, i, other.ring, near[k].edge);
        }
    }

    const Rings& rings_;
    Vector<int32_t> first_run_; ///< of each ring, among `boxes_`
    Vector<Box> boxes_;         ///< of the runs of all rings
    Vector<Run> runs_;          ///< in the order of the leaves
    Vector<Box> nodes_;
};

} // namespace korvale::door
