// Solids between outlines moved sideways: a layer for each step of a profile, strips between neighbours, and a cap on
// the first and on the last layer.
#include "data/internal/kernels.h"
#include "door/internal/mesh.h"
#include "door/internal/offset.h"
#include "door/internal/outlines.h"

namespace korvale::door {
namespace {

Rings rings_of(std::span<const Outline> outlines, Seen seen)
{
    double largest = 0.0;
    for (const Outline& outline : outlines)
        largest = std::max(largest, largest_of(outline));
    seen.scale = scale_to_one(largest);
    Rings rings;
    for (const Outline& outline : outlines)
        rings.add(outline, seen);
    return rings;
}

class Bevel {
public:
    Bevel(std::span<const Outline> outlines, bool split, korvale_mesh& mesh)
        : outlines_(outlines), split_(split), mesh_(mesh), borders_(outlines.size()), seen_(seen_upright(outlines[0])),
          rings_(rings_of(outlines, seen_))
    {
    }

    /// Makes the layer of a step.
    void move(const korvale_bevel_step& step)
    {
        sweep_.move(outlines_, {step.distance, step.height, true, split_}, borders_);
        // Without splits an outline that has collapsed may be inside out.
        if (!split_ && std::any_of(borders_.begin(), borders_.end(), [](const Border& b) { return b.collapsed; }))
            sweep_.move(outlines_, {step.distance, step.height, true, true}, borders_);
    }

    /// Adds the points of the layer, and joins them to those of the one before.
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

    /// Closes the layer, which has been added last.
    void add_cap(bool is_bottom)
    {
        Vector<Outline> layer;
        for (const Border& border : borders_)
            layer.push_back(border.outline());
        const Rings rings = rings_of(layer, seen_);
        const auto first = static_cast<int32_t>(mesh_.points.size() - rings.places.size());
        // Rounding would say which way an outline runs that has vanished, and strips would not always meet the cap.
        for (const Triangle& t : cut(rings, rings_))
            mesh_.triangles.push_back({first + t[0], first + t[is_bottom ? 2 : 1], first + t[is_bottom ? 1 : 2]});
    }

private:
    std::span<const Outline> outlines_;
    bool split_;
    korvale_mesh& mesh_;
    Sweep sweep_;
    Vector<Border> borders_; // of the latest layer
    Seen seen_;              // from where the outer outline runs counter-clockwise
    Rings rings_;            // of the outlines
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
    constexpr int64_t kMost = std::numeric_limits<int32_t>::max() / 9;
    if (steps > kMost / points)
        throw Refusal("profile", Text() << "have at most " << kMost / points << " steps for " << points << " points",
                      Text() << "it has " << steps);
}

void require_finite_layer(const korvale_mesh& mesh, int64_t points, int64_t step)
{
    const auto first = mesh.points.size() - static_cast<size_t>(points);
    if (!inside::are_finite(mesh.points[first].data(), 3 * points))
        throw Refusal("profile", "keep points where there are numbers for them",
                      Text() << "its step " << step << " moves some beyond");
}

} // namespace
} // namespace korvale::door

using namespace korvale::door;

void korvale_bevel_defaults(korvale_bevel_options* options, size_t size)
{
    give_defaults(options, size, korvale_bevel_options{sizeof *options, 1});
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
        Bevel bevel(views, how.split != 0, *made);
        for (int64_t i = 0; i < steps; ++i) {
            bevel.move(profile[i]);
            bevel.add_layer();
            require_finite_layer(*made, points, i);
            if (i == 0)
                bevel.add_cap(true);
        }
        bevel.add_cap(false);
        weld(*made);
        turn_outwards(*made);
        *mesh = made.release();
    });
}
