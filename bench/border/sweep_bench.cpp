// Offsetting outlines of several kinds, each against the documented steps as they stand and, where it is installed,
// against a polygon offsetting library that works on an integer grid. `plain` and `peer` are their times divided by the
// library's, measured in the same run: above 1 the library is quicker. Where the plain steps would take minutes there
// is no `plain`.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/ratio.h"
#include "border/border.h"
#include "data/operations.h"
#include "path/flatten.h"
#include "tests/reference/sweep.h"
#include "tests/support/outlines.h"

#ifdef KORVALE_BENCH_POLYCLIPPING
#include <polyclipping/clipper.hpp>
#endif

namespace {

using korvale::bench::time_of;
using namespace korvale::test;

/// The coast of a country in kilometres; its number of points is in the data.
Coordinates read_coast(const std::string& wanted)
{
    std::ifstream file(KORVALE_EXAMPLE_DATA "/coasts.txt");
    std::string word;
    Coordinates points;
    while (file >> word) {
        std::string name;
        size_t count = 0;
        if (word != "outline" || !(file >> count >> std::ws) || !std::getline(file, name) || name != wanted)
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

/// The larger side of the bounds.
double extent(const Coordinates& points)
{
    double low[2] = {1e300, 1e300}, high[2] = {-1e300, -1e300};
    for (size_t i = 0; i < points.size(); ++i)
        if (i % 3 < 2) {
            low[i % 3] = std::min(low[i % 3], points[i]);
            high[i % 3] = std::max(high[i % 3], points[i]);
        }
    return std::max(high[0] - low[0], high[1] - low[1]);
}

struct Case {
    Coordinates points;
    double distance;
    bool split_events;
};

/// Half the corners between radius 10 and 11.
Case few_points(int n)
{
    return {n % 4 == 0 ? gear(n / 4, 10, 11) : wiggly(n, 1, 0.5), 0.1, true};
}
Case no_event(int n)
{
    return {wiggly(n, n / 16, 1.0 / n), -1.0 / n, true};
}
Case no_event_without_splits(int n)
{
    return {wiggly(n, n / 16, 1.0 / n), -1.0 / n, false};
}
Case inwards(int n)
{
    return {wiggly(n, n / 16, 0.5), -20.0, true};
}
Case inwards_without_splits(int n)
{
    return {wiggly(n, n / 16, 0.5), -20.0, false};
}
Case gear_inwards(int n)
{
    return {gear(n / 4, 9, 10), -2.0, true};
}
Case gear_outwards(int n)
{
    return {gear(n / 4, 9, 10), 1.0, true};
}
Case comb_inwards(int n)
{
    return {comb((n - 2) / 4, 0.5), -0.6, true};
}
Case comb_outwards(int n)
{
    return {comb((n - 2) / 4, 0.5), 0.5, true};
}

constexpr const char* kCountries[] = {"Norway", "United Kingdom", "Italy"};

/// The coast of a country by thousandths of its extent.
Case coast_by(int country, int thousandths)
{
    const Coordinates points = read_coast(kCountries[country]);
    return {points, extent(points) * thousandths / 1000.0, true};
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

void sweep(benchmark::State& state, const Case& c, bool with_plain)
{
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
    if (with_plain)
        state.counters["plain"] = time_of([&status] { sweep_plainly(status); }) / own;
#ifdef KORVALE_BENCH_POLYCLIPPING
    state.counters["peer"] = time_of([&c] { offset_on_grid(c); }) / own;
#endif
    release_arrays(status);
}

template <Case (*make)(int), bool with_plain = true>
void sweep(benchmark::State& state)
{
    sweep(state, make(static_cast<int>(state.range(0))), with_plain);
}

void sweep_coast(benchmark::State& state)
{
    sweep(state, coast_by(static_cast<int>(state.range(0)), static_cast<int>(state.range(1))), false);
    state.SetLabel(kCountries[state.range(0)]);
}

} // namespace

BENCHMARK(sweep<few_points>)->Name("few points")->Arg(3)->Arg(4)->Arg(8)->Arg(12)->Arg(16)->Arg(24);
BENCHMARK(sweep<no_event>)->Name("wiggly, no event")->Arg(16)->Arg(64)->Arg(256)->Arg(1024)->Arg(4096);
BENCHMARK(sweep<no_event_without_splits>)->Name("wiggly, no event, splits off")->Arg(64)->Arg(1024)->Arg(4096);
BENCHMARK(sweep<inwards>)->Name("wiggly inwards")->Unit(benchmark::kMicrosecond)->Arg(16)->Arg(64)->Arg(256);
BENCHMARK(sweep<inwards_without_splits>)
    ->Name("wiggly inwards, splits off")
    ->Unit(benchmark::kMicrosecond)
    ->Arg(64)
    ->Arg(256);
BENCHMARK(sweep<gear_inwards>)->Name("gear inwards")->Unit(benchmark::kMicrosecond)->Arg(16)->Arg(256)->Arg(1024);
BENCHMARK(sweep<gear_outwards>)->Name("gear outwards")->Unit(benchmark::kMicrosecond)->Arg(16)->Arg(256)->Arg(1024);
BENCHMARK(sweep<comb_inwards>)->Name("comb inwards")->Unit(benchmark::kMicrosecond)->Arg(62)->Arg(254)->Arg(1022);
BENCHMARK(sweep<comb_outwards>)->Name("comb outwards")->Unit(benchmark::kMicrosecond)->Arg(62)->Arg(254)->Arg(1022);
// A fixed number of iterations: otherwise the ratios, which take much longer, are measured again with every attempt to
// find one.
BENCHMARK(sweep_coast)
    ->Name("coast, by thousandths of its extent")
    ->Unit(benchmark::kMicrosecond)
    ->Iterations(16)
    ->ArgsProduct({{0, 1, 2}, {-30, -5, 5, 30}});
BENCHMARK(sweep<inwards, false>)
    ->Name("wiggly inwards")
    ->Unit(benchmark::kMicrosecond)
    ->Iterations(4)
    ->Arg(1024)
    ->Arg(4096);
BENCHMARK(sweep<inwards_without_splits, false>)
    ->Name("wiggly inwards, splits off")
    ->Unit(benchmark::kMicrosecond)
    ->Iterations(4)
    ->Arg(1024)
    ->Arg(4096);
BENCHMARK(sweep<comb_inwards, false>)->Name("comb inwards")->Unit(benchmark::kMicrosecond)->Iterations(8)->Arg(4094);
BENCHMARK(sweep<comb_outwards, false>)->Name("comb outwards")->Unit(benchmark::kMicrosecond)->Iterations(8)->Arg(4094);
BENCHMARK(sweep<gear_inwards, false>)->Name("gear inwards")->Unit(benchmark::kMicrosecond)->Iterations(64)->Arg(4096);
BENCHMARK(sweep<gear_outwards, false>)->Name("gear outwards")->Unit(benchmark::kMicrosecond)->Iterations(64)->Arg(4096);
