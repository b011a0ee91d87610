// Views of a system's lists: what is there of each, whatever a host has done to the counts.
#include "equation/internal/registry.h"

#include <gtest/gtest.h>

#include "equation/internal/functions.h"
#include "tests/equation/system.h"

namespace korvale::test {
namespace {

using equation::functions_of;
using equation::kBuiltInCount;
using equation::programs_of;
using equation::tables_of;
using equation::variables_of;
using equation::word_of;

TEST(VariablesView, HasThoseWithAValueAndFindsThoseWithANameToo)
{
    System es;
    es.declare("x, y");
    EXPECT_EQ(variables_of(*es.get()).count, 4); // PI and E come first
    EXPECT_EQ(variables_of(*es.get()).find(word_of("y")), 3);
    EXPECT_TRUE(variables_of(*es.get()).has(3));
    EXPECT_FALSE(variables_of(*es.get()).has(4));
    EXPECT_FALSE(variables_of(*es.get()).has(-1));

    es->var_names->alloc_count = 3; // a shorter list of names
    EXPECT_EQ(variables_of(*es.get()).named, 3);
    EXPECT_EQ(variables_of(*es.get()).find(word_of("x")), 2);
    EXPECT_EQ(variables_of(*es.get()).find(word_of("y")), -1);
    EXPECT_TRUE(variables_of(*es.get()).has(3));
    es->var_names->alloc_count = 4;
}

TEST(VariablesView, TakesAVariableWithoutAFlagForAnOrdinaryOne)
{
    System es;
    es.declare("kept", 1);
    EXPECT_TRUE(variables_of(*es.get()).is_reserved(2));
    EXPECT_FALSE(variables_of(*es.get()).is_reserved(1));
    es->var_flags->count = 2;
    EXPECT_FALSE(variables_of(*es.get()).is_reserved(2));
}

TEST(VariablesView, IsEmptyWithoutLists)
{
    const EquationSystem none = {};
    EXPECT_EQ(variables_of(none).count, 0);
    EXPECT_EQ(variables_of(none).find(word_of("x")), -1);
    EXPECT_EQ(functions_of(none).at(0), nullptr);
    EXPECT_EQ(functions_of(none).find(word_of("SIN")), -1);
    EXPECT_FALSE(tables_of(none).has(0));
    EXPECT_FALSE(programs_of(none).has(0));
}

TEST(FunctionsView, CallsAllThatHaveASlotAndFindsThoseThatAllFiveListsHaveRoomFor)
{
    System es;
    EXPECT_EQ(functions_of(*es.get()).count, kBuiltInCount);
    EXPECT_EQ(functions_of(*es.get()).named, kBuiltInCount);
    EXPECT_EQ(functions_of(*es.get()).find(word_of("ANGLE")), 17);

    es->func_nargs->alloc_count = 17;
    EXPECT_EQ(functions_of(*es.get()).named, 17);
    EXPECT_EQ(functions_of(*es.get()).find(word_of("ANGLE")), -1);
    EXPECT_NE(functions_of(*es.get()).at(17), nullptr);
    EXPECT_EQ(functions_of(*es.get()).at(18), nullptr);
    es->func_nargs->alloc_count = 20;
}

TEST(FunctionsView, PrefersAFunctionOfOneArgumentAndElseTellsTheFirstOfEachNumber)
{
    System es;
    const auto two = [](double, double) { return 0.0; };
    const auto none = [] { return 0.0; };
    const auto one = [](double) { return 0.0; };
    es.add("f", two);
    es.add("f", none);
    es.add("f", two);
    const equation::NamePattern name(word_of("f"));
    const equation::NamedFunctions before = functions_of(*es.get()).find(name);
    EXPECT_EQ(before.binary, 18);
    EXPECT_EQ(before.no_arg, 19);
    EXPECT_EQ(before.unary, -1);
    es.add("f", one);
    EXPECT_EQ(functions_of(*es.get()).find(name).unary, 21);
}

TEST(TablesView, HasThoseThatFourListsCount)
{
    System es;
    EXPECT_TRUE(tables_of(*es.get()).has(17));
    EXPECT_FALSE(tables_of(*es.get()).has(18));
    es->tables->count = 5;
    EXPECT_TRUE(tables_of(*es.get()).has(4));
    EXPECT_FALSE(tables_of(*es.get()).has(5));
}

TEST(ProgramsView, GivesTheItemsOfAnEquationAndNoneOfOthers)
{
    System es;
    es.declare("x");
    es.parse("x = 1 + 2");
    const equation::Programs programs = programs_of(*es.get());
    EXPECT_EQ(programs.count, 1);
    EXPECT_EQ(programs.at(0).count, 4);
    EXPECT_TRUE(programs.at(0).has_target());
    EXPECT_EQ(programs.at(1).room, 0);
    EXPECT_EQ(programs.at(-1).room, 0);
}

} // namespace
} // namespace korvale::test
