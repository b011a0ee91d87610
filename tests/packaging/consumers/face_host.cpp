// A host in C++20, over the values of korvale.hpp.
#include <cstdio>
#include <vector>

#ifdef HOST_INCLUDES_BY_FOLDER
#include <korvale/korvale.hpp>
#else
#include <korvale.hpp>
#endif

int main()
{
    const std::vector<korvale::Point> square = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}};
    const korvale::Offset border = korvale::offset(square, 0.5);
    std::printf("%d of %g\n", static_cast<int>(border.points.size()), border.points[1][0]);
}
