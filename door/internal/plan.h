#pragma once

#include <span>

#include "door/internal/columns.h"
#include "door/internal/heap.h"
#include "equation/internal/functions.h"
#include "equation/system.h"

// What is to be done for a block of rows, known before the first.
namespace korvale::door {

constexpr int32_t kAllEquations = -1;
constexpr int32_t kMostPlanned = 50; ///< values held on the stack of a plan: as many as `evaluate` holds there

/// A value of all rows: one number, or a block where `block` is 0 or more.
struct Value {
    double number = 0.0;
    int32_t block = -1;

    bool is_block() const { return block >= 0; }
};

enum class Action { add, subtract, multiply, divide, negate, root, call_one, call_two, sample };

struct Step {
    Action action;
    equation::Function function; ///< that is called
    Value a, b;
    int32_t to;    ///< the block that it fills
    int32_t table; ///< that is read, one of the plan's
    int64_t read;  ///< the number of the read within a row
};

/// The samples that reads of a table go round.
struct Samples {
    int32_t function;
    int64_t reads; ///< in a row
    int64_t planned;
    int32_t first; ///< the column of the first read
    Vector<double> columns;

    int64_t count() const { return static_cast<int64_t>(columns.size()); }
};

/// Blocks are numbered: first those of the columns, then one for each place of the stack, then results that last until
/// all equations have run.
struct Plan {
    int32_t columns = 0;
    int32_t deepest = 0; ///< places of the stack that are used
    int32_t blocks = 0;  ///< in all
    Vector<Step> steps;
    Vector<Samples> samples;
    Vector<Value> results;   ///< of the outputs
    Vector<Value> variables; ///< as all equations leave them
    Vector<int32_t> touched; ///< variables that columns or equations set

    int32_t first_temporary() const { return columns; }
    int32_t first_result() const { return columns + kMostPlanned; }
    bool is_temporary(const Value& value) const
    {
        return value.block >= first_temporary() && value.block < first_result();
    }
};

/// Plans an equation, or all of them where it is kAllEquations. False where the rows have to run one by one.
bool make_plan(EquationSystem& es, int32_t equation, std::span<const Column> columns,
               std::span<const ColumnOut> outputs, int64_t rows, Plan& plan);

} // namespace korvale::door
