// Energy and force over all terms: order of the sums, and terms without their arrays.
#include "preserve/evaluation.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "tests/preserve/random_meshes.h"
#include "tests/preserve/solver.h"
#include "tests/support/arrays.h"
#include "tests/support/bits.h"
#include "tests/support/meshes.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(PreserveFindEnergy, IsZeroWithoutTerms)
{
    Solver solver(tetrahedron());
    solver->energy = 7.0;
    EXPECT_TRUE(same_bits(0.0, solver.energy()));
}

TEST(PreserveFindEnergy, RefusesANullStatus)
{
    EXPECT_EQ(PreserveFindEnergy(nullptr), -1);
    EXPECT_EQ(PreserveFindNlen(nullptr), -1);
    EXPECT_EQ(PreserveFindNfang(nullptr), -1);
    EXPECT_EQ(PreserveFindNvolume(nullptr), -1);
    EXPECT_EQ(PreserveFindNarea(nullptr), -1);
}

TEST(PreserveFindEnergy, IsExactlyZeroAtTheReference)
{
    Random random(4201);
    for (int i = 0; i < rounds(20); ++i) {
        Solver solver(random_closed_mesh(random));
        ASSERT_TRUE(switch_on(solver, kAllTerms, 2.5));
        EXPECT_TRUE(same_bits(0.0, solver.energy()));
    }
}

TEST(PreserveFindEnergy, AddsOneMeasureAfterTheOther)
{
    // 1 followed by many terms below half its last place: each one is lost, their sum would not be.
    const double small = 1e-8; // squares to 1e-16
    std::vector<double> points = {0, 0, 0, 1, 0, 0}, moved = {0, 0, 0, 2, 0, 0};
    std::vector<int> edges = {0, 1};
    for (int i = 0; i < 100; ++i) {
        points.insert(points.end(), {0, 0, 0, 0, 0, 0});
        moved.insert(moved.end(), {0, 0, 0, small, 0, 0});
        edges.insert(edges.end(), {2 * i + 2, 2 * i + 3});
    }
    Solver solver({points, {}, {}}, edges);
    ASSERT_TRUE(switch_on(solver, PRESERVE_LENGTH));
    EXPECT_TRUE(same_bits(1.0, solver.energy_at(moved)));
}

TEST(PreserveFindEnergy, AddsTheTermsInOrderIntoOneSum)
{
    Random random(4202);
    const Mesh mesh = random_closed_mesh(random);
    Solver all(mesh), one(mesh);
    ASSERT_TRUE(switch_on(all, kAllTerms, 0.7));
    ASSERT_TRUE(switch_on(one, kAllTerms, 0.7));
    const std::vector<double> moved = shaken(random, mesh.points, 0.2);
    all.energy_at(moved);
    one.place(moved);
    one->cur_points = one.moved();
    one->energy = 0.0;
    EXPECT_EQ(PreserveFindNlen(one), 1);
    EXPECT_EQ(PreserveFindNfang(one), 1);
    EXPECT_EQ(PreserveFindNvolume(one), 1);
    EXPECT_EQ(PreserveFindNarea(one), 1);
    EXPECT_TRUE(same_bits(one->energy, all->energy));
    EXPECT_GT(all->energy, 0.0);
}

TEST(PreserveFindEnergy, ATranslationKeepsLengthsAnglesAndTheVolumeOfAClosedMesh)
{
    const Mesh closed = cube_of_triangles();
    Solver solver(closed);
    ASSERT_TRUE(switch_on(solver, kAllTerms));
    EXPECT_TRUE(same_bits(0.0, solver.energy_at(shifted(closed.points, 4, -2, 8)))) << "all values are exact here";
}

TEST(PreserveFindEnergy, ATranslationChangesTheVolumeOfAnOpenMesh)
{
    const Mesh open = {{0, 0, 0, 1, 0, 0, 0, 1, 0}, {3}, {0, 1, 2}};
    Solver solver(open);
    ASSERT_TRUE(switch_on(solver, kAllTerms));
    EXPECT_TRUE(same_bits(4.0, solver.energy_at(shifted(open.points, 0, 0, 2))));
    EXPECT_TRUE(same_bits(2.0, solver->nvolume)) << "seen from the origin";
    EXPECT_TRUE(same_bits(1.0, solver->olen->dvals[0]));
    EXPECT_TRUE(same_bits(solver->olen->dvals, solver->nlen->dvals, 3));
}

TEST(PreserveFindEnergy, ANaNCoordinateGivesANaNEnergy)
{
    Solver solver(tetrahedron());
    ASSERT_TRUE(switch_on(solver, kAllTerms));
    EXPECT_TRUE(std::isnan(solver.energy_at({0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, kNaN})));
}

TEST(PreserveFindEnergy, SkipsTermsWhoseArraysWereNeverMade)
{
    Solver solver(tetrahedron());
    EXPECT_EQ(PreservePreserve(solver, 3, 2.0), -1);
    EXPECT_TRUE(same_bits(0.0, solver.energy_at({0, 0, 0, 5, 0, 0, 0, 1, 0, 0, 0, 1})));
    EXPECT_EQ(PreserveFindForce(solver), 1);
    EXPECT_TRUE(same_bits(std::vector<double>(12, 0.0), solver->force->dvals));
    EXPECT_EQ(PreservePreserve(solver, PRESERVE_LENGTH, 2.0), 1);
    EXPECT_GT(solver.energy(), 0.0) << "the other bit is a term now";
    EXPECT_EQ(solver->ofang, nullptr);
}

TEST(PreserveFindEnergy, SkipsTermsWithoutPositions)
{
    Solver solver(tetrahedron());
    ASSERT_TRUE(switch_on(solver, kAllTerms));
    EXPECT_EQ(PreserveFindEnergy(solver), 1) << "nothing was ever evaluated";
    EXPECT_TRUE(same_bits(0.0, solver->energy));
    EXPECT_EQ(PreserveFindForce(solver), 1);
    OwnedDATA three = korvale::test::points<DATAstruct>({0, 0, 0, 1, 0, 0, 0, 1, 0});
    solver->cur_points = three;
    EXPECT_EQ(PreserveFindEnergy(solver), 1) << "too few points for the mesh";
    EXPECT_TRUE(same_bits(0.0, solver->energy));
    EXPECT_EQ(PreserveFindForce(solver), 1);
    EXPECT_TRUE(same_bits(std::vector<double>(12, 0.0), solver->force->dvals));
}

TEST(PreserveFindForce, RefusesANullStatus)
{
    EXPECT_EQ(PreserveFindForce(nullptr), -1);
    EXPECT_EQ(PreserveFindEdgeLengthForce(nullptr), -1);
    EXPECT_EQ(PreserveFindFaceAngleForce(nullptr), -1);
    EXPECT_EQ(PreserveFindVolumeForce(nullptr), -1);
    EXPECT_EQ(PreserveFindSurfaceAreaForce(nullptr), -1);
}

TEST(PreserveFindForce, IsZeroWithoutTermsAndAtTheReference)
{
    Solver solver(tetrahedron());
    std::fill(solver->force->dvals, solver->force->dvals + 12, 3.0);
    EXPECT_TRUE(same_bits(std::vector<double>(12, 0.0), solver.force()));
    ASSERT_TRUE(switch_on(solver, kAllTerms));
    std::fill(solver->force->dvals, solver->force->dvals + 12, 3.0);
    EXPECT_TRUE(same_bits(std::vector<double>(12, 0.0), solver.force()));
}

TEST(PreserveFindForce, AddsTheTermsInOrder)
{
    Random random(4301);
    const Mesh mesh = random_closed_mesh(random);
    Solver all(mesh), one(mesh);
    ASSERT_TRUE(switch_on(all, kAllTerms, 0.7));
    ASSERT_TRUE(switch_on(one, kAllTerms, 0.7));
    const std::vector<double> moved = shaken(random, mesh.points, 0.2);
    all.place(moved);
    one.energy_at(moved);
    std::fill(one->force->dvals, one->force->dvals + mesh.points.size(), 0.0);
    EXPECT_EQ(PreserveFindEdgeLengthForce(one), 1);
    EXPECT_EQ(PreserveFindFaceAngleForce(one), 1);
    EXPECT_EQ(PreserveFindVolumeForce(one), 1);
    EXPECT_EQ(PreserveFindSurfaceAreaForce(one), 1);
    EXPECT_TRUE(same_bits(values_of(*one->force), all.force()));
}

} // namespace
} // namespace korvale::test
