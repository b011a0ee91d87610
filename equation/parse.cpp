// An operator-precedence translator from text to postfix items (E. W. Dijkstra, "Algol 60 translation", 1961) with two
// stacks: binary operators and parentheses, which leave by priority, and functions of one argument, which leave when
// the operand or group at their own depth is complete. Both stacks fill from their last entry downward.
#include "equation/parse.h"

#include <algorithm>
#include <cstring>

#include "data/internal/record.h"
#include "equation/internal/functions.h"
#include "equation/internal/number.h"
#include "equation/internal/registry.h"
#include "platform/internal/wrapping.h"

namespace korvale::equation {
namespace {

constexpr int32_t kRowGrowth = 20;   ///< equations for which room is made when the array is full
constexpr int kOpenParenthesis = -1; ///< its code on the operator stack

struct PendingFunction {
    int32_t function;
    int32_t depth; ///< parentheses around it
};

struct Parse {
    DATAstruct& kinds;
    DATAstruct& operands;
    DATAstruct& constants;
    const Functions functions;
    const Variables variables;
    const Initials initials;               ///< of the functions: most variables' names begin otherwise
    int32_t op_codes[kMostWaiting];        ///< in use from `op_top` on
    PendingFunction pending[kMostWaiting]; ///< in use from `pending_top` on
    int op_top = kMostWaiting;
    int pending_top = kMostWaiting;
    int operand_counter = 0;
    int item_pos = 0;
    int depth = 0;
    bool after_operand = false; ///< a "-" that comes now stands between two operands

    Parse(const EquationSystem& es, DATAstruct* const (&items)[kChildren])
        : kinds(*items[0]), operands(*items[1]), constants(*items[2]), functions(functions_of(es)),
          variables(variables_of(es)), initials(functions.names, functions.named)
    {
    }
};

/// Appends an item to arrays that have room for kMostItems; false where they are full.
bool emit(Parse& p, int32_t kind, int32_t operand)
{
    if (p.item_pos >= kMostItems)
        return false;
    p.kinds.ivals[p.item_pos] = kind;
    p.operands.ivals[p.item_pos] = operand;
    ++p.item_pos;
    return true;
}

bool push_function(Parse& p, int32_t function)
{
    if (p.pending_top == 0)
        return false;
    p.pending[--p.pending_top] = {function, p.depth};
    return true;
}

/// Moves the functions whose argument is now complete to the program.
bool close_functions(Parse& p)
{
    while (p.pending_top < kMostWaiting && p.pending[p.pending_top].depth >= p.depth)
        if (!emit(p, EQ_ITEM_UNARY, p.pending[p.pending_top++].function))
            return false;
    return true;
}

bool add_operand(Parse& p, int32_t kind, int32_t operand)
{
    if (!emit(p, kind, operand))
        return false;
    ++p.operand_counter;
    p.after_operand = true;
    return close_functions(p);
}

bool add_number(Parse& p, const char* first, const char* last)
{
    if (p.item_pos >= kMostItems)
        return false;
    p.constants.dvals[p.item_pos] = read_number(first, last);
    return add_operand(p, EQ_ITEM_CONSTANT, -1);
}

/// One more column for the table of a no-argument function: each place in an equation owns one.
void widen_table(const Functions& functions, int32_t f)
{
    auto* const table = static_cast<DATAstruct*>(functions.tables[f]);
    if (table == nullptr)
        return;
    note_room(*table, table->count, table->dim);
    table->dim = wrapping_sum(table->dim, 1);
}

/// What `new_bi_item` does.
bool add_binary(Parse& p, int code)
{
    p.after_operand = false;
    const int priority = op_icp(code);
    while (p.op_top < kMostWaiting && op_isp(p.op_codes[p.op_top]) >= priority)
        if (!emit(p, EQ_ITEM_BINARY, p.op_codes[p.op_top++]) || --p.operand_counter < 1)
            return false;
    if (p.op_top == 0)
        return false;
    p.op_codes[--p.op_top] = code;
    return true;
}

bool add_name(Parse& p, Word name)
{
    const NamePattern pattern(name);
    const NamedFunctions named = p.initials.may_begin(name) ? p.functions.find(pattern) : NamedFunctions();
    if (named.unary >= 0) {
        p.after_operand = false;
        return push_function(p, named.unary);
    }
    if (named.no_arg >= 0) {
        widen_table(p.functions, named.no_arg);
        return add_operand(p, EQ_ITEM_SAMPLE, named.no_arg);
    }
    if (named.binary >= 0)
        return add_binary(p, named.binary);
    const int32_t variable = p.variables.find(pattern);
    return variable >= 0 && add_operand(p, EQ_ITEM_VARIABLE, variable);
}

bool open_group(Parse& p)
{
    ++p.depth;
    return add_binary(p, kOpenParenthesis);
}

/// Ends a group at its ")" or, `at_end`, the whole text.
bool close_group(Parse& p, bool at_end)
{
    while (p.op_top < kMostWaiting && p.op_codes[p.op_top] != kOpenParenthesis) {
        if (!emit(p, EQ_ITEM_BINARY, p.op_codes[p.op_top++]))
            return false;
        if (--p.operand_counter < 1)
            return false;
    }
    const bool is_open = p.op_top < kMostWaiting;
    if (is_open == at_end) // unclosed "(" or unmatched ")"
        return false;
    if (is_open)
        ++p.op_top;
    p.after_operand = true;
    return close_functions(p);
}

bool add_operator(Parse& p, char c)
{
    switch (c) {
    case '+':
        return add_binary(p, kAdd);
    case '*':
        return add_binary(p, kMultiply);
    case '/':
        return add_binary(p, kDivide);
    case '^':
        return add_binary(p, kPower);
    case '-':
        return p.after_operand ? add_binary(p, kSubtract) : push_function(p, kNegate);
    case '(':
        return open_group(p);
    case ')':
        --p.depth;
        return close_group(p, false);
    case '\0':
        return close_group(p, true);
    default:
        return true;
    }
}

/// The end of the name at `first`: at most 12 letters, a 13th starts the next name.
const char* end_of_name(const char* first)
{
    const char* last = first;
    while (is_letter(*last) && static_cast<size_t>(last - first) < kLongestName)
        ++last;
    return last;
}

const char* end_of_number(const char* first)
{
    const char* last = first;
    while (is_number_part(*last))
        ++last;
    return last;
}

/// Translates the text up to and including its terminating zero.
bool scan(Parse& p, const char* at)
{
    for (;;) {
        const char* last = at + 1;
        if (is_letter(*at)) {
            last = end_of_name(at);
            if (!add_name(p, {at, static_cast<size_t>(last - at)}))
                return false;
        } else if (is_number_part(*at)) {
            last = end_of_number(at);
            if (!add_number(p, at, last))
                return false;
            if (is_letter(*last)) // Deliberate: what ends a number is examined as an operator, which a letter is not
                ++last;
        } else if (!add_operator(p, *at)) {
            return false;
        } else if (*at == '\0') {
            return true;
        }
        at = last;
    }
}

/// The variable named by the first word of [first, last), or -1.
int32_t find_target(const Parse& p, const char* first, const char* last)
{
    while (first != last && is_space(*first))
        ++first;
    const char* end = first;
    while (end != last && !is_space(*end))
        ++end;
    const Word name = {first, static_cast<size_t>(end - first)};
    return name.length == 0 ? -1 : p.variables.find(name);
}

/// Adds an empty row to the equations; false, with nothing added, when the heap is exhausted or the memory is a host's.
bool append_row(DATAstruct& equations)
{
    const int32_t row = equations.count;
    if (row < 0 || row >= kMostElements - kRowGrowth)
        return false;
    if ((row + int64_t{1}) * kChildren <= room(&equations, DATA_TYPE_DATA)) {
        equations.count = row + 1;
        return true;
    }
    if (!may_grow(equations))
        return false;
    equations.count = row + 1 + kRowGrowth;
    if (!grow_cleared(equations) || !holds(equations, DATA_TYPE_DATA, int64_t{equations.count} * kChildren)) {
        equations.count = row;
        return false;
    }
    equations.count = row + 1;
    return true;
}

/// Makes the three arrays of the last row; false when the heap is exhausted.
bool make_items(const EquationSystem& es, DATAstruct* (&items)[kChildren])
{
    const int32_t types[kChildren] = {DATA_TYPE_INT, DATA_TYPE_INT, DATA_TYPE_DOUBLE};
    void** const row = es.equations->pvals + (es.equations->count - int64_t{1}) * kChildren;
    for (int32_t child = 0; child < kChildren; ++child) {
        items[child] = new_array(types[child], kMostItems, 1);
        if (items[child] == nullptr)
            return false;
        row[child] = items[child];
    }
    // `count` is kMostItems; with the constant gcc unrolls these fills into single stores.
    std::fill_n(items[0]->ivals, items[0]->count, EQ_ITEM_END);
    std::fill_n(items[1]->ivals, items[1]->count, -1);
    std::fill_n(items[2]->dvals, items[2]->count, 0.0);
    items[0]->count = 0;
    return true;
}

} // namespace
} // namespace korvale::equation

using namespace korvale::equation;

int op_isp(int code)
{
    switch (code) {
    case kOpenParenthesis:
        return 0;
    case kAdd:
    case kSubtract:
        return 2;
    case kMultiply:
    case kDivide:
        return 3;
    case kPower:
        return 4;
    default:
        return 1;
    }
}

int op_icp(int code)
{
    switch (code) {
    case kOpenParenthesis:
    case kPower:
        return 5; // above any waiting operator: a group opens at once, powers group from the right
    default:
        return op_isp(code);
    }
}

int new_bi_item(int code, int* op_top, int* operand_counter, int* item_pos, DATAstruct* kinds, DATAstruct* operands,
                DATAstruct* op_stack)
{
    if (op_top == nullptr || operand_counter == nullptr || item_pos == nullptr || kinds == nullptr ||
        operands == nullptr || op_stack == nullptr)
        return -1;
    const int32_t empty = op_stack->count;
    if (empty > room(op_stack, DATA_TYPE_INT) || *op_top < 0 || *op_top > empty)
        return -1;
    while (*op_top < empty && op_isp(op_stack->ivals[*op_top]) >= op_icp(code)) {
        const int32_t waiting = op_stack->ivals[*op_top];
        *op_top += 1;
        if (*item_pos < 0 || *item_pos >= room(kinds, DATA_TYPE_INT) || *item_pos >= room(operands, DATA_TYPE_INT))
            return -1;
        kinds->ivals[*item_pos] = EQ_ITEM_BINARY;
        operands->ivals[*item_pos] = waiting;
        *item_pos += 1;
        *operand_counter = wrapping_difference(*operand_counter, 1);
        if (*operand_counter < 1)
            return -1;
    }
    if (*op_top == 0)
        return -1;
    *op_top -= 1;
    op_stack->ivals[*op_top] = code;
    return 1;
}

int EqParseEquation(EquationSystem* es, char* text)
{
    if (es == nullptr || text == nullptr || es->equations == nullptr || !append_row(*es->equations))
        return -1;
    DATAstruct* items[kChildren];
    if (!make_items(*es, items))
        return -1;
    char* const equals = std::strchr(text, '=');
    if (equals == nullptr)
        return 1;
    Parse parse(*es, items);
    const int32_t target = find_target(parse, text, equals);
    if (target < 0) {
        *equals = '\0'; // Deliberate: not restored
        return -1;
    }
    emit(parse, EQ_ITEM_TARGET, target);
    if (equals[1] != '\0' && (!scan(parse, equals + 1) || parse.operand_counter > 1))
        return -1;
    parse.kinds.count = parse.item_pos;
    return parse.item_pos;
}
