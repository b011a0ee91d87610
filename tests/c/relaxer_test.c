// Meshes that remember their shape.
#include "check.h"

// A unit square of two triangles.
static const double square[] = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
static const int16_t corners[] = {0, 1, 2, 0, 2, 3};

static korvale_faces mesh(void)
{
    const korvale_faces faces = {
        {.data = square, .count = 4}, {.data = NULL}, {.data = corners, .count = 6, .kind = KORVALE_INT16}};
    return faces;
}

static int32_t stop_at_second(int32_t step, double energy, void* user)
{
    *(double*)user = energy;
    return step < 2;
}

static korvale_status holds_points_and_tells_energy(void)
{
    const korvale_faces faces = mesh();
    double moved[] = {-0.25, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
    const korvale_points at = {.data = moved, .count = 4};
    const korvale_points_out points = {.data = moved, .count = 4};
    const uint8_t all[] = {1, 1, 1, 1};
    korvale_relaxer* relaxer = NULL;
    int64_t edges = 0;
    double energy = 7, forces[12] = {0};
    korvale_error error;
    TRY_MAKING(relaxer, korvale_relaxer_new(&faces, NULL, &relaxer, &error));
    CHECK(korvale_relaxer_size(relaxer) == 4);
    CHECK(korvale_relaxer_edges(relaxer, &edges)[1] == 1 && edges == 5);
    CHECK(korvale_relaxer_record(relaxer) != NULL);
    TRY(korvale_relaxer_keep(relaxer, KORVALE_AREA, 1, &error));
    TRY_WRITING(energy, korvale_relaxer_energy(relaxer, &at, &energy, &error));
    CHECK(energy == 0.0625); // twice the area is 2.25 and was 2
    TRY_WRITING(forces, korvale_relaxer_forces(relaxer, &at, forces, &error));
    CHECK(forces[0] > 0 && forces[2] == 0); // back inwards
    TRY(korvale_relaxer_hold(relaxer, all, 4, &error));
    TRY_WRITING(moved, korvale_relaxer_step(relaxer, &points, 3, &energy, NULL, NULL, &error));
    CHECK(moved[0] == -0.25);
    TRY(korvale_relaxer_hold(relaxer, NULL, 0, &error));
    TRY_WRITING(moved, korvale_relaxer_step(relaxer, &points, 3, &energy, NULL, NULL, &error));
    CHECK(moved[0] > -0.25 && energy < 0.0625);
    REFUSE(korvale_relaxer_step(relaxer, &points, 3, &energy, stop, NULL, &error), KORVALE_STOPPED,
           "korvale_relaxer_step: it was asked to stop");
    REFUSE(korvale_relaxer_keep(relaxer, KORVALE_AREA, 0, &error), KORVALE_BAD_ARGUMENT,
           "korvale_relaxer_keep: weight must be finite and above 0, but it is 0");
done:
    korvale_relaxer_free(relaxer);
    return (korvale_status)error.status;
}

static korvale_status runs_until_it_is_stopped(void)
{
    const korvale_faces faces = mesh();
    float moved[4][2] = {{-0.25f, 0}, {1, 0}, {1, 1}, {0, 1}};
    const korvale_points_out points = {moved, 4, 0, 2, KORVALE_FLOAT};
    const int32_t ends[] = {0, 1, 1, 2, 2, 3, 3, 0};
    const korvale_indices edges = {.data = ends, .count = 8};
    korvale_relaxer* relaxer = NULL;
    korvale_run_options options;
    korvale_relaxation came_to = {0, 0, 0};
    double told = 0;
    korvale_error error;
    korvale_run_defaults(&options, sizeof options);
    CHECK(options.size == sizeof options && options.steps == 1000 && options.energy == 0 && !options.progress);
    TRY_MAKING(relaxer, korvale_relaxer_new(&faces, &edges, &relaxer, &error));
    TRY(korvale_relaxer_keep(relaxer, KORVALE_LENGTHS, 0.1, &error));
    options.progress = stop_at_second;
    options.user = &told;
    TRY_WRITING(moved, korvale_relaxer_run(relaxer, &points, &options, &came_to, &error));
    CHECK(came_to.steps == 2 && came_to.stop == KORVALE_RUN_CANCELLED && came_to.energy == told);
    CHECK(moved[0][0] > -0.25f);
    REFUSE(korvale_relaxer_run(relaxer, NULL, NULL, &came_to, &error), KORVALE_BAD_ARGUMENT,
           "korvale_relaxer_run: points must be given, but it is null");
    REFUSE(korvale_relaxer_new(&faces, NULL, NULL, &error), KORVALE_BAD_ARGUMENT,
           "korvale_relaxer_new: relaxer must be given, but it is null");
done:
    korvale_relaxer_free(relaxer);
    return (korvale_status)error.status;
}

void relaxer_tests(void)
{
    RUN(holds_points_and_tells_energy);
    RUN(runs_until_it_is_stopped);
}
