#pragma once

#include "platform/internal/widest.h"

#ifdef KORVALE_HAS_WIDE_LANES

#include <immintrin.h>

#include <cstdint>

// Four doubles at a time, one from each of four edges or triangles. Every operation rounds as its scalar twin does, so
// a lane holds the bits that plain code would have computed. All of this may only be called from functions compiled for
// AVX2.
#define KORVALE_AVX2 __attribute__((target("avx2")))
#define KORVALE_AVX2_INLINE __attribute__((target("avx2"), always_inline)) inline

namespace korvale::inside {

typedef double Quad __attribute__((vector_size(32)));

/// A vector in each lane.
struct Quad3 {
    Quad x, y, z;
};

KORVALE_AVX2_INLINE Quad quad_at(const double* from)
{
    return _mm256_loadu_pd(from);
}

KORVALE_AVX2_INLINE void put(double* to, Quad v)
{
    _mm256_storeu_pd(to, v);
}

KORVALE_AVX2_INLINE Quad all(double value)
{
    return _mm256_set1_pd(value);
}

KORVALE_AVX2_INLINE Quad root(Quad v)
{
    return _mm256_sqrt_pd(v);
}

/// Bit l is set where lane l of a equals, or is less than, that of b.
KORVALE_AVX2_INLINE int lanes_equal(Quad a, Quad b)
{
    return _mm256_movemask_pd(_mm256_cmp_pd(a, b, _CMP_EQ_OQ));
}

KORVALE_AVX2_INLINE int lanes_less(Quad a, Quad b)
{
    return _mm256_movemask_pd(_mm256_cmp_pd(a, b, _CMP_LT_OQ));
}

/// yes where a < b, else no.
KORVALE_AVX2_INLINE Quad where_less(Quad a, Quad b, Quad yes, Quad no)
{
    return _mm256_blendv_pd(no, yes, _mm256_cmp_pd(a, b, _CMP_LT_OQ));
}

KORVALE_AVX2_INLINE Quad3 operator-(const Quad3& a, const Quad3& b)
{
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}

KORVALE_AVX2_INLINE Quad3 operator+(const Quad3& a, const Quad3& b)
{
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}

KORVALE_AVX2_INLINE Quad3 operator*(Quad f, const Quad3& a)
{
    return {f * a.x, f * a.y, f * a.z};
}

KORVALE_AVX2_INLINE Quad dot(const Quad3& a, const Quad3& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

KORVALE_AVX2_INLINE Quad3 cross(const Quad3& a, const Quad3& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

/// The points p[i[0]], p[i[step]], p[i[2 step]] and p[i[3 step]].
KORVALE_AVX2_INLINE Quad3 points_at(const double* p, const int32_t* i, int step)
{
    const double* const a = p + 3 * int64_t{i[0]};
    const double* const b = p + 3 * int64_t{i[step]};
    const double* const c = p + 3 * int64_t{i[2 * step]};
    const double* const d = p + 3 * int64_t{i[3 * step]};
    const __m256d ac = _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_loadu_pd(a)), _mm_loadu_pd(c), 1);
    const __m256d bd = _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_loadu_pd(b)), _mm_loadu_pd(d), 1);
    return {_mm256_unpacklo_pd(ac, bd), _mm256_unpackhi_pd(ac, bd), _mm256_setr_pd(a[2], b[2], c[2], d[2])};
}

/// Takes values that lie corner by corner, a0 b0 c0 a1 ... c3, apart into one lane per triangle.
KORVALE_AVX2_INLINE void part_corners(const Quad (&listed)[3], Quad (&corners)[3])
{
    const __m256d ab = _mm256_blend_pd(listed[0], listed[1], 0b1100);      // a0 b0 a2 b2
    const __m256d ca = _mm256_permute2f128_pd(listed[0], listed[2], 0x21); // c0 a1 c2 a3
    const __m256d bc = _mm256_blend_pd(listed[1], listed[2], 0b1100);      // b1 c1 b3 c3
    corners[0] = _mm256_shuffle_pd(ab, ca, 0b1010);
    corners[1] = _mm256_shuffle_pd(ab, bc, 0b0101);
    corners[2] = _mm256_shuffle_pd(ca, bc, 0b1010);
}

/// The other way round.
KORVALE_AVX2_INLINE void list_corners(const Quad (&corners)[3], Quad (&listed)[3])
{
    const __m256d ab = _mm256_unpacklo_pd(corners[0], corners[1]);        // a0 b0 a2 b2
    const __m256d ca = _mm256_shuffle_pd(corners[2], corners[0], 0b1010); // c0 a1 c2 a3
    const __m256d bc = _mm256_unpackhi_pd(corners[1], corners[2]);        // b1 c1 b3 c3
    listed[0] = _mm256_permute2f128_pd(ab, ca, 0x20);
    listed[1] = _mm256_blend_pd(bc, ab, 0b1100);
    listed[2] = _mm256_permute2f128_pd(ca, bc, 0x31);
}

/// Whether faces first .. first + 3 exist and are triangles.
KORVALE_AVX2_INLINE bool are_four_triangles(const int32_t* sizes, int32_t count, int32_t first)
{
    if (count - first < 4)
        return false;
    const __m128i four = _mm_loadu_si128(reinterpret_cast<const __m128i*>(sizes + first));
    return _mm_movemask_epi8(_mm_cmpeq_epi32(four, _mm_set1_epi32(3))) == 0xffff;
}

} // namespace korvale::inside

#endif
