// A table holds samples of a function without arguments, count rows of dim columns. Each place in an equation that
// names the function reads a column of its own, so the reads of one pass walk along a row; the row position, which all
// tables share, moves smoothly from pass to pass. What a table has no element for is asked of the function itself.
#include "equation/tables.h"

#include <cstdlib>

#include "equation/internal/functions.h"
#include "platform/internal/wrapping.h"

namespace korvale::equation {
namespace {

DATAstruct* table_of(const EquationSystem& es, int32_t f)
{
    return static_cast<DATAstruct*>(es.tables->pvals[f]);
}

bool is_function(const EquationSystem& es, int32_t f)
{
    return f >= 0 && f < usable_count(es.funcs, DATA_TYPE_POINTER) && f < usable_count(es.func_nargs, DATA_TYPE_INT) &&
           f < usable_count(es.tables, DATA_TYPE_DATA) && f < usable_count(es.table_pos, DATA_TYPE_INT);
}

/// A table with columns as one read sees it.
struct TableRead {
    const double* values;
    int64_t held; ///< values that exist
    int64_t rows;
    int64_t columns;
    int64_t column;

    /// Whether the element of a row lies inside the buffer.
    bool has(int64_t row) const
    {
        const int64_t i = row * columns + column;
        return i >= 0 && i < held;
    }
    double at(int64_t row) const { return values[row * columns + column]; }
};

/// The sample the table has at row position `x`; false where only a fresh call can tell.
bool find_sample(const TableRead& read, double x, double& sample)
{
    const auto last = static_cast<double>(read.rows - 1);
    if (x >= 0.0 && x < last) {
        const auto row = static_cast<int64_t>(x);
        const double t = x - static_cast<double>(row);
        if (!read.has(row) || !read.has(row + 1))
            return false;
        sample = (1.0 - t) * read.at(row) + t * read.at(row + 1);
        return true;
    }
    int64_t row;
    if (x > -1.0 && x < 0.0)
        row = 0;
    else if (x > -1.0 && x >= last && x < static_cast<double>(read.rows))
        row = read.rows - 1;
    else
        return false;
    if (!read.has(row))
        return false;
    sample = read.at(row);
    return true;
}

/// Keeps the column that the next read uses.
void keep_column(const EquationSystem& es, int32_t f, int32_t column, int32_t columns)
{
    es.table_pos->ivals[f] = column >= columns ? wrapping_difference(column, columns) : column;
}

/// A fresh call, which may change the table or take everything away; column and columns are those of before.
[[gnu::noinline]] double read_fresh(const EquationSystem& es, int32_t f, int32_t column, int32_t columns)
{
    const double sample = es.func_nargs->ivals[f] == 0 ? call(es.funcs->pvals[f]) : 0.0;
    if (f < usable_count(es.table_pos, DATA_TYPE_INT))
        keep_column(es, f, column, columns);
    return sample;
}

/// Calls the function for each of `n` elements of its table, which the function itself may change meanwhile; false when
/// it has taken the table away.
bool fill(const EquationSystem& es, int32_t f, int64_t n)
{
    for (int64_t i = 0; i < n; ++i) {
        const double sample = call(function_at(es, f));
        DATAstruct* const table = f < usable_count(es.tables, DATA_TYPE_DATA) ? table_of(es, f) : nullptr;
        if (table == nullptr)
            return false;
        if (i < noted_room(*table, DATA_TYPE_DOUBLE))
            table->dvals[i] = sample;
    }
    return true;
}

} // namespace
} // namespace korvale::equation

using namespace korvale::equation;

int EqMakeTable(EquationSystem* es, int func, int rows, int cols)
{
    if (es == nullptr || !is_function(*es, func) || es->func_nargs->ivals[func] != 0)
        return -1;
    DATAstruct* const table = table_of(*es, func);
    if (table == nullptr)
        return -1;
    const int64_t columns = components(table->dim, cols);
    if (std::abs(columns) > kMostElements)
        return -1;
    const int32_t rows_before = table->count, columns_before = table->dim;
    table->count = rows;
    table->type = DATA_TYPE_DOUBLE;
    table->dim = static_cast<int32_t>(columns); // Deliberate: stays when the allocation is refused
    if (DATAAllocate(table) < 0) {
        note_room(*table, rows_before, columns_before);
        return -1;
    }
    return fill(*es, func, components(table->count, table->dim)) ? 1 : -1;
}

int EqMakeTableByName(EquationSystem* es, char* name, int rows, int cols)
{
    return EqMakeTable(es, EqLookupFunction(es, name), rows, cols);
}

void EqSetTableIndex(EquationSystem* es, double index)
{
    if (es != nullptr)
        es->table_index = index;
}

double EqTableRead(EquationSystem* es, int func)
{
    if (es == nullptr || !is_function(*es, func))
        return 0.0;
    const DATAstruct* const table = table_of(*es, func);
    const int32_t columns = table == nullptr ? 0 : table->dim;
    const int32_t column = es->table_pos->ivals[func];
    double sample;
    if (columns < 1 || !find_sample({table->dvals, noted_room(*table, DATA_TYPE_DOUBLE), table->count, columns, column},
                                    es->table_index, sample))
        return read_fresh(*es, func, column, columns);
    keep_column(*es, func, wrapping_sum(column, 1), columns);
    return sample;
}
