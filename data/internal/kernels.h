#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

#include "math/internal/matrix.h"

// Work on the bare elements of an array, which knows nothing of its record. Results are those of a plain loop from the
// first value on, also where buffers overlap. A few values are handled inline, more by a call into kernels.cpp, which
// uses lanes.
namespace korvale::data {

/// Exchanges element i with element count - 1 - i, `bytes` bytes each.
void reverse_elements(void* buffer, int64_t count, size_t bytes);

/// Copies one component after the other, for a target that begins inside the source.
void copy_ahead(const unsigned char* from, int64_t n, size_t component, unsigned char* to);

/// Copies n components of `component` bytes each. A target that begins inside the source overwrites what is still to be
/// read: component by component repeats the leading ones, as the documented loop does and memmove does not.
[[gnu::always_inline]] inline void copy_components(const void* from, int64_t n, size_t component, void* to)
{
    const size_t bytes = static_cast<size_t>(n) * component;
    const auto *const first = static_cast<const unsigned char*>(from), *const target = static_cast<unsigned char*>(to);
    if (first < target && target < first + bytes)
        copy_ahead(first, n, component, static_cast<unsigned char*>(to));
    else
        std::memmove(to, from, bytes);
}

inline bool is_apart(const double* a, int64_t of_a, const double* b, int64_t of_b)
{
    return a + of_a <= b || b + of_b <= a;
}

void find_bounds_of_many(const double* values, int64_t count, int64_t dim, double* box);

/// Widens bounds by points that do not overlap them.
[[gnu::always_inline]] inline void widen_by_points(const double* p, const double* end, double* least, double* greatest)
{
    double x0 = least[0], y0 = least[1], z0 = least[2];
    double x1 = greatest[0], y1 = greatest[1], z1 = greatest[2];
    for (; p < end; p += 3) {
        x0 = x0 > p[0] ? p[0] : x0;
        y0 = y0 > p[1] ? p[1] : y0;
        z0 = z0 > p[2] ? p[2] : z0;
        x1 = p[0] > x1 ? p[0] : x1;
        y1 = p[1] > y1 ? p[1] : y1;
        z1 = p[2] > z1 ? p[2] : z1;
    }
    least[0] = x0;
    least[1] = y0;
    least[2] = z0;
    greatest[0] = x1;
    greatest[1] = y1;
    greatest[2] = z1;
}

/// Writes the least value of each component of values[count][dim], count of 1 or more, to box[0] and the greatest to
/// box[1]. Both start at element 0 and are replaced by strict comparisons, in element order.
[[gnu::always_inline]] inline void find_bounds(const double* values, int64_t count, int64_t dim, double* box)
{
    constexpr int64_t kFewPoints = 24; // measured
    if (dim != 3 || count >= kFewPoints || !is_apart(values, 3 * count, box, 6))
        return find_bounds_of_many(values, count, dim, box);
    const double first[] = {values[0], values[1], values[2]};
    std::memcpy(box, first, sizeof first);
    std::memcpy(box + 3, first, sizeof first);
    widen_by_points(values + 3, values + 3 * count, box, box + 3);
}

bool are_many_finite(const double* values, int64_t n);

/// Whether n values are all finite.
[[gnu::always_inline]] inline bool are_finite(const double* values, int64_t n)
{
    constexpr int64_t kFewValues = 12; // measured
    if (n >= kFewValues)
        return are_many_finite(values, n);
    constexpr double kGreatest = std::numeric_limits<double>::max();
    bool finite = true;
    for (int64_t j = 0; j < n; ++j)
        finite = finite & (-kGreatest <= values[j]) & (values[j] <= kGreatest);
    return finite;
}

void carry_many_points(const double (*m)[4], const double* from, int64_t count, double* to);

/// Carries `count` points by `m`. A matrix that lies among the points written is read anew for each point.
[[gnu::always_inline]] inline void carry_points(const double (*m)[4], const double* from, int64_t count, double* to)
{
    constexpr int64_t kFewPoints = 4; // measured
    if (count >= kFewPoints)
        return carry_many_points(m, from, count, to);
    for (int64_t i = 0; i < count; ++i)
        carry_point(m, from + 3 * i, to + 3 * i);
}

/// Values of a mix and their weight, passed in two registers.
struct Weighted {
    const double* from;
    double weight;
};

/// The weighted sum of the values from j on, one sum per lane, added from the first list to the last: for four lists
/// ((wa a + wb b) + wc c) + wd d.
template <class V, class... Others>
KORVALE_OVER_LANES V mixed(int64_t j, Weighted first, Others... others)
{
    V sum = first.weight * load<V>(first.from + j);
    ((sum = sum + others.weight * load<V>(others.from + j)), ...);
    return sum;
}

void mix_many_values(int64_t n, double* to, Weighted a, Weighted b);
void mix_many_values(int64_t n, double* to, Weighted a, Weighted b, Weighted c, Weighted d);

/// Writes n weighted sums, of two lists or four. Few are mixed inline: a call with its choice of lanes takes longer.
template <class... Inputs>
[[gnu::always_inline]] inline void mix_values(int64_t n, double* to, Inputs... inputs)
{
    constexpr int64_t kFew = sizeof...(inputs) == 2 ? 6 : 13; // measured
    if (n >= kFew)
        return mix_many_values(n, to, inputs...);
    for (int64_t j = 0; j < n; ++j)
        to[j] = mixed<double>(j, inputs...);
}

} // namespace korvale::data
