#include "mesh.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace gallery {

Mesh::Mesh(const korvale::Mesh& made) : triangles(made.triangles)
{
    for (const auto& [x, y, z] : made.vertices)
        points.push_back({x, y, z});
}

Mesh read_obj(const std::filesystem::path& file)
{
    std::ifstream in(file);
    if (!in)
        throw std::runtime_error("cannot read " + file.string());
    Mesh mesh;
    for (std::string line; std::getline(in, line);) {
        std::istringstream words(line);
        std::string word;
        words >> word;
        if (word == "v") {
            Vec3 p;
            words >> p.x >> p.y >> p.z;
            mesh.points.push_back(p);
        } else if (word == "f") {
            std::array<int, 3> t{};
            words >> t[0] >> t[1] >> t[2];
            for (int& corner : t)
                if (--corner < 0 || size_t(corner) >= mesh.points.size())
                    throw std::runtime_error(file.string() + ": a triangle without its points");
            mesh.triangles.push_back(t);
        }
    }
    return mesh;
}

std::string obj_text(const Mesh& mesh, const std::string& note)
{
    std::string text;
    std::istringstream lines(note);
    for (std::string line; std::getline(lines, line);)
        text += "# " + line + "\n";
    char line[96];
    for (Vec3 p : mesh.points) {
        std::snprintf(line, sizeof line, "v %.6g %.6g %.6g\n", p.x, p.y, p.z);
        text += line;
    }
    for (const auto& t : mesh.triangles) {
        std::snprintf(line, sizeof line, "f %d %d %d\n", t[0] + 1, t[1] + 1, t[2] + 1);
        text += line;
    }
    return text;
}

Box3 bounds_of(const Mesh& mesh)
{
    Box3 box{mesh.points.front(), mesh.points.front()};
    for (Vec3 p : mesh.points) {
        box.low = {std::min(box.low.x, p.x), std::min(box.low.y, p.y), std::min(box.low.z, p.z)};
        box.high = {std::max(box.high.x, p.x), std::max(box.high.y, p.y), std::max(box.high.z, p.z)};
    }
    return box;
}

void append(Mesh& mesh, const Mesh& other)
{
    const int shift = int(mesh.points.size());
    mesh.points.insert(mesh.points.end(), other.points.begin(), other.points.end());
    for (const auto& t : other.triangles)
        mesh.triangles.push_back({t[0] + shift, t[1] + shift, t[2] + shift});
}

std::vector<std::array<Vec3, 3>> corner_normals(const Mesh& mesh, double crease)
{
    const double least_cosine = std::cos(crease * 3.14159265358979323846 / 180);
    std::vector<Vec3> areas; // a normal as long as twice the triangle's area, so that large ones weigh more
    std::vector<std::vector<int>> around(mesh.points.size());
    for (size_t i = 0; i < mesh.triangles.size(); i++) {
        const auto& t = mesh.triangles[i];
        const Vec3 a = mesh.points[size_t(t[0])];
        areas.push_back(cross(mesh.points[size_t(t[1])] - a, mesh.points[size_t(t[2])] - a));
        for (int corner : t)
            around[size_t(corner)].push_back(int(i));
    }
    std::vector<std::array<Vec3, 3>> normals(mesh.triangles.size());
    for (size_t i = 0; i < mesh.triangles.size(); i++) {
        const Vec3 own = unit(areas[i]);
        for (size_t k = 0; k < 3; k++) {
            Vec3 sum;
            for (int other : around[size_t(mesh.triangles[i][k])])
                if (dot(own, unit(areas[size_t(other)])) >= least_cosine)
                    sum = sum + areas[size_t(other)];
            normals[i][k] = length(sum) > 0 ? unit(sum) : own;
        }
    }
    return normals;
}

} // namespace gallery
