// Offsetting outlines of several kinds, each against the documented steps as they stand and, where it is installed,
// against a polygon offsetting library that works on an integer grid. `plain` and `peer` are their times divided by the
// library's, measured in the same run: above 1 the library is quicker. Where the plain steps would take minutes there is
// no `plain`.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <numbers>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/ratio.h"
#include "border/border.h"
#include "data/operations.h"
#include "path/flatten.h"
#include "tests/reference/sweep.h"

#ifdef KORVALE_BENCH_POLYCLIPPING
#include <polyclipping/clipper.hpp>
#endif

namespace {

using korvale::bench::time_of;

using Points = std::vector<double>; // [n 3]

constexpr double kFullTurn = 2.0 * std::numbers::pi;

/// A circle of radius 10 with a wave every 16 points.
Points wiggly(int n, double depth)
{
    Points points;
    for (int i = 0; i < n; ++i) {
        const double angle = kFullTurn * i / n, radius = 10.0 + depth * std::sin(n / 16 * angle + std::sin(5 * angle));
        points.insert(points.end(), {radius * std::cos(angle), radius * std::sin(angle), 0.0});
    }
    return points;
}

/// n / 4 teeth, four points each, all alike.
Points gear(int n)
{
    Points points;
    for (int i = 0; i < n; ++i) {
        const double angle = kFullTurn * i / n, radius = i % 4 < 2 ? 9.0 : 10.0;
        points.insert(points.end(), {radius * std::cos(angle), radius * std::sin(angle), 0.0});
    }
    return points;
}

/// n / 4 narrow teeth, four points each, on a bar of two more points.
Points comb(int n)
{
    constexpr double kPitch = 1.5;
    const int teeth = n / 4;
    Points points = {0, 0, 0, kPitch * teeth, 0, 0};
    for (int i = teeth - 1; i >= 0; --i) {
        const double left = kPitch * i, right = left + 1.0;
        points.insert(points.end(), {right, 1, 0, right, 5, 0, left, 5, 0, left, 1, 0});
    }
    return points;
}

/// The coast of Norway in kilometres; its number of points is in the data.
Points coast()
{
    std::ifstream file(KORVALE_EXAMPLE_DATA "/coasts.txt");
    std::string word;
    Points points;
    while (file >> word) {
        std::string name;
        size_t count = 0;
        if (word != "outline" || !(file >> count >> name) || name != "Norway")
            continue;
        double x, y;
        while (points.size() < 3 * count && file >> x >> y)
            points.insert(points.end(), {x, y, 0.0});
        break;
    }
    if (points.empty())
        std::abort();
    return points;
}

struct Case {
    Points points;
    double distance;
    bool split_events;
};

Case no_event(int n)
{
    return {wiggly(n, 1.0 / n), -1.0 / n, true};
}
Case inwards(int n)
{
    return {wiggly(n, 0.5), -5.0, true};
}
Case inwards_without_splits(int n)
{
    return {wiggly(n, 0.5), -5.0, false};
}
Case gear_inwards(int n)
{
    return {gear(n), -2.0, true};
}
Case comb_inwards(int n)
{
    return {comb(n), -0.6, true};
}
Case comb_outwards(int n)
{
    return {comb(n), 0.5, true};
}
Case coast_by(int distance)
{
    return {coast(), static_cast<double>(distance), true};
}

/// What `BORDER_BORDER` does, in the arrays of `status`, by the documented steps.
void sweep_plainly(BORDERStatus& status)
{
    Xfm xfm, reverse;
    DATA_to_xy_xfms(status.path, xfm, reverse, 1);
    status.flat->count = status.path->count;
    TransformDATA(xfm, status.path, status.flat);
    korvale::reference::Sweep s{};
    s.n = status.path->count;
    s.remaining = status.distance;
    s.split_events = status.split_events != 0;
    s.flat = status.flat->dvals;
    s.direction = status.direction->dvals;
    s.velocity = status.velocity->dvals;
    s.line = status.line->dvals;
    s.length = status.length->dvals;
    s.rate = status.rate->dvals;
    s.dead = status.dead->bvals;
    s.merge = status.merge->ivals;
    korvale::reference::run_sweep(s);
    korvale::reference::join_dead_vertices(s);
    TransformDATA(reverse, status.flat, status.output);
}

#ifdef KORVALE_BENCH_POLYCLIPPING
void offset_on_grid(const Case& c)
{
    constexpr double kGrid = 1e6;
    ClipperLib::Path path;
    for (size_t i = 0; i < c.points.size(); i += 3)
        path.emplace_back(std::llround(c.points[i] * kGrid), std::llround(c.points[i + 1] * kGrid));
    ClipperLib::ClipperOffset offset(1000.0);
    offset.AddPath(path, ClipperLib::jtMiter, ClipperLib::etClosedPolygon);
    ClipperLib::Paths result;
    offset.Execute(result, c.distance * kGrid);
    benchmark::DoNotOptimize(result.data());
}
#endif

template <Case (*make)(int), bool with_plain = true>
void sweep(benchmark::State& state)
{
    const Case c = make(static_cast<int>(state.range(0)));
    BORDERStatus status;
    BORDERInitialize(&status);
    status.distance = c.distance;
    status.split_events = c.split_events;
    status.path->dim = 3;
    status.path->count = static_cast<int32_t>(c.points.size() / 3);
    if (DATAAllocate(status.path) < 0)
        std::abort();
    std::copy(c.points.begin(), c.points.end(), status.path->dvals);
    for (auto _ : state)
        BORDER_BORDER(&status);

    const double own = time_of([&status] { BORDER_BORDER(&status); });
    if constexpr (with_plain)
        state.counters["plain"] = time_of([&status] { sweep_plainly(status); }) / own;
#ifdef KORVALE_BENCH_POLYCLIPPING
    state.counters["peer"] = time_of([&c] { offset_on_grid(c); }) / own;
#endif
    for (DATAstruct* const d : {status.path, status.output, status.flat, status.velocity, status.direction, status.line,
                                status.dead, status.length, status.rate, status.merge}) {
        DATADispose(d);
        std::free(d);
    }
}

} // namespace

BENCHMARK(sweep<no_event>)->Name("wiggly, no event")->Arg(16)->Arg(64)->Arg(1024)->Arg(4096);
BENCHMARK(sweep<inwards>)->Name("wiggly inwards")->Unit(benchmark::kMicrosecond)->Arg(16)->Arg(64)->Arg(256);
BENCHMARK(sweep<inwards_without_splits>)
    ->Name("wiggly inwards, splits off")
    ->Unit(benchmark::kMicrosecond)
    ->Arg(16)
    ->Arg(1024)
    ->Arg(4096);
BENCHMARK(sweep<gear_inwards>)->Name("gear inwards")->Unit(benchmark::kMicrosecond)->Arg(16)->Arg(256)->Arg(1024);
BENCHMARK(sweep<comb_inwards>)->Name("comb inwards")->Unit(benchmark::kMicrosecond)->Arg(64)->Arg(256)->Arg(1024);
BENCHMARK(sweep<comb_outwards>)->Name("comb outwards")->Unit(benchmark::kMicrosecond)->Arg(64)->Arg(256)->Arg(1024);
// A fixed number of iterations: otherwise the ratios, which take much longer, are measured again with every attempt to
// find one.
BENCHMARK(sweep<inwards>)->Name("wiggly inwards")->Unit(benchmark::kMicrosecond)->Iterations(8)->Arg(1024);
BENCHMARK(sweep<coast_by>)
    ->Name("coast by kilometres")
    ->Unit(benchmark::kMicrosecond)
    ->Iterations(32)
    ->Arg(-2)
    ->Arg(-20)
    ->Arg(5);
BENCHMARK(sweep<inwards, false>)->Name("wiggly inwards")->Unit(benchmark::kMicrosecond)->Iterations(4)->Arg(3000);
BENCHMARK(sweep<gear_inwards, false>)->Name("gear inwards")->Unit(benchmark::kMicrosecond)->Iterations(64)->Arg(3000);
