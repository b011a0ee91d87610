// Edges, energy, forces and relaxation of a squashed torus of triangles with all four terms, each against the documented
// steps as they stand. `plain` is their time divided by the library's, measured in the same run: above 1 the library is
// quicker. `ns_per_point` is the library's own time.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numbers>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/ratio.h"
#include "preserve/compute.h"
#include "preserve/evaluation.h"
#include "tests/reference/preserve.h"

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
        const double full_turn = 2.0 * std::numbers::pi;
        for (int i = 0; i < around; ++i)
            for (int j = 0; j < along; ++j) {
                const double u = full_turn * i / around, v = full_turn * j / along, r = 2.0 + 0.7 * std::cos(v);
                points_.insert(points_.end(), {r * std::cos(u), r * std::sin(u), 0.7 * std::sin(v)});
                const int i1 = (i + 1) % around, j1 = (j + 1) % along;
                const int quad[] = {i * along + j, i1 * along + j, i1 * along + j1, i * along + j1};
                corners_.insert(corners_.end(), {quad[0], quad[1], quad[2], quad[0], quad[2], quad[3]});
            }
        sizes_.assign(corners_.size() / 3, 3);
        squashed_ = points_;
        for (size_t q = 2; q < squashed_.size(); q += 3)
            squashed_[q] *= 0.6;
        moved_values_ = squashed_;
        points.hold(points_);
        sizes.hold(sizes_);
        corners.hold(corners_);
        moved.hold(moved_values_);
        if (PreserveInitialize(&status, &points, nullptr, &sizes, &corners) < 0)
            std::abort();
        for (int term = PRESERVE_LENGTH; term <= PRESERVE_AREA; term *= 2)
            if (PreservePreserve(&status, term, 0.01) < 0)
                std::abort();
        status.cur_points = &moved;
    }

    ~Squashed()
    {
        DATAstruct* const edges = status.edges;
        PreserveDispose(&status);
        DATADispose(edges);
        std::free(edges);
    }

    Squashed(const Squashed&) = delete;
    Squashed& operator=(const Squashed&) = delete;

    void squash() { std::copy(squashed_.begin(), squashed_.end(), moved_values_.begin()); }

    int point_count() const { return points.count; }
    const std::vector<int32_t>& face_sizes() const { return sizes_; }
    const std::vector<int32_t>& face_points() const { return corners_; }

    PreserveStatus status = {};
    Array points{3, DATA_TYPE_DOUBLE}, moved{3, DATA_TYPE_DOUBLE}, sizes{1, DATA_TYPE_INT}, corners{1, DATA_TYPE_INT};

private:
    std::vector<double> points_, squashed_, moved_values_;
    std::vector<int32_t> sizes_, corners_;
};

template <class Own, class Plain>
void compare(benchmark::State& state, const Squashed& mesh, Own own, Plain plain)
{
    for (auto _ : state)
        own();
    const double time = time_of(own);
    state.counters["ns_per_point"] = 1e9 * time / mesh.point_count();
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

BENCHMARK(initialize)->Unit(benchmark::kMicrosecond)->Arg(16)->Arg(1000)->Arg(10000);
BENCHMARK(energy)->Unit(benchmark::kMicrosecond)->Arg(16)->Arg(1000)->Arg(10000)->Arg(100000);
BENCHMARK(force)->Unit(benchmark::kMicrosecond)->Arg(16)->Arg(1000)->Arg(10000)->Arg(100000);
BENCHMARK(four_steps)->Unit(benchmark::kMicrosecond)->Arg(16)->Arg(1000)->Arg(10000);
