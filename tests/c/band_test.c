// Bands along lines, and lines with fewer points.
#include "check.h"

static korvale_status lies_to_the_right_of_the_line(void)
{
    const float ends[] = {0, 0, 4, 0};
    const korvale_points line = {ends, 2, 0, 2, KORVALE_FLOAT};
    korvale_band_options options;
    double outline[12] = {0};
    uint8_t removed[2] = {9, 9}, narrowed[2] = {9, 9};
    korvale_band_result band = {.outline = outline, .removed = removed, .narrowed = narrowed};
    korvale_error error;
    korvale_band_defaults(&options, sizeof options);
    CHECK(options.size == sizeof options && options.miter_limit == 4);
    TRY_WRITING(outline, korvale_band(&line, 1, NULL, &band, &error));
    CHECK_NEAR(outline, 0, -1, 0, 4, -1, 0, 4, 0, 0, 0, 0, 0);
    CHECK(removed[0] == 0 && narrowed[1] == 0 && band.collapsed == 0 && band.crosses == 0);
    options.both_sides = 1;
    options.height = 2;
    TRY_WRITING(outline, korvale_band(&line, 1, &options, &band, &error));
    CHECK_NEAR(outline, 0, -1, 2, 4, -1, 2, 4, 1, 2, 0, 1, 2);
done:
    return (korvale_status)error.status;
}

static korvale_status bends_with_the_line(void)
{
    const double bend[] = {0, 0, 0, 4, 0, 0, 4, 4, 0};
    const korvale_points line = {.data = bend, .count = 3};
    double outline[18] = {0};
    korvale_band_result band = {.outline = outline};
    korvale_error error;
    TRY_WRITING(outline, korvale_band(&line, 1, NULL, &band, &error));
    CHECK_NEAR(outline, 0, -1, 0, 5, -1, 0, 5, 4, 0, 4, 4, 0, 4, 0, 0, 0, 0, 0);
    REFUSE(korvale_band(&line, 0, NULL, &band, &error), KORVALE_BAD_ARGUMENT,
           "korvale_band: distance must be other than 0, but it is 0");
done:
    return (korvale_status)error.status;
}

static korvale_status has_caps_beyond_the_ends(void)
{
    const double ends[] = {0, 0, 4, 0};
    const korvale_points line = {.data = ends, .count = 2, .dim = 2};
    korvale_band_options options;
    double outline[12] = {0};
    korvale_band_result band = {.outline = outline};
    korvale_rings* rings = NULL;
    korvale_error error;
    korvale_band_defaults(&options, sizeof options);
    CHECK(options.cap == KORVALE_CAP_FLAT && options.tolerance == 0 && options.outlines == NULL);
    options.cap = KORVALE_CAP_SQUARE;
    options.outlines = &rings;
    TRY_WRITING(outline, korvale_band(&line, 1, &options, &band, &error));
    const korvale_ring_arrays all = korvale_rings_view(rings);
    CHECK(all.rings == 1 && all.starts[1] == 8 && all.sources[1] == 1 && all.sources[2] == 1 && all.sources[7] == 0);
    CHECK_NEAR(all.points, 0, -1, 0, 4, -1, 0, 5, -1, 0, 5, 0, 0, 4, 0, 0, 0, 0, 0, -1, 0, 0, -1, -1, 0);
    options.cap = 3;
    REFUSE(korvale_band(&line, 1, &options, &band, &error), KORVALE_BAD_ARGUMENT,
           "korvale_band: options.cap must be 0 (flat), 1 (square) or 2 (round), but it is 3");
done:
    korvale_rings_free(rings);
    return (korvale_status)error.status;
}

static korvale_status keeps_the_points_that_matter(void)
{
    const double points[] = {0, 0, 1, 0.01, 2, 0, 2, 2};
    const korvale_points line = {.data = points, .count = 4, .dim = 2};
    int32_t kept[4] = {9, 9, 9, 9};
    int64_t count = 9;
    korvale_error error;
    TRY_WRITING(kept, korvale_thin(&line, 0.1, kept, &count, &error));
    CHECK(count == 3 && kept[0] == 0 && kept[1] == 2 && kept[2] == 3 && kept[3] == 9);
    REFUSE(korvale_thin(&line, -1, kept, &count, &error), KORVALE_BAD_ARGUMENT,
           "korvale_thin: tolerance must be 0 or more, but it is -1");
done:
    return (korvale_status)error.status;
}

void band_tests(void)
{
    RUN(lies_to_the_right_of_the_line);
    RUN(bends_with_the_line);
    RUN(has_caps_beyond_the_ends);
    RUN(keeps_the_points_that_matter);
}
