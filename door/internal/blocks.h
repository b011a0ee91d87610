#pragma once

#include <span>

#include "door/internal/plan.h"
#include "door/internal/rows.h"

namespace korvale::door {

/// Runs an equation, or all of them where it is kAllEquations, for each row as `evaluate_rows` and `pass_rows` do, a
/// block of rows at a time. False, with nothing done, where that could give anything else than row by row; which of the
/// two it was stays in `equations`.
bool run_in_blocks(korvale_equations& equations, int32_t equation, std::span<const Column> columns,
                   std::span<const ColumnOut> outputs, int64_t rows, const Telling& telling);

} // namespace korvale::door
