// Transforms as 16 numbers.
#include "check.h"

static const double doubling[] = {2, 0, 0, 10, 0, 2, 0, 20, 0, 0, 2, 30, 0, 0, 0, 1};

static korvale_status is_made_of_its_parts(void)
{
    const korvale_srt srt = {{2, 2, 2}, {0, 0, 0}, {10, 20, 30}};
    const double radians[] = {0, 0, 0}, origin[] = {1, 2, 3}, z[] = {0, 0, 5}, reference[] = {0, 1, 0};
    korvale_srt parts = {{0}, {0}, {0}};
    double m[16] = {0};
    korvale_error error;
    korvale_transform_from_srt(&srt, m);
    CHECK_NUMBERS(m, 2, 0, 0, 10, 0, 2, 0, 20, 0, 0, 2, 30, 0, 0, 0, 1);
    korvale_transform_take_apart(m, &parts);
    CHECK_NUMBERS(parts.scale, 2, 2, 2);
    CHECK_NUMBERS(parts.rotation, 0, 0, 0);
    CHECK_NUMBERS(parts.translation, 10, 20, 30);
    korvale_transform_inverse_of_srt(&srt, m);
    CHECK_NUMBERS(m, 0.5, 0, 0, -5, 0, 0.5, 0, -10, 0, 0, 0.5, -15, 0, 0, 0, 1);
    korvale_transform_multiply(doubling, m, m);
    CHECK_NUMBERS(m, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1);
    korvale_transform_rotation(radians, m);
    CHECK_NUMBERS(m, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1);
    TRY_WRITING(m, korvale_transform_into_frame(origin, z, reference, m, &error));
    CHECK_NUMBERS(m, 1, 0, 0, -1, 0, 1, 0, -2, 0, 0, 1, -3, 0, 0, 0, 1);
    REFUSE(korvale_transform_into_frame(NULL, z, reference, m, &error), KORVALE_BAD_ARGUMENT,
           "korvale_transform_into_frame: origin must be given, but it is null");
done:
    return (korvale_status)error.status;
}

static korvale_status moves_one_point_and_turns_one_vector(void)
{
    const double point[] = {1, 2, 3};
    double moved[3] = {0};
    korvale_transform_point(doubling, point, moved);
    CHECK_NUMBERS(moved, 12, 24, 36);
    korvale_transform_vector(doubling, point, moved);
    CHECK_NUMBERS(moved, 2, 4, 6);
    return KORVALE_OK;
}

static korvale_status moves_points_and_is_undone(void)
{
    float vertices[][4] = {{1, 2, 3, 7}, {4, 5, 6, 7}};
    const double directions[] = {1, 2};
    double back[16] = {0}, turned[3] = {0};
    const korvale_points points = {vertices, 2, sizeof vertices[0], 3, KORVALE_FLOAT};
    const korvale_points vectors = {.data = directions, .count = 1, .dim = 2};
    const korvale_points_out in_place = {vertices, 2, sizeof vertices[0], 3, KORVALE_FLOAT};
    const korvale_points_out output = {.data = turned, .count = 1};
    korvale_error error;
    TRY_WRITING(back, korvale_transform_invert(doubling, back, &error));
    CHECK_NUMBERS(back, 0.5, 0, 0, -5, 0, 0.5, 0, -10, 0, 0, 0.5, -15, 0, 0, 0, 1);
    TRY_WRITING(vertices, korvale_transform_points(doubling, &points, &in_place, &error));
    CHECK(vertices[0][0] == 12 && vertices[0][1] == 24 && vertices[1][2] == 42 && vertices[1][3] == 7);
    TRY_WRITING(turned, korvale_transform_vectors(doubling, &vectors, &output, &error));
    CHECK_NUMBERS(turned, 2, 4, 0);
    REFUSE(korvale_transform_points(doubling, &points, &output, &error), KORVALE_BAD_ARGUMENT,
           "korvale_transform_points: output must have 2 points, but it has 1");
    REFUSE(korvale_transform_vectors(doubling, NULL, &output, &error), KORVALE_BAD_ARGUMENT,
           "korvale_transform_vectors: vectors must be given, but it is null");
    REFUSE(korvale_transform_invert(NULL, back, &error), KORVALE_BAD_ARGUMENT,
           "korvale_transform_invert: transform must be given, but it is null");
done:
    return (korvale_status)error.status;
}

void transform_tests(void)
{
    RUN(is_made_of_its_parts);
    RUN(moves_one_point_and_turns_one_vector);
    RUN(moves_points_and_is_undone);
}
