#pragma once

#include <cstdint>

// What the whole-array operations do, one element after the other.
namespace korvale::reference {

/// The least and the greatest value of each component of values[count][dim], by strict comparisons from element 0 on.
void bounds(const double* values, int64_t count, int64_t dim, double* least, double* greatest);

/// Applies `m` to `count` points; `to` may be `from`.
void carry_points(const double (*m)[4], const double* from, int64_t count, double* to);

void mix(const double* a, const double* b, double wa, double wb, int64_t n, double* to);

void mix_four(const double* a, const double* b, const double* c, const double* d, const double* weights, int64_t n,
              double* to);

} // namespace korvale::reference
