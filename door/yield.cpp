// The swept border of a line is right almost everywhere. Where it is not (between the legs of a hairpin, in the knot of
// a track that stands still, where a line crosses itself) each point of the line gets the largest ball that touches the
// line there, lies on the wanted side and has nothing of the line inside, up to the distance: its centre is the place
// of the border. The ball is found by shrinking it to whatever lies inside, as in "3D medial axis point approximation
// using nearest neighbors and the normal field" by J. Ma, S. W. Bae and S. Choi, 2012. Invariant: no place is farther
// from the stretch of the line that it stands for than the miter limit times the distance.
#include "door/internal/yield.h"

#include <algorithm>
#include <cmath>

#include "border/internal/sweep.h"

namespace korvale::door {
namespace {

/// Points between two reports of progress.
constexpr size_t kReport = 256;
/// A corner whose half turn has a smaller cosine turns back on itself.
constexpr double kReversal = 1e-06;
/// A corner whose miter is farther than the miter limit by less than this share of it is at it, but for rounding.
constexpr double kAtLimit = 1e-12;
/// What lies inside a ball by less than this share of its radius lies on it.
constexpr double kOnBall = 1e-09;
/// A ball is shrunk at most so often.
constexpr int kMostSteps = 64;
/// A ball of less than this share of the distance is none: the border lies on the line there.
constexpr double kNothing = 1e-03;
/// A section of points narrowed to less than this share of the distance gives way altogether where it can.
constexpr double kNarrow = 0.5;
/// How far from an end of an open line the border of that end may be, in distances. Chosen: where it
/// is clear of the line it is no more than 1.12 distances behind the end, and the way across to the other side leaves
/// half of that outside.
constexpr double kEndReach = 1.5;
/// How much room a section may give up for a corner beyond the miter limit, beside the tip of two straight legs: there
/// the radius of the ball times the way to the inner corner is the miter limit times the square of the distance, at any
/// angle. Chosen, so that corners of such legs have some to spare.
constexpr double kGivenUp = 2.0;

/// The direction of the edge that enters (`step` -1) or leaves (1) point i, past points at the same place. None at the
/// ends of an open line.
std::optional<Place> direction(const Beside& b, size_t i, int step)
{
    const size_t n = b.line.size();
    for (size_t k = 1; k < n; ++k) {
        if (!b.closed && (step > 0 ? i + k >= n : k > i))
            return {};
        const size_t other = (i + (step > 0 ? k : n - k)) % n;
        const Place d = static_cast<double>(step) * (b.line[other] - b.line[i]);
        if (const double size = std::sqrt(dot(d, d)); size > border::kHair)
            return Place{d.x / size, d.y / size};
    }
    return {};
}

/// To the side of the border, square to a direction.
Place beside(const Beside& b, const Place& along)
{
    return b.distance > 0 ? Place{along.y, -along.x} : Place{-along.y, along.x};
}

/// The way on which the border of a point moves as the distance grows: along the bisector of its corner, to where the
/// borders of both edges meet. On the outer side of a corner sharper than the miter limit it moves more slowly, so that
/// it reaches the limit at the distance: the nearest it may come to where they meet.
struct Way {
    Place along;     ///< of length 1
    double speed;    ///< per distance, at most the miter limit on the outer side of a corner
    bool is_cut_off; ///< the corner is sharper than the limit
    double most;     ///< distance at which the miter limit is reached
};

Way way_of(const Beside& b, size_t i)
{
    const double distance = std::fabs(b.distance);
    std::optional<Place> in = direction(b, i, -1), out = direction(b, i, 1);
    if (!in)
        in = out;
    if (!out)
        out = in;
    if (!in)
        return {{0, 0}, 0, false, 0};
    const Place sum = beside(b, *in) + beside(b, *out);
    const double size = std::sqrt(dot(sum, sum)), cosine = 0.5 * size;
    if (cosine < kReversal)
        return {*in, b.miter_limit, true, distance};
    const Place along = {sum.x / size, sum.y / size};
    const bool is_outer = (b.distance > 0 ? 1 : -1) * cross(*in, *out) >= 0;
    if (is_outer && cosine * b.miter_limit < 1 - kAtLimit)
        return {along, b.miter_limit, true, distance};
    return {along, 1 / cosine, false, std::min(distance, b.miter_limit * distance * cosine)};
}

/// How far from the line the border of a point gets on its way: the radius of its largest ball up to `radius`.
double shrink_ball(const Beside& b, const Place& p, const Way& way, double radius)
{
    const double a = way.speed * way.speed - 1;
    for (int step = 0; step < kMostSteps && radius > 0; ++step) {
        const auto q = b.edges.nearest(p + way.speed * radius * way.along, radius * (1 - kOnBall));
        if (!q)
            break;
        const Place w = *q - p;
        const double square = dot(w, w), ahead = way.speed * dot(way.along, w);
        const double root = ahead > 0 ? std::sqrt(std::max(0.0, ahead * ahead - a * square)) : 0.0;
        const double smaller = ahead > 0 ? square / (ahead + root) : 0.0;
        radius = smaller < radius ? smaller : radius * (1 - kOnBall);
        if (radius < kNothing * way.most)
            return 0;
    }
    return radius;
}

/// How far the straight way from `p` to a place gets before the line crosses it, as a share of it; 1 where it does not.
double share_before_line(const Beside& b, const Place& p, const Place& to)
{
    const Place along = to - p;
    double share = 1.0;
    b.edges.for_each_near({p, to}, 0.0, [&](size_t k) {
        const Edge& e = b.edges[k];
        const Place across = e.to - e.from;
        const double slant = cross(along, across);
        if (slant == 0.0)
            return;
        const double there = cross(e.from - p, across) / slant, at = cross(e.from - p, along) / slant;
        if (there > kOnBall && there < share && at >= 0.0 && at <= 1.0)
            share = there;
    });
    return share;
}

/// The radius of the largest ball that no other part of the line cuts off from the point. In a corner the balls do not
/// lie inside each other, so an empty one may lie behind another part of the line.
double largest_ball(const Beside& b, const Place& p, const Way& way)
{
    double radius = shrink_ball(b, p, way, way.most);
    for (int step = 0; step < kMostSteps && way.speed > 1 && radius > 0; ++step) {
        const double share = share_before_line(b, p, p + way.speed * radius * way.along);
        if (share == 1.0)
            break;
        radius = shrink_ball(b, p, way, share * radius);
    }
    return radius;
}

/// How far the miter limit lets a place be from its stretch of the line.
double reach_of(const Beside& b)
{
    return b.miter_limit * std::fabs(b.distance) * (1 + kAtLimit) + b.rounding;
}

/// Whether a place is no farther from a point of the line than it may be. That is less for the first and the last point
/// of an open line: the band ends across from there, and what is beyond is cut off.
bool is_within_reach(const Beside& b, const Place& place, size_t i)
{
    const bool is_end = !b.closed && (i == 0 || i + 1 == b.line.size());
    const double reach = is_end ? std::min(reach_of(b), kEndReach * std::fabs(b.distance)) : reach_of(b);
    const Place d = place - b.line[i];
    return dot(d, d) <= reach * reach;
}

/// Points of a line that follow each other, and whether others come before and after them.
struct Section {
    size_t first, count;
    bool has_before, has_after;
};

/// The points around i that share its place.
Section section_around(const Beside& b, const Settling& s, size_t i)
{
    const size_t n = b.line.size();
    const auto is_shared = [&](size_t k) { return s.heir[k % n] == s.heir[i]; };
    const size_t before = b.closed ? n - 1 : i;
    size_t back = 0, on = 0;
    while (back < before && is_shared(i + n - back - 1))
        ++back;
    const size_t after = b.closed ? n - 1 - back : n - 1 - i;
    while (on < after && is_shared(i + on + 1))
        ++on;
    return {(i + n - back) % n, back + 1 + on, b.closed || back < before, b.closed || on < after};
}

/// Whether a place is no farther than the miter limit allows from the stretch of the line that a section stands for:
/// the edges between its points and the two beside them. The inner corner of a sharp bend is so, however far it is from
/// its own point. The tip of a corner that turns back is not, even where it lies beside edges that the line has left
/// long before.
bool is_near_stretch(const Beside& b, const Section& section, const Place& place)
{
    const size_t n = b.line.size(), from = section.first + n - (section.has_before ? 1 : 0);
    const size_t to = section.first + n + section.count - (section.has_after ? 0 : 1);
    for (size_t k = from; k < to; ++k)
        if (is_within(reach_of(b), {b.line[k % n], b.line[(k + 1) % n]}, place))
            return true;
    return false;
}

/// Whether the points of a section may share a place that is farther from some of them than the miter limit allows:
/// where it is near their stretch and the room they give up is small, by the lower quartile of the radii of their
/// balls. So a deep bend with room for most of a border keeps it. The end of an open line and all of a ring do not give
/// way so far.
template <class RadiusOf>
bool may_share_afar(const Beside& b, const Section& section, const Place& place, RadiusOf radius_of)
{
    const size_t n = b.line.size();
    if (!section.has_before || !section.has_after || section.count == n || !is_near_stretch(b, section, place))
        return false;
    double farthest = 0.0;
    Vector<double> radii;
    for (size_t k = section.first; k < section.first + section.count; ++k) {
        const Place away = place - b.line[k % n];
        farthest = std::max(farthest, std::sqrt(dot(away, away)));
        radii.push_back(radius_of(k % n));
    }
    const auto quartile = radii.begin() + static_cast<std::ptrdiff_t>(radii.size() / 4);
    std::nth_element(radii.begin(), quartile, radii.end());
    return farthest * *quartile <= kGivenUp * reach_of(b) * std::fabs(b.distance);
}

bool is_clear(const Beside& b, const Place& place)
{
    const double wanted = std::fabs(b.distance) - b.slack;
    return !(wanted > 0) || !b.edges.nearest(place, wanted);
}

/// The points to be placed anew: 1 in `moved`. What shares a place gives way together.
void find_misplaced(const Beside& b, const Settling& s)
{
    const size_t n = b.line.size();
    bool clear = false;
    bool is_known = false, may_stay = false; // afar, of the latest points that share a place
    for (size_t i = 0; i < n; ++i) {
        if (i % kReport == 0)
            b.telling.tell(0.3 * static_cast<double>(i) / static_cast<double>(n));
        const Place place = s.border[i];
        const bool is_shared = i > 0 && place.x == s.border[i - 1].x && place.y == s.border[i - 1].y;
        clear = is_shared ? clear : is_clear(b, place);
        is_known &= i > 0 && s.heir[i] == s.heir[i - 1];
        const auto may_be_afar = [&] {
            if (s.removed[i] == 0)
                return is_near_stretch(b, section_around(b, s, i), place);
            if (!is_known)
                may_stay = may_share_afar(b, section_around(b, s, i), place,
                                          [&](size_t k) { return largest_ball(b, b.line[k], way_of(b, k)); });
            is_known = true;
            return may_stay;
        };
        s.moved[i] = !clear || !(is_within_reach(b, place, i) || may_be_afar()) ||
                     (s.removed[i] == 0 && dot(place - b.line[i], way_of(b, i).along) < 0);
    }
    const size_t steps = b.closed ? 2 * n : n; // around the end of a closed line too
    const auto move_together = [&](size_t from, size_t to) {
        if (s.heir[from % n] == s.heir[to % n])
            s.moved[to % n] |= s.moved[from % n];
    };
    for (size_t i = 1; i < steps; ++i)
        move_together(i - 1, i);
    for (size_t i = steps - 1; i > 0; --i)
        move_together(i, i - 1);
}

/// Where the borders of the edges that lead to and from a section of points meet, if they do ahead of one and behind
/// the other.
std::optional<Place> corner_of(const Beside& b, size_t before, size_t after)
{
    const auto e = direction(b, before, 1), f = direction(b, after, -1);
    if (!e || !f)
        return {};
    const double distance = std::fabs(b.distance), turn = cross(*e, *f);
    if (std::fabs(turn) < kReversal)
        return {};
    const Place from = b.line[before] + distance * beside(b, *e), to = b.line[after] + distance * beside(b, *f);
    const double ahead = cross(to - from, *f) / turn, behind = cross(to - from, *e) / turn;
    if (!(ahead >= 0) || !(behind <= 0))
        return {};
    return from + ahead * *e;
}

/// How near to the line the straight way between two places comes, by samples.
double clearance(const Beside& b, const Place& from, const Place& to)
{
    constexpr int kSamples = 16; // Chosen: a look at the tree of edges for each
    double least = std::fabs(b.distance);
    for (int k = 0; k <= kSamples; ++k) {
        const Place p = from + static_cast<double>(k) / kSamples * (to - from);
        if (const auto q = b.edges.nearest(p, least)) {
            const Place d = *q - p;
            least = std::sqrt(dot(d, d));
        }
    }
    return least;
}

void give_place(const Settling& s, size_t i, const Place& place)
{
    s.border[i] = place;
    s.removed[i] = 1;
    s.narrowed[i] = 0;
    s.moved[i] = 1;
}

/// Lets a section give way altogether: to the corner of the borders beside it, or, where little is left of it, to the
/// places of its neighbours. The ball of point k of the line has `radius[k]`.
void let_section_give_way(const Beside& b, const Settling& s, const Section& section, std::span<const double> radius)
{
    const size_t n = b.line.size(), before = (section.first + n - 1) % n, after = (section.first + section.count) % n;
    const auto radius_of = [&](size_t k) { return radius[k]; };
    const auto all_reach = [&](const Place& place, size_t from, size_t to) {
        for (size_t k = from; k < to; ++k)
            if (!is_within_reach(b, place, (section.first + k) % n))
                return false;
        return true;
    };
    const auto give = [&](const Place& place, size_t from, size_t to) {
        for (size_t k = from; k < to; ++k)
            give_place(s, (section.first + k) % n, place);
    };
    if (section.has_before && section.has_after)
        if (const auto corner = corner_of(b, before, after);
            corner && (all_reach(*corner, 0, section.count) || may_share_afar(b, section, *corner, radius_of)) &&
            is_clear(b, *corner)) {
            give(*corner, 0, section.count);
            return;
        }
    double least = std::fabs(b.distance);
    for (size_t k = section.first; k < section.first + section.count; ++k)
        least = std::min(least, radius[k % n]);
    if (least >= kNarrow * std::fabs(b.distance) || (!section.has_before && !section.has_after))
        return;
    const size_t half = !section.has_before ? 0 : !section.has_after ? section.count : section.count / 2;
    const Place first = s.border[section.has_before ? before : after],
                last = s.border[section.has_after ? after : before];
    if (all_reach(first, 0, half) && all_reach(last, half, section.count) && clearance(b, first, last) > least) {
        give(first, 0, half);
        give(last, half, section.count);
    }
}

} // namespace

size_t count_crowded(const Beside& b, const Telling& telling)
{
    size_t crowded = 0;
    for (size_t i = 0; i < b.line.size(); ++i) {
        if (i % kReport == 0)
            telling.tell(0.0);
        const Way way = way_of(b, i);
        crowded += !is_clear(b, b.line[i] + way.speed * way.most * way.along);
    }
    return crowded;
}

void settle(const Beside& b, const Settling& s, bool all)
{
    const size_t n = b.line.size();
    std::fill(s.narrowed.begin(), s.narrowed.end(), uint8_t{0});
    if (all)
        std::fill(s.moved.begin(), s.moved.end(), uint8_t{1});
    else
        find_misplaced(b, s);
    if (std::find(s.moved.begin(), s.moved.end(), 1) == s.moved.end())
        return;
    Vector<double> radius(n, std::fabs(b.distance));
    for (size_t i = 0; i < n; ++i) {
        if (i % kReport == 0)
            b.telling.tell(0.3 + 0.7 * static_cast<double>(i) / static_cast<double>(n));
        if (s.moved[i] == 0)
            continue;
        const Way way = way_of(b, i);
        radius[i] = largest_ball(b, b.line[i], way);
        s.border[i] = b.line[i] + way.speed * radius[i] * way.along;
        s.removed[i] = 0;
        s.narrowed[i] = way.is_cut_off || radius[i] < std::fabs(b.distance) - b.slack;
    }

    size_t start = 0; // a section that goes round the end of a closed line begins after it
    if (b.closed)
        while (start < n && s.narrowed[start] != 0)
            ++start;
    if (start == n)
        return;
    for (size_t k = 0; k < n;) {
        const size_t first = (start + k) % n;
        if (s.narrowed[first] == 0) {
            ++k;
            continue;
        }
        Section section = {first, 0, b.closed || first > 0, true};
        while (k + section.count < n && s.narrowed[(first + section.count) % n] != 0)
            ++section.count;
        section.has_after = b.closed || first + section.count < n;
        let_section_give_way(b, s, section, radius);
        k += section.count;
    }
}

bool vanish(const Beside& b, const Settling& s)
{
    if (!b.closed)
        return false;
    double most = -1.0;
    Place farthest = {};
    for (size_t i = 0; i < b.line.size(); ++i) {
        const Place& place = s.border[i];
        if ((s.removed[i] == 0 && s.narrowed[i] == 0) || is_clear(b, place))
            return false;
        const Place away = *b.edges.nearest(place, std::fabs(b.distance)) - place;
        if (dot(away, away) > most) {
            most = dot(away, away);
            farthest = place;
        }
    }
    for (size_t i = 0; i < b.line.size(); ++i)
        give_place(s, i, farthest);
    return true;
}

void hold(const Beside& b, const Settling& s)
{
    const size_t n = b.line.size();
    const double most = b.miter_limit * std::fabs(b.distance);
    size_t start = 0; // points that share a place are held together, around the end of a closed line too
    while (b.closed && start + 1 < n && s.border[start] == s.border[(start + n - 1) % n])
        ++start;
    for (size_t k = 0, count = 0; k < n; k += count) {
        const size_t first = (start + k) % n;
        const Place place = s.border[first];
        count = 1;
        while (k + count < n && s.border[(first + count) % n] == place)
            ++count;
        Place nearest = b.line[first];
        double least = dot(place - nearest, place - nearest);
        const size_t before = b.closed || first > 0 ? 1 : 0, last = b.closed ? count : std::min(count, n - 1 - first);
        for (size_t i = first + n - before; i < first + n + last; ++i) {
            const Place q = nearest_of({b.line[i % n], b.line[(i + 1) % n]}, place);
            if (dot(place - q, place - q) < least) {
                nearest = q;
                least = dot(place - q, place - q);
            }
        }
        const bool is_far = least > reach_of(b) * reach_of(b);
        const Place held = is_far ? nearest + most / std::sqrt(least) * (place - nearest) : place;
        const bool is_narrow = is_far || !is_clear(b, held);
        for (size_t i = first; i < first + count; ++i) {
            s.border[i % n] = held;
            s.moved[i % n] |= is_far;
            s.narrowed[i % n] |= is_narrow && s.removed[i % n] == 0;
        }
    }
}

} // namespace korvale::door
