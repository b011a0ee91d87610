#include "equation/internal/variables.h"

#include <cstring>

#include "data/internal/scratch.h"
#include "platform/module_start.h"

namespace korvale {
namespace {

/// The next run of letters from `at` on: [first, first + length), length 0 at the end of the text.
struct Name {
    const char* first;
    size_t length;
};

Name next_name(const char* at)
{
    while (*at != '\0' && !is_letter(*at))
        ++at;
    const char* last = at;
    while (is_letter(*last))
        ++last;
    return {at, static_cast<size_t>(last - at)};
}

int64_t count_names(const char* text)
{
    int64_t n = 0;
    for (Name name = next_name(text); name.length > 0; name = next_name(name.first + name.length))
        ++n;
    return n;
}

/// Names still to be declared, in 13-byte slots like those of `var_names`.
struct NewNames {
    explicit NewNames(int64_t most) : slots(most * kNameBytes) {}

    bool holds(const Name& name) const
    {
        for (int64_t i = 0; i < count; ++i) {
            const char* const slot = slots.get() + i * kNameBytes;
            if (std::memcmp(slot, name.first, name.length) == 0 && slot[name.length] == '\0')
                return true;
        }
        return false;
    }

    void add(const Name& name)
    {
        char* const slot = slots.get() + count * kNameBytes;
        std::memset(slot, 0, kNameBytes);
        std::memcpy(slot, name.first, name.length);
        ++count;
    }

    Scratch<char> slots;
    int64_t count = 0;
};

/// Collects the names of the text that are no variables yet; false for a name that is too long or a function's.
bool collect(const EquationSystem& es, const char* text, NewNames& names)
{
    for (Name name = next_name(text); name.length > 0; name = next_name(name.first + name.length)) {
        if (name.length > kLongestName || find_function(es, name.first, name.length) >= 0)
            return false;
        if (find_variable(es, name.first, name.length) < 0 && !names.holds(name))
            names.add(name);
    }
    return true;
}

bool resize(DATAstruct& d, int32_t count)
{
    d.count = count;
    return DATAReAllocate(&d) > 0 && is_filled(d);
}

/// Changes the three arrays of the variables to `count` of them; false, with the old number, when the heap is exhausted.
bool resize_variables(EquationSystem& es, int32_t count)
{
    const int32_t before = es.var_vals->count;
    if (resize(*es.var_names, count) && resize(*es.var_vals, count) && resize(*es.var_flags, count))
        return true;
    for (DATAstruct* array : {es.var_names, es.var_vals, es.var_flags})
        array->count = before;
    return false;
}

bool append(EquationSystem& es, const NewNames& names, int flag)
{
    const int32_t before = es.var_vals->count;
    const int64_t count = before + names.count;
    if (elements(count, kNameBytes) > kMostElements || !resize_variables(es, static_cast<int32_t>(count)))
        return false;
    std::memcpy(es.var_names->bvals + elements(before, kNameBytes), names.slots.get(),
                static_cast<size_t>(elements(names.count, kNameBytes)));
    const int64_t flags = room(es.var_flags, DATA_TYPE_BYTE);
    for (int64_t v = before; v < count; ++v) {
        es.var_vals->dvals[v] = 0.0;
        if (v < flags)
            es.var_flags->bvals[v] = static_cast<uint8_t>(flag);
    }
    return true;
}

} // namespace

int32_t find_variable(const EquationSystem& es, const char* word, size_t length)
{
    const int64_t named = room(es.var_names, DATA_TYPE_BYTE) / kNameBytes;
    const int64_t count = std::min<int64_t>(named, variable_count(es));
    return find_name(es.var_names, static_cast<int32_t>(count), word, length);
}

int declare_variables(EquationSystem& es, const char* text, int flag)
{
    if (es.var_vals == nullptr)
        return -1;
    const int64_t most = count_names(text);
    if (most == 0)
        return es.var_vals->count;
    NewNames names(most);
    if (!names.slots.exists() || !collect(es, text, names))
        return -1;
    if (names.count > 0 && !append(es, names, flag))
        return -1;
    return es.var_vals->count;
}

} // namespace korvale

int EqLookupVariable(EquationSystem* es, char* name)
{
    return es == nullptr || name == nullptr ? -1 : korvale::find_variable(*es, name, std::strlen(name));
}

void EqSetVariable(EquationSystem* es, int v, double value)
{
    if (es != nullptr && korvale::is_variable(*es, v))
        es->var_vals->dvals[v] = value;
}

double EqReadVariable(EquationSystem* es, int v)
{
    return es != nullptr && korvale::is_variable(*es, v) ? es->var_vals->dvals[v] : 0.0;
}

void EqReserveVariable(EquationSystem* es, int v, int flag)
{
    // Deliberate: the store goes to the integer buffer, which an array of bytes does not have.
    if (es != nullptr && korvale::is_variable(*es, v) && v < korvale::room(es->var_flags, DATA_TYPE_INT))
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
    return es == nullptr || text == nullptr ? -1 : korvale::declare_variables(*es, text, flag);
}
