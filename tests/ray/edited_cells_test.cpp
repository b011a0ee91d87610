// Cells that the host has changed or made itself: what stands in them is followed on every route of a query, and
// nothing beyond a cell's six box values is read.
#include <algorithm>
#include <cstdlib>
#include <limits>
#include <thread>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ray/grid.h"
#include "ray/query.h"
#include "tests/ray/host_cells.h"
#include "tests/ray/scene.h"
#include "tests/support/heap.h"

namespace korvale::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

void move_box(data_list_struct& cell, double by)
{
    for (int i = 0; i < 6; ++i)
        cell.dvals[i] += by;
}

/// Levels 0 to 8 in four cells along z: cell i lists 2 i to 2 i + 2.
Scene four_layers()
{
    return Scene(levels(9), 1, 1, 4);
}

/// A first vertex that is not finite, so that the cells have no box to speak of.
std::vector<double> levels_around_nan()
{
    return joined({kNaN, kNaN, kNaN, 0, 0, 0, 0, 0, 0}, levels(2));
}

// -------------------------------------------------------------------------------------------------- cells of the
// library

TEST(EditedCells, AreMetWithTheNodesHungOnAnEmptyOne)
{
    Scene s(joined(level(0), level(8)), 1, 1, 4);
    ASSERT_THAT(s.numbers(1), IsEmpty());
    s.triangles().count = 1;
    ASSERT_EQ(hits_upwards(s), 1);
    auto three = doubles<Data>(9, joined(joined(level(0), level(8)), level(3)));
    ray_set_triangles(three, s);
    s->cells[1].next = number_node({2});
    EXPECT_EQ(hits_upwards(s), 3);
}

TEST(EditedCells, AreMetWithTheNodesHungOnTheFirst)
{
    Scene s = four_layers();
    DataListDispose(s->cells[0].next);
    std::free(s->cells[0].next);
    s->cells[0].next = number_node({8});
    EXPECT_THAT(tested_upwards(s), ElementsAre(2, 3, 4, 5, 6, 7, 8));
}

TEST(EditedCells, AreNotMetOnceEmptied)
{
    for (int c = 0; c < 4; ++c) {
        Scene s = four_layers();
        DataListDispose(&s->cells[c]);
        EXPECT_EQ(hits_upwards(s), c == 0 || c == 3 ? 7 : 8) << c;
    }
}

TEST(EditedCells, AreNotMetWithoutTheirBox)
{
    Scene s = four_layers();
    DataDispose(&s->cells[0]); // keeps its numbers
    EXPECT_THAT(s.numbers(0), ElementsAre(0, 1, 2));
    EXPECT_THAT(tested_upwards(s), ElementsAre(2, 3, 4, 5, 6, 7, 8));
    DataDispose(&s->cells[2]);
    EXPECT_THAT(tested_upwards(s), ElementsAre(2, 3, 4, 6, 7, 8));
}

TEST(EditedCells, AreMetAgainWithABoxOfTheHost)
{
    for (int c = 0; c < 4; ++c) {
        Scene s = four_layers();
        const std::vector<double> box = s.box(c);
        DataDispose(&s->cells[c]);
        give_box(s->cells[c], box);
        EXPECT_EQ(hits_upwards(s), 9) << c;
    }
}

TEST(EditedCells, TakeNumbersWhileEmpty)
{
    for (const int c : {0, 2}) {
        Scene s = four_layers();
        const std::vector<double> box = s.box(c);
        DataListDispose(&s->cells[c]);
        for (int t = 0; t < 150; ++t)
            ray_add_tri_to_bbox(s, t % 9, c);
        EXPECT_EQ(s.numbers(c).size(), 150u);
        EXPECT_EQ(s->cells[c].next->count, 100);
        EXPECT_EQ(hits_upwards(s), c == 0 ? 7 : 8);
        give_box(s->cells[c], box);
        EXPECT_EQ(hits_upwards(s), 9);
    }
}

TEST(EditedCells, AreReleasedWithTheOthers)
{
    NEEDS_HEAP_COUNTS();
    const HeapWatch heap;
    for (int c = 0; c < 4; ++c) {
        Scene s = four_layers();
        DataListDispose(&s->cells[c]);
        s->nx = 1 + c;
        s->nz = c == 3 ? -1 : 2;
    }
    for (const int sizes : {2, 50}) {
        Scene s = four_layers();
        const std::vector<double> box = s.box(0);
        DataDispose(&s->cells[0]);
        give_box(s->cells[0], box);
        move_box(s->cells[1], 3);
        s->nz = sizes;
        ray_classify(s);
        EXPECT_EQ(hits_upwards(s), 9);
    }
    for (const bool again : {true, false}) { // more than enough cells emptied to know them by
        Scene s(levels(9), 1, 1, 16);
        for (int c = 0; c < 12; ++c)
            DataListDispose(&s->cells[c]);
        if (again) {
            ray_classify(s);
            EXPECT_EQ(hits_upwards(s), 9);
        }
        s->nz = 3;
    }
    {
        Scene s = four_layers();
        DataListDispose(&s->cells[0]);
        DataListDispose(&s->cells[3]);
        ray_classify(s);
        EXPECT_EQ(hits_upwards(s), 9);
        DataListDispose(&s->cells[0]);
        ray_make_sub_bbox(s);
    }
    EXPECT_EQ(heap.live_blocks(), 0);
}

TEST(EditedCells, AreSearchedAsTheyWereMadeAfterOtherSizesAreSet)
{
    Scene s = four_layers();
    DataListDispose(&s->cells[3]);
    for (const int n : {1, 3, 50, 0}) {
        s->nx = s->ny = s->nz = n;
        EXPECT_EQ(hits_upwards(s), 7) << n;
    }
}

TEST(EditedCells, AreSkippedInAGridThatIsNotFinite)
{
    for (const int c : {0, 5, 7}) {
        Scene s(levels_around_nan(), 2, 2, 2);
        double o[3] = {kNaN, kNaN, kNaN}, d[3] = {0, 0, 1}, distance;
        DataListDispose(&s->cells[c]);
        EXPECT_EQ(ray_intersect(o, d, s, &distance), 0);
        EXPECT_EQ(hits_upwards(s), 0);
        ray_add_tri_to_bbox(s, 1, c);
        EXPECT_EQ(hits_upwards(s), 0);
    }
}

/// A grid flat enough that a ray in its plane meets more cells than the quick search has room for.
Scene many_cells()
{
    return Scene(joined(spanning(0, 0, 0, 0, 0, 1000), {0, 0, 0, 0, 0, 1000, 0, 0, 500}), 2, 2, 1000);
}

int tested_along_many(Scene& s)
{
    double o[3] = {0, 0, -1}, d[3] = {0, 0, 1}, distance;
    ray_intersect(o, d, s, &distance);
    const std::vector<int> marks = s.marks();
    return static_cast<int>(std::count(marks.begin(), marks.end(), 1));
}

TEST(EditedCells, AreSkippedAmongThousands)
{
    Scene s = many_cells();
    for (int c = 0; c < 4000; ++c)
        if (c != 1234)
            DataListDispose(&s->cells[c]);
    EXPECT_EQ(tested_along_many(s), 1);
    DataDispose(&s->cells[1234]);
    EXPECT_EQ(tested_along_many(s), 0);
    Scene all_but_one = many_cells();
    DataListDispose(&all_but_one->cells[1234]);
    EXPECT_EQ(tested_along_many(all_but_one), 3);
}

// -------------------------------------------------------------------------------------------------------- moved boxes

TEST(EditedCells, StayWhereTheyWereMadeWhenABoxIsMoved)
{
    Scene s = four_layers();
    for (const int c : {2, 0, 1, 3}) {
        move_box(s->cells[c], 100);
        EXPECT_EQ(hits_upwards(s), 9) << c;
    }
}

/// Gives every cell of a record another box in other memory, far away, as many blocks of `between` bytes after the
/// library's own were released as there are cells.
void give_other_boxes(Scene& s, int cells, size_t between)
{
    for (int c = 0; c < cells; ++c)
        DataListDispose(&s->cells[c]);
    std::vector<void*> others;
    for (int c = 0; c < cells && between > 0; ++c)
        others.push_back(std::malloc(between));
    for (int c = 0; c < cells; ++c)
        give_box(s->cells[c], Box{100, 100, 100, 101, 101, 101});
    for (void* other : others)
        std::free(other);
}

TEST(EditedCells, StayWhereTheyWereMadeWhateverBoxesTheyAreGivenAnew)
{
    for (const int cells : {1, 2, 8, 300})
        for (const size_t between : {0, 48, 1000}) {
            const HeapWatch heap;
            {
                Scene s(levels(9), 1, 1, cells);
                give_other_boxes(s, cells, between);
                EXPECT_EQ(hits_upwards(s), 0);
                for (int c = 0; c < cells; ++c)
                    ray_add_tri_to_bbox(s, c % 9, c);
                EXPECT_EQ(hits_upwards(s), std::min(cells, 9)) << cells << " " << between;
                s->nz = 1;
                EXPECT_EQ(hits_upwards(s), std::min(cells, 9)) << cells << " " << between;
                ray_classify(s);
                EXPECT_EQ(hits_upwards(s), 9) << cells << " " << between;
            }
            EXPECT_EQ(heap.live_blocks(), 0) << cells << " " << between;
        }
}

TEST(EditedCells, StayWhereTheyWereMadeUnderCellsThatAHostWritesOverThem)
{
    Scene s = four_layers();
    data_list_struct own[4];
    for (int c = 0; c < 4; ++c) {
        DataListInitialize(&own[c]);
        give_box(own[c], Box{100, 100, 100, 101, 101, 101});
        own[c].next = number_node({2 * c});
        std::swap(s->cells[c], own[c]);
    }
    EXPECT_THAT(tested_upwards(s), ElementsAre(0, 2, 4, 6));
    s->nz = 2;
    EXPECT_THAT(tested_upwards(s), ElementsAre(0, 2, 4, 6));
    for (data_list_struct& cell : own)
        DataListDispose(&cell);
}

TEST(EditedCells, StayWhereTheyWereMadeInAGridThatIsNotFinite)
{
    Scene s(levels_around_nan(), 1, 1, 2);
    for (int c = 0; c < 2; ++c)
        for (int i = 0; i < 6; ++i)
            s->cells[c].dvals[i] = i < 3 ? -10 : 10;
    EXPECT_EQ(hits_upwards(s), 0);
}

TEST(EditedCells, StayWhereTheyWereMadeAmongThousands)
{
    Scene s = many_cells();
    for (int c = 0; c < 4000; ++c)
        move_box(s->cells[c], 5000);
    EXPECT_EQ(tested_along_many(s), 3);
}

// ------------------------------------------------------------------------------------------------- nodes of the host

TEST(EditedCells, MayHoldNodesWithoutNumbers)
{
    Scene s(levels(3), 1, 1, 1);
    data_list_struct* const numbers = s->cells[0].next;
    data_list_struct* const empty = DataListNew();
    empty->next = numbers;
    s->cells[0].next = empty;
    EXPECT_EQ(hits_upwards(s), 3);
    empty->type = DATA_TYPE_INT;
    empty->dim = 1;
    empty->count = 50; // and no buffer
    EXPECT_EQ(hits_upwards(s), 3);
    empty->count = std::numeric_limits<int32_t>::min();
    EXPECT_EQ(hits_upwards(s), 3);
    empty->type = DATA_TYPE_DOUBLE;
    empty->count = 3;
    empty->dim = 1;
    ASSERT_EQ(DataAllocate(empty), 1);
    EXPECT_EQ(hits_upwards(s), 3);
}

TEST(EditedCells, TakeNumbersBehindANodeThatHasNoPlace)
{
    for (const int count : {-1, 0, 50, 99}) {
        Scene s(levels(3), 1, 1, 1);
        data_list_struct* const bare = DataListNew();
        bare->type = DATA_TYPE_INT;
        bare->dim = 1;
        bare->count = count; // and no buffer
        s->cells[0].next->next = bare;
        ray_add_tri_to_bbox(s, 2, 0);
        EXPECT_EQ(bare->count, count);
        ASSERT_NE(bare->next, nullptr);
        EXPECT_EQ(bare->next->count, 1);
        EXPECT_EQ(bare->next->ivals[0], 2);
    }
}

// ------------------------------------------------------------------------------------------------ cells of the host

TEST(HostMadeCells, AreSearchedAsTheyStand)
{
    Scene s(levels(9));
    make_cells(s, {{0, 0, 0, 1, 1, 2}, {0, 0, 4, 1, 1, 5}, {5, 5, 0, 6, 6, 8}, {0, 0, 4, 1, 1, 5}});
    EXPECT_EQ(hits_upwards(s), 0);
    s->cells[0].next = number_node({0, 1, 2});
    s->cells[1].next = number_node({4});
    s->cells[2].next = number_node({7});
    s->cells[3].next = number_node({4, 5});
    EXPECT_THAT(tested_upwards(s), ElementsAre(0, 1, 2, 4, 5));
    EXPECT_EQ(hits_upwards(s), 5);
    move_box(s->cells[1], 50);
    move_box(s->cells[3], 50);
    EXPECT_EQ(hits_upwards(s), 3);
}

TEST(HostMadeCells, CountByTheSizesAsTheyStand)
{
    Scene s(levels(3));
    make_cells(s, {{0, 0, 0, 1, 1, 1}, {0, 0, 1, 1, 1, 2}, {0, 0, 1, 1, 1, 2}});
    for (int c = 0; c < 3; ++c)
        s->cells[c].next = number_node({c});
    s->nz = 2;
    EXPECT_EQ(hits_upwards(s), 2);
    for (const int n : {0, -1, std::numeric_limits<int32_t>::min()}) {
        s->nz = n;
        EXPECT_EQ(hits_upwards(s), 0);
        ray_add_tri_to_bbox(s, 0, 0);
        EXPECT_THAT(s.numbers(0), ElementsAre(0));
    }
    s->nx = s->ny = -1;
    s->nz = 3;
    EXPECT_EQ(hits_upwards(s), 0);
    s->nx = s->ny = 1;
}

TEST(HostMadeCells, AreNotMetWithoutABox)
{
    Scene s(levels(3));
    make_cells(s, {{0, 0, 0, 1, 1, 1}, {0, 0, 0, 1, 1, 1}});
    s->cells[0].next = number_node({0});
    s->cells[1].next = number_node({1, 2});
    DataDispose(&s->cells[1]);
    EXPECT_EQ(hits_upwards(s), 1);
    DataListDispose(&s->cells[0]);
    EXPECT_EQ(hits_upwards(s), 0);

    std::vector<double> short_box(5); // one value is missing
    s->cells[0].dvals = static_cast<double*>(std::malloc(5 * sizeof(double)));
    s->cells[0].dim = 5;
    s->cells[0].count = 1;
    std::copy(short_box.begin(), short_box.end(), s->cells[0].dvals);
    s->cells[0].next = number_node({0});
    EXPECT_EQ(hits_upwards(s), 0);
}

TEST(HostMadeCells, TakeNumbers)
{
    Scene s(levels(9));
    make_cells(s, {{0, 0, 0, 1, 1, 8}, {0, 0, 0, 1, 1, 8}});
    for (int t = 0; t < 120; ++t)
        ray_add_tri_to_bbox(s, t % 7, 1);
    ray_add_tri_to_bbox(s, 8, 0);
    ray_add_tri_to_bbox(s, 8, 2);
    ray_add_tri_to_bbox(s, 8, -1);
    EXPECT_THAT(s.numbers(0), ElementsAre(8));
    EXPECT_EQ(s.numbers(1).size(), 120u);
    EXPECT_EQ(s->cells[1].next->count, 100);
    EXPECT_EQ(hits_upwards(s), 8);
}

TEST(HostMadeCells, AreReleasedByDeclassification)
{
    NEEDS_HEAP_COUNTS();
    const HeapWatch heap;
    {
        Scene s(levels(9));
        make_cells(s, {{0, 0, 0, 1, 1, 8}, {0, 0, 0, 1, 1, 8}});
        ray_add_tri_to_bbox(s, 3, 1);
        ray_declassify(s);
        EXPECT_EQ(s->cells, nullptr);
    }
    EXPECT_EQ(heap.live_blocks(), 0);
}

TEST(HostMadeCells, AreLeftToTheHostByClassification)
{
    double box[6] = {0, 0, 0, 1, 1, 1};
    data_list_struct cells[2]; // nothing that could be freed
    for (data_list_struct& cell : cells) {
        DataListInitialize(&cell);
        cell.dim = 6;
        cell.count = 1;
        cell.dvals = box;
    }
    Scene s(levels(3));
    s->nx = 1;
    s->ny = 1;
    s->nz = 2;
    s->cells = cells;
    EXPECT_EQ(hits_upwards(s), 0);
    ray_classify(s);
    EXPECT_NE(s->cells, cells);
    EXPECT_EQ(cells[1].dvals, box);
    EXPECT_EQ(hits_upwards(s), 3);
}

TEST(HostMadeCells, MayFollowThoseOfTheLibraryThatWereDeclassified)
{
    for (const int cells : {1, 2, 8, 300}) {
        Scene s(levels(9), 1, 1, cells);
        ASSERT_EQ(hits_upwards(s), 9);
        ray_declassify(s);
        std::vector<Box> boxes(static_cast<size_t>(cells), Box{5, 5, 0, 6, 6, 8});
        make_cells(s, boxes);
        for (int c = 0; c < cells; ++c)
            ray_add_tri_to_bbox(s, c % 9, c);
        EXPECT_EQ(hits_upwards(s), 0) << cells;
        move_box(s->cells[0], -5);
        EXPECT_EQ(hits_upwards(s), 1) << cells;
    }
}

TEST(HostMadeCells, AreCastAtByManyThreadsBesideThoseOfTheLibrary)
{
    const auto work = [](int seed) {
        for (int i = 0; i < 200; ++i) {
            Scene made(levels(9), 1 + (i + seed) % 3, 2, 4);
            EXPECT_EQ(hits_upwards(made), 9);
            Scene own(levels(9));
            make_cells(own, {{0, 0, 0, 1, 1, 8}});
            own->cells[0].next = number_node({1, 5});
            EXPECT_EQ(hits_upwards(own), 2);
            EXPECT_EQ(hits_upwards(made), 9);
        }
    };
    std::vector<std::thread> threads;
    for (int seed = 0; seed < 4; ++seed)
        threads.emplace_back(work, seed);
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace
} // namespace korvale::test
