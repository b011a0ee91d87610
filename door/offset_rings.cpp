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
    std::ranges::copy(values, block.data());
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
        Sweep().move(in.points(), motion, list);
        *rings = new_rings(list);
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
