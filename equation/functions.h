#pragma once

#include "../platform/export.h"
#include "system.h"

/// Registers a function of two arguments, called with the left and the right operand, under a name for equations.
///
/// `name` has up to 12 characters and is copied; an equation can only name functions whose names are letters
/// throughout. The first registration of a name is the one that look-ups find.
///
/// `name` is used as a format that takes no values: "%%" registers a percent sign.
///
/// While the library calls it, the function may read and set variables, declare, register, parse, evaluate, and make
/// and read tables: whatever called it reads item counts, functions, variables and tables anew. It may not release the
/// system, its arrays, tables or equations, nor simplify an equation that is running.
///
/// Returns 1, or -1, with nothing registered, for a name that is null, longer than 12 characters or holds any other
/// directive, for a null function, where the arrays are full and one of them wraps memory of the host, and when the
/// heap is exhausted (the number of functions may stay raised then).
KORVALE_API int EqAddFuncBinary(EquationSystem* es, char* name, double (*function)(double, double));

/// `EqAddFuncBinary` for a function of one argument.
KORVALE_API int EqAddFuncUnary(EquationSystem* es, char* name, double (*function)(double));

/// `EqAddFuncBinary` for a function without arguments, which can be replaced by a table of its values.
KORVALE_API int EqAddFuncNoArg(EquationSystem* es, char* name, double (*function)());

/// Reserves the next function index, without a name and without a function, and makes its empty table.
///
/// When the arrays are full, room for 20 more functions is made; the counts of the four further arrays stay at that
/// larger number.
///
/// Returns the index, or -1 for a null record, full arrays one of which wraps memory of the host (nothing changes), or
/// an exhausted heap.
///
/// Deliberate: a growth that the heap has no room for leaves the number of functions raised; look-ups stop at what is
/// allocated.
KORVALE_API int EqAnotherFunc(EquationSystem* es);

/// The index of the first function of that name, or -1; a name longer than 12 characters is no function's.
KORVALE_API int EqLookupFunction(EquationSystem* es, char* name);

/// Seeds the platform's random generator, which the whole process shares.
KORVALE_API void EqSeed(int seed);

/// `EqSeed` under another name.
KORVALE_API void gauss_init(int seed);

/// One draw of the random generator as a value in [0, 1]; both ends occur.
KORVALE_API double EqFuncRand();

/// About a standard normal value, in [-3.4641016, 3.4641016], from four draws.
KORVALE_API double gauss();

/// a + b.
KORVALE_API double EqFuncAdd(double a, double b);

/// a - b.
KORVALE_API double EqFuncSubtract(double a, double b);

/// a * b.
KORVALE_API double EqFuncMultiply(double a, double b);

/// a / b, and 0.0 where b is 0.0 of either sign.
KORVALE_API double EqFuncDivide(double a, double b);

/// a with its sign bit flipped.
KORVALE_API double EqFuncNegate(double a);
