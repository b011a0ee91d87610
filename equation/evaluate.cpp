// A pass over all equations. As documented, its results gather in a copy of all variables, made before the pass and
// copied back after it, so that nothing else which happens to a variable meanwhile lasts. Only a function of the host
// can change variables otherwise, or parse equations, which the pass then reaches as well. Where the equations call
// built-in functions alone, the results of ordinary variables are in place already, and only those of reserved
// variables are put aside.
#include "equation/evaluate.h"

#include <algorithm>

#include "equation/internal/evaluation.h"
#include "equation/internal/functions.h"
#include "equation/internal/registry.h"
#include "platform/internal/scratch.h"

namespace korvale::equation {
namespace {

constexpr int32_t kNearby = 64; ///< values a pass puts aside before the heap is asked

bool holds_built_ins_only(const Functions& functions)
{
    for (int32_t f = 0; f < functions.count; ++f)
        if (!is_built_in(f, functions.slots[f]))
            return false;
    return true;
}

bool calls_built_ins_only(const Program& program, const Functions& functions)
{
    for (int32_t p = 0; p < program.count; ++p) {
        const int32_t f = program.operands[p];
        const int32_t kind = program.kinds[p];
        const bool is_call = kind == EQ_ITEM_BINARY || kind == EQ_ITEM_UNARY || kind == EQ_ITEM_SAMPLE;
        if (is_call && !is_built_in(f, functions.at(f)))
            return false;
    }
    return true;
}

/// Whether no equation calls a function of the host. Not inlined: a pass over a few variables would save registers for
/// it.
[[gnu::noinline]] bool is_undisturbed(const EquationSystem& es)
{
    const Functions functions = functions_of(es);
    const Programs programs = programs_of(es);
    if (holds_built_ins_only(functions))
        return true;
    for (int32_t i = 0; i < programs.count; ++i)
        if (!calls_built_ins_only(programs[i], functions))
            return false;
    return true;
}

/// The reserved variable on the left of an equation, or -1.
int32_t reserved_target(const Program& program, const Variables& variables)
{
    const int32_t target = program.has_target() ? program.operands[0] : -1;
    return variables.has(target) && variables.is_reserved(target) ? target : -1;
}

/// The pass when nothing but its results changes a variable, so that views last.
int pass_undisturbed(EquationSystem& es)
{
    const Programs programs = programs_of(es);
    const Variables variables = variables_of(es);
    int32_t reserved = 0;
    for (int32_t i = 0; i < programs.count; ++i)
        reserved += reserved_target(programs[i], variables) >= 0;
    Scratch<double, kNearby> results(reserved);
    if (!results.exists())
        return -1;
    double* next = results.get();
    for (int32_t i = 0; i < programs.count; ++i) {
        const double result = evaluate(es, i);
        if (reserved_target(programs[i], variables) >= 0)
            *next++ = result;
    }
    next = results.get();
    for (int32_t i = 0; i < programs.count; ++i)
        if (const int32_t target = reserved_target(programs[i], variables); target >= 0)
            variables.values[target] = *next++;
    return 1;
}

/// The pass as documented, whatever the functions it calls do: equations that they parse run in it as well.
int pass_with_copy(EquationSystem& es, const double* values, int32_t variables)
{
    Scratch<double, kNearby> after(variables);
    if (!after.exists())
        return -1;
    std::copy_n(values, variables, after.get());
    for (int32_t i = 0;; ++i) {
        const Programs programs = programs_of(es);
        if (!programs.has(i))
            break;
        const Program program = programs[i];
        if (!program.has_target())
            continue;
        const int32_t target = program.operands[0];
        const double result = evaluate(es, i);
        if (target >= 0 && target < variables)
            after.get()[target] = result;
    }
    const Variables now = variables_of(es);
    if (const int32_t left = std::min(variables, now.count); left > 0)
        std::copy_n(after.get(), left, now.values);
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
    if (es == nullptr)
        return -1;
    const Variables variables = variables_of(*es);
    if (variables.count == 0)
        return -1;
    if (variables.count > kNearby && is_undisturbed(*es))
        return pass_undisturbed(*es);
    return pass_with_copy(*es, variables.values, variables.count);
}
