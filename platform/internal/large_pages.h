#pragma once

#include <cstddef>
#include <cstdint>

#ifdef __linux__
#include <sys/mman.h>
#endif

namespace korvale::inside {

/// Asks the system to keep a new block of memory on large pages as far as it fills some, so that they are made and
/// found sooner. Nothing else changes: the block is released like any other. Blocks of less than a few large pages are
/// left alone.
inline void prefer_large_pages(void* block, size_t bytes)
{
#ifdef __linux__
    constexpr uintptr_t kPage = 4096, kLeast = uintptr_t{4} << 20;
    const uintptr_t begin = (reinterpret_cast<uintptr_t>(block) + kPage - 1) / kPage * kPage;
    const uintptr_t end = (reinterpret_cast<uintptr_t>(block) + bytes) / kPage * kPage;
    if (end > begin && end - begin >= kLeast)
        madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
#else
    static_cast<void>(block), static_cast<void>(bytes);
#endif
}

} // namespace korvale::inside
