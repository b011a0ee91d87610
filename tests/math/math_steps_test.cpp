// What of the math is computed in another way than it is documented, against the documented steps, to the last bit.
#include <cstring>
#include <vector>

#include <gtest/gtest.h>

#include "math/combinatorics.h"
#include "math/transform.h"
#include "math/vector.h"
#include "tests/reference/arrays.h"
#include "tests/reference/transform.h"
#include "tests/support/bits.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

/// Values of which few, half or all are awkward.
std::vector<double> values(Random& random, int n, int round)
{
    std::vector<double> v = random.uniforms(n, -5, 5);
    for (double& value : v)
        if (round % 3 == 2 || (round % 3 == 1 && random.one_in(8)))
            value = random.awkward();
    return v;
}

} // namespace

TEST(MathSteps, MatrixMultiply)
{
    Random random(41);
    for (int round = 0; round < rounds(20000); ++round) {
        std::vector<double> a = values(random, 16, round), b = values(random, 16, round), expected(16), actual(16);
        const auto m = [](std::vector<double>& flat) { return reinterpret_cast<double(*)[4]>(flat.data()); };
        reference::multiply(m(a), m(b), m(expected));
        MatrixMultiply(m(a), m(b), m(actual));
        ASSERT_TRUE(same_bits(expected, actual));
        std::vector<double> over_a = a, over_b = b;
        MatrixMultiply(m(over_a), m(b), m(over_a));
        ASSERT_TRUE(same_bits(expected, over_a));
        MatrixMultiply(m(a), m(over_b), m(over_b));
        ASSERT_TRUE(same_bits(expected, over_b));
    }
}

TEST(MathSteps, MatrixMultiplyIntoPartOfAFactor)
{
    Random random(42);
    for (int round = 0; round < rounds(2000); ++round) {
        const std::vector<double> held = values(random, 48, round);
        std::vector<double> expected = held, actual = held;
        const int a = random.below(33), b = random.below(33), out = random.below(33);
        const auto at = [](std::vector<double>& v, int k) { return reinterpret_cast<double(*)[4]>(v.data() + k); };
        reference::multiply(at(expected, a), at(expected, b), at(expected, out));
        MatrixMultiply(at(actual, a), at(actual, b), at(actual, out));
        ASSERT_TRUE(same_bits(expected, actual)) << a << ' ' << b << ' ' << out;
    }
}

TEST(MathSteps, MatrixTransposeApartAndOverlapping)
{
    Random random(44);
    for (int round = 0; round < rounds(2000); ++round) {
        const std::vector<double> held = values(random, 48, round);
        std::vector<double> expected = held, actual = held;
        const int in = random.below(33), out = random.below(33);
        const auto at = [](std::vector<double>& v, int k) { return reinterpret_cast<double(*)[4]>(v.data() + k); };
        reference::transpose(at(expected, in), at(expected, out));
        MatrixTranspose(at(actual, in), at(actual, out));
        ASSERT_TRUE(same_bits(expected, actual)) << in << ' ' << out;
    }
}

TEST(MathSteps, TransformVector)
{
    Random random(43);
    for (int round = 0; round < rounds(20000); ++round) {
        std::vector<double> m = values(random, 16, round), v = values(random, 3, round), expected(3), actual(3);
        double(*const matrix)[4] = reinterpret_cast<double(*)[4]>(m.data());
        reference::transform_vector(matrix, v.data(), expected.data());
        TransformVector(matrix, v.data(), actual.data());
        ASSERT_TRUE(same_bits(expected, actual));
        TransformVector(matrix, v.data(), v.data());
        ASSERT_TRUE(same_bits(expected, v));
    }
}

TEST(MathSteps, TransformPoint)
{
    Random random(45);
    for (int round = 0; round < rounds(20000); ++round) {
        std::vector<double> m = values(random, 16, round), p = values(random, 3, round), expected(3), actual(3);
        if (random.one_in(2)) { // affine
            m[12] = m[13] = m[14] = 0.0;
            m[15] = 1.0;
        }
        double(*const matrix)[4] = reinterpret_cast<double(*)[4]>(m.data());
        reference::carry_points(matrix, p.data(), 1, expected.data());
        TransformPoint(matrix, p.data(), actual.data());
        ASSERT_TRUE(same_bits(expected, actual));
        xfm_pnt(m.data(), p.data(), actual.data());
        ASSERT_TRUE(same_bits(expected, actual));
        std::vector<double> in_place = p;
        TransformPoint(matrix, in_place.data(), in_place.data());
        ASSERT_TRUE(same_bits(expected, in_place));
    }
}

TEST(MathSteps, Normalize)
{
    Random random(46);
    for (int round = 0; round < rounds(20000); ++round) {
        std::vector<double> expected = values(random, 3, round);
        if (random.one_in(4))
            for (double& value : expected)
                value *= 2e-07; // about the shortest
        std::vector<double> actual = expected;
        const int result = reference::normalize(expected.data());
        ASSERT_EQ(result, normalize(actual.data()));
        ASSERT_TRUE(same_bits(expected, actual));
    }
}

TEST(MathSteps, MakeIdentity)
{
    Xfm expected, actual;
    std::memset(actual, 0xff, sizeof actual);
    reference::make_identity(expected);
    make_identity(actual);
    EXPECT_TRUE(same_bits(expected[0], actual[0], 16));
}

TEST(MathSteps, Power)
{
    Random random(4);
    for (int i = 0; i < rounds(3000); ++i) {
        const double x = random.one_in(2) ? random.awkward() : random.uniform(-2, 2);
        const int n = random.between(-2, random.one_in(5) ? 3000 : 20);
        ASSERT_TRUE(same_bits(reference::power(x, n), power(x, n))) << x << " to the " << n;
    }
}

} // namespace korvale::test
