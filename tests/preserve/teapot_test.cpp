// A mesh as it comes from a modeller: several pieces, open rims, sharp and flat corners.
#include <cmath>

#include <gtest/gtest.h>

#include "preserve/compute.h"
#include "tests/preserve/solver.h"
#include "tests/reference/preserve.h"
#include "tests/support/bits.h"

namespace korvale::test {
namespace {

Mesh teapot()
{
    return read_obj(KORVALE_EXAMPLE_DATA "/teapot.obj");
}

std::vector<double> squashed(std::vector<double> points)
{
    for (size_t q = 1; q < points.size(); q += 3)
        points[q] *= 0.6;
    return points;
}

TEST(Teapot, MeasuresSixTimesTheVolumeAndTwiceTheArea)
{
    const Mesh mesh = teapot();
    ASSERT_EQ(mesh.sizes.size(), 992u);
    double volume = 0.0, area = 0.0;
    for (size_t t = 0; t < mesh.corners.size(); t += 3) {
        const double* p[3];
        for (size_t k = 0; k < 3; ++k)
            p[k] = &mesh.points[3 * static_cast<size_t>(mesh.corners[t + k])];
        double u[3], v[3];
        for (int q = 0; q < 3; ++q) {
            u[q] = p[1][q] - p[0][q];
            v[q] = p[2][q] - p[0][q];
        }
        const double n[3] = {u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]};
        area += std::hypot(n[0], n[1], n[2]) / 2.0;
        // The flux of (x, y, z) / 3 through the triangle.
        volume += (p[0][0] * n[0] + p[0][1] * n[1] + p[0][2] * n[2]) / 6.0;
    }
    Solver solver(mesh);
    ASSERT_TRUE(switch_on(solver, PRESERVE_VOLUME | PRESERVE_AREA));
    EXPECT_NEAR(solver->ovolume, 6.0 * volume, 1e-13 * volume) << "rounding of a thousand products";
    EXPECT_NEAR(solver->oarea, 2.0 * area, 1e-13 * area);
    EXPECT_GT(volume, 3000.0);
}

TEST(Teapot, RelaxesFromSixtyPercentOfItsHeightWithEveryWeight)
{
    const Mesh mesh = teapot();
    for (const int terms : {1, 2, 4, 8, 5, 9, kAllTerms}) {
        Solver solver(mesh), plain(mesh);
        for (Solver* s : {&solver, &plain}) {
            // Volume and area are squares of large numbers.
            const std::pair<int, double> weights[] = {{1, 1.0}, {2, 1.0}, {4, 1e-4}, {8, 1e-3}};
            for (const auto& [term, weight] : weights)
                ASSERT_EQ(PreservePreserve(*s, term & terms, weight), 1);
            s->place(squashed(mesh.points));
        }
        const double before = solver.energy();
        ASSERT_EQ(PreserveCompute(solver, solver.moved(), 40), 1);
        EXPECT_LT(solver->energy, 0.9 * before) << "terms " << terms;
        reference::compute(*plain.get(), *plain.moved(), 40);
        EXPECT_TRUE(same_bits(plain.positions(), solver.positions())) << "terms " << terms;
        EXPECT_TRUE(same_bits(plain->energy, solver->energy)) << "terms " << terms;
    }
}

TEST(Teapot, HoldsItsSpout)
{
    const Mesh mesh = teapot();
    Solver solver(mesh);
    ASSERT_TRUE(switch_on(solver, PRESERVE_LENGTH));
    std::vector<int> spout;
    for (int i = 0; i < mesh.point_count(); ++i)
        if (mesh.points[3 * static_cast<size_t>(i)] > 7.4)
            spout.push_back(i);
    ASSERT_GT(spout.size(), 10u);
    solver.tag(spout);
    const std::vector<double> start = squashed(mesh.points);
    solver.place(start);
    ASSERT_EQ(PreserveCompute(solver, solver.moved(), 40), 1);
    const std::vector<double> end = solver.positions();
    for (int i : spout)
        EXPECT_TRUE(same_bits(&start[3 * static_cast<size_t>(i)], &end[3 * static_cast<size_t>(i)], 3));
    EXPECT_NE(start, end);
}

} // namespace
} // namespace korvale::test
