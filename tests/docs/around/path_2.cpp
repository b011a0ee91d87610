#include <array>
#include <vector>

#include <korvale.h>

static int placed = 0;

static void place_section(const std::array<double, 16>& frame)
{
    placed += frame[15] == 1;
}

int main()
{
    double points[] = {1, 0, 0, 0, 1, 0.5, -1, 0, 0, 0, -1, 0.5};
    Data path;
    DataInitialize(&path);
    path.count = 4;
    path.dim = 3;
    path.dvals = points;
#include "block.h"
    return placed != 4;
}
