#include "../example.h"

EXAMPLE("PreserveInitOfang PreserveFindNfang PreserveFindFaceAngleForce")
{
    double xyz[] = {0, 0, 0, 4, 0, 0, 0, 4, 0}, bent[] = {0, 0, 0, 4, 0, 0, 4, 4, 0};
    int32_t corners[] = {0, 1, 2}, three[] = {3};
    DATAstruct points = {.dim = 3, .count = 3, .dvals = xyz}, now = {.dim = 3, .count = 3, .dvals = bent};
    DATAstruct sizes = {.dim = 1, .count = 1, .type = DATA_TYPE_INT, .ivals = three};
    DATAstruct faces = {.dim = 1, .count = 3, .type = DATA_TYPE_INT, .ivals = corners};
    PreserveStatus s = {};
    PreserveInitialize(&s, &points, nullptr, &sizes, &faces);
    PreserveInitOfang(&s);
    s.cur_points = &now;
    std::fill(s.force->dvals, s.force->dvals + 9, 0.0);
    PreserveFindNfang(&s);
    PreserveFindFaceAngleForce(&s);
    std::printf("cosine at corner 0: %.4f, now %.4f; energy %.4f\n", s.ofang->dvals[0], s.nfang->dvals[0], s.energy);
    std::printf("force on corner 2 along x %.4f\n", s.force->dvals[6]); // back to where it was
    DATADispose(s.edges);
    std::free(s.edges);
    PreserveDispose(&s);
    // > cosine at corner 0: 0.0000, now 0.7071; energy 1.0000
    // > force on corner 2 along x -0.4786
}
