#pragma once

#include <cstdint>
#include <cstring>

#include "platform/internal/namespaces.h"

namespace korvale::platform {

/// Whether all values lie in 0 .. limit - 1. Without a branch in the loop.
inline bool are_indices(const int32_t* values, int64_t count, int32_t limit)
{
    typedef uint32_t Four __attribute__((vector_size(16)));
    const uint32_t last = static_cast<uint32_t>(limit) - 1;
    if (limit < 1)
        return count < 1; // no value is an index
    // v is in range exactly when neither v nor last - v has its sign bit set. All sign bits are or-ed together.
    Four signs = {};
    int64_t i = 0;
    for (; i + 4 <= count; i += 4) {
        Four v;
        std::memcpy(&v, values + i, sizeof v);
        signs |= v | (last - v);
    }
    uint32_t sign = signs[0] | signs[1] | signs[2] | signs[3];
    for (; i < count; ++i)
        sign |= static_cast<uint32_t>(values[i]) | (last - static_cast<uint32_t>(values[i]));
    return static_cast<int32_t>(sign) >= 0;
}

} // namespace korvale::platform
