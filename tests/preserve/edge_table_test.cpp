// The hash table of edges: order of the list, room, and how few slots are passed.
#include "preserve/internal/edge_table.h"

#include <algorithm>
#include <bit>
#include <map>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/random.h"

namespace korvale::test {
namespace {

using preserve::edge_hash;
using preserve::EdgeTable;

/// The edges of a lattice [rows][columns] of triangles whose borders meet, its points numbered row by row from `first`
/// on, or only every `apart`th number.
std::vector<std::pair<int, int>> lattice_edges(int rows, int columns, int first, int apart)
{
    std::vector<std::pair<int, int>> edges;
    const auto point = [=](int row, int column) { return first + apart * (row % rows * columns + column % columns); };
    for (int i = 0; i < rows; ++i)
        for (int j = 0; j < columns; ++j)
            for (const int to : {point(i + 1, j), point(i, j + 1), point(i + 1, j + 1)})
                edges.emplace_back(std::min(point(i, j), to), std::max(point(i, j), to));
    return edges;
}

/// Slots looked at to place each edge in a table that they fill to two thirds at most, on average.
double slots_looked_at(const std::vector<std::pair<int, int>>& edges)
{
    const size_t mask = std::bit_ceil(edges.size() + edges.size() / 2 + 4) - 1;
    std::vector<bool> taken(mask + 1);
    int64_t looked = 0;
    for (const auto& [from, to] : edges) {
        size_t slot = edge_hash(from, to) & mask;
        for (++looked; taken[slot]; slot = (slot + 1) & mask)
            ++looked;
        taken[slot] = true;
    }
    return static_cast<double>(looked) / static_cast<double>(edges.size());
}

TEST(EdgeHash, LatticesOfAnySizeSpread)
{
    for (int columns = 7; columns < 250; columns += columns / 5 + 1)
        for (const int rows : {3, columns / 2 + 3, columns, 2 * columns + 1}) {
            EXPECT_LT(slots_looked_at(lattice_edges(rows, columns, 0, 1)), 4.0) << rows << " x " << columns;
            EXPECT_LT(slots_looked_at(lattice_edges(rows, columns, 5000, 1)), 4.0) << rows << " x " << columns;
            EXPECT_LT(slots_looked_at(lattice_edges(rows, columns, 0, 10)), 8.0) << rows << " x " << columns;
        }
}

TEST(EdgeHash, EdgesThatGetEverLongerSpread)
{
    for (const int step : {1, 2, 3, 5, 10})
        for (int count = 100; count < 100000; count += count / 2) {
            std::vector<std::pair<int, int>> edges;
            for (int i = 0; i < count; ++i)
                for (int k = 0; k < 3; ++k)
                    edges.emplace_back(i, count + step * i + k);
            EXPECT_LT(slots_looked_at(edges), 4.0) << count << " by " << step;
        }
}

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

/// Slots of other edges that a table passes to note all edges twice, for each note.
double slots_passed(const std::vector<std::pair<int, int>>& edges)
{
    const int notes = static_cast<int>(2 * edges.size());
    std::vector<int32_t> ends(static_cast<size_t>(2 * notes));
    EdgeTable table(ends.data(), notes);
    for (int turn = 0; turn < 2; ++turn)
        for (const auto& [a, b] : edges)
            EXPECT_TRUE(table.note(a, b));
    EXPECT_EQ(table.found(), static_cast<int>(edges.size()));
    return static_cast<double>(table.passed()) / notes;
}

TEST(EdgeTable, PassesFewSlotsWhereNumbersGoInSteps)
{
    for (int apart = 1; apart <= 1 << 18; apart *= 2)
        for (const int columns : {5, 20, 80})
            EXPECT_LT(slots_passed(lattice_edges(90, columns, 0, apart)), 6.0) << columns << " columns, " << apart;
}

TEST(EdgeTable, PassesFewSlotsWhereColumnsLieFarApart)
{
    for (int apart = 1 << 10; apart <= 1 << 24; apart *= 2)
        for (const int rows : {50, 1000}) {
            std::vector<std::pair<int, int>> edges;
            for (int j = 0; j < 60; ++j)
                for (int i = 0; i < rows; ++i)
                    for (const int to : {1, apart, apart + 1})
                        edges.emplace_back(i + apart * j, i + apart * j + to);
            EXPECT_LT(slots_passed(edges), 6.0) << rows << " rows, " << apart;
        }
}

TEST(EdgeTable, ALatticeIsNotScattered)
{
    for (int columns = 7; columns < 250; columns += columns / 5 + 1)
        EXPECT_LT(slots_passed(lattice_edges(2 * columns + 1, columns, 0, 1)), 3.0) << columns;
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
