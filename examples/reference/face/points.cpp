#include "../example.h"

EXAMPLE("korvale::Points")
{
    korvale::Points border = korvale::offset({{0, 0, 0}, {4, 0, 0}, {0, 4, 0}}, 0).points;
    const std::vector<korvale::Point> copy(border.begin(), border.end());
    double* const numbers = border.release(); // for memory that somebody else frees
    std::printf("%zu points, x of the second is %g; %zu are left\n", copy.size(), numbers[3], border.size());
    std::free(numbers);
    // > 3 points, x of the second is 4; 0 are left
}

EXAMPLE("korvale::Array")
{
    const korvale::Array<std::uint8_t> removed = korvale::offset({{0, 0, 0}, {4, 0, 0}, {0, 4, 0}}, -3).removed;
    std::printf("%d of %zu\n", int(std::count(removed.begin(), removed.end(), 1)), removed.size());
    // > 2 of 3
}
