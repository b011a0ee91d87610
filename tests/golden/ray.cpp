// The fixed results of classification and queries: counts, distances and marks.
#include <vector>

#include "tests/golden/workload.h"
#include "tests/ray/scene.h"
#include "tests/support/draws.h"

namespace korvale::test {

WORKLOAD(RayQueries, 120, 0x1755b6a1ef462918u, 23)
{
    Draws random(1008);
    for (int i = 0; i < rounds; ++i) {
        const int count = random.between(1, 120);
        std::vector<double> triangles;
        for (int t = 0; t < count; ++t) {
            const std::vector<double> corner = random.uniforms(3, -5, 5);
            for (int k = 0; k < 9; ++k)
                triangles.push_back(corner[static_cast<size_t>(k % 3)] + random.uniform(-1, 1));
        }
        const int nz = random.between(1, 9); // each by itself: arguments have no order
        const int ny = random.between(1, 9);
        const int nx = random.between(1, 9);
        Scene scene(triangles, nx, ny, nz);
        const int cells = scene->nx * scene->ny * scene->nz;
        for (int cell = 0; cell < cells; ++cell)
            for (const int triangle : scene.numbers(cell))
                hash.add(triangle);
        for (int r = 0; r < 20; ++r) {
            std::vector<double> origin = random.uniforms(3, -7, 7), direction = random.uniforms(3, -1, 1);
            if (random.one_in(3))
                direction[static_cast<size_t>(random.below(3))] = 0.0;
            double distance = -1.0;
            hash.add(ray_intersect(origin.data(), direction.data(), scene, &distance)).add(distance);
            for (const int mark : scene.marks())
                hash.add(mark);
        }
    }
}

} // namespace korvale::test
