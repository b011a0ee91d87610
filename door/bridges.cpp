// Bridges from holes to what goes round them.
//
// A line sweeps over all corners from left to right. For each edge with the inside above it, a floor, it knows the
// latest corner that sees the floor right below itself: the floor's helper. Nothing stands between the helper and the
// first corner of a hole above the same floor, so a bridge joins the two (Mark de Berg, Otfried Cheong, Marc van
// Kreveld and Mark Overmars, Computational Geometry: Algorithms and Applications, 3rd edition, 2008: partitions into
// monotone pieces). Each hole is joined to something on its left, which is joined already.
#include <algorithm>
#include <numeric>
#include <set>

#include "door/internal/edges.h"
#include "door/internal/triangulate.h"

namespace korvale::door {

namespace {

/// An edge that has the inside above it, from left to right.
struct Floor {
    Edge edge;
    int32_t helper;
};

/// Floors that the sweep line meets, from below.
struct IsBelow {
    using is_transparent = void;
    const Vector<Floor>* floors;

    const Edge& edge(int32_t i) const { return (*floors)[static_cast<size_t>(i)].edge; }

    bool operator()(int32_t i, int32_t k) const
    {
        const int height = height_beside(edge(i), edge(k));
        return height == 0 ? i < k : height < 0;
    }
    bool operator()(int32_t i, const Place& p) const { return side(edge(i).from, edge(i).to, p) >= 0; }
    bool operator()(const Place& p, int32_t i) const { return !(*this)(i, p); }
};

class BridgeBuilder {
public:
    BridgeBuilder(const Rings& rings, LinkedCorners& corners)
        : places_(rings.places), corners_(corners), before_(corners.place.size(), -1), after_(corners.place.size(), -1),
          begins_(corners.place.size(), 0), is_first_(corners.place.size(), 0), floor_of_(corners.place.size(), -1),
          copy_(corners.place.size(), -1), status_(IsBelow{&floors_})
    {
        floors_.reserve(corners.place.size());
        for (size_t k = 0; k < rings.ends.size(); ++k)
            add_ring(k == 0 ? 0 : rings.ends[k - 1], rings.ends[k], k > 0);
    }

    void run(const Telling& telling)
    {
        std::sort(events_.begin(), events_.end(), [&](int32_t a, int32_t b) {
            if (place(a) != place(b))
                return is_before(place(a), place(b));
            return begins(a) == begins(b) ? a < b : begins(b); // what a hole that begins there may be joined to
        });
        Asking asking(telling, kCornersPerQuestion);
        for (size_t i = 0; i < events_.size(); ++i) {
            meet(i);
            asking.step(static_cast<double>(i) / static_cast<double>(events_.size()));
        }
    }

private:
    const Place& place(int32_t i) const { return places_[static_cast<size_t>(corners_.place[static_cast<size_t>(i)])]; }

    /// The corners of a ring without those at the place of the one before.
    void add_ring(int32_t first, int32_t end, bool is_hole)
    {
        const size_t old = events_.size();
        for (int32_t i = first; i < end; ++i)
            if (place(i) != place(i + 1 < end ? i + 1 : first))
                events_.push_back(i);
        if (events_.size() == old)
            events_.push_back(first);
        const std::span kept(events_.data() + old, events_.size() - old);
        for (size_t i = 0; i < kept.size(); ++i) {
            const int32_t next = kept[i + 1 < kept.size() ? i + 1 : 0];
            after_[static_cast<size_t>(kept[i])] = next;
            before_[static_cast<size_t>(next)] = kept[i];
        }
        const auto leftmost = std::min_element(kept.begin(), kept.end(),
                                               [&](int32_t a, int32_t b) { return is_before(place(a), place(b)); });
        is_first_[static_cast<size_t>(*leftmost)] = is_hole;
        for (const int32_t i : kept)
            begins_[static_cast<size_t>(i)] = is_hole && place(i) == place(*leftmost);
    }

    bool begins(int32_t i) const { return begins_[static_cast<size_t>(i)] != 0; }

    void meet(size_t event)
    {
        const int32_t v = events_[event];
        const int32_t before = before_[static_cast<size_t>(v)], after = after_[static_cast<size_t>(v)];
        const bool comes_from_left = is_before(place(before), place(v)), goes_left = is_before(place(after), place(v));
        const bool is_convex = side(place(before), place(v), place(after)) > 0;
        if (is_first_[static_cast<size_t>(v)])
            build(event, floor_below(v));
        if (comes_from_left && !goes_left) { // the floor goes on
            const int32_t f = floor_of_[static_cast<size_t>(before)];
            floor_of_[static_cast<size_t>(v)] = f;
            floors_[static_cast<size_t>(f)] = {{place(v), place(after)}, v};
            return;
        }
        if (comes_from_left)
            status_.erase(at_[static_cast<size_t>(floor_of_[static_cast<size_t>(before)])]);
        if (comes_from_left != goes_left || !is_convex)
            if (const int32_t f = floor_below(v); f >= 0)
                floors_[static_cast<size_t>(f)].helper = v;
        if (!comes_from_left && !goes_left && after != v) {
            const auto f = static_cast<int32_t>(floors_.size());
            floor_of_[static_cast<size_t>(v)] = f;
            floors_.push_back({{place(v), place(after)}, v});
            at_.push_back(status_.insert(f));
        }
    }

    int32_t floor_below(int32_t v) const
    {
        const auto above = status_.lower_bound(place(v));
        return above == status_.begin() ? -1 : *std::prev(above);
    }

    /// Joins the hole that begins with an event: to a corner at the same place if there is one. Several corners may
    /// share a place, where holes touch, and only between the edges of one of them there is room for the hole, or for
    /// the bridge to it. Where more than a few share a place not all are asked.
    void build(size_t event, int32_t floor)
    {
        const int32_t v = events_[event];
        const Place &before = place(before_[static_cast<size_t>(v)]), &after = place(after_[static_cast<size_t>(v)]);
        int32_t tries = 0;
        for (size_t i = event; i > 0 && place(events_[i - 1]) == place(v) && tries < kMostAtOnePlace; --i)
            if (const int32_t copy = copy_with_room(before, after, events_[i - 1], tries); copy >= 0)
                return join(copy, v);
        const int32_t helper = floor >= 0 ? floors_[static_cast<size_t>(floor)].helper : 0;
        tries = 0;
        int32_t copy = copy_with_room(place(v), place(v), helper, tries);
        const auto done = std::span(events_).first(event);
        for (auto i = std::lower_bound(done.begin(), done.end(), helper,
                                       [&](int32_t a, int32_t b) { return is_before(place(a), place(b)); });
             copy < 0 && i != done.end() && place(*i) == place(helper) && tries < kMostAtOnePlace; ++i)
            copy = copy_with_room(place(v), place(v), *i, tries);
        join(copy >= 0 ? copy : helper, v);
    }

    /// The first copy of a corner, itself included, that has room; -1 where there is none.
    int32_t copy_with_room(const Place& from, const Place& to, int32_t corner, int32_t& tries) const
    {
        for (; corner >= 0 && tries < kMostAtOnePlace; ++tries) {
            if (has_room(corner, from, to))
                return corner;
            corner = copy_[static_cast<size_t>(corner)];
        }
        return -1;
    }

    /// Whether the wedge from the way to `from` counter-clockwise to that to `to` lies between the two edges of a
    /// corner, inside. It may lie along them.
    bool has_room(int32_t corner, const Place& from, const Place& to) const
    {
        const auto elsewhere = [&](const Vector<int32_t>& way) -> const Place& {
            int32_t i = way[static_cast<size_t>(corner)];
            for (int k = 0; k < kMostAtOnePlace && place(i) == place(corner); ++k)
                i = way[static_cast<size_t>(i)];
            return place(i);
        };
        const Place &b = place(corner), &first = elsewhere(corners_.after), &last = elsewhere(corners_.before);
        const Way end = {b, first, last, false}, low = {b, first, from, false},
                  high = {b, first, to, !(side(b, from, to) == 0 && is_before(b, from) == is_before(b, to))};
        return !(high < low) && !(end < high);
    }

    /// A way from a corner, in the order counter-clockwise from the way to `first`. That way itself is the least, or
    /// the greatest where a turn ends with it.
    struct Way {
        Place at, first, to;
        bool is_end;

        int quarter() const
        {
            if (const int turn = side(at, first, to); turn != 0)
                return turn > 0 ? 1 : 3;
            return is_before(at, first) != is_before(at, to) ? 2 : is_end ? 4 : 0;
        }
        friend bool operator<(const Way& p, const Way& q)
        {
            const int a = p.quarter(), b = q.quarter();
            return a != b ? a < b : a % 2 == 1 && side(p.at, p.to, q.to) > 0;
        }
    };

    /// There and back: from `corner` to `v`, around the hole to a copy of `v`, back to a copy of `corner`, and on.
    void join(int32_t corner, int32_t v)
    {
        const int32_t last = corners_.before[static_cast<size_t>(v)],
                      next = corners_.after[static_cast<size_t>(corner)];
        const int32_t v_copy = add_copy(v), corner_copy = add_copy(corner);
        corners_.link(corner, v);
        corners_.link(last == v ? v : last, v_copy);
        corners_.link(v_copy, corner_copy);
        corners_.link(corner_copy, next == corner ? corner : next);
    }

    int32_t add_copy(int32_t i)
    {
        const int32_t copy = corners_.size();
        corners_.place.push_back(corners_.place[static_cast<size_t>(i)]);
        corners_.before.push_back(-1);
        corners_.after.push_back(-1);
        copy_.push_back(copy_[static_cast<size_t>(i)]);
        copy_[static_cast<size_t>(i)] = copy;
        return copy;
    }

    /// Corners at one place that are asked. Chosen: holes of a shape that share a place are few, and of many that
    /// repeat each other, each would ask all before.
    static constexpr int32_t kMostAtOnePlace = 64;
    static constexpr int32_t kCornersPerQuestion = 1024;

    const Vector<Place>& places_;
    LinkedCorners& corners_;
    Vector<int32_t> before_, after_; // in the ring of its own, among corners at different places
    Vector<uint8_t> begins_;         // a corner of a hole that is where the line meets it first
    Vector<uint8_t> is_first_;       // the corner of a hole that the line meets first
    Vector<int32_t> floor_of_;       // that begins at a corner
    Vector<int32_t> copy_;           // the next corner at the same place that bridges have made
    Vector<int32_t> events_;
    Vector<Floor> floors_;
    using Status = std::multiset<int32_t, IsBelow, HeapAllocator<int32_t>>;
    Status status_;
    Vector<Status::iterator> at_; // where each floor is
};

} // namespace

void join_holes(const Rings& rings, LinkedCorners& corners, const Telling& telling)
{
    BridgeBuilder(rings, corners).run(telling);
}

} // namespace korvale::door
