// DataTriSample and DATATriSample.
#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "platform/layer.h"
#include "tests/data/generations.h"
#include "tests/data/sample.h"
#include "tests/support/arrays.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

/// A triangle whose points are their own weights.
const std::vector<double> kWeights = {1, 0, 0, 0, 1, 0, 0, 0, 1};

template <class Array>
class TriSample : public testing::Test {
protected:
    static constexpr Array* kNone = nullptr;

    /// `count` points on the triangles given.
    std::vector<double> samples(const std::vector<double>& triangles, unsigned seed, int32_t count)
    {
        auto t = doubles<Array>(9, triangles);
        auto p = array_of<Array>(DATA_TYPE_DOUBLE, count, 3);
        sample(t.get(), seed, p.get(), kNone, kNone);
        return values_of(*p);
    }

    /// Expects that the call writes no point and leaves the generator alone.
    void expect_nothing(Array* triangles, Array* points)
    {
        Mwsrand(99);
        sample(triangles, 1, points, kNone, kNone);
        const int draw = Mwrand();
        Mwsrand(99);
        EXPECT_EQ(draw, Mwrand());
    }
};
TYPED_TEST_SUITE(TriSample, Generations, GenerationNames);

TYPED_TEST(TriSample, GivesTheKnownPointsOfASeed)
{
    // The draws of seed 1: 41 (triangle), 18467, 6334, then 26500 (triangle), 19169, 15724, which are folded.
    const double u0 = 18467 / 32767.0, v0 = 6334 / 32767.0;
    const double u1 = 1 - 19169 / 32767.0, v1 = 1 - 15724 / 32767.0;
    EXPECT_TRUE(same_bits({u0, v0, 1 - u0 - v0, u1, v1, 1 - u1 - v1}, this->samples(kWeights, 1, 2)));
    EXPECT_TRUE(same_bits({0.56358531449324012, 0.19330423902096622, 0.24311044648579366}, //
                          this->samples(kWeights, 1, 1)));
}

TYPED_TEST(TriSample, WeighsTheVerticesInOrder)
{
    const std::vector<double> triangle = {1, 2, 3, 40, 50, 60, 700, 800, 900};
    const double u = 18467 / 32767.0, v = 6334 / 32767.0, w = 1 - u - v;
    EXPECT_TRUE(same_bits({u * 1 + v * 40 + w * 700, u * 2 + v * 50 + w * 800, u * 3 + v * 60 + w * 900},
                          this->samples(triangle, 1, 1)));
}

TYPED_TEST(TriSample, KeepsEveryPointInItsTriangle)
{
    const auto points = this->samples(kWeights, 7, 20000);
    for (size_t i = 0; i < points.size(); i += 3) {
        ASSERT_GE(points[i], 0.0);
        ASSERT_GE(points[i + 1], 0.0);
        ASSERT_LE(points[i] + points[i + 1], 1.0) << "u + v after the fold";
        ASSERT_GE(points[i + 2], 0.0);
    }
}

TYPED_TEST(TriSample, SharesPointsByArea)
{
    // Areas 1 and 3, at z = 0 and z = 1.
    const std::vector<double> triangles = {0, 0, 0, 2, 0, 0, 0, 1, 0, 0, 0, 1, 2, 0, 1, 0, 3, 1};
    const auto points = this->samples(triangles, 3, 40000);
    int first = 0;
    for (size_t i = 2; i < points.size(); i += 3)
        first += points[i] < 0.5;
    EXPECT_NEAR(first, 10000, 5 * std::sqrt(40000 * 0.25 * 0.75)); // five standard deviations
}

TYPED_TEST(TriSample, SpreadsPointsEvenlyOverManyTriangles)
{
    Random random(15);
    std::vector<double> triangles;
    std::vector<double> areas;
    double sum = 0;
    for (int i = 0; i < 50; ++i) {
        const double height = random.uniform(0.1, 2);
        triangles.insert(triangles.end(), {0, 0, i * 1.0, 1, 0, i * 1.0, 0, height, i * 1.0});
        areas.push_back(height / 2);
        sum += height / 2;
    }
    constexpr int kCount = 100000;
    const auto points = this->samples(triangles, 4, kCount);
    std::vector<int> hits(50);
    for (size_t i = 2; i < points.size(); i += 3)
        ++hits[static_cast<size_t>(std::lround(points[i]))];
    double chi_square = 0;
    for (size_t i = 0; i < 50; ++i) {
        const double expected = kCount * areas[i] / sum;
        chi_square += (hits[i] - expected) * (hits[i] - expected) / expected;
    }
    EXPECT_LT(chi_square, 86); // 49 degrees of freedom: exceeded once in a thousand seeds
}

TYPED_TEST(TriSample, RepeatsThePointsOfASeed)
{
    const auto first = this->samples(kWeights, 5, 100);
    EXPECT_TRUE(same_bits(first, this->samples(kWeights, 5, 100)));
    EXPECT_FALSE(same_bits(first, this->samples(kWeights, 6, 100)));
}

TYPED_TEST(TriSample, DrawsThreeNumbersAPoint)
{
    this->samples(kWeights, 8, 5);
    const int after = Mwrand();
    Mwsrand(8);
    for (int i = 0; i < 15; ++i)
        Mwrand();
    EXPECT_EQ(after, Mwrand());
}

TYPED_TEST(TriSample, CarriesAttributesByTheSameWeights)
{
    auto t = doubles<TypeParam>(9, kWeights);
    auto p = array_of<TypeParam>(DATA_TYPE_DOUBLE, 3, 3);
    auto from = doubles<TypeParam>(2, {1, 10, 2, 20, 3, 30});
    auto to = array_of<TypeParam>(DATA_TYPE_DOUBLE, 3, 2);
    sample(t.get(), 1, p.get(), from.get(), to.get());
    for (int s = 0; s < 3; ++s) {
        const double u = p->dvals[3 * s], v = p->dvals[3 * s + 1], w = p->dvals[3 * s + 2];
        EXPECT_TRUE(same_bits({u * 1 + v * 2 + w * 3, u * 10 + v * 20 + w * 30}, to->dvals + 2 * s));
    }
}

TYPED_TEST(TriSample, TakesAttributesOfAnyShapeOfTheRightSize)
{
    auto t = doubles<TypeParam>(9, kWeights);
    auto p = array_of<TypeParam>(DATA_TYPE_DOUBLE, 1, 3);
    auto from = doubles<TypeParam>(6, {1, 10, 2, 20, 3, 30});
    auto to = array_of<TypeParam>(DATA_TYPE_DOUBLE, 1, 2);
    sample(t.get(), 1, p.get(), from.get(), to.get());
    EXPECT_NE(to->dvals[0], 0.0);
}

TYPED_TEST(TriSample, IgnoresAttributesThatDoNotFit)
{
    const auto plain = this->samples(kWeights, 1, 3);
    auto t = doubles<TypeParam>(9, kWeights);
    auto p = array_of<TypeParam>(DATA_TYPE_DOUBLE, 3, 3);
    const auto expect_ignored = [&](TypeParam* from, TypeParam* to) {
        sample(t.get(), 1, p.get(), from, to);
        EXPECT_TRUE(same_bits(plain, p->dvals));
    };
    auto from = doubles<TypeParam>(2, {1, 10, 2, 20, 3, 30}), uneven = doubles<TypeParam>(1, {1, 2, 3, 4, 5, 6, 7});
    auto to = array_of<TypeParam>(DATA_TYPE_DOUBLE, 3, 2), longer = array_of<TypeParam>(DATA_TYPE_DOUBLE, 4, 2);
    auto wider = array_of<TypeParam>(DATA_TYPE_DOUBLE, 3, 3);
    Owned<TypeParam> empty;
    TypeParam missing = wrapped<TypeParam>(nullptr, 3, 2);
    expect_ignored(this->kNone, to);
    expect_ignored(from, this->kNone);
    expect_ignored(uneven, to);
    expect_ignored(from, longer);
    expect_ignored(from, wider);
    expect_ignored(from, empty);
    expect_ignored(empty, to);
    expect_ignored(from, &missing);
    expect_ignored(&missing, to);
    EXPECT_TRUE(same_bits(std::vector<double>(6), to->dvals));
    EXPECT_TRUE(same_bits(std::vector<double>(8), longer->dvals));
    EXPECT_TRUE(same_bits(std::vector<double>(9), wider->dvals));
}

TYPED_TEST(TriSample, DoesNothingWithoutPointsOrTriangles)
{
    auto t = doubles<TypeParam>(9, kWeights);
    auto p = points<TypeParam>({7, 7, 7});
    double values[9] = {7, 7, 7, 7, 7, 7, 7, 7, 7};
    for (const int32_t count : {0, -1}) {
        TypeParam empty = wrapped<TypeParam>(values, count, 9);
        this->expect_nothing(&empty, p.get());
        this->expect_nothing(t.get(), &empty);
    }
    TypeParam missing = wrapped<TypeParam>(nullptr, 1, 9);
    this->expect_nothing(&missing, p.get());
    this->expect_nothing(t.get(), &missing);
    this->expect_nothing(this->kNone, p.get());
    this->expect_nothing(t.get(), this->kNone);
    EXPECT_TRUE(same_bits({7, 7, 7}, p->dvals));
    EXPECT_EQ(values[0], 7.0);
}

TYPED_TEST(TriSample, DoesNothingOnTooNarrowArrays)
{
    auto t = doubles<TypeParam>(9, kWeights), narrow = doubles<TypeParam>(8, std::vector<double>(16, 1));
    auto p = points<TypeParam>({7, 7, 7}), thin = doubles<TypeParam>(2, {7, 7});
    this->expect_nothing(narrow, p);
    this->expect_nothing(t, thin);
    EXPECT_TRUE(same_bits({7, 7, 7}, p->dvals));
    EXPECT_TRUE(same_bits({7, 7}, thin->dvals));
}

TYPED_TEST(TriSample, LeavesFurtherComponentsAlone)
{
    auto t = doubles<TypeParam>(10, {1, 0, 0, 0, 1, 0, 0, 0, 1, 99, 1, 0, 0, 0, 1, 0, 0, 0, 1, 99});
    auto p = doubles<TypeParam>(4, {7, 7, 7, 7, 7, 7, 7, 7});
    sample(t.get(), 1, p.get(), this->kNone, this->kNone);
    const auto plain = this->samples(kWeights, 1, 2);
    EXPECT_TRUE(same_bits({plain[0], plain[1], plain[2], 7, plain[3], plain[4], plain[5], 7}, p->dvals));
}

TYPED_TEST(TriSample, OnlySeedsWhenTheHeapIsExhausted)
{
    NEEDS_HEAP_FAILURES();
    auto t = array_of<TypeParam>(DATA_TYPE_DOUBLE, 17, 9);
    auto p = points<TypeParam>({7, 7, 7});
    const HeapWatch heap;
    {
        const HeapFailure failure(1);
        sample(t.get(), 1, p.get(), this->kNone, this->kNone);
        EXPECT_EQ(Mwrand(), 41);
        EXPECT_TRUE(failure.happened());
    }
    EXPECT_EQ(heap.live_blocks(), 0);
    EXPECT_TRUE(same_bits({7, 7, 7}, p->dvals));
}

TYPED_TEST(TriSample, NeedsNoHeapForSixteenTriangles)
{
    NEEDS_HEAP_FAILURES();
    Random random(15);
    auto t = doubles<TypeParam>(9, random.uniforms(9 * 16, -1, 1));
    auto p = array_of<TypeParam>(DATA_TYPE_DOUBLE, 1000, 3);
    const HeapWatch heap;
    sample(t.get(), 1, p.get(), this->kNone, this->kNone);
    EXPECT_EQ(heap.allocations(), 0);
}

TYPED_TEST(TriSample, AsksTheHeapForATableOfManyPointsOnFewTriangles)
{
    NEEDS_HEAP_COUNTS();
    Random random(18);
    const std::tuple<int, int, int> cases[] = {
        {16, 16384, 0}, {16, 16385, 1}, {2, 65536, 0}, {2, 65537, 1}, {1, 100000, 0}};
    for (const auto& [triangles, count, allocations] : cases) {
        auto t = doubles<TypeParam>(9, random.uniforms(9 * static_cast<size_t>(triangles), -1, 1));
        auto p = array_of<TypeParam>(DATA_TYPE_DOUBLE, count, 3);
        const HeapWatch heap;
        sample(t.get(), 1, p.get(), this->kNone, this->kNone);
        EXPECT_EQ(heap.allocations(), allocations) << count << " points on " << triangles;
    }
}

TYPED_TEST(TriSample, GivesTheSamePointsWithoutRoomForATable)
{
    NEEDS_HEAP_FAILURES();
    Random random(16);
    auto t = doubles<TypeParam>(9, random.uniforms(9 * 100, -1, 1));
    auto p = array_of<TypeParam>(DATA_TYPE_DOUBLE, 20000, 3);
    sample(t.get(), 2, p.get(), this->kNone, this->kNone);
    const auto expected = values_of(*p);
    const auto failures = fail_each_allocation([&](int64_t n) {
        sample(t.get(), 2, p.get(), this->kNone, this->kNone);
        if (n > 1) {
            EXPECT_TRUE(same_bits(expected, p->dvals));
        }
    });
    EXPECT_EQ(failures, 2);
}

TYPED_TEST(TriSample, TakesTheLastTriangleWhereNoShareIsANumber)
{
    std::vector<double> triangles(27, std::numeric_limits<double>::quiet_NaN());
    for (int i = 18; i < 27; ++i)
        triangles[static_cast<size_t>(i)] = 4;
    EXPECT_TRUE(same_bits({4, 4, 4}, this->samples(triangles, 1, 1)));
    const std::vector<double> no_area = {1, 1, 1, 1, 1, 1, 1, 1, 1, 2, 2, 2, 2, 2, 2, 2, 2, 2};
    const auto point = this->samples(no_area, 1, 1);
    EXPECT_NEAR(point[0], 2.0, 1e-15); // the weights sum to 1 but for a rounding
}

TEST(DataTriSample, DoesNotLookAtTheKinds)
{
    std::vector<double> corners = kWeights;
    double point[] = {7, 7, 7};
    Data t = wrapped<Data>(corners.data(), 1, 9), p = wrapped<Data>(point, 1, 3);
    t.type = p.type = DATA_TYPE_INT;
    DataTriSample(&t, 1, &p, nullptr, nullptr);
    EXPECT_TRUE(same_bits(18467 / 32767.0, point[0]));
}

TEST(DATATriSample, WantsDoubles)
{
    std::vector<double> corners = kWeights;
    double point[] = {7, 7, 7};
    for (const bool of_points : {false, true}) {
        DATAstruct t = wrapped<DATAstruct>(corners.data(), 1, 9), p = wrapped<DATAstruct>(point, 1, 3);
        (of_points ? p : t).type = DATA_TYPE_INT;
        DATATriSample(&t, 1, &p, nullptr, nullptr);
        EXPECT_TRUE(same_bits({7, 7, 7}, point));
    }
}

TEST(DATATriSample, ReadsNothingBeyondTheCapacity)
{
    auto t = doubles<DATAstruct>(9, kWeights);
    auto p = points<DATAstruct>({7, 7, 7});
    t->count = 2;
    DATATriSample(t, 1, p, nullptr, nullptr);
    EXPECT_TRUE(same_bits({7, 7, 7}, p->dvals));
}

} // namespace
} // namespace korvale::test
