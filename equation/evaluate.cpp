#include "equation/equation.h"

#include <algorithm>
#include <cmath>

#include "equation/internal/built_ins.h"
#include "equation/internal/evaluate.h"
#include "equation/internal/program.h"
#include "equation/internal/variables.h"

// A stack machine that keeps its topmost value in a variable and gives an operand to the operator that follows it
// without pushing it. The operators, most of all functions, are computed in place while their slot of the registry holds
// the built-in function. Any other function may be a host's, which may change variables, replace functions and grow
// every array but those of the program, so what is known of them is looked up again after each call.
namespace korvale::inside {
namespace {

constexpr int kMostValues = 51; ///< values held during an evaluation

/// The variables and functions as they are between two calls of functions.
struct View {
    explicit View(const EquationSystem& es)
        : value_count(static_cast<uint32_t>(variable_count(es))),
          function_count(static_cast<uint32_t>(length(es.funcs, DATA_TYPE_POINTER))),
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

/// The view after a call.
[[gnu::noinline]] View renewed(const EquationSystem& es)
{
    return View(es);
}

template <class Function>
bool is_built_in(void* slot, Function function)
{
    return slot == reinterpret_cast<void*>(function);
}

/// Computes one of the four sums and products if its slot holds the built-in function.
inline bool compute(int32_t f, void* slot, double a, double b, double& result)
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
inline bool compute(void* slot, double x, double& result)
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

[[gnu::always_inline]] inline double apply(const EquationSystem& es, View& view, int32_t f, double x)
{
    void* const slot = view.function(f);
    double result;
    if (compute(slot, x, result))
        return result;
    if (slot == nullptr)
        return 0.0;
    result = reinterpret_cast<UnaryFunction>(slot)(x);
    if (!is_built_in_unary(f, slot))
        view = renewed(es);
    return result;
}

[[gnu::always_inline]] inline double apply(const EquationSystem& es, View& view, int32_t f, double a, double b)
{
    void* const slot = view.function(f);
    double result;
    if (compute(f, slot, a, b, result))
        return result;
    if (slot == nullptr)
        return 0.0;
    result = reinterpret_cast<BinaryFunction>(slot)(a, b);
    if (!is_built_in_binary(f, slot))
        view = renewed(es);
    return result;
}

/// Runs the items behind the target of a program; the topmost value, 0.0 where there is none.
[[gnu::always_inline]] inline double run(EquationSystem& es, const int32_t* kinds, const int32_t* operands,
                                         const double* constants, int32_t count, View& view)
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
            operand = view.value(operands[p]);
            break;
        case EQ_ITEM_SAMPLE:
            operand = EqTableRead(&es, operands[p]);
            view = renewed(es);
            break;
        case EQ_ITEM_UNARY:
            if (below > held)
                top = apply(es, view, operands[p], top);
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
        top = apply(es, view, operands[p], top, operand);
    }
    return top;
}

/// Runs a program, gives its variable the result unless that is reserved, and returns it: the topmost value, 0.0 where
/// there is none.
double evaluate_items(EquationSystem& es, const int32_t* kinds, const int32_t* operands, const double* constants,
                      int32_t count)
{
    View view(es);
    const double result = run(es, kinds, operands, constants, count, view);
    const int32_t target = operands[0];
    if (view.has_value(target) && !is_reserved(es, target))
        view.values[target] = result;
    return result;
}

} // namespace

double evaluate(EquationSystem& es, const Program& program)
{
    return evaluate_items(es, program.kinds, program.operands, program.constants, program.count);
}

} // namespace korvale::inside

using namespace korvale::inside;

double EqEvaluate(EquationSystem* es, int equation)
{
    if (es == nullptr || !is_equation(*es, equation))
        return 0.0;
    const Program program = program_of(*es, equation);
    return program.has_target() ? evaluate(*es, program) : 0.0;
}
