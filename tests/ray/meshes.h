#pragma once

#include <cmath>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

// Meshes as lists of triangles, nine numbers each.
namespace korvale::test {

/// The triangles of a Wavefront file of triangular faces; empty when it cannot be read.
inline std::vector<double> triangles_of_obj(const std::string& path)
{
    std::ifstream file(path);
    std::vector<double> vertices, triangles;
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::string kind;
        words >> kind;
        if (kind == "v") {
            double value;
            for (int k = 0; k < 3 && words >> value; ++k)
                vertices.push_back(value);
        } else if (kind == "f") {
            size_t vertex;
            for (int i = 0; i < 3 && words >> vertex; ++i)
                triangles.insert(triangles.end(), vertices.begin() + static_cast<long>(3 * (vertex - 1)),
                                 vertices.begin() + static_cast<long>(3 * vertex));
        }
    }
    return triangles;
}

/// Each triangle divided into four at the midpoints of its edges, `times` times.
inline std::vector<double> subdivided(std::vector<double> triangles, int times)
{
    for (; times > 0; --times) {
        std::vector<double> finer;
        finer.reserve(4 * triangles.size());
        for (size_t t = 0; t < triangles.size(); t += 9) {
            double corners[3][3], middles[3][3];
            for (int i = 0; i < 9; ++i)
                corners[i / 3][i % 3] = triangles[t + static_cast<size_t>(i)];
            for (int i = 0; i < 9; ++i)
                middles[i / 3][i % 3] = 0.5 * (corners[i / 3][i % 3] + corners[(i / 3 + 1) % 3][i % 3]);
            const auto add = [&finer](const double* a, const double* b, const double* c) {
                for (const double* vertex : {a, b, c})
                    finer.insert(finer.end(), vertex, vertex + 3);
            };
            add(corners[0], middles[0], middles[2]);
            add(middles[0], corners[1], middles[1]);
            add(middles[2], middles[1], corners[2]);
            add(middles[0], middles[1], middles[2]);
        }
        triangles = std::move(finer);
    }
    return triangles;
}

inline std::vector<double> scaled(std::vector<double> triangles, double x, double y, double z)
{
    for (size_t i = 0; i < triangles.size(); ++i)
        triangles[i] *= i % 3 == 0 ? x : i % 3 == 1 ? y : z;
    return triangles;
}

/// A landscape of 2 n n triangles over the unit square.
inline std::vector<double> landscape(int n)
{
    std::vector<double> triangles;
    const auto add = [&](int i, int j) {
        const double x = static_cast<double>(i) / n, y = static_cast<double>(j) / n;
        triangles.insert(triangles.end(), {x, y, 0.1 * std::sin(9 * x) * std::cos(7 * y)});
    };
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) {
            add(i, j), add(i + 1, j), add(i + 1, j + 1);
            add(i, j), add(i + 1, j + 1), add(i, j + 1);
        }
    return triangles;
}

} // namespace korvale::test
