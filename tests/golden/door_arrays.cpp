// The fixed results of transforms and whole arrays through the C interface; nothing here follows the C library's
// trigonometry.
#include "include/korvale_c.h"
#include "tests/golden/workload.h"
#include "tests/support/draws.h"

namespace korvale::test {

WORKLOAD(DoorArrays, 2000, 0xa1a45ba9abf2f8ebu, 8)
{
    Draws random(1101);
    for (int i = 0; i < rounds; ++i) {
        double m[16], inverse[16] = {}, frame[16] = {};
        for (double& number : m)
            number = random.one_in(6) ? random.between(-1, 1) : random.uniform(-3, 3);
        hash.add(korvale_transform_invert(m, inverse, nullptr)).add(inverse, 16);
        korvale_transform_multiply(m, m, m);
        hash.add(m, 16);
        hash.add(korvale_transform_into_frame(m, m + 4, m + 8, frame, nullptr)).add(frame, 16);

        const int n = random.between(1, 40);
        std::vector<double> rows(static_cast<size_t>(3 * n)), mixed(rows.size());
        std::vector<float> floats(rows.size());
        for (size_t k = 0; k < rows.size(); ++k) {
            rows[k] = random.one_in(20) ? -0.0 : random.uniform(-5, 5);
            floats[k] = static_cast<float>(random.uniform(-5, 5));
        }
        const korvale_points points = {floats.data(), n, 0, 3, KORVALE_FLOAT};
        const korvale_points_out output = {mixed.data(), n, 0, 3, KORVALE_DOUBLE};
        hash.add(korvale_transform_points(m, &points, &output, nullptr)).add(mixed.data(), 3 * n);
        hash.add(korvale_transform_vectors(m, &points, &output, nullptr)).add(mixed.data(), 3 * n);

        const korvale_numbers arrays[] = {{rows.data(), n, 0, 3, KORVALE_DOUBLE},
                                          {floats.data(), n, 0, 3, KORVALE_FLOAT},
                                          {rows.data(), n, 0, 3, KORVALE_DOUBLE},
                                          {mixed.data(), n, 0, 3, KORVALE_DOUBLE}};
        const korvale_numbers_out to = {mixed.data(), n, 0, 3, KORVALE_DOUBLE};
        hash.add(korvale_mix(arrays, m, random.one_in(2) ? 2 : 4, &to, nullptr)).add(mixed.data(), 3 * n);
        hash.add(korvale_reverse(&to, nullptr)).add(mixed.data(), 3 * n);
        double least[3], greatest[3];
        hash.add(korvale_bounds(&arrays[1], least, greatest, nullptr)).add(least, 3).add(greatest, 3);
    }
}

} // namespace korvale::test
