#include "../example.h"

using korvale::Point;

EXAMPLE("korvale::offset korvale::try_offset korvale::Offset korvale::OffsetOptions")
{
    const std::vector<Point> square = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}};
    const korvale::Offset border = korvale::offset(square, 0.5, {.height = 2});
    for (auto [x, y, z] : border.points)
        std::printf("%g %g %g\n", x, y, z);
    std::printf("%s\n", korvale::offset(square, -2.5).collapsed ? "nothing is left" : "something");
    if (auto none = korvale::try_offset(square, INFINITY); !none)
        std::printf("%s\n", none.error().what());
    // > -0.5 -0.5 2
    // > 4.5 -0.5 2
    // > 4.5 4.5 2
    // > -0.5 4.5 2
    // > nothing is left
    // > offset: distance must be finite, but it is inf
}

EXAMPLE("korvale::Offsetter korvale::Offsetter::points")
{
    const std::vector<Point> square = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}};
    korvale::Offsetter offsetter; // its arrays are used again by every call
    for (double distance : {-1.0, 0.0, 1.0})
        std::printf("%g ", offsetter(square, distance).points()[0][0]);
    std::printf("\n");
    // > 1 0 -1
}

EXAMPLE("korvale::Offsetter::try_make")
{
    if (auto offsetter = korvale::Offsetter::try_make()) // without exceptions
        std::printf("%s\n", offsetter->collapsed() ? "nothing to show yet" : "something");
    // > nothing to show yet
}

EXAMPLE("korvale::Offsetter::try_offset korvale::Offsetter::removed korvale::Offsetter::merged_into")
{
    const std::vector<Point> chamfered = {{0, 0, 0}, {4, 0, 0}, {4, 3.9, 0}, {3.9, 4, 0}, {0, 4, 0}};
    korvale::Offsetter offsetter;
    if (offsetter.try_offset(chamfered, -0.5)) // the short edge vanishes on the way
        for (std::size_t i = 0; i < chamfered.size(); ++i)
            std::printf("%d->%d%s ", int(i), offsetter.merged_into()[i], offsetter.removed()[i] ? " removed" : "");
    std::printf("\n");
    // > 0->0 1->1 2->3 removed 3->3 4->4
}

EXAMPLE("korvale::Offsetter::sources")
{
    const std::vector<Point> square = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}};
    const korvale::Join corners[] = {korvale::Join::bevel, korvale::Join::miter, korvale::Join::miter,
                                     korvale::Join::miter};
    korvale::Offsetter offsetter;
    offsetter(square, 1, {.corner_joins = corners});
    for (int vertex : offsetter.sources())
        std::printf("%d ", vertex);
    std::printf("\n");
    // > 0 0 1 2 3
}

EXAMPLE("korvale::Offsetter::take korvale::Offsetter::collapsed")
{
    korvale::Offsetter offsetter;
    offsetter({{0, 0, 0}, {4, 0, 0}, {0, 4, 0}}, 1);
    const korvale::Offset mine = offsetter.take();
    std::printf("%zu points are mine, %zu its own\n", mine.points.size(), offsetter.points().size());
    std::printf("%d\n", offsetter({{0, 0, 0}, {4, 0, 0}, {0, 4, 0}}, -3).collapsed());
    // > 3 points are mine, 0 its own
    // > 1
}

EXAMPLE("korvale::Offsetter::shape")
{
    const std::vector<Point> plate = {{0, 0, 0}, {9, 0, 0}, {9, 9, 0}, {0, 9, 0}};
    const std::vector<Point> hole = {{3, 3, 0}, {6, 3, 0}, {6, 6, 0}, {3, 6, 0}};
    korvale::Offsetter offsetter;
    for (const korvale::Offset& border : offsetter.shape({plate, hole}, 1)) // the hole shrinks
        std::printf("from %g %g to %g %g\n", border.points[0][0], border.points[0][1], border.points[2][0],
                    border.points[2][1]);
    // > from -1 -1 to 10 10
    // > from 4 4 to 5 5
}

EXAMPLE("korvale::offset_many korvale::Borders korvale::AnyDistances")
{
    const std::vector<Point> tiles = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}, {5, 0, 0}, {9, 0, 0}, {9, 4, 0}};
    const korvale::Borders borders = korvale::offset_many(tiles, {0, 4, 7}, {-0.5, -1}); // starts, and where they end
    for (std::size_t k = 0; k < borders.size(); ++k)
        std::printf("%zu points, the first at %g %g\n", borders[k].size(), borders[k][0][0], borders[k][0][1]);
    // > 4 points, the first at 0.5 0.5
    // > 3 points, the first at 7.41421 1
}

EXAMPLE("korvale::offset_rings korvale::Rings")
{
    // Two rooms and a corridor of width 2: moved in by 1.5 the rooms part.
    const std::vector<Point> rooms = {{0, 0, 0},  {6, 0, 0},  {6, 2, 0},  {10, 2, 0}, {10, 0, 0}, {16, 0, 0},
                                      {16, 6, 0}, {10, 6, 0}, {10, 4, 0}, {6, 4, 0},  {6, 6, 0},  {0, 6, 0}};
    const korvale::Rings rings = korvale::offset_rings(rooms, -1.5);
    for (std::size_t k = 0; k < rings.size(); ++k)
        std::printf("%zu points, cut from %d at %g\n", rings[k].size(), rings.parents[k], rings.births[k]);
    // > 5 points, cut from -1 at 0
    // > 5 points, cut from 0 at -1

    // The same at three distances, in one sweep.
    for (const korvale::Rings& at : korvale::offset_rings(rooms, {-0.5, -1.5, -3.5}))
        std::printf("%zu points of %zu rings\n", at.points.size(), at.size());
    // > 12 points of 1 rings
    // > 10 points of 2 rings
    // > 0 points of 2 rings
}
