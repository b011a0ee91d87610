#include "tests/reference/equation.h"

#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "equation/functions.h"

namespace korvale::reference {
namespace {

bool is_letter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool is_number_part(char c)
{
    return (c >= '0' && c <= '9') || c == '.';
}

bool is_space(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

template <class Function>
void* erased(Function* function)
{
    return reinterpret_cast<void*>(function);
}

int priority_on_stack(int code)
{
    return code == -1 ? 0 : code == 0 || code == 1 ? 2 : code == 2 || code == 3 ? 3 : code == 4 ? 4 : 1;
}

int priority_on_arrival(int code)
{
    return code == -1 || code == 4 ? 5 : priority_on_stack(code);
}

std::string exact(double value)
{
    if (std::isnan(value))
        return "nan";
    char text[40];
    std::snprintf(text, sizeof text, "%a", value);
    return text;
}

std::string shape(int count, int dim, int type, int room_count, int room_dim)
{
    return "[" + std::to_string(count) + "][" + std::to_string(dim) + "] kind " + std::to_string(type) + " of [" +
           std::to_string(room_count) + "][" + std::to_string(room_dim) + "]";
}

} // namespace

EquationModel::EquationModel()
{
    using Binary = double (*)(double, double);
    using Unary = double (*)(double);
    add_function("ADD", 2, erased(EqFuncAdd));
    add_function("SUBTRACT", 2, erased(EqFuncSubtract));
    add_function("MULTIPLY", 2, erased(EqFuncMultiply));
    add_function("DIVIDE", 2, erased(EqFuncDivide));
    add_function("POWER", 2, erased(Binary(std::pow)));
    add_function("NEGATE", 1, erased(EqFuncNegate));
    add_function("SIN", 1, erased(Unary(std::sin)));
    add_function("COS", 1, erased(Unary(std::cos)));
    add_function("TAN", 1, erased(Unary(std::tan)));
    add_function("SQRT", 1, erased(Unary(std::sqrt)));
    add_function("EXP", 1, erased(Unary(std::exp)));
    add_function("LOG", 1, erased(Unary(std::log)));
    add_function("ASIN", 1, erased(Unary(std::asin)));
    add_function("ACOS", 1, erased(Unary(std::acos)));
    add_function("ATAN", 1, erased(Unary(std::atan)));
    add_function("RAND", 0, erased(EqFuncRand));
    add_function("GAUSS", 0, erased(gauss));
    add_function("ANGLE", 2, erased(Binary(std::atan2)));
    variables_ = {{"PI", 3.141592653589793, 0}, {"E", 2.718281828459045, 0}};
}

int EquationModel::another_function()
{
    functions_.emplace_back();
    const int count = static_cast<int>(functions_.size());
    if (count > function_room_)
        function_room_ = count + 20;
    return count - 1;
}

int EquationModel::add_function(const std::string& name, int arity, void* function)
{
    if (name.size() > 12 || function == nullptr)
        return -1;
    Function& added = functions_[static_cast<size_t>(another_function())];
    added.name = name;
    added.arity = arity;
    added.pointer = function;
    return 1;
}

int EquationModel::look_up_function(const std::string& name) const
{
    if (name.size() > 12)
        return -1;
    for (size_t f = 0; f < functions_.size(); ++f)
        if (functions_[f].name == name)
            return static_cast<int>(f);
    return -1;
}

int EquationModel::look_up(const std::string& name, int arity) const
{
    for (size_t f = 0; f < functions_.size(); ++f)
        if (functions_[f].arity == arity && functions_[f].name == name)
            return static_cast<int>(f);
    return -1;
}

int EquationModel::look_up_variable(const std::string& name) const
{
    for (size_t v = 0; v < variables_.size(); ++v)
        if (variables_[v].name == name)
            return static_cast<int>(v);
    return -1;
}

void EquationModel::set_variable(int v, double value)
{
    if (v >= 0 && v < static_cast<int>(variables_.size()))
        variables_[static_cast<size_t>(v)].value = value;
}

double EquationModel::read_variable(int v) const
{
    return v >= 0 && v < static_cast<int>(variables_.size()) ? variables_[static_cast<size_t>(v)].value : 0.0;
}

int EquationModel::parse_variables(const std::string& text, int flag)
{
    const std::vector<Variable> before = variables_;
    std::string name;
    for (const char c : text + " ") {
        if (is_letter(c)) {
            name += c;
            continue;
        }
        if (name.size() > 12 || (!name.empty() && look_up_function(name) >= 0)) {
            variables_ = before;
            return -1;
        }
        if (!name.empty() && look_up_variable(name) < 0)
            variables_.push_back({name, 0.0, static_cast<uint8_t>(flag)});
        name.clear();
    }
    return static_cast<int>(variables_.size());
}

double EquationModel::call(int f) const
{
    const auto called = reinterpret_cast<double (*)()>(functions_[static_cast<size_t>(f)].pointer);
    return called == nullptr ? 0.0 : called();
}

double EquationModel::call(int f, double x) const
{
    const auto called = reinterpret_cast<double (*)(double)>(functions_[static_cast<size_t>(f)].pointer);
    return called == nullptr ? 0.0 : called(x);
}

double EquationModel::call(int f, double a, double b) const
{
    const auto called = reinterpret_cast<double (*)(double, double)>(functions_[static_cast<size_t>(f)].pointer);
    return called == nullptr ? 0.0 : called(a, b);
}

int EquationModel::make_table(int f, int rows, int columns)
{
    if (f < 0 || f >= static_cast<int>(functions_.size()) || functions_[static_cast<size_t>(f)].arity != 0)
        return -1;
    Table& table = functions_[static_cast<size_t>(f)].table;
    const int64_t product = static_cast<int64_t>(table.columns) * columns;
    if (product > 2147483647 || product < -2147483647)
        return -1;
    table.rows = rows;
    table.columns = static_cast<int32_t>(product);
    const int64_t wanted = static_cast<int64_t>(rows) * product;
    if (rows < 1 || product < 1 || wanted > 2147483647)
        return -1;
    if (wanted > static_cast<int64_t>(table.room_rows) * table.room_columns || table.room_rows < 1) {
        table.room_rows = rows;
        table.room_columns = table.columns;
        table.values.assign(static_cast<size_t>(wanted), 0.0);
    }
    for (size_t i = 0; i < static_cast<size_t>(wanted); ++i) {
        const double value = call(f);
        std::vector<double>& values = functions_[static_cast<size_t>(f)].table.values;
        if (i < values.size())
            values[i] = value;
    }
    return 1;
}

double EquationModel::read_table(int f)
{
    if (f < 0 || f >= static_cast<int>(functions_.size()))
        return 0.0;
    const Function function = functions_[static_cast<size_t>(f)]; // as it is before a call
    const Table& table = function.table;
    const double x = table_index_, rows = table.rows;
    int64_t c = function.position;
    const auto element = [&](int64_t row) -> const double* {
        const int64_t i = row * table.columns + c;
        const bool inside = table.columns > 0 && i >= 0 && i < static_cast<int64_t>(table.values.size());
        return inside ? &table.values[static_cast<size_t>(i)] : nullptr;
    };
    const double* low = nullptr;
    const double* high = nullptr;
    double t = 0;
    bool interpolated = false;
    if (0 <= x && x < rows - 1) {
        const auto i = static_cast<int64_t>(x);
        t = x - static_cast<double>(i);
        low = element(i);
        high = element(i + 1);
        interpolated = true;
    } else if (-1.0 < x && x < 0) {
        low = high = element(0);
    } else if (-1.0 < x && rows - 1 <= x && x < rows) {
        low = high = element(table.rows - int64_t{1});
    }
    double result;
    if (low != nullptr && high != nullptr) {
        result = interpolated ? (1 - t) * *low + t * *high : *low;
        c += 1;
    } else {
        result = function.arity == 0 ? call(f) : 0.0;
    }
    if (c >= table.columns)
        c -= table.columns;
    functions_[static_cast<size_t>(f)].position = static_cast<int32_t>(static_cast<uint32_t>(c));
    return result;
}

/// The working storage of one parse.
struct EquationModel::Parse {
    EquationModel& model;
    Program& program;
    std::vector<int> operators; // the top is the last
    std::vector<std::pair<int, int>> functions;
    int depth = 0;
    int operands = 0;
    int items = 0;
    bool after_operand = false;
    bool failed = false;

    void emit(int kind, int operand)
    {
        if (items == 100)
            failed = true;
        if (failed)
            return;
        program.kinds[static_cast<size_t>(items)] = kind;
        program.operands[static_cast<size_t>(items++)] = operand;
    }
    void push_function(int f)
    {
        if (functions.size() == 51)
            failed = true;
        else
            functions.emplace_back(f, depth);
    }
    void close_functions()
    {
        while (!failed && !functions.empty() && functions.back().second >= depth) {
            emit(EQ_ITEM_UNARY, functions.back().first);
            functions.pop_back();
        }
    }
    void pop_operator()
    {
        emit(EQ_ITEM_BINARY, operators.back());
        operators.pop_back();
        operands -= 1;
        if (operands < 1)
            failed = true;
    }
    void push_operator(int code)
    {
        while (!failed && !operators.empty() && priority_on_stack(operators.back()) >= priority_on_arrival(code))
            pop_operator();
        if (operators.size() == 51)
            failed = true;
        else
            operators.push_back(code);
        after_operand = false;
    }
    void operand(int kind, int index)
    {
        emit(kind, index);
        operands += 1;
        close_functions();
        after_operand = true;
    }
    void close_group(bool at_end)
    {
        while (!failed && !operators.empty() && operators.back() != -1)
            pop_operator();
        if (failed)
            return;
        if (at_end != operators.empty()) {
            failed = true;
            return;
        }
        if (!operators.empty())
            operators.pop_back();
        close_functions();
        after_operand = true;
    }
    void name(const std::string& word)
    {
        if (const int unary = model.look_up(word, 1); unary >= 0) {
            push_function(unary);
            after_operand = false;
        } else if (const int no_arg = model.look_up(word, 0); no_arg >= 0) {
            model.functions_[static_cast<size_t>(no_arg)].table.columns += 1;
            operand(EQ_ITEM_SAMPLE, no_arg);
        } else if (const int binary = model.look_up(word, 2); binary >= 0) {
            push_operator(binary);
        } else if (const int variable = model.look_up_variable(word); variable >= 0) {
            operand(EQ_ITEM_VARIABLE, variable);
        } else {
            failed = true;
        }
    }
    void number(const std::string& digits)
    {
        if (items < 100)
            program.constants[static_cast<size_t>(items)] = std::strtod(digits.c_str(), nullptr);
        operand(EQ_ITEM_CONSTANT, -1);
    }
    void character(char c)
    {
        if (c == '+')
            push_operator(0);
        else if (c == '*')
            push_operator(2);
        else if (c == '/')
            push_operator(3);
        else if (c == '^')
            push_operator(4);
        else if (c == '-' && after_operand)
            push_operator(1);
        else if (c == '-')
            push_function(5);
        else if (c == '(') {
            push_operator(-1);
            depth += 1;
        } else if (c == ')') {
            depth -= 1;
            close_group(false);
        } else if (c == '\0')
            close_group(true);
    }
};

int EquationModel::parse_equation(std::string& text)
{
    programs_.emplace_back();
    if (equations() > equation_room_)
        equation_room_ = equations() + 20;
    Program& program = programs_.back();
    text = text.substr(0, text.find('\0'));
    const size_t equals = text.find('=');
    if (equals == std::string::npos)
        return 1;

    size_t first = 0;
    while (is_space(text[first]))
        ++first;
    size_t last = first;
    while (last < equals && !is_space(text[last]))
        ++last;
    const int target = look_up_variable(text.substr(first, last - first));
    if (first >= equals || target < 0) {
        text[equals] = '\0';
        return -1;
    }
    Parse parse{*this, program, {}, {}};
    parse.emit(EQ_ITEM_TARGET, target);

    const std::string expression = text.substr(equals + 1) + '\0';
    if (expression.size() > 1) {
        for (size_t at = 0; at < expression.size() && !parse.failed;) {
            size_t end = at;
            if (is_letter(expression[at])) {
                while (is_letter(expression[end]) && end - at < 12)
                    ++end;
                parse.name(expression.substr(at, end - at));
            } else if (is_number_part(expression[at])) {
                while (is_number_part(expression[end]))
                    ++end;
                parse.number(expression.substr(at, end - at));
                if (is_letter(expression[end]))
                    ++end; // examined as an operator, which it is not
            } else {
                end = at + 1;
                parse.character(expression[at]);
            }
            at = end;
        }
        if (parse.failed || parse.operands > 1)
            return -1;
    }
    program.count = parse.items;
    return parse.items;
}

void EquationModel::move_down(Program& program, int from, int distance)
{
    for (int p = from - distance; p < 100; ++p) {
        const auto to = static_cast<size_t>(p), source = static_cast<size_t>(p + distance);
        program.kinds[to] = source < 100 ? program.kinds[source] : 0;
        program.operands[to] = source < 100 ? program.operands[source] : -1;
        program.constants[to] = source < 100 ? program.constants[source] : 0.0;
    }
}

int EquationModel::simplify(int equation)
{
    if (equation < 0 || equation >= equations())
        return -1;
    // A function that is called may add equations, which moves the programs.
    const auto program = [&]() -> Program& { return programs_[static_cast<size_t>(equation)]; };
    const auto kind = [&](int p) { return p < 0 ? -1 : program().kinds[static_cast<size_t>(p)]; };
    const auto operand = [&](int p) { return program().operands[static_cast<size_t>(p)]; };
    const auto constant = [&](int p) -> double& { return program().constants[static_cast<size_t>(p)]; };
    for (int p = 0; p <= 99 && kind(p) != EQ_ITEM_END; ++p) {
        if (kind(p) == EQ_ITEM_BINARY && kind(p - 1) == EQ_ITEM_CONSTANT && kind(p - 2) == EQ_ITEM_CONSTANT) {
            const double value = call(operand(p), constant(p - 2), constant(p - 1));
            constant(p - 2) = value;
            move_down(program(), p + 1, 2);
            p -= 2;
        }
        if (kind(p) == EQ_ITEM_UNARY && kind(p - 1) == EQ_ITEM_CONSTANT) {
            const double value = call(operand(p), constant(p - 1));
            constant(p - 1) = value;
            move_down(program(), p + 1, 1);
            p -= 1;
        }
    }
    return 1;
}

int EquationModel::simplify_all()
{
    for (int i = 0; i < equations(); ++i)
        if (simplify(i) < 0)
            return -(i + 1);
    return 1;
}

double EquationModel::evaluate(int equation)
{
    if (equation < 0 || equation >= equations())
        return 0.0;
    // Asked anew for every item: a function that is called may change the count, or add equations.
    const auto program = [&]() -> const Program& { return programs_[static_cast<size_t>(equation)]; };
    if (program().kinds[0] != EQ_ITEM_TARGET)
        return 0.0;
    std::vector<double> stack;
    for (size_t p = 0; static_cast<int>(p) < program().count && program().kinds[p] != EQ_ITEM_END; ++p) {
        const int kind = program().kinds[p], operand = program().operands[p];
        if (kind == EQ_ITEM_CONSTANT || kind == EQ_ITEM_VARIABLE || kind == EQ_ITEM_SAMPLE) {
            const double pushed = kind == EQ_ITEM_CONSTANT   ? program().constants[p]
                                  : kind == EQ_ITEM_VARIABLE ? read_variable(operand)
                                                             : read_table(operand);
            if (stack.size() == 51)
                break;
            stack.push_back(pushed);
        } else if (kind == EQ_ITEM_UNARY && !stack.empty()) {
            stack.back() = call(operand, stack.back());
        } else if (kind == EQ_ITEM_BINARY && stack.size() >= 2) {
            const double b = stack.back();
            stack.pop_back();
            stack.back() = call(operand, stack.back(), b);
        }
    }
    const double result = stack.empty() ? 0.0 : stack.back();
    Variable& target = variables_[static_cast<size_t>(program().operands[0])];
    if (target.flag == 0)
        target.value = result;
    return result;
}

int EquationModel::evaluate_all()
{
    std::vector<double> after;
    for (const Variable& variable : variables_)
        after.push_back(variable.value);
    for (int i = 0; i < equations(); ++i) {
        if (programs_[static_cast<size_t>(i)].kinds[0] != EQ_ITEM_TARGET)
            continue;
        const auto target = static_cast<size_t>(programs_[static_cast<size_t>(i)].operands[0]);
        const double result = evaluate(i);
        if (target < after.size()) // a variable that was declared meanwhile has no place
            after[target] = result;
    }
    for (size_t v = 0; v < after.size(); ++v)
        variables_[v].value = after[v];
    return 1;
}

std::string EquationModel::state_of_equation(int equation) const
{
    const Program& program = programs_[static_cast<size_t>(equation)];
    std::string text = "  " + shape(program.count, 1, 1, 100, 1) + shape(100, 1, 1, 100, 1) + shape(100, 1, 0, 100, 1);
    for (size_t p = 0; p < 100; ++p)
        if (program.kinds[p] != 0 || program.operands[p] != -1 || std::bit_cast<uint64_t>(program.constants[p]) != 0)
            text += " " + std::to_string(p) + ":" + std::to_string(program.kinds[p]) + "," +
                    std::to_string(program.operands[p]) + "," + exact(program.constants[p]);
    return text + "\n";
}

std::string EquationModel::state() const
{
    const int functions = static_cast<int>(functions_.size()), room = function_room_;
    const int variables = static_cast<int>(variables_.size());
    std::string text = "functions " + shape(functions, 1, 3, room, 1) + shape(room, 13, 2, room, 13) +
                       shape(room, 1, 1, room, 1) + shape(room, 1, 4, room, 1) + shape(room, 1, 1, room, 1) + "\n";
    for (const Function& f : functions_) {
        text += "  " + f.name + " " + std::to_string(f.arity) + " at " + std::to_string(f.position) + " table " +
                shape(f.table.rows, f.table.columns, 0, f.table.room_rows, f.table.room_columns);
        for (const double value : f.table.values)
            text += " " + exact(value);
        text += "\n";
    }
    text += "variables " + shape(variables, 13, 2, variables, 13) + shape(variables, 1, 0, variables, 1) +
            shape(variables, 1, 2, variables, 1) + "\n";
    for (const Variable& v : variables_)
        text += "  " + v.name + " " + exact(v.value) + " flag " + std::to_string(v.flag) + "\n";
    text += "equations " + shape(equations(), 3, 4, equation_room_, 3) + "\n";
    for (int i = 0; i < equations(); ++i)
        text += state_of_equation(i);
    return text + "row position " + exact(table_index_) + "\n";
}

} // namespace korvale::reference
