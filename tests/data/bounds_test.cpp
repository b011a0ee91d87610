// DataBBox and DATABBox, which fill a box, and DataBounds and DATABounds, which make one.
#include <cstdlib>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "tests/data/generations.h"
#include "tests/support/arrays.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"

namespace korvale::test {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

template <class Array>
class BBox : public testing::Test {
};
TYPED_TEST_SUITE(BBox, Generations, GenerationNames);

template <class Array>
class Bounds : public testing::Test {
};
TYPED_TEST_SUITE(Bounds, Generations, GenerationNames);

TYPED_TEST(BBox, FillsABoxOfEitherShape)
{
    auto source = points<TypeParam>({1, 5, -3, 4, -2, 6, 0, 0, 0});
    auto row = array_of<TypeParam>(DATA_TYPE_DOUBLE, 1, 6);
    auto corners = array_of<TypeParam>(DATA_TYPE_DOUBLE, 2, 3);
    auto column = array_of<TypeParam>(DATA_TYPE_DOUBLE, 6, 1);
    for (auto* box : {row.get(), corners.get(), column.get()}) {
        EXPECT_EQ(bbox(source, box), 1);
        EXPECT_TRUE(same_bits({0, -2, -3, 4, 5, 6}, box->dvals));
    }
    EXPECT_EQ(row->dim, 6);
    EXPECT_EQ(corners->dim, 3);
}

TYPED_TEST(BBox, RefusesABoxOfAnotherSize)
{
    auto source = points<TypeParam>({1, 2, 3});
    for (const int32_t count : {1, 3}) {
        auto box = array_of<TypeParam>(DATA_TYPE_DOUBLE, count, 3);
        EXPECT_EQ(bbox(source, box), -1);
        EXPECT_EQ(box->dvals[0], 0.0);
    }
    Owned<TypeParam> empty;
    EXPECT_EQ(bbox(source, empty), -1);
}

TYPED_TEST(BBox, RefusesOtherKinds)
{
    auto source = points<TypeParam>({1, 2, 3});
    auto int_box = array_of<TypeParam>(DATA_TYPE_INT, 2, 3);
    EXPECT_EQ(bbox(source, int_box), -1);
    auto int_source = ints<TypeParam>(3, {1, 2, 3});
    EXPECT_EQ(bbox(int_source, int_box), -1);
    EXPECT_EQ(int_box->ivals[0], 0);
    auto box = array_of<TypeParam>(DATA_TYPE_DOUBLE, 2, 3);
    EXPECT_EQ(bbox(int_source, box), -1);
    source->type = box->type = 9;
    EXPECT_EQ(bbox(source, box), -1);
    source->type = box->type = DATA_TYPE_DOUBLE;
}

TYPED_TEST(BBox, RefusesASourceWithoutElements)
{
    auto box = array_of<TypeParam>(DATA_TYPE_DOUBLE, 2, 3);
    Owned<TypeParam> empty;
    EXPECT_EQ(bbox(empty, box), -1);
    double values[3] = {1, 2, 3};
    TypeParam source = wrapped<TypeParam>(values, 0, 3);
    EXPECT_EQ(bbox(&source, box), -1);
    source = wrapped<TypeParam>(values, 1, 0);
    EXPECT_EQ(bbox(&source, box), -1);
    source = wrapped<TypeParam>(nullptr, 1, 3);
    EXPECT_EQ(bbox(&source, box), -1);
    EXPECT_TRUE(same_bits({0, 0, 0, 0, 0, 0}, box->dvals));
    source = wrapped<TypeParam>(values, 1, 3);
    TypeParam no_buffer = wrapped<TypeParam>(nullptr, 2, 3);
    EXPECT_EQ(bbox(&source, &no_buffer), -1);
}

TYPED_TEST(BBox, TakesNullForNoRecord)
{
    auto d = array_of<TypeParam>(DATA_TYPE_DOUBLE, 2, 3);
    EXPECT_EQ(bbox(static_cast<TypeParam*>(nullptr), d.get()), -1);
    EXPECT_EQ(bbox(d.get(), static_cast<TypeParam*>(nullptr)), -1);
}

TYPED_TEST(BBox, GivesAPointTwiceForOnePoint)
{
    auto source = points<TypeParam>({1, -2, 3});
    auto box = array_of<TypeParam>(DATA_TYPE_DOUBLE, 2, 3);
    EXPECT_EQ(bbox(source, box), 1);
    EXPECT_TRUE(same_bits({1, -2, 3, 1, -2, 3}, box->dvals));
}

TYPED_TEST(BBox, NeverReplacesABoundByNaN)
{
    auto around = points<TypeParam>({1, 2, 3, kNaN, kNaN, kNaN, 0, 5, 3});
    auto corners = array_of<TypeParam>(DATA_TYPE_DOUBLE, 2, 3);
    EXPECT_EQ(bbox(around, corners), 1);
    EXPECT_TRUE(same_bits({0, 2, 3, 1, 5, 3}, corners->dvals));
    auto source = doubles<TypeParam>(1, {1, kNaN, 0, kNaN, 4, kNaN});
    auto box = array_of<TypeParam>(DATA_TYPE_DOUBLE, 2, 1);
    EXPECT_EQ(bbox(source, box), 1);
    EXPECT_TRUE(same_bits({0, 4}, box->dvals));
}

TYPED_TEST(BBox, KeepsANaNThatComesFirst)
{
    auto source = doubles<TypeParam>(1, {kNaN, 1, -7, 9, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17});
    auto box = array_of<TypeParam>(DATA_TYPE_DOUBLE, 2, 1);
    EXPECT_EQ(bbox(source, box), 1);
    EXPECT_TRUE(same_bits({kNaN, kNaN}, box->dvals));
    std::vector<double> many(900, 1.0);
    many[1] = kNaN;
    auto points_of = points<TypeParam>(many);
    auto corners = array_of<TypeParam>(DATA_TYPE_DOUBLE, 2, 3);
    EXPECT_EQ(bbox(points_of, corners), 1);
    EXPECT_TRUE(same_bits({1, kNaN, 1, 1, kNaN, 1}, corners->dvals));
}

TYPED_TEST(BBox, KeepsTheFirstOfEqualZeros)
{
    auto source = doubles<TypeParam>(2, {0.0, -0.0, -0.0, 0.0});
    auto box = array_of<TypeParam>(DATA_TYPE_DOUBLE, 2, 2);
    EXPECT_EQ(bbox(source, box), 1);
    EXPECT_TRUE(same_bits({0.0, -0.0, 0.0, -0.0}, box->dvals));
}

TYPED_TEST(BBox, ReadsPointsAgainOnWhichTheBoxLies)
{
    // The box lies on the last two points, which are read after the first corners were written there.
    double values[] = {1, 2, 3, 9, 9, 9, -9, -9, -9, 4, 5, 6};
    TypeParam source = wrapped<TypeParam>(values, 4, 3);
    TypeParam box = wrapped<TypeParam>(values + 6, 2, 3);
    EXPECT_EQ(bbox(&source, &box), 1);
    EXPECT_TRUE(same_bits({1, 2, 3, 9, 9, 9}, values + 6));
}

TYPED_TEST(Bounds, MakesTwoElementsOfTheSourcesDim)
{
    auto source = points<TypeParam>({1, 5, -3, 4, -2, 6, 0, 0, 0});
    Owned<TypeParam> output;
    EXPECT_EQ(bounds(source, output), 1);
    EXPECT_EQ(output->count, 2);
    EXPECT_EQ(output->dim, 3);
    EXPECT_EQ(output->type, DATA_TYPE_DOUBLE);
    EXPECT_TRUE(same_bits({0, -2, -3, 4, 5, 6}, output->dvals));
}

TYPED_TEST(Bounds, GivesEqualElementsForOnePoint)
{
    auto source = points<TypeParam>({1, -2, kInfinity});
    Owned<TypeParam> output;
    EXPECT_EQ(bounds(source, output), 1);
    EXPECT_TRUE(same_bits({1, -2, kInfinity, 1, -2, kInfinity}, output->dvals));
}

TYPED_TEST(Bounds, ReplacesAnOutputOfAnotherKind)
{
    const HeapWatch heap;
    auto source = points<TypeParam>({1, 2, 3});
    auto output = array_of<TypeParam>(DATA_TYPE_INT, 5, 5);
    EXPECT_EQ(bounds(source, output), 1);
    EXPECT_EQ(output->count, 2);
    EXPECT_EQ(output->dim, 3);
    EXPECT_EQ(output->ivals, nullptr);
    EXPECT_TRUE(same_bits({1, 2, 3, 1, 2, 3}, output->dvals));
    dispose(output);
    dispose(source);
    EXPECT_EQ(heap.live_blocks(), 0);
}

TYPED_TEST(Bounds, ShapesTheOutputBeforeItRefusesAKind)
{
    auto source = ints<TypeParam>(3, {1, 2, 3});
    Owned<TypeParam> output;
    EXPECT_EQ(bounds(source, output), -1);
    EXPECT_EQ(output->count, 2);
    EXPECT_EQ(output->dim, 3);
    EXPECT_EQ(output->type, DATA_TYPE_INT);
    EXPECT_NE(output->ivals, nullptr);
    auto byte_source = bytes<TypeParam>(2, {1, 2});
    EXPECT_EQ(bounds(byte_source, output), -1);
    EXPECT_EQ(output->type, DATA_TYPE_BYTE);
}

TYPED_TEST(Bounds, SucceedsOnAnUnknownKindWithNothingComputed)
{
    for (const int32_t type : {7, -1}) {
        Owned<TypeParam> source, output;
        source->type = type;
        source->count = source->dim = 3;
        EXPECT_EQ(bounds(source, output), 1);
        EXPECT_EQ(output->count, 2);
        EXPECT_EQ(output->dim, 3);
        EXPECT_EQ(output->type, type);
        EXPECT_EQ(output->dvals, nullptr);
    }
}

TYPED_TEST(Bounds, RefusesASourceWithoutElements)
{
    auto output = doubles<TypeParam>(1, {7});
    Owned<TypeParam> empty;
    EXPECT_EQ(bounds(empty, output), -1);
    double values[] = {1, 2, 3};
    for (const auto& [count, dim] : {std::pair{0, 3}, std::pair{3, 0}, std::pair{-1, -1}}) {
        TypeParam source = wrapped<TypeParam>(values, count, dim);
        EXPECT_EQ(bounds(&source, output), -1);
    }
    TypeParam no_buffer = wrapped<TypeParam>(nullptr, 1, 3);
    EXPECT_EQ(bounds(&no_buffer, output), -1);
    TypeParam too_large = wrapped<TypeParam>(values, 65536, 32768);
    EXPECT_EQ(bounds(&too_large, output), -1);
    EXPECT_EQ(bounds(static_cast<TypeParam*>(nullptr), output.get()), -1);
    EXPECT_EQ(bounds(empty.get(), static_cast<TypeParam*>(nullptr)), -1);
    EXPECT_TRUE(same_bits({7}, output->dvals));
    EXPECT_EQ(output->count, 1);
}

TYPED_TEST(Bounds, RefusesToWriteOverItsSource)
{
    auto source = points<TypeParam>({1, 2, 3, 4, 5, 6});
    EXPECT_EQ(bounds(source, source), -1);
    EXPECT_TRUE(same_bits({1, 2, 3, 4, 5, 6}, source->dvals));
}

TYPED_TEST(Bounds, FailsWhenTheHeapIsExhausted)
{
    NEEDS_HEAP_FAILURES();
    EXPECT_EQ(fail_each_allocation([](int64_t n) {
                  double values[] = {1, 2, 3};
                  TypeParam source = wrapped<TypeParam>(values, 1, 3);
                  Owned<TypeParam> output;
                  EXPECT_EQ(bounds(&source, output), n == 1 ? -1 : 1);
                  EXPECT_EQ(output->dvals == nullptr, n == 1);
              }),
              1);
}

TEST(DataBounds, DisposesAnOutputThatIsTooSmallOrOfAnotherKind)
{
    NEEDS_HEAP_COUNTS();
    auto source = points<Data>({1, 2, 3});
    const struct {
        int32_t type, count, dim;
    } shapes[] = {{DATA_TYPE_DOUBLE, 5, 2}, {DATA_TYPE_DOUBLE, 1, 3}, {DATA_TYPE_INT, 5, 5}};
    for (const auto& shape : shapes) {
        auto output = array_of<Data>(shape.type, shape.count, shape.dim);
        const HeapWatch heap;
        EXPECT_EQ(DataBounds(source, output), 1);
        EXPECT_EQ(heap.live_blocks(), 0);
    }
}

TEST(DataBounds, DoesNotReleaseABufferThatIsLargeEnough)
{
    NEEDS_HEAP_COUNTS();
    auto source = points<Data>({1, 2, 3});
    const struct {
        int32_t count, dim;
    } shapes[] = {{2, 3}, {5, 5}};
    for (const auto& shape : shapes) {
        auto output = array_of<Data>(DATA_TYPE_DOUBLE, shape.count, shape.dim);
        double* const replaced = output->dvals;
        const HeapWatch heap;
        EXPECT_EQ(DataBounds(source, output), 1);
        EXPECT_EQ(heap.live_blocks(), 1);
        EXPECT_NE(output->dvals, replaced);
        EXPECT_EQ(output->count, 2);
        EXPECT_EQ(output->dim, 3);
        std::free(replaced);
    }
}

TEST(DATABounds, ReusesABufferThatIsLargeEnough)
{
    auto source = points<DATAstruct>({1, 2, 3});
    auto output = array_of<DATAstruct>(DATA_TYPE_DOUBLE, 5, 5);
    const double* const buffer = output->dvals;
    const HeapWatch heap;
    EXPECT_EQ(DATABounds(source, output), 1);
    EXPECT_EQ(output->dvals, buffer);
    EXPECT_EQ(output->count, 2);
    EXPECT_EQ(output->dim, 3);
    EXPECT_EQ(output->alloc_count, 5);
    EXPECT_EQ(heap.live_blocks(), 0);
}

TEST(DATABounds, RefusesPointerKindsAfterShapingTheOutput)
{
    for (const int32_t type : {DATA_TYPE_POINTER, DATA_TYPE_DATA}) {
        auto source = array_of<DATAstruct>(type, 4, 2);
        OwnedDATA output;
        EXPECT_EQ(DATABounds(source, output), -1);
        EXPECT_EQ(output->type, type);
        EXPECT_EQ(output->count, 2);
        EXPECT_NE(output->pvals, nullptr);
    }
}

} // namespace
} // namespace korvale::test
