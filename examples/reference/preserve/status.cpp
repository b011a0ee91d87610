#include "../example.h"

EXAMPLE("PreserveInitialize PreserveDispose")
{
    double xyz[] = {0, 0, 0, 4, 0, 0, 4, 4, 0, 0, 4, 0};
    int32_t corners[] = {0, 1, 2, 3}, four[] = {4};
    DATAstruct points = {.dim = 3, .count = 4, .dvals = xyz};
    DATAstruct sizes = {.dim = 1, .count = 1, .type = DATA_TYPE_INT, .ivals = four};
    DATAstruct faces = {.dim = 1, .count = 4, .type = DATA_TYPE_INT, .ivals = corners};
    PreserveStatus s = {}; // zero-filled
    std::printf("%d: ", PreserveInitialize(&s, &points, nullptr, &sizes, &faces));
    std::printf("%d edges, the last from %d to %d\n", s.edges->count, s.edges->ivals[6], s.edges->ivals[7]);
    DATAstruct* edges = s.edges; // built from the faces, so ours
    PreserveDispose(&s);
    DATADispose(edges);
    std::free(edges);
    // > 1: 4 edges, the last from 0 to 3
}

EXAMPLE("PreserveSetTag")
{
    double xyz[] = {0, 0, 0, 1, 0, 0}, pulled[] = {0, 0, 0, 2, 0, 0};
    int32_t ends[] = {0, 1};
    uint8_t held[] = {1, 0}; // point 0 stays where it is
    DATAstruct points = {.dim = 3, .count = 2, .dvals = xyz}, now = {.dim = 3, .count = 2, .dvals = pulled};
    DATAstruct edges = {.dim = 2, .count = 1, .type = DATA_TYPE_INT, .ivals = ends};
    DATAstruct tags = {.dim = 1, .count = 2, .type = DATA_TYPE_BYTE, .bvals = held};
    PreserveStatus s = {};
    PreserveInitialize(&s, &points, &edges, nullptr, nullptr);
    PreservePreserve(&s, PRESERVE_LENGTH, 0.25);
    PreserveSetTag(&s, &tags);
    PreserveCompute(&s, &now, 20);
    std::printf("from %g to %.2f\n", pulled[0], pulled[3]);
    PreserveDispose(&s);
    // > from 0 to 1.15
}

EXAMPLE("PreserveSetMass")
{
    double xyz[] = {0, 0, 0, 1, 0, 0}, kilograms[] = {2, 0};
    DATAstruct points = {.dim = 3, .count = 2, .dvals = xyz}, masses = {.dim = 1, .count = 2, .dvals = kilograms};
    PreserveStatus s = {};
    PreserveInitialize(&s, &points, nullptr, nullptr, nullptr);
    std::printf("%d: a mass of 0\n", PreserveSetMass(&s, &masses));
    kilograms[1] = 3;
    std::printf("%d\n", PreserveSetMass(&s, &masses));
    PreserveDispose(&s);
    // > -1: a mass of 0
    // > 1
}

EXAMPLE("PreservePreserve")
{
    double xyz[] = {0, 0, 0, 3, 4, 0};
    int32_t ends[] = {0, 1};
    DATAstruct points = {.dim = 3, .count = 2, .dvals = xyz};
    DATAstruct edges = {.dim = 2, .count = 1, .type = DATA_TYPE_INT, .ivals = ends};
    PreserveStatus s = {};
    PreserveInitialize(&s, &points, &edges, nullptr, nullptr);
    std::printf("%d: ", PreservePreserve(&s, PRESERVE_LENGTH, 1));
    std::printf("length %g\n", s.olen->dvals[0]);
    std::printf("%d: there are no faces\n", PreservePreserve(&s, PRESERVE_VOLUME, 1));
    PreserveDispose(&s);
    // > 1: length 5
    // > -1: there are no faces
}

EXAMPLE("PreserveReInitialize")
{
    double xyz[] = {0, 0, 0, 1, 0, 0}, longer[] = {0, 0, 0, 7, 0, 0};
    int32_t ends[] = {0, 1};
    DATAstruct points = {.dim = 3, .count = 2, .dvals = xyz}, others = {.dim = 3, .count = 2, .dvals = longer};
    DATAstruct edges = {.dim = 2, .count = 1, .type = DATA_TYPE_INT, .ivals = ends};
    PreserveStatus s = {};
    PreserveInitialize(&s, &points, &edges, nullptr, nullptr);
    PreservePreserve(&s, PRESERVE_LENGTH, 1);
    PreserveReInitialize(&s, &others);
    std::printf("%g", s.olen->dvals[0]); // the measure stays
    PreservePreserve(&s, PRESERVE_LENGTH, 1);
    std::printf(", then %g\n", s.olen->dvals[0]);
    PreserveDispose(&s);
    // > 1, then 7
}
