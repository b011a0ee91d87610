// Outlines sorted into shapes.
//
// Outlines that are there more than once are taken once (repeats.cpp), and those that cross are refused (contacts.cpp).
// All others are put into each other (nesting.cpp).
//
// Outlines that cross by less than the tolerance may be joined (joined_rings.cpp). Joined, they are other outlines,
// which are looked at again: they may cross in their new places, or lie in others than before.
#include <algorithm>

#include "door/internal/contacts.h"
#include "door/internal/joined_rings.h"
#include "door/internal/nesting.h"
#include "door/internal/offset.h"
#include "door/internal/outlines.h"

namespace korvale::door {

namespace {

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
            largest = std::max(largest, largest_of(outline(k)));
            places += outline(k).size();
        }
        scale_ = scale_to_one(largest);
        rings_.places.reserve(places);
        for (size_t k = 0; k < in.size(); ++k)
            rings_.add(outline(k), {0, 1, scale_});
    }

    void sort(int32_t* outer) const
    {
        const bool joins = how_.joined != nullptr && how_.crossing == 0 && how_.tolerance > 0.0;
        Vector<int32_t> found = sort(telling_.part(0.0, joins ? 0.4 : 1.0));
        if (how_.joined != nullptr) {
            JoinedRings joined = rings_in_shapes(found);
            if (joins)
                join_overlapping(joined, found);
            *how_.joined = new_rings(list_of(joined, found));
        }
        std::copy(found.begin(), found.end(), outer);
    }

private:
    /// One of fewer points than enclose something counts as one of none.
    std::span<const Point> outline(size_t k) const
    {
        constexpr size_t kLeast = 3; // points of a triangle
        return in_[k].size() < kLeast ? in_[k].first(0) : in_[k];
    }

    Vector<int32_t> sort(const Telling& telling) const
    {
        const double tolerance = how_.tolerance * scale_;
        Contours contours(rings_, tolerance, telling.part(0.0, 0.2));
        Contacts contacts(contours, tolerance, how_.crossing != 0, telling.part(0.2, 0.3));
        if (how_.crossing == 0)
            if (const std::optional<Crossing> crossing = contacts.find_crossing(telling.part(0.5, 0.2)))
                refuse(*crossing, 1.0 / scale_);
        return find_outer(contours, contacts.touches(), telling.part(0.7, 0.3));
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
        constexpr int kMostRounds = 3; // what is joined may come to cross others. Chosen
        for (int round = 0;; ++round) {
            const Telling telling = telling_.part(0.4 + 0.15 * round, 0.1);
            Contours contours(joined.rings, kNegligible, telling.part(0.0, 0.2));
            Contacts contacts(contours, kNegligible, false, telling.part(0.2, 0.3));
            const std::optional<Crossing> crossing = contacts.find_crossing(telling.part(0.5, 0.2));
            if (!crossing) {
                if (round > 0)
                    sort_again(find_outer(contours, contacts.touches(), telling.part(0.7, 0.3)), outer);
                return;
            }
            if (round == kMostRounds)
                refuse_joined(*crossing, 1.0 / scale_);
            join_rings(joined, contacts.crosses(), how_.tolerance * scale_, telling_.part(0.5 + 0.15 * round, 0.05));
        }
    }

    /// Takes what rings are now, but for those that repeated others or had no places; these repeat what is left.
    static void sort_again(const Vector<int32_t>& now, Vector<int32_t>& outer)
    {
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
