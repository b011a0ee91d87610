#include <cmath>

#include <korvale.h>

int main()
{
#include "block.h"
    return std::fabs(p[0] - 10) > 1e-12 || std::fabs(p[1] - 2) > 1e-12 || p[2] != 0;
}
