#pragma once

#include <vector>

#include "tests/support/random.h"

// Meshes for tests, all closed and turned outwards unless said otherwise.
namespace korvale::test {

struct Mesh {
    std::vector<double> points; // [3 points]
    std::vector<int> sizes;     // corners of each face
    std::vector<int> corners;   // the point of each corner

    int point_count() const { return static_cast<int>(points.size()) / 3; }
};

/// (0,0,0), (1,0,0), (0,1,0), (0,0,1).
Mesh tetrahedron();

/// The unit cube from the origin.
Mesh cube_of_quads();
Mesh cube_of_triangles();

/// A unit sphere of 20 * 4^level triangles, its points on the sphere.
Mesh icosphere(int level);

/// A torus about the z axis of `around` * `along` quads.
Mesh torus(int around, int along, double radius, double thickness);

/// One planar regular face of n corners in the plane z = 0, of radius 1.
Mesh polygon(int n);

/// A closed triangle mesh of random kind, size, shape and numbering.
Mesh random_closed_mesh(Random& random);

/// Faces of 0 to 7 corners anywhere among `points` points, repeated corners and faces included; nothing is closed.
Mesh random_soup(Random& random, int points, int faces);

/// The same with negative sizes in between, which lead back so that faces share corners of the list, and sometimes with
/// corners behind the last face.
Mesh random_overlapping_soup(Random& random, int points, int faces);

/// Each quad as two triangles.
Mesh triangulated(const Mesh& quads);

/// Every coordinate moved by up to `amount`.
std::vector<double> shaken(Random& random, std::vector<double> points, double amount);

/// Every point moved by the same step.
std::vector<double> shifted(std::vector<double> points, double dx, double dy, double dz);

} // namespace korvale::test
