#include <gtest/gtest.h>

#include "equation/equation.h"
#include "tests/support/heap.h"

namespace {

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
