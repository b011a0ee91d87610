#pragma once

#include <cstddef>
#include <cstdint>

// Work on the bare elements of an array, ignorant of its record.
namespace korvale::inside {

/// Exchanges element i with element count - 1 - i, `bytes` bytes each.
void reverse_elements(void* buffer, int64_t count, size_t bytes);

/// Writes the least and the greatest value of each component of values[count][dim], count of 1 or more. Both start at
/// element 0 and are replaced by strict comparisons, in element order.
void find_bounds(const double* values, int64_t count, int64_t dim, double* least, double* greatest);

/// Carries `count` points by `m`; `to` may be `from`.
void carry_points(const double (*m)[4], const double* from, int64_t count, double* to);

/// to = wa * a + wb * b; `to` may be either.
void mix_values(const double* a, const double* b, double wa, double wb, int64_t n, double* to);

/// to = ((w[0] * a + w[1] * b) + w[2] * c) + w[3] * d; `to` may be any of them.
void mix_values(const double* a, const double* b, const double* c, const double* d, const double* w, int64_t n,
                double* to);

} // namespace korvale::inside
