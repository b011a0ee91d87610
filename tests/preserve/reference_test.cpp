#include <cmath>
#include <limits>
#include <numbers>

#include <gtest/gtest.h>

#include "preserve/status.h"
#include "tests/preserve/meshes.h"
#include "tests/preserve/solver.h"
#include "tests/support/arrays.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"

namespace korvale::test {
namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();

/// Volume and area measures of a mesh at its own points.
struct Measures {
    double volume, area;
};

Measures measures_of(const Mesh& mesh)
{
    Solver solver(mesh);
    EXPECT_TRUE(switch_on(solver, PRESERVE_VOLUME | PRESERVE_AREA));
    return {solver->ovolume, solver->oarea};
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

TEST(PreserveInitOlen, MeasuresEveryEdge)
{
    Solver solver({{0, 0, 0, 3, 4, 0, 3, 4, 12}, {}, {}}, {0, 1, 2, 0, 1, 1});
    ASSERT_EQ(PreserveInitOlen(solver), 1);
    EXPECT_EQ(solver->olen->dim, 1);
    EXPECT_EQ(solver->olen->count, 3);
    EXPECT_EQ(solver->olen->type, DATA_TYPE_DOUBLE);
    EXPECT_EQ(solver->nlen->count, 3);
    EXPECT_TRUE(same_bits({5, 13, 0}, solver->olen->dvals));
    EXPECT_EQ(solver->flags, 0) << "only PreservePreserve switches terms on";
}

TEST(PreserveInitOfang, MeasuresTheCosineOfEveryCorner)
{
    Solver solver({{0, 0, 0, 2, 0, 0, 0, 2, 0}, {3, 2}, {0, 1, 2, 0, 1}});
    ASSERT_EQ(PreserveInitOfang(solver), 1);
    EXPECT_EQ(solver->ofang->count, 5) << "one for every entry of the list";
    EXPECT_EQ(solver->nfang->count, 5);
    const double slanted = 4.0 / (std::sqrt(8.0) * 2.0);
    EXPECT_TRUE(same_bits({0, slanted, slanted, 1, 1}, solver->ofang->dvals));
}

TEST(PreserveInitOfang, ANeighbourAtTheSamePlaceGivesZero)
{
    Solver solver({{1, 1, 1, 1, 1, 1, 2, 0, 0}, {3, 1}, {0, 1, 2, 2}});
    ASSERT_EQ(PreserveInitOfang(solver), 1);
    EXPECT_TRUE(same_bits(0.0, solver->ofang->dvals[0]));
    EXPECT_TRUE(same_bits(0.0, solver->ofang->dvals[1]));
    EXPECT_TRUE(same_bits(3.0 / (std::sqrt(3.0) * std::sqrt(3.0)), solver->ofang->dvals[2]));
    EXPECT_TRUE(same_bits(0.0, solver->ofang->dvals[3])) << "a single corner is its own neighbour";
}

TEST(PreserveInitOvolume, TheTetrahedronMeasuresOne)
{
    const Measures m = measures_of(tetrahedron());
    EXPECT_TRUE(same_bits(1.0, m.volume));
    EXPECT_TRUE(same_bits(3.0 + std::sqrt(3.0), m.area));
}

TEST(PreserveInitOvolume, IsSixTimesTheVolumeAndTheAreaTwice)
{
    EXPECT_TRUE(same_bits(6.0, measures_of(cube_of_quads()).volume));
    EXPECT_TRUE(same_bits(6.0, measures_of(cube_of_triangles()).volume));
    EXPECT_TRUE(same_bits(12.0, measures_of(cube_of_quads()).area));
    EXPECT_TRUE(same_bits(12.0, measures_of(cube_of_triangles()).area));
}

TEST(PreserveInitOvolume, ApproachesTheSphereAndTheTorus)
{
    const double pi = std::numbers::pi;
    const Measures sphere = measures_of(icosphere(4));
    EXPECT_NEAR(sphere.volume / 6.0, 4.0 / 3.0 * pi, 0.02) << "5120 flat triangles leave out 0.2 % of the ball";
    EXPECT_NEAR(sphere.area / 2.0, 4.0 * pi, 0.03);
    const Measures ring = measures_of(torus(96, 48, 2.0, 0.5));
    EXPECT_NEAR(ring.volume / 6.0, 2.0 * pi * pi * 2.0 * 0.25, 0.04);
    EXPECT_NEAR(ring.area / 2.0, 4.0 * pi * pi * 2.0 * 0.5, 0.06);
}

TEST(PreserveInitOvolume, IsNegativeInsideOut)
{
    Mesh mesh = tetrahedron();
    for (size_t f = 0; f < 4; ++f)
        std::swap(mesh.corners[3 * f], mesh.corners[3 * f + 1]);
    EXPECT_TRUE(same_bits(-1.0, measures_of(mesh).volume));
}

TEST(PreserveInitOvolume, FacesOfFewerThanThreeCornersHaveNone)
{
    const double infinity = std::numeric_limits<double>::infinity();
    Mesh mesh = tetrahedron();
    mesh.points.insert(mesh.points.end(), {infinity, kNaN, 1});
    mesh.sizes.insert(mesh.sizes.end(), {2, 1, 0});
    mesh.corners.insert(mesh.corners.end(), {4, 0, 4});
    Solver solver(mesh);
    ASSERT_EQ(PreserveInitOvolume(solver), 1);
    EXPECT_TRUE(same_bits(1.0, solver->ovolume)) << "they are skipped, not evaluated";
}

TEST(PreserveInitOvolume, SumsTheFanBeforeTheProductWithTheFirstCorner)
{
    // The cross products of the fan are (0, 0, 1e16) and (0, 0, 1): their sum loses the 1, where two products with the
    // first corner would keep it.
    Solver solver({{0, 0, 3, 1e16, 0, 0, 0, 1, 0, -1, 0, 0}, {4}, {0, 1, 2, 3}});
    ASSERT_EQ(PreserveInitOvolume(solver), 1);
    EXPECT_TRUE(same_bits(3.0 * 1e16, solver->ovolume));
}

TEST(PreserveInitOarea, PlanarFacesMeasureTwiceTheirArea)
{
    Solver square({{0, 0, 5, 2, 0, 5, 2, 2, 5, 0, 2, 5}, {4}, {0, 1, 2, 3}});
    ASSERT_EQ(PreserveInitOarea(square), 1);
    EXPECT_TRUE(same_bits(8.0, square->oarea));
    for (int n : {3, 5, 8}) {
        Solver solver(polygon(n));
        ASSERT_EQ(PreserveInitOarea(solver), 1);
        EXPECT_NEAR(solver->oarea, n * std::sin(2.0 * std::numbers::pi / n), 1e-14);
    }
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
