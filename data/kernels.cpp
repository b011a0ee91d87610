// The loops over bare values. Each is a step over lanes: the same operations on each value in the same order, so every
// width gives the same bits. Lanes read ahead of what is written, which changes results where buffers overlap without
// being the same. There a plain loop runs, and for a few values, where the dispatch takes longer than the work.
#include "data/internal/kernels.h"

#include <algorithm>
#include <cstring>

#include "math/internal/matrix.h"
#include "platform/internal/lanes.h"
#include "platform/internal/lanes3.h"

namespace korvale::data {
namespace {

/// Dispatch to four lanes pays from this many values on. Measured.
constexpr int64_t kManyValues = 24;

/// Whether n values may be read before others are written, with the results of a loop that writes each at once.
bool may_run_ahead(const double* from, const double* to, int64_t n)
{
    return from == to || is_apart(from, n, to, n);
}

/// Exchanges elements of a size that the compiler knows: both are held in registers, and no memcpy is called.
template <size_t kBytes>
void reverse_sized(unsigned char* low, unsigned char* high)
{
    for (; low < high; low += kBytes, high -= kBytes) {
        unsigned char first[kBytes], last[kBytes];
        std::memcpy(first, low, kBytes);
        std::memcpy(last, high, kBytes);
        std::memcpy(low, last, kBytes);
        std::memcpy(high, first, kBytes);
    }
}

/// Exchanges elements of any size, a piece at a time.
void reverse_pieces(unsigned char* low, unsigned char* high, size_t bytes)
{
    unsigned char held[256];
    for (; low < high; low += bytes, high -= bytes)
        for (size_t done = 0; done < bytes; done += sizeof held) {
            const size_t piece = std::min(bytes - done, sizeof held);
            std::memcpy(held, low + done, piece);
            std::memcpy(low + done, high + done, piece);
            std::memcpy(high + done, held, piece);
        }
}

/// Copies one component after the other.
template <size_t kBytes>
void copy_forward(const unsigned char* from, int64_t n, unsigned char* to)
{
    for (const unsigned char* const end = from + n * static_cast<int64_t>(kBytes); from < end;
         from += kBytes, to += kBytes) {
        unsigned char held[kBytes];
        std::memcpy(held, from, kBytes);
        std::memcpy(to, held, kBytes);
    }
}

// Bounds. `lesser(value, bound)` keeps the bound where the two are equal and where the value is a NaN.

/// Widens the bounds by n values, which are whole elements. They may lie among the values: each is stored at once.
void widen_bounds(const double* values, int64_t n, int64_t dim, double* least, double* greatest)
{
    for (int64_t j = 0; j < n; j += dim)
        for (int64_t k = 0; k < dim; ++k) {
            const double value = values[j + k];
            if (least[k] > value)
                least[k] = value;
            if (value > greatest[k])
                greatest[k] = value;
        }
}

/// `widen_bounds` for bounds that do not overlap the values.
void widen_bounds_apart(const double* values, int64_t n, int64_t dim, double* least, double* greatest)
{
    if (dim == 3)
        widen_by_points(values, values + n, least, greatest);
    else
        widen_bounds(values, n, dim, least, greatest);
}

/// The zero of a component that stands first in element order: of equal values the first is kept.
double first_zero(const double* values, int64_t dim)
{
    while (*values != 0.0)
        values += dim;
    return *values;
}

/// Repairs the sign of zero bounds. Lanes may have found another zero than the first in element order, which decides.
void settle_zeros(const double* values, int64_t dim, double* least, double* greatest)
{
    for (int64_t k = 0; k < dim; ++k) {
        if (least[k] == 0.0)
            least[k] = first_zero(values + k, dim);
        if (greatest[k] == 0.0)
            greatest[k] = first_zero(values + k, dim);
    }
}

/// Vectors per step, and the values in them, 12 or 24. Where dim divides these, a lane always sees the same component.
/// Six for the least and six for the greatest leave 4 of the 16 vector registers.
constexpr int kVectors = 6;
template <class V>
constexpr int kGroup{kVectors * width_of<V>};
/// Lanes are quicker from this many values on: of points, and of other elements whose dim divides kGroup. Measured.
constexpr int64_t kManyPointValues = 72, kManyBoundValues = 144;
/// Elements of more components than kNarrow are bounded column by column, from kManyWideElements elements on. Measured.
constexpr int64_t kNarrow = 4, kManyWideElements = 4;

/// Widens bounds that stand in lanes by whole groups of values. Returns the number of values used.
template <class V>
KORVALE_OVER_LANES int64_t widen_lanes(const double* values, int64_t n, V (&low)[kVectors], V (&high)[kVectors])
{
    int64_t j = 0;
    for (; j + kGroup<V> <= n; j += kGroup<V>) {
#pragma GCC unroll 6 // the arrays become registers
        for (int q = 0; q < kVectors; ++q) {
            const V value = load<V>(values + j + width_of<V> * q);
            low[q] = lesser(value, low[q]);
            high[q] = greater(value, high[q]);
        }
    }
    return j;
}

/// The bounds of n values that are points, as far as whole groups go. Returns the number of values used.
template <class V>
KORVALE_OVER_LANES int64_t bound_points_by(const double* values, int64_t n, double* least, double* greatest)
{
    const V first[3] = {all<V>(values[0]), all<V>(values[1]), all<V>(values[2])};
    V start[3]; // each lane begins with the coordinate it will see: x y z x, y z x y, z x y z
    list_three(first, start);
    V low[kVectors] = {start[0], start[1], start[2], start[0], start[1], start[2]};
    V high[kVectors] = {start[0], start[1], start[2], start[0], start[1], start[2]};
    const int64_t taken = widen_lanes<V>(values, n, low, high);
    const V lows[3] = {lesser(low[3], low[0]), lesser(low[4], low[1]), lesser(low[5], low[2])};
    const V highs[3] = {greater(high[3], high[0]), greater(high[4], high[1]), greater(high[5], high[2])};
    V parted[3];
    part_three(lows, parted);
    least[0] = reduce_least(parted[0]);
    least[1] = reduce_least(parted[1]);
    least[2] = reduce_least(parted[2]);
    part_three(highs, parted);
    greatest[0] = reduce_greatest(parted[0]);
    greatest[1] = reduce_greatest(parted[1]);
    greatest[2] = reduce_greatest(parted[2]);
    return taken;
}

/// The bounds of elements whose dim divides the groups. Returns the number of values used.
template <class V>
KORVALE_OVER_LANES int64_t bound_elements_by(const double* values, int64_t n, int64_t dim, double* least,
                                             double* greatest)
{
    double lows[kGroup<V>], highs[kGroup<V>]; // element 0 again and again: each lane begins with its own component
    for (int64_t k = 0; k < kGroup<V>; ++k)
        lows[k] = k < dim ? values[k] : lows[k - dim];
    V low[kVectors], high[kVectors];
#pragma GCC unroll 6
    for (int q = 0; q < kVectors; ++q)
        low[q] = high[q] = load<V>(lows + width_of<V> * q);
    const int64_t taken = widen_lanes<V>(values, n, low, high);
#pragma GCC unroll 6
    for (int q = 0; q < kVectors; ++q) {
        store(lows + width_of<V> * q, low[q]);
        store(highs + width_of<V> * q, high[q]);
    }
    widen_bounds(lows, kGroup<V>, dim, least, greatest);
    widen_bounds(highs, kGroup<V>, dim, least, greatest);
    return taken;
}

/// Widens the bounds of the first `width` components of every element, in N vectors, by n values. `width` fills more
/// than N - 1 vectors and at most N. Where it is no multiple of the lanes the last vector overlaps the one before;
/// seeing a value twice changes no bound.
template <class V, int N>
KORVALE_OVER_LANES void widen_columns(const double* values, int64_t n, int64_t dim, int64_t width, double* least,
                                      double* greatest)
{
    const int64_t last = width - width_of<V>;
    V low[N], high[N];
#pragma GCC unroll 6
    for (int q = 0; q < N; ++q) {
        low[q] = load<V>(least + (q < N - 1 ? width_of<V> * q : last));
        high[q] = load<V>(greatest + (q < N - 1 ? width_of<V> * q : last));
    }
    for (int64_t j = 0; j < n; j += dim) {
#pragma GCC unroll 6 // the arrays become registers
        for (int q = 0; q < N; ++q) {
            const V value = load<V>(values + j + (q < N - 1 ? width_of<V> * q : last));
            low[q] = lesser(value, low[q]);
            high[q] = greater(value, high[q]);
        }
    }
#pragma GCC unroll 6
    for (int q = 0; q < N; ++q) {
        store(least + (q < N - 1 ? width_of<V> * q : last), low[q]);
        store(greatest + (q < N - 1 ? width_of<V> * q : last), high[q]);
    }
}

/// `widen_columns` for all columns of a dim of at least one vector: four vectors of columns at a time, whose bounds
/// stay in registers. The last columns overlap those before where they would fill less than a vector.
template <class V>
KORVALE_OVER_LANES void widen_all_columns(const double* values, int64_t n, int64_t dim, double* least, double* greatest)
{
    constexpr int64_t kWidest = 4 * width_of<V>;
    for (int64_t k = 0, width; k < dim; k += width) {
        width = std::min(dim - k, kWidest);
        if (width < width_of<V>) {
            width = width_of<V>;
            k = dim - width;
        }
        if (width <= width_of<V>)
            widen_columns<V, 1>(values + k, n, dim, width, least + k, greatest + k);
        else if (width <= 2 * width_of<V>)
            widen_columns<V, 2>(values + k, n, dim, width, least + k, greatest + k);
        else if (width <= 3 * width_of<V>)
            widen_columns<V, 3>(values + k, n, dim, width, least + k, greatest + k);
        else
            widen_columns<V, 4>(values + k, n, dim, width, least + k, greatest + k);
    }
}

template <class V>
KORVALE_OVER_LANES int64_t bound_by(const double* values, int64_t n, int64_t dim, double* least, double* greatest)
{
    if (dim == 3)
        return bound_points_by<V>(values, n, least, greatest);
    return kGroup<V> % dim == 0 ? bound_elements_by<V>(values, n, dim, least, greatest) : 0;
}

/// Whether n values, at least as many as V has lanes, are finite. The last vector may overlap the one before.
template <class V>
KORVALE_OVER_LANES bool are_finite_by(const double* values, int64_t n)
{
    const V greatest = all<V>(std::numeric_limits<double>::max());
    const int64_t last = n - width_of<V>;
    auto finite = absolute(load<V>(values + last)) <= greatest;
    for (int64_t j = 0; j < last; j += width_of<V>)
        finite = finite & (absolute(load<V>(values + j)) <= greatest);
    return !any_false(finite);
}

// Steps over lanes, and the loops that take them.

/// Carries `count` points, at least as many as V has lanes. The last group may overlap the one before, so in place its
/// points would be carried twice: it is computed before anything is written, and stored last.
template <class V>
KORVALE_OVER_LANES void carry_by(const double (*matrix)[4], const double* from, int64_t count, double* to)
{
    const SpreadMatrix<V> m = spread<V>(matrix); // a copy: no store can alias it, so it is loaded once
    const int64_t last = 3 * (count - width_of<V>);
    const Lanes3<V> carried_last = carried(m, load_points<V>(from + last));
    for (int64_t i = 0; i < last; i += 3 * width_of<V>)
        store_points(to + i, carried(m, load_points<V>(from + i)));
    store_points(to + last, carried_last);
}

/// Mixes from value j on, as far as whole groups go. Returns the first value not mixed.
template <class V, class... Inputs>
KORVALE_OVER_LANES int64_t mix_by(int64_t j, int64_t n, double* to, Inputs... inputs)
{
    for (; j + width_of<V> <= n; j += width_of<V>)
        store<V>(to + j, mixed<V>(j, inputs...));
    return j;
}

template <class... Inputs>
[[gnu::always_inline]] inline void mix_lists(int64_t n, double* to, Inputs... inputs)
{
    int64_t j = 0;
    if ((may_run_ahead(inputs.from, to, n) && ...)) {
        if (n >= kManyValues)
            j = over_lanes([]<class V>(auto... of) { return mix_by<V>(0, of...); }, n, to, inputs...);
        j = mix_by<Pair>(j, n, to, inputs...);
    }
    mix_by<double>(j, n, to, inputs...);
}

} // namespace

void reverse_elements(void* buffer, int64_t count, size_t bytes)
{
    auto* const low = static_cast<unsigned char*>(buffer);
    auto* const high = low + static_cast<size_t>(count - 1) * bytes;
    switch (bytes) {
    case 1:
        return reverse_sized<1>(low, high);
    case 4:
        return reverse_sized<4>(low, high);
    case 8:
        return reverse_sized<8>(low, high);
    case 12:
        return reverse_sized<12>(low, high);
    case 16:
        return reverse_sized<16>(low, high);
    case 24:
        return reverse_sized<24>(low, high);
    default:
        return reverse_pieces(low, high, bytes);
    }
}

void copy_ahead(const unsigned char* from, int64_t n, size_t component, unsigned char* to)
{
    if (component == sizeof(double))
        copy_forward<sizeof(double)>(from, n, to);
    else if (component == sizeof(int32_t))
        copy_forward<sizeof(int32_t)>(from, n, to);
    else
        copy_forward<1>(from, n, to);
}

void find_bounds_of_many(const double* values, int64_t count, int64_t dim, double* box)
{
    double *const least = box, *const greatest = box + dim;
    for (int64_t k = 0; k < dim; ++k)
        least[k] = greatest[k] = values[k];
    const int64_t n = count * dim;
    if (!is_apart(values, n, box, 2 * dim))
        return widen_bounds(values + dim, n - dim, dim, least, greatest);
    if (dim > kNarrow && count >= kManyWideElements && (n < kManyBoundValues || kGroup<Quad> % dim != 0))
        return over_lanes([]<class V>(auto... of) { widen_all_columns<V>(of...); }, values + dim, n - dim, dim, least,
                          greatest);
    int64_t taken = dim;
    if (n >= (dim == 3 ? kManyPointValues : kManyBoundValues))
        taken = over_lanes([]<class V>(auto... of) { return bound_by<V>(of...); }, values, n, dim, least, greatest);
    widen_bounds_apart(values + taken, n - taken, dim, least, greatest);
    if (taken > dim)
        settle_zeros(values, dim, least, greatest);
}

bool are_many_finite(const double* values, int64_t n)
{
    return over_lanes([]<class V>(auto... of) { return are_finite_by<V>(of...); }, values, n);
}

void carry_many_points(const double (*m)[4], const double* from, int64_t count, double* to)
{
    if (may_run_ahead(from, to, 3 * count) && is_apart(m[0], 16, to, 3 * count))
        return over_lanes([=]<class V>() { carry_by<V>(m, from, count, to); });
    for (int64_t i = 0; i < count; ++i)
        carry_point(m, from + 3 * i, to + 3 * i);
}

void mix_many_values(int64_t n, double* to, Weighted a, Weighted b)
{
    mix_lists(n, to, a, b);
}

void mix_many_values(int64_t n, double* to, Weighted a, Weighted b, Weighted c, Weighted d)
{
    mix_lists(n, to, a, b, c, d);
}

} // namespace korvale::data
