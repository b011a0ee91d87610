#include "heap.h"

#include "check.h"

#include <errno.h>
#include <stdlib.h>

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define HEAP_IS_TAKEN
#endif
#elif defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define HEAP_IS_TAKEN
#endif

static long allocations, live;
static long fail_at; ///< the value of `allocations` that fails, 0 for none
static int fails_after, has_failed;

#ifndef HEAP_IS_TAKEN

void* __libc_malloc(size_t bytes);
void* __libc_calloc(size_t n, size_t bytes);
void* __libc_realloc(void* block, size_t bytes);
void* __libc_memalign(size_t alignment, size_t bytes);
void __libc_free(void* block);

static int is_to_fail(void)
{
    ++allocations;
    if (fail_at == 0 || allocations < fail_at || (allocations > fail_at && !fails_after))
        return 0;
    has_failed = 1;
    errno = ENOMEM;
    return 1;
}

static void* noted(void* block)
{
    live += block != NULL;
    return block;
}

void* malloc(size_t bytes)
{
    return is_to_fail() ? NULL : noted(__libc_malloc(bytes));
}

void* calloc(size_t n, size_t bytes)
{
    return is_to_fail() ? NULL : noted(__libc_calloc(n, bytes));
}

void* realloc(void* block, size_t bytes)
{
    if (is_to_fail())
        return NULL;
    void* const moved = __libc_realloc(block, bytes);
    if (block == NULL)
        return noted(moved);
    live -= bytes == 0;
    return moved;
}

void* aligned_alloc(size_t alignment, size_t bytes)
{
    return is_to_fail() ? NULL : noted(__libc_memalign(alignment, bytes));
}

int posix_memalign(void** block, size_t alignment, size_t bytes)
{
    if (is_to_fail())
        return ENOMEM;
    *block = noted(__libc_memalign(alignment, bytes));
    return *block != NULL ? 0 : ENOMEM;
}

void free(void* block)
{
    live -= block != NULL;
    __libc_free(block);
}

#endif

int heap_can_fail(void)
{
    void* (*volatile const allocate)(size_t) = malloc; // out of the optimiser's sight
    const long before = allocations;
    free(allocate(1));
    return allocations != before;
}

long live_blocks(void)
{
    return live;
}

void fail_allocation(long n, int all_after)
{
    fail_at = allocations + n;
    fails_after = all_after;
    has_failed = 0;
}

int stop_failing(void)
{
    const int failed = has_failed;
    fail_at = 0;
    has_failed = 0;
    return failed;
}

int heap_has_failed(void)
{
    return has_failed;
}
