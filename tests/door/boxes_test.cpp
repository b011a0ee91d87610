// Boxes over boxes, and places along a curve that fills the plane.
#include "door/internal/boxes.h"

#include <algorithm>
#include <bit>
#include <numeric>

#include <gmock/gmock.h>

#include "places.h"

namespace korvale::test {
using namespace door;

namespace {

using testing::ElementsAre;

TEST(Curve, RunsThroughAQuarterBeforeTheNext)
{
    Vector<Place> places;
    for (int i = 0; i < 16; ++i)
        places.push_back({double(i % 4), double(i / 4)});
    EXPECT_THAT(order_along_curve(places), ElementsAre(0, 1, 4, 5, 2, 3, 6, 7, 8, 9, 12, 13, 10, 11, 14, 15));
}

TEST(Curve, EachPlaceIsOnItOnce)
{
    Random random(1);
    for (int n = 0; n < 70; ++n) {
        const int steps = random.one_in(3) ? 1 : 40;
        Vector<Place> places;
        for (int i = 0; i < n; ++i)
            places.push_back(lattice_place(random, steps));
        Vector<size_t> order = order_along_curve(places);
        std::ranges::sort(order);
        Vector<size_t> numbers(places.size());
        std::iota(numbers.begin(), numbers.end(), size_t{0});
        EXPECT_EQ(order, numbers);
    }
}

TEST(Boxes, EachNodeIsTheBoundsOfTheLeavesBelowIt)
{
    Random random(2);
    for (const size_t n : {1u, 2u, 3u, 8u, 33u}) {
        Vector<Box> nodes(2 * std::bit_ceil(n), kNowhere);
        const size_t leaves = nodes.size() / 2;
        for (size_t i = 0; i < n; ++i) {
            const Edge e = {lattice_place(random, 9), lattice_place(random, 9)};
            nodes[leaves + i] = box_of(e);
        }
        raise(nodes);
        for (size_t node = 1, width = leaves, first = leaves; node < leaves; ++node) {
            if (std::has_single_bit(node) && node > 1) {
                width /= 2;
                first = leaves;
            }
            Box all = kNowhere;
            for (size_t i = first; i < first + width; ++i)
                all.cover(nodes[i]);
            EXPECT_EQ(nodes[node], all) << node << " of " << nodes.size();
            first += width;
        }
    }
}

} // namespace
} // namespace korvale::test
