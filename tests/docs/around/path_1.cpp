#include <cmath>

#include <korvale.h>

int main()
{
    double square[] = {0, 0, 0, 0, 4, 0, 0, 4, 4, 0, 0, 4}, before[12];
    for (int i = 0; i < 12; ++i)
        before[i] = square[i];
    DATAstruct outline;
    DATAInitialize(&outline);
    outline.type = DATA_TYPE_DOUBLE;
    outline.count = 4;
    outline.dim = 3;
    outline.dvals = square;
#include "block.h"
    for (int i = 0; i < 12; ++i)
        if (std::fabs(square[i] - before[i]) > 1e-9)
            return 1;
    TransformDATA(flat, &outline, &outline);
    for (int i = 0; i < 4; ++i)
        if (std::fabs(square[3 * i + 2]) > 1e-9)
            return 2;
}
