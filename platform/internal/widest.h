#pragma once

#include "platform/internal/namespaces.h"

// Vector lanes wider than those that every processor of the architecture has, and their dispatch at run time. A
// function that uses four lanes (Quad of lanes.h) is marked, gives the same bits as the plain one beside it, and is
// called through `widest`:
//
//     KORVALE_FOUR_LANES double sum_wide(const double* values, int64_t n);
//     double sum(const double* values, int64_t n);
//
//     return widest([&] { return sum_wide(values, n); }, [&] { return sum(values, n); });
//
// The two arguments of `widest` only call: the body of a lambda itself is compiled for every processor. Where both are
// one step written over a lane type, `over_lanes` in lanes.h is all of that in one.
#if defined(__x86_64__) && !defined(KORVALE_NO_WIDE_LANES)
#define KORVALE_HAS_WIDE_LANES 1
#endif

// Marks a function that uses four lanes. It is compiled for AVX2, and `flatten` inlines whatever it calls, so that
// steps written once for every width are compiled for AVX2 here as well. A slow path that need not be inlined is marked
// [[gnu::noinline]].
#ifdef KORVALE_HAS_WIDE_LANES
#define KORVALE_FOUR_LANES __attribute__((target("avx2"), flatten))
#else
#define KORVALE_FOUR_LANES
#endif

namespace korvale::platform {

#ifdef KORVALE_HAS_WIDE_LANES
inline constexpr bool kFourLanes = true;
#else
inline constexpr bool kFourLanes = false;
#endif

/// Whether functions marked KORVALE_FOUR_LANES may be called.
inline bool has_avx2()
{
#ifdef KORVALE_HAS_WIDE_LANES
    return __builtin_cpu_supports("avx2") != 0;
#else
    return false;
#endif
}

/// Calls `wide` where the processor has four lanes and they are not switched off, else `plain`.
template <class Wide, class Plain>
[[gnu::always_inline]] inline decltype(auto) widest(Wide wide, Plain plain)
{
    if constexpr (kFourLanes)
        if (has_avx2())
            return wide();
    return plain();
}

} // namespace korvale::platform
