/* The tour in C99. Build: cc tour.c $(pkg-config --cflags --libs korvale) -pthread */
#include <korvale_c.h>

#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>

enum { kSide = 32, kRays = 10000, kRows = 10000 };
static korvale_error error; /* of the main thread */

/* What is refused ends the tour with its sentence. */
static void check(korvale_status status)
{
    if (status != KORVALE_OK) {
        printf("%s\n", error.text);
        exit(1);
    }
}

/* The rays of one thread, and what they have met. */
typedef struct share {
    const korvale_grid* grid;
    korvale_points origins;
    korvale_ray_columns met;
    korvale_status status;
} share;

static void* cast(void* of_thread)
{
    static const double down[] = {0.015625, 0.0078125, -1};
    const korvale_points direction = {.data = down, .count = 1};
    share* const s = of_thread;
    s->status = korvale_grid_cast(s->grid, &s->origins, &direction, &s->met, NULL, NULL, NULL);
    return NULL;
}

/* Two functions of the host for equations; the second one fails at a negative number. */
static double ripple(const double* x, void* user)
{
    ++*(int*)user;
    return x[0] * x[0] / 8;
}

typedef struct failure {
    korvale_equations* equations;
    char text[64];
} failure;

static double root(const double* x, void* user)
{
    failure* const f = user;
    if (x[0] < 0) {
        snprintf(f->text, sizeof f->text, "no root of %g", x[0]);
        korvale_equations_stop(f->equations);
    }
    return 0;
}

static void forget(void* user)
{
    printf("called %d times\n", *(int*)user);
    free(user);
}

/* Ends a relaxation after 20 steps. */
static int32_t tell(int32_t step, double energy, void* user)
{
    *(double*)user = energy;
    return step < 20;
}

static void outlines(void)
{
    const double square[] = {0, 0, 4, 0, 4, 4, 0, 4};
    korvale_points outline = {.data = square, .count = 4, .dim = 2};
    double moved[12];
    korvale_border border = {.points = moved};
    check(korvale_offset(&outline, 0.5, NULL, &border, &error));
    for (int64_t i = 0; i < border.count; ++i)
        printf("%g %g\n", moved[3 * i], moved[3 * i + 1]);
    outline.count = 2;
    if (korvale_offset(&outline, 0.5, NULL, &border, &error) == KORVALE_BAD_ARGUMENT)
        printf("%s\n", error.text);
}

/* 10,000 rays from two threads at hills of 2,048 triangles. */
static void rays(void)
{
    static double hills[kSide + 1][kSide + 1][3], eyes[kRays][3], distances[kRays];
    static int32_t corners[kSide][kSide][2][3], triangles[kRays];
    for (int i = 0; i <= kSide; ++i)
        for (int j = 0; j <= kSide; ++j) {
            hills[i][j][0] = j;
            hills[i][j][1] = i;
            hills[i][j][2] = (7 * i + 13 * j) % 5 / 4.0;
        }
    for (int i = 0; i < kSide; ++i)
        for (int j = 0; j < kSide; ++j) {
            const int32_t a = i * (kSide + 1) + j, b = a + kSide + 1;
            const int32_t cell[2][3] = {{a, a + 1, b + 1}, {a, b + 1, b}};
            for (int k = 0; k < 6; ++k)
                corners[i][j][k / 3][k % 3] = cell[k / 3][k % 3];
        }
    for (int k = 0; k < kRays; ++k) {
        eyes[k][0] = k % 100 * 0.25 + 0.125;
        eyes[k][1] = k / 100 * 0.25 + 0.0625;
        eyes[k][2] = 9;
    }
    const korvale_triangles mesh = {{.data = hills, .count = (kSide + 1) * (kSide + 1)},
                                    {.data = corners, .count = 6 * kSide * kSide}};
    korvale_grid* grid;
    check(korvale_grid_new(&mesh, NULL, &grid, &error));
    pthread_t threads[2];
    share shares[2];
    for (int t = 0; t < 2; ++t) {
        const int first = t * kRays / 2;
        shares[t] =
            (share){grid, {.data = eyes[first], .count = kRays / 2}, {.distances = distances + first}, KORVALE_OK};
        shares[t].met.triangles = triangles + first;
        pthread_create(&threads[t], NULL, cast, &shares[t]);
    }
    for (int t = 0; t < 2; ++t) {
        pthread_join(threads[t], NULL);
        check(shares[t].status);
    }
    korvale_grid_free(grid);
    double numbers = 0, way = 0;
    for (int k = 0; k < kRays; ++k) {
        numbers += triangles[k];
        way += distances[k];
    }
    printf("triangles %.17g, distances %.17g\n", numbers, way);
}

/* The heights of 10,000 points, written between their other coordinates. */
static void equations(void)
{
    static double points[kRows][3];
    for (int k = 0; k < kRows; ++k) {
        points[k][0] = k % 100 - 50;
        points[k][1] = k / 100;
    }
    const korvale_column columns[] = {{"x", {&points[0][0], kRows, sizeof points[0], 1, KORVALE_DOUBLE}},
                                      {"y", {&points[0][1], kRows, sizeof points[0], 1, KORVALE_DOUBLE}}};
    const korvale_numbers_out heights = {&points[0][2], kRows, sizeof points[0], 1, KORVALE_DOUBLE};
    korvale_equations* system;
    failure failed = {NULL, ""};
    int* const calls = calloc(1, sizeof *calls);
    int32_t wave, steep;
    if (calls == NULL)
        exit(1);
    check(korvale_equations_new(&system, &error));
    check(korvale_equations_declare(system, "x y z t", 0, &error));
    check(korvale_equations_function(system, "RIPPLE", 1, ripple, calls, forget, &error));
    failed.equations = system;
    check(korvale_equations_function(system, "ROOT", 1, root, &failed, NULL, &error));
    check(korvale_equations_add(system, "z = RIPPLE(x) + t * y", &wave, &error));
    check(korvale_equations_add(system, "z = ROOT(x)", &steep, &error));
    check(korvale_equations_set(system, "t", 0.5, &error));
    check(korvale_equations_evaluate_rows(system, wave, columns, 2, &heights, NULL, NULL, &error));
    double sum = 0;
    for (int k = 0; k < kRows; ++k)
        sum += points[k][2];
    printf("heights %.17g\n", sum);
    if (korvale_equations_evaluate_rows(system, steep, columns, 1, &heights, NULL, NULL, &error) == KORVALE_STOPPED)
        printf("%s\n", failed.text);
    if (korvale_equations_add(system, "z = x+", NULL, &error) == KORVALE_BAD_EQUATION)
        printf("%s\n", error.text);
    korvale_equations_free(system);
}

/* A cube whose corner has been pulled out. */
static void relaxation(void)
{
    double cube[8][3];
    const int32_t sizes[] = {4, 4, 4, 4, 4, 4};
    const int32_t corners[] = {0, 2, 3, 1, 4, 5, 7, 6, 0, 1, 5, 4, 2, 6, 7, 3, 0, 4, 6, 2, 1, 3, 7, 5};
    for (int k = 0; k < 24; ++k)
        cube[k / 3][k % 3] = k / 3 >> k % 3 & 1;
    const korvale_faces faces = {
        {.data = cube, .count = 8}, {.data = sizes, .count = 6}, {.data = corners, .count = 24}};
    const korvale_points_out moving = {.data = cube, .count = 8};
    korvale_relaxer* relaxer;
    korvale_relaxation came_to;
    korvale_run_options options;
    double energy;
    korvale_run_defaults(&options, sizeof options);
    options.progress = tell;
    options.user = &energy;
    check(korvale_relaxer_new(&faces, NULL, &relaxer, &error));
    check(korvale_relaxer_keep(relaxer, KORVALE_LENGTHS, 0.1, &error));
    cube[7][2] = 1.5;
    check(korvale_relaxer_run(relaxer, &moving, &options, &came_to, &error));
    korvale_relaxer_free(relaxer);
    printf("stopped after %d of %d steps at %.17g: %.17g\n", came_to.steps, options.steps, energy, cube[7][2]);
}

int main(void)
{
    outlines();
    rays();
    equations();
    relaxation();
    return 0;
}
