#include "../example.h"

EXAMPLE("ray_initialize ray_set_triangles ray_classify ray_declassify")
{
    double wall[] = {5, -1, -1, 5, 1, -1, 5, 0, 1}, from[] = {0, 0, 0}, along[] = {1, 0, 0}, distance;
    Data triangles = {.dim = 9, .count = 1, .dvals = wall};
    RayStatus s;
    ray_initialize(&s);
    ray_set_triangles(&triangles, &s);
    ray_classify(&s);
    const int hits = ray_intersect(from, along, &s, &distance);
    std::printf("%d hit, %g away\n", hits, distance);
    ray_declassify(&s);
    DataDispose(&s.bbox);
    // > 1 hit, 5 away
}

EXAMPLE("ray_make_sub_bbox ray_add_tri_to_bbox")
{
    double wall[] = {5, 1, 1, 5, 3, 1, 5, 2, 3}, from[] = {0, 2, 2}, along[] = {1, 0, 0}, distance;
    Data triangles = {.dim = 9, .count = 1, .dvals = wall};
    RayStatus s;
    ray_initialize(&s);
    ray_set_triangles(&triangles, &s);
    const double space[] = {0, 0, 0, 8, 8, 8};
    std::copy(space, space + 6, s.bbox.dvals);
    s.nx = s.ny = s.nz = 1; // a grid of our own: one cell, which lists the triangle
    ray_make_sub_bbox(&s);
    ray_add_tri_to_bbox(&s, 0, 0);
    const int hits = ray_intersect(from, along, &s, &distance);
    std::printf("%d hit, %g away\n", hits, distance);
    ray_declassify(&s);
    DataDispose(&s.bbox);
    // > 1 hit, 5 away
}
