#pragma once

#include "../platform/export.h"

/// n!, and 1 for n below 1. Exact up to 12; beyond that the 32-bit product wraps.
KORVALE_API int factorial(int n);

/// n over k from 32-bit factorials, exact up to n = 12.
///
/// Deliberate: 1 wherever n <= 0, k <= 0 or n <= k, so k > n gives 1 and not 0. Where the divisor wraps to 0 the result
/// is 0.
KORVALE_API int binomial(int n, int k);

/// x multiplied by itself n - 1 times, in order.
///
/// Deliberate: 1.0 for n below 1; a negative exponent does not invert.
KORVALE_API double power(double x, int n);
