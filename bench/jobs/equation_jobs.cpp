// Parsing and evaluating equations of several lengths. The size is the number of evaluations, or of texts parsed, a
// call.
#include <cmath>
#include <cstdlib>
#include <memory>

#include "bench/jobs/job.h"
#include "include/korvale.h"

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

struct System {
    System()
    {
        if (EqSystemInitialize(&es) < 0)
            std::abort();
        std::string names = "a b c x y";
        EqParseVariables(&es, names.data(), 0);
        const double values[] = {1.25, -0.5, 2.0, 0.3};
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

/// Declares `count` variables of five letters.
Work declare(int count)
{
    std::string names;
    for (int i = 0; i < count; ++i) {
        for (int rest = i, k = 0; k < 5; ++k, rest /= 26)
            names += static_cast<char>('a' + rest % 26);
        names += ' ';
    }
    return [names]() mutable {
        EquationSystem es;
        EqSystemInitialize(&es);
        EqParseVariables(&es, names.data(), 0);
        EqSystemDispose(&es);
    };
}

#ifdef KORVALE_HAS_MUPARSER
struct Peer {
    explicit Peer(const char* text)
    {
        parser.DefineVar("a", &a);
        parser.DefineVar("b", &b);
        parser.DefineVar("c", &c);
        parser.DefineVar("x", &x);
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

    double a = 1.25, b = -0.5, c = 2.0, x = 0.3;
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
        {"equation.declare", {1000}, declare, 1.1, 1000},
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
