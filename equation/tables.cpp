// A table holds samples of a function without arguments, count rows of dim columns. Each place in an equation that
// names the function reads a column of its own, so the reads of one pass walk along a row; the row position, which all
// tables share, moves smoothly from pass to pass. What a table has no element for is asked of the function itself.
#include "equation/tables.h"

#include <cstdlib>

#include "equation/internal/functions.h"
#include "platform/internal/wrapping.h"

namespace korvale::inside {
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

/// A table as one read sees it.
struct TableRead {
    const DATAstruct* table; ///< null while the function has none
    int64_t rows;
    int64_t columns;
    int64_t column;

    /// Whether the element of a row lies inside the buffer.
    bool has(int64_t row) const
    {
        const int64_t i = row * columns + column;
        return columns > 0 && i >= 0 && i < room(table, DATA_TYPE_DOUBLE);
    }
    double at(int64_t row) const { return table->dvals[row * columns + column]; }
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

/// Calls the function for each element of its table, which the function itself may change meanwhile.
void fill(const EquationSystem& es, int32_t f, DATAstruct& table)
{
    const int64_t n = components(table.count, table.dim);
    for (int64_t i = 0; i < n; ++i) {
        const double sample = call_no_arg(es, f);
        if (i < room(&table, DATA_TYPE_DOUBLE))
            table.dvals[i] = sample;
    }
}

} // namespace
} // namespace korvale::inside

using namespace korvale::inside;

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
        if (is_wrapped(*table) && rows > rows_before) // nobody knows how many rows its memory is for
            table->dvals = nullptr;
        return -1;
    }
    fill(*es, func, *table);
    return 1;
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
    int32_t column = es->table_pos->ivals[func];
    const TableRead read = {table, table == nullptr ? 0 : table->count, columns, column};
    double sample;
    if (find_sample(read, es->table_index, sample))
        column = wrapping_sum(column, 1);
    else
        sample = call_no_arg(*es, func);
    if (column >= columns)
        column = wrapping_difference(column, columns);
    es->table_pos->ivals[func] = column;
    return sample;
}
