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

/// Asks the system for large pages in a block that begins with one.
inline void use_large_pages([[maybe_unused]] void* block, [[maybe_unused]] size_t bytes)
{
#ifdef __linux__
    madvise(block, bytes / kLargePage * kLargePage, MADV_HUGEPAGE);
#endif
}

/// The first large page that begins in `memory`; the system is asked for such for `bytes` from there on.
inline void* large_pages_in(void* memory, size_t bytes)
{
    const size_t before = -reinterpret_cast<uintptr_t>(memory) % kLargePage;
    void* const block = static_cast<unsigned char*>(memory) + before;
    use_large_pages(block, bytes);
    return block;
}

/// A new block of the C heap, released like any other; null when the heap is exhausted. One that fills large pages
/// begins with one, and the system is asked to use them: it clears and finds one of these sooner than 512 small ones.
inline void* new_block(size_t bytes)
{
    if (bytes < kLargePage)
        return std::malloc(bytes);
    void* block = nullptr;
    if (posix_memalign(&block, kLargePage, bytes) != 0)
        return nullptr;
    use_large_pages(block, bytes);
    return block;
}

} // namespace korvale::inside
