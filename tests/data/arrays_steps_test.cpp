// The operations beside the documented steps, on records of all kinds and shapes, small ones above all: results, sizes,
// capacities and values.
#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "tests/data/generations.h"
#include "tests/reference/arrays.h"
#include "tests/support/arrays.h"
#include "tests/support/bits.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

template <class Array>
class ArraySteps : public testing::Test {
};
TYPED_TEST_SUITE(ArraySteps, Generations, GenerationNames);

void expect_same_capacity(const Data&, const Data&)
{
}

void expect_same_capacity(const DATAstruct& expected, const DATAstruct& actual)
{
    EXPECT_EQ(expected.alloc_type, actual.alloc_type);
    EXPECT_EQ(expected.alloc_count, actual.alloc_count);
    EXPECT_EQ(expected.alloc_dim, actual.alloc_dim);
}

/// Writes numbers over all elements of an array.
template <class Array>
void fill(Array& d, const std::vector<double>& values)
{
    for (size_t i = 0; i < values.size(); ++i)
        if (d.type == DATA_TYPE_DOUBLE)
            d.dvals[i] = values[i];
        else if (d.type == DATA_TYPE_INT)
            d.ivals[i] = static_cast<int32_t>(i * 7 % 23);
        else if (d.type == DATA_TYPE_BYTE)
            d.bvals[i] = static_cast<uint8_t>(i * 7 % 23);
}

/// Two records alike, one for the library and one for the steps.
template <class Array>
struct Both {
    Owned<Array> ours, plain;

    Both(int32_t type, int32_t count, int32_t dim, int32_t spare, Random& random)
    {
        const auto values =
            random.one_in(2) ? random.awkwards(int64_t{count} * dim) : random.uniforms(int64_t{count} * dim, -2, 2);
        for (Owned<Array>* d : {&ours, &plain}) {
            d->allocate(type, count + spare, dim);
            (*d)->count = count;
            fill(**d, values);
        }
    }
};

template <class Array>
void expect_same(const Both<Array>& both, bool with_elements)
{
    EXPECT_EQ(both.plain->type, both.ours->type);
    EXPECT_EQ(both.plain->count, both.ours->count);
    EXPECT_EQ(both.plain->dim, both.ours->dim);
    expect_same_capacity(*both.plain, *both.ours);
    if (with_elements) {
        EXPECT_TRUE(same_array(*both.plain, *both.ours));
    }
}

constexpr int32_t kKinds[] = {
    DATA_TYPE_DOUBLE, DATA_TYPE_DOUBLE, DATA_TYPE_DOUBLE, DATA_TYPE_DOUBLE, DATA_TYPE_INT, DATA_TYPE_BYTE, 9};

/// A record, most often in the shape of the others of a round.
template <class Array>
std::unique_ptr<Both<Array>> draw(Random& random, int32_t type, int32_t count, int32_t dim)
{
    if (random.one_in(12))
        type = kKinds[random.below(7)];
    if (random.one_in(12))
        count = random.between(1, 20);
    if (random.one_in(12))
        dim = random.between(1, 5);
    const int32_t spare = std::is_same_v<Array, DATAstruct> && random.one_in(3) ? random.between(1, 30) : 0;
    return std::make_unique<Both<Array>>(type, count, dim, spare, random);
}

TYPED_TEST(ArraySteps, AreTakenOnRecordsOfAllShapes)
{
    Random random(21);
    for (int round = 0; round < rounds(4000); ++round) {
        const int32_t type = kKinds[random.below(7)], dim = random.one_in(2) ? 3 : random.between(1, 13);
        const int32_t count = random.one_in(6) ? random.between(1, 260) : random.between(1, 18);
        std::unique_ptr<Both<TypeParam>> in[4];
        for (auto& both : in)
            both = draw<TypeParam>(random, type, count, dim);
        auto out = draw<TypeParam>(random, type, random.one_in(3) ? 2 : count, random.one_in(6) ? 2 * dim : dim);
        double w[4];
        for (double& weight : w)
            weight = random.one_in(4) ? random.awkward() : random.uniform(-2, 2);
        Xfm m;
        for (auto& row : m)
            for (double& value : row)
                value = random.one_in(8) ? random.awkward() : random.uniform(-2, 2);
        if (random.one_in(2))
            m[3][0] = m[3][1] = m[3][2] = 0, m[3][3] = 1;

        auto &a = *in[0], &b = *in[1], &c = *in[2], &d = *in[3];
        int expected = 0, result = 0;
        switch (random.below(8)) {
        case 0:
            expected = reference::cat(a.plain.get(), b.plain.get(), out->plain.get());
            result = cat(a.ours, b.ours, out->ours);
            break;
        case 1:
            expected = reference::copy(a.plain.get(), out->plain.get());
            result = copy(a.ours, out->ours);
            break;
        case 2:
            expected = reference::mix(a.plain.get(), b.plain.get(), w[0], w[1], out->plain.get());
            result = mix(a.ours, b.ours, w[0], w[1], out->ours);
            break;
        case 3:
            expected =
                reference::mix_four(a.plain.get(), b.plain.get(), c.plain.get(), d.plain.get(), w, out->plain.get());
            result = mix4(a.ours, b.ours, c.ours, d.ours, w[0], w[1], w[2], w[3], out->ours);
            break;
        case 4:
            dispose(out->plain); // a buffer that is kept would be lost
            dispose(out->ours);
            expected = reference::bounds(a.plain.get(), out->plain.get());
            result = bounds(a.ours, out->ours);
            break;
        case 5:
            expected = reference::bbox(a.plain.get(), out->plain.get());
            result = bbox(a.ours, out->ours);
            break;
        case 6:
            if (a.plain->type != DATA_TYPE_DOUBLE || out->plain->type != DATA_TYPE_DOUBLE)
                break;
            reference::transform(m, a.plain.get(), out->plain.get());
            transform(m, a.ours, out->ours);
            break;
        default:
            reference::reverse(a.plain.get());
            reverse(a.ours);
            break;
        }
        ASSERT_EQ(expected, result) << "round " << round;
        for (const auto& both : in)
            expect_same(*both, true);
        expect_same(*out, result != -1); // a failure may leave elements that nobody has written
        ASSERT_FALSE(testing::Test::HasFailure()) << "round " << round;
    }
}

TYPED_TEST(ArraySteps, AreTakenForMixesOfAnyValues)
{
    Random random(13);
    for (int round = 0; round < rounds(1000); ++round) {
        const int dim = random.between(1, 4), count = random.one_in(4) ? random.between(1, 300) : random.between(1, 20);
        const int64_t n = static_cast<int64_t>(count) * dim;
        std::vector<double> in[4], expected(static_cast<size_t>(n));
        for (auto& values : in)
            values = random.one_in(2) ? random.awkwards(n) : random.uniforms(n, -1, 1);
        const double w[] = {random.awkward(), random.uniform(-2, 2), random.uniform(-2, 2), random.awkward()};
        auto a = doubles<TypeParam>(dim, in[0]), b = doubles<TypeParam>(dim, in[1]);
        auto c = doubles<TypeParam>(dim, in[2]), d = doubles<TypeParam>(dim, in[3]);
        Owned<TypeParam> output;
        reference::mix(in[0].data(), in[1].data(), w[0], w[1], n, expected.data());
        ASSERT_EQ(mix(a, b, w[0], w[1], output), 1);
        ASSERT_TRUE(same_bits(expected, output->dvals));
        reference::mix_four(in[0].data(), in[1].data(), in[2].data(), in[3].data(), w, n, expected.data());
        ASSERT_EQ(mix4(a, b, c, d, w[0], w[1], w[2], w[3], output), 1);
        ASSERT_TRUE(same_bits(expected, output->dvals));
        ASSERT_EQ(mix4(a, b, c, d, w[0], w[1], w[2], w[3], c), 1) << "in place";
        ASSERT_TRUE(same_bits(expected, c->dvals));
    }
}

/// The bounds of values[][dim] by every way the library offers, each compared with the documented steps.
template <class Array>
void expect_bounds(const std::vector<double>& values, int32_t dim)
{
    auto source = doubles<Array>(dim, values);
    std::vector<double> expected(static_cast<size_t>(2 * dim));
    reference::bounds(values.data(), source->count, dim, expected.data(), expected.data() + dim);
    auto row = array_of<Array>(DATA_TYPE_DOUBLE, 1, 2 * dim);
    EXPECT_EQ(bbox(source, row), 1);
    EXPECT_TRUE(same_bits(expected, row->dvals)) << source->count << " x " << dim;
    Owned<Array> made;
    EXPECT_EQ(bounds(source, made), 1);
    EXPECT_TRUE(same_bits(expected, made->dvals)) << source->count << " x " << dim;
}

TYPED_TEST(ArraySteps, AreTakenForBoundsOfAnyValues)
{
    Random random(12);
    for (int round = 0; round < rounds(600); ++round) {
        const int dim = random.one_in(2) ? 3 : random.between(1, 40);
        const int count = random.one_in(2) ? random.between(1, 20) : random.between(1, 700);
        std::vector<double> values = random.awkwards(static_cast<int64_t>(count) * dim);
        const int flavour = random.below(3);
        for (double& value : values) {
            if (flavour == 0 && !random.one_in(8))
                value = random.one_in(2) ? 0.0 : -0.0;
            if (flavour == 1)
                value = random.uniform(-1, 1);
        }
        expect_bounds<TypeParam>(values, dim);
        if (testing::Test::HasFailure())
            return;
    }
}

TYPED_TEST(ArraySteps, AreTakenForTheSignOfZeros)
{
    // Zeros of both signs beyond other values, at every place among some.
    for (int at = 1; at < 60; ++at)
        for (const double zero : {0.0, -0.0}) {
            std::vector<double> values(600, -zero);
            values[0] = 5;
            values[static_cast<size_t>(at)] = zero;
            for (int i = 1; i < at; ++i)
                values[static_cast<size_t>(i)] = 3;
            expect_bounds<TypeParam>(values, 1);
            for (double& value : values)
                value = value == 0 ? value : -value;
            expect_bounds<TypeParam>(values, 1);
        }
}

TYPED_TEST(ArraySteps, AreTakenForTransformsOfAnyValues)
{
    Random random(14);
    for (int round = 0; round < rounds(2000); ++round) {
        const int n = random.one_in(3) ? random.between(1, 200) : random.between(1, 20);
        Xfm m;
        const bool affine = random.one_in(2), tame = random.one_in(2);
        for (int i = 0; i < 16; ++i)
            m[i / 4][i % 4] = affine && i >= 12 ? (i == 15 ? 1 : 0) : tame ? random.uniform(-5, 5) : random.awkward();
        std::vector<double> values = tame ? random.uniforms(3 * n, -9, 9) : random.awkwards(3 * n);
        std::vector<double> expected(values.size());
        reference::carry_points(m, values.data(), n, expected.data());
        auto source = points<TypeParam>(values), output = array_of<TypeParam>(DATA_TYPE_DOUBLE, n, 3);
        transform(m, source, output);
        ASSERT_TRUE(same_bits(expected, output->dvals));
        transform(m, source, source);
        ASSERT_TRUE(same_bits(expected, source->dvals));
        double flat[3];
        TransformPoint(m, values.data(), flat);
        ASSERT_TRUE(same_bits(expected.data(), flat, 3));
    }
}

} // namespace
} // namespace korvale::test
