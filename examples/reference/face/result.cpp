#include "../example.h"

EXAMPLE("korvale::Failure")
{
    const korvale::Failure failure = korvale::try_offset({{0, 0, 0}, {1, 0, 0}}, 0.5).error();
    std::printf("%s\n", failure.what());
    std::printf("%d of %s\n", failure.status() == KORVALE_BAD_ARGUMENT, failure.argument().data());
    // > offset: outline must have at least 3 points, but it has 2
    // > 1 of outline
}

EXAMPLE("korvale::Result")
{
    korvale::Result<korvale::Offset> border = korvale::try_offset({{0, 0, 0}, {4, 0, 0}, {0, 4, 0}}, 0.5);
    if (border)
        std::printf("%zu points\n", border->points.size());
    korvale::Equations equations;
    std::printf("%g\n", equations.try_get("missing").value_or(-1.0));
    // > 3 points
    // > -1
}
