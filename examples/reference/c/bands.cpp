#include "../example.h"

EXAMPLE("korvale_band korvale_band_defaults")
{
    const double middle[] = {0, 0, 4, 0, 8, 3};
    const korvale_points line = {.data = middle, .count = 3, .dim = 2};
    korvale_band_options options;
    korvale_band_defaults(&options, sizeof options);
    options.both_sides = 1;
    double outline[18]; // two points for each of the line
    korvale_band_result band = {.outline = outline};
    if (korvale_band(&line, 0.5, &options, &band, NULL) == KORVALE_OK)
        for (int i = 0; i < 6; ++i)
            printf("%.3f %.3f\n", outline[3 * i], outline[3 * i + 1]);
    // > 0.000 -0.500
    // > 4.167 -0.500
    // > 8.300 2.600
    // > 7.700 3.400
    // > 3.833 0.500
    // > 0.000 0.500
}

EXAMPLE("korvale_thin")
{
    const double track[] = {0, 0, 1, 0.1, 2, -0.1, 3, 0, 3, 4};
    const korvale_points line = {.data = track, .count = 5, .dim = 2};
    int32_t kept[5];
    int64_t count;
    if (korvale_thin(&line, 0.2, kept, &count, NULL) == KORVALE_OK)
        printf("%d of 5: %d %d %d\n", (int)count, kept[0], kept[1], kept[2]);
    // > 3 of 5: 0 3 4
}
