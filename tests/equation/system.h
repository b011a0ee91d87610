#pragma once

#include <string>
#include <vector>

#include "equation/evaluate.h"
#include "equation/functions.h"
#include "equation/parse.h"
#include "equation/simplify.h"
#include "equation/system.h"
#include "equation/tables.h"
#include "equation/variables.h"

namespace korvale::test {

/// An equation system that is disposed when it goes out of scope. Passes as a pointer to the record.
class System {
public:
    System();
    ~System();
    System(const System&) = delete;
    System& operator=(const System&) = delete;

    EquationSystem* get() { return &record_; }
    operator EquationSystem*() { return &record_; }
    EquationSystem* operator->() { return &record_; }

    /// The exported functions, on a copy of the text.
    int declare(std::string names, int flag = 0);
    int parse(std::string text);
    int function(std::string name);
    int variable(std::string name);
    int add(std::string name, double (*called)(double, double));
    int add(std::string name, double (*called)(double));
    int add(std::string name, double (*called)());
    void set(std::string name, double value);
    double get(std::string name);

    /// Parses an equation, which must succeed, and evaluates it.
    double value(std::string text);

    /// The items of an equation up to the first end item, in words: "y = 2 3 MULTIPLY"; "y =" is the target alone, ""
    /// an empty program.
    std::string program(int equation);
    /// The program of the last equation.
    std::string program();

    DATAstruct* kinds(int equation) { return child(equation, 0); }
    DATAstruct* operands(int equation) { return child(equation, 1); }
    DATAstruct* constants(int equation) { return child(equation, 2); }

    DATAstruct* table(int function);

private:
    DATAstruct* child(int equation, int which);

    EquationSystem record_;
};

/// Everything a host can see of a system, row by row in words, for comparing two systems. Function pointers are left
/// out.
std::string state_of(const EquationSystem& es);
/// One equation's line of it.
std::string state_of_equation(const EquationSystem& es, int equation);

} // namespace korvale::test
