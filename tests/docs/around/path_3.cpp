#include <array>
#include <cmath>
#include <cstring>
#include <vector>

#include <korvale.h>

#include "block.h"

int main()
{
    double square[] = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
    Data loop;
    DataInitialize(&loop);
    loop.count = 4;
    loop.dim = 3;
    loop.dvals = square;
    Xfm frames[4];
    frames_of_planar_loop(loop, frames);
    for (const auto& frame : frames)
        for (const auto& row : frame)
            for (const double value : row)
                if (!(std::fabs(value) <= 1))
                    return 1;
}
