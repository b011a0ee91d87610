// Lists of records and the arrays made of them.

#include <gtest/gtest.h>

#include "data/datastruct.h"
#include "tests/data/records.h"
#include "tests/support/arrays.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"

namespace korvale::test {
namespace {

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

} // namespace
} // namespace korvale::test
