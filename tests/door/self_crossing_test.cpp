// Edges of one ring that meet, against all pairs.
#include "door/internal/self_crossing.h"

#include <gtest/gtest.h>

#include "places.h"

namespace korvale::test {
using namespace door;

namespace {

TEST(SelfCrossing, EdgesOfOneRingMeetWhereTheyShareMoreThanACorner)
{
    Random random(3);
    int meeting = 0;
    for (int round = 0; round < rounds(2000) && !testing::Test::HasFailure(); ++round) {
        const int places = random.between(1, 9), steps = random.between(1, 6);
        const Ring ring = lattice_ring(random, places, steps);
        const std::vector<Edge> edges = edges_of(ring);
        for (int32_t i = 0; i < places; ++i)
            for (int32_t k = 0; k < places; ++k) {
                const Edge &e = edges[static_cast<size_t>(i)], &f = edges[static_cast<size_t>(k)];
                const bool are_neighbours = i == k || (i + 1) % places == k || (k + 1) % places == i;
                const bool expected = !are_neighbours && e.from != e.to && f.from != f.to && do_touch(e, f);
                ASSERT_EQ(do_meet(ring, i, k), expected) << i << " and " << k;
                meeting += expected;
            }
    }
    EXPECT_GT(meeting, 1000);
}

} // namespace
} // namespace korvale::test
