// Triangles for rays. Those that the grid owns do not move: a tree finds them. Those that stay the caller's are found
// by a `RayStatus`, whose marks a query writes.
#include <algorithm>
#include <atomic>
#include <cmath>

#include "data/internal/kernels.h"
#include "door/internal/closed.h"
#include "door/internal/faces.h"
#include "door/internal/tree.h"
#include "door/internal/triangles.h"
#include "door/internal/weld.h"
#include "ray/query.h"

struct korvale_grid {
    korvale_grid()
    {
        DataInitialize(&record);
        korvale::door::require_done(ray_initialize(&status));
    }
    ~korvale_grid()
    {
        ray_declassify(&status);
        DataDispose(&status.bbox);
    }
    korvale_grid(const korvale_grid&) = delete;
    korvale_grid& operator=(const korvale_grid&) = delete;

    const double* triangle(int32_t t) const { return triangles + 9 * int64_t{t}; }

    const double* triangles = nullptr; // [count][9]
    int32_t count = 0;
    korvale::door::Block<double> owned;     // the triangles, unless they are the caller's
    korvale::door::Vector<int32_t> corners; // [3 count] numbers of points; empty where each has its own
    korvale::door::Vector<int32_t> faces;   // [count] of which face; empty where each is its own
    int32_t cells[3] = {1, 1, 1};
    std::optional<korvale::door::Tree> tree; // of owned triangles
    Data record;                             // borrows the triangles
    mutable RayStatus status;                // of borrowed triangles, and of owned ones once it is asked for
    mutable std::atomic<int64_t> open = -1;  // edges, once they have been counted
    mutable std::atomic<int64_t> first_open; // an open one, as its two corners
};

namespace korvale::door {
namespace {

/// Rays between two reports of progress.
constexpr int64_t kReport = 256;

// Making one.

/// Half the cube root of the number of triangles along each axis of box[6], more along the longer ones, 1 along one
/// without extent.
void choose_cells(const double* box, int32_t triangles, int32_t (&cells)[3])
{
    constexpr double kThin = 1e-06; // of the longest side
    const Point extent = {box[3] - box[0], box[4] - box[1], box[5] - box[2]};
    const double longest = std::max(std::max(extent.x, extent.y), extent.z);
    double product = 1.0, axes = 0.0;
    for (int k = 0; k < 3; ++k)
        if (extent[k] > kThin * longest) {
            product *= extent[k] / longest;
            axes += 1.0;
        }
    const double along = 0.5 * std::cbrt(static_cast<double>(triangles));
    const double mean = axes > 0.0 ? std::pow(product, 1.0 / axes) : 1.0;
    for (int k = 0; k < 3; ++k) {
        const double wanted = extent[k] > kThin * longest ? along * (extent[k] / longest) / mean : 1.0;
        cells[k] = static_cast<int32_t>(std::clamp(std::round(wanted), 1.0, 256.0));
    }
}

/// Widens box[6] by another.
void widen(double* box, const double* other)
{
    for (int k = 0; k < 3; ++k) {
        box[k] = std::min(box[k], other[k]);
        box[k + 3] = std::max(box[k + 3], other[k + 3]);
    }
}

/// Copies points and finds the box[6] around them, piece by piece, so that each is read from memory once. False where a
/// number is not finite.
bool copy_points(std::span<const Point> points, double* to, double* box)
{
    constexpr size_t kPiece = 1024;
    for (size_t i = 0; i < points.size(); i += kPiece) {
        const std::span<const Point> piece = points.subspan(i, std::min(kPiece, points.size() - i));
        const auto n = static_cast<int64_t>(piece.size());
        if (!data::are_finite(piece[0].data(), 3 * n))
            return false;
        double around[6];
        data::find_bounds(piece[0].data(), n, 3, i == 0 ? box : around);
        if (i > 0)
            widen(box, around);
        if (to != points[0].data())
            std::memcpy(to + 3 * i, piece[0].data(), piece.size_bytes());
    }
    return true;
}

void classify(korvale_grid& grid)
{
    grid.record.dim = 9;
    grid.record.count = grid.count;
    grid.record.dvals = const_cast<double*>(grid.triangles); // records have no const buffers
    grid.status.nx = grid.cells[0];
    grid.status.ny = grid.cells[1];
    grid.status.nz = grid.cells[2];
    ray_set_triangles(&grid.record, &grid.status);
    ray_classify(&grid.status);
    if (grid.count > 0 && (grid.status.cells == nullptr || grid.status.tri_marks.bvals == nullptr)) {
        ray_declassify(&grid.status);
        throw std::bad_alloc();
    }
}

/// Chooses the cells of a grid that has its triangles in box[6].
void take_cells(korvale_grid& grid, const double* box, const korvale_grid_options& options)
{
    const bool are_chosen = std::any_of(options.cells, options.cells + 3, [](int32_t n) { return n != 0; });
    if (are_chosen)
        std::transform(options.cells, options.cells + 3, grid.cells, [](int32_t n) { return std::max(n, 1); });
    else
        choose_cells(box, grid.count, grid.cells);
    const double product = static_cast<double>(grid.cells[0]) * grid.cells[1] * grid.cells[2];
    if (product > std::numeric_limits<int32_t>::max())
        throw Refusal("options.cells", Text() << "be at most " << std::numeric_limits<int32_t>::max() << " together",
                      Text() << "they are " << product);
}

/// Takes points, three a triangle, for its own; they may stand in its memory already.
void own(korvale_grid& grid, std::span<const Point> corners, std::string_view argument,
         const korvale_grid_options& options)
{
    grid.owned.make_room(3 * corners.size());
    double box[6] = {};
    if (!copy_points(corners, grid.owned.data(), box))
        require_finite(corners, argument);
    grid.triangles = grid.owned.data();
    take_cells(grid, box, options);
    grid.tree.emplace(grid.triangles, grid.count, box, grid.cells, Growth{options.progress, options.user});
}

void borrow(korvale_grid& grid, std::span<const Point> corners, const korvale_grid_options& options)
{
    require_finite(corners, "triangles");
    grid.triangles = corners.empty() ? nullptr : corners[0].data();
    double box[6] = {};
    if (!corners.empty())
        data::find_bounds(grid.triangles, static_cast<int64_t>(corners.size()), 3, box);
    take_cells(grid, box, options);
    classify(grid);
}

void take_triangles(korvale_grid& grid, const korvale_triangles* triangles, const korvale_grid_options& options)
{
    const TrianglesIn given(triangles, "triangles", TrianglesIn::Numbers::any);
    const std::span<const Point> corners = given.points_of_corners();
    grid.count = static_cast<int32_t>(given.size());
    if (options.borrow == 0) {
        grid.corners.assign(given.corners().begin(), given.corners().end());
        own(grid, corners, "triangles", options);
        return;
    }
    if (given.size() > 0 && !given.is_in_place(*triangles))
        throw Refusal("triangles", "be packed doubles without corner numbers", "they would have to be copied");
    borrow(grid, corners, options);
}

/// Cuts faces into triangles about their first corners.
void take_faces(korvale_grid& grid, const korvale_faces* faces, const korvale_grid_options& options)
{
    require(faces, "faces");
    if (options.borrow != 0)
        throw Refusal("options.borrow", "be 0 for faces", "it is set");
    const PointsIn points(&faces->points, "vertices");
    const FacesIn mesh(*faces, points.size());
    const int32_t* corner = mesh.corners().data();
    for (size_t f = 0; f < mesh.sizes().size(); ++f) {
        const int32_t n = mesh.sizes()[f];
        for (int32_t k = 2; k < n; ++k) {
            for (const int32_t c : {corner[0], corner[k - 1], corner[k]})
                grid.corners.push_back(c);
            grid.faces.push_back(static_cast<int32_t>(f));
        }
        corner += n;
    }
    require_triangles(static_cast<int64_t>(grid.faces.size()), "faces");
    grid.count = static_cast<int32_t>(grid.faces.size());
    grid.owned.make_room(3 * grid.corners.size());
    gather(points, grid.corners, grid.owned.data());
    own(grid, {reinterpret_cast<const Point*>(grid.owned.data()), grid.corners.size()}, "faces", options);
}

template <class Take>
korvale_status make(korvale_grid** grid, const korvale_grid_options* options, const char* function, Take take,
                    korvale_error* error)
{
    if (grid != nullptr)
        *grid = nullptr;
    return answer(error, function, [&] {
        require(grid, "grid");
        Handle<korvale_grid> made(make_handle<korvale_grid>());
        take(*made, options_of(options, korvale_grid_defaults));
        *grid = made.release();
    });
}

// Borrowed triangles.

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
Meeting ask_record(const korvale_grid& grid, const Ray& ray, const double* direction, bool wants_number)
{
    double origin[3] = {ray.origin[0], ray.origin[1], ray.origin[2]};
    double along[3] = {direction[0], direction[1], direction[2]};
    bring_to_length(along);
    Meeting meeting;
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

// Queries.

Ray ray_of(const korvale_grid& grid, const double* origin, const double* direction)
{
    return grid.tree ? grid.tree->ray(origin, direction) : Ray(origin, direction);
}

/// What a query is to find.
enum class Wanted { count, nearest, all };

Meeting ask(const korvale_grid& grid, const Ray& ray, const double* direction, Wanted wanted)
{
    if (!grid.tree)
        return ask_record(grid, ray, direction, wanted != Wanted::count);
    return wanted == Wanted::nearest ? grid.tree->meet_nearest(ray) : grid.tree->meet(ray);
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

Vector<korvale_hit> find_all(const korvale_grid& grid, const Ray& ray, const double* direction)
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

bool meets_any(const korvale_grid& grid, const Ray& ray, const double* direction, double reach)
{
    if (grid.tree)
        return grid.tree->meets_any(ray, reach);
    const Meeting meeting = ask_record(grid, ray, direction, false);
    return meeting.count > 0 && meeting.distance <= reach;
}

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
    constexpr double kNear = 1e-09; // as a weight of a corner
    size_t met = 0;
    for (const auto& direction : kDirections) {
        const Ray ray = ray_of(grid, point, direction);
        const Vector<korvale_hit> hits = find_all(grid, ray, direction);
        met = hits.size();
        const bool is_clear = std::all_of(hits.begin(), hits.end(), [&](const korvale_hit& hit) {
            return hit.weights[0] > kNear && hit.weights[1] > kNear && hit.weights[2] > kNear;
        });
        if (is_clear)
            break;
    }
    return met % 2 == 1;
}

/// Calls `work` for each of n rays, and a host's progress now and then.
template <class Work>
void for_each_ray(int64_t n, const Growth& progress, Work work)
{
    for (int64_t i = 0; i < n; ++i) {
        if (i % kReport == 0)
            progress.tell(static_cast<double>(i) / static_cast<double>(n));
        work(i);
    }
    progress.tell(1);
}

void cast(const korvale_grid& grid, const PointsIn& origins, const PointsIn& directions, int64_t n,
          const korvale_ray_columns& columns, const Growth& progress)
{
    const bool wants_nearest = columns.triangles != nullptr || columns.weights != nullptr;
    const Wanted wanted = columns.counts != nullptr ? (wants_nearest ? Wanted::all : Wanted::count) : Wanted::nearest;
    for_each_ray(n, progress, [&](int64_t i) {
        const double* const direction = directions[directions.size() == 1 ? 0 : i].data();
        const Ray ray = ray_of(grid, origins[origins.size() == 1 ? 0 : i].data(), direction);
        const Meeting meeting = ask(grid, ray, direction, wanted);
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

void korvale_grid_defaults(korvale_grid_options* options, size_t size)
{
    give_defaults(options, size, korvale_grid_options{sizeof *options, 0, {0, 0, 0}, 0, nullptr, nullptr});
}

korvale_status korvale_grid_new(const korvale_triangles* triangles, const korvale_grid_options* options,
                                korvale_grid** grid, korvale_error* error)
{
    return make(
        grid, options, "korvale_grid_new",
        [&](korvale_grid& made, const korvale_grid_options& how) { take_triangles(made, triangles, how); }, error);
}

korvale_status korvale_grid_of_faces(const korvale_faces* faces, const korvale_grid_options* options,
                                     korvale_grid** grid, korvale_error* error)
{
    return make(
        grid, options, "korvale_grid_of_faces",
        [&](korvale_grid& made, const korvale_grid_options& how) { take_faces(made, faces, how); }, error);
}

int64_t korvale_grid_size(const korvale_grid* grid)
{
    return grid == nullptr ? 0 : grid->count;
}

void korvale_grid_cells(const korvale_grid* grid, int32_t* cells)
{
    if (grid != nullptr && cells != nullptr)
        std::copy_n(grid->cells, 3, cells);
}

int32_t korvale_grid_face(const korvale_grid* grid, int32_t triangle)
{
    if (grid == nullptr || triangle < 0 || triangle >= grid->count)
        return -1;
    return grid->faces.empty() ? triangle : grid->faces[static_cast<size_t>(triangle)];
}

const double* korvale_grid_triangles(const korvale_grid* grid)
{
    return grid == nullptr ? nullptr : grid->triangles;
}

int32_t korvale_grid_count(const korvale_grid* grid, const double* origin, const double* direction, double* distance)
{
    if (grid == nullptr || origin == nullptr || direction == nullptr)
        return 0;
    const Meeting meeting = ask(*grid, ray_of(*grid, origin, direction), direction, Wanted::count);
    if (meeting.count > 0 && distance != nullptr)
        *distance = meeting.distance;
    return meeting.count;
}

korvale_hit korvale_grid_nearest(const korvale_grid* grid, const double* origin, const double* direction)
{
    if (grid == nullptr || origin == nullptr || direction == nullptr)
        return {std::numeric_limits<double>::infinity(), -1, {-1, -1, -1}, {0, 0, 0}};
    const Ray ray = ray_of(*grid, origin, direction);
    const Meeting meeting = ask(*grid, ray, direction, Wanted::nearest);
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
        const Vector<korvale_hit> found = find_all(*grid, ray_of(*grid, origin, direction), direction);
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

void* korvale_grid_record(korvale_grid* grid)
{
    if (grid == nullptr)
        return nullptr;
    if (grid->status.triangles == nullptr && answer(nullptr, "", [&] { classify(*grid); }) != KORVALE_OK) {
        grid->status.triangles = nullptr;
        return nullptr;
    }
    return &grid->status;
}

void korvale_grid_free(korvale_grid* grid)
{
    free_handle(grid);
}
