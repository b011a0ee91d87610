// EqSimplify and EqSystemSimplify: what is folded, and what stays.
#include "equation/simplify.h"

#include <string>

#include <gtest/gtest.h>

#include "tests/equation/system.h"
#include "tests/support/bits.h"

namespace korvale::test {
namespace {

int calls;

double counted(double x)
{
    ++calls;
    return 3 * x;
}

struct Simplifier : System {
    Simplifier() { declare("x y"); }

    std::string of(const std::string& text)
    {
        EXPECT_GT(parse(text), 0) << text;
        EXPECT_EQ(EqSimplify(get(), get()->equations->count - 1), 1);
        return program();
    }
};

std::string repeat(const std::string& part, int n)
{
    std::string text;
    for (int i = 0; i < n; ++i)
        text += part;
    return text;
}

TEST(EqSimplify, FoldsConstantParts)
{
    Simplifier es;
    EXPECT_EQ(es.of("y = 2 + 3 * 4"), "y = 14");
    EXPECT_EQ(es.of("y = 2 ^ 3 ^ 2"), "y = 512");
    EXPECT_EQ(es.of("y = -(1 + 2) * SQRT 16"), "y = -12");
    EXPECT_EQ(es.of("y = x + 2 * 3"), "y = x 6 ADD");
    EXPECT_EQ(es.of("y = 2 * 3 + x"), "y = 6 x ADD");
    EXPECT_EQ(es.of("y = 1 / 0 + x"), "y = 0 x ADD");
    EXPECT_EQ(es.of("y = SIN(0) * x"), "y = 0 x MULTIPLY");
}

TEST(EqSimplify, LeavesVariablesAndSamples)
{
    Simplifier es;
    EXPECT_EQ(es.of("y = PI / 2"), "y = PI 2 DIVIDE");
    EXPECT_EQ(es.of("y = RAND + 1"), "y = RAND 1 ADD");
    EXPECT_EQ(es.of("y = 1 + x + 2"), "y = 1 x ADD 2 ADD");
    EXPECT_EQ(es.of("y = -RAND"), "y = RAND NEGATE");
    EXPECT_EQ(es.of("y ="), "y =");
    EXPECT_EQ(es.of("y = SIN"), "y = SIN");
    EXPECT_EQ(es.of("no equals"), "");
}

TEST(EqSimplify, KeepsTheCountAndRefillsTheTail)
{
    Simplifier es;
    EXPECT_EQ(es.of("y = 2 + 3 * 4"), "y = 14");
    EXPECT_EQ(es.kinds(0)->count, 6);
    EXPECT_EQ(EqEvaluate(es, 0), 14.0);
    for (int p = 2; p < 100; ++p) {
        EXPECT_EQ(es.kinds(0)->ivals[p], 0);
        EXPECT_EQ(es.operands(0)->ivals[p], -1);
        EXPECT_TRUE(same_bits(0.0, es.constants(0)->dvals[p]));
    }
}

TEST(EqSimplify, MovesOperandsAndConstantsAlong)
{
    Simplifier es;
    es.of("y = 2 * 3 + x * 4.5");
    EXPECT_EQ(es.program(), "y = 6 x 4.5 MULTIPLY ADD");
    const int kinds[] = {16, 4, 5, 4, 9, 9, 0};
    const int operands[] = {3, -1, 2, -1, 2, 0, -1};
    for (int p = 0; p < 7; ++p) {
        EXPECT_EQ(es.kinds(0)->ivals[p], kinds[p]) << p;
        EXPECT_EQ(es.operands(0)->ivals[p], operands[p]) << p;
    }
    EXPECT_EQ(es.constants(0)->dvals[3], 4.5);
}

TEST(EqSimplify, FoldsFullPrograms)
{
    Simplifier es;
    EXPECT_EQ(es.of("y = 1" + repeat(" + 1", 49)), "y = 50");  // 100 items
    EXPECT_EQ(es.of("y = -1" + repeat(" + 1", 48)), "y = 47"); // 99
    EXPECT_EQ(es.of("y = 1" + repeat(" + 1", 48)), "y = 49");  // 98
    EXPECT_EQ(es.of("y = 1 * 2" + repeat(" + x", 48)), "y = 2" + repeat(" x ADD", 48));
    EXPECT_EQ(es.kinds(3)->ivals[97], EQ_ITEM_BINARY);
    for (int p = 98; p < 100; ++p) {
        EXPECT_EQ(es.kinds(3)->ivals[p], EQ_ITEM_END);
        EXPECT_EQ(es.operands(3)->ivals[p], -1);
    }
    EXPECT_EQ(es.of("y = x" + repeat(" + x", 49)), "y = x" + repeat(" x ADD", 49));
}

TEST(EqSimplify, FoldsOnlyWithEnoughItemsBefore)
{
    System es;
    es.declare("y");
    es.parse("y = 1");
    // A program of a host that begins with its functions.
    const int kinds[] = {EQ_ITEM_BINARY, EQ_ITEM_UNARY, EQ_ITEM_CONSTANT, EQ_ITEM_BINARY, EQ_ITEM_UNARY};
    for (int p = 0; p < 5; ++p) {
        es.kinds(0)->ivals[p] = kinds[p];
        es.operands(0)->ivals[p] = p == 4 ? 5 : 0;
        es.constants(0)->dvals[p] = 8.0;
    }
    EXPECT_EQ(EqSimplify(es, 0), 1);
    for (int p = 0; p < 5; ++p)
        EXPECT_EQ(es.kinds(0)->ivals[p], kinds[p]) << p;
    es.kinds(0)->ivals[3] = EQ_ITEM_UNARY;
    es.operands(0)->ivals[3] = 5;
    EXPECT_EQ(EqSimplify(es, 0), 1);
    EXPECT_EQ(es.kinds(0)->ivals[2], EQ_ITEM_CONSTANT);
    EXPECT_EQ(es.constants(0)->dvals[2], 8.0); // negated twice
    EXPECT_EQ(es.kinds(0)->ivals[3], EQ_ITEM_END);
}

TEST(EqSimplify, CallsThroughTheRegistry)
{
    Simplifier es;
    es.add("TRIPLE", counted);
    calls = 0;
    EXPECT_EQ(es.of("y = TRIPLE 2 + x"), "y = 6 x ADD");
    EXPECT_EQ(calls, 1);
    es->funcs->pvals[6] = reinterpret_cast<void*>(counted);
    EXPECT_EQ(es.of("y = SIN 5"), "y = 15");
    EXPECT_EQ(calls, 2);
}

TEST(EqSimplify, LeavesASlotWithoutAFunction)
{
    Simplifier es;
    es.parse("y = SIN 5 + 1");
    es->funcs->pvals[6] = nullptr;
    es.parse("y = 1 + 2");
    es.operands(1)->ivals[3] = 1000;
    EXPECT_EQ(EqSystemSimplify(es), 1);
    EXPECT_EQ(es.program(0), "y = 5 SIN 1 ADD");
    EXPECT_EQ(es.kinds(1)->ivals[3], EQ_ITEM_BINARY);
}

TEST(EqSimplify, RefusesAnIndexThatIsNoEquations)
{
    Simplifier es;
    EXPECT_EQ(EqSimplify(es, 0), -1);
    es.parse("y = 1 + 2");
    EXPECT_EQ(EqSimplify(es, -1), -1);
    EXPECT_EQ(EqSimplify(es, 1), -1);
    EXPECT_EQ(EqSimplify(es, 2147483647), -1);
    EXPECT_EQ(EqSimplify(es, 0), 1);
}

TEST(EqSystemSimplify, SimplifiesAllEquations)
{
    Simplifier es;
    EXPECT_EQ(EqSystemSimplify(es), 1);
    es.parse("y = 1 + 2");
    es.parse("nothing");
    es.parse("y = (1 + 2");
    es.parse("x = 3 * 4");
    EXPECT_EQ(EqSystemSimplify(es), 1);
    EXPECT_EQ(es.program(0), "y = 3");
    EXPECT_EQ(es.program(3), "x = 12");
}

TEST(EqSystemSimplify, NamesTheFirstEquationThatFails)
{
    Simplifier es;
    es.parse("y = 1 + 2");
    es.parse("y = 1 + 2");
    es->equations->count = 23; // three more than there is room for
    EXPECT_EQ(EqSystemSimplify(es), -21);
    es->equations->count = 2;
}

} // namespace
} // namespace korvale::test
