// Triangles for rays.
#include "check.h"

#include <math.h>

// A unit square of two triangles at z = 0 and a triangle above its lower half at z = 1.
static const double vertices[] = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 0, 0, 1, 1, 0, 1, 1, 1, 1};
static const int64_t corners[] = {0, 1, 2, 0, 2, 3, 4, 5, 6};
static const double above[] = {0.5, 0.25, 5}, beside[] = {9, 9, 5}, down[] = {0, 0, -2};

static korvale_triangles mesh(void)
{
    const korvale_triangles triangles = {{.data = vertices, .count = 7},
                                         {.data = corners, .count = 9, .kind = KORVALE_INT64}};
    return triangles;
}

static int32_t count_calls(double done, void* user)
{
    (void)done;
    ++*(int*)user;
    return 1;
}

static korvale_status tells_what_a_ray_meets(void)
{
    const korvale_triangles triangles = mesh();
    korvale_grid_options options;
    korvale_grid* grid = NULL;
    korvale_hit hit, hits[2] = {{.triangle = 9}, {.triangle = 9}};
    int32_t cells[3] = {0};
    int64_t met = 9;
    double distance = 7;
    int calls = 0;
    korvale_error error;
    korvale_grid_defaults(&options, sizeof options);
    CHECK(options.size == sizeof options && options.borrow == 0 && options.cells[0] == 0 && !options.progress);
    options.cells[0] = options.cells[1] = 2;
    options.progress = count_calls;
    options.user = &calls;
    TRY_MAKING(grid, korvale_grid_new(&triangles, &options, &grid, &error));
    CHECK(calls > 0);
    CHECK(korvale_grid_size(grid) == 3 && korvale_grid_face(grid, 2) == 2 && korvale_grid_face(grid, 3) == -1);
    korvale_grid_cells(grid, cells);
    CHECK(cells[0] == 2 && cells[1] == 2 && cells[2] == 1);
    CHECK_NUMBERS(korvale_grid_triangles(grid), 0, 0, 0, 1, 0, 0, 1, 1, 0);
    CHECK(korvale_grid_count(grid, beside, down, &distance) == 0 && distance == 7);
    CHECK(korvale_grid_count(grid, above, down, &distance) == 2 && distance == 4);
    hit = korvale_grid_nearest(grid, above, down);
    CHECK(hit.distance == 4 && hit.triangle == 2);
    CHECK(hit.corners[0] == 4 && hit.corners[1] == 5 && hit.corners[2] == 6);
    CHECK_NUMBERS(hit.weights, 0.5, 0.25, 0.25);
    CHECK(korvale_grid_nearest(grid, beside, down).triangle == -1);
    CHECK(korvale_grid_any(grid, above, down, 4) == 1 && korvale_grid_any(grid, above, down, 3.5) == 0);
    TRY_WRITING(hits, korvale_grid_hits(grid, above, down, hits, 2, &met, &error));
    CHECK(met == 2 && hits[0].triangle == 2 && hits[1].triangle == 0 && hits[1].distance == 5);
    CHECK(korvale_grid_record(grid) != NULL || heap_has_failed());
    REFUSE(korvale_grid_hits(grid, NULL, down, hits, 2, &met, &error), KORVALE_BAD_ARGUMENT,
           "korvale_grid_hits: origin must be given, but it is null");
done:
    korvale_grid_free(grid);
    return (korvale_status)error.status;
}

static korvale_status casts_many_rays(void)
{
    const korvale_triangles triangles = mesh();
    const float froms[] = {0.5f, 0.25f, 5, 0.25f, 0.5f, 5, 9, 9, 5};
    const korvale_points origins = {froms, 3, 0, 3, KORVALE_FLOAT}, along = {.data = down, .count = 1};
    korvale_grid* grid = NULL;
    double distances[3] = {7, 7, 7}, weights[9] = {0};
    int32_t numbers[3] = {7, 7, 7}, counts[3] = {7, 7, 7};
    const korvale_ray_columns columns = {distances, numbers, counts, weights};
    korvale_error error;
    TRY_MAKING(grid, korvale_grid_new(&triangles, NULL, &grid, &error));
    TRY_WRITING(distances, korvale_grid_cast(grid, &origins, &along, &columns, NULL, NULL, &error));
    CHECK(distances[0] == 4 && distances[1] == 5 && isinf(distances[2]));
    CHECK(numbers[0] == 2 && numbers[1] == 1 && numbers[2] == -1);
    CHECK(counts[0] == 2 && counts[1] == 1 && counts[2] == 0);
    CHECK_NUMBERS(weights, 0.5, 0.25, 0.25, 0.5, 0.25, 0.25, 0, 0, 0);
    REFUSE(korvale_grid_cast(grid, &origins, &along, &columns, stop, NULL, &error), KORVALE_STOPPED,
           "korvale_grid_cast: it was asked to stop");
    REFUSE(korvale_grid_cast(grid, &origins, &along, NULL, NULL, NULL, &error), KORVALE_BAD_ARGUMENT,
           "korvale_grid_cast: columns must be given, but it is null");
done:
    korvale_grid_free(grid);
    return (korvale_status)error.status;
}

static korvale_status tells_inside_from_outside(void)
{
    const double cube[] = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 0, 0, 1, 1, 0, 1, 1, 1, 1, 0, 1, 1};
    const int32_t sizes[] = {4, 4, 4, 4, 4, 4};
    const uint32_t numbers[] = {0, 3, 2, 1, 4, 5, 6, 7, 0, 1, 5, 4, 1, 2, 6, 5, 2, 3, 7, 6, 3, 0, 4, 7};
    const korvale_faces faces = {{.data = cube, .count = 8},
                                 {.data = sizes, .count = 6},
                                 {.data = numbers, .count = 24, .kind = KORVALE_UINT32}};
    const double at[] = {0.5, 0.25, 0.75, 0.5, 0.25, 1.75};
    const korvale_points points = {.data = at, .count = 2};
    korvale_grid* grid = NULL;
    uint8_t inside[2] = {7, 7};
    korvale_error error;
    TRY_MAKING(grid, korvale_grid_of_faces(&faces, NULL, &grid, &error));
    CHECK(korvale_grid_size(grid) == 12 && korvale_grid_face(grid, 3) == 1 && korvale_grid_face(grid, 11) == 5);
    TRY(korvale_grid_contains(grid, &points, inside, NULL, NULL, &error));
    CHECK(inside[0] == 1 && inside[1] == 0);
    REFUSE(korvale_grid_contains(grid, &points, inside, stop, NULL, &error), KORVALE_STOPPED,
           "korvale_grid_contains: it was asked to stop");
done:
    korvale_grid_free(grid);
    return (korvale_status)error.status;
}

static korvale_status borrows_triangles_that_move(void)
{
    double triangle[] = {0, 0, 0, 1, 0, 0, 1, 1, 0};
    const korvale_triangles triangles = {{.data = triangle, .count = 3}, {.data = NULL}};
    const korvale_triangles shared = mesh();
    korvale_grid_options options;
    korvale_grid *grid = NULL, *none = NULL;
    korvale_error error;
    korvale_grid_defaults(&options, sizeof options);
    options.borrow = 1;
    TRY_MAKING(grid, korvale_grid_new(&triangles, &options, &grid, &error));
    CHECK(korvale_grid_triangles(grid) == triangle);
    CHECK(korvale_grid_record(grid) != NULL);
    triangle[2] = triangle[5] = triangle[8] = 1;
    CHECK(korvale_grid_nearest(grid, above, down).distance == 4);
    none = grid;
    REFUSE(
        korvale_grid_new(&shared, &options, &none, &error), KORVALE_BAD_ARGUMENT,
        "korvale_grid_new: triangles must be packed doubles without corner numbers, but they would have to be copied");
    CHECK(none == NULL);
done:
    korvale_grid_free(grid);
    korvale_grid_free(NULL);
    return (korvale_status)error.status;
}

void grid_tests(void)
{
    RUN(tells_what_a_ray_meets);
    RUN(casts_many_rays);
    RUN(tells_inside_from_outside);
    RUN(borrows_triangles_that_move);
}
