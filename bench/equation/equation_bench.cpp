// Equations beside the documented steps, the same expression compiled, and a general parser. Evaluations with constants
// that can be folded are measured as they are parsed and simplified.
#include <cmath>
#include <cstdlib>
#include <string>

#include <benchmark/benchmark.h>
#ifdef KORVALE_HAS_MUPARSER
#include <muParser.h>
#endif

#include "bench/ratio.h"
#include "korvale.h"
#include "tests/reference/equation_steps.h"

namespace {

using korvale::bench::Race;

struct Variables {
    double a = 1.25, b = -0.5, c = 2.0, x = 0.3;
};

struct Expression {
    std::string text;
    double (*native)(const Variables&);
};

const Expression kShort = {"a + b * 2", [](const Variables& v) { return v.a + v.b * 2; }};

const Expression kMedium = {"SIN(x * 2) * COS(a) + SQRT(c)",
                            [](const Variables& v) { return std::sin(v.x * 2) * std::cos(v.a) + std::sqrt(v.c); }};

/// 31 operators.
const Expression kArith = {
    "((a + b) * (a - b) + (c + x) * (c - x)) * ((a * b + 1) - (c * x + 2)) + (a + 1) * (b + 2) * (c + 3) * (x + 4)"
    " + (a * 0.5 + b * 0.25) * (c * 0.125 + x * 2) - (a - 3) * (b - 4) - c * c * x",
    [](const Variables& v) {
        const double a = v.a, b = v.b, c = v.c, x = v.x;
        return ((a + b) * (a - b) + (c + x) * (c - x)) * ((a * b + 1) - (c * x + 2)) +
               (a + 1) * (b + 2) * (c + 3) * (x + 4) + (a * 0.5 + b * 0.25) * (c * 0.125 + x * 2) - (a - 3) * (b - 4) -
               c * c * x;
    }};

/// 43 operators and functions.
const Expression kLong = {
    "SIN(a * 2 + x) * COS(b - 1) + SQRT(c * c + 1) * (a + b) - EXP(0 - x * x) * LOG(c + 3) + ATAN(a * b) * SIN(x) * "
    "COS(x)"
    " - TAN(x * 0.5) / (c + 4) + (a + 1) * (b + 2) * (c + 3) - SIN(c) + ATAN(x / (c + 5)) * SIN(a - b) + 2.5",
    [](const Variables& v) {
        const double a = v.a, b = v.b, c = v.c, x = v.x;
        return std::sin(a * 2 + x) * std::cos(b - 1) + std::sqrt(c * c + 1) * (a + b) -
               std::exp(0 - x * x) * std::log(c + 3) + std::atan(a * b) * std::sin(x) * std::cos(x) -
               std::tan(x * 0.5) / (c + 4) + (a + 1) * (b + 2) * (c + 3) - std::sin(c) +
               std::atan(x / (c + 5)) * std::sin(a - b) + 2.5;
    }};

/// Most of it folds; its native form is folded by the compiler.
const Expression kFoldable = {
    "a * (2 + 3 * 4) + b * (1 - 8 / 16) * (3 + 4) - (5 - 2) * (7 + 1) * x + (9 - 1) * (1 + 1)", [](const Variables& v) {
        return v.a * (2 + 3.0 * 4) + v.b * (1 - 8.0 / 16) * (3 + 4) - (5 - 2) * (7 + 1) * v.x + (9 - 1) * (1 + 1);
    }};

/// A system with the variables of `Variables` and y.
class System {
public:
    System()
    {
        if (EqSystemInitialize(&record_) < 0)
            std::abort();
        declare("a b c x y", 0);
        const Variables v;
        const double values[] = {v.a, v.b, v.c, v.x};
        for (int i = 0; i < 4; ++i)
            EqSetVariable(&record_, 2 + i, values[i]);
    }
    ~System() { EqSystemDispose(&record_); }
    System(const System&) = delete;
    System& operator=(const System&) = delete;

    operator EquationSystem*() { return &record_; }

    void declare(std::string names, int flag) { EqParseVariables(&record_, names.data(), flag); }
    void parse(std::string text)
    {
        if (EqParseEquation(&record_, text.data()) < 1)
            std::abort();
    }

private:
    EquationSystem record_;
};

#ifdef KORVALE_HAS_MUPARSER
/// The parser with the variables and functions of the expressions.
mu::Parser new_parser(Variables& v)
{
    mu::Parser parser;
    parser.DefineVar("a", &v.a);
    parser.DefineVar("b", &v.b);
    parser.DefineVar("c", &v.c);
    parser.DefineVar("x", &v.x);
    using Function = double (*)(double);
    const std::pair<const char*, Function> functions[] = {{"SIN", std::sin},   {"COS", std::cos}, {"TAN", std::tan},
                                                          {"SQRT", std::sqrt}, {"EXP", std::exp}, {"LOG", std::log},
                                                          {"ATAN", std::atan}};
    for (const auto& [name, function] : functions)
        parser.DefineFun(name, function);
    return parser;
}
#endif

void evaluate(benchmark::State& state, const Expression& expression, bool simplified)
{
    System es;
    es.parse("y = " + expression.text);
    if (simplified)
        EqSimplify(es, 0);
    Variables v;
    const double value = EqEvaluate(es, 0);
    if (value != korvale::reference::evaluate(es, 0) || value != expression.native(v))
        std::abort();
    Race race(state, [&] { benchmark::DoNotOptimize(EqEvaluate(es, 0)); });
    race.against("steps", [&] { benchmark::DoNotOptimize(korvale::reference::evaluate(es, 0)); });
    race.against("native", [&] { benchmark::DoNotOptimize(expression.native(v)); });
#ifdef KORVALE_HAS_MUPARSER
    mu::Parser parser = new_parser(v);
    parser.SetExpr(expression.text);
    race.against("muParser", [&] { benchmark::DoNotOptimize(parser.Eval()); });
#endif
}

BENCHMARK_CAPTURE(evaluate, short, kShort, false);
BENCHMARK_CAPTURE(evaluate, medium, kMedium, false);
BENCHMARK_CAPTURE(evaluate, arith, kArith, false);
BENCHMARK_CAPTURE(evaluate, long, kLong, false);
BENCHMARK_CAPTURE(evaluate, foldable, kFoldable, false);
BENCHMARK_CAPTURE(evaluate, simplified, kFoldable, true);

/// Fifteen texts, for which a system has room from the start, and the making of that system.
void parse(benchmark::State& state, const Expression& expression)
{
    constexpr int kTexts = 15;
    std::string text = "y = " + expression.text;
    Race race(state, [&] {
        System es;
        for (int i = 0; i < kTexts; ++i)
            benchmark::DoNotOptimize(EqParseEquation(es, text.data()));
    });
#ifdef KORVALE_HAS_MUPARSER
    Variables v;
    race.against("muParser", [&] {
        mu::Parser parser = new_parser(v);
        for (int i = 0; i < kTexts; ++i) {
            parser.SetExpr(expression.text + std::string(static_cast<size_t>(i), ' ')); // a text it has not seen
            benchmark::DoNotOptimize(parser.Eval());                                    // is parsed at the first use
        }
    });
#endif
}

BENCHMARK_CAPTURE(parse, short, kShort);
BENCHMARK_CAPTURE(parse, medium, kMedium);
BENCHMARK_CAPTURE(parse, arith, kArith);
BENCHMARK_CAPTURE(parse, long, kLong);

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

void declare(benchmark::State& state)
{
    std::string text = names(static_cast<int>(state.range(0)));
    Race(state, [&] {
        System es;
        benchmark::DoNotOptimize(EqParseVariables(es, text.data(), 0));
    }).against("steps", [&] {
        System es;
        benchmark::DoNotOptimize(korvale::reference::declare(es, text.c_str(), 0));
    });
}

BENCHMARK(declare)->Arg(4)->Arg(64)->Arg(1024);

/// A pass over 8 equations in a system of many variables, reserved or not.
void evaluate_all(benchmark::State& state)
{
    System es;
    es.declare(names(static_cast<int>(state.range(0))), static_cast<int>(state.range(1)));
    for (int i = 0; i < 8; ++i)
        es.parse((i % 2 == 0 ? "nameZ = " : "y = ") + (i % 2 == 0 ? kShort : kMedium).text);
    Race(state, [&] { benchmark::DoNotOptimize(EqSystemEvaluate(es)); }).against("steps", [&] {
        benchmark::DoNotOptimize(korvale::reference::evaluate_all(es));
    });
}

BENCHMARK(evaluate_all)->ArgsProduct({{8, 1000, 200000}, {0, 1}});

} // namespace
