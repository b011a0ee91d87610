#include "../example.h"

EXAMPLE("DataTriSample")
{
    double roof[] = {0, 0, 1, 4, 0, 1, 0, 4, 1}, xyz[3 * 100];
    Data triangles = {.dim = 9, .count = 1, .dvals = roof}, points = {.dim = 3, .count = 100, .dvals = xyz};
    DataTriSample(&triangles, 7, &points, nullptr, nullptr);
    int inside = 0;
    for (int i = 0; i < 100; ++i)
        inside += xyz[3 * i] >= 0 && xyz[3 * i + 1] >= 0 && xyz[3 * i] + xyz[3 * i + 1] <= 4;
    std::printf("%d of 100\n", inside);
    // > 100 of 100
}

EXAMPLE("DATATriSample")
{
    double roof[] = {0, 0, 0, 4, 0, 0, 0, 4, 0}, heights[] = {10, 10, 10}, xyz[3 * 5], at_points[5];
    DATAstruct triangles = {.dim = 9, .count = 1, .dvals = roof}, points = {.dim = 3, .count = 5, .dvals = xyz};
    DATAstruct attributes = {.dim = 3, .count = 1, .dvals = heights}; // one number a vertex
    DATAstruct carried = {.dim = 1, .count = 5, .dvals = at_points};
    DATATriSample(&triangles, 7, &points, &attributes, &carried);
    std::printf("%.6f\n", at_points[4]);
    // > 10.000000
}
