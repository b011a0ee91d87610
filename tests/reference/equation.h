#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

// The equation system over plain containers: every step in its documented order, every name looked up by comparing it
// with all others, every evaluation with a stack and a copy of all variables. Only what a host can see is modelled.
namespace korvale::reference {

class EquationModel {
public:
    EquationModel();

    int add_function(const std::string& name, int arity, void* function);
    int another_function();
    int look_up_function(const std::string& name) const;
    int look_up_variable(const std::string& name) const;
    void set_variable(int v, double value);
    double read_variable(int v) const;
    int parse_variables(const std::string& text, int flag);
    int make_table(int f, int rows, int columns);
    void set_table_index(double index) { table_index_ = index; }
    double read_table(int f);

    /// `text` is left as the library leaves it.
    int parse_equation(std::string& text);
    int simplify(int equation);
    int simplify_all();
    double evaluate(int equation);
    int evaluate_all();

    /// Replaces the pointer of a function slot.
    void replace_function(int f, void* function) { functions_[static_cast<size_t>(f)].pointer = function; }

    /// Changes the number of items of an equation.
    void set_count(int equation, int count) { programs_[static_cast<size_t>(equation)].count = count; }

    int equations() const { return static_cast<int>(programs_.size()); }

    /// As korvale::test::state_of.
    std::string state() const;
    /// One equation's line of it.
    std::string state_of_equation(int equation) const;

private:
    struct Table {
        int32_t rows = 0, columns = 0;
        int32_t room_rows = -1, room_columns = -1;
        std::vector<double> values;
    };
    struct Function {
        std::string name;
        int arity = 0;
        void* pointer = nullptr;
        Table table;
        int32_t position = 0;
    };
    struct Variable {
        std::string name;
        double value;
        uint8_t flag;
    };
    struct Program {
        std::array<int, 100> kinds{};
        std::array<int, 100> operands;
        std::array<double, 100> constants{};
        int count = 0;
        Program() { operands.fill(-1); }
    };
    struct Parse;

    int look_up(const std::string& name, int arity) const;
    double call(int f) const;
    double call(int f, double x) const;
    double call(int f, double a, double b) const;
    void move_down(Program& program, int from, int distance);

    std::vector<Function> functions_;
    int function_room_ = 20;
    std::vector<Variable> variables_;
    std::vector<Program> programs_;
    int equation_room_ = 20;
    double table_index_ = 0.0;
};

} // namespace korvale::reference
