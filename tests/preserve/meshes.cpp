#include "tests/preserve/meshes.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numbers>
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

/// The same mesh with its points in another order.
Mesh renumbered(const Mesh& mesh, Random& random)
{
    std::vector<int> place(static_cast<size_t>(mesh.point_count()));
    for (size_t i = 0; i < place.size(); ++i) {
        const auto j = static_cast<size_t>(random.below(static_cast<int>(i) + 1));
        place[i] = place[j];
        place[j] = static_cast<int>(i);
    }
    Mesh result = mesh;
    for (size_t i = 0; i < place.size(); ++i)
        for (size_t q = 0; q < 3; ++q)
            result.points[3 * static_cast<size_t>(place[i]) + q] = mesh.points[3 * i + q];
    for (int& corner : result.corners)
        corner = place[static_cast<size_t>(corner)];
    return result;
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

Mesh random_closed_mesh(Random& random)
{
    Mesh mesh;
    switch (random.below(4)) {
    case 0:
        mesh = tetrahedron();
        break;
    case 1:
        mesh = cube_of_triangles();
        break;
    case 2:
        mesh = icosphere(random.below(3));
        break;
    default:
        mesh = triangulated(torus(random.between(3, 9), random.between(3, 7), 2.0, random.uniform(0.4, 0.9)));
        break;
    }
    mesh.points = shifted(mesh.points, random.uniform(-1, 1), random.uniform(-1, 1), random.uniform(-1, 1));
    mesh.points = shaken(random, mesh.points, 0.08);
    return renumbered(mesh, random);
}

Mesh random_soup(Random& random, int points, int faces)
{
    Mesh mesh;
    mesh.points = random.uniforms(3 * points, -1, 1);
    for (int f = 0; f < faces; ++f) {
        const int n = random.one_in(3) ? random.below(8) : 3;
        mesh.sizes.push_back(n);
        for (int k = 0; k < n; ++k)
            mesh.corners.push_back(random.below(points));
    }
    return mesh;
}

Mesh random_overlapping_soup(Random& random, int points, int faces)
{
    Mesh mesh = random_soup(random, points, faces);
    std::vector<int> sizes;
    int start = 0, reach = 0;
    for (int n : mesh.sizes) {
        if (random.one_in(3) && start > 0) {
            sizes.push_back(-random.between(1, start));
            start += sizes.back();
        }
        sizes.push_back(n);
        start += n;
        reach = std::max(reach, start);
    }
    mesh.sizes = sizes;
    mesh.corners.resize(static_cast<size_t>(reach));
    if (random.one_in(2))
        mesh.corners.push_back(random.below(points));
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

std::vector<double> shaken(Random& random, std::vector<double> points, double amount)
{
    for (double& x : points)
        x += random.uniform(-amount, amount);
    return points;
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

} // namespace korvale::test
