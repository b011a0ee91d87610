#include "../example.h"

EXAMPLE("Border")
{
    double square[] = {0, 0, 0, 4, 0, 0, 4, 4, 0, 0, 4, 0};
    Data outline = {.dim = 3, .count = 4, .dvals = square};
    BorderStatus s;
    BorderInitialize(&s);
    std::free(s.path); // the empty one it came with
    s.path = &outline;
    s.distance = 0.5;
    if (Border(&s) == 1)
        std::printf("%d points, the first at %g %g\n", s.output->count, s.output->dvals[0], s.output->dvals[1]);
    DataDispose(s.output);
    std::free(s.output);
    // > 4 points, the first at -0.5 -0.5
}

EXAMPLE("BORDER_BORDER")
{
    double square[] = {0, 0, 0, 4, 0, 0, 4, 4, 0, 0, 4, 0};
    BORDERStatus s;
    BORDERInitialize(&s);
    *s.path = {.dim = 3, .count = 4, .dvals = square};
    s.distance = 0.5;
    if (BORDER_BORDER(&s) == 1)
        for (int i = 0; i < s.output->count; ++i)
            std::printf("%.2f %.2f\n", s.output->dvals[3 * i], s.output->dvals[3 * i + 1]);
    DATAInitialize(s.path); // the square is ours
    release(s);             // as at BORDERInitialize
    // > -0.50 -0.50
    // > 4.50 -0.50
    // > 4.50 4.50
    // > -0.50 4.50
}
