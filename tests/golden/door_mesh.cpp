// The fixed results of meshes through the C interface, on coordinates that need no trigonometry.
#include "include/korvale_c.h"
#include "tests/golden/workload.h"
#include "tests/support/draws.h"

namespace korvale::test {

/// Adds the points and corners of a mesh, and releases it.
static void take(Hash& hash, korvale_mesh* mesh)
{
    const korvale_triangles view = korvale_mesh_view(mesh);
    hash.add(static_cast<const double*>(view.points.data), 3 * view.points.count);
    hash.add(static_cast<const int32_t*>(view.corners.data), view.corners.count);
    korvale_mesh_free(mesh);
}

WORKLOAD(DoorBevel, 1000, 0x4d956d473f903846u, 1)
{
    Draws random(1113);
    for (int i = 0; i < rounds; ++i) {
        const int n = random.between(3, 40);
        const double size = random.one_in(2) ? 10 : random.one_in(2) ? 0.01 : 1e8;
        std::vector<double> outline, hole;
        for (int k = 0; k < n; ++k) { // up one side, down the other
            const double along = 2 * k < n ? k : n - k;
            outline.insert(outline.end(), {size * (2 * k < n ? random.uniform(1, 2) : random.uniform(-2, -1)),
                                           size * along, size * 0.25 * along});
        }
        const double middle = 0.25 * n;
        for (const double x : {-0.5, 0.5})
            for (const double y : {-0.25, 0.25})
                hole.insert(hole.end(), {size * x, size * (middle + 2 * x * y), size * 0.25 * (middle + 2 * x * y)});
        const korvale_points shape[] = {{outline.data(), n, 0, 3, KORVALE_DOUBLE},
                                        {hole.data(), 4, 0, 3, KORVALE_DOUBLE}};
        std::vector<korvale_bevel_step> profile;
        for (int k = random.between(2, 5); k > 0; --k)
            profile.push_back({size * random.uniform(-1, 0.5), size * random.uniform(-1, 1)});
        korvale_bevel_options options;
        korvale_bevel_defaults(&options, sizeof options);
        options.split = random.between(0, 1);
        korvale_mesh* mesh = nullptr;
        hash.add(korvale_bevel(shape, random.between(1, 2), profile.data(), static_cast<int64_t>(profile.size()),
                               &options, &mesh, nullptr));
        take(hash, mesh);
    }
}

WORKLOAD(DoorTube, 1000, 0x8d4a14478e2f09eau, 1)
{
    Draws random(1114);
    for (int i = 0; i < rounds; ++i) {
        const double size = random.one_in(2) ? 10 : random.one_in(2) ? 0.01 : 1e8;
        std::vector<double> path, section;
        for (int k = random.between(2, 40); k > 0; --k)
            path.insert(path.end(), {size * random.uniform(-1, 1), size * random.uniform(-1, 1), size * k});
        for (int k = random.between(3, 12); k > 0; --k)
            section.insert(section.end(), {size * random.uniform(-1, 1), size * random.uniform(-1, 1), 0});
        const korvale_points along = {path.data(), static_cast<int64_t>(path.size() / 3), 0, 3, KORVALE_DOUBLE},
                             around = {section.data(), static_cast<int64_t>(section.size() / 3), 0, 3, KORVALE_DOUBLE};
        korvale_tube_options options;
        korvale_tube_defaults(&options, sizeof options);
        options.caps = random.between(0, 1);
        korvale_mesh* mesh = nullptr;
        hash.add(korvale_tube(&along, &around, &options, &mesh, nullptr)); // a closed one follows the C library
        take(hash, mesh);
    }
}

WORKLOAD(DoorMeshMeasures, 300, 0xe653e63d039a6587u, 3)
{
    Draws random(1111);
    for (int i = 0; i < rounds; ++i) {
        const int triangles = random.between(1, 60);
        const double size = random.one_in(2) ? 1 : random.one_in(2) ? 1e-9 : 1e9;
        std::vector<double> points(static_cast<size_t>(9 * triangles)), normals(points.size()),
            areas(static_cast<size_t>(triangles));
        for (double& number : points)
            number = size * random.uniform(-4, 4);
        const korvale_triangles mesh = {{points.data(), 3 * triangles, 0, 3, KORVALE_DOUBLE}, {}};
        hash.add(korvale_mesh_normals(&mesh, normals.data(), nullptr)).add(normals.data(), 9 * triangles);
        hash.add(korvale_mesh_areas(&mesh, areas.data(), nullptr)).add(areas.data(), triangles);
        double box[6] = {};
        hash.add(korvale_mesh_bounds(&mesh, box, box + 3, nullptr)).add(box, 6);

        const int32_t corners[] = {0, 2, 1, 0, 1, 3, 1, 2, 3, 2, 0, 3};
        const korvale_triangles solid = {{points.data(), 4, 0, 3, KORVALE_DOUBLE}, {corners, 12, 0, KORVALE_INT32}};
        double volume = 0;
        if (triangles > 1)
            hash.add(korvale_mesh_volume(&solid, &volume, nullptr)).add(volume);
    }
}

} // namespace korvale::test
