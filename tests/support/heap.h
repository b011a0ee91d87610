#pragma once

#include <cstdint>

#include <gtest/gtest.h>

// A heap that counts and, on demand, fails. The test program's own malloc, calloc, realloc and free stand in front of
// the C library's, so every call of the library under test passes through them. Counts are those of the calling thread.
//
// Under the address and thread sanitizers the counts come from the sanitizer's hooks and nothing can be made to fail;
// under valgrind nothing is counted. Tests that need one or the other begin with the macros at the end.
namespace korvale::test {

/// Whether blocks are counted at all.
bool heap_is_counted();

/// Whether allocations can be made to fail, and library calls are told from others.
bool heap_can_fail();

/// Counts from its construction on.
class HeapWatch {
public:
    HeapWatch();

    /// Calls of malloc, calloc and realloc made by the library itself. Where `heap_can_fail()` is false, those of
    /// everybody.
    int64_t allocations() const;

    /// Blocks released, by everybody.
    int64_t frees() const;

    /// Blocks made less blocks released, by everybody.
    int64_t live_blocks() const;

private:
    int64_t allocations_, made_, freed_;
};

/// While it lives, the library's n-th allocation from its construction on (1 is the next) returns null; with
/// `all_after` every later one as well. Nothing fails for n below 1.
class HeapFailure {
public:
    enum Extent { only_this, all_after };
    explicit HeapFailure(int64_t n, Extent extent = only_this);
    ~HeapFailure();
    HeapFailure(const HeapFailure&) = delete;
    HeapFailure& operator=(const HeapFailure&) = delete;

    /// Whether an allocation was made to fail.
    bool happened() const;
};

/// Runs `body(n)` with the library's n-th allocation failing, for n = 1, 2, ... until a run needs fewer than n, and
/// expects that no run leaves blocks behind. `body` builds its input, calls the library, checks and releases all.
/// Returns how many allocations were made to fail.
template <class Body>
int64_t fail_each_allocation(Body body)
{
    constexpr int64_t kMostAllocations = 100000;
    for (int64_t n = 1; n < kMostAllocations; ++n) {
        const testing::ScopedTrace trace(__FILE__, __LINE__, testing::Message() << "allocation " << n << " fails");
        const HeapWatch heap;
        bool happened = false;
        {
            const HeapFailure failure(n);
            body(n);
            happened = failure.happened();
        }
        EXPECT_EQ(heap.live_blocks(), 0);
        if (!happened)
            return n - 1;
    }
    ADD_FAILURE() << "more than " << kMostAllocations << " allocations";
    return kMostAllocations;
}

} // namespace korvale::test

#define NEEDS_HEAP_COUNTS()                                                                                            \
    if (!korvale::test::heap_is_counted())                                                                             \
    GTEST_SKIP() << "another tool owns the heap of this run: blocks are not counted"

#define NEEDS_HEAP_FAILURES()                                                                                          \
    if (!korvale::test::heap_can_fail())                                                                               \
    GTEST_SKIP() << "another tool owns the heap of this run: allocations cannot be made to fail"
