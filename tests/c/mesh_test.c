// Solids of outlines and paths, and what meshes measure.
#include "check.h"

// A box of sides 2, 3 and 5, facing outwards.
static const float box_points[] = {0, 0, 0, 2, 0, 0, 0, 3, 0, 2, 3, 0, 0, 0, 5, 2, 0, 5, 0, 3, 5, 2, 3, 5};
static const uint16_t box_corners[] = {0, 2, 3, 0, 3, 1, 4, 5, 7, 4, 7, 6, 0, 1, 5, 0, 5, 4,
                                       2, 6, 7, 2, 7, 3, 0, 4, 6, 0, 6, 2, 1, 3, 7, 1, 7, 5};

static korvale_triangles box(int64_t triangles)
{
    const korvale_triangles box = {{box_points, 8, 0, 3, KORVALE_FLOAT},
                                   {box_corners, 3 * triangles, 0, KORVALE_UINT16}};
    return box;
}

static korvale_status measures_a_box(void)
{
    const korvale_triangles triangles = box(12), open = box(11);
    double normals[12][3] = {{0}}, areas[12] = {0}, volume = 0;
    korvale_error error;
    TRY_WRITING(normals, korvale_mesh_normals(&triangles, normals[0], &error));
    CHECK_NUMBERS(normals[0], 0, 0, -1);
    CHECK_NUMBERS(normals[11], 1, 0, 0);
    TRY_WRITING(areas, korvale_mesh_areas(&triangles, areas, &error));
    CHECK_NUMBERS(areas, 3, 3, 3, 3, 5, 5, 5, 5, 7.5, 7.5, 7.5, 7.5);
    TRY_WRITING(areas, korvale_mesh_bounds(&triangles, areas, areas + 3, &error));
    CHECK_NUMBERS(areas, 0, 0, 0, 2, 3, 5);
    TRY_WRITING(volume, korvale_mesh_volume(&triangles, &volume, &error));
    CHECK(volume == 30);
    REFUSE(korvale_mesh_volume(&open, &volume, &error), KORVALE_BAD_ARGUMENT,
           "korvale_mesh_volume: triangles must be closed and face one way, but the edge between points 1 and 5 "
           "runs one way in 1 and the other way in 0 of the triangles");
    CHECK(volume == 30);
done:
    return (korvale_status)error.status;
}

static korvale_status bevels_a_plate_with_a_hole(void)
{
    const float plate[] = {0, 0, 4, 0, 4, 4, 0, 4}, hole[] = {1, 1, 2, 1, 2, 2, 1, 2};
    const korvale_points shape[] = {{plate, 4, 0, 2, KORVALE_FLOAT}, {hole, 4, 0, 2, KORVALE_FLOAT}};
    const korvale_bevel_step profile[] = {{0, 0}, {0, 2}};
    korvale_bevel_options options;
    korvale_mesh *mesh = NULL, *none = NULL;
    korvale_triangles triangles;
    double volume = 0;
    korvale_error error;
    korvale_bevel_defaults(&options, sizeof options);
    TRY_MAKING(mesh, korvale_bevel(shape, 2, profile, 2, &options, &mesh, &error));
    triangles = korvale_mesh_view(mesh);
    CHECK(triangles.points.count == 16 && triangles.corners.count == 3 * 32);
    TRY_WRITING(volume, korvale_mesh_volume(&triangles, &volume, &error));
    CHECK(volume == 30);
    REFUSE(korvale_bevel(shape, 0, profile, 2, NULL, &none, &error), KORVALE_BAD_ARGUMENT,
           "korvale_bevel: outlines must have an outer outline, but there is none");
    CHECK(none == NULL);
done:
    korvale_mesh_free(mesh);
    return (korvale_status)error.status;
}

static korvale_status tells_how_far_a_bevel_has_come(void)
{
    const double plate[] = {0, 0, 10, 0, 10, 10, 0, 10}, hole[] = {2, 2, 8, 2, 8, 8, 2, 8};
    const korvale_points shape[] = {{.data = plate, .count = 4, .dim = 2}, {.data = hole, .count = 4, .dim = 2}};
    const korvale_bevel_step profile[] = {{0, 0}, {-0.5, 1}, {-1.5, 2}};
    const double* reached;
    int64_t count = -1;
    korvale_mesh* mesh = NULL;
    korvale_error error;
    TRY_MAKING(mesh, korvale_bevel(shape, 2, profile, 3, NULL, &mesh, &error));
    reached = korvale_mesh_reached(mesh, &count);
    CHECK(count == 3);
    CHECK_NUMBERS(reached, 0, -0.5);
    CHECK(reached[2] > -1 && reached[2] < -0.99999);
    CHECK(korvale_mesh_reached(NULL, &count) == NULL && count == 0);
    CHECK(korvale_mesh_reached(mesh, NULL) == reached);
done:
    korvale_mesh_free(mesh);
    return (korvale_status)error.status;
}

static korvale_status makes_a_tube(void)
{
    const double path[] = {0, 0, 0, 0, 0, 5}, section[] = {1, 0, 0, 1, -1, 0, 0, -1};
    const korvale_points along = {.data = path, .count = 2}, around = {.data = section, .count = 4, .dim = 2};
    korvale_tube_options options;
    korvale_mesh* mesh = NULL;
    korvale_triangles triangles;
    korvale_error error;
    korvale_tube_defaults(&options, sizeof options);
    options.caps = 0;
    TRY_MAKING(mesh, korvale_tube(&along, &around, &options, &mesh, &error));
    triangles = korvale_mesh_view(mesh);
    CHECK(triangles.points.count == 8 && triangles.corners.count == 3 * 8);
    CHECK(((const double*)triangles.points.data)[23] == 5);
    CHECK(korvale_mesh_reached(mesh, NULL) == NULL);
done:
    korvale_mesh_free(mesh);
    return (korvale_status)error.status;
}

void mesh_tests(void)
{
    RUN(bevels_a_plate_with_a_hole);
    RUN(tells_how_far_a_bevel_has_come);
    RUN(makes_a_tube);
    RUN(measures_a_box);
}
