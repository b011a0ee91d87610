#pragma once

#include <array>
#include <filesystem>
#include <string>
#include <vector>

#include <korvale.hpp>

#include "geometry.h"

namespace gallery {

/// Triangles on shared points, counter-clockwise seen from outside.
struct Mesh {
    std::vector<Vec3> points;
    std::vector<std::array<int, 3>> triangles;

    Mesh() = default;
    Mesh(std::vector<Vec3> p, std::vector<std::array<int, 3>> t) : points(std::move(p)), triangles(std::move(t)) {}

    /// A mesh that the library has made.
    explicit Mesh(const korvale::Mesh& made);
};

/// The box around a mesh.
struct Box3 {
    Vec3 low, high;

    Vec3 size() const { return high - low; }
    Vec3 middle() const { return 0.5 * (low + high); }
};

Box3 bounds_of(const Mesh& mesh);

/// Reads the points and triangles of an OBJ file; throws std::runtime_error when it cannot.
Mesh read_obj(const std::filesystem::path& file);

/// The text of an OBJ file, each line of `note` as a comment on top.
std::string obj_text(const Mesh& mesh, const std::string& note);

/// Adds the triangles of another mesh.
void append(Mesh& mesh, const Mesh& other);

/// The normal of each corner of each triangle: the mean over the triangles around its point whose own normal lies
/// within `crease` degrees of that triangle's.
std::vector<std::array<Vec3, 3>> corner_normals(const Mesh& mesh, double crease);

} // namespace gallery
