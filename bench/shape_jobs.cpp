// Outlines cut into triangles, by points, which grows with n log n; and 5,000 outlines of 300 points sorted into
// shapes, by how many lie in each other, beside moving them by a hundredth of their size.
#include <cmath>
#include <memory>
#include <numbers>

#include "bench/job.h"
#include "include/korvale_c.h"

namespace korvale::bench {
namespace {

using Values = std::vector<double>;

/// A coast of n points.
Values coast(int n, double x, double y, double size)
{
    Values xyz;
    for (int i = 0; i < n; ++i) {
        const double t = 2 * std::numbers::pi * i / n;
        const double r = size * (1 + 0.3 * std::sin(5 * t) + 0.1 * std::sin(37 * t) + 0.02 * std::sin(211 * t));
        xyz.insert(xyz.end(), {x + r * std::cos(t), y + r * std::sin(t), 0});
    }
    return xyz;
}

korvale_points points_of(const Values& xyz)
{
    return {xyz.data(), static_cast<int64_t>(xyz.size() / 3), 0, 3, KORVALE_DOUBLE};
}

Work triangulate(int n)
{
    return [xyz = coast(n, 0, 0, 100), n, triangles = std::vector<int32_t>(3 * static_cast<size_t>(n))]() mutable {
        const korvale_points outline = points_of(xyz);
        int64_t written = 0;
        need(korvale_triangulate(&outline, 1, triangles.data(), n - 2, &written, nullptr, nullptr, nullptr) ==
             KORVALE_OK);
    };
}

/// Hills side by side, each of lines around lines.
struct Hills {
    explicit Hills(int deep)
    {
        for (int i = 0; i < 5000; ++i)
            lines.push_back(coast(300, 3.0 * (i / deep), 0, 1.0 / (1 + i % deep)));
        for (const Values& line : lines)
            outlines.push_back(points_of(line));
    }

    std::vector<Values> lines;
    std::vector<korvale_points> outlines;
};

Work sort(int deep)
{
    return [hills = std::make_shared<Hills>(deep), outer = std::vector<int32_t>(5000)]() mutable {
        need(korvale_shapes(hills->outlines.data(), static_cast<int64_t>(hills->outlines.size()), nullptr, outer.data(),
                            nullptr) == KORVALE_OK);
    };
}

Work offset(int deep)
{
    korvale_offsetter* offsetter = nullptr;
    need(korvale_offsetter_new(&offsetter, nullptr) == KORVALE_OK);
    return [hills = std::make_shared<Hills>(deep), deep, offsetter] {
        for (size_t i = 0; i < hills->outlines.size(); ++i)
            need(korvale_offsetter_run(offsetter, &hills->outlines[i], 1, 0.01 / (1 + static_cast<int>(i) % deep),
                                       nullptr, nullptr) == KORVALE_OK);
    };
}

} // namespace

std::vector<Job> shape_jobs()
{
    return {
        {"shapes.triangulate", {8000, 60000}, triangulate},
        {"shapes.sort", {1, 20}, sort},
        {"shapes.sort@offset", {1, 20}, offset},
    };
}

} // namespace korvale::bench
