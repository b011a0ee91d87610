#include "tests/support/meshes.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <map>
#include <numbers>
#include <sstream>
#include <utility>

namespace korvale::test {
namespace {

void add_face(Mesh& mesh, const std::vector<int>& corners)
{
    mesh.sizes.push_back(static_cast<int>(corners.size()));
    mesh.corners.insert(mesh.corners.end(), corners.begin(), corners.end());
}

void add_point(Mesh& mesh, double x, double y, double z)
{
    mesh.points.insert(mesh.points.end(), {x, y, z});
}

/// Puts point i on the unit sphere.
void push_out(Mesh& mesh, int i)
{
    double* const p = &mesh.points[static_cast<size_t>(3 * i)];
    const double length = std::sqrt(p[0] * p[0] + p[1] * p[1] + p[2] * p[2]);
    for (int q = 0; q < 3; ++q)
        p[q] /= length;
}

Mesh icosahedron()
{
    const double g = std::numbers::phi;
    Mesh mesh;
    mesh.points = {-1, g,  0,  1, g, 0,  -1, -g, 0,  1, -g, 0, 0,  -1, g,  0,  1, g,
                   0,  -1, -g, 0, 1, -g, g,  0,  -1, g, 0,  1, -g, 0,  -1, -g, 0, 1};
    const int faces[20][3] = {{0, 11, 5},  {0, 5, 1},  {0, 1, 7},  {0, 7, 10}, {0, 10, 11}, {1, 5, 9}, {5, 11, 4},
                              {11, 10, 2}, {10, 7, 6}, {7, 1, 8},  {3, 9, 4},  {3, 4, 2},   {3, 2, 6}, {3, 6, 8},
                              {3, 8, 9},   {4, 9, 5},  {2, 4, 11}, {6, 2, 10}, {8, 6, 7},   {9, 8, 1}};
    for (const auto& f : faces)
        add_face(mesh, {f[0], f[1], f[2]});
    for (int i = 0; i < mesh.point_count(); ++i)
        push_out(mesh, i);
    return mesh;
}

/// Every triangle as four, the new points on the unit sphere.
Mesh refined(const Mesh& coarse)
{
    Mesh mesh;
    mesh.points = coarse.points;
    std::map<std::pair<int, int>, int> middles;
    const auto middle = [&](int a, int b) {
        const auto [place, is_new] = middles.try_emplace(std::minmax(a, b), mesh.point_count());
        if (is_new) {
            const double *const p = &mesh.points[static_cast<size_t>(3 * a)],
                                *const q = &mesh.points[static_cast<size_t>(3 * b)];
            const double sum[3] = {p[0] + q[0], p[1] + q[1], p[2] + q[2]};
            add_point(mesh, sum[0], sum[1], sum[2]);
            push_out(mesh, mesh.point_count() - 1);
        }
        return place->second;
    };
    for (size_t t = 0; t < coarse.sizes.size(); ++t) {
        const int a = coarse.corners[3 * t], b = coarse.corners[3 * t + 1], c = coarse.corners[3 * t + 2];
        const int ab = middle(a, b), bc = middle(b, c), ca = middle(c, a);
        add_face(mesh, {a, ab, ca});
        add_face(mesh, {b, bc, ab});
        add_face(mesh, {c, ca, bc});
        add_face(mesh, {ab, bc, ca});
    }
    return mesh;
}

} // namespace

Mesh tetrahedron()
{
    return {{0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1}, {3, 3, 3, 3}, {0, 2, 1, 0, 1, 3, 0, 3, 2, 1, 2, 3}};
}

Mesh cube_of_quads()
{
    return {{0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 0, 0, 1, 1, 0, 1, 1, 1, 1, 0, 1, 1},
            {4, 4, 4, 4, 4, 4},
            {0, 3, 2, 1, 4, 5, 6, 7, 0, 1, 5, 4, 2, 3, 7, 6, 1, 2, 6, 5, 0, 4, 7, 3}};
}

Mesh cube_of_triangles()
{
    return triangulated(cube_of_quads());
}

Mesh icosphere(int level)
{
    Mesh mesh = icosahedron();
    for (int i = 0; i < level; ++i)
        mesh = refined(mesh);
    return mesh;
}

Mesh torus(int around, int along, double radius, double thickness)
{
    Mesh mesh;
    const double full_turn = 2.0 * std::numbers::pi;
    for (int i = 0; i < around; ++i)
        for (int j = 0; j < along; ++j) {
            const double u = full_turn * i / around, v = full_turn * j / along;
            const double r = radius + thickness * std::cos(v);
            add_point(mesh, r * std::cos(u), r * std::sin(u), thickness * std::sin(v));
        }
    for (int i = 0; i < around; ++i)
        for (int j = 0; j < along; ++j) {
            const int i1 = (i + 1) % around, j1 = (j + 1) % along;
            add_face(mesh, {i * along + j, i1 * along + j, i1 * along + j1, i * along + j1});
        }
    return mesh;
}

Mesh polygon(int n)
{
    Mesh mesh;
    for (int i = 0; i < n; ++i) {
        const double turn = 2.0 * std::numbers::pi * i / n;
        add_point(mesh, std::cos(turn), std::sin(turn), 0.0);
        mesh.corners.push_back(i);
    }
    mesh.sizes = {n};
    return mesh;
}

Mesh triangulated(const Mesh& quads)
{
    Mesh mesh;
    mesh.points = quads.points;
    for (size_t f = 0; f < quads.sizes.size(); ++f) {
        const int* const c = &quads.corners[4 * f];
        add_face(mesh, {c[0], c[1], c[2]});
        add_face(mesh, {c[0], c[2], c[3]});
    }
    return mesh;
}

Mesh read_obj(const std::string& path)
{
    std::ifstream file(path);
    Mesh mesh;
    for (std::string line, kind, word; std::getline(file, line);) {
        std::istringstream words(line);
        kind.clear();
        words >> kind;
        if (kind == "v") {
            double x, y, z;
            if (words >> x >> y >> z)
                add_point(mesh, x, y, z);
        } else if (kind == "f") {
            std::vector<int> corners;
            while (words >> word) // "7", "7/1" or "7/1/3", the point first
                corners.push_back(std::stoi(word) - 1);
            add_face(mesh, corners);
        }
    }
    return mesh;
}

std::vector<double> triangles_of(const Mesh& mesh)
{
    std::vector<double> triangles;
    for (int corner : mesh.corners) {
        const auto p = mesh.points.begin() + 3 * static_cast<long>(corner);
        triangles.insert(triangles.end(), p, p + 3);
    }
    return triangles;
}

std::vector<double> shifted(std::vector<double> points, double dx, double dy, double dz)
{
    for (size_t i = 0; i < points.size(); i += 3) {
        points[i] += dx;
        points[i + 1] += dy;
        points[i + 2] += dz;
    }
    return points;
}

std::vector<double> subdivided(std::vector<double> triangles, int times)
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

std::vector<double> scaled(std::vector<double> triangles, double x, double y, double z)
{
    for (size_t i = 0; i < triangles.size(); ++i)
        triangles[i] *= i % 3 == 0 ? x : i % 3 == 1 ? y : z;
    return triangles;
}

std::vector<double> landscape(int n)
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
