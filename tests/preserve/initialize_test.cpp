// PreserveInitialize: the connectivity it derives, and the meshes it refuses.
#include "preserve/status.h"

#include <cstdlib>
#include <cstring>

#include <gtest/gtest.h>

#include "tests/preserve/input.h"
#include "tests/preserve/solver.h"
#include "tests/support/arrays.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"

namespace korvale::test {
namespace {

TEST(PreserveInitialize, RefusesANullStatusAndWhatIsNotPoints)
{
    Input input = two_triangles();
    EXPECT_EQ(PreserveInitialize(nullptr, input.points, nullptr, nullptr, nullptr), -1);
    EXPECT_EQ(PreserveInitialize(&input.status, nullptr, input.edges, input.sizes, input.corners), -1);
    input.points->dim = 2;
    expect_refused(input);
    input.points->dim = 3;
    input.points->type = DATA_TYPE_INT;
    expect_refused(input);
    input.points->type = DATA_TYPE_DOUBLE;
    input.points->count = -1;
    expect_refused(input);
}

TEST(PreserveInitialize, SetsTheDefaultsAndLeavesTheMeasuresAlone)
{
    Input input = two_triangles();
    PreserveStatus& s = input.status;
    std::memset(&s, 0x55, sizeof s);
    const PreserveStatus before = s;
    ASSERT_EQ(input.initialize(), 1);
    EXPECT_EQ(s.flags, 0);
    EXPECT_EQ(s.points, input.points.get());
    EXPECT_EQ(s.face_sizes, input.sizes.get());
    EXPECT_EQ(s.face_points, input.corners.get());
    EXPECT_EQ(s.tags, nullptr);
    EXPECT_EQ(s.masses, nullptr);
    for (double weight : s.weights)
        EXPECT_TRUE(same_bits(1.0, weight));
    EXPECT_EQ(s.olen, before.olen);
    EXPECT_EQ(s.ofang, before.ofang);
    EXPECT_EQ(s.nlen, before.nlen);
    EXPECT_EQ(s.nfang, before.nfang);
    EXPECT_EQ(s.cur_points, before.cur_points);
    EXPECT_TRUE(same_bits(before.ovolume, s.ovolume));
    EXPECT_TRUE(same_bits(before.oarea, s.oarea));
    EXPECT_TRUE(same_bits(before.nvolume, s.nvolume));
    EXPECT_TRUE(same_bits(before.narea, s.narea));
    EXPECT_TRUE(same_bits(before.energy, s.energy));
    s.olen = s.ofang = s.nlen = s.nfang = nullptr;
    DATAstruct* const edges = s.edges;
    PreserveDispose(&s);
    DATADispose(edges);
    std::free(edges);
}

TEST(PreserveInitialize, MakesTheForceArray)
{
    Input input = two_triangles();
    input.sizes->count = 0;
    ASSERT_EQ(input.initialize(), 1);
    const DATAstruct& force = *input.status.force;
    EXPECT_EQ(force.dim, 3);
    EXPECT_EQ(force.count, 4);
    EXPECT_EQ(force.type, DATA_TYPE_DOUBLE);
    EXPECT_NE(force.dvals, nullptr);
    PreserveDispose(&input.status);
}

TEST(PreserveInitialize, AcceptsNoPointsAtAll)
{
    Input input;
    input.points->dim = 3;
    input.points->count = 0;
    ASSERT_EQ(input.initialize(), 1);
    ASSERT_NE(input.status.force, nullptr);
    EXPECT_EQ(input.status.force->count, 0);
    EXPECT_EQ(input.status.force->dvals, nullptr);
    EXPECT_EQ(PreservePreserve(&input.status, PRESERVE_LENGTH, 1.0), -1);
    PreserveDispose(&input.status);
}

TEST(PreserveInitialize, NeitherEdgesNorFacesLeavesOnlyTheForce)
{
    Input input = two_triangles();
    input.sizes->count = 0;
    ASSERT_EQ(input.initialize(), 1);
    EXPECT_EQ(input.status.edges, nullptr);
    EXPECT_EQ(input.status.face_sizes, nullptr);
    EXPECT_EQ(input.status.face_points, nullptr) << "the list is forgotten without sizes";
    EXPECT_EQ(input.status.face_starts, nullptr);
    EXPECT_EQ(input.status.point_edge_count, nullptr);
    EXPECT_EQ(input.status.point_edge_start, nullptr);
    EXPECT_EQ(input.status.point_edges, nullptr);
    EXPECT_EQ(input.status.point_faces, nullptr);
    EXPECT_NE(input.status.force, nullptr);
    EXPECT_EQ(PreservePreserve(&input.status, PRESERVE_LENGTH, 2.0), -1);
    EXPECT_EQ(input.status.flags, 0);
    EXPECT_TRUE(same_bits(2.0, input.status.weights[0])) << "the weight is stored all the same";
    PreserveDispose(&input.status);
}

TEST(PreserveInitialize, TwoTrianglesWithACommonSideGiveFiveEdgesInOrderOfAppearance)
{
    Input input = two_triangles();
    ASSERT_EQ(input.initialize(), 1);
    DATAstruct* const edges = input.status.edges;
    EXPECT_EQ(edges->dim, 2);
    EXPECT_EQ(edges->count, 5);
    EXPECT_EQ(edges->type, DATA_TYPE_INT);
    EXPECT_EQ(edges->alloc_count, 5) << "cut to what was found";
    EXPECT_TRUE(same_values({0, 1, 1, 2, 0, 2, 2, 3, 0, 3}, edges->ivals));
    PreserveDispose(&input.status);
    EXPECT_EQ(edges->count, 5) << "edges made by the library are left to the caller";
    DATADispose(edges);
    std::free(edges);
}

TEST(PreserveInitialize, GroupsEdgesAndFacesByPoint)
{
    Input input = two_triangles();
    ASSERT_EQ(input.initialize(), 1);
    const PreserveStatus& s = input.status;
    EXPECT_TRUE(same_values({0, 3}, s.face_starts->ivals));
    EXPECT_EQ(s.face_starts->count, 2);
    EXPECT_EQ(s.face_starts->dim, 1);
    EXPECT_TRUE(same_values({3, 2, 3, 2}, s.point_edge_count->ivals));
    EXPECT_TRUE(same_values({0, 3, 5, 8}, s.point_edge_start->ivals));
    EXPECT_EQ(s.point_edges->count, 10);
    EXPECT_TRUE(same_values({0, 2, 4, 0, 1, 1, 2, 3, 3, 4}, s.point_edges->ivals));
    EXPECT_EQ(s.point_faces->count, 10);
    EXPECT_TRUE(same_values({0, 1, -1, 0, -1, 0, 1, -1, 1, -1}, s.point_faces->ivals));
    release(input);
}

TEST(PreserveInitialize, UsesGivenEdgesAlsoWithFaces)
{
    Input input = two_triangles({3, 1});
    ASSERT_EQ(input.initialize(), 1);
    EXPECT_EQ(input.status.edges, input.edges.get());
    EXPECT_EQ(input.status.edges->count, 1);
    EXPECT_TRUE(same_values({0, 1, 0, 1}, input.status.point_edge_count->ivals));
    EXPECT_TRUE(same_values({0, 3}, input.status.face_starts->ivals));
    PreserveDispose(&input.status);
}

TEST(PreserveInitialize, AnEdgeFromAPointToItselfIsListedTwice)
{
    Input input = {
        korvale::test::points<DATAstruct>({0, 0, 0, 1, 0, 0, 1, 1, 0}), ints<DATAstruct>(2, {1, 1, 0, 1}), {}, {}};
    ASSERT_EQ(input.initialize(), 1);
    EXPECT_TRUE(same_values({1, 3, 0}, input.status.point_edge_count->ivals));
    EXPECT_TRUE(same_values({0, 1, 4}, input.status.point_edge_start->ivals));
    EXPECT_TRUE(same_values({1, 0, 0, 1}, input.status.point_edges->ivals));
    EXPECT_EQ(input.status.point_faces, nullptr);
    EXPECT_EQ(input.status.face_starts, nullptr);
    PreserveDispose(&input.status);
}

TEST(PreserveInitialize, FacesOfOneAndTwoCornersGiveOneEdge)
{
    Input input = square({}, {1, 0, 2, 1}, {2, 3, 1, 2});
    ASSERT_EQ(input.initialize(), 1);
    ASSERT_EQ(input.status.edges->count, 2);
    EXPECT_TRUE(same_values({2, 2, 1, 3}, input.status.edges->ivals));
    EXPECT_TRUE(same_values({0, 1, 1, 3}, input.status.face_starts->ivals));
    release(input);
}

TEST(PreserveInitialize, EmptyFacesGiveEdgesWithoutElements)
{
    Input input = square({}, {0, 0}, {0, 1});
    ASSERT_EQ(input.initialize(), 1);
    ASSERT_NE(input.status.edges, nullptr);
    EXPECT_EQ(input.status.edges->count, 0);
    EXPECT_TRUE(same_values({0, 0, 0, 0}, input.status.point_edge_count->ivals));
    EXPECT_EQ(PreservePreserve(&input.status, PRESERVE_LENGTH, 1.0), 1);
    EXPECT_EQ(PreservePreserve(&input.status, PRESERVE_AREA, 1.0), 1);
    EXPECT_TRUE(same_bits(0.0, input.status.oarea));
    release(input);
}

TEST(PreserveInitialize, MoreFacesThanEdgesAtAPointRunIntoTheNextRun)
{
    Input input = two_triangles({0, 1});
    ASSERT_EQ(input.initialize(), 1);
    // Runs: point 0 one slot, point 1 one slot, points 2 and 3 none; faces in order of the corners 0 1 2 2 3 0.
    EXPECT_EQ(input.status.point_faces->count, 2);
    EXPECT_TRUE(same_values({0, 1}, input.status.point_faces->ivals)) << "point 0's second face takes point 1's slot";
    EXPECT_TRUE(same_values({1, 1, 0, 0}, input.status.point_edge_count->ivals));
    PreserveDispose(&input.status);
}

TEST(PreserveInitialize, OnlyAFaceBehindTheWholeListIsDropped)
{
    // The two slots are point 0's, then point 3's; the points before that one begin where it does.
    for (const auto& [ends, expected] :
         {std::pair<std::vector<int>, std::vector<int32_t>>{{0, 0}, {0, 1}}, {{3, 3}, {1, 1}}}) {
        Input input = two_triangles(ends);
        ASSERT_EQ(input.initialize(), 1);
        EXPECT_EQ(input.status.point_faces->count, 2);
        EXPECT_TRUE(same_values(expected.data(), input.status.point_faces->ivals, 2));
        PreserveDispose(&input.status);
    }
}

TEST(PreserveInitialize, SizesWithoutAListBuildNoEdges)
{
    Input input = two_triangles();
    input.corners->count = 0;
    ASSERT_EQ(input.initialize(), 1);
    EXPECT_EQ(input.status.face_sizes, input.sizes.get());
    EXPECT_EQ(input.status.face_starts, nullptr);
    EXPECT_EQ(input.status.point_edges, nullptr) << "no edges to group";
    PreserveDispose(&input.status);
}

TEST(PreserveInitialize, SizesWithoutAListSwitchNoFaceTermOn)
{
    Input input = two_triangles({0, 1, 1, 2});
    input.corners->count = 0;
    ASSERT_EQ(input.initialize(), 1);
    EXPECT_NE(input.status.point_edges, nullptr);
    EXPECT_EQ(input.status.point_faces, nullptr);
    for (int term : {PRESERVE_FACE_ANGLE, PRESERVE_VOLUME, PRESERVE_AREA}) {
        EXPECT_EQ(PreservePreserve(&input.status, term, 3.0), -1);
        EXPECT_EQ(input.status.flags, 0);
    }
    EXPECT_EQ(PreservePreserve(&input.status, PRESERVE_LENGTH, 3.0), 1);
    PreserveDispose(&input.status);
}

TEST(PreserveInitialize, AnArrayWithoutElementsOrBufferCountsAsNull)
{
    Input input = two_triangles();
    DATAstruct no_buffer = wrapped<DATAstruct>(nullptr, 5, 2);
    no_buffer.type = DATA_TYPE_INT;
    ASSERT_EQ(PreserveInitialize(&input.status, input.points, &no_buffer, input.sizes, input.corners), 1);
    EXPECT_NE(input.status.edges, &no_buffer);
    EXPECT_EQ(input.status.edges->count, 5);
    DATAstruct* const edges = input.status.edges;
    PreserveDispose(&input.status);
    DATADispose(edges);
    std::free(edges);
}

TEST(PreserveInitialize, TakesKindsAndDimsOnTrust)
{
    Input input = two_triangles({0, 1, 1, 2});
    input.edges->dim = 7;
    input.edges->type = DATA_TYPE_DOUBLE;
    input.sizes->dim = 2;
    input.corners->type = DATA_TYPE_BYTE;
    ASSERT_EQ(input.initialize(), 1);
    EXPECT_TRUE(same_values({1, 2, 1, 0}, input.status.point_edge_count->ivals));
    PreserveDispose(&input.status);
}

TEST(PreserveInitialize, RefusesAnEdgeToAPointThatIsNotThere)
{
    for (int bad : {-1, 3, 1000000000}) {
        Input input = two_edges();
        input.edges->ivals[3] = bad;
        expect_refused(input);
    }
    Input input = two_edges();
    input.edges->ivals[3] = 2;
    expect_accepted(input);
}

TEST(PreserveInitialize, RefusesACornerAtAPointThatIsNotThere)
{
    for (int bad : {-1, 4}) {
        Input input = two_triangles();
        input.corners->ivals[5] = bad;
        expect_refused(input);
        Input with_edges = two_triangles({0, 1});
        with_edges.corners->ivals[5] = bad;
        expect_refused(with_edges);
    }
}

TEST(PreserveInitialize, RefusesMoreCornersThanAreListed)
{
    Input input = two_triangles();
    input.sizes->ivals[1] = 4;
    expect_refused(input);
    input.sizes->ivals[0] = 2147483647;
    input.sizes->ivals[1] = 2147483647;
    expect_refused(input);
    input.sizes->ivals[0] = 3;
    input.sizes->ivals[1] = 3;
    input.corners->count = 5;
    expect_refused(input);
}

TEST(PreserveInitialize, RefusesArraysLongerThanTheirBuffers)
{
    Input input = two_edges();
    input.edges->count = 3;
    expect_refused(input);
    Input faces = two_triangles();
    faces.sizes->count = 3;
    expect_refused(faces);
}

TEST(PreserveInitialize, RefusesSizesBeyond31Bits)
{
    Input input = two_edges();
    input.points->count = 715827883; // times 3 is 2^31 + 1
    expect_refused(input);
    input.points->count = 3;
    input.edges->count = 1 << 30;
    expect_refused(input);
}

TEST(PreserveInitialize, DoesNotExamineWhatItDoesNotUse)
{
    Input beyond_the_faces = square({}, {3, 3}, {0, 1, 2, 2, 3, 0, -7, 99});
    expect_accepted(beyond_the_faces);
    Input no_list = square({0, 1}, {-5, 70}, {});
    expect_accepted(no_list);
    Input no_sizes = square({0, 1}, {}, {-5, 70});
    expect_accepted(no_sizes);
}

TEST(PreserveInitialize, TakesMemoryOfTheHost)
{
    double xyz[] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    int32_t size[] = {3}, corner[] = {0, 1, 2};
    DATAstruct points = wrapped<DATAstruct>(xyz, 3, 3), sizes = wrapped<DATAstruct>(nullptr, 1, 1);
    DATAstruct corners = wrapped<DATAstruct>(nullptr, 3, 1);
    sizes.type = corners.type = DATA_TYPE_INT;
    sizes.ivals = size;
    corners.ivals = corner;
    PreserveStatus status = {};
    ASSERT_EQ(PreserveInitialize(&status, &points, nullptr, &sizes, &corners), 1);
    EXPECT_EQ(status.edges->count, 3);
    EXPECT_EQ(PreservePreserve(&status, PRESERVE_AREA, 1.0), 1);
    EXPECT_TRUE(same_bits(1.0, status.oarea));
    DATAstruct* const edges = status.edges;
    PreserveDispose(&status);
    DATADispose(edges);
    std::free(edges);
}

TEST(PreserveInitialize, TakesMemoryOfTheHostInZeroFilledRecords)
{
    double xyz[] = {0, 0, 0, 1, 0, 0};
    int32_t ends[] = {0, 1};
    DATAstruct points = {}, edges = {};
    points.dim = 3;
    points.count = 2;
    points.dvals = xyz;
    edges.dim = 2;
    edges.count = 1;
    edges.type = DATA_TYPE_INT;
    edges.ivals = ends;
    PreserveStatus status = {};
    ASSERT_EQ(PreserveInitialize(&status, &points, &edges, nullptr, nullptr), 1);
    EXPECT_EQ(PreservePreserve(&status, PRESERVE_LENGTH, 1.0), 1);
    EXPECT_TRUE(same_bits(1.0, status.olen->dvals[0]));
    PreserveDispose(&status);
}

TEST(PreserveInitialize, ReleasesNothingOfAUsedStatus)
{
    NEEDS_HEAP_COUNTS();
    Input input = two_edges();
    ASSERT_EQ(input.initialize(), 1);
    const PreserveStatus first = input.status;
    const HeapWatch heap;
    ASSERT_EQ(input.initialize(), 1);
    EXPECT_EQ(heap.frees(), 0);
    EXPECT_NE(input.status.force, first.force);
    PreserveDispose(&input.status);
    input.status = first;
    PreserveDispose(&input.status);
}

} // namespace
} // namespace korvale::test
