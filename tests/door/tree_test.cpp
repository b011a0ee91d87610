// The tree of triangles against the exact test of each of them.
#include "door/internal/tree.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "ray/internal/meet.h"
#include "tests/support/random.h"

namespace korvale::test {
using namespace door;

namespace {

/// Triangles that are anywhere, all at one height, in a fan, one over the other, or points.
std::vector<double> random_triangles(Random& random, int count)
{
    const int kind = random.below(5);
    const bool are_small = random.one_in(2);
    std::vector<double> corners;
    for (int t = 0; t < count; ++t) {
        double centre[3];
        for (double& value : centre)
            value = kind == 3 ? 1.0 : random.between(-4, 4);
        for (int k = 0; k < 9; ++k) {
            const double off = random.between(-4, 4);
            const bool is_first = k < 3;
            corners.push_back(kind == 1 && k % 3 == 2   ? 0.5
                              : kind == 2 && is_first   ? 0.0
                              : kind == 4 && t % 3 == 0 ? centre[k % 3]
                                                        : centre[k % 3] + (are_small ? 0.125 : 1.0) * off);
        }
    }
    return corners;
}

struct Found {
    int32_t triangle;
    double distance;
    auto operator<=>(const Found&) const = default;
};

TEST(Tree, FindsWhatTheExactTestOfEachTriangleMeets)
{
    Random random(1);
    int met = 0, missed = 0;
    for (int round = 0; round < rounds(150) && !testing::Test::HasFailure(); ++round) {
        const int count = round % 15 == 0 ? random.between(100, 600) : random.between(1, 12);
        const std::vector<double> corners = random_triangles(random, count);
        double box[6];
        for (int k = 0; k < 3; ++k) {
            box[k] = box[k + 3] = corners[static_cast<size_t>(k)];
            for (size_t i = static_cast<size_t>(k); i < corners.size(); i += 3) {
                box[k] = std::min(box[k], corners[i]);
                box[k + 3] = std::max(box[k + 3], corners[i]);
            }
            box[k] -= 1; // a single cell that each ray meets that meets anything
            box[k + 3] += 1;
        }
        const int32_t one_cell[3] = {1, 1, 1};
        const Tree tree(corners.data(), count, box, one_cell, {});
        for (int i = 0; i < 40; ++i) {
            double from[3], along[3];
            for (int k = 0; k < 3; ++k) {
                from[k] = random.one_in(2) ? random.between(1, 9) : random.uniform(-9, 9);
                along[k] = random.one_in(3) ? random.between(-1, 1) : random.uniform(-1, 1);
            }
            const double* const target = &corners[9 * static_cast<size_t>(random.below(count))];
            for (int k = 0; k < 3 && i % 2 == 0; ++k)
                along[k] = (target[k] + target[k + 3] + target[k + 6]) / 3 - from[k];
            const Ray ray = tree.ray(from, along);
            const double scale = ray.origin[0] / from[0]; // a power of two, by which the tree multiplies lengths
            double scaled_box[6];
            for (int k = 0; k < 6; ++k)
                scaled_box[k] = scale * box[k];
            std::vector<Found> expected;
            for (int32_t t = 0; t < count; ++t) {
                double distance = 0;
                if (ray.can_meet && ray.meets(&corners[9 * static_cast<size_t>(t)], distance) &&
                    ray::meets_box(ray.origin, ray.unit, scaled_box))
                    expected.push_back({t, distance / scale});
            }
            std::vector<Found> found;
            tree.for_each(
                ray,
                [](void* user, int32_t triangle, double distance) {
                    static_cast<std::vector<Found>*>(user)->push_back({triangle, distance});
                },
                &found);
            std::ranges::sort(found);
            ASSERT_EQ(found, expected) << count << " triangles";
            const RayHits all = tree.meet(ray), nearest = tree.meet_nearest(ray);
            ASSERT_EQ(all.count, static_cast<int32_t>(expected.size()));
            ASSERT_EQ(nearest.count, expected.empty() ? 0 : 1);
            ++(expected.empty() ? missed : met);
            if (expected.empty())
                continue;
            const Found& first = *std::ranges::min_element(
                expected, {}, [](const Found& f) { return std::pair(f.distance, f.triangle); });
            EXPECT_EQ(all.distance, first.distance);
            EXPECT_EQ(all.triangle, first.triangle);
            EXPECT_EQ(nearest.distance, first.distance);
            EXPECT_EQ(nearest.triangle, first.triangle);
            EXPECT_TRUE(tree.meets_any(ray, first.distance));
            EXPECT_FALSE(tree.meets_any(ray, std::nextafter(first.distance, -1.0)));
        }
    }
    EXPECT_GT(met, 500);
    EXPECT_GT(missed, 500);
}

} // namespace
} // namespace korvale::test
