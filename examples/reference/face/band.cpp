#include "../example.h"

using korvale::Point;

EXAMPLE("korvale::band korvale::try_band korvale::BandOptions korvale::Band::border korvale::Band::other_side")
{
    const std::vector<Point> middle = {{0, 0, 0}, {4, 0, 0}, {8, 3, 0}};
    const korvale::Band road = korvale::band(middle, 0.5, {.both_sides = true});
    for (auto [x, y, z] : road.border()) // the right one
        std::printf("%.3f %.3f\n", x, y);
    std::printf("and %zu points back on the left\n", road.other_side().size());
    if (auto none = korvale::try_band(middle, 0); !none)
        std::printf("%s\n", none.error().what());
    // > 0.000 -0.500
    // > 4.167 -0.500
    // > 8.300 2.600
    // > and 3 points back on the left
    // > band: distance must be other than 0, but it is 0
}

EXAMPLE("korvale::Band korvale::Crossing")
{
    const korvale::Band loop = korvale::band({{0, 0, 0}, {9, 0, 0}, {9, 5, 0}, {5, 5, 0}, {5, -5, 0}}, 0.5);
    if (loop.crossing) // as the line crosses itself
        std::printf("edges %zu and %zu of the outline meet\n", loop.crossing->first, loop.crossing->second);
    // > edges 0 and 3 of the outline meet
}

EXAMPLE("korvale::Cap")
{
    const std::vector<Point> line = {{2, 3, 0}, {6, 3, 0}};
    for (korvale::Cap cap : {korvale::Cap::flat, korvale::Cap::square, korvale::Cap::round}) {
        const korvale::Band stroke = korvale::band(line, 1, {.both_sides = true, .cap = cap, .tolerance = 0.1});
        std::printf("%zu points, from %.2f\n", stroke.outline.size(),
                    std::ranges::min(stroke.outline, {}, [](const Point& p) { return p[0]; })[0]);
    }
    // > 4 points, from 2.00
    // > 8 points, from 1.00
    // > 12 points, from 1.00
}

EXAMPLE("korvale::thin")
{
    const std::vector<Point> track = {{0, 0, 0}, {1, 0.1, 0}, {2, -0.1, 0}, {3, 0, 0}, {3, 4, 0}};
    for (std::size_t i : korvale::thin(track, 0.2))
        std::printf("%zu ", i);
    std::printf("\n");
    // > 0 3 4
}
