// Planes of outlines and frames along paths.
#include "check.h"

static korvale_status lays_a_square_flat(void)
{
    const double points[] = {0, 0, 5, 0, 4, 5, 4, 4, 5, 4, 0, 5};
    const float few[] = {0, 0, 0.5f, 0, 0, 0.25f};
    const korvale_points path = {.data = points, .count = 4};
    const korvale_points small = {few, 3, 0, 2, KORVALE_FLOAT};
    korvale_flatten_options options;
    double to_plane[16] = {0}, from_plane[16] = {0};
    korvale_error error;
    TRY_WRITING(to_plane, korvale_flatten(&path, NULL, to_plane, from_plane, &error));
    CHECK_NUMBERS(to_plane, 0, 1, 0, 0, 1, 0, 0, 0, 0, 0, -1, 5, 0, 0, 0, 1);
    CHECK_NUMBERS(from_plane, 0, 1, 0, 0, 1, 0, 0, 0, 0, 0, -1, 5, 0, 0, 0, 1);
    TRY_WRITING(to_plane, korvale_flatten(&small, NULL, to_plane, NULL, &error));
    CHECK_NUMBERS(to_plane, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1);
    korvale_flatten_defaults(&options, sizeof options);
    CHECK(options.size == sizeof options && options.open == 0 && options.by_extremes == 0);
    options.by_extremes = 1;
    TRY_WRITING(to_plane, korvale_flatten(&small, &options, to_plane, NULL, &error));
    REFUSE(korvale_flatten(NULL, NULL, to_plane, NULL, &error), KORVALE_BAD_ARGUMENT,
           "korvale_flatten: path must be given, but it is null");
done:
    return (korvale_status)error.status;
}

static korvale_status carries_a_frame_along(void)
{
    const double points[] = {0, 0, 0, 0, 0, 2, 0, 0, 5}, loop[] = {0, 0, 0, 0.5, 0, 0, 0.5, 0.25, 0};
    const korvale_points path = {.data = points, .count = 3}, closed = {.data = loop, .count = 3};
    double frames[48] = {0};
    korvale_error error;
    TRY_WRITING(frames, korvale_frames(&path, 0, frames, &error));
    CHECK(frames[10] == -1 && frames[16 + 10] == -1 && frames[32 + 10] == -1);
    CHECK(frames[11] == 0 && frames[16 + 11] == 2 && frames[32 + 11] == 5);
    TRY_WRITING(frames, korvale_frames(&closed, 1, frames, &error));
    CHECK(frames[16 + 3] == 0.5 && frames[32 + 7] == 0.25);
    REFUSE(korvale_frames(&path, 0, NULL, &error), KORVALE_BAD_ARGUMENT,
           "korvale_frames: frames must be given, but it is null");
done:
    return (korvale_status)error.status;
}

void plane_tests(void)
{
    RUN(lays_a_square_flat);
    RUN(carries_a_frame_along);
}
