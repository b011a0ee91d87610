// The fixed results of outlines cut into triangles and sorted into shapes through the C interface, on coordinates that
// need no trigonometry.
#include "include/korvale_c.h"
#include "tests/golden/workload.h"
#include "tests/support/draws.h"

namespace korvale::test {

WORKLOAD(DoorTriangulate, 1000, 0xb2b19283dd206826u, 1)
{
    Draws random(1107);
    for (int i = 0; i < rounds; ++i) {
        const int n = 2 * random.between(2, 40);
        std::vector<std::vector<double>> outlines(1);
        for (int k = 0; k < n; ++k) { // up one side, down the other, between x = 0 and 3
            const double along = 2 * k < n ? k : n - 1 - k;
            const double x = 2 * k < n ? random.uniform(2.1, 3) : random.uniform(0, 0.9);
            outlines[0].insert(outlines[0].end(), {x, along, 0.25 * along});
        }
        const bool is_holed = random.one_in(2);
        for (int k = 1; is_holed && 2 * k < n; ++k) { // in the middle
            const double y = k - 0.75;
            outlines.push_back({1, y, 0.25 * y, 2, y + random.uniform(0, 0.4), 0, 1.5, y + 0.5, 0});
            outlines.back()[5] = 0.25 * outlines.back()[4];
            outlines.back()[8] = 0.25 * outlines.back()[7];
        }
        std::vector<korvale_points> views;
        int64_t room = -4;
        for (const std::vector<double>& outline : outlines) {
            views.push_back({outline.data(), static_cast<int64_t>(outline.size() / 3), 0, 3, KORVALE_DOUBLE});
            room += views.back().count + 2;
        }
        std::vector<int32_t> triangles(static_cast<size_t>(3 * room));
        int64_t written = 0;
        hash.add(korvale_triangulate(views.data(), static_cast<int64_t>(views.size()), triangles.data(), room, &written,
                                     nullptr, nullptr, nullptr));
        hash.add(triangles.data(), 3 * written);
    }
}

WORKLOAD(DoorShapes, 1000, 0x2c6a75521a4554c1u, 1)
{
    Draws random(1108);
    for (int i = 0; i < rounds; ++i) {
        std::vector<double> boxes;
        const int n = random.between(1, 60);
        for (int k = 0; k < n; ++k) {
            const double x = random.between(0, 20), y = random.between(0, 20);
            const double right = x + random.between(0, 9), top = y + random.between(0, 9);
            boxes.insert(boxes.end(), {x, y, right, y, right, top, x, top});
        }
        std::vector<korvale_points> views;
        for (int k = 0; k < n; ++k)
            views.push_back(
                {&boxes[static_cast<size_t>(8 * k)], random.between(0, 9) == 0 ? 0 : 4, 0, 2, KORVALE_DOUBLE});
        std::vector<int32_t> outer(static_cast<size_t>(n));
        korvale_shapes_options options;
        korvale_shapes_defaults(&options, sizeof options);
        options.crossing = 1;
        hash.add(korvale_shapes(views.data(), n, &options, outer.data(), nullptr)).add(outer.data(), n);
    }
}

WORKLOAD(DoorJoinedShapes, 300, 0x862ce80bda31a15u, 1)
{
    Draws random(1109);
    for (int i = 0; i < rounds; ++i) {
        std::vector<double> boxes;
        for (int k = 0; k < 16; ++k) { // each over its neighbours by up to 0.02
            const double x = k % 4, y = k / 4;
            for (const auto& [u, v] : {std::pair(0, 0), {1, 0}, {1, 1}, {0, 1}})
                boxes.insert(boxes.end(), {x + u + random.uniform(-0.01, 0.01), y + v + random.uniform(-0.01, 0.01),
                                           random.uniform(0, 1)});
        }
        std::vector<korvale_points> views;
        for (int k = 0; k < 16; ++k)
            views.push_back({&boxes[static_cast<size_t>(12 * k)], 4, 0, 3, KORVALE_DOUBLE});
        int32_t outer[16];
        korvale_rings* rings = nullptr;
        const korvale_shapes_options options = {sizeof options, 0, 0.04, nullptr, nullptr, &rings};
        hash.add(korvale_shapes(views.data(), 16, &options, outer, nullptr)).add(outer, 16);
        const korvale_ring_arrays all = korvale_rings_view(rings);
        for (int64_t k = 0; k <= all.rings; ++k)
            hash.add(static_cast<uint64_t>(all.starts[k]));
        hash.add(all.points, 3 * all.starts[all.rings]);
        hash.add(all.sources, all.starts[all.rings]);
        korvale_rings_free(rings);
    }
}

} // namespace korvale::test
