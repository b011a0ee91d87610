#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

// A tree of boxes in doubles, written as plainly as one would for the nearest triangle on a ray and nothing else.
namespace korvale::bench {

class PlainTree {
public:
    struct Hit {
        double distance = std::numeric_limits<double>::infinity(); // in lengths of the direction
        int32_t triangle = -1;
    };

    /// Over triangles [.][9], which stay where they are.
    explicit PlainTree(const std::vector<double>& triangles) : triangles_(triangles)
    {
        const auto n = static_cast<int32_t>(triangles.size() / 9);
        std::vector<Entry> entries(static_cast<size_t>(n));
        for (int32_t t = 0; t < n; ++t) {
            entries[static_cast<size_t>(t)].triangle = t;
            for (int v = 0; v < 3; ++v)
                entries[static_cast<size_t>(t)].box.include(corner(t, v), corner(t, v));
        }
        nodes_.resize(1);
        build(entries, 0, n, 0);
        for (const Entry& e : entries)
            numbers_.push_back(e.triangle);
    }

    Hit nearest(const double* origin, const double* direction) const
    {
        Hit hit;
        double inverse[3];
        for (int k = 0; k < 3; ++k)
            inverse[k] = 1 / direction[k];
        struct Waiting {
            int32_t node;
            double entry;
        } waiting[128];
        int n = 0;
        waiting[n++] = {0, nodes_[0].box.entry(origin, inverse, hit.distance)};
        while (n > 0) {
            const Waiting at = waiting[--n];
            if (at.entry >= hit.distance)
                continue;
            const Node& node = nodes_[static_cast<size_t>(at.node)];
            for (int32_t i = node.first; i < node.first + node.count; ++i)
                meet(numbers_[static_cast<size_t>(i)], origin, direction, hit);
            if (node.count > 0)
                continue;
            Waiting a = {node.first, entry_of(node.first, origin, inverse, hit)};
            Waiting b = {node.first + 1, entry_of(node.first + 1, origin, inverse, hit)};
            if (a.entry < b.entry)
                std::swap(a, b);
            for (const Waiting& child : {a, b})
                if (child.entry < hit.distance)
                    waiting[n++] = child;
        }
        return hit;
    }

private:
    static constexpr int32_t kLeaf = 4;
    static constexpr int kBins = 16;
    static constexpr double kInfinity = std::numeric_limits<double>::infinity();

    struct Box {
        double low[3] = {kInfinity, kInfinity, kInfinity}, high[3] = {-kInfinity, -kInfinity, -kInfinity};

        void include(const double* l, const double* h)
        {
            for (int k = 0; k < 3; ++k) {
                low[k] = std::min(low[k], l[k]);
                high[k] = std::max(high[k], h[k]);
            }
        }
        double surface() const
        {
            const double x = high[0] - low[0], y = high[1] - low[1], z = high[2] - low[2];
            return x * y + y * z + z * x;
        }

        /// Where a ray comes to the box; infinity where it does not before `reach`.
        double entry(const double* origin, const double* inverse, double reach) const
        {
            double first = 0, last = reach;
            for (int k = 0; k < 3; ++k) {
                const double a = (low[k] - origin[k]) * inverse[k], b = (high[k] - origin[k]) * inverse[k];
                first = std::max(first, std::min(a, b));
                last = std::min(last, std::max(a, b));
            }
            return first <= last ? first : kInfinity;
        }
    };

    struct Entry {
        Box box;
        int32_t triangle = 0;

        double twice_centre(int k) const { return box.low[k] + box.high[k]; }
    };

    /// A leaf of `count` triangles, or the number of the first of two children.
    struct Node {
        Box box;
        int32_t first = 0, count = 0;
    };

    const double* corner(int32_t t, int v) const { return triangles_.data() + 9 * int64_t{t} + 3 * v; }

    double entry_of(int32_t node, const double* origin, const double* inverse, const Hit& hit) const
    {
        return nodes_[static_cast<size_t>(node)].box.entry(origin, inverse, hit.distance);
    }

    void build(std::vector<Entry>& entries, int32_t first, int32_t last, int32_t node)
    {
        Box box, centres;
        for (int32_t i = first; i < last; ++i) {
            const Entry& e = entries[static_cast<size_t>(i)];
            box.include(e.box.low, e.box.high);
            const double c[3] = {e.twice_centre(0), e.twice_centre(1), e.twice_centre(2)};
            centres.include(c, c);
        }
        nodes_[static_cast<size_t>(node)].box = box;
        if (last - first <= kLeaf) {
            nodes_[static_cast<size_t>(node)].first = first;
            nodes_[static_cast<size_t>(node)].count = last - first;
            return;
        }
        const int32_t middle = divide(entries, first, last, centres);
        const auto child = static_cast<int32_t>(nodes_.size());
        nodes_[static_cast<size_t>(node)].first = child;
        nodes_.resize(nodes_.size() + 2);
        build(entries, first, middle, child);
        build(entries, middle, last, child + 1);
    }

    /// By sums of areas along the longest axis (Wald, On fast Construction of SAH-based Bounding Volume Hierarchies,
    /// 2007).
    static int32_t divide(std::vector<Entry>& entries, int32_t first, int32_t last, const Box& centres)
    {
        int axis = 0;
        for (int k = 1; k < 3; ++k)
            if (centres.high[k] - centres.low[k] > centres.high[axis] - centres.low[axis])
                axis = k;
        const double scale = kBins / (centres.high[axis] - centres.low[axis]);
        const auto bin_of = [&](const Entry& e) {
            return std::min(kBins - 1, static_cast<int>((e.twice_centre(axis) - centres.low[axis]) * scale));
        };
        if (!(scale < kInfinity))
            return first + (last - first) / 2;
        std::array<Box, kBins> boxes;
        std::array<int, kBins> counts = {};
        for (int32_t i = first; i < last; ++i) {
            const Entry& e = entries[static_cast<size_t>(i)];
            const auto b = static_cast<size_t>(bin_of(e));
            boxes[b].include(e.box.low, e.box.high);
            ++counts[b];
        }
        int cut = 1;
        double best = kInfinity;
        for (int c = 1; c < kBins; ++c) {
            Box below, above;
            int n_below = 0, n_above = 0;
            for (int b = 0; b < kBins; ++b) {
                (b < c ? below : above).include(boxes[static_cast<size_t>(b)].low, boxes[static_cast<size_t>(b)].high);
                (b < c ? n_below : n_above) += counts[static_cast<size_t>(b)];
            }
            if (n_below > 0 && n_above > 0 && below.surface() * n_below + above.surface() * n_above < best) {
                best = below.surface() * n_below + above.surface() * n_above;
                cut = c;
            }
        }
        const auto middle = std::partition(entries.begin() + first, entries.begin() + last,
                                           [&](const Entry& e) { return bin_of(e) < cut; });
        return static_cast<int32_t>(middle - entries.begin());
    }

    /// From both sides (Möller, Trumbore, Fast, Minimum Storage Ray/Triangle Intersection, 1997).
    void meet(int32_t t, const double* o, const double* d, Hit& hit) const
    {
        const double *a = corner(t, 0), *b = corner(t, 1), *c = corner(t, 2);
        const double e[3] = {b[0] - a[0], b[1] - a[1], b[2] - a[2]}, f[3] = {c[0] - a[0], c[1] - a[1], c[2] - a[2]};
        const double p[3] = {d[1] * f[2] - d[2] * f[1], d[2] * f[0] - d[0] * f[2], d[0] * f[1] - d[1] * f[0]};
        const double inverse = 1 / (e[0] * p[0] + e[1] * p[1] + e[2] * p[2]);
        const double s[3] = {o[0] - a[0], o[1] - a[1], o[2] - a[2]};
        const double u = (s[0] * p[0] + s[1] * p[1] + s[2] * p[2]) * inverse;
        if (!(u >= 0 && u <= 1))
            return;
        const double q[3] = {s[1] * e[2] - s[2] * e[1], s[2] * e[0] - s[0] * e[2], s[0] * e[1] - s[1] * e[0]};
        const double v = (d[0] * q[0] + d[1] * q[1] + d[2] * q[2]) * inverse;
        if (!(v >= 0 && u + v <= 1))
            return;
        const double distance = (f[0] * q[0] + f[1] * q[1] + f[2] * q[2]) * inverse;
        if (distance >= 0 && distance < hit.distance)
            hit = {distance, t};
    }

    const std::vector<double>& triangles_;
    std::vector<Node> nodes_;
    std::vector<int32_t> numbers_;
};

} // namespace korvale::bench
