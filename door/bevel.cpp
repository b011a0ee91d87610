// Solids between outlines moved sideways: a layer for each step of a profile, strips between neighbours, and a cap on
// the first and on the last layer.
//
// Each outline is moved by itself. A layer goes no farther than all of them stay whole: that is where one splits, or a
// limb or all of it vanishes, but for holes, which may vanish.
//
// What is whole may still cross another outline. A layer is sound where the triangles of its cap all run one way: what
// crossing outlines go round the wrong way, or a hole without its outer outline, takes some that run the other. A layer
// that is not sound is held back to one that is, which is found by halving the distance.
#include <algorithm>

#include "data/internal/kernels.h"
#include "door/internal/edges.h"
#include "door/internal/mesh.h"
#include "door/internal/offset.h"
#include "door/internal/outlines.h"

namespace korvale::door {
namespace {

double largest_of(std::span<const Outline> outlines)
{
    double largest = 0.0;
    for (const Outline& outline : outlines)
        largest = std::max(largest, largest_of(outline));
    return largest;
}

Rings rings_of(std::span<const Outline> outlines, Seen seen)
{
    seen.scale = scale_to_one(largest_of(outlines));
    Rings rings;
    for (const Outline& outline : outlines)
        rings.add(outline, seen);
    return rings;
}

/// How a triangle runs, but for rounding: 1 counter-clockwise, -1 clockwise, 0 without area.
int turn_of(const Place& a, const Place& b, const Place& c)
{
    const Place p = b - a, q = c - a, r = c - b;
    const double twice = cross(p, q);
    return twice * twice > kNegligible * kNegligible * std::max({dot(p, p), dot(q, q), dot(r, r)}) ? sign_of(twice) : 0;
}

bool has_turn(const Rings& rings, const Vector<Triangle>& triangles, int turn)
{
    const auto place = [&](int32_t i) -> const Place& { return rings.places[static_cast<size_t>(i)]; };
    return std::any_of(triangles.begin(), triangles.end(),
                       [&](const Triangle& t) { return turn_of(place(t[0]), place(t[1]), place(t[2])) == turn; });
}

/// Whether the ends of `f` lie on either side of the line through `e`, but for rounding.
bool does_part(const Edge& e, const Edge& f)
{
    const Place along = e.to - e.from;
    const double first = cross(along, f.from - e.from), second = cross(along, f.to - e.from);
    const double nearer = std::min(std::fabs(first), std::fabs(second));
    return (first < 0.0) != (second < 0.0) && nearer * nearer > kNegligible * kNegligible * dot(along, along);
}

/// Two edges by their rings and the places where they start.
struct Crossing {
    size_t ring, other, edge, other_edge;
};

/// Edges that cross, if there are some. `telling` only stops the search.
std::optional<Crossing> find_crossing(const Rings& rings, const Telling& telling)
{
    constexpr int32_t kPairsPerQuestion = 1 << 12;
    Asking asking(telling, kPairsPerQuestion);
    struct Start {
        size_t ring, place;
    };
    Vector<Edge> list;
    Vector<Start> starts;
    list.reserve(rings.places.size());
    starts.reserve(rings.places.size());
    for (size_t k = 0; k < rings.size(); ++k) {
        const std::span<const Place> ring = rings[k];
        for (size_t i = 0; i < ring.size(); ++i)
            if (const Edge e = edge_of(ring, i); e.from != e.to) {
                list.push_back(e);
                starts.push_back({k, i});
            }
    }
    if (list.size() < 4)
        return {};
    const EdgeTree edges(std::move(list));
    std::optional<Crossing> found;
    for (size_t i = 0; i < edges.size() && !found; ++i)
        edges.for_each_near(i, [&](size_t k) {
            asking.step(0.0);
            if (!found && does_part(edges[i], edges[k]) && does_part(edges[k], edges[i]))
                found = {starts[i].ring, starts[k].ring, starts[i].place, starts[k].place};
        });
    return found;
}

void require_apart(const Rings& rings, const Telling& telling)
{
    const std::optional<Crossing> crossing = find_crossing(rings, telling);
    if (!crossing)
        return;
    if (crossing->ring == crossing->other)
        throw Refusal(Text() << "outline " << crossing->ring, "not cross itself",
                      Text() << "its edges from points " << crossing->edge << " and " << crossing->other_edge << " do");
    throw Refusal("outlines", "not cross each other",
                  Text() << "outlines " << crossing->ring << " and " << crossing->other
                         << " do, by their edges from points " << crossing->edge << " and " << crossing->other_edge);
}

/// 1 where heights go along the normal from which the outline runs counter-clockwise, -1 where they go the other way:
/// somebody who looks at an outline in a plane of constant z looks from above, however it runs.
double upwards(Outline outline, const Seen& seen)
{
    const bool is_level =
        std::all_of(outline.begin(), outline.end(), [&](const Point& p) { return p.z == outline[0].z; });
    return is_level && seen.x == 1 ? -1.0 : 1.0;
}

class Bevel {
public:
    Bevel(std::span<const Outline> outlines, bool split, korvale_mesh& mesh, const Telling& telling)
        : outlines_(outlines), split_(split), mesh_(mesh), telling_(telling), now_(telling.part(0.0, 0.0)),
          borders_(outlines.size()), seen_(seen_upright(outlines[0])), rings_(rings_of(outlines, seen_)),
          points_(rings_.places.size()), up_(upwards(outlines[0], seen_))
    {
    }

    /// Refuses outlines that cross themselves or each other, what is no hole in the first, and holes that fill it.
    void require_apart() const
    {
        door::require_apart(rings_, now_);
        if (outlines_.size() == 1)
            return;
        const Vector<Triangle> cap = cut(rings_, rings_, now_);
        const bool sound = is_layer_sound(rings_, cap);
        if (sound && has_turn(rings_, cap, 1))
            return;
        for (size_t k = 1; k < outlines_.size(); ++k) {
            const Outline pair[] = {outlines_[0], outlines_[k]};
            const Rings rings = rings_of(pair, seen_);
            const Vector<Triangle> left = cut(rings, now_);
            if (!is_layer_sound(rings, left))
                throw Refusal(Text() << "outline " << k, "lie inside outline 0, as a hole in it", "it does not");
            if (!has_turn(rings, left, 1))
                throw Refusal(Text() << "outline " << k, "leave some of outline 0", "it goes round all of it");
        }
        if (sound)
            throw Refusal("outlines", "be an outer one and holes that leave some of it", "the holes fill it");
        throw Refusal("outlines", "be an outer one and holes apart from each other", "some holes lie over others");
    }

    /// What crosses at some distance crosses at all larger ones, so the layers that go farthest tell of all others.
    void run(std::span<const korvale_bevel_step> profile)
    {
        const auto [inmost, outmost] = std::minmax_element(
            profile.begin(), profile.end(),
            [](const korvale_bevel_step& a, const korvale_bevel_step& b) { return a.distance < b.distance; });
        Range range;
        build(profile, range, telling_.part(0.0, 0.5));
        telling_.tell(0.5);
        now_ = telling_.part(0.5, 0.0);
        const size_t inmost_step = step_number(profile, *inmost), outmost_step = step_number(profile, *outmost);
        const double inwards = mesh_.reached[inmost_step], outwards = mesh_.reached[outmost_step];
        const bool is_held_inwards = inwards < 0.0 && !is_layer_sound(inmost_step);
        const bool is_held_outwards = outwards > 0.0 && !is_layer_sound(outmost_step);
        if (!is_held_inwards && !is_held_outwards)
            return;
        if (is_held_inwards)
            range.inwards = find_most(inwards);
        if (is_held_outwards)
            range.outwards = find_most(outwards);
        build(profile, range, telling_.part(0.75, 0.25));
    }

private:
    struct Range {
        double inwards = -std::numeric_limits<double>::infinity(), outwards = std::numeric_limits<double>::infinity();
    };

    static size_t step_number(std::span<const korvale_bevel_step> profile, const korvale_bevel_step& step)
    {
        return static_cast<size_t>(&step - profile.data());
    }

    /// Makes a layer for each step, none of them out of the range, and closes the first and the last.
    void build(std::span<const korvale_bevel_step> profile, const Range& range, const Telling& telling)
    {
        const double share = 1.0 / static_cast<double>(profile.size());
        mesh_.points.clear();
        mesh_.triangles.clear();
        mesh_.reached.clear();
        for (size_t i = 0; i < profile.size(); ++i) {
            const double before = static_cast<double>(i) * share;
            telling.tell(before);
            now_ = telling.part(before, 0.0);
            const double distance = std::clamp(profile[i].distance, range.inwards, range.outwards);
            mesh_.reached.push_back(move_whole({distance, up_ * profile[i].height}));
            if (!are_finite())
                throw Refusal("profile", "keep points where there are numbers for them",
                              Text() << "its step " << i << " moves some beyond");
            add_layer();
            if (i == 0) {
                first_cap_ = cut(layer(0), rings_, now_);
                add_cap(first_cap_, true);
            }
        }
        last_cap_ = cut(layer(profile.size() - 1), rings_, now_);
        add_cap(last_cap_, false);
    }

    /// Without splits outlines may cross, and one that has collapsed may be inside out.
    bool is_sound_without_splits() const
    {
        if (!are_finite() ||
            std::any_of(borders_.begin(), borders_.end(), [](const Border& border) { return border.collapsed; }))
            return false;
        const Rings rings = latest_layer();
        return !find_crossing(rings, now_) && is_layer_sound(rings);
    }

    void move(const korvale_bevel_step& step, bool split)
    {
        mover_.move_with_holes(outlines_, {step.distance, step.height, true, split, now_, true}, borders_);
    }

    /// Moves the outlines by a step, or as far as all of them stay whole. Returns how far that is.
    double move_whole(korvale_bevel_step step)
    {
        move(step, split_);
        if (!split_ && !is_sound_without_splits())
            move(step, true);
        double left = 0.0;
        for (size_t k = 0; k < borders_.size(); ++k)
            if (k == 0 || !borders_[k].collapsed)
                left = std::max(left, std::fabs(borders_[k].left));
        if (left == 0.0)
            return step.distance;
        step.distance -= std::copysign(left, step.distance);
        if (borders_.size() > 1)
            move(step, true); // some have gone farther
        return step.distance;
    }

    bool are_finite() const
    {
        return std::all_of(borders_.begin(), borders_.end(), [](const Border& border) {
            return data::are_finite(border.points.data()->data(), 3 * static_cast<int64_t>(border.size));
        });
    }

    /// Adds the points of the latest layer, and joins them to those of the one before.
    void add_layer()
    {
        const auto here = static_cast<int32_t>(mesh_.points.size());
        for (const Border& border : borders_)
            mesh_.points.insert(mesh_.points.end(), border.outline().begin(), border.outline().end());
        const auto n = static_cast<int32_t>(mesh_.points.size()) - here;
        int32_t done = 0;
        for (size_t k = 0; here > 0 && k < borders_.size(); ++k) {
            const auto size = static_cast<int32_t>(outlines_[k].size());
            add_strip(mesh_, here - n + done, here + done, size, k > 0 && !is_mostly_clockwise(rings_[k]));
            done += size;
        }
    }

    /// Closes the layer that has been added last.
    void add_cap(const Vector<Triangle>& cap, bool is_bottom)
    {
        const auto first = static_cast<int32_t>(mesh_.points.size() - points_);
        for (const Triangle& t : cap)
            mesh_.triangles.push_back({first + t[0], first + t[is_bottom ? 2 : 1], first + t[is_bottom ? 1 : 2]});
    }

    /// The outlines of the layer of a step, or of the latest one made.
    ///@{
    Rings layer(size_t step) const
    {
        Vector<Outline> outlines;
        const Point* from = mesh_.points.data() + step * points_;
        for (const Outline& outline : outlines_) {
            outlines.emplace_back(from, outline.size());
            from += outline.size();
        }
        return rings_of(outlines, seen_);
    }
    Rings latest_layer() const
    {
        Vector<Outline> outlines;
        for (const Border& border : borders_)
            outlines.push_back(border.outline());
        return rings_of(outlines, seen_);
    }
    ///@}

    /// The farthest distance, but for a millionth of it, up to which layers are sound; 0 where it is next to nothing.
    double find_most(double distance)
    {
        constexpr double kNear = 1e-06; // the millionth, in 20 halvings
        const double nothing = 1e-09 * extent_of(outlines_[0]).half;
        double sound = 0.0, not_sound = distance;
        while (std::fabs(not_sound - sound) > kNear * std::fabs(sound)) {
            if (std::fabs(not_sound) < nothing)
                return 0.0;
            const double middle = 0.5 * sound + 0.5 * not_sound;
            move({middle, 0.0}, true);
            (is_layer_sound(latest_layer()) ? sound : not_sound) = middle;
        }
        return sound;
    }

    bool is_layer_sound(size_t step) const
    {
        const Rings rings = layer(step);
        if (step == 0)
            return is_layer_sound(rings, first_cap_);
        return step + 1 == mesh_.reached.size() ? is_layer_sound(rings, last_cap_) : is_layer_sound(rings);
    }
    bool is_layer_sound(const Rings& rings) const { return is_layer_sound(rings, cut(rings, rings_, now_)); }

    static bool is_layer_sound(const Rings& rings, const Vector<Triangle>& cap) { return !has_turn(rings, cap, -1); }

    std::span<const Outline> outlines_;
    bool split_;
    korvale_mesh& mesh_;
    Telling telling_;
    Telling now_; // tells how far the whole has come, while a part of it is made
    Mover mover_;
    Vector<Border> borders_; // of the latest layer
    Seen seen_;              // from where the outer outline runs counter-clockwise
    Rings rings_;            // of the outlines
    size_t points_;          // of a layer
    double up_;              // the sign of heights
    // Rounding would say which way an outline of a layer runs that has vanished, and strips would not always meet the
    // cap: it is cut as the outlines run.
    Vector<Triangle> first_cap_, last_cap_;
};

void require_profile(const korvale_bevel_step* profile, int64_t steps)
{
    if (steps < 2)
        throw Refusal("profile", "have at least 2 steps", Text() << "it has " << steps);
    require(profile, "profile");
    for (int64_t i = 0; i < steps; ++i) {
        require_finite(profile[i].distance, "profile");
        require_finite(profile[i].height, "profile");
    }
}

void require_room(int64_t steps, int64_t points)
{
    if (steps > kMostMeshPoints / points)
        throw Refusal("profile",
                      Text() << "have at most " << kMostMeshPoints / points << " steps for " << points << " points",
                      Text() << "it has " << steps);
}

} // namespace
} // namespace korvale::door

using namespace korvale::door;

void korvale_bevel_defaults(korvale_bevel_options* options, size_t size)
{
    give_defaults(options, size, korvale_bevel_options{sizeof *options, 1, nullptr, nullptr, 0, 0});
}

korvale_status korvale_bevel(const korvale_points* outlines, int64_t count, const korvale_bevel_step* profile,
                             int64_t steps, const korvale_bevel_options* options, korvale_mesh** mesh,
                             korvale_error* error)
{
    return answer(error, "korvale_bevel", [&] {
        require(mesh, "mesh");
        *mesh = nullptr;
        const korvale_bevel_options how = options_of(options, korvale_bevel_defaults);
        require_profile(profile, steps);
        const OutlinesIn in(outlines, count, 3);
        if (count == 0)
            throw Refusal("outlines", "have an outer outline", "there is none");
        Vector<Outline> views;
        int64_t points = 0;
        for (size_t k = 0; k < in.size(); ++k) {
            views.push_back(in[k]);
            points += static_cast<int64_t>(in[k].size());
        }
        require_room(steps, points);

        Handle<korvale_mesh> made(make_handle<korvale_mesh>());
        (*made).points.reserve(static_cast<size_t>(steps * points));
        (*made).triangles.reserve(2 * static_cast<size_t>(steps * points + 2 * count));
        Bevel bevel(views, how.split != 0, *made, {how.progress, how.user});
        if (how.crossing == 0)
            bevel.require_apart();
        bevel.run({profile, static_cast<size_t>(steps)});
        weld(*made);
        turn_outwards(*made);
        *mesh = made.release();
    });
}
