// Holes joined to what goes round them: one cycle that crosses nothing.
#include <gtest/gtest.h>

#include "places.h"

namespace korvale::test {
using namespace door;

namespace {

/// A square with triangles in some of its 8 x 8 cells, which may touch at the corners of cells.
std::vector<Ring> plate(Random& random)
{
    std::vector<Ring> rings = {{{-1, -1}, {9, -1}, {9, 9}, {-1, 9}}};
    const int gaps = random.between(1, 12);
    for (int cell = 0; cell < 64; ++cell) {
        if (!random.one_in(gaps))
            continue;
        const double x = cell % 8, y = cell / 8;
        const Ring square = {{x, y}, {x, y + 1}, {x + 1, y + 1}, {x + 1, y}}; // clockwise
        const size_t left_out = static_cast<size_t>(random.below(4));
        Ring triangle;
        for (size_t i = 0; i < 4; ++i)
            if (i != left_out)
                triangle.push_back(square[i]);
        const int first = random.below(3);
        std::rotate(triangle.begin(), triangle.begin() + first, triangle.end());
        for (Place& p : triangle)
            if (gaps % 2 == 0) // apart from all others
                p = 0.5 * p + Place{0.5 * x + 0.25, 0.5 * y + 0.25};
        rings.push_back(triangle);
    }
    return rings;
}

LinkedCorners corners_of(const Rings& rings)
{
    LinkedCorners corners;
    for (int32_t k = 0, first = 0; k < static_cast<int32_t>(rings.size()); first = rings.ends[static_cast<size_t>(k++)])
        for (int32_t i = first, end = rings.ends[static_cast<size_t>(k)]; i < end; ++i) {
            corners.place.push_back(i);
            corners.after.push_back(i + 1 < end ? i + 1 : first);
            corners.before.push_back(i > first ? i - 1 : end - 1);
        }
    return corners;
}

TEST(Bridges, MakeOneCycleOfARingAndItsHoles)
{
    Random random(1);
    int holes = 0;
    for (int round = 0; round < rounds(200) && !testing::Test::HasFailure(); ++round) {
        const std::vector<Ring> all = plate(random);
        const Rings rings = rings_of(all);
        LinkedCorners corners = corners_of(rings);
        join_holes(rings, corners, {});
        ASSERT_EQ(corners.place.size(), rings.places.size() + 2 * (all.size() - 1));
        const auto place = [&](int32_t i) {
            return rings.places[static_cast<size_t>(corners.place[static_cast<size_t>(i)])];
        };
        std::vector<Edge> edges;
        double twice = 0;
        int32_t at = 0;
        do {
            const int32_t next = corners.after[static_cast<size_t>(at)];
            ASSERT_EQ(corners.before[static_cast<size_t>(next)], at);
            edges.push_back({place(at), place(next)});
            twice += cross(place(at), place(next));
            at = next;
        } while (at != 0 && edges.size() <= corners.place.size());
        ASSERT_EQ(edges.size(), corners.place.size()) << "all corners are on it, once";
        double expected = 0;
        for (const Ring& ring : all)
            for (const Edge& e : edges_of(ring))
                expected += cross(e.from, e.to);
        EXPECT_EQ(twice, expected);
        for (const Edge& e : edges)
            for (const Edge& f : edges)
                ASSERT_FALSE(side(e.from, e.to, f.from) * side(e.from, e.to, f.to) < 0 &&
                             side(f.from, f.to, e.from) * side(f.from, f.to, e.to) < 0);
        holes += static_cast<int>(all.size()) - 1;
    }
    EXPECT_GT(holes, 1000);
}

} // namespace
} // namespace korvale::test
