// Triangles of an outline with holes.
//
// The holes are joined to the outer ring by bridges. Then ears are clipped: corners that turn left and whose triangle
// holds no other corner. The next ear is looked for from the corner after the next one, which keeps the triangles from
// becoming a fan; only where the outline crosses itself may there be none.
//
// To find ears in few steps, three things are kept:
// - the corners that may be ears. One that is none is taken out until a neighbour of it, or the corner that was found
//   inside its triangle, changes;
// - the corners that do not turn left, in a tree of boxes. If a triangle holds any corner it holds one of these: the
//   one farthest from the side that is cut off has nothing of the outline between itself and the tip. At the tip itself
//   another part of the outline may touch, which blocks it if it comes from between the two sides;
// - signs of areas that rounding does not change.
#include "door/internal/triangulate.h"

#include <algorithm>

#include "door/internal/boxes.h"
#include "door/internal/number_set.h"
#include "door/internal/outlines.h"

namespace korvale::door {

namespace {

/// Corners sorted or looked at between two questions whether to go on: a millisecond or two.
constexpr int32_t kCornersPerQuestion = 65536;

// --- Corners that block ----------------------------------------------------------------------------------------------

/// Corners of a triangle, counter-clockwise.
struct Ear {
    Place a, b, c;

    Box box() const
    {
        return {std::min({a.x, b.x, c.x}), std::min({a.y, b.y, c.y}), std::max({a.x, b.x, c.x}),
                std::max({a.y, b.y, c.y})};
    }
    bool holds(const Place& p) const // but for its own corners
    {
        return p != a && p != b && p != c && side(a, b, p) >= 0 && side(b, c, p) >= 0 && side(c, a, p) >= 0;
    }
    /// Whether an outline that comes to b and goes on from there does so between the two sides.
    bool is_entered_at_tip(const Place& from, const Place& to) const
    {
        return is_between(from) || is_between(to) || (is_along(c, from) && is_along(a, to));
    }

private:
    bool is_between(const Place& p) const { return side(a, b, p) > 0 && side(b, c, p) > 0; }
    bool is_along(const Place& end, const Place& p) const
    {
        return side(b, end, p) == 0 && is_before(b, end) == is_before(b, p);
    }
};

/// A conservative test against the three sides of an ear: false only for what lies to the right of one of them by more
/// than rounding. Coordinates are at most 1.
class Fences {
public:
    explicit Fences(const Ear& ear) : fences_{fence(ear.a, ear.b), fence(ear.b, ear.c), fence(ear.c, ear.a)} {}

    bool may_hold(const Place& p) const
    {
        const auto is_left = [&](const Fence& f) { return f.dx * p.y - f.dy * p.x >= f.least; };
        return is_left(fences_[0]) && is_left(fences_[1]) && is_left(fences_[2]);
    }
    bool may_meet(const Box& box) const
    {
        const double* const bounds = &box.low_x;
        const auto is_left = [&](const Fence& f) { return f.dx * bounds[f.y] - f.dy * bounds[f.x] >= f.least; };
        return is_left(fences_[0]) && is_left(fences_[1]) && is_left(fences_[2]);
    }

private:
    struct Fence {
        double dx, dy, least;
        int x, y; ///< which bounds of a box, as the four doubles it is, its corner farthest to the left has
    };

    static Fence fence(const Place& from, const Place& to)
    {
        // Differences, products and sums round eight times by at most 2^-53 of |dx| + |dy|: 9e-16. Twice that.
        constexpr double kRounding = 2e-15;
        const double dx = to.x - from.x, dy = to.y - from.y;
        return {dx, dy, dx * from.y - dy * from.x - kRounding * (std::fabs(dx) + std::fabs(dy)), dy > 0.0 ? 0 : 2,
                dx > 0.0 ? 3 : 1};
    }

    Fence fences_[3];
};

/// Corners in a tree of boxes.
class Blockers {
public:
    struct Corner {
        Place place;
        int32_t number;
    };

    /// `telling` only stops it.
    Blockers(Vector<Corner> corners, int32_t bound, const Telling& telling)
        : at_(static_cast<size_t>(bound), -1), first_leaf_(std::bit_ceil(corners.size() / kLeaf + 1))
    {
        corners_.resize(first_leaf_ * kLeaf);
        boxes_.assign(2 * first_leaf_, kNowhere);
        counts_.assign(2 * first_leaf_, 0);
        fill(1, corners, telling);
        raise(boxes_);
    }

    bool has(int32_t number) const { return at_[static_cast<size_t>(number)] >= 0; }

    void remove(int32_t number)
    {
        const auto at = static_cast<size_t>(std::exchange(at_[static_cast<size_t>(number)], -1));
        const size_t leaf = first_leaf_ + at / kLeaf;
        const size_t last = at / kLeaf * kLeaf + static_cast<size_t>(counts_[leaf]) - 1;
        if (at != last) {
            corners_[at] = corners_[last];
            at_[static_cast<size_t>(corners_[at].number)] = static_cast<int32_t>(at);
        }
        for (size_t i = leaf; i > 0; i /= 2)
            --counts_[i];
        boxes_[leaf] = kNowhere;
        for (size_t k = at / kLeaf * kLeaf; k < last; ++k)
            boxes_[leaf].cover(corners_[k].place);
        for (size_t i = leaf / 2; i > 0; i /= 2) {
            Box box = boxes_[2 * i];
            box.cover(boxes_[2 * i + 1]);
            if (box == boxes_[i])
                return;
            boxes_[i] = box;
        }
    }

    /// A corner inside the triangle or on its rim, other than at its own corners, or one that blocks it at its tip; -1
    /// where there is none.
    template <class IsBlockedAtTip>
    int32_t find(const Ear& ear, IsBlockedAtTip is_blocked_at_tip) const
    {
        const Box box = ear.box();
        const Fences fences(ear);
        size_t waiting[kMostOnTheWay] = {1};
        for (size_t n = 1; n > 0;) {
            const size_t i = waiting[--n];
            if (i < first_leaf_) {
                for (const size_t child : {2 * i + 1, 2 * i})
                    if (boxes_[child].meets(box) && fences.may_meet(boxes_[child]))
                        waiting[n++] = child;
                continue;
            }
            const size_t first = (i - first_leaf_) * kLeaf;
            for (size_t k = first; k < first + static_cast<size_t>(counts_[i]); ++k)
                if (const auto& [place, number] = corners_[k];
                    fences.may_hold(place) && (place == ear.b ? is_blocked_at_tip(number) : ear.holds(place)))
                    return number;
        }
        return -1;
    }

private:
    /// Corners of a leaf, at most. Measured: 4 take 2 to 4 % more instructions, 16 take 1 % more of a coast and 2 to 3
    /// % less of a plate with holes.
    static constexpr size_t kLeaf = 8;

    /// Puts corners into the leaves below a node, halved across the longer side of what they cover. Boxes are a little
    /// narrower than high: bridges leave corridors between columns of holes, whose ears are slivers.
    void fill(size_t node, std::span<Corner> corners, const Telling& telling)
    {
        if (corners.size() >= size_t{kCornersPerQuestion})
            telling.tell(0.0);
        counts_[node] = static_cast<int32_t>(corners.size());
        if (node < first_leaf_) {
            // Measured from 8,000 to 60,000 points: 14 times the instructions where holes are in columns and 15 times
            // where they are staggered. Square boxes make it 15 times for columns, ones twice as high 15.5 for others.
            constexpr double kNarrower = 1.2;
            Box all = kNowhere;
            for (const Corner& corner : corners)
                all.cover(corner.place);
            const auto middle = corners.begin() + static_cast<ptrdiff_t>(corners.size() / 2);
            if (kNarrower * (all.high_x - all.low_x) > all.high_y - all.low_y)
                std::nth_element(corners.begin(), middle, corners.end(),
                                 [](const Corner& a, const Corner& b) { return a.place.x < b.place.x; });
            else
                std::nth_element(corners.begin(), middle, corners.end(),
                                 [](const Corner& a, const Corner& b) { return a.place.y < b.place.y; });
            fill(2 * node, {corners.begin(), middle}, telling);
            fill(2 * node + 1, {middle, corners.end()}, telling);
            return;
        }
        size_t at = (node - first_leaf_) * kLeaf;
        for (const Corner& corner : corners) {
            boxes_[node].cover(corner.place);
            at_[static_cast<size_t>(corner.number)] = static_cast<int32_t>(at);
            corners_[at++] = corner;
        }
    }

    Vector<Corner> corners_; // those of a leaf in kLeaf places, the ones that are left first
    Vector<int32_t> at_;     // where each corner is among them; -1: it does not block
    Vector<Box> boxes_;
    Vector<int32_t> counts_; // corners that are left
    size_t first_leaf_;
};

// --- Clipping --------------------------------------------------------------------------------------------------------

/// What is left of a ring, its corners numbered in their order.
class Clipper {
public:
    /// `telling` only stops it.
    Clipper(const Vector<Place>& places, LinkedCorners corners, const Telling& telling)
        : corners_(std::move(corners)), places_(corners_.place.size()), may_be_ear_(corners_.size()),
          flat_(corners_.size()), blocks_at_tip_(corners_.size()), waiting_(corners_.place.size(), -1),
          next_waiting_(corners_.place.size(), -1), previous_waiting_(corners_.place.size(), -1),
          blocked_by_(corners_.place.size(), -1), blockers_(turn_all(places, telling), corners_.size(), telling),
          left_(corners_.size())
    {
    }

    /// Bridges of no length are clipped first: they would hide the corners that they belong to.
    Vector<Triangle> run(bool has_bridges, const Telling& telling)
    {
        const double most = left_;
        Asking asking(telling, kEarsPerQuestion);
        Vector<Triangle> triangles;
        triangles.reserve(static_cast<size_t>(std::max(0, left_ - 2)));
        const auto clip = [&](int32_t i) {
            triangles.push_back({number(before(i)), number(i), number(after(i))});
            take_out(i);
            --left_;
            asking.step(1.0 - left_ / most);
        };
        for (int32_t i = 0; has_bridges && i < corners_.size() && left_ >= 3; ++i)
            if (place(i) == place(after(i)))
                clip(i);
        for (int32_t start = first_; left_ >= 3;) {
            const int32_t i = corner_to_clip(start);
            start = after(after(i));
            clip(i);
        }
        return triangles;
    }

private:
    int32_t before(int32_t i) const { return corners_.before[static_cast<size_t>(i)]; }
    int32_t after(int32_t i) const { return corners_.after[static_cast<size_t>(i)]; }
    int32_t number(int32_t i) const { return corners_.place[static_cast<size_t>(i)]; }
    const Place& place(int32_t i) const { return places_[static_cast<size_t>(i)]; }

    Vector<Blockers::Corner> turn_all(const Vector<Place>& places, const Telling& telling)
    {
        Asking asking(telling, kCornersPerQuestion);
        for (int32_t i = 0; i < corners_.size(); ++i)
            places_[static_cast<size_t>(i)] = places[static_cast<size_t>(number(i))];
        Vector<Blockers::Corner> blocking;
        for (int32_t i = 0; i < corners_.size(); ++i) {
            if (turn(i) <= 0)
                blocking.push_back({place(i), i});
            asking.step(0.0);
        }
        return blocking;
    }

    /// Looks at a corner as it is now: 1 where it turns left.
    int turn(int32_t i)
    {
        const int turn = side(place(before(i)), place(i), place(after(i)));
        if (turn > 0)
            may_be_ear_.insert(i);
        else
            may_be_ear_.erase(i);
        if (turn == 0)
            flat_.insert(i);
        else
            flat_.erase(i);
        return turn;
    }

    /// An ear, the first from `start` on; else a corner without area; else, in an outline that crosses itself, any.
    int32_t corner_to_clip(int32_t start)
    {
        for (int32_t i = next_candidate(start); i >= 0; i = next_candidate(i)) {
            const Ear ear = {place(before(i)), place(i), place(after(i))};
            const int32_t blocker = blockers_.find(
                ear, [&](int32_t k) { return ear.is_entered_at_tip(place(before(k)), place(after(k))); });
            if (blocker < 0)
                return i;
            may_be_ear_.erase(i);
            wait_for(blocker, i);
        }
        const int32_t flat = flat_.next(0);
        return flat >= 0 ? flat : first_;
    }

    int32_t next_candidate(int32_t from) const
    {
        const int32_t i = may_be_ear_.next(from);
        return i >= 0 ? i : may_be_ear_.next(0);
    }

    void take_out(int32_t i)
    {
        const int32_t a = before(i), b = after(i);
        stop_waiting(i);
        may_be_ear_.erase(i);
        flat_.erase(i);
        if (blockers_.has(i))
            stop_blocking(i);
        corners_.link(a, b);
        if (i == first_)
            first_ = b;
        for (const int32_t neighbour : {a, b}) {
            stop_waiting(neighbour);
            if (turn(neighbour) > 0 && blockers_.has(neighbour))
                stop_blocking(neighbour);
            else if (blocks_at_tip_.has(neighbour))
                free_waiting(neighbour);
        }
    }

    // The corners that wait for a blocker to change are a list that begins at `waiting_` of the blocker.

    void wait_for(int32_t blocker, int32_t i)
    {
        const int32_t first = std::exchange(waiting_[static_cast<size_t>(blocker)], i);
        next_waiting_[static_cast<size_t>(i)] = first;
        previous_waiting_[static_cast<size_t>(i)] = -1;
        if (first >= 0)
            previous_waiting_[static_cast<size_t>(first)] = i;
        blocked_by_[static_cast<size_t>(i)] = blocker;
        if (place(i) == place(blocker))
            blocks_at_tip_.insert(blocker);
    }

    void stop_waiting(int32_t i)
    {
        const int32_t blocker = std::exchange(blocked_by_[static_cast<size_t>(i)], -1);
        if (blocker < 0)
            return;
        const int32_t next = next_waiting_[static_cast<size_t>(i)],
                      previous = previous_waiting_[static_cast<size_t>(i)];
        if (next >= 0)
            previous_waiting_[static_cast<size_t>(next)] = previous;
        if (previous >= 0)
            next_waiting_[static_cast<size_t>(previous)] = next;
        else
            waiting_[static_cast<size_t>(blocker)] = next;
    }

    void stop_blocking(int32_t blocker)
    {
        blockers_.remove(blocker);
        free_waiting(blocker);
    }

    void free_waiting(int32_t blocker)
    {
        blocks_at_tip_.erase(blocker);
        for (int32_t i = std::exchange(waiting_[static_cast<size_t>(blocker)], -1); i >= 0;) {
            blocked_by_[static_cast<size_t>(i)] = -1;
            may_be_ear_.insert(i);
            i = next_waiting_[static_cast<size_t>(i)];
        }
    }

    static constexpr int32_t kEarsPerQuestion = 1024;

    LinkedCorners corners_;
    Vector<Place> places_;
    NumberSet may_be_ear_, flat_;
    NumberSet blocks_at_tip_; // until a neighbour changes
    Vector<int32_t> waiting_, next_waiting_, previous_waiting_, blocked_by_;
    Blockers blockers_;
    int32_t left_;
    int32_t first_ = 0;
};

} // namespace

bool is_mostly_clockwise(std::span<const Place> ring)
{
    double sum = 0.0, size = 0.0;
    for (size_t i = 1; i + 1 < ring.size(); ++i) {
        const Place &a = ring[0], &b = ring[i], &c = ring[i + 1];
        const double left = (b.x - a.x) * (c.y - a.y), right = (b.y - a.y) * (c.x - a.x);
        sum += left - right;
        size += std::fabs(left) + std::fabs(right);
    }
    return std::fabs(sum) > kNegligible * size ? sum < 0.0 : turn_of(ring) < 0;
}

namespace {

/// The corners of all rings, the first counter-clockwise and all others clockwise, each a ring of its own, when `like`
/// says which way they run.
LinkedCorners corners_of(const Rings& rings, const Rings& like)
{
    LinkedCorners corners;
    corners.place.resize(rings.places.size());
    corners.before.resize(rings.places.size());
    corners.after.resize(rings.places.size());
    int32_t first = 0;
    for (size_t k = 0; k < rings.size(); first = rings.ends[k++]) {
        const int32_t end = rings.ends[k];
        const bool is_turned = is_mostly_clockwise(like[k]) == (k == 0);
        for (int32_t i = first; i < end; ++i) {
            corners.place[static_cast<size_t>(i)] = is_turned ? first + end - 1 - i : i;
            corners.link(i, i + 1 < end ? i + 1 : first);
        }
    }
    return corners;
}

/// Whether no triangle runs clockwise.
bool is_without_turned(const Rings& rings, const Vector<Triangle>& triangles)
{
    const auto place = [&](int32_t i) -> const Place& { return rings.places[static_cast<size_t>(i)]; };
    return std::all_of(triangles.begin(), triangles.end(),
                       [&](const Triangle& t) { return side(place(t[0]), place(t[1]), place(t[2])) >= 0; });
}

/// The corners of the first ring alone, numbered in their order.
LinkedCorners in_order(const LinkedCorners& corners)
{
    LinkedCorners ordered;
    int32_t i = 0;
    do {
        ordered.place.push_back(corners.place[static_cast<size_t>(i)]);
        i = corners.after[static_cast<size_t>(i)];
    } while (i != 0);
    const int32_t n = ordered.size();
    ordered.before.resize(ordered.place.size());
    ordered.after.resize(ordered.place.size());
    for (int32_t k = 0; k < n; ++k)
        ordered.link(k, k + 1 < n ? k + 1 : 0);
    return ordered;
}

/// `telling` only stops it, where there are many corners.
Rings rings_of(const OutlinesIn& outlines, const Telling& telling)
{
    double largest = 0.0;
    size_t places = 0;
    for (size_t k = 0; k < outlines.size(); ++k) {
        largest = std::max(largest, largest_of(outlines[k]));
        places += outlines[k].size();
    }
    const auto ask = [&] {
        if (places >= size_t{kCornersPerQuestion})
            telling.tell(0.0);
    };
    ask();
    Seen seen = seen_upright(outlines[0]);
    ask();
    seen.scale = scale_to_one(largest);
    Rings rings;
    rings.places.reserve(places);
    for (size_t k = 0; k < outlines.size(); ++k)
        rings.add(outlines[k], seen);
    ask();
    return rings;
}

} // namespace

int turn_of(std::span<const Place> ring)
{
    const size_t n = ring.size();
    const auto least = static_cast<size_t>(std::min_element(ring.begin(), ring.end(), is_before) - ring.begin());
    size_t before = least, after = least;
    for (size_t k = 1; k < n && ring[before] == ring[least]; ++k)
        before = (least + n - k) % n;
    for (size_t k = 1; k < n && ring[after] == ring[least]; ++k)
        after = (least + k) % n;
    return side(ring[before], ring[least], ring[after]);
}

Vector<Triangle> cut(const Rings& rings, const Telling& telling)
{
    return cut(rings, rings, telling);
}

Vector<Triangle> cut(const Rings& rings, const Rings& like, const Telling& telling)
{
    if (rings.size() == 1)
        return Clipper(rings.places, corners_of(rings, like), telling).run(false, telling);
    constexpr double kOfBridges = 0.25; // of the work. Measured: a sixth of the instructions for 1,000 holes
    const auto cut_bridged = [&](const Rings& work, const Telling& now) {
        LinkedCorners corners = corners_of(work, like);
        join_holes(work, corners, now.part(0.0, kOfBridges));
        const Telling clipping = now.part(kOfBridges, 1.0 - kOfBridges);
        return Clipper(work.places, in_order(corners), clipping).run(true, clipping);
    };
    const Telling before = telling.part(0.0, 0.0), after = telling.part(1.0, 0.0);
    if (const std::optional<Rings> apart = keep_apart(rings, like, Touching::but_for_rounding, before))
        return cut_bridged(*apart, telling);
    Vector<Triangle> triangles = cut_bridged(rings, telling);
    if (is_without_turned(rings, triangles))
        return triangles;
    // of several places at which holes touch exactly a bridge may take the wrong one
    if (const std::optional<Rings> apart = keep_apart(rings, like, Touching::at_all, after))
        if (Vector<Triangle> others = cut_bridged(*apart, after); is_without_turned(*apart, others))
            return others;
    return triangles;
}

// --- Planes ----------------------------------------------------------------------------------------------------------

double largest_of(std::span<const Point> points)
{
    double largest = 0.0;
    for (const Point& p : points)
        largest = std::max({largest, std::fabs(p.x), std::fabs(p.y), std::fabs(p.z)});
    return largest;
}

double scale_to_one(double largest)
{
    constexpr int kMost = 1000; // whose power of two is a number both ways
    int exponent = 0;
    std::frexp(largest, &exponent);
    return std::ldexp(1.0, std::clamp(-exponent, -kMost, kMost));
}

Seen seen_upright(std::span<const Point> outline)
{
    Point area = {}, reach = {};
    const double scale = scale_to_one(largest_of(outline));
    const auto from_first = [&](const Point& p, int k) { return p[k] * scale - outline[0][k] * scale; };
    for (size_t i = 0; i < outline.size(); ++i)
        for (int k = 0; k < 3; ++k) {
            const int x = (k + 1) % 3, y = (k + 2) % 3;
            const Point &a = outline[i], &b = outline[i + 1 < outline.size() ? i + 1 : 0];
            area[k] += from_first(a, x) * from_first(b, y) - from_first(b, x) * from_first(a, y);
            reach[k] = std::max(reach[k], std::fabs(from_first(a, k)));
        }
    const auto longest = [](const Point& v, auto less) {
        int best = 2;
        for (const int k : {1, 0})
            if (less(std::fabs(v[best]), std::fabs(v[k])))
                best = k;
        return best;
    };
    const bool is_flat = area == Point{};
    const int dropped = is_flat ? longest(reach, std::greater<>()) : longest(area, std::less<>());
    const Seen seen = {(dropped + 1) % 3, (dropped + 2) % 3, scale};
    Vector<Place> places;
    for (const Point& p : outline)
        places.push_back(place_of(p, seen));
    return is_mostly_clockwise(places) ? Seen{seen.y, seen.x, scale} : seen;
}

} // namespace korvale::door

using namespace korvale::door;

korvale_status korvale_triangulate(const korvale_points* outlines, int64_t count, int32_t* triangles, int64_t room,
                                   int64_t* written, korvale_progress progress, void* user, korvale_error* error)
{
    return answer(error, "korvale_triangulate", [&] {
        const OutlinesIn in(outlines, count, 3);
        if (count == 0)
            throw Refusal("outlines", "have an outer outline", "there is none");
        require(written, "written");
        const Telling telling = {progress, user};
        const Rings rings = rings_of(in, telling);
        const auto n = static_cast<int64_t>(rings.places.size() + 2 * rings.size()) - 4;
        if (room < n)
            throw Refusal("room", Text() << "be at least " << n, Text() << "it is " << room);
        require(triangles, "triangles");
        for (const Triangle& t : cut(rings, telling))
            triangles = std::copy(t.begin(), t.end(), triangles);
        *written = n;
    });
}
