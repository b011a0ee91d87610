#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

// Two doubles at a time, with the operations that a step over vertices needs. Every operation exists for a single
// double as well, so that a step is written once and also takes the odd vertex at the end.
namespace korvale::inside {

typedef double Pair __attribute__((vector_size(16)));
typedef int64_t PairMask __attribute__((vector_size(16)));

template <class V>
V load(const double* from)
{
    V v;
    std::memcpy(&v, from, sizeof v);
    return v;
}

template <class V>
void store(double* to, V v)
{
    std::memcpy(to, &v, sizeof v);
}

inline double select(bool condition, double yes, double no)
{
    return condition ? yes : no;
}

inline Pair select(PairMask condition, Pair yes, Pair no)
{
    return condition ? yes : no;
}

inline bool any(bool condition)
{
    return condition;
}

inline bool any(PairMask condition)
{
#ifdef __SSE2__
    return _mm_movemask_pd(reinterpret_cast<__m128d>(condition)) != 0;
#else
    return (condition[0] | condition[1]) != 0;
#endif
}

inline bool any_false(bool condition)
{
    return !condition;
}

inline bool any_false(PairMask condition)
{
    return any(~condition);
}

inline double root(double v)
{
    return std::sqrt(v);
}

inline Pair root(Pair v)
{
#ifdef __SSE2__
    return _mm_sqrt_pd(v);
#else
    return Pair{std::sqrt(v[0]), std::sqrt(v[1])};
#endif
}

inline double magnitude(double v)
{
    return std::fabs(v);
}

inline Pair magnitude(Pair v)
{
    constexpr int64_t kAllButSign = INT64_MAX;
    return reinterpret_cast<Pair>(reinterpret_cast<PairMask>(v) & PairMask{kAllButSign, kAllButSign});
}

/// The greater; `b` where either is not a number.
template <class V>
V greater(V a, V b)
{
    return select(a > b, a, b);
}

/// The lesser; `b` where either is not a number.
template <class V>
V lesser(V a, V b)
{
    return select(a < b, a, b);
}

#ifdef __SSE2__
template <>
inline Pair greater(Pair a, Pair b)
{
    return _mm_max_pd(a, b);
}

template <>
inline Pair lesser(Pair a, Pair b)
{
    return _mm_min_pd(a, b);
}
#endif

/// Calls step(i, V()) for i = begin, ... below `end`: with pairs as far as they go, then for the odd one.
template <class Step>
void for_lanes(int32_t begin, int32_t end, Step step)
{
    int32_t i = begin;
    for (; i < end - 1; i += 2)
        step(i, Pair());
    if (i < end)
        step(i, double());
}

} // namespace korvale::inside
