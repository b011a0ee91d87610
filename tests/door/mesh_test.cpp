// What triangles measure.
#include <cmath>

#include <gmock/gmock.h>

#include "support.h"
#include "tests/support/heap.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

using testing::Each;
using testing::ElementsAre;

using Indices = std::vector<int32_t>;

// A box of sides 2, 3 and 5, facing outwards.
const Numbers kBox = {0, 0, 0, 2, 0, 0, 0, 3, 0, 2, 3, 0, 0, 0, 5, 2, 0, 5, 0, 3, 5, 2, 3, 5};
const Indices kBoxCorners = {0, 2, 3, 0, 3, 1, 4, 5, 7, 4, 7, 6, 0, 1, 5, 0, 5, 4,
                             2, 6, 7, 2, 7, 3, 0, 4, 6, 0, 6, 2, 1, 3, 7, 1, 7, 5};

korvale_triangles triangles_of(const Numbers& points, const Indices& corners)
{
    return {points_of(points), {corners.data(), static_cast<int64_t>(corners.size()), 0, KORVALE_INT32}};
}

korvale_triangles box()
{
    return triangles_of(kBox, kBoxCorners);
}

Numbers normals_of(const korvale_triangles& triangles, int64_t count)
{
    Numbers normals(static_cast<size_t>(3 * count), 9);
    EXPECT_EQ(korvale_mesh_normals(&triangles, normals.data(), nullptr), KORVALE_OK);
    return normals;
}

Numbers areas_of(const korvale_triangles& triangles, int64_t count)
{
    Numbers areas(static_cast<size_t>(count), 9);
    EXPECT_EQ(korvale_mesh_areas(&triangles, areas.data(), nullptr), KORVALE_OK);
    return areas;
}

double volume_of(const korvale_triangles& triangles)
{
    double volume = 99;
    EXPECT_EQ(korvale_mesh_volume(&triangles, &volume, nullptr), KORVALE_OK);
    return volume;
}

std::string volume_refusal(const korvale_triangles& triangles)
{
    double volume = 99;
    const std::string sentence = sentence_of(
        KORVALE_BAD_ARGUMENT, [&](korvale_error* error) { return korvale_mesh_volume(&triangles, &volume, error); });
    EXPECT_EQ(volume, 99);
    return sentence;
}

TEST(MeshMeasures, OfABox)
{
    const Numbers normals = normals_of(box(), 12);
    EXPECT_THAT(Numbers(normals.begin(), normals.begin() + 6), ElementsAre(0, 0, -1, 0, 0, -1));
    EXPECT_THAT(Numbers(normals.begin() + 12, normals.begin() + 15), ElementsAre(0, -1, 0));
    EXPECT_THAT(Numbers(normals.end() - 3, normals.end()), ElementsAre(1, 0, 0));
    EXPECT_THAT(areas_of(box(), 12), ElementsAre(3, 3, 3, 3, 5, 5, 5, 5, 7.5, 7.5, 7.5, 7.5));
    EXPECT_EQ(volume_of(box()), 30);
    Numbers least(3, 9), greatest(3, 9);
    const korvale_triangles triangles = box();
    EXPECT_EQ(korvale_mesh_bounds(&triangles, least.data(), greatest.data(), nullptr), KORVALE_OK);
    EXPECT_THAT(least, ElementsAre(0, 0, 0));
    EXPECT_THAT(greatest, ElementsAre(2, 3, 5));
}

TEST(MeshMeasures, BoundsLeaveOutPointsWithoutTriangles)
{
    const Numbers points = {-9, -9, -9, 1, 2, 3, 4, 0, 0, 2, 7, 1, INFINITY, 0, 0};
    const Indices corners = {1, 2, 3};
    const korvale_triangles triangles = triangles_of(points, corners);
    Numbers least(3, 9), greatest(3, 9);
    EXPECT_EQ(korvale_mesh_bounds(&triangles, least.data(), greatest.data(), nullptr), KORVALE_OK);
    EXPECT_THAT(least, ElementsAre(1, 0, 0));
    EXPECT_THAT(greatest, ElementsAre(4, 7, 3));
}

TEST(MeshMeasures, ASlantedTriangleHasAUnitNormal)
{
    const Numbers points = {0, 0, 0, 0, 4, 3, -1, 0, 0};
    const korvale_triangles one = {points_of(points), {}};
    EXPECT_THAT(normals_of(one, 1), ElementsAre(0, -0.6, 0.8));
    EXPECT_THAT(areas_of(one, 1), ElementsAre(2.5));
}

TEST(MeshMeasures, AMeshTurnedInsideOutHasANegativeVolume)
{
    Indices turned = kBoxCorners;
    for (size_t t = 0; t < turned.size(); t += 3)
        std::swap(turned[t], turned[t + 1]);
    EXPECT_EQ(volume_of(triangles_of(kBox, turned)), -30);
}

TEST(MeshMeasures, ScaleExactlyByPowersOfTwo)
{
    Random random(1260);
    for (int round = 0; round < rounds(100); ++round) {
        Numbers points = kBox;
        for (double& number : points)
            number += random.uniform(-0.3, 0.3);
        const korvale_triangles plain = triangles_of(points, kBoxCorners);
        for (const int exponent : {-300, -30, 30, 300}) {
            const double scale = std::ldexp(1.0, exponent);
            const Numbers moved = times(scale, points);
            const korvale_triangles scaled = triangles_of(moved, kBoxCorners);
            ASSERT_EQ(normals_of(scaled, 12), normals_of(plain, 12)) << "2^" << exponent;
            ASSERT_EQ(areas_of(scaled, 12), times(scale * scale, areas_of(plain, 12))) << "2^" << exponent;
            ASSERT_EQ(volume_of(scaled), volume_of(plain) * scale * scale * scale) << "2^" << exponent;
        }
    }
}

TEST(MeshMeasures, OfTheLargestNumbersThereAre)
{
    const double most = std::numeric_limits<double>::max();
    const Numbers points = {-most, 0, 0, most, 0, 0, 0, most, 0};
    const korvale_triangles one = {points_of(points), {}};
    EXPECT_THAT(normals_of(one, 1), ElementsAre(0, 0, 1));
    EXPECT_THAT(areas_of(one, 1), ElementsAre(INFINITY));
    const Numbers small = {0, 0, 0, 5e-324, 0, 0, 0, 5e-324, 0, 1, 0, 0, 1, 1e-200, 0, 1, 0, 1e-250};
    const korvale_triangles two = {points_of(small), {}};
    EXPECT_THAT(normals_of(two, 2), ElementsAre(0, 0, 0, 1, 0, 0));
    EXPECT_THAT(areas_of(two, 2), ElementsAre(0, 0));
}

TEST(MeshMeasures, ATriangleWithoutAreaHasNoNormal)
{
    const Numbers points = {1, 2, 3, 4, 5, 6, 1, 2, 3, 0, 0, 0, 1, 1, 1, 2, 2, 2};
    const korvale_triangles two = {points_of(points), {}};
    EXPECT_THAT(normals_of(two, 2), Each(0));
    EXPECT_THAT(areas_of(two, 2), Each(0));
}

TEST(MeshMeasures, OfNoTrianglesAreNone)
{
    const korvale_triangles none = {};
    korvale_error error;
    EXPECT_EQ(korvale_mesh_normals(&none, nullptr, &error), KORVALE_OK);
    EXPECT_EQ(korvale_mesh_areas(&none, nullptr, &error), KORVALE_OK);
    EXPECT_EQ(volume_of(none), 0);
}

TEST(MeshMeasures, ReadFloatsAndUnsignedIndices)
{
    const std::vector<float> points(kBox.begin(), kBox.end());
    const std::vector<uint16_t> corners(kBoxCorners.begin(), kBoxCorners.end());
    const korvale_triangles floats = {{points.data(), 8, 0, 3, KORVALE_FLOAT}, {corners.data(), 36, 0, KORVALE_UINT16}};
    EXPECT_EQ(volume_of(floats), 30);
    EXPECT_EQ(areas_of(floats, 12), areas_of(box(), 12));
}

TEST(MeshVolume, TakesPointsAtOnePlaceForOne)
{
    Numbers corners;
    for (const int32_t c : kBoxCorners)
        for (size_t k = 0; k < 3; ++k) {
            const double number = kBox[static_cast<size_t>(3 * c) + k];
            corners.push_back(number == 0 && corners.size() % 2 == 0 ? -0.0 : number);
        }
    EXPECT_EQ(volume_of({points_of(corners), {}}), 30);
}

TEST(MeshVolume, RefusesMeshesThatAreNotClosed)
{
    const Indices open(kBoxCorners.begin(), kBoxCorners.end() - 3);
    EXPECT_EQ(volume_refusal(triangles_of(kBox, open)),
              "korvale_mesh_volume: triangles must be closed and face one way, but the edge between points 1 and 5 "
              "runs one way in 1 and the other way in 0 of the triangles");
    Indices turned = kBoxCorners;
    std::swap(turned[0], turned[1]);
    EXPECT_EQ(volume_refusal(triangles_of(kBox, turned)),
              "korvale_mesh_volume: triangles must be closed and face one way, but the edge between points 2 and 0 "
              "runs one way in 2 and the other way in 0 of the triangles");
    const Numbers one = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    EXPECT_EQ(volume_refusal({points_of(one), {}}),
              "korvale_mesh_volume: triangles must be closed and face one way, but the edge between points 0 and 1 "
              "runs one way in 1 and the other way in 0 of the triangles");
}

TEST(MeshMeasures, SayWhatTheyRefuse)
{
    const Numbers infinite = {0, 0, 0, 1, 0, 0, 0, INFINITY, 0};
    Numbers normals(3, 9);
    const auto refusal = [&](const korvale_triangles* triangles, double* to) {
        return sentence_of(KORVALE_BAD_ARGUMENT,
                           [&](korvale_error* error) { return korvale_mesh_normals(triangles, to, error); });
    };
    EXPECT_EQ(refusal(nullptr, normals.data()), "korvale_mesh_normals: triangles must be given, but it is null");
    const korvale_triangles not_finite = {points_of(infinite), {}};
    EXPECT_EQ(refusal(&not_finite, normals.data()),
              "korvale_mesh_normals: triangles must be finite, but its point 2 is (0, inf, 0)");
    const Indices eighth = {0, 1, 8}, two = {0, 1};
    const korvale_triangles wrong = triangles_of(kBox, eighth), pair = triangles_of(kBox, two);
    EXPECT_EQ(refusal(&wrong, normals.data()),
              "korvale_mesh_normals: triangles must name vertices 0 to 7, but its corner 2 is 8");
    EXPECT_EQ(refusal(&pair, normals.data()),
              "korvale_mesh_normals: triangles must have corners in threes, but there are 2");
    const korvale_triangles good = box();
    EXPECT_EQ(refusal(&good, nullptr), "korvale_mesh_normals: normals must be given, but it is null");
    EXPECT_THAT(normals, Each(9));
    EXPECT_EQ(sentence_of(KORVALE_BAD_ARGUMENT,
                          [&](korvale_error* error) { return korvale_mesh_areas(&good, nullptr, error); }),
              "korvale_mesh_areas: areas must be given, but it is null");
    EXPECT_EQ(sentence_of(KORVALE_BAD_ARGUMENT,
                          [&](korvale_error* error) { return korvale_mesh_volume(&good, nullptr, error); }),
              "korvale_mesh_volume: volume must be given, but it is null");
    const auto bounds_refusal = [&](const korvale_triangles* triangles, double* least, double* greatest) {
        return sentence_of(KORVALE_BAD_ARGUMENT, [&](korvale_error* error) {
            return korvale_mesh_bounds(triangles, least, greatest, error);
        });
    };
    const korvale_triangles none = {};
    double corner[3] = {9, 9, 9};
    EXPECT_EQ(bounds_refusal(&none, corner, corner),
              "korvale_mesh_bounds: triangles must have at least 1 triangle, but there is none");
    EXPECT_EQ(bounds_refusal(&not_finite, corner, corner),
              "korvale_mesh_bounds: triangles must be finite, but its point 2 is (0, inf, 0)");
    EXPECT_EQ(bounds_refusal(&good, nullptr, corner), "korvale_mesh_bounds: least must be given, but it is null");
    EXPECT_EQ(bounds_refusal(&good, corner, nullptr), "korvale_mesh_bounds: greatest must be given, but it is null");
    EXPECT_THAT(corner, Each(9));
    const korvale_triangles huge = {{kBox.data(), INT64_MAX, 0, 3, KORVALE_DOUBLE}, {}};
    EXPECT_EQ(refusal(&huge, normals.data()),
              "korvale_mesh_normals: triangles must have at most 715827882 elements, but it has 9223372036854775807");
}

TEST(MeshMeasures, AnExhaustedHeapWritesNothing)
{
    NEEDS_HEAP_FAILURES();
    const korvale_triangles triangles = box();
    const int64_t failed = fail_each_allocation([&](int64_t) {
        Numbers normals(36, 9), areas(12, 9);
        double volume = 9;
        if (korvale_mesh_normals(&triangles, normals.data(), nullptr) == KORVALE_NO_MEMORY) {
            EXPECT_THAT(normals, Each(9));
        }
        if (korvale_mesh_areas(&triangles, areas.data(), nullptr) == KORVALE_NO_MEMORY) {
            EXPECT_THAT(areas, Each(9));
        }
        if (korvale_mesh_volume(&triangles, &volume, nullptr) == KORVALE_NO_MEMORY) {
            EXPECT_EQ(volume, 9);
        }
    });
    EXPECT_EQ(failed, 9);
}

TEST(DoorMesh, OfNullHoldsNothing)
{
    const korvale_triangles view = korvale_mesh_view(nullptr);
    EXPECT_EQ(view.points.data, nullptr);
    EXPECT_EQ(view.points.count, 0);
    EXPECT_EQ(view.corners.data, nullptr);
    EXPECT_EQ(view.corners.count, 0);
    korvale_mesh_free(nullptr);
}

} // namespace
} // namespace korvale::test
