// Preloaded, this takes the place of four of the library's exports wherever a call can be intercepted.
#include "math/combinatorics.h"
#include "math/rotation.h"
#include "math/vector.h"

double norm(double*)
{
    return -1e30;
}

double angle(double*, double*)
{
    return -2e30;
}

double power(double, int)
{
    return -3e30;
}

int normalize(double* v)
{
    v[0] = v[1] = v[2] = -4e30;
    return -1;
}
