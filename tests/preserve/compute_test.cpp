// PreserveCompute and PreserveGetForce: the length of steps, halvings, and what is held fixed.
#include <algorithm>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "preserve/compute.h"
#include "tests/preserve/input.h"
#include "tests/preserve/random_meshes.h"
#include "tests/preserve/solver.h"
#include "tests/support/arrays.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

/// One edge of reference length 2 with weight `weight`, its points at 0 and x along the first axis.
struct Edge {
    Solver solver{{{0, 0, 0, 2, 0, 0}, {}, {}}, {0, 1}};

    Edge(double weight, double x)
    {
        EXPECT_EQ(PreservePreserve(solver, PRESERVE_LENGTH, weight), 1);
        solver.place({0, 0, 0, x, 0, 0});
    }
};

TEST(PreserveCompute, RefusesWhatDoesNotMatchTheMesh)
{
    Solver solver(tetrahedron());
    OwnedDATA three = korvale::test::points<DATAstruct>({0, 0, 0, 1, 0, 0, 0, 1, 0}),
              flat = doubles<DATAstruct>(2, {0, 0});
    OwnedDATA force;
    DATAstruct no_buffer = wrapped<DATAstruct>(nullptr, 4, 3);
    for (DATAstruct* bad : {three.get(), flat.get(), &no_buffer, static_cast<DATAstruct*>(nullptr)}) {
        EXPECT_EQ(PreserveCompute(solver, bad, 1), -1);
        EXPECT_EQ(PreserveGetForce(solver, bad, force), -1);
    }
    EXPECT_EQ(solver->cur_points, nullptr);
    EXPECT_EQ(force->count, -1);
    EXPECT_EQ(PreserveCompute(nullptr, solver.moved(), 1), -1);
    EXPECT_EQ(PreserveGetForce(nullptr, solver.moved(), force), -1);
    PreserveStatus no_points = {};
    EXPECT_EQ(PreserveCompute(&no_points, solver.moved(), 1), -1);
}

TEST(PreserveCompute, PointsInShapeStayAsTheyAre)
{
    Random random(4401);
    for (int i = 0; i < rounds(20); ++i) {
        const Mesh mesh = random_closed_mesh(random);
        Solver solver(mesh);
        ASSERT_TRUE(switch_on(solver, kAllTerms));
        EXPECT_EQ(PreserveCompute(solver, solver.moved(), 10), 1);
        EXPECT_TRUE(same_bits(mesh.points, solver.positions()));
        EXPECT_EQ(solver->cur_points, solver.moved());
    }
}

TEST(PreserveCompute, FewerThanOneIterationOnlyEvaluates)
{
    for (int iterations : {0, -1, -2147483647 - 1}) {
        Edge edge(5.0, 3.0);
        edge.solver->energy = -1.0;
        EXPECT_EQ(PreserveCompute(edge.solver, edge.solver.moved(), iterations), 1);
        EXPECT_TRUE(same_bits(5.0, edge.solver->energy));
        EXPECT_TRUE(same_bits(3.0, edge.solver->nlen->dvals[0]));
        EXPECT_TRUE(same_bits({0, 0, 0, 3, 0, 0}, edge.solver.positions()));
    }
}

TEST(PreserveCompute, AStepIsAsLongAsTheEnergy)
{
    // Force (1, -1) * 2 * 0.25 * 1: energy 0.25, so each point moves 0.25 / sqrt(2) inwards.
    Edge edge(0.25, 3.0);
    EXPECT_EQ(PreserveCompute(edge.solver, edge.solver.moved(), 1), 1);
    const double step = 0.25 / std::sqrt(0.5 * 0.5 + 0.5 * 0.5);
    EXPECT_TRUE(same_bits({step * 0.5, 0, 0, 3 + step * -0.5, 0, 0}, edge.solver.positions()));
    EXPECT_LT(edge.solver->energy, 0.25);
    EXPECT_TRUE(same_bits(edge.solver.positions()[3] - edge.solver.positions()[0], edge.solver->nlen->dvals[0]));
}

TEST(PreserveCompute, AStepThatRaisesTheEnergyIsHalved)
{
    // Energy 8 at length 4: the full step of 8 overshoots to a length of |4 - 11.3|, half of it to |4 - 5.7|.
    Edge edge(2.0, 4.0);
    EXPECT_EQ(PreserveCompute(edge.solver, edge.solver.moved(), 1), 1);
    const double f = 8.0, step = 8.0 / std::sqrt(f * f + f * f);
    const double x0 = (0.0 + step * f) - (step * f) * 0.5, x1 = (4.0 + step * -f) - (step * -f) * 0.5;
    EXPECT_TRUE(same_bits({x0, 0, 0, x1, 0, 0}, edge.solver.positions()));
    EXPECT_LT(edge.solver->energy, 8.0);
}

TEST(PreserveCompute, AnEnergyThatDoesNotFallIsHalvedToo)
{
    // One end is held. Force 2 and energy 1 at length 3: the step of 1 lands exactly on the reference. With a weight
    // of 2 the step of 2 lands at length 1, with the same energy: it is halved and lands on the reference.
    Edge edge(2.0, 3.0);
    edge.solver.tag({0});
    EXPECT_EQ(PreserveCompute(edge.solver, edge.solver.moved(), 1), 1);
    EXPECT_TRUE(same_bits({0, 0, 0, 2, 0, 0}, edge.solver.positions()));
    EXPECT_TRUE(same_bits(0.0, edge.solver->energy));
}

TEST(PreserveCompute, GivesUpAfterTwentyHalvings)
{
    // On a face of four corners the pressure is no gradient. Point 2, the only one to move, is pushed along c3 x c1
    // while the volume grows along c0 x (c1 - c3): here these directions oppose, so every trial raises the energy.
    Solver solver({{-1, -1, 1, 1, 0, 0, 1, 1, 2, 0, 1, 0}, {4}, {0, 1, 2, 3}});
    ASSERT_TRUE(switch_on(solver, PRESERVE_VOLUME));
    solver.tag({0, 1, 3});
    solver->ovolume += 1.0;
    const double before = solver.energy();
    ASSERT_GT(before, 0.0);
    const std::vector<double> force = solver.force();
    EXPECT_EQ(PreserveCompute(solver, solver.moved(), 1), 1);
    const std::vector<double> after = solver.positions();
    EXPECT_TRUE(same_bits({-1, -1, 1, 1, 0, 0}, std::vector<double>(after.begin(), after.begin() + 6)));
    double magnitude = 0.0;
    for (size_t q = 6; q < 9; ++q)
        magnitude += force[q] * force[q];
    const double step = before / std::sqrt(magnitude);
    for (size_t q = 6; q < 9; ++q) {
        double x = solver->points->dvals[q] + step * force[q];
        double share = 0.5;
        for (int halving = 0; halving < 20; ++halving, share *= 0.5)
            x -= step * force[q] * share;
        EXPECT_TRUE(same_bits(x, after[q])) << "coordinate " << q;
    }
    EXPECT_GE(solver->energy, before);
}

TEST(PreserveCompute, TakesExactlyTheIterationsGiven)
{
    Random random(4402);
    const Mesh mesh = random_closed_mesh(random);
    const std::vector<double> start = shaken(random, mesh.points, 0.1);
    Solver once(mesh), twice(mesh);
    ASSERT_TRUE(switch_on(once, kAllTerms, 0.1));
    ASSERT_TRUE(switch_on(twice, kAllTerms, 0.1));
    once.place(start);
    twice.place(start);
    EXPECT_EQ(PreserveCompute(once, once.moved(), 6), 1);
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(PreserveCompute(twice, twice.moved(), 1), 1);
    EXPECT_TRUE(same_bits(once.positions(), twice.positions()));
    EXPECT_TRUE(same_bits(once->energy, twice->energy));
}

TEST(PreserveCompute, EnergyWithoutForceGivesNaN)
{
    Solver solver(tetrahedron());
    ASSERT_TRUE(switch_on(solver, PRESERVE_VOLUME));
    solver.tag({0, 1, 2, 3});
    solver.place({0, 0, 0, 2, 0, 0, 0, 1, 0, 0, 0, 1});
    EXPECT_EQ(PreserveCompute(solver, solver.moved(), 1), 1);
    for (double x : solver.positions())
        EXPECT_TRUE(std::isnan(x));
    EXPECT_TRUE(std::isnan(solver->energy));
}

TEST(PreserveCompute, ARigidMoveUnderVolumeOrAreaAloneGivesNaN)
{
    // The measure is off by its rounding: an energy, but no force within 1e-06 of the reference.
    for (int term : {PRESERVE_VOLUME, PRESERVE_AREA}) {
        const Mesh mesh = icosphere(1);
        Solver solver(mesh);
        ASSERT_TRUE(switch_on(solver, term));
        const double energy = solver.energy_at(shifted(mesh.points, 0.7, -1.9, 0.3));
        ASSERT_GT(energy, 0.0);
        ASSERT_LT(energy, 1e-12);
        ASSERT_EQ(PreserveCompute(solver, solver.moved(), 1), 1);
        for (double x : solver.positions())
            EXPECT_TRUE(std::isnan(x));
    }
}

TEST(PreserveCompute, AnEnergyOfZeroBeforeTheLastIterationGivesNaN)
{
    // One free end at twice the length: the first step brings it back exactly.
    const auto relaxed = [](int iterations, int calls) {
        Solver solver({{0, 0, 0, 1, 0, 0}, {}, {}}, {0, 1});
        EXPECT_TRUE(switch_on(solver, PRESERVE_LENGTH));
        solver.tag({0});
        solver.place({0, 0, 0, 2, 0, 0});
        for (int i = 0; i < calls; ++i)
            EXPECT_EQ(PreserveCompute(solver, solver.moved(), iterations), 1);
        return solver.positions();
    };
    EXPECT_TRUE(same_bits(relaxed(1, 1), std::vector<double>{0, 0, 0, 1, 0, 0}));
    for (double x : relaxed(2, 1))
        EXPECT_TRUE(std::isnan(x));
    EXPECT_TRUE(same_bits(relaxed(1, 2), std::vector<double>{0, 0, 0, 1, 0, 0})) << "one iteration a call stops at 0";
}

TEST(PreserveCompute, AllPointsTaggedLeavesLengthsAndAnglesWithoutEnergy)
{
    Random random(4403);
    const std::vector<double> moved = random.uniforms(12, -1, 1);
    Solver solver(tetrahedron());
    ASSERT_TRUE(switch_on(solver, PRESERVE_LENGTH | PRESERVE_FACE_ANGLE));
    solver.tag({0, 1, 2, 3});
    solver.place(moved);
    EXPECT_EQ(PreserveCompute(solver, solver.moved(), 3), 1);
    EXPECT_TRUE(same_bits(0.0, solver->energy));
    EXPECT_TRUE(same_bits(moved, solver.positions()));
}

TEST(PreserveCompute, ANaNCoordinateSpreadsWithoutTrouble)
{
    Solver solver(tetrahedron());
    ASSERT_TRUE(switch_on(solver, kAllTerms));
    std::vector<double> moved = solver.positions();
    moved[5] = std::numeric_limits<double>::quiet_NaN();
    solver.place(moved);
    EXPECT_EQ(PreserveCompute(solver, solver.moved(), 2), 1);
    EXPECT_TRUE(std::isnan(solver->energy));
    for (double x : solver.positions())
        EXPECT_TRUE(std::isnan(x));
}

TEST(PreserveCompute, ATrialThatIsNotANumberIsKeptThoughItsLengthsAloneAreTooMuch)
{
    // The energy is about 1e200, and a step of that length makes infinite lengths, whose energy is too high, and angles
    // that are not numbers: the sum is none either, which ends the halving at once.
    Solver solver({{0, 0, 0, 1, 0, 0, 0, 1, 0}, {3}, {0, 1, 2}});
    ASSERT_TRUE(switch_on(solver, PRESERVE_LENGTH | PRESERVE_FACE_ANGLE));
    solver.place({0, 0, 0, 1e100, 0, 0, 0, 2e100, 0});
    EXPECT_EQ(PreserveCompute(solver, solver.moved(), 1), 1);
    EXPECT_TRUE(std::isinf(solver->nlen->dvals[0]));
    EXPECT_TRUE(std::isnan(solver->energy));
    double farthest = 0.0;
    for (double x : solver.positions())
        farthest = std::max(farthest, std::fabs(x));
    EXPECT_GT(farthest, 1e199);
}

TEST(PreserveCompute, TagsBehindThePointsHoldNothing)
{
    Edge edge(0.25, 3.0);
    OwnedDATA tags = array_of<DATAstruct>(DATA_TYPE_BYTE, 1 << 24, 1); // far more than stands behind the force
    std::fill(tags->bvals, tags->bvals + (1 << 24), uint8_t{1});
    tags->bvals[0] = tags->bvals[1] = 0;
    tags->count = 2;
    ASSERT_EQ(PreserveSetTag(edge.solver, tags), 1);
    tags->count = 1 << 24;
    Edge plain(0.25, 3.0);
    EXPECT_EQ(PreserveCompute(edge.solver, edge.solver.moved(), 1), 1);
    EXPECT_EQ(PreserveCompute(plain.solver, plain.solver.moved(), 1), 1);
    EXPECT_TRUE(same_bits(plain.solver.positions(), edge.solver.positions()));
}

TEST(PreserveCompute, MassesPlayNoPart)
{
    Random random(4404);
    const Mesh mesh = tetrahedron();
    const std::vector<double> start = random.uniforms(12, -1, 1);
    Solver with(mesh), without(mesh);
    OwnedDATA masses = doubles<DATAstruct>(1, {1, 100, 1e-3, 7});
    ASSERT_EQ(PreserveSetMass(with, masses), 1);
    for (Solver* solver : {&with, &without}) {
        ASSERT_TRUE(switch_on(*solver, kAllTerms, 0.2));
        solver->place(start);
        EXPECT_EQ(PreserveCompute(*solver, solver->moved(), 4), 1);
    }
    EXPECT_TRUE(same_bits(with.positions(), without.positions()));
}

TEST(PreserveCompute, WhatWasDerivedOfTheConnectivityPlaysNoPart)
{
    Input whole = two_triangles(), edited = two_triangles();
    OwnedDATA first = points<DATAstruct>({0, 0, 0, 1.5, 0, 0, 1, 1, 0.25, -0.5, 1, 0});
    OwnedDATA second = points<DATAstruct>(values_of(*first));
    for (Input* input : {&whole, &edited}) {
        ASSERT_EQ(input->initialize(), 1);
        PreserveStatus& s = input->status;
        if (input == &edited)
            for (DATAstruct* d :
                 {s.face_starts, s.point_edge_count, s.point_edge_start, s.point_edges, s.point_faces}) {
                std::fill_n(d->ivals, d->count, 1 << 30);
                d->count = 1 << 30;
            }
        for (int term = 1; term <= PRESERVE_AREA; term *= 2)
            ASSERT_EQ(PreservePreserve(&s, term, 0.25), 1);
        EXPECT_EQ(PreserveCompute(&s, input == &edited ? second : first, 5), 1);
    }
    EXPECT_TRUE(same_array(*first, *second));
    EXPECT_TRUE(same_array(*whole.status.force, *edited.status.force));
    EXPECT_TRUE(same_bits(whole.status.energy, edited.status.energy));
    release(whole);
    release(edited);
}

TEST(PreserveCompute, AllocatesNothing)
{
    NEEDS_HEAP_COUNTS();
    Random random(4405);
    const Mesh mesh = icosphere(2);
    Solver solver(mesh);
    ASSERT_TRUE(switch_on(solver, kAllTerms, 0.1));
    solver.place(shaken(random, mesh.points, 0.1));
    const HeapWatch heap;
    EXPECT_EQ(PreserveCompute(solver, solver.moved(), 5), 1);
    EXPECT_EQ(heap.allocations(), 0);
}

TEST(PreserveCompute, AcceptsAMeshWithoutPoints)
{
    Solver solver(Mesh{});
    solver->points->dim = solver.moved()->dim = 3;
    EXPECT_EQ(solver.result(), 1);
    EXPECT_EQ(PreserveCompute(solver, solver.moved(), 3), 1);
    EXPECT_TRUE(same_bits(0.0, solver->energy));
}

TEST(PreserveGetForce, CopiesTheForce)
{
    Edge edge(5.0, 3.0);
    OwnedDATA force = bytes<DATAstruct>(1, {1, 2, 3});
    EXPECT_EQ(PreserveGetForce(edge.solver, edge.solver.moved(), force), 1);
    EXPECT_EQ(force->dim, 3);
    EXPECT_EQ(force->count, 2);
    EXPECT_EQ(force->type, DATA_TYPE_DOUBLE);
    EXPECT_TRUE(same_bits({10, 0, 0, -10, 0, 0}, force->dvals));
    EXPECT_EQ(edge.solver->cur_points, edge.solver.moved());
    EXPECT_TRUE(same_bits(5.0, edge.solver->energy));
    EXPECT_TRUE(same_bits({0, 0, 0, 3, 0, 0}, edge.solver.positions()));
}

TEST(PreserveGetForce, AllocatesNothingFromTheSecondCallOn)
{
    NEEDS_HEAP_COUNTS();
    Solver solver(icosphere(1));
    ASSERT_TRUE(switch_on(solver, kAllTerms, 0.1));
    OwnedDATA force;
    ASSERT_EQ(PreserveGetForce(solver, solver.moved(), force), 1);
    const HeapWatch heap;
    EXPECT_EQ(PreserveGetForce(solver, solver.moved(), force), 1);
    EXPECT_EQ(heap.allocations(), 0);
}

TEST(PreserveGetForce, DoesNotZeroTheForcesOfTaggedPoints)
{
    Edge edge(5.0, 3.0);
    edge.solver.tag({1});
    OwnedDATA force;
    EXPECT_EQ(PreserveGetForce(edge.solver, edge.solver.moved(), force), 1);
    EXPECT_TRUE(same_bits({10, 0, 0, -10, 0, 0}, force->dvals));
}

TEST(PreserveGetForce, IgnoresAnOutputThatCannotBeFilled)
{
    Edge edge(5.0, 3.0);
    EXPECT_EQ(PreserveGetForce(edge.solver, edge.solver.moved(), nullptr), 1);
    EXPECT_TRUE(same_bits({10, 0, 0, -10, 0, 0}, edge.solver->force->dvals));
}

} // namespace
} // namespace korvale::test
