// The tools of the tests themselves.
#include <cmath>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "korvale.h"
#include "tests/support/arrays.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

TEST(Heap, CountsTheAllocationsOfTheLibraryOnly)
{
    NEEDS_HEAP_FAILURES();
    const HeapWatch heap;
    Data* const d = DataNew();
    void* (*volatile const allocate)(size_t) = std::malloc;
    void* const own = allocate(10);
    EXPECT_EQ(heap.allocations(), 1);
    EXPECT_EQ(heap.live_blocks(), 2);
    std::free(own);
    EXPECT_EQ(heap.live_blocks(), 1);
    EXPECT_EQ(heap.frees(), 1);
    std::free(d);
    EXPECT_EQ(heap.live_blocks(), 0);
}

TEST(Heap, CountsLiveBlocks)
{
    NEEDS_HEAP_COUNTS();
    const HeapWatch heap;
    auto d = array_of<Data>(DATA_TYPE_DOUBLE, 4, 3);
    EXPECT_EQ(heap.live_blocks(), 1);
    DataDispose(d);
    EXPECT_EQ(heap.live_blocks(), 0);
}

TEST(Heap, FailsTheAllocationAskedFor)
{
    NEEDS_HEAP_FAILURES();
    const HeapFailure failure(2);
    Data* const first = DataNew();
    EXPECT_FALSE(failure.happened());
    Data* const second = DataNew();
    EXPECT_TRUE(failure.happened());
    Data* const third = DataNew();
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(second, nullptr);
    EXPECT_NE(third, nullptr);
    std::free(first);
    std::free(third);
}

TEST(Heap, FailsAllLaterAllocationsWhenAsked)
{
    NEEDS_HEAP_FAILURES();
    const HeapFailure failure(1, HeapFailure::all_after);
    EXPECT_EQ(DataNew(), nullptr);
    EXPECT_EQ(DATANew(), nullptr);
}

TEST(Heap, TriesEveryAllocationOnce)
{
    NEEDS_HEAP_FAILURES();
    int runs = 0;
    const auto failures = fail_each_allocation([&](int64_t n) {
        ++runs;
        Data* const first = DataNew();
        Data* const second = DataNew();
        EXPECT_EQ(first == nullptr, n == 1);
        EXPECT_EQ(second == nullptr, n == 2);
        std::free(first);
        std::free(second);
    });
    EXPECT_EQ(failures, 2);
    EXPECT_EQ(runs, 3);
}

TEST(Bits, TellZerosApartAndTakeEveryNaNForTheSame)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(same_bits(nan, -nan));
    EXPECT_FALSE(same_bits(nan, 1.0));
    EXPECT_FALSE(same_bits(0.0, -0.0));
    EXPECT_FALSE(same_bits(1.0, std::nextafter(1.0, 2.0)));
    EXPECT_TRUE(same_bits({1.0, nan, -0.0}, std::vector<double>{1.0, -nan, -0.0}));
}

TEST(Bits, NameTheElementsThatDiffer)
{
    const auto result = same_bits({1.0, 2.0, 3.0}, std::vector<double>{1.0, 2.5, 3.0});
    ASSERT_FALSE(result);
    EXPECT_NE(
        std::string(result.message()).find("1 of 3 elements differ:\n  [1] expected 2 [4000000000000000], is 2.5"),
        std::string::npos)
        << result.message();
}

TEST(Bits, CompareShapesAndTrees)
{
    auto a = parent({new_doubles(3, {1, 2, 3}), nullptr});
    auto b = parent({new_doubles(3, {1, 2, 3}), nullptr});
    EXPECT_TRUE(same_array(*a, *b));
    static_cast<DATAstruct*>(b->pvals[0])->dvals[2] = 4;
    EXPECT_FALSE(same_array(*a, *b));
    auto flat = doubles<Data>(1, {1, 2, 3});
    auto point = doubles<Data>(3, {1, 2, 3});
    EXPECT_FALSE(same_array(*flat, *point));
}

TEST(Random, GivesTheSameNumbersForASeed)
{
    Random random(1);
    EXPECT_EQ(random.bits(), 0x910a2dec89025cc1u);
    EXPECT_EQ(random.bits(), 0xbeeb8da1658eec67u);
}

TEST(Random, MakesEveryAwkwardKindOfValue)
{
    Random random(2);
    int nan = 0, infinite = 0, minus_zero = 0, denormal = 0;
    for (const double value : random.awkwards(1000)) {
        nan += std::isnan(value);
        infinite += std::isinf(value);
        minus_zero += value == 0 && std::signbit(value);
        denormal += std::fpclassify(value) == FP_SUBNORMAL;
    }
    EXPECT_GT(nan, 10);
    EXPECT_GT(infinite, 10);
    EXPECT_GT(minus_zero, 10);
    EXPECT_GT(denormal, 10);
}

} // namespace
} // namespace korvale::test
