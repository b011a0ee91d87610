// Whose the cells of a record are, and what is read of a host's own that stand at the address of others.
#include "ray/internal/cells.h"

#include <algorithm>
#include <cstdlib>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/ray/host_cells.h"
#include "tests/ray/scene.h"

namespace korvale::test {
namespace {

using namespace korvale::ray;

TEST(Cells, OfARecordAreTheLibrarysOwnUntilTheyAreReleased)
{
    Scene record(spanning(0, 0, 0, 1, 1, 1), 2, 2, 2);
    EXPECT_NE(cells_of(*record).grid, nullptr);
    record->nx = 7;
    EXPECT_EQ(cells_of(*record).count, 8);
    EXPECT_NE(cells_of(*record).grid, nullptr);
    std::vector<data_list_struct> emptied(8);
    for (int c = 0; c < 8; ++c) {
        std::swap(record->cells[c], emptied[static_cast<size_t>(c)]);
        DataListInitialize(&record->cells[c]);
        EXPECT_NE(cells_of(*record).grid, nullptr);
    }
    for (int c = 0; c < 8; ++c) {
        give_box(record->cells[c],
                 Box{5, 5, 5, 6, 6, 6}); // in other memory than the library's boxes, which still stand
        EXPECT_NE(cells_of(*record).grid, nullptr);
        EXPECT_EQ(cells_of(*record).count, 8);
    }
    for (data_list_struct& cell : emptied)
        DataListDispose(&cell);
    data_list_struct* const own = std::exchange(record->cells, nullptr);
    EXPECT_EQ(cells_of(*record).count, 0);
    make_cells(record, {{0, 0, 0, 1, 1, 1}});
    EXPECT_EQ(cells_of(*record).grid, nullptr);
    EXPECT_EQ(cells_of(*record).count, 1);
    ray_declassify(record);
    record->cells = own;
    EXPECT_NE(cells_of(*record).grid, nullptr);
    EXPECT_EQ(cells_of(*record).count, 8);
}

/// Frees the cells of a record as a host must not, and hangs own ones in, with the boxes given. Returns where those of
/// the library stood; what the library keeps of them is left to the test.
const data_list_struct* exchange_by_hand(Scene& s, int cells, const std::vector<Box>& boxes)
{
    const data_list_struct* const before = s->cells;
    for (int c = 0; c < cells; ++c)
        DataListDispose(&s->cells[c]);
    std::free(s->cells);
    make_cells(s, boxes);
    return before;
}

#ifdef __linux__ // where the heap tells how large a block is

TEST(HostMadeCells, AreSearchedAsTheyStandInABlockOfAnotherSizeThanTheLibrarys)
{
    for (int made = 1; made <= 8; ++made)
        for (int n = 1; n <= 8; ++n) {
            if (n == made)
                continue;
            const int count = n * n * n;
            const data_list_struct* before;
            {
                Scene s(levels(9), made, made, made);
                std::vector<Box> boxes(static_cast<size_t>(count), Box{5, 5, 0, 6, 6, 8});
                boxes.back() = {0, 0, 0, 1, 1, 8};
                before = exchange_by_hand(s, made * made * made, boxes);
                s->nx = s->ny = s->nz = n;
                for (int c = 0; c < count; ++c)
                    ray_add_tri_to_bbox(s, c == count - 1 ? 3 : c % 3, c);
                EXPECT_EQ(tested_upwards(s), (std::vector<int>{3})) << made << " " << n;
                if (n % 2 == 0) { // else they are released like any others
                    data_list_struct* const own = s->cells;
                    ray_classify(s);
                    EXPECT_EQ(hits_upwards(s), 9) << made << " " << n;
                    for (int c = 0; c < count; ++c)
                        DataListDispose(&own[c]);
                    std::free(own);
                }
            }
            forget_cells(before);
        }
}

TEST(HostMadeCells, AreNotReadBeyondTheirBlockAtTheAddressOfTheLibrarys)
{
    for (int own = 1; own < 27; ++own) {
        const data_list_struct* before;
        {
            Scene s(levels(9), 3, 3, 3);
            before = exchange_by_hand(s, 27, std::vector<Box>(static_cast<size_t>(own), Box{0, 0, 0, 1, 1, 8}));
            if (s->cells == before)
                s->nx = s->ny = s->nz = 3; // as if there were still as many
            EXPECT_EQ(cells_of(*s).count, own);
            for (int c = 0; c < own; ++c)
                ray_add_tri_to_bbox(s, c % 9, c);
            ray_add_tri_to_bbox(s, 0, own);
            EXPECT_EQ(hits_upwards(s), std::min(own, 9)) << own;
        }
        forget_cells(before);
    }
}

#endif

} // namespace
} // namespace korvale::test
