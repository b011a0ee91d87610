#include "preserve/internal/edge_table.h"

#include <map>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/random.h"

namespace korvale::test {
namespace {

using inside::EdgeTable;

TEST(EdgeTable, ListsEachEdgeOnceInOrderOfAppearance)
{
    int32_t ends[8] = {};
    EdgeTable table(ends, 4);
    ASSERT_TRUE(table.exists());
    EXPECT_TRUE(table.note(2, 5));
    EXPECT_TRUE(table.note(0, 0));
    EXPECT_TRUE(table.note(2, 5));
    EXPECT_TRUE(table.note(2, 6));
    EXPECT_EQ(table.found(), 3);
    const int32_t expected[] = {2, 5, 0, 0, 2, 6};
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(ends[i], expected[i]);
}

TEST(EdgeTable, WithoutRoomKnownEdgesAreStillFound)
{
    int32_t ends[4] = {};
    EdgeTable table(ends, 2);
    EXPECT_TRUE(table.note(0, 1));
    EXPECT_TRUE(table.note(1, 2));
    EXPECT_FALSE(table.note(0, 2));
    EXPECT_TRUE(table.note(0, 1));
    EXPECT_EQ(table.found(), 2);
}

TEST(EdgeTable, ATableOfNoEdgesRefusesTheFirst)
{
    int32_t ends[2] = {};
    EdgeTable table(ends, 0);
    ASSERT_TRUE(table.exists());
    EXPECT_FALSE(table.note(3, 4));
}

TEST(EdgeTable, AgreesWithAnOrderedMapWhateverTheEdges)
{
    Random random(4610);
    for (int round = 0; round < rounds(60); ++round) {
        const int points = random.between(1, 400), notes = random.between(1, 1200);
        const int spread = random.one_in(2) ? points : random.between(1, points); // near neighbours collide
        std::vector<int32_t> ends(static_cast<size_t>(2 * notes));
        EdgeTable table(ends.data(), notes);
        std::map<std::pair<int, int>, int> known;
        for (int i = 0; i < notes; ++i) {
            const int a = random.one_in(3) ? 0 : random.below(points); // a hub among them
            const int b = a + random.below(spread);
            ASSERT_TRUE(table.note(a, b));
            known.try_emplace({a, b}, static_cast<int>(known.size()));
        }
        ASSERT_EQ(table.found(), static_cast<int>(known.size()));
        for (const auto& [edge, place] : known) {
            ASSERT_EQ(ends[2 * static_cast<size_t>(place)], edge.first);
            ASSERT_EQ(ends[2 * static_cast<size_t>(place) + 1], edge.second);
        }
    }
}

} // namespace
} // namespace korvale::test
