#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>

#include <benchmark/benchmark.h>
#ifdef KORVALE_HAS_MUPARSER
#include <muParser.h>
#endif

#include "bench/equation/plain.h"
#include "equation/equation.h"

// Each benchmark runs the library and its peers in turns, so that a drifting clock meets all alike, and keeps the shortest
// turn of each. `ns` is the library's; the other counters are the peers' times as multiples of it, more than 1 where the
// library is quicker.
namespace {

using Clock = std::chrono::steady_clock;

/// The shortest of all turns.
struct Shortest {
    double seconds = std::numeric_limits<double>::infinity();

    template <class Work>
    void turn(Work work)
    {
        const auto start = Clock::now();
        work();
        seconds = std::min(seconds, std::chrono::duration<double>(Clock::now() - start).count());
    }
    bool was_run() const { return std::isfinite(seconds); }
};

void report(benchmark::State& state, const Shortest& library, int runs_a_turn)
{
    state.counters["ns"] = library.seconds / runs_a_turn * 1e9;
}

void report_peer(benchmark::State& state, const Shortest& library, const char* name, const Shortest& peer)
{
    if (peer.was_run())
        state.counters[name] = peer.seconds / library.seconds;
}

struct Variables {
    double a = 1.25, b = -0.5, c = 2.0, x = 0.3;
};

[[gnu::noinline]] double native_small(const Variables& v)
{
    return v.a + v.b * 2;
}

[[gnu::noinline]] double native_medium(const Variables& v)
{
    return std::sin(v.x * 2) * std::cos(v.a) + std::sqrt(v.c);
}

[[gnu::noinline]] double native_arithmetic(const Variables& v)
{
    const double a = v.a, b = v.b, c = v.c, x = v.x;
    return ((a + b) * (a - b) + (c + x) * (c - x)) * ((a * b + 1) - (c * x + 2)) +
           (a + 1) * (b + 2) * (c + 3) * (x + 4) + (a * 0.5 + b * 0.25) * (c * 0.125 + x * 2) - (a - 3) * (b - 4) -
           c * c * x;
}

const char* const kArithmetic =
    "((a + b) * (a - b) + (c + x) * (c - x)) * ((a * b + 1) - (c * x + 2)) + (a + 1) * (b + 2) * (c + 3) * (x + 4)"
    " + (a * 0.5 + b * 0.25) * (c * 0.125 + x * 2) - (a - 3) * (b - 4) - c * c * x";

struct Expression {
    const char* name;
    std::string text;
    double (*native)(const Variables&);
};

const Expression kExpressions[] = {
    {"small", "a + b * 2", native_small},
    {"medium", "SIN(x * 2) * COS(a) + SQRT(c)", native_medium},
    {"arithmetic", kArithmetic, native_arithmetic},
    {"drum", "SIN(a * 6 - x) * EXP(0 - a)",
     [](const Variables& v) { return std::sin(v.a * 6 - v.x) * std::exp(0 - v.a); }},
};

/// A system with the variables of `Variables` and y.
EquationSystem* new_system()
{
    auto* const es = new EquationSystem;
    if (EqSystemInitialize(es) < 0)
        std::abort();
    std::string names = "a b c x y";
    EqParseVariables(es, names.data(), 0);
    const Variables v;
    const double values[] = {v.a, v.b, v.c, v.x};
    for (int i = 0; i < 4; ++i)
        EqSetVariable(es, 2 + i, values[i]);
    return es;
}

void release(EquationSystem* es)
{
    EqSystemDispose(es);
    delete es;
}

#ifdef KORVALE_HAS_MUPARSER
void define(mu::Parser& parser, Variables& v, const std::string& text)
{
    parser.DefineVar("a", &v.a);
    parser.DefineVar("b", &v.b);
    parser.DefineVar("c", &v.c);
    parser.DefineVar("x", &v.x);
    parser.DefineFun("SIN", static_cast<double (*)(double)>(std::sin));
    parser.DefineFun("COS", static_cast<double (*)(double)>(std::cos));
    parser.DefineFun("SQRT", static_cast<double (*)(double)>(std::sqrt));
    parser.DefineFun("EXP", static_cast<double (*)(double)>(std::exp));
    parser.SetExpr(text);
    parser.Eval();
}
#endif

void evaluate(benchmark::State& state, const Expression& expression)
{
    EquationSystem* const es = new_system();
    std::string text = "y = " + expression.text;
    if (EqParseEquation(es, text.data()) < 0)
        std::abort();
    Variables v;
    constexpr int kRuns = 200;
    Shortest library, plain, native, peer;
#ifdef KORVALE_HAS_MUPARSER
    mu::Parser parser;
    define(parser, v, expression.text);
#endif
    if (EqEvaluate(es, 0) != korvale::bench::evaluate_plainly(es, 0) || EqEvaluate(es, 0) != expression.native(v))
        std::abort();
    for (auto _ : state) {
        library.turn([&] {
            for (int i = 0; i < kRuns; ++i)
                benchmark::DoNotOptimize(EqEvaluate(es, 0));
        });
        plain.turn([&] {
            for (int i = 0; i < kRuns; ++i)
                benchmark::DoNotOptimize(korvale::bench::evaluate_plainly(es, 0));
        });
        native.turn([&] {
            for (int i = 0; i < kRuns; ++i)
                benchmark::DoNotOptimize(expression.native(v));
        });
#ifdef KORVALE_HAS_MUPARSER
        peer.turn([&] {
            for (int i = 0; i < kRuns; ++i)
                benchmark::DoNotOptimize(parser.Eval());
        });
#endif
    }
    report(state, library, kRuns);
    report_peer(state, library, "plain", plain);
    report_peer(state, library, "native", native);
    report_peer(state, library, "muParser", peer);
    release(es);
}

BENCHMARK_CAPTURE(evaluate, small, kExpressions[0])->Iterations(1000);
BENCHMARK_CAPTURE(evaluate, medium, kExpressions[1])->Iterations(1000);
BENCHMARK_CAPTURE(evaluate, arithmetic_31, kExpressions[2])->Iterations(1000);
BENCHMARK_CAPTURE(evaluate, drum, kExpressions[3])->Iterations(1000);

void parse(benchmark::State& state, const Expression& expression)
{
    const std::string text = "y = " + expression.text;
    Shortest library, peer;
    for (auto _ : state) {
        EquationSystem* const es = new_system();
        std::string copy = text;
        library.turn([&] { benchmark::DoNotOptimize(EqParseEquation(es, copy.data())); });
        release(es);
#ifdef KORVALE_HAS_MUPARSER
        mu::Parser parser;
        Variables v;
        peer.turn([&] { define(parser, v, expression.text); });
#endif
    }
    report(state, library, 1);
    report_peer(state, library, "muParser", peer);
}

BENCHMARK_CAPTURE(parse, medium, kExpressions[1])->Iterations(1000);
BENCHMARK_CAPTURE(parse, arithmetic_31, kExpressions[2])->Iterations(1000);

/// n names of letters, all different.
std::string names(int n)
{
    std::string text;
    for (int i = 0; i < n; ++i) {
        text += "name";
        for (int rest = i; rest > 0; rest /= 26)
            text += static_cast<char>('a' + rest % 26);
        text += "Z ";
    }
    return text;
}

void declare_names(benchmark::State& state)
{
    std::string text = names(static_cast<int>(state.range(0)));
    Shortest library, plain;
    for (auto _ : state) {
        EquationSystem* es = new_system();
        library.turn([&] { benchmark::DoNotOptimize(EqParseVariables(es, text.data(), 0)); });
        release(es);
        es = new_system();
        plain.turn([&] { benchmark::DoNotOptimize(korvale::bench::declare_plainly(es, text.c_str(), 0)); });
        release(es);
    }
    report(state, library, 1);
    report_peer(state, library, "plain", plain);
}

BENCHMARK(declare_names)->Arg(4)->Arg(64)->Arg(1024)->Arg(16000)->Iterations(3);

/// A pass over 8 equations in a system of many variables.
void evaluate_all(benchmark::State& state)
{
    EquationSystem* const es = new_system();
    std::string many = names(static_cast<int>(state.range(0)));
    EqParseVariables(es, many.data(), static_cast<int>(state.range(1)));
    for (int i = 0; i < 8; ++i) {
        std::string text = (i % 2 == 0 ? "nameZ" : "y") + (" = " + kExpressions[i % 2].text);
        if (EqParseEquation(es, text.data()) < 0)
            std::abort();
    }
    constexpr int kRuns = 4;
    Shortest library, plain;
    for (auto _ : state) {
        library.turn([&] {
            for (int i = 0; i < kRuns; ++i)
                benchmark::DoNotOptimize(EqSystemEvaluate(es));
        });
        plain.turn([&] {
            for (int i = 0; i < kRuns; ++i)
                benchmark::DoNotOptimize(korvale::bench::evaluate_all_plainly(es));
        });
    }
    report(state, library, kRuns);
    report_peer(state, library, "plain", plain);
    release(es);
}

BENCHMARK(evaluate_all)->ArgsProduct({{8, 1000, 200000}, {0, 1}})->Iterations(10);

} // namespace
