// Many outlines in one call beside a loop over `BORDER` with one record, whose arrays are kept: "loop/this" is the time
// of that loop divided by ours. The loop leaves each border in the record, where the next one takes its place;
// "copying/this" is of a loop that also copies borders, flags and links to where they can stay.
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/ratio.h"
#include "include/korvale.h"
#include "include/korvale_c.h"
#include "tests/support/outlines.h"

namespace {

using korvale::bench::need;
using korvale::bench::time_of;
using Numbers = std::vector<double>;

/// Outlines one behind the other.
struct Outlines {
    Numbers points;
    std::vector<int64_t> starts = {0};

    size_t size() const { return starts.size() - 1; }
};

/// The outlines of 20 to 60 points of two faces, again and again.
Outlines glyphs(size_t count)
{
    std::vector<Numbers> found;
    for (const char* name : {"sans.txt", "serif-bold.txt"}) {
        std::ifstream file(std::string(KORVALE_EXAMPLE_DATA) + "/" + name);
        for (std::string line; std::getline(file, line);) {
            std::istringstream words(line);
            std::string word;
            int points = 0;
            if (!(words >> word >> points) || (word != "outer" && word != "hole"))
                continue;
            Numbers outline;
            for (int i = 0; i < points; ++i) {
                double x, y;
                need(bool(file >> x >> y));
                outline.insert(outline.end(), {0.01 * x, 0.01 * y, 0});
            }
            if (points >= 20 && points <= 60)
                found.push_back(outline);
        }
    }
    need(!found.empty());
    Outlines outlines;
    for (size_t k = 0; k < count; ++k) {
        const Numbers& outline = found[k % found.size()];
        outlines.points.insert(outlines.points.end(), outline.begin(), outline.end());
        outlines.starts.push_back(static_cast<int64_t>(outlines.points.size() / 3));
    }
    return outlines;
}

/// Moves all outlines in one record, and hands each border to `keep`.
template <class Keep>
void loop(BORDERStatus& status, Outlines& outlines, Keep keep)
{
    for (size_t k = 0; k < outlines.size(); ++k) {
        status.path->dvals = outlines.points.data() + 3 * outlines.starts[k];
        status.path->count = static_cast<int32_t>(outlines.starts[k + 1] - outlines.starts[k]);
        need(BORDER(&status) == 1);
        keep();
    }
}

/// By a hundredth of the size of the letters, outwards and inwards.
void offset_many(benchmark::State& state)
{
    Outlines outlines = glyphs(static_cast<size_t>(state.range(0)));
    const double distance = 0.1 * static_cast<double>(state.range(1));
    const korvale_points points = {outlines.points.data(), outlines.starts.back(), 0, 3, KORVALE_DOUBLE};
    const korvale_indices starts = {outlines.starts.data(), static_cast<int64_t>(outlines.starts.size()), 0,
                                    KORVALE_INT64};
    const korvale_numbers distances = {&distance, 1, 0, 1, KORVALE_DOUBLE};
    const auto many = [&] {
        korvale_borders* borders = nullptr;
        need(korvale_offset_many(&points, &starts, &distances, nullptr, &borders, nullptr) == KORVALE_OK);
        korvale_borders_free(borders);
    };
    for (auto _ : state)
        many();

    BORDERStatus status;
    BORDERInitialize(&status);
    status.distance = distance;
    status.path->dim = 3;
    status.path->alloc_dim = status.path->alloc_count = -1; // memory of the host
    double of_loop = 1e9, of_copying = 1e9, of_many = 1e9;
    for (int round = 0; round < 3; ++round) {
        of_loop = std::min(of_loop, time_of([&] { loop(status, outlines, [] {}); }));
        of_copying = std::min(of_copying, time_of([&] {
                                  Numbers kept;
                                  std::vector<uint8_t> dead;
                                  std::vector<int32_t> merged;
                                  kept.reserve(outlines.points.size());
                                  dead.reserve(outlines.points.size() / 3);
                                  merged.reserve(outlines.points.size() / 3);
                                  loop(status, outlines, [&] {
                                      const int32_t n = status.output->count;
                                      kept.insert(kept.end(), status.output->dvals, status.output->dvals + 3 * n);
                                      dead.insert(dead.end(), status.dead->bvals, status.dead->bvals + n);
                                      merged.insert(merged.end(), status.merge->ivals, status.merge->ivals + n);
                                  });
                              }));
        of_many = std::min(of_many, time_of(many));
    }
    status.path->dvals = nullptr;
    korvale::test::release_arrays(status);
    state.counters["loop/this"] = of_loop / of_many;
    state.counters["copying/this"] = of_copying / of_many;
    state.counters["ns/outline"] = 1e9 * of_many / static_cast<double>(outlines.size());
}

BENCHMARK(offset_many)->ArgsProduct({{1000, 100000}, {1, -1}})->Unit(benchmark::kMillisecond);

} // namespace
