// EqEvaluate and EqSystemEvaluate: values, stores, reserved variables, functions of the host.
#include "equation/evaluate.h"

#include <cmath>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "tests/equation/system.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"

namespace korvale::test {
namespace {

/// The system that the meddling functions below change.
EquationSystem* meddled_with;

double set_z_to(double value)
{
    EqSetVariable(meddled_with, 4, value);
    return value + 1;
}

double tripled(double x)
{
    return 3 * x;
}

double difference_of_squares(double a, double b)
{
    return a * a - b * b;
}

/// A system with the variables x, y, z (indices 2, 3, 4).
struct Evaluator : System {
    explicit Evaluator(int flag = 0) { declare("x y z", flag); }
};

TEST(EqEvaluate, ComputesAndStores)
{
    Evaluator es;
    EXPECT_EQ(es.value("y = 2 + 3 * 4"), 14.0);
    EXPECT_EQ(es.get("y"), 14.0);
    EXPECT_EQ(es.value("y = 2 ^ 3 ^ 2"), 512.0);
    EXPECT_EQ(es.value("y = 8 - 3 - 2"), 3.0);
    EXPECT_EQ(es.value("y = SIN(PI / 2)"), 1.0);
    es.set("x", 0.5);
    es.set("z", -2.0);
    EXPECT_EQ(es.value("y = -x"), -0.5);
    EXPECT_EQ(es.value("y = -(x + 1)"), -1.5);
    EXPECT_EQ(es.value("y = -x ^ 2"), 0.25);
    EXPECT_EQ(es.value("y = x ANGLE z"), std::atan2(0.5, -2.0));
    EXPECT_EQ(es.value("y = ANGLE(x, z)"), std::atan2(0.5, -2.0));
    EXPECT_EQ(es.value("y = 1 2 +"), 3.0);
}

TEST(EqEvaluate, CallsEveryBuiltInFunction)
{
    Evaluator es;
    es.set("x", 0.3);
    es.set("z", 1.7);
    const double x = 0.3, z = 1.7;
    EXPECT_TRUE(same_bits(x + z, es.value("y = x + z")));
    EXPECT_TRUE(same_bits(x - z, es.value("y = x - z")));
    EXPECT_TRUE(same_bits(x * z, es.value("y = x * z")));
    EXPECT_TRUE(same_bits(x / z, es.value("y = x / z")));
    EXPECT_TRUE(same_bits(std::pow(x, z), es.value("y = x ^ z")));
    EXPECT_TRUE(same_bits(-x, es.value("y = -x")));
    EXPECT_TRUE(same_bits(std::sin(x), es.value("y = SIN x")));
    EXPECT_TRUE(same_bits(std::cos(x), es.value("y = COS x")));
    EXPECT_TRUE(same_bits(std::tan(x), es.value("y = TAN x")));
    EXPECT_TRUE(same_bits(std::sqrt(x), es.value("y = SQRT x")));
    EXPECT_TRUE(same_bits(std::exp(x), es.value("y = EXP x")));
    EXPECT_TRUE(same_bits(std::log(x), es.value("y = LOG x")));
    EXPECT_TRUE(same_bits(std::asin(x), es.value("y = ASIN x")));
    EXPECT_TRUE(same_bits(std::acos(x), es.value("y = ACOS x")));
    EXPECT_TRUE(same_bits(std::atan(x), es.value("y = ATAN x")));
    EXPECT_TRUE(same_bits(std::atan2(x, z), es.value("y = x ANGLE z")));
}

TEST(EqEvaluate, FollowsTheFunctionsInDegenerateCases)
{
    Evaluator es;
    EXPECT_TRUE(same_bits(0.0, es.value("y = 1 / 0")));
    EXPECT_TRUE(same_bits(0.0, es.value("y = 1 / (-0)")));
    EXPECT_TRUE(std::isnan(es.value("y = SQRT(-1)")));
    EXPECT_TRUE(std::isnan(es.get("y")));
    EXPECT_EQ(es.value("y = LOG 0"), -HUGE_VAL);
    EXPECT_TRUE(same_bits(-0.0, es.value("y = SQRT(-0)")));
}

TEST(EqEvaluate, ATwoArgumentFunctionBeforeAListIsAnOperatorThatCameEarly)
{
    Evaluator es;
    es.set("x", 0.5);
    es.set("z", -2.0);
    EXPECT_EQ(es.value("y = ANGLE(x + 1, z)"), std::atan2(0.5, 1.0 + -2.0));
    EXPECT_EQ(es.value("y = ADD(2, 3) * 4"), 14.0);
    EXPECT_EQ(es.parse("y = 2 * ANGLE(x, z)"), -1);
}

TEST(EqEvaluate, NamedOperatorsKeepTheStrengthOfTheirSigns)
{
    Evaluator es;
    EXPECT_EQ(es.value("y = 2 ADD 3 MULTIPLY 4"), 14.0);
    EXPECT_EQ(es.value("y = 2 MULTIPLY 3 POWER 2 SUBTRACT 1"), 17.0);
    EXPECT_EQ(es.value("y = 2 POWER 3 POWER 2"), 512.0);
    EXPECT_EQ(es.value("y = 12 DIVIDE 2 DIVIDE 3"), 2.0);
}

TEST(EqEvaluate, ALetterAfterANumberDoesNotMultiply)
{
    Evaluator es;
    es.set("x", 7.0);
    EXPECT_EQ(es.value("y = 2x"), 2.0);
    EXPECT_EQ(es.value("y = 2x + 1"), 3.0);
    EXPECT_EQ(es.value("y = 2M"), 2.0);
}

TEST(EqEvaluate, DrawsFromThePlatformsGenerator)
{
    Evaluator es;
    EqSeed(1);
    EXPECT_EQ(es.value("y = RAND"), 41 / 32767.0);
    EXPECT_EQ(es.value("y = RAND - RAND"), 18467 / 32767.0 - 6334 / 32767.0);
}

TEST(EqEvaluate, ReadsTables)
{
    Evaluator es;
    es.parse("y = RAND + 10");
    EqSeed(1);
    ASSERT_EQ(EqMakeTable(es, 15, 2, 1), 1);
    EqSetTableIndex(es, 0.5);
    EXPECT_TRUE(same_bits((0.5 * (41 / 32767.0) + 0.5 * (18467 / 32767.0)) + 10, EqEvaluate(es, 0)));
}

TEST(EqEvaluate, AnEmptyProgramChangesNothing)
{
    Evaluator es;
    es.set("y", 5.0);
    es.parse("nothing");
    es.parse("q = 1");
    EXPECT_EQ(EqEvaluate(es, 0), 0.0);
    EXPECT_EQ(EqEvaluate(es, 1), 0.0);
    for (int equation : {-1, 2, 20, 2147483647})
        EXPECT_EQ(EqEvaluate(es, equation), 0.0);
    EXPECT_EQ(es.get("y"), 5.0);
}

TEST(EqEvaluate, ATargetAloneStoresZero)
{
    Evaluator es;
    for (const char* text : {"y =", "y = ()", "y = SIN", "y = -"}) {
        es.set("y", 5.0);
        EXPECT_TRUE(same_bits(0.0, es.value(text))) << text;
        EXPECT_TRUE(same_bits(0.0, es.get("y"))) << text;
    }
}

TEST(EqEvaluate, ARefusedEquationWithATargetStoresZero)
{
    Evaluator es;
    es.set("y", 5.0);
    EXPECT_EQ(es.parse("y = 1 + 2 + q"), -1);
    EXPECT_EQ(EqEvaluate(es, 0), 0.0);
    EXPECT_EQ(es.get("y"), 0.0);
}

TEST(EqEvaluate, AReservedVariableKeepsItsValue)
{
    Evaluator es(1);
    es.set("y", 5.0);
    EXPECT_EQ(es.value("y = 2"), 2.0);
    EXPECT_EQ(es.get("y"), 5.0);
    Evaluator highest(128);
    EXPECT_EQ(highest.value("y = 2"), 2.0);
    EXPECT_EQ(highest.get("y"), 0.0);
}

/// Makes equation 0 a program of a host: items of (kind, operand, constant).
struct Item {
    int kind, operand;
    double constant;
};

void compose(System& es, std::initializer_list<Item> items)
{
    int p = 0;
    for (const Item& item : items) {
        es.kinds(0)->ivals[p] = item.kind;
        es.operands(0)->ivals[p] = item.operand;
        es.constants(0)->dvals[p++] = item.constant;
    }
    es.kinds(0)->count = p;
}

TEST(EqEvaluate, PassesOverItemsWithTooFewOperands)
{
    Evaluator es;
    es.parse("y = 1");
    compose(es, {{16, 3, 0}, {9, 0, 0}, {8, 5, 0}, {4, -1, 7}, {9, 0, 0}, {8, 5, 0}});
    EXPECT_EQ(EqEvaluate(es, 0), -7.0);
}

TEST(EqEvaluate, StopsAtAnEndItem)
{
    Evaluator es;
    es.parse("y = 1");
    compose(es, {{16, 3, 0}, {4, -1, 7}, {0, -1, 0}, {4, -1, 8}});
    EXPECT_EQ(EqEvaluate(es, 0), 7.0);
}

TEST(EqEvaluate, PassesOverItemsOfNoKnownKind)
{
    Evaluator es;
    es.parse("y = 1");
    compose(es, {{16, 3, 0}, {4, -1, 7}, {6, 0, 0}, {-1, 0, 0}, {16, 2, 0}, {4, -1, 1}, {9, 0, 0}});
    EXPECT_EQ(EqEvaluate(es, 0), 8.0);
    EXPECT_EQ(es.get("y"), 8.0);
    EXPECT_EQ(es.get("x"), 0.0);
}

TEST(EqEvaluate, OperandsThatLeadOutsideReadAsZero)
{
    Evaluator es;
    es.parse("y = 1");
    for (int outside : {-1, 1000000, 2147483647}) {
        compose(es, {{16, 3, 0}, {4, -1, 7}, {5, outside, 0}, {9, 0, 0}});
        EXPECT_EQ(EqEvaluate(es, 0), 7.0);
        compose(es, {{16, 3, 0}, {4, -1, 7}, {7, outside, 0}, {9, 0, 0}});
        EXPECT_EQ(EqEvaluate(es, 0), 7.0);
        compose(es, {{16, 3, 0}, {4, -1, 7}, {8, outside, 0}});
        EXPECT_EQ(EqEvaluate(es, 0), 0.0);
        compose(es, {{16, 3, 0}, {4, -1, 5}, {4, -1, 7}, {4, -1, 7}, {9, outside, 0}, {9, 0, 0}});
        EXPECT_EQ(EqEvaluate(es, 0), 5.0);
        es.set("y", 1.0);
        compose(es, {{16, outside, 0}, {4, -1, 7}});
        EXPECT_EQ(EqEvaluate(es, 0), 7.0);
        EXPECT_EQ(es.get("y"), 1.0);
        EXPECT_EQ(EqSystemEvaluate(es), 1);
    }
}

TEST(EqEvaluate, HoldsFiftyOneValuesAndStopsAtTheNext)
{
    Evaluator es;
    es.parse("y = 1");
    const auto push = [&](int n) {
        es.kinds(0)->count = n + 1;
        for (int p = 1; p <= n; ++p) {
            es.kinds(0)->ivals[p] = EQ_ITEM_CONSTANT;
            es.constants(0)->dvals[p] = p;
        }
    };
    push(51);
    EXPECT_EQ(EqEvaluate(es, 0), 51.0);
    push(52);
    EXPECT_EQ(EqEvaluate(es, 0), 51.0);
    // What follows the value that does not fit is not run; what follows one that fits is.
    es.kinds(0)->count = 54;
    es.kinds(0)->ivals[53] = EQ_ITEM_UNARY;
    es.operands(0)->ivals[53] = 5;
    EXPECT_EQ(EqEvaluate(es, 0), 51.0);
    es.kinds(0)->ivals[52] = EQ_ITEM_UNARY;
    es.operands(0)->ivals[52] = 5;
    es.kinds(0)->count = 53;
    EXPECT_EQ(EqEvaluate(es, 0), -51.0);
}

TEST(EqEvaluate, StopsAtTheFiftySecondValueWhateverTakesIt)
{
    for (const int kind : {EQ_ITEM_CONSTANT, EQ_ITEM_VARIABLE, EQ_ITEM_SAMPLE})
        for (const int f : {0, 1, 2, 3, 4, 17}) {
            Evaluator es;
            es.set("x", 52.0);
            es.parse("y = 1");
            for (int p = 1; p <= 52; ++p) {
                es.kinds(0)->ivals[p] = EQ_ITEM_CONSTANT;
                es.constants(0)->dvals[p] = p;
            }
            const auto run_with = [&](int values) {
                es.kinds(0)->ivals[values] = kind;
                es.operands(0)->ivals[values] = kind == EQ_ITEM_VARIABLE ? 2 : 15;
                es.kinds(0)->ivals[values + 1] = EQ_ITEM_BINARY;
                es.operands(0)->ivals[values + 1] = f;
                es.kinds(0)->count = values + 2;
                return EqEvaluate(es, 0);
            };
            EXPECT_EQ(run_with(52), 51.0) << kind << ' ' << f;
            EXPECT_NE(run_with(51), 50.0) << "the last place is used";
        }
}

TEST(EqEvaluate, RunsProgramsInArraysOfAnyLength)
{
    Evaluator es;
    es.set("x", 0.5);
    es.parse("y = 1");
    for (DATAstruct* child : {es.kinds(0), es.operands(0), es.constants(0)}) {
        child->count = 150;
        ASSERT_EQ(DATAReAllocate(child), 1);
    }
    compose(es, {{16, 3, 0}, {4, -1, 1}});
    for (int p = 2; p < 142; p += 2) { // 70 times + x
        es.kinds(0)->ivals[p] = EQ_ITEM_VARIABLE;
        es.operands(0)->ivals[p] = 2;
        es.kinds(0)->ivals[p + 1] = EQ_ITEM_BINARY;
        es.operands(0)->ivals[p + 1] = 0;
    }
    es.kinds(0)->ivals[142] = EQ_ITEM_END;
    es.kinds(0)->count = 142;
    EXPECT_EQ(EqEvaluate(es, 0), 36.0);
    EXPECT_EQ(EqSimplify(es, 0), 1);
    EXPECT_EQ(EqEvaluate(es, 0), 36.0);
    es.kinds(0)->count = 1000000; // no item lies beyond the arrays
    EXPECT_EQ(EqEvaluate(es, 0), 36.0);
    es.constants(0)->count = 4;
    ASSERT_EQ(DATAReAllocate(es.constants(0)), 1);
    EXPECT_EQ(EqEvaluate(es, 0), 1.5);
    EXPECT_EQ(EqSimplify(es, 0), 1);
}

TEST(EqEvaluate, ReadsVariablesInMemoryOfTheHost)
{
    Evaluator es;
    es.set("x", 0.5);
    es.parse("y = x * 4");
    for (DATAstruct* array : {es->var_vals, es->var_flags, es->funcs})
        array->alloc_count = array->alloc_dim = -1;
    EXPECT_EQ(EqEvaluate(es, 0), 2.0);
    EXPECT_EQ(EqSystemEvaluate(es), 1);
    EXPECT_EQ(es.get("y"), 2.0);
    es->var_flags->bvals[3] = 1;
    es.set("y", 0.0);
    EXPECT_EQ(EqEvaluate(es, 0), 2.0);
    EXPECT_EQ(es.get("y"), 0.0);
    es->var_vals->count = 3; // y is not there any more
    EXPECT_EQ(EqEvaluate(es, 0), 2.0);
    EXPECT_EQ(EqSystemEvaluate(es), 1);
    es->var_vals->count = 5;
}

TEST(EqEvaluate, UsesTheHeapForNothing)
{
    NEEDS_HEAP_FAILURES();
    Evaluator es;
    es.parse("y = SIN(x) + RAND * 2 ^ 3");
    const korvale::test::HeapWatch heap;
    EqEvaluate(es, 0);
    EXPECT_EQ(heap.allocations(), 0);
}

TEST(EqEvaluate, CallsARegisteredFunction)
{
    Evaluator es;
    es.add("TRIPLE", tripled);
    es.add("SQUARES", difference_of_squares);
    EXPECT_EQ(es.value("y = TRIPLE(2 + 3) - 1"), 14.0);
    EXPECT_EQ(es.value("y = 3 SQUARES 2"), 5.0);
}

TEST(EqEvaluate, CallsWhatTheHostPutIntoARegistrySlot)
{
    Evaluator es;
    es.set("x", 5.0);
    es.set("z", 3.0);
    es.parse("y = x - z");
    es.parse("y = -x");
    es.parse("y = SQRT x");
    es.parse("y = SIN x");
    es.parse("y = x ^ z");
    for (int f = 0; f < 5; ++f)
        es->funcs->pvals[f] = reinterpret_cast<void*>(difference_of_squares);
    for (int f = 5; f < 15; ++f)
        es->funcs->pvals[f] = reinterpret_cast<void*>(tripled);
    EXPECT_EQ(EqEvaluate(es, 0), 16.0);
    EXPECT_EQ(EqEvaluate(es, 1), 15.0);
    EXPECT_EQ(EqEvaluate(es, 2), 15.0);
    EXPECT_EQ(EqEvaluate(es, 3), 15.0);
    EXPECT_EQ(EqEvaluate(es, 4), 16.0);
}

TEST(EqEvaluate, BuiltInFunctionsMoveAboutTheRegistry)
{
    Evaluator es;
    es.set("x", 16.0);
    es.parse("y = x + 3");
    es.parse("y = -x");
    std::swap(es->funcs->pvals[0], es->funcs->pvals[1]);
    std::swap(es->funcs->pvals[5], es->funcs->pvals[9]);
    EXPECT_EQ(EqEvaluate(es, 0), 13.0);
    EXPECT_EQ(EqEvaluate(es, 1), 4.0);
}

TEST(EqEvaluate, ASlotWithoutAFunctionGivesZero)
{
    Evaluator es;
    es.set("x", 16.0);
    es.parse("y = x + 3 + 1");
    es.parse("y = -x");
    es.parse("y = RAND - 1");
    es->funcs->pvals[0] = nullptr;
    es->funcs->pvals[5] = nullptr;
    es->funcs->pvals[15] = nullptr;
    EXPECT_EQ(EqEvaluate(es, 0), 0.0);
    EXPECT_EQ(EqEvaluate(es, 1), 0.0);
    EXPECT_EQ(EqEvaluate(es, 2), -1.0);
}

TEST(EqEvaluate, SeesVariablesThatACalledFunctionChanges)
{
    Evaluator es;
    meddled_with = es;
    es.add("SETZ", set_z_to);
    EXPECT_EQ(es.value("y = z + SETZ(7) * 100 + z"), 0 + 800 + 7.0);
}

/// Declares variables, registers functions and parses equations, so that every array moves.
double upheave(double x)
{
    for (int i = 0; i < 30; ++i) {
        char name[] = {'v', static_cast<char>('a' + i % 26), static_cast<char>('a' + i / 26), '\0'};
        char equation[] = "x = 2";
        EqParseVariables(meddled_with, name, 0);
        EqAddFuncUnary(meddled_with, name, tripled);
        EqParseEquation(meddled_with, equation);
    }
    return x;
}

TEST(EqEvaluate, SurvivesACalledFunctionThatGrowsTheSystem)
{
    Evaluator es;
    meddled_with = es;
    es.add("UPHEAVE", upheave);
    es.set("x", 4.0);
    EXPECT_EQ(es.value("y = x + UPHEAVE(1) + x"), 9.0);
    EXPECT_EQ(es.get("y"), 9.0);
    Evaluator other;
    meddled_with = other;
    other.add("UPHEAVE", upheave);
    other.parse("y = x + UPHEAVE(1) + x");
    other.set("x", 4.0);
    EXPECT_EQ(EqSystemEvaluate(other), 1);
    EXPECT_EQ(other.get("y"), 9.0);
    EXPECT_EQ(other.get("x"), 2.0); // from the new equations
}

TEST(EqSystemEvaluate, ShowsAnUnreservedVariableAtOnce)
{
    System es;
    es.declare("a b");
    es.parse("a = b + 1");
    es.parse("b = a + 1");
    EXPECT_EQ(EqSystemEvaluate(es), 1);
    EXPECT_EQ(es.get("a"), 1.0);
    EXPECT_EQ(es.get("b"), 2.0);
}

TEST(EqSystemEvaluate, ShowsAReservedVariableAfterThePass)
{
    System es;
    es.declare("a b", 1);
    es.parse("a = b + 1");
    es.parse("b = a + 1");
    EXPECT_EQ(EqSystemEvaluate(es), 1);
    EXPECT_EQ(es.get("a"), 1.0);
    EXPECT_EQ(es.get("b"), 1.0);
    EXPECT_EQ(EqSystemEvaluate(es), 1);
    EXPECT_EQ(es.get("a"), 2.0);
    EXPECT_EQ(es.get("b"), 2.0);
}

TEST(EqSystemEvaluate, TheLastEquationOfAVariableWins)
{
    System es;
    es.declare("a", 1);
    es.declare("b");
    es.parse("a = 1");
    es.parse("b = a + 10");
    es.parse("a = 2");
    es.parse("b = b + a + 1");
    EXPECT_EQ(EqSystemEvaluate(es), 1);
    EXPECT_EQ(es.get("a"), 2.0);
    EXPECT_EQ(es.get("b"), 11.0);
}

TEST(EqSystemEvaluate, SkipsEmptyProgramsAndZeroesRefusedOnes)
{
    System es;
    es.declare("a b");
    es.set("a", 3.0);
    es.set("b", 4.0);
    es.parse("nothing");
    es.parse("q = 1");
    es.parse("a = 1 + q");
    EXPECT_EQ(EqSystemEvaluate(es), 1);
    EXPECT_EQ(es.get("a"), 0.0);
    EXPECT_EQ(es.get("b"), 4.0);
}

TEST(EqSystemEvaluate, FailsWithoutVariables)
{
    System es;
    es->var_vals->count = 0;
    EXPECT_EQ(EqSystemEvaluate(es), -1);
    es->var_vals->count = 2;
    EXPECT_EQ(EqSystemEvaluate(es), 1);
}

TEST(EqSystemEvaluate, EquationsThatAHostCountedBeyondTheArrayTakeNoTime)
{
    Evaluator es;
    es.parse("y = y + 1");
    es->equations->count = std::numeric_limits<int>::max();
    for (int pass = 1; pass <= 20; ++pass)
        EXPECT_EQ(EqSystemEvaluate(es), 1);
    EXPECT_EQ(es.get("y"), 20.0);
    es->equations->count = 1;
}

TEST(EqSystemEvaluate, WithoutEquationsChangesNothing)
{
    System es;
    EXPECT_EQ(EqSystemEvaluate(es), 1);
    EXPECT_EQ(es.get("PI"), 3.141592653589793);
}

TEST(EqSystemEvaluate, WhatACalledFunctionChangesDoesNotOutlastThePass)
{
    Evaluator es;
    meddled_with = es;
    es.add("SETZ", set_z_to);
    es.set("z", 1.0);
    es.parse("x = SETZ(7)");
    es.parse("y = z");
    EXPECT_EQ(EqSystemEvaluate(es), 1);
    EXPECT_EQ(es.get("x"), 8.0);
    EXPECT_EQ(es.get("y"), 7.0); // seen during the pass
    EXPECT_EQ(es.get("z"), 1.0); // and put back at its end
    es.parse("z = 5 + SETZ(2)");
    EXPECT_EQ(EqSystemEvaluate(es), 1);
    EXPECT_EQ(es.get("z"), 8.0);
    es.parse("y = SETZ(3)"); // after the result of z is known
    EXPECT_EQ(EqSystemEvaluate(es), 1);
    EXPECT_EQ(es.get("z"), 8.0);
}

TEST(EqSystemEvaluate, UsesTheHeapForMoreThanSixtyFourVariables)
{
    NEEDS_HEAP_FAILURES();
    const auto allocations = [](int variables, int flag, bool calls_host, int equations) {
        System es;
        std::string names;
        for (int i = 2; i < variables; ++i)
            names += {static_cast<char>('a' + i / 26), static_cast<char>('a' + i % 26), ' '};
        es.declare(names, flag);
        es.add("TRIPLE", tripled);
        for (int i = 0; i < equations; ++i)
            es.parse(names.substr(static_cast<size_t>(3 * i), 3) + (calls_host ? "= TRIPLE 1" : "= SIN 1"));
        const korvale::test::HeapWatch heap;
        EXPECT_EQ(EqSystemEvaluate(es), 1);
        return heap.allocations();
    };
    EXPECT_EQ(allocations(64, 1, true, 62), 0);
    EXPECT_EQ(allocations(65, 0, true, 1), 1);
    EXPECT_EQ(allocations(200, 0, false, 100), 0);
    EXPECT_EQ(allocations(200, 1, false, 64), 0);
    EXPECT_EQ(allocations(200, 1, false, 65), 1);
}

TEST(EqSystemEvaluate, ChangesNothingWhenItsScratchCannotBeMade)
{
    NEEDS_HEAP_FAILURES();
    System es;
    std::string names;
    for (int i = 0; i < 200; ++i)
        names += {static_cast<char>('a' + i / 26), static_cast<char>('a' + i % 26), ' '};
    es.declare(names, 1);
    for (int i = 0; i < 200; ++i)
        es.parse(names.substr(static_cast<size_t>(3 * i), 3) + "= 1");
    const korvale::test::HeapFailure failure(1);
    const int evaluated = EqSystemEvaluate(es);
    EXPECT_TRUE(failure.happened());
    EXPECT_EQ(evaluated, -1);
    EXPECT_EQ(es.get("aa"), 0.0);
    EXPECT_EQ(es.get("hr"), 0.0);
}

} // namespace
} // namespace korvale::test
