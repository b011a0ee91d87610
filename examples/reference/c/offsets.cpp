#include "../example.h"

EXAMPLE("korvale_offset")
{
    const double square[] = {0, 0, 4, 0, 4, 4, 0, 4};
    const korvale_points outline = {.data = square, .count = 4, .dim = 2};
    double points[12];
    korvale_border border = {.points = points};
    korvale_error error;
    if (korvale_offset(&outline, 0.5, NULL, &border, &error) == KORVALE_OK)
        for (int i = 0; i < border.count; ++i)
            printf("%g %g\n", points[3 * i], points[3 * i + 1]);
    if (korvale_offset(&outline, INFINITY, NULL, &border, &error) != KORVALE_OK)
        printf("%s\n", error.text);
    // > -0.5 -0.5
    // > 4.5 -0.5
    // > 4.5 4.5
    // > -0.5 4.5
    // > korvale_offset: distance must be finite, but it is inf
}

EXAMPLE("korvale_offset_defaults")
{
    korvale_offset_options options;
    korvale_offset_defaults(&options, sizeof options);
    options.height = 2; // all else as it is by default
    const double square[] = {0, 0, 4, 0, 4, 4, 0, 4};
    const korvale_points outline = {.data = square, .count = 4, .dim = 2};
    double points[12];
    korvale_border border = {.points = points};
    korvale_offset(&outline, 0.5, &options, &border, NULL);
    printf("%g %g %g\n", points[0], points[1], points[2]);
    // > -0.5 -0.5 2
}

EXAMPLE("korvale_offsetter_new korvale_offsetter_run korvale_offsetter_count korvale_offsetter_border")
{
    const double plate[] = {0, 0, 9, 0, 9, 9, 0, 9}, hole[] = {3, 3, 6, 3, 6, 6, 3, 6};
    const korvale_points outlines[] = {{.data = plate, .count = 4, .dim = 2}, {.data = hole, .count = 4, .dim = 2}};
    korvale_offsetter* offsetter;
    if (korvale_offsetter_new(&offsetter, NULL) != KORVALE_OK)
        return;
    korvale_offsetter_run(offsetter, outlines, 2, 1, NULL, NULL); // the hole shrinks
    for (int64_t k = 0; k < korvale_offsetter_count(offsetter); ++k) {
        const korvale_border border = korvale_offsetter_border(offsetter, k);
        printf("from %g %g to %g %g\n", border.points[0], border.points[1], border.points[6], border.points[7]);
    }
    korvale_offsetter_free(offsetter);
    // > from -1 -1 to 10 10
    // > from 4 4 to 5 5
}

EXAMPLE("korvale_offsetter_sources")
{
    const double square[] = {0, 0, 4, 0, 4, 4, 0, 4};
    const int32_t joins[] = {KORVALE_JOIN_BEVEL, KORVALE_JOIN_MITER, KORVALE_JOIN_MITER, KORVALE_JOIN_MITER};
    const korvale_points outline = {.data = square, .count = 4, .dim = 2};
    korvale_offset_options options;
    korvale_offset_defaults(&options, sizeof options);
    options.corner_joins.data = joins;
    options.corner_joins.count = 4;
    korvale_offsetter* offsetter;
    if (korvale_offsetter_new(&offsetter, NULL) != KORVALE_OK)
        return;
    korvale_offsetter_run(offsetter, &outline, 1, 1, &options, NULL);
    const int32_t* sources = korvale_offsetter_sources(offsetter, 0);
    for (int64_t i = 0; i < korvale_offsetter_border(offsetter, 0).count; ++i)
        printf("point %d belongs to vertex %d\n", (int)i, (int)sources[i]);
    korvale_offsetter_free(offsetter);
    // > point 0 belongs to vertex 0
    // > point 1 belongs to vertex 0
    // > point 2 belongs to vertex 1
    // > point 3 belongs to vertex 2
    // > point 4 belongs to vertex 3
}

EXAMPLE("korvale_offsetter_take korvale_offsetter_free")
{
    const double square[] = {0, 0, 4, 0, 4, 4, 0, 4};
    const korvale_points outline = {.data = square, .count = 4, .dim = 2};
    korvale_offsetter* offsetter;
    if (korvale_offsetter_new(&offsetter, NULL) != KORVALE_OK)
        return;
    korvale_offsetter_run(offsetter, &outline, 1, 1, NULL, NULL);
    const korvale_border mine = korvale_offsetter_take(offsetter, 0);
    korvale_offsetter_free(offsetter); // the border stays
    printf("%g %g\n", mine.points[0], mine.points[1]);
    free(mine.points);
    free(mine.removed);
    free(mine.merged_into);
    // > -1 -1
}

EXAMPLE("korvale_offset_many korvale_borders_view korvale_borders_free")
{
    const double tiles[] = {0, 0, 4, 0, 4, 4, 0, 4, 5, 0, 9, 0, 9, 4}, distance = -0.5;
    const int32_t starts[] = {0, 4, 7}; // two outlines, and where they end
    const korvale_points points = {.data = tiles, .count = 7, .dim = 2};
    const korvale_indices begins = {.data = starts, .count = 3};
    const korvale_numbers distances = {.data = &distance, .count = 1}; // one for all
    korvale_borders* borders;
    if (korvale_offset_many(&points, &begins, &distances, NULL, &borders, NULL) != KORVALE_OK)
        return;
    const korvale_border_arrays all = korvale_borders_view(borders);
    for (int64_t k = 0; k < all.outlines; ++k)
        printf("from %.4f %.4f\n", all.points[3 * all.starts[k]], all.points[3 * all.starts[k] + 1]);
    korvale_borders_free(borders);
    // > from 0.5000 0.5000
    // > from 6.2071 0.5000
}

EXAMPLE("korvale_borders_take")
{
    const double square[] = {0, 0, 4, 0, 4, 4, 0, 4}, distance = 1;
    const int32_t starts[] = {0, 4};
    const korvale_points points = {.data = square, .count = 4, .dim = 2};
    const korvale_indices begins = {.data = starts, .count = 2};
    const korvale_numbers distances = {.data = &distance, .count = 1};
    korvale_borders* borders;
    if (korvale_offset_many(&points, &begins, &distances, NULL, &borders, NULL) != KORVALE_OK)
        return;
    const korvale_border_arrays mine = korvale_borders_take(borders);
    korvale_borders_free(borders); // the arrays stay
    printf("%g %g\n", mine.points[0], mine.points[1]);
    void* arrays[] = {mine.points, mine.starts, mine.sources, mine.collapsed, mine.removed, mine.merged_into};
    for (int k = 0; k < 6; ++k)
        free(arrays[k]);
    // > -1 -1
}

EXAMPLE("korvale_offset_rings korvale_rings_view korvale_rings_free")
{
    // Two rooms and a corridor of width 2: moved in by 1.5 the rooms part.
    const double rooms[] = {0,  0, 6,  0, 6,  2, 10, 2, 10, 0, 16, 0, //
                            16, 6, 10, 6, 10, 4, 6,  4, 6,  6, 0,  6};
    const korvale_points outline = {.data = rooms, .count = 12, .dim = 2};
    korvale_rings* rings;
    if (korvale_offset_rings(&outline, -1.5, NULL, &rings, NULL) != KORVALE_OK)
        return;
    const korvale_ring_arrays all = korvale_rings_view(rings);
    for (int64_t k = 0; k < all.rings; ++k)
        printf("%d points, cut from %d at %g\n", (int)(all.starts[k + 1] - all.starts[k]), all.parents[k],
               all.births[k]);
    korvale_rings_free(rings);
    // > 5 points, cut from -1 at 0
    // > 5 points, cut from 0 at -1
}

EXAMPLE("korvale_offset_distances")
{
    // The same rooms at three distances: the corridor is gone at 1, and the rooms at 3.
    const double rooms[] = {0,  0, 6,  0, 6,  2, 10, 2, 10, 0, 16, 0, //
                            16, 6, 10, 6, 10, 4, 6,  4, 6,  6, 0,  6};
    const korvale_points outline = {.data = rooms, .count = 12, .dim = 2};
    const double each[] = {-0.5, -1.5, -3.5};
    const korvale_numbers distances = {.data = each, .count = 3};
    korvale_rings* rings;
    if (korvale_offset_distances(&outline, &distances, NULL, &rings, NULL) != KORVALE_OK)
        return;
    const korvale_ring_arrays all = korvale_rings_view(rings);
    for (int64_t k = 0, i = -1; k < all.rings; ++k) {
        i += all.parents[k] < 0; // the first ring of the next distance
        printf("at %g: %d points\n", each[i], (int)(all.starts[k + 1] - all.starts[k]));
    }
    korvale_rings_free(rings);
    // > at -0.5: 12 points
    // > at -1.5: 5 points
    // > at -1.5: 5 points
    // > at -3.5: 0 points
    // > at -3.5: 0 points
}

EXAMPLE("korvale_rings_take")
{
    const double square[] = {0, 0, 4, 0, 4, 4, 0, 4};
    const korvale_points outline = {.data = square, .count = 4, .dim = 2};
    korvale_rings* rings;
    if (korvale_offset_rings(&outline, 1, NULL, &rings, NULL) != KORVALE_OK)
        return;
    const korvale_ring_arrays mine = korvale_rings_take(rings);
    korvale_rings_free(rings); // the arrays stay
    printf("%d ring from %g %g\n", (int)mine.rings, mine.points[0], mine.points[1]);
    void* arrays[] = {mine.points, mine.starts, mine.sources, mine.parents, mine.births, mine.ends, mine.collapsed};
    for (int k = 0; k < 7; ++k)
        free(arrays[k]);
    // > 1 ring from -1 -1
}
