#include <cstdint>
#include <cstdlib>

#include <korvale.h>

static void wrap(DATAstruct& d, int type, int count, int dim)
{
    DATAInitialize(&d);
    d.type = type;
    d.count = count;
    d.dim = dim;
}

int main()
{
    double at_rest[] = {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1}, squashed[] = {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 0.5};
    int32_t face_sizes[] = {3, 3, 3, 3}, face_corners[] = {0, 2, 1, 0, 1, 3, 0, 3, 2, 1, 2, 3};
    uint8_t held[] = {1, 1, 1, 0};
    DATAstruct points, copy, sizes, corners, tags;
    wrap(points, DATA_TYPE_DOUBLE, 4, 3);
    points.dvals = at_rest;
    wrap(copy, DATA_TYPE_DOUBLE, 4, 3);
    copy.dvals = squashed;
    wrap(sizes, DATA_TYPE_INT, 4, 1);
    sizes.ivals = face_sizes;
    wrap(corners, DATA_TYPE_INT, 12, 1);
    corners.ivals = face_corners;
    wrap(tags, DATA_TYPE_BYTE, 4, 1);
    tags.bvals = held;
#include "block.h"
    return squashed[11] <= 0.9 || squashed[3] != 1;
}
