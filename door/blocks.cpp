// Equations over columns, a block of rows at a time: each item of a program runs over the whole block before the next
// one does, so that its operation runs in lanes. Every row gets the operations that EqEvaluate would give it, in the
// same order, so every bit is the same.
//
// What happens is planned once per call, on a stack of values of which each is one number for all rows or a block. Only
// what has a block becomes a step; the rest is computed while planning. There is no plan, and the rows run one by one,
// where one depends on another or on an order: where a variable is read that an equation writes later, in the row
// before; where the random generator or a function of the host is called; where an output lies over an input, but not
// element on element; and where anything about the records is not as usual.
//
// The records are read anew for each plan, and written at the end alone: the variables get the values of the last row.
#include "door/internal/blocks.h"

#include <algorithm>
#include <cstring>

#include "equation/internal/functions.h"
#include "equation/internal/registry.h"
#include "equation/tables.h"
#include "platform/internal/lanes.h"

namespace korvale::door {

using namespace korvale::equation;

namespace {

constexpr int64_t kBlock = 512;             ///< rows; a few blocks fit the fastest cache
constexpr int64_t kFewRows = 24;            ///< below which a plan would not pay
constexpr int64_t kVariablesPerRow = 16;    ///< a plan looks at each variable once
constexpr int32_t kMostValues = 50;         ///< values held
constexpr int32_t kMostTableColumns = 4096; ///< samples kept of a table

/// A value of all rows: one number, or a block where `block` is 0 or more.
struct Value {
    double number = 0.0;
    int32_t block = -1;

    bool is_block() const { return block >= 0; }
};

enum class Action { add, subtract, multiply, divide, negate, root, call_one, call_two, sample };

struct Step {
    Action action;
    Function function; ///< that is called
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

// --- Buffers of the host ---------------------------------------------------------------------------------------------

template <class AnyColumn>
int64_t element_size(const AnyColumn& column)
{
    return column.kind == KORVALE_FLOAT ? int64_t{sizeof(float)} : int64_t{sizeof(double)};
}

enum class Overlap { none, same, shifted };

/// Whether two buffers of `rows` elements have memory in common, and whether each element only its own.
template <class A, class B>
Overlap overlap_of(const A& a, const B& b, int64_t rows)
{
    const auto first = [](const auto& c) { return static_cast<int64_t>(reinterpret_cast<uintptr_t>(c.data)); };
    const auto low = [&](const auto& c) { return first(c) + std::min<int64_t>((rows - 1) * c.stride, 0); };
    const auto high = [&](const auto& c) {
        return first(c) + std::max<int64_t>((rows - 1) * c.stride, 0) + element_size(c);
    };
    if (high(a) <= low(b) || high(b) <= low(a))
        return Overlap::none;
    if (a.stride != b.stride)
        return Overlap::shifted;
    const int64_t apart = first(a) - first(b), stride = std::abs(a.stride);
    if (apart == 0 && a.kind == b.kind)
        return Overlap::same;
    const int64_t within = (apart % stride + stride) % stride; // such as the y of points beside their x
    const bool is_beside = within >= element_size(b) && within + element_size(a) <= stride;
    return is_beside ? Overlap::none : Overlap::shifted;
}

template <class AnyColumn>
bool is_packed(const AnyColumn& column)
{
    return column.kind == KORVALE_DOUBLE && column.stride == sizeof(double) &&
           reinterpret_cast<uintptr_t>(column.data) % alignof(double) == 0;
}

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

// --- The plan --------------------------------------------------------------------------------------------------------

class Plan {
public:
    Plan(EquationSystem& es, std::span<const Column> columns, std::span<const ColumnOut> outputs, int64_t rows)
        : es_(es), functions_(functions_of(es)), programs_(programs_of(es)), system_variables_(variables_of(es)),
          columns_(columns), outputs_(outputs), rows_(rows), first_temporary_(static_cast<int32_t>(columns.size())),
          next_result_(first_temporary_ + kMostValues)
    {
    }

    /// False where the rows have to run one by one.
    bool make(int32_t equation);

    /// Runs all rows.
    void run(const Telling& telling);

private:
    /// What is known of a variable.
    enum : uint8_t { kColumn = 1, kTarget = 2, kAssigned = 4 };

    bool has_plain_buffers() const;
    bool keep_samples(int32_t first, int32_t last);
    bool keep_samples_of(int32_t f);
    bool plan_equation(int32_t equation, Value& result);
    bool plan_items(const Program& program, Value (&held)[kMostValues], int32_t& depth);
    bool plan_sample(int32_t f, int32_t depth, Value& value);
    bool plan_call(int32_t kind, int32_t f, Value (&held)[kMostValues], int32_t depth);
    void allocate();

    bool is_temporary(const Value& value) const
    {
        return value.block >= first_temporary_ && value.block < first_temporary_ + kMostValues;
    }
    Operand operand(const Value& value) const
    {
        return {value.is_block() ? blocks_[static_cast<size_t>(value.block)] : &value.number, value.is_block()};
    }

    void load_columns(int64_t row, int64_t n);
    void run_step(const Step& step, int64_t row, int64_t n);
    void write_outputs(int64_t row, int64_t n);
    void finish(int64_t rows, int64_t n);

    EquationSystem& es_;
    const Functions functions_;
    const Programs programs_;
    const Variables system_variables_;
    std::span<const Column> columns_;
    std::span<const ColumnOut> outputs_;
    int64_t rows_;
    int32_t first_temporary_; ///< behind the columns; one for each place of the stack
    int32_t next_result_;     ///< behind these
    Vector<Value> variables_; ///< as they are for the next equation, at last after all
    Vector<uint8_t> known_;
    Vector<int32_t> touched_; ///< variables that columns or equations set
    Vector<Step> steps_;
    Vector<Samples> samples_;
    Vector<Value> results_; ///< of the outputs
    Vector<double*> blocks_;
    Vector<double> memory_;
    int32_t deepest_ = 0;
    bool writes_directly_ = false; ///< the last step fills the only output
};

bool Plan::make(int32_t equation)
{
    const bool is_pass = equation == kAllEquations;
    const int32_t variables = system_variables_.count;
    if (rows_ < kFewRows || variables > kVariablesPerRow * rows_ || !has_plain_buffers())
        return false;
    const int32_t first = is_pass ? 0 : equation;
    const int32_t last = is_pass ? programs_.count : equation + 1;

    variables_.resize(static_cast<size_t>(variables));
    known_.resize(static_cast<size_t>(variables));
    for (int32_t v = 0; v < variables; ++v)
        variables_[static_cast<size_t>(v)].number = system_variables_.values[v];
    int32_t block = 0;
    for (const Column& column : columns_) {
        if (!system_variables_.has(column.variable))
            return false;
        variables_[static_cast<size_t>(column.variable)].block = block++;
        known_[static_cast<size_t>(column.variable)] |= kColumn;
        touched_.push_back(column.variable);
    }
    for (int32_t i = first; i < last; ++i)
        if (const Program program = programs_.at(i); program.has_target() && system_variables_.has(program.operands[0]))
            if (is_pass || !system_variables_.is_reserved(program.operands[0])) {
                known_[static_cast<size_t>(program.operands[0])] |= kTarget;
                touched_.push_back(program.operands[0]);
            }
    if (!keep_samples(first, last))
        return false;

    Vector<std::pair<int32_t, Value>> reserved; // set at the end of a pass
    for (int32_t i = first; i < last; ++i) {
        const Program program = programs_.at(i);
        if (!program.has_target() && is_pass)
            continue;
        Value result;
        if (!plan_equation(i, result))
            return false;
        const int32_t target = program.operands[0];
        if (!is_pass)
            results_.push_back(result);
        if (!system_variables_.has(target))
            continue;
        if (!system_variables_.is_reserved(target)) {
            variables_[static_cast<size_t>(target)] = result;
            known_[static_cast<size_t>(target)] |= kAssigned;
        } else if (is_pass) {
            reserved.push_back({target, result});
        }
    }
    for (const auto& [target, result] : reserved)
        variables_[static_cast<size_t>(target)] = result;
    if (is_pass)
        for (const ColumnOut& output : outputs_)
            results_.push_back(variables_[static_cast<size_t>(output.variable)]);
    writes_directly_ = !is_pass && is_packed(outputs_[0]) && results_[0].block >= first_temporary_ + kMostValues;
    allocate();
    return true;
}

/// Whether no output lies over a column or another output but element on element.
bool Plan::has_plain_buffers() const
{
    for (size_t k = 0; k < outputs_.size(); ++k) {
        for (const Column& column : columns_)
            if (overlap_of(column, outputs_[k], rows_) == Overlap::shifted)
                return false;
        for (size_t before = 0; before < k; ++before)
            if (overlap_of(outputs_[before], outputs_[k], rows_) == Overlap::shifted)
                return false;
    }
    return true;
}

/// Keeps the samples of each table that the programs read; false where one is not there for all its reads.
bool Plan::keep_samples(int32_t first, int32_t last)
{
    for (int32_t i = first; i < last; ++i) {
        const Program program = programs_.at(i);
        if (!program.has_target())
            continue;
        for (int32_t p = 1; p < program.count && program.kinds[p] != EQ_ITEM_END; ++p) {
            if (program.kinds[p] != EQ_ITEM_SAMPLE)
                continue;
            const int32_t f = program.operands[p];
            const bool is_kept = std::ranges::find(samples_, f, &Samples::function) != samples_.end();
            if (!is_kept && !keep_samples_of(f))
                return false;
            std::ranges::find(samples_, f, &Samples::function)->reads += 1;
        }
    }
    return true;
}

bool Plan::keep_samples_of(int32_t f)
{
    const Tables tables = tables_of(es_);
    if (!tables.has(f))
        return false;
    const DATAstruct* const table = tables.at(f);
    const int32_t first = tables.columns[f];
    if (table == nullptr || table->dim < 1 || table->dim > kMostTableColumns || first < 0 || first >= table->dim)
        return false;
    const double row = es_.table_index;
    const bool is_inside = table->count > 0 && row > -1.0 && row < static_cast<double>(table->count);
    if (!is_inside || room(table, DATA_TYPE_DOUBLE) < int64_t{table->count} * table->dim)
        return false;
    Samples samples = {f, 0, 0, first, {}};
    samples.columns.reserve(static_cast<size_t>(table->dim)); // as nothing may fail while the column is moved
    for (int32_t column = 0; column < table->dim; ++column) {
        tables.columns[f] = column;
        samples.columns.push_back(EqTableRead(&es_, f));
    }
    tables.columns[f] = first;
    samples_.push_back(std::move(samples));
    return true;
}

bool Plan::plan_equation(int32_t equation, Value& result)
{
    const Program program = programs_.at(equation);
    Value held[kMostValues];
    int32_t depth = 0;
    if (!program.has_target() || !plan_items(program, held, depth) || depth == 0)
        return false;
    result = held[depth - 1];
    if (is_temporary(result)) { // made by the last step, which can as well fill a block that lasts
        result.block = next_result_++;
        steps_.back().to = result.block;
    }
    return true;
}

bool Plan::plan_items(const Program& program, Value (&held)[kMostValues], int32_t& depth)
{
    for (int32_t p = 1; p < program.count && program.kinds[p] != EQ_ITEM_END; ++p) {
        const int32_t kind = program.kinds[p], operand = program.operands[p];
        if (kind == EQ_ITEM_UNARY || kind == EQ_ITEM_BINARY) {
            const int32_t operands = kind == EQ_ITEM_UNARY ? 1 : 2;
            if (depth < operands || !plan_call(kind, operand, held, depth))
                return false;
            depth -= operands - 1;
            continue;
        }
        if (kind != EQ_ITEM_CONSTANT && kind != EQ_ITEM_VARIABLE && kind != EQ_ITEM_SAMPLE)
            continue; // no effect
        if (depth == kMostValues)
            return false;
        Value& value = held[depth];
        if (kind == EQ_ITEM_CONSTANT) {
            value = {program.constants[p]};
        } else if (kind == EQ_ITEM_VARIABLE) {
            if (!system_variables_.has(operand))
                return false;
            const uint8_t known = known_[static_cast<size_t>(operand)];
            if ((known & kTarget) != 0 && (known & (kColumn | kAssigned)) == 0)
                return false; // the row before has set it
            value = variables_[static_cast<size_t>(operand)];
        } else if (!plan_sample(operand, depth, value)) {
            return false;
        }
        ++depth;
    }
    return true;
}

bool Plan::plan_sample(int32_t f, int32_t depth, Value& value)
{
    const auto samples = std::ranges::find(samples_, f, &Samples::function);
    const int64_t read = samples->planned++;
    if (samples->reads % samples->count() == 0) { // the same column for every row
        value = {samples->columns[static_cast<size_t>((samples->first + read) % samples->count())]};
        return true;
    }
    value = {0.0, first_temporary_ + depth};
    deepest_ = std::max(deepest_, depth + 1);
    const auto table = static_cast<int32_t>(samples - samples_.begin());
    steps_.push_back({Action::sample, {}, {}, {}, value.block, table, read});
    return true;
}

bool Plan::plan_call(int32_t kind, int32_t f, Value (&held)[kMostValues], int32_t depth)
{
    const int32_t arguments = kind == EQ_ITEM_UNARY ? 1 : 2;
    if (!is_built_in(f, functions_.at(f)) || kBuiltIns[f].nargs != arguments)
        return false;
    const Function function = kBuiltIns[f].function;
    Value& a = held[depth - arguments];
    const Value b = arguments == 2 ? held[depth - 1] : Value();
    if (!a.is_block() && !b.is_block()) {
        a.number = arguments == 1 ? function.one(a.number) : function.two(a.number, b.number);
        return true;
    }
    Action action = arguments == 1 ? Action::call_one : Action::call_two;
    switch (f) {
    case kAdd:
        action = Action::add;
        break;
    case kSubtract:
        action = Action::subtract;
        break;
    case kMultiply:
        action = Action::multiply;
        break;
    case kDivide:
        action = Action::divide;
        break;
    case kNegate:
        action = Action::negate;
        break;
    case kSquareRoot:
        action = Action::root;
        break;
    default:
        break;
    }
    const int32_t place = depth - arguments;
    deepest_ = std::max(deepest_, place + 1);
    steps_.push_back({action, function, a, b, first_temporary_ + place, -1, 0});
    a = {0.0, first_temporary_ + place};
    return true;
}

/// Gives each block its memory; columns that no output touches stay where they are.
void Plan::allocate()
{
    blocks_.resize(static_cast<size_t>(next_result_));
    const int64_t size = std::min(rows_, kBlock);
    const int64_t results = next_result_ - first_temporary_ - kMostValues;
    const int64_t direct = writes_directly_ ? 1 : 0;
    memory_.resize(static_cast<size_t>((first_temporary_ + deepest_ + results - direct) * size));
    double* next = memory_.data();
    for (int32_t b = 0; b < next_result_; ++b) {
        const bool is_unused = b >= first_temporary_ + deepest_ && b < first_temporary_ + kMostValues;
        const bool is_output = direct == 1 && b == results_[0].block;
        blocks_[static_cast<size_t>(b)] = is_unused || is_output ? nullptr : next;
        next += is_unused || is_output ? 0 : size;
    }
}

void Plan::run(const Telling& telling)
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
            blocks_[static_cast<size_t>(results_[0].block)] = reinterpret_cast<double*>(outputs_[0].data) + row;
        for (const Step& step : steps_)
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
void Plan::finish(int64_t rows, int64_t n)
{
    const Variables variables = variables_of(es_);
    for (const int32_t v : touched_) {
        const Operand last = operand(variables_[static_cast<size_t>(v)]);
        variables.values[v] = last.values[last.is_block ? n - 1 : 0];
    }
    for (const Samples& samples : samples_)
        tables_of(es_).columns[samples.function] =
            static_cast<int32_t>((samples.first + rows % samples.count() * samples.reads) % samples.count());
}

void Plan::load_columns(int64_t row, int64_t n)
{
    const auto size = static_cast<size_t>(std::min(rows_, kBlock));
    for (size_t c = 0; c < columns_.size(); ++c) {
        const Column& column = columns_[c];
        const bool is_written = std::ranges::any_of(
            outputs_, [&](const ColumnOut& output) { return overlap_of(column, output, rows_) != Overlap::none; });
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

void Plan::run_step(const Step& step, int64_t row, int64_t n)
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
        const Samples& samples = samples_[static_cast<size_t>(step.table)];
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

void Plan::write_outputs(int64_t row, int64_t n)
{
    for (size_t k = 0; k < outputs_.size(); ++k) {
        const Operand from = operand(results_[k]);
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
    Plan plan(equations.record, columns, outputs, rows);
    equations.ran_in_blocks = plan.make(equation);
    if (equations.ran_in_blocks)
        plan.run(telling);
    return equations.ran_in_blocks;
}

} // namespace korvale::door
