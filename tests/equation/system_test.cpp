// A system as it is made and disposed of, and the failures on the way.
#include "equation/system.h"

#include <gtest/gtest.h>

#include "equation/evaluate.h"
#include "equation/functions.h"
#include "equation/parse.h"
#include "equation/simplify.h"
#include "equation/tables.h"
#include "equation/variables.h"
#include "tests/equation/system.h"
#include "tests/support/heap.h"

namespace korvale::test {
namespace {

double first_of(double a, double)
{
    return a;
}

double doubled(double x)
{
    return 2 * x;
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

TEST(EqSystemInitialize, AnyAllocationMayFail)
{
    NEEDS_HEAP_FAILURES();
    int refused = 0;
    const int64_t failures = korvale::test::fail_each_allocation([&](int64_t) {
        EquationSystem es;
        char y[] = "PI = 2 + 2", sin[] = "SIN";
        if (EqSystemInitialize(&es) < 0) {
            ++refused;
            for (const DATAstruct* field : {es.funcs, es.func_names, es.func_nargs, es.var_names, es.var_vals,
                                            es.var_flags, es.equations, es.tables, es.table_pos})
                EXPECT_EQ(field, nullptr);
            return;
        }
        EqParseEquation(&es, y);
        EqLookupFunction(&es, sin);
        EqEvaluate(&es, 0);
        EqSystemSimplify(&es);
        EqSystemEvaluate(&es);
        for (int f = -1; f < 21; ++f) {
            EqTableRead(&es, f);
            EqMakeTable(&es, f, 2, 2);
        }
        EqSystemDispose(&es);
    });
    EXPECT_EQ(refused, 15);  // nine records, the five function arrays, the equations
    EXPECT_GT(failures, 33); // and the eighteen tables, the variables, an equation
}

TEST(EqSystemInitialize, ABuiltInFunctionWithoutRoomIsMissingWithoutNotice)
{
    NEEDS_HEAP_FAILURES();
    EquationSystem es;
    {
        const korvale::test::HeapFailure failure(15); // after nine records and five arrays: the table of ADD
        ASSERT_EQ(EqSystemInitialize(&es), 1);
    }
    char add[] = "ADD", subtract[] = "SUBTRACT";
    EXPECT_EQ(EqLookupFunction(&es, add), -1);
    EXPECT_EQ(EqLookupFunction(&es, subtract), 1);
    EqSystemDispose(&es);
}

} // namespace
} // namespace korvale::test
