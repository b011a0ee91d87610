#include "../example.h"

EXAMPLE("PreserveCompute")
{
    double xyz[] = {0, 0, 0, 1, 0, 0}, pulled[] = {0, 0, 0, 2, 0, 0};
    int32_t ends[] = {0, 1};
    DATAstruct points = {.dim = 3, .count = 2, .dvals = xyz}, now = {.dim = 3, .count = 2, .dvals = pulled};
    DATAstruct edges = {.dim = 2, .count = 1, .type = DATA_TYPE_INT, .ivals = ends};
    PreserveStatus s = {};
    PreserveInitialize(&s, &points, &edges, nullptr, nullptr);
    PreservePreserve(&s, PRESERVE_LENGTH, 0.25);
    PreserveCompute(&s, &now, 20); // both ends give way
    std::printf("%.2f to %.2f, energy %.6f\n", pulled[0], pulled[3], s.energy);
    PreserveDispose(&s);
    // > 0.44 to 1.56, energy 0.003138
}

EXAMPLE("PreserveGetForce")
{
    double xyz[] = {0, 0, 0, 1, 0, 0}, pulled[] = {0, 0, 0, 2, 0, 0};
    int32_t ends[] = {0, 1};
    DATAstruct points = {.dim = 3, .count = 2, .dvals = xyz}, now = {.dim = 3, .count = 2, .dvals = pulled};
    DATAstruct edges = {.dim = 2, .count = 1, .type = DATA_TYPE_INT, .ivals = ends}, force;
    DATAInitialize(&force);
    PreserveStatus s = {};
    PreserveInitialize(&s, &points, &edges, nullptr, nullptr);
    PreservePreserve(&s, PRESERVE_LENGTH, 1);
    PreserveGetForce(&s, &now, &force);
    std::printf("%g and %g along x, energy %g\n", force.dvals[0], force.dvals[3], s.energy);
    PreserveDispose(&s);
    DATADispose(&force);
    // > 2 and -2 along x, energy 1
}
