// Flattening an outline, against one pass over its points. The first corner decides, so the least that must be read is
// every point once for the ray test, or once an axis for the extremes.
#include <cmath>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/ratio.h"
#include "path/flatten.h"

namespace {

using korvale::bench::seconds;

std::vector<double> star(int n)
{
    std::vector<double> xyz;
    for (int i = 0; i < n; ++i) {
        const double t = i * 6.283185307179586 / n;
        const double r = 100 * (2 + std::sin(11 * t));
        xyz.insert(xyz.end(), {r * std::cos(t), r * std::sin(t), 0.3 * r * std::cos(t)});
    }
    return xyz;
}

/// One pass that reads every coordinate: the least and the greatest of x, y and z.
double read_once(const std::vector<double>& xyz)
{
    double bounds[6] = {xyz[0], xyz[1], xyz[2], xyz[0], xyz[1], xyz[2]};
    for (size_t i = 0; i < xyz.size(); i += 3)
        for (size_t k = 0; k < 3; ++k) {
            bounds[k] = xyz[i + k] < bounds[k] ? xyz[i + k] : bounds[k];
            bounds[k + 3] = xyz[i + k] > bounds[k + 3] ? xyz[i + k] : bounds[k + 3];
        }
    return bounds[3] - bounds[0] + bounds[4] - bounds[1] + bounds[5] - bounds[2];
}

template <class Flatten>
void measure(benchmark::State& state, Flatten flatten)
{
    const int n = static_cast<int>(state.range(0));
    std::vector<double> xyz = star(n);
    const int rounds = 1 + 100000 / n;
    double library = 0, pass = 0;
    for (auto _ : state) {
        const double t0 = seconds();
        for (int i = 0; i < rounds; ++i)
            flatten(xyz.data(), n);
        const double t1 = seconds();
        for (int i = 0; i < rounds; ++i) {
            benchmark::DoNotOptimize(read_once(xyz));
            benchmark::ClobberMemory();
        }
        library += t1 - t0;
        pass += seconds() - t1;
        state.SetIterationTime((t1 - t0) / rounds);
    }
    const double points = static_cast<double>(state.iterations()) * rounds * n;
    state.counters["ns/point"] = 1e9 * library / points;
    state.counters["this/pass"] = library / pass;
}

void flatten_data(benchmark::State& state)
{
    measure(state, [](double* xyz, int n) {
        Data path = {3, n, DATA_TYPE_DOUBLE, xyz, nullptr, nullptr};
        Xfm xfm, reverse;
        benchmark::DoNotOptimize(data_to_xy_xfms(&path, xfm, reverse, 1));
    });
}

void flatten_datastruct(benchmark::State& state)
{
    measure(state, [](double* xyz, int n) {
        DATAstruct path;
        DATAInitialize(&path);
        path.dim = 3;
        path.count = n;
        path.dvals = xyz;
        Xfm xfm, reverse;
        DATA_to_xy_xfms(&path, xfm, reverse, 1);
        benchmark::DoNotOptimize(xfm);
    });
}

BENCHMARK(flatten_data)->Arg(16)->Arg(1000)->Arg(100000)->UseManualTime()->Iterations(20);
BENCHMARK(flatten_datastruct)->Arg(16)->Arg(1000)->Arg(100000)->UseManualTime()->Iterations(20);

} // namespace
