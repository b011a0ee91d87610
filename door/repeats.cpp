// Rings that are there more than once.
//
// Rings that go round the same area have the same bounds and, but for where they begin and which way they run, the same
// corners. Corners from the lowest on, counter-clockwise, without points on straight edges, are the same list then.
//
// Within a tolerance two rings are one if each lies along the edges of the other. Their bounds differ by no more than
// twice the tolerance then, so the low corners of these are in one cell as large as that, or in neighbours.
#include "door/internal/repeats.h"

#include <algorithm>
#include <array>

#include "door/internal/touching.h"

namespace korvale::door {

namespace {

class Repeats {
public:
    Repeats(const Rings& rings, std::span<const Contour> contours)
        : rings_(rings), contours_(contours), repeats_(rings.size(), -1)
    {
    }

    /// Rings with the same corners are looked for among those with the same bounds.
    void find_same()
    {
        Vector<std::pair<Box, int32_t>> boxes;
        for (size_t k = 0; k < rings_.size(); ++k)
            if (contours_[k].turn != 0)
                boxes.emplace_back(contours_[k].box, static_cast<int32_t>(k));
        const auto numbers = [](const Box& b) { return std::array{b.low_x, b.low_y, b.high_x, b.high_y}; };
        std::sort(boxes.begin(), boxes.end(), [&](const auto& a, const auto& b) {
            return std::pair(numbers(a.first), a.second) < std::pair(numbers(b.first), b.second);
        });
        for (size_t first = 0, end = 0; first < boxes.size(); first = end) {
            while (end < boxes.size() && boxes[end].first == boxes[first].first)
                ++end;
            if (end - first > 1)
                find_same(std::span(boxes).subspan(first, end - first));
        }
    }

    /// Rings that lie along each other are looked for among those with nearly the same bounds.
    void find_near(double tolerance, const Telling& telling)
    {
        struct Cell {
            double x, y;
            int32_t ring;
            auto operator<=>(const Cell&) const = default;
        };
        const auto cell_of = [&](int32_t k) {
            const Box& box = contour(k).box;
            return Cell{std::floor(0.5 * box.low_x / tolerance), std::floor(0.5 * box.low_y / tolerance), k};
        };
        Vector<Cell> cells;
        for (int32_t k = 0; k < static_cast<int32_t>(rings_.size()); ++k)
            if (contour(k).turn != 0 && repeated(k) < 0)
                cells.push_back(cell_of(k));
        Vector<Cell> sorted = cells;
        std::sort(sorted.begin(), sorted.end());
        Asking asking(telling, 1);
        for (const Cell& cell : cells) {
            asking.step(static_cast<double>(&cell - cells.data()) / static_cast<double>(cells.size()));
            std::optional<EdgeTree> edges;
            for (const double x : {-1.0, 0.0, 1.0}) {
                const Cell low = {cell.x + x, cell.y - 1, 0}, high = {cell.x + x, cell.y + 1, cell.ring};
                for (auto i = std::lower_bound(sorted.begin(), sorted.end(), low); i != sorted.end() && *i < high; ++i)
                    if (i->ring < cell.ring)
                        compare(i->ring, cell.ring, tolerance, edges);
            }
        }
    }

    /// For each ring the first of those that hang together.
    Vector<int32_t> firsts()
    {
        for (int32_t k = 0; k < static_cast<int32_t>(rings_.size()); ++k)
            if (const int32_t first = first_of(k); first != k)
                repeated(k) = first;
        return std::move(repeats_);
    }

private:
    const Contour& contour(int32_t ring) const { return contours_[static_cast<size_t>(ring)]; }
    std::span<const Place> places(int32_t ring) const { return rings_[static_cast<size_t>(ring)]; }

    /// A ring that one repeats, which may repeat another.
    int32_t& repeated(int32_t ring) { return repeats_[static_cast<size_t>(ring)]; }

    /// The first ring of those that hang together by repeating each other.
    int32_t first_of(int32_t ring)
    {
        for (; repeated(ring) >= 0; ring = repeated(ring))
            if (const int32_t next = repeated(repeated(ring)); next >= 0)
                repeated(ring) = next;
        return ring;
    }

    // --- The same corners --------------------------------------------------------------------------------------------

    void find_same(std::span<const std::pair<Box, int32_t>> boxes)
    {
        Vector<std::pair<Vector<Place>, int32_t>> rings;
        for (const auto& [box, k] : boxes)
            rings.emplace_back(corners_of(k), k);
        const auto is_earlier = [](const auto& a, const auto& b) {
            const auto [p, q] = std::mismatch(a.first.begin(), a.first.end(), b.first.begin(), b.first.end());
            if (p != a.first.end() && q != b.first.end())
                return is_before(*p, *q);
            return a.first.size() == b.first.size() ? a.second < b.second : a.first.size() < b.first.size();
        };
        std::sort(rings.begin(), rings.end(), is_earlier);
        for (size_t i = 1, first = 0; i < rings.size(); ++i)
            if (rings[i].first == rings[first].first)
                repeated(rings[i].second) = rings[first].second;
            else
                first = i;
    }

    /// The corners of a ring, counter-clockwise from the lowest.
    Vector<Place> corners_of(int32_t k) const
    {
        const std::span<const Place> ring = places(k);
        const auto n = static_cast<int64_t>(ring.size());
        const int64_t first = contour(k).lowest;
        const int64_t step = contour(k).turn < 0 ? n - 1 : 1;
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

    // --- Within a tolerance ------------------------------------------------------------------------------------------

    /// Looks at a ring and one after it, whose edges are kept for the next look.
    void compare(int32_t earlier, int32_t ring, double tolerance, std::optional<EdgeTree>& edges)
    {
        if (!have_near_bounds(contour(ring).box, contour(earlier).box, tolerance))
            return;
        const int32_t first = first_of(earlier), other_first = first_of(ring);
        if (first == other_first)
            return;
        if (!edges)
            edges.emplace(edges_of(places(ring)));
        if (lies_along(places(earlier), *edges, tolerance) &&
            lies_along(places(ring), EdgeTree(edges_of(places(earlier))), tolerance))
            repeated(std::max(first, other_first)) = std::min(first, other_first);
    }

    static bool have_near_bounds(const Box& a, const Box& b, double tolerance)
    {
        const double far = 2 * tolerance;
        return std::fabs(a.low_x - b.low_x) <= far && std::fabs(a.low_y - b.low_y) <= far &&
               std::fabs(a.high_x - b.high_x) <= far && std::fabs(a.high_y - b.high_y) <= far;
    }

    /// Whether a ring lies along the edges of another: its corners within twice the tolerance of them, and its edges
    /// within reach of them halfway between the places at which corners of the other lie beside them.
    static bool lies_along(std::span<const Place> ring, const EdgeTree& edges, double tolerance)
    {
        const double reach = std::nextafter(tolerance, 2 * tolerance);
        const auto is_near = [&](const Place& p, double distance) { return edges.nearest(p, distance).has_value(); };
        Vector<double> shares;
        for (size_t i = 0; i < ring.size(); ++i) {
            const Edge e = edge_of(ring, i);
            const Place along = e.to - e.from;
            const double half = 0.5 * std::sqrt(dot(along, along));
            if (half < reach && is_near(e.from + 0.5 * along, reach - half))
                continue;
            if (!is_near(e.from, 2 * reach) || !is_near(e.to, 2 * reach))
                return false;
            shares.assign({0.0, 1.0});
            edges.for_each_near(e, reach, [&](size_t k) { add_shares(e, edges[k], slack_of(tolerance), shares); });
            std::sort(shares.begin(), shares.end());
            for (size_t k = 1; k < shares.size(); ++k) {
                const double length = 2 * half * (shares[k] - shares[k - 1]);
                if (length > 0.0 &&
                    !is_near(e.from + 0.5 * (shares[k - 1] + shares[k]) * along, reach_of(length, reach)))
                    return false;
            }
        }
        return true;
    }

    const Rings& rings_;
    std::span<const Contour> contours_;
    Vector<int32_t> repeats_;
};

} // namespace

Vector<int32_t> find_repeats(const Rings& rings, std::span<const Contour> contours, double tolerance,
                             const Telling& telling)
{
    Repeats repeats(rings, contours);
    repeats.find_same();
    if (tolerance > 0.0)
        repeats.find_near(tolerance, telling);
    return repeats.firsts();
}

} // namespace korvale::door
