#pragma once

#include "../platform/export.h"
#include "system.h"

/// Replaces each function of constants in an equation by its value, which is found by calling the function. Variables
/// and samples are never folded.
///
/// Returns 1, or -1 for a null system or an index outside 0 to count - 1.
///
/// Deliberate: the count of the kinds stays; the program ends at the `EQ_ITEM_END` that now follows it.
KORVALE_API int EqSimplify(EquationSystem* es, int equation);

/// `EqSimplify` on all equations, in order, those that a called function parses meanwhile included.
///
/// Returns 1, -(i + 1) when equation i fails, or -1 for a null system.
KORVALE_API int EqSystemSimplify(EquationSystem* es);
