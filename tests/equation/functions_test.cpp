// Registering functions, finding them, and the built-in ones.
#include "equation/functions.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "equation/evaluate.h"
#include "equation/tables.h"
#include "tests/equation/system.h"
#include "tests/support/bits.h"
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

double forty_two()
{
    return 42;
}

const char* name_of(EquationSystem* es, int f)
{
    return reinterpret_cast<const char*>(es->func_names->bvals + 13 * f);
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

TEST(EqAddFunc, TakesANameThatStandsInTheRegistry)
{
    System es;
    while (es->funcs->count < 41) // at 20 the names move to a larger array
        ASSERT_EQ(EqAddFuncUnary(es, reinterpret_cast<char*>(es->func_names->bvals + 13 * 6), doubled), 1);
    for (int f = 18; f < 41; ++f)
        EXPECT_STREQ(name_of(es, f), "SIN") << f;
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

// From state = state * 214013 + 2531011 mod 2^32, (state >> 16) & 0x7fff.
constexpr int kFromSeven[] = {61, 17422, 15215, 7040, 15521, 6516, 30152, 11794};
constexpr int kFromOne[] = {41, 18467, 6334, 26500, 19169, 15724, 11478, 29358};

TEST(EqSeed, FixesTheSequenceForTwoSeeds)
{
    EqSeed(7);
    for (int draw : kFromSeven)
        EXPECT_EQ(EqFuncRand(), draw / 32767.0);
    EqSeed(1);
    for (int draw : kFromOne)
        EXPECT_EQ(EqFuncRand(), draw / 32767.0);
}

TEST(gauss_init, SeedsLikeEqSeed)
{
    gauss_init(7);
    for (int draw : kFromSeven)
        EXPECT_EQ(EqFuncRand(), draw / 32767.0);
}

TEST(gauss, ScalesTheSumOfFourDraws)
{
    EqSeed(1);
    EXPECT_TRUE(same_bits((41 / 32767.0 + 18467 / 32767.0 + 6334 / 32767.0 + 26500 / 32767.0) * 1.7320508 - 3.4641016,
                          gauss()));
    EXPECT_TRUE(same_bits(
        (19169 / 32767.0 + 15724 / 32767.0 + 11478 / 32767.0 + 29358 / 32767.0) * 1.7320508 - 3.4641016, gauss()));
}

TEST(gauss, IsAboutNormal)
{
    EqSeed(7);
    constexpr int n = 100000;
    double sum = 0, squares = 0;
    for (int i = 0; i < n; ++i) {
        const double x = gauss();
        ASSERT_LE(std::fabs(x), 3.4641016);
        sum += x;
        squares += x * x;
    }
    EXPECT_LT(std::fabs(sum / n), 5 / std::sqrt(n)); // five standard errors
    EXPECT_NEAR(squares / n, 1.0, 5 * std::sqrt(2.0 / n));
}

TEST(EqFuncRand, StaysInTheUnitInterval)
{
    EqSeed(7);
    double least = 1, greatest = 0;
    for (int i = 0; i < 1000000; ++i) {
        const double x = EqFuncRand();
        least = std::fmin(least, x);
        greatest = std::fmax(greatest, x);
    }
    EXPECT_EQ(least, 0.0);
    EXPECT_EQ(greatest, 1.0);
}

TEST(EqFuncDivide, GivesZeroForAZeroDivisorOfEitherSign)
{
    EXPECT_TRUE(same_bits(0.0, EqFuncDivide(1.0, 0.0)));
    EXPECT_TRUE(same_bits(0.0, EqFuncDivide(1.0, -0.0)));
    EXPECT_TRUE(same_bits(0.0, EqFuncDivide(-1.0, 0.0)));
    EXPECT_TRUE(same_bits(0.0, EqFuncDivide(std::numeric_limits<double>::quiet_NaN(), 0.0)));
    EXPECT_TRUE(same_bits(-0.5, EqFuncDivide(1.0, -2.0)));
    EXPECT_TRUE(std::isinf(EqFuncDivide(1.0, std::numeric_limits<double>::denorm_min())));
    EXPECT_TRUE(std::isnan(EqFuncDivide(1.0, std::numeric_limits<double>::quiet_NaN())));
}

TEST(EqFuncNegate, FlipsTheSignBit)
{
    EXPECT_TRUE(same_bits(-0.0, EqFuncNegate(0.0)));
    EXPECT_TRUE(same_bits(0.0, EqFuncNegate(-0.0)));
    EXPECT_TRUE(same_bits(2.5, EqFuncNegate(-2.5)));
    EXPECT_TRUE(std::signbit(EqFuncNegate(std::copysign(std::numeric_limits<double>::quiet_NaN(), 1.0))));
}

TEST(EqFunc, AddsSubtractsAndMultiplies)
{
    EXPECT_TRUE(same_bits(0.30000000000000004, EqFuncAdd(0.1, 0.2)));
    EXPECT_TRUE(same_bits(-0.1, EqFuncSubtract(0.1, 0.2)));
    EXPECT_TRUE(same_bits(0.020000000000000004, EqFuncMultiply(0.1, 0.2)));
    EXPECT_TRUE(same_bits(-0.0, EqFuncMultiply(-0.0, 2.0)));
}

} // namespace
} // namespace korvale::test
