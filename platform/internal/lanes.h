#pragma once

// Vector lanes wider than those every processor of the architecture has. A function that uses them is compiled for them
// alone, gives the same bits as the plain one beside it, and is chosen at run time:
//
//     #ifdef KORVALE_HAS_WIDE_LANES
//         if (has_avx2())
//             return sum_wide(values, n);
//     #endif

#if defined(__x86_64__) && !defined(KORVALE_NO_WIDE_LANES)
#define KORVALE_HAS_WIDE_LANES 1
#endif

namespace korvale::inside {

/// Whether functions compiled for AVX2 may be called.
inline bool has_avx2()
{
#ifdef KORVALE_HAS_WIDE_LANES
    return __builtin_cpu_supports("avx2") != 0;
#else
    return false;
#endif
}

} // namespace korvale::inside
