// The cells that classification makes, and the triangles it lists in them.
#include "ray/grid.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/ray/scene.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"

namespace korvale::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

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

} // namespace
} // namespace korvale::test
