#include "door/internal/edges.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace korvale::door {

Vector<Edge> edges_of(std::span<const Place> ring)
{
    Vector<Edge> edges(ring.size());
    for (size_t i = 0; i < ring.size(); ++i)
        edges[i] = edge_of(ring, i);
    return edges;
}

Place nearest_of(const Edge& e, const Place& p)
{
    const Place along = e.to - e.from;
    const double square = dot(along, along);
    if (!(square > 0))
        return e.from;
    return e.from + std::clamp(dot(p - e.from, along) / square, 0.0, 1.0) * along;
}

EdgeTree::EdgeTree(Vector<Edge> edges) : edges_(std::move(edges))
{
    cut_into_pieces();
    boxes_.resize(2 * std::bit_ceil(pieces_.size() / kLeaf + 1) * 2);
    sort_pieces(1, 0, pieces_.size());
}

void EdgeTree::cut_into_pieces()
{
    // An edge, on average: it bounds the memory. Measured: half and double take the same instructions for bands.
    constexpr double kMostPieces = 16.0;
    double total = 0.0;
    Box all = kNowhere;
    for (const auto& [from, to] : edges_) {
        total += std::hypot(to.x - from.x, to.y - from.y);
        all.cover(from);
        all.cover(to);
    }
    const auto n = static_cast<double>(edges_.size());
    const double size =
        std::max(std::max(all.high_x - all.low_x, all.high_y - all.low_y) / std::sqrt(n), total / (kMostPieces * n));
    for (size_t i = 0; i < edges_.size(); ++i) {
        const auto& [from, to] = edges_[i];
        const double length = std::hypot(to.x - from.x, to.y - from.y);
        const int pieces = length > size ? static_cast<int>(length / size) + 1 : 1;
        Place begin = from;
        for (int k = 1; k <= pieces; ++k) {
            const Place end = k == pieces ? to : from + static_cast<double>(k) / pieces * (to - from);
            pieces_.push_back({box_of({begin, end}), i});
            begin = end;
        }
    }
}

void EdgeTree::sort_pieces(size_t node, size_t first, size_t last)
{
    Box box = kNowhere;
    for (size_t k = first; k < last; ++k)
        box.cover(pieces_[k].box);
    boxes_[node] = box;
    if (last - first <= kLeaf)
        return;
    const size_t middle = first + (last - first) / 2;
    const bool by_x = box.high_x - box.low_x > box.high_y - box.low_y;
    const auto at = [this](size_t k) { return pieces_.begin() + static_cast<std::ptrdiff_t>(k); };
    std::nth_element(at(first), at(middle), at(last), [by_x](const Piece& a, const Piece& b) {
        return by_x ? a.box.low_x + a.box.high_x < b.box.low_x + b.box.high_x
                    : a.box.low_y + a.box.high_y < b.box.low_y + b.box.high_y;
    });
    sort_pieces(2 * node, first, middle);
    sort_pieces(2 * node + 1, middle, last);
}

struct EdgeTree::Search {
    Place p;
    double square; ///< of the distance to beat
    Place found;
    bool is_found;

    /// The square of the distance to a box.
    double away(const Box& box) const
    {
        const double x = std::max({box.low_x - p.x, p.x - box.high_x, 0.0});
        const double y = std::max({box.low_y - p.y, p.y - box.high_y, 0.0});
        return x * x + y * y;
    }
};

void EdgeTree::search(Search& s, size_t node, size_t first, size_t last) const
{
    if (!(s.away(boxes_[node]) < s.square))
        return;
    if (last - first > kLeaf) {
        const size_t middle = first + (last - first) / 2;
        if (s.away(boxes_[2 * node]) <= s.away(boxes_[2 * node + 1])) {
            search(s, 2 * node, first, middle);
            search(s, 2 * node + 1, middle, last);
        } else {
            search(s, 2 * node + 1, middle, last);
            search(s, 2 * node, first, middle);
        }
        return;
    }
    for (size_t k = first; k < last; ++k) {
        if (!(s.away(pieces_[k].box) < s.square))
            continue;
        const Place q = nearest_of(edges_[pieces_[k].edge], s.p), d = q - s.p;
        if (dot(d, d) < s.square) {
            s.square = dot(d, d);
            s.found = q;
            s.is_found = true;
        }
    }
}

std::optional<Place> EdgeTree::nearest(const Place& p, double reach) const
{
    Search s = {p, reach * reach, {}, false};
    search(s, 1, 0, pieces_.size());
    return s.is_found ? std::optional(s.found) : std::nullopt;
}

} // namespace korvale::door
