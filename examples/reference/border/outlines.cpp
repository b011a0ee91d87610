#include "../example.h"

EXAMPLE("BORDER")
{
    double plate[] = {0, 0, 0, 9, 0, 0, 9, 9, 0, 0, 9, 0}, hole[] = {3, 3, 0, 6, 3, 0, 6, 6, 0, 3, 6, 0};
    DATAstruct outer = {.dim = 3, .count = 4, .dvals = plate}, inner = {.dim = 3, .count = 4, .dvals = hole};
    void* outlines[] = {&outer, &inner};
    BORDERStatus s;
    BORDERInitialize(&s);
    *s.path = {.dim = 1, .count = 2, .type = DATA_TYPE_DATA, .pvals = outlines};
    s.distance = 1; // the plate grows, the hole shrinks
    s.height = 5;
    if (BORDER(&s) == 1)
        for (int k = 0; k < 2; ++k) {
            const double* p = static_cast<DATAstruct*>(s.output->pvals[k])->dvals;
            std::printf("from %.2f %.2f %.2f\n", p[0], p[1], p[2]);
        }
    DATAInitialize(s.path); // the outlines are ours
    release(s);             // as at BORDERInitialize
    // > from -1.00 -1.00 5.00
    // > from 4.00 4.00 5.00
}
