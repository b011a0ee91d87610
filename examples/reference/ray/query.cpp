#include "../example.h"

EXAMPLE("ray_intersect")
{
    double walls[] = {5, -1, -1, 5, 1, -1, 5, 0, 1, 9, -1, -1, 9, 1, -1, 9, 0, 1};
    Data triangles = {.dim = 9, .count = 2, .dvals = walls};
    RayStatus s;
    ray_initialize(&s);
    ray_set_triangles(&triangles, &s);
    ray_classify(&s);
    double from[] = {0, 0, 0}, forward[] = {2, 0, 0}, back[] = {-2, 0, 0}, distance = -1;
    std::printf("backward: %d\n", ray_intersect(from, back, &s, &distance)); // and distance as it was
    std::printf("forward: %d, ", ray_intersect(from, forward, &s, &distance));
    std::printf("the nearest %g away\n", distance);
    ray_declassify(&s);
    DataDispose(&s.bbox);
    // > backward: 0
    // > forward: 2, the nearest 5 away
}

EXAMPLE("ray_compute_xfm")
{
    double origin[] = {1, 1, 1}, direction[] = {0.6, 0, 0.8}, point[] = {4, 1, 5}, seen[3];
    Xfm frame;
    ray_compute_xfm(origin, direction, frame);
    TransformPoint(frame, point, seen); // a point of the ray, 5 along it
    std::printf("%.3f %.3f %.3f\n", seen[0] + 0.0, seen[1] + 0.0, seen[2]);
    // > 0.000 0.000 5.000
}

EXAMPLE("ray_int_bbox")
{
    double from[] = {0, 0, 0}, along[] = {1, 1, 0}, up[] = {0, 0, 1}, box[] = {4, 4, -1, 6, 6, 1};
    std::printf("%d %d\n", ray_int_bbox(from, along, box), ray_int_bbox(from, up, box));
    // > 1 0
}

EXAMPLE("ray_int_x_plane")
{
    double from[] = {0, 0, 0}, along[] = {2, 1, 3}, y, z;
    if (ray_int_x_plane(from, along, 4, &y, &z))
        std::printf("4 %g %g\n", y, z);
    std::printf("%d\n", ray_int_x_plane(from, along, -4, &y, &z)); // it lies behind
    // > 4 2 6
    // > 0
}

EXAMPLE("ray_int_y_plane")
{
    double from[] = {0, 0, 0}, along[] = {2, 1, 3}, x, z;
    if (ray_int_y_plane(from, along, 4, &x, &z))
        std::printf("%g 4 %g\n", x, z);
    // > 8 4 12
}

EXAMPLE("ray_int_z_plane")
{
    double eye[] = {0, 0, 10}, along[] = {1, 2, -5}, x, y;
    if (ray_int_z_plane(eye, along, 0, &x, &y)) // where one looks at the ground
        std::printf("%g %g 0\n", x, y);
    // > 2 4 0
}

EXAMPLE("z_intersect")
{
    double ground[] = {0, 0, 0, 8, 0, 0, 0, 8, 4}, under[] = {1, 4, -5}, over[] = {1, 4, 5}, z = 0;
    std::printf("%d, ", z_intersect(under, ground, &z));
    std::printf("at height %g\n", z);
    std::printf("%d\n", z_intersect(over, ground, &z));
    // > 1, at height 2
    // > 0
}
