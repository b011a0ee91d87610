#include "../example.h"

EXAMPLE("korvale_transform_from_srt korvale_transform_inverse_of_srt korvale_transform_point")
{
    const korvale_srt parts = {.scale = {2, 2, 2}, .translation = {10, 0, 0}};
    double place[16], back[16], p[] = {1, 2, 3};
    korvale_transform_from_srt(&parts, place);
    korvale_transform_inverse_of_srt(&parts, back);
    korvale_transform_point(place, p, p);
    printf("%g %g %g\n", p[0], p[1], p[2]);
    korvale_transform_point(back, p, p);
    printf("%g %g %g\n", p[0], p[1], p[2]);
    // > 12 4 6
    // > 1 2 3
}

EXAMPLE("korvale_transform_rotation korvale_transform_vector")
{
    const double quarter[] = {0, 0, 1.5707963267948966}, east[] = {1, 0, 0};
    double turn[16], north[3];
    korvale_transform_rotation(quarter, turn);
    korvale_transform_vector(turn, east, north);
    printf("%.6f %.6f %.6f\n", north[0], north[1], north[2]);
    // > 0.000000 1.000000 0.000000
}

EXAMPLE("korvale_transform_take_apart")
{
    korvale_srt parts = {.scale = {1, 2, 3}, .rotation = {0.25, 0, 0.5}, .translation = {7, 8, 9}};
    double transform[16];
    korvale_transform_from_srt(&parts, transform);
    korvale_transform_take_apart(transform, &parts);
    printf("%.3f %.3f, %g\n", parts.rotation[0], parts.rotation[2], parts.translation[2]);
    // > 0.250 0.500, 9
}

EXAMPLE("korvale_transform_into_frame")
{
    const double origin[] = {10, 0, 0}, z[] = {0, 0, 1}, reference[] = {0, 1, 0}, point[] = {11, 5, 2};
    double frame[16], seen[3];
    if (korvale_transform_into_frame(origin, z, reference, frame, NULL) != KORVALE_OK)
        return;
    korvale_transform_point(frame, point, seen);
    printf("%g %g %g\n", seen[0], seen[1], seen[2]);
    // > 1 5 2
}

EXAMPLE("korvale_transform_multiply korvale_transform_invert")
{
    const korvale_srt twice = {.scale = {2, 2, 2}}, right = {.scale = {1, 1, 1}, .translation = {1, 0, 0}};
    double scale[16], move[16], both[16], undone[16], p[] = {1, 1, 1};
    korvale_transform_from_srt(&twice, scale);
    korvale_transform_from_srt(&right, move);
    korvale_transform_multiply(move, scale, both); // scales first
    korvale_transform_point(both, p, p);
    printf("%g %g %g\n", p[0], p[1], p[2]);
    if (korvale_transform_invert(both, undone, NULL) == KORVALE_OK)
        korvale_transform_point(undone, p, p);
    printf("%g %g %g\n", p[0], p[1], p[2]);
    // > 3 2 2
    // > 1 1 1
}

EXAMPLE("korvale_transform_points korvale_transform_vectors")
{
    const korvale_srt parts = {.scale = {2, 2, 2}, .translation = {10, 0, 0}};
    double place[16];
    korvale_transform_from_srt(&parts, place);
    float pixels[] = {0, 0, 1, 2};
    const korvale_points from = {.data = pixels, .count = 2, .dim = 2, .kind = KORVALE_FLOAT};
    const korvale_points_out to = {.data = pixels, .count = 2, .dim = 2, .kind = KORVALE_FLOAT};
    korvale_transform_points(place, &from, &to, NULL); // in place
    printf("%g %g, %g %g\n", pixels[0], pixels[1], pixels[2], pixels[3]);
    korvale_transform_vectors(place, &from, &to, NULL); // which do not feel the translation
    printf("%g %g, %g %g\n", pixels[0], pixels[1], pixels[2], pixels[3]);
    // > 10 0, 12 4
    // > 20 0, 24 8
}
