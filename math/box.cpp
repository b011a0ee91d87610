#include "math/box.h"

#include "math/internal/box.h"

bool bbox_intersect(double* box1, double* box2)
{
    return korvale::boxes_meet(box1, box2);
}
