// Whole-array operations against the plain documented steps ("plain"), a copy of the bytes ("copy") and, where it is
// installed, a library of matrices ("eigen").
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "bench/ratio.h"
#include "data/operations.h"
#include "tests/reference/arrays.h"

#ifdef KORVALE_HAS_EIGEN
#include <Eigen/Core>
#endif

namespace {

using korvale::bench::Race;
namespace reference = korvale::reference;

Xfm kMatrix = {{0.8, -0.6, 0, 1}, {0.6, 0.8, 0, 2}, {0, 0, 1, 3}, {0, 0, 0, 1}};

/// An array [count][dim] of doubles that are neither sorted nor equal.
struct Doubles {
    Doubles(int64_t count, int dim, uint32_t seed) : values(static_cast<size_t>(count * dim))
    {
        for (double& value : values) {
            seed = seed * 1664525 + 1013904223;
            value = seed / 4294967296.0 - 0.5;
        }
        DATAInitialize(&record);
        record.count = static_cast<int32_t>(count);
        record.dim = dim;
        record.dvals = values.data();
    }

    std::vector<double> values;
    DATAstruct record; // wraps the values
};

void transform(benchmark::State& state)
{
    Doubles from(state.range(0), 3, 1), to(state.range(0), 3, 2);
    Race race(state, [&] { TransformDATA(kMatrix, &from.record, &to.record); });
    race.against("plain", [&] { reference::transform(kMatrix, &from.record, &to.record); });
    race.against("copy", [&] {
        std::memcpy(to.values.data(), from.values.data(), from.values.size() * sizeof(double));
        benchmark::DoNotOptimize(to.values.data());
    });
#ifdef KORVALE_HAS_EIGEN
    Eigen::Matrix3d turn;
    Eigen::Vector3d shift;
    for (int i = 0; i < 3; ++i) {
        shift[i] = kMatrix[i][3];
        for (int j = 0; j < 3; ++j)
            turn(i, j) = kMatrix[i][j];
    }
    const Eigen::Map<const Eigen::Matrix3Xd> in(from.values.data(), 3, state.range(0));
    Eigen::Map<Eigen::Matrix3Xd> out(to.values.data(), 3, state.range(0));
    race.against("eigen", [&] { out.noalias() = (turn * in).colwise() + shift; });
#endif
}

void bounds(benchmark::State& state)
{
    Doubles from(state.range(0), 3, 1), box(2, 3, 2);
    Race race(state, [&] { DATABBox(&from.record, &box.record); });
    race.against("plain", [&] { reference::bbox(&from.record, &box.record); });
#ifdef KORVALE_HAS_EIGEN
    const Eigen::Map<const Eigen::Matrix3Xd> in(from.values.data(), 3, state.range(0));
    race.against("eigen", [&] {
        Eigen::Vector3d low = in.rowwise().minCoeff(), high = in.rowwise().maxCoeff();
        benchmark::DoNotOptimize(low);
        benchmark::DoNotOptimize(high);
    });
#endif
}

/// Elements wider than points; triangles have 9 components.
void wide_bounds(benchmark::State& state)
{
    const auto dim = static_cast<int>(state.range(1));
    Doubles from(state.range(0), dim, 1), box(2, dim, 2);
    Race race(state, [&] { DATABBox(&from.record, &box.record); });
    race.against("plain", [&] { reference::bbox(&from.record, &box.record); });
}

void mix(benchmark::State& state)
{
    Doubles a(state.range(0), 3, 1), b(state.range(0), 3, 2), to(state.range(0), 3, 3);
    Race race(state, [&] { DATAMix(&a.record, &b.record, 0.25, 0.75, &to.record); });
    race.against("plain", [&] { reference::mix(&a.record, &b.record, 0.25, 0.75, &to.record); });
#ifdef KORVALE_HAS_EIGEN
    const Eigen::Map<const Eigen::ArrayXd> va(a.values.data(), 3 * state.range(0)),
        vb(b.values.data(), 3 * state.range(0));
    Eigen::Map<Eigen::ArrayXd> out(to.values.data(), 3 * state.range(0));
    race.against("eigen", [&] { out = 0.25 * va + 0.75 * vb; });
#endif
}

void mix_four(benchmark::State& state)
{
    Doubles a(state.range(0), 3, 1), b(state.range(0), 3, 2), c(state.range(0), 3, 3), d(state.range(0), 3, 4);
    Doubles to(state.range(0), 3, 5);
    const double weights[] = {0.1, 0.2, 0.3, 0.4};
    Race race(state, [&] { DATA4Mix(&a.record, &b.record, &c.record, &d.record, 0.1, 0.2, 0.3, 0.4, &to.record); });
    race.against("plain",
                 [&] { reference::mix_four(&a.record, &b.record, &c.record, &d.record, weights, &to.record); });
}

void reverse(benchmark::State& state)
{
    Doubles d(state.range(0), 3, 1);
    Race race(state, [&] { DATAReverse(&d.record); });
    race.against("plain", [&] { reference::reverse(&d.record); });
#ifdef KORVALE_HAS_EIGEN
    Eigen::Map<Eigen::Matrix3Xd> points(d.values.data(), 3, state.range(0));
    race.against("eigen", [&] { points.rowwise().reverseInPlace(); });
#endif
}

void copy(benchmark::State& state)
{
    Doubles from(state.range(0), 3, 1), to(state.range(0), 3, 2);
    to.record.alloc_count = to.record.count; // has the room, so nothing is allocated
    to.record.alloc_dim = to.record.dim;
    Race race(state, [&] { DATACopy(&from.record, &to.record); });
    race.against("plain", [&] { reference::copy(&from.record, &to.record); });
}

/// Appending one point at a time, against a buffer of the final size that is filled once.
void append(benchmark::State& state)
{
    const auto n = static_cast<int32_t>(state.range(0));
    Race race(state, [&] {
        DATAstruct d;
        DATAInitialize(&d);
        d.dim = 3;
        for (d.count = 1; d.count <= n; ++d.count) {
            DATAReAllocate(&d);
            for (int k = 0; k < 3; ++k)
                d.dvals[3 * (d.count - 1) + k] = d.count;
        }
        DATADispose(&d);
    });
    race.against("filled_once", [&] {
        DATAstruct d;
        DATAInitialize(&d);
        d.dim = 3;
        d.count = n;
        DATAAllocate(&d);
        for (int32_t i = 0; i < 3 * n; ++i)
            d.dvals[i] = i;
        benchmark::DoNotOptimize(d.dvals);
        DATADispose(&d);
    });
}

#define KORVALE_SIZES Arg(1)->Arg(2)->Arg(4)->Arg(7)->Arg(16)->Arg(100)->Arg(1000)->Arg(1000000)

BENCHMARK(transform)->KORVALE_SIZES;
BENCHMARK(bounds)->KORVALE_SIZES;
BENCHMARK(wide_bounds)->ArgsProduct({{1, 2, 4, 16, 100, 1000}, {5, 9, 13}});
BENCHMARK(mix)->KORVALE_SIZES;
BENCHMARK(mix_four)->KORVALE_SIZES;
BENCHMARK(reverse)->KORVALE_SIZES;
BENCHMARK(copy)->KORVALE_SIZES;
BENCHMARK(append)->Arg(1000)->Arg(10000);

} // namespace
