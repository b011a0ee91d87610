// The fixed results of flattening and of frames along open and closed paths.
#include <vector>

#include "path/flatten.h"
#include "path/frames.h"
#include "platform/layer.h"
#include "tests/golden/workload.h"
#include "tests/support/arrays.h"
#include "tests/support/draws.h"

namespace korvale::test {
namespace {

/// A random path, planar every other time; two points alone would be flattened by an angle of the C library's.
std::vector<double> random_path(Draws& random)
{
    std::vector<double> xyz;
    const double a = random.uniform(-1, 1), b = random.uniform(-1, 1), off = random.one_in(2) ? 1.0 : 0.0;
    for (int n = random.between(3, 40); n > 0; --n) {
        const double x = random.uniform(-9, 9), y = random.uniform(-9, 9);
        xyz.insert(xyz.end(), {x, y, a * x + b * y + off * random.unit()});
    }
    return xyz;
}

} // namespace

WORKLOAD(Flattening, 1500, 0x93ac6a560599257bu, 2)
{
    Draws random(1004);
    for (int i = 0; i < rounds; ++i) {
        const std::vector<double> xyz = random_path(random);
        auto data = points<Data>(xyz);
        auto datastruct = points<DATAstruct>(xyz);
        Xfm xfm = {}, reverse = {};
        Mwsrand(static_cast<unsigned>(i));
        hash.add(data_to_xy_xfms(data, xfm, reverse, i % 2)).add(xfm[0], 16).add(reverse[0], 16);
        DATA_to_xy_xfms(datastruct, xfm, reverse, i % 2);
        hash.add(xfm[0], 16).add(reverse[0], 16).add(Mwrand());
    }
}

WORKLOAD(OpenFrames, 1000, 0x98f791e567e41d6du, 2)
{
    Draws random(1005);
    for (int i = 0; i < rounds; ++i) {
        const std::vector<double> xyz = random_path(random);
        std::vector<double> frames(16 * xyz.size() / 3);
        auto data = points<Data>(xyz);
        auto datastruct = points<DATAstruct>(xyz);
        path2xfm(data, 0, reinterpret_cast<Xfm*>(frames.data()));
        hash.add(frames.data(), static_cast<int64_t>(frames.size()));
        PATH2xfm(datastruct, 0, reinterpret_cast<Xfm*>(frames.data()));
        hash.add(frames.data(), static_cast<int64_t>(frames.size()));
    }
}

} // namespace korvale::test
