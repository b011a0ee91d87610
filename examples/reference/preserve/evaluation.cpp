#include "../example.h"

EXAMPLE("PreserveFindEnergy PreserveFindForce")
{
    double xyz[] = {0, 0, 0, 1, 0, 0}, pulled[] = {0, 0, 0, 3, 0, 0};
    int32_t ends[] = {0, 1};
    DATAstruct points = {.dim = 3, .count = 2, .dvals = xyz}, now = {.dim = 3, .count = 2, .dvals = pulled};
    DATAstruct edges = {.dim = 2, .count = 1, .type = DATA_TYPE_INT, .ivals = ends};
    PreserveStatus s = {};
    PreserveInitialize(&s, &points, &edges, nullptr, nullptr);
    PreservePreserve(&s, PRESERVE_LENGTH, 1);
    s.cur_points = &now;
    PreserveFindEnergy(&s); // first: the forces use the measures that it leaves
    PreserveFindForce(&s);
    std::printf("energy %g, force %g\n", s.energy, s.force->dvals[0]);
    PreserveDispose(&s);
    // > energy 4, force 4
}
