// Parsing and evaluating equations of several lengths. The size is the number of evaluations, or of texts parsed, a
// call.
#include <cmath>
#include <cstdlib>
#include <memory>

#include "bench/job.h"
#include "include/korvale.h"

#ifdef KORVALE_HAS_STEPS
#include "tests/reference/equation_steps.h"
#endif
#ifdef KORVALE_HAS_MUPARSER
#include <muParser.h>
#endif

namespace korvale::bench {
namespace {

const char* const kShort = "a + b * 2";
const char* const kMedium = "SIN(x * 2) * COS(a) + SQRT(c)";
const char* const kArith =
    "((a + b) * (a - b) + (c + x) * (c - x)) * ((a * b + 1) - (c * x + 2)) + (a + 1) * (b + 2) * (c + 3) * (x + 4)"
    " + (a * 0.5 + b * 0.25) * (c * 0.125 + x * 2) - (a - 3) * (b - 4) - c * c * x";
const char* const kLong = "SIN(a) * COS(b) + TAN(c * 0.5) - EXP(0 - x) * LOG(c + 4) + SQRT(a * a + b * b) * SIN(x * 3)"
                          " - COS(a + b) / (c * c + 1) + EXP(b) * 0.25 + SIN(b * x) * SIN(c) - ATAN(x) * 2";
const char* const kFoldable = "a * (2 * 3 + 4 * 5) + b * (7 - 2 * 2) + (1 + 2) * (3 + 4) * c - 8 / 4 / 2";

struct Variables {
    double a = 1.25, b = -0.5, c = 2.0, x = 0.3;
};

/// The texts as a compiler reads them.
double native_short(const Variables& v)
{
    return v.a + v.b * 2;
}
double native_medium(const Variables& v)
{
    return std::sin(v.x * 2) * std::cos(v.a) + std::sqrt(v.c);
}
double native_arith(const Variables& v)
{
    const auto [a, b, c, x] = v;
    return ((a + b) * (a - b) + (c + x) * (c - x)) * ((a * b + 1) - (c * x + 2)) +
           (a + 1) * (b + 2) * (c + 3) * (x + 4) + (a * 0.5 + b * 0.25) * (c * 0.125 + x * 2) - (a - 3) * (b - 4) -
           c * c * x;
}
double native_long(const Variables& v)
{
    const auto [a, b, c, x] = v;
    return std::sin(a) * std::cos(b) + std::tan(c * 0.5) - std::exp(0 - x) * std::log(c + 4) +
           std::sqrt(a * a + b * b) * std::sin(x * 3) - std::cos(a + b) / (c * c + 1) + std::exp(b) * 0.25 +
           std::sin(b * x) * std::sin(c) - std::atan(x) * 2;
}

template <double (*compute)(const Variables&)>
Work native(int times)
{
    return [v = Variables(), times] {
        for (int i = 0; i < times; ++i) {
            keep(v);
            keep(compute(v));
        }
    };
}

struct System {
    System()
    {
        if (EqSystemInitialize(&es) < 0)
            std::abort();
        std::string names = "a b c x y";
        EqParseVariables(&es, names.data(), 0);
        const Variables v;
        const double values[] = {v.a, v.b, v.c, v.x};
        for (int i = 0; i < 4; ++i)
            EqSetVariable(&es, 2 + i, values[i]);
    }

    void add(const char* text)
    {
        std::string equation = std::string("y = ") + text;
        if (EqParseEquation(&es, equation.data()) < 0)
            std::abort();
    }

    EquationSystem es;
};

template <const char* const& text, bool simplified = false>
Work evaluate(int times)
{
    auto system = std::make_shared<System>();
    system->add(text);
    if (simplified)
        EqSimplify(&system->es, 0);
    return [system, times] {
        for (int i = 0; i < times; ++i)
            keep(EqEvaluate(&system->es, 0));
    };
}

#ifdef KORVALE_HAS_STEPS
template <const char* const& text>
Work evaluate_steps(int times)
{
    auto system = std::make_shared<System>();
    system->add(text);
    return [system, times] {
        for (int i = 0; i < times; ++i)
            keep(reference::evaluate(&system->es, 0));
    };
}
#endif

/// Parses `times` texts into a system of their own.
template <const char* const& text>
Work parse(int times)
{
    return [equation = std::string("y = ") + text, times]() mutable {
        System system;
        for (int i = 0; i < times; ++i)
            keep(EqParseEquation(&system.es, equation.data()));
        EqSystemDispose(&system.es);
    };
}

/// A pass over `count` equations.
Work pass(int count)
{
    auto system = std::make_shared<System>();
    for (int i = 0; i < count; ++i)
        system->add(kShort);
    return [system] { keep(EqSystemEvaluate(&system->es)); };
}

/// `count` names of five letters.
std::string names_of(int count)
{
    std::string names;
    for (int i = 0; i < count; ++i) {
        for (int rest = i, k = 0; k < 5; ++k, rest /= 26)
            names += static_cast<char>('a' + rest % 26);
        names += ' ';
    }
    return names;
}

Work declare(int count)
{
    return [names = names_of(count)]() mutable {
        EquationSystem es;
        EqSystemInitialize(&es);
        EqParseVariables(&es, names.data(), 0);
        EqSystemDispose(&es);
    };
}

/// Eight equations in a system of `count` variables more, whose values a pass must keep where it is asked to.
std::shared_ptr<System> crowded(int count)
{
    auto system = std::make_shared<System>();
    EqParseVariables(&system->es, names_of(count).data(), 1);
    for (int i = 0; i < 4; ++i) {
        system->add(kShort);
        system->add(kMedium);
    }
    return system;
}

Work pass_among_variables(int count)
{
    return [system = crowded(count)] { keep(EqSystemEvaluate(&system->es)); };
}

#ifdef KORVALE_HAS_STEPS
Work declare_steps(int count)
{
    return [names = names_of(count)] {
        EquationSystem es;
        EqSystemInitialize(&es);
        reference::declare(&es, names.c_str(), 0);
        EqSystemDispose(&es);
    };
}

Work pass_among_variables_steps(int count)
{
    return [system = crowded(count)] { keep(reference::evaluate_all(&system->es)); };
}
#endif

#ifdef KORVALE_HAS_MUPARSER
struct Peer {
    explicit Peer(const char* text)
    {
        parser.DefineVar("a", &v.a);
        parser.DefineVar("b", &v.b);
        parser.DefineVar("c", &v.c);
        parser.DefineVar("x", &v.x);
        using Function = double (*)(double);
        parser.DefineFun("SIN", static_cast<Function>(std::sin));
        parser.DefineFun("COS", static_cast<Function>(std::cos));
        parser.DefineFun("TAN", static_cast<Function>(std::tan));
        parser.DefineFun("EXP", static_cast<Function>(std::exp));
        parser.DefineFun("LOG", static_cast<Function>(std::log));
        parser.DefineFun("ATAN", static_cast<Function>(std::atan));
        parser.DefineFun("SQRT", static_cast<Function>(std::sqrt));
        parser.SetExpr(text);
        parser.Eval();
    }

    Variables v;
    mu::Parser parser;
};

template <const char* const& text>
Work muparser(int times)
{
    return [peer = std::make_shared<Peer>(text), times] {
        for (int i = 0; i < times; ++i)
            keep(peer->parser.Eval());
    };
}

template <const char* const& text>
Work muparser_parse(int times)
{
    return [peer = std::make_shared<Peer>(text), times] {
        for (int i = 0; i < times; ++i) {
            peer->parser.SetExpr(text);
            keep(peer->parser.Eval());
        }
    };
}
#endif

} // namespace

std::vector<Job> equation_jobs()
{
    const std::vector<int> once = {1000};
    return {
        {"equation.short", once, evaluate<kShort>, 1.0, 1000},
        {"equation.medium", once, evaluate<kMedium>, 1.0, 1000},
        {"equation.arith", once, evaluate<kArith>, 1.0, 1000},
        {"equation.long", once, evaluate<kLong>, 1.0, 1000},
        {"equation.foldable", once, evaluate<kFoldable>, 1.0, 1000},
        {"equation.simplified", once, evaluate<kFoldable, true>, 1.0, 1000},
        // The first blocks come from what the C library's heap has at hand, later ones take it longer.
        {"equation.parse_short", once, parse<kShort>, 1.15, 100},
        {"equation.parse_medium", once, parse<kMedium>, 1.15, 100},
        {"equation.parse_arith", once, parse<kArith>, 1.1, 100},
        {"equation.parse_long", once, parse<kLong>, 1.1, 100},
        {"equation.pass", {100}, pass, 1.05, 100},
        {"equation.pass_among_variables", {8, 1000, 200000}, pass_among_variables},
        {"equation.declare", {64, 1000}, declare, 1.1, 1000},
        {"equation.short@native", once, native<native_short>},
        {"equation.medium@native", once, native<native_medium>},
        {"equation.arith@native", once, native<native_arith>},
        {"equation.long@native", once, native<native_long>},
#ifdef KORVALE_HAS_STEPS
        {"equation.short@steps", once, evaluate_steps<kShort>},
        {"equation.medium@steps", once, evaluate_steps<kMedium>},
        {"equation.arith@steps", once, evaluate_steps<kArith>},
        {"equation.long@steps", once, evaluate_steps<kLong>},
        {"equation.pass_among_variables@steps", {8, 1000, 200000}, pass_among_variables_steps},
        {"equation.declare@steps", {64, 1000}, declare_steps},
#endif
#ifdef KORVALE_HAS_MUPARSER
        {"equation.short@muParser", once, muparser<kShort>},
        {"equation.medium@muParser", once, muparser<kMedium>},
        {"equation.arith@muParser", once, muparser<kArith>},
        {"equation.long@muParser", once, muparser<kLong>},
        {"equation.foldable@muParser", once, muparser<kFoldable>},
        {"equation.parse_short@muParser", once, muparser_parse<kShort>},
        {"equation.parse_medium@muParser", once, muparser_parse<kMedium>},
        {"equation.parse_arith@muParser", once, muparser_parse<kArith>},
        {"equation.parse_long@muParser", once, muparser_parse<kLong>},
#endif
    };
}

} // namespace korvale::bench
