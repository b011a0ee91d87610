// A program is in postfix order, so a function whose operands are all constants stands right behind them. One walk
// folds each such function into the first of its constants and goes on from there; what follows moves down. The
// registry's functions are called, whatever they are; variables and samples stay, as they may differ at the next
// evaluation. After a function of the host the program is looked up again.
#include "equation/simplify.h"

#include <cstring>

#include "equation/internal/functions.h"
#include "equation/internal/registry.h"

namespace korvale::equation {
namespace {

/// Moves the items from `from` on down by `distance` positions and makes the freed tail like that of a new program.
void move_down(const Program& program, int32_t from, int32_t distance)
{
    const auto n = static_cast<size_t>(program.room - from);
    std::memmove(program.kinds + from - distance, program.kinds + from, n * sizeof(*program.kinds));
    std::memmove(program.operands + from - distance, program.operands + from, n * sizeof(*program.operands));
    std::memmove(program.constants + from - distance, program.constants + from, n * sizeof(*program.constants));
    for (int32_t i = program.room - distance; i < program.room; ++i) {
        program.kinds[i] = EQ_ITEM_END;
        program.operands[i] = -1;
        program.constants[i] = 0.0;
    }
}

bool is_constant(const Program& program, int32_t position)
{
    return position >= 0 && program.kinds[position] == EQ_ITEM_CONSTANT;
}

/// Puts `value` in place of the function at position `p` and of the `operands` constants before it.
void replace(const Program& program, int32_t p, int32_t operands, double value)
{
    program.constants[p - operands] = value;
    move_down(program, p + 1, operands);
}

/// Replaces the function at position `p` by its value, if it takes so many operands and follows as many constants, and
/// goes back to where the value is. False where the function was a host's: `program` is then the equation's as that
/// has left it, or of no items.
[[gnu::always_inline]] inline bool fold(const EquationSystem& es, int32_t equation, const Program& known,
                                        Program& program, int32_t& p, int32_t operands)
{
    if (known.kinds[p] != (operands == 2 ? EQ_ITEM_BINARY : EQ_ITEM_UNARY) || !is_constant(known, p - 1) ||
        !is_constant(known, p - operands))
        return true;
    const int32_t f = known.operands[p];
    void* const slot = functions_of(es).at(f);
    if (slot == nullptr)
        return true;
    const double* const last = known.constants + p - 1;
    const double value = operands == 2 ? call(slot, last[-1], *last) : call(slot, *last);
    if (is_built_in(f, slot)) {
        replace(known, p, operands, value);
        p -= operands;
        return true;
    }
    program = programs_of(es).at(equation);
    if (p < program.room)
        replace(program, p, operands, value);
    p -= operands;
    return false;
}

/// Folds an equation from position `p` on; false, with what `fold` leaves, after a function of the host.
bool fold_from(const EquationSystem& es, int32_t equation, Program& program, int32_t& p)
{
    const Program known = program;
    for (; p < known.room && known.kinds[p] != EQ_ITEM_END; ++p)
        if (!fold(es, equation, known, program, p, 2) || !fold(es, equation, known, program, p, 1))
            return false;
    return true;
}

} // namespace
} // namespace korvale::equation

using namespace korvale::equation;

int EqSimplify(EquationSystem* es, int equation)
{
    if (es == nullptr || !programs_of(*es).has(equation))
        return -1;
    Program program = programs_of(*es)[equation];
    int32_t p = 0;
    while (!fold_from(*es, equation, program, p)) {
    }
    return 1;
}

int EqSystemSimplify(EquationSystem* es)
{
    if (es == nullptr)
        return -1;
    for (int32_t i = 0; es->equations != nullptr && i < es->equations->count; ++i) // calls may add equations
        if (EqSimplify(es, i) < 0)
            return -(i + 1);
    return 1;
}
