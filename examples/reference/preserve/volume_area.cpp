#include "../example.h"

EXAMPLE("PreserveInitOvolume PreserveFindNvolume PreserveFindVolumeForce")
{
    double xyz[] = {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1}, flat[] = {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 0.5};
    int32_t corners[] = {0, 2, 1, 0, 1, 3, 1, 2, 3, 0, 3, 2}, three[] = {3, 3, 3, 3}; // a tetrahedron
    DATAstruct points = {.dim = 3, .count = 4, .dvals = xyz}, now = {.dim = 3, .count = 4, .dvals = flat};
    DATAstruct sizes = {.dim = 1, .count = 4, .type = DATA_TYPE_INT, .ivals = three};
    DATAstruct faces = {.dim = 1, .count = 12, .type = DATA_TYPE_INT, .ivals = corners};
    PreserveStatus s = {};
    PreserveInitialize(&s, &points, nullptr, &sizes, &faces);
    PreserveInitOvolume(&s);
    s.cur_points = &now;
    std::fill(s.force->dvals, s.force->dvals + 12, 0.0);
    PreserveFindNvolume(&s);
    PreserveFindVolumeForce(&s);
    std::printf("six times the volume %g, now %g; energy %g\n", s.ovolume, s.nvolume, s.energy);
    std::printf("force on the tip along z %g\n", s.force->dvals[11]);
    DATADispose(s.edges);
    std::free(s.edges);
    PreserveDispose(&s);
    // > six times the volume 1, now 0.5; energy 0.25
    // > force on the tip along z 1
}

EXAMPLE("PreserveInitOarea PreserveFindNarea PreserveFindSurfaceAreaForce")
{
    double xyz[] = {0, 0, 0, 4, 0, 0, 0, 4, 0}, wide[] = {0, 0, 0, 5, 0, 0, 0, 4, 0};
    int32_t corners[] = {0, 1, 2}, three[] = {3};
    DATAstruct points = {.dim = 3, .count = 3, .dvals = xyz}, now = {.dim = 3, .count = 3, .dvals = wide};
    DATAstruct sizes = {.dim = 1, .count = 1, .type = DATA_TYPE_INT, .ivals = three};
    DATAstruct faces = {.dim = 1, .count = 3, .type = DATA_TYPE_INT, .ivals = corners};
    PreserveStatus s = {};
    PreserveInitialize(&s, &points, nullptr, &sizes, &faces);
    PreserveInitOarea(&s);
    s.cur_points = &now;
    std::fill(s.force->dvals, s.force->dvals + 9, 0.0);
    PreserveFindNarea(&s);
    PreserveFindSurfaceAreaForce(&s);
    std::printf("twice the area %g, now %g; energy %g\n", s.oarea, s.narea, s.energy);
    std::printf("force on the second corner along x %g\n", s.force->dvals[3]);
    DATADispose(s.edges);
    std::free(s.edges);
    PreserveDispose(&s);
    // > twice the area 16, now 20; energy 16
    // > force on the second corner along x -32
}
