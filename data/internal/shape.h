#pragma once

#include "data/internal/buffers.h" // its present name

namespace korvale::inside {

inline int64_t elements(int64_t count, int64_t dim)
{
    return components(count, dim);
}

} // namespace korvale::inside
