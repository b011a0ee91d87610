// Variables live in three arrays, which are as long as there are variables: names, values, flags. A list of names is
// first collected, so that a name which is refused leaves all as it was, and then appended at once.
#include "equation/variables.h"

#include <algorithm>
#include <cstring>

#include "equation/internal/registry.h"

namespace korvale::equation {
namespace {

int64_t count_names(const char* text)
{
    int64_t n = 0;
    for (Word name = next_run_of_letters(text); name.length > 0; name = next_run_of_letters(name.first + name.length))
        ++n;
    return n;
}

/// Collects the names of the text that are no variables yet; false for a name that is too long or a function's.
bool collect(const Functions& functions, const char* text, Names& names)
{
    for (Word name = next_run_of_letters(text); name.length > 0; name = next_run_of_letters(name.first + name.length)) {
        if (name.length > kLongestName || functions.find(name) >= 0)
            return false;
        names.add_unless_known(name);
    }
    return true;
}

bool grow_to(DATAstruct& d, int32_t count, int32_t type, int32_t dim)
{
    d.count = count;
    return grow_cleared(d) && holds(d, type, components(count, dim));
}

/// Changes the three arrays of the variables to `count` of them; false, with the old number, when the heap is
/// exhausted.
bool resize_variables(EquationSystem& es, int32_t count)
{
    const int32_t before = es.var_vals->count;
    if (grow_to(*es.var_names, count, DATA_TYPE_BYTE, kNameBytes) &&
        grow_to(*es.var_vals, count, DATA_TYPE_DOUBLE, 1) && grow_to(*es.var_flags, count, DATA_TYPE_BYTE, 1))
        return true;
    for (DATAstruct* array : {es.var_names, es.var_vals, es.var_flags})
        array->count = before;
    return false;
}

bool append(EquationSystem& es, const Names& names, int flag)
{
    const int32_t before = es.var_vals->count;
    const int64_t count = before + names.count();
    if (!may_all_grow({es.var_names, es.var_vals, es.var_flags}) || before < 0 ||
        components(count, kNameBytes) > kMostElements || !resize_variables(es, static_cast<int32_t>(count)))
        return false;
    std::memcpy(es.var_names->bvals + int64_t{before} * kNameBytes, names.added(),
                static_cast<size_t>(names.count() * kNameBytes));
    for (int64_t v = before; v < count; ++v) {
        es.var_vals->dvals[v] = 0.0;
        es.var_flags->bvals[v] = static_cast<uint8_t>(flag);
    }
    return true;
}

} // namespace
} // namespace korvale::equation

using namespace korvale::equation;

int EqLookupVariable(EquationSystem* es, char* name)
{
    return es == nullptr || name == nullptr ? -1 : variables_of(*es).find(word_of(name));
}

void EqSetVariable(EquationSystem* es, int v, double value)
{
    if (es == nullptr)
        return;
    const Variables variables = variables_of(*es);
    if (variables.has(v))
        variables.values[v] = value;
}

double EqReadVariable(EquationSystem* es, int v)
{
    if (es == nullptr)
        return 0.0;
    const Variables variables = variables_of(*es);
    return variables.has(v) ? variables.values[v] : 0.0;
}

void EqReserveVariable(EquationSystem* es, int v, int flag)
{
    // Deliberate: the store goes to the integer buffer, which an array of bytes does not have.
    if (es != nullptr && variables_of(*es).has(v) && v < room(es->var_flags, DATA_TYPE_INT))
        es->var_flags->ivals[v] = flag;
}

int EqSetVariableByName(EquationSystem* es, char* name, double value)
{
    const int v = EqLookupVariable(es, name);
    if (v < 0)
        return -1;
    EqSetVariable(es, v, value);
    return 1;
}

double EqReadVariableByName(EquationSystem* es, char* name)
{
    return EqReadVariable(es, EqLookupVariable(es, name));
}

int EqReserveVariableByName(EquationSystem* es, char* name, int flag)
{
    const int v = EqLookupVariable(es, name);
    if (v < 0)
        return -1;
    EqReserveVariable(es, v, flag);
    return 1;
}

int EqParseVariables(EquationSystem* es, char* text, int flag)
{
    if (es == nullptr || text == nullptr || es->var_vals == nullptr)
        return -1;
    const int64_t most = count_names(text);
    if (most == 0)
        return es->var_vals->count;
    const Variables variables = variables_of(*es);
    Names names(variables.names, variables.named, most);
    if (!names.exists() || !collect(functions_of(*es), text, names))
        return -1;
    if (names.count() > 0 && !append(*es, names, flag))
        return -1;
    return es->var_vals->count;
}
