// Meshes in handles, how solids are put together, and what triangles measure.
#include "door/internal/mesh.h"

#include "data/internal/kernels.h"
#include "door/internal/closed.h"
#include "door/internal/measures.h"
#include "door/internal/triangles.h"
#include "door/internal/weld.h"

namespace korvale::door {

// --- Solids ----------------------------------------------------------------------------------------------------------

void add_strip(korvale_mesh& mesh, int32_t first, int32_t second, int32_t n, bool turned)
{
    for (int32_t i = 0; i < n; ++i) {
        const int32_t next = i + 1 < n ? i + 1 : 0;
        Triangle lower = {first + i, first + next, second + next}, upper = {first + i, second + next, second + i};
        if (turned) {
            std::swap(lower[1], lower[2]);
            std::swap(upper[1], upper[2]);
        }
        mesh.triangles.push_back(lower);
        mesh.triangles.push_back(upper);
    }
}

void weld(korvale_mesh& mesh)
{
    const Vector<int32_t> first = first_at_place(mesh.points);
    Vector<int32_t> number(mesh.points.size(), -1); // among the points that stay
    Vector<Point> points;
    Vector<Triangle> triangles;
    for (const Triangle& t : mesh.triangles) {
        Triangle welded = {};
        for (size_t k = 0; k < 3; ++k) {
            const auto at = static_cast<size_t>(first[static_cast<size_t>(t[k])]);
            if (number[at] < 0) {
                number[at] = static_cast<int32_t>(points.size());
                points.push_back(mesh.points[at]);
            }
            welded[k] = number[at];
        }
        if (welded[0] != welded[1] && welded[1] != welded[2] && welded[2] != welded[0])
            triangles.push_back(welded);
    }
    mesh.points = std::move(points);
    mesh.triangles = std::move(triangles);
}

void turn_outwards(korvale_mesh& mesh)
{
    const double volume = sixfold_volume(mesh.triangles.size(), [&](size_t t, size_t k) -> const Point& {
        return mesh.points[static_cast<size_t>(mesh.triangles[t][k])];
    });
    if (volume < 0.0)
        for (Triangle& t : mesh.triangles)
            std::swap(t[1], t[2]);
}

// --- Measures --------------------------------------------------------------------------------------------------------

namespace {

/// Half the way from a to b times the power of two that brings its largest coordinate to 1 or more, below 2.
struct Way {
    Point v;
    int exponent; ///< v * 2^exponent is half the way
};

Way way(const Point& a, const Point& b)
{
    const Point half = half_way(a, b);
    const double largest = largest_of(half);
    if (largest == 0.0)
        return {half, 0};
    const int exponent = std::ilogb(largest);
    return {times(shrinking(exponent), half), exponent};
}

/// The corners of all triangles, or of triangle t.
///@{
std::span<const Point> corners_of(const TrianglesIn& triangles)
{
    return {reinterpret_cast<const Point*>(triangles.data()), static_cast<size_t>(3 * triangles.size())};
}
std::span<const Point> corners_of(const TrianglesIn& triangles, int64_t t)
{
    return corners_of(triangles).subspan(static_cast<size_t>(3 * t), 3);
}
///@}

Point normal_of(std::span<const Point> corners)
{
    const Point n = cross(way(corners[0], corners[1]).v, way(corners[0], corners[2]).v);
    const double size = length(n);
    return size > 0.0 ? Point{n.x / size, n.y / size, n.z / size} : Point{};
}

double area_of(std::span<const Point> corners)
{
    const Way a = way(corners[0], corners[1]), b = way(corners[0], corners[2]);
    return std::ldexp(length(cross(a.v, b.v)), a.exponent + b.exponent + 1);
}

// --- Closed meshes ---------------------------------------------------------------------------------------------------

/// Refuses triangles that are not closed: each edge between two places has to be run through as often one way as the
/// other.
void require_closed(const TrianglesIn& triangles, std::string_view argument)
{
    const Vector<int32_t> place = first_at_place(corners_of(triangles));
    FaceEdges edges(place.size());
    for (size_t t = 0; t < place.size(); t += 3)
        edges.add_face(3, [&](int64_t k) { return place[t + static_cast<size_t>(k)]; });
    edges.for_each([&](const FaceEdge& edge) {
        if (edge.up == edge.down)
            return;
        throw Refusal(argument, "be closed and face one way",
                      Text() << "the edge between points " << triangles.corner(edge.low) << " and "
                             << triangles.corner(edge.high) << " runs one way in " << edge.up
                             << " and the other way in " << edge.down << " of the triangles");
    });
}

} // namespace
} // namespace korvale::door

using namespace korvale::door;

korvale_triangles korvale_mesh_view(const korvale_mesh* mesh)
{
    if (mesh == nullptr)
        return {};
    return {{mesh->points.data(), static_cast<int64_t>(mesh->points.size()), 0, 3, KORVALE_DOUBLE},
            {mesh->triangles.data(), 3 * static_cast<int64_t>(mesh->triangles.size()), 0, KORVALE_INT32}};
}

const double* korvale_mesh_reached(const korvale_mesh* mesh, int64_t* count)
{
    if (count != nullptr)
        *count = mesh == nullptr ? 0 : static_cast<int64_t>(mesh->reached.size());
    return mesh == nullptr || mesh->reached.empty() ? nullptr : mesh->reached.data();
}

void korvale_mesh_free(korvale_mesh* mesh)
{
    free_handle(mesh);
}

korvale_status korvale_mesh_normals(const korvale_triangles* triangles, double* normals, korvale_error* error)
{
    return answer(error, "korvale_mesh_normals", [&] {
        const TrianglesIn in(triangles, "triangles");
        if (in.size() > 0)
            require(normals, "normals");
        for (int64_t t = 0; t < in.size(); ++t)
            reinterpret_cast<Point*>(normals)[t] = normal_of(corners_of(in, t));
    });
}

korvale_status korvale_mesh_areas(const korvale_triangles* triangles, double* areas, korvale_error* error)
{
    return answer(error, "korvale_mesh_areas", [&] {
        const TrianglesIn in(triangles, "triangles");
        if (in.size() > 0)
            require(areas, "areas");
        for (int64_t t = 0; t < in.size(); ++t)
            areas[t] = area_of(corners_of(in, t));
    });
}

korvale_status korvale_mesh_bounds(const korvale_triangles* triangles, double* least, double* greatest,
                                   korvale_error* error)
{
    return answer(error, "korvale_mesh_bounds", [&] {
        require(least, "least");
        require(greatest, "greatest");
        const TrianglesIn in(triangles, "triangles");
        if (in.size() == 0)
            throw Refusal("triangles", "have at least 1 triangle", "there is none");
        double box[6];
        korvale::data::find_bounds(in.data(), 3 * in.size(), 3, box);
        std::copy_n(box, 3, least);
        std::copy_n(box + 3, 3, greatest);
    });
}

korvale_status korvale_mesh_volume(const korvale_triangles* triangles, double* volume, korvale_error* error)
{
    return answer(error, "korvale_mesh_volume", [&] {
        require(volume, "volume");
        const TrianglesIn in(triangles, "triangles");
        require_closed(in, "triangles");
        *volume = sixfold_volume(
                      static_cast<size_t>(in.size()),
                      [&](size_t t, size_t k) -> const Point& { return corners_of(in, static_cast<int64_t>(t))[k]; }) /
                  6.0;
    });
}
