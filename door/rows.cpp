// Equations over columns: in blocks where that gives the same, else row by row.
#include "door/internal/rows.h"

#include "door/internal/blocks.h"
#include "equation/evaluate.h"

namespace korvale::door {
namespace {

/// Gives the variables the values of a row. A host's function may have moved the variables since the last one.
void load(EquationSystem& es, std::span<const Column> columns, int64_t row)
{
    for (const Column& column : columns)
        es.var_vals->dvals[column.variable] = value_at(column, row);
}

void require_not_stopped(const korvale_equations& equations)
{
    if (equations.is_stopped)
        throw Stop();
}

/// Calls `work` for each row, and a host's progress now and then.
template <class Work>
void for_each_row(int64_t rows, const Telling& telling, Work work)
{
    for (int64_t row = 0, next = 0; row < rows; ++row) {
        if (row == next) {
            telling.tell(static_cast<double>(row) / static_cast<double>(rows));
            next += rows_to_tell(rows);
        }
        work(row);
    }
    telling.tell(1.0);
}

} // namespace

void evaluate_rows(korvale_equations& equations, int32_t equation, std::span<const Column> columns,
                   const ColumnOut& output, int64_t rows, const Telling& telling)
{
    EquationSystem& es = equations.record;
    if (run_in_blocks(equations, equation, columns, std::span(&output, 1), rows, telling))
        return;
    for_each_row(rows, telling, [&](int64_t row) {
        load(es, columns, row);
        const double result = EqEvaluate(&es, equation);
        require_not_stopped(equations);
        put_value(output, row, result);
    });
}

void pass_rows(korvale_equations& equations, std::span<const Column> columns, std::span<const ColumnOut> results,
               int64_t rows, const Telling& telling)
{
    EquationSystem& es = equations.record;
    if (run_in_blocks(equations, kAllEquations, columns, results, rows, telling))
        return;
    for_each_row(rows, telling, [&](int64_t row) {
        load(es, columns, row);
        require_done(EqSystemEvaluate(&es));
        require_not_stopped(equations);
        for (const ColumnOut& result : results)
            put_value(result, row, es.var_vals->dvals[result.variable]);
    });
}

} // namespace korvale::door
