// Sorts arbitrary triangles into an arbitrary grid and casts an arbitrary ray at them, then again by holding the ray
// against every cell. Three bytes give the grid, the rest are doubles: origin, direction, triangles.
#include <cstdint>
#include <cstring>
#include <vector>

#include "fuzz/input.h"
#include "math/vector.h"
#include "ray/grid.h"
#include "ray/query.h"

using namespace korvale::fuzz;

namespace {

/// The triangles in the cells that the ray meets, 1 for each.
std::vector<uint8_t> triangles_met(RayStatus& s, double* origin, double* direction)
{
    std::vector<uint8_t> met(static_cast<size_t>(s.triangles->count));
    double d[3];
    std::memcpy(d, direction, sizeof d);
    if (normalize(d) == -1)
        return met;
    for (int32_t c = 0; c < s.nx * s.ny * s.nz; ++c)
        if (ray_int_bbox(origin, d, s.cells[c].dvals) == 1)
            for (const data_list_struct* node = s.cells[c].next; node != nullptr; node = node->next)
                for (int32_t i = 0; i < node->count; ++i)
                    met[static_cast<size_t>(node->ivals[i])] = 1;
    return met;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count)
{
    constexpr size_t kGridBytes = 3, kRayValues = 6, kTriangleValues = 9;
    if (count < kGridBytes + kRayValues * sizeof(double))
        return 0;
    std::vector<double> values = doubles_of(bytes + kGridBytes, count - kGridBytes);
    double* const origin = values.data();
    double* const direction = origin + 3;
    const auto triangles = static_cast<int32_t>((values.size() - kRayValues) / kTriangleValues);
    Data array = {9, triangles, DATA_TYPE_DOUBLE, values.data() + kRayValues, nullptr, nullptr};

    RayStatus s;
    require(ray_initialize(&s) == 1);
    s.nx = bytes[0] % 20 - 1;
    s.ny = bytes[1] % 20 - 1;
    s.nz = bytes[2] % 20 - 1;
    ray_set_triangles(&array, &s);
    ray_classify(&s);
    require(s.cells != nullptr && s.nx >= 1 && s.ny >= 1 && s.nz >= 1);

    double distance = -1;
    const int hits = ray_intersect(origin, direction, &s, &distance);
    require(hits >= 0 && hits <= triangles);
    require(hits > 0 ? !(distance < 0) : distance == -1);
    if (triangles > 0) {
        const std::vector<uint8_t> met = triangles_met(s, origin, direction);
        require(std::memcmp(met.data(), s.tri_marks.bvals, met.size()) == 0);
    }
    ray_declassify(&s);
    DataDispose(&s.bbox);
    return 0;
}
