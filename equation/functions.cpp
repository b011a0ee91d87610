// Functions live in five arrays, of which one slot each belongs to a function: pointer, name, number of arguments,
// table and column. They have room for more functions than there are; the count of the pointers alone tells how many
// those are. The built-in functions come first and in a fixed order, which the parser's operators rely on.
#include "equation/functions.h"

#include <cstring>

#include "equation/internal/functions.h"
#include "equation/internal/registry.h"
#include "platform/internal/random.h"

namespace korvale::equation {
namespace {

/// Functions for which room is made when the arrays are full.
constexpr int32_t kGrowth = 20;

/// Whether the arrays of the functions may be replaced by larger ones.
bool may_have_more_functions(const EquationSystem& es)
{
    return may_all_grow({es.funcs, es.func_nargs, es.func_names, es.tables, es.table_pos}) &&
           es.funcs->count < kMostElements - kGrowth;
}

/// Makes room for more functions. Deliberate: where the heap has none, the counts are left raised.
bool grow_functions(EquationSystem& es)
{
    es.funcs->count += kGrowth;
    DATAstruct* const arrays[] = {es.funcs, es.func_nargs, es.func_names, es.tables, es.table_pos};
    for (DATAstruct* array : arrays)
        array->count = es.funcs->count;
    for (DATAstruct* array : arrays)
        if (!grow_cleared(*array))
            return false;
    es.funcs->count -= kGrowth;
    return true;
}

uint8_t* name_slot(const EquationSystem& es, int32_t f)
{
    return es.func_names->bvals + int64_t{f} * kNameBytes;
}

/// Whether formatting the name reads no value: every percent sign is followed by a second one.
bool is_plain_format(const char* name)
{
    for (; *name != '\0'; ++name)
        if (*name == '%' && *++name != '%')
            return false;
    return true;
}

/// Formats a plain name into a slot. The result is never longer than the name.
void format_name(const char* name, uint8_t* slot)
{
    for (; *name != '\0'; ++name) {
        *slot++ = static_cast<uint8_t>(*name);
        if (*name == '%')
            ++name; // the second of a pair
    }
    *slot = 0;
}

/// Registers a function of `nargs` arguments; 1 or -1.
int register_function(EquationSystem* es, const char* name, int32_t nargs, void* function)
{
    if (name == nullptr || function == nullptr || std::strlen(name) > kLongestName || !is_plain_format(name))
        return -1;
    uint8_t formatted[kNameBytes] = {}; // before EqAnotherFunc may move the names, `name` among them
    format_name(name, formatted);
    const int32_t f = EqAnotherFunc(es);
    if (f < 0)
        return -1;
    std::memcpy(name_slot(*es, f), formatted, sizeof formatted);
    es->func_nargs->ivals[f] = nargs;
    es->funcs->pvals[f] = function;
    return 1;
}

// Deliberate: truncated decimals of sqrt(3) and 2 sqrt(3), which bring the sum of four draws to variance 1 and mean 0.
constexpr double kDrawsToUnitVariance = 1.7320508;
constexpr double kMeanOfScaledDraws = 3.4641016;

void seed_generator(int seed)
{
    Mwsrand(static_cast<unsigned>(seed));
}

} // namespace

double normal_of(double sum)
{
    return sum * kDrawsToUnitVariance - kMeanOfScaledDraws;
}

void register_built_ins(EquationSystem& es)
{
    for (const BuiltIn& built_in : kBuiltIns)
        register_function(&es, built_in.name, built_in.nargs, built_in.function.slot());
}

} // namespace korvale::equation

using namespace korvale::equation;

int EqAnotherFunc(EquationSystem* es)
{
    if (es == nullptr || es->funcs == nullptr)
        return -1;
    const int32_t f = es->funcs->count;
    const bool is_full = f >= room(es->funcs, DATA_TYPE_POINTER);
    if (f < 0 || (is_full && !may_have_more_functions(*es)))
        return -1;
    es->funcs->count += 1;
    if (is_full && !grow_functions(*es))
        return -1;
    if (f >= functions_of(*es).named) { // one of the other arrays is shorter
        es->funcs->count = f;
        return -1;
    }
    DATAstruct* const table = DATANew();
    if (table == nullptr)
        return -1;
    table->count = 0;
    table->dim = 0;
    table->type = DATA_TYPE_DOUBLE;
    es->tables->pvals[f] = table;
    es->table_pos->ivals[f] = 0;
    return f;
}

int EqAddFuncBinary(EquationSystem* es, char* name, double (*function)(double, double))
{
    return register_function(es, name, 2, reinterpret_cast<void*>(function));
}

int EqAddFuncUnary(EquationSystem* es, char* name, double (*function)(double))
{
    return register_function(es, name, 1, reinterpret_cast<void*>(function));
}

int EqAddFuncNoArg(EquationSystem* es, char* name, double (*function)())
{
    return register_function(es, name, 0, reinterpret_cast<void*>(function));
}

int EqLookupFunction(EquationSystem* es, char* name)
{
    return es == nullptr || name == nullptr ? -1 : functions_of(*es).find(word_of(name));
}

void EqSeed(int seed)
{
    seed_generator(seed);
}

void gauss_init(int seed)
{
    seed_generator(seed);
}

double EqFuncRand()
{
    return unit_draw();
}

double gauss()
{
    double sum = unit_draw();
    for (int draw = 1; draw < 4; ++draw)
        sum += unit_draw();
    return normal_of(sum);
}

double EqFuncAdd(double a, double b)
{
    return a + b;
}

double EqFuncSubtract(double a, double b)
{
    return a - b;
}

double EqFuncMultiply(double a, double b)
{
    return a * b;
}

double EqFuncDivide(double a, double b)
{
    return b == 0.0 ? 0.0 : a / b;
}

double EqFuncNegate(double a)
{
    return -a;
}
