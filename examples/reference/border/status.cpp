#include "../example.h"

EXAMPLE("BorderInitialize")
{
    BorderStatus s;
    BorderInitialize(&s);
    std::printf("distance %g, height %g, keep_collapsed %d\n", s.distance, s.height, s.keep_collapsed);
    DataDispose(s.path);
    std::free(s.path); // there is no output before the first call
    // > distance 1, height 0, keep_collapsed 1
}

EXAMPLE("BORDERInitialize")
{
    BORDERStatus s;
    BORDERInitialize(&s);
    std::printf("distance %g, height %g, split_events %d\n", s.distance, s.height, s.split_events);
    for (DATAstruct* array :
         {s.path, s.output, s.flat, s.velocity, s.direction, s.line, s.dead, s.length, s.rate, s.merge}) {
        DATADispose(array);
        std::free(array);
    }
    // > distance 1, height 0, split_events 1
}
