// Offsets a square by half a unit: all it takes to use the library.

#include <cstdio>
#include <korvale.hpp>
#include <vector>

int main()
{
    const std::vector<korvale::Point> square = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}};
    const korvale::Offset border = korvale::offset(square, 0.5); // outwards; negative is inwards
    for (const korvale::Point& p : border.points)
        std::printf("%g %g\n", p[0], p[1]);
}
