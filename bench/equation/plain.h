#pragma once

#include "equation/equation.h"

// The documented steps taken one by one, to measure the library's shorter ways against.
namespace korvale::bench {

/// `EqEvaluate` with its value stack on the heap and every function called through the registry.
double evaluate_plainly(EquationSystem* es, int equation);

/// `EqSystemEvaluate` with a copy of all variables made before a pass and copied back after it.
int evaluate_all_plainly(EquationSystem* es);

/// `EqParseVariables` comparing every name with every other.
int declare_plainly(EquationSystem* es, const char* text, int flag);

} // namespace korvale::bench
