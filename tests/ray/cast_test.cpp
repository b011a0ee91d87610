// The triangles of a query with four lanes and without, whichever of the two ways this processor takes.
#include "ray/internal/cast.h"

#include <algorithm>
#include <vector>

#include <gtest/gtest.h>

#include "math/vector.h"
#include "platform/internal/widest.h"
#include "ray/query.h"
#include "tests/ray/scene.h"
#include "tests/ray/without_four_lanes.h"
#include "tests/support/bits.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

using namespace korvale::ray;

struct Ray {
    double origin[3], direction[3];
};

struct Answer {
    int hits;
    double distance;
    std::vector<int> marks;
};

Answer cast(Scene& s, Ray ray)
{
    Answer answer = {0, -7, {}};
    answer.hits = ray_intersect(ray.origin, ray.direction, s, &answer.distance);
    answer.marks = s.marks();
    return answer;
}

/// The marked triangles, each tested by itself.
Answer test_one_by_one(Scene& s, Ray ray, const std::vector<int>& marks)
{
    Answer answer = {0, -7, marks};
    normalize(ray.direction);
    Xfm frame;
    ray_compute_xfm(ray.origin, ray.direction, frame);
    for (size_t t = 0; t < marks.size(); ++t) {
        double start[3] = {0, 0, 0}, seen[9], z;
        for (size_t v = 0; v < 9; v += 3)
            TransformPoint(frame, s.triangles().dvals + 9 * t + v, seen + v);
        if (marks[t] == 0 || z_intersect(start, seen, &z) != 1)
            continue;
        answer.distance = answer.hits == 0 ? z : std::min(answer.distance, z);
        ++answer.hits;
    }
    return answer;
}

/// `n` triangles of this size in a cube.
std::vector<double> triangles_in_a_cube(int n, double size, Random& random)
{
    std::vector<double> all;
    for (int t = 0; t < n; ++t) {
        const double corner[3] = {random.unit(), random.unit(), random.unit()};
        for (int i = 0; i < 9; ++i)
            all.push_back(corner[i % 3] + size * random.unit());
    }
    return all;
}

TEST(Cast, TestsTrianglesWithFourLanesAndWithoutLikeEachByItself)
{
    const struct {
        int triangles;
        double size;
        int cells;
    } cases[] = {{500, 0.3, 4}, {9000, 0.1, 12}, {9000, 0.1, 3}}; // tested at once, after waiting, and in long lists
    for (const auto& c : cases) {
        Random random(1201);
        Scene s(triangles_in_a_cube(c.triangles, c.size, random), c.cells, c.cells, c.cells);
        int hits = 0;
        for (int r = 0; r < 200 && !HasFailure(); ++r) {
            Ray ray;
            for (int k = 0; k < 3; ++k) {
                ray.origin[k] = random.uniform(-1, 2);
                ray.direction[k] = random.unit() - ray.origin[k];
            }
            const Answer wide = cast(s, ray);
            const Answer expected = test_one_by_one(s, ray, wide.marks);
            Answer plain;
            {
                const WithoutFourLanes here;
                ASSERT_FALSE(has_avx2());
                plain = cast(s, ray);
            }
            for (const Answer& actual : {wide, plain}) {
                EXPECT_EQ(actual.hits, expected.hits);
                EXPECT_TRUE(same_bits(actual.distance, expected.distance));
                EXPECT_EQ(actual.marks, expected.marks);
            }
            hits += expected.hits;
        }
        EXPECT_GT(hits, 200);
    }
}

} // namespace
} // namespace korvale::test
