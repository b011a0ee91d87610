// The single steps of classification, its undoing, and where both end.
#include "ray/grid.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <utility>
#include <vector>

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

constexpr int kMostCells = std::numeric_limits<int>::max();

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

TEST(ray_classify, UsesTheCellsOfAnEarlierCallAgain)
{
    NEEDS_HEAP_FAILURES();
    Scene s(joined(spanning(0, 0, 0, 1, 1, 1), copies(150)), 4, 4, 4);
    const std::vector<double> box = s.box(63);
    DataListDispose(&s->cells[5]);
    DataDispose(&s->cells[7]);
    s->cells[63].dvals[0] = 99;
    Scene fresh(joined(spanning(0, 0, 0, 1, 1, 1), copies(150)));
    ray_classify(fresh);
    int64_t kept = 0;
    for (int c = 0; c < 64; ++c)
        kept += static_cast<int64_t>(node_counts(s->cells[c]).size());
    const int64_t lost = static_cast<int64_t>(node_counts(fresh->cells[5]).size());
    const HeapWatch again;
    ray_classify(s);
    // The planes, the ends of chains, two boxes, the nodes of one cell, and the room of all others is asked for.
    EXPECT_EQ(again.allocations(), 4 + 2 * lost + kept);
    EXPECT_EQ(s.box(63), box);
    for (int c = 0; c < 64; ++c) {
        EXPECT_EQ(s.box(c), fresh.box(c));
        EXPECT_EQ(s.numbers(c), fresh.numbers(c));
        EXPECT_EQ(s->cells[c].count, 1);
        EXPECT_EQ(s->cells[c].dim, 6);
    }
}

TEST(ray_classify, MakesACellAnewThatIsNotAsItWasMade)
{
    const HeapWatch heap;
    {
        Scene s(spanning(0, 0, 0, 2, 3, 6), 1, 1, 6);
        const std::vector<int> numbers[6] = {{0}, {}, {}, {}, {}, {1}};
        data_list_struct* const cells = s->cells;
        cells[0].type = DATA_TYPE_INT;
        cells[1].dim = 3;
        cells[2].count = 2;
        cells[3].ivals = static_cast<int32_t*>(std::malloc(sizeof(int32_t)));
        cells[4].bvals = static_cast<uint8_t*>(std::malloc(1));
        std::free(std::exchange(cells[5].dvals, nullptr));
        ray_classify(s);
        ASSERT_EQ(s->cells, cells);
        for (int c = 0; c < 6; ++c) {
            EXPECT_EQ(cells[c].type, DATA_TYPE_DOUBLE) << c;
            EXPECT_EQ(cells[c].dim, 6) << c;
            EXPECT_EQ(cells[c].count, 1) << c;
            EXPECT_EQ(cells[c].ivals, nullptr) << c;
            EXPECT_EQ(cells[c].bvals, nullptr) << c;
            EXPECT_EQ(s.box(c), (std::vector<double>{0, 0, 0.0 + c, 2, 3, 1.0 + c})) << c;
            EXPECT_EQ(s.numbers(c), numbers[c]) << c;
        }
    }
    EXPECT_EQ(heap.live_blocks(), 0);
}

/// All nodes behind a cell.
std::vector<const data_list_struct*> nodes_of(const data_list_struct& cell)
{
    std::vector<const data_list_struct*> found;
    for (const data_list_struct* node = cell.next; node != nullptr; node = node->next)
        found.push_back(node);
    return found;
}

TEST(ray_classify, UsesTheNodesOfAnEarlierCallAgain)
{
    Scene s(copies(251), 2, 2, 2);
    const std::vector<const data_list_struct*> before = nodes_of(s->cells[0]);
    ASSERT_EQ(before.size(), 3u);
    ray_classify(s);
    EXPECT_EQ(nodes_of(s->cells[0]), before);
    EXPECT_THAT(node_counts(s->cells[0]), ElementsAre(100, 100, 51));

    int64_t cells = 0;
    for (int c = 0; c < 8; ++c)
        cells += s->cells[c].next != nullptr ? 1 : 0;
    const HeapWatch heap;
    s->triangles->count = 101;
    ray_classify(s);
    EXPECT_THAT(node_counts(s->cells[0]), ElementsAre(100, 1));
    EXPECT_EQ(heap.live_blocks(), heap_is_counted() ? -2 * cells : 0);
    s->triangles->count = 0;
    ray_classify(s);
    EXPECT_EQ(s->cells[0].next, nullptr);
    s->triangles->count = 251;
    ray_classify(s);
    EXPECT_EQ(s.numbers(0), first_numbers(251));
    ray_make_sub_bbox(s);
    EXPECT_EQ(s->cells[0].next, nullptr);
}

TEST(ray_classify, MakesNodesOfTheHostItsOwn)
{
    const HeapWatch heap;
    {
        Scene s(copies(151), 1, 1, 1);
        data_list_struct* const node = DataListNew();
        node->dim = 3;
        node->count = 1;
        node->type = DATA_TYPE_DOUBLE;
        DataAllocate(node);
        node->ivals = static_cast<int32_t*>(std::malloc(sizeof(int32_t)));
        node->bvals = static_cast<uint8_t*>(std::malloc(5));
        node->next = s->cells[0].next;
        s->cells[0].next = node;
        ray_classify(s);
        EXPECT_EQ(s.numbers(0), first_numbers(151));
        EXPECT_THAT(node_counts(s->cells[0]), ElementsAre(100, 51));
        EXPECT_EQ(node->dvals, nullptr);
        EXPECT_EQ(node->bvals, nullptr);
    }
    EXPECT_EQ(heap.live_blocks(), 0);
}

/// 120 triangles that touch all of 2 x 2 x 2 cells, classified as far as the heap allows.
struct Crowd {
    explicit Crowd(double first = 0.0)
    {
        values[0] = first;
        for (int i = 0; i < 120; ++i)
            values[9 * i + 3] = values[9 * i + 7] = 1;
        ray_initialize(&s);
        s.nx = s.ny = s.nz = 2;
        ray_set_triangles(&triangles, &s);
        ray_classify(&s);
    }
    ~Crowd()
    {
        ray_declassify(&s);
        DataDispose(&s.bbox);
    }
    Crowd(const Crowd&) = delete;
    Crowd& operator=(const Crowd&) = delete;

    void expect_all_listed_or_no_cells() const
    {
        for (int c = 0; s.cells != nullptr && c < 8; ++c)
            EXPECT_THAT(node_counts(s.cells[c]), ElementsAre(100, 20));
    }

    double values[9 * 120] = {};
    Data triangles = wrapped<Data>(values, 120, 9);
    RayStatus s;
};

TEST(ray_classify, ListsAllTrianglesOrMakesNoCellsTheSecondTime)
{
    NEEDS_HEAP_FAILURES();
    const int64_t failed = fail_each_allocation([](int64_t) {
        Crowd crowd;
        if (crowd.s.cells != nullptr)
            DataListDispose(&crowd.s.cells[6]);
        ray_classify(&crowd.s);
        crowd.expect_all_listed_or_no_cells();
    });
    EXPECT_GE(failed, 2 + 9 + 8 * 4 + 2 + 1 + 4 + 14); // again: planes and ends, a box, its nodes, room of the others
}

TEST(ray_classify, LosesNoCellsWhenTheHeapIsExhaustedTheSecondTime)
{
    NEEDS_HEAP_FAILURES();
    fail_each_allocation([](int64_t) {
        RayStatus s;
        ray_initialize(&s);
        ray_make_sub_bbox(&s);
        ray_add_tri_to_bbox(&s, 0, 3);
        if (s.cells != nullptr) {
            DataDispose(&s.cells[2]);
            DataListDispose(&s.cells[3]);
        }
        ray_make_sub_bbox(&s);
        ray_declassify(&s);
        DataDispose(&s.bbox);
    });
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

TEST(ray_classify, ListsAllTrianglesOrMakesNoCellsWhenAnAllocationFails)
{
    NEEDS_HEAP_FAILURES();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const double first : {0.0, nan}) { // with planes in order, and cell by cell
        const int64_t failed = fail_each_allocation([first](int64_t) {
            Crowd crowd(first);
            crowd.expect_all_listed_or_no_cells();
            double o[3] = {0.25, 0.25, -1}, d[3] = {0, 0, 1}, distance = 1;
            const int hits = ray_intersect(o, d, &crowd.s, &distance);
            EXPECT_TRUE(hits == 0 || (hits == 120 && first == 0.0)) << hits;
            EXPECT_EQ(distance, 1);
        });
        EXPECT_GE(failed, 2 + 9 + 8 * 4); // box, marks, cells with their boxes, two nodes each
    }
}

} // namespace
} // namespace korvale::test
