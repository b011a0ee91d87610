#pragma once

#include "equation/internal/program.h"
#include "equation/system.h"

namespace korvale::inside {

/// Runs a program that has a target, gives that variable the result unless it is reserved, and returns it.
double evaluate(EquationSystem& es, const Program& program);

} // namespace korvale::inside
