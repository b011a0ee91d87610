#pragma once

#include <korvale.hpp>

#include <cmath>
#include <cstdio>

// What the examples of the headers take as given.
struct Given {
    std::vector<korvale::Point> outline, path, loop, octagon, middle, vertices, copy, directions;
    std::vector<std::vector<korvale::Point>> letter;
    std::vector<korvale::Triangle> triangles;
    std::vector<double> corners, vertex_normals;
    std::vector<int> starts;
    std::vector<bool> is_pinned;
    korvale::Point eye = {}, point = {}, direction = {};
};

#define GIVEN(given)                                                                                                   \
    [[maybe_unused]] auto& [outline, path, loop, octagon, middle, vertices, copy, directions, letter, triangles,       \
                            corners, vertex_normals, starts, is_pinned, eye, point, direction] = given;                \
    [[maybe_unused]] korvale::Equations equations;

struct Colour {
    float r, g, b;
};
inline std::vector<Colour> colours_of(const std::vector<korvale::Point>& points)
{
    return std::vector<Colour>(points.size());
}
inline std::vector<double> heat_of(const std::vector<korvale::Point>& points)
{
    return std::vector<double>(points.size());
}

template <class... T>
void draw(const T&...)
{
}
template <class... T>
void draw_at(const T&...)
{
}
template <class... T>
void select(const T&...)
{
}
template <class... T>
void warn_about_edge(const T&...)
{
}
