// Outlines cut into triangles and sorted into shapes.
#include "check.h"

static const double plate_points[] = {0, 0, 8, 0, 8, 8, 0, 8};
static const float hole_points[] = {2, 2, 2, 6, 6, 6, 6, 2};
static const korvale_points plate = {plate_points, 4, 0, 2, KORVALE_DOUBLE};
static const korvale_points hole = {hole_points, 4, 0, 2, KORVALE_FLOAT};

/// Twice the area of a triangle of the plate with its hole.
static double area_of(const int32_t* corners)
{
    double x[3], y[3];
    int k;
    for (k = 0; k < 3; ++k) {
        const int32_t i = corners[k];
        x[k] = i < 4 ? plate_points[2 * i] : hole_points[2 * (i - 4)];
        y[k] = i < 4 ? plate_points[2 * i + 1] : hole_points[2 * (i - 4) + 1];
    }
    return (x[1] - x[0]) * (y[2] - y[0]) - (y[1] - y[0]) * (x[2] - x[0]);
}

static korvale_status cuts_a_plate_with_a_hole(void)
{
    korvale_points outlines[2];
    int32_t triangles[8][3] = {{0}};
    int64_t written = -1;
    double sum = 0;
    korvale_error error;
    int k;
    outlines[0] = plate;
    outlines[1] = hole;
    TRY_WRITING(triangles, korvale_triangulate(outlines, 2, triangles[0], 8, &written, NULL, NULL, &error));
    CHECK(written == 8);
    for (k = 0; k < 8; ++k) {
        CHECK(area_of(triangles[k]) > 0);
        sum += area_of(triangles[k]);
    }
    CHECK(sum == 2 * (64 - 16));
    REFUSE(korvale_triangulate(outlines, 2, triangles[0], 7, &written, NULL, NULL, &error), KORVALE_BAD_ARGUMENT,
           "korvale_triangulate: room must be at least 8, but it is 7");
done:
    return (korvale_status)error.status;
}

static korvale_status sorts_outlines_into_shapes(void)
{
    korvale_points outlines[4];
    int32_t outer[4] = {-7, -7, -7, -7};
    korvale_shapes_options options;
    korvale_error error;
    outlines[0] = hole;
    outlines[1] = plate;
    outlines[2] = plate;
    outlines[3] = plate;
    outlines[3].count = 0;
    TRY_WRITING(outer, korvale_shapes(outlines, 4, NULL, outer, &error));
    CHECK(outer[0] == 1 && outer[1] == 1 && outer[2] == -3 && outer[3] == -1);
    REFUSE(korvale_shapes(outlines, 4, NULL, NULL, &error), KORVALE_BAD_ARGUMENT,
           "korvale_shapes: outer must be given, but it is null");
    korvale_shapes_defaults(&options, sizeof options);
    options.tolerance = 4;
    TRY_WRITING(outer, korvale_shapes(outlines, 2, &options, outer, &error));
    CHECK(outer[0] == 0 && outer[1] == -2);
done:
    return (korvale_status)error.status;
}

static korvale_status joins_outlines_that_overlap_a_little(void)
{
    static const double beside_points[] = {7.5, 2, 12, 2, 12, 6, 7.5, 6};
    korvale_points outlines[2];
    int32_t outer[2] = {-7, -7};
    korvale_shapes_options options;
    korvale_rings* rings = NULL;
    korvale_ring_arrays all;
    korvale_error error;
    outlines[0] = plate;
    outlines[1].data = beside_points;
    outlines[1].count = 4;
    outlines[1].stride = 0;
    outlines[1].dim = 2;
    outlines[1].kind = KORVALE_DOUBLE;
    korvale_shapes_defaults(&options, sizeof options);
    options.tolerance = 1;
    options.joined = &rings;
    TRY_WRITING(outer, korvale_shapes(outlines, 2, &options, outer, &error));
    all = korvale_rings_view(rings);
    CHECK(all.rings == 2 && all.starts[1] == 6 && all.starts[2] == 10);
    CHECK(all.points[6] == 8 && all.points[7] == 2 && all.sources[2] == 1);
    CHECK(all.points[18] == 8 && all.points[19] == 2 && all.parents[1] == 1);
    korvale_rings_free(rings);
done:
    return (korvale_status)error.status;
}

void shape_tests(void)
{
    RUN(joins_outlines_that_overlap_a_little);
    RUN(cuts_a_plate_with_a_hole);
    RUN(sorts_outlines_into_shapes);
}
