// The term of angles: reference, energy, forces.
#include "preserve/angles.h"

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "tests/preserve/solver.h"
#include "tests/support/bits.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

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

TEST(PreserveFindNfang, HasTheEnergyOfEveryCorner)
{
    // A right angle opened to a straight line: cosines 0, c, c become -1, 1, 1.
    Solver solver({{0, 0, 0, 1, 0, 0, 0, 1, 0}, {3}, {0, 1, 2}});
    ASSERT_EQ(PreservePreserve(solver, PRESERVE_FACE_ANGLE, 3.0), 1);
    const double c = solver->ofang->dvals[1], bent = 3.0 * ((1.0 - c) * (1.0 - c));
    EXPECT_TRUE(same_bits(3.0 + bent + bent, solver.energy_at({0, 0, 0, 1, 0, 0, -1, 0, 0})));
    EXPECT_TRUE(same_bits({-1, 1, 1}, solver->nfang->dvals));
}

TEST(PreserveFindNfang, ACornerWithANeighbourAtItsPlaceHasNoEnergy)
{
    Solver solver({{0, 0, 0, 1, 0, 0, 0, 1, 0}, {3}, {0, 1, 2}});
    ASSERT_EQ(PreservePreserve(solver, PRESERVE_FACE_ANGLE, 1.0), 1);
    // Points 0 and 1 coincide: only corner 2 is left, its cosine 1.
    const double c = solver->ofang->dvals[2];
    EXPECT_TRUE(same_bits((1.0 - c) * (1.0 - c), solver.energy_at({0, 0, 0, 0, 0, 0, 0, 1, 0})));
    EXPECT_TRUE(same_bits({0, 0, 1}, solver->nfang->dvals));
}

TEST(PreserveFindNfang, ACornerHasNoEnergyWhenItAndBothNeighboursAreTagged)
{
    Solver solver({{0, 0, 0, 1, 0, 0, 0, 1, 0}, {3}, {0, 1, 2}});
    ASSERT_EQ(PreservePreserve(solver, PRESERVE_FACE_ANGLE, 1.0), 1);
    const double free = solver.energy_at({0, 0, 0, 1, 0, 0, 1, 1, 0});
    EXPECT_GT(free, 0.0);
    solver.tag({0, 1});
    EXPECT_TRUE(same_bits(free, solver.energy()));
    solver.tag({0, 2});
    EXPECT_TRUE(same_bits(free, solver.energy()));
    solver.tag({1, 2});
    EXPECT_TRUE(same_bits(free, solver.energy()));
    solver.tag({0, 1, 2});
    EXPECT_TRUE(same_bits(0.0, solver.energy()));
    EXPECT_NE(solver->nfang->dvals[0], solver->ofang->dvals[0]) << "it is measured all the same";
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

} // namespace
} // namespace korvale::test
