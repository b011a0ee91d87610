// How triangles become a grid: they are copied or borrowed, and get a tree or cells.
#include "door/internal/grid.h"

#include <algorithm>
#include <cmath>

#include "data/internal/kernels.h"
#include "door/internal/faces.h"
#include "door/internal/triangles.h"

namespace korvale::door {
namespace {

/// Half the cube root of the number of triangles along each axis of box[6], more along the longer ones, 1 along one
/// without extent.
void choose_cells(const double* box, int32_t triangles, int32_t (&cells)[3])
{
    constexpr double kThin = 1e-06; // of the longest side: measured coordinates of something flat. Chosen
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
    constexpr size_t kPiece = 1024; // points: 24 KB, which stay in the fastest cache
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
    grid.tree.emplace(grid.triangles, grid.count, box, grid.cells, Telling{options.progress, options.user});
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

} // namespace
} // namespace korvale::door

using namespace korvale::door;

korvale_grid::korvale_grid()
{
    DataInitialize(&record);
    require_done(ray_initialize(&status));
}

korvale_grid::~korvale_grid()
{
    ray_declassify(&status);
    DataDispose(&status.bbox);
}

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
