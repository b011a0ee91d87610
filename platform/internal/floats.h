#pragma once

#include <cstdint>
#include <cstring>

#include "platform/internal/namespaces.h"

// Four floats at a time, for boxes of which nothing but a little room depends: unlike the lanes of doubles they promise
// no bits.
namespace korvale::platform {

typedef float Floats __attribute__((vector_size(16)));
typedef int32_t FloatsMask __attribute__((vector_size(16)));

inline Floats load_floats(const float* p)
{
    Floats v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

inline Floats all_floats(float value)
{
    return Floats{value, value, value, value};
}

inline Floats lesser(Floats a, Floats b)
{
    return a < b ? a : b;
}

inline Floats greater(Floats a, Floats b)
{
    return a > b ? a : b;
}

/// Bit i tells whether lane i is true.
inline unsigned lane_bits(FloatsMask mask)
{
    typedef uint64_t Halves __attribute__((vector_size(16)));
    const auto halves = reinterpret_cast<Halves>(mask & FloatsMask{1, 2, 4, 8});
    const uint64_t both = halves[0] | halves[1];
    return static_cast<unsigned>(both | both >> 32) & 15;
}

} // namespace korvale::platform
