#pragma once

#include "equation/system.h"

// The documented steps over the records themselves, one by one, whatever a host has put into them: the value stack on
// the heap, every function called through the registry, every name compared with every other.
namespace korvale::reference {

/// `EqEvaluate`.
double evaluate(EquationSystem* es, int equation);

/// `EqSystemEvaluate`, with a copy of all variables made before a pass and copied back after it.
int evaluate_all(EquationSystem* es);

/// `EqParseVariables` where no name is a function's and the heap has room.
int declare(EquationSystem* es, const char* text, int flag);

} // namespace korvale::reference
