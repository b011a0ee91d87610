#include "../example.h"

EXAMPLE("korvale_scatter korvale_scatter_defaults")
{
    const double ground[] = {0, 0, 7, 4, 0, 7, 0, 4, 7, 4, 0, 7, 4, 4, 7, 0, 4, 7}, only_second[] = {0, 1};
    const korvale_triangles triangles = {.points = {.data = ground, .count = 6}};
    korvale_scatter_options options;
    korvale_scatter_defaults(&options, sizeof options);
    options.weights.data = only_second;
    options.weights.count = 2;
    double trees[5 * 3];
    int32_t on[5];
    const korvale_points_out output = {.data = trees, .count = 5};
    if (korvale_scatter(&triangles, 42, &options, &output, on, NULL, NULL, NULL) == KORVALE_OK)
        printf("on triangle %d at height %.6f\n", on[4], trees[14]);
    // > on triangle 1 at height 7.000000
}
