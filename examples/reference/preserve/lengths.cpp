#include "../example.h"

EXAMPLE("PreserveInitOlen PreserveFindNlen PreserveFindEdgeLengthForce")
{
    double xyz[] = {0, 0, 0, 3, 4, 0}, pulled[] = {0, 0, 0, 6, 8, 0};
    int32_t ends[] = {0, 1};
    DATAstruct points = {.dim = 3, .count = 2, .dvals = xyz}, now = {.dim = 3, .count = 2, .dvals = pulled};
    DATAstruct edges = {.dim = 2, .count = 1, .type = DATA_TYPE_INT, .ivals = ends};
    PreserveStatus s = {};
    PreserveInitialize(&s, &points, &edges, nullptr, nullptr);
    PreserveInitOlen(&s);
    s.cur_points = &now;
    std::fill(s.force->dvals, s.force->dvals + 6, 0.0); // the energy is 0 already
    PreserveFindNlen(&s);
    PreserveFindEdgeLengthForce(&s);
    std::printf("length %g, now %g, energy %g\n", s.olen->dvals[0], s.nlen->dvals[0], s.energy);
    std::printf("force on the second point %g %g\n", s.force->dvals[3], s.force->dvals[4]);
    PreserveDispose(&s);
    // > length 5, now 10, energy 25
    // > force on the second point -6 -8
}
