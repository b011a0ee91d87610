#include "tests/support/heap.h"

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <link.h>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define KORVALE_HEAP_HOOKS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
#define KORVALE_HEAP_HOOKS 1
#endif
#endif

namespace korvale::test {
namespace {

struct Heap {
    int64_t library_allocations; ///< by the library; by everybody where hooks count
    int64_t made;                ///< blocks made
    int64_t freed;               ///< blocks released
    int64_t fail_at;             ///< the value of library_allocations that fails; 0 for none
    bool fail_after;             ///< all later ones fail as well
    bool failed;                 ///< one was made to fail
};

thread_local Heap heap;

} // namespace
} // namespace korvale::test

#ifdef KORVALE_HEAP_HOOKS

extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*made)(const volatile void*, size_t),
                                                         void (*freed)(const volatile void*));

namespace korvale::test {
namespace {

void on_malloc(const volatile void*, size_t)
{
    ++heap.library_allocations;
    ++heap.made;
}

void on_free(const volatile void*)
{
    ++heap.freed;
}

bool start_counting()
{
    static const bool counting = __sanitizer_install_malloc_and_free_hooks(on_malloc, on_free) != 0;
    return counting;
}

} // namespace

bool heap_can_fail()
{
    return false;
}

#else

namespace korvale::test {
namespace {

/// Where the library's code lies. Found again by every watch, since a test may load and unload the library.
uintptr_t code_begin, code_end;

int note_library(dl_phdr_info* info, size_t, void*)
{
    if (std::strstr(info->dlpi_name, "/libkorvale.so") == nullptr)
        return 0;
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        const auto& segment = info->dlpi_phdr[i];
        if (segment.p_type != PT_LOAD || (segment.p_flags & PF_X) == 0)
            continue;
        code_begin = info->dlpi_addr + segment.p_vaddr;
        code_end = code_begin + segment.p_memsz;
    }
    return 1;
}

bool start_counting()
{
    code_begin = code_end = 0;
    dl_iterate_phdr(note_library, nullptr);
    const Heap before = heap;
    void* (*volatile const allocate)(size_t) = std::malloc; // out of the optimiser's sight
    void (*volatile const release)(void*) = std::free;
    release(allocate(1));
    const bool counted = heap.made != before.made; // a tool may have put its own heap in front of this one
    heap = before;
    return counted;
}

/// Notes an allocation; whether it is to fail.
bool is_to_fail(const void* caller)
{
    const auto address = reinterpret_cast<uintptr_t>(caller);
    if (address < code_begin || address >= code_end)
        return false;
    const int64_t number = ++heap.library_allocations;
    if (heap.fail_at < 1 || number < heap.fail_at || (number > heap.fail_at && !heap.fail_after))
        return false;
    heap.failed = true;
    errno = ENOMEM;
    return true;
}

void* noted(void* made)
{
    if (made != nullptr)
        ++heap.made;
    return made;
}

} // namespace

bool heap_can_fail()
{
    return start_counting() && code_end != 0;
}

} // namespace korvale::test

#pragma GCC visibility push(default) // the library is to find them

extern "C" {

void* __libc_malloc(size_t);
void* __libc_calloc(size_t, size_t);
void* __libc_realloc(void*, size_t);
void* __libc_memalign(size_t, size_t);
void __libc_free(void*);

void* malloc(size_t bytes) noexcept
{
    if (korvale::test::is_to_fail(__builtin_return_address(0)))
        return nullptr;
    return korvale::test::noted(__libc_malloc(bytes));
}

void* calloc(size_t n, size_t bytes) noexcept
{
    if (korvale::test::is_to_fail(__builtin_return_address(0)))
        return nullptr;
    return korvale::test::noted(__libc_calloc(n, bytes));
}

void* realloc(void* block, size_t bytes) noexcept
{
    if (korvale::test::is_to_fail(__builtin_return_address(0)))
        return nullptr;
    void* const moved = __libc_realloc(block, bytes);
    if (block == nullptr)
        return korvale::test::noted(moved);
    if (bytes == 0)
        ++korvale::test::heap.freed;
    return moved;
}

void* aligned_alloc(size_t alignment, size_t bytes) noexcept
{
    if (korvale::test::is_to_fail(__builtin_return_address(0)))
        return nullptr;
    return korvale::test::noted(__libc_memalign(alignment, bytes));
}

int posix_memalign(void** block, size_t alignment, size_t bytes) noexcept
{
    if (korvale::test::is_to_fail(__builtin_return_address(0)))
        return ENOMEM;
    *block = korvale::test::noted(__libc_memalign(alignment, bytes));
    return *block != nullptr ? 0 : ENOMEM;
}

void free(void* block) noexcept
{
    if (block != nullptr)
        ++korvale::test::heap.freed;
    __libc_free(block);
}
}

#pragma GCC visibility pop

namespace korvale::test {

#endif

bool heap_is_counted()
{
    return start_counting();
}

HeapWatch::HeapWatch()
{
    start_counting();
    allocations_ = heap.library_allocations;
    made_ = heap.made;
    freed_ = heap.freed;
}

int64_t HeapWatch::allocations() const
{
    return heap.library_allocations - allocations_;
}

int64_t HeapWatch::frees() const
{
    return heap.freed - freed_;
}

int64_t HeapWatch::live_blocks() const
{
    return (heap.made - made_) - (heap.freed - freed_);
}

HeapFailure::HeapFailure(int64_t n, Extent extent)
{
    start_counting();
    heap.fail_at = n < 1 ? 0 : heap.library_allocations + n;
    heap.fail_after = extent == all_after;
    heap.failed = false;
}

HeapFailure::~HeapFailure()
{
    heap.fail_at = 0;
    heap.failed = false;
}

bool HeapFailure::happened() const
{
    return heap.failed;
}

} // namespace korvale::test
