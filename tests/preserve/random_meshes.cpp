#include "tests/preserve/random_meshes.h"

#include <algorithm>

namespace korvale::test {
namespace {

/// The same mesh with its points in another order.
Mesh renumbered(const Mesh& mesh, Draws& random)
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

Mesh random_closed_mesh(Draws& random)
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

Mesh random_soup(Draws& random, int points, int faces)
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

Mesh random_overlapping_soup(Draws& random, int points, int faces)
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

std::vector<double> shaken(Draws& random, std::vector<double> points, double amount)
{
    for (double& x : points)
        x += random.uniform(-amount, amount);
    return points;
}

} // namespace korvale::test
