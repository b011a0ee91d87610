#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#ifdef __linux__
#include <sys/mman.h>
#endif

#include "platform/internal/namespaces.h"

namespace korvale::platform {

/// The size of a huge page on x86-64; a block below it takes ordinary pages.
constexpr size_t kLargePage = size_t{2} << 20;

/// Advises the kernel to back a block with transparent huge pages (madvise(2)). The block must be aligned to one.
inline void use_large_pages([[maybe_unused]] void* block, [[maybe_unused]] size_t bytes)
{
#ifdef __linux__
    madvise(block, bytes / kLargePage * kLargePage, MADV_HUGEPAGE);
#endif
}

/// The first address in `memory` that is aligned to a huge page, with the advice given for `bytes` from there on.
/// `memory` must hold a huge page more than `bytes`.
inline void* large_pages_in(void* memory, size_t bytes)
{
    const size_t before = -reinterpret_cast<uintptr_t>(memory) % kLargePage;
    void* const block = static_cast<unsigned char*>(memory) + before;
    use_large_pages(block, bytes);
    return block;
}

/// A new block of the C heap, released like any other; null when the heap is exhausted. On Linux a block of a huge page
/// or more is aligned to one and advised: one page fault and one entry of the TLB then serve 2 MiB instead of 4 KiB.
inline void* new_block(size_t bytes)
{
#ifdef __linux__
    if (bytes >= kLargePage) {
        void* block = nullptr;
        if (posix_memalign(&block, kLargePage, bytes) != 0)
            return nullptr;
        use_large_pages(block, bytes);
        return block;
    }
#endif
    return std::malloc(bytes);
}

} // namespace korvale::platform
