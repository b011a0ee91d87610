// All pieces of arbitrary outlines at several distances: the one sweep beside a call of its own for each distance, ring
// 0 beside the plain call, and what the arrays say of themselves. Joins now and then. Coordinates are doubles, or small
// integers, which make straight runs, doubled points, crossings and events that come at once common.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

#include "fuzz/input.h"
#include "include/korvale_c.h"

using namespace korvale::fuzz;

namespace {

struct Release {
    void operator()(korvale_rings* rings) const { korvale_rings_free(rings); }
};
using Rings = std::unique_ptr<korvale_rings, Release>;

template <class T>
bool have_same_bits(const T* a, const T* b, int64_t count)
{
    return count == 0 || std::memcmp(a, b, static_cast<size_t>(count) * sizeof(T)) == 0;
}

std::vector<double> outline_from(Input& in, int vertices)
{
    const bool are_integers = in.below(4) != 0;
    std::vector<double> outline;
    for (int i = 0; i < vertices; ++i) {
        for (int axis = 0; axis < 2; ++axis)
            outline.push_back(are_integers ? in.below(32) * 0.5 : in.any<int16_t>() / 256.0);
        outline.push_back(0.0);
    }
    return outline;
}

korvale_offset_options options_from(Input& in)
{
    korvale_offset_options options;
    korvale_offset_defaults(&options, sizeof options);
    options.split = in.below(8) != 0;
    options.keep_vertices = 0;
    switch (in.below(6)) {
    case 0:
        options.join = KORVALE_JOIN_BEVEL;
        break;
    case 1:
        options.join = KORVALE_JOIN_ROUND;
        options.tolerance = in.below(3) * 0.05;
        break;
    case 2:
        options.miter_limit = 1.0 + in.below(8) * 0.5;
        break;
    default:
        break;
    }
    return options;
}

/// What the arrays say of themselves: an outline's own ring first, pieces behind what they were cut from, ends not
/// before births, sources that are vertices, points that are numbers, none of what has come to nothing.
void check(const korvale_ring_arrays& all, int64_t first, int64_t end, double distance, int vertices)
{
    for (int64_t k = first; k < end; ++k) {
        require(k == first ? all.parents[k] == -1 : all.parents[k] >= first && all.parents[k] < k);
        require(k > first || all.births[k] == 0.0);
        require(std::abs(all.births[k]) <= std::abs(all.ends[k]) && std::abs(all.ends[k]) <= std::abs(distance));
        require(k == first || std::abs(all.births[k]) >= std::abs(all.births[all.parents[k]]));
        require(all.starts[k] <= all.starts[k + 1]);
        require((all.collapsed[k] != 0) == (all.starts[k] == all.starts[k + 1]));
    }
    for (int64_t i = all.starts[first]; i < all.starts[end]; ++i) {
        require(all.sources[i] >= 0 && all.sources[i] < vertices);
        require(std::isfinite(all.points[3 * i]) && std::isfinite(all.points[3 * i + 1]));
    }
}

/// Rings `first` to `first` + those of `one` are `one`, to the last bit.
void compare(const korvale_ring_arrays& all, int64_t first, const korvale_ring_arrays& one)
{
    const int64_t points = one.starts[one.rings], begin = all.starts[first];
    require(all.starts[first + one.rings] - begin == points);
    require(have_same_bits(all.points + 3 * begin, one.points, 3 * points));
    require(have_same_bits(all.sources + begin, one.sources, points));
    require(have_same_bits(all.births + first, one.births, one.rings));
    require(have_same_bits(all.ends + first, one.ends, one.rings));
    require(have_same_bits(all.collapsed + first, one.collapsed, one.rings));
    for (int64_t k = 0; k < one.rings; ++k) {
        require(all.starts[first + k] - begin == one.starts[k]);
        require(all.parents[first + k] == (one.parents[k] < 0 ? -1 : one.parents[k] + first));
    }
}

/// Ring 0 is what the plain call gives, to the last bit.
void compare_with_plain(const korvale_points& outline, double distance, const korvale_offset_options& options,
                        const korvale_ring_arrays& one)
{
    std::vector<double> points(3 * static_cast<size_t>(outline.count));
    korvale_border border = {};
    border.points = points.data();
    require(korvale_offset(&outline, distance, &options, &border, nullptr) == KORVALE_OK);
    require(border.collapsed == one.collapsed[0]);
    require(border.collapsed != 0 ||
            (border.count == one.starts[1] && have_same_bits(points.data(), one.points, 3 * border.count)));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count)
{
    Input in(bytes, count);
    const korvale_offset_options options = options_from(in);
    const int vertices = 3 + in.below(30);
    std::vector<double> distances(1 + static_cast<size_t>(in.below(4)));
    for (double& distance : distances)
        distance = in.any<int8_t>() / 16.0;
    const std::vector<double> outline = outline_from(in, vertices);

    const korvale_points points = {outline.data(), vertices, 0, 3, KORVALE_DOUBLE};
    const korvale_numbers each = {distances.data(), static_cast<int64_t>(distances.size()), 0, 1, KORVALE_DOUBLE};
    korvale_rings* made = nullptr;
    const korvale_status status = korvale_offset_distances(&points, &each, &options, &made, nullptr);
    const Rings rings(made);
    require((status == KORVALE_OK) == (made != nullptr));
    const korvale_ring_arrays all = korvale_rings_view(made);
    int64_t first = 0;
    for (const double distance : distances) {
        korvale_rings* made_alone = nullptr;
        require(korvale_offset_rings(&points, distance, &options, &made_alone, nullptr) == status);
        const Rings alone(made_alone);
        if (status != KORVALE_OK)
            continue;
        const korvale_ring_arrays one = korvale_rings_view(made_alone);
        require(first + one.rings <= all.rings);
        compare(all, first, one);
        check(all, first, first + one.rings, distance, vertices);
        if (options.join == KORVALE_JOIN_MITER && options.miter_limit == 0.0)
            compare_with_plain(points, distance, options, one);
        first += one.rings;
    }
    require(status != KORVALE_OK || first == all.rings);
    return 0;
}
