#pragma once

#include <span>

#include "door/internal/equations.h"
#include "door/internal/heap.h"

namespace korvale::door {

/// Values of one variable where the host keeps them, one a row.
struct Column {
    const char* data;
    int64_t stride; ///< bytes from one value to the next
    int32_t kind;
    int32_t variable;
};

/// Where values of one variable go, one a row; of a single equation its result, whatever `variable` says.
struct ColumnOut {
    char* data;
    int64_t stride; ///< bytes from one value to the next
    int32_t kind;
    int32_t variable;
};

/// Runs one equation for each row, its results to `output`.
void evaluate_rows(korvale_equations& equations, int32_t equation, std::span<const Column> columns,
                   const ColumnOut& output, int64_t rows);

/// Runs all equations for each row, and takes the variables' values after each pass.
void pass_rows(korvale_equations& equations, std::span<const Column> columns, std::span<const ColumnOut> results,
               int64_t rows);

} // namespace korvale::door
