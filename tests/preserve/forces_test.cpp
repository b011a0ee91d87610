#include <algorithm>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "preserve/evaluation.h"
#include "tests/preserve/meshes.h"
#include "tests/preserve/solver.h"
#include "tests/support/arrays.h"
#include "tests/support/bits.h"

namespace korvale::test {
namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();

/// One edge of reference length `reference` evaluated with its second point at (x, 0, 0), its first at the origin.
std::vector<double> edge_force(double reference, double x, double weight)
{
    Solver solver({{0, 0, 0, reference, 0, 0}, {}, {}}, {0, 1});
    EXPECT_EQ(PreservePreserve(solver, PRESERVE_LENGTH, weight), 1);
    solver.place({0, 0, 0, x, 0, 0});
    return solver.force();
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

TEST(PreserveFindEdgeLengthForce, PullsBothEndsTowardsTheReferenceLength)
{
    EXPECT_TRUE(same_bits({10, 0, 0, -10, 0, 0}, edge_force(2.0, 3.0, 5.0)));
    EXPECT_TRUE(same_bits({-10, 0, 0, 10, 0, 0}, edge_force(2.0, 1.0, 5.0)));
    EXPECT_TRUE(same_bits({0, 0, 0, 0, 0, 0}, edge_force(2.0, 2.0, 5.0)));
}

TEST(PreserveFindEdgeLengthForce, MultipliesByTwiceTheWeightBeforeDividing)
{
    const double length = 0.7, reference = 0.3, weight = 1.1;
    const double k = ((length - reference) * (2.0 * weight)) / length;
    ASSERT_NE(k * length, (length - reference) * ((2.0 * weight) / length) * length) << "the orders differ here";
    ASSERT_NE(k * length, (length - reference) / length * (2.0 * weight) * length);
    EXPECT_TRUE(same_bits({k * length, 0, 0, -(k * length), 0, 0}, edge_force(reference, length, weight)));
}

TEST(PreserveFindEdgeLengthForce, AnEdgeOfVanishingLengthHasEnergyButNoForce)
{
    const double threshold = 1e-06;
    EXPECT_TRUE(same_bits(std::vector<double>(6, 0.0), edge_force(2.0, std::nextafter(threshold, 0.0), 1.0)));
    EXPECT_NE(edge_force(2.0, threshold, 1.0)[0], 0.0);
    EXPECT_NE(edge_force(2.0, std::nextafter(threshold, 1.0), 1.0)[0], 0.0);
    Solver solver({{0, 0, 0, 2, 0, 0}, {}, {}}, {0, 1});
    ASSERT_TRUE(switch_on(solver, PRESERVE_LENGTH));
    EXPECT_TRUE(same_bits(4.0, solver.energy_at({0, 0, 0, 0, 0, 0})));
}

TEST(PreserveFindEdgeLengthForce, TagsDoNotMatter)
{
    Solver solver({{0, 0, 0, 2, 0, 0}, {}, {}}, {0, 1});
    ASSERT_TRUE(switch_on(solver, PRESERVE_LENGTH));
    solver.tag({0, 1});
    solver.place({0, 0, 0, 3, 0, 0});
    EXPECT_TRUE(same_bits({2, 0, 0, -2, 0, 0}, solver.force()));
    EXPECT_TRUE(same_bits(0.0, solver->energy));
}

TEST(PreserveFindEdgeLengthForce, AnEdgeFromAPointToItselfPullsNothing)
{
    Solver solver({{1, 1, 1, 2, 2, 2}, {}, {}}, {0, 0, 1, 1});
    ASSERT_TRUE(switch_on(solver, PRESERVE_LENGTH));
    solver->olen->dvals[0] = 3.0;
    EXPECT_TRUE(same_bits(std::vector<double>(6, 0.0), solver.force()));
}

TEST(PreserveFindEdgeLengthForce, ANaNLengthPullsWithNaN)
{
    const std::vector<double> force = edge_force(2.0, kNaN, 1.0);
    EXPECT_TRUE(std::isnan(force[0]));
    EXPECT_TRUE(std::isnan(force[3]));
}

TEST(PreserveFindFaceAngleForce, TheThreeForcesOfACornerVanishInSum)
{
    // One corner is kept at a time by giving the others the cosine they have.
    Random random(4302);
    for (int i = 0; i < rounds(200); ++i) {
        Solver solver({random.uniforms(9, -1, 1), {3}, {0, 1, 2}});
        ASSERT_TRUE(switch_on(solver, PRESERVE_FACE_ANGLE));
        solver.energy_at(random.uniforms(9, -1, 1));
        const int kept = random.below(3);
        for (int m = 0; m < 3; ++m)
            if (m != kept)
                solver->ofang->dvals[m] = solver->nfang->dvals[m];
        ASSERT_EQ(PreserveFindForce(solver), 1);
        const double* const f = solver->force->dvals;
        double size = 0.0;
        for (int q = 0; q < 9; ++q)
            size = std::max(size, std::fabs(f[q]));
        EXPECT_GT(size, 0.0);
        for (int q = 0; q < 3; ++q)
            EXPECT_NEAR(f[q] + f[3 + q] + f[6 + q], 0.0, 1e-13 * size) << "a few roundings of the largest force";
    }
}

TEST(PreserveFindFaceAngleForce, ACornerTurnsAcrossItsArms)
{
    // A corner of 90 degrees that was 60: cosine 0 for 0.5, c = 2 * (0 - 0.5) = -1, both arms of length 1.
    Solver solver({{0, 0, 0, 1, 0, 0, 0, 1, 0}, {3}, {0, 1, 2}});
    ASSERT_TRUE(switch_on(solver, PRESERVE_FACE_ANGLE));
    solver.energy();
    solver->ofang->dvals[0] = 0.5;
    ASSERT_EQ(PreserveFindForce(solver), 1);
    EXPECT_TRUE(same_bits({-1, -1, 0, 0, 1, 0, 1, 0, 0}, solver->force->dvals));
}

TEST(PreserveFindFaceAngleForce, ACornerWithANeighbourAtItsPlaceHasNone)
{
    Solver solver({{0, 0, 0, 1, 0, 0}, {2}, {0, 1}});
    ASSERT_TRUE(switch_on(solver, PRESERVE_FACE_ANGLE));
    solver.place({1, 1, 1, 1, 1, 1});
    EXPECT_TRUE(same_bits(std::vector<double>(6, 0.0), solver.force()));
    EXPECT_TRUE(same_bits({0, 0}, solver->nfang->dvals));
    EXPECT_TRUE(same_bits(0.0, solver->energy));
}

TEST(PreserveFindVolumeForce, AddsThePressureToEveryCorner)
{
    // The apex of the tetrahedron pulled to (0, 0, 2): volume 2, so k = 2 * 3 * (2 - 1) = 6.
    Solver solver(tetrahedron());
    ASSERT_EQ(PreservePreserve(solver, PRESERVE_VOLUME, 3.0), 1);
    solver.place({0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 2});
    EXPECT_TRUE(same_bits({12, 12, 6, -12, 0, 0, 0, -12, 0, 0, 0, -6}, solver.force()));
}

TEST(PreserveFindVolumeForce, IsSilentWithinTheThreshold)
{
    const double threshold = 1e-06;
    Solver solver(tetrahedron());
    ASSERT_TRUE(switch_on(solver, PRESERVE_VOLUME));
    solver.energy();
    for (double sign : {1.0, -1.0}) {
        solver->ovolume = 0.0;
        solver->nvolume = sign * std::nextafter(threshold, 0.0);
        PreserveFindForce(solver);
        EXPECT_TRUE(same_bits(std::vector<double>(12, 0.0), solver->force->dvals));
        solver->nvolume = sign * threshold;
        PreserveFindForce(solver);
        EXPECT_NE(solver->force->dvals[3], 0.0);
    }
    solver->nvolume = kNaN;
    PreserveFindForce(solver);
    EXPECT_TRUE(std::isnan(solver->force->dvals[3])) << "a NaN is not within";
}

TEST(PreserveFindVolumeForce, ADeviationWithinTheThresholdHasEnergy)
{
    Solver solver(tetrahedron());
    ASSERT_TRUE(switch_on(solver, PRESERVE_VOLUME));
    const double grown = 1.0 + 0x1p-21; // 4.8e-07
    EXPECT_TRUE(same_bits(0x1p-42, solver.energy_at({0, 0, 0, grown, 0, 0, 0, 1, 0, 0, 0, 1})));
}

TEST(PreserveFindVolumeForce, LargerFacesFollowTheRuleForTriangles)
{
    // A square in the plane z = 2: by its fan about point 0, the volume does not depend on z of point 2.
    Solver solver({{0, 0, 2, 1, 0, 2, 1, 1, 2, 0, 1, 2}, {4}, {0, 1, 2, 3}});
    ASSERT_TRUE(switch_on(solver, PRESERVE_VOLUME));
    EXPECT_TRUE(same_bits(4.0, solver->ovolume));
    solver.energy();
    solver->nvolume = 3.5; // k = -1
    ASSERT_EQ(PreserveFindForce(solver), 1);
    EXPECT_TRUE(same_bits({-2, -2, 1, 2, -2, 0, 2, 2, -1, -2, 2, 0}, solver->force->dvals))
        << "-(previous x next) at each corner";
}

TEST(PreserveFindSurfaceAreaForce, AddsTheTensionToEveryCorner)
{
    // A triangle of area measure 4 that was 1: k = 2 * (4 - 1) = 6, normal (0, 0, 1).
    Solver solver({{0, 0, 0, 1, 0, 0, 0, 1, 0}, {3}, {0, 1, 2}});
    ASSERT_TRUE(switch_on(solver, PRESERVE_AREA));
    solver.place({0, 0, 0, 2, 0, 0, 0, 2, 0});
    EXPECT_TRUE(same_bits({12, 12, 0, -12, 0, 0, 0, -12, 0}, solver.force()));
    EXPECT_TRUE(same_bits(9.0, solver->energy));
}

TEST(PreserveFindSurfaceAreaForce, IsSilentWithinTheThreshold)
{
    const double threshold = 1e-06;
    Solver solver(tetrahedron());
    ASSERT_TRUE(switch_on(solver, PRESERVE_AREA));
    solver.energy();
    for (double sign : {1.0, -1.0}) {
        solver->oarea = 0.0;
        solver->narea = sign * std::nextafter(threshold, 0.0);
        PreserveFindForce(solver);
        EXPECT_TRUE(same_bits(std::vector<double>(12, 0.0), solver->force->dvals));
        solver->narea = sign * threshold;
        PreserveFindForce(solver);
        EXPECT_NE(solver->force->dvals[3], 0.0);
    }
    solver->narea = kNaN;
    PreserveFindForce(solver);
    EXPECT_TRUE(std::isnan(solver->force->dvals[3])) << "a NaN is not within";
}

TEST(PreserveFindSurfaceAreaForce, ATooSmallFacePullsWithItsAreaVector)
{
    // An area vector of length 2^-22 is no unit normal, one of length 2^-18 is.
    for (const auto& [side, normal] : {std::pair{0x1p-11, 0x1p-22}, std::pair{0x1p-9, 1.0}}) {
        Solver solver({{0, 0, 0, 1, 0, 0, 0, 1, 0}, {3}, {0, 1, 2}});
        ASSERT_TRUE(switch_on(solver, PRESERVE_AREA));
        solver.energy_at({0, 0, 0, side, 0, 0, 0, side, 0});
        solver->narea = 1.5; // k = 1
        ASSERT_EQ(PreserveFindForce(solver), 1);
        const double pull = side * normal;
        EXPECT_TRUE(same_bits({pull, pull, 0, -pull, 0, 0, 0, -pull, 0}, solver->force->dvals));
    }
}

} // namespace
} // namespace korvale::test
