#pragma once

#include "../platform/export.h"
#include "system.h"

/// @file
/// Equations as text: name = expression.
///
/// An expression is made of numbers (digits and points), variables, functions, parentheses and the operators + - * / ^.
/// A function without arguments stands for a value. By falling strength:
///
/// | operators                                       | grouping                                            |
/// |-------------------------------------------------|-----------------------------------------------------|
/// | SIN, -, any function of one argument before it  | applies to the operand or parenthesis that follows  |
/// | ^ POWER                                         | from the right                                      |
/// | * / MULTIPLY DIVIDE                             | from the left                                       |
/// | + - ADD SUBTRACT                                | from the left                                       |
/// | ANGLE, any other function of two, between them  | from the left                                       |
///
/// Blanks, commas and all other characters separate. Numbers are read alike under every locale.
///
/// Deliberate: a letter directly after a number is such another character, so 2x is 2. Write 2 * x.
///
/// Each equation is one row of `equations`: three arrays of 100 entries, the kinds, operands and constants of its items
/// in postfix order. The count of the kinds is the number of items.

/// Appends the equation in `text` to the system.
///
/// A parse that is refused leaves its row behind, without items: evaluation skips it, or, when the variable on the left
/// had been read, gives that variable 0.0. Every place that names a no-argument function adds a column to its table, in
/// a refused equation too.
///
/// Returns the number of items; 1, with an empty row, for a text without "="; -1 for a null argument, a left side that
/// is no variable, an unknown name, a missing or left-over operand, an unbalanced parenthesis, more than 100 items,
/// more than 51 waiting operators and parentheses or 51 waiting functions, and an exhausted heap. Nothing changes where
/// the equations wrap memory of the host that is full.
///
/// Deliberate: where the left side is no variable the "=" is left overwritten by a zero. In all other cases the text is
/// not written and may be in read-only memory.
KORVALE_API int EqParseEquation(EquationSystem* es, char* text);

/// Puts a binary operator onto the parser's stack, after moving those of at least its priority to the program.
///
/// `op_stack` holds codes in its last entries, from `*op_top` on; `*op_top` is its count while it is empty. Each code
/// that is moved becomes an `EQ_ITEM_BINARY` at `*item_pos` of `kinds` and `operands` and takes one from
/// `*operand_counter`.
///
/// Returns 1, or -1 as soon as the counter falls below 1, when the program or the stack is full, and for a null
/// argument or an array without room.
KORVALE_API int new_bi_item(int code, int* op_top, int* operand_counter, int* item_pos, DATAstruct* kinds,
                            DATAstruct* operands, DATAstruct* op_stack);

/// The priority of an operator that waits on the stack. -1 is an open parenthesis, 0 to 4 are + - * / ^, any other code
/// is a two-argument function.
KORVALE_API int op_isp(int code);

/// The priority of an operator that arrives.
KORVALE_API int op_icp(int code);
