#include "tests/reference/ray.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "math/box.h"
#include "math/transform.h"
#include "math/vector.h"
#include "ray/query.h"

namespace korvale::reference {
namespace {

std::vector<RayCell> divide(const double* bbox, int32_t nx, int32_t ny, int32_t nz)
{
    std::vector<RayCell> cells;
    const double step_x = (bbox[3] - bbox[0]) / nx;
    const double step_y = (bbox[4] - bbox[1]) / ny;
    const double step_z = (bbox[5] - bbox[2]) / nz;
    double x = bbox[0];
    for (int32_t ix = 0; ix < nx; ++ix) {
        double y = bbox[1];
        for (int32_t iy = 0; iy < ny; ++iy) {
            double z = bbox[2];
            for (int32_t iz = 0; iz < nz; ++iz) {
                cells.push_back({{x, y, z, x + step_x, y + step_y, z + step_z}, {}});
                z = z + step_z;
            }
            y = y + step_y;
        }
        x = x + step_x;
    }
    return cells;
}

void find_triangle_box(const double* triangle, double* box)
{
    for (int k = 0; k < 3; ++k) {
        box[k] = triangle[k] - 1e-06;
        box[k + 3] = triangle[k] + 1e-06;
    }
    for (int vertex = 1; vertex < 3; ++vertex)
        for (int k = 0; k < 3; ++k) {
            const double value = triangle[3 * vertex + k];
            if (value < box[k])
                box[k] = value;
            else if (value > box[k + 3])
                box[k + 3] = value;
        }
}

} // namespace

std::vector<RayCell> sort_triangles(const double* triangles, int32_t count, const double* bbox, int32_t nx, int32_t ny,
                                    int32_t nz)
{
    std::vector<RayCell> cells = divide(bbox, nx, ny, nz);
    for (int32_t t = 0; t < count; ++t) {
        double box[6];
        find_triangle_box(triangles + 9 * static_cast<int64_t>(t), box);
        for (RayCell& cell : cells)
            if (bbox_intersect(cell.box, box))
                cell.numbers.push_back(t);
    }
    return cells;
}

int intersect(const double* origin, const double* direction, RayStatus& s, double* distance,
              const std::array<double, 6>* boxes)
{
    if (s.triangles->count < 1)
        return 0;
    for (int32_t t = 0; t < s.tri_marks.count; ++t)
        s.tri_marks.bvals[t] = 0;
    double o[3], d[3];
    std::memcpy(o, origin, sizeof o);
    std::memcpy(d, direction, sizeof d);
    if (normalize(d) == -1)
        return 0;
    Xfm frame;
    ray_compute_xfm(o, d, frame);

    int hits = 0;
    for (int32_t c = 0; c < s.nx * s.ny * s.nz; ++c) {
        if (s.cells[c].dvals == nullptr)
            continue;
        double box[6];
        std::memcpy(box, boxes != nullptr ? boxes[c].data() : s.cells[c].dvals, sizeof box);
        if (ray_int_bbox(o, d, box) != 1)
            continue;
        for (const data_list_struct* node = s.cells[c].next; node != nullptr; node = node->next)
            for (int32_t i = 0; i < node->count; ++i) {
                const int32_t t = node->ivals[i];
                if (s.tri_marks.bvals[t] != 0)
                    continue;
                s.tri_marks.bvals[t] = 1;
                double start[3] = {0, 0, 0}, seen[9], z;
                for (int v = 0; v < 9; v += 3)
                    TransformPoint(frame, s.triangles->dvals + 9 * static_cast<int64_t>(t) + v, seen + v);
                if (z_intersect(start, seen, &z) != 1)
                    continue;
                if (hits == 0 || z < *distance)
                    *distance = z;
                ++hits;
            }
    }
    return hits;
}

double grid_scale(const double* triangles, int32_t count)
{
    double reach = 0, farthest = 0;
    for (int k = 0; k < 3 && count > 0; ++k) {
        double least = triangles[k], greatest = triangles[k];
        for (int64_t i = k; i < 9 * int64_t{count}; i += 3) {
            least = std::min(least, triangles[i]);
            greatest = std::max(greatest, triangles[i]);
        }
        reach = std::max(reach, greatest - least);
        farthest = std::max({farthest, std::fabs(least), std::fabs(greatest)});
    }
    if (reach == 0)
        return 1;
    double scale = 1;
    while (reach < 1 && reach * scale < 64 && scale < 0x1p1000)
        scale *= 2;
    const double before = scale;
    const auto is_small = [&](const double* t) {
        double a[3], b[3];
        for (int k = 0; k < 3; ++k) {
            a[k] = before * (t[k + 3] - t[k]);
            b[k] = before * (t[k + 6] - t[k]);
        }
        const double x = a[1] * b[2] - a[2] * b[1], y = a[2] * b[0] - a[0] * b[2], z = a[0] * b[1] - a[1] * b[0];
        const double square = x * x + y * y + z * z;
        return square > 0 && square * std::pow(scale / before, 4) < 0x1p-12;
    };
    for (int32_t t = 0; t < count; ++t)
        while (scale < 0x1p1000 && (2 * scale * farthest < 4096 || scale * reach < 64) &&
               is_small(triangles + 9 * int64_t{t}))
            scale *= 2;
    return scale;
}

void bring_to_length(double* direction)
{
    const double reach = std::max({std::fabs(direction[0]), std::fabs(direction[1]), std::fabs(direction[2])});
    if (!(reach > 0) || reach > 0x1.fffffffffffffp+1023)
        return;
    for (double r = reach; reach < 1 && r < 1; r *= 2)
        for (int k = 0; k < 3; ++k)
            direction[k] *= 2;
    for (double r = reach; reach >= 0x1p500 && r >= 2; r /= 2)
        for (int k = 0; k < 3; ++k)
            direction[k] /= 2;
}

} // namespace korvale::reference
