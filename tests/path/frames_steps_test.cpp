// Both frame functions against the documented steps written out plainly, to the last bit, on random paths of every
// awkward sort.
#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "path/frames.h"
#include "tests/path/matrix.h"
#include "tests/reference/frames.h"
#include "tests/support/arrays.h"
#include "tests/support/bits.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

void compare(const std::vector<double>& xyz)
{
    const int n = static_cast<int>(xyz.size() / 3);
    std::vector<Matrix> expected(xyz.size() / 3), actual(expected);
    auto data = points<Data>(xyz);
    auto datastruct = points<DATAstruct>(xyz);
    for (const bool closed : {false, true}) {
        reference::frames_along(xyz.data(), n, closed, 6.2831852, &expected.data()->m);
        path2xfm(data, closed, &actual.data()->m);
        ASSERT_TRUE(same_bits(expected.data()->m[0], actual.data()->m[0], 16 * n)) << "path2xfm, closed " << closed;
        reference::frames_along(xyz.data(), n, closed, 6.283185307179586, &expected.data()->m);
        PATH2xfm(datastruct, closed, &actual.data()->m);
        ASSERT_TRUE(same_bits(expected.data()->m[0], actual.data()->m[0], 16 * n)) << "PATH2xfm, closed " << closed;
    }
}

/// A random path whose steps `step` makes from the path so far.
template <class Step>
void compare_paths(Random& random, int paths, Step step)
{
    for (int round = 0; round < rounds(paths); ++round) {
        std::vector<double> xyz;
        for (int n = random.between(1, 50); n > 0; --n)
            step(xyz);
        compare(xyz);
        if (testing::Test::HasFatalFailure())
            return;
    }
}

} // namespace

TEST(FramesSteps, ArbitraryPoints)
{
    Random random(81);
    compare_paths(random, 500, [&](std::vector<double>& xyz) {
        for (int k = 0; k < 3; ++k)
            xyz.push_back(random.uniform(-10, 10));
    });
}

TEST(FramesSteps, PointsOnACoarseGrid)
{
    // Doubled points, straight runs, hairpins and planar loops abound, and zeros of both signs.
    Random random(82);
    compare_paths(random, 3000, [&](std::vector<double>& xyz) {
        for (int k = 0; k < 3; ++k)
            xyz.push_back(k == 2 && random.one_in(2) ? -0.0 : random.between(-1, 1));
    });
}

TEST(FramesSteps, LongPaths)
{
    // Far more points than are looked at in one run, and lengths on both sides of one, two and three runs.
    Random random(89);
    for (const int n : {63, 64, 65, 66, 67, 68, 127, 128, 129, 130, 131, 193, 194, 195, 196, 257, 258, 259, 1000})
        for (const bool has_steps : {false, true}) {
            std::vector<double> xyz;
            for (int i = 0; i < 3 * n; ++i)
                xyz.push_back(has_steps ? random.between(-1, 1) : random.uniform(-10, 10));
            compare(xyz);
            if (HasFatalFailure())
                return;
        }
}

TEST(FramesSteps, PlanarLoops)
{
    Random random(83);
    int with_nan = 0;
    for (int round = 0; round < rounds(1000); ++round) {
        std::vector<double> xyz;
        const int n = random.between(3, 50);
        const double a = random.uniform(-1, 1), b = random.uniform(-1, 1);
        for (int i = 0; i < n; ++i) {
            const double t = i * 6.283185307179586 / n, x = std::cos(t), y = std::sin(t);
            xyz.insert(xyz.end(), {x, y, a * x + b * y});
        }
        compare(xyz);
        std::vector<Matrix> frames(xyz.size() / 3);
        auto path = points<Data>(xyz);
        path2xfm(path, 1, &frames.data()->m);
        with_nan += std::isnan(frames[1].m[0][0]);
    }
    EXPECT_GT(with_nan, 0); // both sides of a cosine of 1 are met
    EXPECT_LT(with_nan, rounds(1000));
}

TEST(FramesSteps, StraightLines)
{
    Random random(84);
    for (int round = 0; round < rounds(500); ++round) {
        const double direction[3] = {random.uniform(-1, 1), random.uniform(-1, 1), random.uniform(-1, 1)};
        std::vector<double> xyz;
        for (int n = random.between(1, 50); n > 0; --n) {
            const double t = random.uniform(-5, 5);
            for (const double d : direction)
                xyz.push_back(t * d);
        }
        compare(xyz);
    }
}

TEST(FramesSteps, StepsAboutTheThreshold)
{
    Random random(85);
    compare_paths(random, 2000, [&](std::vector<double>& xyz) {
        for (int k = 0; k < 3; ++k) {
            const double from = xyz.size() < 3 ? 0.0 : xyz[xyz.size() - 3];
            xyz.push_back(from + random.between(-2, 2) * (random.one_in(3) ? 1.0 : 5e-07));
        }
    });
}

TEST(FramesSteps, CoincidentPoints)
{
    Random random(86);
    compare_paths(random, 1000, [&](std::vector<double>& xyz) {
        const bool stay = xyz.size() >= 3 && !random.one_in(3);
        for (int k = 0; k < 3; ++k)
            xyz.push_back(stay ? xyz[xyz.size() - 3] : random.uniform(-1, 1));
    });
}

TEST(FramesSteps, HugeAndTinyCoordinates)
{
    Random random(87);
    compare_paths(random, 1000, [&](std::vector<double>& xyz) {
        for (int k = 0; k < 3; ++k)
            xyz.push_back(random.spread());
    });
}

TEST(FramesSteps, NumbersOfEveryKind)
{
    Random random(88);
    compare_paths(random, 3000, [&](std::vector<double>& xyz) {
        for (int k = 0; k < 3; ++k)
            xyz.push_back(random.one_in(20) ? random.awkward() : random.uniform(-1, 1));
    });
    compare_paths(random, 1000, [&](std::vector<double>& xyz) {
        for (int k = 0; k < 3; ++k)
            xyz.push_back(random.awkward());
    });
}

} // namespace korvale::test
