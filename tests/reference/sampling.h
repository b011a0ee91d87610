#pragma once

#include <cstdint>
#include <vector>

// Sampling of triangles as it is documented: every draw searches all shares from the first on.
namespace korvale::reference {

struct Samples {
    std::vector<double> points;     ///< [count][3]
    std::vector<double> attributes; ///< [count][k]
    std::vector<int32_t> triangles; ///< [count] the triangle of each point
};

/// Makes `count` points on triangles[n][9], carrying k values a vertex from attributes[n][3][k].
Samples sample_triangles(const std::vector<double>& triangles, unsigned seed, int64_t count,
                         const std::vector<double>& attributes);

/// The same with the generators of a call, of which the second says where in a step of the area a point lies, and a
/// weight for the area of each triangle, or none.
Samples scatter_triangles(const std::vector<double>& triangles, const std::vector<double>& weights, uint32_t seed,
                          int64_t count, const std::vector<double>& attributes);

} // namespace korvale::reference
