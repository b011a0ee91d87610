#include "../example.h"

EXAMPLE("path2xfm")
{
    double steps[] = {0, 0, 0, 0, 0, 5, 0, 0, 9};
    Data path = {.dim = 3, .count = 3, .dvals = steps};
    Xfm frames[3];
    path2xfm(&path, 0, frames);
    for (Xfm& frame : frames) // the z axis points back along the path, the last column is the point
        std::printf("z axis %g at height %g\n", frame[2][2], frame[2][3]);
    // > z axis -1 at height 0
    // > z axis -1 at height 5
    // > z axis -1 at height 9
}

EXAMPLE("PATH2xfm")
{
    double corner[] = {0, 0, 0, 4, 0, 0, 4, 4, 0}, section[] = {1, 0, 0}, placed[3];
    DATAstruct path = {.dim = 3, .count = 3, .dvals = corner};
    Xfm frames[3];
    PATH2xfm(&path, 0, frames);
    TransformPoint(frames[1], section, placed); // a point of the cross-section, at the joint
    std::printf("%.4f from the joint\n", std::hypot(placed[0] - 4, placed[1], placed[2]));
    std::printf("%.4f %.4f\n", frames[1][0][2], frames[1][1][2]); // its z axis halves the angle
    // > 1.0000 from the joint
    // > -0.7071 -0.7071
}
