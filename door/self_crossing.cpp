// Outlines that cross themselves.
//
// A ring that touches itself and does not cross has everywhere the outside on one side, which it goes round no time,
// and what it goes round once on the other. Where it crosses both numbers change. So a ring is cut where its edges
// meet, and for each piece the number on its right is counted: 0 all along one that runs counter-clockwise, else -1.
//
// A crossing may be by less than the slack, as where edges that go there and back at one place come to cross by
// rounding. It counts where a piece beyond it is farther than that from all of the ring but its own stretch.
#include "door/internal/self_crossing.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>

#include "door/internal/boxes.h"
#include "door/internal/edges.h"

namespace korvale::door {

namespace {

Place middle_of(const Edge& e)
{
    return e.from + 0.5 * (e.to - e.from);
}

/// A ring in pieces.
class Pieces {
public:
    Pieces(std::span<const Place> ring, std::span<const EdgePair> meeting, int32_t lowest, double slack, Asking& asking)
        : slack_(slack), edges_(cut(ring, meeting, lowest))
    {
        leaves_.assign(2 * std::bit_ceil(size() / kLeaf + 1), kNowhere);
        for (size_t k = 0; k < size(); ++k) {
            leaves_[leaves_.size() / 2 + k / kLeaf].cover(edges_[k].from);
            leaves_[leaves_.size() / 2 + k / kLeaf].cover(edges_[k].to);
        }
        raise(leaves_);
        rights_.resize(size());
        for (size_t k = 0; k < size(); ++k) {
            asking.step(0.0);
            rights_[k] = right_of(k);
        }
    }

    size_t size() const { return edges_.size(); }
    const Place& start(size_t k) const { return edges_[k].from; }

    /// How many times the ring goes round what is on the right of a piece, counter-clockwise.
    int right(size_t k) const { return rights_[k]; }

    /// Whether a piece is beyond the slack of all but its own stretch, which ends where the number on the right
    /// changes.
    bool is_free(size_t k) const
    {
        const Place p = middle_of(edges_[k]);
        const auto is_near = [&](const Place& q) { return dot(q - p, q - p) <= slack_ * slack_; };
        size_t after = 0, before = 0; // pieces of the stretch that begin near
        for (; after < size() && is_near(edges_[(k + after) % size()].to); ++after)
            if (rights_[(k + after + 1) % size()] != rights_[k])
                return false;
        for (; before < size() && is_near(edges_[(k + size() - before) % size()].from); ++before)
            if (rights_[(k + size() - before - 1) % size()] != rights_[k])
                return false;
        bool is_alone = true;
        edges_.for_each_near({p, p}, slack_, [&](size_t i) {
            const size_t ahead = (i + size() - k) % size();
            if (ahead > after && ahead + before < size() && is_near(nearest_of(edges_[i], p)))
                is_alone = false;
        });
        return is_alone;
    }

private:
    /// Pieces of a leaf, at most. Measured: 4 take 2 % less instructions, 16 take 5 % more.
    static constexpr size_t kLeaf = 8;

    /// The edges from the lowest place on, cut where others meet them. Those without length are left out.
    static EdgeTree cut(std::span<const Place> ring, std::span<const EdgePair> meeting, int32_t lowest)
    {
        const size_t n = ring.size();
        Vector<EdgePair> both(meeting.begin(), meeting.end());
        for (const auto& [i, k] : meeting)
            both.emplace_back(k, i);
        std::sort(both.begin(), both.end());
        Vector<Edge> pieces;
        Vector<double> shares;
        for (size_t step = 0; step < n; ++step) {
            const auto i = static_cast<int32_t>((static_cast<size_t>(lowest) + step) % n);
            const Edge e = edge_of(ring, static_cast<size_t>(i));
            const Place along = e.to - e.from;
            const double square = dot(along, along);
            if (!(square > 0.0))
                continue;
            shares.assign({0.0, 1.0});
            for (auto pair = std::lower_bound(both.begin(), both.end(), EdgePair{i, 0});
                 pair != both.end() && pair->first == i; ++pair) {
                const Edge f = edge_of(ring, static_cast<size_t>(pair->second));
                const Place across = f.to - f.from;
                if (const double slant = cross(along, across); slant != 0.0)
                    shares.push_back(std::clamp(cross(f.from - e.from, across) / slant, 0.0, 1.0));
                for (const Place& p : {f.from, f.to})
                    if (side(e.from, e.to, p) == 0 && box_of(e).holds(p))
                        shares.push_back(std::clamp(dot(p - e.from, along) / square, 0.0, 1.0));
            }
            std::sort(shares.begin(), shares.end());
            Place from = e.from;
            for (size_t k = 1; k < shares.size(); ++k)
                if (const Place to = shares[k] < 1.0 ? e.from + shares[k] * along : e.to; to != from) {
                    pieces.push_back({from, to});
                    from = to;
                }
        }
        return EdgeTree(std::move(pieces));
    }

    /// The pieces below the middle of one that go right less those that go left are what goes round the place below it.
    /// Rounding puts a middle beside its piece, and what lies below a steep one then may be any part of the ring. So
    /// steep ones are turned by a quarter, left is down then: what differs is as near as the rounding.
    int right_of(size_t k) const
    {
        const Edge& piece = edges_[k];
        const Place p = middle_of(piece), along = piece.to - piece.from;
        const bool is_steep = std::fabs(along.y) > std::fabs(along.x);
        const auto x_of = [is_steep](const Place& q) { return is_steep ? -q.y : q.x; };
        const double x = x_of(p), y = is_steep ? p.x : p.y;
        int below = 0;
        size_t waiting[kMostOnTheWay] = {1};
        for (size_t n = 1; n > 0;) {
            const size_t node = waiting[--n];
            const Box& box = leaves_[node];
            const auto [low_x, high_x, low_y] = is_steep ? std::array{-box.high_y, -box.low_y, box.low_x}
                                                         : std::array{box.low_x, box.high_x, box.low_y};
            if (!(low_x <= x && x < high_x && low_y <= y))
                continue;
            if (node < leaves_.size() / 2) {
                waiting[n++] = 2 * node + 1;
                waiting[n++] = 2 * node;
                continue;
            }
            const size_t first = (node - leaves_.size() / 2) * kLeaf;
            for (size_t i = first; i < std::min(first + kLeaf, size()); ++i) {
                const auto& [from, to] = edges_[i];
                const double from_x = x_of(from), to_x = x_of(to);
                if (i != k && (from_x <= x) != (to_x <= x) && side(from, to, p) == (from_x < to_x ? 1 : -1))
                    below += from_x < to_x ? 1 : -1;
            }
        }
        return x_of(piece.from) < x_of(piece.to) ? below : below - 1;
    }

    double slack_;
    EdgeTree edges_;
    Vector<Box> leaves_; // boxes of pieces one after the other, and boxes over them
    Vector<int> rights_;
};

} // namespace

bool do_meet(std::span<const Place> ring, int32_t i, int32_t k)
{
    const size_t n = ring.size(), a = static_cast<size_t>(i), b = static_cast<size_t>(k);
    const size_t after_a = a + 1 < n ? a + 1 : 0, after_b = b + 1 < n ? b + 1 : 0;
    if (a == b || after_a == b || after_b == a)
        return false;
    const Edge e = {ring[a], ring[after_a]}, f = {ring[b], ring[after_b]};
    if (e.from == e.to || f.from == f.to)
        return false;
    const int from = side(e.from, e.to, f.from), to = side(e.from, e.to, f.to);
    if (from * to > 0)
        return false;
    if (from == 0 && to == 0)
        return box_of(e).holds(f.from) || box_of(e).holds(f.to) || box_of(f).holds(e.from);
    return side(f.from, f.to, e.from) * side(f.from, f.to, e.to) <= 0;
}

std::optional<Place> find_self_crossing(std::span<const Place> ring, std::span<const EdgePair> meeting, int32_t lowest,
                                        double slack, const Telling& telling)
{
    constexpr int32_t kPiecesPerQuestion = 256;
    Asking asking(telling, kPiecesPerQuestion);
    const Pieces pieces(ring, meeting, lowest, slack, asking);
    std::optional<int> right; // of all free pieces
    for (size_t k = 0, first = 0; k < pieces.size(); ++k) {
        asking.step(1.0);
        if (k > 0 && pieces.right(k) != pieces.right(k - 1))
            first = k;
        if (pieces.right(k) == right || !pieces.is_free(k))
            continue;
        if (right || (pieces.right(k) != 0 && pieces.right(k) != -1))
            return pieces.start(first);
        right = pieces.right(k);
    }
    return std::nullopt;
}

} // namespace korvale::door
