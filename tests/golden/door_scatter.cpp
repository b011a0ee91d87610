// The fixed results of points scattered through the C interface.
#include "include/korvale_c.h"
#include "tests/golden/workload.h"
#include "tests/support/draws.h"

namespace korvale::test {

WORKLOAD(DoorScatter, 300, 0xdaa55ab033a77d58u, 1)
{
    Draws random(1106);
    for (int i = 0; i < rounds; ++i) {
        const int triangles = random.between(1, 60), count = random.between(1, 200), width = random.between(1, 4);
        const int vertices = random.between(1, 3 * triangles);
        std::vector<double> points(static_cast<size_t>(3 * vertices)), values(static_cast<size_t>(width * vertices));
        std::vector<int32_t> corners(static_cast<size_t>(3 * triangles)), numbers(static_cast<size_t>(count));
        for (double& number : points)
            number = random.uniform(-4, 4);
        for (double& number : values)
            number = random.uniform(-1, 1);
        for (int32_t& corner : corners)
            corner = random.between(0, vertices - 1);
        std::vector<double> made(static_cast<size_t>(3 * count)), blended(static_cast<size_t>(width * count));
        const korvale_triangles mesh = {{points.data(), vertices, 0, 3, KORVALE_DOUBLE},
                                        {corners.data(), 3 * triangles, 0, KORVALE_INT32}};
        const korvale_points_out output = {made.data(), count, 0, 3, KORVALE_DOUBLE};
        const korvale_numbers attributes = {values.data(), vertices, 0, width, KORVALE_DOUBLE};
        const korvale_numbers_out results = {blended.data(), count, 0, width, KORVALE_DOUBLE};
        const auto seed = static_cast<uint32_t>(random.between(0, 1000000));
        std::vector<double> weights(static_cast<size_t>(i % 2 == 0 ? 0 : triangles), 0.5);
        if (!weights.empty())
            weights[seed % weights.size()] = 2;
        korvale_scatter_options options;
        korvale_scatter_defaults(&options, sizeof options);
        options.weights = {weights.data(), static_cast<int64_t>(weights.size()), 0, 1, KORVALE_DOUBLE};
        hash.add(korvale_scatter(&mesh, seed, &options, &output, numbers.data(), &attributes, &results, nullptr));
        hash.add(made.data(), 3 * count).add(blended.data(), width * count);
        for (const int32_t number : numbers)
            hash.add(number);
    }
}

} // namespace korvale::test
