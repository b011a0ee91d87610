// Records of the second generation: empty ones, and room for elements.
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "data/datastruct.h"
#include "tests/data/records.h"
#include "tests/support/arrays.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"

namespace korvale::test {
namespace {

constexpr int32_t kMost = std::numeric_limits<int32_t>::max();

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

TEST(DATAstruct, FunctionsTakeNull)
{
    DATAInitialize(nullptr);
    EXPECT_EQ(DATAAllocate(nullptr), -1);
    DATANodeDispose(nullptr);
    DATAReverse(nullptr);
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

TEST(DATAAllocate, DoesNotReleaseTheChildrenInSlotsItFrees)
{
    for (const int32_t type : {DATA_TYPE_DATA, DATA_TYPE_DOUBLE}) {
        DATAstruct* const child = new_doubles(1, {7});
        auto d = parent({child});
        EXPECT_EQ(allocate_as(d, type, 4, 3), 1);
        EXPECT_EQ(child->dvals[0], 7.0);
        DATADispose(child);
        std::free(child);
    }
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

} // namespace
} // namespace korvale::test
