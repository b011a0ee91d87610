// What holds for any mesh: forces are gradients, energies fall, tagged points stay.
#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "preserve/compute.h"
#include "preserve/evaluation.h"
#include "tests/preserve/random_meshes.h"
#include "tests/preserve/solver.h"
#include "tests/support/bits.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

/// Compares the force with the negative central difference of the energy, coordinate by coordinate.
void expect_force_is_negative_gradient(Solver& solver)
{
    const std::vector<double> at = solver.positions(), force = solver.force();
    double largest = 0.0;
    for (double f : force)
        largest = std::max(largest, std::fabs(f));
    ASSERT_GT(largest, 0.0);
    // A difference over 2e-5 of an energy around 1e2 carries 1e-9 of rounding and as much of the third derivative.
    const double h = 1e-5;
    std::vector<double> moved = at;
    for (size_t q = 0; q < at.size(); ++q) {
        moved[q] = at[q] + h;
        const double above = solver.energy_at(moved);
        moved[q] = at[q] - h;
        const double below = solver.energy_at(moved);
        moved[q] = at[q];
        EXPECT_NEAR(force[q], (below - above) / (2.0 * h), 1e-6 * std::max(largest, 1.0)) << "coordinate " << q;
    }
}

class EachTerm : public testing::TestWithParam<int> {};

TEST_P(EachTerm, ForceIsTheNegativeGradientOfTheEnergyOnTriangles)
{
    Random random(4501 + static_cast<uint64_t>(GetParam()));
    for (int i = 0; i < rounds(12); ++i) {
        const Mesh mesh = random_closed_mesh(random);
        Solver solver(mesh);
        ASSERT_EQ(PreservePreserve(solver, GetParam(), random.uniform(0.2, 2.0)), 1);
        solver.place(shaken(random, mesh.points, 0.1));
        expect_force_is_negative_gradient(solver);
    }
}

INSTANTIATE_TEST_SUITE_P(Preserve, EachTerm, testing::Values(1, 2, 4, 8));

TEST(PreserveFindForce, LengthAngleAndAreaFollowTheGradientOnFacesOfAnySize)
{
    Random random(4502);
    for (int n : {4, 5, 6, 9}) {
        Solver solver(polygon(n));
        ASSERT_TRUE(switch_on(solver, PRESERVE_LENGTH | PRESERVE_FACE_ANGLE | PRESERVE_AREA));
        solver.place(shaken(random, polygon(n).points, 0.2));
        expect_force_is_negative_gradient(solver);
    }
}

TEST(PreserveCompute, EnergyFallsInEveryStepOrTheHalvingLimitIsReached)
{
    Random random(4503);
    int reached = 0;
    for (int i = 0; i < rounds(60); ++i) {
        const Mesh mesh = random_closed_mesh(random);
        Solver solver(mesh);
        ASSERT_TRUE(switch_on(solver, random.between(1, 15), random.uniform(0.01, 1.0)));
        solver.place(shaken(random, mesh.points, random.uniform(0.001, 0.4)));
        for (int step = 0; step < 8; ++step) {
            const double before = solver.energy();
            const std::vector<double> at = solver.positions(), force = solver.force();
            ASSERT_EQ(PreserveCompute(solver, solver.moved(), 1), 1);
            if (solver->energy < before || before == 0.0)
                continue;
            // The last trial is 2^-20 of a step as long as the energy.
            ++reached;
            double travelled = 0.0;
            const std::vector<double> now = solver.positions();
            for (size_t q = 0; q < at.size(); ++q)
                travelled += (now[q] - at[q]) * (now[q] - at[q]);
            EXPECT_NEAR(std::sqrt(travelled), before * 0x1p-20, 1e-13 + 1e-3 * before * 0x1p-20);
        }
    }
    EXPECT_LT(reached, 60) << "most steps find a lower energy";
}

TEST(PreserveCompute, TaggedPointsDoNotMoveByABit)
{
    Random random(4504);
    for (int i = 0; i < rounds(40); ++i) {
        const Mesh mesh = random_closed_mesh(random);
        Solver solver(mesh);
        ASSERT_TRUE(switch_on(solver, kAllTerms, random.uniform(0.01, 1.0)));
        const int n = mesh.point_count();
        std::vector<int> tagged;
        for (int v = 1; v < n; ++v)
            if (random.one_in(3))
                tagged.push_back(v);
        solver.tag(tagged);
        const std::vector<double> start = shaken(random, mesh.points, 0.2);
        solver.place(start);
        ASSERT_EQ(PreserveCompute(solver, solver.moved(), 5), 1);
        const std::vector<double> end = solver.positions();
        for (int v : tagged)
            EXPECT_TRUE(same_bits(&start[3 * static_cast<size_t>(v)], &end[3 * static_cast<size_t>(v)], 3));
        EXPECT_NE(start, end);
    }
}

TEST(PreserveFindForce, ForcesOfClosedTriangleMeshesVanishInSum)
{
    // No term changes when the whole mesh is shifted, so nothing may push it as a whole.
    Random random(4505);
    for (int i = 0; i < rounds(30); ++i) {
        const Mesh mesh = random_closed_mesh(random);
        Solver solver(mesh);
        ASSERT_TRUE(switch_on(solver, kAllTerms));
        solver.place(shaken(random, mesh.points, 0.2));
        const std::vector<double> force = solver.force();
        double size = 0.0, sum[3] = {};
        for (size_t q = 0; q < force.size(); ++q) {
            sum[q % 3] += force[q];
            size += std::fabs(force[q]);
        }
        for (double s : sum)
            EXPECT_NEAR(s, 0.0, 1e-12 * size) << "rounding of the terms that cancel";
    }
}

TEST(PreserveCompute, BringsASquashedTorusBack)
{
    const Mesh mesh = triangulated(torus(12, 8, 2.0, 0.7));
    std::vector<double> squashed = mesh.points;
    for (size_t q = 2; q < squashed.size(); q += 3)
        squashed[q] *= 0.6;
    for (const int terms : {1, 2, 4, 8, kAllTerms}) {
        Solver solver(mesh);
        ASSERT_TRUE(switch_on(solver, terms, 0.02));
        const double before = solver.energy_at(squashed);
        ASSERT_EQ(PreserveCompute(solver, solver.moved(), 300), 1);
        EXPECT_LT(solver->energy, 0.1 * before) << "terms " << terms;
    }
}

} // namespace
} // namespace korvale::test
