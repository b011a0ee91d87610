#include "../example.h"

EXAMPLE("TwoByTwoDeterminant")
{
    double m[2][2] = {{3, 1}, {2, 4}};
    std::printf("%g\n", TwoByTwoDeterminant(m));
    // > 10
}

EXAMPLE("SolveTwoByTwo")
{
    double equations[2][3] = {{2, 1, 5}, {1, -1, 1}}; // 2 x + y = 5 and x - y = 1
    double x, y;
    if (SolveTwoByTwo(equations, &x, &y))
        std::printf("x = %g, y = %g\n", x, y);
    double parallel[2][3] = {{1, 2, 3}, {2, 4, 7}};
    std::printf("%d\n", SolveTwoByTwo(parallel, &x, &y)); // no solution, nothing written
    // > x = 2, y = 1
    // > 0
}
