#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "platform/internal/widest.h"

// Operations on four lanes are spelt by compiler built-ins: parsing <immintrin.h>, which names them, would be most of a
// file's compile time.
#ifdef __SSE2__
#include <emmintrin.h>
#endif

// Two doubles at a time, `Pair`, and four, `Quad`, with the operations that a step over many values needs. Each exists
// for a single double as well, so a step is written once over its type V and takes whatever is left at the end.
//
// The contract: each lane is computed by the same operations in the same order as a double would be. Nothing is fused,
// reordered or approximated. So a lane holds the same bits, infinities and zeros of both signs included; a NaN stays a
// NaN, but its payload may differ.
//
// Quad may be used in functions marked KORVALE_FOUR_LANES and in steps that are inlined there: lambdas called directly,
// and templates marked KORVALE_OVER_LANES.
namespace korvale::platform {

/// Marks a function template over a type of lanes. It is always inlined, and so compiled for the processor of its
/// caller.
#define KORVALE_OVER_LANES [[gnu::always_inline]] inline

// An operation on four lanes. Not always_inline: a compiler may not inline code for AVX2 into a function for every
// processor, and with that attribute it would refuse to compile a step that merely names the operation. `flatten` on
// KORVALE_FOUR_LANES inlines it where that is possible.
#ifdef KORVALE_HAS_WIDE_LANES
#define KORVALE_QUAD __attribute__((target("avx2"))) inline
#else
#define KORVALE_QUAD inline
#endif

typedef double Pair __attribute__((vector_size(16)));
typedef int64_t PairMask __attribute__((vector_size(16)));

/// Four conditions.
class QuadMask {
public:
    typedef int64_t Lanes __attribute__((vector_size(32)));

    KORVALE_QUAD explicit QuadMask(const Lanes& from) : lanes(from) {}
    KORVALE_QUAD QuadMask(const QuadMask& from) : lanes(from.lanes) {}
    KORVALE_QUAD QuadMask& operator=(const QuadMask& from)
    {
        lanes = from.lanes;
        return *this;
    }

    Lanes lanes;
};

/// Four doubles. The copy constructor is written out on purpose: a type that is not trivially copyable is passed in
/// memory, so a call that is not inlined looks the same to callers with and without AVX2. A plain vector would travel
/// in a register with one and on the stack without the other.
class Quad {
public:
    typedef double Lanes __attribute__((vector_size(32)));

    KORVALE_QUAD Quad() : lanes{} {}
    KORVALE_QUAD Quad(double a, double b, double c, double d) : lanes{a, b, c, d} {}
    KORVALE_QUAD explicit Quad(const Lanes& from) : lanes(from) {}
    KORVALE_QUAD Quad(const Quad& from) : lanes(from.lanes) {}
    KORVALE_QUAD Quad& operator=(const Quad& from)
    {
        lanes = from.lanes;
        return *this;
    }

    KORVALE_QUAD double operator[](int lane) const { return lanes[lane]; }

    Lanes lanes;
};

/// Lanes of a type: 1, 2 or 4.
template <class V>
inline constexpr int width_of = static_cast<int>(sizeof(V) / sizeof(double));

// Arithmetic. A double beside lanes stands for that value in each of them.

KORVALE_QUAD Quad operator-(const Quad& a)
{
    return Quad(-a.lanes);
}

#define KORVALE_QUAD_OPERATION(Result, operation)                                                                      \
    KORVALE_QUAD Result operator operation(const Quad& a, const Quad& b)                                               \
    {                                                                                                                  \
        return Result(a.lanes operation b.lanes);                                                                      \
    }                                                                                                                  \
    KORVALE_QUAD Result operator operation(const Quad& a, double b)                                                    \
    {                                                                                                                  \
        return Result(a.lanes operation Quad(b, b, b, b).lanes);                                                       \
    }                                                                                                                  \
    KORVALE_QUAD Result operator operation(double a, const Quad& b)                                                    \
    {                                                                                                                  \
        return Result(Quad(a, a, a, a).lanes operation b.lanes);                                                       \
    }

// clang-format off
KORVALE_QUAD_OPERATION(Quad, +)
KORVALE_QUAD_OPERATION(Quad, -)
KORVALE_QUAD_OPERATION(Quad, *)
KORVALE_QUAD_OPERATION(Quad, /)
KORVALE_QUAD_OPERATION(QuadMask, ==)
KORVALE_QUAD_OPERATION(QuadMask, !=)
KORVALE_QUAD_OPERATION(QuadMask, <)
KORVALE_QUAD_OPERATION(QuadMask, <=)
KORVALE_QUAD_OPERATION(QuadMask, >)
KORVALE_QUAD_OPERATION(QuadMask, >=)
// clang-format on
#undef KORVALE_QUAD_OPERATION

KORVALE_QUAD QuadMask operator&(const QuadMask& a, const QuadMask& b)
{
    return QuadMask(a.lanes & b.lanes);
}

KORVALE_QUAD QuadMask operator|(const QuadMask& a, const QuadMask& b)
{
    return QuadMask(a.lanes | b.lanes);
}

// Memory, which need not be aligned.

// One 32-byte load or store. A std::memcpy of lanes that stand in memory is compiled to two 16-byte moves, and the
// 32-byte load that follows them stalls: two stores cannot be forwarded to one load.
typedef double QuadInMemory __attribute__((vector_size(32), aligned(8), may_alias));

KORVALE_QUAD Quad load_quad(const double* from)
{
    const Quad::Lanes lanes = *reinterpret_cast<const QuadInMemory*>(from); // copied: a reference is aligned
    return Quad(lanes);
}

KORVALE_QUAD void store_quad(double* to, const Quad& v)
{
    *reinterpret_cast<QuadInMemory*>(to) = v.lanes;
}

/// Four integers as doubles.
KORVALE_QUAD Quad load_quad(const int32_t* from)
{
    typedef int32_t Integers __attribute__((vector_size(16)));
    Integers integers;
    __builtin_memcpy(&integers, from, sizeof integers);
    return Quad(__builtin_convertvector(integers, Quad::Lanes));
}

template <class V>
KORVALE_OVER_LANES V load(const double* from)
{
    if constexpr (std::is_same_v<V, Quad>) {
        return load_quad(from);
    } else {
        V v;
        std::memcpy(&v, from, sizeof v);
        return v;
    }
}

/// Integers as doubles.
template <class V>
KORVALE_OVER_LANES V load(const int32_t* from)
{
    if constexpr (std::is_same_v<V, Quad>)
        return load_quad(from);
    else if constexpr (std::is_same_v<V, Pair>)
        return Pair{static_cast<double>(from[0]), static_cast<double>(from[1])};
    else
        return *from;
}

template <class V>
KORVALE_OVER_LANES void store(double* to, const V& v)
{
    if constexpr (std::is_same_v<V, Quad>)
        store_quad(to, v);
    else
        std::memcpy(to, &v, sizeof v);
}

/// The value in each lane.
template <class V>
KORVALE_OVER_LANES V all(double value)
{
    if constexpr (std::is_same_v<V, Quad>)
        return Quad(value, value, value, value);
    else if constexpr (std::is_same_v<V, Pair>)
        return Pair{value, value};
    else
        return value;
}

// Conditions. That of a double is a bool; `!` and `~` are not for lanes.

inline double select(bool condition, double yes, double no)
{
    return condition ? yes : no;
}

inline Pair select(PairMask condition, Pair yes, Pair no)
{
    return condition ? yes : no;
}

/// `yes` where the condition holds, else `no`.
KORVALE_QUAD Quad select(const QuadMask& condition, const Quad& yes, const Quad& no)
{
    return Quad(condition.lanes ? yes.lanes : no.lanes);
}

inline int bits(bool condition)
{
    return condition ? 1 : 0;
}

inline int bits(PairMask condition)
{
#ifdef __SSE2__
    return _mm_movemask_pd(reinterpret_cast<__m128d>(condition));
#else
    return static_cast<int>((condition[0] & 1) | (condition[1] & 2));
#endif
}

/// Bit l is set where the condition holds in lane l.
KORVALE_QUAD int bits(const QuadMask& condition)
{
#ifdef KORVALE_HAS_WIDE_LANES
    return __builtin_ia32_movmskpd256(reinterpret_cast<Quad::Lanes>(condition.lanes));
#else
    const QuadMask::Lanes& c = condition.lanes;
    return static_cast<int>((c[0] & 1) | (c[1] & 2) | (c[2] & 4) | (c[3] & 8));
#endif
}

inline bool any(bool condition)
{
    return condition;
}

inline bool any(PairMask condition)
{
    return bits(condition) != 0;
}

/// Whether the condition holds in a lane.
KORVALE_QUAD bool any(const QuadMask& condition)
{
    return bits(condition) != 0;
}

inline bool any_false(bool condition)
{
    return !condition;
}

inline bool any_false(PairMask condition)
{
    return bits(condition) != 0b11;
}

/// Whether the condition fails in a lane.
KORVALE_QUAD bool any_false(const QuadMask& condition)
{
    return bits(condition) != 0b1111;
}

// Functions.

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

/// The square root.
KORVALE_QUAD Quad root(const Quad& v)
{
#if defined(KORVALE_HAS_WIDE_LANES) && __has_builtin(__builtin_ia32_sqrtpd256)
    return Quad(Quad::Lanes(__builtin_ia32_sqrtpd256(v.lanes)));
#else
    return Quad(std::sqrt(v[0]), std::sqrt(v[1]), std::sqrt(v[2]), std::sqrt(v[3]));
#endif
}

inline double absolute(double v)
{
    return std::fabs(v);
}

inline Pair absolute(Pair v)
{
    constexpr int64_t kAllButSign = INT64_MAX;
    return reinterpret_cast<Pair>(reinterpret_cast<PairMask>(v) & PairMask{kAllButSign, kAllButSign});
}

/// The absolute value, by clearing the sign bit; also that of a NaN.
KORVALE_QUAD Quad absolute(const Quad& v)
{
    constexpr int64_t k = INT64_MAX; // all bits but the sign
    return Quad(
        reinterpret_cast<Quad::Lanes>(reinterpret_cast<QuadMask::Lanes>(v.lanes) & QuadMask::Lanes{k, k, k, k}));
}

inline double lesser(double a, double b)
{
    return a < b ? a : b;
}

inline Pair lesser(Pair a, Pair b)
{
#ifdef __SSE2__
    return _mm_min_pd(a, b);
#else
    return select(a < b, a, b);
#endif
}

/// a < b ? a : b: the lesser; `b` where the two are equal or one is a NaN. minpd is defined so, std::min is not.
KORVALE_QUAD Quad lesser(const Quad& a, const Quad& b)
{
#ifdef KORVALE_HAS_WIDE_LANES
    return Quad(Quad::Lanes(__builtin_ia32_minpd256(a.lanes, b.lanes)));
#else
    return select(a < b, a, b);
#endif
}

inline double greater(double a, double b)
{
    return a > b ? a : b;
}

inline Pair greater(Pair a, Pair b)
{
#ifdef __SSE2__
    return _mm_max_pd(a, b);
#else
    return select(a > b, a, b);
#endif
}

/// a > b ? a : b: the greater; `b` where the two are equal or one is a NaN.
KORVALE_QUAD Quad greater(const Quad& a, const Quad& b)
{
#ifdef KORVALE_HAS_WIDE_LANES
    return Quad(Quad::Lanes(__builtin_ia32_maxpd256(a.lanes, b.lanes)));
#else
    return select(a > b, a, b);
#endif
}

/// Reduces the lanes with `lesser`, from the first to the last. A number wherever the last lane is one.
template <class V>
KORVALE_OVER_LANES double reduce_least(const V& v)
{
    if constexpr (std::is_same_v<V, double>) {
        return v;
    } else {
        double least = v[0];
        for (int l = 1; l < width_of<V>; ++l)
            least = lesser(least, v[l]);
        return least;
    }
}

/// Reduces the lanes with `greater`, from the first to the last. A number wherever the last lane is one.
template <class V>
KORVALE_OVER_LANES double reduce_greatest(const V& v)
{
    if constexpr (std::is_same_v<V, double>) {
        return v;
    } else {
        double greatest = v[0];
        for (int l = 1; l < width_of<V>; ++l)
            greatest = greater(greatest, v[l]);
        return greatest;
    }
}

// Steps over lanes, and loops of them. A step is a generic lambda, compiled twice: for every processor and for those
// with AVX2.

template <class Step, class... Values>
KORVALE_FOUR_LANES auto over_four_lanes(const Step& step, Values... values)
{
    return step.template operator()<Quad>(values...);
}

/// Calls the step once, [&]<class V>() { ... }, with V as wide as the processor's lanes: Quad or Pair. Captures go
/// through memory. A step that may be short takes values instead, which stay in registers:
///
///     over_lanes([]<class V>(auto... values) { return sum<V>(values...); }, first, count);
template <class Step, class... Values>
inline auto over_lanes(const Step& step, Values... values)
{
    return widest([&] { return over_four_lanes(step, values...); },
                  [&] { return step.template operator()<Pair>(values...); });
}

// A step of the loops below, [=]<class V>(int32_t i) { ... }, is called for the lanes from i on.

/// Calls the step for pairs, then for the odd value.
template <class Index, class Step>
[[gnu::flatten]] void for_two_lanes(Index i, Index end, Step step)
{
    for (; end - i >= 2; i += 2)
        step.template operator()<Pair>(i);
    if (i < end)
        step.template operator()<double>(i);
}

template <class Index, class Step>
KORVALE_FOUR_LANES void for_four_lanes(Index i, Index end, Step step)
{
    for (; end - i >= 4; i += 4)
        step.template operator()<Quad>(i);
    if (end - i >= 2) {
        step.template operator()<Pair>(i);
        i += 2;
    }
    if (i < end)
        step.template operator()<double>(i);
}

/// Calls step(i) for i = begin, ... below `end`: four lanes as far as they go, then two, then one.
template <class Index, class Step>
inline void for_lanes(std::type_identity_t<Index> begin, Index end, const Step& step)
{
    widest([&] { for_four_lanes<Index>(begin, end, step); }, [&] { for_two_lanes<Index>(begin, end, step); });
}

template <class Index, class Step>
[[gnu::flatten]] double least_over_two_lanes(Index i, Index end, double start, Step step)
{
    Pair least = all<Pair>(start);
    for (; end - i >= 2; i += 2)
        least = lesser(step.template operator()<Pair>(i), least);
    const double rest = i < end ? lesser(step.template operator()<double>(i), start) : start;
    return lesser(reduce_least(least), rest);
}

template <class Index, class Step>
KORVALE_FOUR_LANES double least_over_four_lanes(Index i, Index end, double start, Step step)
{
    Quad even = all<Quad>(start), odd = even; // two accumulators: one would wait for each minimum
    for (; end - i >= 8; i += 8) {
        even = lesser(step.template operator()<Quad>(i), even);
        odd = lesser(step.template operator()<Quad>(i + 4), odd);
    }
    if (end - i >= 4) {
        even = lesser(step.template operator()<Quad>(i), even);
        i += 4;
    }
    const double rest = least_over_two_lanes<Index>(i, end, start, step);
    return lesser(reduce_least(lesser(even, odd)), rest);
}

/// The least of `start`, a number, and of all that step(i) returns for i = begin, ... below `end`. NaNs are skipped.
/// Among zeros of both signs the result may be either.
template <class Index, class Step>
inline double least_over(std::type_identity_t<Index> begin, Index end, double start, const Step& step)
{
    return widest([&] { return least_over_four_lanes<Index>(begin, end, start, step); },
                  [&] { return least_over_two_lanes<Index>(begin, end, start, step); });
}

/// The greatest of `start`, a number, and of all that step(i) returns, as the negative of the least of their negatives.
template <class Index, class Step>
inline double greatest_over(std::type_identity_t<Index> begin, Index end, double start, const Step& step)
{
    return -least_over<Index>(begin, end, -start, [step]<class V>(Index i) { return -step.template operator()<V>(i); });
}

} // namespace korvale::platform
