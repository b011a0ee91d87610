// Edges of faces, against a map of them.
#include "door/internal/closed.h"

#include <limits>
#include <map>

#include <gtest/gtest.h>

#include "tests/support/random.h"

namespace korvale::test {
using namespace door;

namespace {

TEST(FaceEdges, EachEdgeIsToldOnceWithHowOftenFacesRunThroughIt)
{
    Random random(2);
    for (int round = 0; round < rounds(200) && !testing::Test::HasFailure(); ++round) {
        const int faces = random.below(100), places = random.one_in(3) ? 2 : random.between(1, 50);
        FaceEdges edges(static_cast<size_t>(3 * faces));
        std::map<std::pair<int32_t, int32_t>, std::pair<int64_t, int64_t>> expected;
        for (int f = 0; f < faces; ++f) {
            const bool is_far = random.one_in(4); // numbers up to the largest
            const int32_t base = is_far ? std::numeric_limits<int32_t>::max() - places : 0;
            int32_t corners[3];
            for (int32_t& corner : corners)
                corner = base + random.below(places);
            edges.add_face(3, [&](int64_t k) { return corners[k]; });
            for (int k = 0; k < 3; ++k) {
                const int32_t from = corners[k], to = corners[(k + 1) % 3];
                if (from < to)
                    ++expected[{from, to}].first;
                else if (to < from)
                    ++expected[{to, from}].second;
            }
        }
        auto next = expected.begin();
        edges.for_each([&](const FaceEdge& e) {
            ASSERT_NE(next, expected.end());
            EXPECT_EQ(std::pair(e.low, e.high), next->first);
            EXPECT_EQ(std::pair(e.up, e.down), next->second);
            EXPECT_EQ(e.is_open(), (e.up + e.down) % 2 == 1);
            EXPECT_EQ(e.is_turned(), (e.up + e.down) % 2 == 0 && e.up != e.down);
            ++next;
        });
        EXPECT_EQ(next, expected.end());
    }
}

} // namespace
} // namespace korvale::test
