// What disposing a record releases, and how far it follows what hangs on it.
#include <limits>

#include <gtest/gtest.h>

#include "data/datastruct.h"
#include "tests/data/records.h"
#include "tests/data/trees.h"
#include "tests/support/arrays.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"

namespace korvale::test {
namespace {

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

TEST(DATADispose, ReleasesAChildOfTwoChildrenOnce)
{
    const HeapWatch heap;
    DATAstruct* const shared = new_doubles(1, {1});
    auto d = parent({new_parent({shared}), new_parent({shared})});
    EXPECT_EQ(DATADispose(d), 1);
    EXPECT_EQ(heap.live_blocks(), 0);
}

TEST(DATADispose, ReleasesSharedRecordsOfAnyLevelOnce)
{
    const HeapWatch heap;
    DATAstruct* const leaf = new_doubles(1, {1});
    DATAstruct* const listed = new_doubles(1, {2});
    leaf->next = listed;
    DATAstruct* const inner = new_parent({leaf, nullptr, leaf, listed});
    DATAstruct* const outer = new_parent({inner, leaf});
    auto d = parent({outer, inner, new_parent({new_parent({outer, listed})}), leaf});
    d->next = new_parent({inner});
    d->next->next = new_parent({outer, listed});
    EXPECT_EQ(DATADispose(d), 1);
    EXPECT_EQ(heap.live_blocks(), 0);
}

TEST(DATADispose, ReleasesEveryLevelOfADiamondLadderOnce)
{
    const HeapWatch heap;
    DATAstruct* ladder = new_doubles(1, {1});
    for (int i = 0; i < 1000; ++i) // as a tree it has 2^1000 leaves
        ladder = new_parent({new_parent({ladder}), new_parent({ladder})});
    release(ladder);
    EXPECT_EQ(heap.live_blocks(), 0);
}

TEST(DATADispose, EmptiesARecordThatStandsInItsOwnSlots)
{
    const HeapWatch heap;
    OwnedDATA d;
    d.allocate(DATA_TYPE_DATA, 2, 1);
    DATAstruct* const inner = new_parent({d.get()});
    d->pvals[0] = d.get();
    d->pvals[1] = inner;
    inner->next = d.get();
    EXPECT_EQ(DATADispose(d), 1);
    EXPECT_EQ(d->pvals, nullptr);
    EXPECT_EQ(heap.live_blocks(), 0);
}

TEST(DATADispose, ReleasesTheBufferOfAChildWhateverItsSizesSay)
{
    constexpr int32_t kLeast = std::numeric_limits<int32_t>::min();
    const HeapWatch heap;
    for (const int32_t size : {kLeast, -1, 0, std::numeric_limits<int32_t>::max()}) {
        DATAstruct* const sized = new_doubles(1, {1});
        sized->dim = sized->count = size;
        DATAstruct* const listed = new_doubles(1, {1});
        listed->dim = listed->count = listed->alloc_count = listed->alloc_dim = size;
        sized->next = listed;
        DATAstruct* const inner = new_parent({new_doubles(1, {1})});
        inner->dim = inner->count = size;
        auto d = parent({sized, inner});
        EXPECT_EQ(DATADispose(d), 1);
        EXPECT_EQ(heap.live_blocks(), 0) << size;
    }
}

TEST(DATADispose, FollowsNoSlotsOfACapacityBeyond31Bits)
{
    const HeapWatch heap;
    DATAstruct* const leaf = new_doubles(1, {1});
    auto d = parent({leaf});
    d->alloc_count = d->alloc_dim = 65536;
    EXPECT_EQ(DATADispose(d), 1);
    EXPECT_EQ(leaf->dvals[0], 1.0);
    release(leaf);
    EXPECT_EQ(heap.live_blocks(), 0);
}

TEST(DATADispose, ReachesTheEndThroughAnySlot)
{
    const HeapWatch heap;
    for (const int at : {0, 1})
        release(new_chain(new_doubles(1, {1}), kDeep, at));
    release(new_comb(kDeep));
    EXPECT_EQ(heap.live_blocks(), 0);
}

} // namespace
} // namespace korvale::test
