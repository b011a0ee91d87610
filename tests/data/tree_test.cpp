// Arrays of arrays: however deep they are, through whatever slot, and however often a record is reached.
#include <cstdlib>

#include <gtest/gtest.h>

#include "data/operations.h"
#include "tests/data/trees.h"
#include "tests/support/arrays.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"

namespace korvale::test {
namespace {

Xfm kShift = {{1, 0, 0, 10}, {0, 1, 0, 20}, {0, 0, 1, 30}, {0, 0, 0, 1}};

DATAstruct* child(const DATAstruct* d, int slot)
{
    return static_cast<DATAstruct*>(d->pvals[slot]);
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
    tree.type = DATA_TYPE_DATA;
    tree.count = tree.dim = 1;
    tree.pvals = slots;
    DATASubReverse(&tree);
    EXPECT_TRUE(same_bits({2, 1}, a->dvals));
    tree.alloc_dim = tree.alloc_count = 0; // as in a zero-filled record
    DATASubReverse(&tree);
    EXPECT_TRUE(same_bits({1, 2}, a->dvals));
    release(a);
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
