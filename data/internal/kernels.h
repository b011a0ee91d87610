#pragma once

#include <cstddef>
#include <cstdint>

// Work on the bare elements of an array, ignorant of its record.
namespace korvale::inside {

/// Exchanges element i with element count - 1 - i, `bytes` bytes each.
void reverse_elements(void* buffer, int64_t count, size_t bytes);

/// Copies components of `component` bytes each, `bytes` in all, as if one after the other from the first on; the
/// buffers may overlap.
void copy_values(const void* from, size_t bytes, size_t component, void* to);

/// Writes the least and the greatest value of each component of values[count][dim], count of 1 or more. Both start at
/// element 0 and are replaced by strict comparisons, in element order.
void find_bounds(const double* values, int64_t count, int64_t dim, double* least, double* greatest);

/// Carries `count` points by `m`, one after the other; the buffers may overlap, and `m` may lie in either.
void carry_points(const double (*m)[4], const double* from, int64_t count, double* to);

/// to = wa * a + wb * b, value by value; the buffers may overlap.
void mix_values(const double* a, const double* b, double wa, double wb, int64_t n, double* to);

/// to = ((w[0] * a + w[1] * b) + w[2] * c) + w[3] * d, value by value; the buffers may overlap.
void mix_values(const double* a, const double* b, const double* c, const double* d, const double* w, int64_t n,
                double* to);

} // namespace korvale::inside
