#pragma once

#include <cstdint>

#include "equation/internal/program.h"
#include "equation/system.h"

// Evaluation of one equation, by two interpreters: the documented one, and a threaded one for whatever is usual.
namespace korvale::equation {

constexpr int64_t kMostValues = 51; ///< values held during an evaluation

/// The values held but the topmost, from [1] on; [0] takes the 0.0 there is at first.
using Below = double[kMostValues];

/// An evaluation between two items, `position` that of the next one.
struct State {
    int64_t position = 1; // the target is at 0
    int64_t depth = 0;    // values held
    double top = 0.0;     // the last of them; 0.0 while there is none
};

/// What follows an item: the next one, the end, or, after a function of the host, a program that may have changed.
enum class After { next, end, unknown };

/// Runs the next item as documented.
After step(EquationSystem& es, const Program& program, State& state, Below& below);

/// Runs all further items by `step`. After a function of the host the program is looked up again.
double run_to_end(EquationSystem& es, int32_t equation, State state, Below& below);

/// Gives the variable on the left the result, unless it is reserved or the equation is gone, and returns it.
double conclude(EquationSystem& es, const Program& program, double result);

/// `EqEvaluate`: by the threaded interpreter as far as all is usual.
double evaluate(EquationSystem& es, int32_t equation);

} // namespace korvale::equation
