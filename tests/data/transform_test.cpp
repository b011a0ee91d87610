// TransformData and TransformDATA.
#include <cmath>
#include <cstdlib>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "tests/data/generations.h"
#include "tests/reference/arrays.h"
#include "tests/support/arrays.h"
#include "tests/support/bits.h"

namespace korvale::test {
namespace {

Xfm kShift = {{1, 0, 0, 10}, {0, 1, 0, 20}, {0, 0, 1, 30}, {0, 0, 0, 1}};

template <class Array>
class Transform : public testing::Test {
};
TYPED_TEST_SUITE(Transform, Generations, GenerationNames);

TYPED_TEST(Transform, CarriesEveryPoint)
{
    auto source = points<TypeParam>({1, 2, 3, 4, 5, 6}), output = points<TypeParam>({0, 0, 0, 0, 0, 0});
    transform(kShift, source, output);
    EXPECT_TRUE(same_bits({11, 22, 33, 14, 25, 36}, output->dvals));
    EXPECT_TRUE(same_bits({1, 2, 3, 4, 5, 6}, source->dvals));
}

TYPED_TEST(Transform, WritesOverItsInput)
{
    auto d = points<TypeParam>({1, 2, 3, 4, 5, 6});
    transform(kShift, d, d);
    EXPECT_TRUE(same_bits({11, 22, 33, 14, 25, 36}, d->dvals));
}

TYPED_TEST(Transform, DividesOnlyWhereTheFourthCoordinateIsNotOne)
{
    // The fourth coordinate is z: exactly 1, beside 1, 2, 0 and NaN, in all four places of a group and beyond.
    const double nan = std::numeric_limits<double>::quiet_NaN();
    Xfm m = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 1, 0}};
    const double heights[] = {1, std::nextafter(1.0, 2.0), std::nextafter(1.0, 0.0), 2, 0, -0.0, nan, 1};
    for (int n = 1; n <= 20; ++n)
        for (const double odd : heights)
            for (int at = 0; at < n; ++at) {
                std::vector<double> values(static_cast<size_t>(3 * n)), expected(values.size());
                for (int i = 0; i < n; ++i) {
                    values[static_cast<size_t>(3 * i)] = 3;
                    values[static_cast<size_t>(3 * i + 1)] = -7;
                    values[static_cast<size_t>(3 * i + 2)] = i == at ? odd : 1;
                }
                reference::carry_points(m, values.data(), n, expected.data());
                auto d = points<TypeParam>(values);
                transform(m, d, d);
                ASSERT_TRUE(same_bits(expected, d->dvals));
            }
}

TYPED_TEST(Transform, DoesNothingOnMismatchedShapes)
{
    auto source = points<TypeParam>({1, 2, 3, 4, 5, 6}), shorter = points<TypeParam>({7, 7, 7});
    auto narrow = doubles<TypeParam>(2, {7, 7, 7, 7}), wide = doubles<TypeParam>(4, std::vector<double>(8, 7));
    for (TypeParam* other : {shorter.get(), narrow.get(), wide.get()}) {
        transform(kShift, source.get(), other);
        EXPECT_EQ(other->dvals[0], 7.0);
        transform(kShift, other, source.get());
        EXPECT_EQ(source->dvals[0], 1.0);
    }
    transform(kShift, narrow, narrow);
    EXPECT_EQ(narrow->dvals[0], 7.0);
    transform(kShift, wide, wide);
    EXPECT_EQ(wide->dvals[0], 7.0);
}

TYPED_TEST(Transform, DoesNothingWithoutPoints)
{
    double values[] = {1, 2, 3};
    auto target = points<TypeParam>({7, 7, 7});
    for (const int32_t count : {0, -1}) {
        TypeParam source = wrapped<TypeParam>(values, count, 3), output = wrapped<TypeParam>(values, count, 3);
        transform(kShift, &source, &output);
    }
    EXPECT_TRUE(same_bits({1, 2, 3}, values));
    TypeParam missing = wrapped<TypeParam>(nullptr, 1, 3);
    transform(kShift, &missing, target.get());
    transform(kShift, target.get(), &missing);
    transform(kShift, static_cast<TypeParam*>(nullptr), target.get());
    transform(kShift, target.get(), static_cast<TypeParam*>(nullptr));
    TypeParam too_large = wrapped<TypeParam>(values, 1 << 30, 3);
    transform(kShift, &too_large, &too_large);
    EXPECT_TRUE(same_bits({7, 7, 7}, target->dvals));
    EXPECT_TRUE(same_bits({1, 2, 3}, values));
}

TYPED_TEST(Transform, WritesNothingBeyondTheLastPoint)
{
    for (int n = 1; n <= 20; ++n) {
        std::vector<double> from(static_cast<size_t>(3 * n), 1), to(static_cast<size_t>(3 * n + 6), 7);
        TypeParam source = wrapped<TypeParam>(from.data(), n, 3), output = wrapped<TypeParam>(to.data() + 3, n, 3);
        transform(kShift, &source, &output);
        for (const size_t at : {size_t{0}, size_t{1}, size_t{2}, to.size() - 3, to.size() - 2, to.size() - 1})
            ASSERT_EQ(to[at], 7.0) << n;
        ASSERT_EQ(to[to.size() - 4], 31.0);
    }
}

TYPED_TEST(Transform, ReadsWhatItHasWrittenWhereMemoryOverlaps)
{
    Xfm m = {{0.5, 0, 0, 1}, {0, 0.25, 0, 2}, {0, 0, 2, 3}, {0, 0, 0, 1}};
    for (int shift = -15; shift <= 15; ++shift) {
        double values[100], expected[100];
        for (int i = 0; i < 100; ++i)
            values[i] = expected[i] = i * i;
        TypeParam source = wrapped<TypeParam>(values + 20, 20, 3);
        TypeParam output = wrapped<TypeParam>(values + 20 + shift, 20, 3);
        reference::carry_points(m, expected + 20, 20, expected + 20 + shift);
        transform(m, &source, &output);
        EXPECT_TRUE(same_bits(expected, values, 100)) << shift;
    }
}

TEST(TransformData, DoesNotLookAtTheKinds)
{
    double from[] = {1, 2, 3}, to[3];
    Data source = wrapped<Data>(from, 1, 3), output = wrapped<Data>(to, 1, 3);
    source.type = DATA_TYPE_INT;
    TransformData(kShift, &source, &output);
    EXPECT_TRUE(same_bits({11, 22, 33}, to));
}

TEST(TransformDATA, WantsEqualKinds)
{
    double from[] = {1, 2, 3}, to[] = {7, 7, 7};
    DATAstruct source = wrapped<DATAstruct>(from, 1, 3), output = wrapped<DATAstruct>(to, 1, 3);
    source.type = DATA_TYPE_INT;
    TransformDATA(kShift, &source, &output);
    output.type = DATA_TYPE_INT;
    TransformDATA(kShift, &source, &output);
    source.type = output.type = 9;
    TransformDATA(kShift, &source, &output);
    EXPECT_TRUE(same_bits({7, 7, 7}, to));
}

TEST(TransformDATA, CarriesTheLeavesOfATree)
{
    auto source = parent({new_doubles(3, {1, 2, 3}), new_parent({new_doubles(3, {4, 5, 6, 7, 8, 9})})});
    auto output = parent({new_doubles(3, {0, 0, 0}), new_parent({new_doubles(3, {0, 0, 0, 0, 0, 0})})});
    TransformDATA(kShift, source, output);
    auto expected = parent({new_doubles(3, {11, 22, 33}), new_parent({new_doubles(3, {14, 25, 36, 17, 28, 39})})});
    EXPECT_TRUE(same_array(*expected, *output));
}

TEST(TransformDATA, WalksLongChainsWithoutRecursion)
{
    DATAstruct* const leaf = new_doubles(3, {1, 2, 3});
    DATAstruct* chain = leaf;
    for (int i = 0; i < 500000; ++i)
        chain = new_parent({chain});
    TransformDATA(kShift, chain, chain);
    EXPECT_TRUE(same_bits({11, 22, 33}, leaf->dvals));
    DATADispose(chain);
    std::free(chain);
}

TEST(TransformDATA, SkipsPairsThatDoNotMatch)
{
    auto source = parent({new_doubles(3, {1, 2, 3}), nullptr, new_doubles(3, {1, 2, 3}), new_doubles(3, {1, 2, 3}),
                          new_ints(3, {1, 2, 3}), new_doubles(3, {1, 2, 3})});
    auto output = parent({nullptr, new_doubles(3, {7, 7, 7}), new_doubles(2, {7, 7}),
                          new_doubles(3, {7, 7, 7, 7, 7, 7}), new_doubles(3, {7, 7, 7}), new_doubles(3, {7, 7, 7})});
    auto expected =
        parent({nullptr, new_doubles(3, {7, 7, 7}), new_doubles(2, {7, 7}), new_doubles(3, {7, 7, 7, 7, 7, 7}),
                new_doubles(3, {7, 7, 7}), new_doubles(3, {11, 22, 33})});
    TransformDATA(kShift, source, output);
    EXPECT_TRUE(same_array(*expected, *output));
}

TEST(TransformDATA, DoesNothingOnACountMismatch)
{
    auto source = parent({new_doubles(3, {1, 2, 3})});
    auto output = parent({new_doubles(3, {7, 7, 7}), nullptr});
    TransformDATA(kShift, source, output);
    EXPECT_EQ(static_cast<DATAstruct*>(output->pvals[0])->dvals[0], 7.0);
}

TEST(TransformDATA, PairsOneSlotPerElement)
{
    auto source = parent({new_doubles(3, {1, 2, 3}), new_doubles(3, {1, 2, 3})}, 2);
    auto output = parent({new_doubles(3, {7, 7, 7}), new_doubles(3, {7, 7, 7})}, 2);
    TransformDATA(kShift, source, output);
    EXPECT_EQ(static_cast<DATAstruct*>(output->pvals[0])->dvals[0], 11.0);
    EXPECT_EQ(static_cast<DATAstruct*>(output->pvals[1])->dvals[0], 7.0);
}

TEST(TransformDATA, ReadsNothingBeyondTheCapacity)
{
    auto source = points<DATAstruct>({1, 2, 3}), output = points<DATAstruct>({7, 7, 7, 8, 8, 8});
    source->count = 2;
    TransformDATA(kShift, source, output);
    EXPECT_EQ(output->dvals[0], 7.0);
    auto face = parent({new_doubles(3, {1, 2, 3})}), target = parent({new_doubles(3, {7, 7, 7}), nullptr});
    face->count = 2;
    TransformDATA(kShift, face, target);
    EXPECT_EQ(static_cast<DATAstruct*>(target->pvals[0])->dvals[0], 7.0);
    face->count = 1;
}

} // namespace
} // namespace korvale::test
