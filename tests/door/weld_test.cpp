// Points at one place, against all pairs.
#include "door/internal/weld.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "tests/support/random.h"

namespace korvale::test {
using namespace door;

namespace {

TEST(Weld, EachPointIsTheFirstAtItsPlace)
{
    Random random(1);
    for (int round = 0; round < rounds(200) && !testing::Test::HasFailure(); ++round) {
        const int n = random.below(60), steps = random.between(1, 9);
        std::vector<Point> points;
        for (int i = 0; i < n; ++i) {
            const double x = random.below(steps), y = random.below(steps), z = random.one_in(2) ? 0.0 : -0.0;
            points.push_back({x, y, z});
        }
        const Vector<int32_t> found = first_at_place(points);
        ASSERT_EQ(found.size(), points.size());
        for (size_t i = 0; i < points.size(); ++i)
            ASSERT_EQ(found[i], std::ranges::find(points, points[i]) - points.begin());
    }
}

} // namespace
} // namespace korvale::test
