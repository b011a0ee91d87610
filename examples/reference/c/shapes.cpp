#include "../example.h"

EXAMPLE("korvale_triangulate")
{
    const double arrow[] = {0, 0, 4, 2, 0, 4, 1, 2};
    const korvale_points outline = {.data = arrow, .count = 4, .dim = 2};
    int32_t triangles[2][3];
    int64_t written;
    if (korvale_triangulate(&outline, 1, triangles[0], 2, &written, NULL, NULL, NULL) == KORVALE_OK)
        for (int k = 0; k < written; ++k)
            printf("%d %d %d\n", triangles[k][0], triangles[k][1], triangles[k][2]);
    // > 3 0 1
    // > 1 2 3
}

EXAMPLE("korvale_shapes korvale_shapes_defaults")
{
    const double dot[] = {2, 1, 3, 1, 3, 2}, around[] = {0, 0, 9, 0, 9, 9}, apart[] = {20, 0, 22, 0, 22, 2};
    const korvale_points outlines[] = {{.data = dot, .count = 3, .dim = 2},
                                       {.data = around, .count = 3, .dim = 2},
                                       {.data = apart, .count = 3, .dim = 2}};
    korvale_shapes_options options;
    korvale_shapes_defaults(&options, sizeof options);
    options.tolerance = 0.001;
    int32_t outer[3];
    if (korvale_shapes(outlines, 3, &options, outer, NULL) == KORVALE_OK)
        printf("%d %d %d\n", outer[0], outer[1], outer[2]); // outline 0 is a hole of outline 1
    // > 1 1 2
}
