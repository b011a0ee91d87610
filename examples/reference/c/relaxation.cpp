#include "../example.h"

EXAMPLE("korvale_relaxer_new korvale_relaxer_keep korvale_relaxer_step korvale_relaxer_free")
{
    const double square[] = {0, 0, 4, 0, 4, 4, 0, 4};
    double pulled[] = {0, 0, 4, 0, 5, 5, 0, 4}, energy;
    const int32_t triangles[] = {0, 1, 2, 0, 2, 3};
    const korvale_faces faces = {.points = {.data = square, .count = 4, .dim = 2},
                                 .corners = {.data = triangles, .count = 6}};
    const korvale_points_out points = {.data = pulled, .count = 4, .dim = 2};
    korvale_relaxer* relaxer;
    if (korvale_relaxer_new(&faces, NULL, &relaxer, NULL) != KORVALE_OK)
        return;
    korvale_relaxer_keep(relaxer, KORVALE_LENGTHS, 0.25, NULL);
    korvale_relaxer_step(relaxer, &points, 500, &energy, NULL, NULL, NULL);
    printf("energy %.2f\n", energy);
    korvale_relaxer_free(relaxer);
    // > energy 0.00
}

EXAMPLE("korvale_relaxer_hold korvale_relaxer_run korvale_run_defaults")
{
    const double stick[] = {0, 0, 1, 0};
    double pulled[] = {0, 0, 2, 0};
    const int32_t ends[] = {0, 1};
    const uint8_t held[] = {1, 0};
    const korvale_faces faces = {.points = {.data = stick, .count = 2, .dim = 2}};
    const korvale_indices edges = {.data = ends, .count = 2};
    const korvale_points_out points = {.data = pulled, .count = 2, .dim = 2};
    korvale_run_options options;
    korvale_run_defaults(&options, sizeof options);
    options.energy = 0.0005;
    korvale_relaxation done;
    korvale_relaxer* relaxer;
    if (korvale_relaxer_new(&faces, &edges, &relaxer, NULL) != KORVALE_OK)
        return;
    korvale_relaxer_keep(relaxer, KORVALE_LENGTHS, 0.25, NULL);
    korvale_relaxer_hold(relaxer, held, 2, NULL);
    korvale_relaxer_run(relaxer, &points, &options, &done, NULL);
    printf("%s, from %g to %.2f\n", done.stop == KORVALE_RUN_ENERGY ? "in shape" : "not yet", pulled[0], pulled[2]);
    korvale_relaxer_free(relaxer);
    // > in shape, from 0 to 1.04
}

EXAMPLE("korvale_relaxer_size korvale_relaxer_edges korvale_relaxer_record")
{
    const double square[] = {0, 0, 4, 0, 4, 4, 0, 4};
    const int32_t sizes[] = {4}, corners[] = {0, 1, 2, 3};
    const korvale_faces faces = {.points = {.data = square, .count = 4, .dim = 2},
                                 .sizes = {.data = sizes, .count = 1},
                                 .corners = {.data = corners, .count = 4}};
    korvale_relaxer* relaxer;
    if (korvale_relaxer_new(&faces, NULL, &relaxer, NULL) != KORVALE_OK)
        return;
    int64_t count;
    const int32_t* edges = korvale_relaxer_edges(relaxer, &count);
    printf("%d points, %d edges, the last from %d to %d\n", (int)korvale_relaxer_size(relaxer), (int)count, edges[6],
           edges[7]);
    printf("%s\n", korvale_relaxer_record(relaxer) != NULL ? "a PreserveStatus, in C++" : "no memory");
    korvale_relaxer_free(relaxer);
    // > 4 points, 4 edges, the last from 0 to 3
    // > a PreserveStatus, in C++
}

EXAMPLE("korvale_relaxer_energy korvale_relaxer_forces")
{
    const double stick[] = {0, 0, 1, 0}, pulled[] = {0, 0, 3, 0};
    const int32_t ends[] = {0, 1};
    const korvale_faces faces = {.points = {.data = stick, .count = 2, .dim = 2}};
    const korvale_indices edges = {.data = ends, .count = 2};
    const korvale_points points = {.data = pulled, .count = 2, .dim = 2};
    double energy, forces[6];
    korvale_relaxer* relaxer;
    if (korvale_relaxer_new(&faces, &edges, &relaxer, NULL) != KORVALE_OK)
        return;
    korvale_relaxer_keep(relaxer, KORVALE_LENGTHS, 1, NULL);
    korvale_relaxer_energy(relaxer, &points, &energy, NULL);
    korvale_relaxer_forces(relaxer, &points, forces, NULL);
    printf("energy %g, %g and %g along x\n", energy, forces[0], forces[3]);
    korvale_relaxer_free(relaxer);
    // > energy 4, 4 and -4 along x
}
