// DATAReAllocate: growing, shrinking and regrouping what an array holds.

#include <gtest/gtest.h>

#include "data/datastruct.h"
#include "tests/data/records.h"
#include "tests/support/arrays.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"

namespace korvale::test {
namespace {

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

} // namespace
} // namespace korvale::test
