// The teapot, finer and finer, and rays at a mesh.
#include <algorithm>
#include <limits>

#include "bench/job.h"
#include "tests/support/meshes.h"

namespace korvale::bench {

std::vector<double> teapot(int count)
{
    const std::vector<double> coarse = test::triangles_of(test::read_obj(KORVALE_EXAMPLE_DATA "/teapot.obj"));
    int times = 0;
    for (size_t size = coarse.size() / 9; size < static_cast<size_t>(count); size *= 4)
        ++times;
    return test::subdivided(coarse, times);
}

Rays::Rays(const std::vector<double>& mesh, int count)
{
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    Numbers random;
    double low[3] = {kInfinity, kInfinity, kInfinity}, high[3] = {-kInfinity, -kInfinity, -kInfinity};
    for (size_t i = 0; i < mesh.size(); ++i) {
        low[i % 3] = std::min(low[i % 3], mesh[i]);
        high[i % 3] = std::max(high[i % 3], mesh[i]);
    }
    for (size_t i = 0; i < 3 * static_cast<size_t>(count); ++i) {
        const double size = high[i % 3] - low[i % 3];
        origins.push_back(low[i % 3] + size * random.uniform(-1, 2));
        directions.push_back(low[i % 3] + size * random.unit() - origins.back());
    }
}

} // namespace korvale::bench
