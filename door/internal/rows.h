#pragma once

#include <algorithm>
#include <span>

#include "door/internal/columns.h"
#include "door/internal/equations.h"
#include "door/internal/failure.h"

namespace korvale::door {

/// Rows between two reports: a hundredth of all, at most 16,384.
inline int64_t rows_to_tell(int64_t rows)
{
    return std::clamp<int64_t>(rows / 100, 1, 16384);
}

/// Runs one equation for each row, its results to `output`. Where it is stopped the rows before are done, and the
/// variables are those of the last one.
void evaluate_rows(korvale_equations& equations, int32_t equation, std::span<const Column> columns,
                   const ColumnOut& output, int64_t rows, const Telling& telling);

/// Runs all equations for each row, and takes the variables' values after each pass; stopped in the same way.
void pass_rows(korvale_equations& equations, std::span<const Column> columns, std::span<const ColumnOut> results,
               int64_t rows, const Telling& telling);

} // namespace korvale::door
