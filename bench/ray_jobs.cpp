// Queries of a bumpy ball in the grid that suits it and of the teapot in grids of several sizes, and building grids.
#include <cmath>
#include <memory>

#include "bench/job.h"
#include "include/korvale.h"

#ifdef KORVALE_HAS_STEPS
#include "tests/reference/ray.h"
#endif
#ifdef KORVALE_HAS_CGAL
#include <CGAL/AABB_traits.h>
#include <CGAL/AABB_tree.h>
#include <CGAL/AABB_triangle_primitive.h>
#include <CGAL/Simple_cartesian.h>
#endif
#ifdef KORVALE_HAS_EMBREE
#include <embree3/rtcore.h>
#endif

namespace korvale::bench {
namespace {

constexpr int kRays = 1000;

/// About n triangles of a ball whose surface goes up and down.
std::vector<double> ball(int n)
{
    const int rows = std::max(2, static_cast<int>(std::sqrt(n / 4.0))), columns = 2 * rows;
    const auto point = [&](int row, int column, std::vector<double>& out) {
        const double v = 3.141592653589793 * row / rows, u = 6.283185307179586 * column / columns;
        const double radius = 10.0 + std::sin(9 * u) * std::sin(7 * v);
        out.insert(out.end(),
                   {radius * std::sin(v) * std::cos(u), radius * std::sin(v) * std::sin(u), radius * std::cos(v)});
    };
    std::vector<double> out;
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column) {
            if (row + 1 < rows) {
                point(row, column, out);
                point(row + 1, column, out);
                point(row + 1, column + 1, out);
            }
            if (row > 0) {
                point(row, column, out);
                point(row + 1, column + 1, out);
                point(row, column + 1, out);
            }
        }
    return out;
}

/// Numbers x, y, z of an origin around the ball, then of a direction into it, for each ray.
std::vector<double> rays()
{
    Numbers random;
    std::vector<double> out;
    for (int i = 0; i < kRays; ++i) {
        double origin[3], target[3];
        for (int k = 0; k < 3; ++k) {
            origin[k] = random.uniform(-30, 30);
            target[k] = random.uniform(-9, 9);
        }
        out.insert(out.end(), {origin[0], origin[1], origin[2], target[0] - origin[0], target[1] - origin[1],
                               target[2] - origin[2]});
    }
    return out;
}

/// The side of the grid that suits n triangles.
int best_side(int n)
{
    return n <= 2000 ? 4 : n <= 8000 ? 8 : n <= 32000 ? 16 : n <= 150000 ? 32 : 64;
}

struct Grid {
    Grid(std::vector<double> mesh, int side) : triangles(9, std::move(mesh))
    {
        ray_initialize(&status);
        status.nx = status.ny = status.nz = side;
        ray_set_triangles(&triangles, &status);
        ray_classify(&status);
    }

    Around<Data> triangles;
    RayStatus status;
    std::vector<double> rays_at = rays();
};

Work cast(int n)
{
    return [grid = std::make_shared<Grid>(ball(n), best_side(n))] {
        double distance = 0;
        for (int i = 0; i < kRays; ++i) {
            double* const ray = &grid->rays_at[6 * static_cast<size_t>(i)];
            keep(ray_intersect(ray, ray + 3, &grid->status, &distance));
        }
    };
}

/// A hundred rays at the teapot in a grid of cells along each axis.
template <int side>
Work cast_at_teapot(int n)
{
    const std::vector<double> mesh = teapot(n);
    return [grid = std::make_shared<Grid>(mesh, side), rays = Rays(mesh, 100)]() mutable {
        double distance = 0;
        for (size_t i = 0; i < rays.origins.size(); i += 3)
            keep(ray_intersect(&rays.origins[i], &rays.directions[i], &grid->status, &distance));
    };
}

#ifdef KORVALE_HAS_STEPS
Work cast_steps(int n)
{
    return [grid = std::make_shared<Grid>(ball(n), best_side(n))] {
        double distance = 0;
        for (int i = 0; i < kRays; ++i) {
            const double* const ray = &grid->rays_at[6 * static_cast<size_t>(i)];
            keep(reference::intersect(ray, ray + 3, grid->status, &distance));
        }
    };
}

/// Cells and lists, which are not undone.
Work classify_steps(int side)
{
    return [grid = std::make_shared<Grid>(ball(1000), side), side] {
        keep(reference::sort_triangles(grid->triangles.dvals, grid->triangles.count, grid->status.bbox.dvals, side,
                                       side, side));
    };
}
#endif

template <int triangles>
Work classify(int side)
{
    return [grid = std::make_shared<Grid>(ball(triangles), side)] {
        ray_declassify(&grid->status);
        ray_classify(&grid->status);
    };
}

/// The same triangles in a grid that is there already.
Work classify_again(int side)
{
    return [grid = std::make_shared<Grid>(ball(1000), side)] { ray_classify(&grid->status); };
}

Work classify_growing(int n)
{
    return [grid = std::make_shared<Grid>(ball(n), 16)] {
        ray_declassify(&grid->status);
        ray_classify(&grid->status);
    };
}

#ifdef KORVALE_HAS_CGAL
using Kernel = CGAL::Simple_cartesian<double>;
using Primitive = CGAL::AABB_triangle_primitive<Kernel, std::vector<Kernel::Triangle_3>::const_iterator>;
using Tree = CGAL::AABB_tree<CGAL::AABB_traits<Kernel, Primitive>>;

Work cgal(int n)
{
    struct Scene {
        std::vector<Kernel::Triangle_3> triangles;
        Tree tree;
        std::vector<double> rays_at = rays();
    };
    auto scene = std::make_shared<Scene>();
    const std::vector<double> v = ball(n);
    for (size_t i = 0; i < v.size(); i += 9)
        scene->triangles.emplace_back(Kernel::Point_3(v[i], v[i + 1], v[i + 2]),
                                      Kernel::Point_3(v[i + 3], v[i + 4], v[i + 5]),
                                      Kernel::Point_3(v[i + 6], v[i + 7], v[i + 8]));
    scene->tree.rebuild(scene->triangles.cbegin(), scene->triangles.cend());
    scene->tree.build();
    return [scene] {
        for (int i = 0; i < kRays; ++i) {
            const double* const r = &scene->rays_at[6 * static_cast<size_t>(i)];
            const Kernel::Ray_3 ray(Kernel::Point_3(r[0], r[1], r[2]), Kernel::Vector_3(r[3], r[4], r[5]));
            keep(scene->tree.number_of_intersected_primitives(ray));
        }
    };
}
#endif

#ifdef KORVALE_HAS_EMBREE
/// The same in single precision: a filter counts every hit and lets the ray go on.
Work embree(int n)
{
    const RTCDevice device = rtcNewDevice("threads=1");
    const RTCScene scene = rtcNewScene(device);
    const std::vector<double> v = ball(n);
    const RTCGeometry mesh = rtcNewGeometry(device, RTC_GEOMETRY_TYPE_TRIANGLE);
    auto* const points = static_cast<float*>(
        rtcSetNewGeometryBuffer(mesh, RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT3, 12, v.size() / 3));
    auto* const corners = static_cast<unsigned*>(
        rtcSetNewGeometryBuffer(mesh, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3, 12, v.size() / 9));
    for (size_t i = 0; i < v.size(); ++i)
        points[i] = static_cast<float>(v[i]);
    for (size_t i = 0; i < v.size() / 3; ++i)
        corners[i] = static_cast<unsigned>(i);
    rtcSetGeometryIntersectFilterFunction(mesh, [](const RTCFilterFunctionNArguments* a) { a->valid[0] = 0; });
    rtcCommitGeometry(mesh);
    rtcAttachGeometry(scene, mesh);
    rtcCommitScene(scene);
    return [scene, all = rays()] {
        for (int i = 0; i < kRays; ++i) {
            const double* const r = &all[6 * static_cast<size_t>(i)];
            RTCRayHit ray = {};
            ray.ray.org_x = static_cast<float>(r[0]);
            ray.ray.org_y = static_cast<float>(r[1]);
            ray.ray.org_z = static_cast<float>(r[2]);
            ray.ray.dir_x = static_cast<float>(r[3]);
            ray.ray.dir_y = static_cast<float>(r[4]);
            ray.ray.dir_z = static_cast<float>(r[5]);
            ray.ray.tfar = 1e30f;
            ray.ray.mask = ~0u;
            RTCIntersectContext context;
            rtcInitIntersectContext(&context);
            rtcIntersect1(scene, &context, &ray);
            keep(ray);
        }
    };
}
#endif

} // namespace

std::vector<Job> ray_jobs()
{
    const std::vector<int> sizes = {1000, 4000, 16000, 70000, 250000, 1000000};
    std::vector<Job> jobs = {
        {"ray.thousand_queries", sizes, cast, 1.0, 16000},
        {"ray.build_on_1k_triangles", {4, 16, 64}, classify<1000>},
        {"ray.build_again_on_1k_triangles", {16, 64}, classify_again},
        {"ray.build_on_250k_triangles", {16, 64}, classify<250000>},
        {"ray.build_16_cells", {16000}, classify_growing, 1.05, 16000},
    };
    const std::vector<int> teapots(kTeapots.begin(), kTeapots.end() - 1);
    jobs.insert(jobs.end(), {{"ray.teapot_in_1_cell", teapots, cast_at_teapot<1>},
                             {"ray.teapot_in_4_cells", teapots, cast_at_teapot<4>},
                             {"ray.teapot_in_8_cells", teapots, cast_at_teapot<8>},
                             {"ray.teapot_in_16_cells", teapots, cast_at_teapot<16>},
                             {"ray.teapot_in_32_cells", teapots, cast_at_teapot<32>},
                             {"ray.teapot_in_64_cells", teapots, cast_at_teapot<64>}});
#ifdef KORVALE_HAS_STEPS
    jobs.push_back({"ray.thousand_queries@steps", {1000, 4000, 16000, 70000, 250000}, cast_steps});
    jobs.push_back({"ray.build_on_1k_triangles@steps", {4, 16}, classify_steps});
#endif
#ifdef KORVALE_HAS_CGAL
    jobs.push_back({"ray.thousand_queries@CGAL", sizes, cgal});
#endif
#ifdef KORVALE_HAS_EMBREE
    jobs.push_back({"ray.thousand_queries@Embree", sizes, embree});
#endif
    return jobs;
}

} // namespace korvale::bench
