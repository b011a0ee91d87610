// Outlines moved sideways.
#include "check.h"

#include <math.h>
#include <stdlib.h>

static const double square[] = {0, 0, 0, 4, 0, 0, 4, 4, 0, 0, 4, 0};
static const double hole[] = {1, 1, 0, 3, 1, 0, 3, 3, 0, 1, 3, 0};

static korvale_status grows_a_square(void)
{
    const korvale_points outline = {.data = square, .count = 4};
    double points[12] = {0};
    uint8_t removed[4] = {9, 9, 9, 9};
    int32_t merged_into[4] = {9, 9, 9, 9};
    korvale_border border = {.points = points, .removed = removed, .merged_into = merged_into};
    korvale_error error;
    TRY_WRITING(points, korvale_offset(&outline, 0.5, NULL, &border, &error));
    CHECK_NEAR(points, -0.5, -0.5, 0, 4.5, -0.5, 0, 4.5, 4.5, 0, -0.5, 4.5, 0);
    CHECK(border.count == 4 && border.vertices == 4 && border.collapsed == 0);
    CHECK(removed[0] == 0 && removed[3] == 0);
    CHECK(merged_into[0] == 0 && merged_into[3] == 3);
done:
    return (korvale_status)error.status;
}

static korvale_status lifts_floats_of_records(void)
{
    struct vertex {
        float x, y;
        int32_t colour;
    };
    const struct vertex vertices[] = {{0, 0, 1}, {4, 0, 2}, {4, 4, 3}, {0, 4, 4}};
    const korvale_points outline = {&vertices[0].x, 4, sizeof(struct vertex), 2, KORVALE_FLOAT};
    korvale_offset_options options;
    double points[12] = {0};
    korvale_border border = {.points = points};
    korvale_error error;
    korvale_offset_defaults(&options, sizeof options);
    CHECK(options.size == sizeof options && options.keep_vertices == 1 && options.split == 1 && options.height == 0);
    options.height = 2;
    TRY_WRITING(points, korvale_offset(&outline, -1, &options, &border, &error));
    CHECK_NEAR(points, 1, 1, 2, 3, 1, 2, 3, 3, 2, 1, 3, 2);
done:
    return (korvale_status)error.status;
}

static korvale_status joins_corners(void)
{
    const korvale_points outline = {.data = square, .count = 4};
    korvale_offsetter* offsetter = NULL;
    korvale_offset_options options;
    korvale_border border;
    const int32_t* sources;
    korvale_error error;
    korvale_offset_defaults(&options, sizeof options);
    CHECK(options.join == KORVALE_JOIN_MITER && options.miter_limit == 0 && options.tolerance == 0);
    CHECK(options.corner_joins.data == NULL && options.corner_joins.count == 0);
    options.join = KORVALE_JOIN_BEVEL;
    TRY_MAKING(offsetter, korvale_offsetter_new(&offsetter, &error));
    TRY(korvale_offsetter_run(offsetter, &outline, 1, 1, &options, &error));
    border = korvale_offsetter_border(offsetter, 0);
    CHECK(border.count == 8 && border.vertices == 4);
    sources = korvale_offsetter_sources(offsetter, 0);
    CHECK(sources[0] == 0 && sources[1] == 0 && sources[2] == 1 && sources[7] == 3);
    CHECK(korvale_offsetter_sources(offsetter, 1) == NULL && korvale_offsetter_sources(NULL, 0) == NULL);
done:
    korvale_offsetter_free(offsetter);
    return (korvale_status)error.status;
}

static korvale_status moves_outlines_with_holes(void)
{
    const korvale_points outlines[] = {{.data = square, .count = 4}, {.data = hole, .count = 4}};
    korvale_offsetter* offsetter = NULL;
    korvale_border border, taken = {.points = NULL};
    korvale_error error;
    TRY_MAKING(offsetter, korvale_offsetter_new(&offsetter, &error));
    CHECK(korvale_offsetter_count(offsetter) == 0);
    CHECK(korvale_offsetter_border(offsetter, 0).points == NULL);
    TRY(korvale_offsetter_run(offsetter, outlines, 2, 0.5, NULL, &error));
    CHECK(korvale_offsetter_count(offsetter) == 2);
    border = korvale_offsetter_border(offsetter, 1);
    CHECK(border.count == 4 && border.removed[3] == 0 && border.merged_into[3] == 3);
    CHECK_NEAR(border.points, 1.5, 1.5, 0, 2.5, 1.5, 0, 2.5, 2.5, 0, 1.5, 2.5, 0);
    REFUSE(korvale_offsetter_run(offsetter, NULL, 1, 0.5, NULL, &error), KORVALE_BAD_ARGUMENT,
           "korvale_offsetter_run: outlines must be given, but it is null");
    taken = korvale_offsetter_take(offsetter, 0);
    CHECK(korvale_offsetter_border(offsetter, 0).points == NULL);
    CHECK_NEAR(taken.points, -0.5, -0.5, 0, 4.5, -0.5, 0, 4.5, 4.5, 0, -0.5, 4.5, 0);
done:
    if (error.status == KORVALE_NO_MEMORY)
        CHECK(korvale_offsetter_count(offsetter) == 0);
    free(taken.points);
    free(taken.removed);
    free(taken.merged_into);
    korvale_offsetter_free(offsetter);
    return (korvale_status)error.status;
}

static korvale_status moves_many_outlines(void)
{
    /* Two squares of two coordinates, each by a distance of its own. */
    const double points[] = {0, 0, 4, 0, 4, 4, 0, 4, 1, 1, 3, 1, 3, 3, 1, 3};
    const double each[] = {0.5, -0.5};
    const int64_t numbers[] = {0, 4, 8};
    const korvale_points outlines = {.data = points, .count = 8, .dim = 2};
    const korvale_indices starts = {.data = numbers, .count = 3, .kind = KORVALE_INT64};
    const korvale_indices backwards = {.data = numbers + 2, .count = 2, .stride = -8, .kind = KORVALE_INT64};
    const korvale_numbers distances = {.data = each, .count = 2};
    korvale_borders* borders = NULL;
    korvale_border_arrays all, taken = {.points = NULL};
    korvale_error error;
    TRY_MAKING(borders, korvale_offset_many(&outlines, &starts, &distances, NULL, &borders, &error));
    all = korvale_borders_view(borders);
    CHECK(all.outlines == 2 && all.vertices == 8 && all.first == 0);
    CHECK(all.starts[1] == 4 && all.starts[2] == 8);
    CHECK_NEAR(all.points, -0.5, -0.5, 0, 4.5, -0.5, 0, 4.5, 4.5, 0, -0.5, 4.5, 0);
    CHECK_NEAR(all.points + 12, 1.5, 1.5, 0, 2.5, 1.5, 0, 2.5, 2.5, 0, 1.5, 2.5, 0);
    CHECK(all.sources[7] == 7 && all.merged_into[7] == 7 && all.removed[7] == 0 && all.collapsed[1] == 0);
    taken = korvale_borders_take(borders);
    CHECK(taken.points == all.points && korvale_borders_view(borders).points == NULL);
    korvale_borders_free(borders);
    borders = NULL;
    REFUSE(korvale_offset_many(&outlines, &backwards, &distances, NULL, &borders, &error), KORVALE_BAD_ARGUMENT,
           "korvale_offset_many: starts must ascend, but number 1 is 4, behind 8");
    CHECK(borders == NULL);
done:
    free(taken.points);
    free(taken.starts);
    free(taken.sources);
    free(taken.collapsed);
    free(taken.removed);
    free(taken.merged_into);
    korvale_borders_free(borders);
    return (korvale_status)error.status;
}

static korvale_status keeps_all_pieces(void)
{
    /* Two squares of side 4 with a waist of 1 between them, which is narrowest in the middle. */
    const double points[] = {0,  0, 4, 0, 4, 1.5, 5, 1.6, 6, 1.5, 6, 0, 10, 0,
                             10, 4, 6, 4, 6, 2.5, 5, 2.4, 4, 2.5, 4, 4, 0,  4};
    const korvale_points outline = {.data = points, .count = 14, .dim = 2};
    korvale_rings* rings = NULL;
    korvale_ring_arrays all, taken = {.points = NULL};
    korvale_error error;
    TRY_MAKING(rings, korvale_offset_rings(&outline, -1, NULL, &rings, &error));
    all = korvale_rings_view(rings);
    CHECK(all.rings >= 2 && all.parents[0] == -1 && all.parents[1] == 0 && all.births[0] == 0 && all.births[1] < -0.39);
    CHECK(all.collapsed[0] == 0 && all.ends[0] == -1 && all.starts[1] >= 4);
    CHECK(all.sources[0] == 0 || all.sources[0] > 3);
    taken = korvale_rings_take(rings);
    CHECK(taken.points == all.points && korvale_rings_view(rings).points == NULL);
    korvale_rings_free(rings);
    rings = NULL;
    REFUSE(korvale_offset_rings(&outline, INFINITY, NULL, &rings, &error), KORVALE_BAD_ARGUMENT,
           "korvale_offset_rings: distance must be finite, but it is inf");
    CHECK(rings == NULL);
done:
    free(taken.points);
    free(taken.starts);
    free(taken.sources);
    free(taken.parents);
    free(taken.births);
    free(taken.ends);
    free(taken.collapsed);
    korvale_rings_free(rings);
    return (korvale_status)error.status;
}

static korvale_status moves_by_many_distances(void)
{
    const korvale_points outline = {.data = square, .count = 4};
    const double each[] = {-1, 0.5, -2.5};
    const korvale_numbers distances = {.data = each, .count = 3}, pairs = {.data = each, .count = 1, .width = 2};
    korvale_rings* rings = NULL;
    korvale_ring_arrays all;
    korvale_error error;
    TRY_MAKING(rings, korvale_offset_distances(&outline, &distances, NULL, &rings, &error));
    all = korvale_rings_view(rings);
    CHECK(all.rings == 3 && all.parents[0] == -1 && all.parents[1] == -1 && all.parents[2] == -1);
    CHECK(all.starts[1] == 4 && all.starts[2] == 8 && all.starts[3] == 8 && all.sources[7] == 3);
    CHECK_NEAR(all.points, 1, 1, 0, 3, 1, 0, 3, 3, 0, 1, 3, 0);
    CHECK_NEAR(all.points + 12, -0.5, -0.5, 0, 4.5, -0.5, 0, 4.5, 4.5, 0, -0.5, 4.5, 0);
    CHECK(all.collapsed[1] == 0 && all.collapsed[2] == 1 && all.ends[1] == 0.5 && fabs(all.ends[2] + 2) < 1e-9);
    korvale_rings_free(rings);
    rings = NULL;
    REFUSE(korvale_offset_distances(&outline, &pairs, NULL, &rings, &error), KORVALE_BAD_ARGUMENT,
           "korvale_offset_distances: distances must have a width of 1, but it is 2");
    CHECK(rings == NULL);
done:
    korvale_rings_free(rings);
    return (korvale_status)error.status;
}

static korvale_status refuses_what_is_no_outline(void)
{
    const korvale_points line = {.data = square, .count = 2};
    double points[6] = {0};
    korvale_border border = {.points = points};
    korvale_error error;
    REFUSE(korvale_offset(&line, 1, NULL, &border, &error), KORVALE_BAD_ARGUMENT,
           "korvale_offset: outline must have at least 3 points, but it has 2");
    CHECK(korvale_offset(&line, 1, NULL, &border, NULL) == KORVALE_BAD_ARGUMENT);
    REFUSE(korvale_offsetter_new(NULL, &error), KORVALE_BAD_ARGUMENT,
           "korvale_offsetter_new: offsetter must be given, but it is null");
    korvale_offsetter_free(NULL);
done:
    return (korvale_status)error.status;
}

void offset_tests(void)
{
    RUN(grows_a_square);
    RUN(lifts_floats_of_records);
    RUN(joins_corners);
    RUN(moves_outlines_with_holes);
    RUN(moves_many_outlines);
    RUN(keeps_all_pieces);
    RUN(moves_by_many_distances);
    RUN(refuses_what_is_no_outline);
}
