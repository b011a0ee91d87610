#include "data/datastruct.h"

#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/arrays.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"

namespace {

using namespace korvale::test;

constexpr int32_t kMost = std::numeric_limits<int32_t>::max();

void expect_empty(const DATAstruct& d)
{
    EXPECT_EQ(d.dim, -1);
    EXPECT_EQ(d.count, -1);
    EXPECT_EQ(d.alloc_dim, -1);
    EXPECT_EQ(d.alloc_count, -1);
    EXPECT_EQ(d.type, DATA_TYPE_DOUBLE);
    EXPECT_EQ(d.alloc_type, DATA_TYPE_DOUBLE);
    EXPECT_EQ(d.dvals, nullptr);
    EXPECT_EQ(d.ivals, nullptr);
    EXPECT_EQ(d.bvals, nullptr);
    EXPECT_EQ(d.pvals, nullptr);
    EXPECT_EQ(d.next, nullptr);
}

/// Which buffers exist, as "d", "i", "b" and "p".
std::string buffers(const DATAstruct& d)
{
    return std::string(d.dvals != nullptr ? "d" : "") + (d.ivals != nullptr ? "i" : "") +
           (d.bvals != nullptr ? "b" : "") + (d.pvals != nullptr ? "p" : "");
}

void shape(DATAstruct* d, int32_t type, int32_t count, int32_t dim)
{
    d->type = type;
    d->count = count;
    d->dim = dim;
}

int allocate_as(DATAstruct* d, int32_t type, int32_t count, int32_t dim)
{
    shape(d, type, count, dim);
    return DATAAllocate(d);
}

int reallocate_as(DATAstruct* d, int32_t type, int32_t count, int32_t dim)
{
    shape(d, type, count, dim);
    return DATAReAllocate(d);
}

void expect_capacity(const DATAstruct& d, int32_t type, int32_t count, int32_t dim)
{
    EXPECT_EQ(d.alloc_type, type);
    EXPECT_EQ(d.alloc_count, count);
    EXPECT_EQ(d.alloc_dim, dim);
}

/// A list of `n` records, each with a point.
DATAstruct* new_list(int n)
{
    DATAstruct* first = nullptr;
    for (int i = n; i-- > 0;) {
        DATAstruct* const d = new_doubles(3, {static_cast<double>(i), 0, 0});
        d->next = first;
        first = d;
    }
    return first;
}

void release(DATAstruct* d)
{
    DATADispose(d);
    std::free(d);
}

TEST(DATAInitialize, MakesARecordEmpty)
{
    DATAstruct d;
    std::memset(&d, 0x55, sizeof d);
    DATAInitialize(&d);
    expect_empty(d);
}

TEST(DATANew, GivesAnEmptyRecordFromTheHeap)
{
    DATAstruct* const d = DATANew();
    ASSERT_NE(d, nullptr);
    expect_empty(*d);
    std::free(d);
}

TEST(DATANew, GivesNullWhenTheHeapIsExhausted)
{
    NEEDS_HEAP_FAILURES();
    const HeapFailure failure(1);
    EXPECT_EQ(DATANew(), nullptr);
}

TEST(DATAAllocate, MakesTheBufferOfTheKind)
{
    const std::string expected[] = {"d", "i", "b", "p", "p"};
    for (int32_t type = 0; type <= 4; ++type) {
        OwnedDATA d;
        EXPECT_EQ(allocate_as(d, type, 4, 3), 1);
        EXPECT_EQ(buffers(*d), expected[type]);
        expect_capacity(*d, type, 4, 3);
    }
}

TEST(DATAAllocate, ClearsPointerSlots)
{
    for (const int32_t type : {DATA_TYPE_POINTER, DATA_TYPE_DATA}) {
        std::free(std::memset(std::malloc(12 * sizeof(void*)), 0x55, 12 * sizeof(void*)));
        OwnedDATA d;
        ASSERT_EQ(allocate_as(d, type, 4, 3), 1);
        for (int i = 0; i < 12; ++i)
            EXPECT_EQ(d->pvals[i], nullptr);
    }
}

TEST(DATAAllocate, RefusesCountsAndDimsBelowOne)
{
    const HeapWatch heap;
    const int32_t wrong[][2] = {{0, 3}, {3, 0}, {-1, 3}, {3, -1}};
    for (const auto& s : wrong) {
        OwnedDATA d;
        EXPECT_EQ(allocate_as(d, DATA_TYPE_DOUBLE, s[0], s[1]), -1);
        expect_capacity(*d, DATA_TYPE_DOUBLE, -1, -1);
        EXPECT_EQ(buffers(*d), "");
    }
    EXPECT_EQ(heap.allocations(), 0);
}

TEST(DATAAllocate, RefusesMoreElementsThan31BitsAndChangesNothing)
{
    OwnedDATA d;
    ASSERT_EQ(allocate_as(d, DATA_TYPE_DOUBLE, 4, 3), 1);
    const double* const buffer = d->dvals;
    EXPECT_EQ(allocate_as(d, DATA_TYPE_BYTE, 65536, 32768), -1);
    EXPECT_EQ(allocate_as(d, DATA_TYPE_BYTE, 1 << 30, 4), -1) << "wraps to 0 in 32 bits";
    EXPECT_EQ(d->dvals, buffer);
    expect_capacity(*d, DATA_TYPE_DOUBLE, 4, 3);
}

TEST(DATAAllocate, ReusesABufferThatIsLargeEnough)
{
    OwnedDATA d;
    ASSERT_EQ(allocate_as(d, DATA_TYPE_DOUBLE, 10, 3), 1);
    double* const buffer = d->dvals;
    buffer[29] = 7;
    const HeapWatch heap;
    EXPECT_EQ(allocate_as(d, DATA_TYPE_DOUBLE, 4, 3), 1);
    EXPECT_EQ(allocate_as(d, DATA_TYPE_DOUBLE, 2, 15), 1) << "the same number of elements in another shape";
    EXPECT_EQ(d->dvals, buffer);
    EXPECT_EQ(buffer[29], 7.0);
    expect_capacity(*d, DATA_TYPE_DOUBLE, 10, 3);
    EXPECT_EQ(heap.allocations(), 0);
    EXPECT_EQ(heap.frees(), 0);
}

TEST(DATAAllocate, ReplacesABufferThatIsOneTooSmall)
{
    OwnedDATA d;
    ASSERT_EQ(allocate_as(d, DATA_TYPE_DOUBLE, 10, 3), 1);
    const HeapWatch heap;
    EXPECT_EQ(allocate_as(d, DATA_TYPE_DOUBLE, 31, 1), 1);
    expect_capacity(*d, DATA_TYPE_DOUBLE, 31, 1);
    d->dvals[30] = 1;
    if (heap_is_counted()) {
        EXPECT_EQ(heap.frees(), 1);
        EXPECT_EQ(heap.live_blocks(), 0);
    }
}

TEST(DATAAllocate, ReplacesABufferOfAnotherKind)
{
    OwnedDATA d;
    ASSERT_EQ(allocate_as(d, DATA_TYPE_DOUBLE, 10, 3), 1);
    EXPECT_EQ(allocate_as(d, DATA_TYPE_INT, 10, 3), 1);
    EXPECT_EQ(buffers(*d), "i");
    expect_capacity(*d, DATA_TYPE_INT, 10, 3);
    EXPECT_EQ(allocate_as(d, DATA_TYPE_BYTE, 1, 1), 1);
    EXPECT_EQ(buffers(*d), "b");
    expect_capacity(*d, DATA_TYPE_BYTE, 1, 1);
}

TEST(DATAAllocate, GivesAnUnknownKindNoBufferButRemembersIt)
{
    for (const int32_t type : {5, -1, kMost}) {
        OwnedDATA d;
        ASSERT_EQ(allocate_as(d, DATA_TYPE_DOUBLE, 10, 3), 1);
        EXPECT_EQ(allocate_as(d, type, 4, 3), 1);
        EXPECT_EQ(buffers(*d), "");
        expect_capacity(*d, type, 4, 3);
        EXPECT_EQ(allocate_as(d, type, 2, 3), 1);
        expect_capacity(*d, type, 4, 3);
    }
}

TEST(DATAAllocate, LeavesTheShapeWantedWhenTheHeapIsExhausted)
{
    NEEDS_HEAP_FAILURES();
    for (int32_t type = 0; type <= 4; ++type) {
        OwnedDATA d;
        {
            const HeapFailure failure(1);
            EXPECT_EQ(allocate_as(d, type, 10, 3), -1);
        }
        EXPECT_EQ(buffers(*d), "");
        expect_capacity(*d, type, 10, 3);
    }
}

TEST(DATAAllocate, MakesANewBufferAfterAFailureEvenIfItIsSmaller)
{
    NEEDS_HEAP_FAILURES();
    OwnedDATA d;
    {
        const HeapFailure failure(1);
        ASSERT_EQ(allocate_as(d, DATA_TYPE_DOUBLE, 10, 3), -1);
    }
    EXPECT_EQ(allocate_as(d, DATA_TYPE_DOUBLE, 4, 3), 1);
    EXPECT_EQ(buffers(*d), "d");
    expect_capacity(*d, DATA_TYPE_DOUBLE, 4, 3);
    d->dvals[11] = 1;
}

TEST(DATAAllocate, DoesNotReleaseMemoryThatAHostHasWrapped)
{
    double values[6] = {1, 2, 3, 4, 5, 6};
    DATAstruct d = wrapped<DATAstruct>(values, 2, 3);
    EXPECT_EQ(DATAAllocate(&d), 1);
    EXPECT_NE(d.dvals, values);
    expect_capacity(d, DATA_TYPE_DOUBLE, 2, 3);
    DATADispose(&d);
}

TEST(DATAReAllocate, GrowingKeepsTheLeadingValues)
{
    auto d = doubles<DATAstruct>(3, {1, 2, 3, 4, 5, 6});
    EXPECT_EQ(reallocate_as(d, DATA_TYPE_DOUBLE, 5, 3), 1);
    EXPECT_TRUE(same_bits({1, 2, 3, 4, 5, 6}, d->dvals));
    expect_capacity(*d, DATA_TYPE_DOUBLE, 5, 3);
    d->dvals[14] = 1;
}

TEST(DATAReAllocate, ShrinkingKeepsTheLeadingValues)
{
    auto d = doubles<DATAstruct>(3, {1, 2, 3, 4, 5, 6});
    EXPECT_EQ(reallocate_as(d, DATA_TYPE_DOUBLE, 1, 3), 1);
    EXPECT_TRUE(same_bits({1, 2, 3}, d->dvals));
    expect_capacity(*d, DATA_TYPE_DOUBLE, 1, 3);
}

TEST(DATAReAllocate, KeepsTheValuesOfEveryKind)
{
    auto whole = ints<DATAstruct>(1, {1, 2, 3});
    EXPECT_EQ(reallocate_as(whole, DATA_TYPE_INT, 4, 1), 1);
    EXPECT_TRUE(same_values({1, 2, 3}, whole->ivals));
    auto small = bytes<DATAstruct>(1, {1, 2, 255});
    EXPECT_EQ(reallocate_as(small, DATA_TYPE_BYTE, 2, 1), 1);
    const uint8_t expected[] = {1, 2};
    EXPECT_TRUE(same_values(expected, small->bvals, 2));
    int target = 0;
    OwnedDATA pointers;
    ASSERT_EQ(allocate_as(pointers, DATA_TYPE_POINTER, 2, 1), 1);
    pointers->pvals[1] = &target;
    EXPECT_EQ(reallocate_as(pointers, DATA_TYPE_POINTER, 3, 1), 1);
    EXPECT_EQ(pointers->pvals[0], nullptr);
    EXPECT_EQ(pointers->pvals[1], &target);
    auto children = parent({new_doubles(1, {5})});
    EXPECT_EQ(reallocate_as(children, DATA_TYPE_DATA, 2, 1), 1);
    children->pvals[1] = nullptr;
    EXPECT_EQ(static_cast<DATAstruct*>(children->pvals[0])->dvals[0], 5.0);
}

TEST(DATAReAllocate, RegroupsValuesWhenDimChanges)
{
    auto d = doubles<DATAstruct>(3, {1, 2, 3, 4, 5, 6});
    EXPECT_EQ(reallocate_as(d, DATA_TYPE_DOUBLE, 4, 2), 1);
    EXPECT_TRUE(same_bits({1, 2, 3, 4, 5, 6}, d->dvals));
    expect_capacity(*d, DATA_TYPE_DOUBLE, 4, 2);
}

TEST(DATAReAllocate, DoesNoBufferWorkForTheSameNumberOfElements)
{
    auto d = doubles<DATAstruct>(3, {1, 2, 3, 4, 5, 6});
    const double* const buffer = d->dvals;
    const HeapWatch heap;
    EXPECT_EQ(reallocate_as(d, DATA_TYPE_DOUBLE, 3, 2), 1);
    EXPECT_EQ(d->dvals, buffer);
    expect_capacity(*d, DATA_TYPE_DOUBLE, 3, 2);
    EXPECT_EQ(heap.allocations(), 0);
}

TEST(DATAReAllocate, AllocatesANewRecordWithoutCopying)
{
    DATAstruct* const d = DATANew();
    EXPECT_EQ(reallocate_as(d, DATA_TYPE_DOUBLE, 2, 3), 1);
    ASSERT_NE(d->dvals, nullptr);
    d->dvals[5] = 1;
    expect_capacity(*d, DATA_TYPE_DOUBLE, 2, 3);
    release(d);
}

TEST(DATAReAllocate, TakesZeroElementsAndKeepsNoBlock)
{
    auto d = doubles<DATAstruct>(3, {1, 2, 3, 4, 5, 6});
    const HeapWatch heap;
    EXPECT_EQ(reallocate_as(d, DATA_TYPE_DOUBLE, 0, 3), 1);
    EXPECT_EQ(d->dvals, nullptr);
    expect_capacity(*d, DATA_TYPE_DOUBLE, 0, 3);
    if (heap_is_counted()) {
        EXPECT_EQ(heap.live_blocks(), -1);
    }
    EXPECT_EQ(reallocate_as(d, DATA_TYPE_DOUBLE, 3, 0), 1);
    expect_capacity(*d, DATA_TYPE_DOUBLE, 3, 0);
    EXPECT_EQ(reallocate_as(d, DATA_TYPE_DOUBLE, 2, 1), 1);
    EXPECT_NE(d->dvals, nullptr);
}

TEST(DATAReAllocate, RefusesNegativeSizesAndChangesNothing)
{
    auto d = doubles<DATAstruct>(3, {1, 2, 3});
    EXPECT_EQ(reallocate_as(d, DATA_TYPE_DOUBLE, -1, 3), -1);
    EXPECT_EQ(reallocate_as(d, DATA_TYPE_DOUBLE, 3, -1), -1);
    EXPECT_EQ(reallocate_as(d, DATA_TYPE_INT, -1, 3), -1);
    EXPECT_EQ(reallocate_as(d, DATA_TYPE_DOUBLE, 65536, 32768), -1) << "more than 31 bits";
    EXPECT_EQ(reallocate_as(d, DATA_TYPE_BYTE, 65536, 65536), -1);
    EXPECT_TRUE(same_bits({1, 2, 3}, d->dvals));
    expect_capacity(*d, DATA_TYPE_DOUBLE, 1, 3);
    EXPECT_EQ(DATAReAllocate(nullptr), -1);
}

TEST(DATAReAllocate, KeepsNothingWhenTheKindChanges)
{
    OwnedDATA d;
    ASSERT_EQ(allocate_as(d, DATA_TYPE_DOUBLE, 10, 3), 1);
    EXPECT_EQ(reallocate_as(d, DATA_TYPE_DATA, 2, 3), 1);
    EXPECT_EQ(buffers(*d), "p");
    expect_capacity(*d, DATA_TYPE_DATA, 2, 3);
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(d->pvals[i], nullptr);
}

TEST(DATAReAllocate, FailsWhenTheKindChangesAndTheSizeIsZero)
{
    auto d = doubles<DATAstruct>(3, {1, 2, 3});
    EXPECT_EQ(reallocate_as(d, DATA_TYPE_INT, 0, 3), -1);
    EXPECT_EQ(buffers(*d), "");
    expect_capacity(*d, DATA_TYPE_DOUBLE, -1, -1);
}

TEST(DATAReAllocate, OnlyNotesTheSizeOfAnUnknownKind)
{
    for (const int32_t type : {5, -7}) {
        OwnedDATA d;
        ASSERT_EQ(allocate_as(d, type, 4, 3), 1);
        EXPECT_EQ(reallocate_as(d, type, 7, 2), 1);
        expect_capacity(*d, type, 7, 2);
        EXPECT_EQ(reallocate_as(d, type, 0, 2), 1);
        expect_capacity(*d, type, 0, 2);
        EXPECT_EQ(buffers(*d), "");
    }
}

TEST(DATAReAllocate, LeavesTheRecordAloneWhenElementsCannotMove)
{
    NEEDS_HEAP_FAILURES();
    for (const int32_t count : {5, 1}) {
        auto d = doubles<DATAstruct>(3, {1, 2, 3, 4, 5, 6});
        const HeapFailure failure(1);
        EXPECT_EQ(reallocate_as(d, DATA_TYPE_DOUBLE, count, 3), -1);
        EXPECT_TRUE(same_bits({1, 2, 3, 4, 5, 6}, d->dvals));
        expect_capacity(*d, DATA_TYPE_DOUBLE, 2, 3);
        EXPECT_EQ(d->count, count);
    }
}

TEST(DATAReAllocate, DoesNotTestAnAllocationWithNothingToMove)
{
    NEEDS_HEAP_FAILURES();
    OwnedDATA d;
    {
        const HeapFailure failure(1);
        EXPECT_EQ(reallocate_as(d, DATA_TYPE_DOUBLE, 5, 3), 1);
    }
    EXPECT_EQ(d->dvals, nullptr);
    expect_capacity(*d, DATA_TYPE_DOUBLE, 5, 3);
}

TEST(DATAReAllocate, CountsAMissingBufferAsNoElements)
{
    NEEDS_HEAP_FAILURES();
    for (const int32_t count : {4, 10, 20}) {
        OwnedDATA d;
        {
            const HeapFailure failure(1);
            ASSERT_EQ(allocate_as(d, DATA_TYPE_DOUBLE, 10, 3), -1);
        }
        EXPECT_EQ(reallocate_as(d, DATA_TYPE_DOUBLE, count, 3), 1);
        ASSERT_NE(d->dvals, nullptr);
        d->dvals[3 * count - 1] = 1;
        expect_capacity(*d, DATA_TYPE_DOUBLE, count, 3);
    }
}

TEST(DATAReAllocate, FailsLikeAllocateWhenTheKindChanges)
{
    NEEDS_HEAP_FAILURES();
    auto d = doubles<DATAstruct>(3, {1, 2, 3});
    const HeapFailure failure(1);
    EXPECT_EQ(reallocate_as(d, DATA_TYPE_INT, 2, 3), -1);
    EXPECT_EQ(buffers(*d), "");
    expect_capacity(*d, DATA_TYPE_INT, 2, 3);
}

TEST(DATAReAllocate, KeepsEveryValueWhileElementsAreAppended)
{
    OwnedDATA d;
    for (int n = 1; n <= 2000; ++n) {
        ASSERT_EQ(reallocate_as(d, DATA_TYPE_DOUBLE, n, 3), 1);
        d->dvals[3 * n - 3] = n;
    }
    for (int n = 1; n <= 2000; ++n)
        ASSERT_EQ(d->dvals[3 * n - 3], n);
}

TEST(DATANodeDispose, FreesTheBuffersAndForgetsTheList)
{
    NEEDS_HEAP_COUNTS();
    DATAstruct* const child = new_doubles(1, {1});
    auto d = parent({child});
    DATAstruct* const following = new_doubles(1, {2});
    d->next = following;
    const HeapWatch heap;
    DATANodeDispose(d);
    EXPECT_EQ(heap.live_blocks(), -1);
    expect_empty(*d);
    EXPECT_EQ(child->dvals[0], 1.0);
    EXPECT_EQ(following->dvals[0], 2.0);
    release(child);
    release(following);
}

TEST(DATADispose, ReturnsMinusOneForNull)
{
    EXPECT_EQ(DATADispose(nullptr), -1);
}

TEST(DATADispose, ReleasesBuffersChildrenAndTheRestOfTheList)
{
    const HeapWatch heap;
    OwnedDATA d;
    ASSERT_EQ(allocate_as(d, DATA_TYPE_DATA, 3, 1), 1);
    d->pvals[0] = new_parent({new_doubles(3, {1, 2, 3}), nullptr, new_doubles(3, {1, 2, 3})});
    d->pvals[2] = new_list(3);
    d->next = new_list(4);
    EXPECT_EQ(DATADispose(d), 1);
    expect_empty(*d);
    EXPECT_EQ(heap.live_blocks(), 0);
}

TEST(DATADispose, ReleasesTheChildrenOfTheWholeCapacity)
{
    const HeapWatch heap;
    OwnedDATA d;
    ASSERT_EQ(allocate_as(d, DATA_TYPE_DATA, 4, 2), 1);
    d->pvals[1] = new_doubles(1, {1});
    d->pvals[7] = new_doubles(1, {1});
    ASSERT_EQ(allocate_as(d, DATA_TYPE_DATA, 1, 1), 1);
    EXPECT_EQ(DATADispose(d), 1);
    EXPECT_EQ(heap.live_blocks(), 0);
}

TEST(DATADispose, NeverFollowsUntypedPointers)
{
    DATAstruct* const target = new_doubles(1, {1});
    OwnedDATA d;
    ASSERT_EQ(allocate_as(d, DATA_TYPE_POINTER, 1, 1), 1);
    d->pvals[0] = target;
    EXPECT_EQ(DATADispose(d), 1);
    EXPECT_EQ(target->dvals[0], 1.0);
    release(target);
}

TEST(DATADispose, FollowsNoChildrenWhereThereAreNoSlots)
{
    auto d = doubles<DATAstruct>(3, {1, 2, 3});
    d->type = DATA_TYPE_DATA; // set by hand on a buffer of doubles
    EXPECT_EQ(DATADispose(d), 1);
    expect_empty(*d);
    if (!heap_can_fail())
        return;
    OwnedDATA failed;
    {
        const HeapFailure failure(1);
        ASSERT_EQ(allocate_as(failed, DATA_TYPE_DATA, 10, 3), -1);
    }
    EXPECT_EQ(DATADispose(failed), 1);
}

TEST(DATADispose, MayBeRepeated)
{
    auto d = parent({new_doubles(1, {1})});
    EXPECT_EQ(DATADispose(d), 1);
    EXPECT_EQ(DATADispose(d), 1);
    expect_empty(*d);
}

TEST(DATADispose, TakesLongListsWithoutRecursion)
{
    OwnedDATA d;
    for (int i = 0; i < 500000; ++i) {
        DATAstruct* const record = DATANew();
        ASSERT_NE(record, nullptr);
        record->next = d->next;
        d->next = record;
    }
    EXPECT_EQ(DATADispose(d), 1);
    expect_empty(*d);
}

TEST(DATADispose, TakesDeepTreesWithoutRecursion)
{
    const HeapWatch heap;
    DATAstruct* tree = new_doubles(1, {1});
    for (int i = 0; i < 500000; ++i)
        tree = new_parent({tree});
    release(tree);
    EXPECT_EQ(heap.live_blocks(), 0);
}

TEST(DATADispose, ReleasesAChildInTwoSlotsOnce)
{
    const HeapWatch heap;
    DATAstruct* const child = new_doubles(1, {1});
    auto d = parent({child, child, new_parent({child})});
    EXPECT_EQ(DATADispose(d), 1);
    EXPECT_EQ(heap.live_blocks(), 0);
}

TEST(DATAListCount, CountsTheRecordsAlongNext)
{
    EXPECT_EQ(DATAListCount(nullptr), 0);
    DATAstruct* const list = new_list(3);
    EXPECT_EQ(DATAListCount(list), 3);
    EXPECT_EQ(DATAListCount(list->next), 2);
    release(list);
}

TEST(DATAListToDATA, PutsTheRecordsIntoSlotsAndKeepsTheirLinks)
{
    DATAstruct* const list = new_list(3);
    DATAstruct* const second = list->next;
    DATAstruct* const d = DATAListToDATA(list);
    ASSERT_NE(d, nullptr);
    EXPECT_EQ(d->type, DATA_TYPE_DATA);
    EXPECT_EQ(d->count, 3);
    EXPECT_EQ(d->dim, 1);
    EXPECT_EQ(d->next, nullptr);
    EXPECT_EQ(d->pvals[0], list);
    EXPECT_EQ(d->pvals[1], second);
    EXPECT_EQ(list->next, second);
    EXPECT_EQ(second->next, d->pvals[2]);
    release(d);
}

TEST(DATAListToDATA, GivesAnArrayThatReleasesEachRecordOnce)
{
    const HeapWatch heap;
    for (const int n : {1, 2, 1000}) {
        DATAstruct* const d = DATAListToDATA(new_list(n));
        ASSERT_NE(d, nullptr);
        release(d);
        EXPECT_EQ(heap.live_blocks(), 0);
    }
}

TEST(DATAListToDATA, GivesAnArrayThatReleasesRecordsLinkedLaterToo)
{
    const HeapWatch heap;
    DATAstruct* const d = DATAListToDATA(new_list(3));
    ASSERT_NE(d, nullptr);
    auto* const first = static_cast<DATAstruct*>(d->pvals[0]);
    auto* const last = static_cast<DATAstruct*>(d->pvals[2]);
    last->next = new_list(2);
    auto* const between = new_doubles(1, {1});
    between->next = first->next;
    first->next = between;
    release(d);
    EXPECT_EQ(heap.live_blocks(), 0);
}

TEST(DATAListToDATA, IsNullForAnEmptyList)
{
    EXPECT_EQ(DATAListToDATA(nullptr), nullptr);
}

TEST(DATAListToDATA, IsNullWhenTheHeapIsExhausted)
{
    NEEDS_HEAP_FAILURES();
    DATAstruct* const list = new_list(2);
    {
        const HeapWatch heap;
        const HeapFailure failure(1);
        EXPECT_EQ(DATAListToDATA(list), nullptr);
        EXPECT_EQ(heap.live_blocks(), 0);
    }
    EXPECT_EQ(DATAListCount(list), 2);
    release(list);
}

TEST(DATAListToDATA, KeepsItsRecordWhenTheSlotsCannotBeMade)
{
    NEEDS_HEAP_FAILURES();
    DATAstruct* const list = new_list(2);
    const HeapWatch heap;
    {
        const HeapFailure failure(2);
        EXPECT_EQ(DATAListToDATA(list), nullptr);
    }
    EXPECT_EQ(heap.live_blocks(), 1) << "the new record stays behind";
    release(list);
}

TEST(DATACheckIfPoints, WantsDoublesOfDim3)
{
    EXPECT_EQ(DATACheckIfPoints(nullptr), 0);
    auto d = points<DATAstruct>({1, 2, 3});
    EXPECT_EQ(DATACheckIfPoints(d), 1);
    OwnedDATA none;
    shape(none, DATA_TYPE_DOUBLE, 0, 3);
    EXPECT_EQ(DATACheckIfPoints(none), 1);
    shape(none, DATA_TYPE_DOUBLE, -1, 3);
    EXPECT_EQ(DATACheckIfPoints(none), 0);
    shape(none, DATA_TYPE_INT, 1, 3);
    EXPECT_EQ(DATACheckIfPoints(none), 0);
    shape(none, DATA_TYPE_DOUBLE, 1, 2);
    EXPECT_EQ(DATACheckIfPoints(none), 0);
    shape(none, DATA_TYPE_DOUBLE, 1, 4);
    EXPECT_EQ(DATACheckIfPoints(none), 0);
}

TEST(DATACheckIfFace, WantsPointsInEverySlot)
{
    EXPECT_EQ(DATACheckIfFace(nullptr), 0);
    auto face = parent({new_doubles(3, {1, 2, 3}), new_doubles(3, {4, 5, 6})});
    EXPECT_EQ(DATACheckIfFace(face), 1);
    static_cast<DATAstruct*>(face->pvals[1])->dim = 1;
    EXPECT_EQ(DATACheckIfFace(face), 0);
    auto gap = parent({new_doubles(3, {1, 2, 3}), nullptr});
    EXPECT_EQ(DATACheckIfFace(gap), 0);
    gap->count = 1;
    EXPECT_EQ(DATACheckIfFace(gap), 1) << "only the first count slots are examined";
}

TEST(DATACheckIfFace, WantsOneColumnOfChildren)
{
    auto face = parent({new_doubles(3, {1, 2, 3}), new_doubles(3, {1, 2, 3})}, 2);
    EXPECT_EQ(DATACheckIfFace(face), 0);
    auto points_only = points<DATAstruct>({1, 2, 3});
    EXPECT_EQ(DATACheckIfFace(points_only), 0);
    auto pointers = array_of<DATAstruct>(DATA_TYPE_POINTER, 1, 1);
    EXPECT_EQ(DATACheckIfFace(pointers), 0);
    OwnedDATA no_slots;
    shape(no_slots, DATA_TYPE_DATA, 1, 1);
    EXPECT_EQ(DATACheckIfFace(no_slots), 0);
    auto empty = parent({new_doubles(3, {1, 2, 3})});
    empty->count = 0;
    EXPECT_EQ(DATACheckIfFace(empty), 0);
}

TEST(DATACheckIfFace, ReadsNoSlotBeyondTheCapacity)
{
    auto face = parent({new_doubles(3, {1, 2, 3})});
    face->count = 1000;
    EXPECT_EQ(DATACheckIfFace(face), 0);
    face->count = 1;
}

TEST(DATACheckIfPatch, DoesNotExamineTheChildren)
{
    EXPECT_EQ(DATACheckIfPatch(nullptr), 0);
    auto patch = parent({nullptr, nullptr});
    EXPECT_EQ(DATACheckIfPatch(patch), 1);
    patch->count = 0;
    EXPECT_EQ(DATACheckIfPatch(patch), 0);
    auto wide = parent({nullptr, nullptr}, 2);
    EXPECT_EQ(DATACheckIfPatch(wide), 0);
    auto pointers = array_of<DATAstruct>(DATA_TYPE_POINTER, 1, 1);
    EXPECT_EQ(DATACheckIfPatch(pointers), 0);
    OwnedDATA no_slots;
    shape(no_slots, DATA_TYPE_DATA, 1, 1);
    EXPECT_EQ(DATACheckIfPatch(no_slots), 0);
}

TEST(DATACheckIfMesh, WantsDimFiveExactly)
{
    EXPECT_EQ(DATACheckIfMesh(nullptr), 0);
    for (const int32_t dim : {1, 4, 5, 6}) {
        auto mesh = array_of<DATAstruct>(DATA_TYPE_DATA, 2, dim);
        EXPECT_EQ(DATACheckIfMesh(mesh), dim == 5 ? 1 : 0) << dim;
    }
    OwnedDATA no_slots;
    shape(no_slots, DATA_TYPE_DATA, 1, 5);
    EXPECT_EQ(DATACheckIfMesh(no_slots), 0);
}

TEST(DATASubReverse, ReversesTheLeavesAndKeepsTheOrderOfTheChildren)
{
    auto* const a = new_doubles(1, {1, 2, 3});
    auto* const b = new_ints(1, {4, 5});
    auto tree = parent({new_parent({a}), nullptr, b});
    DATAstruct* const inner = static_cast<DATAstruct*>(tree->pvals[0]);
    DATASubReverse(tree);
    EXPECT_TRUE(same_bits({3, 2, 1}, a->dvals));
    EXPECT_TRUE(same_values({5, 4}, b->ivals));
    EXPECT_EQ(tree->pvals[0], inner);
    EXPECT_EQ(tree->pvals[2], b);
}

TEST(DATASubReverse, ReversesARecordThatIsALeaf)
{
    auto d = doubles<DATAstruct>(2, {1, 2, 3, 4});
    DATASubReverse(d);
    EXPECT_TRUE(same_bits({3, 4, 1, 2}, d->dvals));
    int first = 0, second = 0;
    auto pointers = array_of<DATAstruct>(DATA_TYPE_POINTER, 2, 1);
    pointers->pvals[0] = &first;
    pointers->pvals[1] = &second;
    DATASubReverse(pointers);
    EXPECT_EQ(pointers->pvals[0], &second);
    DATASubReverse(nullptr);
}

TEST(DATASubReverse, VisitsOneSlotPerElementWhateverDimIs)
{
    auto *const a = new_doubles(1, {1, 2}), *const b = new_doubles(1, {1, 2}), *const c = new_doubles(1, {1, 2});
    auto* const d = new_doubles(1, {1, 2});
    auto table = parent({a, b, c, d}, 2);
    DATASubReverse(table);
    EXPECT_TRUE(same_bits({2, 1}, a->dvals));
    EXPECT_TRUE(same_bits({2, 1}, b->dvals));
    EXPECT_TRUE(same_bits({1, 2}, c->dvals));
    EXPECT_TRUE(same_bits({1, 2}, d->dvals));
    table->dim = 0;
    DATASubReverse(table);
    EXPECT_TRUE(same_bits({1, 2}, a->dvals));
    table->dim = 2;
}

TEST(DATASubReverse, WalksLongChainsWithoutRecursion)
{
    DATAstruct* const leaf = new_doubles(1, {1, 2});
    DATAstruct* chain = leaf;
    for (int i = 0; i < 500000; ++i)
        chain = new_parent({chain});
    DATASubReverse(chain);
    EXPECT_TRUE(same_bits({2, 1}, leaf->dvals));
    release(chain);
}

TEST(DATASubReverse, VisitsNoSlotBeyondTheCapacity)
{
    auto* const a = new_doubles(1, {1, 2});
    auto tree = parent({a});
    tree->count = 1000;
    DATASubReverse(tree);
    EXPECT_TRUE(same_bits({1, 2}, a->dvals));
    tree->count = 1;
}

TEST(DATASubReverse, WalksSlotsThatAHostHasWrapped)
{
    DATAstruct* const a = new_doubles(1, {1, 2});
    void* slots[] = {a};
    DATAstruct tree;
    DATAInitialize(&tree);
    shape(&tree, DATA_TYPE_DATA, 1, 1);
    tree.pvals = slots;
    DATASubReverse(&tree);
    EXPECT_TRUE(same_bits({2, 1}, a->dvals));
    tree.alloc_dim = tree.alloc_count = 0; // as in a zero-filled record
    DATASubReverse(&tree);
    EXPECT_TRUE(same_bits({1, 2}, a->dvals));
    release(a);
}

} // namespace
