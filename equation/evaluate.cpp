// A pass over all equations. As documented, its results gather in a copy of all variables, made before the pass and
// copied back after it, so that nothing else which happens to a variable meanwhile lasts. Only a function of the host
// can change variables otherwise, or parse equations, which the pass then reaches as well. Where the equations call
// built-in functions alone, the results of ordinary variables are in place already, and only those of reserved
// variables are put aside.
#include "equation/evaluate.h"

#include <algorithm>

#include "equation/internal/evaluation.h"
#include "equation/internal/functions.h"
#include "equation/internal/program.h"
#include "equation/internal/variables.h"
#include "platform/internal/scratch.h"

namespace korvale::equation {
namespace {

constexpr int32_t kNearby = 64; ///< values a pass puts aside before the heap is asked

bool holds_built_ins_only(const EquationSystem& es)
{
    const int32_t n = usable_count(es.funcs, DATA_TYPE_POINTER);
    for (int32_t f = 0; f < n; ++f)
        if (!is_built_in(f, es.funcs->pvals[f]))
            return false;
    return true;
}

bool calls_built_ins_only(const EquationSystem& es, const Program& program)
{
    for (int32_t p = 0; p < program.count; ++p) {
        const int32_t f = program.operands[p];
        const int32_t kind = program.kinds[p];
        const bool is_call = kind == EQ_ITEM_BINARY || kind == EQ_ITEM_UNARY || kind == EQ_ITEM_SAMPLE;
        if (is_call && !is_built_in(f, function_at(es, f)))
            return false;
    }
    return true;
}

/// Whether no equation calls a function of the host.
bool is_undisturbed(const EquationSystem& es)
{
    if (holds_built_ins_only(es))
        return true;
    for (int32_t i = 0; is_equation(es, i); ++i)
        if (!calls_built_ins_only(es, program_of(es, i)))
            return false;
    return true;
}

/// The reserved variable on the left of an equation, or -1.
int32_t reserved_target(const EquationSystem& es, int32_t equation)
{
    const Program program = program_of(es, equation);
    const int32_t target = program.has_target() ? program.operands[0] : -1;
    return is_variable(es, target) && is_reserved(es, target) ? target : -1;
}

/// The pass when nothing but its results changes a variable.
int pass_undisturbed(EquationSystem& es)
{
    int32_t reserved = 0;
    for (int32_t i = 0; is_equation(es, i); ++i)
        reserved += reserved_target(es, i) >= 0;
    Scratch<double, kNearby> results(reserved);
    if (!results.exists())
        return -1;
    double* next = results.get();
    for (int32_t i = 0; is_equation(es, i); ++i) {
        const double result = evaluate(es, i);
        if (reserved_target(es, i) >= 0)
            *next++ = result;
    }
    next = results.get();
    for (int32_t i = 0; is_equation(es, i); ++i)
        if (const int32_t target = reserved_target(es, i); target >= 0)
            es.var_vals->dvals[target] = *next++;
    return 1;
}

/// The pass as documented, whatever the functions it calls do: equations that they parse run in it as well.
int pass_with_copy(EquationSystem& es, int32_t variables)
{
    Scratch<double, kNearby> after(variables);
    if (!after.exists())
        return -1;
    std::copy_n(es.var_vals->dvals, variables, after.get());
    for (int32_t i = 0; is_equation(es, i); ++i) {
        const Program program = program_of(es, i);
        if (!program.has_target())
            continue;
        const int32_t target = program.operands[0];
        const double result = evaluate(es, i);
        if (target >= 0 && target < variables)
            after.get()[target] = result;
    }
    if (const int32_t left = std::min(variables, variable_count(es)); left > 0)
        std::copy_n(after.get(), left, es.var_vals->dvals);
    return 1;
}

} // namespace
} // namespace korvale::equation

using namespace korvale::equation;

double EqEvaluate(EquationSystem* es, int equation)
{
    return es == nullptr ? 0.0 : evaluate(*es, equation);
}

int EqSystemEvaluate(EquationSystem* es)
{
    const int32_t variables = es == nullptr ? 0 : variable_count(*es);
    if (variables == 0)
        return -1;
    if (variables > kNearby && is_undisturbed(*es))
        return pass_undisturbed(*es);
    return pass_with_copy(*es, variables);
}
