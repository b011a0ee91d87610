// The term of lengths: reference, energy, forces.
#include "preserve/lengths.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "tests/preserve/solver.h"
#include "tests/support/arrays.h"
#include "tests/support/bits.h"

namespace korvale::test {
namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();

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

/// Two points, one edge of reference length 2, evaluated at length 3 along x.
struct StretchedEdge : testing::Test {
    Solver solver{{{0, 0, 0, 2, 0, 0}, {}, {}}, {0, 1}};

    void SetUp() override
    {
        ASSERT_EQ(PreservePreserve(solver, PRESERVE_LENGTH, 5.0), 1);
        solver.place({0, 0, 0, 3, 0, 0});
    }
};

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

/// One edge of reference length `reference` evaluated with its second point at (x, 0, 0), its first at the origin.
std::vector<double> edge_force(double reference, double x, double weight)
{
    Solver solver({{0, 0, 0, reference, 0, 0}, {}, {}}, {0, 1});
    EXPECT_EQ(PreservePreserve(solver, PRESERVE_LENGTH, weight), 1);
    solver.place({0, 0, 0, x, 0, 0});
    return solver.force();
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

} // namespace
} // namespace korvale::test
