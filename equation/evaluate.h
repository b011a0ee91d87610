#pragma once

#include "../platform/export.h"
#include "system.h"

/// Runs an equation and returns its result; the variable on the left takes it at once unless it is reserved.
///
/// Up to 51 values are held; a program that wants more stops there and its result is the topmost value. A function with
/// too few values below it is passed over. Returns 0.0, and changes nothing, for an equation without a left side and an
/// index that is no equation's.
KORVALE_API double EqEvaluate(EquationSystem* es, int equation);

/// Runs all equations in order. Each result is in its variable for the equations that follow, or, for a reserved
/// variable, not until the end of the pass.
///
/// What functions that are called change in variables does not outlast the pass: at its end every variable has its last
/// result, or, when it stands on no left side, the value it had at the start.
///
/// Equations that such a function parses run in the same pass, when it comes to them. A function that parses a call of
/// itself each time keeps the pass going until the heap is exhausted. Variables declared during the pass have no place
/// in it: what is assigned to a reserved one is dropped, and one that is not reserved keeps what it is given.
///
/// Returns 1, or -1 with nothing changed for a null system, one without variables, or an exhausted heap.
KORVALE_API int EqSystemEvaluate(EquationSystem* es);
