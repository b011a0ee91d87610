#include "equation/equation.h"

#include <algorithm>

#include "equation/internal/built_ins.h"
#include "equation/internal/evaluate.h"
#include "equation/internal/program.h"
#include "equation/internal/variables.h"
#include "platform/internal/scratch.h"

// A pass over all equations. As documented, its results gather in a copy of all variables, made before the pass and
// copied back after it, so that nothing else which happens to a variable meanwhile lasts. Only a host's function can do
// such a thing. Where the equations call built-in functions alone, all but the results of reserved variables is in
// place already, and only those are put aside.
namespace korvale::inside {
namespace {

/// Values put aside before the heap is asked.
constexpr int32_t kNearby = 64;

/// Working memory of one pass, in the frame of the call where that suffices.
class Aside {
public:
    explicit Aside(int32_t count) : far_(count > kNearby ? count : 0), is_near_(count <= kNearby) {}
    bool exists() const { return is_near_ || far_.exists(); }
    double* get() { return is_near_ ? near_ : far_.get(); }

private:
    double near_[kNearby];
    Scratch<double> far_;
    bool is_near_;
};

int32_t equation_count(const EquationSystem& es)
{
    return es.equations == nullptr ? 0 : es.equations->count;
}

/// The program of an equation, one of no items where it does not exist.
Program program_at(const EquationSystem& es, int32_t equation)
{
    return is_equation(es, equation) ? program_of(es, equation) : Program();
}

bool holds_built_ins_only(const EquationSystem& es)
{
    const int32_t n = length(es.funcs, DATA_TYPE_POINTER);
    for (int32_t f = 0; f < n; ++f) {
        const void* const slot = es.funcs->pvals[f];
        if (!is_built_in_binary(f, slot) && !is_built_in_unary(f, slot) && !is_built_in_draw(f, slot))
            return false;
    }
    return true;
}

bool calls_built_ins_only(const EquationSystem& es, const Program& program)
{
    for (int32_t p = 0; p < program.count; ++p) {
        const int32_t f = program.operands[p];
        const void* const slot = function_at(es, f);
        const int32_t kind = program.kinds[p];
        if ((kind == EQ_ITEM_BINARY && !is_built_in_binary(f, slot)) ||
            (kind == EQ_ITEM_UNARY && !is_built_in_unary(f, slot)) ||
            (kind == EQ_ITEM_SAMPLE && !is_built_in_draw(f, slot)))
            return false;
    }
    return true;
}

/// Whether no equation can call a function of the host.
bool is_undisturbed(const EquationSystem& es, int32_t equations)
{
    if (holds_built_ins_only(es))
        return true;
    for (int32_t i = 0; i < equations; ++i)
        if (!calls_built_ins_only(es, program_at(es, i)))
            return false;
    return true;
}

bool has_reserved_target(const EquationSystem& es, const Program& program)
{
    return program.has_target() && is_variable(es, program.operands[0]) && is_reserved(es, program.operands[0]);
}

/// The pass when nothing but its results changes a variable.
int pass_undisturbed(EquationSystem& es, int32_t equations)
{
    int32_t reserved = 0;
    for (int32_t i = 0; i < equations; ++i)
        reserved += has_reserved_target(es, program_at(es, i));
    Aside results(reserved);
    if (!results.exists())
        return -1;
    double* next = results.get();
    for (int32_t i = 0; i < equations; ++i) {
        const Program program = program_at(es, i);
        if (!program.has_target())
            continue;
        const double result = evaluate(es, program);
        if (has_reserved_target(es, program))
            *next++ = result;
    }
    next = results.get();
    for (int32_t i = 0; i < equations; ++i) {
        const Program program = program_at(es, i);
        if (has_reserved_target(es, program))
            es.var_vals->dvals[program.operands[0]] = *next++;
    }
    return 1;
}

/// The pass as documented, whatever the functions it calls do.
int pass_with_copy(EquationSystem& es, int32_t equations, int32_t variables)
{
    Aside after(variables);
    if (!after.exists())
        return -1;
    std::copy_n(es.var_vals->dvals, variables, after.get());
    for (int32_t i = 0; i < equations; ++i) {
        const Program program = program_at(es, i);
        if (!program.has_target())
            continue;
        const int32_t target = program.operands[0];
        const double result = evaluate(es, program);
        if (target >= 0 && target < variables)
            after.get()[target] = result;
    }
    std::copy_n(after.get(), std::min(variables, variable_count(es)), es.var_vals->dvals);
    return 1;
}

} // namespace
} // namespace korvale::inside

using namespace korvale::inside;

int EqSystemEvaluate(EquationSystem* es)
{
    const int32_t variables = es == nullptr ? 0 : variable_count(*es);
    if (variables == 0)
        return -1;
    const int32_t equations = equation_count(*es);
    return variables > kNearby && is_undisturbed(*es, equations) ? pass_undisturbed(*es, equations)
                                                                 : pass_with_copy(*es, equations, variables);
}
