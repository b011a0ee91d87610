// The record: tags, masses, terms, other positions, and what disposing releases.
#include "preserve/status.h"

#include <cstring>
#include <limits>

#include <gtest/gtest.h>

#include "tests/preserve/input.h"
#include "tests/preserve/solver.h"
#include "tests/support/arrays.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"
#include "tests/support/meshes.h"

namespace korvale::test {
namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(PreserveStatus, TermsAreBits)
{
    EXPECT_EQ(PRESERVE_LENGTH, 1);
    EXPECT_EQ(PRESERVE_FACE_ANGLE, 2);
    EXPECT_EQ(PRESERVE_VOLUME, 4);
    EXPECT_EQ(PRESERVE_AREA, 8);
}

TEST(PreserveDispose, ReleasesWhatTheStatusOwnsAndKeepsTheFields)
{
    NEEDS_HEAP_COUNTS();
    Input input = two_triangles({0, 1, 1, 2});
    const HeapWatch heap;
    ASSERT_EQ(input.initialize(), 1);
    for (int term = 1; term <= PRESERVE_AREA; term *= 2)
        ASSERT_EQ(PreservePreserve(&input.status, term, 1.0), 1);
    EXPECT_EQ(heap.live_blocks(), 20) << "ten records with their buffers";
    const PreserveStatus before = input.status;
    PreserveDispose(&input.status);
    EXPECT_EQ(heap.live_blocks(), 0);
    EXPECT_EQ(std::memcmp(&before, &input.status, sizeof before), 0);
    EXPECT_EQ(input.points->count, 4);
    EXPECT_EQ(input.edges->count, 2);
}

TEST(PreserveDispose, TakesNullAndAZeroFilledRecord)
{
    PreserveDispose(nullptr);
    PreserveStatus status = {};
    PreserveDispose(&status);
    EXPECT_EQ(status.force, nullptr);
}

TEST(PreserveSetTag, RefusesWhatIsNotOneBytePerPoint)
{
    Solver solver(tetrahedron());
    OwnedDATA tags = bytes<DATAstruct>(1, {0, 1, 0, 0}), five = bytes<DATAstruct>(1, {0, 0, 0, 0, 0});
    OwnedDATA wide = bytes<DATAstruct>(2, {0, 0, 0, 0, 0, 0, 0, 0}), numbers = ints<DATAstruct>(1, {0, 0, 0, 0});
    ASSERT_EQ(PreserveSetTag(solver, tags), 1);
    EXPECT_EQ(solver->tags, tags.get());
    EXPECT_EQ(PreserveSetTag(solver, nullptr), -1) << "tags cannot be detached";
    EXPECT_EQ(PreserveSetTag(solver, five), -1);
    EXPECT_EQ(PreserveSetTag(solver, wide), -1);
    EXPECT_EQ(PreserveSetTag(solver, numbers), -1);
    EXPECT_EQ(solver->tags, tags.get());
    EXPECT_EQ(PreserveSetTag(nullptr, tags), -1);
    PreserveStatus no_points = {};
    EXPECT_EQ(PreserveSetTag(&no_points, tags), -1);
}

TEST(PreserveSetTag, CanBeReplaced)
{
    Solver solver(tetrahedron());
    OwnedDATA first = bytes<DATAstruct>(1, {0, 1, 0, 0}), second = bytes<DATAstruct>(1, {1, 1, 1, 1});
    EXPECT_EQ(PreserveSetTag(solver, first), 1);
    EXPECT_EQ(PreserveSetTag(solver, second), 1);
    EXPECT_EQ(solver->tags, second.get());
}

TEST(PreserveSetMass, RefusesWhatIsNotOneMassPerPoint)
{
    Solver solver(tetrahedron());
    OwnedDATA masses = doubles<DATAstruct>(1, {1, 2, 3, 4}), three = doubles<DATAstruct>(1, {1, 1, 1});
    OwnedDATA wide = doubles<DATAstruct>(2, {1, 1, 1, 1, 1, 1, 1, 1}), numbers = ints<DATAstruct>(1, {1, 1, 1, 1});
    ASSERT_EQ(PreserveSetMass(solver, masses), 1);
    EXPECT_EQ(PreserveSetMass(solver, nullptr), -1) << "masses cannot be detached";
    EXPECT_EQ(PreserveSetMass(solver, three), -1);
    EXPECT_EQ(PreserveSetMass(solver, wide), -1);
    EXPECT_EQ(PreserveSetMass(solver, numbers), -1);
    DATAstruct no_buffer = wrapped<DATAstruct>(nullptr, 4, 1);
    EXPECT_EQ(PreserveSetMass(solver, &no_buffer), -1);
    EXPECT_EQ(solver->masses, masses.get());
    EXPECT_EQ(PreserveSetMass(nullptr, masses), -1);
    PreserveStatus no_points = {};
    EXPECT_EQ(PreserveSetMass(&no_points, masses), -1);
}

TEST(PreserveSetMass, TakesPositiveMassesAndNaN)
{
    const std::pair<double, int> masses[] = {{1e-300, 1}, {kNaN, 1}, {0.0, -1}, {-0.0, -1}, {-1.0, -1}};
    for (const auto& [mass, expected] : masses) {
        Solver solver(tetrahedron());
        OwnedDATA array = doubles<DATAstruct>(1, {1, 1, mass, 1});
        EXPECT_EQ(PreserveSetMass(solver, array), expected) << mass;
        EXPECT_EQ(solver->masses, expected == 1 ? array.get() : nullptr);
    }
}

TEST(PreservePreserve, AWeightThatIsNotPositiveChangesNothing)
{
    Solver solver(tetrahedron());
    for (double weight : {0.0, -0.0, -1.0}) {
        EXPECT_EQ(PreservePreserve(solver, PRESERVE_LENGTH, weight), 1);
        EXPECT_EQ(PreservePreserve(solver, 3, weight), 1);
    }
    EXPECT_EQ(solver->flags, 0);
    EXPECT_EQ(solver->olen, nullptr);
    EXPECT_TRUE(same_bits({1, 1, 1, 1}, std::vector<double>(solver->weights, solver->weights + 4)));
}

TEST(PreservePreserve, ANaNWeightCountsAsPositive)
{
    Solver solver(tetrahedron());
    EXPECT_EQ(PreservePreserve(solver, PRESERVE_AREA, kNaN), 1);
    EXPECT_EQ(solver->flags, PRESERVE_AREA);
    EXPECT_TRUE(same_bits(kNaN, solver->weights[3]));
}

TEST(PreservePreserve, EachTermHasItsOwnWeight)
{
    Solver solver(tetrahedron());
    EXPECT_EQ(PreservePreserve(solver, 1, 2.0), 1);
    EXPECT_EQ(PreservePreserve(solver, 2, 3.0), 1);
    EXPECT_EQ(PreservePreserve(solver, 4, 4.0), 1);
    EXPECT_EQ(PreservePreserve(solver, 8, 5.0), 1);
    EXPECT_EQ(solver->flags, 15);
    EXPECT_TRUE(same_bits({2, 3, 4, 5}, std::vector<double>(solver->weights, solver->weights + 4)));
}

TEST(PreservePreserve, NoTermAtAllSucceeds)
{
    Solver solver(tetrahedron());
    EXPECT_EQ(PreservePreserve(solver, 0, 2.0), 1);
    EXPECT_EQ(solver->flags, 0);
}

TEST(PreservePreserve, WhatIsNotOneTermFailsAndLeavesItsBits)
{
    for (int which : {3, 5, 6, 7, 9, 15, 16, -1, -2147483647 - 1}) {
        Solver solver(tetrahedron());
        EXPECT_EQ(PreservePreserve(solver, which, 2.0), -1);
        EXPECT_EQ(solver->flags, which);
        EXPECT_EQ(solver->olen, nullptr);
        EXPECT_TRUE(same_bits({1, 1, 1, 1}, std::vector<double>(solver->weights, solver->weights + 4)));
    }
}

TEST(PreservePreserve, RefusesANullStatus)
{
    EXPECT_EQ(PreservePreserve(nullptr, PRESERVE_LENGTH, 1.0), -1);
    EXPECT_EQ(PreserveInitOlen(nullptr), -1);
    EXPECT_EQ(PreserveInitOfang(nullptr), -1);
    EXPECT_EQ(PreserveInitOvolume(nullptr), -1);
    EXPECT_EQ(PreserveInitOarea(nullptr), -1);
}

TEST(PreservePreserve, ATermThatCannotBeMeasuredStaysOffWithItsWeightStored)
{
    PreserveStatus status = {};
    status.flags = 64;
    for (int slot = 0; slot < 4; ++slot) {
        EXPECT_EQ(PreservePreserve(&status, 1 << slot, 7.0), -1);
        EXPECT_EQ(status.flags, 64);
        EXPECT_TRUE(same_bits(7.0, status.weights[slot]));
    }
}

TEST(PreservePreserve, PointsWithoutABufferCannotBeMeasured)
{
    Solver solver(tetrahedron());
    DATAstruct no_buffer = wrapped<DATAstruct>(nullptr, 4, 3);
    ASSERT_EQ(PreserveReInitialize(solver, &no_buffer), 1);
    for (int term : {1, 2, 4, 8})
        EXPECT_EQ(PreservePreserve(solver, term, 1.0), -1);
    EXPECT_EQ(solver->flags, 0);
}

TEST(PreservePreserve, ATermThatCanNoLongerBeMeasuredIsSwitchedOff)
{
    Solver solver(tetrahedron());
    ASSERT_TRUE(switch_on(solver, kAllTerms));
    DATAstruct no_buffer = wrapped<DATAstruct>(nullptr, 4, 3);
    ASSERT_EQ(PreserveReInitialize(solver, &no_buffer), 1);
    EXPECT_EQ(solver->flags, kAllTerms);
    for (int slot = 0, left = kAllTerms; slot < 4; ++slot) {
        EXPECT_EQ(PreservePreserve(solver, 1 << slot, 7.0), -1);
        left &= ~(1 << slot);
        EXPECT_EQ(solver->flags, left);
        EXPECT_TRUE(same_bits(7.0, solver->weights[slot]));
    }
}

TEST(PreservePreserve, ASecondCallMeasuresAgainInTheSameArrays)
{
    NEEDS_HEAP_COUNTS();
    Solver solver(tetrahedron());
    ASSERT_TRUE(switch_on(solver, kAllTerms));
    const DATAstruct* const olen = solver->olen;
    for (int i = 0; i < 12; ++i)
        solver->points->dvals[i] *= 2.0;
    const HeapWatch heap;
    ASSERT_TRUE(switch_on(solver, kAllTerms, 3.0));
    EXPECT_EQ(heap.allocations(), 0);
    EXPECT_EQ(solver->olen, olen);
    EXPECT_TRUE(same_bits(2.0, solver->olen->dvals[0]));
    EXPECT_TRUE(same_bits(8.0, solver->ovolume));
    EXPECT_TRUE(same_bits(3.0, solver->weights[3]));
}

TEST(PreserveReInitialize, ReplacesThePointsAndKeepsTheReferences)
{
    Solver solver(tetrahedron());
    ASSERT_TRUE(switch_on(solver, kAllTerms, 2.0));
    const std::vector<double> olen = values_of(*solver->olen), ofang = values_of(*solver->ofang);
    OwnedDATA other = korvale::test::points<DATAstruct>({0, 0, 0, 5, 0, 0, 0, 7, 0, 0, 0, 9});
    EXPECT_EQ(PreserveReInitialize(solver, other), 1);
    EXPECT_EQ(solver->points, other.get());
    EXPECT_TRUE(same_bits(olen, values_of(*solver->olen)));
    EXPECT_TRUE(same_bits(ofang, values_of(*solver->ofang)));
    EXPECT_TRUE(same_bits(1.0, solver->ovolume));
    EXPECT_TRUE(same_bits(2.0, solver->weights[2]));
    EXPECT_EQ(solver->flags, kAllTerms);
    EXPECT_EQ(PreservePreserve(solver, PRESERVE_VOLUME, 1.0), 1);
    EXPECT_TRUE(same_bits(5.0 * 7.0 * 9.0, solver->ovolume));
}

TEST(PreserveReInitialize, RefusesAnotherCountAndWhatIsNotPoints)
{
    Solver solver(tetrahedron());
    DATAstruct* const points = solver->points;
    OwnedDATA three = korvale::test::points<DATAstruct>({0, 0, 0, 1, 0, 0, 0, 1, 0}),
              flat = doubles<DATAstruct>(2, {0, 0});
    EXPECT_EQ(PreserveReInitialize(solver, three), -1);
    EXPECT_EQ(PreserveReInitialize(solver, flat), -1);
    EXPECT_EQ(PreserveReInitialize(solver, nullptr), -1);
    EXPECT_EQ(PreserveReInitialize(nullptr, points), -1);
    EXPECT_EQ(solver->points, points);
    PreserveStatus no_points = {};
    EXPECT_EQ(PreserveReInitialize(&no_points, three), -1);
}

TEST(PreserveInitialize, ALargerMeshReshapesTheMeasuresOfTheFirst)
{
    Solver small(tetrahedron());
    ASSERT_TRUE(switch_on(small, kAllTerms));
    Solver large(cube_of_triangles());
    // The large mesh takes the measure arrays of the small one over, as a second initialisation of one status does.
    std::swap(small->olen, large->olen);
    std::swap(small->ofang, large->ofang);
    std::swap(small->nlen, large->nlen);
    std::swap(small->nfang, large->nfang);
    large->flags = PRESERVE_LENGTH | PRESERVE_FACE_ANGLE;
    large.energy();
    EXPECT_TRUE(same_bits(0.0, large->energy)) << "arrays too short for the mesh are left alone";
    ASSERT_TRUE(switch_on(large, kAllTerms));
    EXPECT_EQ(large->olen->count, 18);
    EXPECT_EQ(large->nlen->count, 18);
    EXPECT_EQ(large->ofang->count, 36);
    EXPECT_EQ(large->nfang->count, 36);
    EXPECT_TRUE(same_bits(0.0, large.energy()));
    EXPECT_TRUE(same_bits(large->olen->dvals, large->nlen->dvals, 18));
}

} // namespace
} // namespace korvale::test
