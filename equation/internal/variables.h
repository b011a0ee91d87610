#pragma once

#include <cstdint>

#include "data/internal/lists.h"
#include "equation/internal/names.h"
#include "equation/system.h"

namespace korvale::equation {

/// Variables that have a value.
inline int32_t variable_count(const EquationSystem& es)
{
    return usable_count(es.var_vals, DATA_TYPE_DOUBLE);
}

inline bool is_variable(const EquationSystem& es, int32_t v)
{
    return v >= 0 && v < variable_count(es);
}

/// Variables that have a value and a name.
int32_t named_count(const EquationSystem& es);

/// The lowest index of the variable of that name, or -1.
int32_t find_variable(const EquationSystem& es, Word name);

/// Whether variable `v` keeps its value until the end of a pass.
inline bool is_reserved(const EquationSystem& es, int32_t v)
{
    return v < usable_count(es.var_flags, DATA_TYPE_BYTE) && es.var_flags->bvals[v] != 0;
}

} // namespace korvale::equation
