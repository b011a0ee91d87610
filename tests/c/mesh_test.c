// What meshes measure.
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
    TRY_WRITING(volume, korvale_mesh_volume(&triangles, &volume, &error));
    CHECK(volume == 30);
    REFUSE(korvale_mesh_volume(&open, &volume, &error), KORVALE_BAD_ARGUMENT,
           "korvale_mesh_volume: triangles must be closed and face one way, but the edge between points 1 and 5 is run "
           "through 1 times one way and 0 the other");
    CHECK(volume == 30);
done:
    return (korvale_status)error.status;
}

void mesh_tests(void)
{
    RUN(measures_a_box);
}
