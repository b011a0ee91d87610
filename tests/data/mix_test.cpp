// DataMix, DATAMix, Data4Mix and DATA4Mix.
#include <gtest/gtest.h>

#include "tests/data/generations.h"
#include "tests/reference/arrays.h"
#include "tests/support/arrays.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"

namespace korvale::test {
namespace {

template <class Array>
class Mix : public testing::Test {
};
TYPED_TEST_SUITE(Mix, Generations, GenerationNames);

template <class Array>
void expect_shape(const Array& d, int32_t type, int32_t count, int32_t dim)
{
    EXPECT_EQ(d.type, type);
    EXPECT_EQ(d.count, count);
    EXPECT_EQ(d.dim, dim);
}

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

TYPED_TEST(Mix, ReadsWhatItHasWrittenWhereMemoryOverlaps)
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

TYPED_TEST(Mix, ReadsWhatItHasWrittenWhicheverInputOverlaps)
{
    for (int overlapping = 0; overlapping < 4; ++overlapping)
        for (int shift = -5; shift <= 5; ++shift) {
            double apart[40], values[60], expected[60];
            for (int i = 0; i < 60; ++i)
                values[i] = expected[i] = i * i;
            for (int i = 0; i < 40; ++i)
                apart[i] = 3 * i - 50;
            TypeParam inputs[4], output = wrapped<TypeParam>(values + 10 + shift, 40, 1);
            const double* plain[4];
            for (int k = 0; k < 4; ++k) {
                inputs[k] = wrapped<TypeParam>(k == overlapping ? values + 10 : apart, 40, 1);
                plain[k] = k == overlapping ? expected + 10 : apart;
            }
            const double w[] = {0.5, 0.25, -1, 2};
            reference::mix_four(plain[0], plain[1], plain[2], plain[3], w, 40, expected + 10 + shift);
            EXPECT_EQ(mix4(&inputs[0], &inputs[1], &inputs[2], &inputs[3], w[0], w[1], w[2], w[3], &output), 1);
            EXPECT_TRUE(same_bits(expected, values, 60)) << overlapping << " by " << shift;
            reference::mix(plain[0], plain[1], 0.5, 0.25, 40, expected + 10 + shift);
            EXPECT_EQ(mix(&inputs[0], &inputs[1], 0.5, 0.25, &output), 1);
            EXPECT_TRUE(same_bits(expected, values, 60)) << overlapping << " by " << shift;
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
