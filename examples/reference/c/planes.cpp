#include "../example.h"

EXAMPLE("korvale_flatten korvale_flatten_defaults")
{
    double wall[] = {0, 5, 0, 4, 5, 0, 4, 5, 3, 0, 5, 3}, to_plane[16], from_plane[16]; // upright, at y = 5
    const korvale_points path = {.data = wall, .count = 4};
    const korvale_points_out laid = {.data = wall, .count = 4};
    korvale_flatten_options options; // null would do as well
    korvale_flatten_defaults(&options, sizeof options);
    korvale_flatten(&path, &options, to_plane, from_plane, NULL);
    korvale_transform_points(to_plane, &path, &laid, NULL);
    printf("z is %.3f %.3f %.3f %.3f\n", wall[2], wall[5], wall[8], wall[11]);
    korvale_transform_points(from_plane, &path, &laid, NULL);
    printf("%g %g %g\n", wall[6], wall[7], wall[8]);
    // > z is 0.000 0.000 0.000 0.000
    // > 4 5 3
}

EXAMPLE("korvale_frames")
{
    const double corner[] = {0, 0, 4, 0, 4, 4};
    const korvale_points path = {.data = corner, .count = 3, .dim = 2};
    double frames[3 * 16];
    if (korvale_frames(&path, 0, frames, NULL) == KORVALE_OK)
        for (int i = 0; i < 3; ++i) // numbers 2, 6 and 10 are the z axis, which points back along the path
            printf("%.4f %.4f\n", frames[16 * i + 2], frames[16 * i + 6]);
    // > -1.0000 -0.0000
    // > -0.7071 -0.7071
    // > 0.0000 -1.0000
}
