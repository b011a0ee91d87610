#pragma once

#include <cstdint>

#include "platform/internal/namespaces.h"

// 32-bit arithmetic that wraps around: computed without sign, where overflow is defined, and converted back.
namespace korvale::platform {

inline int32_t wrapping_sum(int32_t a, int32_t b)
{
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

inline int32_t wrapping_difference(int32_t a, int32_t b)
{
    return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}

inline int32_t wrapping_product(int32_t a, int32_t b)
{
    return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}

/// The quotient truncated towards 0; 0 for a divisor of 0.
inline int32_t wrapping_quotient(int32_t a, int32_t b)
{
    if (b == 0)
        return 0;
    return b == -1 ? wrapping_difference(0, a) : a / b;
}

} // namespace korvale::platform
