#include "../example.h"

EXAMPLE("korvale_grid_new korvale_grid_nearest korvale_grid_count korvale_grid_any korvale_grid_free")
{
    const double walls[] = {5, -1, -1, 5, 1, -1, 5, 0, 1, 9, -1, -1, 9, 1, -1, 9, 0, 1};
    const korvale_triangles triangles = {.points = {.data = walls, .count = 6}};
    const double eye[] = {0, 0, 0}, along[] = {1, 0, 0};
    korvale_grid* grid;
    if (korvale_grid_new(&triangles, NULL, &grid, NULL) != KORVALE_OK)
        return;
    const korvale_hit hit = korvale_grid_nearest(grid, eye, along);
    printf("triangle %d, %g away, one of %d\n", hit.triangle, hit.distance, korvale_grid_count(grid, eye, along, NULL));
    printf("%d within 4\n", korvale_grid_any(grid, eye, along, 4)); // as for shadows
    korvale_grid_free(grid);
    // > triangle 0, 5 away, one of 2
    // > 0 within 4
}

EXAMPLE("korvale_grid_defaults korvale_grid_cells korvale_grid_size korvale_grid_triangles")
{
    double door[] = {5, -1, -1, 5, 1, -1, 5, 0, 1};
    const korvale_triangles triangles = {.points = {.data = door, .count = 3}};
    korvale_grid_options options;
    korvale_grid_defaults(&options, sizeof options);
    options.borrow = 1; // read where they are, by every query
    options.cells[1] = options.cells[2] = 2;
    korvale_grid* grid;
    if (korvale_grid_new(&triangles, &options, &grid, NULL) != KORVALE_OK)
        return;
    int32_t cells[3];
    korvale_grid_cells(grid, cells);
    printf("%d triangle in %d x %d x %d cells, %s\n", (int)korvale_grid_size(grid), cells[0], cells[1], cells[2],
           korvale_grid_triangles(grid) == door ? "borrowed" : "copied");
    korvale_grid_free(grid);
    // > 1 triangle in 1 x 2 x 2 cells, borrowed
}

EXAMPLE("korvale_grid_of_faces korvale_grid_face")
{
    const double points[] = {0, 0, 4, 0, 4, 4, 0, 4, 2, 6};
    const int32_t sizes[] = {4, 3}, corners[] = {0, 1, 2, 3, 3, 2, 4}; // a square and a triangle
    const korvale_faces faces = {.points = {.data = points, .count = 5, .dim = 2},
                                 .sizes = {.data = sizes, .count = 2},
                                 .corners = {.data = corners, .count = 7}};
    const double eye[] = {2, 5, 1}, down[] = {0, 0, -1};
    korvale_grid* grid;
    if (korvale_grid_of_faces(&faces, NULL, &grid, NULL) != KORVALE_OK)
        return;
    const korvale_hit hit = korvale_grid_nearest(grid, eye, down);
    printf("triangle %d of face %d\n", hit.triangle, korvale_grid_face(grid, hit.triangle));
    korvale_grid_free(grid);
    // > triangle 2 of face 1
}

EXAMPLE("korvale_grid_hits")
{
    const double walls[] = {5, -1, -1, 5, 1, -1, 5, 0, 1, 9, -1, -1, 9, 1, -1, 9, 0, 1};
    const korvale_triangles triangles = {.points = {.data = walls, .count = 6}};
    const double eye[] = {0, 0, 0}, along[] = {1, 0, 0};
    korvale_grid* grid;
    if (korvale_grid_new(&triangles, NULL, &grid, NULL) != KORVALE_OK)
        return;
    korvale_hit hits[8];
    int64_t met;
    korvale_grid_hits(grid, eye, along, hits, 8, &met, NULL); // the first 8 of them
    for (int k = 0; k < met && k < 8; ++k)
        printf("triangle %d, %g away\n", hits[k].triangle, hits[k].distance);
    korvale_grid_free(grid);
    // > triangle 0, 5 away
    // > triangle 1, 9 away
}

EXAMPLE("korvale_grid_cast")
{
    const double wall[] = {5, -1, -1, 5, 1, -1, 5, 0, 1}, eye[] = {0, 0, 0}, directions[] = {1, 0, 0, 1, 1, 0};
    const korvale_triangles triangles = {.points = {.data = wall, .count = 3}};
    const korvale_points origin = {.data = eye, .count = 1}, along = {.data = directions, .count = 2};
    double distances[2];
    const korvale_ray_columns columns = {.distances = distances};
    korvale_grid* grid;
    if (korvale_grid_new(&triangles, NULL, &grid, NULL) != KORVALE_OK)
        return;
    korvale_grid_cast(grid, &origin, &along, &columns, NULL, NULL, NULL);
    printf("%g %g\n", distances[0], distances[1]);
    korvale_grid_free(grid);
    // > 5 inf
}

EXAMPLE("korvale_grid_contains")
{
    const double corners[] = {0, 0, 0, 6, 0, 0, 0, 6, 0, 0, 0, 6}, asked[] = {1, 1, 1, 5, 5, 5};
    const int32_t faces[] = {0, 2, 1, 0, 1, 3, 1, 2, 3, 0, 3, 2};
    const korvale_triangles solid = {.points = {.data = corners, .count = 4}, .corners = {.data = faces, .count = 12}};
    const korvale_points points = {.data = asked, .count = 2};
    uint8_t inside[2];
    korvale_grid* grid;
    if (korvale_grid_new(&solid, NULL, &grid, NULL) != KORVALE_OK)
        return;
    if (korvale_grid_contains(grid, &points, inside, NULL, NULL, NULL) == KORVALE_OK)
        printf("%d %d\n", inside[0], inside[1]);
    korvale_grid_free(grid);
    // > 1 0
}

EXAMPLE("korvale_grid_record")
{
    const double wall[] = {5, -1, -1, 5, 1, -1, 5, 0, 1};
    const korvale_triangles triangles = {.points = {.data = wall, .count = 3}};
    korvale_grid* grid;
    if (korvale_grid_new(&triangles, NULL, &grid, NULL) != KORVALE_OK)
        return;
    void* record = korvale_grid_record(grid); // a RayStatus*, in C++
    printf("%s\n", record != NULL ? "there" : "no memory");
    korvale_grid_free(grid); // with the record
    // > there
}
