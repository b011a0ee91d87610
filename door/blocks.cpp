// Equations over columns, a block of rows at a time: each item of a program runs over the whole block before the next
// one does, so that its operation runs in lanes. Every row gets the operations that EqEvaluate would give it, in the
// same order, so every bit is the same.
//
// What happens is planned once per call. The records are read anew for each plan, and written at the end alone: the
// variables get the values of the last row.
#include "door/internal/blocks.h"

#include <algorithm>

#include "equation/internal/registry.h"
#include "platform/internal/lanes.h"

namespace korvale::door {

using namespace korvale::equation;

namespace {

/// Rows: 4 KB, of which a few fit the fastest cache. Measured: 256 take 8 % more instructions, 1,024 take 3 % less and
/// the same time.
constexpr int64_t kBlock = 512;

template <class Number>
void gather(const Column& column, int64_t row, int64_t n, double* to)
{
    const char* from = column.data + row * column.stride;
    for (int64_t i = 0; i < n; ++i, from += column.stride) {
        Number number;
        std::memcpy(&number, from, sizeof number);
        to[i] = double{number};
    }
}

template <class Number>
void scatter(const ColumnOut& column, int64_t row, int64_t n, const double* from, int64_t step)
{
    char* to = column.data + row * column.stride;
    for (int64_t i = 0; i < n; ++i, to += column.stride, from += step) {
        const auto number = static_cast<Number>(*from);
        std::memcpy(to, &number, sizeof number);
    }
}

// --- Operations over a block -----------------------------------------------------------------------------------------

struct Add {
    template <class V>
    KORVALE_OVER_LANES static V of(const V& a, const V& b)
    {
        return a + b;
    }
};

struct Subtract {
    template <class V>
    KORVALE_OVER_LANES static V of(const V& a, const V& b)
    {
        return a - b;
    }
};

struct Multiply {
    template <class V>
    KORVALE_OVER_LANES static V of(const V& a, const V& b)
    {
        return a * b;
    }
};

struct Divide {
    template <class V>
    KORVALE_OVER_LANES static V of(const V& a, const V& b)
    {
        return select(b == all<V>(0.0), all<V>(0.0), a / b);
    }
};

/// An operand of a step: the first of n numbers, or the one number for all.
struct Operand {
    const double* values;
    bool is_block;
};

template <class Operation>
void combine(const Operand& left, const Operand& right, double* to, int64_t n)
{
    const double *a = left.values, *b = right.values;
    if (left.is_block && right.is_block)
        for_lanes<int64_t>(0, n, [=]<class V>(int64_t i) {
            store(to + i, Operation::template of<V>(load<V>(a + i), load<V>(b + i)));
        });
    else if (left.is_block)
        for_lanes<int64_t>(0, n, [=, number = *b]<class V>(int64_t i) {
            store(to + i, Operation::template of<V>(load<V>(a + i), all<V>(number)));
        });
    else
        for_lanes<int64_t>(0, n, [=, number = *a]<class V>(int64_t i) {
            store(to + i, Operation::template of<V>(all<V>(number), load<V>(b + i)));
        });
}

void call_each(BinaryFunction function, const Operand& a, const Operand& b, double* to, int64_t n)
{
    const int64_t step_a = a.is_block ? 1 : 0, step_b = b.is_block ? 1 : 0;
    for (int64_t i = 0; i < n; ++i)
        to[i] = function(a.values[i * step_a], b.values[i * step_b]);
}

// --- The blocks ------------------------------------------------------------------------------------------------------

/// The memory of a plan's blocks.
class Blocks {
public:
    Blocks(EquationSystem& es, const Plan& plan, std::span<const Column> columns, std::span<const ColumnOut> outputs,
           int64_t rows, bool is_pass)
        : es_(es), plan_(plan), columns_(columns), outputs_(outputs), rows_(rows),
          writes_directly_(!is_pass && is_packed(outputs[0]) && plan.results[0].block >= plan.first_result())
    {
        allocate();
    }

    /// Runs all rows.
    void run(const Telling& telling);

private:
    void allocate();

    Operand operand(const Value& value) const
    {
        return {value.is_block() ? blocks_[static_cast<size_t>(value.block)] : &value.number, value.is_block()};
    }

    void load_columns(int64_t row, int64_t n);
    void run_step(const Step& step, int64_t row, int64_t n);
    void write_outputs(int64_t row, int64_t n);
    void finish(int64_t rows, int64_t n);

    EquationSystem& es_;
    const Plan& plan_;
    const std::span<const Column> columns_;
    const std::span<const ColumnOut> outputs_;
    const int64_t rows_;
    const bool writes_directly_; ///< the last step fills the only output
    Vector<double*> blocks_;
    Vector<double> memory_;
};

/// Gives each block its memory; columns that no output touches stay where they are.
void Blocks::allocate()
{
    blocks_.resize(static_cast<size_t>(plan_.blocks));
    const int64_t size = std::min(rows_, kBlock);
    const int64_t results = plan_.blocks - plan_.first_result();
    const int64_t direct = writes_directly_ ? 1 : 0;
    memory_.resize(static_cast<size_t>((plan_.first_temporary() + plan_.deepest + results - direct) * size));
    double* next = memory_.data();
    for (int32_t b = 0; b < plan_.blocks; ++b) {
        const bool is_unused = b >= plan_.first_temporary() + plan_.deepest && b < plan_.first_result();
        const bool is_output = direct == 1 && b == plan_.results[0].block;
        blocks_[static_cast<size_t>(b)] = is_unused || is_output ? nullptr : next;
        next += is_unused || is_output ? 0 : size;
    }
}

void Blocks::run(const Telling& telling)
{
    int64_t row = 0, n = 0, next = 0;
    bool goes_on = true;
    for (; row < rows_; row += n) {
        if (row >= next) {
            goes_on = telling.goes_on(static_cast<double>(row) / static_cast<double>(rows_));
            next = row + rows_to_tell(rows_);
            if (!goes_on)
                break;
        }
        n = std::min(rows_ - row, kBlock);
        load_columns(row, n);
        if (writes_directly_)
            blocks_[static_cast<size_t>(plan_.results[0].block)] = reinterpret_cast<double*>(outputs_[0].data) + row;
        for (const Step& step : plan_.steps)
            run_step(step, row, n);
        if (!writes_directly_)
            write_outputs(row, n);
    }
    if (n > 0)
        finish(row, n);
    if (!goes_on)
        throw Stop();
    telling.tell(1.0);
}

/// Gives the system what it has after so many rows, the last `n` of them in the blocks.
void Blocks::finish(int64_t rows, int64_t n)
{
    const Variables variables = variables_of(es_);
    for (const int32_t v : plan_.touched) {
        const Operand last = operand(plan_.variables[static_cast<size_t>(v)]);
        variables.values[v] = last.values[last.is_block ? n - 1 : 0];
    }
    for (const Samples& samples : plan_.samples)
        tables_of(es_).columns[samples.function] =
            static_cast<int32_t>((samples.first + rows % samples.count() * samples.reads) % samples.count());
}

void Blocks::load_columns(int64_t row, int64_t n)
{
    const auto size = static_cast<size_t>(std::min(rows_, kBlock));
    for (size_t c = 0; c < columns_.size(); ++c) {
        const Column& column = columns_[c];
        const bool is_written = std::any_of(outputs_.begin(), outputs_.end(), [&](const ColumnOut& output) {
            return overlap_of(column, output, rows_) != Overlap::none;
        });
        if (is_packed(column) && !is_written) {
            blocks_[c] = const_cast<double*>(reinterpret_cast<const double*>(column.data)) + row; // which is only read
            continue;
        }
        double* const to = memory_.data() + c * size;
        if (column.kind == KORVALE_FLOAT)
            gather<float>(column, row, n, to);
        else
            gather<double>(column, row, n, to);
        blocks_[c] = to;
    }
}

void Blocks::run_step(const Step& step, int64_t row, int64_t n)
{
    double* const to = blocks_[static_cast<size_t>(step.to)];
    const Operand a = operand(step.a), b = operand(step.b);
    switch (step.action) {
    case Action::add:
        combine<Add>(a, b, to, n);
        break;
    case Action::subtract:
        combine<Subtract>(a, b, to, n);
        break;
    case Action::multiply:
        combine<Multiply>(a, b, to, n);
        break;
    case Action::divide:
        combine<Divide>(a, b, to, n);
        break;
    case Action::negate:
        for_lanes<int64_t>(0, n, [to, from = a.values]<class V>(int64_t i) { store(to + i, -load<V>(from + i)); });
        break;
    case Action::root:
        for_lanes<int64_t>(0, n, [to, from = a.values]<class V>(int64_t i) { store(to + i, root(load<V>(from + i))); });
        break;
    case Action::call_one:
        for (int64_t i = 0; i < n; ++i)
            to[i] = step.function.one(a.values[i]);
        break;
    case Action::call_two:
        call_each(step.function.two, a, b, to, n);
        break;
    case Action::sample: {
        const Samples& samples = plan_.samples[static_cast<size_t>(step.table)];
        const int64_t count = samples.count(), reads = samples.reads % count;
        int64_t column = (samples.first + row % count * reads + step.read) % count;
        for (int64_t i = 0; i < n; ++i) {
            to[i] = samples.columns[static_cast<size_t>(column)];
            column = (column + reads) % count;
        }
        break;
    }
    }
}

void Blocks::write_outputs(int64_t row, int64_t n)
{
    for (size_t k = 0; k < outputs_.size(); ++k) {
        const Operand from = operand(plan_.results[k]);
        if (outputs_[k].kind == KORVALE_FLOAT)
            scatter<float>(outputs_[k], row, n, from.values, from.is_block ? 1 : 0);
        else
            scatter<double>(outputs_[k], row, n, from.values, from.is_block ? 1 : 0);
    }
}

} // namespace

bool run_in_blocks(korvale_equations& equations, int32_t equation, std::span<const Column> columns,
                   std::span<const ColumnOut> outputs, int64_t rows, const Telling& telling)
{
    EquationSystem& es = equations.record;
    Plan plan;
    equations.ran_in_blocks = make_plan(es, equation, columns, outputs, rows, plan);
    if (equations.ran_in_blocks)
        Blocks(es, plan, columns, outputs, rows, equation == kAllEquations).run(telling);
    return equations.ran_in_blocks;
}

} // namespace korvale::door
