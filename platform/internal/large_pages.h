#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#ifdef __linux__
#include <sys/mman.h>
#endif

namespace korvale::inside {

/// The size of a large page, where the system has such.
constexpr size_t kLargePage = size_t{2} << 20;

/// A new block of the C heap, released like any other; null when the heap is exhausted. One that fills large pages
/// begins with one, and the system is asked to use them: it clears and finds one of these sooner than 512 small ones.
inline void* new_block(size_t bytes)
{
    if (bytes < kLargePage)
        return std::malloc(bytes);
    void* block = nullptr;
    if (posix_memalign(&block, kLargePage, bytes) != 0)
        return nullptr;
#ifdef __linux__
    madvise(block, bytes / kLargePage * kLargePage, MADV_HUGEPAGE);
#endif
    return block;
}

} // namespace korvale::inside
