// The fixed results of meshes through the C interface, on coordinates that need no trigonometry.
#include <gtest/gtest.h>

#include "include/korvale_c.h"
#include "tests/golden/hash.h"
#include "tests/support/random.h"

namespace korvale::test {

TEST(Golden, DoorMeshMeasures)
{
    Random random(1111);
    Hash hash;
    for (int i = 0; i < 300; ++i) {
        const int triangles = random.between(1, 60);
        const double size = random.one_in(2) ? 1 : random.one_in(2) ? 1e-9 : 1e9;
        std::vector<double> points(static_cast<size_t>(9 * triangles)), normals(points.size()),
            areas(static_cast<size_t>(triangles));
        for (double& number : points)
            number = size * random.uniform(-4, 4);
        const korvale_triangles mesh = {{points.data(), 3 * triangles, 0, 3, KORVALE_DOUBLE}, {}};
        hash.add(korvale_mesh_normals(&mesh, normals.data(), nullptr)).add(normals.data(), 9 * triangles);
        hash.add(korvale_mesh_areas(&mesh, areas.data(), nullptr)).add(areas.data(), triangles);

        const int32_t corners[] = {0, 2, 1, 0, 1, 3, 1, 2, 3, 2, 0, 3};
        const korvale_triangles solid = {{points.data(), 4, 0, 3, KORVALE_DOUBLE}, {corners, 12, 0, KORVALE_INT32}};
        double volume = 0;
        if (triangles > 1)
            hash.add(korvale_mesh_volume(&solid, &volume, nullptr)).add(volume);
    }
    EXPECT_EQ(hash.value(), 0xcf6f1e2060978640u);
}

} // namespace korvale::test
