// Which outlines lie in which.
//
// Below the lowest corner of an outline the nearest edge of another one tells where it lies: in that outline if this
// has its inside above the edge, else in whatever that outline lies in. The edge is found through boxes of runs of
// edges, and boxes of these boxes (Antonin Guttman, R-Trees: A Dynamic Index Structure for Spatial Searching, 1984).
//
// Outlines may touch, along whole edges too: edges at one place are ordered as if each outline had shrunk a little, the
// smaller ones more. Of two that are equal nothing would be left, so one that repeats another is left out first. No
// comparison rounds.
#include <algorithm>
#include <array>
#include <bit>
#include <optional>
#include <tuple>

#include "door/internal/boxes.h"
#include "door/internal/outlines.h"
#include "door/internal/triangulate.h"

namespace korvale::door {

namespace {

/// An edge that is not upright, from left to right.
struct Edge {
    Place left, right;
    int32_t ring;
    bool is_floor; ///< the inside of the ring is above it

    /// About its height there, between its ends.
    double height_at(double x) const
    {
        const double y = left.y + (x - left.x) / (right.x - left.x) * (right.y - left.y);
        return std::clamp(y, std::min(left.y, right.y), std::max(left.y, right.y));
    }
};

class Nesting {
public:
    explicit Nesting(const Rings& rings)
        : rings_(rings), about_(rings.size()), parents_(rings.size(), kUnknown), depths_(rings.size(), 0),
          repeats_(rings.size(), -1)
    {
    }

    /// For each ring its outer one, -1 where it has no places, and -2 - m where it repeats ring m.
    void find(int32_t* outer)
    {
        for (size_t k = 0; k < rings_.size(); ++k)
            measure(k);
        find_repeats();
        grow_tree();
        look_below();
        for (size_t k = 0; k < rings_.size(); ++k)
            put(static_cast<int32_t>(k));
        for (size_t k = 0; k < rings_.size(); ++k)
            outer[k] = outer_of(k);
    }

private:
    static constexpr int32_t kNone = -1, kUnknown = -2, kAsked = -3;

    struct About {
        Box box = kNowhere;
        double size = 0.0; ///< twice the area
        int32_t lowest = 0;
        int32_t before = 0, after = 0; ///< the nearest places before and after the lowest that are not there too
        int turn = 0;                  ///< 1 counter-clockwise, -1 clockwise, 0 without area
        int32_t below = kNone;         ///< the ring whose edge is next below the lowest place
        bool is_in_below = false;      ///< that edge has the inside above it
    };

    int32_t outer_of(size_t k) const
    {
        if (rings_[k].empty())
            return -1;
        if (repeats_[k] >= 0)
            return -2 - repeats_[k];
        return depths_[k] % 2 == 0 ? static_cast<int32_t>(k) : parents_[k];
    }

    // --- Rings -------------------------------------------------------------------------------------------------------

    const About& about(int32_t ring) const { return about_[static_cast<size_t>(ring)]; }

    void measure(size_t k)
    {
        const std::span<const Place> ring = rings_[k];
        if (ring.empty())
            return;
        constexpr double kRounding = 1e-12;
        About& about = about_[k];
        double sum = 0.0, size = 0.0;
        const Place origin = ring[0];
        Place a = ring.back();
        size_t lowest = 0;
        for (size_t i = 0; i < ring.size(); ++i) {
            const Place b = ring[i];
            about.box.cover(b);
            if (b.y < ring[lowest].y || (b.y == ring[lowest].y && b.x < ring[lowest].x))
                lowest = i;
            const double left = (a.x - origin.x) * (b.y - origin.y), right = (a.y - origin.y) * (b.x - origin.x);
            sum += left - right;
            size += std::fabs(left) + std::fabs(right);
            a = b;
        }
        size_t before = lowest, after = lowest;
        for (size_t i = 1; i < ring.size() && ring[before] == ring[lowest]; ++i)
            before = (lowest + ring.size() - i) % ring.size();
        for (size_t i = 1; i < ring.size() && ring[after] == ring[lowest]; ++i)
            after = (lowest + i) % ring.size();
        about.size = std::fabs(sum);
        about.turn = side(ring[before], ring[lowest], ring[after]);
        if (about.turn == 0 && std::fabs(sum) > kRounding * size)
            about.turn = sign_of(sum);
        about.lowest = static_cast<int32_t>(lowest);
        about.before = static_cast<int32_t>(before);
        about.after = static_cast<int32_t>(after);
    }

    /// The corners of a ring, counter-clockwise from the lowest.
    Vector<Place> corners_of(size_t k) const
    {
        const std::span<const Place> ring = rings_[k];
        const auto n = static_cast<int64_t>(ring.size());
        const int64_t first = about_[k].lowest;
        const int64_t step = about_[k].turn < 0 ? n - 1 : 1;
        Vector<Place> corners = {ring[static_cast<size_t>(first)]};
        for (int64_t i = 1, at = first; i <= n; ++i) {
            at = (at + step) % n;
            const Place& p = ring[static_cast<size_t>(at)];
            while (corners.size() > 1 && side(corners[corners.size() - 2], corners.back(), p) == 0)
                corners.pop_back();
            if (p != corners.back())
                corners.push_back(p);
        }
        return corners; // the first one closes it
    }

    /// Rings that go round the same area, whichever way, are looked for among those with the same bounds.
    void find_repeats()
    {
        Vector<std::pair<Box, int32_t>> boxes;
        for (size_t k = 0; k < rings_.size(); ++k)
            if (about_[k].turn != 0)
                boxes.emplace_back(about_[k].box, static_cast<int32_t>(k));
        const auto numbers = [](const Box& b) { return std::array{b.low_x, b.low_y, b.high_x, b.high_y}; };
        std::ranges::sort(boxes, [&](const auto& a, const auto& b) {
            return std::pair(numbers(a.first), a.second) < std::pair(numbers(b.first), b.second);
        });
        for (size_t first = 0, end = 0; first < boxes.size(); first = end) {
            while (end < boxes.size() && boxes[end].first == boxes[first].first)
                ++end;
            if (end - first > 1)
                find_repeats(std::span(boxes).subspan(first, end - first));
        }
    }

    void find_repeats(std::span<const std::pair<Box, int32_t>> boxes)
    {
        Vector<std::pair<Vector<Place>, int32_t>> rings;
        for (const auto& [box, k] : boxes)
            rings.emplace_back(corners_of(static_cast<size_t>(k)), k);
        const auto is_earlier = [](const auto& a, const auto& b) {
            const auto [p, q] = std::ranges::mismatch(a.first, b.first);
            if (p != a.first.end() && q != b.first.end())
                return is_before(*p, *q);
            return a.first.size() == b.first.size() ? a.second < b.second : a.first.size() < b.first.size();
        };
        std::ranges::sort(rings, is_earlier);
        for (size_t i = 1, first = 0; i < rings.size(); ++i)
            if (rings[i].first == rings[first].first)
                repeats_[static_cast<size_t>(rings[i].second)] = rings[first].second;
            else
                first = i;
    }

    // --- Edges -------------------------------------------------------------------------------------------------------

    const Place& place(int32_t ring, int32_t i) const
    {
        return rings_[static_cast<size_t>(ring)][static_cast<size_t>(i)];
    }
    int32_t size(int32_t ring) const { return static_cast<int32_t>(rings_[static_cast<size_t>(ring)].size()); }

    /// The edge from place i of a ring, which is not upright.
    Edge edge(int32_t ring, int32_t i) const
    {
        const Place &a = place(ring, i), &b = place(ring, i + 1 < size(ring) ? i + 1 : 0);
        const bool is_along = (a.x < b.x) == (about(ring).turn > 0);
        return a.x < b.x ? Edge{a, b, ring, is_along} : Edge{b, a, ring, is_along};
    }

    /// Of edges that both have a part above, or below, the same part of the x axis.
    bool is_below(const Edge& a, const Edge& b) const
    {
        const bool a_is_later = a.left.x > b.left.x;
        const Edge &later = a_is_later ? a : b, &earlier = a_is_later ? b : a;
        int turn = side(earlier.left, earlier.right, later.left);
        if (turn == 0)
            turn = later.right.x > earlier.right.x ? -side(later.left, later.right, earlier.right)
                                                   : side(earlier.left, earlier.right, later.right);
        return turn == 0 ? is_below_at_one_place(a, b) : (turn < 0) == a_is_later;
    }

    /// As if every ring had shrunk, the smaller of two more.
    bool is_below_at_one_place(const Edge& a, const Edge& b) const
    {
        if (a.is_floor != b.is_floor)
            return b.is_floor;
        const double p = about(a.ring).size, q = about(b.ring).size;
        const bool a_is_smaller = p != q ? p < q : a.ring > b.ring;
        return a_is_smaller != a.is_floor;
    }

    // --- Boxes -------------------------------------------------------------------------------------------------------

    /// Edges of a ring, one after the other.
    struct Run {
        int32_t ring, first, count;
    };

    void grow_tree()
    {
        Vector<Run> runs;
        Vector<Box> boxes;
        Vector<Place> middles;
        for (size_t k = 0; k < rings_.size(); ++k) {
            if (about_[k].turn == 0 || repeats_[k] >= 0)
                continue;
            const auto ring = static_cast<int32_t>(k);
            const int32_t n = size(ring);
            for (int32_t first = 0; first < n; first += kRun) {
                const int32_t count = std::min(kRun, n - first);
                Box box = kNowhere;
                for (int32_t i = first; i <= first + count; ++i)
                    box.cover(place(ring, i < n ? i : 0));
                runs.push_back({ring, first, count});
                boxes.push_back(box);
                middles.push_back({(box.low_x + box.high_x) / 2, (box.low_y + box.high_y) / 2});
            }
        }
        nodes_.assign(2 * std::bit_ceil(std::max<size_t>(1, runs.size())), kNowhere);
        for (const size_t i : order_along_curve(middles)) {
            nodes_[nodes_.size() / 2 + runs_.size()] = boxes[i];
            runs_.push_back(runs[i]);
        }
        raise(nodes_);
    }

    /// The highest edge of another ring that is below `p` and goes on to its right, or to its left.
    template <class IsBelow>
    std::optional<Edge> edge_below(int32_t ring, const Place& p, bool to_right, IsBelow is_below_it) const
    {
        constexpr double kRounding = 1e-12; // of heights, whose coordinates are at most 1
        std::optional<Edge> best;
        double least = std::numeric_limits<double>::lowest();
        const auto may_hold = [&](const Box& box) {
            return box.low_x <= p.x && p.x <= box.high_x && box.low_y <= p.y && box.high_y >= least;
        };
        size_t waiting[64] = {1};
        for (size_t n = 1; n > 0;) {
            const size_t node = waiting[--n];
            if (!may_hold(nodes_[node]))
                continue;
            if (node < nodes_.size() / 2) {
                const bool left_is_higher = nodes_[2 * node].high_y > nodes_[2 * node + 1].high_y;
                waiting[n++] = left_is_higher ? 2 * node + 1 : 2 * node;
                waiting[n++] = left_is_higher ? 2 * node : 2 * node + 1;
                continue;
            }
            const Run& run = runs_[node - nodes_.size() / 2];
            for (int32_t i = run.first; run.ring != ring && i < run.first + run.count; ++i) {
                const double x = place(run.ring, i).x, next_x = place(run.ring, i + 1 < size(run.ring) ? i + 1 : 0).x;
                if (to_right ? (x <= p.x) == (next_x <= p.x) : (x < p.x) == (next_x < p.x))
                    continue;
                const Edge e = edge(run.ring, i);
                if (is_below_it(e) && (!best || is_below(*best, e))) {
                    best = e;
                    least = e.height_at(p.x) - kRounding;
                }
            }
        }
        return best;
    }

    // --- Nesting -----------------------------------------------------------------------------------------------------

    /// The lower one of the edges that go to the right from the lowest place of a ring, or to the left if none does.
    std::optional<Edge> lowest_edge(int32_t ring, bool to_right) const
    {
        const Place &p = place(ring, about(ring).lowest), &before = place(ring, about(ring).before);
        const Place& after = place(ring, about(ring).after);
        const auto goes = [&](const Place& q) { return to_right ? q.x > p.x : q.x < p.x; };
        if (!goes(before) && !goes(after))
            return {};
        const bool both = goes(before) && goes(after);
        const bool is_before = both ? (side(p, before, after) > 0) == to_right : goes(before);
        const Place& q = is_before ? before : after;
        return to_right ? Edge{p, q, ring, true} : Edge{q, p, ring, true};
    }

    /// A ring without area counts as inside of the edges that it lies on.
    void look_below()
    {
        for (int32_t k = 0; k < static_cast<int32_t>(rings_.size()); ++k) {
            if (size(k) == 0 || repeats_[static_cast<size_t>(k)] >= 0)
                continue;
            About& ring = about_[static_cast<size_t>(k)];
            const Place& p = place(k, ring.lowest);
            const bool has_area = ring.turn != 0;
            std::optional<Edge> first = has_area ? lowest_edge(k, true) : std::nullopt;
            const bool to_right = first || !has_area;
            if (!to_right)
                first = lowest_edge(k, false);
            const std::optional<Edge> below = edge_below(k, p, to_right, [&](const Edge& e) {
                if (first)
                    return is_below(e, *first);
                const int turn = side(e.left, e.right, p);
                return turn > 0 || (turn == 0 && e.is_floor);
            });
            if (below) {
                ring.below = below->ring;
                ring.is_in_below = below->is_floor;
            }
        }
    }

    /// Puts a ring into what is below it, which is put somewhere first. Only rings that cross may be below each other.
    void put(int32_t ring)
    {
        Vector<int32_t> waiting = {ring};
        while (!waiting.empty()) {
            const int32_t k = waiting.back();
            int32_t& parent = parents_[static_cast<size_t>(k)];
            const int32_t below = about(k).below;
            if (parent == kUnknown && below >= 0 && parents_[static_cast<size_t>(below)] == kUnknown) {
                parent = kAsked;
                waiting.push_back(below);
                continue;
            }
            waiting.pop_back();
            if (parent >= kNone)
                continue;
            const int32_t of_below = below < 0 ? kNone : parents_[static_cast<size_t>(below)];
            parent = of_below >= kNone && about(k).is_in_below ? below : std::max(of_below, kNone);
            depths_[static_cast<size_t>(k)] = parent < 0 ? 0 : depths_[static_cast<size_t>(parent)] + 1;
        }
    }

    static constexpr int32_t kRun = 8;

    const Rings& rings_;
    Vector<About> about_;
    Vector<int32_t> parents_, depths_, repeats_;
    Vector<Run> runs_;  // in the order of the leaves
    Vector<Box> nodes_; // of the tree over them
};

} // namespace
} // namespace korvale::door

using namespace korvale::door;

korvale_status korvale_shapes(const korvale_points* outlines, int64_t count, int32_t* outer, korvale_error* error)
{
    return answer(error, "korvale_shapes", [&] {
        const OutlinesIn in(outlines, count, 0);
        if (count > 0)
            require(outer, "outer");
        double largest = 0.0;
        size_t places = 0;
        for (size_t k = 0; k < in.size(); ++k) {
            largest = std::max(largest, largest_of(in[k]));
            places += in[k].size();
        }
        Rings rings;
        rings.places.reserve(places);
        for (size_t k = 0; k < in.size(); ++k)
            rings.add(in[k], {0, 1, scale_to_one(largest)});
        Nesting(rings).find(outer);
    });
}
