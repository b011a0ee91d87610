// Arrays of arrays: however deep they are, through whatever slot, and however often a record is reached.
#include <cstdlib>
#include <limits>

#include <gtest/gtest.h>

#include "data/operations.h"
#include "tests/support/arrays.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"

namespace korvale::test {
namespace {

constexpr int kDeep = 400000;

Xfm kShift = {{1, 0, 0, 10}, {0, 1, 0, 20}, {0, 0, 1, 30}, {0, 0, 0, 1}};

/// `leaf` below `depth` arrays of two slots each, always in slot `at`; the other slot is null.
DATAstruct* new_chain(DATAstruct* leaf, int depth, int at)
{
    DATAstruct* chain = leaf;
    for (int i = 0; i < depth; ++i)
        chain = at == 0 ? new_parent({chain, nullptr}) : new_parent({nullptr, chain});
    return chain;
}

/// A tree of `depth` arrays with two slots, in which slot 0 leads down and slot 1 holds a point.
DATAstruct* new_comb(int depth)
{
    DATAstruct* comb = new_doubles(3, {1, 2, 3});
    for (int i = 0; i < depth; ++i)
        comb = new_parent({comb, new_doubles(3, {1, 2, 3})});
    return comb;
}

DATAstruct* child(const DATAstruct* d, int slot)
{
    return static_cast<DATAstruct*>(d->pvals[slot]);
}

void release(DATAstruct* d)
{
    DATADispose(d);
    std::free(d);
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

TEST(DATASubReverse, ReachesTheEndThroughAnySlot)
{
    for (const int at : {0, 1}) {
        DATAstruct* const leaf = new_doubles(1, {1, 2});
        DATAstruct* const chain = new_chain(leaf, kDeep, at);
        DATASubReverse(chain);
        EXPECT_TRUE(same_bits({2, 1}, leaf->dvals)) << at;
        release(chain);
    }
}

TEST(DATASubReverse, ReversesASharedLeafOnceForEachSlot)
{
    DATAstruct* const leaf = new_doubles(1, {1, 2});
    auto tree = parent({leaf, new_parent({leaf}), leaf});
    DATASubReverse(tree);
    EXPECT_TRUE(same_bits({2, 1}, leaf->dvals));
}

TEST(DATASubReverse, ReachesSixtyFourLevelsWithoutTheHeap)
{
    NEEDS_HEAP_FAILURES();
    DATAstruct* const deepest = new_doubles(1, {1, 2});
    DATAstruct* const beside = new_doubles(1, {1, 2});
    DATAstruct* const last = new_doubles(1, {1, 2});
    DATAstruct* const inner = new_parent({deepest, beside});
    auto tree = parent({new_chain(inner, 63, 0), last});
    {
        const HeapWatch heap;
        const HeapFailure failure(1, HeapFailure::all_after);
        DATASubReverse(tree);
        EXPECT_TRUE(failure.happened());
    }
    EXPECT_TRUE(same_bits({1, 2}, deepest->dvals)) << "the level below is passed over";
    EXPECT_TRUE(same_bits({1, 2}, beside->dvals));
    EXPECT_TRUE(same_bits({2, 1}, last->dvals));
    DATASubReverse(tree);
    EXPECT_TRUE(same_bits({2, 1}, deepest->dvals));
    EXPECT_TRUE(same_bits({2, 1}, beside->dvals));
    EXPECT_TRUE(same_bits({1, 2}, last->dvals));
}

TEST(TransformDATA, ReachesTheEndThroughAnySlot)
{
    for (const int at : {0, 1}) {
        DATAstruct *const from = new_doubles(3, {1, 2, 3}), *const to = new_doubles(3, {0, 0, 0});
        DATAstruct *const source = new_chain(from, kDeep, at), *const output = new_chain(to, kDeep, at);
        TransformDATA(kShift, source, output);
        EXPECT_TRUE(same_bits({11, 22, 33}, to->dvals)) << at;
        release(source);
        release(output);
    }
}

TEST(TransformDATA, CarriesEveryTwigOfADeepTree)
{
    DATAstruct* const comb = new_comb(1000);
    TransformDATA(kShift, comb, comb);
    const DATAstruct* d = comb;
    for (int i = 0; i < 1000; ++i, d = child(d, 0))
        ASSERT_TRUE(same_bits({11, 22, 33}, child(d, 1)->dvals)) << i;
    EXPECT_TRUE(same_bits({11, 22, 33}, d->dvals));
    release(comb);
}

TEST(TransformDATA, CarriesASharedLeafOnceForEachSlot)
{
    DATAstruct* const leaf = new_doubles(3, {1, 2, 3});
    auto tree = parent({leaf, new_parent({leaf}), leaf});
    TransformDATA(kShift, tree, tree);
    EXPECT_TRUE(same_bits({31, 62, 93}, leaf->dvals));
}

TEST(TransformDATA, LeavesTheLastSlotOfASharedOutputStanding)
{
    DATAstruct* const shared = new_doubles(3, {0, 0, 0});
    auto source =
        parent({new_doubles(3, {1, 1, 1}), new_parent({new_doubles(3, {2, 2, 2})}), new_doubles(3, {3, 3, 3})});
    auto output = parent({shared, new_parent({shared}), shared});
    TransformDATA(kShift, source, output);
    EXPECT_TRUE(same_bits({13, 23, 33}, shared->dvals));
}

TEST(TransformDATA, LooksAtNoDimOfArraysOfArrays)
{
    for (const int32_t dim : {1, 0, -1, 5}) {
        DATAstruct *const from = new_doubles(3, {1, 2, 3}), *const to = new_doubles(3, {7, 7, 7});
        void *sources[] = {nullptr, from}, *outputs[] = {nullptr, to};
        DATAstruct source, output;
        DATAInitialize(&source);
        DATAInitialize(&output);
        source.type = output.type = DATA_TYPE_DATA;
        source.count = output.count = 2;
        source.dim = dim;
        output.dim = 1;
        source.pvals = sources;
        output.pvals = outputs;
        TransformDATA(kShift, &source, &output);
        EXPECT_TRUE(same_bits({11, 22, 33}, to->dvals)) << dim;
        TransformDATA(kShift, &output, &source);
        EXPECT_TRUE(same_bits({21, 42, 63}, from->dvals)) << dim;
        release(from);
        release(to);
    }
}

} // namespace
} // namespace korvale::test
