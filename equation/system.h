#pragma once

#include <cstdint>

#include "../data/datastruct.h"
#include "../platform/export.h"

/// Kinds of the items of a parsed equation.
enum {
    EQ_ITEM_END = 0,      ///< ends the program
    EQ_ITEM_CONSTANT = 4, ///< pushes the constant at the item's own position
    EQ_ITEM_VARIABLE = 5, ///< pushes the variable the operand names
    EQ_ITEM_SAMPLE = 7,   ///< pushes `EqTableRead` of the no-argument function the operand names
    EQ_ITEM_UNARY = 8,    ///< replaces the top by the function of it
    EQ_ITEM_BINARY = 9,   ///< takes b off and replaces the new top a by the function of (a, b)
    EQ_ITEM_TARGET = 16   ///< no effect; item 0 of a program, names the variable on the left
};

/// Named variables, named functions with their sample tables, and equations over them. All arrays are owned by the
/// record and come from `DATANew`.
///
/// Function i is at position i of `funcs`, `func_names`, `func_nargs`, `tables` and `table_pos`; variable v at position
/// v of `var_names`, `var_vals` and `var_flags`. Names are compared exactly, capitals and all. Both only ever grow.
struct EquationSystem {
    DATAstruct* funcs;      ///< function pointers, kind `DATA_TYPE_POINTER` [1]; its count is the number of functions
    DATAstruct* func_names; ///< names, kind byte [13]: up to 12 characters and a terminating zero
    DATAstruct* func_nargs; ///< number of arguments, kind int [1]: 2, 1 or 0
    DATAstruct* var_names;  ///< names, kind byte [13]: up to 12 letters and a terminating zero
    DATAstruct* var_vals;   ///< values, kind double [1]; its count is the number of variables
    DATAstruct* var_flags;  ///< reservation flags, kind byte [1]; 0 lets an equation change the variable at once
    DATAstruct* equations;  ///< programs, kind `DATA_TYPE_DATA` [3]: kinds, operands and constants of up to 100 items
    DATAstruct* tables;     ///< sample tables, kind `DATA_TYPE_DATA` [1], owned: count rows of dim columns of doubles
    DATAstruct* table_pos;  ///< column that the next read of the table uses, kind int [1]
    double table_index;     ///< row position of all table reads
};

/// Makes a system with the eighteen built-in functions, the variables PI and E, and no equations. Whatever the record
/// held before is not released.
///
/// The functions are, in order of their indices: ADD, SUBTRACT, MULTIPLY, DIVIDE, POWER (two arguments), NEGATE, SIN,
/// COS, TAN, SQRT, EXP, LOG, ASIN, ACOS, ATAN (one), RAND, GAUSS (none), ANGLE (two). Angles are in radians.
///
/// Returns 1, or -1 for a null record or when the heap has no room for the arrays; everything made so far is released
/// then. A built-in function or variable that the heap has no room for is missing without notice.
KORVALE_API int EqSystemInitialize(EquationSystem* es);

/// Releases all arrays with the tables and equations in them and sets the fields to null. A null record does nothing.
KORVALE_API void EqSystemDispose(EquationSystem* es);
