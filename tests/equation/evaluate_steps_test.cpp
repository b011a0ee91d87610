// Programs that no text gives: items of all kinds in any order, operands that lead outside, built-in functions in other
// slots, functions that change what the evaluation reads. Each is run by the library and by the documented steps.
#include <algorithm>
#include <cmath>
#include <string>

#include <gtest/gtest.h>

#include "platform/layer.h"
#include "tests/equation/system.h"
#include "tests/reference/equation_steps.h"
#include "tests/support/bits.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

/// The system that the functions below change, and how many variables it has.
EquationSystem* meddled_with;
int all_variables;

double set_third(double x)
{
    EqSetVariable(meddled_with, 3, x);
    return x - 1;
}

/// Puts other functions into the registry; an even number of calls restores it.
double swap_functions(double a, double b)
{
    std::swap(meddled_with->funcs->pvals[0], meddled_with->funcs->pvals[1]);
    std::swap(meddled_with->funcs->pvals[5], meddled_with->funcs->pvals[9]);
    return a * b;
}

/// Leaves the variables in their place or hides all but four.
double hide_variables(double x)
{
    meddled_with->var_vals->count = meddled_with->var_vals->count == 4 ? all_variables : 4;
    return x;
}

/// Leaves equation 0 another number of items, from 1 to 100.
double recount(double x)
{
    int32_t& count = static_cast<DATAstruct*>(meddled_with->equations->pvals[0])->count;
    count = 1 + (37 * count + 11) % 100;
    return x;
}

double seven()
{
    EqSetVariable(meddled_with, 2, 7);
    return 7;
}

/// `may_meddle` lets the functions above take part.
void fill_program(System& es, int equation, Random& random, bool may_meddle)
{
    const int kinds[] = {EQ_ITEM_CONSTANT, EQ_ITEM_VARIABLE, EQ_ITEM_VARIABLE, EQ_ITEM_SAMPLE, EQ_ITEM_UNARY,
                         EQ_ITEM_BINARY,   EQ_ITEM_BINARY,   EQ_ITEM_BINARY,   EQ_ITEM_TARGET, 6};
    const bool is_wild = random.one_in(3), is_deep = random.one_in(8);
    const int count = random.between(1, is_deep || random.one_in(4) ? 100 : 20);
    int held = 0;
    for (int p = 1; p < 100; ++p) {
        int kind = kinds[random.below(is_wild ? 10 : 8)];
        if (!is_wild && kind == EQ_ITEM_BINARY && held < 2)
            kind = EQ_ITEM_VARIABLE;
        if (is_deep && held < 50) // up to the values that can be held, then about there
            kind = kinds[random.below(random.one_in(30) ? 5 : 3)];
        if (random.one_in(300))
            kind = random.one_in(2) ? EQ_ITEM_END : static_cast<int>(random.bits());
        held += kind == EQ_ITEM_BINARY ? -1 : kind == EQ_ITEM_UNARY ? 0 : 1;
        int operand = kind == EQ_ITEM_BINARY     ? (may_meddle && random.one_in(8) ? 19 : random.between(0, 4))
                      : kind == EQ_ITEM_UNARY    ? random.between(5, random.one_in(4) ? 14 : 9)
                      : kind == EQ_ITEM_VARIABLE ? random.between(0, 5)
                                                 : random.between(15, 16);
        if (may_meddle && kind == EQ_ITEM_UNARY && random.one_in(8))
            operand = random.one_in(3) ? 18 : random.one_in(2) ? 20 : 22;
        if (may_meddle && kind == EQ_ITEM_SAMPLE && random.one_in(8))
            operand = 21;
        if (kind == EQ_ITEM_VARIABLE && random.one_in(30))
            operand = random.one_in(2) ? -1 : static_cast<int>(random.bits() >> 33) + 6;
        es.kinds(equation)->ivals[p] = kind;
        es.operands(equation)->ivals[p] = operand;
        es.constants(equation)->dvals[p] = random.awkward();
    }
    es.kinds(equation)->ivals[0] = random.one_in(20) ? EQ_ITEM_CONSTANT : EQ_ITEM_TARGET;
    es.operands(equation)->ivals[0] = random.one_in(20) ? random.between(-2, 9) : random.between(2, 5);
    es.kinds(equation)->count = count;
}

/// A system of six variables or, at times, so many that a pass copies them only if it must, the functions SETTHIRD
/// (18), SWAP (19), HIDE (20), SEVEN (21) and RECOUNT (22), and `programs` equations.
struct Composed : System {
    Composed(Random& random, int programs)
    {
        declare("a b", random.one_in(2));
        declare("c d", random.one_in(2));
        const bool has_many = random.one_in(8), may_meddle = !has_many || random.one_in(4);
        for (char first = 'e'; has_many && first <= 'f'; ++first)
            for (char second = 'a'; second <= 'z'; ++second)
                declare({first, second});
        for (char first = 'A'; has_many && first <= 'Z'; ++first)
            declare({first, '_'});
        all_variables = get()->var_vals->count;
        add("SETTHIRD", set_third);
        add("SWAP", swap_functions);
        add("HIDE", hide_variables);
        add("SEVEN", seven);
        add("RECOUNT", recount);
        for (int i = 0; i < programs; ++i) {
            if (parse("a = 0") != 2)
                std::abort();
            fill_program(*this, i, random, may_meddle);
        }
        for (int v = 0; v < 6; ++v)
            EqSetVariable(get(), v, random.awkward());
        if (random.one_in(6))
            std::swap(get()->funcs->pvals[random.below(5)], get()->funcs->pvals[random.below(5)]);
        if (random.one_in(6))
            std::swap(get()->funcs->pvals[5 + random.below(10)], get()->funcs->pvals[5 + random.below(10)]);
        if (random.one_in(20))
            get()->funcs->pvals[random.below(23)] = nullptr;
    }
};

/// Runs `work` on a fresh system made from the seed; what it returns, what is left behind and how far the random
/// generator came, in words.
template <class Work>
std::string outcome(uint64_t seed, int programs, Work work)
{
    Random random(seed);
    Composed es(random, programs);
    meddled_with = es;
    EqSeed(static_cast<int>(seed));
    const double result = work(es);
    es->var_vals->count = all_variables;
    return (std::isnan(result) ? "nan" : describe(result)) + " " + std::to_string(Mwrand()) + "\n" +
           state_of(*es.get());
}

TEST(EqEvaluateSteps, AnyProgramGivesWhatTheStepsGive)
{
    for (int round = 0; round < rounds(10000); ++round) {
        const auto seed = static_cast<uint64_t>(round);
        const std::string expected = outcome(seed, 1, [](EquationSystem* es) { return reference::evaluate(es, 0); });
        ASSERT_EQ(outcome(seed, 1, [](EquationSystem* es) { return EqEvaluate(es, 0); }), expected) << seed;
    }
}

TEST(EqSystemEvaluateSteps, AnyPassesGiveWhatTheStepsGive)
{
    for (int round = 0; round < rounds(2000); ++round) {
        const auto seed = static_cast<uint64_t>(round);
        const auto twice = [](auto pass) { return [=](EquationSystem* es) { return 10 * pass(es) + pass(es); }; };
        const std::string expected = outcome(seed, 4, twice(reference::evaluate_all));
        ASSERT_EQ(outcome(seed, 4, twice(EqSystemEvaluate)), expected) << seed;
    }
}

} // namespace
} // namespace korvale::test
