#include "ray/internal/cast.h"

#include <algorithm>

#include "math/internal/mat.h"
#include "platform/internal/widest.h"
#include "ray/internal/cells.h"
#include "ray/internal/meet.h"

#ifdef KORVALE_HAS_WIDE_LANES
#include <immintrin.h>
#endif

// Most triangles of a cell lie wholly beside the ray or behind it. Where wide lanes are at hand, one vector per vertex
// takes it into the frame of the ray, with the operations of the plain transform in their order, and one comparison of
// all three tells such a triangle; the rest take the plain way.

namespace korvale::inside {
namespace {

/// Triangles lie far apart in memory: how many numbers ahead one is asked for.
constexpr int32_t kPrefetchDistance = 32;

void prefetch_triangle(const double* triangles, int32_t count, int32_t t)
{
    if (t < 0 || t >= count)
        return;
    const double* const triangle = triangles + 9 * static_cast<int64_t>(t);
    __builtin_prefetch(triangle);
    __builtin_prefetch(triangle + 8);
}

void test_triangle(Cast& cast, int32_t t)
{
    const double* const triangle = cast.triangles + 9 * static_cast<int64_t>(t);
    const double start[3] = {0, 0, 0};
    double seen[9], z;
    for (int v = 0; v < 9; v += 3)
        carry_point(cast.frame, triangle + v, seen + v);
    if (!meets_triangle(start, seen, &z))
        return;
    if (cast.hits == 0 || z < cast.nearest)
        cast.nearest = z;
    ++cast.hits;
}

/// Marks each triangle of a cell that is there and not marked yet, and calls `test` with its number, in the order of
/// the chain.
template <class Test>
[[gnu::always_inline]] inline void for_each_new(const Cast& cast, const data_list_struct& cell, Test test)
{
    const double* const triangles = cast.triangles; // in locals: storing a mark might change what is behind `cast`
    uint8_t* const marks = cast.marks;
    const int32_t count = cast.count;
    for (const data_list_struct* node = cell.next; node != nullptr; node = node->next) {
        const int32_t* const numbers = node->ivals;
        const int32_t n = numbers_held(*node);
        for (int32_t i = 0; i < n; ++i) {
            if (i + kPrefetchDistance < n)
                prefetch_triangle(triangles, count, numbers[i + kPrefetchDistance]);
            const int32_t t = numbers[i];
            if (t < 0 || t >= count || marks[t] != 0)
                continue;
            marks[t] = 1;
            test(t);
        }
    }
}

#ifdef KORVALE_HAS_WIDE_LANES

/// The columns of a frame.
struct WideFrame {
    __m256d x, y, z, translation;
};

__attribute__((target("avx2"))) inline __m256d column(const Xfm m, int j)
{
    return _mm256_setr_pd(m[0][j], m[1][j], m[2][j], m[3][j]);
}

/// The four coordinates of a vertex in the frame.
__attribute__((target("avx2"))) inline __m256d carried(const WideFrame& m, const double* p)
{
    const __m256d x = _mm256_mul_pd(m.x, _mm256_broadcast_sd(p));
    const __m256d y = _mm256_mul_pd(m.y, _mm256_broadcast_sd(p + 1));
    const __m256d z = _mm256_mul_pd(m.z, _mm256_broadcast_sd(p + 2));
    return _mm256_add_pd(_mm256_add_pd(_mm256_add_pd(x, y), z), m.translation);
}

/// Whether all vertices lie on one side of the ray, or behind its start.
__attribute__((target("avx2"))) inline bool is_beside(const WideFrame& m, const double* triangle)
{
    const __m256d p0 = carried(m, triangle), p1 = carried(m, triangle + 3), p2 = carried(m, triangle + 6);
    const __m256d zero = _mm256_setzero_pd();
    const __m256d below =
        _mm256_and_pd(_mm256_cmp_pd(p0, zero, _CMP_LT_OQ),
                      _mm256_and_pd(_mm256_cmp_pd(p1, zero, _CMP_LT_OQ), _mm256_cmp_pd(p2, zero, _CMP_LT_OQ)));
    const __m256d above =
        _mm256_and_pd(_mm256_cmp_pd(p0, zero, _CMP_GT_OQ),
                      _mm256_and_pd(_mm256_cmp_pd(p1, zero, _CMP_GT_OQ), _mm256_cmp_pd(p2, zero, _CMP_GT_OQ)));
    const int lower = _mm256_movemask_pd(below), upper = _mm256_movemask_pd(above);
    // The fourth coordinates are 1, or NaN where a vertex is not finite: such a triangle takes the plain way.
    const bool is_finite = (upper & 8) != 0;
    return is_finite && ((lower & 7) | (upper & 3)) != 0;
}

__attribute__((target("avx2"))) void test_cell_wide(Cast& cast, const data_list_struct& cell)
{
    const WideFrame m = {column(cast.frame, 0), column(cast.frame, 1), column(cast.frame, 2), column(cast.frame, 3)};
    const double* const triangles = cast.triangles;
    const auto test = [&cast, &m, triangles ](int32_t t) __attribute__((target("avx2")))
    {
        if (!is_beside(m, triangles + 9 * static_cast<int64_t>(t)))
            test_triangle(cast, t);
    };
    for_each_new(cast, cell, test);
}

#endif

} // namespace

void test_cell(Cast& cast, const data_list_struct& cell)
{
#ifdef KORVALE_HAS_WIDE_LANES
    if (has_avx2()) {
        test_cell_wide(cast, cell);
        return;
    }
#endif
    for_each_new(cast, cell, [&](int32_t t) { test_triangle(cast, t); });
}

void prefetch_triangles(const Cast& cast, const data_list_struct& cell)
{
    const data_list_struct* const node = cell.next;
    if (node == nullptr)
        return;
    const int32_t n = std::min(numbers_held(*node), kPrefetchDistance);
    for (int32_t i = 0; i < n; ++i)
        prefetch_triangle(cast.triangles, cast.count, node->ivals[i]);
}

} // namespace korvale::inside
