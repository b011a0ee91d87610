// The fixed results of whole-array operations and triangle sampling, for both records.
#include "tests/support/arrays.h"
#include "data/operations.h"
#include "data/sampling.h"
#include "tests/golden/workload.h"
#include "tests/support/draws.h"

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
void run_operations(int rounds, Hash& hash)
{
    using Array = typename Flavour::Array;
    Draws random(1002);
    for (int i = 0; i < rounds; ++i) {
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
}

template <class Flavour>
void run_samples(int rounds, Hash& hash)
{
    using Array = typename Flavour::Array;
    Draws random(1003);
    for (int i = 0; i < rounds; ++i) {
        const int count = random.between(1, 60);
        auto triangles = doubles<Array>(9, random.uniforms(int64_t{count} * 9, -5, 5));
        auto points = array_of<Array>(DATA_TYPE_DOUBLE, random.between(1, 80), 3);
        Flavour::sample(triangles, static_cast<unsigned>(i), points, nullptr, nullptr);
        hash.add_array(*points);
    }
}

} // namespace

WORKLOAD(ArrayOperationsOfData, 400, 0x4e33e2e1aa971000u, 6)
{
    run_operations<First>(rounds, hash);
}

WORKLOAD(ArrayOperationsOfDATAstruct, 400, 0x4e33e2e1aa971000u, 6)
{
    run_operations<Second>(rounds, hash);
}

WORKLOAD(TriangleSamplingOfData, 100, 0xe10bcac2ece94309u, 1)
{
    run_samples<First>(rounds, hash);
}

WORKLOAD(TriangleSamplingOfDATAstruct, 100, 0xe10bcac2ece94309u, 1)
{
    run_samples<Second>(rounds, hash);
}

} // namespace korvale::test
