// The fixed results of whole-array operations and triangle sampling, for both records.
#include <gtest/gtest.h>

#include "data/operations.h"
#include "data/sampling.h"
#include "tests/golden/hash.h"
#include "tests/support/arrays.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

struct First {
    using Array = Data;
    static constexpr auto cat = DataCat;
    static constexpr auto copy = DataCopy;
    static constexpr auto mix = DataMix;
    static constexpr auto mix_four = Data4Mix;
    static constexpr auto bounds = DataBounds;
    static constexpr auto reverse = DataReverse;
    static constexpr auto transform = TransformData;
    static constexpr auto sample = DataTriSample;
};

struct Second {
    using Array = DATAstruct;
    static constexpr auto cat = DATACat;
    static constexpr auto copy = DATACopy;
    static constexpr auto mix = DATAMix;
    static constexpr auto mix_four = DATA4Mix;
    static constexpr auto bounds = DATABounds;
    static constexpr auto reverse = DATAReverse;
    static constexpr auto transform = TransformDATA;
    static constexpr auto sample = DATATriSample;
};

template <class Flavour>
uint64_t hash_of_operations()
{
    using Array = typename Flavour::Array;
    Random random(1002);
    Hash hash;
    for (int i = 0; i < 400; ++i) {
        const int count = random.between(1, 40), dim = random.one_in(2) ? 3 : random.between(1, 5);
        auto a = doubles<Array>(dim, random.uniforms(int64_t{count} * dim, -5, 5));
        auto b = doubles<Array>(dim, random.uniforms(int64_t{count} * dim, -5, 5));
        auto c = doubles<Array>(dim, random.uniforms(int64_t{count} * dim, -1, 1));
        auto out = doubles<Array>(1, {0});
        for (const int result : {Flavour::cat(a, b, out)})
            hash.add(result).add_array(*out);
        hash.add(Flavour::mix(a, b, random.uniform(-1, 1), 0.75, out)).add_array(*out);
        hash.add(Flavour::mix_four(a, b, c, a, 0.5, random.unit(), -1, 2, out)).add_array(*out);
        Flavour::reverse(a);
        hash.add(Flavour::copy(a, out)).add_array(*out);
        auto box = doubles<Array>(1, {0});
        hash.add(Flavour::bounds(a, box)).add_array(*box);
        if (dim != 3)
            continue;
        Xfm m;
        for (auto& row : m)
            for (double& value : row)
                value = random.uniform(-2, 2);
        if (random.one_in(2))
            m[0][3] = m[1][3] = m[2][3] = 0.0, m[3][3] = 1.0;
        Flavour::transform(m, a, out);
        hash.add_array(*out);
    }
    return hash.value();
}

template <class Flavour>
uint64_t hash_of_samples()
{
    using Array = typename Flavour::Array;
    Random random(1003);
    Hash hash;
    for (int i = 0; i < 100; ++i) {
        const int count = random.between(1, 60);
        auto triangles = doubles<Array>(9, random.uniforms(int64_t{count} * 9, -5, 5));
        auto points = array_of<Array>(DATA_TYPE_DOUBLE, random.between(1, 80), 3);
        Flavour::sample(triangles, static_cast<unsigned>(i), points, nullptr, nullptr);
        hash.add_array(*points);
    }
    return hash.value();
}

} // namespace

TEST(Golden, ArrayOperations)
{
    EXPECT_EQ(hash_of_operations<First>(), 0x4e33e2e1aa971000u);
    EXPECT_EQ(hash_of_operations<Second>(), 0x4e33e2e1aa971000u);
}

TEST(Golden, TriangleSampling)
{
    EXPECT_EQ(hash_of_samples<First>(), 0xe10bcac2ece94309u);
    EXPECT_EQ(hash_of_samples<Second>(), 0xe10bcac2ece94309u);
}

} // namespace korvale::test
