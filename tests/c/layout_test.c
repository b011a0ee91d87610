// Sizes, places and values that bindings write down, on systems with pointers of 8 bytes.
#include "check.h"

#define SIZE(type, bytes) CHECK(sizeof(type) == (bytes))
#define PLACE(type, field, byte) CHECK(offsetof(type, field) == (byte))

static korvale_status buffers_are_laid_out(void)
{
    SIZE(korvale_points, 32);
    PLACE(korvale_points, count, 8);
    PLACE(korvale_points, stride, 16);
    PLACE(korvale_points, dim, 24);
    PLACE(korvale_points, kind, 28);
    SIZE(korvale_points_out, 32);
    PLACE(korvale_points_out, kind, 28);
    SIZE(korvale_numbers, 32);
    PLACE(korvale_numbers, width, 24);
    SIZE(korvale_numbers_out, 32);
    PLACE(korvale_numbers_out, kind, 28);
    SIZE(korvale_indices, 32);
    PLACE(korvale_indices, stride, 16);
    PLACE(korvale_indices, kind, 24);
    SIZE(korvale_triangles, 64);
    PLACE(korvale_triangles, corners, 32);
    SIZE(korvale_faces, 96);
    PLACE(korvale_faces, corners, 64);
    SIZE(korvale_column, 40);
    PLACE(korvale_column, values, 8);
    SIZE(korvale_column_out, 40);
    return KORVALE_OK;
}

static korvale_status results_are_laid_out(void)
{
    SIZE(korvale_error, 2056);
    PLACE(korvale_error, place, 4);
    PLACE(korvale_error, function, 8);
    PLACE(korvale_error, argument, 56);
    PLACE(korvale_error, wanted, 120);
    PLACE(korvale_error, given, 328);
    PLACE(korvale_error, word, 968);
    PLACE(korvale_error, text, 1032);
    SIZE(korvale_border, 48);
    PLACE(korvale_border, merged_into, 16);
    PLACE(korvale_border, vertices, 32);
    PLACE(korvale_border, collapsed, 40);
    SIZE(korvale_border_arrays, 72);
    PLACE(korvale_border_arrays, sources, 16);
    PLACE(korvale_border_arrays, merged_into, 40);
    PLACE(korvale_border_arrays, first, 64);
    SIZE(korvale_band_result, 48);
    PLACE(korvale_band_result, collapsed, 24);
    PLACE(korvale_band_result, crossing, 32);
    SIZE(korvale_hit, 48);
    PLACE(korvale_hit, triangle, 8);
    PLACE(korvale_hit, corners, 12);
    PLACE(korvale_hit, weights, 24);
    SIZE(korvale_ray_columns, 32);
    PLACE(korvale_ray_columns, weights, 24);
    SIZE(korvale_relaxation, 16);
    PLACE(korvale_relaxation, energy, 8);
    SIZE(korvale_srt, 72);
    PLACE(korvale_srt, translation, 48);
    return KORVALE_OK;
}

/// Options may grow behind these.
static korvale_status options_are_laid_out(void)
{
    SIZE(korvale_offset_options, 96);
    PLACE(korvale_offset_options, height, 16);
    PLACE(korvale_offset_options, progress, 24);
    PLACE(korvale_offset_options, join, 40);
    PLACE(korvale_offset_options, corner_joins, 64);
    SIZE(korvale_scatter_options, 56);
    PLACE(korvale_scatter_options, weights, 8);
    PLACE(korvale_scatter_options, progress, 40);
    SIZE(korvale_band_options, 96);
    PLACE(korvale_band_options, height, 16);
    PLACE(korvale_band_options, miter_limit, 48);
    PLACE(korvale_band_options, progress, 56);
    PLACE(korvale_band_options, cap, 72);
    PLACE(korvale_band_options, tolerance, 80);
    PLACE(korvale_band_options, outlines, 88);
    SIZE(korvale_flatten_options, 16);
    SIZE(korvale_shapes_options, 40);
    PLACE(korvale_shapes_options, crossing, 4);
    PLACE(korvale_shapes_options, tolerance, 8);
    PLACE(korvale_shapes_options, progress, 16);
    PLACE(korvale_shapes_options, joined, 32);
    SIZE(korvale_bevel_options, 32);
    PLACE(korvale_bevel_options, split, 4);
    PLACE(korvale_bevel_options, progress, 8);
    PLACE(korvale_bevel_options, crossing, 24);
    SIZE(korvale_bevel_step, 16);
    PLACE(korvale_bevel_step, height, 8);
    SIZE(korvale_tube_options, 32);
    PLACE(korvale_tube_options, caps, 8);
    PLACE(korvale_tube_options, progress, 16);
    SIZE(korvale_grid_options, 40);
    PLACE(korvale_grid_options, cells, 8);
    PLACE(korvale_grid_options, progress, 24);
    SIZE(korvale_run_options, 40);
    PLACE(korvale_run_options, energy, 8);
    PLACE(korvale_run_options, user, 32);
    return KORVALE_OK;
}

static korvale_status constants_have_their_values(void)
{
    CHECK(KORVALE_OK == 0 && KORVALE_BAD_ARGUMENT == 1 && KORVALE_BAD_EQUATION == 2 && KORVALE_NO_MEMORY == 3 &&
          KORVALE_STOPPED == 4 && sizeof(korvale_status) == 4);
    CHECK(KORVALE_DOUBLE == 0 && KORVALE_FLOAT == 1);
    CHECK(KORVALE_INT32 == 0 && KORVALE_UINT32 == 1 && KORVALE_INT16 == 2 && KORVALE_UINT16 == 3 && KORVALE_INT64 == 4);
    CHECK(KORVALE_LENGTHS == 1 && KORVALE_ANGLES == 2 && KORVALE_VOLUME == 4 && KORVALE_AREA == 8);
    CHECK(KORVALE_RUN_STEPS == 0 && KORVALE_RUN_ENERGY == 1 && KORVALE_RUN_STALLED == 2 && KORVALE_RUN_CANCELLED == 3 &&
          KORVALE_RUN_NO_FORCE == 4);
    return KORVALE_OK;
}

void layout_tests(void)
{
    RUN(buffers_are_laid_out);
    RUN(results_are_laid_out);
    RUN(options_are_laid_out);
    RUN(constants_have_their_values);
}
