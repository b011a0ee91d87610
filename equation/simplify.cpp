// A program is in postfix order, so a function whose operands are all constants stands right behind them. One walk
// folds each such function into the first of its constants and goes on from there; what follows moves down. The
// registry's functions are called, whatever they are; variables and samples stay, as they may differ at the next
// evaluation.
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

/// Folds the function at position `p`, if it is of that kind and follows constants only; `p` is then where its value
/// is.
void fold_binary(const EquationSystem& es, const Program& program, int32_t& p)
{
    if (program.kinds[p] != EQ_ITEM_BINARY || !is_constant(program, p - 1) || !is_constant(program, p - 2))
        return;
    const int32_t f = program.operands[p];
    if (function_at(es, f) == nullptr)
        return;
    program.constants[p - 2] = call(es, f, program.constants[p - 2], program.constants[p - 1]);
    move_down(program, p + 1, 2);
    p -= 2;
}

void fold_unary(const EquationSystem& es, const Program& program, int32_t& p)
{
    if (program.kinds[p] != EQ_ITEM_UNARY || !is_constant(program, p - 1))
        return;
    const int32_t f = program.operands[p];
    if (function_at(es, f) == nullptr)
        return;
    program.constants[p - 1] = call(es, f, program.constants[p - 1]);
    move_down(program, p + 1, 1);
    p -= 1;
}

} // namespace

} // namespace korvale::inside

using namespace korvale::inside;

int EqSimplify(EquationSystem* es, int equation)
{
    if (es == nullptr || !is_equation(*es, equation))
        return -1;
    const Program program = program_of(*es, equation);
    for (int32_t p = 0; p < program.room && program.kinds[p] != EQ_ITEM_END; ++p) {
        fold_binary(*es, program, p);
        fold_unary(*es, program, p);
    }
    return 1;
}

int EqSystemSimplify(EquationSystem* es)
{
    if (es == nullptr)
        return -1;
    const int32_t n = es->equations == nullptr ? 0 : es->equations->count;
    for (int32_t i = 0; i < n; ++i)
        if (EqSimplify(es, i) < 0)
            return -(i + 1);
    return 1;
}
