// A table holds samples of a function without arguments, count rows of dim columns. Each place in an equation that
// names the function reads a column of its own, so the reads of one pass walk along a row; the row position, which all
// tables share, moves smoothly from pass to pass. What a table has no element for is asked of the function itself.
#include "equation/tables.h"

#include <cstdlib>

#include "equation/internal/functions.h"
#include "equation/internal/registry.h"
#include "platform/internal/wrapping.h"

namespace korvale::equation {
namespace {

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

/// The column of the next read, after one of `column` or beyond it.
int32_t next_column(int32_t column, int32_t columns)
{
    return column >= columns ? wrapping_difference(column, columns) : column;
}

/// Calls the function, where it can be called, for a fresh sample. That may change the table or take everything away;
/// column and columns are those of before.
[[gnu::noinline]] double read_fresh(const EquationSystem& es, int32_t f, void* function, int32_t column,
                                    int32_t columns)
{
    const double sample = call(function);
    const Elements<int32_t> next = elements_in<int32_t>(es.table_pos);
    if (f < next.count)
        next.first[f] = next_column(column, columns);
    return sample;
}

/// Calls the function for each of `n` elements of its table, which the function itself may change meanwhile; false when
/// it has taken the table away.
bool fill(const EquationSystem& es, int32_t f, int64_t n)
{
    for (int64_t i = 0; i < n; ++i) {
        const double sample = call(functions_of(es).at(f));
        const Elements<void*> tables = elements_in<void*>(es.tables);
        auto* const table = f < tables.count ? static_cast<DATAstruct*>(tables.first[f]) : nullptr;
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
    if (es == nullptr)
        return -1;
    const Tables tables = tables_of(*es);
    if (!tables.has(func) || tables.nargs[func] != 0 || tables.at(func) == nullptr)
        return -1;
    DATAstruct& table = *tables.at(func);
    const int64_t columns = components(table.dim, cols);
    if (std::abs(columns) > kMostElements)
        return -1;
    const int32_t rows_before = table.count, columns_before = table.dim;
    table.count = rows;
    table.type = DATA_TYPE_DOUBLE;
    table.dim = static_cast<int32_t>(columns); // Deliberate: stays when the allocation is refused
    if (DATAAllocate(&table) < 0) {
        note_room(table, rows_before, columns_before);
        return -1;
    }
    return fill(*es, func, components(table.count, table.dim)) ? 1 : -1;
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
    if (es == nullptr)
        return 0.0;
    const Tables tables = tables_of(*es);
    if (!tables.has(func))
        return 0.0;
    const DATAstruct* const table = tables.at(func);
    const int32_t columns = table == nullptr ? 0 : table->dim;
    const int32_t column = tables.columns[func];
    double sample;
    if (columns < 1 || !find_sample({table->dvals, noted_room(*table, DATA_TYPE_DOUBLE), table->count, columns, column},
                                    es->table_index, sample))
        return read_fresh(*es, func, tables.nargs[func] == 0 ? tables.functions[func] : nullptr, column, columns);
    tables.columns[func] = next_column(wrapping_sum(column, 1), columns);
    return sample;
}
