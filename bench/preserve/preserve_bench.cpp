// Edges, energy, forces and relaxation of a squashed torus of triangles with all four terms, each against the
// documented steps as they stand. `plain` is their time divided by the library's, measured in the same run: above 1 the
// library is quicker. `ns_per_point` is the library's own time.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/ratio.h"
#include "preserve/compute.h"
#include "preserve/evaluation.h"
#include "tests/reference/preserve.h"
#include "tests/support/meshes.h"

namespace {

using korvale::bench::time_of;

/// An array around numbers of its own.
struct Array : DATAstruct {
    Array(int32_t width, int32_t kind)
    {
        DATAInitialize(this);
        dim = width;
        type = kind;
    }

    void hold(std::vector<double>& values)
    {
        count = static_cast<int32_t>(values.size()) / dim;
        dvals = values.data();
    }

    void hold(std::vector<int32_t>& values)
    {
        count = static_cast<int32_t>(values.size()) / dim;
        ivals = values.data();
    }
};

/// A torus of about n points, its faces two triangles a quad, initialised for all terms and squashed to 60 % height.
class Squashed {
public:
    explicit Squashed(int n)
    {
        const int along = std::max(3, static_cast<int>(std::sqrt(n))), around = std::max(3, n / along);
        mesh_ = korvale::test::triangulated(korvale::test::torus(around, along, 2.0, 0.7));
        squashed_ = mesh_.points;
        for (size_t q = 2; q < squashed_.size(); q += 3)
            squashed_[q] *= 0.6;
        moved_values_ = squashed_;
        points.hold(mesh_.points);
        sizes.hold(mesh_.sizes);
        corners.hold(mesh_.corners);
        moved.hold(moved_values_);
        if (PreserveInitialize(&status, &points, nullptr, &sizes, &corners) < 0)
            std::abort();
        for (int term = PRESERVE_LENGTH; term <= PRESERVE_AREA; term *= 2)
            if (PreservePreserve(&status, term, 0.01) < 0)
                std::abort();
        status.cur_points = &moved;
        ends_.assign(status.edges->ivals, status.edges->ivals + 2 * status.edges->count);
        edges.hold(ends_);
    }

    ~Squashed()
    {
        DATAstruct* const built = status.edges;
        PreserveDispose(&status);
        DATADispose(built);
        std::free(built);
    }

    Squashed(const Squashed&) = delete;
    Squashed& operator=(const Squashed&) = delete;

    void squash() { std::copy(squashed_.begin(), squashed_.end(), moved_values_.begin()); }

    int point_count() const { return points.count; }
    const std::vector<int32_t>& edge_ends() const { return ends_; }
    const std::vector<int32_t>& face_sizes() const { return mesh_.sizes; }
    const std::vector<int32_t>& face_points() const { return mesh_.corners; }

    PreserveStatus status = {};
    Array points{3, DATA_TYPE_DOUBLE}, moved{3, DATA_TYPE_DOUBLE};
    Array edges{2, DATA_TYPE_INT}, sizes{1, DATA_TYPE_INT}, corners{1, DATA_TYPE_INT};

private:
    korvale::test::Mesh mesh_;
    std::vector<double> squashed_, moved_values_;
    std::vector<int32_t> ends_;
};

template <class Own>
double time_per_point(benchmark::State& state, const Squashed& mesh, Own own)
{
    for (auto _ : state)
        own();
    const double time = time_of(own);
    state.counters["ns_per_point"] = 1e9 * time / mesh.point_count();
    return time;
}

template <class Own, class Plain>
void compare(benchmark::State& state, const Squashed& mesh, Own own, Plain plain)
{
    const double time = time_per_point(state, mesh, own);
    state.counters["plain"] = time_of(plain) / time;
}

void initialize(benchmark::State& state)
{
    Squashed mesh(static_cast<int>(state.range(0)));
    const auto own = [&mesh] {
        PreserveStatus status = {};
        PreserveInitialize(&status, &mesh.points, nullptr, &mesh.sizes, &mesh.corners);
        DATAstruct* const edges = status.edges;
        PreserveDispose(&status);
        DATADispose(edges);
        std::free(edges);
    };
    const auto plain = [&mesh] {
        benchmark::DoNotOptimize(korvale::reference::edges(mesh.face_sizes(), mesh.face_points()).data());
    };
    if (state.range(0) <= 10000)
        compare(state, mesh, own, plain);
    else
        time_per_point(state, mesh, own); // the steps take half a minute
}

void initialize_with_edges(benchmark::State& state)
{
    Squashed mesh(static_cast<int>(state.range(0)));
    const auto own = [&mesh] {
        PreserveStatus status = {};
        PreserveInitialize(&status, &mesh.points, &mesh.edges, &mesh.sizes, &mesh.corners);
        PreserveDispose(&status);
    };
    const auto plain = [&mesh] {
        const korvale::reference::Connectivity c = korvale::reference::connectivity(
            mesh.point_count(), mesh.edge_ends(), mesh.face_sizes(), mesh.face_points());
        benchmark::DoNotOptimize(c.point_edges.data());
    };
    compare(state, mesh, own, plain);
}

void energy(benchmark::State& state)
{
    Squashed mesh(static_cast<int>(state.range(0)));
    compare(
        state, mesh, [&mesh] { PreserveFindEnergy(&mesh.status); },
        [&mesh] { korvale::reference::find_energy(mesh.status); });
}

void force(benchmark::State& state)
{
    Squashed mesh(static_cast<int>(state.range(0)));
    PreserveFindEnergy(&mesh.status);
    compare(
        state, mesh, [&mesh] { PreserveFindForce(&mesh.status); },
        [&mesh] { korvale::reference::find_force(mesh.status); });
}

void four_steps(benchmark::State& state)
{
    Squashed mesh(static_cast<int>(state.range(0)));
    const auto own = [&mesh] {
        mesh.squash();
        PreserveCompute(&mesh.status, &mesh.moved, 4);
    };
    const auto plain = [&mesh] {
        mesh.squash();
        korvale::reference::compute(mesh.status, mesh.moved, 4);
    };
    compare(state, mesh, own, plain);
}

} // namespace

BENCHMARK(initialize)->Unit(benchmark::kMicrosecond)->Arg(16)->Arg(1000)->Arg(10000)->Arg(100000);
BENCHMARK(initialize_with_edges)->Unit(benchmark::kMicrosecond)->Arg(16)->Arg(1000)->Arg(10000)->Arg(100000);
BENCHMARK(energy)->Unit(benchmark::kMicrosecond)->Arg(16)->Arg(1000)->Arg(10000)->Arg(100000);
BENCHMARK(force)->Unit(benchmark::kMicrosecond)->Arg(16)->Arg(1000)->Arg(10000)->Arg(100000);
BENCHMARK(four_steps)->Unit(benchmark::kMicrosecond)->Arg(16)->Arg(1000)->Arg(10000);
