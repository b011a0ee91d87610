// Rings that are there more than once, against what they were made from.
#include "door/internal/repeats.h"

#include <gmock/gmock.h>

#include "places.h"

namespace korvale::test {
using namespace door;

namespace {

using testing::Each;
using testing::ElementsAre;

Vector<int32_t> repeats_of(const std::vector<Ring>& all, double tolerance)
{
    const Rings rings = rings_of(all);
    Vector<Contour> contours;
    for (size_t k = 0; k < rings.size(); ++k)
        contours.push_back(measure(rings[k]));
    return find_repeats(rings, contours, tolerance, {});
}

TEST(Repeats, RectanglesRepeatTheFirstOneOfTheSameCorners)
{
    Random random(1);
    int repeats = 0;
    for (int round = 0; round < rounds(500) && !testing::Test::HasFailure(); ++round) {
        std::vector<Rectangle> rectangles;
        std::vector<Ring> rings;
        const int count = random.below(40), steps = random.one_in(2) ? 2 : 4;
        const double tolerance = random.one_in(2) ? 0.0 : 1.0 / 64; // of lattices of 1 / 4 and more
        for (int k = 0; k < count; ++k) {
            rectangles.push_back(random_rectangle(random, steps));
            rings.push_back(ring_of(rectangles.back(), steps, false, random));
            for (Place& p : rings.back())
                if (tolerance > 0.0)
                    p = p + 1.0 / 512 * lattice_place(random, 2);
        }
        const Vector<int32_t> found = repeats_of(rings, tolerance);
        ASSERT_EQ(found.size(), rings.size());
        for (size_t k = 0; k < rings.size(); ++k) {
            const auto first = std::ranges::find(rectangles, rectangles[k]) - rectangles.begin();
            ASSERT_EQ(found[k], static_cast<size_t>(first) == k ? -1 : static_cast<int32_t>(first));
            repeats += found[k] >= 0;
        }
    }
    EXPECT_GT(repeats, 1000);
}

TEST(Repeats, RingsWithoutAreaRepeatNothing)
{
    const Ring place = {{0.5, 0.5}}, way = {{0, 0}, {1, 1}};
    for (const double tolerance : {0.0, 0.25}) {
        EXPECT_THAT(repeats_of({}, tolerance), ElementsAre());
        EXPECT_THAT(repeats_of({{}, {}, place, place, way, way}, tolerance), Each(-1));
    }
}

TEST(Repeats, OnesThatHangTogetherRepeatTheFirst)
{
    std::vector<Ring> chain;
    for (const int i : {3, 1, 0, 2, 4}) // each within 1 / 64 of the next only
        chain.push_back({{i / 64.0, 0}, {1 + i / 64.0, 0}, {1 + i / 64.0, 1}, {i / 64.0, 1}});
    EXPECT_THAT(repeats_of(chain, 1 / 64.0), ElementsAre(-1, 0, 0, 0, 0));
    EXPECT_THAT(repeats_of(chain, 1 / 65.0), Each(-1));
    chain.erase(chain.begin() + 3);
    EXPECT_THAT(repeats_of(chain, 1 / 64.0), ElementsAre(-1, -1, 1, 0)); // 3 and 4, 1 and 0
}

} // namespace
} // namespace korvale::test
