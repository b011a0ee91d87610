#include "../example.h"

EXAMPLE("find_line")
{
    double from[] = {0, 2, 0}, to[] = {5, 2, 0}, line[3];
    const int found = find_line(from, to, line);
    std::printf("%d: %g x %+g y %+g = 0\n", found, line[0] + 0.0, line[1], line[2]);
    double above[] = {9, 6, 0}; // a x + b y + c is the distance, positive on the left
    std::printf("%g\n", line[0] * above[0] + line[1] * above[1] + line[2]);
    // > 1: 0 x +1 y -2 = 0
    // > 4
}

EXAMPLE("line_normalize")
{
    double line[] = {3, 4, -10}; // 3 x + 4 y = 10
    line_normalize(line);
    std::printf("%g %g %g: the origin is %g away\n", line[0], line[1], line[2], std::fabs(line[2]));
    // > 0.6 0.8 -2: the origin is 2 away
}

EXAMPLE("find_intersect")
{
    double rising[] = {-1, 1, 0}, level[] = {0, 1, -3}, meeting[3]; // y = x and y = 3
    const double sine = find_intersect(rising, level, meeting);
    std::printf("%.4f at %g %g\n", sine, meeting[0], meeting[1]);
    double beside[] = {0, 1, -4};
    std::printf("%g\n", find_intersect(level, beside, meeting)); // they do not meet
    // > -0.7071 at 3 3
    // > -1
}
