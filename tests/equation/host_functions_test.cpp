// What functions of a host may do while an evaluation, a pass, a table or a simplification calls them, and what happens
// where one does what it may not: it releases what is in use.
#include <algorithm>
#include <cstdlib>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/equation/system.h"
#include "tests/support/bits.h"

namespace korvale::test {
namespace {

/// What the functions below do when they are called.
std::function<void()> act;

/// `work` at the first call, nothing from then on.
template <class Work>
std::function<void()> once(Work work)
{
    return [work, is_done = false]() mutable {
        if (!std::exchange(is_done, true))
            work();
    };
}

double acting(double x)
{
    act();
    return x;
}

double joining(double, double b)
{
    act();
    return b;
}

double drawing()
{
    act();
    return 4;
}

double sum(double a, double b)
{
    return a + b;
}

double product(double a, double b)
{
    return a * b;
}

template <class Function>
void* erased(Function* function)
{
    return reinterpret_cast<void*>(function);
}

/// The variables x, y, z (indices 2, 3, 4) and the functions ACT (18), JOIN (19) and DRAW (20).
struct Host : System {
    Host()
    {
        declare("x y z");
        add("ACT", acting);
        add("JOIN", joining);
        add("DRAW", drawing);
    }
    ~Host() { act = nullptr; }

    /// Everything a function may add, often enough for every array to move.
    void grow()
    {
        for (char letter = 'a'; letter <= 'w'; ++letter) {
            declare({'n', letter});
            add({'N', letter}, sum);
            parse("x = x");
        }
    }
};

struct Item {
    int kind, operand;
    double constant;
};

Item number(double value)
{
    return {EQ_ITEM_CONSTANT, -1, value};
}

/// Ways in which an evaluation runs its items.
enum class Route { usual, replaced_operator, wrapped_variables, wrapped_items, many_values, nothing_pushed_first };

/// A host whose equation 0 is y = x + (a call that gives 4) + 3, to be run by one of the routes; x is 100.
struct Routed : Host {
    Routed(Route route, int call_kind)
    {
        set("x", 100);
        if (parse("y = 1") != 2)
            std::abort();
        const Item addition = {EQ_ITEM_BINARY, 0, 0};
        std::vector<Item> items = {{EQ_ITEM_TARGET, 3, 0}};
        if (route == Route::many_values) // 51 with those of the call
            items.insert(items.end(), call_kind == EQ_ITEM_BINARY ? 48 : 49, number(0));
        if (route == Route::nothing_pushed_first)
            items.push_back(addition);
        items.push_back({EQ_ITEM_VARIABLE, 2, 0});
        if (call_kind == EQ_ITEM_BINARY)
            items.push_back(number(1000));
        if (call_kind != EQ_ITEM_SAMPLE)
            items.push_back(number(4));
        items.push_back({call_kind, call_kind == EQ_ITEM_UNARY ? 18 : call_kind == EQ_ITEM_BINARY ? 19 : 20, 0});
        items.push_back(addition);
        with_one_sum = static_cast<int>(items.size());
        items.push_back(number(3));
        items.push_back(addition);
        with_both_sums = static_cast<int>(items.size());
        for (size_t p = 0; p < items.size(); ++p) {
            kinds(0)->ivals[p] = items[p].kind;
            operands(0)->ivals[p] = items[p].operand;
            constants(0)->dvals[p] = items[p].constant;
        }
        kinds(0)->count = with_both_sums;
        if (route == Route::replaced_operator)
            get()->funcs->pvals[0] = erased(sum);
        if (route == Route::wrapped_variables)
            get()->var_flags->alloc_count = get()->var_flags->alloc_dim = get()->var_vals->alloc_count =
                get()->var_vals->alloc_dim = -1;
        if (route == Route::wrapped_items)
            constants(0)->alloc_count = constants(0)->alloc_dim = -1;
    }

    double evaluate() { return EqEvaluate(get(), 0); }

    int with_one_sum, with_both_sums; ///< items
};

/// Runs `test` on a fresh host for every route and each kind of function.
template <class Test>
void on_every_route(Test test)
{
    for (const Route route : {Route::usual, Route::replaced_operator, Route::wrapped_variables, Route::wrapped_items,
                              Route::many_values, Route::nothing_pushed_first})
        for (const int call_kind : {EQ_ITEM_UNARY, EQ_ITEM_BINARY, EQ_ITEM_SAMPLE}) {
            SCOPED_TRACE("route " + std::to_string(static_cast<int>(route)) + " kind " + std::to_string(call_kind));
            Routed host(route, call_kind);
            test(host);
        }
}

TEST(HostFunctions, ChangeTheItemCountOnEveryRoute)
{
    on_every_route([](Routed& host) {
        act = [] {};
        EXPECT_EQ(host.evaluate(), 107.0);
        act = [&] { host.kinds(0)->count = host.with_one_sum; };
        EXPECT_EQ(host.evaluate(), 104.0);
        EXPECT_EQ(host.get("y"), 104.0);
        act = [&] { host.kinds(0)->count = host.with_both_sums; };
        EXPECT_EQ(host.evaluate(), 107.0);
        EXPECT_EQ(host.get("y"), 107.0);
        act = [&] { host.kinds(0)->count = 0; };
        EXPECT_EQ(host.evaluate(), 4.0);
        EXPECT_EQ(host.get("y"), 4.0);
    });
}

TEST(HostFunctions, ReplaceFunctionsOnEveryRoute)
{
    on_every_route([](Routed& host) {
        act = [&] { host->funcs->pvals[0] = erased(product); };
        EXPECT_EQ(host.evaluate(), 1200.0);
        act = [&] { host->funcs->pvals[0] = erased(EqFuncAdd); };
        EXPECT_EQ(host.evaluate(), 107.0);
    });
}

TEST(HostFunctions, SetAndReserveVariablesOnEveryRoute)
{
    on_every_route([](Routed& host) {
        host.constants(0)->dvals[host.with_one_sum] = 0;
        host.kinds(0)->ivals[host.with_one_sum] = EQ_ITEM_VARIABLE; // + z
        host.operands(0)->ivals[host.with_one_sum] = 4;
        act = [&] { EqSetVariable(host, 4, 30); };
        EXPECT_EQ(host.evaluate(), 134.0);
        act = [&] { host->var_flags->bvals[3] = 1; };
        host.set("z", 50);
        EXPECT_EQ(host.evaluate(), 154.0);
        EXPECT_EQ(host.get("y"), 134.0);
    });
}

TEST(HostFunctions, DeclareRegisterAndParseOnEveryRoute)
{
    on_every_route([](Routed& host) {
        act = once([&] { host.grow(); });
        EXPECT_EQ(host.evaluate(), 107.0);
        EXPECT_EQ(host.get("y"), 107.0);
        EXPECT_EQ(host->equations->count, 24);
    });
}

TEST(HostFunctions, EvaluateAndSimplifyOnEveryRoute)
{
    on_every_route([](Routed& host) {
        host.parse("z = 2 * 3 + x");
        act = once([&] {
            EXPECT_EQ(host.evaluate(), 107.0);
            EXPECT_EQ(EqSimplify(host, 1), 1);
            EXPECT_EQ(EqSystemEvaluate(host), 1);
            EXPECT_EQ(host.get("z"), 106.0);
        });
        EXPECT_EQ(host.evaluate(), 107.0);
    });
}

TEST(HostFunctions, MakeTablesOnEveryRoute)
{
    on_every_route([](Routed& host) {
        host.parse("z = RAND");
        host.kinds(0)->ivals[host.with_one_sum] = EQ_ITEM_SAMPLE; // + RAND
        host.operands(0)->ivals[host.with_one_sum] = 15;
        act = [&] {
            EXPECT_EQ(EqMakeTable(host, 15, 1, 1), 1);
            host.table(15)->dvals[0] = 20;
        };
        EXPECT_EQ(host.evaluate(), 124.0);
    });
}

TEST(HostFunctions, ReleasingTheSystemEndsAnEvaluationOnEveryRoute)
{
    on_every_route([](Routed& host) {
        act = [&] { EqSystemDispose(host); };
        EXPECT_EQ(host.evaluate(), 4.0);
        EXPECT_EQ(host->equations, nullptr);
    });
}

TEST(HostFunctions, ReleasingTheItemsEndsAnEvaluationOnEveryRoute)
{
    on_every_route([](Routed& host) {
        act = [&] { DATADispose(host.kinds(0)); };
        EXPECT_EQ(host.evaluate(), 4.0);
        EXPECT_EQ(host.get("y"), 0.0);
    });
}

TEST(HostFunctions, ReleasingTheVariablesLosesTheResultOnEveryRoute)
{
    on_every_route([](Routed& host) {
        act = [&] { DATADispose(host->var_vals); };
        EXPECT_EQ(host.evaluate(), 107.0);
        EXPECT_EQ(host->var_vals->dvals, nullptr);
        DATADispose(host->var_flags);
        DATADispose(host->var_names);
    });
}

TEST(HostFunctions, EquationsParsedWhileAPassRunsRunInIt)
{
    Host host;
    host.set("x", 1);
    host.parse("y = ACT(2)");
    int parsed = 0;
    act = [&] {
        if (parsed++ < 30) // beyond the room for equations
            host.parse(parsed < 30 ? "x = x + 1" : "z = ACT(x)");
    };
    EXPECT_EQ(EqSystemEvaluate(host), 1);
    EXPECT_EQ(host->equations->count, 2);
    EXPECT_EQ(host.get("x"), 2.0);
    parsed = 29;
    EXPECT_EQ(EqSystemEvaluate(host), 1);
    EXPECT_EQ(host->equations->count, 3);
    EXPECT_EQ(host.get("x"), 3.0);
    EXPECT_EQ(host.get("z"), 3.0);
    act = once([&] {
        host.grow();
        host.parse("x = 5");
    });
    EXPECT_EQ(EqSystemEvaluate(host), 1);
    EXPECT_EQ(host->equations->count, 27);
    EXPECT_EQ(host.get("x"), 5.0);
    EXPECT_EQ(host.get("y"), 2.0);
}

TEST(HostFunctions, EquationsParsedWhileAPassOverManyVariablesRunsRunInIt)
{
    Host host;
    for (char first = 'a'; first <= 'c'; ++first)
        for (char second = 'a'; second <= 'z'; ++second)
            host.declare({first, second}, 1);
    host.parse("aa = x");
    host.parse("y = ACT(2)");
    act = [&] { host.parse("cz = 7"); };
    EXPECT_EQ(EqSystemEvaluate(host), 1);
    EXPECT_EQ(host.get("cz"), 7.0);
}

TEST(HostFunctions, AReservedVariableDeclaredWhileAPassRunsDropsItsResult)
{
    Host host;
    host.parse("y = ACT(2)");
    act = once([&] {
        host.declare("kept", 1);
        host.declare("free", 0);
        host.parse("kept = 7");
        host.parse("free = kept + 8");
    });
    EXPECT_EQ(EqSystemEvaluate(host), 1);
    EXPECT_EQ(host.get("kept"), 0.0);
    EXPECT_EQ(host.get("free"), 8.0); // changed at once
    EXPECT_EQ(EqSystemEvaluate(host), 1);
    EXPECT_EQ(host.get("kept"), 7.0);
}

TEST(HostFunctions, ReleasingTheSystemEndsAPass)
{
    Host host;
    host.parse("y = ACT(2)");
    host.parse("x = 7");
    act = [&] { EqSystemDispose(host); };
    EXPECT_EQ(EqSystemEvaluate(host), 1);
    EXPECT_EQ(host->var_vals, nullptr);
}

TEST(HostFunctions, ReleasingTheSystemEndsATableRead)
{
    Host host;
    act = [&] { EqSystemDispose(host); };
    EXPECT_EQ(EqTableRead(host, 20), 4.0);
    EXPECT_EQ(host->table_pos, nullptr);
}

/// COUNT (21) counts its calls and acts.
int calls;

double counting()
{
    act();
    return ++calls;
}

struct Counting : Host {
    explicit Counting(const char* text)
    {
        calls = 0;
        add("COUNT", counting);
        if (parse(text) < 0)
            std::abort();
    }
};

TEST(HostFunctions, ReleasingTheSystemOrTheTableEndsATable)
{
    Counting host("y = COUNT + COUNT");
    act = [&] {
        DATADispose(host.table(21));
        std::free(host.table(21));
        host->tables->pvals[21] = nullptr;
    };
    EXPECT_EQ(EqMakeTable(host, 21, 3, 1), -1);
    EXPECT_EQ(calls, 1);
    act = [&] { EqSystemDispose(host); };
    Counting other("y = COUNT");
    act = [&] { EqSystemDispose(other); };
    EXPECT_EQ(EqMakeTable(other, 21, 3, 1), -1);
    EXPECT_EQ(calls, 1);
}

TEST(HostFunctions, ParsingItsOwnNameDoesNotLengthenATable)
{
    Counting host("y = COUNT + COUNT");
    act = [&] { host.parse("y = COUNT"); };
    EXPECT_EQ(EqMakeTable(host, 21, 3, 1), 1);
    EXPECT_EQ(calls, 6); // as many as there were elements at the start
    EXPECT_EQ(host.table(21)->dim, 8);
    EXPECT_TRUE(same_bits({1, 2, 3, 4, 5, 6}, host.table(21)->dvals));
}

TEST(HostFunctions, ASmallerTableTakesNoMoreValuesThanItHasRoomFor)
{
    Counting host("y = COUNT + COUNT");
    act = [&] {
        if (calls == 2) {
            host.table(21)->count = 2;
            EXPECT_EQ(DATAReAllocate(host.table(21)), 1);
        }
    };
    EXPECT_EQ(EqMakeTable(host, 21, 3, 1), 1);
    EXPECT_EQ(calls, 6);
    EXPECT_TRUE(same_bits({1, 2, 3, 4}, host.table(21)->dvals));
}

TEST(HostFunctions, RegisterFunctionsWhileATableIsMade)
{
    Counting host("y = COUNT");
    act = once([&] { host.grow(); });
    EXPECT_EQ(EqMakeTable(host, 21, 3, 1), 1);
    EXPECT_TRUE(same_bits({1, 2, 3}, host.table(21)->dvals));
}

TEST(HostFunctions, ATableReadGoesOnWithRowsColumnsAndPositionOfBefore)
{
    Counting host("y = COUNT + COUNT + COUNT");
    act = [] {};
    ASSERT_EQ(EqMakeTable(host, 21, 2, 1), 1);
    EqSetTableIndex(host, 5);
    host->table_pos->ivals[21] = 4; // one more than a read leaves
    act = [&] {
        host.table(21)->count = 100;
        host.table(21)->dim = 1;
        host->table_pos->ivals[21] = 77;
        EqSetTableIndex(host, 0);
    };
    EXPECT_EQ(EqTableRead(host, 21), 7.0);
    EXPECT_EQ(host->table_pos->ivals[21], 1); // 4 - 3
}

TEST(HostFunctions, DeclareRegisterAndParseWhileEquationsAreSimplified)
{
    Host host;
    host.parse("y = 2 + ACT(3) * (1 JOIN 5) + x");
    act = once([&] {
        host.grow();
        host.parse("z = 2 * 3");
    });
    EXPECT_EQ(EqSystemSimplify(host), 1);
    EXPECT_EQ(host.program(0), "y = 17 x ADD");
    EXPECT_EQ(host.program(), "z = 6"); // an equation that came meanwhile
}

TEST(HostFunctions, ReleasingTheSystemOrTheItemsEndsASimplification)
{
    for (const bool is_binary : {false, true}) {
        const char* const text = is_binary ? "y = 2 + (1 JOIN 3) + ACT(5)" : "y = 2 + ACT(3) + (1 JOIN 5)";
        Host host;
        host.parse(text);
        act = [&] { DATADispose(host.kinds(0)); };
        EXPECT_EQ(EqSimplify(host, 0), 1);
        EXPECT_EQ(host.constants(0)->dvals[1], 2.0);
        Host other;
        other.parse(text);
        other.parse("z = 2 * 3");
        act = [&] { EqSystemDispose(other); };
        EXPECT_EQ(EqSystemSimplify(other), 1);
        EXPECT_EQ(other->equations, nullptr);
    }
}

} // namespace
} // namespace korvale::test
