#include <algorithm>

#include <korvale.h>

static double met = 0;

static void use(double distance)
{
    met = distance;
}

static void fill(double* corners)
{
    const double triangle[] = {-1, -1, 2, 1, -1, 2, 0, 1, 2};
    std::copy(triangle, triangle + 9, corners);
}

static bool cast(int number_of_triangles)
{
#include "block.h"
    return true;
}

int main()
{
    return !cast(1) || met != 8;
}
