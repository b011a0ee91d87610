// DataReverse, DATAReverse and DATASubReverse.
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "tests/data/generations.h"
#include "tests/support/arrays.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

template <class Array>
class Reverse : public testing::Test {
};
TYPED_TEST_SUITE(Reverse, Generations, GenerationNames);

TYPED_TEST(Reverse, ExchangesWholeElements)
{
    auto d = points<TypeParam>({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12});
    reverse(d);
    EXPECT_TRUE(same_bits({10, 11, 12, 7, 8, 9, 4, 5, 6, 1, 2, 3}, d->dvals));
}

TYPED_TEST(Reverse, KeepsTheMiddleOfAnOddCount)
{
    auto d = doubles<TypeParam>(1, {0, 1, 2, 3, 4});
    reverse(d);
    EXPECT_TRUE(same_bits({4, 3, 2, 1, 0}, d->dvals));
}

TYPED_TEST(Reverse, TakesIntegersAndBytes)
{
    auto whole = ints<TypeParam>(2, {1, 2, 3, 4, 5, 6});
    reverse(whole);
    EXPECT_TRUE(same_values({5, 6, 3, 4, 1, 2}, whole->ivals));
    auto small = bytes<TypeParam>(3, {1, 2, 3, 4, 5, 255});
    reverse(small);
    const uint8_t expected[] = {4, 5, 255, 1, 2, 3};
    EXPECT_TRUE(same_values(expected, small->bvals, 6));
}

TYPED_TEST(Reverse, LeavesOneElementAlone)
{
    auto d = points<TypeParam>({1, 2, 3});
    reverse(d);
    EXPECT_TRUE(same_bits({1, 2, 3}, d->dvals));
}

TYPED_TEST(Reverse, LeavesDimsBelowOneAlone)
{
    auto d = points<TypeParam>({1, 2, 3, 4, 5, 6});
    for (const int32_t dim : {0, -1}) {
        d->dim = dim;
        reverse(d);
    }
    EXPECT_TRUE(same_bits({1, 2, 3, 4, 5, 6}, d->dvals));
    d->dim = 3;
}

TYPED_TEST(Reverse, LeavesUnknownKindsAlone)
{
    auto d = points<TypeParam>({1, 2, 3, 4, 5, 6});
    for (const int32_t type : {5, -1}) {
        d->type = type;
        reverse(d);
    }
    EXPECT_TRUE(same_bits({1, 2, 3, 4, 5, 6}, d->dvals));
    d->type = DATA_TYPE_DOUBLE;
}

TYPED_TEST(Reverse, TakesAMissingBufferForAnEmptyArray)
{
    TypeParam d = wrapped<TypeParam>(nullptr, 4, 3);
    reverse(&d);
    d.type = DATA_TYPE_INT;
    reverse(&d);
    d.type = DATA_TYPE_BYTE;
    reverse(&d);
    EXPECT_EQ(d.count, 4);
}

TYPED_TEST(Reverse, TakesMemoryThatAHostHasWrapped)
{
    double values[] = {1, 2, 3, 4};
    TypeParam d = wrapped<TypeParam>(values, 2, 2);
    reverse(&d);
    EXPECT_TRUE(same_bits({3, 4, 1, 2}, values));
}

TYPED_TEST(Reverse, LeavesArraysOfMoreThan31BitsAlone)
{
    double values[] = {1, 2, 3, 4};
    TypeParam d = wrapped<TypeParam>(values, 65536, 32768);
    reverse(&d);
    EXPECT_TRUE(same_bits({1, 2, 3, 4}, values));
}

TYPED_TEST(Reverse, ReversesAnyShape)
{
    Random random(11);
    for (int round = 0; round < rounds(400); ++round) {
        const int count = random.between(1, 70),
                  dim = random.one_in(3) ? 3 : random.between(1, random.one_in(5) ? 100 : 9);
        const int kind = random.below(3);
        auto d = array_of<TypeParam>(kind, count, dim);
        std::vector<double> expected_doubles;
        std::vector<int> expected_ints;
        for (int i = 0; i < count * dim; ++i) {
            const int source = (count - 1 - i / dim) * dim + i % dim;
            if (kind == DATA_TYPE_DOUBLE)
                d->dvals[i] = i;
            else if (kind == DATA_TYPE_INT)
                d->ivals[i] = i;
            else
                d->bvals[i] = static_cast<uint8_t>(i);
            expected_doubles.push_back(source);
            expected_ints.push_back(kind == DATA_TYPE_BYTE ? source % 256 : source);
        }
        reverse(d);
        for (size_t i = 0; i < expected_ints.size(); ++i) {
            if (kind == DATA_TYPE_DOUBLE)
                ASSERT_EQ(d->dvals[i], expected_doubles[i]) << count << " x " << dim << " at " << i;
            else
                ASSERT_EQ(kind == DATA_TYPE_INT ? d->ivals[i] : d->bvals[i], expected_ints[i])
                    << count << " x " << dim << " at " << i;
        }
    }
}

TYPED_TEST(Reverse, NeedsNoHeap)
{
    NEEDS_HEAP_FAILURES();
    for (const int32_t dim : {3, 100}) {
        auto d = doubles<TypeParam>(dim, std::vector<double>(static_cast<size_t>(2 * dim), 1.0));
        d->dvals[0] = 2;
        const HeapWatch heap;
        const HeapFailure failure(1, HeapFailure::all_after);
        reverse(d);
        EXPECT_EQ(heap.allocations(), 0);
        EXPECT_EQ(d->dvals[dim], 2.0);
    }
}

TEST(DATAReverse, ExchangesTheSlotsOfPointerKinds)
{
    auto *const a = new_doubles(1, {1, 2}), *const b = new_doubles(1, {3});
    auto children = parent({a, b});
    DATAReverse(children);
    EXPECT_EQ(children->pvals[0], b);
    EXPECT_EQ(children->pvals[1], a);
    EXPECT_TRUE(same_bits({1, 2}, a->dvals));
    int x = 0, y = 0;
    auto pointers = array_of<DATAstruct>(DATA_TYPE_POINTER, 2, 1);
    pointers->pvals[0] = &x;
    pointers->pvals[1] = &y;
    DATAReverse(pointers);
    EXPECT_EQ(pointers->pvals[0], &y);
    EXPECT_EQ(pointers->pvals[1], &x);
}

TEST(DATAReverse, ReadsNothingBeyondTheCapacity)
{
    auto d = points<DATAstruct>({1, 2, 3, 4, 5, 6});
    d->count = 3;
    DATAReverse(d);
    EXPECT_TRUE(same_bits({1, 2, 3, 4, 5, 6}, d->dvals));
}

} // namespace
} // namespace korvale::test
