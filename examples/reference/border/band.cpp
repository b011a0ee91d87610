#include "../example.h"

EXAMPLE("BORDERAddWings BORDERRemoveWings BORDERMakePipe")
{
    BORDERStatus s;
    BORDERInitialize(&s);
    s.path->dim = 3, s.path->count = 3; // the path grows, so the buffer is its own
    DATAAllocate(s.path);
    const double road[] = {0, 0, 0, 4, 0, 0, 8, 3, 0};
    std::copy(road, road + 9, s.path->dvals);
    s.distance = 0.5;
    s.split_events = 0;
    BORDERAddWings(&s); // 5 points
    BORDER_BORDER(&s);
    BORDERRemoveWings(&s); // 3 again, and 3 of the border
    BORDERMakePipe(&s);    // both as one outline
    for (int i = 0; i < s.output->count; ++i)
        std::printf("%.3f %.3f\n", s.output->dvals[3 * i], s.output->dvals[3 * i + 1]);
    release(s); // as at BORDERInitialize
    // > 0.000 -0.500
    // > 4.167 -0.500
    // > 8.300 2.600
    // > 8.000 3.000
    // > 4.000 0.000
    // > 0.000 0.000
}
