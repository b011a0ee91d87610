// Planning: the programs are read once, on a stack of values of which each is one number for all rows or a block. Only
// what has a block becomes a step; the rest is computed while planning. There is no plan, and the rows run one by one,
// where one depends on another or on an order:
//
// - A variable is read that an equation writes later, in the row before.
// - The random generator or a function of the host is called.
// - An output lies over an input, but not element on element.
// - Anything about the records is not as usual.
#include "door/internal/plan.h"

#include <algorithm>

#include "equation/internal/registry.h"
#include "equation/tables.h"

namespace korvale::door {

using namespace korvale::equation;

namespace {

/// Fewer rows have no plan. Measured: an equation of 15 items takes as many instructions with a plan as row by row at
/// 14 rows, and 37 % less at 24.
constexpr int64_t kFewRows = 24;
/// A plan looks at each variable once. Measured: 16 a row cost what the plan of such an equation saves at 25 rows.
constexpr int64_t kVariablesPerRow = 16;
/// Samples kept of a table: 32 KB. Chosen.
constexpr int32_t kMostTableColumns = 4096;

class Planner {
public:
    Planner(EquationSystem& es, std::span<const Column> columns, std::span<const ColumnOut> outputs, int64_t rows,
            Plan& plan)
        : es_(es), functions_(functions_of(es)), programs_(programs_of(es)), variables_(variables_of(es)),
          columns_(columns), outputs_(outputs), rows_(rows), plan_(plan)
    {
        plan.columns = static_cast<int32_t>(columns.size());
        plan.blocks = plan.first_result();
    }

    bool make(int32_t equation);

private:
    /// What is known of a variable.
    enum : uint8_t { kColumn = 1, kTarget = 2, kAssigned = 4 };

    bool has_plain_buffers() const;
    bool keep_samples(int32_t first, int32_t last);
    bool keep_samples_of(int32_t f);
    Vector<Samples>::iterator samples_of(int32_t f);
    bool plan_equation(int32_t equation, Value& result);
    bool plan_items(const Program& program, Value (&held)[kMostPlanned], int32_t& depth);
    bool plan_sample(int32_t f, int32_t depth, Value& value);
    bool plan_call(int32_t kind, int32_t f, Value (&held)[kMostPlanned], int32_t depth);

    EquationSystem& es_;
    const Functions functions_;
    const Programs programs_;
    const Variables variables_;
    const std::span<const Column> columns_;
    const std::span<const ColumnOut> outputs_;
    const int64_t rows_;
    Plan& plan_;
    Vector<uint8_t> known_;
};

bool Planner::make(int32_t equation)
{
    const bool is_pass = equation == kAllEquations;
    const int32_t variables = variables_.count;
    if (rows_ < kFewRows || variables > kVariablesPerRow * rows_ || !has_plain_buffers())
        return false;
    const int32_t first = is_pass ? 0 : equation;
    const int32_t last = is_pass ? programs_.count : equation + 1;

    plan_.variables.resize(static_cast<size_t>(variables));
    known_.resize(static_cast<size_t>(variables));
    for (int32_t v = 0; v < variables; ++v)
        plan_.variables[static_cast<size_t>(v)].number = variables_.values[v];
    int32_t block = 0;
    for (const Column& column : columns_) {
        if (!variables_.has(column.variable))
            return false;
        plan_.variables[static_cast<size_t>(column.variable)].block = block++;
        known_[static_cast<size_t>(column.variable)] |= kColumn;
        plan_.touched.push_back(column.variable);
    }
    for (int32_t i = first; i < last; ++i)
        if (const Program program = programs_.at(i); program.has_target() && variables_.has(program.operands[0]))
            if (is_pass || !variables_.is_reserved(program.operands[0])) {
                known_[static_cast<size_t>(program.operands[0])] |= kTarget;
                plan_.touched.push_back(program.operands[0]);
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
            plan_.results.push_back(result);
        if (!variables_.has(target))
            continue;
        if (!variables_.is_reserved(target)) {
            plan_.variables[static_cast<size_t>(target)] = result;
            known_[static_cast<size_t>(target)] |= kAssigned;
        } else if (is_pass) {
            reserved.push_back({target, result});
        }
    }
    for (const auto& [target, result] : reserved)
        plan_.variables[static_cast<size_t>(target)] = result;
    if (is_pass)
        for (const ColumnOut& output : outputs_)
            plan_.results.push_back(plan_.variables[static_cast<size_t>(output.variable)]);
    return true;
}

/// Whether no output lies over a column or another output but element on element.
bool Planner::has_plain_buffers() const
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
bool Planner::keep_samples(int32_t first, int32_t last)
{
    for (int32_t i = first; i < last; ++i) {
        const Program program = programs_.at(i);
        if (!program.has_target())
            continue;
        for (int32_t p = 1; p < program.count && program.kinds[p] != EQ_ITEM_END; ++p) {
            if (program.kinds[p] != EQ_ITEM_SAMPLE)
                continue;
            const int32_t f = program.operands[p];
            if (samples_of(f) == plan_.samples.end() && !keep_samples_of(f))
                return false;
            samples_of(f)->reads += 1;
        }
    }
    return true;
}

bool Planner::keep_samples_of(int32_t f)
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
    plan_.samples.push_back(std::move(samples));
    return true;
}

/// The samples that are kept of a table, or the end of all.
Vector<Samples>::iterator Planner::samples_of(int32_t f)
{
    return std::find_if(plan_.samples.begin(), plan_.samples.end(),
                        [f](const Samples& samples) { return samples.function == f; });
}

bool Planner::plan_equation(int32_t equation, Value& result)
{
    const Program program = programs_.at(equation);
    Value held[kMostPlanned];
    int32_t depth = 0;
    if (!program.has_target() || !plan_items(program, held, depth) || depth == 0)
        return false;
    result = held[depth - 1];
    if (plan_.is_temporary(result)) { // made by the last step, which can as well fill a block that lasts
        result.block = plan_.blocks++;
        plan_.steps.back().to = result.block;
    }
    return true;
}

bool Planner::plan_items(const Program& program, Value (&held)[kMostPlanned], int32_t& depth)
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
        if (depth == kMostPlanned)
            return false;
        Value& value = held[depth];
        if (kind == EQ_ITEM_CONSTANT) {
            value = {program.constants[p]};
        } else if (kind == EQ_ITEM_VARIABLE) {
            if (!variables_.has(operand))
                return false;
            const uint8_t known = known_[static_cast<size_t>(operand)];
            if ((known & kTarget) != 0 && (known & (kColumn | kAssigned)) == 0)
                return false; // the row before has set it
            value = plan_.variables[static_cast<size_t>(operand)];
        } else if (!plan_sample(operand, depth, value)) {
            return false;
        }
        ++depth;
    }
    return true;
}

bool Planner::plan_sample(int32_t f, int32_t depth, Value& value)
{
    const auto samples = samples_of(f);
    const int64_t read = samples->planned++;
    if (samples->reads % samples->count() == 0) { // the same column for every row
        value = {samples->columns[static_cast<size_t>((samples->first + read) % samples->count())]};
        return true;
    }
    value = {0.0, plan_.first_temporary() + depth};
    plan_.deepest = std::max(plan_.deepest, depth + 1);
    const auto table = static_cast<int32_t>(samples - plan_.samples.begin());
    plan_.steps.push_back({Action::sample, {}, {}, {}, value.block, table, read});
    return true;
}

bool Planner::plan_call(int32_t kind, int32_t f, Value (&held)[kMostPlanned], int32_t depth)
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
    const int32_t top = depth - arguments;
    plan_.deepest = std::max(plan_.deepest, top + 1);
    plan_.steps.push_back({action, function, a, b, plan_.first_temporary() + top, -1, 0});
    a = {0.0, plan_.first_temporary() + top};
    return true;
}

} // namespace

bool make_plan(EquationSystem& es, int32_t equation, std::span<const Column> columns,
               std::span<const ColumnOut> outputs, int64_t rows, Plan& plan)
{
    return Planner(es, columns, outputs, rows, plan).make(equation);
}

} // namespace korvale::door
