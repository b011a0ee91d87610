// Meshes as hosts may hand them in: memory of their own, sizes that lead back, lists longer than the faces use, and a
// heap that runs out half way. Only what is read counts, and what is made is made whole.
#include <algorithm>
#include <cstdlib>

#include <gtest/gtest.h>

#include "preserve/compute.h"
#include "tests/preserve/input.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"
#include "tests/support/meshes.h"

namespace korvale::test {
namespace {

/// Ints of the host, with a dim that nobody has set right.
DATAstruct wrapped_ints(std::vector<int32_t>& values, int32_t count, int32_t dim)
{
    DATAstruct d = wrapped<DATAstruct>(nullptr, count, dim);
    d.type = DATA_TYPE_INT;
    d.ivals = values.data();
    return d;
}

TEST(PreserveInitialize, TakesWrappedIntsByCountWhateverTheirDim)
{
    for (int32_t dim : {-1, 0, 1, 2, 9}) {
        std::vector<int32_t> ends = {0, 1, 2, 1}, size = {3}, corner = {0, 1, 2};
        OwnedDATA points = korvale::test::points<DATAstruct>({0, 0, 0, 1, 0, 0, 0, 1, 0});
        DATAstruct edges = wrapped_ints(ends, 2, dim), sizes = wrapped_ints(size, 1, dim);
        DATAstruct corners = wrapped_ints(corner, 3, dim);
        PreserveStatus status = {};
        ASSERT_EQ(PreserveInitialize(&status, points, &edges, &sizes, &corners), 1) << "dim " << dim;
        EXPECT_TRUE(same_values({1, 2, 1}, status.point_edge_count->ivals));
        EXPECT_EQ(PreservePreserve(&status, PRESERVE_AREA, 1.0), 1);
        EXPECT_TRUE(same_bits(1.0, status.oarea));
        PreserveDispose(&status);
    }
}

TEST(PreserveInitialize, RefusesWrappedCornersThatAreFewerThanTheFacesHave)
{
    std::vector<int32_t> size = {3, 3}, corner = {0, 1, 2, 2, 1};
    OwnedDATA points = korvale::test::points<DATAstruct>({0, 0, 0, 1, 0, 0, 0, 1, 0});
    DATAstruct sizes = wrapped_ints(size, 2, -1), corners = wrapped_ints(corner, 5, 0);
    PreserveStatus status = {};
    EXPECT_EQ(PreserveInitialize(&status, points, nullptr, &sizes, &corners), -1);
    EXPECT_EQ(status.force, nullptr);
}

TEST(PreserveInitialize, RefusesWrappedEdgesOfMoreThan31Bits)
{
    std::vector<int32_t> ends = {0, 1};
    OwnedDATA points = korvale::test::points<DATAstruct>({0, 0, 0, 1, 0, 0});
    for (const int32_t count : {1 << 30, 2147483647}) {
        DATAstruct edges = wrapped_ints(ends, count, 2);
        PreserveStatus status = {};
        EXPECT_EQ(PreserveInitialize(&status, points, &edges, nullptr, nullptr), -1);
        EXPECT_EQ(status.force, nullptr);
    }
}

TEST(PreserveInitialize, ANegativeSizeLeadsBackInTheList)
{
    Input input = square({}, {3, -3, 3}, {0, 1, 2});
    ASSERT_EQ(input.initialize(), 1);
    const PreserveStatus& s = input.status;
    EXPECT_TRUE(same_values({0, 3, 0}, s.face_starts->ivals));
    ASSERT_EQ(s.edges->count, 3);
    EXPECT_TRUE(same_values({0, 1, 1, 2, 0, 2}, s.edges->ivals));
    EXPECT_TRUE(same_values({2, 2, 2, 0}, s.point_edge_count->ivals));
    EXPECT_TRUE(same_values({0, 2, 0, 2, 0, 2}, s.point_faces->ivals)) << "face 1 has no corners";
    EXPECT_EQ(PreservePreserve(&input.status, PRESERVE_AREA, 1.0), 1);
    EXPECT_TRUE(same_bits(2.0, s.oarea)) << "the triangle twice";
    EXPECT_EQ(PreservePreserve(&input.status, PRESERVE_FACE_ANGLE, 1.0), 1);
    EXPECT_EQ(s.ofang->count, 3);
    release(input);
}

TEST(PreserveInitialize, ANegativeSizeIsRefusedOnlyWhereAFaceThenLiesOutside)
{
    for (const std::vector<int>& sizes : std::vector<std::vector<int>>{{-1, 3}, {3, -4, 1}, {3, -2, 3}, {-3, 4}}) {
        Input input = square({}, sizes, {0, 1, 2});
        expect_refused(input);
        Input with_edges = square({0, 1}, sizes, {0, 1, 2});
        expect_refused(with_edges);
    }
    for (const std::vector<int>& sizes : std::vector<std::vector<int>>{
             {-1}, {3, -70}, {3, -4, 0}, {-5, 0, -5}, {2, -1, 2}, {-2147483647 - 1}, {-2147483647, -2147483647}}) {
        Input input = square({}, sizes, {0, 1, 2});
        expect_accepted(input);
    }
}

TEST(PreserveInitialize, FacesThatShareCornersMayFillTheRoomForEdges)
{
    // Four corners make room for four edges, which the first face takes: the diagonal of the last one is not looked
    // for.
    Input full = square({}, {4, -4, 3}, {0, 1, 2, 3});
    ASSERT_EQ(full.initialize(), 1);
    ASSERT_EQ(full.status.edges->count, 4);
    EXPECT_TRUE(same_values({0, 1, 1, 2, 2, 3, 0, 3}, full.status.edges->ivals));
    release(full);
    // Here the fifth edge would be stored behind the room.
    Input beyond = square({}, {3, -3, 4}, {0, 1, 2, 3});
    expect_refused(beyond);
    Input given = square({0, 1}, {3, -3, 4}, {0, 1, 2, 3});
    expect_accepted(given);
}

TEST(PreserveInitialize, TakesAListThatIsLongerThanItsBufferWhereTheFacesEndBefore)
{
    Input input = two_triangles();
    input.corners->count = 7;
    ASSERT_EQ(input.initialize(), 1);
    ASSERT_EQ(input.status.edges->count, 5);
    for (int term = 1; term <= PRESERVE_AREA; term *= 2)
        EXPECT_EQ(PreservePreserve(&input.status, term, 1.0), 1);
    EXPECT_EQ(input.status.ofang->count, 7);
    release(input);
    Input used = square({}, {3, 4}, {0, 1, 2, 2, 3, 0});
    used.corners->count = 7;
    expect_refused(used);
}

TEST(PreserveInitialize, CornersThatNoFaceUsesChangeNoBit)
{
    Input exact = two_triangles(), longer = square({}, {3, 3}, {0, 1, 2, 2, 3, 0, -9, 1 << 30, 2});
    OwnedDATA moved[2];
    for (Input* input : {&exact, &longer}) {
        const bool is_longer = input == &longer;
        ASSERT_EQ(input->initialize(), 1);
        for (int term = 1; term <= PRESERVE_AREA; term *= 2)
            ASSERT_EQ(PreservePreserve(&input->status, term, 0.25), 1);
        moved[is_longer].allocate(DATA_TYPE_DOUBLE, 4, 3);
        const double at[] = {0, 0, 0, 1.5, 0, 0, 1, 1, 0.25, -0.5, 1, 0};
        std::copy(at, at + 12, moved[is_longer]->dvals);
        EXPECT_EQ(PreserveCompute(&input->status, moved[is_longer], 5), 1);
    }
    EXPECT_TRUE(same_array(*moved[0], *moved[1]));
    EXPECT_TRUE(same_bits(exact.status.energy, longer.status.energy));
    release(exact);
    release(longer);
}

TEST(PreserveInitialize, AnArrayOfAnotherKindWithoutIntsCountsAsEmpty)
{
    Input input = two_triangles();
    OwnedDATA doubles_not_ints = doubles<DATAstruct>(1, {3, 3});
    ASSERT_EQ(PreserveInitialize(&input.status, input.points, nullptr, doubles_not_ints, input.corners), 1);
    EXPECT_EQ(input.status.edges, nullptr);
    EXPECT_EQ(input.status.face_sizes, nullptr);
    EXPECT_EQ(input.status.face_points, nullptr);
    PreserveDispose(&input.status);
}

TEST(PreserveInitialize, TakesPointsLongerThanTheirBufferButMeasuresNoneOfThem)
{
    Input input = two_triangles();
    input.points->count = 5;
    ASSERT_EQ(input.initialize(), 1);
    for (int term = 1; term <= PRESERVE_AREA; term *= 2)
        EXPECT_EQ(PreservePreserve(&input.status, term, 1.0), -1);
    EXPECT_EQ(input.status.flags, 0);
    release(input);
}

/// Expects that `actual` is missing or the same as in an undisturbed run.
void expect_whole_or_absent(const DATAstruct* expected, const DATAstruct* actual, const char* name)
{
    if (actual == nullptr)
        return;
    EXPECT_EQ(actual->count, expected->count) << name;
    EXPECT_EQ(actual->dim, expected->dim) << name;
    EXPECT_EQ(actual->type, expected->type) << name;
    if (expected->type == DATA_TYPE_DOUBLE) { // undefined as yet
        EXPECT_NE(actual->dvals, nullptr) << name;
        return;
    }
    ASSERT_NE(actual->ivals, nullptr) << name;
    EXPECT_TRUE(std::equal(expected->ivals, expected->ivals + expected->count * expected->dim, actual->ivals)) << name;
}

/// Fails each allocation of the call in turn, and all from each on.
void expect_whole_arrays(const std::vector<int>& edges)
{
    Input whole = two_triangles(edges);
    ASSERT_EQ(whole.initialize(), 1);
    const PreserveStatus& e = whole.status;
    for (auto extent : {HeapFailure::only_this, HeapFailure::all_after}) {
        bool happened = true;
        for (int64_t n = 1; happened; ++n) {
            Input input = two_triangles(edges);
            const testing::ScopedTrace trace(__FILE__, __LINE__, testing::Message() << "allocation " << n);
            const HeapWatch heap;
            int result;
            {
                const HeapFailure failure(n, extent);
                result = input.initialize();
                happened = failure.happened();
            }
            const PreserveStatus& s = input.status;
            if (result == 1) {
                expect_whole_or_absent(e.edges, s.edges, "edges");
                expect_whole_or_absent(e.face_starts, s.face_starts, "face_starts");
                expect_whole_or_absent(e.point_edge_count, s.point_edge_count, "point_edge_count");
                expect_whole_or_absent(e.point_edge_start, s.point_edge_start, "point_edge_start");
                expect_whole_or_absent(e.point_edges, s.point_edges, "point_edges");
                expect_whole_or_absent(e.point_faces, s.point_faces, "point_faces");
                expect_whole_or_absent(e.force, s.force, "force");
                EXPECT_EQ(PreservePreserve(&input.status, PRESERVE_LENGTH, 1.0), s.edges == nullptr ? -1 : 1);
                EXPECT_EQ(s.flags, s.edges == nullptr ? 0 : PRESERVE_LENGTH);
                EXPECT_EQ(PreservePreserve(&input.status, PRESERVE_AREA, 1.0), 1);
                EXPECT_TRUE(same_bits(2.0, s.oarea));
            } else {
                EXPECT_EQ(result, -1);
                EXPECT_EQ(s.force, nullptr);
                EXPECT_EQ(s.edges, nullptr);
            }
            release(input);
            EXPECT_EQ(heap.live_blocks(), 0);
        }
    }
    release(whole);
}

TEST(PreserveInitialize, AnExhaustedHeapLeavesEveryArrayWholeOrAbsent)
{
    NEEDS_HEAP_FAILURES();
    expect_whole_arrays({});
}

TEST(PreserveInitialize, AnExhaustedHeapLeavesEveryArrayWholeOrAbsentBesideGivenEdges)
{
    NEEDS_HEAP_FAILURES();
    expect_whole_arrays({0, 1, 2, 3, 1, 2});
}

TEST(PreserveInitialize, WhatAnExhaustedHeapLeftCanBeRelaxed)
{
    NEEDS_HEAP_FAILURES();
    Input input = two_triangles();
    OwnedDATA moved = korvale::test::points<DATAstruct>({0, 0, 0, 2, 0, 0, 1, 1, 1, 0, 1, 0});
    const int64_t failures = fail_each_allocation([&](int64_t) {
        OwnedDATA force;
        input.status = {};
        EXPECT_EQ(input.initialize(), 1);
        for (int term = 1; term <= PRESERVE_AREA; term *= 2)
            PreservePreserve(&input.status, term, 1.0);
        EXPECT_EQ(PreserveCompute(&input.status, moved, 2), 1);
        EXPECT_EQ(PreserveGetForce(&input.status, moved, force), 1);
        release(input);
    });
    EXPECT_GT(failures, 20);
}

/// A torus so large that the arrays at its points fill large pages.
TEST(PreserveInitialize, AnExhaustedHeapLeavesNothingOfALargeMesh)
{
    NEEDS_HEAP_FAILURES();
    const Mesh torus = triangulated(korvale::test::torus(300, 300, 2.0, 0.7));
    Input input = {
        points<DATAstruct>(torus.points), {}, ints<DATAstruct>(1, torus.sizes), ints<DATAstruct>(1, torus.corners)};
    const int64_t failures = fail_each_allocation([&](int64_t) {
        input.status = {};
        if (input.initialize() == 1)
            release(input);
    });
    EXPECT_GE(failures, 14);
}

} // namespace
} // namespace korvale::test
