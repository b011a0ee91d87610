// DataCopy and DATACopy.
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/data/generations.h"
#include "tests/support/arrays.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"

namespace korvale::test {
namespace {

template <class Array>
class Copy : public testing::Test {
};
TYPED_TEST_SUITE(Copy, Generations, GenerationNames);

template <class Array>
void expect_shape(const Array& d, int32_t type, int32_t count, int32_t dim)
{
    EXPECT_EQ(d.type, type);
    EXPECT_EQ(d.count, count);
    EXPECT_EQ(d.dim, dim);
}

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
    expect_shape(*output, DATA_TYPE_DOUBLE, 1, 1);
    EXPECT_TRUE(same_bits({7}, output->dvals));
}

TYPED_TEST(Copy, RefusesToWriteOverItsSource)
{
    auto source = doubles<TypeParam>(1, {1, 2});
    EXPECT_EQ(copy(source, source), -1);
    expect_shape(*source, DATA_TYPE_DOUBLE, 2, 1);
    EXPECT_TRUE(same_bits({1, 2}, source->dvals));
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

} // namespace
} // namespace korvale::test
