#include "equation/internal/variables.h"

#include <algorithm>
#include <cstring>

#include "platform/internal/scratch.h"

namespace korvale::inside {
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

/// Variables that have a value and a name.
int32_t named_count(const EquationSystem& es)
{
    const int64_t named = room(es.var_names, DATA_TYPE_BYTE) / kNameBytes;
    return static_cast<int32_t>(std::min<int64_t>(named, variable_count(es)));
}

/// A text with no more names than this is compared name by name.
constexpr int64_t kFewNames = 8;

bool is_name(const char* slot, const Name& name)
{
    return std::memcmp(slot, name.first, name.length) == 0 && slot[name.length] == '\0';
}

size_t hash_of(const Name& name) // 64-bit FNV-1a (G. Fowler, L. C. Noll, K.-P. Vo)
{
    uint64_t hash = 0xcbf29ce484222325u;
    for (size_t i = 0; i < name.length; ++i)
        hash = (hash ^ static_cast<unsigned char>(name.first[i])) * 0x100000001b3u;
    return static_cast<size_t>(hash ^ hash >> 32);
}

/// The variables there are, followed by the names to be declared, in 13-byte slots like those of `var_names`. Long
/// lists are found by a hash table with linear probing; entry -1 of it is free.
class Names {
public:
    Names(const EquationSystem& es, int64_t most)
        : es_(es), before_(named_count(es)), added_(most * kNameBytes),
          entries_(most > kFewNames ? table_size(before_ + most) : 0),
          mask_(static_cast<size_t>(table_size(before_ + most)) - 1), is_hashed_(most > kFewNames)
    {
    }

    bool exists() const { return added_.exists() && (!is_hashed_ || entries_.exists()); }

    /// Enters the variables into the hash table.
    void start()
    {
        if (!is_hashed_)
            return;
        for (size_t entry = 0; entry <= mask_; ++entry)
            entries_[static_cast<int64_t>(entry)] = -1;
        for (int64_t i = 0; i < before_; ++i) {
            const char* const slot = slot_at(i);
            enter({slot, strnlen(slot, kLongestName)}, i);
        }
    }

    void add_unless_known(const Name& name)
    {
        if (is_hashed_ ? !enter(name, before_ + count_) : is_listed(name))
            return;
        char* const slot = added_.get() + count_ * kNameBytes;
        std::memset(slot, 0, kNameBytes);
        std::memcpy(slot, name.first, name.length);
        ++count_;
    }

    int64_t count() const { return count_; }
    const char* added() const { return added_.get(); }

private:
    /// A power of two that leaves at least half of the table free.
    static int64_t table_size(int64_t names)
    {
        int64_t size = 2;
        while (size < 2 * names)
            size *= 2;
        return size;
    }

    const char* slot_at(int64_t i) const
    {
        return i < before_ ? reinterpret_cast<const char*>(es_.var_names->bvals) + i * kNameBytes
                           : added_.get() + (i - before_) * kNameBytes;
    }

    /// Enters the name as number `i`; false where it is known.
    bool enter(const Name& name, int64_t i)
    {
        for (size_t entry = hash_of(name) & mask_;; entry = (entry + 1) & mask_) {
            int32_t& number = entries_[static_cast<int64_t>(entry)];
            if (number < 0) {
                number = static_cast<int32_t>(i);
                return true;
            }
            if (is_name(slot_at(number), name))
                return false;
        }
    }

    bool is_listed(const Name& name) const
    {
        if (find_variable(es_, name.first, name.length) >= 0)
            return true;
        for (int64_t i = 0; i < count_; ++i)
            if (is_name(slot_at(before_ + i), name))
                return true;
        return false;
    }

    const EquationSystem& es_;
    int64_t before_;
    int64_t count_ = 0;
    Scratch<char> added_;
    Scratch<int32_t> entries_;
    size_t mask_;
    bool is_hashed_;
};

/// Collects the names of the text that are no variables yet; false for a name that is too long or a function's.
bool collect(const EquationSystem& es, const char* text, Names& names)
{
    names.start();
    for (Name name = next_name(text); name.length > 0; name = next_name(name.first + name.length)) {
        if (name.length > kLongestName || find_function(es, name.first, name.length) >= 0)
            return false;
        names.add_unless_known(name);
    }
    return true;
}

/// Whether variables can be appended: the arrays exist and belong to the library.
bool can_grow(const EquationSystem& es)
{
    for (const DATAstruct* array : {es.var_names, es.var_vals, es.var_flags})
        if (array == nullptr || !may_grow(*array))
            return false;
    return es.var_vals->count >= 0;
}

bool resize(DATAstruct& d, int32_t count, int32_t type, int32_t dim)
{
    d.count = count;
    return grow_cleared(d) && holds(d, type, components(count, dim));
}

/// Changes the three arrays of the variables to `count` of them; false, with the old number, when the heap is
/// exhausted.
bool resize_variables(EquationSystem& es, int32_t count)
{
    const int32_t before = es.var_vals->count;
    if (resize(*es.var_names, count, DATA_TYPE_BYTE, kNameBytes) && resize(*es.var_vals, count, DATA_TYPE_DOUBLE, 1) &&
        resize(*es.var_flags, count, DATA_TYPE_BYTE, 1))
        return true;
    for (DATAstruct* array : {es.var_names, es.var_vals, es.var_flags})
        array->count = before;
    return false;
}

bool append(EquationSystem& es, const Names& names, int flag)
{
    const int32_t before = es.var_vals->count;
    const int64_t count = before + names.count();
    if (!can_grow(es) || components(count, kNameBytes) > kMostElements ||
        !resize_variables(es, static_cast<int32_t>(count)))
        return false;
    std::memcpy(es.var_names->bvals + components(before, kNameBytes), names.added(),
                static_cast<size_t>(components(names.count(), kNameBytes)));
    for (int64_t v = before; v < count; ++v) {
        es.var_vals->dvals[v] = 0.0;
        es.var_flags->bvals[v] = static_cast<uint8_t>(flag);
    }
    return true;
}

} // namespace

int32_t find_variable(const EquationSystem& es, const char* word, size_t length)
{
    return find_name(es.var_names, named_count(es), word, length);
}

int declare_variables(EquationSystem& es, const char* text, int flag)
{
    if (es.var_vals == nullptr)
        return -1;
    const int64_t most = count_names(text);
    if (most == 0)
        return es.var_vals->count;
    Names names(es, most);
    if (!names.exists() || !collect(es, text, names))
        return -1;
    if (names.count() > 0 && !append(es, names, flag))
        return -1;
    return es.var_vals->count;
}

} // namespace korvale::inside

using namespace korvale::inside;

int EqLookupVariable(EquationSystem* es, char* name)
{
    return es == nullptr || name == nullptr ? -1 : find_variable(*es, name, std::strlen(name));
}

void EqSetVariable(EquationSystem* es, int v, double value)
{
    if (es != nullptr && is_variable(*es, v))
        es->var_vals->dvals[v] = value;
}

double EqReadVariable(EquationSystem* es, int v)
{
    return es != nullptr && is_variable(*es, v) ? es->var_vals->dvals[v] : 0.0;
}

void EqReserveVariable(EquationSystem* es, int v, int flag)
{
    // Deliberate: the store goes to the integer buffer, which an array of bytes does not have.
    if (es != nullptr && is_variable(*es, v) && v < room(es->var_flags, DATA_TYPE_INT))
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
    return es == nullptr || text == nullptr ? -1 : declare_variables(*es, text, flag);
}
