// Roads along lines: a bend, a straight line, a climb seen from above, and one that runs into itself.

#include <cmath>
#include <cstdio>
#include <vector>

#include <korvale.hpp>

using korvale::Point;

namespace {

// To hundredths, without a minus before a zero.
double rounded(double v)
{
    return std::round(100 * v) / 100 + 0.0;
}

void print(const char* what, const korvale::Band& band)
{
    std::printf("%s:", what);
    for (const Point& p : band.border())
        std::printf("  %g %g %g", rounded(p[0]), rounded(p[1]), rounded(p[2]));
    std::printf("%s\n", band.collapsed ? "  (collapsed)" : "");
    if (band.crossing)
        std::printf("  edges %zu and %zu meet\n", band.crossing->first, band.crossing->second);
    for (size_t i = 0; i < band.removed.size(); ++i)
        if (band.removed[i])
            std::printf("  the bend at point %zu is too tight\n", i);
    for (size_t i = 0; i < band.narrowed.size(); ++i)
        if (band.narrowed[i])
            std::printf("  another part of the line is near point %zu\n", i);
}

} // namespace

int main()
{
    const std::vector<Point> bend = {{0, 0, 0}, {10, 0, 0}, {20, 10, 0}};
    print("right of a bend", korvale::band(bend, 2));
    print("left of it", korvale::band(bend, -2));
    print("raised", korvale::band(bend, 2, {.height = 0.5}));

    const std::vector<Point> straight = {{0, 0, 0}, {5, 0, 0}, {10, 0, 0}};
    print("straight", korvale::band(straight, 1.5));

    const std::vector<Point> climb = {{0, 0, 0}, {10, 0, 2}, {10, 10, 3}, {20, 10, 1}};
    print("climb", korvale::band(climb, 1, {.up = Point{0, 0, 1}}));

    const std::vector<Point> notch = {{0, 0, 0}, {5, 0, 0}, {5, 1, 0}, {3, 3, 0}};
    print("notch", korvale::band(notch, -0.75));

    const std::vector<Point> knot = {{0, 0, 0}, {10, 0, 0}, {10, 10, 0}, {5, 10, 0}, {5, 1, 0}};
    print("knot", korvale::band(knot, -1.5));
}
