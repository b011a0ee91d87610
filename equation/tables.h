#pragma once

#include "../platform/export.h"
#include "system.h"

/// Fills the table of a no-argument function with `rows` rows of its values, one call each in storage order.
///
/// The number of columns becomes the present number multiplied by `cols`. A new function has 0 columns; each place an
/// equation names it adds one, so tables are made after the equations are parsed.
///
/// The function may parse its own name meanwhile: it is called for the elements there were at the start.
///
/// Returns 1, or -1 for a function with arguments, an index that is no function's, and a table that cannot be
/// allocated.
///
/// Memory of the host in the table has to come from malloc: it is freed, or a buffer of the library takes its place.
///
/// Deliberate: the rows and the multiplied columns stay on the table when its allocation is refused. Only a number of
/// columns beyond 31 bits changes nothing.
KORVALE_API int EqMakeTable(EquationSystem* es, int func, int rows, int cols);

/// `EqMakeTable` by name. Returns -1 for an unknown name as well.
KORVALE_API int EqMakeTableByName(EquationSystem* es, char* name, int rows, int cols);

/// Sets the row position of all table reads.
KORVALE_API void EqSetTableIndex(EquationSystem* es, double index);

/// The next sample of a no-argument function: from its table where `table_index` lies inside, else a fresh call.
///
/// Between two rows the sample is interpolated; in the row before the first and after the last it is that of the end
/// row. The next read takes the next column and wraps around. A fresh call does not advance the column; it is also made
/// when the element lies outside the table's buffer, as after a further equation has widened the table. Should the
/// function change rows, columns or position of its table then, the read goes on with those of before the call.
///
/// Memory of the host is as long as rows times columns are before the library first changes one of them. Where that is
/// nothing every read is a fresh call, until the host sets alloc_dim and alloc_count to -1 again beside new sizes.
///
/// Returns 0.0 for an index that is no function's, and in place of a fresh call of a function with arguments.
KORVALE_API double EqTableRead(EquationSystem* es, int func);
