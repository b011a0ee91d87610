// The fixed results of relaxations through the C interface.
#include "include/korvale_c.h"
#include "tests/golden/workload.h"
#include "tests/support/draws.h"

namespace korvale::test {

WORKLOAD(DoorRelaxer, 60, 0xe740a597349c6554u, 6)
{
    Draws random(1102);
    for (int round = 0; round < rounds; ++round) {
        const int side = random.between(2, 6);
        std::vector<double> points;
        std::vector<uint16_t> corners;
        std::vector<int16_t> sizes;
        for (int i = 0; i < side * side; ++i)
            points.insert(points.end(), {1.0 * (i % side), 1.0 * (i / side), random.uniform(-0.2, 0.2)});
        for (int i = 0; i + side < side * side; ++i)
            if (i % side + 1 < side) {
                for (const int corner : {i, i + 1, i + side + 1, i + side})
                    corners.push_back(static_cast<uint16_t>(corner));
                sizes.push_back(4);
            }
        // A floor along the border, so that there is a volume.
        const int top = side * (side - 1);
        for (const auto& [first, step] : {std::pair(0, side), {top, 1}, {top + side - 1, -side}, {side - 1, -1}})
            for (int k = 0; k + 1 < side; ++k)
                corners.push_back(static_cast<uint16_t>(first + k * step));
        sizes.push_back(static_cast<int16_t>(4 * (side - 1)));
        const int64_t n = side * side;
        const korvale_faces faces = {{points.data(), n, 0, 3, KORVALE_DOUBLE},
                                     {sizes.data(), static_cast<int64_t>(sizes.size()), 0, KORVALE_INT16},
                                     {corners.data(), static_cast<int64_t>(corners.size()), 0, KORVALE_UINT16}};
        korvale_relaxer* relaxer = nullptr;
        if (korvale_relaxer_new(&faces, nullptr, &relaxer, nullptr) != KORVALE_OK)
            return; // the number tells
        for (const int32_t measure : {KORVALE_LENGTHS, KORVALE_ANGLES, KORVALE_VOLUME, KORVALE_AREA})
            if (measure == KORVALE_LENGTHS || random.one_in(2))
                hash.add(korvale_relaxer_keep(relaxer, measure, random.uniform(0.001, 0.1), nullptr));
        std::vector<uint8_t> mask(static_cast<size_t>(n));
        for (uint8_t& held : mask)
            held = random.one_in(5);
        korvale_relaxer_hold(relaxer, mask.data(), n, nullptr);
        std::vector<float> moved;
        for (const double v : points)
            moved.push_back(static_cast<float>(v + random.uniform(-0.2, 0.2)));
        const korvale_points_out moving = {moved.data(), n, 0, 3, KORVALE_FLOAT};
        const korvale_points at = {moved.data(), n, 0, 3, KORVALE_FLOAT};
        double energy = 0;
        std::vector<double> forces(points.size());
        hash.add(korvale_relaxer_step(relaxer, &moving, random.between(0, 5), &energy, nullptr, nullptr, nullptr))
            .add(energy);
        korvale_run_options options;
        korvale_run_defaults(&options, sizeof options);
        options.steps = 10;
        options.least_drop = random.uniform(0, 0.3);
        korvale_relaxation result = {};
        hash.add(korvale_relaxer_run(relaxer, &moving, &options, &result, nullptr));
        hash.add(result.steps).add(result.stop).add(result.energy);
        for (const float v : moved)
            hash.add(double{v});
        hash.add(korvale_relaxer_forces(relaxer, &at, forces.data(), nullptr)).add(forces.data(), 3 * n);
        korvale_relaxer_free(relaxer);
    }
}

} // namespace korvale::test
