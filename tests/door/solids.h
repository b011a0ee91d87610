// Meshes made by the tests, taken apart.
#pragma once

#include <gtest/gtest.h>

#include "support.h"

namespace korvale::test {

using Outlines = std::vector<Numbers>;

/// What a mesh holds.
struct Solid {
    Numbers points;
    std::vector<int32_t> corners;
    double volume = 0;
    Numbers reached;
    bool operator==(const Solid&) const = default;
};

inline Solid taken(korvale_mesh* mesh)
{
    const korvale_triangles view = korvale_mesh_view(mesh);
    const auto* const points = static_cast<const double*>(view.points.data);
    const auto* const corners = static_cast<const int32_t*>(view.corners.data);
    int64_t steps = 0;
    const double* const reached = korvale_mesh_reached(mesh, &steps);
    Solid solid = {{points, points + 3 * view.points.count},
                   {corners, corners + view.corners.count},
                   0,
                   {reached, reached + steps}};
    EXPECT_EQ(korvale_mesh_volume(&view, &solid.volume, nullptr), KORVALE_OK); // which closed meshes have
    korvale_mesh_free(mesh);
    return solid;
}

inline std::vector<korvale_points> views_of(const Outlines& outlines)
{
    std::vector<korvale_points> views;
    for (const Numbers& outline : outlines)
        views.push_back(points_of(outline));
    return views;
}

} // namespace korvale::test
