// A program is in postfix order, so a function whose operands are all constants stands right behind them. One walk
// folds each such function into the first of its constants and goes on from there; what follows moves down. The
// registry's functions are called, whatever they are; variables and samples stay, as they may differ at the next
// evaluation. After a function of the host the program is looked up again.
#include "equation/simplify.h"

#include <cstring>

#include "equation/internal/functions.h"
#include "equation/internal/program.h"

namespace korvale::inside {
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

/// Replaces function `f` at position `p` by its value, and goes back to where that is. False when the function is a
/// host's, which may have changed the equation or taken it away.
[[gnu::always_inline]] inline bool fold(const EquationSystem& es, int32_t equation, const Program& program, int32_t& p,
                                        int32_t operands, int32_t f, const void* slot, double value)
{
    const bool is_known = is_built_in(f, slot);
    if (is_known)
        replace(program, p, operands, value);
    else if (const Program changed = program_at(es, equation); p < changed.room)
        replace(changed, p, operands, value);
    p -= operands;
    return is_known;
}

/// Folds the function at position `p`, if it is of that kind and follows constants only; as `fold`.
bool fold_binary(const EquationSystem& es, int32_t equation, const Program& program, int32_t& p)
{
    if (program.kinds[p] != EQ_ITEM_BINARY || !is_constant(program, p - 1) || !is_constant(program, p - 2))
        return true;
    const int32_t f = program.operands[p];
    void* const slot = function_at(es, f);
    return slot == nullptr ||
           fold(es, equation, program, p, 2, f, slot, call(slot, program.constants[p - 2], program.constants[p - 1]));
}

bool fold_unary(const EquationSystem& es, int32_t equation, const Program& program, int32_t& p)
{
    if (program.kinds[p] != EQ_ITEM_UNARY || !is_constant(program, p - 1))
        return true;
    const int32_t f = program.operands[p];
    void* const slot = function_at(es, f);
    return slot == nullptr || fold(es, equation, program, p, 1, f, slot, call(slot, program.constants[p - 1]));
}

/// Folds an equation from position `p` on; false, with `p` where to go on, after a function of the host.
bool fold_from(const EquationSystem& es, int32_t equation, int32_t& p)
{
    const Program program = program_of(es, equation);
    for (; p < program.room && program.kinds[p] != EQ_ITEM_END; ++p)
        if (!fold_binary(es, equation, program, p) || !fold_unary(es, equation, program, p))
            return false;
    return true;
}

} // namespace
} // namespace korvale::inside

using namespace korvale::inside;

int EqSimplify(EquationSystem* es, int equation)
{
    if (es == nullptr || !is_equation(*es, equation))
        return -1;
    int32_t p = 0;
    while (!fold_from(*es, equation, p) && is_equation(*es, equation)) {
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
