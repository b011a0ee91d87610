#include "../example.h"

EXAMPLE("korvale_bevel korvale_bevel_defaults korvale_mesh_view korvale_mesh_reached korvale_mesh_free")
{
    const double plan[] = {0, 0, 8, 0, 8, 4, 0, 4};
    const korvale_points outline = {.data = plan, .count = 4, .dim = 2};
    const korvale_bevel_step profile[] = {{0, 0}, {0, 3}, {-3, 5}}; // a wall, and a roof
    korvale_bevel_options options;                                  // null would do as well
    korvale_bevel_defaults(&options, sizeof options);
    korvale_mesh* house;
    if (korvale_bevel(&outline, 1, profile, 3, &options, &house, NULL) != KORVALE_OK)
        return;
    int64_t steps;
    const double* reached = korvale_mesh_reached(house, &steps);
    printf("%d points, the roof goes in by %g\n", (int)korvale_mesh_view(house).points.count, -reached[steps - 1]);
    korvale_mesh_free(house);
    // > 10 points, the roof goes in by 2
}

EXAMPLE("korvale_tube korvale_tube_defaults")
{
    const double way[] = {0, 0, 10, 0}, square[] = {1, 1, -1, 1, -1, -1, 1, -1};
    const korvale_points path = {.data = way, .count = 2, .dim = 2}, section = {.data = square, .count = 4, .dim = 2};
    korvale_tube_options options;
    korvale_tube_defaults(&options, sizeof options);
    korvale_mesh* pipe;
    if (korvale_tube(&path, &section, &options, &pipe, NULL) != KORVALE_OK)
        return;
    const korvale_triangles all = korvale_mesh_view(pipe);
    double volume;
    korvale_mesh_volume(&all, &volume, NULL);
    printf("%d triangles, volume %g\n", (int)(all.corners.count / 3), volume);
    korvale_mesh_free(pipe);
    // > 12 triangles, volume 40
}

EXAMPLE("korvale_mesh_normals korvale_mesh_areas korvale_mesh_bounds")
{
    const double roof[] = {0, 0, 1, 4, 0, 1, 0, 3, 1}; // one triangle; several follow each other
    const korvale_triangles triangles = {.points = {.data = roof, .count = 3}};
    double normal[3], area, least[3], greatest[3];
    korvale_mesh_normals(&triangles, normal, NULL);
    korvale_mesh_areas(&triangles, &area, NULL);
    korvale_mesh_bounds(&triangles, least, greatest, NULL);
    printf("normal %g %g %g, area %g, up to %g %g %g\n", normal[0], normal[1], normal[2], area, greatest[0],
           greatest[1], greatest[2]);
    // > normal 0 0 1, area 6, up to 4 3 1
}

EXAMPLE("korvale_mesh_volume")
{
    const double corners[] = {0, 0, 0, 6, 0, 0, 0, 6, 0, 0, 0, 6};
    const uint16_t faces[] = {0, 2, 1, 0, 1, 3, 1, 2, 3, 0, 3, 2};
    const korvale_triangles triangles = {.points = {.data = corners, .count = 4},
                                         .corners = {.data = faces, .count = 12, .kind = KORVALE_UINT16}};
    double volume;
    if (korvale_mesh_volume(&triangles, &volume, NULL) == KORVALE_OK)
        printf("%g\n", volume);
    // > 36
}
