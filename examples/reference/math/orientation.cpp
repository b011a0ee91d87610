#include "../example.h"

EXAMPLE("orientation_xfm")
{
    double origin[] = {10, 0, 0}, up[] = {0, 0, 1}, ref[] = {0, 2, 0}, frame[16];
    const int found = orientation_xfm(origin, up, ref, frame); // x runs along ref x z, so along the world's x
    double point[] = {11, 5, 2}, seen[3];
    xfm_pnt(frame, point, seen);
    std::printf("%d: %g %g %g\n", found, seen[0], seen[1], seen[2]);
    // > 1: 1 5 2
}

EXAMPLE("orientation_xfm_and_reverse")
{
    double origin[] = {0, 0, 5}, x[] = {0, 1, 0}, z[] = {0, 0, 1}, point[] = {2, 3, 5}, seen[3], back[3];
    Xfm into, out;
    orientation_xfm_and_reverse(origin, x, z, into, out);
    TransformPoint(into, point, seen);
    TransformPoint(out, seen, back);
    std::printf("%g %g %g in the frame, %g %g %g again\n", seen[0], seen[1], seen[2], back[0], back[1], back[2]);
    // > 3 -2 0 in the frame, 2 3 5 again
}
