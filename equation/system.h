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

/// Registers a function of two arguments, called with the left and the right operand, under a name for equations.
///
/// `name` has up to 12 characters and is copied; an equation can only name functions whose names are letters throughout.
/// The first registration of a name is the one that look-ups find.
///
/// `name` is used as a format that takes no values: "%%" registers a percent sign.
///
/// Returns 1, or -1, with nothing registered, for a name that is null, longer than 12 characters or holds any other
/// directive, for a null function, where the arrays are full and one of them wraps memory of the host, and when the heap
/// is exhausted (the number of functions may stay raised then).
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
/// Returns the index, or -1 for a null record, full arrays one of which wraps memory of the host (nothing changes), or an
/// exhausted heap.
///
/// Deliberate: a growth that the heap has no room for leaves the number of functions raised; look-ups stop at what is allocated.
KORVALE_API int EqAnotherFunc(EquationSystem* es);

/// The index of the first function of that name, or -1; a name longer than 12 characters is no function's.
KORVALE_API int EqLookupFunction(EquationSystem* es, char* name);

/// The index of the variable of that name, or -1.
KORVALE_API int EqLookupVariable(EquationSystem* es, char* name);

/// Gives variable `v` a value. An index that is no variable's changes nothing.
KORVALE_API void EqSetVariable(EquationSystem* es, int v, double value);

/// The value of variable `v`, 0.0 for an index that is no variable's.
KORVALE_API double EqReadVariable(EquationSystem* es, int v);

/// Stores `flag` at position `v` of the integer buffer of `var_flags`.
///
/// Deliberate: the flags that evaluation reads are bytes, written when a variable is declared. `var_flags` has no
/// integer buffer unless the host gives it one, and without one nothing is stored. Such a buffer has to come from malloc,
/// since it is released with the array, and to hold a number for every variable, those declared later included.
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
/// already are skipped. A flag other than 0 reserves the variables: `EqSystemEvaluate` changes them at the end of a pass.
///
/// Returns the number of variables, or -1 with the variables unchanged for a null argument, a name of more than 12
/// letters, the name of a function, new names where one of the arrays wraps memory of the host, or an exhausted heap.
KORVALE_API int EqParseVariables(EquationSystem* es, char* text, int flag);

/// Fills the table of a no-argument function with `rows` rows of its values, one call each in storage order.
///
/// The number of columns becomes the present number multiplied by `cols`. A new function has 0 columns; each place an
/// equation names it adds one, so tables are made after the equations are parsed.
///
/// Returns 1, or -1 for a function with arguments, an index that is no function's, and a table that cannot be allocated.
///
/// Deliberate: the rows and the multiplied columns stay on the table when its allocation is refused. Only a product of
/// more than 31 bits changes nothing.
KORVALE_API int EqMakeTable(EquationSystem* es, int func, int rows, int cols);

/// `EqMakeTable` by name. Returns -1 for an unknown name as well.
KORVALE_API int EqMakeTableByName(EquationSystem* es, char* name, int rows, int cols);

/// Sets the row position of all table reads.
KORVALE_API void EqSetTableIndex(EquationSystem* es, double index);

/// The next sample of a no-argument function: from its table where `table_index` lies inside, else a fresh call.
///
/// Between two rows the sample is interpolated; in the row before the first and after the last it is that of the end
/// row. The next read takes the next column and wraps around. A fresh call does not advance the column; it is also made
/// when the element lies outside the table's buffer, as after a further equation has widened the table.
///
/// Returns 0.0 for an index that is no function's.
KORVALE_API double EqTableRead(EquationSystem* es, int func);

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

/// Releases all arrays with the tables and equations in them and sets the fields to null. A null record does nothing.
KORVALE_API void EqSystemDispose(EquationSystem* es);
