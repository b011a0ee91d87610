#include <initializer_list>

#include <korvale.h>

int main()
{
    double corners[] = {0, 0, 0, 1, 0, 0, 0, 1, 0}, at_corners[] = {0, 0, 1, 0, 0, 1, 0, 0, 1};
    DATAstruct triangles, points, normals, point_normals;
    for (DATAstruct* d : {&triangles, &points, &normals, &point_normals}) {
        DATAInitialize(d);
        d->type = DATA_TYPE_DOUBLE;
    }
    triangles.count = normals.count = 1;
    triangles.dim = normals.dim = 9;
    triangles.dvals = corners;
    normals.dvals = at_corners;
    points.count = point_normals.count = 10;
    points.dim = point_normals.dim = 3;
    if (DATAAllocate(&points) < 0 || DATAAllocate(&point_normals) < 0)
        return 1;
#include "block.h"
    for (int i = 0; i < 10; ++i)
        if (points.dvals[3 * i] < 0 || points.dvals[3 * i + 1] < 0 || points.dvals[3 * i + 2] != 0 ||
            point_normals.dvals[3 * i + 2] < 0.9)
            return 2;
}
