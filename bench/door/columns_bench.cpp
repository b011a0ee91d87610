// An equation over a million rows beside the ways without blocks: "rows/this" is the time of `EqEvaluate` row by row
// divided by ours, "native/this" that of a plain loop over the same expression compiled. All give the same bits.
// Those of other packages are in `./dev bench python`.
#include <cmath>
#include <cstring>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/ratio.h"
#include "include/korvale.h"
#include "include/korvale_c.h"

namespace {

using korvale::bench::need;
using korvale::bench::time_of;
using Numbers = std::vector<double>;

constexpr double kA = 1.25;
double two = 2.0; ///< an exponent that the compiler does not know, as it would make a product of the power

/// An equation for y over a column x, and the loop that computes the same.
template <class Native>
void columns(benchmark::State& state, const char* text, Native native)
{
    korvale_equations* equations = nullptr;
    need(korvale_equations_new(&equations, nullptr) == KORVALE_OK);
    need(korvale_equations_declare(equations, "y x a", 0, nullptr) == KORVALE_OK);
    need(korvale_equations_set(equations, "a", kA, nullptr) == KORVALE_OK);
    need(korvale_equations_add(equations, text, nullptr, nullptr) == KORVALE_OK);
    auto* const record = static_cast<EquationSystem*>(korvale_equations_record(equations));
    char name[] = "x";
    const int variable = EqLookupVariable(record, name);

    const size_t rows = 1000000;
    Numbers x(rows), blocks(rows), by_rows(rows), compiled(rows);
    for (size_t i = 0; i < rows; ++i)
        x[i] = 0.001 + 9e-6 * static_cast<double>(i);
    const korvale_column column = {"x", {x.data(), static_cast<int64_t>(rows), 0, 1, KORVALE_DOUBLE}};
    const korvale_numbers_out output = {blocks.data(), static_cast<int64_t>(rows), 0, 1, KORVALE_DOUBLE};
    const auto ours = [&] {
        need(korvale_equations_evaluate_rows(equations, 0, &column, 1, &output, nullptr, nullptr, nullptr) ==
             KORVALE_OK);
    };
    const auto one_by_one = [&] {
        for (size_t i = 0; i < rows; ++i) {
            EqSetVariable(record, variable, x[i]);
            by_rows[i] = EqEvaluate(record, 0);
        }
    };
    const auto loop = [&] {
        for (size_t i = 0; i < rows; ++i)
            compiled[i] = native(x[i], kA);
        benchmark::DoNotOptimize(compiled.data());
    };
    benchmark::DoNotOptimize(two);
    for (auto _ : state)
        ours();
    need(korvale_equations_ran_in_blocks(equations) == 1);
    const double of_ours = time_of(ours);
    state.counters["ns/row"] = 1e9 * of_ours / static_cast<double>(rows);
    state.counters["rows/this"] = time_of(one_by_one) / of_ours;
    state.counters["native/this"] = time_of(loop) / of_ours;
    need(std::memcmp(blocks.data(), by_rows.data(), rows * sizeof(double)) == 0);
    need(std::memcmp(blocks.data(), compiled.data(), rows * sizeof(double)) == 0);
    korvale_equations_free(equations);
}

BENCHMARK_CAPTURE(columns, arith, "y = x * 2 + a * (x - 1) / 3 - x * x", [](double x, double a) {
    return x * 2 + a * (x - 1) / 3 - x * x;
})->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(columns, power, "y = a * x ^ 2", [](double x, double a) {
    return a * std::pow(x, two);
})->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(columns, square, "y = a * x * x", [](double x, double a) {
    return a * x * x;
})->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(columns, functions, "y = SIN(x * 2) * COS(a) + SQRT(x)", [](double x, double a) {
    return std::sin(x * 2) * std::cos(a) + std::sqrt(x);
})->Unit(benchmark::kMillisecond);

} // namespace
