#include "equation/equation.h"

#include "data/internal/scratch.h"
#include "equation/internal/program.h"
#include "equation/internal/variables.h"
#include "platform/module_start.h"

namespace korvale {
namespace {

constexpr int kMostValues = 51; ///< values held during an evaluation

/// Runs the items of a program and returns the topmost value, 0.0 where there is none.
double run(EquationSystem& es, const Program& program)
{
    double values[kMostValues];
    int n = 0;
    for (int32_t p = 0; p < program.count && program.kinds[p] != EQ_ITEM_END; ++p) {
        const int32_t operand = program.operands[p];
        double pushed;
        switch (program.kinds[p]) {
        case EQ_ITEM_UNARY:
            if (n >= 1)
                values[n - 1] = call(es, operand, values[n - 1]);
            continue;
        case EQ_ITEM_BINARY:
            if (n >= 2) {
                values[n - 2] = call(es, operand, values[n - 2], values[n - 1]);
                --n;
            }
            continue;
        case EQ_ITEM_CONSTANT:
            pushed = program.constants[p];
            break;
        case EQ_ITEM_VARIABLE:
            pushed = EqReadVariable(&es, operand);
            break;
        case EQ_ITEM_SAMPLE:
            pushed = EqTableRead(&es, operand);
            break;
        default:
            continue;
        }
        if (n == kMostValues)
            break;
        values[n++] = pushed;
    }
    return n == 0 ? 0.0 : values[n - 1];
}

/// Runs a program and gives its variable the result unless that is reserved.
double evaluate(EquationSystem& es, const Program& program)
{
    const int32_t target = program.operands[0];
    const double result = run(es, program);
    if (is_variable(es, target) && !is_reserved(es, target))
        es.var_vals->dvals[target] = result;
    return result;
}

} // namespace
} // namespace korvale

double EqEvaluate(EquationSystem* es, int equation)
{
    if (es == nullptr || !korvale::is_equation(*es, equation))
        return 0.0;
    const korvale::Program program = korvale::program_of(*es, equation);
    return program.has_target() ? korvale::evaluate(*es, program) : 0.0;
}

int EqSystemEvaluate(EquationSystem* es)
{
    if (es == nullptr)
        return -1;
    const int32_t variables = korvale::variable_count(*es);
    korvale::Scratch<double> after(variables);
    if (!after.exists())
        return -1;
    std::copy_n(es->var_vals->dvals, variables, after.get());
    const int32_t n = es->equations == nullptr ? 0 : es->equations->count;
    for (int32_t i = 0; i < n && korvale::is_equation(*es, i); ++i) {
        const korvale::Program program = korvale::program_of(*es, i);
        if (!program.has_target())
            continue;
        const int32_t target = program.operands[0];
        const double result = korvale::evaluate(*es, program);
        if (target >= 0 && target < variables)
            after[target] = result;
    }
    std::copy_n(after.get(), variables, es->var_vals->dvals);
    return 1;
}
