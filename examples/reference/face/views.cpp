#include "../example.h"

EXAMPLE("korvale::BasicPointView")
{
    struct Vertex {
        float position[2];
        std::uint32_t colour;
    };
    const std::vector<Vertex> vertices = {{{0, 0}, 1}, {{4, 0}, 2}, {{0, 4}, 3}};
    const korvale::PointView outline(vertices, &Vertex::position); // nothing is copied
    std::printf("%zu points, the second at %g %g %g\n", outline.size(), outline[1][0], outline[1][1], outline[1][2]);
    std::printf("%zu of the border\n", korvale::offset(outline, 1).points.size());
    // > 3 points, the second at 4 0 0
    // > 3 of the border
}

EXAMPLE("korvale::AnyPoints")
{
    const auto reach = [](korvale::AnyPoints points) { // a function of yours that takes points of any kind
        double greatest = 0;
        for (std::size_t i = 0; i < points.size(); ++i)
            greatest = std::max(greatest, points.view()[i][0]);
        return greatest;
    };
    const std::vector<std::array<float, 2>> mine = {{1, 0}, {3, 0}};
    std::printf("%g %g\n", reach(mine), reach({{5, 0, 0}}));
    // > 3 5
}

EXAMPLE("korvale::TriangleView korvale::AnyCorners")
{
    const std::vector<double> corners = {5, -1, -1, 5, 1, -1, 5, 0, 1}; // nine a triangle
    const korvale::TriangleView wall(corners);
    std::printf("%zu triangle of %zu corners\n", wall.size(), wall.corners().size());
    std::printf("%g away\n", *korvale::RayGrid(corners).distance({0, 0, 0}, {1, 0, 0}));
    // > 1 triangle of 3 corners
    // > 5 away
}

EXAMPLE("korvale::AnyIndices korvale::AnyGroups")
{
    const std::vector<korvale::Point> points = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}};
    const std::vector<std::uint16_t> corners = {0, 1, 2, 0, 2, 3}; // 16 to 64 bits, plain or in groups
    const korvale::RayGrid triangles(points, corners), face(points, {4}, {0, 1, 2, 3});
    std::printf("%zu %zu\n", triangles.size(), face.size());
    // > 2 2
}

EXAMPLE("korvale::ShapeView korvale::AnyOutlines korvale::AnyShape")
{
    const std::vector<korvale::Point> plate = {{0, 0, 0}, {9, 0, 0}, {9, 9, 0}, {0, 9, 0}};
    const std::vector<korvale::Point> hole = {{3, 3, 0}, {6, 3, 0}, {6, 6, 0}, {3, 6, 0}};
    const korvale::ShapeView shape = {plate, hole}; // nothing is copied
    std::printf("%zu and %zu triangles\n", korvale::triangulate(plate).size(), korvale::triangulate(shape).size());
    // > 2 and 8 triangles
}
