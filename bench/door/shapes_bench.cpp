// Outlines cut into triangles and sorted into shapes. "ns/point" of 60,000 points is at most twice that of 8,000, as it
// grows with n log n; "offset/this" is the time of moving the same outlines by a hundredth of their size, divided by
// the time of sorting them.
#include <cmath>
#include <numbers>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/ratio.h"
#include "include/korvale_c.h"

namespace {

using korvale::bench::need;
using korvale::bench::time_of;
using Numbers = std::vector<double>;

/// A coast of n points.
Numbers coast(int n, double x, double y, double size)
{
    Numbers xyz;
    for (int i = 0; i < n; ++i) {
        const double t = 2 * std::numbers::pi * i / n;
        const double r = size * (1 + 0.3 * std::sin(5 * t) + 0.1 * std::sin(37 * t) + 0.02 * std::sin(211 * t));
        xyz.insert(xyz.end(), {x + r * std::cos(t), y + r * std::sin(t), 0});
    }
    return xyz;
}

korvale_points points_of(const Numbers& xyz)
{
    return {xyz.data(), static_cast<int64_t>(xyz.size() / 3), 0, 3, KORVALE_DOUBLE};
}

void triangulate(benchmark::State& state)
{
    const auto n = static_cast<int>(state.range(0));
    const Numbers xyz = coast(n, 0, 0, 100);
    const korvale_points outline = points_of(xyz);
    std::vector<int32_t> triangles(3 * static_cast<size_t>(n));
    const auto cut = [&] {
        int64_t written = 0;
        need(korvale_triangulate(&outline, 1, triangles.data(), n - 2, &written, nullptr, nullptr, nullptr) ==
             KORVALE_OK);
    };
    for (auto _ : state)
        cut();
    state.counters["ns/point"] = 1e9 * time_of(cut) / n;
}

/// Hills side by side, each of lines around lines.
void shapes(benchmark::State& state)
{
    const auto deep = static_cast<int>(state.range(0));
    std::vector<Numbers> lines;
    for (int i = 0; i < 5000; ++i)
        lines.push_back(coast(300, 3.0 * (i / deep), 0, 1.0 / (1 + i % deep)));
    std::vector<korvale_points> outlines;
    for (const Numbers& line : lines)
        outlines.push_back(points_of(line));
    std::vector<int32_t> outer(outlines.size());
    const auto sort = [&] {
        need(korvale_shapes(outlines.data(), static_cast<int64_t>(outlines.size()), nullptr, outer.data(), nullptr) ==
             KORVALE_OK);
    };
    korvale_offsetter* offsetter = nullptr;
    need(korvale_offsetter_new(&offsetter, nullptr) == KORVALE_OK);
    const double offset = time_of([&] {
        for (size_t i = 0; i < outlines.size(); ++i)
            need(korvale_offsetter_run(offsetter, &outlines[i], 1, 0.01 / (1 + static_cast<int>(i) % deep), nullptr,
                                       nullptr) == KORVALE_OK);
    });
    korvale_offsetter_free(offsetter);
    for (auto _ : state)
        sort();
    state.counters["offset/this"] = offset / time_of(sort);
}

BENCHMARK(triangulate)->Arg(8000)->Arg(60000);
BENCHMARK(shapes)->Arg(1)->Arg(20)->Unit(benchmark::kMillisecond);

} // namespace
