// Queries and classification of the teapot, finer and finer, in grids of several sizes.
//
// "plain" is the time of the plain steps divided by ours, so 10 means ten times as fast; "embree" the same for a peer
// that finds all hits in single precision, so 0.1 means that the peer takes a tenth of our time. Both are measured in
// the same run, on the same rays.
#include <algorithm>
#include <cstdint>
#include <map>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/ratio.h"
#include "ray/grid.h"
#include "ray/query.h"
#include "tests/reference/ray.h"
#include "tests/support/meshes.h"

#ifdef KORVALE_HAS_EMBREE
#include <embree3/rtcore.h>
#endif

namespace {

using korvale::bench::seconds;

struct Ray {
    double origin[3], direction[3];
};

/// The teapot with every triangle divided `times` times into four.
const std::vector<double>& teapot(int times)
{
    static std::map<int, std::vector<double>> made;
    std::vector<double>& mesh = made[times];
    if (mesh.empty())
        mesh = korvale::test::subdivided(
            korvale::test::triangles_of(korvale::test::read_obj(KORVALE_EXAMPLE_DATA "/teapot.obj")), times);
    return mesh;
}

/// A classified mesh.
class Scene {
public:
    Scene(const std::vector<double>& triangles, int cells)
    {
        DataInitialize(&triangles_);
        triangles_.dim = 9;
        triangles_.count = static_cast<int32_t>(triangles.size() / 9);
        if (DataAllocate(&triangles_) == 1)
            std::copy(triangles.begin(), triangles.end(), triangles_.dvals);
        ray_initialize(&status_);
        status_.nx = status_.ny = status_.nz = cells;
        ray_set_triangles(&triangles_, &status_);
        ray_classify(&status_);
    }
    ~Scene()
    {
        ray_declassify(&status_);
        DataDispose(&status_.bbox);
        DataDispose(&triangles_);
    }
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    RayStatus& status() { return status_; }

private:
    Data triangles_;
    RayStatus status_;
};

/// Rays from around a box towards points in it.
std::vector<Ray> rays_at(const double* box, size_t count)
{
    uint64_t state = 1;
    const auto unit = [&state] {
        state = state * 6364136223846793005u + 1442695040888963407u;
        return static_cast<double>(state >> 11) * 0x1p-53;
    };
    std::vector<Ray> rays(count);
    for (Ray& ray : rays)
        for (int k = 0; k < 3; ++k) {
            const double size = box[k + 3] - box[k];
            ray.origin[k] = box[k] + size * (3 * unit() - 1);
            ray.direction[k] = box[k] + size * unit() - ray.origin[k];
        }
    return rays;
}

/// Seconds per ray of `cast`, over as many rays as take a tenth of a second.
template <class Cast>
double time_per_ray(const std::vector<Ray>& rays, Cast cast)
{
    const double start = seconds();
    size_t done = 0;
    while (seconds() - start < 0.1)
        for (int i = 0; i < 16; ++i)
            cast(rays[done++ % rays.size()]);
    return (seconds() - start) / static_cast<double>(done);
}

#ifdef KORVALE_HAS_EMBREE

/// The same mesh in single precision. A filter counts every hit and lets the ray go on.
class Peer {
public:
    explicit Peer(const std::vector<double>& triangles) : device_(rtcNewDevice(nullptr)), scene_(rtcNewScene(device_))
    {
        const size_t vertices = triangles.size() / 3;
        RTCGeometry mesh = rtcNewGeometry(device_, RTC_GEOMETRY_TYPE_TRIANGLE);
        auto* const points = static_cast<float*>(
            rtcSetNewGeometryBuffer(mesh, RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT3, 3 * sizeof(float), vertices));
        auto* const corners = static_cast<unsigned*>(rtcSetNewGeometryBuffer(
            mesh, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3, 3 * sizeof(unsigned), vertices / 3));
        for (size_t i = 0; i < triangles.size(); ++i)
            points[i] = static_cast<float>(triangles[i]);
        for (size_t i = 0; i < vertices; ++i)
            corners[i] = static_cast<unsigned>(i);
        rtcSetGeometryIntersectFilterFunction(mesh, [](const RTCFilterFunctionNArguments* arguments) {
            arguments->valid[0] = 0;
            ++hits;
        });
        rtcCommitGeometry(mesh);
        rtcAttachGeometry(scene_, mesh);
        rtcReleaseGeometry(mesh);
        rtcCommitScene(scene_);
    }
    ~Peer()
    {
        rtcReleaseScene(scene_);
        rtcReleaseDevice(device_);
    }
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    void cast(const Ray& ray) const
    {
        RTCIntersectContext context;
        rtcInitIntersectContext(&context);
        RTCRayHit query = {};
        query.ray.org_x = static_cast<float>(ray.origin[0]);
        query.ray.org_y = static_cast<float>(ray.origin[1]);
        query.ray.org_z = static_cast<float>(ray.origin[2]);
        query.ray.dir_x = static_cast<float>(ray.direction[0]);
        query.ray.dir_y = static_cast<float>(ray.direction[1]);
        query.ray.dir_z = static_cast<float>(ray.direction[2]);
        query.ray.tfar = 1e30f;
        query.ray.mask = ~0u;
        query.hit.geomID = RTC_INVALID_GEOMETRY_ID;
        rtcIntersect1(scene_, &context, &query);
    }

    static inline int64_t hits = 0;

private:
    RTCDevice device_;
    RTCScene scene_;
};

#endif

void Query(benchmark::State& state)
{
    const std::vector<double>& mesh = teapot(static_cast<int>(state.range(0)));
    Scene scene(mesh, static_cast<int>(state.range(1)));
    const std::vector<Ray> rays = rays_at(scene.status().bbox.dvals, 1024);
    size_t i = 0;
    int64_t hits = 0;
    const double start = seconds();
    for (auto _ : state) {
        Ray ray = rays[i++ % rays.size()];
        double distance;
        hits += ray_intersect(ray.origin, ray.direction, &scene.status(), &distance);
    }
    const double ours = (seconds() - start) / static_cast<double>(i);
    const double plain = time_per_ray(rays, [&](const Ray& ray) {
        double distance;
        hits += korvale::reference::intersect(ray.origin, ray.direction, scene.status(), &distance);
    });
    benchmark::DoNotOptimize(hits);
    state.counters["triangles"] = static_cast<double>(mesh.size() / 9);
    state.counters["plain"] = plain / ours;
#ifdef KORVALE_HAS_EMBREE
    const Peer peer(mesh);
    state.counters["embree"] = time_per_ray(rays, [&](const Ray& ray) { peer.cast(ray); }) / ours;
#endif
}
BENCHMARK(Query)
    ->ArgNames({"division", "grid"})
    ->ArgsProduct({{0, 1, 2, 3, 4}, {1, 4, 8, 16, 32, 64}})
    ->Unit(benchmark::kMicrosecond);

/// Classification and its undoing; the plain steps make their cells and lists, without undoing them.
void Classify(benchmark::State& state)
{
    const std::vector<double>& mesh = teapot(static_cast<int>(state.range(0)));
    const int n = static_cast<int>(state.range(1));
    Scene scene(mesh, n);
    const double start = seconds();
    int64_t done = 0;
    for (auto _ : state) {
        ray_classify(&scene.status());
        ++done;
    }
    const double ours = (seconds() - start) / static_cast<double>(done);
    const double plain_start = seconds();
    benchmark::DoNotOptimize(korvale::reference::sort_triangles(mesh.data(), static_cast<int32_t>(mesh.size() / 9),
                                                                scene.status().bbox.dvals, n, n, n));
    state.counters["triangles"] = static_cast<double>(mesh.size() / 9);
    state.counters["plain"] = (seconds() - plain_start) / ours;
#ifdef KORVALE_HAS_EMBREE
    const double peer_start = seconds();
    const Peer peer(mesh);
    state.counters["embree"] = (seconds() - peer_start) / ours;
#endif
}
BENCHMARK(Classify)->ArgNames({"division", "grid"})->ArgsProduct({{0, 4}, {4, 16}})->Unit(benchmark::kMillisecond);
BENCHMARK(Classify)->ArgNames({"division", "grid"})->Args({0, 64})->Unit(benchmark::kMillisecond);

} // namespace
