#include "equation/internal/registry.h"

#include <algorithm>
#include <cstring>

#include "equation/internal/built_ins.h"

namespace korvale::inside {
namespace {

/// Functions for which room is made when the arrays are full.
constexpr int32_t kGrowth = 20;

/// Whether the slot holds the word and nothing more.
bool is_name(const uint8_t* slot, const char* word, size_t length)
{
    return std::memcmp(slot, word, length) == 0 && slot[length] == 0;
}

const uint8_t* name_at(const DATAstruct& names, int32_t i)
{
    return names.bvals + components(i, kNameBytes);
}

/// Whether the arrays of the functions may be replaced by larger ones.
bool can_grow(const EquationSystem& es)
{
    for (const DATAstruct* array : {es.funcs, es.func_nargs, es.func_names, es.tables, es.table_pos})
        if (array == nullptr || !may_grow(*array))
            return false;
    return es.funcs->count < kMostElements - kGrowth;
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

/// Whether formatting the name reads no value: every percent sign is followed by a second one.
bool is_plain_format(const char* name)
{
    for (; *name != '\0'; ++name)
        if (*name == '%' && *++name != '%')
            return false;
    return true;
}

/// What formatting the name writes; it is never longer than the name.
void format_name(const char* name, uint8_t* slot)
{
    for (; *name != '\0'; ++name) {
        *slot++ = static_cast<uint8_t>(*name);
        if (*name == '%')
            ++name; // the second of a pair
    }
    *slot = 0;
}

template <class Function, size_t N>
void register_all(EquationSystem& es, int32_t nargs, const BuiltIn<Function> (&functions)[N])
{
    for (const BuiltIn<Function>& built_in : functions)
        register_function(&es, built_in.name, nargs, reinterpret_cast<void*>(built_in.function));
}

} // namespace

bool grow_cleared(DATAstruct& d)
{
    const int64_t held = room(&d, d.type);
    const int64_t wanted = components(d.count, d.dim);
    if (DATAReAllocate(&d) < 0 || !holds(d, d.type, wanted))
        return false;
    if (wanted > held) {
        const size_t bytes = component_bytes(d, d.type);
        auto* const buffer = static_cast<unsigned char*>(buffer_of(d, d.type));
        std::memset(buffer + static_cast<size_t>(held) * bytes, 0, static_cast<size_t>(wanted - held) * bytes);
    }
    return true;
}

int32_t careful_length(const DATAstruct* d, int32_t type)
{
    const int64_t held = room(d, type);
    return held < 1 || d->count < 1 ? 0 : static_cast<int32_t>(std::min<int64_t>(held, d->count));
}

int32_t find_name(const DATAstruct* names, int32_t count, const char* word, size_t length)
{
    if (length > kLongestName)
        return -1;
    for (int32_t i = 0; i < count; ++i)
        if (is_name(name_at(*names, i), word, length))
            return i;
    return -1;
}

int32_t function_count(const EquationSystem& es)
{
    const int64_t present = std::min({room(es.funcs, DATA_TYPE_POINTER), room(es.func_nargs, DATA_TYPE_INT),
                                      room(es.func_names, DATA_TYPE_BYTE) / kNameBytes, room(es.tables, DATA_TYPE_DATA),
                                      room(es.table_pos, DATA_TYPE_INT)});
    return present < 1 ? 0 : static_cast<int32_t>(std::min<int64_t>(present, es.funcs->count));
}

int32_t find_function(const EquationSystem& es, const char* word, size_t length)
{
    return find_name(es.func_names, function_count(es), word, length);
}

NamedFunctions find_named_functions(const EquationSystem& es, const char* word, size_t length)
{
    NamedFunctions found;
    const int32_t n = function_count(es);
    for (int32_t i = 0; i < n; ++i) {
        if (!is_name(name_at(*es.func_names, i), word, length))
            continue;
        switch (es.func_nargs->ivals[i]) {
        case 1:
            found.unary = i;
            return found; // a function of one argument comes before all others
        case 0:
            if (found.no_arg < 0)
                found.no_arg = i;
            break;
        case 2:
            if (found.binary < 0)
                found.binary = i;
            break;
        default:
            break;
        }
    }
    return found;
}

double call_no_arg(const EquationSystem& es, int32_t f)
{
    const auto function = reinterpret_cast<NoArgFunction>(function_at(es, f));
    if (function == nullptr || f >= length(es.func_nargs, DATA_TYPE_INT) || es.func_nargs->ivals[f] != 0)
        return 0.0;
    return function();
}

int register_function(EquationSystem* es, const char* name, int32_t nargs, void* function)
{
    if (name == nullptr || function == nullptr || std::strlen(name) > kLongestName || !is_plain_format(name))
        return -1;
    const int32_t f = EqAnotherFunc(es);
    if (f < 0)
        return -1;
    format_name(name, es->func_names->bvals + components(f, kNameBytes));
    es->func_nargs->ivals[f] = nargs;
    es->funcs->pvals[f] = function;
    return 1;
}

void register_built_ins(EquationSystem& es)
{
    register_all(es, 2, kOperators);
    register_all(es, 1, kUnaryFunctions);
    register_all(es, 0, kDraws);
    register_all(es, 2, kAngle);
}

} // namespace korvale::inside

using namespace korvale::inside;

int EqAnotherFunc(EquationSystem* es)
{
    if (es == nullptr || es->funcs == nullptr)
        return -1;
    const int32_t f = es->funcs->count;
    const bool is_full = f >= room(es->funcs, DATA_TYPE_POINTER);
    if (f < 0 || (is_full && !can_grow(*es)))
        return -1;
    es->funcs->count += 1;
    if (is_full && !grow_functions(*es))
        return -1;
    if (f >= function_count(*es)) { // one of the other arrays is shorter
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
    return es == nullptr || name == nullptr ? -1 : find_function(*es, name, std::strlen(name));
}
