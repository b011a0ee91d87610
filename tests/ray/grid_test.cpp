#include "ray/grid.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numeric>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ray/query.h"
#include "tests/ray/scene.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"

namespace korvale::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr int kMostCells = std::numeric_limits<int>::max();

std::vector<int> first_numbers(int n)
{
    std::vector<int> numbers(static_cast<size_t>(n));
    std::iota(numbers.begin(), numbers.end(), 0);
    return numbers;
}

/// The counts of the number nodes of a cell.
std::vector<int> node_counts(const data_list_struct& cell)
{
    std::vector<int> counts;
    for (const data_list_struct* node = cell.next; node != nullptr; node = node->next)
        counts.push_back(node->count);
    return counts;
}

/// `n` copies of one triangle.
std::vector<double> copies(int n)
{
    std::vector<double> all;
    for (int i = 0; i < n; ++i)
        all = joined(std::move(all), {0, 0, 0, 1, 0, 0, 0, 1, 0});
    return all;
}

/// A grid of two cells along x that meet at x = 0, with a triangle, number 2, between.
class TwoCells : public Scene {
public:
    explicit TwoCells(const std::vector<double>& triangle)
        : Scene(joined(spanning(-1, -1, -1, 1, 1, 1), triangle), 2, 1, 1)
    {
    }
    bool lists(int cell) const
    {
        const std::vector<int> all = numbers(cell);
        return std::count(all.begin(), all.end(), 2) == 1;
    }
};

// ---------------------------------------------------------------------------------------------------------- set-up

TEST(ray_initialize, SetsTheDefaults)
{
    Data other;
    RayStatus s;
    s.triangles = &other;
    EXPECT_EQ(ray_initialize(&s), 1);
    EXPECT_EQ(s.triangles, nullptr);
    EXPECT_EQ(s.cells, nullptr);
    EXPECT_EQ(s.nx, 4);
    EXPECT_EQ(s.ny, 4);
    EXPECT_EQ(s.nz, 4);
    EXPECT_EQ(s.bbox.dim, 6);
    EXPECT_EQ(s.bbox.count, 1);
    EXPECT_EQ(s.bbox.type, DATA_TYPE_DOUBLE);
    EXPECT_TRUE(same_bits({0, 0, 0, 0, 0, 0}, s.bbox.dvals));
    EXPECT_EQ(s.tri_marks.dim, -1);
    EXPECT_EQ(s.tri_marks.count, -1);
    EXPECT_EQ(s.tri_marks.type, 0);
    EXPECT_EQ(s.tri_marks.bvals, nullptr);
    DataDispose(&s.bbox);
}

TEST(ray_initialize, RefusesANullRecord)
{
    EXPECT_EQ(ray_initialize(nullptr), -1);
}

TEST(ray_initialize, ReportsAnExhaustedHeap)
{
    NEEDS_HEAP_FAILURES();
    RayStatus s;
    {
        const HeapFailure failure(1);
        EXPECT_EQ(ray_initialize(&s), -1);
    }
    EXPECT_EQ(s.bbox.dvals, nullptr);
    EXPECT_EQ(s.triangles, nullptr);
    EXPECT_EQ(s.cells, nullptr);
    EXPECT_EQ(s.nz, 4);

    auto triangles = doubles<Data>(9, spanning(0, 0, 0, 1, 1, 1));
    ray_set_triangles(triangles, &s);
    ray_classify(&s);
    EXPECT_EQ(s.cells, nullptr);
    ray_declassify(&s);
}

TEST(RayStatus, HoldsItsFieldsInOrder)
{
    EXPECT_EQ(offsetof(RayStatus, triangles), 0u);
    EXPECT_EQ(offsetof(RayStatus, bbox), 8u);
    EXPECT_EQ(offsetof(RayStatus, tri_marks), 48u);
    EXPECT_EQ(offsetof(RayStatus, cells), 88u);
    EXPECT_EQ(offsetof(RayStatus, nx), 96u);
    EXPECT_EQ(offsetof(RayStatus, ny), 100u);
    EXPECT_EQ(offsetof(RayStatus, nz), 104u);
    EXPECT_EQ(sizeof(RayStatus), 112u);
}

TEST(ray_set_triangles, GivesEveryTriangleAMark)
{
    Scene s(copies(5));
    EXPECT_EQ(s->triangles, &s.triangles());
    EXPECT_EQ(s->tri_marks.dim, 1);
    EXPECT_EQ(s->tri_marks.count, 5);
    EXPECT_EQ(s->tri_marks.type, DATA_TYPE_BYTE);
    EXPECT_NE(s->tri_marks.bvals, nullptr);
    EXPECT_EQ(s->cells, nullptr);
}

TEST(ray_set_triangles, TakesAnEmptyArrayWithoutMarks)
{
    Scene s({});
    EXPECT_EQ(s->triangles, &s.triangles());
    EXPECT_EQ(s->tri_marks.bvals, nullptr);
    EXPECT_EQ(s->tri_marks.count, -1);
}

TEST(ray_set_triangles, LeavesTheMarksForAnEmptyArray)
{
    Scene s(copies(5));
    OwnedData none;
    none->count = 0;
    ray_set_triangles(none, s);
    EXPECT_EQ(s->triangles, none.get());
    EXPECT_EQ(s->tri_marks.count, 5);
}

TEST(ray_set_triangles, ReplacesTheMarksOfAnotherArray)
{
    NEEDS_HEAP_COUNTS();
    const HeapWatch heap;
    {
        Scene s(copies(5));
        auto three = doubles<Data>(9, copies(3));
        ray_set_triangles(three, s);
        EXPECT_EQ(s->triangles, three.get());
        EXPECT_EQ(s->tri_marks.count, 3);
        ray_set_triangles(three, s);
        EXPECT_EQ(s->tri_marks.count, 3);
    }
    EXPECT_EQ(heap.live_blocks(), 0);
}

TEST(ray_set_triangles, TakesNull)
{
    Scene s(copies(1));
    ray_set_triangles(nullptr, s);
    EXPECT_EQ(s->triangles, nullptr);
    ray_set_triangles(&s.triangles(), nullptr);
}

TEST(ray_set_triangles, LeavesTheMarksWithoutABufferWhenTheHeapIsExhausted)
{
    NEEDS_HEAP_FAILURES();
    auto triangles = doubles<Data>(9, copies(2));
    Scene s({});
    {
        const HeapFailure failure(1);
        ray_set_triangles(triangles, s);
    }
    EXPECT_EQ(s->triangles, triangles.get());
    EXPECT_EQ(s->tri_marks.count, 2);
    EXPECT_EQ(s->tri_marks.bvals, nullptr);
}

// -------------------------------------------------------------------------------------------------------- the cells

TEST(ray_classify, DoesNothingWithoutTriangles)
{
    Scene s(copies(1));
    ray_set_triangles(nullptr, s);
    s->nx = 0;
    ray_classify(s);
    EXPECT_EQ(s->cells, nullptr);
    EXPECT_EQ(s->nx, 0);
    ray_classify(nullptr);
}

TEST(ray_classify, MeasuresTheBoxOfAllVertices)
{
    Scene s({1, 2, 3, -4, 5, 6, 7, -8, 9, 0, 0, 0, 1, 1, 1, 2, 2, -10}, 1, 1, 1);
    EXPECT_TRUE(same_bits({-4, -8, -10, 7, 5, 9}, s->bbox.dvals));
    EXPECT_EQ(s.box(0), (std::vector<double>{-4, -8, -10, 7, 5, 9}));
}

TEST(ray_classify, LeavesTheArrayWithDimNine)
{
    for (const int dim : {9, 3, 1, 0, -1, 100}) {
        Scene s(copies(2));
        s.triangles().dim = dim;
        ray_classify(s);
        EXPECT_EQ(s.triangles().dim, 9);
        EXPECT_EQ(s.triangles().count, 2);
        EXPECT_EQ(s.numbers(0), first_numbers(2));
    }
}

TEST(ray_classify, LetsZVaryFastestAndXSlowest)
{
    Scene s(spanning(0, 0, 0, 2, 3, 4), 2, 3, 4);
    for (int ix = 0; ix < 2; ++ix)
        for (int iy = 0; iy < 3; ++iy)
            for (int iz = 0; iz < 4; ++iz) {
                const std::vector<double> box = {0.0 + ix, 0.0 + iy, 0.0 + iz, 1.0 + ix, 1.0 + iy, 1.0 + iz};
                EXPECT_EQ(s.box((ix * 3 + iy) * 4 + iz), box);
            }
}

TEST(ray_classify, PlacesTheCellsByRepeatedAddition)
{
    const double planes[11] = {0,
                               0.1,
                               0.2,
                               0.30000000000000004,
                               0.4,
                               0.5,
                               0.6,
                               0.7,
                               0.7999999999999999,
                               0.8999999999999999,
                               0.9999999999999999};
    Scene x(spanning(0, 0, 0, 1, 1, 1), 10, 1, 1);
    Scene y(spanning(0, 0, 0, 1, 1, 1), 1, 10, 1);
    Scene z(spanning(0, 0, 0, 1, 1, 1), 1, 1, 10);
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(x.box(i), (std::vector<double>{planes[i], 0, 0, planes[i + 1], 1, 1}));
        EXPECT_EQ(y.box(i), (std::vector<double>{0, planes[i], 0, 1, planes[i + 1], 1}));
        EXPECT_EQ(z.box(i), (std::vector<double>{0, 0, planes[i], 1, 1, planes[i + 1]}));
    }
}

TEST(ray_classify, MakesCellsOfOneElementOfSixDoubles)
{
    Scene s(spanning(0, 0, 0, 1, 1, 1));
    ray_classify(s);
    for (int c = 0; c < 64; ++c) {
        EXPECT_EQ(s->cells[c].type, DATA_TYPE_DOUBLE);
        EXPECT_EQ(s->cells[c].dim, 6);
        EXPECT_EQ(s->cells[c].count, 1);
        EXPECT_NE(s->cells[c].dvals, nullptr);
        EXPECT_EQ(s->cells[c].ivals, nullptr);
        EXPECT_EQ(s->cells[c].bvals, nullptr);
    }
}

TEST(ray_classify, RaisesGridSizesBelowOne)
{
    Scene s(spanning(0, 0, 0, 1, 2, 3), 0, -1, std::numeric_limits<int>::min());
    EXPECT_EQ(s->nx, 1);
    EXPECT_EQ(s->ny, 1);
    EXPECT_EQ(s->nz, 1);
    EXPECT_EQ(s.box(0), (std::vector<double>{0, 0, 0, 1, 2, 3}));
    EXPECT_THAT(s.numbers(0), ElementsAre(0, 1));
}

TEST(ray_classify, GivesFlatTrianglesCellsWithoutExtent)
{
    Scene s({0, 0, 0, 1, 0, 0, 0, 1, 0, 4, 4, 0, 3, 4, 0, 4, 3, 0});
    ray_classify(s);
    EXPECT_TRUE(same_bits({0, 0, 0, 4, 4, 0}, s->bbox.dvals));
    for (int iz = 0; iz < 4; ++iz) {
        EXPECT_EQ(s.box(iz), (std::vector<double>{0, 0, 0, 1, 1, 0}));
        EXPECT_THAT(s.numbers(iz), ElementsAre(0)) << iz;
        EXPECT_THAT(s.numbers((3 * 4 + 3) * 4 + iz), ElementsAre(1)) << iz;
        EXPECT_THAT(s.numbers((1 * 4 + 2) * 4 + iz), IsEmpty()) << iz;
    }
}

// ------------------------------------------------------------------------------------------------ triangles to cells

TEST(ray_classify, ListsATriangleInEveryCellItsBoxTouches)
{
    // A box over x in [0.5, 2.5] and y in [1.5, 1.75] in a grid of unit cells.
    Scene s(joined(spanning(0, 0, 0, 4, 4, 4), {0.5, 1.5, 0.5, 2.5, 1.5, 0.5, 0.5, 1.75, 0.5}));
    ray_classify(s);
    for (int c = 0; c < 64; ++c) {
        const int ix = c / 16, iy = c / 4 % 4, iz = c % 4;
        const std::vector<int> listed = s.numbers(c);
        EXPECT_EQ(std::count(listed.begin(), listed.end(), 2), ix <= 2 && iy == 1 && iz == 0) << c;
    }
}

TEST(ray_classify, ListsATriangleOnAFaceInBothCells)
{
    TwoCells s({0, 0, 0, 0, 1, 0, 0, 0, 1});
    EXPECT_TRUE(s.lists(0));
    EXPECT_TRUE(s.lists(1));
}

TEST(ray_classify, PadsATriangleAroundItsFirstVertex)
{
    const double pad = 1e-06;
    TwoCells touching({pad, 0, 0, 0.5, 1, 0, 0.5, 0, 1});
    EXPECT_TRUE(touching.lists(0));
    EXPECT_TRUE(touching.lists(1));
    TwoCells apart({std::nextafter(pad, 1.0), 0, 0, 0.5, 1, 0, 0.5, 0, 1});
    EXPECT_FALSE(apart.lists(0));
    EXPECT_TRUE(apart.lists(1));
    TwoCells below({-pad, 0, 0, -0.5, 1, 0, -0.5, 0, 1});
    EXPECT_TRUE(below.lists(0));
    EXPECT_TRUE(below.lists(1));
    TwoCells far_below({std::nextafter(-pad, -1.0), 0, 0, -0.5, 1, 0, -0.5, 0, 1});
    EXPECT_TRUE(far_below.lists(0));
    EXPECT_FALSE(far_below.lists(1));
}

TEST(ray_classify, DoesNotPadTheOtherVertices)
{
    for (const double x : {1e-07, 0.0, -1e-07}) {
        TwoCells second({0.5, 0, 0, x, 1, 0, 0.5, 0, 1});
        EXPECT_EQ(second.lists(0), x <= 0) << x;
        TwoCells third({0.5, 0, 0, 0.5, 1, 0, x, 0, 1});
        EXPECT_EQ(third.lists(0), x <= 0) << x;
        TwoCells mirrored({-0.5, 0, 0, x, 1, 0, -0.5, 0, 1});
        EXPECT_EQ(mirrored.lists(1), x >= 0) << x;
    }
}

TEST(ray_classify, PadsEveryAxis)
{
    Scene y(joined(spanning(-1, -1, -1, 1, 1, 1), {0, 1e-06, 0, 1, 0.5, 0, 0, 0.5, 1}), 1, 2, 1);
    EXPECT_THAT(y.numbers(0), ElementsAre(0, 1, 2));
    EXPECT_THAT(y.numbers(1), ElementsAre(0, 1, 2));
    Scene z(joined(spanning(-1, -1, -1, 1, 1, 1), {0, 0, 1e-06, 1, 0, 0.5, 0, 1, 0.5}), 1, 1, 2);
    EXPECT_THAT(z.numbers(0), ElementsAre(0, 2));
    EXPECT_THAT(z.numbers(1), ElementsAre(1, 2));
}

TEST(ray_classify, ListsATriangleOfNaNInEveryCellOfThatAxis)
{
    Scene s(joined(spanning(0, 0, 0, 4, 4, 4), {kNaN, 0.5, 0.5, 0.5, 0.5, 0.5, 0.5, 0.75, 0.5}));
    ray_classify(s);
    for (int c = 0; c < 64; ++c) {
        const std::vector<int> listed = s.numbers(c);
        EXPECT_EQ(std::count(listed.begin(), listed.end(), 2), c % 16 == 0) << c;
    }
}

TEST(ray_classify, IgnoresANaNInALaterVertex)
{
    TwoCells s({0.5, 0, 0, kNaN, 1, 0, 0.5, 0, 1});
    EXPECT_FALSE(s.lists(0));
    EXPECT_TRUE(s.lists(1));
}

TEST(ray_classify, ListsAllTrianglesEverywhereInABoxOfNaN)
{
    Scene s(joined({kNaN, kNaN, kNaN, 0, 0, 0, 0, 0, 0}, spanning(0, 0, 0, 1, 1, 1)));
    ray_classify(s);
    for (int c = 0; c < 64; ++c)
        EXPECT_THAT(s.numbers(c), ElementsAre(0, 1, 2));
}

TEST(ray_classify, FillsNodesOfAHundredNumbers)
{
    const struct {
        int triangles;
        std::vector<int> counts;
    } cases[] = {{1, {1}}, {99, {99}}, {100, {100}}, {101, {100, 1}}, {200, {100, 100}}, {250, {100, 100, 50}}};
    for (const auto& expected : cases) {
        Scene s(copies(expected.triangles), 1, 1, 1);
        EXPECT_EQ(node_counts(s->cells[0]), expected.counts);
        EXPECT_EQ(s.numbers(0), first_numbers(expected.triangles));
        for (const data_list_struct* node = s->cells[0].next; node != nullptr; node = node->next) {
            EXPECT_EQ(node->type, DATA_TYPE_INT);
            EXPECT_EQ(node->dim, 1);
            EXPECT_EQ(node->dvals, nullptr);
            EXPECT_EQ(node->bvals, nullptr);
        }
    }
}

TEST(ray_classify, TakesMemoryForWholeNodes)
{
    NEEDS_HEAP_COUNTS();
    Scene one(copies(1)), hundred(copies(100)), more(copies(101));
    int64_t taken[3];
    int i = 0;
    for (Scene* s : {&one, &hundred, &more}) {
        (*s)->nx = (*s)->ny = (*s)->nz = 1;
        const HeapWatch heap;
        ray_classify(*s);
        taken[i++] = heap.live_blocks();
    }
    EXPECT_EQ(taken[1], taken[0]);
    EXPECT_EQ(taken[2], taken[0] + 2);
}

// ------------------------------------------------------------------------------------------------------ single steps

TEST(ray_make_sub_bbox, DividesTheBoxAsItStands)
{
    Scene s({});
    const double box[6] = {1, 2, 3, 3, 6, 9};
    std::copy(box, box + 6, s->bbox.dvals);
    s->nx = s->ny = s->nz = 2;
    ray_make_sub_bbox(s);
    EXPECT_EQ(s.box(0), (std::vector<double>{1, 2, 3, 2, 4, 6}));
    EXPECT_EQ(s.box(7), (std::vector<double>{2, 4, 6, 3, 6, 9}));
    EXPECT_THAT(s.numbers(0), IsEmpty());
    ray_make_sub_bbox(nullptr);
}

TEST(ray_make_sub_bbox, RaisesGridSizesBelowOneOnly)
{
    Scene s({});
    s->nx = 0;
    s->ny = 2;
    s->nz = -7;
    ray_make_sub_bbox(s);
    EXPECT_EQ(s->nx, 1);
    EXPECT_EQ(s->ny, 2);
    EXPECT_EQ(s->nz, 1);
}

TEST(ray_make_sub_bbox, MakesNothingFromABoxWithoutABuffer)
{
    Scene s({});
    DataDispose(&s->bbox);
    ray_make_sub_bbox(s);
    EXPECT_EQ(s->cells, nullptr);
}

TEST(ray_add_tri_to_bbox, AppendsToTheEndOfTheChain)
{
    Scene s({});
    ray_make_sub_bbox(s);
    for (int i = 0; i < 250; ++i)
        ray_add_tri_to_bbox(s, i, 5);
    ray_add_tri_to_bbox(s, 7, 63);
    EXPECT_THAT(node_counts(s->cells[5]), ElementsAre(100, 100, 50));
    EXPECT_EQ(s.numbers(5), first_numbers(250));
    EXPECT_THAT(s.numbers(63), ElementsAre(7));
    EXPECT_THAT(s.numbers(4), IsEmpty());
    EXPECT_EQ(s->cells[5].count, 1);
}

TEST(ray_add_tri_to_bbox, IgnoresCellsThatDoNotExist)
{
    Scene s({});
    ray_add_tri_to_bbox(s, 0, 0);
    ray_add_tri_to_bbox(nullptr, 0, 0);
    ray_make_sub_bbox(s);
    ray_add_tri_to_bbox(s, 0, -1);
    ray_add_tri_to_bbox(s, 0, 64);
    s->nx = 1000;
    ray_add_tri_to_bbox(s, 0, 64);
    for (int c = 0; c < 64; ++c)
        EXPECT_THAT(s.numbers(c), IsEmpty());
}

TEST(ray_declassify, LeavesTheBoxAndTheTriangles)
{
    Scene s(spanning(0, 1, 2, 3, 4, 5), 2, 2, 2);
    ray_declassify(s);
    EXPECT_EQ(s->cells, nullptr);
    EXPECT_EQ(s->tri_marks.bvals, nullptr);
    EXPECT_EQ(s->tri_marks.count, -1);
    EXPECT_EQ(s->triangles, &s.triangles());
    EXPECT_TRUE(same_bits({0, 1, 2, 3, 4, 5}, s->bbox.dvals));
    EXPECT_EQ(s->nx, 2);
    ray_declassify(nullptr);
}

TEST(ray_declassify, LetsAnotherGridBeMade)
{
    Scene s(spanning(0, 0, 0, 4, 4, 4), 1, 1, 1);
    ray_declassify(s);
    s->nx = 2;
    ray_set_triangles(&s.triangles(), s);
    ray_classify(s);
    EXPECT_EQ(s.box(1), (std::vector<double>{2, 0, 0, 4, 4, 4}));
    EXPECT_THAT(s.numbers(1), ElementsAre(0, 1));
}

// ----------------------------------------------------------------------------------------------------- where it ends

TEST(ray_classify, MakesNoCellsBeyondThirtyOneBits)
{
    const int sizes[][3] = {{100000, 100000, 100000},
                            {kMostCells, kMostCells, kMostCells},
                            {kMostCells, 2, 1},
                            {1, 1 << 16, 1 << 15},
                            {1 << 15, 1, 1 << 16}};
    for (const auto& n : sizes) {
        Scene s(spanning(0, 0, 0, 1, 1, 1), n[0], n[1], n[2]);
        EXPECT_EQ(s->cells, nullptr);
        EXPECT_EQ(s->nx, n[0]);
        double o[3] = {0.2, 0.2, -1}, d[3] = {0, 0, 1}, distance = 7;
        EXPECT_EQ(ray_intersect(o, d, s, &distance), 0);
        EXPECT_EQ(distance, 7);
    }
}

TEST(ray_classify, MakesNoCellsWithoutHeap)
{
    NEEDS_HEAP_FAILURES();
    // First the array of cells, then one or another of its boxes cannot be had.
    for (const int n : {1, 2, 3, 65}) {
        Scene s(spanning(0, 0, 0, 1, 1, 1));
        const HeapFailure failure(n, HeapFailure::all_after);
        ray_classify(s);
        EXPECT_TRUE(failure.happened());
        EXPECT_EQ(s->cells, nullptr);
    }
}

TEST(ray_classify, TakesNoTriangles)
{
    for (const int count : {0, -1, std::numeric_limits<int>::min()}) {
        Scene s({});
        s.triangles().count = count;
        ray_classify(s);
        EXPECT_EQ(s.triangles().dim, 9);
        EXPECT_EQ(s.triangles().count, count);
        for (int c = 0; c < 64; ++c) {
            EXPECT_EQ(s.box(c), (std::vector<double>{0, 0, 0, 0, 0, 0}));
            EXPECT_THAT(s.numbers(c), IsEmpty());
        }
    }
}

TEST(ray_classify, LeavesAnArrayWithoutABufferUnclassified)
{
    Scene s(spanning(0, 0, 0, 1, 1, 1), 1, 1, 1);
    Data bare = wrapped<Data>(nullptr, 2, 4);
    ray_set_triangles(&bare, s);
    ray_classify(s);
    EXPECT_EQ(bare.dim, 9);
    EXPECT_EQ(s->cells, nullptr);
    EXPECT_TRUE(same_bits({0, 0, 0, 1, 1, 1}, s->bbox.dvals));

    auto integers = array_of<Data>(DATA_TYPE_INT, 2, 9);
    ray_set_triangles(integers, s);
    ray_classify(s);
    EXPECT_EQ(s->cells, nullptr);
}

TEST(ray_classify, LeavesMoreTrianglesThanAnArrayCanHoldUnclassified)
{
    double value = 0;
    Data huge = wrapped<Data>(&value, std::numeric_limits<int>::max() / 9 + 1, 9);
    Scene s({});
    s->triangles = &huge;
    ray_classify(s);
    EXPECT_EQ(s->cells, nullptr);
}

TEST(ray_classify, ReplacesTheCellsOfAnEarlierCall)
{
    NEEDS_HEAP_COUNTS();
    const HeapWatch heap;
    {
        Scene s(spanning(0, 0, 0, 1, 1, 1), 3, 3, 3);
        ray_classify(s);
        s->nx = 1;
        ray_classify(s);
        EXPECT_EQ(s.box(0)[3], 1);
        s->nz = 9;
        ray_make_sub_bbox(s);
        EXPECT_THAT(s.numbers(26), IsEmpty());
    }
    EXPECT_EQ(heap.live_blocks(), 0);
}

TEST(ray_declassify, ReleasesTheCellsThatWereMade)
{
    NEEDS_HEAP_COUNTS();
    for (const int n : {1, 2, 100, -3}) {
        const HeapWatch heap;
        {
            Scene s(joined(spanning(0, 0, 0, 1, 1, 1), copies(150)), 3, 4, 5);
            s->nx = s->ny = s->nz = n;
            ray_declassify(s);
            ray_declassify(s);
            EXPECT_EQ(s->nx, n);
        }
        EXPECT_EQ(heap.live_blocks(), 0);
    }
}

TEST(ray_classify, SurvivesEveryFailedAllocation)
{
    NEEDS_HEAP_FAILURES();
    const int64_t failed = fail_each_allocation([](int64_t) {
        double values[9 * 120] = {};
        for (int i = 0; i < 120; ++i)
            values[9 * i + 3] = values[9 * i + 7] = 1;
        Data triangles = wrapped<Data>(values, 120, 9);
        RayStatus s;
        ray_initialize(&s);
        s.nx = s.ny = s.nz = 2;
        ray_set_triangles(&triangles, &s);
        ray_classify(&s);
        double o[3] = {0.25, 0.25, -1}, d[3] = {0, 0, 1}, distance = 1;
        EXPECT_LE(ray_intersect(o, d, &s, &distance), 120);
        EXPECT_EQ(distance, 1);
        ray_declassify(&s);
        DataDispose(&s.bbox);
    });
    EXPECT_GE(failed, 2 + 9 + 8 * 4); // box, marks, cells with their boxes, two nodes each
}

} // namespace
} // namespace korvale::test
