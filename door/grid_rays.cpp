// What a ray meets of a grid: a tree of owned triangles tells it, or a query of the record with its marks.
#include <algorithm>
#include <cstring>

#include "door/internal/grid.h"
#include "door/internal/views.h"

namespace korvale::door {
namespace {

/// Calls `visit` with the number and the distance of the triangles met by the latest query, in the order of their
/// numbers: of those it tested, which it has marked, the ones that the ray meets in its own frame.
template <class Visit>
void visit_marked(const korvale_grid& grid, const Ray& ray, Visit visit)
{
    const uint8_t* const marks = grid.status.tri_marks.bvals;
    const auto n = static_cast<size_t>(grid.count);
    for (size_t t = 0; t < n; ++t) {
        const void* const found = std::memchr(marks + t, 1, n - t);
        if (found == nullptr)
            return;
        t = static_cast<size_t>(static_cast<const uint8_t*>(found) - marks);
        double distance;
        if (ray.meets(grid.triangle(static_cast<int32_t>(t)), distance))
            visit(static_cast<int32_t>(t), distance);
    }
}

/// All that a query of the record finds; the number of the nearest triangle where it is wanted.
RayHits ask_record(const korvale_grid& grid, const Ray& ray, const double* direction, bool wants_number)
{
    double origin[3] = {ray.origin[0], ray.origin[1], ray.origin[2]};
    double along[3] = {direction[0], direction[1], direction[2]};
    bring_to_length(along);
    RayHits meeting;
    meeting.count = ray_intersect(origin, along, &grid.status, &meeting.distance);
    if (meeting.count > 0 && wants_number) {
        double nearest = std::numeric_limits<double>::infinity();
        visit_marked(grid, ray, [&](int32_t t, double distance) {
            if (distance < nearest) {
                nearest = distance;
                meeting.triangle = t;
            }
        });
    }
    return meeting;
}

korvale_hit hit_of(const korvale_grid& grid, const Ray& ray, int32_t triangle, double distance)
{
    korvale_hit hit = {distance, triangle, {-1, -1, -1}, {0, 0, 0}};
    if (triangle < 0)
        return hit;
    for (int32_t k = 0; k < 3; ++k) {
        const int64_t corner = 3 * int64_t{triangle} + k;
        hit.corners[k] =
            grid.corners.empty() ? static_cast<int32_t>(corner) : grid.corners[static_cast<size_t>(corner)];
    }
    ray.weigh(grid.triangle(triangle), hit.weights);
    return hit;
}

bool comes_before(const korvale_hit& a, const korvale_hit& b)
{
    if (is_nan(a.distance) != is_nan(b.distance))
        return is_nan(b.distance);
    if (a.distance < b.distance || b.distance < a.distance)
        return a.distance < b.distance;
    return a.triangle < b.triangle;
}

struct Found {
    const korvale_grid& grid;
    const Ray& ray;
    Vector<korvale_hit> hits;

    void add(int32_t triangle, double distance) { hits.push_back(hit_of(grid, ray, triangle, distance)); }
};

} // namespace

Vector<korvale_hit> find_hits(const korvale_grid& grid, const Ray& ray, const double* direction)
{
    Found found = {grid, ray, {}};
    if (grid.tree) {
        grid.tree->for_each(
            ray, [](void* user, int32_t t, double distance) { static_cast<Found*>(user)->add(t, distance); }, &found);
    } else if (ask_record(grid, ray, direction, false).count > 0) {
        visit_marked(grid, ray, [&](int32_t t, double distance) { found.add(t, distance); });
    }
    std::sort(found.hits.begin(), found.hits.end(), comes_before);
    return std::move(found.hits);
}

namespace {

/// What a query is to find.
enum class Wanted { count, nearest, all };

RayHits ask(const korvale_grid& grid, const Ray& ray, const double* direction, Wanted wanted)
{
    if (!grid.tree)
        return ask_record(grid, ray, direction, wanted != Wanted::count);
    return wanted == Wanted::nearest ? grid.tree->meet_nearest(ray) : grid.tree->meet(ray);
}

bool meets_any(const korvale_grid& grid, const Ray& ray, const double* direction, double reach)
{
    if (grid.tree)
        return grid.tree->meets_any(ray, reach);
    const RayHits meeting = ask_record(grid, ray, direction, false);
    return meeting.count > 0 && meeting.distance <= reach;
}

void cast(const korvale_grid& grid, const PointsIn& origins, const PointsIn& directions, int64_t n,
          const korvale_ray_columns& columns, const Telling& telling)
{
    const bool wants_nearest = columns.triangles != nullptr || columns.weights != nullptr;
    const Wanted wanted = columns.counts != nullptr ? (wants_nearest ? Wanted::all : Wanted::count) : Wanted::nearest;
    for_each_ray(n, telling, [&](int64_t i) {
        const double* const direction = directions[directions.size() == 1 ? 0 : i].data();
        const Ray ray = ray_of(grid, origins[origins.size() == 1 ? 0 : i].data(), direction);
        const RayHits meeting = ask(grid, ray, direction, wanted);
        if (columns.distances != nullptr)
            columns.distances[i] = meeting.distance;
        if (columns.triangles != nullptr)
            columns.triangles[i] = meeting.triangle;
        if (columns.counts != nullptr)
            columns.counts[i] = meeting.count;
        if (columns.weights != nullptr)
            std::copy_n(hit_of(grid, ray, meeting.triangle, meeting.distance).weights, 3, columns.weights + 3 * i);
    });
}

} // namespace
} // namespace korvale::door

using namespace korvale::door;

int32_t korvale_grid_count(const korvale_grid* grid, const double* origin, const double* direction, double* distance)
{
    if (grid == nullptr || origin == nullptr || direction == nullptr)
        return 0;
    const RayHits meeting = ask(*grid, ray_of(*grid, origin, direction), direction, Wanted::count);
    if (meeting.count > 0 && distance != nullptr)
        *distance = meeting.distance;
    return meeting.count;
}

korvale_hit korvale_grid_nearest(const korvale_grid* grid, const double* origin, const double* direction)
{
    if (grid == nullptr || origin == nullptr || direction == nullptr)
        return {std::numeric_limits<double>::infinity(), -1, {-1, -1, -1}, {0, 0, 0}};
    const Ray ray = ray_of(*grid, origin, direction);
    const RayHits meeting = ask(*grid, ray, direction, Wanted::nearest);
    return hit_of(*grid, ray, meeting.triangle, meeting.distance);
}

int32_t korvale_grid_any(const korvale_grid* grid, const double* origin, const double* direction, double reach)
{
    if (grid == nullptr || origin == nullptr || direction == nullptr || is_nan(reach))
        return 0;
    return meets_any(*grid, ray_of(*grid, origin, direction), direction, reach) ? 1 : 0;
}

korvale_status korvale_grid_hits(const korvale_grid* grid, const double* origin, const double* direction,
                                 korvale_hit* hits, int64_t room, int64_t* met, korvale_error* error)
{
    return answer(error, "korvale_grid_hits", [&] {
        require(grid, "grid");
        require(origin, "origin");
        require(direction, "direction");
        require(met, "met");
        const Vector<korvale_hit> found = find_hits(*grid, ray_of(*grid, origin, direction), direction);
        *met = static_cast<int64_t>(found.size());
        if (hits != nullptr)
            std::copy_n(found.begin(), std::min(*met, std::max<int64_t>(room, 0)), hits);
    });
}

korvale_status korvale_grid_cast(const korvale_grid* grid, const korvale_points* origins,
                                 const korvale_points* directions, const korvale_ray_columns* columns,
                                 korvale_progress progress, void* user, korvale_error* error)
{
    return answer(error, "korvale_grid_cast", [&] {
        require(grid, "grid");
        require(columns, "columns");
        const PointsIn from(origins, "origins"), along(directions, "directions");
        const int64_t n = from.size() == 1 ? along.size() : from.size();
        if (along.size() != n && along.size() != 1)
            throw Refusal("directions", Text() << "be 1 or as many as the " << n << " origins",
                          Text() << "there are " << along.size());
        cast(*grid, from, along, n, *columns, {progress, user});
    });
}
