// The threaded interpreter. Nearly all programs need no record looked up twice: records are as the library makes them,
// which `Evaluation::open` finds out once, and programs hold only numbers, variables and built-in functions, none of
// which changes a record. For these:
//
// - Each kind of item has a function that tail-calls the next one's. So the item, the stack pointer and the
//   topmost value stay in registers, and each function has its own indirect branch for the processor to predict.
// - A value followed by + - * / is combined with the top at once instead of being pushed. That is one value more than
//   the stack shows, hence 50 values and not 51.
// - Items are not counted: an end item stands behind them.
// - Whatever is unusual is left to `step` from there on.
#include "equation/internal/evaluation.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "equation/internal/functions.h"
#include "equation/internal/registry.h"
#include "equation/tables.h"

namespace korvale::equation {
namespace {

constexpr int64_t kMostQuick = 50; ///< values on the stack: one more is in flight

/// A list as the library makes it, with `least` elements or more.
[[gnu::always_inline]] inline bool is_usual(const DATAstruct* d, int32_t least)
{
    return d != nullptr && d->alloc_dim == 1 && d->count >= least && d->count <= d->alloc_count;
}

/// An item, and the stack pointer: where the next value goes that will not be the topmost.
struct Next {
    const int32_t* kind;
    const int32_t* operand;
    double* below;
};

/// What an evaluation reads of an equation with a target and of its system.
struct Evaluation {
    EquationSystem* es;
    const int32_t* kinds;
    uint32_t value_count;
    int32_t equation;
    const int32_t* operands;
    double* values;
    const double* constants;
    void* const* functions;
    Next next; ///< where to go on, during a call of a built-in function
    Below below;
    int32_t ended[kMostItems + 1]; ///< a copy of the kinds, where no end item stands behind them

    /// Reads the equation. Returns the number of items, or 0 where anything is unusual. Usual is:
    ///
    /// - All lists are as the library made them.
    /// - An end item stands behind the items, among their 100. With `may_copy` a missing one is added in a copy.
    /// - The functions have slots for all built-in ones, and ADD to DIVIDE are in theirs.
    template <bool may_copy>
    [[gnu::always_inline]] int32_t open(EquationSystem& system, int32_t number)
    {
        const DATAstruct* const equations = system.equations;
        if (equations == nullptr || equations->pvals == nullptr || equations->alloc_dim != kChildren || number < 0 ||
            number >= equations->count || number >= equations->alloc_count)
            return 0;
        void* const* const row = equations->pvals + int64_t{number} * kChildren;
        const auto* const kind_list = static_cast<const DATAstruct*>(row[0]);
        const auto* const operand_list = static_cast<const DATAstruct*>(row[1]);
        const auto* const constant_list = static_cast<const DATAstruct*>(row[2]);
        if (!has_usual_room(kind_list) || !has_usual_room(operand_list) || !has_usual_room(constant_list))
            return 0;
        constexpr int32_t most = may_copy ? kMostItems : kMostItems - 1;
        const int32_t count = kind_list->count;
        kinds = kind_list->ivals;
        if (kinds == nullptr || count < 1 || count > most || kinds[0] != EQ_ITEM_TARGET)
            return 0;
        if (count == kMostItems || kinds[count] != EQ_ITEM_END) {
            if constexpr (!may_copy)
                return 0;
            std::copy_n(kinds, count, ended);
            ended[count] = EQ_ITEM_END;
            kinds = ended;
        }
        operands = operand_list->ivals;
        constants = constant_list->dvals;
        if (operands == nullptr || constants == nullptr || !is_usual(system.var_vals, 1) ||
            !is_usual(system.funcs, kBuiltInCount))
            return 0;
        es = &system;
        equation = number;
        values = system.var_vals->dvals;
        value_count = static_cast<uint32_t>(system.var_vals->count);
        functions = system.funcs->pvals;
        const bool has_operators = values != nullptr && functions != nullptr &&
                                   functions[kAdd] == kBuiltIns[kAdd].function.slot() &&
                                   functions[kSubtract] == kBuiltIns[kSubtract].function.slot() &&
                                   functions[kMultiply] == kBuiltIns[kMultiply].function.slot() &&
                                   functions[kDivide] == kBuiltIns[kDivide].function.slot();
        return has_operators ? count : 0;
    }

    bool has_value(int32_t v) const { return static_cast<uint32_t>(v) < value_count; }

    bool has_built_in(int32_t f) const
    {
        const auto i = static_cast<uint32_t>(f);
        return i < kBuiltInCount && functions[i] == kBuiltIns[i].function.slot();
    }
};

// The threaded interpreter: one function for each kind of item. `kind` and `operand` point at those of the item,
// `below` is the stack pointer, and `top` is the topmost value. At least one value is held. Each returns the result of
// the whole evaluation.
using RunItem = double(Evaluation& e, const int32_t* kind, const int32_t* operand, double* below, double top);
RunItem run_end, run_constant, run_variable, run_draw, run_unary, run_binary, run_other;

struct RunItems {
    RunItem* of[EQ_ITEM_TARGET + 1]; ///< each kind
};
extern const RunItems kRunItems;

/// Calls the function of the next item, which follows one of the kind `before`. Compare-and-jump for the two commonest
/// kinds predicts better than the indirect jump. It is left out after an item of the same kind: a self tail call
/// becomes a loop, and the compiler then spills registers.
template <int32_t before = EQ_ITEM_TARGET>
[[gnu::always_inline]] inline double dispatch(Evaluation& e, const int32_t* kind, const int32_t* operand, double* below,
                                              double top)
{
    const int32_t k = *kind;
    if (before != EQ_ITEM_VARIABLE && k == EQ_ITEM_VARIABLE)
        return run_variable(e, kind, operand, below, top);
    if (before != EQ_ITEM_BINARY && k == EQ_ITEM_BINARY)
        return run_binary(e, kind, operand, below, top);
    if (static_cast<uint32_t>(k) > EQ_ITEM_TARGET)
        return run_other(e, kind, operand, below, top);
    return kRunItems.of[k](e, kind, operand, below, top);
}

[[gnu::always_inline]] inline double run_at(Evaluation& e, int64_t position, int64_t depth, double top)
{
    return dispatch(e, e.kinds + position, e.operands + position, e.below + depth, top);
}

/// Combines the value of an item of the kind `own` with the operator behind it, or pushes it.
template <int32_t own>
[[gnu::always_inline]] inline double run_value(Evaluation& e, const int32_t* kind, const int32_t* operand,
                                               double* below, double top, double value)
{
    if (kind[1] == EQ_ITEM_BINARY) {
        const int32_t f = operand[1];
        if (f == kMultiply)
            return dispatch<own>(e, kind + 2, operand + 2, below, top * value);
        if (f == kAdd)
            return dispatch<own>(e, kind + 2, operand + 2, below, top + value);
        if (f == kSubtract)
            return dispatch<own>(e, kind + 2, operand + 2, below, top - value);
        if (f == kDivide)
            return dispatch<own>(e, kind + 2, operand + 2, below, value == 0.0 ? 0.0 : top / value);
    }
    if (below == e.below + kMostQuick)
        return run_other(e, kind, operand, below, top);
    *below = top;
    return dispatch<own>(e, kind + 1, operand + 1, below + 1, value);
}

[[gnu::noinline]] double run_variable(Evaluation& e, const int32_t* kind, const int32_t* operand, double* below,
                                      double top)
{
    const int32_t v = *operand;
    if (!e.has_value(v))
        return run_other(e, kind, operand, below, top);
    return run_value<EQ_ITEM_VARIABLE>(e, kind, operand, below, top, e.values[v]);
}

[[gnu::noinline]] double run_constant(Evaluation& e, const int32_t* kind, const int32_t* operand, double* below,
                                      double top)
{
    return run_value<EQ_ITEM_CONSTANT>(e, kind, operand, below, top, e.constants[kind - e.kinds]);
}

[[gnu::noinline]] double run_binary(Evaluation& e, const int32_t* kind, const int32_t* operand, double* below,
                                    double top)
{
    if (below == e.below + 1) // one value
        return run_other(e, kind, operand, below, top);
    const int32_t f = *operand;
    const double left = below[-1];
    if (f == kMultiply)
        return dispatch<EQ_ITEM_BINARY>(e, kind + 1, operand + 1, below - 1, left * top);
    if (f == kAdd)
        return dispatch<EQ_ITEM_BINARY>(e, kind + 1, operand + 1, below - 1, left + top);
    if (f == kSubtract)
        return dispatch<EQ_ITEM_BINARY>(e, kind + 1, operand + 1, below - 1, left - top);
    if (f == kDivide)
        return dispatch<EQ_ITEM_BINARY>(e, kind + 1, operand + 1, below - 1, top == 0.0 ? 0.0 : left / top);
    return run_other(e, kind, operand, below, top);
}

/// Goes on after a function that may have changed anything: by the threaded interpreter if all is usual.
[[gnu::noinline]] double go_on(Evaluation& e, State state)
{
    if (state.depth >= 1 && state.depth <= kMostQuick && state.position <= e.open<true>(*e.es, e.equation))
        return run_at(e, state.position, state.depth, state.top);
    return run_to_end(*e.es, e.equation, state, e.below);
}

/// Runs the next item by `step`, and goes on.
[[gnu::always_inline]] inline double step_on(Evaluation& e, const Program& program, State state)
{
    return step(*e.es, program, state, e.below) == After::end ? conclude(*e.es, program, state.top) : go_on(e, state);
}

/// `step_on` from an item that the threaded interpreter has reached. Nothing has changed since the evaluation was
/// opened.
[[gnu::noinline]] double run_as_documented(Evaluation& e, const int32_t* kind, double* below, double top)
{
    return step_on(e, programs_of(*e.es)[e.equation], {kind - e.kinds, below - e.below, top});
}

/// An evaluation from its first item, whatever the records are like.
[[gnu::noinline]] double evaluate_as_documented(EquationSystem& es, int32_t equation)
{
    const Program program = programs_of(es).at(equation);
    if (!program.has_target())
        return 0.0;
    Evaluation e;
    e.es = &es;
    e.equation = equation;
    return step_on(e, program, {});
}

/// Calls a built-in function. Where to go on is kept in the evaluation meanwhile: that costs less than saving and
/// restoring three callee-saved registers.
[[gnu::noinline]] double call_built_in(Evaluation& e, const int32_t* kind, const int32_t* operand, double* below,
                                       UnaryFunction function, double top)
{
    e.next = {kind + 1, operand + 1, below};
    const double result = function(top);
    return dispatch(e, e.next.kind, e.next.operand, e.next.below, result);
}

[[gnu::noinline]] double call_unary(Evaluation& e, const int32_t* kind, int32_t f, double* below, double top)
{
    void* const slot = functions_of(*e.es).at(f);
    if (slot == nullptr)
        return run_as_documented(e, kind, below, top);
    const double result = reinterpret_cast<UnaryFunction>(slot)(top);
    return go_on(e, {kind - e.kinds + 1, below - e.below, result});
}

[[gnu::noinline]] double call_binary(Evaluation& e, const int32_t* kind, int32_t f, double* below, double top)
{
    void* const slot = functions_of(*e.es).at(f);
    if (slot == nullptr || below == e.below + 1) // no function, one value
        return run_as_documented(e, kind, below, top);
    const State after = {kind - e.kinds + 1, below - 1 - e.below,
                         reinterpret_cast<BinaryFunction>(slot)(below[-1], top)};
    return is_built_in(f, slot) ? run_at(e, after.position, after.depth, after.top) : go_on(e, after);
}

[[gnu::noinline]] double run_draw(Evaluation& e, const int32_t* kind, const int32_t* operand, double* below, double top)
{
    if (below == e.below + kMostQuick || !e.has_built_in(*operand))
        return run_as_documented(e, kind, below, top);
    *below = top;
    return dispatch(e, kind + 1, operand + 1, below + 1, EqTableRead(e.es, *operand));
}

[[gnu::noinline]] double run_unary(Evaluation& e, const int32_t* kind, const int32_t* operand, double* below,
                                   double top)
{
    const int32_t f = *operand;
    if (!e.has_built_in(f))
        return run_other(e, kind, operand, below, top);
    if (f == kNegate)
        return dispatch<EQ_ITEM_UNARY>(e, kind + 1, operand + 1, below, -top);
    if (f == kSquareRoot)
        return dispatch<EQ_ITEM_UNARY>(e, kind + 1, operand + 1, below, std::sqrt(top));
    return call_built_in(e, kind, operand, below, kBuiltIns[f].function.one, top);
}

[[gnu::noinline]] double run_other(Evaluation& e, const int32_t* kind, const int32_t* operand, double* below,
                                   double top)
{
    if (*kind == EQ_ITEM_UNARY)
        return call_unary(e, kind, *operand, below, top);
    if (*kind == EQ_ITEM_BINARY)
        return call_binary(e, kind, *operand, below, top);
    return run_as_documented(e, kind, below, top);
}

[[gnu::noinline]] double run_end(Evaluation& e, const int32_t* kind, const int32_t*, double* below, double top)
{
    const DATAstruct* const flags = e.es->var_flags;
    const int32_t target = e.operands[0];
    if (flags == nullptr || flags->alloc_dim != 1 || flags->bvals == nullptr || !e.has_value(target) ||
        target >= flags->count || target >= flags->alloc_count)
        return run_as_documented(e, kind, below, top);
    if (flags->bvals[target] == 0)
        e.values[target] = top;
    return top;
}

constexpr RunItems run_items()
{
    RunItems items = {};
    std::fill(std::begin(items.of), std::end(items.of), run_other);
    items.of[EQ_ITEM_END] = run_end;
    items.of[EQ_ITEM_CONSTANT] = run_constant;
    items.of[EQ_ITEM_VARIABLE] = run_variable;
    items.of[EQ_ITEM_SAMPLE] = run_draw;
    items.of[EQ_ITEM_UNARY] = run_unary;
    items.of[EQ_ITEM_BINARY] = run_binary;
    return items;
}

constinit const RunItems kRunItems = run_items();

} // namespace

double evaluate(EquationSystem& es, int32_t equation)
{
    Evaluation e;
    if (e.open<false>(es, equation) > 0) {
        const int32_t kind = e.kinds[1], operand = e.operands[1]; // the first value becomes the top
        if (kind == EQ_ITEM_VARIABLE && e.has_value(operand))
            return run_at(e, 2, 1, e.values[operand]);
        if (kind == EQ_ITEM_CONSTANT)
            return run_at(e, 2, 1, e.constants[1]);
    }
    return evaluate_as_documented(es, equation);
}

} // namespace korvale::equation
