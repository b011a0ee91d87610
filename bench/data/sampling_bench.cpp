// Points on triangles against the documented search through all shares ("plain") and the draws alone ("draws").
#include <cstdint>
#include <vector>

#include "bench/ratio.h"
#include "data/sampling.h"
#include "platform/layer.h"
#include "tests/reference/sampling.h"

namespace {

using korvale::bench::Race;

/// range(0) points on range(1) triangles.
void sample(benchmark::State& state)
{
    const int64_t count = state.range(0), triangles = state.range(1);
    std::vector<double> corners(static_cast<size_t>(9 * triangles)), xyz(static_cast<size_t>(3 * count));
    Mwsrand(1);
    for (double& value : corners)
        value = Mwrand() / 32767.0;
    Data t, p;
    DataInitialize(&t);
    DataInitialize(&p);
    t.count = static_cast<int32_t>(triangles);
    t.dim = 9;
    t.dvals = corners.data();
    p.count = static_cast<int32_t>(count);
    p.dim = 3;
    p.dvals = xyz.data();
    Race race(state, [&] { DataTriSample(&t, 5, &p, nullptr, nullptr); });
    race.against("draws", [&] {
        for (int64_t i = 0; i < 3 * count; ++i)
            benchmark::DoNotOptimize(Mwrand());
    });
    if (count * triangles < 1000000000)
        race.against("plain",
                     [&] { benchmark::DoNotOptimize(korvale::reference::sample_triangles(corners, 5, count, {})); });
}

BENCHMARK(sample)
    ->Args({1, 1})
    ->Args({16, 1})
    ->Args({1000, 1})
    ->Args({100000, 1})
    ->Args({16, 16})
    ->Args({1000, 100})
    ->Args({1, 100000})
    ->Args({5000, 16})
    ->Args({10000, 16000})
    ->Args({1000000, 100000});

} // namespace
