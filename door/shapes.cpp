// Which outlines lie in which.
//
// Below the lowest corner of an outline the nearest edge of another one tells where it lies: in that outline if this
// has its inside above the edge, else in whatever that outline lies in.
//
// Outlines may touch, along whole edges too: edges at one place are ordered as if each outline had shrunk a little, the
// smaller ones more. Of two that are equal nothing would be left, so one that repeats another is left out first. No
// comparison rounds.
//
// Outlines cross where edges do, or where pieces of edges that touch another outline lie on both sides of it. Whatever
// is within the tolerance of an outline, or rounding, lies on it. Of edges that touch but for that the nearest may be
// the wrong one, so an outline that touches others, or is above one that does, is put by a place well inside of it.
// Those whose own edges meet are looked at by themselves.
#include <algorithm>
#include <array>
#include <optional>
#include <tuple>

#include "door/internal/join.h"
#include "door/internal/offset.h"
#include "door/internal/outlines.h"
#include "door/internal/runs.h"
#include "door/internal/self_crossing.h"

namespace korvale::door {

namespace {

/// An edge that is not upright, from left to right.
struct Slope {
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

/// Two rings that cross, or twice one that crosses itself, and where.
struct Crossing {
    int32_t first, second;
    Place place;
};

class Nesting {
public:
    Nesting(const Rings& rings, double tolerance, bool allows_crossing, const Telling& telling)
        : rings_(rings), tolerance_(tolerance), allows_crossing_(allows_crossing), telling_(telling),
          about_(rings.size()), parents_(rings.size(), kUnknown), depths_(rings.size(), -1), repeats_(rings.size(), -1),
          crosses_(rings.size(), 0), tree_(rings)
    {
        for (size_t k = 0; k < rings_.size(); ++k)
            measure(k);
        find_repeats();
        if (tolerance_ > 0.0)
            find_near_repeats();
        tree_.grow([&](size_t k) { return about_[k].turn != 0 && repeats_[k] < 0; });
        find_contacts();
    }

    /// The two rings with the least numbers that cross; one may cross itself.
    std::optional<Crossing> find_crossing()
    {
        find_self_crossings();
        Asking asking(telling_.part(0.6, 0.1), kStepsPerQuestion);
        Vector<Sides> all;
        for (size_t first = 0, end = 0; first < contacts_.size(); first = end) {
            asking.step(static_cast<double>(first) / static_cast<double>(contacts_.size()));
            end = end_of_pair(first);
            all.push_back(look_at_sides(std::span(contacts_).subspan(first, end - first)));
        }
        for (const Sides& a : all)
            if (a.ring < a.other)
                compare_sides(a, *std::ranges::lower_bound(all, std::pair(a.other, a.ring), {},
                                                           [](const Sides& s) { return std::pair(s.ring, s.other); }));
        return crossing_;
    }

    /// For each ring whether it crosses another, once crossings have been looked for.
    std::span<const uint8_t> crosses() const { return crosses_; }

    /// For each ring its outer one, -1 where it has no places, and -2 - m where it repeats ring m.
    void find(int32_t* outer)
    {
        look_below();
        place_by_insides();
        for (size_t k = 0; k < rings_.size(); ++k)
            put(static_cast<int32_t>(k));
        count_depths();
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
        int32_t meetings = 0;          ///< of its own edges
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

    // --- Repeats within a tolerance ----------------------------------------------------------------------------------

    Vector<Edge> edges_of(int32_t ring) const
    {
        Vector<Edge> edges;
        for (int32_t i = 0; i < size(ring); ++i)
            edges.push_back({place(ring, i), place(ring, i + 1 < size(ring) ? i + 1 : 0)});
        return edges;
    }

    /// Whether a ring lies along the edges of another: its corners within twice the tolerance of them, and its edges
    /// within reach of them halfway between the places at which corners of the other lie beside them.
    bool lies_along(int32_t ring, const EdgeTree& edges) const
    {
        const double reach = std::nextafter(tolerance_, 2 * tolerance_);
        const auto is_near = [&](const Place& p, double distance) { return edges.nearest(p, distance).has_value(); };
        Vector<double> shares;
        for (int32_t i = 0; i < size(ring); ++i) {
            const Edge e = tree_.edge(ring, i);
            const Place along = e.to - e.from;
            const double half = 0.5 * std::sqrt(dot(along, along));
            if (half < reach && is_near(e.from + 0.5 * along, reach - half))
                continue;
            if (!is_near(e.from, 2 * reach) || !is_near(e.to, 2 * reach))
                return false;
            shares.assign({0.0, 1.0});
            edges.for_each_near(e, reach, [&](size_t k) { add_shares(e, edges[k], shares); });
            std::ranges::sort(shares);
            for (size_t k = 1; k < shares.size(); ++k) {
                const double length = 2 * half * (shares[k] - shares[k - 1]);
                if (length > 0.0 &&
                    !is_near(e.from + 0.5 * (shares[k - 1] + shares[k]) * along, reach_of(length, reach)))
                    return false;
            }
        }
        return true;
    }

    /// Adds where beside edge e the ends of another lie, if they lie on it.
    void add_shares(const Edge& e, const Edge& f, Vector<double>& shares) const
    {
        const Place along = e.to - e.from;
        const double square = dot(along, along);
        for (const Place& p : {f.from, f.to})
            if (square > 0.0 && is_on(e, p))
                shares.push_back(std::clamp(dot(p - e.from, along) / square, 0.0, 1.0));
    }

    bool have_near_bounds(const Box& a, const Box& b) const
    {
        const double far = 2 * tolerance_;
        return std::fabs(a.low_x - b.low_x) <= far && std::fabs(a.low_y - b.low_y) <= far &&
               std::fabs(a.high_x - b.high_x) <= far && std::fabs(a.high_y - b.high_y) <= far;
    }

    /// The first ring of those that hang together by repeating each other.
    int32_t first_of(int32_t ring)
    {
        const auto repeated = [&](int32_t k) -> int32_t& { return repeats_[static_cast<size_t>(k)]; };
        for (; repeated(ring) >= 0; ring = repeated(ring))
            if (const int32_t next = repeated(repeated(ring)); next >= 0)
                repeated(ring) = next;
        return ring;
    }

    /// Rings with nearly the same bounds have their least ones in one cell twice as large as the tolerance, or in
    /// neighbours. Those that lie along each other repeat one another, and so do those that hang together by such.
    void find_near_repeats()
    {
        struct Cell {
            double x, y;
            int32_t ring;
            auto operator<=>(const Cell&) const = default;
        };
        const auto cell_of = [&](int32_t k) {
            const Box& box = about(k).box;
            return Cell{std::floor(0.5 * box.low_x / tolerance_), std::floor(0.5 * box.low_y / tolerance_), k};
        };
        Vector<Cell> cells;
        for (int32_t k = 0; k < static_cast<int32_t>(rings_.size()); ++k)
            if (about(k).turn != 0 && repeats_[static_cast<size_t>(k)] < 0)
                cells.push_back(cell_of(k));
        Vector<Cell> sorted = cells;
        std::ranges::sort(sorted);
        Asking asking(telling_.part(0.0, 0.2), 1);
        for (const Cell& cell : cells) {
            asking.step(static_cast<double>(&cell - cells.data()) / static_cast<double>(cells.size()));
            std::optional<EdgeTree> edges;
            for (const double x : {-1.0, 0.0, 1.0}) {
                const Cell low = {cell.x + x, cell.y - 1, 0}, high = {cell.x + x, cell.y + 1, cell.ring};
                for (auto i = std::ranges::lower_bound(sorted, low); i != sorted.end() && *i < high; ++i) {
                    if (i->ring >= cell.ring || !have_near_bounds(about(cell.ring).box, about(i->ring).box))
                        continue;
                    const int32_t first = first_of(i->ring), other_first = first_of(cell.ring);
                    if (first == other_first)
                        continue;
                    if (!edges)
                        edges.emplace(edges_of(cell.ring));
                    if (lies_along(i->ring, *edges) && lies_along(cell.ring, EdgeTree(edges_of(i->ring))))
                        repeats_[static_cast<size_t>(std::max(first, other_first))] = std::min(first, other_first);
                }
            }
        }
        for (int32_t k = 0; k < static_cast<int32_t>(rings_.size()); ++k)
            if (const int32_t first = first_of(k); first != k)
                repeats_[static_cast<size_t>(k)] = first;
    }

    // --- Edges -------------------------------------------------------------------------------------------------------

    const Place& place(int32_t ring, int32_t i) const
    {
        return rings_[static_cast<size_t>(ring)][static_cast<size_t>(i)];
    }
    int32_t size(int32_t ring) const { return static_cast<int32_t>(rings_[static_cast<size_t>(ring)].size()); }

    /// The edge from place i of a ring, which is not upright.
    Slope edge(int32_t ring, int32_t i) const
    {
        const Place &a = place(ring, i), &b = place(ring, i + 1 < size(ring) ? i + 1 : 0);
        const bool is_along = (a.x < b.x) == (about(ring).turn > 0);
        return a.x < b.x ? Slope{a, b, ring, is_along} : Slope{b, a, ring, is_along};
    }

    /// Of edges that both have a part above, or below, the same part of the x axis.
    bool is_below(const Slope& a, const Slope& b) const
    {
        const bool a_is_later = a.left.x > b.left.x;
        const Slope &later = a_is_later ? a : b, &earlier = a_is_later ? b : a;
        int turn = side(earlier.left, earlier.right, later.left);
        if (turn == 0)
            turn = later.right.x > earlier.right.x ? -side(later.left, later.right, earlier.right)
                                                   : side(earlier.left, earlier.right, later.right);
        return turn == 0 ? is_below_at_one_place(a, b) : (turn < 0) == a_is_later;
    }

    /// As if every ring had shrunk, the smaller of two more.
    bool is_below_at_one_place(const Slope& a, const Slope& b) const
    {
        if (a.is_floor != b.is_floor)
            return b.is_floor;
        const double p = about(a.ring).size, q = about(b.ring).size;
        const bool a_is_smaller = p != q ? p < q : a.ring > b.ring;
        return a_is_smaller != a.is_floor;
    }

    // --- Edges below -------------------------------------------------------------------------------------------------

    /// The highest edge of another ring that is below `p` and goes on to its right, or to its left.
    template <class IsBelow>
    std::optional<Slope> edge_below(int32_t ring, const Place& p, bool to_right, IsBelow is_below_it) const
    {
        constexpr double kRounding = 1e-12; // of heights, whose coordinates are at most 1
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
                const double x = place(run.ring, i).x, next_x = place(run.ring, i + 1 < size(run.ring) ? i + 1 : 0).x;
                if (to_right ? (x <= p.x) == (next_x <= p.x) : (x < p.x) == (next_x < p.x))
                    continue;
                const Slope e = edge(run.ring, i);
                if (is_below_it(e) && (!best || is_below(*best, e))) {
                    best = e;
                    least = e.height_at(p.x) - kRounding;
                }
            }
        }
        return best;
    }

    // --- Contacts ----------------------------------------------------------------------------------------------------

    /// An edge of a ring that comes within the tolerance of another ring.
    struct Contact {
        int32_t ring, other, edge, other_edge;
    };

    /// Lengths that count as nothing.
    double slack() const { return std::max(tolerance_, 1e-12); }

    bool is_on(const Edge& e, const Place& p) const { return is_within(slack(), e, p); }

    static bool is_within(double reach, const Edge& e, const Place& p)
    {
        const Place away = nearest_of(e, p) - p;
        return dot(away, away) <= reach * reach;
    }

    /// How far the middle of a piece of an edge may be from what it lies on: corners of edges side by side are farther
    /// apart than the edges are, so short pieces may be twice as far.
    static double reach_of(double length, double reach) { return length <= 2 * reach ? 2 * reach : reach; }

    /// How the ends of an edge lie beside the line through another.
    enum class Lie { one_side, both_sides, on_it };

    Lie look_beside(const Edge& e, const Edge& f) const
    {
        const Place along = e.to - e.from;
        const double first = cross(along, f.from - e.from), second = cross(along, f.to - e.from);
        const double nearer = std::min(std::fabs(first), std::fabs(second));
        if (nearer * nearer <= slack() * slack() * dot(along, along))
            return Lie::on_it;
        return (first < 0.0) == (second < 0.0) ? Lie::one_side : Lie::both_sides;
    }

    void note_crossing(int32_t a, int32_t b, const Place& p)
    {
        const Crossing crossing = {std::min(a, b), std::max(a, b), p};
        crosses_[static_cast<size_t>(a)] = crosses_[static_cast<size_t>(b)] = 1;
        if (!crossing_ || std::pair(crossing.first, crossing.second) < std::pair(crossing_->first, crossing_->second))
            crossing_ = crossing;
    }

    static Place place_in_common(const Edge& e, const Edge& f)
    {
        const Place along = e.to - e.from, across = f.to - f.from;
        return e.from + cross(f.from - e.from, across) / cross(along, across) * along;
    }

    /// Looks at edge i of one ring and edge k of another.
    void compare(int32_t ring, int32_t i, int32_t other, int32_t k)
    {
        const Edge e = tree_.edge(ring, i), f = tree_.edge(other, k);
        const Lie of_e = look_beside(e, f);
        if (of_e == Lie::one_side)
            return;
        const Lie of_f = look_beside(f, e);
        if (of_f == Lie::one_side)
            return;
        if (of_e == Lie::both_sides && of_f == Lie::both_sides)
            return note_crossing(ring, other, place_in_common(e, f));
        if (!is_on(f, e.from) && !is_on(f, e.to) && !is_on(e, f.from) && !is_on(e, f.to))
            return;
        contacts_.push_back({ring, other, i, k});
        contacts_.push_back({other, ring, k, i});
    }

    void find_contacts()
    {
        tree_.for_each_near_pair(slack(), !allows_crossing_, telling_.part(0.2, 0.3),
                                 [&](int32_t ring, int32_t i, int32_t other, int32_t k) {
                                     if (ring != other)
                                         compare(ring, i, other, k);
                                     else
                                         compare_own(ring, i, k);
                                 });
        std::ranges::sort(contacts_, {}, [](const Contact& c) { return std::tuple(c.ring, c.other, c.edge); });
        std::ranges::sort(meetings_);
    }

    /// Looks at edges i and k of one ring. Of a scribble not all that meet are kept.
    void compare_own(int32_t ring, int32_t i, int32_t k)
    {
        constexpr int32_t kMostAPlace = 4;
        int32_t& count = about_[static_cast<size_t>(ring)].meetings;
        if (count / kMostAPlace >= size(ring) || !do_meet(rings_[static_cast<size_t>(ring)], i, k))
            return;
        ++count;
        meetings_.push_back({ring, {i, k}});
        const Edge e = tree_.edge(ring, i), f = tree_.edge(ring, k);
        if (look_beside(e, f) == Lie::both_sides && look_beside(f, e) == Lie::both_sides) {
            note_crossing(ring, ring, place_in_common(e, f));
            count = std::numeric_limits<int32_t>::max();
        }
    }

    /// Looks at the rings whose edges meet, each by itself.
    void find_self_crossings()
    {
        Vector<EdgePair> pairs;
        const Telling telling = telling_.part(0.5, 0.1);
        for (size_t first = 0, end = 0; first < meetings_.size(); first = end) {
            const int32_t ring = meetings_[first].first;
            pairs.clear();
            for (; end < meetings_.size() && meetings_[end].first == ring; ++end)
                pairs.push_back(meetings_[end].second);
            if (crossing_ && std::pair(crossing_->first, crossing_->second) <= std::pair(ring, ring))
                return;
            const auto done = static_cast<double>(first) / static_cast<double>(meetings_.size());
            if (const std::optional<Place> p = find_self_crossing(rings_[static_cast<size_t>(ring)], pairs,
                                                                  about(ring).lowest, slack(), telling.part(done, 0.0)))
                return note_crossing(ring, ring, *p);
        }
    }

    /// One past the last contact of the same two rings.
    size_t end_of_pair(size_t first) const
    {
        size_t end = first;
        while (end < contacts_.size() && contacts_[end].ring == contacts_[first].ring &&
               contacts_[end].other == contacts_[first].other)
            ++end;
        return end;
    }

    /// Places of a ring that do not lie on another one which it touches.
    struct Sides {
        int32_t ring, other;
        std::optional<Place> in, out; ///< of the other
    };

    /// Looks at the edges of a ring that touch another, piece by piece, until there is a place on either side.
    Sides look_at_sides(std::span<const Contact> contacts) const
    {
        Sides sides = {contacts[0].ring, contacts[0].other, {}, {}};
        for (size_t first = 0, end = 0; first < contacts.size(); first = end) {
            while (end < contacts.size() && contacts[end].edge == contacts[first].edge)
                ++end;
            for (const Place& p : free_places(contacts.subspan(first, end - first))) {
                (is_inside(sides.other, p) ? sides.in : sides.out) = p;
                if (sides.in && sides.out)
                    return sides;
            }
        }
        return sides;
    }

    /// Two rings that touch cross if one has places on both sides of the other. If both are out of each other, and yet
    /// one lies well inside the other, it sticks out of that through a gap as narrow as the tolerance; if both are in
    /// each other, both do so.
    void compare_sides(const Sides& a, const Sides& b)
    {
        for (const Sides* sides : {&a, &b})
            if (sides->in && sides->out)
                return note_crossing(a.ring, a.other, *sides->out);
        if (a.in && b.in)
            return note_crossing(a.ring, a.other, *a.in);
        if (a.out && b.out && (lies_well_inside(a.ring, a.other) || lies_well_inside(a.other, a.ring)))
            note_crossing(a.ring, a.other, *a.out);
    }

    bool lies_well_inside(int32_t ring, int32_t other)
    {
        const Place& p = place_inside(ring);
        if (!is_inside(other, p))
            return false;
        for (int32_t i = 0; i < size(other); ++i)
            if (is_within(2 * slack(), tree_.edge(other, i), p))
                return false;
        return true;
    }

    /// A place on each piece of an edge between two places at which another ring touches it, but for those on the ring.
    Vector<Place> free_places(std::span<const Contact> contacts) const
    {
        const Edge e = tree_.edge(contacts[0].ring, contacts[0].edge);
        const Place along = e.to - e.from;
        if (!(dot(along, along) > 0.0))
            return {}; // a point that is there twice
        Vector<Edge> others;
        Vector<double> shares = {0.0, 1.0};
        for (const Contact& c : contacts) {
            others.push_back(tree_.edge(c.other, c.other_edge));
            add_shares(e, others.back(), shares);
        }
        std::ranges::sort(shares);
        Vector<Place> places;
        for (size_t i = 1; i < shares.size(); ++i) {
            const Place middle = e.from + 0.5 * (shares[i - 1] + shares[i]) * along;
            const double reach = reach_of((shares[i] - shares[i - 1]) * std::sqrt(dot(along, along)), slack());
            if (std::ranges::none_of(others, [&](const Edge& f) { return is_within(reach, f, middle); }))
                places.push_back(middle);
        }
        return places;
    }

    bool is_inside(int32_t ring, const Place& p) const
    {
        bool is_in = false;
        if (!about(ring).box.holds(p))
            return false;
        int32_t first = 0;
        for (const Box& box : tree_.boxes_of(ring)) {
            if (box.low_x <= p.x && p.x <= box.high_x && box.low_y <= p.y)
                for_each_below(ring, first, p, [&] { is_in = !is_in; });
            first += RunTree::kRun;
        }
        return is_in;
    }

    /// Calls `see` for the edges of a run below p.
    template <class See>
    void for_each_below(int32_t ring, int32_t first, const Place& p, See see) const
    {
        for (int32_t i = first; i < std::min(first + RunTree::kRun, size(ring)); ++i) {
            const auto [from, to] = tree_.edge(ring, i);
            if ((from.x <= p.x) != (to.x <= p.x) && side(from, to, p) == (from.x < to.x ? 1 : -1))
                see();
        }
    }

    /// Puts rings that touch others, and those above one that does, where a place inside of them is.
    void place_by_insides()
    {
        Vector<uint8_t> touches(rings_.size(), 0);
        for (const Contact& c : contacts_)
            touches[static_cast<size_t>(c.ring)] = 1;
        Asking asking(telling_.part(0.9, 0.1), kStepsPerQuestion);
        for (int32_t k = 0; k < static_cast<int32_t>(rings_.size()); ++k) {
            asking.step(static_cast<double>(k) / static_cast<double>(rings_.size()));
            const int32_t below = about(k).below;
            if (about(k).turn != 0 && repeats_[static_cast<size_t>(k)] < 0 &&
                (touches[static_cast<size_t>(k)] != 0 || (below >= 0 && touches[static_cast<size_t>(below)] != 0)))
                place_by(k, place_inside(k));
        }
    }

    /// A stretch across a ring that is inside of it, and how high the strip is in which it meets no corner.
    struct Stretch {
        Place middle;
        double width, height;

        double room() const { return std::min(width, height); }
    };

    /// The widest one at a height.
    Stretch stretch_at(int32_t ring, double y, double height) const
    {
        Vector<double> ends;
        for (int32_t i = 0; i < size(ring); ++i)
            if (const auto [from, to] = tree_.edge(ring, i); (from.y <= y) != (to.y <= y))
                ends.push_back(from.x + (y - from.y) / (to.y - from.y) * (to.x - from.x));
        std::ranges::sort(ends);
        Stretch widest = {place(ring, about(ring).lowest), 0.0, height};
        for (size_t i = 0; i + 1 < ends.size(); i += 2)
            if (const double width = ends[i + 1] - ends[i]; width > widest.width)
                widest = {{ends[i] + 0.5 * width, y}, width, height};
        return widest;
    }

    const Place& place_inside(int32_t ring)
    {
        insides_.resize(rings_.size());
        std::optional<Place>& inside = insides_[static_cast<size_t>(ring)];
        if (!inside)
            inside = find_inside(ring);
        return *inside;
    }

    /// A place well inside a ring: in the widest of the stretches through the highest strips between its corners.
    Place find_inside(int32_t ring) const
    {
        constexpr size_t kStrips = 4;
        Vector<double> heights;
        for (const Place& p : rings_[static_cast<size_t>(ring)])
            heights.push_back(p.y);
        std::ranges::sort(heights);
        Vector<std::pair<double, double>> strips; // how high, and from where
        for (size_t i = 1; i < heights.size(); ++i)
            strips.emplace_back(heights[i] - heights[i - 1], heights[i - 1]);
        const auto last = strips.begin() + static_cast<ptrdiff_t>(std::min(kStrips, strips.size()));
        std::ranges::partial_sort(strips, last, std::ranges::greater());
        Stretch best = {place(ring, about(ring).lowest), 0.0, 0.0};
        for (auto strip = strips.begin(); strip != last; ++strip)
            if (const Stretch s = stretch_at(ring, strip->second + 0.5 * strip->first, strip->first);
                s.room() > best.room())
                best = s;
        return best.middle;
    }

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
            } else if (const Run& run = tree_.run_at(node); run.ring != ring && about(run.ring).box.holds(p)) {
                for_each_below(run.ring, run.first, p, [&] { below.push_back(run.ring); });
            }
        }
        std::ranges::sort(below);
        int32_t& parent = parents_[static_cast<size_t>(ring)];
        parent = kNone;
        for (size_t i = 0, end = 0; i < below.size(); i = end) {
            while (end < below.size() && below[end] == below[i])
                ++end;
            const auto is_smaller = [&](int32_t a, int32_t b) {
                return std::pair(about(a).size, a) < std::pair(about(b).size, b);
            };
            if ((end - i) % 2 == 1 && is_smaller(ring, below[i]) && (parent < 0 || is_smaller(below[i], parent)))
                parent = below[i];
        }
    }

    // --- Nesting -----------------------------------------------------------------------------------------------------

    /// The lower one of the edges that go to the right from the lowest place of a ring, or to the left if none does.
    std::optional<Slope> lowest_edge(int32_t ring, bool to_right) const
    {
        const Place &p = place(ring, about(ring).lowest), &before = place(ring, about(ring).before);
        const Place& after = place(ring, about(ring).after);
        const auto goes = [&](const Place& q) { return to_right ? q.x > p.x : q.x < p.x; };
        if (!goes(before) && !goes(after))
            return {};
        const bool both = goes(before) && goes(after);
        const bool is_before = both ? (side(p, before, after) > 0) == to_right : goes(before);
        const Place& q = is_before ? before : after;
        return to_right ? Slope{p, q, ring, true} : Slope{q, p, ring, true};
    }

    /// A ring without area counts as inside of the edges that it lies on.
    void look_below()
    {
        Asking asking(telling_.part(0.7, 0.2), kStepsPerQuestion);
        for (int32_t k = 0; k < static_cast<int32_t>(rings_.size()); ++k) {
            asking.step(static_cast<double>(k) / static_cast<double>(rings_.size()));
            if (size(k) == 0 || repeats_[static_cast<size_t>(k)] >= 0)
                continue;
            About& ring = about_[static_cast<size_t>(k)];
            const Place& p = place(k, ring.lowest);
            const bool has_area = ring.turn != 0;
            std::optional<Slope> first = has_area ? lowest_edge(k, true) : std::nullopt;
            const bool to_right = first || !has_area;
            if (!to_right)
                first = lowest_edge(k, false);
            const std::optional<Slope> below = edge_below(k, p, to_right, [&](const Slope& e) {
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
        }
    }

    /// How many rings each one lies in. Rings that cross may lie in each other: the last one met lies in none then.
    void count_depths()
    {
        constexpr int32_t kUncounted = -1, kCounting = -2;
        Vector<int32_t> chain;
        for (size_t k = 0; k < rings_.size(); ++k) {
            auto i = static_cast<int32_t>(k);
            for (; i >= 0 && depths_[static_cast<size_t>(i)] == kUncounted; i = parents_[static_cast<size_t>(i)]) {
                depths_[static_cast<size_t>(i)] = kCounting;
                chain.push_back(i);
            }
            int32_t depth = i < 0 ? -1 : depths_[static_cast<size_t>(i)];
            if (depth == kCounting) {
                parents_[static_cast<size_t>(chain.back())] = kNone;
                depth = -1;
            }
            for (; !chain.empty(); chain.pop_back())
                depths_[static_cast<size_t>(chain.back())] = ++depth;
        }
    }

    static constexpr int32_t kStepsPerQuestion = 256;

    const Rings& rings_;
    double tolerance_;
    bool allows_crossing_;
    Telling telling_;
    Vector<About> about_;
    Vector<int32_t> parents_, depths_, repeats_;
    Vector<uint8_t> crosses_;
    RunTree tree_;
    Vector<Contact> contacts_;                      // by rings
    Vector<std::pair<int32_t, EdgePair>> meetings_; // of edges of one ring, by rings
    Vector<std::optional<Place>> insides_;
    std::optional<Crossing> crossing_;
};

Text place_of(const Crossing& crossing, double scale)
{
    return Text() << "near (" << crossing.place.x * scale << ", " << crossing.place.y * scale << ")";
}

[[noreturn]] void refuse(const Crossing& crossing, double scale)
{
    const Text place = place_of(crossing, scale) << "; set tolerance to allow small ones, or crossing to allow all";
    if (crossing.first == crossing.second)
        throw Refusal(Text() << "outline " << crossing.first, "not cross itself", Text() << "it does " << place);
    throw Refusal("outlines", "not cross each other",
                  Text() << "outlines " << crossing.first << " and " << crossing.second << " do, " << place);
}

[[noreturn]] void refuse_joined(const Crossing& crossing, double scale)
{
    const Text place = place_of(crossing, scale) << "; set a smaller tolerance, or mend it there";
    if (crossing.first == crossing.second)
        throw Refusal(Text() << "outline " << crossing.first, "not cross itself by less than the tolerance",
                      Text() << "it does " << place);
    throw Refusal("outlines", "not cross each other where they are joined",
                  Text() << "outlines " << crossing.first << " and " << crossing.second << " do, " << place);
}

/// Outlines in shapes.
class Shapes {
public:
    Shapes(const OutlinesIn& in, const korvale_shapes_options& how)
        : in_(in), how_(how), telling_{how.progress, how.user}
    {
        double largest = 0.0;
        size_t places = 0;
        for (size_t k = 0; k < in.size(); ++k) {
            largest = std::max(largest, largest_of(in[k]));
            places += in[k].size();
        }
        scale_ = scale_to_one(largest);
        rings_.places.reserve(places);
        for (size_t k = 0; k < in.size(); ++k)
            rings_.add(in[k], {0, 1, scale_});
    }

    void sort(int32_t* outer) const
    {
        const bool joins = how_.joined != nullptr && how_.crossing == 0 && how_.tolerance > 0.0;
        Vector<int32_t> found(in_.size());
        sort(telling_.part(0.0, joins ? 0.4 : 1.0), found);
        if (how_.joined != nullptr) {
            JoinedRings joined = rings_in_shapes(found);
            if (joins)
                join_overlapping(joined, found);
            *how_.joined = new_rings(list_of(joined, found));
        }
        std::ranges::copy(found, outer);
    }

private:
    void sort(const Telling& telling, Vector<int32_t>& outer) const
    {
        Nesting nesting(rings_, how_.tolerance * scale_, how_.crossing != 0, telling);
        if (how_.crossing == 0)
            if (const std::optional<Crossing> crossing = nesting.find_crossing())
                refuse(*crossing, 1.0 / scale_);
        nesting.find(outer.data());
    }

    JoinedRings rings_in_shapes(const Vector<int32_t>& outer) const
    {
        JoinedRings kept;
        for (size_t k = 0; k < rings_.size(); ++k) {
            for (size_t i = 0; outer[k] >= 0 && i < rings_[k].size(); ++i) {
                kept.rings.places.push_back(rings_[k][i]);
                kept.origins.push_back({static_cast<int32_t>(i), 0.0});
            }
            kept.rings.ends.push_back(static_cast<int32_t>(kept.rings.places.size()));
        }
        return kept;
    }

    /// Joins rings that cross by less than the tolerance, if there are some, and sorts them as they are then.
    void join_overlapping(JoinedRings& joined, Vector<int32_t>& outer) const
    {
        constexpr double kRounding = 1e-12; // of coordinates, which are at most 1
        constexpr int kMostRounds = 3;      // what is joined may come to cross others
        for (int round = 0;; ++round) {
            Nesting nesting(joined.rings, kRounding, false, telling_.part(0.4 + 0.15 * round, 0.1));
            const std::optional<Crossing> crossing = nesting.find_crossing();
            if (!crossing) {
                if (round > 0)
                    sort_again(nesting, outer);
                return;
            }
            if (round == kMostRounds)
                refuse_joined(*crossing, 1.0 / scale_);
            join(joined, nesting.crosses(), how_.tolerance * scale_, telling_.part(0.5 + 0.15 * round, 0.05));
        }
    }

    static void sort_again(Nesting& nesting, Vector<int32_t>& outer)
    {
        Vector<int32_t> now(outer.size());
        nesting.find(now.data());
        for (size_t k = 0; k < outer.size(); ++k)
            if (outer[k] >= 0)
                outer[k] = now[k];
        for (int32_t& k : outer)
            if (k < -1 && outer[static_cast<size_t>(-2 - k)] < 0)
                k = outer[static_cast<size_t>(-2 - k)];
    }

    RingList list_of(const JoinedRings& joined, const Vector<int32_t>& outer) const
    {
        RingList list;
        list.starts.push_back(0);
        for (size_t k = 0, next = 0; k < joined.rings.size(); ++k) {
            for (const Place& place : joined.rings[k]) {
                const Origin& origin = joined.origins[next++];
                if (outer[k] < 0)
                    continue;
                list.points.push_back(point_at(k, origin, place));
                list.sources.push_back(origin.place);
            }
            list.starts.push_back(static_cast<int64_t>(list.points.size()));
            list.parents.push_back(outer[k]);
            list.births.push_back(0.0);
            list.ends.push_back(0.0);
            list.collapsed.push_back(outer[k] < 0);
        }
        return list;
    }

    Point point_at(size_t ring, const Origin& origin, const Place& place) const
    {
        const auto i = static_cast<size_t>(origin.place);
        const Point& p = in_[ring][i];
        if (place == rings_[ring][i])
            return p;
        const double next = in_[ring][i + 1 < in_[ring].size() ? i + 1 : 0].z;
        return {place.x / scale_, place.y / scale_, (1.0 - origin.share) * p.z + origin.share * next};
    }

    const OutlinesIn& in_;
    const korvale_shapes_options& how_;
    Telling telling_;
    double scale_;
    Rings rings_;
};

} // namespace
} // namespace korvale::door

using namespace korvale::door;

void korvale_shapes_defaults(korvale_shapes_options* options, size_t size)
{
    give_defaults(options, size, korvale_shapes_options{sizeof *options, 0, 0.0, nullptr, nullptr, nullptr});
}

korvale_status korvale_shapes(const korvale_points* outlines, int64_t count, const korvale_shapes_options* options,
                              int32_t* outer, korvale_error* error)
{
    return answer(error, "korvale_shapes", [&] {
        const korvale_shapes_options how = options_of(options, korvale_shapes_defaults);
        require_finite(how.tolerance, "options.tolerance");
        if (how.tolerance < 0.0)
            throw Refusal("options.tolerance", "be 0 or more", Text() << "it is " << how.tolerance);
        if (how.joined != nullptr)
            *how.joined = nullptr;
        const OutlinesIn in(outlines, count, 0);
        if (count > 0)
            require(outer, "outer");
        Shapes(in, how).sort(outer);
    });
}
