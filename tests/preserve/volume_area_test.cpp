// The terms of volume and area: references, energies, forces.
#include "preserve/volume_area.h"

#include <cmath>
#include <limits>
#include <numbers>

#include <gtest/gtest.h>

#include "tests/preserve/solver.h"
#include "tests/support/bits.h"
#include "tests/support/meshes.h"

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
    EXPECT_NEAR(sphere.area / 2.0, 4.0 * pi, 0.03) << "and as much of its surface";
    const Measures ring = measures_of(torus(96, 48, 2.0, 0.5));
    EXPECT_NEAR(ring.volume / 6.0, 2.0 * pi * pi * 2.0 * 0.25, 0.04)
        << "chords of 1/48 and 1/96 of a turn leave out 0.4 %";
    EXPECT_NEAR(ring.area / 2.0, 4.0 * pi * pi * 2.0 * 0.5, 0.06) << "and 0.12 % of the surface";
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
        EXPECT_NEAR(solver->oarea, n * std::sin(2.0 * std::numbers::pi / n), 2e-15) << "a few roundings of up to 3";
    }
}

TEST(PreserveFindNvolume, TagsPlayNoPart)
{
    Solver solver(tetrahedron());
    ASSERT_TRUE(switch_on(solver, PRESERVE_VOLUME | PRESERVE_AREA));
    solver.tag({0, 1, 2, 3});
    solver.energy_at({0, 0, 0, 3, 0, 0, 0, 1, 0, 0, 0, 1});
    EXPECT_TRUE(same_bits(3.0, solver->nvolume));
    EXPECT_GE(solver->energy, 4.0);
    EXPECT_GT(solver->narea, solver->oarea);
}

TEST(PreserveFindNvolume, WithoutFacesTheMeasuresAreZero)
{
    Solver solver({{0, 0, 0, 2, 0, 0}, {}, {}}, {0, 1});
    solver->ovolume = 3.0;
    solver->oarea = 2.0;
    solver->nvolume = solver->narea = 8.0;
    solver->flags = PRESERVE_VOLUME | PRESERVE_AREA;
    EXPECT_TRUE(same_bits(13.0, solver.energy()));
    EXPECT_TRUE(same_bits(0.0, solver->nvolume));
    EXPECT_TRUE(same_bits(0.0, solver->narea));
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
