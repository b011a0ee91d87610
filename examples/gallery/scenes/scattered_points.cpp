// Points scattered over a mesh evenly by area. Each carries attributes of its triangle's corners: here the normal, and
// the number of the triangle, which is the same at all three and so arrives unchanged.

#include "plot.h"
#include "scene.h"
#include "shade.h"

#include <algorithm>
#include <cmath>

namespace gallery {
namespace {

constexpr int kPoints = 5000;

struct Sample {
    Vec3 point, normal;
    int triangle;
};

std::vector<Sample> scatter(const Mesh& mesh)
{
    std::vector<Vec3> corners;
    std::vector<double> attributes;
    const auto normals = corner_normals(mesh, 60);
    for (size_t i = 0; i < mesh.triangles.size(); i++) {
        for (size_t k = 0; k < 3; k++) {
            corners.push_back(mesh.points[size_t(mesh.triangles[i][k])]);
            const Vec3 n = normals[i][k];
            attributes.insert(attributes.end(), {n.x, n.y, n.z, double(i)});
        }
    }
    const korvale::Scattered scattered = korvale::scatter(corners, kPoints, 2024, attributes);
    std::vector<Sample> samples;
    for (size_t i = 0; i < scattered.points.size(); i++) {
        const auto [x, y, z] = scattered.points[i];
        const double* a = scattered.attributes.data() + i * scattered.width;
        samples.push_back({{x, y, z}, unit({a[0], a[1], a[2]}), int(std::lround(a[3]))});
    }
    return samples;
}

// A thin pyramid on the surface, along the normal.
void add_quill(Mesh& mesh, const Sample& sample, double size)
{
    const Vec3 n = sample.normal;
    const Vec3 u = unit(cross(n, std::fabs(n.z) < 0.9 ? Vec3{0, 0, 1} : Vec3{1, 0, 0})), v = cross(n, u);
    const int first = int(mesh.points.size());
    for (int k = 0; k < 3; k++) {
        const double angle = 2.0943951 * k;
        mesh.points.push_back(sample.point + size * (std::cos(angle) * u + std::sin(angle) * v));
    }
    mesh.points.push_back(sample.point + 6 * size * n);
    for (int k = 0; k < 3; k++)
        mesh.triangles.push_back({first + k, first + (k + 1) % 3, first + 3});
}

Picture draw_teapot(const Mesh& teapot, const std::vector<Sample>& samples, const Box3& box)
{
    const Vec3 middle = box.middle(), size = box.size();
    Stage stage({middle + Vec3{0.25 * size.x, 0.75 * size.x, 1.7 * size.x}, middle, {0, 1, 0}, 21.5});
    stage.add(teapot, {hex(0xd8d2c4), 0.1, 30, 60});
    Mesh quills;
    std::vector<Colour> colours;
    for (const Sample& sample : samples) {
        add_quill(quills, sample, 0.006 * size.x * 0.5);
        const Vec3 n = sample.normal;
        for (int k = 0; k < 4; k++)
            colours.push_back({0.5 + 0.45 * n.x, 0.5 + 0.45 * n.y, 0.5 + 0.45 * n.z});
    }
    stage.add(quills, {kPaper, 0, 1, 0, false}, colours);
    return stage.render(kWidth, 640);
}

double area(const Mesh& mesh, const std::array<int, 3>& t)
{
    const Vec3 p0 = mesh.points[size_t(t[0])];
    return 0.5 * length(cross(mesh.points[size_t(t[1])] - p0, mesh.points[size_t(t[2])] - p0));
}

// The share of the area and of the points that lie in each of 31 groups of 32 triangles.
Picture draw_shares(const Gallery& hall, const Mesh& teapot, const std::vector<Sample>& samples)
{
    constexpr int kGroup = 32;
    const int groups = (int(teapot.triangles.size()) + kGroup - 1) / kGroup;
    std::vector<double> areas(size_t(groups), 0.0), points(size_t(groups), 0.0);
    double total = 0;
    for (size_t i = 0; i < teapot.triangles.size(); i++) {
        const double a = area(teapot, teapot.triangles[i]);
        areas[i / kGroup] += a;
        total += a;
    }
    for (const Sample& sample : samples)
        points[size_t(sample.triangle) / kGroup] += 1;

    double highest = 0;
    for (size_t g = 0; g < areas.size(); g++) {
        areas[g] *= 100 / total;
        points[g] *= 100.0 / double(samples.size());
        highest = std::max({highest, areas[g], points[g]});
    }
    Picture picture(kWidth, 420);
    Plot plot(picture, hall.sans(), {70, 50}, {kWidth - 100.0, 300}, {{0, 0}, {double(groups), 1.1 * highest}});
    plot.axes("per cent of the whole", "groups of 32 triangles");
    for (int g = 0; g < groups; g++) {
        plot.bar(g + 0.12, g + 0.5, areas[size_t(g)], hex(0xb9b2a2));
        plot.bar(g + 0.5, g + 0.88, points[size_t(g)], kOrange);
    }
    draw_text(picture, hall.sans(), {kWidth - 270.0, 38}, 19, "area", hex(0x8c8574));
    draw_text(picture, hall.sans(), {kWidth - 200.0, 38}, 19, "points", kOrange);
    return picture;
}

void draw_scattered_points(Gallery& hall)
{
    const Mesh teapot = read_obj(hall.data("teapot.obj"));
    const std::vector<Sample> samples = scatter(teapot);
    hall.progress(0.3);
    hall.show("scattered-points.png", draw_teapot(teapot, samples, bounds_of(teapot)),
              "Five thousand points scattered over the teapot, each drawn as a quill along the normal that it was "
              "given from the corners of its triangle and coloured by it.");
    hall.show("scattered-shares.png", draw_shares(hall, teapot, samples),
              "What each group of triangles has of the area and what it got of the points.");
}

} // namespace

Scene scattered_points()
{
    return {"Scattered points",
            "Points are scattered over triangles evenly by area and carry the values of the corners. The same seed "
            "gives the same points on every machine, as long as no other thread draws meanwhile.",
            draw_scattered_points, "scattered_points.cpp", "arrays.md"};
}

} // namespace gallery
