// The documented interpreter: a program is run item by item on a stack of values, and functions, variables and tables
// are looked up anew each time. So is the program itself after every function of the host, which may have changed the
// number of items, or taken the equation away.
#include "equation/internal/evaluation.h"

#include <limits>

#include "equation/internal/functions.h"
#include "equation/internal/registry.h"
#include "equation/tables.h"

namespace korvale::equation {
namespace {

/// A position behind the items of any program.
constexpr int64_t kStopped = std::numeric_limits<int64_t>::max();

/// Where there is no place for a value the program stops.
void push(State& state, Below& below, double value)
{
    if (state.depth == kMostValues) {
        state.position = kStopped;
        return;
    }
    below[state.depth++] = state.top;
    state.top = value;
}

/// The value of a variable, 0.0 where there is none.
double value_of(const EquationSystem& es, int32_t v)
{
    const Variables variables = variables_of(es);
    return variables.has(v) ? variables.values[v] : 0.0;
}

} // namespace

After step(EquationSystem& es, const Program& program, State& state, Below& below)
{
    if (state.position >= program.count)
        return After::end;
    const int64_t p = state.position++;
    const int32_t kind = program.kinds[p], operand = program.operands[p];
    switch (kind) {
    case EQ_ITEM_END:
        return After::end;
    case EQ_ITEM_CONSTANT:
        push(state, below, program.constants[p]);
        return After::next;
    case EQ_ITEM_VARIABLE:
        push(state, below, value_of(es, operand));
        return After::next;
    case EQ_ITEM_SAMPLE:
    case EQ_ITEM_UNARY:
    case EQ_ITEM_BINARY:
        break;
    default:
        return After::next;
    }
    void* const slot = functions_of(es).at(operand);
    if (kind == EQ_ITEM_SAMPLE) {
        push(state, below, EqTableRead(&es, operand));
    } else if (kind == EQ_ITEM_UNARY && state.depth >= 1) {
        state.top = call(slot, state.top);
    } else if (kind == EQ_ITEM_BINARY && state.depth >= 2) {
        state.depth -= 1;
        state.top = call(slot, below[state.depth], state.top);
    }
    return is_built_in(operand, slot) ? After::next : After::unknown;
}

double run_to_end(EquationSystem& es, int32_t equation, State state, Below& below)
{
    for (;;) {
        const Program program = programs_of(es).at(equation);
        After after;
        do
            after = step(es, program, state, below);
        while (after == After::next);
        if (after == After::end)
            return conclude(es, program, state.top);
    }
}

double conclude(EquationSystem& es, const Program& program, double result)
{
    const int32_t target = program.room == 0 ? -1 : program.operands[0];
    const Variables variables = variables_of(es);
    if (variables.has(target) && !variables.is_reserved(target))
        variables.values[target] = result;
    return result;
}

} // namespace korvale::equation
