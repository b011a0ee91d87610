// Rays into triangles that a grid owns, the teapot finer and finer. A counter with a name tells how many times as long
// that one takes in the same run, in processor time: CGAL, whose tree has boxes in doubles as well; `plain`, a tree
// written for the nearest alone; `counts`, the same cast for nothing but counts; `classify`, which is `ray_classify`
// from nothing to nothing in the same cells, beside making a grid.
#include <map>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/door/plain_tree.h"
#include "bench/ratio.h"
#include "include/korvale.h"
#include "include/korvale_c.h"
#include "tests/support/meshes.h"

#ifdef KORVALE_HAS_CGAL
#include <CGAL/AABB_traits.h>
#include <CGAL/AABB_tree.h>
#include <CGAL/AABB_triangle_primitive.h>
#include <CGAL/Simple_cartesian.h>
#endif

namespace {

using korvale::bench::need;
using korvale::bench::PlainTree;
using korvale::bench::time_of;
using Numbers = std::vector<double>;

constexpr size_t kRays = 4096;

/// The teapot with every triangle divided `times` times into four.
const Numbers& teapot(int64_t times)
{
    static std::map<int64_t, Numbers> made;
    Numbers& mesh = made[times];
    if (mesh.empty())
        mesh = korvale::test::subdivided(
            korvale::test::triangles_of(korvale::test::read_obj(KORVALE_EXAMPLE_DATA "/teapot.obj")),
            static_cast<int>(times));
    return mesh;
}

korvale_points points_of(const Numbers& xyz)
{
    return {xyz.data(), static_cast<int64_t>(xyz.size() / 3), 0, 3, KORVALE_DOUBLE};
}

/// Rays from around a mesh towards points in its box.
struct Rays {
    explicit Rays(const Numbers& mesh)
    {
        uint64_t state = 1;
        const auto unit = [&state] {
            state = state * 6364136223846793005u + 1442695040888963407u;
            return static_cast<double>(state >> 11) * 0x1p-53;
        };
        double low[3] = {1e9, 1e9, 1e9}, high[3] = {-1e9, -1e9, -1e9};
        for (size_t i = 0; i < mesh.size(); ++i) {
            low[i % 3] = std::min(low[i % 3], mesh[i]);
            high[i % 3] = std::max(high[i % 3], mesh[i]);
        }
        for (size_t i = 0; i < 3 * kRays; ++i) {
            const double size = high[i % 3] - low[i % 3];
            origins.push_back(low[i % 3] + size * (3 * unit() - 1));
            directions.push_back(low[i % 3] + size * unit() - origins.back());
        }
    }

    Numbers origins, directions;
};

struct Grid {
    explicit Grid(const Numbers& mesh)
    {
        const korvale_triangles triangles = {points_of(mesh), {}};
        need(korvale_grid_new(&triangles, nullptr, &grid, nullptr) == KORVALE_OK);
    }
    ~Grid() { korvale_grid_free(grid); }
    Grid(const Grid&) = delete;
    Grid& operator=(const Grid&) = delete;

    void cast(const Rays& rays, const korvale_ray_columns& columns) const
    {
        const korvale_points from = points_of(rays.origins), along = points_of(rays.directions);
        need(korvale_grid_cast(grid, &from, &along, &columns, nullptr, nullptr, nullptr) == KORVALE_OK);
    }

    korvale_grid* grid = nullptr;
};

#ifdef KORVALE_HAS_CGAL
using Kernel = CGAL::Simple_cartesian<double>;
using Primitive = CGAL::AABB_triangle_primitive<Kernel, std::vector<Kernel::Triangle_3>::const_iterator>;

struct Peer {
    explicit Peer(const Numbers& v)
    {
        for (size_t i = 0; i < v.size(); i += 9)
            triangles.emplace_back(Kernel::Point_3(v[i], v[i + 1], v[i + 2]),
                                   Kernel::Point_3(v[i + 3], v[i + 4], v[i + 5]),
                                   Kernel::Point_3(v[i + 6], v[i + 7], v[i + 8]));
        tree.rebuild(triangles.cbegin(), triangles.cend());
        tree.build();
    }

    static Kernel::Ray_3 ray(const Rays& rays, size_t i)
    {
        const double *o = &rays.origins[3 * i], *d = &rays.directions[3 * i];
        return {Kernel::Point_3(o[0], o[1], o[2]), Kernel::Vector_3(d[0], d[1], d[2])};
    }

    std::vector<Kernel::Triangle_3> triangles;
    CGAL::AABB_tree<CGAL::AABB_traits<Kernel, Primitive>> tree;
};
#endif

/// Reports how many times as long the others take for what takes `ours` seconds.
template <class Work>
void compare(benchmark::State& state, const char* name, double ours, Work work)
{
    state.counters[name] = time_of(work) / ours;
}

/// Counts are all hits.
void grid_counts(benchmark::State& state)
{
    const Numbers& mesh = teapot(state.range(0));
    const Rays rays(mesh);
    const Grid grid(mesh);
    std::vector<int32_t> counts(kRays);
    const auto cast = [&] { grid.cast(rays, {nullptr, nullptr, counts.data(), nullptr}); };
    for (auto _ : state)
        cast();
    const double ours = time_of(cast);
    state.counters["ns_a_ray"] = 1e9 * ours / kRays;
#ifdef KORVALE_HAS_CGAL
    const Peer peer(mesh);
    compare(state, "cgal", ours, [&] {
        for (size_t i = 0; i < kRays; ++i)
            benchmark::DoNotOptimize(peer.tree.number_of_intersected_primitives(Peer::ray(rays, i)));
    });
#endif
}

void grid_all_columns(benchmark::State& state)
{
    const Numbers& mesh = teapot(state.range(0));
    const Rays rays(mesh);
    const Grid grid(mesh);
    Numbers distances(kRays), weights(3 * kRays);
    std::vector<int32_t> counts(kRays), triangles(kRays);
    const auto cast = [&] { grid.cast(rays, {distances.data(), triangles.data(), counts.data(), weights.data()}); };
    for (auto _ : state)
        cast();
    const double ours = time_of(cast);
    state.counters["ns_a_ray"] = 1e9 * ours / kRays;
    compare(state, "counts", ours, [&] { grid.cast(rays, {nullptr, nullptr, counts.data(), nullptr}); });
}

void grid_nearest_of_many(benchmark::State& state)
{
    const Numbers& mesh = teapot(state.range(0));
    const Rays rays(mesh);
    const Grid grid(mesh);
    Numbers distances(kRays);
    std::vector<int32_t> triangles(kRays);
    const auto cast = [&] { grid.cast(rays, {distances.data(), triangles.data(), nullptr, nullptr}); };
    for (auto _ : state)
        cast();
    const double ours = time_of(cast);
    state.counters["ns_a_ray"] = 1e9 * ours / kRays;
    const PlainTree plain(mesh);
    compare(state, "plain", ours, [&] {
        for (size_t i = 0; i < kRays; ++i)
            benchmark::DoNotOptimize(plain.nearest(&rays.origins[3 * i], &rays.directions[3 * i]));
    });
}

void grid_any(benchmark::State& state)
{
    const Numbers& mesh = teapot(state.range(0));
    const Rays rays(mesh);
    const Grid grid(mesh);
    const auto ask = [&] {
        for (size_t i = 0; i < kRays; ++i)
            benchmark::DoNotOptimize(
                korvale_grid_any(grid.grid, &rays.origins[3 * i], &rays.directions[3 * i], HUGE_VAL));
    };
    for (auto _ : state)
        ask();
    const double ours = time_of(ask);
    state.counters["ns_a_ray"] = 1e9 * ours / kRays;
#ifdef KORVALE_HAS_CGAL
    const Peer peer(mesh);
    compare(state, "cgal", ours, [&] {
        for (size_t i = 0; i < kRays; ++i)
            benchmark::DoNotOptimize(peer.tree.do_intersect(Peer::ray(rays, i)));
    });
#endif
}

/// Made and released.
void grid_build(benchmark::State& state)
{
    const Numbers& mesh = teapot(state.range(0));
    const auto make = [&] { const Grid grid(mesh); };
    for (auto _ : state)
        make();
    const double ours = time_of(make);
    state.counters["ns_a_triangle"] = 9e9 * ours / static_cast<double>(mesh.size());
    int32_t cells[3];
    {
        const Grid grid(mesh);
        korvale_grid_cells(grid.grid, cells);
    }
    Data triangles;
    DataInitialize(&triangles);
    triangles.dim = 9;
    triangles.count = static_cast<int32_t>(mesh.size() / 9);
    triangles.dvals = const_cast<double*>(mesh.data());
    compare(state, "classify", ours, [&] {
        RayStatus status = {};
        need(ray_initialize(&status) == 1);
        status.nx = cells[0];
        status.ny = cells[1];
        status.nz = cells[2];
        ray_set_triangles(&triangles, &status);
        ray_classify(&status);
        ray_declassify(&status);
        DataDispose(&status.bbox);
    });
    compare(state, "plain", ours, [&] { const PlainTree plain(mesh); });
#ifdef KORVALE_HAS_CGAL
    compare(state, "cgal", ours, [&] { const Peer peer(mesh); });
#endif
}

BENCHMARK(grid_counts)->DenseRange(0, 5)->Unit(benchmark::kMillisecond);
BENCHMARK(grid_all_columns)->DenseRange(0, 5)->Unit(benchmark::kMillisecond);
BENCHMARK(grid_nearest_of_many)->DenseRange(0, 5)->Unit(benchmark::kMillisecond);
BENCHMARK(grid_any)->DenseRange(0, 5)->Unit(benchmark::kMillisecond);
BENCHMARK(grid_build)->DenseRange(0, 5)->Unit(benchmark::kMillisecond);

} // namespace
