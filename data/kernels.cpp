#include "data/internal/kernels.h"

#include <algorithm>
#include <cstring>

#include "math/internal/mat.h"
#include "math/internal/vec.h"
#include "platform/internal/widest.h"

#ifdef KORVALE_HAS_WIDE_LANES
#include <immintrin.h>
#endif

// Every operation has a plain loop, which defines the result, and where it pays a second one in lanes of four doubles.
// The lanes do the same operations on each value in the same order, so they give the same bits; only on memory that
// overlaps without being the same do the loops differ, so there the plain one runs.
namespace korvale::inside {
namespace {

/// Exchanges elements of a size known to the compiler, which then needs no buffer and no calls.
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

/// The lesser and the greater of two, of equals the one that stood there.
inline double lesser(double standing, double value)
{
    return standing > value ? value : standing;
}

inline double greater(double standing, double value)
{
    return value > standing ? value : standing;
}

/// The same for bounds apart from the values: those of points stay in registers.
void widen_apart(const double* values, int64_t n, int64_t dim, double* least, double* greatest)
{
    if (dim != 3)
        return widen_bounds(values, n, dim, least, greatest);
    double x0 = least[0], y0 = least[1], z0 = least[2];
    double x1 = greatest[0], y1 = greatest[1], z1 = greatest[2];
    for (const double* p = values; p < values + n; p += 3) {
        x0 = lesser(x0, p[0]);
        y0 = lesser(y0, p[1]);
        z0 = lesser(z0, p[2]);
        x1 = greater(x1, p[0]);
        y1 = greater(y1, p[1]);
        z1 = greater(z1, p[2]);
    }
    const double low[] = {x0, y0, z0}, high[] = {x1, y1, z1};
    copy3(low, least);
    copy3(high, greatest);
}

#ifdef KORVALE_HAS_WIDE_LANES

#define KORVALE_WIDE __attribute__((target("avx2")))

bool is_apart(const double* a, int64_t of_a, const double* b, int64_t of_b)
{
    return a + of_a <= b || b + of_b <= a;
}

/// Whether reading n values ahead of writing others gives what writing each at once gives.
bool may_run_ahead(const double* from, const double* to, int64_t n)
{
    return from == to || is_apart(from, n, to, n);
}

/// Four points, a coordinate in each vector.
struct FourPoints {
    __m256d x, y, z;
};

// clang-format off
KORVALE_WIDE inline FourPoints load_points(const double* p)
{
    const __m256d a = _mm256_loadu_pd(p);                      // x0 y0 z0 x1
    const __m256d b = _mm256_loadu_pd(p + 4);                  // y1 z1 x2 y2
    const __m256d c = _mm256_loadu_pd(p + 8);                  // z2 x3 y3 z3
    const __m256d xy = _mm256_blend_pd(a, b, 0b1100);          // x0 y0 x2 y2
    const __m256d zx = _mm256_permute2f128_pd(a, c, 0x21);     // z0 x1 z2 x3
    const __m256d yz = _mm256_blend_pd(b, c, 0b1100);          // y1 z1 y3 z3
    return {_mm256_shuffle_pd(xy, zx, 0b1010),                 // x0 x1 x2 x3
            _mm256_shuffle_pd(xy, yz, 0b0101),                 // y0 y1 y2 y3
            _mm256_shuffle_pd(zx, yz, 0b1010)};                // z0 z1 z2 z3
}

KORVALE_WIDE inline void store_points(const FourPoints& points, double* p)
{
    const __m256d xy = _mm256_unpacklo_pd(points.x, points.y);          // x0 y0 x2 y2
    const __m256d zx = _mm256_shuffle_pd(points.z, points.x, 0b1010);   // z0 x1 z2 x3
    const __m256d yz = _mm256_unpackhi_pd(points.y, points.z);          // y1 z1 y3 z3
    _mm256_storeu_pd(p, _mm256_permute2f128_pd(xy, zx, 0x20));          // x0 y0 z0 x1
    _mm256_storeu_pd(p + 4, _mm256_blend_pd(yz, xy, 0b1100));           // y1 z1 x2 y2
    _mm256_storeu_pd(p + 8, _mm256_permute2f128_pd(zx, yz, 0x31));      // z2 x3 y3 z3
}
// clang-format on

/// Row `i` of `m` applied to four points, summed from the left.
KORVALE_WIDE inline __m256d carried(const double (*m)[4], int i, const FourPoints& p)
{
    const __m256d x = _mm256_mul_pd(_mm256_set1_pd(m[i][0]), p.x);
    const __m256d y = _mm256_mul_pd(_mm256_set1_pd(m[i][1]), p.y);
    const __m256d z = _mm256_mul_pd(_mm256_set1_pd(m[i][2]), p.z);
    return _mm256_add_pd(_mm256_add_pd(_mm256_add_pd(x, y), z), _mm256_set1_pd(m[i][3]));
}

/// Carries the points in groups of four. Returns how many were carried.
KORVALE_WIDE int64_t carry_points_wide(const double (*matrix)[4], const double* from, int64_t count, double* to)
{
    double m[4][4]; // a copy that no store can change
    std::memcpy(m, matrix, sizeof m);
    const __m256d one = _mm256_set1_pd(1.0);
    int64_t i = 0;
    for (; i + 4 <= count; i += 4) {
        const FourPoints p = load_points(from + 3 * i);
        FourPoints h = {carried(m, 0, p), carried(m, 1, p), carried(m, 2, p)};
        const __m256d hw = carried(m, 3, p);
        if (_mm256_movemask_pd(_mm256_cmp_pd(hw, one, _CMP_EQ_OQ)) != 0b1111)
            h = {_mm256_div_pd(h.x, hw), _mm256_div_pd(h.y, hw), _mm256_div_pd(h.z, hw)}; // by 1 changes nothing
        store_points(h, to + 3 * i);
    }
    return i;
}

KORVALE_WIDE int64_t mix_values_wide(const double* a, const double* b, double wa, double wb, int64_t n, double* to)
{
    const __m256d va = _mm256_set1_pd(wa), vb = _mm256_set1_pd(wb);
    int64_t j = 0;
    for (; j + 4 <= n; j += 4)
        _mm256_storeu_pd(to + j, _mm256_add_pd(_mm256_mul_pd(va, _mm256_loadu_pd(a + j)),
                                               _mm256_mul_pd(vb, _mm256_loadu_pd(b + j))));
    return j;
}

KORVALE_WIDE int64_t mix_values_wide(const double* a, const double* b, const double* c, const double* d,
                                     const double* w, int64_t n, double* to)
{
    const __m256d va = _mm256_set1_pd(w[0]), vb = _mm256_set1_pd(w[1]);
    const __m256d vc = _mm256_set1_pd(w[2]), vd = _mm256_set1_pd(w[3]);
    int64_t j = 0;
    for (; j + 4 <= n; j += 4) {
        const __m256d ab =
            _mm256_add_pd(_mm256_mul_pd(va, _mm256_loadu_pd(a + j)), _mm256_mul_pd(vb, _mm256_loadu_pd(b + j)));
        const __m256d abc = _mm256_add_pd(ab, _mm256_mul_pd(vc, _mm256_loadu_pd(c + j)));
        _mm256_storeu_pd(to + j, _mm256_add_pd(abc, _mm256_mul_pd(vd, _mm256_loadu_pd(d + j))));
    }
    return j;
}

/// Values that find_bounds_wide takes at a time; a dim that divides it keeps each component in lanes of its own.
constexpr int kBoundsLanes = 24;
/// Bit d is set for the dims that do.
constexpr uint32_t kBoundsDims = 1u << 1 | 1u << 2 | 1u << 3 | 1u << 4 | 1u << 6 | 1u << 8 | 1u << 12 | 1u << 24;
/// Fewer values than this are as quickly done one by one.
constexpr int64_t kFewestValues = 20 * kBoundsLanes;

/// Widens the bounds by whole groups of values. Returns how many values were taken. A bound of zero has the sign of the
/// lane that wins, not of the first zero.
KORVALE_WIDE int64_t widen_bounds_wide(const double* values, int64_t n, int64_t dim, double* least, double* greatest)
{
    constexpr int kVectors = kBoundsLanes / 4;
    double start[kBoundsLanes];
    for (int64_t k = 0; k < kBoundsLanes; ++k)
        start[k] = k < dim ? values[k] : start[k - dim];
    __m256d low[kVectors], high[kVectors];
#pragma GCC unroll 6
    for (int q = 0; q < kVectors; ++q)
        low[q] = high[q] = _mm256_loadu_pd(start + 4 * q);
    int64_t j = 0;
    for (; j + kBoundsLanes <= n; j += kBoundsLanes) {
#pragma GCC unroll 6 // so that all stay in registers
        for (int q = 0; q < kVectors; ++q) {
            const __m256d value = _mm256_loadu_pd(values + j + 4 * q);
            low[q] = _mm256_min_pd(value, low[q]); // value < low ? value : low
            high[q] = _mm256_max_pd(value, high[q]);
        }
    }
    double lows[kBoundsLanes], highs[kBoundsLanes];
#pragma GCC unroll 6
    for (int q = 0; q < kVectors; ++q) {
        _mm256_storeu_pd(lows + 4 * q, low[q]);
        _mm256_storeu_pd(highs + 4 * q, high[q]);
    }
    widen_apart(lows, kBoundsLanes, dim, least, greatest);
    widen_apart(highs, kBoundsLanes, dim, least, greatest);
    return j;
}

/// The zero that element order finds first: of equal values the first stays.
double first_zero(const double* values, int64_t dim)
{
    while (*values != 0.0)
        values += dim;
    return *values;
}

/// find_bounds in lanes, for a dim that divides kBoundsLanes.
void find_bounds_wide(const double* values, int64_t n, int64_t dim, double* least, double* greatest)
{
    const int64_t taken = widen_bounds_wide(values, n, dim, least, greatest);
    widen_apart(values + taken, n - taken, dim, least, greatest);
    for (int64_t k = 0; k < dim; ++k) {
        if (least[k] == 0.0)
            least[k] = first_zero(values + k, dim);
        if (greatest[k] == 0.0)
            greatest[k] = first_zero(values + k, dim);
    }
}

#endif

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

void copy_values(const void* from, size_t bytes, size_t component, void* to)
{
    const auto first = reinterpret_cast<uintptr_t>(from), target = reinterpret_cast<uintptr_t>(to);
    if (target <= first || first + bytes <= target) { // no value is overwritten before it was read
        std::memmove(to, from, bytes);
        return;
    }
    const auto* const values = static_cast<const unsigned char*>(from);
    auto* const copies = static_cast<unsigned char*>(to);
    unsigned char held[sizeof(double)];
    for (size_t i = 0; i < bytes; i += component) {
        std::memcpy(held, values + i, component);
        std::memcpy(copies + i, held, component);
    }
}

void find_bounds(const double* values, int64_t count, int64_t dim, double* least, double* greatest)
{
    for (int64_t k = 0; k < dim; ++k)
        least[k] = greatest[k] = values[k];
    const int64_t n = count * dim;
    const bool apart = (least + dim <= values || values + n <= least) && //
                       (greatest + dim <= values || values + n <= greatest);
    if (!apart)
        return widen_bounds(values + dim, n - dim, dim, least, greatest);
#ifdef KORVALE_HAS_WIDE_LANES
    const bool fits = dim <= kBoundsLanes && (kBoundsDims >> dim & 1) != 0;
    if (n >= kFewestValues && fits && has_avx2())
        return find_bounds_wide(values, n, dim, least, greatest);
#endif
    widen_apart(values + dim, n - dim, dim, least, greatest);
}

void carry_points(const double (*m)[4], const double* from, int64_t count, double* to)
{
    int64_t i = 0;
#ifdef KORVALE_HAS_WIDE_LANES
    if (may_run_ahead(from, to, 3 * count) && is_apart(m[0], 16, to, 3 * count) && has_avx2())
        i = carry_points_wide(m, from, count, to);
#endif
    for (; i < count; ++i)
        carry_point(m, from + 3 * i, to + 3 * i);
}

void mix_values(const double* a, const double* b, double wa, double wb, int64_t n, double* to)
{
    int64_t j = 0;
#ifdef KORVALE_HAS_WIDE_LANES
    if (may_run_ahead(a, to, n) && may_run_ahead(b, to, n) && has_avx2())
        j = mix_values_wide(a, b, wa, wb, n, to);
#endif
    for (; j < n; ++j)
        to[j] = wa * a[j] + wb * b[j];
}

void mix_values(const double* a, const double* b, const double* c, const double* d, const double* w, int64_t n,
                double* to)
{
    int64_t j = 0;
#ifdef KORVALE_HAS_WIDE_LANES
    if (may_run_ahead(a, to, n) && may_run_ahead(b, to, n) && may_run_ahead(c, to, n) && may_run_ahead(d, to, n) &&
        has_avx2())
        j = mix_values_wide(a, b, c, d, w, n, to);
#endif
    for (; j < n; ++j)
        to[j] = ((w[0] * a[j] + w[1] * b[j]) + w[2] * c[j]) + w[3] * d[j];
}

} // namespace korvale::inside
