// A stack machine that keeps its topmost value in a variable and gives an operand to the operator that follows it
// without pushing it. The operators, most of all functions, are computed in place while their slot of the registry
// holds the built-in function. Any other function may be a host's, which may change variables, replace functions and
// grow every array but those of the program, so what is known of them is looked up again after each call.
//
// A pass over all equations. As documented, its results gather in a copy of all variables, made before the pass and
// copied back after it, so that nothing else which happens to a variable meanwhile lasts. Only a host's function can do
// such a thing. Where the equations call built-in functions alone, all but the results of reserved variables is in
// place already, and only those are put aside.
#include "equation/evaluate.h"

#include <algorithm>
#include <cmath>

#include "equation/internal/functions.h"
#include "equation/internal/program.h"
#include "equation/internal/variables.h"
#include "equation/tables.h"
#include "platform/internal/scratch.h"

namespace korvale::inside {
namespace {

constexpr int kMostValues = 51; ///< values held during an evaluation
constexpr int32_t kNearby = 64; ///< values a pass puts aside before the heap is asked

/// The variables and functions as they are between two calls of functions.
struct Registers {
    explicit Registers(const EquationSystem& es)
        : value_count(static_cast<uint32_t>(variable_count(es))),
          function_count(static_cast<uint32_t>(usable_count(es.funcs, DATA_TYPE_POINTER))),
          values(value_count == 0 ? nullptr : es.var_vals->dvals),
          functions(function_count == 0 ? nullptr : es.funcs->pvals)
    {
    }

    bool has_value(int32_t v) const { return static_cast<uint32_t>(v) < value_count; }

    double value(int32_t v) const { return has_value(v) ? values[v] : 0.0; }

    void* function(int32_t f) const
    {
        const auto i = static_cast<uint32_t>(f);
        return i < function_count ? functions[i] : nullptr;
    }

    uint32_t value_count;
    uint32_t function_count;
    double* values;
    void* const* functions;
};

/// The registers after a call.
[[gnu::noinline]] Registers renewed(const EquationSystem& es)
{
    return Registers(es);
}

template <class Function>
bool is_built_in(void* slot, Function function)
{
    return slot == reinterpret_cast<void*>(function);
}

/// Computes one of the four sums and products if its slot holds the built-in function.
inline bool compute_built_in(int32_t f, void* slot, double a, double b, double& result)
{
    switch (f) {
    case kAdd:
        result = a + b;
        return is_built_in(slot, EqFuncAdd);
    case kSubtract:
        result = a - b;
        return is_built_in(slot, EqFuncSubtract);
    case kMultiply:
        result = a * b;
        return is_built_in(slot, EqFuncMultiply);
    case kDivide:
        result = b == 0.0 ? 0.0 : a / b;
        return is_built_in(slot, EqFuncDivide);
    default:
        return false;
    }
}

/// Computes a negation or a square root if the slot holds that function.
inline bool compute_built_in(void* slot, double x, double& result)
{
    if (is_built_in(slot, EqFuncNegate)) {
        result = -x;
        return true;
    }
    if (is_built_in(slot, static_cast<UnaryFunction>(std::sqrt))) {
        result = std::sqrt(x);
        return true;
    }
    return false;
}

[[gnu::always_inline]] inline double apply(const EquationSystem& es, Registers& registers, int32_t f, double x)
{
    void* const slot = registers.function(f);
    double result;
    if (compute_built_in(slot, x, result))
        return result;
    if (slot == nullptr)
        return 0.0;
    result = reinterpret_cast<UnaryFunction>(slot)(x);
    if (!is_built_in_unary(f, slot))
        registers = renewed(es);
    return result;
}

[[gnu::always_inline]] inline double apply(const EquationSystem& es, Registers& registers, int32_t f, double a,
                                           double b)
{
    void* const slot = registers.function(f);
    double result;
    if (compute_built_in(f, slot, a, b, result))
        return result;
    if (slot == nullptr)
        return 0.0;
    result = reinterpret_cast<BinaryFunction>(slot)(a, b);
    if (!is_built_in_binary(f, slot))
        registers = renewed(es);
    return result;
}

/// Runs the items behind the target of a program; the topmost value, 0.0 where there is none.
[[gnu::always_inline]] inline double run(EquationSystem& es, const int32_t* kinds, const int32_t* operands,
                                         const double* constants, int32_t count, Registers& registers)
{
    double held[kMostValues]; // from held[1] on, the values below the top; held[0] takes the 0.0 there is at first
    double* below = held;     // as many values are held as entries lie before it
    double top = 0.0;
    for (int32_t p = 1; p < count; ++p) {
        double operand;
        bool at_operator = false;
        switch (kinds[p]) {
        case EQ_ITEM_CONSTANT:
            operand = constants[p];
            break;
        case EQ_ITEM_VARIABLE:
            operand = registers.value(operands[p]);
            break;
        case EQ_ITEM_SAMPLE:
            operand = EqTableRead(&es, operands[p]);
            registers = renewed(es);
            break;
        case EQ_ITEM_UNARY:
            if (below > held)
                top = apply(es, registers, operands[p], top);
            continue;
        case EQ_ITEM_BINARY:
            if (below <= held + 1)
                continue;
            operand = top;
            top = *--below;
            at_operator = true;
            break;
        case EQ_ITEM_END:
            return top;
        default:
            continue;
        }
        if (!at_operator) {
            if (below == held + kMostValues)
                return top;
            if (below == held || p + 1 == count || kinds[p + 1] != EQ_ITEM_BINARY) {
                *below++ = top;
                top = operand;
                continue;
            }
            ++p; // the operand goes straight to the operator behind it
        }
        top = apply(es, registers, operands[p], top, operand);
    }
    return top;
}

/// Runs a program, gives its variable the result unless that is reserved, and returns it: the topmost value, 0.0 where
/// there is none.
double evaluate_items(EquationSystem& es, const int32_t* kinds, const int32_t* operands, const double* constants,
                      int32_t count)
{
    Registers registers(es);
    const double result = run(es, kinds, operands, constants, count, registers);
    const int32_t target = operands[0];
    if (registers.has_value(target) && !is_reserved(es, target))
        registers.values[target] = result;
    return result;
}

double evaluate(EquationSystem& es, const Program& program)
{
    return evaluate_items(es, program.kinds, program.operands, program.constants, program.count);
}

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
    const int32_t n = usable_count(es.funcs, DATA_TYPE_POINTER);
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
    Scratch<double, kNearby> results(reserved);
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
    Scratch<double, kNearby> after(variables);
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

double EqEvaluate(EquationSystem* es, int equation)
{
    if (es == nullptr || !is_equation(*es, equation))
        return 0.0;
    const Program program = program_of(*es, equation);
    return program.has_target() ? evaluate(*es, program) : 0.0;
}

int EqSystemEvaluate(EquationSystem* es)
{
    const int32_t variables = es == nullptr ? 0 : variable_count(*es);
    if (variables == 0)
        return -1;
    const int32_t equations = equation_count(*es);
    return variables > kNearby && is_undisturbed(*es, equations) ? pass_undisturbed(*es, equations)
                                                                 : pass_with_copy(*es, equations, variables);
}
