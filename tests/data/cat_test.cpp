// DataCat and DATACat.
#include <limits>

#include <gtest/gtest.h>

#include "tests/data/generations.h"
#include "tests/support/arrays.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"

namespace korvale::test {
namespace {

constexpr int32_t kMost = std::numeric_limits<int32_t>::max();

template <class Array>
class Cat : public testing::Test {
};
TYPED_TEST_SUITE(Cat, Generations, GenerationNames);

template <class Array>
void expect_shape(const Array& d, int32_t type, int32_t count, int32_t dim)
{
    EXPECT_EQ(d.type, type);
    EXPECT_EQ(d.count, count);
    EXPECT_EQ(d.dim, dim);
}

TYPED_TEST(Cat, PutsTheSecondAfterTheFirst)
{
    auto first = points<TypeParam>({1, 2, 3, 4, 5, 6});
    auto second = points<TypeParam>({7, 8, 9, 10, 11, 12, 13, 14, 15});
    Owned<TypeParam> output;
    EXPECT_EQ(cat(first, second, output), 1);
    expect_shape(*output, DATA_TYPE_DOUBLE, 5, 3);
    EXPECT_TRUE(same_bits({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}, output->dvals));
}

TYPED_TEST(Cat, TakesIntegersAndBytes)
{
    auto first = ints<TypeParam>(2, {1, 2}), second = ints<TypeParam>(2, {3, 4, 5, 6});
    Owned<TypeParam> output;
    EXPECT_EQ(cat(first, second, output), 1);
    EXPECT_TRUE(same_values({1, 2, 3, 4, 5, 6}, output->ivals));
    auto third = bytes<TypeParam>(1, {250}), fourth = bytes<TypeParam>(1, {255, 0});
    EXPECT_EQ(cat(third, fourth, output), 1);
    const uint8_t expected[] = {250, 255, 0};
    expect_shape(*output, DATA_TYPE_BYTE, 3, 1);
    EXPECT_TRUE(same_values(expected, output->bvals, 3));
}

TYPED_TEST(Cat, DoublesAnArrayWithItself)
{
    auto d = doubles<TypeParam>(1, {1, 2});
    Owned<TypeParam> output;
    EXPECT_EQ(cat(d, d, output), 1);
    EXPECT_TRUE(same_bits({1, 2, 1, 2}, output->dvals));
}

TYPED_TEST(Cat, RefusesMismatchesAndLeavesTheOutputUntouched)
{
    auto d = points<TypeParam>({1, 2, 3});
    auto flat = doubles<TypeParam>(1, {1, 2, 3});
    auto whole = ints<TypeParam>(3, {1, 2, 3});
    Owned<TypeParam> empty;
    empty->dim = 3;
    auto output = doubles<TypeParam>(2, {7, 8});
    const double* const buffer = output->dvals;
    EXPECT_EQ(cat(d, flat, output), -1);
    EXPECT_EQ(cat(d, whole, output), -1);
    EXPECT_EQ(cat(d, empty, output), -1);
    empty->count = 0;
    EXPECT_EQ(cat(empty, d, output), -1);
    EXPECT_EQ(cat(d.get(), static_cast<TypeParam*>(nullptr), output.get()), -1);
    EXPECT_EQ(cat(static_cast<TypeParam*>(nullptr), d.get(), output.get()), -1);
    EXPECT_EQ(cat(d.get(), d.get(), static_cast<TypeParam*>(nullptr)), -1);
    EXPECT_EQ(output->dvals, buffer);
    expect_shape(*output, DATA_TYPE_DOUBLE, 1, 2);
    EXPECT_TRUE(same_bits({7, 8}, output->dvals));
}

TYPED_TEST(Cat, RefusesEqualDimsBelowOne)
{
    double values[4] = {1, 2, 3, 4};
    auto output = doubles<TypeParam>(1, {7});
    for (const int32_t dim : {0, -1}) {
        TypeParam d = wrapped<TypeParam>(values, 2, dim);
        EXPECT_EQ(cat(&d, &d, output.get()), -1);
    }
    EXPECT_TRUE(same_bits({7}, output->dvals));
}

TYPED_TEST(Cat, TakesAMissingBufferForAnEmptyArray)
{
    auto d = points<TypeParam>({1, 2, 3});
    TypeParam missing = wrapped<TypeParam>(nullptr, 1, 3);
    auto output = doubles<TypeParam>(1, {7});
    EXPECT_EQ(cat(d.get(), &missing, output.get()), -1);
    EXPECT_EQ(cat(&missing, d.get(), output.get()), -1);
    EXPECT_TRUE(same_bits({7}, output->dvals));
}

TYPED_TEST(Cat, RefusesToWriteOverAnInput)
{
    auto a = doubles<TypeParam>(1, {1, 2}), b = doubles<TypeParam>(1, {3});
    EXPECT_EQ(cat(a, b, a), -1);
    EXPECT_EQ(cat(a, b, b), -1);
    EXPECT_TRUE(same_bits({1, 2}, a->dvals));
    EXPECT_TRUE(same_bits({3}, b->dvals));
}

TYPED_TEST(Cat, SucceedsUncopiedOnAnUnknownKind)
{
    for (const int32_t type : {5, -1}) {
        Owned<TypeParam> d, output;
        d->type = type;
        d->count = 2;
        d->dim = 3;
        EXPECT_EQ(cat(d, d, output), 1);
        expect_shape(*output, type, 4, 3);
        EXPECT_EQ(output->dvals, nullptr);
    }
}

TYPED_TEST(Cat, RefusesMoreElementsThan31Bits)
{
    Owned<TypeParam> d, output;
    d->type = 9;
    d->count = kMost;
    d->dim = 1;
    EXPECT_EQ(cat(d, d, output), -1);
    expect_shape(*output, DATA_TYPE_DOUBLE, -1, -1);
    d->count = 16384;
    d->dim = 65536; // each fits, both together are 2^31
    EXPECT_EQ(cat(d, d, output), -1);
    expect_shape(*output, DATA_TYPE_DOUBLE, -1, -1);
}

TYPED_TEST(Cat, FailsWhenTheHeapIsExhausted)
{
    NEEDS_HEAP_FAILURES();
    EXPECT_EQ(fail_each_allocation([](int64_t n) {
                  double values[] = {1, 2, 3};
                  TypeParam d = wrapped<TypeParam>(values, 1, 3);
                  Owned<TypeParam> output;
                  EXPECT_EQ(cat(&d, &d, output.get()), n == 1 ? -1 : 1);
              }),
              1);
}

TYPED_TEST(Cat, ReleasesTheOutputItReplaces)
{
    const HeapWatch heap;
    {
        auto a = doubles<TypeParam>(1, {1, 2});
        auto output = ints<TypeParam>(4, {1, 2, 3, 4});
        EXPECT_EQ(cat(a, a, output), 1);
        EXPECT_EQ(cat(a, a, output), 1);
        EXPECT_EQ(output->ivals, nullptr);
    }
    EXPECT_EQ(heap.live_blocks(), 0);
}

TEST(DataCat, WritesAnOutputOfTheRightShapeInPlace)
{
    auto a = doubles<Data>(1, {1, 2}), output = doubles<Data>(1, {0, 0, 0, 0});
    const double* const buffer = output->dvals;
    const HeapWatch heap;
    EXPECT_EQ(DataCat(a, a, output), 1);
    EXPECT_EQ(output->dvals, buffer);
    EXPECT_EQ(heap.allocations(), 0);
    EXPECT_TRUE(same_bits({1, 2, 1, 2}, output->dvals));
}

TEST(DataCat, AllocatesAnOutputThatWasOnlyShaped)
{
    auto a = doubles<Data>(1, {1, 2});
    OwnedData output;
    output->count = 4;
    output->dim = 1;
    EXPECT_EQ(DataCat(a, a, output), 1);
    EXPECT_TRUE(same_bits({1, 2, 1, 2}, output->dvals));
}

TEST(DataCat, KnowsNoPointerKinds)
{
    for (const int32_t type : {DATA_TYPE_POINTER, DATA_TYPE_DATA}) {
        OwnedData d, output;
        d->type = type;
        d->count = d->dim = 2;
        EXPECT_EQ(DataCat(d, d, output), 1);
        expect_shape(*output, type, 4, 2);
    }
}

TEST(DATACat, ReusesTheCapacityOfTheOutput)
{
    auto a = doubles<DATAstruct>(1, {1, 2});
    auto output = array_of<DATAstruct>(DATA_TYPE_DOUBLE, 10, 3);
    const double* const buffer = output->dvals;
    EXPECT_EQ(DATACat(a, a, output), 1);
    EXPECT_EQ(output->dvals, buffer);
    expect_shape(*output, DATA_TYPE_DOUBLE, 4, 1);
    EXPECT_EQ(output->alloc_count, 10);
    EXPECT_EQ(output->alloc_dim, 3);
    EXPECT_TRUE(same_bits({1, 2, 1, 2}, output->dvals));
}

TEST(DATACat, SharesTheChildrenOfPointerKinds)
{
    auto a = parent({new_doubles(1, {1})}), b = parent({nullptr, new_doubles(1, {2})});
    OwnedDATA output;
    EXPECT_EQ(DATACat(a, b, output), 1);
    expect_shape(*output, DATA_TYPE_DATA, 3, 1);
    EXPECT_EQ(output->pvals[0], a->pvals[0]);
    EXPECT_EQ(output->pvals[1], nullptr);
    EXPECT_EQ(output->pvals[2], b->pvals[1]);
    DATANodeDispose(output);
    int x = 0;
    auto pointers = array_of<DATAstruct>(DATA_TYPE_POINTER, 1, 1);
    pointers->pvals[0] = &x;
    EXPECT_EQ(DATACat(pointers, pointers, output), 1);
    EXPECT_EQ(output->pvals[1], &x);
}

} // namespace
} // namespace korvale::test
