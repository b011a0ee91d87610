#pragma once

#include <string>
#include <vector>

// Meshes for tests and benchmarks, all closed and turned outwards unless said otherwise.
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

/// Each quad as two triangles.
Mesh triangulated(const Mesh& quads);

/// The mesh of a Wavefront file; empty when it cannot be read.
Mesh read_obj(const std::string& path);

/// The corners of a mesh of triangles one after the other, nine numbers a triangle.
std::vector<double> triangles_of(const Mesh& mesh);

/// A landscape of 2 n n triangles over the unit square.
std::vector<double> landscape(int n);

/// Each triangle divided into four at the midpoints of its edges, `times` times.
std::vector<double> subdivided(std::vector<double> triangles, int times);

std::vector<double> scaled(std::vector<double> points, double x, double y, double z);

/// Every point moved by the same step.
std::vector<double> shifted(std::vector<double> points, double dx, double dy, double dz);

} // namespace korvale::test
