// A program is run item by item on a stack of values. `step` does that as documented, one item at a time, and asks for
// functions, variables and tables anew each time. The program itself is looked up again where a function of the host
// has run, on every route: that function may have changed how many items there are, or taken the equation away.
//
// Nearly all programs need none of that care: the records are as the library makes them, which `Frame::open` finds out
// once, and there are only numbers, variables and built-in functions, none of which changes a record. For these each
// kind of item has a function that ends in a call of the next one's, a jump. So all that changes from item to item
// stays in the processor's registers, the topmost value among it, and each kind has branches of its own to learn what
// follows. An operand is given to the operator behind it without being pushed, for which there is always a place: with
// all places taken nothing is quick. Items are not counted, as an end item stands behind them. Whatever is unusual is
// left to `step` from there on.
//
// A pass over all equations. As documented, its results gather in a copy of all variables, made before the pass and
// copied back after it, so that nothing else which happens to a variable meanwhile lasts. Only a host's function can do
// such a thing, or parse equations, which the pass then comes to as well. Where the equations call built-in functions
// alone, all but the results of reserved variables is in place already, and only those are put aside.
#include "equation/evaluate.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "equation/internal/functions.h"
#include "equation/internal/program.h"
#include "equation/internal/variables.h"
#include "equation/tables.h"
#include "equation/variables.h"
#include "platform/internal/scratch.h"

namespace korvale::inside {
namespace {

constexpr int64_t kMostValues = 51; ///< values held during an evaluation
constexpr int64_t kMostQuick = 50;  ///< values held while it is quick: one more may be on its way to an operator
constexpr int32_t kNearby = 64;     ///< values a pass puts aside before the heap is asked

/// A position behind the items of any program.
constexpr int64_t kStopped = std::numeric_limits<int64_t>::max();

/// The values held but the topmost, from [1] on; [0] takes the 0.0 there is at first.
using Below = double[kMostValues];

/// An evaluation between two items, `position` that of the next one.
struct Run {
    int64_t position = 1; // the target is at 0
    int64_t depth = 0;    // values held
    double top = 0.0;     // the last of them; 0.0 while there is none
};

/// Where there is no place for a value the program stops.
void push(Run& run, Below& below, double value)
{
    if (run.depth == kMostValues) {
        run.position = kStopped;
        return;
    }
    below[run.depth++] = run.top;
    run.top = value;
}

/// What follows an item: the next one, the end, or, where a function of the host has run, nobody knows what.
enum class After { next, end, unknown };

/// Runs the next item as documented.
[[gnu::always_inline]] inline After step(EquationSystem& es, const Program& program, Run& run, Below& below)
{
    if (run.position >= program.count)
        return After::end;
    const int64_t p = run.position++;
    const int32_t kind = program.kinds[p], operand = program.operands[p];
    switch (kind) {
    case EQ_ITEM_END:
        return After::end;
    case EQ_ITEM_CONSTANT:
        push(run, below, program.constants[p]);
        return After::next;
    case EQ_ITEM_VARIABLE:
        push(run, below, is_variable(es, operand) ? es.var_vals->dvals[operand] : 0.0);
        return After::next;
    case EQ_ITEM_SAMPLE:
    case EQ_ITEM_UNARY:
    case EQ_ITEM_BINARY:
        break;
    default:
        return After::next;
    }
    void* const slot = function_at(es, operand);
    if (kind == EQ_ITEM_SAMPLE) {
        push(run, below, EqTableRead(&es, operand));
    } else if (kind == EQ_ITEM_UNARY && run.depth >= 1) {
        run.top = call(slot, run.top);
    } else if (kind == EQ_ITEM_BINARY && run.depth >= 2) {
        run.depth -= 1;
        run.top = call(slot, below[run.depth], run.top);
    }
    return is_built_in(operand, slot) ? After::next : After::unknown;
}

/// A list as the library makes it, with `least` elements or more.
[[gnu::always_inline]] inline bool is_usual(const DATAstruct* d, int32_t least)
{
    return d != nullptr && d->alloc_dim == 1 && d->count >= least && d->count <= d->alloc_count;
}

/// An item, and the place for the next value that will not be the topmost.
struct Place {
    const int32_t* kind;
    const int32_t* operand;
    double* below;
};

/// What an evaluation reads of an equation with a target and of its system.
struct Frame {
    EquationSystem* es;
    const int32_t* kinds;
    uint32_t value_count;
    int32_t equation;
    const int32_t* operands;
    double* values;
    const double* constants;
    void* const* functions;
    Place place; ///< during a call
    Below below;
    int32_t ended[kMostItems + 1]; ///< a copy of the kinds, where no end item stands behind them

    /// The number of items; 0 where anything is not as it usually is: all lists of the library's own making, an end
    /// item behind the items and within their 100 places, slots for all built-in functions, ADD to DIVIDE in theirs.
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

    static bool has_usual_room(const DATAstruct* d)
    {
        return d != nullptr && d->alloc_count == kMostItems && d->alloc_dim == 1;
    }

    bool has_value(int32_t v) const { return static_cast<uint32_t>(v) < value_count; }

    bool has_built_in(int32_t f) const
    {
        const auto i = static_cast<uint32_t>(f);
        return i < kBuiltInCount && functions[i] == kBuiltIns[i].function.slot();
    }
};

// One function for each kind of item: `kind` and `operand` are the item's, `below` is the place for the next value that
// will not be the topmost. At least one value is held. Each returns the result of the whole evaluation.
using RunItem = double(Frame& frame, const int32_t* kind, const int32_t* operand, double* below, double top);
RunItem run_end, run_constant, run_variable, run_draw, run_unary, run_binary, run_other;

extern RunItem* const kRunItems[EQ_ITEM_TARGET + 1]; ///< for each kind

/// Runs the next item, behind one of the kind `before`. Variables and operators have tests of their own, which are
/// predicted better than a jump to anywhere. Not so after one of their own kind: a function that ends in a call of
/// itself becomes a loop, and what it would keep there is more than there are registers.
template <int32_t before = EQ_ITEM_TARGET>
[[gnu::always_inline]] inline double run(Frame& frame, const int32_t* kind, const int32_t* operand, double* below,
                                         double top)
{
    const int32_t k = *kind;
    if (before != EQ_ITEM_VARIABLE && k == EQ_ITEM_VARIABLE)
        return run_variable(frame, kind, operand, below, top);
    if (before != EQ_ITEM_BINARY && k == EQ_ITEM_BINARY)
        return run_binary(frame, kind, operand, below, top);
    if (static_cast<uint32_t>(k) > EQ_ITEM_TARGET)
        return run_other(frame, kind, operand, below, top);
    return kRunItems[k](frame, kind, operand, below, top);
}

[[gnu::always_inline]] inline double run_at(Frame& frame, int64_t position, int64_t depth, double top)
{
    return run(frame, frame.kinds + position, frame.operands + position, frame.below + depth, top);
}

/// Gives the value of an item of the kind `own` to the operator behind it, or pushes it.
template <int32_t own>
[[gnu::always_inline]] inline double run_value(Frame& frame, const int32_t* kind, const int32_t* operand, double* below,
                                               double top, double value)
{
    if (kind[1] == EQ_ITEM_BINARY) {
        const int32_t f = operand[1];
        if (f == kMultiply)
            return run<own>(frame, kind + 2, operand + 2, below, top * value);
        if (f == kAdd)
            return run<own>(frame, kind + 2, operand + 2, below, top + value);
        if (f == kSubtract)
            return run<own>(frame, kind + 2, operand + 2, below, top - value);
        if (f == kDivide)
            return run<own>(frame, kind + 2, operand + 2, below, value == 0.0 ? 0.0 : top / value);
    }
    if (below == frame.below + kMostQuick)
        return run_other(frame, kind, operand, below, top);
    *below = top;
    return run<own>(frame, kind + 1, operand + 1, below + 1, value);
}

[[gnu::noinline]] double run_variable(Frame& frame, const int32_t* kind, const int32_t* operand, double* below,
                                      double top)
{
    const int32_t v = *operand;
    if (!frame.has_value(v))
        return run_other(frame, kind, operand, below, top);
    return run_value<EQ_ITEM_VARIABLE>(frame, kind, operand, below, top, frame.values[v]);
}

[[gnu::noinline]] double run_constant(Frame& frame, const int32_t* kind, const int32_t* operand, double* below,
                                      double top)
{
    return run_value<EQ_ITEM_CONSTANT>(frame, kind, operand, below, top, frame.constants[kind - frame.kinds]);
}

[[gnu::noinline]] double run_binary(Frame& frame, const int32_t* kind, const int32_t* operand, double* below,
                                    double top)
{
    if (below == frame.below + 1) // one value
        return run_other(frame, kind, operand, below, top);
    const int32_t f = *operand;
    const double left = below[-1];
    if (f == kMultiply)
        return run<EQ_ITEM_BINARY>(frame, kind + 1, operand + 1, below - 1, left * top);
    if (f == kAdd)
        return run<EQ_ITEM_BINARY>(frame, kind + 1, operand + 1, below - 1, left + top);
    if (f == kSubtract)
        return run<EQ_ITEM_BINARY>(frame, kind + 1, operand + 1, below - 1, left - top);
    if (f == kDivide)
        return run<EQ_ITEM_BINARY>(frame, kind + 1, operand + 1, below - 1, top == 0.0 ? 0.0 : left / top);
    return run_other(frame, kind, operand, below, top);
}

/// Gives the variable on the left the result, unless it is reserved or the equation is gone, and returns it.
double conclude(EquationSystem& es, const Program& program, double result)
{
    const int32_t target = program.room == 0 ? -1 : program.operands[0];
    if (is_variable(es, target) && !is_reserved(es, target))
        es.var_vals->dvals[target] = result;
    return result;
}

/// Runs all further items as documented. After a function of the host the program is looked up again.
[[gnu::noinline]] double run_to_end(Frame& frame, Run state)
{
    EquationSystem& es = *frame.es;
    for (;;) {
        const Program program = program_at(es, frame.equation);
        After after;
        do
            after = step(es, program, state, frame.below);
        while (after == After::next);
        if (after == After::end)
            return conclude(es, program, state.top);
    }
}

/// Goes on after anything may have changed: quickly, if all is as usual.
[[gnu::noinline]] double go_on(Frame& frame, Run state)
{
    if (state.depth >= 1 && state.depth <= kMostQuick && state.position <= frame.open<true>(*frame.es, frame.equation))
        return run_at(frame, state.position, state.depth, state.top);
    return run_to_end(frame, state);
}

/// Runs the next item of a program as documented, and goes on.
[[gnu::always_inline]] inline double step_on(Frame& frame, const Program& program, Run state)
{
    return step(*frame.es, program, state, frame.below) == After::end ? conclude(*frame.es, program, state.top)
                                                                      : go_on(frame, state);
}

/// `step_on` from the item a quick function was at; nothing has changed since the frame was opened.
[[gnu::noinline]] double run_carefully(Frame& frame, const int32_t* kind, double* below, double top)
{
    return step_on(frame, program_of(*frame.es, frame.equation), {kind - frame.kinds, below - frame.below, top});
}

/// An evaluation from its beginning, whatever the records are like.
[[gnu::noinline]] double evaluate_carefully(EquationSystem& es, int32_t equation)
{
    const Program program = program_at(es, equation);
    if (!program.has_target())
        return 0.0;
    Frame frame;
    frame.es = &es;
    frame.equation = equation;
    return step_on(frame, program, {});
}

/// Calls a built-in function. The frame keeps the place meanwhile, which takes less than saving registers would.
[[gnu::noinline]] double call_built_in(Frame& frame, const int32_t* kind, const int32_t* operand, double* below,
                                       UnaryFunction function, double top)
{
    frame.place = {kind + 1, operand + 1, below};
    const double result = function(top);
    return run(frame, frame.place.kind, frame.place.operand, frame.place.below, result);
}

[[gnu::noinline]] double call_unary(Frame& frame, const int32_t* kind, int32_t f, double* below, double top)
{
    void* const slot = function_at(*frame.es, f);
    if (slot == nullptr)
        return run_carefully(frame, kind, below, top);
    const double result = reinterpret_cast<UnaryFunction>(slot)(top);
    return go_on(frame, {kind - frame.kinds + 1, below - frame.below, result});
}

[[gnu::noinline]] double call_binary(Frame& frame, const int32_t* kind, int32_t f, double* below, double top)
{
    void* const slot = function_at(*frame.es, f);
    if (slot == nullptr || below == frame.below + 1) // no function, one value
        return run_carefully(frame, kind, below, top);
    const Run after = {kind - frame.kinds + 1, below - 1 - frame.below,
                       reinterpret_cast<BinaryFunction>(slot)(below[-1], top)};
    return is_built_in(f, slot) ? run_at(frame, after.position, after.depth, after.top) : go_on(frame, after);
}

[[gnu::noinline]] double run_draw(Frame& frame, const int32_t* kind, const int32_t* operand, double* below, double top)
{
    if (below == frame.below + kMostQuick || !frame.has_built_in(*operand))
        return run_carefully(frame, kind, below, top);
    *below = top;
    return run(frame, kind + 1, operand + 1, below + 1, EqTableRead(frame.es, *operand));
}

[[gnu::noinline]] double run_unary(Frame& frame, const int32_t* kind, const int32_t* operand, double* below, double top)
{
    const int32_t f = *operand;
    if (!frame.has_built_in(f))
        return run_other(frame, kind, operand, below, top);
    if (f == kNegate)
        return run<EQ_ITEM_UNARY>(frame, kind + 1, operand + 1, below, -top);
    if (f == kSquareRoot)
        return run<EQ_ITEM_UNARY>(frame, kind + 1, operand + 1, below, std::sqrt(top));
    return call_built_in(frame, kind, operand, below, kBuiltIns[f].function.one, top);
}

[[gnu::noinline]] double run_other(Frame& frame, const int32_t* kind, const int32_t* operand, double* below, double top)
{
    if (*kind == EQ_ITEM_UNARY)
        return call_unary(frame, kind, *operand, below, top);
    if (*kind == EQ_ITEM_BINARY)
        return call_binary(frame, kind, *operand, below, top);
    return run_carefully(frame, kind, below, top);
}

[[gnu::noinline]] double run_end(Frame& frame, const int32_t* kind, const int32_t*, double* below, double top)
{
    const DATAstruct* const flags = frame.es->var_flags;
    const int32_t target = frame.operands[0];
    if (flags == nullptr || flags->alloc_dim != 1 || flags->bvals == nullptr || !frame.has_value(target) ||
        target >= flags->count || target >= flags->alloc_count)
        return run_carefully(frame, kind, below, top);
    if (flags->bvals[target] == 0)
        frame.values[target] = top;
    return top;
}

RunItem* const kRunItems[] = {run_end,   run_other, run_other, run_other,  run_constant, run_variable,
                              run_other, run_draw,  run_unary, run_binary, run_other,    run_other,
                              run_other, run_other, run_other, run_other,  run_other};

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

/// Whether no equation can call a function of the host.
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
        const double result = EqEvaluate(&es, i);
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
        const double result = EqEvaluate(&es, i);
        if (target >= 0 && target < variables)
            after.get()[target] = result;
    }
    if (const int32_t left = std::min(variables, variable_count(es)); left > 0)
        std::copy_n(after.get(), left, es.var_vals->dvals);
    return 1;
}

} // namespace
} // namespace korvale::inside

using namespace korvale::inside;

double EqEvaluate(EquationSystem* es, int equation)
{
    if (es == nullptr)
        return 0.0;
    Frame frame;
    if (frame.open<false>(*es, equation) > 0) {
        const int32_t kind = frame.kinds[1], operand = frame.operands[1]; // its value is there without pushing
        if (kind == EQ_ITEM_VARIABLE && frame.has_value(operand))
            return run_at(frame, 2, 1, frame.values[operand]);
        if (kind == EQ_ITEM_CONSTANT)
            return run_at(frame, 2, 1, frame.constants[1]);
    }
    return evaluate_carefully(*es, equation);
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
