// Sampling beside the documented steps, which search all shares for every draw.
#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "tests/data/generations.h"
#include "tests/data/sample.h"
#include "tests/reference/sampling.h"
#include "tests/support/arrays.h"
#include "tests/support/bits.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

template <class Array>
class SamplingSteps : public testing::Test {
};
TYPED_TEST_SUITE(SamplingSteps, Generations, GenerationNames);

TYPED_TEST(SamplingSteps, AreTakenOnAnyTriangles)
{
    Random random(17);
    for (int round = 0; round < rounds(400); ++round) {
        const int n = random.one_in(3) ? 1 : random.between(1, random.one_in(4) ? 3000 : 40), k = random.below(4);
        const int count = random.one_in(10) ? random.between(6000, 12000) : random.between(1, 80);
        const int flavour = random.below(4);
        std::vector<double> triangles = random.uniforms(9 * n, -5, 5);
        for (int i = 0; i < n; ++i) {
            double* const t = &triangles[static_cast<size_t>(9 * i)];
            if (flavour == 0 && !random.one_in(5)) // no area
                for (int j = 3; j < 9; ++j)
                    t[j] = t[j % 3];
            if (flavour == 1 && random.one_in(n))
                t[random.below(9)] = random.awkward();
            if (flavour == 2)
                for (int j = 0; j < 9; ++j)
                    t[j] = std::ldexp(t[j], random.between(-40, 40));
        }
        const auto seed = static_cast<unsigned>(random.bits());
        const std::vector<double> attributes = random.uniforms(3 * n * k, -1, 1);
        const auto expected = reference::sample_triangles(triangles, seed, count, attributes);
        auto t = doubles<TypeParam>(9, triangles);
        auto p = array_of<TypeParam>(DATA_TYPE_DOUBLE, count, 3);
        auto from = k == 0 ? Owned<TypeParam>() : doubles<TypeParam>(k, attributes);
        auto to = k == 0 ? Owned<TypeParam>() : array_of<TypeParam>(DATA_TYPE_DOUBLE, count, k);
        sample(t.get(), seed, p.get(), from.get(), to.get());
        ASSERT_TRUE(same_bits(expected.points, p->dvals)) << "round " << round;
        ASSERT_TRUE(same_bits(expected.attributes, to->dvals)) << "round " << round;
    }
}

TYPED_TEST(SamplingSteps, AreTakenWhereAShareIsNextToADraw)
{
    // Three of 217 equal areas add up to the double below 453 / 32767.
    std::vector<double> triangles;
    for (int i = 0; i < 217; ++i)
        triangles.insert(triangles.end(), {0, 0, 1.0 * i, 1, 0, 1.0 * i, 0, 1, 1.0 * i});
    const auto expected = reference::sample_triangles(triangles, 5, 200000, {});
    auto t = doubles<TypeParam>(9, triangles);
    auto p = array_of<TypeParam>(DATA_TYPE_DOUBLE, 200000, 3);
    Owned<TypeParam> none;
    sample(t.get(), 5, p.get(), none.get(), none.get());
    ASSERT_TRUE(same_bits(expected.points, p->dvals));
}

} // namespace
} // namespace korvale::test
