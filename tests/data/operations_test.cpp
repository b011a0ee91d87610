// Concatenation, copies and mixes.
#include <cstdlib>
#include <cstring>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "tests/data/generations.h"
#include "tests/reference/arrays.h"
#include "tests/support/arrays.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

constexpr int32_t kMost = std::numeric_limits<int32_t>::max();

template <class Array>
class Cat : public testing::Test {
};
TYPED_TEST_SUITE(Cat, Generations);

template <class Array>
class Copy : public testing::Test {
};
TYPED_TEST_SUITE(Copy, Generations);

template <class Array>
class Mix : public testing::Test {
};
TYPED_TEST_SUITE(Mix, Generations);

template <class Array>
void expect_shape(const Array& d, int32_t type, int32_t count, int32_t dim)
{
    EXPECT_EQ(d.type, type);
    EXPECT_EQ(d.count, count);
    EXPECT_EQ(d.dim, dim);
}

// Concatenation.

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

// Copies.

TYPED_TEST(Copy, CopiesTheElements)
{
    auto source = points<TypeParam>({1, 2, 3, 4, 5, -0.0});
    Owned<TypeParam> output;
    EXPECT_EQ(copy(source, output), 1);
    expect_shape(*output, DATA_TYPE_DOUBLE, 2, 3);
    EXPECT_TRUE(same_bits({1, 2, 3, 4, 5, -0.0}, output->dvals));
    EXPECT_NE(output->dvals, source->dvals);
    auto whole = ints<TypeParam>(3, {1, -2, 3});
    EXPECT_EQ(copy(whole, output), 1);
    expect_shape(*output, DATA_TYPE_INT, 1, 3);
    EXPECT_TRUE(same_values({1, -2, 3}, output->ivals));
}

TYPED_TEST(Copy, RefusesASourceWithoutElements)
{
    auto output = doubles<TypeParam>(1, {7});
    double values[] = {1, 2, 3};
    for (const auto& [count, dim] : {std::pair{0, 3}, std::pair{3, 0}, std::pair{-1, -1}}) {
        TypeParam source = wrapped<TypeParam>(values, count, dim);
        EXPECT_EQ(copy(&source, output.get()), -1);
    }
    TypeParam missing = wrapped<TypeParam>(nullptr, 1, 3);
    EXPECT_EQ(copy(&missing, output.get()), -1);
    TypeParam too_large = wrapped<TypeParam>(values, 65536, 32768);
    EXPECT_EQ(copy(&too_large, output.get()), -1);
    EXPECT_EQ(copy(static_cast<TypeParam*>(nullptr), output.get()), -1);
    EXPECT_EQ(copy(&missing, static_cast<TypeParam*>(nullptr)), -1);
    EXPECT_EQ(copy(output, output), -1);
    expect_shape(*output, DATA_TYPE_DOUBLE, 1, 1);
    EXPECT_TRUE(same_bits({7}, output->dvals));
}

TYPED_TEST(Copy, SucceedsUncopiedOnAnUnknownKind)
{
    for (const int32_t type : {5, -1}) {
        Owned<TypeParam> source;
        source->type = type;
        source->count = 2;
        source->dim = 3;
        auto output = doubles<TypeParam>(1, {7});
        EXPECT_EQ(copy(source, output), 1);
        expect_shape(*output, type, 2, 3);
        EXPECT_EQ(output->dvals, nullptr);
    }
}

TYPED_TEST(Copy, FailsWhenTheHeapIsExhausted)
{
    NEEDS_HEAP_FAILURES();
    EXPECT_EQ(fail_each_allocation([](int64_t n) {
                  double values[] = {1, 2, 3};
                  TypeParam source = wrapped<TypeParam>(values, 1, 3);
                  Owned<TypeParam> output;
                  EXPECT_EQ(copy(&source, output.get()), n == 1 ? -1 : 1);
              }),
              1);
}

TEST(DataCopy, LeavesALargerOutputItsShape)
{
    auto source = points<Data>({1, 2, 3, 4, 5, 6});
    auto output = doubles<Data>(3, std::vector<double>(30, 9.0));
    const double* const buffer = output->dvals;
    EXPECT_EQ(DataCopy(source, output), 1);
    expect_shape(*output, DATA_TYPE_DOUBLE, 10, 3);
    EXPECT_EQ(output->dvals, buffer);
    std::vector<double> expected(30, 9.0);
    for (int i = 0; i < 6; ++i)
        expected[static_cast<size_t>(i)] = i + 1;
    EXPECT_TRUE(same_bits(expected, output->dvals));
}

TEST(DataCopy, WritesByFlatIndexIntoAWiderOutput)
{
    auto source = doubles<Data>(2, {1, 2, 3, 4});
    auto output = doubles<Data>(3, std::vector<double>(6, 9.0));
    EXPECT_EQ(DataCopy(source, output), 1);
    expect_shape(*output, DATA_TYPE_DOUBLE, 2, 3);
    EXPECT_TRUE(same_bits({1, 2, 3, 4, 9, 9}, output->dvals));
}

TEST(DataCopy, ReshapesAnOutputThatIsNarrowerOrShorterOrOfAnotherKind)
{
    const HeapWatch heap;
    {
        auto source = points<Data>({1, 2, 3, 4, 5, 6});
        for (const auto& [type, count, dim] : {std::tuple{0, 10, 2}, std::tuple{0, 1, 10}, std::tuple{1, 10, 10}}) {
            auto output = array_of<Data>(type, count, dim);
            EXPECT_EQ(DataCopy(source, output), 1);
            expect_shape(*output, DATA_TYPE_DOUBLE, 2, 3);
            EXPECT_TRUE(same_bits({1, 2, 3, 4, 5, 6}, output->dvals));
        }
    }
    EXPECT_EQ(heap.live_blocks(), 0);
}

TEST(DataCopy, AllocatesAnOutputThatWasOnlyShaped)
{
    auto source = points<Data>({1, 2, 3});
    OwnedData output;
    output->count = output->dim = 5;
    EXPECT_EQ(DataCopy(source, output), 1);
    expect_shape(*output, DATA_TYPE_DOUBLE, 1, 3);
    EXPECT_TRUE(same_bits({1, 2, 3}, output->dvals));
}

TEST(DataCopy, RefusesBytesAfterShapingTheOutput)
{
    auto source = bytes<Data>(1, {1, 2, 3});
    OwnedData output;
    EXPECT_EQ(DataCopy(source, output), -1);
    expect_shape(*output, DATA_TYPE_BYTE, 3, 1);
    EXPECT_NE(output->bvals, nullptr);
}

TEST(DATACopy, GivesTheOutputTheShapeOfTheSourceAndKeepsTheCapacity)
{
    auto source = points<DATAstruct>({1, 2, 3, 4, 5, 6});
    auto output = array_of<DATAstruct>(DATA_TYPE_DOUBLE, 10, 3);
    const double* const buffer = output->dvals;
    EXPECT_EQ(DATACopy(source, output), 1);
    expect_shape(*output, DATA_TYPE_DOUBLE, 2, 3);
    EXPECT_EQ(output->dvals, buffer);
    EXPECT_EQ(output->alloc_count, 10);
    EXPECT_TRUE(same_bits({1, 2, 3, 4, 5, 6}, output->dvals));
}

TEST(DATACopy, CopiesBytes)
{
    auto source = bytes<DATAstruct>(1, {1, 2, 255});
    OwnedDATA output;
    EXPECT_EQ(DATACopy(source, output), 1);
    const uint8_t expected[] = {1, 2, 255};
    EXPECT_TRUE(same_values(expected, output->bvals, 3));
}

TEST(DATACopy, SharesTheChildrenOfPointerKinds)
{
    auto source = parent({new_doubles(1, {1}), nullptr});
    OwnedDATA output;
    EXPECT_EQ(DATACopy(source, output), 1);
    expect_shape(*output, DATA_TYPE_DATA, 2, 1);
    EXPECT_EQ(output->pvals[0], source->pvals[0]);
    EXPECT_EQ(output->pvals[1], nullptr);
    DATANodeDispose(output);
    int x = 0;
    auto pointers = array_of<DATAstruct>(DATA_TYPE_POINTER, 1, 1);
    pointers->pvals[0] = &x;
    EXPECT_EQ(DATACopy(pointers, output), 1);
    EXPECT_EQ(output->pvals[0], &x);
}

// Mixes.

TYPED_TEST(Mix, ReproducesAnInputOfWeightOne)
{
    auto a = points<TypeParam>({1, 2, 3}), b = points<TypeParam>({4, 5, 6});
    Owned<TypeParam> output;
    EXPECT_EQ(mix(a, b, 1, 0, output), 1);
    expect_shape(*output, DATA_TYPE_DOUBLE, 1, 3);
    EXPECT_TRUE(same_bits({1, 2, 3}, output->dvals));
}

TYPED_TEST(Mix, GivesMidpointsForHalves)
{
    auto a = points<TypeParam>({1, 2, 3, 0, 0, 0}), b = points<TypeParam>({4, 5, 6, 8, -8, 2});
    Owned<TypeParam> output;
    EXPECT_EQ(mix(a, b, 0.5, 0.5, output), 1);
    EXPECT_TRUE(same_bits({2.5, 3.5, 4.5, 4, -4, 1}, output->dvals));
}

TYPED_TEST(Mix, OfFourSumsFromTheLeft)
{
    auto a = doubles<TypeParam>(1, {1, 1e16}), b = doubles<TypeParam>(1, {1e16, -1e16});
    auto c = doubles<TypeParam>(1, {-1e16, 1}), d = doubles<TypeParam>(1, {1, 2});
    Owned<TypeParam> output;
    EXPECT_EQ(mix4(a, b, c, d, 1, 1, 1, 1, output), 1);
    expect_shape(*output, DATA_TYPE_DOUBLE, 2, 1);
    EXPECT_TRUE(same_bits({1, 3}, output->dvals));
}

TYPED_TEST(Mix, OfFourUsesTheWeightsAsGiven)
{
    auto a = doubles<TypeParam>(1, {1}), b = doubles<TypeParam>(1, {2});
    auto c = doubles<TypeParam>(1, {3}), d = doubles<TypeParam>(1, {4});
    Owned<TypeParam> output;
    EXPECT_EQ(mix4(a, b, c, d, 1000, 100, 10, 1, output), 1);
    EXPECT_EQ(output->dvals[0], 1234.0);
}

TYPED_TEST(Mix, WritesAnOutputOfTheRightShapeInPlace)
{
    auto a = doubles<TypeParam>(1, {1, 2}), b = doubles<TypeParam>(1, {3, 4}), output = doubles<TypeParam>(1, {0, 0});
    const double* const buffer = output->dvals;
    EXPECT_EQ(mix(a, b, 1, 1, output), 1);
    EXPECT_EQ(output->dvals, buffer);
    EXPECT_TRUE(same_bits({4, 6}, output->dvals));
    EXPECT_EQ(mix(a, b, 1, 1, a), 1);
    EXPECT_TRUE(same_bits({4, 6}, a->dvals));
    EXPECT_EQ(mix(a, b, 1, -1, b), 1);
    EXPECT_TRUE(same_bits({1, 2}, b->dvals));
    EXPECT_EQ(mix4(a, b, a, b, 1, 1, 1, 1, a), 1);
    EXPECT_TRUE(same_bits({10, 16}, a->dvals));
}

TYPED_TEST(Mix, ReplacesAnOutputOfAnotherShape)
{
    const HeapWatch heap;
    {
        auto a = points<TypeParam>({1, 2, 3}), b = points<TypeParam>({4, 5, 6});
        for (const auto& [type, count, dim] : {std::tuple{0, 2, 3}, std::tuple{0, 1, 4}, std::tuple{1, 1, 3}}) {
            auto output = array_of<TypeParam>(type, count, dim);
            EXPECT_EQ(mix(a, b, 1, 1, output), 1);
            expect_shape(*output, DATA_TYPE_DOUBLE, 1, 3);
            EXPECT_TRUE(same_bits({5, 7, 9}, output->dvals));
            auto other = array_of<TypeParam>(type, count, dim);
            EXPECT_EQ(mix4(a, b, a, b, 1, 1, 1, 1, other), 1);
            EXPECT_TRUE(same_bits({10, 14, 18}, other->dvals));
        }
    }
    EXPECT_EQ(heap.live_blocks(), 0);
}

TYPED_TEST(Mix, AllocatesAnOutputThatWasOnlyShaped)
{
    auto a = points<TypeParam>({1, 2, 3});
    Owned<TypeParam> output;
    output->count = 1;
    output->dim = 3;
    EXPECT_EQ(mix(a, a, 1, 1, output), 1);
    EXPECT_TRUE(same_bits({2, 4, 6}, output->dvals));
}

TYPED_TEST(Mix, RefusesMismatchedInputsAndLeavesTheOutputUntouched)
{
    auto a = points<TypeParam>({1, 2, 3}), flat = doubles<TypeParam>(1, {1, 2, 3});
    auto longer = points<TypeParam>({1, 2, 3, 4, 5, 6}), wider = doubles<TypeParam>(4, {1, 2, 3, 4});
    auto whole = ints<TypeParam>(3, {1, 2, 3});
    auto output = doubles<TypeParam>(1, {7});
    TypeParam missing = wrapped<TypeParam>(nullptr, 1, 3);
    for (TypeParam* wrong :
         {flat.get(), longer.get(), wider.get(), whole.get(), &missing, static_cast<TypeParam*>(nullptr)}) {
        EXPECT_EQ(mix(a.get(), wrong, 1, 1, output.get()), -1);
        EXPECT_EQ(mix(wrong, a.get(), 1, 1, output.get()), -1);
        EXPECT_EQ(mix4(wrong, a.get(), a.get(), a.get(), 1, 1, 1, 1, output.get()), -1);
        EXPECT_EQ(mix4(a.get(), wrong, a.get(), a.get(), 1, 1, 1, 1, output.get()), -1);
        EXPECT_EQ(mix4(a.get(), a.get(), wrong, a.get(), 1, 1, 1, 1, output.get()), -1);
        EXPECT_EQ(mix4(a.get(), a.get(), a.get(), wrong, 1, 1, 1, 1, output.get()), -1);
    }
    EXPECT_EQ(mix(a.get(), a.get(), 1, 1, static_cast<TypeParam*>(nullptr)), -1);
    Owned<TypeParam> empty;
    EXPECT_EQ(mix(empty, empty, 1, 1, output), -1);
    empty->count = 0;
    empty->dim = 3;
    EXPECT_EQ(mix4(empty, empty, empty, empty, 1, 1, 1, 1, output), -1);
    empty->count = 3;
    empty->dim = 0;
    EXPECT_EQ(mix(empty, empty, 1, 1, output), -1);
    expect_shape(*output, DATA_TYPE_DOUBLE, 1, 1);
    EXPECT_TRUE(same_bits({7}, output->dvals));
}

TYPED_TEST(Mix, ReshapesTheOutputBeforeItRefusesAKind)
{
    auto a = ints<TypeParam>(3, {1, 2, 3});
    auto output = doubles<TypeParam>(1, {7});
    EXPECT_EQ(mix(a, a, 1, 1, output), -1);
    expect_shape(*output, DATA_TYPE_INT, 1, 3);
    EXPECT_NE(output->ivals, nullptr);
    auto other = doubles<TypeParam>(1, {7});
    EXPECT_EQ(mix4(a, a, a, a, 1, 1, 1, 1, other), -1);
    expect_shape(*other, DATA_TYPE_INT, 1, 3);
    auto small = bytes<TypeParam>(2, {1, 2});
    EXPECT_EQ(mix(small, small, 1, 1, output), -1);
    expect_shape(*output, DATA_TYPE_BYTE, 1, 2);
}

TYPED_TEST(Mix, SucceedsOnAnUnknownKindWithNothingComputed)
{
    for (const int32_t type : {5, -1}) {
        Owned<TypeParam> a;
        a->type = type;
        a->count = 2;
        a->dim = 3;
        auto output = doubles<TypeParam>(1, {7});
        EXPECT_EQ(mix(a, a, 1, 1, output), 1);
        expect_shape(*output, type, 2, 3);
        auto other = doubles<TypeParam>(1, {7});
        EXPECT_EQ(mix4(a, a, a, a, 1, 1, 1, 1, other), 1);
        expect_shape(*other, type, 2, 3);
    }
}

TYPED_TEST(Mix, FailsWhenTheHeapIsExhausted)
{
    NEEDS_HEAP_FAILURES();
    EXPECT_EQ(fail_each_allocation([](int64_t n) {
                  double values[] = {1, 2, 3};
                  TypeParam a = wrapped<TypeParam>(values, 1, 3);
                  Owned<TypeParam> output, other;
                  EXPECT_EQ(mix(&a, &a, 1, 1, output.get()), n == 1 ? -1 : 1);
                  EXPECT_EQ(mix4(&a, &a, &a, &a, 1, 1, 1, 1, other.get()), n == 2 ? -1 : 1);
              }),
              2);
}

TYPED_TEST(Mix, EqualsTheStepsOnAnyValues)
{
    Random random(13);
    for (int round = 0; round < rounds(1000); ++round) {
        const int dim = random.between(1, 4), count = random.one_in(4) ? random.between(1, 300) : random.between(1, 20);
        const int64_t n = static_cast<int64_t>(count) * dim;
        std::vector<double> in[4], expected(static_cast<size_t>(n));
        for (auto& values : in)
            values = random.one_in(2) ? random.awkwards(n) : random.uniforms(n, -1, 1);
        const double w[] = {random.awkward(), random.uniform(-2, 2), random.uniform(-2, 2), random.awkward()};
        auto a = doubles<TypeParam>(dim, in[0]), b = doubles<TypeParam>(dim, in[1]);
        auto c = doubles<TypeParam>(dim, in[2]), d = doubles<TypeParam>(dim, in[3]);
        Owned<TypeParam> output;
        reference::mix(in[0].data(), in[1].data(), w[0], w[1], n, expected.data());
        ASSERT_EQ(mix(a, b, w[0], w[1], output), 1);
        ASSERT_TRUE(same_bits(expected, output->dvals));
        reference::mix_four(in[0].data(), in[1].data(), in[2].data(), in[3].data(), w, n, expected.data());
        ASSERT_EQ(mix4(a, b, c, d, w[0], w[1], w[2], w[3], output), 1);
        ASSERT_TRUE(same_bits(expected, output->dvals));
        ASSERT_EQ(mix4(a, b, c, d, w[0], w[1], w[2], w[3], c), 1) << "in place";
        ASSERT_TRUE(same_bits(expected, c->dvals));
    }
}

TYPED_TEST(Mix, WorksOnOverlappingMemoryAsTheStepsDo)
{
    // The output starts one value after the input: each result is read again by the next.
    for (int shift = -5; shift <= 5; ++shift) {
        double values[60], expected[60];
        for (int i = 0; i < 60; ++i)
            values[i] = expected[i] = i * i;
        TypeParam a = wrapped<TypeParam>(values + 10, 40, 1), output = wrapped<TypeParam>(values + 10 + shift, 40, 1);
        reference::mix(expected + 10, expected + 10, 0.5, 0.25, 40, expected + 10 + shift);
        EXPECT_EQ(mix(&a, &a, 0.5, 0.25, &output), 1);
        EXPECT_TRUE(same_bits(expected, values, 60)) << shift;
        const double w[] = {0.5, 0.25, -1, 2};
        reference::mix_four(expected + 10, expected + 10, expected + 10, expected + 10, w, 40, expected + 10 + shift);
        EXPECT_EQ(mix4(&a, &a, &a, &a, w[0], w[1], w[2], w[3], &output), 1);
        EXPECT_TRUE(same_bits(expected, values, 60)) << shift;
    }
}

TEST(DATAMix, RefusesPointerKindsAfterReshaping)
{
    for (const int32_t type : {DATA_TYPE_POINTER, DATA_TYPE_DATA}) {
        auto a = array_of<DATAstruct>(type, 2, 3);
        OwnedDATA output;
        EXPECT_EQ(DATAMix(a, a, 1, 1, output), -1);
        expect_shape(*output, type, 2, 3);
        EXPECT_NE(output->pvals, nullptr);
    }
}

TEST(DATAMix, DisposesTheOutputWithItsChildren)
{
    const HeapWatch heap;
    {
        auto a = points<DATAstruct>({1, 2, 3});
        auto output = parent({new_doubles(1, {1}), new_doubles(1, {2})});
        EXPECT_EQ(DATAMix(a, a, 1, 1, output), 1);
        EXPECT_TRUE(same_bits({2, 4, 6}, output->dvals));
        EXPECT_EQ(output->pvals, nullptr);
    }
    EXPECT_EQ(heap.live_blocks(), 0);
}

TEST(DataMix, KnowsNoPointerKinds)
{
    for (const int32_t type : {DATA_TYPE_POINTER, DATA_TYPE_DATA}) {
        OwnedData a, output;
        a->type = type;
        a->count = a->dim = 2;
        EXPECT_EQ(DataMix(a, a, 1, 1, output), 1);
        expect_shape(*output, type, 2, 2);
    }
}

} // namespace
} // namespace korvale::test
