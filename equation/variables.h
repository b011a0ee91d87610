#pragma once

#include "../platform/export.h"
#include "system.h"

/// The index of the variable of that name, or -1.
KORVALE_API int EqLookupVariable(EquationSystem* es, char* name);

/// Gives variable `v` a value. An index that is no variable's changes nothing.
KORVALE_API void EqSetVariable(EquationSystem* es, int v, double value);

/// The value of variable `v`, 0.0 for an index that is no variable's.
KORVALE_API double EqReadVariable(EquationSystem* es, int v);

/// Stores `flag` at position `v` of the integer buffer of `var_flags`.
///
/// Deliberate: the flags that evaluation reads are bytes, written when a variable is declared. `var_flags` has no
/// integer buffer unless the host gives it one, and without one nothing is stored. Such a buffer has to come from
/// malloc, since it is released with the array, and to hold a number for every variable, those declared later included.
KORVALE_API void EqReserveVariable(EquationSystem* es, int v, int flag);

/// `EqSetVariable` by name. Returns 1, or -1 for an unknown name.
KORVALE_API int EqSetVariableByName(EquationSystem* es, char* name, double value);

/// `EqReadVariable` by name; 0.0 for an unknown name.
KORVALE_API double EqReadVariableByName(EquationSystem* es, char* name);

/// `EqReserveVariable` by name. Returns 1, or -1 for an unknown name.
KORVALE_API int EqReserveVariableByName(EquationSystem* es, char* name, int flag);

/// Declares the variables named in `text`, each with the value 0.0 and the low byte of `flag`.
///
/// A name is a run of ASCII letters; every other character only separates, so "x1y" declares x and y. Names that exist
/// already are skipped. A byte other than 0 reserves the variables: `EqSystemEvaluate` changes them at the end of a
/// pass, `EqEvaluate` not at all.
///
/// Returns the number of variables, or -1 with the variables unchanged for a null argument, a name of more than 12
/// letters, the name of a function, new names where one of the arrays wraps memory of the host, or an exhausted heap.
KORVALE_API int EqParseVariables(EquationSystem* es, char* text, int flag);
