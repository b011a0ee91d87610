#include "../example.h"

EXAMPLE("data_to_xy_xfms")
{
    double wall[] = {0, 5, 0, 4, 5, 0, 4, 5, 3, 0, 5, 3}, flat[12]; // upright, at y = 5
    Data path = {.dim = 3, .count = 4, .dvals = wall}, laid = {.dim = 3, .count = 4, .dvals = flat};
    Xfm down, up;
    std::printf("%d\n", data_to_xy_xfms(&path, down, up, 1));
    TransformData(down, &path, &laid);
    std::printf("%.3f %.3f %.3f %.3f\n", flat[2], flat[5], flat[8], flat[11]);
    // > 1
    // > 0.000 0.000 0.000 0.000
}

EXAMPLE("DATA_to_xy_xfms")
{
    double wall[] = {0, 5, 0, 4, 5, 0, 4, 5, 3, 0, 5, 3}, flat[12]; // upright, at y = 5
    DATAstruct path = {.dim = 3, .count = 4, .dvals = wall}, laid = {.dim = 3, .count = 4, .dvals = flat};
    Xfm down, up;
    DATA_to_xy_xfms(&path, down, up, 1);
    TransformDATA(down, &path, &laid); // counter-clockwise in the plane z = 0
    TransformDATA(up, &laid, &laid);   // and up again
    std::printf("%g %g %g\n", flat[6], flat[7], flat[8]);
    // > 4 5 3
}
