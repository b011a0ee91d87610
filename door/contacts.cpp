// Rings that touch, and those that cross.
//
// Whatever is within the slack of an edge, a tolerance or rounding, lies on it. Two rings cross where edges go through
// each other by more than that. Where they only touch, each edge that does is cut where ends of the other ring's edges
// lie on it: a piece whose middle lies on none of these is on one side of the other ring. Rings with pieces on both
// sides cross.
//
// A ring whose own edges meet is looked at by itself (self_crossing.cpp).
#include "door/internal/contacts.h"

#include <algorithm>
#include <tuple>

#include "door/internal/touching.h"

namespace korvale::door {

namespace {

constexpr int32_t kStepsPerQuestion = 256;

/// How the ends of an edge lie beside the line through another.
enum class Lie { one_side, both_sides, on_it };

Lie look_beside(const Edge& e, const Edge& f, double slack)
{
    const Place along = e.to - e.from;
    const double first = cross(along, f.from - e.from), second = cross(along, f.to - e.from);
    const double nearer = std::min(std::fabs(first), std::fabs(second));
    if (nearer * nearer <= slack * slack * dot(along, along))
        return Lie::on_it;
    return (first < 0.0) == (second < 0.0) ? Lie::one_side : Lie::both_sides;
}

} // namespace

Contacts::Contacts(Contours& contours, double tolerance, bool allows_crossing, const Telling& telling)
    : contours_(contours), slack_(slack_of(tolerance)), meetings_of_(static_cast<size_t>(contours.count()), 0),
      crosses_(static_cast<size_t>(contours.count()), 0)
{
    contours_.tree().for_each_near_pair(slack_, !allows_crossing, telling,
                                        [&](int32_t ring, int32_t i, int32_t other, int32_t k) {
                                            if (ring != other)
                                                compare(ring, i, other, k);
                                            else
                                                compare_own(ring, i, k);
                                        });
    std::sort(contacts_.begin(), contacts_.end(), [](const Contact& a, const Contact& b) {
        return std::tie(a.ring, a.other, a.edge) < std::tie(b.ring, b.other, b.edge);
    });
    std::sort(meetings_.begin(), meetings_.end());
}

/// Looks at edge i of one ring and edge k of another.
void Contacts::compare(int32_t ring, int32_t i, int32_t other, int32_t k)
{
    const Edge e = contours_.tree().edge(ring, i), f = contours_.tree().edge(other, k);
    const Lie of_e = look_beside(e, f, slack_);
    if (of_e == Lie::one_side)
        return;
    const Lie of_f = look_beside(f, e, slack_);
    if (of_f == Lie::one_side)
        return;
    if (of_e == Lie::both_sides && of_f == Lie::both_sides)
        return note_crossing(ring, other, crossing_of(e, f));
    if (!is_within(slack_, f, e.from) && !is_within(slack_, f, e.to) && !is_within(slack_, e, f.from) &&
        !is_within(slack_, e, f.to))
        return;
    contacts_.push_back({ring, other, i, k});
    contacts_.push_back({other, ring, k, i});
}

/// Looks at edges i and k of one ring. Of a scribble not all that meet are kept.
void Contacts::compare_own(int32_t ring, int32_t i, int32_t k)
{
    constexpr int32_t kMostAPlace = 4; // pairs for each edge of a ring, on average: it bounds the memory. Chosen
    int32_t& count = meetings_of_[static_cast<size_t>(ring)];
    if (count / kMostAPlace >= contours_.size(ring) || !do_meet(contours_.places(ring), i, k))
        return;
    ++count;
    meetings_.push_back({ring, {i, k}});
    const Edge e = contours_.tree().edge(ring, i), f = contours_.tree().edge(ring, k);
    if (look_beside(e, f, slack_) == Lie::both_sides && look_beside(f, e, slack_) == Lie::both_sides) {
        note_crossing(ring, ring, crossing_of(e, f));
        count = std::numeric_limits<int32_t>::max();
    }
}

void Contacts::note_crossing(int32_t a, int32_t b, const Place& p)
{
    const Crossing crossing = {std::min(a, b), std::max(a, b), p};
    crosses_[static_cast<size_t>(a)] = crosses_[static_cast<size_t>(b)] = 1;
    if (!crossing_ || std::pair(crossing.first, crossing.second) < std::pair(crossing_->first, crossing_->second))
        crossing_ = crossing;
}

std::optional<Crossing> Contacts::find_crossing(const Telling& telling)
{
    find_self_crossings(telling.part(0.0, 0.5));
    Asking asking(telling.part(0.5, 0.5), kStepsPerQuestion);
    Vector<Sides> all;
    for (size_t first = 0, end = 0; first < contacts_.size(); first = end) {
        asking.step(static_cast<double>(first) / static_cast<double>(contacts_.size()));
        end = end_of_pair(first);
        all.push_back(look_at_sides(std::span(contacts_).subspan(first, end - first)));
    }
    for (const Sides& a : all)
        if (a.ring < a.other)
            compare_sides(a, *std::partition_point(all.begin(), all.end(), [&](const Sides& s) {
                              return std::pair(s.ring, s.other) < std::pair(a.other, a.ring);
                          }));
    return crossing_;
}

// --- Rings whose own edges meet --------------------------------------------------------------------------------------

/// Looks at each of them, until one crosses itself or a later one could tell nothing.
void Contacts::find_self_crossings(const Telling& telling)
{
    Vector<EdgePair> pairs;
    for (size_t first = 0, end = 0; first < meetings_.size(); first = end) {
        const int32_t ring = meetings_[first].first;
        pairs.clear();
        for (; end < meetings_.size() && meetings_[end].first == ring; ++end)
            pairs.push_back(meetings_[end].second);
        if (crossing_ && std::pair(crossing_->first, crossing_->second) <= std::pair(ring, ring))
            return;
        const auto done = static_cast<double>(first) / static_cast<double>(meetings_.size());
        if (const std::optional<Place> p = find_self_crossing(contours_.places(ring), pairs, contours_[ring].lowest,
                                                              slack_, telling.part(done, 0.0)))
            return note_crossing(ring, ring, *p);
    }
}

// --- Rings that touch ------------------------------------------------------------------------------------------------

/// One past the last contact of the same two rings.
size_t Contacts::end_of_pair(size_t first) const
{
    size_t end = first;
    while (end < contacts_.size() && contacts_[end].ring == contacts_[first].ring &&
           contacts_[end].other == contacts_[first].other)
        ++end;
    return end;
}

/// Looks at the edges of a ring that touch another, piece by piece, until there is a place on either side.
Contacts::Sides Contacts::look_at_sides(std::span<const Contact> contacts) const
{
    Sides sides = {contacts[0].ring, contacts[0].other, {}, {}};
    for (size_t first = 0, end = 0; first < contacts.size(); first = end) {
        while (end < contacts.size() && contacts[end].edge == contacts[first].edge)
            ++end;
        for (const Place& p : free_places(contacts.subspan(first, end - first))) {
            (contours_.is_inside(sides.other, p) ? sides.in : sides.out) = p;
            if (sides.in && sides.out)
                return sides;
        }
    }
    return sides;
}

/// A place on each piece of an edge between two places at which another ring touches it, but for those on the ring.
Vector<Place> Contacts::free_places(std::span<const Contact> contacts) const
{
    const Edge e = contours_.tree().edge(contacts[0].ring, contacts[0].edge);
    const Place along = e.to - e.from;
    if (!(dot(along, along) > 0.0))
        return {}; // a point that is there twice
    Vector<Edge> others;
    Vector<double> shares = {0.0, 1.0};
    for (const Contact& c : contacts) {
        others.push_back(contours_.tree().edge(c.other, c.other_edge));
        add_shares(e, others.back(), slack_, shares);
    }
    std::sort(shares.begin(), shares.end());
    Vector<Place> places;
    for (size_t i = 1; i < shares.size(); ++i) {
        const Place middle = e.from + 0.5 * (shares[i - 1] + shares[i]) * along;
        const double reach = reach_of((shares[i] - shares[i - 1]) * std::sqrt(dot(along, along)), slack_);
        if (std::none_of(others.begin(), others.end(), [&](const Edge& f) { return is_within(reach, f, middle); }))
            places.push_back(middle);
    }
    return places;
}

/// Two rings that touch cross if one has places on both sides of the other. If both are out of each other, and yet one
/// lies well inside the other, it sticks out of that through a gap as narrow as the slack; if both are in each other,
/// both do so.
void Contacts::compare_sides(const Sides& a, const Sides& b)
{
    for (const Sides* sides : {&a, &b})
        if (sides->in && sides->out)
            return note_crossing(a.ring, a.other, *sides->out);
    if (a.in && b.in)
        return note_crossing(a.ring, a.other, *a.in);
    if (a.out && b.out && (lies_well_inside(a.ring, a.other) || lies_well_inside(a.other, a.ring)))
        note_crossing(a.ring, a.other, *a.out);
}

bool Contacts::lies_well_inside(int32_t ring, int32_t other)
{
    const Place& p = contours_.place_inside(ring);
    if (!contours_.is_inside(other, p))
        return false;
    for (int32_t i = 0; i < contours_.size(other); ++i)
        if (is_within(2 * slack_, contours_.tree().edge(other, i), p))
            return false;
    return true;
}

Vector<uint8_t> Contacts::touches() const
{
    Vector<uint8_t> touches(static_cast<size_t>(contours_.count()), 0);
    for (const Contact& c : contacts_)
        touches[static_cast<size_t>(c.ring)] = 1;
    return touches;
}

} // namespace korvale::door
