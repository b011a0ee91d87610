// Declaring variables, finding them, setting and reading them.
#include "equation/variables.h"

#include <cstdlib>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/equation/system.h"
#include "tests/support/heap.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

double one(double)
{
    return 1;
}

TEST(EqParseVariables, DeclaresEveryRunOfLetters)
{
    System es;
    EXPECT_EQ(es.declare("x1y, alpha_Beta-z"), 7);
    EXPECT_EQ(es.variable("x"), 2);
    EXPECT_EQ(es.variable("y"), 3);
    EXPECT_EQ(es.variable("alpha"), 4);
    EXPECT_EQ(es.variable("Beta"), 5);
    EXPECT_EQ(es.variable("z"), 6);
    EXPECT_EQ(es.variable("alpha_Beta"), -1);
    EXPECT_EQ(es.variable("x1y"), -1);
}

TEST(EqParseVariables, OnlyAsciiLettersMakeNames)
{
    System es;
    EXPECT_EQ(es.declare("@[`{\xe4\xc3\xa9\xff"), 2);
    EXPECT_EQ(es.declare("a\xe4z\xc3\xa9Z"), 5);
    EXPECT_EQ(es.variable("a"), 2);
    EXPECT_EQ(es.variable("z"), 3);
    EXPECT_EQ(es.variable("Z"), 4);
}

TEST(EqParseVariables, GivesNewVariablesZeroAndTheFlag)
{
    System es;
    EXPECT_EQ(es.declare("a"), 3);
    es.set("a", 5.0);
    EXPECT_EQ(es.declare("b c", 7), 5);
    EXPECT_EQ(es.declare("d", 0x1ff), 6);
    EXPECT_EQ(es.declare("e", 256), 7);
    EXPECT_EQ(es.get("a"), 5.0);
    EXPECT_EQ(es.get("b"), 0.0);
    const int flags[] = {0, 0, 0, 7, 7, 255, 0};
    for (int v = 0; v < 7; ++v)
        EXPECT_EQ(es->var_flags->bvals[v], flags[v]) << v;
    EXPECT_EQ(es.get("PI"), 3.141592653589793);
}

TEST(EqParseVariables, SkipsNamesThatExistOrRepeat)
{
    System es;
    EXPECT_EQ(es.declare("x, y, x", 1), 4);
    EXPECT_EQ(es.declare("y z PI z y", 2), 5);
    EXPECT_EQ(es.variable("z"), 4);
    EXPECT_EQ(es->var_flags->bvals[3], 1);
    EXPECT_EQ(es->var_flags->bvals[4], 2);
    EXPECT_EQ(es.declare("x y z"), 5);
    EXPECT_EQ(es.declare(""), 5);
    EXPECT_EQ(es.declare(" ,;17 "), 5);
}

TEST(EqParseVariables, KeepsCapitalsApart)
{
    System es;
    EXPECT_EQ(es.declare("pi e Pi"), 5);
    EXPECT_EQ(es.variable("pi"), 2);
    EXPECT_EQ(es.variable("PI"), 0);
}

TEST(EqParseVariables, AcceptsTwelveLettersAndRefusesThirteen)
{
    System es;
    EXPECT_EQ(es.declare("twelveletter"), 3);
    EXPECT_EQ(es.variable("twelveletter"), 2);
    const std::string before = state_of(*es.get());
    EXPECT_EQ(es.declare("a, thirteenchars, b"), -1);
    EXPECT_EQ(state_of(*es.get()), before);
}

TEST(EqParseVariables, RefusesTheNameOfAFunction)
{
    System es;
    const std::string before = state_of(*es.get());
    EXPECT_EQ(es.declare("a, SIN, b"), -1);
    EXPECT_EQ(state_of(*es.get()), before);
    EXPECT_EQ(es.declare("Sin"), 3);
}

TEST(EqParseVariables, RefusesAVariableThatHasBecomeAFunctionSince)
{
    System es;
    EXPECT_EQ(es.declare("wave"), 3);
    EXPECT_EQ(es.add("wave", one), 1);
    EXPECT_EQ(es.declare("wave"), -1);
    EXPECT_EQ(es.declare("x, wave"), -1);
    EXPECT_EQ(es->var_vals->count, 3);
}

TEST(EqParseVariables, MakesTheArraysExactlyAsLarge)
{
    System es;
    for (int n = 3; n <= 30; ++n) {
        EXPECT_EQ(es.declare(std::string(1, static_cast<char>('A' + n / 26)) + static_cast<char>('a' + n % 26)), n);
        for (const DATAstruct* array : {es->var_names, es->var_vals, es->var_flags}) {
            EXPECT_EQ(array->count, n);
            EXPECT_EQ(array->alloc_count, n);
        }
    }
}

TEST(EqParseVariables, AnExhaustedHeapLeavesTheVariablesUnchanged)
{
    NEEDS_HEAP_FAILURES();
    bool failed = true;
    int failures = 0;
    for (; failed && failures < 10; failures += failed) {
        System es;
        es.declare("a b", 3);
        es.set("b", 4.0);
        std::string names = "c d e";
        int declared;
        {
            const korvale::test::HeapFailure failure(failures + 1);
            declared = EqParseVariables(es, names.data(), 1);
            failed = failure.happened();
        }
        const int count = failed ? 4 : 7;
        EXPECT_EQ(declared, failed ? -1 : 7);
        for (const DATAstruct* array : {es->var_names, es->var_vals, es->var_flags})
            EXPECT_EQ(array->count, count);
        EXPECT_EQ(es.variable("c"), failed ? -1 : 4);
        EXPECT_EQ(es.declare("f", 2), count + 1);
        EXPECT_EQ(es.get("b"), 4.0);
        EXPECT_EQ(es->var_flags->bvals[3], 3);
        EXPECT_EQ(es->var_flags->bvals[count], 2);
    }
    EXPECT_EQ(failures, 4); // the new names, and the three arrays
}

TEST(EqParseVariables, AnExhaustedHeapIsRefusedForLongListsToo)
{
    NEEDS_HEAP_FAILURES();
    for (int n = 1; n <= 5; ++n) { // the new names, their hash table, and the three arrays
        System es;
        std::string names = "a b c d e f g h i j k l m n o p q r s t u v w x y z";
        {
            const korvale::test::HeapFailure failure(n);
            EXPECT_EQ(EqParseVariables(es, names.data(), 1), -1);
            EXPECT_TRUE(failure.happened());
        }
        EXPECT_EQ(es->var_vals->count, 2);
        EXPECT_EQ(es.declare(names), 28);
    }
}

TEST(EqParseVariables, VariablesInMemoryOfTheHostDoNotGrow)
{
    for (int which = 0; which < 4; ++which) { // one of the three arrays, or all
        System es;
        es.declare("a b", 3);
        es.set("a", 4.0);
        DATAstruct* const arrays[] = {es->var_names, es->var_vals, es->var_flags};
        for (int i = 0; i < 3; ++i)
            if (which == i || which == 3)
                arrays[i]->alloc_count = arrays[i]->alloc_dim = -1;
        const std::string before = state_of(*es.get());
        const double* const values = es->var_vals->dvals;
        EXPECT_EQ(es.declare("c d"), -1) << which;
        EXPECT_EQ(state_of(*es.get()), before) << which;
        EXPECT_EQ(es->var_vals->dvals, values) << which;
        EXPECT_EQ(es.declare("b a PI"), 4) << which; // nothing to add
        EXPECT_EQ(es.get("PI"), 3.141592653589793) << which;
    }
}

TEST(EqParseVariables, DeclaresManyNames)
{
    System es;
    std::string names;
    const auto name = [](int i) {
        std::string text = "n";
        for (; i > 0; i /= 26)
            text += static_cast<char>('a' + i % 26);
        return text + 'Z';
    };
    for (int i = 0; i < 20000; ++i)
        names += name(i) + (i % 3 == 0 ? " " + name(i / 2) + "," : ",");
    EXPECT_EQ(es.declare(names), 20002);
    EXPECT_EQ(es.declare(names), 20002);
    for (int i = 0; i < 20000; i += 997)
        EXPECT_EQ(es.variable(name(i)), i + 2);
}

TEST(EqSetVariable, StoresByIndexAndByName)
{
    System es;
    es.declare("x y");
    EqSetVariable(es, 2, 1.5);
    EXPECT_EQ(EqReadVariable(es, 2), 1.5);
    EXPECT_EQ(es.get("x"), 1.5);
    char y[] = "y", unknown[] = "unknown";
    EXPECT_EQ(EqSetVariableByName(es, y, -2.0), 1);
    EXPECT_EQ(EqReadVariableByName(es, y), -2.0);
    EXPECT_EQ(EqSetVariableByName(es, unknown, 1.0), -1);
    EXPECT_EQ(EqReadVariableByName(es, unknown), 0.0);
    EXPECT_EQ(EqReserveVariableByName(es, unknown, 1), -1);
}

TEST(EqSetVariable, AnIndexThatIsNoVariablesChangesNothing)
{
    System es;
    const std::string before = state_of(*es.get());
    for (int v : {-1, 2, 1000000, -2147483647 - 1, 2147483647}) {
        EqSetVariable(es, v, 9.0);
        EXPECT_EQ(EqReadVariable(es, v), 0.0);
        EqReserveVariable(es, v, 1);
    }
    EXPECT_EQ(state_of(*es.get()), before);
}

TEST(EqLookupVariable, TakesNamesOfAnyLength)
{
    System es;
    EXPECT_EQ(es.variable("E"), 1);
    EXPECT_EQ(es.variable("e"), -1);
    EXPECT_EQ(es.variable(""), -1);
    EXPECT_EQ(es.variable("P"), -1);
    EXPECT_EQ(es.variable("PIE"), -1);
    EXPECT_EQ(es.variable(std::string(100000, 'x')), -1);
}

TEST(EqReserveVariable, StoresNothingWithoutAnIntegerBuffer)
{
    System es;
    es.declare("a b", 5);
    const std::string before = state_of(*es.get());
    EqReserveVariable(es, 2, 1);
    char b[] = "b";
    EXPECT_EQ(EqReserveVariableByName(es, b, 0), 1);
    EXPECT_EQ(state_of(*es.get()), before);
    EXPECT_EQ(es->var_flags->ivals, nullptr);
}

TEST(EqReserveVariable, StoresThirtyTwoBitsInTheIntegerBufferOfAHost)
{
    System es;
    es.declare("a b", 5);
    es->var_flags->ivals = static_cast<int32_t*>(std::calloc(4, sizeof(int32_t)));
    EqReserveVariable(es, 2, 0x12345678);
    char b[] = "b";
    EXPECT_EQ(EqReserveVariableByName(es, b, -1), 1);
    EXPECT_EQ(es->var_flags->ivals[0], 0);
    EXPECT_EQ(es->var_flags->ivals[1], 0);
    EXPECT_EQ(es->var_flags->ivals[2], 0x12345678);
    EXPECT_EQ(es->var_flags->ivals[3], -1);
    EXPECT_EQ(es->var_flags->bvals[2], 5);
    EXPECT_EQ(es->var_flags->bvals[3], 5);
}

/// What `EqParseVariables` is to declare, name by name from the text.
int declared_by(const std::string& text, const std::set<std::string>& functions, std::vector<std::string>& variables)
{
    std::vector<std::string> after = variables;
    std::string name;
    for (const char c : text + " ") {
        if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z')) {
            name += c;
            continue;
        }
        if (name.size() > 12 || functions.count(name) > 0)
            return -1;
        bool known = name.empty();
        for (const std::string& variable : after)
            known = known || variable == name;
        if (!known)
            after.push_back(name);
        name.clear();
    }
    variables = after;
    return static_cast<int>(variables.size());
}

TEST(EqParseVariables, DeclaresRandomListsAsReadNameByName)
{
    Random random(20260101);
    const std::set<std::string> functions = {"ADD", "AB", "RAND"};
    for (int round = 0; round < korvale::test::rounds(300); ++round) {
        System es;
        es.add("AB", one);
        std::vector<std::string> variables = {"PI", "E"};
        for (int list = random.between(1, 6); list > 0; --list) {
            std::string text;
            for (int name = random.between(0, random.one_in(4) ? 120 : 6); name > 0; --name) {
                for (int letter = random.one_in(400) ? 13 : random.between(1, 3); letter > 0; --letter)
                    text += "abcdABCD"[random.below(random.one_in(3) ? 8 : 7)];
                text += " ,1_\n"[random.below(5)];
            }
            const int expected = declared_by(text, functions, variables);
            ASSERT_EQ(es.declare(text), expected) << text;
            ASSERT_EQ(es->var_vals->count, static_cast<int>(variables.size()));
            for (size_t v = 0; v < variables.size(); ++v)
                ASSERT_STREQ(reinterpret_cast<const char*>(es->var_names->bvals + 13 * v), variables[v].c_str());
        }
    }
}

} // namespace
} // namespace korvale::test
