#include "math/box.h"

#include "math/internal/box.h"

using namespace korvale::math;

bool bbox_intersect(double* box1, double* box2)
{
    return boxes_meet(box1, box2);
}
