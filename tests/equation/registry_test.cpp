#include "equation/system.h"

#include <cmath>
#include <cstring>

#include <gtest/gtest.h>

#include "tests/equation/system.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"

namespace {

using korvale::test::state_of;
using korvale::test::System;

double first_of(double a, double)
{
    return a;
}

double doubled(double x)
{
    return 2 * x;
}

double forty_two()
{
    return 42;
}

const char* name_of(EquationSystem* es, int f)
{
    return reinterpret_cast<const char*>(es->func_names->bvals + 13 * f);
}

TEST(EqSystemInitialize, RefusesANullRecord)
{
    EXPECT_EQ(EqSystemInitialize(nullptr), -1);
}

TEST(EqSystemInitialize, RegistersTheBuiltInFunctionsInOrder)
{
    System es;
    const struct {
        const char* name;
        int arity;
    } built_in[] = {{"ADD", 2},  {"SUBTRACT", 2}, {"MULTIPLY", 2}, {"DIVIDE", 2}, {"POWER", 2}, {"NEGATE", 1},
                    {"SIN", 1},  {"COS", 1},      {"TAN", 1},      {"SQRT", 1},   {"EXP", 1},   {"LOG", 1},
                    {"ASIN", 1}, {"ACOS", 1},     {"ATAN", 1},     {"RAND", 0},   {"GAUSS", 0}, {"ANGLE", 2}};
    ASSERT_EQ(es->funcs->count, 18);
    for (int f = 0; f < 18; ++f) {
        EXPECT_STREQ(name_of(es, f), built_in[f].name);
        EXPECT_EQ(es->func_nargs->ivals[f], built_in[f].arity) << built_in[f].name;
        EXPECT_EQ(es.function(built_in[f].name), f);
        EXPECT_NE(es->funcs->pvals[f], nullptr) << built_in[f].name;
    }
}

TEST(EqSystemInitialize, DeclaresPiAndE)
{
    System es;
    EXPECT_EQ(es->var_vals->count, 2);
    EXPECT_EQ(es.variable("PI"), 0);
    EXPECT_EQ(es.variable("E"), 1);
    EXPECT_EQ(es.get("PI"), 3.141592653589793);
    EXPECT_EQ(es.get("E"), 2.718281828459045);
    EXPECT_EQ(es->var_flags->bvals[0], 0);
    EXPECT_EQ(es->var_flags->bvals[1], 0);
}

TEST(EqSystemInitialize, ShapesAllNineArrays)
{
    System es;
    const struct {
        const DATAstruct* array;
        int count, type, dim, room;
    } arrays[] = {{es->funcs, 18, DATA_TYPE_POINTER, 1, 20},  {es->func_names, 20, DATA_TYPE_BYTE, 13, 20},
                  {es->func_nargs, 20, DATA_TYPE_INT, 1, 20}, {es->var_names, 2, DATA_TYPE_BYTE, 13, 2},
                  {es->var_vals, 2, DATA_TYPE_DOUBLE, 1, 2},  {es->var_flags, 2, DATA_TYPE_BYTE, 1, 2},
                  {es->equations, 0, DATA_TYPE_DATA, 3, 20},  {es->tables, 20, DATA_TYPE_DATA, 1, 20},
                  {es->table_pos, 20, DATA_TYPE_INT, 1, 20}};
    for (const auto& expected : arrays) {
        EXPECT_EQ(expected.array->count, expected.count);
        EXPECT_EQ(expected.array->type, expected.type);
        EXPECT_EQ(expected.array->dim, expected.dim);
        EXPECT_EQ(expected.array->alloc_count, expected.room);
        EXPECT_EQ(expected.array->alloc_dim, expected.dim);
    }
    EXPECT_EQ(es->table_index, 0.0);
}

TEST(EqSystemInitialize, StartsWithEmptySlots)
{
    System es;
    for (int f = 18; f < 20; ++f) {
        EXPECT_EQ(es->funcs->pvals[f], nullptr);
        EXPECT_STREQ(name_of(es, f), "");
        EXPECT_EQ(es->func_nargs->ivals[f], 0);
        EXPECT_EQ(es->tables->pvals[f], nullptr);
        EXPECT_EQ(es->table_pos->ivals[f], 0);
    }
    for (int slot = 0; slot < 60; ++slot)
        EXPECT_EQ(es->equations->pvals[slot], nullptr);
    for (int f = 0; f < 18; ++f) {
        ASSERT_NE(es.table(f), nullptr);
        EXPECT_EQ(es.table(f)->count, 0);
        EXPECT_EQ(es.table(f)->dim, 0);
        EXPECT_EQ(es.table(f)->type, DATA_TYPE_DOUBLE);
        EXPECT_EQ(es->table_pos->ivals[f], 0);
    }
}

TEST(EqSystemDispose, SetsAllFieldsToNull)
{
    EquationSystem es;
    ASSERT_EQ(EqSystemInitialize(&es), 1);
    EqSystemDispose(&es);
    for (const DATAstruct* field : {es.funcs, es.func_names, es.func_nargs, es.var_names, es.var_vals, es.var_flags,
                                    es.equations, es.tables, es.table_pos})
        EXPECT_EQ(field, nullptr);
    EqSystemDispose(&es);
    EqSystemDispose(nullptr);
}

TEST(EqSystemDispose, ReleasesTablesAndEquations)
{
    NEEDS_HEAP_COUNTS();
    const korvale::test::HeapWatch heap;
    {
        System es;
        es.declare("y");
        ASSERT_GT(es.parse("y = RAND + GAUSS"), 0);
        ASSERT_EQ(EqMakeTable(es, es.function("RAND"), 8, 2), 1);
        ASSERT_EQ(es.parse("y = ("), -1);
        for (int i = 0; i < 50; ++i)
            ASSERT_EQ(es.add("F", doubled), 1);
    }
    EXPECT_EQ(heap.live_blocks(), 0);
}

TEST(EquationSystem, ADisposedSystemIsEmptyButSafe)
{
    EquationSystem es;
    ASSERT_EQ(EqSystemInitialize(&es), 1);
    EqSystemDispose(&es);
    char name[] = "SIN", text[] = "y = 1";
    EXPECT_EQ(EqLookupFunction(&es, name), -1);
    EXPECT_EQ(EqLookupVariable(&es, name), -1);
    EXPECT_EQ(EqAddFuncUnary(&es, name, doubled), -1);
    EXPECT_EQ(EqAnotherFunc(&es), -1);
    EXPECT_EQ(EqParseVariables(&es, text, 0), -1);
    EXPECT_EQ(EqParseEquation(&es, text), -1);
    EXPECT_EQ(EqEvaluate(&es, 0), 0.0);
    EXPECT_EQ(EqSimplify(&es, 0), -1);
    EXPECT_EQ(EqSystemEvaluate(&es), -1);
    EXPECT_EQ(EqSystemSimplify(&es), 1);
    EXPECT_EQ(EqReadVariable(&es, 0), 0.0);
    EXPECT_EQ(EqTableRead(&es, 15), 0.0);
    EXPECT_EQ(EqMakeTable(&es, 15, 1, 1), -1);
    EqSetVariable(&es, 0, 1.0);
    EqReserveVariable(&es, 0, 1);
}

TEST(EquationSystem, NullArgumentsFail)
{
    System es;
    char name[] = "y";
    EXPECT_EQ(EqAddFuncBinary(nullptr, name, first_of), -1);
    EXPECT_EQ(EqAddFuncUnary(es, nullptr, doubled), -1);
    EXPECT_EQ(EqAnotherFunc(nullptr), -1);
    EXPECT_EQ(EqLookupFunction(nullptr, name), -1);
    EXPECT_EQ(EqLookupFunction(es, nullptr), -1);
    EXPECT_EQ(EqLookupVariable(nullptr, name), -1);
    EXPECT_EQ(EqLookupVariable(es, nullptr), -1);
    EXPECT_EQ(EqSetVariableByName(es, nullptr, 1.0), -1);
    EXPECT_EQ(EqReadVariableByName(nullptr, name), 0.0);
    EXPECT_EQ(EqReserveVariableByName(nullptr, name, 1), -1);
    EXPECT_EQ(EqParseVariables(es, nullptr, 0), -1);
    EXPECT_EQ(EqParseVariables(nullptr, name, 0), -1);
    EXPECT_EQ(EqParseEquation(es, nullptr), -1);
    EXPECT_EQ(EqParseEquation(nullptr, name), -1);
    EXPECT_EQ(es->equations->count, 0);
    EXPECT_EQ(EqSimplify(nullptr, 0), -1);
    EXPECT_EQ(EqSystemSimplify(nullptr), -1);
    EXPECT_EQ(EqEvaluate(nullptr, 0), 0.0);
    EXPECT_EQ(EqSystemEvaluate(nullptr), -1);
    EXPECT_EQ(EqMakeTable(nullptr, 15, 1, 1), -1);
    EXPECT_EQ(EqMakeTableByName(es, nullptr, 1, 1), -1);
    EXPECT_EQ(EqTableRead(nullptr, 15), 0.0);
    EqSetTableIndex(nullptr, 1.0);
    EqSetVariable(nullptr, 0, 1.0);
    EXPECT_EQ(EqReadVariable(nullptr, 0), 0.0);
    EqReserveVariable(nullptr, 0, 1);
}

TEST(EqLookupFunction, ComparesExactlyAndUpToTwelveCharacters)
{
    System es;
    EXPECT_EQ(es.function("ANGLE"), 17);
    EXPECT_EQ(es.function("angle"), -1);
    EXPECT_EQ(es.function("ANGL"), -1);
    EXPECT_EQ(es.function("ANGLES"), -1);
    EXPECT_EQ(es.function(""), -1);
    EXPECT_EQ(es.add("TWELVELETTER", doubled), 1);
    EXPECT_EQ(es.function("TWELVELETTER"), 18);
    EXPECT_EQ(es.function("TWELVELETTERS"), -1);
}

TEST(EqAddFunc, StoresNameArityAndPointer)
{
    System es;
    EXPECT_EQ(es.add("FIRST", first_of), 1);
    EXPECT_EQ(es.add("DOUBLED", doubled), 1);
    EXPECT_EQ(es.add("ANSWER", forty_two), 1);
    EXPECT_EQ(es->funcs->count, 21);
    EXPECT_EQ(es->func_nargs->ivals[18], 2);
    EXPECT_EQ(es->func_nargs->ivals[19], 1);
    EXPECT_EQ(es->func_nargs->ivals[20], 0);
    EXPECT_EQ(es->funcs->pvals[18], reinterpret_cast<void*>(first_of));
    EXPECT_EQ(es->funcs->pvals[19], reinterpret_cast<void*>(doubled));
    EXPECT_EQ(es->funcs->pvals[20], reinterpret_cast<void*>(forty_two));
    EXPECT_EQ(es.function("ANSWER"), 20);
}

TEST(EqAddFunc, RefusesANameOfThirteenCharacters)
{
    System es;
    EXPECT_EQ(es.add("THIRTEENCHARS", doubled), -1);
    EXPECT_EQ(es.add("THIRTEENCHARS", first_of), -1);
    EXPECT_EQ(es.add("THIRTEENCHARS", forty_two), -1);
    EXPECT_EQ(es->funcs->count, 18);
}

TEST(EqAddFunc, KeepsTheFirstRegistrationOfAName)
{
    System es;
    EXPECT_EQ(es.add("SIN", doubled), 1);
    EXPECT_EQ(es->funcs->count, 19);
    EXPECT_EQ(es.function("SIN"), 6);
}

TEST(EqAddFunc, RefusesANullFunction)
{
    System es;
    EXPECT_EQ(es.add("F", static_cast<double (*)(double)>(nullptr)), -1);
    EXPECT_EQ(es.add("F", static_cast<double (*)(double, double)>(nullptr)), -1);
    EXPECT_EQ(es.add("F", static_cast<double (*)()>(nullptr)), -1);
    EXPECT_EQ(es->funcs->count, 18);
}

TEST(EqAddFunc, TheNameIsAFormatWithoutValues)
{
    System es;
    EXPECT_EQ(es.add("50%%", doubled), 1);
    EXPECT_STREQ(name_of(es, 18), "50%");
    EXPECT_EQ(es.function("50%"), 18);
    EXPECT_EQ(es.function("50%%"), -1);
    EXPECT_EQ(es.add("%%%%%%%%%%%%", doubled), 1);
    EXPECT_STREQ(name_of(es, 19), "%%%%%%");
}

TEST(EqAddFunc, RefusesAnyOtherDirectiveBeforeAnIndexIsTaken)
{
    System es;
    for (const char* name : {"%", "A%", "%d", "%s%s%s%s%s%s", "%n", "%%%", "%99999d", "% %"}) {
        EXPECT_EQ(es.add(name, doubled), -1) << name;
        EXPECT_EQ(es->funcs->count, 18) << name;
    }
}

TEST(EqAddFunc, TheTwentyFirstRegistrationGrowsTheArraysByTwenty)
{
    System es;
    EXPECT_EQ(es.add("A", doubled), 1);
    EXPECT_EQ(es.add("B", doubled), 1);
    EXPECT_EQ(es->funcs->alloc_count, 20);
    EXPECT_EQ(EqAnotherFunc(es), 20);
    EXPECT_EQ(es->funcs->count, 21);
    EXPECT_EQ(es->funcs->alloc_count, 41);
    for (const DATAstruct* array : {es->func_nargs, es->func_names, es->tables, es->table_pos}) {
        EXPECT_EQ(array->count, 41);
        EXPECT_EQ(array->alloc_count, 41);
    }
    for (int f = 21; f < 41; ++f) {
        EXPECT_EQ(es->funcs->pvals[f], nullptr);
        EXPECT_EQ(es->tables->pvals[f], nullptr);
        EXPECT_EQ(es->func_nargs->ivals[f], 0);
        EXPECT_EQ(es->table_pos->ivals[f], 0);
        for (int c = 0; c < 13; ++c)
            EXPECT_EQ(es->func_names->bvals[13 * f + c], 0);
    }
    EXPECT_EQ(es.function("B"), 19);
    EXPECT_EQ(es.function("SIN"), 6);
}

TEST(EqAddFunc, TheFortySecondRegistrationMakesRoomForSixtyTwo)
{
    System es;
    while (es->funcs->count < 41)
        ASSERT_EQ(es.add("F", doubled), 1);
    EXPECT_EQ(es->funcs->alloc_count, 41);
    EXPECT_EQ(es.add("LAST", doubled), 1);
    EXPECT_EQ(es->funcs->alloc_count, 62);
    EXPECT_EQ(es->funcs->count, 42);
    EXPECT_EQ(es.function("LAST"), 41);
    EXPECT_EQ(es.function("F"), 18);
}

/// Has an array judged by count * dim, as one whose buffer a host has made.
void wrap(DATAstruct* d, int count)
{
    d->count = count;
    d->alloc_count = d->alloc_dim = -1;
}

void unwrap(DATAstruct* d, int count)
{
    d->alloc_count = count;
    d->alloc_dim = d->dim;
}

TEST(EqAddFunc, ARegistryInMemoryOfTheHostDoesNotGrow)
{
    System es;
    DATAstruct* const arrays[] = {es->funcs, es->func_nargs, es->func_names, es->tables, es->table_pos};
    for (DATAstruct* array : arrays)
        wrap(array, 18);
    const std::string before = state_of(*es.get());
    EXPECT_EQ(es.add("F", doubled), -1);
    EXPECT_EQ(es.add("F", first_of), -1);
    EXPECT_EQ(es.add("F", forty_two), -1);
    EXPECT_EQ(EqAnotherFunc(es), -1);
    EXPECT_EQ(state_of(*es.get()), before);
    EXPECT_EQ(es->funcs->pvals[18], nullptr);
    EXPECT_EQ(es->tables->pvals[18], nullptr);
    EXPECT_STREQ(name_of(es, 18), "");
    EXPECT_EQ(es.function("ANGLE"), 17);
    for (DATAstruct* array : arrays)
        unwrap(array, 20);
}

TEST(EqAddFunc, OneArrayInMemoryOfTheHostStopsGrowth)
{
    for (int which = 0; which < 5; ++which) {
        System es;
        es.add("A", doubled);
        es.add("B", doubled);
        DATAstruct* const arrays[] = {es->funcs, es->func_nargs, es->func_names, es->tables, es->table_pos};
        wrap(arrays[which], 20);
        const std::string before = state_of(*es.get());
        EXPECT_EQ(es.add("C", doubled), -1) << which;
        EXPECT_EQ(state_of(*es.get()), before) << which;
        unwrap(arrays[which], 20);
        EXPECT_EQ(es.add("C", doubled), 1) << which;
    }
}

TEST(EqAddFunc, FunctionsThatFitIntoTheHostsMemoryAreAdded)
{
    System es;
    DATAstruct* const others[] = {es->func_nargs, es->func_names, es->tables, es->table_pos};
    for (DATAstruct* array : others)
        wrap(array, 20);
    EXPECT_EQ(es.add("A", doubled), 1);
    EXPECT_EQ(es.add("B", doubled), 1);
    EXPECT_EQ(es.add("C", doubled), -1);
    EXPECT_EQ(es->funcs->count, 20);
    EXPECT_EQ(es.function("B"), 19);
    for (DATAstruct* array : others)
        unwrap(array, 20);
}

TEST(EqAnotherFunc, CountsBeyondAnyArrayAreRefused)
{
    System es;
    for (int count : {2147483647, 2147483630, -1, -2147483647 - 1}) {
        es->funcs->count = count;
        EXPECT_EQ(EqAnotherFunc(es), -1) << count;
        EXPECT_EQ(es.function("SIN"), count < 0 ? -1 : 6);
    }
    es->funcs->count = 18;
    EXPECT_EQ(EqAnotherFunc(es), 18);
}

TEST(EqAnotherFunc, ReservesANamelessSlotWithAnEmptyTable)
{
    System es;
    EXPECT_EQ(EqAnotherFunc(es), 18);
    EXPECT_EQ(es->funcs->count, 19);
    EXPECT_EQ(es->funcs->pvals[18], nullptr);
    EXPECT_EQ(es.function(""), 18);
    ASSERT_NE(es.table(18), nullptr);
    EXPECT_EQ(es.table(18)->count, 0);
    EXPECT_EQ(es.table(18)->dim, 0);
    EXPECT_EQ(EqTableRead(es, 18), 0.0);
}

TEST(EqAnotherFunc, AFailedGrowthLeavesTheCountRaisedAndLookUpsSafe)
{
    NEEDS_HEAP_FAILURES();
    // The five reallocations in order, and the new table.
    for (int n = 1; n <= 6; ++n) {
        System es;
        es.add("A", doubled);
        es.add("B", doubled);
        {
            const korvale::test::HeapFailure failure(n);
            EXPECT_EQ(es.add("C", doubled), -1) << n;
            EXPECT_TRUE(failure.happened()) << n;
        }
        EXPECT_EQ(es->funcs->count, n < 6 ? 41 : 21) << n;
        EXPECT_EQ(es.function("C"), -1) << n;
        EXPECT_EQ(es.function("B"), 19) << n;
        EXPECT_EQ(es.function(""), n < 6 ? -1 : 20) << n;
        es.declare("y");
        EXPECT_EQ(es.parse("y = B 3"), 3) << n;
        EXPECT_EQ(EqEvaluate(es, 0), 6.0) << n;
        EXPECT_EQ(es.add("D", doubled), 1) << n;
        EXPECT_EQ(es.function("D"), n < 6 ? 41 : 21) << n;
        EXPECT_EQ(EqTableRead(es, 20), 0.0) << n;
        EXPECT_EQ(EqMakeTable(es, 20, 1, 1), -1) << n;
    }
}

} // namespace
