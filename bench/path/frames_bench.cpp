// Frames along a polyline, against the documented steps written out plainly and against a copy of the bytes written.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/ratio.h"
#include "path/frames.h"
#include "tests/reference/frames.h"

namespace {

using korvale::bench::seconds;

struct Frame {
    Xfm m;
};

/// A loop that winds in space.
std::vector<double> winding_loop(int n)
{
    std::vector<double> xyz;
    for (int i = 0; i < n; ++i) {
        const double t = i * 6.283185307179586 / n;
        const double r = 3 + std::cos(7 * t);
        xyz.insert(xyz.end(), {r * std::cos(3 * t), r * std::sin(3 * t), std::sin(7 * t)});
    }
    return xyz;
}

/// Runs the library, the plain steps and a copy of as many bytes in turn, so that a drifting clock meets all three, and
/// reports the time of the library and its ratios to the other two.
void measure(benchmark::State& state, bool closed)
{
    const int n = static_cast<int>(state.range(0));
    std::vector<double> xyz = winding_loop(n);
    std::vector<Frame> frames(static_cast<size_t>(n)), other(static_cast<size_t>(n));
    DATAstruct path;
    DATAInitialize(&path);
    path.dim = 3;
    path.count = n;
    path.dvals = xyz.data();

    const int rounds = std::max(1, 20000 / n);
    double library = 0, plain = 0, copy = 0;
    for (auto _ : state) {
        const double t0 = seconds();
        for (int i = 0; i < rounds; ++i)
            PATH2xfm(&path, closed, &frames.data()->m);
        const double t1 = seconds();
        for (int i = 0; i < rounds; ++i)
            korvale::reference::frames_along(xyz.data(), n, closed, 6.283185307179586, &other.data()->m);
        const double t2 = seconds();
        for (int i = 0; i < rounds; ++i) {
            std::memcpy(other.data(), frames.data(), frames.size() * sizeof(Frame));
            benchmark::ClobberMemory();
        }
        const double t3 = seconds();
        library += t1 - t0;
        plain += t2 - t1;
        copy += t3 - t2;
        state.SetIterationTime((t1 - t0) / rounds);
    }
    const double points = static_cast<double>(state.iterations()) * rounds * n;
    state.counters["ns/point"] = 1e9 * library / points;
    state.counters["plain/this"] = plain / library;
    state.counters["this/copy"] = library / copy;
}

void open_frames(benchmark::State& state)
{
    measure(state, false);
}

void closed_frames(benchmark::State& state)
{
    measure(state, true);
}

BENCHMARK(open_frames)->Arg(16)->Arg(1000)->Arg(100000)->UseManualTime()->Iterations(20);
BENCHMARK(closed_frames)->Arg(16)->Arg(1000)->Arg(100000)->UseManualTime()->Iterations(20);

} // namespace
