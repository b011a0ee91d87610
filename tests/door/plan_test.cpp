// Plans of equations over columns, run step by step, against the rows evaluated one by one.
#include "door/internal/plan.h"

#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "equation/evaluate.h"
#include "equation/variables.h"
#include "include/korvale_c.h"
#include "tests/support/bits.h"
#include "tests/support/random.h"

namespace korvale::test {
using namespace door;

namespace {

class System {
public:
    explicit System(const std::vector<std::string>& equations)
    {
        EXPECT_EQ(korvale_equations_new(&equations_, nullptr), KORVALE_OK);
        EXPECT_EQ(korvale_equations_declare(equations_, "x y z w", 0, nullptr), KORVALE_OK);
        for (const std::string& text : equations)
            EXPECT_EQ(korvale_equations_add(equations_, text.c_str(), nullptr, nullptr), KORVALE_OK) << text;
    }
    ~System() { korvale_equations_free(equations_); }
    System(const System&) = delete;
    System& operator=(const System&) = delete;

    EquationSystem& record() const { return *static_cast<EquationSystem*>(korvale_equations_record(equations_)); }
    int32_t number(std::string name) const { return EqLookupVariable(&record(), name.data()); }
    double& value(const std::string& name) const { return record().var_vals->dvals[number(name)]; }

private:
    korvale_equations* equations_ = nullptr;
};

/// A term of variables, numbers and operators.
std::string random_term(Random& random, int depth)
{
    if (depth == 0 || random.one_in(4)) {
        const int leaf = random.below(15);
        return leaf < 12 ? std::string(1, "xxxxxyyyyzzw"[leaf]) : std::to_string(random.between(1, 9)) + ".5";
    }
    const int kind = random.below(6);
    const std::string a = random_term(random, depth - 1);
    if (kind == 0)
        return "SQRT(" + a + ")";
    if (kind == 1)
        return "SIN(" + a + ")";
    const std::string b = random_term(random, depth - 1);
    return "(" + a + " " + "+-*/"[kind - 2] + " " + b + ")";
}

constexpr int64_t kRows = 32;

struct Columns {
    std::vector<double> x, y;
    std::vector<Column> read;

    Columns(const System& system, Random& random)
    {
        for (int64_t row = 0; row < kRows; ++row) {
            x.push_back(random.uniform(-2, 2));
            y.push_back(random.uniform(-2, 2));
        }
        const auto column = [&](const std::vector<double>& values, const char* name) {
            return Column{reinterpret_cast<const char*>(values.data()), sizeof(double), KORVALE_DOUBLE,
                          system.number(name)};
        };
        read = {column(x, "x"), column(y, "y")};
    }
};

/// What the plan of one equation gives for a row, each block being one number. Blocks have to be filled before they are
/// read, and those that last are filled once.
double run(const Plan& plan, const Columns& columns, size_t row)
{
    std::vector<double> blocks(static_cast<size_t>(plan.blocks));
    std::vector<uint8_t> is_filled(blocks.size(), 0);
    blocks[0] = columns.x[row];
    blocks[1] = columns.y[row];
    is_filled[0] = is_filled[1] = 1;
    const auto read = [&](const Value& value) {
        if (!value.is_block())
            return value.number;
        EXPECT_EQ(is_filled.at(static_cast<size_t>(value.block)), 1);
        return blocks[static_cast<size_t>(value.block)];
    };
    for (const Step& step : plan.steps) {
        const double a = read(step.a), b = read(step.b);
        EXPECT_GE(step.to, plan.columns) << "columns are not written";
        EXPECT_TRUE(step.to < plan.first_result() || is_filled.at(static_cast<size_t>(step.to)) == 0);
        EXPECT_TRUE(step.to >= plan.first_result() || step.to < plan.first_temporary() + plan.deepest);
        const bool is_unary =
            step.action == Action::negate || step.action == Action::root || step.action == Action::call_one;
        const double result = step.action == Action::add        ? a + b
                              : step.action == Action::subtract ? a - b
                              : step.action == Action::multiply ? a * b
                              : is_unary                        ? step.function.one(a)
                                                                : step.function.two(a, b);
        blocks.at(static_cast<size_t>(step.to)) = result;
        is_filled.at(static_cast<size_t>(step.to)) = 1;
    }
    return read(plan.results.at(0));
}

TEST(Plan, StepsGiveEachRowWhatTheEquationGivesIt)
{
    Random random(1);
    int steps = 0;
    for (int round = 0; round < rounds(300) && !testing::Test::HasFailure(); ++round) {
        const int depth = random.below(7);
        const std::string text = "w = " + random_term(random, depth);
        const System system({text});
        system.value("z") = random.uniform(-2, 2);
        const Columns columns(system, random);
        Plan plan;
        const bool reads_target = text.find('w', 1) != std::string::npos; // what the row before has left
        ASSERT_EQ(make_plan(system.record(), 0, columns.read, {}, kRows, plan), !reads_target) << text;
        if (reads_target)
            continue;
        steps += static_cast<int>(plan.steps.size());
        for (size_t row = 0; row < kRows; ++row) {
            system.value("x") = columns.x[row];
            system.value("y") = columns.y[row];
            ASSERT_TRUE(same_bits(EqEvaluate(&system.record(), 0), run(plan, columns, row))) << text;
        }
    }
    EXPECT_GT(steps, 500);
}

TEST(Plan, WhatHasNoColumnIsComputedWhilePlanning)
{
    const System system({"w = (z + 1) * 2 + SQRT(16)"});
    system.value("z") = 2;
    Random random(2);
    const Columns columns(system, random);
    Plan plan;
    ASSERT_TRUE(make_plan(system.record(), 0, columns.read, {}, kRows, plan));
    EXPECT_TRUE(plan.steps.empty());
    EXPECT_FALSE(plan.results.at(0).is_block());
    EXPECT_EQ(plan.results.at(0).number, 10);
}

TEST(Plan, FewRowsHaveNone)
{
    const System system({"w = x + y"});
    Random random(3);
    const Columns columns(system, random);
    for (const int64_t rows : {0, 1, 2, 23, 24}) {
        Plan plan;
        EXPECT_EQ(make_plan(system.record(), 0, columns.read, {}, rows, plan), rows >= 24) << rows;
    }
}

} // namespace
} // namespace korvale::test
