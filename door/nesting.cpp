// Which rings lie in which.
//
// Below the lowest corner of a ring the nearest edge of another one tells where it lies: in that ring if this has its
// inside above the edge, else in whatever that ring lies in.
//
// Rings may touch, along whole edges too: edges at one place are ordered as if each ring had shrunk a little, the
// smaller ones more. Of two that are equal nothing would be left, so one that repeats another has been left out. No
// comparison rounds. But of edges that touch only within rounding, or a tolerance, the nearest may be the wrong one: a
// ring that touches others, or is above one that does, is put by a place well inside of it.
#include "door/internal/nesting.h"

#include <algorithm>

namespace korvale::door {

namespace {

constexpr int32_t kRingsPerQuestion = 256;

/// An edge that is not upright, from left to right.
struct Slope {
    Edge edge;
    int32_t ring;
    bool is_floor; ///< the inside of the ring is above it

    /// About its height there, between its ends.
    double height_at(double x) const
    {
        const auto& [left, right] = edge;
        const double y = left.y + (x - left.x) / (right.x - left.x) * (right.y - left.y);
        return std::clamp(y, std::min(left.y, right.y), std::max(left.y, right.y));
    }
};

/// The ring whose edge is next below the lowest place of another.
struct Below {
    int32_t ring = -1;
    bool is_inside = false; ///< above that edge
};

class Nesting {
public:
    explicit Nesting(Contours& contours)
        : contours_(contours), tree_(contours.tree()), below_(static_cast<size_t>(contours.count())),
          parents_(static_cast<size_t>(contours.count()), kUnknown),
          depths_(static_cast<size_t>(contours.count()), kUncounted)
    {
    }

    /// Finds what is below each ring. One without area counts as inside of the edges that it lies on.
    void look_below(const Telling& telling)
    {
        Asking asking(telling, kRingsPerQuestion);
        for (int32_t k = 0; k < contours_.count(); ++k) {
            asking.step(static_cast<double>(k) / static_cast<double>(contours_.count()));
            if (contours_.size(k) == 0 || contours_.repeated(k) >= 0)
                continue;
            const Place& p = contours_.place(k, contours_[k].lowest);
            const bool has_area = contours_[k].turn != 0;
            std::optional<Slope> first = has_area ? lowest_edge(k, true) : std::nullopt;
            const bool to_right = first || !has_area;
            if (!to_right)
                first = lowest_edge(k, false);
            const std::optional<Slope> below = edge_below(k, p, to_right, [&](const Slope& e) {
                if (first)
                    return is_below(e, *first);
                const int turn = side(e.edge.from, e.edge.to, p);
                return turn > 0 || (turn == 0 && e.is_floor);
            });
            if (below)
                below_[static_cast<size_t>(k)] = {below->ring, below->is_floor};
        }
    }

    /// Puts rings that touch others, and those above one that does, where a place inside of them is.
    void place_by_insides(std::span<const uint8_t> touches, const Telling& telling)
    {
        const auto touches_others = [&](int32_t k) { return k >= 0 && touches[static_cast<size_t>(k)] != 0; };
        Asking asking(telling, kRingsPerQuestion);
        for (int32_t k = 0; k < contours_.count(); ++k) {
            asking.step(static_cast<double>(k) / static_cast<double>(contours_.count()));
            if (contours_.takes_part(k) && (touches_others(k) || touches_others(below(k).ring)))
                place_by(k, contours_.place_inside(k));
        }
    }

    /// Puts all others into what is below them.
    void put()
    {
        for (int32_t k = 0; k < contours_.count(); ++k)
            put(k);
    }

    /// How many rings each one lies in. Rings that cross may lie in each other: the last one met lies in none then.
    void count_depths()
    {
        constexpr int32_t kCounting = -2;
        Vector<int32_t> chain;
        for (int32_t k = 0; k < contours_.count(); ++k) {
            int32_t i = k;
            for (; i >= 0 && depth(i) == kUncounted; i = parent(i)) {
                depth(i) = kCounting;
                chain.push_back(i);
            }
            int32_t last = i < 0 ? -1 : depth(i);
            if (last == kCounting) {
                parent(chain.back()) = kNone;
                last = -1;
            }
            for (; !chain.empty(); chain.pop_back())
                depth(chain.back()) = ++last;
        }
    }

    int32_t outer_of(int32_t ring)
    {
        if (contours_.size(ring) == 0)
            return -1;
        if (contours_.repeated(ring) >= 0)
            return -2 - contours_.repeated(ring);
        return depth(ring) % 2 == 0 ? ring : parent(ring);
    }

private:
    static constexpr int32_t kNone = -1, kUnknown = -2, kAsked = -3; // parents
    static constexpr int32_t kUncounted = -1;                        // depths

    const Below& below(int32_t ring) const { return below_[static_cast<size_t>(ring)]; }
    int32_t& parent(int32_t ring) { return parents_[static_cast<size_t>(ring)]; }
    int32_t& depth(int32_t ring) { return depths_[static_cast<size_t>(ring)]; }

    // --- By what is below --------------------------------------------------------------------------------------------

    /// The lower one of the edges that go to the right from the lowest place of a ring, or to the left if none does.
    std::optional<Slope> lowest_edge(int32_t ring, bool to_right) const
    {
        const Contour& contour = contours_[ring];
        const Place &p = contours_.place(ring, contour.lowest), &before = contours_.place(ring, contour.before),
                    &after = contours_.place(ring, contour.after);
        const auto goes = [&](const Place& q) { return to_right ? q.x > p.x : q.x < p.x; };
        if (!goes(before) && !goes(after))
            return {};
        const bool both = goes(before) && goes(after);
        const bool is_before = both ? (side(p, before, after) > 0) == to_right : goes(before);
        const Place& q = is_before ? before : after;
        return Slope{to_right ? Edge{p, q} : Edge{q, p}, ring, true};
    }

    /// The highest edge of another ring that is below `p` and goes on to its right, or to its left.
    template <class IsBelow>
    std::optional<Slope> edge_below(int32_t ring, const Place& p, bool to_right, IsBelow is_below_it) const
    {
        std::optional<Slope> best;
        double least = std::numeric_limits<double>::lowest();
        const auto may_hold = [&](const Box& box) {
            return box.low_x <= p.x && p.x <= box.high_x && box.low_y <= p.y && box.high_y >= least;
        };
        size_t waiting[kMostOnTheWay] = {1};
        for (size_t n = 1; n > 0;) {
            const size_t node = waiting[--n];
            if (!may_hold(tree_.nodes()[node]))
                continue;
            if (node < tree_.first_leaf()) {
                const bool left_is_higher = tree_.nodes()[2 * node].high_y > tree_.nodes()[2 * node + 1].high_y;
                waiting[n++] = left_is_higher ? 2 * node + 1 : 2 * node;
                waiting[n++] = left_is_higher ? 2 * node : 2 * node + 1;
                continue;
            }
            const Run& run = tree_.run_at(node);
            for (int32_t i = run.first; run.ring != ring && i < run.first + run.count; ++i) {
                const auto [from, to] = tree_.edge(run.ring, i);
                if (to_right ? (from.x <= p.x) == (to.x <= p.x) : (from.x < p.x) == (to.x < p.x))
                    continue;
                const Slope e = slope(run.ring, i);
                if (is_below_it(e) && (!best || is_below(*best, e))) {
                    best = e;
                    least = e.height_at(p.x) - kNegligible;
                }
            }
        }
        return best;
    }

    /// The edge from place i of a ring, which is not upright.
    Slope slope(int32_t ring, int32_t i) const
    {
        const auto [from, to] = tree_.edge(ring, i);
        const bool goes_right = from.x < to.x;
        return {goes_right ? Edge{from, to} : Edge{to, from}, ring, goes_right == (contours_[ring].turn > 0)};
    }

    /// Of edges that both have a part above, or below, the same part of the x axis.
    bool is_below(const Slope& a, const Slope& b) const
    {
        const int height = height_beside(a.edge, b.edge);
        return height == 0 ? is_below_at_one_place(a, b) : height < 0;
    }

    /// As if every ring had shrunk, the smaller of two more.
    bool is_below_at_one_place(const Slope& a, const Slope& b) const
    {
        if (a.is_floor != b.is_floor)
            return b.is_floor;
        const double p = contours_[a.ring].size, q = contours_[b.ring].size;
        const bool a_is_smaller = p != q ? p < q : a.ring > b.ring;
        return a_is_smaller != a.is_floor;
    }

    /// Puts a ring into what is below it, which is put somewhere first. Only rings that cross may be below each other.
    void put(int32_t ring)
    {
        Vector<int32_t> waiting = {ring};
        while (!waiting.empty()) {
            const int32_t k = waiting.back();
            const Below& next = below(k);
            if (parent(k) == kUnknown && next.ring >= 0 && parent(next.ring) == kUnknown) {
                parent(k) = kAsked;
                waiting.push_back(next.ring);
                continue;
            }
            waiting.pop_back();
            if (parent(k) >= kNone)
                continue;
            const int32_t of_next = next.ring < 0 ? kNone : parent(next.ring);
            parent(k) = of_next >= kNone && next.is_inside ? next.ring : std::max(of_next, kNone);
        }
    }

    // --- By a place inside -------------------------------------------------------------------------------------------

    /// Puts a ring into the smallest of those that go round a place.
    void place_by(int32_t ring, const Place& p)
    {
        Vector<int32_t> below;
        size_t waiting[kMostOnTheWay] = {1};
        for (size_t n = 1; n > 0;) {
            const size_t node = waiting[--n];
            const Box& box = tree_.nodes()[node];
            if (!(box.low_x <= p.x && p.x <= box.high_x && box.low_y <= p.y))
                continue;
            if (node < tree_.first_leaf()) {
                waiting[n++] = 2 * node + 1;
                waiting[n++] = 2 * node;
            } else if (const Run& run = tree_.run_at(node); run.ring != ring && contours_[run.ring].box.holds(p)) {
                contours_.for_each_below(run.ring, run.first, p, [&] { below.push_back(run.ring); });
            }
        }
        std::sort(below.begin(), below.end());
        const auto is_smaller = [&](int32_t a, int32_t b) {
            return std::pair(contours_[a].size, a) < std::pair(contours_[b].size, b);
        };
        int32_t smallest = kNone;
        for (size_t i = 0, end = 0; i < below.size(); i = end) {
            while (end < below.size() && below[end] == below[i])
                ++end;
            if ((end - i) % 2 == 1 && is_smaller(ring, below[i]) && (smallest < 0 || is_smaller(below[i], smallest)))
                smallest = below[i];
        }
        parent(ring) = smallest;
    }

    Contours& contours_;
    const RunTree& tree_;
    Vector<Below> below_;
    Vector<int32_t> parents_, depths_;
};

} // namespace

Vector<int32_t> find_outer(Contours& contours, std::span<const uint8_t> touches, const Telling& telling)
{
    Nesting nesting(contours);
    nesting.look_below(telling.part(0.0, 2.0 / 3.0));
    nesting.place_by_insides(touches, telling.part(2.0 / 3.0, 1.0 / 3.0));
    nesting.put();
    nesting.count_depths();
    Vector<int32_t> outer;
    for (int32_t k = 0; k < contours.count(); ++k)
        outer.push_back(nesting.outer_of(k));
    return outer;
}

} // namespace korvale::door
