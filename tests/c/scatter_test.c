// Points scattered over triangles.
#include "check.h"

static korvale_status scatters_over_shared_points(void)
{
    const float vertices[] = {0, 0, 1, 0, 1, 1, 0, 1};
    const uint16_t corners[] = {0, 1, 2, 0, 2, 3};
    const double heights[] = {0, 1, 2, 1};
    const korvale_triangles triangles = {{vertices, 4, 0, 2, KORVALE_FLOAT},
                                         {.data = corners, .count = 6, .kind = KORVALE_UINT16}};
    const korvale_numbers attributes = {.data = heights, .count = 4};
    float points[10][3] = {{0}};
    int32_t numbers[10] = {0};
    double blended[10] = {0};
    const korvale_points_out output = {points, 10, 0, 3, KORVALE_FLOAT};
    const korvale_numbers_out results = {.data = blended, .count = 10};
    korvale_error error;
    int i;
    TRY_WRITING(points, korvale_scatter(&triangles, 5, NULL, &output, numbers, &attributes, &results, &error));
    for (i = 0; i < 10; ++i) {
        const double x = (double)points[i][0], y = (double)points[i][1];
        CHECK(x > 0 && x < 1 && y > 0 && y < 1 && points[i][2] == 0);
        CHECK(numbers[i] == (y > x));
        CHECK(blended[i] - (x + y) < 1e-6 && x + y - blended[i] < 1e-6); // floats
    }
    REFUSE(korvale_scatter(NULL, 5, NULL, &output, NULL, NULL, NULL, &error), KORVALE_BAD_ARGUMENT,
           "korvale_scatter: triangles must be given, but it is null");
done:
    return (korvale_status)error.status;
}

/// More triangles than are kept without a heap.
static korvale_status scatters_over_many(void)
{
    static double corners[9 * 400];
    const korvale_triangles triangles = {{.data = corners, .count = 3 * 400}, {.data = NULL}};
    double points[3] = {0};
    const korvale_points_out output = {.data = points, .count = 1};
    korvale_error error;
    int i;
    for (i = 0; i < 400; ++i) {
        double* const corner = corners + 9 * i;
        corner[0] = corner[3] = corner[6] = i;
        corner[4] = corner[8] = 1;
    }
    TRY_WRITING(points, korvale_scatter(&triangles, 5, NULL, &output, NULL, NULL, NULL, &error));
    CHECK(points[0] >= 0 && points[0] <= 399 && points[1] > 0 && points[2] > 0 && points[1] + points[2] < 1);
done:
    return (korvale_status)error.status;
}

/// Weights leave the first of two triangles without points; progress stops another call.
static korvale_status scatters_by_weights(void)
{
    const double corners[] = {0, 0, 0, 1, 0, 0, 0, 1, 0, 5, 0, 0, 6, 0, 0, 5, 1, 0};
    const float weights[] = {0, 2};
    const korvale_triangles triangles = {{.data = corners, .count = 6}, {.data = NULL}};
    double points[3] = {0};
    const korvale_points_out output = {.data = points, .count = 1};
    korvale_scatter_options options;
    korvale_error error;
    korvale_scatter_defaults(&options, sizeof options);
    options.weights.data = weights;
    options.weights.count = 2;
    options.weights.kind = KORVALE_FLOAT;
    TRY_WRITING(points, korvale_scatter(&triangles, 5, &options, &output, NULL, NULL, NULL, &error));
    CHECK(points[0] > 5 && points[0] < 6);
    options.progress = stop;
    REFUSE(korvale_scatter(&triangles, 5, &options, &output, NULL, NULL, NULL, &error), KORVALE_STOPPED,
           "korvale_scatter: it was asked to stop");
done:
    return (korvale_status)error.status;
}

void scatter_tests(void)
{
    RUN(scatters_by_weights);
    RUN(scatters_over_shared_points);
    RUN(scatters_over_many);
}
