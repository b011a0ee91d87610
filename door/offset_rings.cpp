// Outlines moved with all pieces: the rings in blocks that a host can take over.
#include <algorithm>

#include "door/internal/offset.h"

/// Rings, each array in a block of its own.
struct korvale_rings {
    korvale::door::Block<korvale::door::Point> points;
    korvale::door::Block<int64_t> starts;
    korvale::door::Block<int32_t> sources, parents;
    korvale::door::Block<double> births, ends;
    korvale::door::Block<uint8_t> collapsed;
    int64_t count = 0;
};

namespace korvale::door {
namespace {

template <class T>
void fill(Block<T>& block, const Vector<T>& values)
{
    block.make_room(std::max<size_t>(values.size(), 1));
    std::copy(values.begin(), values.end(), block.data());
}

/// All rings in one list.
RingList joined(std::span<const RingList> lists)
{
    RingList all;
    const auto add = [](auto& to, const auto& from) { to.insert(to.end(), from.begin(), from.end()); };
    all.starts.push_back(0);
    for (const RingList& list : lists) {
        const auto points = static_cast<int64_t>(all.points.size());
        const auto rings = static_cast<int32_t>(all.parents.size());
        for (size_t k = 1; k < list.starts.size(); ++k)
            all.starts.push_back(points + list.starts[k]);
        for (const int32_t parent : list.parents)
            all.parents.push_back(parent < 0 ? -1 : rings + parent);
        add(all.points, list.points);
        add(all.sources, list.sources);
        add(all.births, list.births);
        add(all.ends, list.ends);
        add(all.collapsed, list.collapsed);
    }
    return all;
}

void fill(korvale_rings& rings, const RingList& list)
{
    fill(rings.points, list.points);
    fill(rings.starts, list.starts);
    fill(rings.sources, list.sources);
    fill(rings.parents, list.parents);
    fill(rings.births, list.births);
    fill(rings.ends, list.ends);
    fill(rings.collapsed, list.collapsed);
    rings.count = static_cast<int64_t>(list.parents.size());
}

} // namespace

korvale_rings* new_rings(const RingList& list)
{
    Handle made(make_handle<korvale_rings>());
    fill(*made, list);
    return made.release();
}

} // namespace korvale::door

using namespace korvale::door;

korvale_status korvale_offset_rings(const korvale_points* outline, double distance,
                                    const korvale_offset_options* options, korvale_rings** rings, korvale_error* error)
{
    if (rings != nullptr)
        *rings = nullptr;
    return answer(error, "korvale_offset_rings", [&] {
        const PointsIn in(outline, "outline");
        require_points(in, "outline", 3);
        const korvale_offset_options how = options_of(options, korvale_offset_defaults);
        const JoinsIn joins(how, in.size());
        Motion motion = motion_of(distance, how);
        motion.joins = joins.joins();
        require(rings, "rings");
        RingList list;
        Mover().move_rings(in.points(), motion, list);
        *rings = new_rings(list);
    });
}

korvale_status korvale_offset_distances(const korvale_points* outline, const korvale_numbers* distances,
                                        const korvale_offset_options* options, korvale_rings** rings,
                                        korvale_error* error)
{
    if (rings != nullptr)
        *rings = nullptr;
    return answer(error, "korvale_offset_distances", [&] {
        const PointsIn in(outline, "outline");
        require_points(in, "outline", 3);
        const NumbersIn each = distances_in(distances);
        const korvale_offset_options how = options_of(options, korvale_offset_defaults);
        const JoinsIn joins(how, in.size());
        Motion motion = motion_of(0.0, how);
        motion.joins = joins.joins();
        require(rings, "rings");
        Vector<RingList> lists(static_cast<size_t>(each.size()));
        Mover().move_rings_by_each(in.points(), motion, {each.data(), lists.size()}, lists);
        *rings = new_rings(joined(lists));
    });
}

korvale_ring_arrays korvale_rings_view(const korvale_rings* rings)
{
    if (rings == nullptr)
        return {};
    return {reinterpret_cast<double*>(rings->points.data()),
            rings->starts.data(),
            rings->sources.data(),
            rings->parents.data(),
            rings->births.data(),
            rings->ends.data(),
            rings->collapsed.data(),
            rings->count};
}

korvale_ring_arrays korvale_rings_take(korvale_rings* rings)
{
    const korvale_ring_arrays taken = korvale_rings_view(rings);
    if (rings == nullptr)
        return taken;
    rings->points.release();
    rings->starts.release();
    rings->sources.release();
    rings->parents.release();
    rings->births.release();
    rings->ends.release();
    rings->collapsed.release();
    rings->count = 0;
    return taken;
}

void korvale_rings_free(korvale_rings* rings)
{
    free_handle(rings);
}
