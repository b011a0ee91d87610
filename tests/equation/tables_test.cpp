// Tables of samples: made, read, interpolated, and gone.
#include "equation/tables.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <initializer_list>
#include <limits>
#include <utility>

#include <gtest/gtest.h>

#include "tests/equation/system.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"

namespace korvale::test {
namespace {

int calls;

/// 1, 2, 3, ...
double counter()
{
    return ++calls;
}

double fresh()
{
    return -1000;
}

/// A system with the no-argument function COUNT, index 18, whose table is rows x columns of 1, 2, 3, ...
struct Tabulated : System {
    Tabulated(int rows, int columns)
    {
        calls = 0;
        add("COUNT", counter);
        declare("y");
        for (int c = 0; c < columns; ++c)
            parse("y = COUNT");
        if (EqMakeTable(get(), 18, rows, 1) != 1)
            std::abort();
        get()->funcs->pvals[18] = reinterpret_cast<void*>(fresh);
    }

    double read(double index)
    {
        EqSetTableIndex(get(), index);
        return EqTableRead(get(), 18);
    }
    int position() { return get()->table_pos->ivals[18]; }
};

TEST(EqMakeTable, RefusesAFunctionWithArguments)
{
    System es;
    es.table(6)->dim = 1;
    es.table(0)->dim = 1;
    EXPECT_EQ(EqMakeTable(es, 6, 4, 1), -1);
    EXPECT_EQ(EqMakeTable(es, 0, 4, 1), -1);
    EXPECT_EQ(es.table(6)->count, 0);
    EXPECT_EQ(es.table(6)->dim, 1);
}

TEST(EqMakeTable, RefusesAFreshFunctionButKeepsTheRows)
{
    System es;
    es.add("COUNT", counter);
    EXPECT_EQ(EqMakeTable(es, 18, 4, 3), -1);
    EXPECT_EQ(es.table(18)->count, 4);
    EXPECT_EQ(es.table(18)->dim, 0);
    EXPECT_EQ(es.table(18)->type, DATA_TYPE_DOUBLE);
    EXPECT_EQ(es.table(18)->dvals, nullptr);
}

TEST(EqMakeTable, FillsRowsTimesMultipliedColumnsInOrder)
{
    Tabulated es(2, 3);
    EXPECT_EQ(es.table(18)->count, 2);
    EXPECT_EQ(es.table(18)->dim, 3);
    EXPECT_EQ(calls, 6);
    EXPECT_TRUE(same_bits({1, 2, 3, 4, 5, 6}, es.table(18)->dvals));
}

TEST(EqMakeTable, MultipliesTheColumnsEveryTime)
{
    Tabulated es(2, 3);
    EXPECT_EQ(EqMakeTable(es, 18, 1, 2), 1);
    EXPECT_EQ(es.table(18)->count, 1);
    EXPECT_EQ(es.table(18)->dim, 6);
    EXPECT_EQ(EqMakeTable(es, 18, 1, -2), -1);
    EXPECT_EQ(es.table(18)->dim, -12);
    EXPECT_EQ(EqMakeTable(es, 18, 1, -1), 1);
    EXPECT_EQ(es.table(18)->dim, 12);
}

TEST(EqMakeTable, ARefusedTableKeepsRowsAndMultipliedColumns)
{
    Tabulated es(2, 3);
    EXPECT_EQ(EqMakeTable(es, 18, 0, 2), -1);
    EXPECT_EQ(es.table(18)->count, 0);
    EXPECT_EQ(es.table(18)->dim, 6);
    EXPECT_EQ(EqMakeTable(es, 18, -7, 2), -1);
    EXPECT_EQ(es.table(18)->count, -7);
    EXPECT_EQ(es.table(18)->dim, 12);
    EXPECT_EQ(EqMakeTable(es, 18, 1 << 30, 1), -1); // more than 2^31 - 1 elements
    EXPECT_EQ(es.table(18)->count, 1 << 30);
    EXPECT_EQ(es.table(18)->dim, 12);
    EXPECT_EQ(EqMakeTable(es, 18, 5, 0), -1);
    EXPECT_EQ(es.table(18)->count, 5);
    EXPECT_EQ(es.table(18)->dim, 0);
}

TEST(EqMakeTable, ColumnsBeyondThirtyOneBitsChangeNothing)
{
    Tabulated es(2, 3);
    for (int columns : {2147483647, -2147483647, 715827883}) {
        EXPECT_EQ(EqMakeTable(es, 18, 9, columns), -1);
        EXPECT_EQ(es.table(18)->count, 2);
        EXPECT_EQ(es.table(18)->dim, 3);
    }
    EXPECT_EQ(EqMakeTable(es, 18, 9, 715827882), -1); // 2147483646 columns are a number
    EXPECT_EQ(es.table(18)->count, 9);
    EXPECT_EQ(es.table(18)->dim, 2147483646);
}

TEST(EqMakeTable, AnIndexThatIsNoFunctionsFails)
{
    System es;
    for (int f : {-1, 18, 20, 1000000})
        EXPECT_EQ(EqMakeTable(es, f, 1, 1), -1);
}

TEST(EqMakeTable, AnExhaustedHeapLeavesATableThatReadsFresh)
{
    NEEDS_HEAP_FAILURES();
    System es;
    es.add("F", fresh);
    es.declare("y");
    es.parse("y = F");
    {
        const korvale::test::HeapFailure failure(1);
        EXPECT_EQ(EqMakeTable(es, 18, 100, 1), -1);
        EXPECT_TRUE(failure.happened());
    }
    EXPECT_EQ(es.table(18)->count, 100);
    EXPECT_EQ(EqTableRead(es, 18), -1000.0);
    EXPECT_EQ(EqMakeTable(es, 18, 10, 1), 1);
    EXPECT_EQ(es.table(18)->dvals[9], -1000.0);
}

TEST(EqMakeTableByName, FindsTheFunction)
{
    System es;
    es.declare("y");
    es.parse("y = RAND");
    char rand[] = "RAND", sin[] = "SIN", unknown[] = "NONE";
    EXPECT_EQ(EqMakeTableByName(es, rand, 4, 1), 1);
    EXPECT_EQ(EqMakeTableByName(es, sin, 4, 1), -1);
    EXPECT_EQ(EqMakeTableByName(es, unknown, 4, 1), -1);
    EXPECT_EQ(es.table(15)->count, 4);
}

TEST(EqTableRead, InterpolatesBetweenTwoRows)
{
    Tabulated es(3, 1);
    EXPECT_TRUE(same_bits(1.0, es.read(0.0)));
    EXPECT_TRUE(same_bits((1 - 0.25) * 1.0 + 0.25 * 2.0, es.read(0.25)));
    EXPECT_TRUE(same_bits((1 - 0.5) * 2.0 + 0.5 * 3.0, es.read(1.5)));
    EXPECT_TRUE(same_bits(2.0, es.read(1.0)));
}

TEST(EqTableRead, ReadsTheEndRowsAroundTheTable)
{
    Tabulated es(3, 1);
    EXPECT_EQ(es.read(-0.5), 1.0);
    EXPECT_EQ(es.read(std::nextafter(-1.0, 0.0)), 1.0);
    EXPECT_EQ(es.read(-0.0), 1.0);
    EXPECT_EQ(es.read(2.0), 3.0);
    EXPECT_EQ(es.read(2.5), 3.0);
    EXPECT_EQ(es.read(std::nextafter(3.0, 0.0)), 3.0);
}

TEST(EqTableRead, CallsTheFunctionBeyondTheTable)
{
    Tabulated es(3, 2);
    const double infinity = std::numeric_limits<double>::infinity();
    for (double index : {-1.0, -1.5, 3.0, 3.5, 1e300, infinity, -infinity, std::nan("")}) {
        EXPECT_EQ(es.read(index), -1000.0) << index;
        EXPECT_EQ(es.position(), 0) << index;
    }
}

TEST(EqTableRead, WalksAlongTheColumnsAndWraps)
{
    Tabulated es(2, 3);
    const double walk[] = {1, 2, 3, 1, 2};
    for (double expected : walk)
        EXPECT_EQ(es.read(0.0), expected);
    EXPECT_EQ(es.position(), 2);
    EXPECT_EQ(es.read(7.0), -1000.0);
    EXPECT_EQ(es.position(), 2);
    EXPECT_EQ(es.read(1.0), 6.0);
    EXPECT_EQ(es.position(), 0);
    EXPECT_EQ(es.read(-0.5), 1.0);
    EXPECT_EQ(es.position(), 1);
    EXPECT_EQ(es.read(0.5), 0.5 * 2.0 + 0.5 * 5.0);
    EXPECT_EQ(es.position(), 2);
}

TEST(EqTableRead, ATableOfOneRow)
{
    Tabulated es(1, 1);
    EXPECT_EQ(es.read(0.0), 1.0);
    EXPECT_EQ(es.read(0.75), 1.0);
    EXPECT_EQ(es.read(-0.75), 1.0);
    EXPECT_EQ(es.read(1.0), -1000.0);
    EXPECT_EQ(es.read(-1.0), -1000.0);
}

TEST(EqTableRead, WithoutATableCallsTheFunction)
{
    System es;
    es.add("F", fresh);
    for (double index : {-1.0, -0.5, 0.0, 1.0}) {
        EqSetTableIndex(es, index);
        EXPECT_EQ(EqTableRead(es, 18), -1000.0);
        EXPECT_EQ(es->table_pos->ivals[18], 0);
    }
    DATADispose(es.table(18));
    std::free(es.table(18));
    es->tables->pvals[18] = nullptr;
    EqSetTableIndex(es, 0.0);
    EXPECT_EQ(EqTableRead(es, 18), -1000.0);
    EXPECT_EQ(es->table_pos->ivals[18], 0);
    EXPECT_EQ(EqMakeTable(es, 18, 1, 1), -1);
}

TEST(EqTableRead, AWidenedTableIsReadWhereItsBufferReaches)
{
    Tabulated es(2, 1);
    es.parse("y = COUNT");            // two columns now, over the values 1, 2
    EXPECT_EQ(es.read(0.0), -1000.0); // row 1 would be at 2 and lies outside
    EXPECT_EQ(es.position(), 0);
    EXPECT_EQ(es.read(1.0), -1000.0);
    EXPECT_EQ(es.read(-0.5), 1.0);
    EXPECT_EQ(es.position(), 1);
    EXPECT_EQ(es.read(-0.5), 2.0);
    EXPECT_EQ(es.position(), 0);
}

/// Puts `values` into the table of function 18, in memory of the host.
void wrap_table(System& es, int rows, int columns, std::initializer_list<double> values)
{
    DATAstruct* const table = es.table(18);
    table->count = rows;
    table->dim = columns;
    table->dvals = static_cast<double*>(std::malloc(values.size() * sizeof(double)));
    std::copy(values.begin(), values.end(), table->dvals);
}

TEST(EqTableRead, ATableInMemoryOfTheHostIsReadWhereItReaches)
{
    System es;
    es.add("F", fresh);
    es.declare("y");
    wrap_table(es, 2, 1, {1, 2});
    const auto read = [&](double index) {
        EqSetTableIndex(es, index);
        return EqTableRead(es, 18);
    };
    EXPECT_EQ(read(1.0), 2.0);
    es.parse("y = F"); // two columns now, over the values 1, 2
    EXPECT_EQ(es.table(18)->dim, 2);
    EXPECT_EQ(read(0.0), -1000.0);
    EXPECT_EQ(read(1.0), -1000.0);
    EXPECT_EQ(read(-0.5), 1.0);
    EXPECT_EQ(read(-0.5), 2.0);
    es.parse("y = F");
    EXPECT_EQ(read(1.0), -1000.0);
    EXPECT_EQ(read(-0.5), 1.0);
}

TEST(EqTableRead, ATableOfTheHostWithoutColumnsIsReadFreshHoweverManyEquationsAdd)
{
    for (const int columns : {0, -1, -4}) {
        System es;
        es.add("F", fresh);
        es.declare("y");
        wrap_table(es, 4, columns, {}); // a read would be one of memory that is not there
        for (int mentions = 0; mentions < 8; ++mentions) {
            for (const double index : {-0.5, 0.0, 0.5, 3.0, 3.5}) {
                EqSetTableIndex(es, index);
                EXPECT_EQ(EqTableRead(es, 18), -1000.0);
            }
            es.parse("y = F");
            EXPECT_EQ(es.table(18)->dim, columns + mentions + 1);
        }
        EXPECT_NE(es.table(18)->dvals, nullptr);
    }
}

TEST(EqTableRead, ATableOfTheHostWithNewSizesIsReadAgain)
{
    System es;
    es.add("F", fresh);
    es.declare("y");
    wrap_table(es, 2, 0, {1, 2});
    es.parse("y = F");
    EqSetTableIndex(es, 1.0);
    EXPECT_EQ(EqTableRead(es, 18), -1000.0);
    es.table(18)->alloc_count = es.table(18)->alloc_dim = -1; // 2 x 1, as count and dim say
    EXPECT_EQ(EqTableRead(es, 18), 2.0);
}

TEST(EqMakeTable, RefusedItLeavesTheHostsMemoryAsLongAsItIs)
{
    System es;
    es.add("F", fresh);
    wrap_table(es, 2, 1, {1, 2});
    EXPECT_EQ(EqMakeTable(es, 18, 1 << 30, 2), -1);
    EXPECT_EQ(es.table(18)->count, 1 << 30);
    EXPECT_EQ(es.table(18)->dim, 2);
    const auto read = [&](double index) {
        EqSetTableIndex(es, index);
        return EqTableRead(es, 18);
    };
    EXPECT_EQ(read(1e9), -1000.0);
    EXPECT_EQ(read(1.0), -1000.0);
    EXPECT_EQ(read(-0.5), 1.0);
}

TEST(EqMakeTable, RefusedItReadsNothingFromMemoryOfTheHostForNoRowsOrColumns)
{
    for (const auto& [rows, columns] : {std::pair(0, 1), std::pair(2, 0), std::pair(0, 0)}) {
        System es;
        es.add("F", fresh);
        es.declare("y");
        wrap_table(es, rows, columns, {});
        double* const hosts = es.table(18)->dvals;
        EXPECT_EQ(EqMakeTable(es, 18, 4, -1), -1);
        EXPECT_EQ(es.table(18)->count, 4);
        EXPECT_EQ(es.table(18)->dim, -columns);
        EXPECT_EQ(es.table(18)->dvals, hosts);
        es.parse("y = F + F"); // one column or two
        EqSetTableIndex(es, 0.0);
        EXPECT_EQ(EqTableRead(es, 18), -1000.0);
    }
}

TEST(EqTableRead, ColumnsOfZeroOrLessAreReadFreshAndStillWrap)
{
    Tabulated es(2, 1);
    es.table(18)->dim = 0;
    EXPECT_EQ(es.read(0.0), -1000.0);
    EXPECT_EQ(es.position(), 0);
    es.table(18)->dim = -3;
    EXPECT_EQ(es.read(0.0), -1000.0);
    EXPECT_EQ(es.position(), 3); // 0 >= -3
    es.table(18)->dim = 2;
    EXPECT_EQ(es.read(9.0), -1000.0);
    EXPECT_EQ(es.position(), 1); // the wrap happens after a fresh call too
}

TEST(EqTableRead, AtMinusOneIsFreshEvenInATableOfNoRows)
{
    Tabulated es(2, 1);
    EXPECT_EQ(EqMakeTable(es, 18, 0, 1), -1); // the buffer of two values stays
    es.get()->table_pos->ivals[18] = 1;
    EXPECT_EQ(es.read(-1.0), -1000.0);
    EXPECT_EQ(es.position(), 0);
    EXPECT_EQ(es.read(-0.5), 1.0);
    EXPECT_EQ(es.read(0.0), -1000.0);
}

TEST(EqTableRead, APositionOutsideIsReadFresh)
{
    Tabulated es(2, 1);
    es.get()->table_pos->ivals[18] = -1;
    EXPECT_EQ(es.read(0.0), -1000.0);
    EXPECT_EQ(es.position(), -1);
    es.get()->table_pos->ivals[18] = 2147483647;
    es.table(18)->dim = -2147483647;
    EXPECT_EQ(es.read(0.0), -1000.0);
    EXPECT_EQ(es.position(), -2); // 2^31 - 1 - (1 - 2^31), wrapped
}

TEST(EqTableRead, AnIndexThatIsNoNoArgumentFunctionsGivesZero)
{
    System es;
    for (int f : {-1, 18, 20, 1000000})
        EXPECT_EQ(EqTableRead(es, f), 0.0);
    EXPECT_EQ(EqTableRead(es, es.function("SIN")), 0.0);
    EXPECT_EQ(EqTableRead(es, es.function("ADD")), 0.0);
}

} // namespace
} // namespace korvale::test
