#pragma once

#include <algorithm>
#include <cstdint>

#include "data/internal/lists.h"
#include "equation/internal/names.h"
#include "equation/internal/program.h"
#include "equation/system.h"

// What a system holds, as views of its lists. An exported function makes the views that it needs in its first lines,
// and nothing below it asks a list what is there. Making a view costs what is read of it: the compiler drops the rest.
//
// A view serves until the lists may have changed: by a declaration, a registration, a parse, or a function of the host.
// After these it is made again.
namespace korvale::equation {

/// The variables.
struct Variables {
    double* values; // [count]
    int32_t count;
    const uint8_t* names; // [named][13]
    int32_t named;        // at most `count`
    const uint8_t* flags; // [flagged]; not 0 keeps the value until the end of a pass
    int32_t flagged;

    bool has(int32_t v) const { return v >= 0 && v < count; }
    bool is_reserved(int32_t v) const { return v < flagged && flags[v] != 0; }

    /// The lowest index of the variable of that name, or -1.
    int32_t find(Word name) const { return named == 0 ? -1 : find_name(names, named, name); }
    int32_t find(const NamePattern& name) const { return find_name(names, named, name); }
};

inline Variables variables_of(const EquationSystem& es)
{
    const Elements<double> values = elements_in<double>(es.var_vals);
    const Elements<uint8_t> flags = elements_in<uint8_t>(es.var_flags);
    const int64_t names = room(es.var_names, DATA_TYPE_BYTE) / kNameBytes;
    const auto named = static_cast<int32_t>(std::clamp<int64_t>(names, 0, values.count));
    return {values.first, values.count, buffer_in<uint8_t>(es.var_names), named, flags.first, flags.count};
}

/// The functions an equation can mean by a name: the lowest index for each number of arguments, or -1.
struct NamedFunctions {
    int32_t unary = -1;
    int32_t no_arg = -1;
    int32_t binary = -1;
};

/// The functions.
struct Functions {
    void** slots; // [count] what is called, or null
    int32_t count;
    int32_t named;        // those that all five lists have room for, which can be looked up
    const uint8_t* names; // [named][13]
    const int32_t* nargs; // [named]
    void* const* tables;  // [named] the sample table of each, or null

    /// What is called; null for an index that is no function's.
    void* at(int32_t f) const { return f >= 0 && f < count ? slots[f] : nullptr; }

    /// The lowest index of the function of that name, or -1.
    int32_t find(Word name) const { return named == 0 ? -1 : find_name(names, named, name); }
    NamedFunctions find(const NamePattern& name) const;
};

/// The functions of `count` that all five lists have room for.
[[gnu::pure]] int32_t named_functions(const EquationSystem& es, int32_t count);

inline Functions functions_of(const EquationSystem& es)
{
    const Elements<void*> slots = elements_in<void*>(es.funcs);
    return {slots.first,
            slots.count,
            named_functions(es, slots.count),
            buffer_in<uint8_t>(es.func_names),
            buffer_in<int32_t>(es.func_nargs),
            buffer_in<void*>(es.tables)};
}

/// The functions that can have a sample table: those that four of their lists count.
struct Tables {
    int32_t count;
    void* const* functions; // [count] what is called, or null
    const int32_t* nargs;   // [count]
    void* const* tables;    // [count] `DATAstruct`, or null
    int32_t* columns;       // [count] that the next read uses

    bool has(int32_t f) const { return f >= 0 && f < count; }
    DATAstruct* at(int32_t f) const { return static_cast<DATAstruct*>(tables[f]); }
};

inline Tables tables_of(const EquationSystem& es)
{
    const Elements<void*> functions = elements_in<void*>(es.funcs), tables = elements_in<void*>(es.tables);
    const Elements<int32_t> nargs = elements_in<int32_t>(es.func_nargs), columns = elements_in<int32_t>(es.table_pos);
    const int32_t count = std::min({functions.count, tables.count, nargs.count, columns.count});
    return {count, functions.first, nargs.first, tables.first, columns.first};
}

/// The equations.
struct Programs {
    void* const* rows; // [count][3] the lists of each
    int32_t count;

    bool has(int32_t equation) const { return equation >= 0 && equation < count; }

    /// The items of an equation that exists.
    Program operator[](int32_t equation) const { return program_in(rows + int64_t{equation} * kChildren); }

    /// The items of an equation, none where it does not exist.
    Program at(int32_t equation) const { return has(equation) ? (*this)[equation] : Program(); }
};

inline Programs programs_of(const EquationSystem& es)
{
    const Elements<void*> rows = elements_in<void*>(es.equations, kChildren);
    return {rows.first, rows.count};
}

} // namespace korvale::equation
