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

/// Two points, one edge of reference length 2, evaluated at length 3 along x.
struct StretchedEdge : testing::Test {
    Solver solver{{{0, 0, 0, 2, 0, 0}, {}, {}}, {0, 1}};

    void SetUp() override
    {
        ASSERT_EQ(PreservePreserve(solver, PRESERVE_LENGTH, 5.0), 1);
        solver.place({0, 0, 0, 3, 0, 0});
    }
};

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

TEST_F(StretchedEdge, HasWeightTimesSquaredDeviation)
{
    EXPECT_TRUE(same_bits(5.0, solver.energy()));
    EXPECT_TRUE(same_bits(3.0, solver->nlen->dvals[0]));
    EXPECT_TRUE(same_bits(2.0, solver->olen->dvals[0]));
}

TEST_F(StretchedEdge, HasNoEnergyWithBothEndsTagged)
{
    solver.tag({0, 1});
    EXPECT_TRUE(same_bits(0.0, solver.energy()));
    EXPECT_TRUE(same_bits(3.0, solver->nlen->dvals[0])) << "it is measured all the same";
}

TEST_F(StretchedEdge, KeepsItsEnergyWithOneEndTagged)
{
    solver.tag({1});
    EXPECT_TRUE(same_bits(5.0, solver.energy()));
}

TEST_F(StretchedEdge, TagsBeyondAShortenedArrayOrWithoutABufferDoNotCount)
{
    OwnedDATA tags = bytes<DATAstruct>(1, {1, 1});
    ASSERT_EQ(PreserveSetTag(solver, tags), 1);
    tags->count = 1;
    EXPECT_TRUE(same_bits(5.0, solver.energy()));
    DATAstruct no_buffer = wrapped<DATAstruct>(nullptr, 2, 1);
    no_buffer.type = DATA_TYPE_BYTE;
    ASSERT_EQ(PreserveSetTag(solver, &no_buffer), 1);
    EXPECT_TRUE(same_bits(5.0, solver.energy()));
}

TEST_F(StretchedEdge, EnergySquaresTheDeviationBeforeTheWeight)
{
    // (0.1 * 0.1) * 0.3 and 0.1 * (0.1 * 0.3) differ in the last bit.
    ASSERT_EQ(PreservePreserve(solver, PRESERVE_LENGTH, 0.3), 1);
    solver->olen->dvals[0] = 0.0;
    solver.place({0, 0, 0, 0.1, 0, 0});
    ASSERT_NE(0.3 * (0.1 * 0.1), 0.3 * 0.1 * 0.1);
    EXPECT_TRUE(same_bits(0.3 * (0.1 * 0.1), solver.energy()));
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

TEST(PreserveFindNlen, AddsToTheEnergyThatIsThere)
{
    Solver solver({{0, 0, 0, 2, 0, 0}, {}, {}}, {0, 1});
    ASSERT_TRUE(switch_on(solver, PRESERVE_LENGTH));
    solver.place({0, 0, 0, 3, 0, 0});
    solver->cur_points = solver.moved();
    solver->energy = 10.0;
    EXPECT_EQ(PreserveFindNlen(solver), 1);
    EXPECT_TRUE(same_bits(11.0, solver->energy));
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

} // namespace
} // namespace korvale::test
