// Whether points are inside the closed meshes of a grid: a ray from one meets an odd number of triangles.
#include <algorithm>

#include "door/internal/closed.h"
#include "door/internal/edges.h"
#include "door/internal/grid.h"
#include "door/internal/views.h"
#include "door/internal/weld.h"

namespace korvale::door {
namespace {

/// Counts the edges of an odd number of triangles at the first call.
FaultyEdges find_open(const korvale_grid& grid, const Telling& telling)
{
    if (const int64_t counted = grid.open; counted >= 0)
        return {counted, static_cast<int32_t>(grid.first_open >> 32), static_cast<int32_t>(grid.first_open)};
    const size_t n = 3 * static_cast<size_t>(grid.count);
    const Vector<int32_t> place =
        first_at_place({reinterpret_cast<const Point*>(grid.triangles), n}, telling.part(0.0, 0.0));
    FaceEdges edges(n);
    for (size_t t = 0; t < n; t += 3)
        edges.add_face(3, [&](int64_t k) { return place[t + static_cast<size_t>(k)]; });
    FaultyEdges open;
    const auto visit = [&](const FaceEdge& edge) {
        if (edge.is_open())
            open.add(edge);
    };
    edges.for_each(visit, telling.part(0.0, 0.0));
    grid.first_open = int64_t{open.low} << 32 | open.high;
    grid.open = open.count;
    return open;
}

/// Refuses triangles that have no inside.
void require_closed(const korvale_grid& grid, const Telling& telling)
{
    const FaultyEdges open = find_open(grid, telling);
    if (open.count == 0)
        return;
    const auto number = [&](int32_t corner) {
        return grid.corners.empty() ? corner : grid.corners[static_cast<size_t>(corner)];
    };
    const auto [from, to] = std::minmax({number(open.low), number(open.high)});
    const Text place = open.place(grid.corners.empty() ? "corners" : "points", from, to);
    throw Refusal("grid", "be of closed meshes",
                  Text() << counted(open.count, "edge") << (open.count == 1 ? " is" : " are") << " open"
                         << std::string_view(place));
}

/// Whether a point is inside, by the parity of what a ray meets.
bool is_inside(const korvale_grid& grid, const double* point)
{
    // Oblique to what models are made of. A ray that comes near an edge or a corner would count it twice or not at all.
    constexpr double kDirections[5][3] = {{0.5377, 0.3149, 0.7821},
                                          {-0.2713, 0.8467, 0.4579},
                                          {0.6841, -0.5923, 0.4253},
                                          {-0.4391, -0.3617, 0.8219},
                                          {0.1973, 0.6229, -0.7571}};
    constexpr double kNear = 1e-09; // as a weight of a corner. Chosen: far above rounding
    size_t met = 0;
    for (const auto& direction : kDirections) {
        const Ray ray = ray_of(grid, point, direction);
        const Vector<korvale_hit> hits = find_hits(grid, ray, direction);
        met = hits.size();
        const bool is_clear = std::all_of(hits.begin(), hits.end(), [&](const korvale_hit& hit) {
            return hit.weights[0] > kNear && hit.weights[1] > kNear && hit.weights[2] > kNear;
        });
        if (is_clear)
            break;
    }
    return met % 2 == 1;
}

} // namespace
} // namespace korvale::door

using namespace korvale::door;

korvale_status korvale_grid_contains(const korvale_grid* grid, const korvale_points* points, uint8_t* inside,
                                     korvale_progress progress, void* user, korvale_error* error)
{
    return answer(error, "korvale_grid_contains", [&] {
        require(grid, "grid");
        require(inside, "inside");
        const PointsIn at(points, "points");
        require_closed(*grid, {progress, user});
        for_each_ray(at.size(), {progress, user},
                     [&](int64_t i) { inside[i] = is_inside(*grid, at[i].data()) ? 1 : 0; });
    });
}
