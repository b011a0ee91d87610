// Arrays around memory of the host, whose alloc_dim and alloc_count are below 1, and buffers that overlap.
#include <cstdlib>
#include <cstring>
#include <vector>

#include <gtest/gtest.h>

#include "tests/data/generations.h"
#include "tests/reference/arrays.h"
#include "tests/support/arrays.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"

namespace korvale::test {
namespace {

template <class Array>
class Overlapping : public testing::Test {
};
TYPED_TEST_SUITE(Overlapping, Generations, GenerationNames);

/// What a copy gives that moves one value after the other.
template <class T>
void copy_forward(const T* from, size_t n, T* to)
{
    for (size_t i = 0; i < n; ++i)
        to[i] = from[i];
}

/// An output of the library's own making over memory of the host: it has the room, so nothing is allocated.
Data over(double* values, int32_t count, int32_t dim, Data*)
{
    return wrapped<Data>(values, count, dim);
}

DATAstruct over(double* values, int32_t count, int32_t dim, DATAstruct*)
{
    DATAstruct d = wrapped<DATAstruct>(values, count, dim);
    d.alloc_count = count;
    d.alloc_dim = dim;
    return d;
}

TYPED_TEST(Overlapping, CopyGoesElementByElementFromTheFirst)
{
    TypeParam* const flavour = nullptr;
    for (int shift = -9; shift <= 9; ++shift) {
        if (shift == 0)
            continue;
        double values[60], expected[60];
        for (int i = 0; i < 60; ++i)
            values[i] = expected[i] = i;
        TypeParam source = wrapped<TypeParam>(values + 15, 10, 3);
        TypeParam output = over(values + 15 + shift, 10, 3, flavour);
        copy_forward(expected + 15, 30, expected + 15 + shift);
        EXPECT_EQ(copy(&source, &output), 1);
        EXPECT_TRUE(same_bits(expected, values, 60)) << shift;
    }
}

TYPED_TEST(Overlapping, CatGoesElementByElementFromTheFirst)
{
    TypeParam* const flavour = nullptr;
    for (int shift = -9; shift <= 9; ++shift) {
        double values[90], expected[90];
        for (int i = 0; i < 90; ++i)
            values[i] = expected[i] = i;
        TypeParam first = wrapped<TypeParam>(values + 15, 5, 3), second = wrapped<TypeParam>(values + 30, 7, 3);
        TypeParam output = over(values + 15 + shift, 12, 3, flavour);
        copy_forward(expected + 15, 15, expected + 15 + shift);
        copy_forward(expected + 30, 21, expected + 30 + shift);
        EXPECT_EQ(cat(&first, &second, &output), 1);
        EXPECT_TRUE(same_bits(expected, values, 90)) << shift;
        EXPECT_EQ(cat(&second, &first, &output), 1);
        copy_forward(expected + 30, 21, expected + 15 + shift);
        copy_forward(expected + 15, 15, expected + 36 + shift);
        EXPECT_TRUE(same_bits(expected, values, 90)) << shift;
    }
}

TYPED_TEST(Overlapping, CopyOfOtherKindsMovesTheirComponents)
{
    int32_t ints[40], expected[40];
    for (int i = 0; i < 40; ++i)
        ints[i] = expected[i] = i;
    TypeParam source = wrapped<TypeParam>(nullptr, 30, 1),
              output = over(nullptr, 30, 1, static_cast<TypeParam*>(nullptr));
    source.type = output.type = DATA_TYPE_INT;
    if constexpr (std::is_same_v<TypeParam, DATAstruct>)
        output.alloc_type = DATA_TYPE_INT;
    source.ivals = ints;
    output.ivals = ints + 3;
    copy_forward(expected, 30, expected + 3);
    EXPECT_EQ(copy(&source, &output), 1);
    EXPECT_TRUE(same_values(expected, ints, 40));
}

TYPED_TEST(Overlapping, TransformReadsAMatrixInsideItsOutputForEveryPoint)
{
    // The matrix is overwritten by the points that are carried by it.
    for (int at = -16; at <= 60; ++at) {
        double values[100], expected[100];
        for (int i = 0; i < 100; ++i)
            values[i] = expected[i] = (i * 37 % 19 - 9) / 8.0;
        std::vector<double> from(60);
        for (size_t i = 0; i < from.size(); ++i)
            from[i] = static_cast<double>(i * 11 % 7) - 3;
        TypeParam source = wrapped<TypeParam>(from.data(), 20, 3), output = wrapped<TypeParam>(values + 20, 20, 3);
        auto* const matrix = reinterpret_cast<double(*)[4]>(values + 20 + at);
        reference::carry_points(reinterpret_cast<double(*)[4]>(expected + 20 + at), from.data(), 20, expected + 20);
        transform(matrix, &source, &output);
        ASSERT_TRUE(same_bits(expected, values, 100)) << at;
    }
}

TYPED_TEST(Overlapping, TransformByNoMatrixDoesNothing)
{
    auto d = points<TypeParam>({1, 2, 3});
    transform(static_cast<double(*)[4]>(nullptr), d, d);
    EXPECT_TRUE(same_bits({1, 2, 3}, d->dvals));
}

/// A record around a buffer from malloc, as a host may build it.
DATAstruct around_malloc(const std::vector<double>& values, int32_t count, int32_t dim)
{
    const size_t bytes = values.size() * sizeof(double);
    auto* const buffer = static_cast<double*>(std::malloc(bytes));
    std::memcpy(buffer, values.data(), bytes);
    return wrapped<DATAstruct>(buffer, count, dim);
}

TEST(WrappedDATA, ReAllocateFreesTheMemoryAndKeepsNothing)
{
    const HeapWatch heap;
    for (const int32_t unset : {-1, 0}) {
        DATAstruct d = around_malloc({1, 2, 3}, 1, 3);
        d.alloc_count = d.alloc_dim = unset;
        d.count = 2;
        EXPECT_EQ(DATAReAllocate(&d), 1);
        EXPECT_EQ(d.alloc_count, 2);
        EXPECT_EQ(d.alloc_dim, 3);
        d.dvals[5] = 1;
        DATADispose(&d);
    }
    EXPECT_EQ(heap.live_blocks(), 0);
}

TEST(WrappedDATA, ReAllocateToNoElementsFreesTheMemoryWhicheverCapacityIsUnset)
{
    const HeapWatch heap;
    const int32_t unset[][2] = {{-1, -1}, {-1, 0}, {0, -1}, {-1, 3}, {3, -1}};
    for (const auto& capacity : unset) {
        DATAstruct d = around_malloc({1, 2, 3}, 0, 3);
        d.alloc_count = capacity[0];
        d.alloc_dim = capacity[1];
        EXPECT_EQ(DATAReAllocate(&d), 1);
        EXPECT_EQ(d.dvals, nullptr) << capacity[0] << " " << capacity[1];
        EXPECT_EQ(d.alloc_count, 0);
        EXPECT_EQ(d.alloc_dim, 3);
    }
    EXPECT_EQ(heap.live_blocks(), 0);
}

TEST(WrappedDATA, DisposeFreesTheMemory)
{
    const HeapWatch heap;
    DATAstruct d = around_malloc({1, 2, 3}, 1, 3);
    EXPECT_EQ(DATADispose(&d), 1);
    DATAstruct node = around_malloc({1, 2, 3}, 1, 3);
    DATANodeDispose(&node);
    EXPECT_EQ(heap.live_blocks(), 0);
}

TEST(WrappedDATA, OutputsLandInTheRecordAndNotInTheOldMemory)
{
    auto source = points<DATAstruct>({1, 2, 3});
    const auto expect_replaced = [&](auto&& work, const std::vector<double>& expected) {
        double values[12] = {7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7};
        DATAstruct output = wrapped<DATAstruct>(values, 4, 3);
        EXPECT_EQ(work(&output), 1);
        EXPECT_NE(output.dvals, values);
        EXPECT_TRUE(same_bits(expected, output.dvals));
        EXPECT_TRUE(same_bits(std::vector<double>(12, 7.0), values));
        DATADispose(&output);
    };
    expect_replaced([&](DATAstruct* output) { return DATACat(source, source, output); }, {1, 2, 3, 1, 2, 3});
    expect_replaced([&](DATAstruct* output) { return DATACopy(source, output); }, {1, 2, 3});
    expect_replaced([&](DATAstruct* output) { return DATABounds(source, output); }, {1, 2, 3, 1, 2, 3});
}

TEST(WrappedDATA, AMixOfTheShapeOfTheOutputLandsInTheMemory)
{
    auto source = points<DATAstruct>({1, 2, 3});
    double values[3] = {7, 7, 7};
    DATAstruct output = wrapped<DATAstruct>(values, 1, 3);
    EXPECT_EQ(DATAMix(source, source, 1, 1, &output), 1);
    EXPECT_EQ(output.dvals, values);
    EXPECT_TRUE(same_bits({2, 4, 6}, values));
}

} // namespace
} // namespace korvale::test
