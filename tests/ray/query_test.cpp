// Queries on classified triangles: what is counted, what is written, and where it ends.
#include "ray/query.h"

#include <cmath>
#include <cstring>
#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/ray/scene.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"

namespace korvale::test {
namespace {

using testing::ElementsAre;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kThreshold = 1e-06;

struct Vector {
    double values[3];
    operator double*() { return values; }
};

struct Answer {
    int hits;
    double distance;
};

/// The distance is -7 where it was not written.
Answer cast(RayStatus* s, Vector o, Vector d)
{
    Answer answer = {0, -7};
    answer.hits = ray_intersect(o, d, s, &answer.distance);
    return answer;
}

TEST(ray_intersect, CountsTrianglesAndFindsTheNearest)
{
    Scene s(joined(joined(level(5), level(2)), level(9)), 4, 4, 4);
    Answer a = cast(s, {0.25, 0.25, -1}, {0, 0, 1});
    EXPECT_EQ(a.hits, 3);
    EXPECT_EQ(a.distance, 3);
    a = cast(s, {0.25, 0.25, 3}, {0, 0, 1});
    EXPECT_EQ(a.hits, 2);
    EXPECT_EQ(a.distance, 2);
    a = cast(s, {0.25, 0.25, 20}, {0, 0, -1});
    EXPECT_EQ(a.hits, 3);
    EXPECT_EQ(a.distance, 11);
}

TEST(ray_intersect, MeasuresAlongTheUnitDirection)
{
    Scene s({4, -1, -1, 4, 2, -1, 4, -1, 2}, 2, 2, 2);
    const Answer a = cast(s, {0, 0, 0}, {100, 0, 0});
    EXPECT_EQ(a.hits, 1);
    EXPECT_EQ(a.distance, 4);
}

TEST(ray_intersect, LeavesOriginAndDirectionAlone)
{
    Scene s(level(1), 2, 2, 2);
    Vector o = {0.25, 0.25, 0}, d = {0, 0, 8};
    double distance;
    EXPECT_EQ(ray_intersect(o, d, s, &distance), 1);
    EXPECT_TRUE(same_bits({0.25, 0.25, 0}, o.values));
    EXPECT_TRUE(same_bits({0, 0, 8}, d.values));
}

TEST(ray_intersect, CountsATriangleOfSeveralCellsOnce)
{
    Scene s({-1, -1, 0, 1, -1, 0, 0, 2, 0, 0, 0, 2, 0.1, 0, 2, 0, 0.1, 2}, 2, 2, 1);
    for (int c = 0; c < 4; ++c)
        ASSERT_EQ(s.numbers(c).front(), 0);
    const Answer a = cast(s, {0, 0.5, -1}, {0, 0, 1}); // through the faces between the cells
    EXPECT_EQ(a.hits, 1);
    EXPECT_EQ(a.distance, 1);
}

TEST(ray_intersect, IgnoresTrianglesBehind)
{
    Scene s(joined(level(0), level(1)), 2, 2, 2);
    EXPECT_EQ(cast(s, {0.25, 0.25, 2}, {0, 0, 1}).hits, 0);
    EXPECT_EQ(cast(s, {0.25, 0.25, -1}, {0, 0, -1}).hits, 0);
    EXPECT_EQ(cast(s, {0.25, 0.25, 2}, {0, 0, 1}).distance, -7);
}

TEST(ray_intersect, CountsATriangleAtDistanceZero)
{
    Scene s(level(3), 4, 4, 4);
    for (const double up : {1.0, -1.0}) {
        const Answer a = cast(s, {0.25, 0.25, 3}, {0, 0, up});
        EXPECT_EQ(a.hits, 1);
        EXPECT_EQ(a.distance, 0);
    }
}

TEST(ray_intersect, MissesATriangleWhosePlaneItRunsIn)
{
    Scene s(level(3), 4, 4, 4);
    EXPECT_EQ(cast(s, {-1, 0.25, 3}, {1, 0, 0}).hits, 0);
    EXPECT_THAT(s.marks(), ElementsAre(1));
}

TEST(ray_intersect, MissesATriangleThatEndsJustShortOfAFaceItStartsAlong)
{
    // From the lower of two cells the ray crosses the face y = 1 at x = 5.2, too slowly to meet it.
    const std::vector<double> wall = {5.1, 0, 0, 5.1, 1 - 1e-08, 0, 5.1, 1 - 1e-08, 2};
    Scene s(joined(wall, spanning(0, 0, 0, 10, 2, 2)), 1, 2, 1);
    ASSERT_THAT(s.numbers(0), testing::Contains(0));
    ASSERT_THAT(s.numbers(1), testing::Not(testing::Contains(0)));
    cast(s, {5, 1 - 1e-07, 1}, {1, 5e-07, 0});
    EXPECT_EQ(s.marks()[0], 0);
    cast(s, {5, 1 - 1e-07, 1}, {1, 5e-06, 0});
    EXPECT_EQ(s.marks()[0], 1);
    s->ny = 1;
    ray_classify(s);
    EXPECT_EQ(cast(s, {5, 1 - 1e-07, 1}, {1, 5e-07, 0}).hits, 1);
}

TEST(ray_intersect, NeedsADirection)
{
    Scene s(level(1), 1, 1, 1);
    for (const double length : {0.0, 9e-07, -9e-07, std::nextafter(kThreshold, 0)}) {
        std::memset(s->tri_marks.bvals, 9, 1);
        const Answer a = cast(s, {0.25, 0.25, 0}, {0, 0, length});
        EXPECT_EQ(a.hits, 0);
        EXPECT_EQ(a.distance, -7);
        EXPECT_THAT(s.marks(), ElementsAre(0));
    }
    EXPECT_EQ(cast(s, {0.25, 0.25, 0}, {0, 0, kThreshold}).hits, 1);
}

TEST(ray_intersect, TakesADirectionOfInfiniteLengthForZero)
{
    const double longest = 0x1.fffffffffffffp+511; // of which the square is finite: about 1.3e154
    Scene s(joined(level(1), level(2)), 2, 2, 2);
    EXPECT_EQ(cast(s, {0.25, 0.25, 0}, {0, 0, longest}).hits, 2);
    for (const double length : {0x1p+512, 1e200, std::numeric_limits<double>::max()})
        for (const Vector& d : {Vector{length, 0, 0}, {0, -length, 0}, {0, 0, length}, {0, 0, -length}}) {
            std::memset(s->tri_marks.bvals, 9, 2);
            for (const double z : {-1.0, 0.0, 1.25, 3.0}) {
                const Answer a = cast(s, {0.25, 0.25, z}, d);
                EXPECT_EQ(a.hits, 0) << z;
                EXPECT_EQ(a.distance, -7);
                EXPECT_THAT(s.marks(), ElementsAre(0, 0));
            }
            // From the face between the cells, whose triangles are looked for along +z.
            const Answer a = cast(s, {0.25, 0.25, 1.5}, d);
            EXPECT_EQ(a.hits, 1);
            EXPECT_EQ(a.distance, 0.5);
        }
}

TEST(ray_intersect, NeedsTriangles)
{
    Scene s(level(1), 1, 1, 1);
    std::memset(s->tri_marks.bvals, 9, 1);
    s.triangles().count = 0;
    EXPECT_EQ(cast(s, {0.25, 0.25, 0}, {0, 0, 1}).hits, 0);
    EXPECT_THAT(s.marks(), ElementsAre(9));
    s.triangles().count = 1;

    Data* const triangles = s->triangles;
    s->triangles = nullptr;
    EXPECT_EQ(cast(s, {0.25, 0.25, 0}, {0, 0, 1}).hits, 0);
    EXPECT_THAT(s.marks(), ElementsAre(9));
    s->triangles = triangles;
    EXPECT_EQ(cast(s, {0.25, 0.25, 0}, {0, 0, 1}).hits, 1);
}

TEST(ray_intersect, MarksTheTrianglesItTested)
{
    // Two cells along x; the ray stays in the first one and meets one of its two triangles.
    Scene s(joined({0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 3, 0, 1, 3, 0, 0, 4, 0}, {9, 0, 0, 10, 0, 0, 10, 4, 1}), 2, 1, 1);
    std::memset(s->tri_marks.bvals, 77, 3);
    EXPECT_EQ(cast(s, {0.25, 0.25, -1}, {0, 0, 1}).hits, 1);
    EXPECT_THAT(s.marks(), ElementsAre(1, 1, 0));
    EXPECT_EQ(cast(s, {0.25, 0.25, -1}, {0, 0, -1}).hits, 0);
    EXPECT_THAT(s.marks(), ElementsAre(0, 0, 0));
}

TEST(ray_intersect, BeforeClassificationMeetsNothing)
{
    Scene s(level(1));
    std::memset(s->tri_marks.bvals, 5, 1);
    const Answer a = cast(s, {0.25, 0.25, 0}, {0, 0, 1});
    EXPECT_EQ(a.hits, 0);
    EXPECT_EQ(a.distance, -7);
    EXPECT_THAT(s.marks(), ElementsAre(0));
}

TEST(ray_intersect, AnswersAsEverAfterADistanceThatLayInAnInput)
{
    Scene s(joined(level(1), level(2)), 2, 2, 2);
    Vector o = {0.25, 0.25, 0}, d = {0, 0, 1};
    for (double* inside : {o + 2, d + 2, s.triangles().dvals + 17, s->bbox.dvals + 5, s->cells[7].dvals + 5}) {
        const double before = *inside;
        ray_intersect(o, d, s, inside);
        *inside = before;
        const Answer a = cast(s, o, d);
        EXPECT_EQ(a.hits, 2);
        EXPECT_EQ(a.distance, 1);
    }
}

TEST(ray_intersect, TakesNull)
{
    Scene s(level(1), 1, 1, 1);
    Vector o = {0.25, 0.25, 0}, d = {0, 0, 1};
    double distance = -7;
    EXPECT_EQ(ray_intersect(nullptr, d, s, &distance), 0);
    EXPECT_EQ(ray_intersect(o, nullptr, s, &distance), 0);
    EXPECT_EQ(ray_intersect(o, d, nullptr, &distance), 0);
    EXPECT_EQ(distance, -7);
    EXPECT_EQ(ray_intersect(o, d, s, nullptr), 1);
}

TEST(ray_intersect, SearchesTheCellsThatWereMade)
{
    for (const int n : {1, 3, 50, -1}) {
        Scene s(joined(level(0), level(8)), 2, 2, 2);
        s->nx = s->ny = s->nz = n;
        EXPECT_EQ(cast(s, {0.25, 0.25, -1}, {0, 0, 1}).hits, 2);
    }
}

TEST(ray_intersect, ReadsTheVerticesAsTheyAre)
{
    Scene s(joined(level(1), level(4)), 1, 1, 1);
    for (int v = 0; v < 3; ++v)
        s.triangles().dvals[3 * v + 2] = 2.5;
    const Answer a = cast(s, {0.25, 0.25, 0}, {0, 0, 1});
    EXPECT_EQ(a.hits, 2);
    EXPECT_EQ(a.distance, 2.5);
}

TEST(ray_intersect, FindsTrianglesListedByHand)
{
    Scene s(level(1));
    ray_make_sub_bbox(s); // empty cells in a box of zeros
    EXPECT_EQ(cast(s, {0, 0, -1}, {0, 0, 1}).hits, 0);
    ray_add_tri_to_bbox(s, 0, 5);
    const Answer a = cast(s, {0, 0, -1}, {0, 0, 1});
    EXPECT_EQ(a.hits, 1);
    EXPECT_EQ(a.distance, 2);
}

TEST(ray_intersect, PassesACellThatTheHostEmptied)
{
    Scene s(joined(level(1), level(9)), 1, 1, 4);
    DataListDispose(&s->cells[3]);
    EXPECT_EQ(cast(s, {0.25, 0.25, 0}, {0, 0, 1}).hits, 1);
}

TEST(ray_intersect, SkipsNumbersBeyondTheTriangles)
{
    Scene s(joined(level(1), level(4)), 1, 1, 1);
    s.triangles().count = 1;
    EXPECT_EQ(cast(s, {0.25, 0.25, 0}, {0, 0, 1}).hits, 1);
    EXPECT_THAT(s.marks(), ElementsAre(1, 0));
    s.triangles().count = 2;
    ray_add_tri_to_bbox(s, -1, 0);
    ray_add_tri_to_bbox(s, 2, 0);
    ray_add_tri_to_bbox(s, std::numeric_limits<int>::min(), 0);
    EXPECT_EQ(cast(s, {0.25, 0.25, 0}, {0, 0, 1}).hits, 2);
}

TEST(ray_intersect, MeetsNothingInAnArrayThatLostItsBuffer)
{
    Scene s(level(1), 1, 1, 1);
    Data bare = wrapped<Data>(nullptr, 1, 9);
    s->triangles = &bare;
    EXPECT_EQ(cast(s, {0.25, 0.25, 0}, {0, 0, 1}).hits, 0);
    auto integers = array_of<Data>(DATA_TYPE_INT, 1, 9);
    s->triangles = integers;
    EXPECT_EQ(cast(s, {0.25, 0.25, 0}, {0, 0, 1}).hits, 0);
}

TEST(ray_intersect, MeetsTrianglesWithoutMarksOfTheRecord)
{
    Scene s({-1, -1, 0, 1, -1, 0, 0, 2, 0, 0, 0, 2, 0.1, 0, 2, 0, 0.1, 2}, 2, 2, 1);
    ray_declassify(s);
    s->nz = 2;
    ray_classify(s);
    const Answer a = cast(s, {0, 0.5, -1}, {0, 0, 1});
    EXPECT_EQ(a.hits, 1);
    EXPECT_EQ(a.distance, 1);
    EXPECT_EQ(s->tri_marks.bvals, nullptr);
    EXPECT_EQ(s->tri_marks.count, -1);
}

TEST(ray_intersect, MeetsTrianglesThatTheMarksAreTooFewFor)
{
    Scene s(level(1));
    auto more = doubles<Data>(9, joined(level(1), level(2)));
    s->triangles = more;
    ray_classify(s);
    std::memset(s->tri_marks.bvals, 3, 1);
    EXPECT_EQ(cast(s, {0.25, 0.25, 0}, {0, 0, 1}).hits, 2);
    EXPECT_THAT(s.marks(), ElementsAre(0));
}

TEST(ray_intersect, LeavesMarksOfMoreBytesThanAnArrayMayHave)
{
    Scene s(level(1), 1, 1, 1);
    for (const int dim : {std::numeric_limits<int>::max(), 1 << 30}) {
        s->tri_marks.count = 2;
        s->tri_marks.dim = dim;
        s->tri_marks.bvals[0] = 9;
        EXPECT_EQ(cast(s, {0.25, 0.25, 0}, {0, 0, 1}).hits, 1);
        EXPECT_EQ(s->tri_marks.bvals[0], 9);
    }
    s->tri_marks.count = s->tri_marks.dim = 1;
}

TEST(ray_intersect, MeetsNothingWithoutHeapForMarks)
{
    NEEDS_HEAP_FAILURES();
    Scene s(level(1), 1, 1, 1);
    ray_declassify(s);
    ray_classify(s);
    const HeapFailure failure(1);
    EXPECT_EQ(cast(s, {0.25, 0.25, 0}, {0, 0, 1}).hits, 0);
    EXPECT_TRUE(failure.happened());
}

TEST(ray_intersect, TakesNoMemoryInTheDocumentedOrder)
{
    NEEDS_HEAP_FAILURES();
    Scene s(joined(level(1), level(2)), 4, 4, 4);
    const HeapWatch heap;
    EXPECT_EQ(cast(s, {0.25, 0.25, 0}, {0, 0, 1}).hits, 2);
    EXPECT_EQ(heap.allocations(), 0);
}

// ------------------------------------------------------------------------------------------------------- not a number

/// A triangle that is met at NaN wherever the ray is, without making the box around it NaN.
std::vector<double> nowhere(double x, double y, double z)
{
    return {x, y, z, kNaN, kNaN, kNaN, x, y, z};
}

TEST(ray_intersect, KeepsADistanceOfNaNThatCameFirst)
{
    Scene s(joined(nowhere(0, 0, 3), joined(level(5), level(1))), 1, 1, 1);
    const Answer a = cast(s, {0.25, 0.25, 0}, {0, 0, 1});
    EXPECT_EQ(a.hits, 3);
    EXPECT_TRUE(std::isnan(a.distance));
}

TEST(ray_intersect, KeepsANumberThatCameBeforeNaN)
{
    Scene s(joined(joined(level(5), nowhere(0, 0, 3)), level(1)), 1, 1, 1);
    const Answer a = cast(s, {0.25, 0.25, 0}, {0, 0, 1});
    EXPECT_EQ(a.hits, 3);
    EXPECT_EQ(a.distance, 1);
}

TEST(ray_intersect, GoesThroughTheCellsInTheirOrder)
{
    // Two cells along z; a ray down meets the upper first, but the lower one comes first in the order.
    Scene low(joined(joined(level(0), nowhere(0.2, 0.2, 1)), level(4)), 1, 1, 2);
    ASSERT_THAT(low.numbers(0), ElementsAre(0, 1));
    ASSERT_THAT(low.numbers(1), ElementsAre(2));
    Answer a = cast(low, {0.25, 0.25, 9}, {0, 0, -1});
    EXPECT_EQ(a.hits, 3);
    EXPECT_EQ(a.distance, 5);

    Scene first(joined(joined(level(4), nowhere(0.2, 0.2, 1)), level(3)), 1, 1, 2);
    ASSERT_THAT(first.numbers(0), ElementsAre(1));
    ASSERT_THAT(first.numbers(1), ElementsAre(0, 2));
    a = cast(first, {0.25, 0.25, 9}, {0, 0, -1});
    EXPECT_EQ(a.hits, 3);
    EXPECT_TRUE(std::isnan(a.distance));
}

TEST(ray_intersect, TakesRaysThatAreNotNumbers)
{
    Scene s(joined(level(0), level(4)), 2, 2, 2);
    EXPECT_EQ(cast(s, {kNaN, 0.25, -1}, {0, 0, 1}).hits, 0);
    EXPECT_EQ(cast(s, {0.25, 0.25, -1}, {kNaN, 0, 1}).hits, 0);
    EXPECT_EQ(cast(s, {0.25, 0.25, -1}, {kInfinity, 0, 1}).hits, 0);
    EXPECT_EQ(cast(s, {kInfinity, kInfinity, -kInfinity}, {0, 0, 1}).hits, 0);
    // In a plane of the grid a direction of NaN meets the faces around the origin, and all that is in those cells.
    const Answer a = cast(s, {0, 0.25, 0.5}, {kNaN, 0, 1});
    EXPECT_EQ(a.hits, 1);
    EXPECT_TRUE(std::isnan(a.distance));
}

} // namespace
} // namespace korvale::test
