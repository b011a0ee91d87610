// Joins of moved outlines. The sweep moves every edge at one speed and keeps corners sharp, so what is asked for is
// laid into the outline before: a corner that opens is cut by edges of a hundred-millionth of the outline's size, in
// the directions that the join has, which grow as the outline moves and meet everything else as edges do. Each of
// their vertices belongs to the corner.
//
// - Edges that halve a turn again and again, until their corners are within the tolerance of the circle, make a round
//   join. No sine is taken, so the bits are the same everywhere.
// - One edge across cuts off a mitre. It moves as the others do and so ends at the distance from the corner.
// - A bevel is nearer to the corner than that. It is swept as if it were cut off at the distance, and the rest is cut
//   off afterwards: that only ever takes away, so nothing meets that the sweep has not seen.
//
// How short the edges are is a compromise: they start that far off the corner, and their directions are the less sure
// the shorter they are. Both are taken out again afterwards, where an edge still lies where it should.
#include "door/internal/joins.h"

#include <algorithm>
#include <cmath>

namespace korvale::door {
namespace {

/// The outline reaches 2^kReach to twice as far. Chosen: kCut is about a hundred-millionth of it then.
constexpr int kReach = 10;
/// The edges that cut corners, well above the 1.2e-06 below which the sweep merges points.
constexpr double kCut = 1e-05, kShortestCut = 2.5e-06;
/// Points nearer to each other than this are one corner: four cuts. Chosen.
constexpr double kShort = 4e-05;
/// The part of an edge that the cut of a corner may take. Chosen: those at both ends leave a fifth.
constexpr double kRoom = 0.4;
/// A turn with a smaller sine stays sharp: a bevel would be within a hundred-millionth of the distance of it.
constexpr double kLeastSine = 1e-04;
/// The tolerance that is taken where none is given, as documented, and the least one, as parts of the distance.
constexpr double kTolerance = 0.005, kLeastTolerance = 1e-06;
/// Directions whose sine is smaller meet nowhere. Chosen: as the sweep takes them for the same.
constexpr double kParallel = 1e-06;
/// Corners of all joins together: a sweep takes 14 numbers for each.
constexpr size_t kMost = std::numeric_limits<int32_t>::max() / 14;

Place right_of(const Place& direction)
{
    return {direction.y, -direction.x};
}

double length_of(const Place& v)
{
    return std::sqrt(dot(v, v));
}

Place unit(const Place& v)
{
    return (1.0 / length_of(v)) * v;
}

/// The direction halfway between two that are up to half a turn apart, to the left of the first where `side` is 1.
Place halfway(const Place& a, const Place& b, double side)
{
    if (dot(a, b) >= 0.0)
        return unit(a + b);
    const Place outwards = unit(a - b);
    return {-side * outwards.y, side * outwards.x};
}

/// How often the turn of a corner has to be halved.
int halvings(int32_t kind, double cos_half_turn, const Joins& joins, double distance)
{
    switch (kind) {
    case KORVALE_JOIN_BEVEL:
        return 1;
    case KORVALE_JOIN_ROUND:
        return halvings_to(cos_half_turn, least_cosine(joins.tolerance, distance));
    default:
        return joins.miter_limit > 0.0 && cos_half_turn * joins.miter_limit < 1.0 ? 1 : 0;
    }
}

/// Points near enough to each other to be one corner, by the last of them.
struct Clusters {
    Vector<size_t> last; ///< of each corner, ascending around the outline
    Vector<size_t> of;   ///< the corner of each point
};

/// Fewer than three where the outline is too small for any.
Clusters clusters_of(std::span<const Place> places)
{
    const size_t n = places.size();
    const auto are_near = [&](size_t i, size_t k) { return length_of(places[i] - places[k]) < kShort; };
    Clusters clusters = {{}, Vector<size_t>(n)};
    size_t end = 0;
    while (end < n && are_near(end, (end + 1) % n))
        ++end;
    if (end == n)
        return clusters;
    for (size_t k = 0; k < n; ++k) {
        const size_t i = (end + n - k) % n;
        if (k == 0 || !are_near(i, clusters.last.back()))
            clusters.last.push_back(i);
        clusters.of[i] = clusters.last.size() - 1;
    }
    std::reverse(clusters.last.begin(), clusters.last.end());
    for (size_t& corner : clusters.of)
        corner = clusters.last.size() - 1 - corner;
    return clusters;
}

/// The power of two that brings an outline to the size that suits it, or 0 where it has none.
double zoom_of(std::span<const Point> outline)
{
    double low[2] = {outline[0].x, outline[0].y}, high[2] = {outline[0].x, outline[0].y};
    for (const Point& p : outline)
        for (int k = 0; k < 2; ++k) {
            low[k] = std::min(low[k], p[k]);
            high[k] = std::max(high[k], p[k]);
        }
    const double reach = std::max(high[0] - low[0], high[1] - low[1]);
    return reach > 0.0 ? std::ldexp(1.0, kReach - std::ilogb(reach)) : 0.0;
}

} // namespace

double least_cosine(double tolerance, double distance)
{
    const double part = tolerance > 0.0 ? tolerance / distance : kTolerance;
    return 1.0 / (1.0 + std::max(part, kLeastTolerance));
}

int halvings_to(double cos_half_turn, double least)
{
    int times = 0;
    for (double c = cos_half_turn; c < least; c = std::sqrt(0.5 + 0.5 * c))
        ++times;
    return times;
}

Vector<Place> halved(const Place& from, const Place& to, double side, int times)
{
    Vector<Place> directions = {from, to};
    for (int k = 0; k < times; ++k) {
        Vector<Place> finer;
        finer.reserve(2 * directions.size());
        for (size_t i = 0; i + 1 < directions.size(); ++i) {
            finer.push_back(directions[i]);
            finer.push_back(halfway(directions[i], directions[i + 1], side));
        }
        finer.push_back(to);
        directions = std::move(finer);
    }
    return directions;
}

JoinsIn::JoinsIn(const korvale_offset_options& options, int64_t corners)
    : of_corners_(&options.corner_joins, "options.corner_joins"), joins_{options.join, options.miter_limit,
                                                                         options.tolerance, of_corners_.indices()}
{
    const auto is_kind = [](int32_t kind) { return kind >= KORVALE_JOIN_MITER && kind <= KORVALE_JOIN_ROUND; };
    constexpr std::string_view kKinds = "be 0 (miter), 1 (bevel) or 2 (round)";
    if (!is_kind(options.join))
        throw Refusal("options.join", kKinds, Text() << "it is " << options.join);
    if (!(options.miter_limit >= 1.0) && options.miter_limit != 0.0)
        throw Refusal("options.miter_limit", "be 1 or more, or 0 for none", Text() << "it is " << options.miter_limit);
    if (!is_finite(options.tolerance) || options.tolerance < 0.0)
        throw Refusal("options.tolerance", "be 0 or more", Text() << "it is " << options.tolerance);
    if (of_corners_.size() == 0)
        return;
    if (of_corners_.size() != corners)
        throw Refusal("options.corner_joins", Text() << "have " << corners << ", one for each point, or none",
                      Text() << "there are " << of_corners_.size());
    for (int64_t i = 0; i < corners; ++i)
        if (!is_kind(of_corners_[i]))
            throw Refusal("options.corner_joins", kKinds, Text() << "number " << i << " is " << of_corners_.given(i));
}

/// A corner to be cut.
struct JoinedOutline::Corner {
    Place place;
    Place in, out; ///< directions of its edges
    double room;   ///< how much of them the cut may take
    int32_t kind;
    double cos_half_turn = 1.0;
    Vector<Place> directions = {}; ///< from `in` to `out`, those of the cut between them
    Vector<Place> places = {};     ///< of the cut
};

/// Finds the directions and the places of the cut.
void JoinedOutline::cut(Corner& corner, const Joins& joins) const
{
    const Place &e = corner.in, &f = corner.out, &p = corner.place;
    const double side = distance_ > 0.0 ? 1.0 : -1.0;
    const double turn = side * cross(e, f), along = dot(e, f);
    corner.directions.assign({e, f});
    corner.places.assign(1, p);
    corner.cos_half_turn = std::sqrt(std::max(0.5 + 0.5 * along, 0.0));
    if (!(turn > (along > 0.0 ? kLeastSine : 0.0)) ||
        corner.cos_half_turn < border::kHairpinCosine) // the sweep removes it
        return;
    const int times = halvings(corner.kind, corner.cos_half_turn, joins, std::fabs(distance_) / zoom_);
    if (times == 0)
        return;
    corner.directions = halved(e, f, side, times);

    const Place middle = corner.directions[corner.directions.size() / 2];
    const std::span<const Place> edges(corner.directions.data() + 1, corner.directions.size() - 2);
    double width = 0.0; // in edges
    for (const Place& edge : edges)
        width += dot(edge, middle);
    const double needed = 0.5 * width / corner.cos_half_turn; // of either side, in edges
    const double edge = std::max(std::min(kCut, corner.room / needed), kShortestCut);
    const double taken = edge * needed;
    corner.places.clear();
    if (taken <= corner.room * (1.0 + 1e-09)) {
        corner.places.push_back(p - taken * e);
    } else { // a spike with no room inside is made a little wider at its end
        const double sin_half_turn = std::sqrt(std::max(0.5 - 0.5 * along, 0.0));
        const Place back = (-side * corner.room * sin_half_turn) * right_of(middle);
        corner.places.push_back(p + back - (0.5 * edge * width) * middle);
    }
    for (const Place& direction : edges)
        corner.places.push_back(corner.places.back() + edge * direction);
}

/// Cuts the corners of an outline, which are these of its points.
Vector<JoinedOutline::Corner> JoinedOutline::cut_all(std::span<const Place> places, std::span<const size_t> corners,
                                                     const Joins& joins) const
{
    const size_t count = corners.size();
    Vector<Corner> cuts;
    cuts.reserve(count);
    for (size_t c = 0; c < count; ++c) {
        const size_t at = corners[c];
        const Place& p = places[at];
        const Place in = p - places[corners[c == 0 ? count - 1 : c - 1]];
        const Place out = places[corners[c + 1 == count ? 0 : c + 1]] - p;
        const double room = kRoom * std::min(length_of(in), length_of(out));
        cuts.push_back({p, unit(in), unit(out), room, joins.kind_of(at)});
        cut(cuts.back(), joins);
    }
    return cuts;
}

/// Adds the vertices of the cut of a corner, which is point `source` of the outline.
void JoinedOutline::lay_vertices(const Corner& corner, int32_t source)
{
    const size_t n = corner.places.size();
    const double cut_off = corner.kind == KORVALE_JOIN_BEVEL ? distance_ * (corner.cos_half_turn - 1.0) : 0.0;
    for (size_t k = 0; k < n; ++k) {
        const Place direction = corner.directions[k + 1];
        const bool is_join = k + 1 < n;
        const double start = is_join ? dot(right_of(direction), corner.places[k] - corner.place) : 0.0;
        vertices_.push_back(
            {corner.places[k], source, {corner.place, direction, start, is_join ? cut_off : 0.0, is_join, true}});
    }
}

JoinedOutline::JoinedOutline(std::span<const Point> outline, double distance, const Joins& joins)
{
    if (!joins.are_some() || distance == 0.0)
        return;
    const double zoom = zoom_of(outline);
    if (zoom == 0.0)
        return;
    zoom_ = zoom;
    distance_ = zoom_ * distance;
    Vector<Place> places;
    places.reserve(outline.size());
    for (const Point& p : outline)
        places.push_back({zoom_ * p.x, zoom_ * p.y});
    const Clusters clusters = clusters_of(places);
    const size_t count = clusters.last.size();
    if (count < 3) {
        zoom_ = 1.0;
        return;
    }
    const Vector<Corner> cuts = cut_all(places, clusters.last, joins);
    size_t total = 0;
    for (const Corner& corner : cuts)
        total += corner.places.size();
    if (total == count) {
        zoom_ = 1.0;
        return;
    }
    if (total > kMost)
        throw Refusal("options.tolerance", Text() << "leave at most " << kMost << " points",
                      Text() << "there would be " << total);
    vertices_.reserve(total + outline.size() - count);
    for (size_t i = 0; i < outline.size(); ++i) {
        const Corner& corner = cuts[clusters.of[i]];
        const auto source = static_cast<int32_t>(i);
        if (i == clusters.last[clusters.of[i]])
            lay_vertices(corner, source);
        else // merges into the next one as soon as the sweep begins
            vertices_.push_back({corner.places[0], source, {}});
    }
}

/// The vertices of a ring that has been swept, those that are left and those that are gone.
struct JoinedOutline::Ring {
    struct Node {
        Place place;
        bool is_gone;
        Line line = {}; ///< of the edge that starts here, where the vertex is left
    };
    Vector<Node> nodes;
    std::span<const int32_t> numbers;

    /// The next vertex that is left.
    size_t after(size_t i) const
    {
        do
            i = i + 1 == nodes.size() ? 0 : i + 1;
        while (nodes[i].is_gone);
        return i;
    }
    size_t before(size_t i) const
    {
        do
            i = (i == 0 ? nodes.size() : i) - 1;
        while (nodes[i].is_gone);
        return i;
    }
    const Place& place(size_t i) const { return nodes[i].place; }
};

/// Whether a place is where the sweep moves an edge that starts on this line, but for rounding.
bool JoinedOutline::is_on(const Line& line, const Place& p) const
{
    const double off = dot(right_of(line.direction), p - line.anchor) - distance_ - line.start;
    return std::fabs(off) <= 1e-06 * std::fabs(distance_) + 1e-08;
}

/// Finds the line of the edge that starts at a vertex: its own, or that of a removed vertex behind it, into whose edge
/// it has run.
void JoinedOutline::find_line(Ring& ring, size_t at) const
{
    const size_t end = ring.after(at);
    for (size_t i = at; i != end; i = i + 1 == ring.nodes.size() ? 0 : i + 1) {
        const Line& line = vertices_[static_cast<size_t>(ring.numbers[i])].line;
        if (line.is_known && is_on(line, ring.place(at)) && is_on(line, ring.place(end))) {
            ring.nodes[at].line = line;
            return;
        }
    }
}

/// Moves a vertex of a join to where the lines of its edges meet.
void JoinedOutline::place_on_lines(Ring& ring, size_t at) const
{
    const Line &in = ring.nodes[ring.before(at)].line, &out = ring.nodes[at].line;
    if (!in.is_known || !out.is_known || (!in.is_join && !out.is_join))
        return;
    const double turn = cross(in.direction, out.direction);
    if (std::fabs(turn) < kParallel)
        return;
    const Place origin = out.is_join ? out.anchor : in.anchor;
    const Place a = right_of(in.direction), b = right_of(out.direction);
    const double to_a = distance_ + dot(a, in.anchor - origin), to_b = distance_ + dot(b, out.anchor - origin);
    ring.nodes[at].place = origin + Place{(to_a * b.y - to_b * a.y) / turn, (to_b * a.x - to_a * b.x) / turn};
}

/// Where a bevel cuts an edge off: along its line, `level` from the anchor, and `half` of its length to either side.
struct JoinedOutline::Bevel {
    Line line;
    Place normal;
    double level, half;

    Bevel(const Line& of, double distance) : line(of)
    {
        const double side = distance > 0.0 ? 1.0 : -1.0;
        normal = side * right_of(line.direction);
        level = side * (distance + line.cut);
        half = std::sqrt(std::max(distance * distance - level * level, 0.0));
    }
};

/// An end of a bevel.
struct JoinedOutline::End {
    static constexpr size_t kNone = static_cast<size_t>(-1);

    size_t outside;       ///< the last vertex outside of it
    Place place = {};     ///< where the bevel ends
    Place other = {};     ///< where the edge that comes to light ends
    size_t found = kNone; ///< the vertex of that edge, if there is one
};

/// Finds the end of a bevel of edge `at`: where it meets the ring from the end of the edge on, or from its start back.
/// Where the bevel ends before, an edge of the corner that has vanished comes to light again between the two. False
/// where there is nothing to cut; `limit` is the last vertex outside at the other end.
bool JoinedOutline::find_end(const Ring& ring, size_t at, const Bevel& bevel, bool is_ahead, size_t limit,
                             End& end) const
{
    const auto on = [&](size_t i) { return is_ahead ? ring.after(i) : ring.before(i); };
    const double sign = is_ahead ? 1.0 : -1.0;
    const Line& line = bevel.line;
    const Place* p;
    Place way;
    double height, descent;
    for (;; end.outside = on(end.outside)) {
        p = &ring.place(end.outside);
        way = ring.place(on(end.outside)) - *p;
        height = dot(bevel.normal, *p - line.anchor) - bevel.level;
        descent = -dot(bevel.normal, way);
        if (height < 0.0 || on(end.outside) == limit)
            return false;
        if (height < descent || descent <= 0.0)
            break;
    }
    if (std::fabs(descent) <= kParallel * length_of(way))
        return false;
    end.place = *p + (height / descent) * way;
    const double reach = dot(sign * line.direction, end.place - line.anchor), slack = 1e-09 * std::fabs(distance_);
    if (reach < -bevel.half - slack)
        return false;
    if (reach <= bevel.half + slack)
        return true;
    end.found = is_ahead ? at + 1 : at - 1;
    if (end.found >= ring.nodes.size() || !ring.nodes[end.found].is_gone ||
        ring.numbers[end.found] != ring.numbers[at] + (is_ahead ? 1 : -1))
        return false;
    const Line& lit = vertices_[static_cast<size_t>(ring.numbers[end.found])].line;
    const double turn = cross(lit.direction, way);
    if (!lit.is_known || std::fabs(turn) <= kParallel * length_of(way))
        return false;
    end.place = line.anchor + bevel.half * (sign * line.direction) + bevel.level * bevel.normal;
    end.other = end.place + (cross(*p - end.place, way) / turn) * lit.direction;
    const double along = dot(end.other - *p, way);
    if (along < height / descent * dot(way, way) || along > dot(way, way))
        return false; // not on what the bevel leaves of the ring's edge, so the rest would not lie within the ring
    return !(sign * dot(lit.direction, end.other - end.place) < 0.0);
}

/// Puts the bevel of edge `at` in the place of all of the ring between its ends.
void JoinedOutline::replace_corner(Ring& ring, size_t at, const End& start, const End& end) const
{
    const size_t next = ring.after(at);
    const Line out = ring.nodes[end.outside].line;
    for (size_t i = start.outside; i != end.outside; i = ring.after(i))
        ring.nodes[i].is_gone = i != at && i != next;
    ring.nodes[end.outside].is_gone = end.outside != next;
    ring.nodes[at].place = start.place;
    ring.nodes[next].place = end.found == End::kNone ? end.place : end.other;
    ring.nodes[next].line = out;
    if (end.found != End::kNone)
        ring.nodes[end.found] = {end.place, false, vertices_[static_cast<size_t>(ring.numbers[at]) + 1].line};
    if (start.found != End::kNone)
        ring.nodes[start.found] = {start.other, false, vertices_[static_cast<size_t>(ring.numbers[at]) - 1].line};
}

/// Cuts the corner away that edge `at` has made larger than a bevel: all of the ring from there to the first edge
/// before and the first one after that the bevel meets. An edge that runs away from the bevel meets it where it comes
/// from.
void JoinedOutline::cut_off(Ring& ring, size_t at) const
{
    const Bevel bevel(ring.nodes[at].line, distance_);
    End start = {at}, end = {ring.after(at)};
    if (!find_end(ring, at, bevel, true, start.outside, end) || !find_end(ring, at, bevel, false, end.outside, start))
        return;
    if (dot(bevel.line.direction, end.place - start.place) <= 0.0)
        return;
    replace_corner(ring, at, start, end);
}

void JoinedOutline::settle(border::Rows& swept, std::span<const int32_t> numbers) const
{
    if (is_sharp())
        return;
    Ring ring = {{}, numbers};
    const auto n = static_cast<size_t>(swept.n);
    ring.nodes.reserve(n);
    size_t left = 0;
    for (size_t i = 0; i < n; ++i) {
        ring.nodes.push_back({{swept.flat[3 * i], swept.flat[3 * i + 1]}, swept.dead[i] != 0});
        left += swept.dead[i] == 0;
    }
    if (left < 3)
        return;
    const auto for_each_left = [&](auto&& act) {
        for (size_t i = 0; i < n; ++i)
            if (!ring.nodes[i].is_gone)
                act(i);
    };
    for_each_left([&](size_t i) { find_line(ring, i); });
    for_each_left([&](size_t i) { place_on_lines(ring, i); });
    for_each_left([&](size_t i) {
        if (ring.nodes[i].line.is_known && ring.nodes[i].line.cut != 0.0)
            cut_off(ring, i);
    });
    for_each_left([&](size_t i) {
        swept.dead[i] = 0;
        swept.merge[i] = static_cast<int32_t>(i);
        swept.flat[3 * i] = ring.place(i).x;
        swept.flat[3 * i + 1] = ring.place(i).y;
    });
    for (size_t i = 0; i < n; ++i)
        if (ring.nodes[i].is_gone && swept.dead[i] == 0) {
            swept.dead[i] = 1;
            swept.merge[i] = static_cast<int32_t>(ring.after(i));
        }
}

void JoinedOutline::follow(const border::Rows& swept, uint8_t* removed, int32_t* merged_into) const
{
    const auto corner_of = [&](int32_t i) { return corner(static_cast<size_t>(i)); };
    for (int32_t i = 0; i < swept.n; ++i)
        removed[corner_of(i)] = 1;
    for (int32_t i = 0; i < swept.n; ++i)
        removed[corner_of(i)] &= swept.dead[i];
    for (int32_t i = 0; i < swept.n; ++i) {
        const int32_t c = corner_of(i);
        int32_t heir = i;
        while (swept.dead[heir] != 0 && corner_of(heir) == c)
            heir = swept.merge[heir];
        merged_into[c] = removed[c] != 0 ? corner_of(heir) : c;
    }
}

} // namespace korvale::door
