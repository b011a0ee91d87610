#include "math/vector.h"

#include "math/internal/vector.h"

using namespace korvale::inside;

double dot_product(double* a, double* b)
{
    return dot(a, b);
}

void cross_product(double* a, double* b, double* out)
{
    cross(a, b, out);
}

double norm(double* v)
{
    return length(v);
}

int normalize(double* v)
{
    return make_unit(v) ? 1 : -1;
}

double angle(double* a, double* b)
{
    return std::acos(dot(a, b) / (length(a) * length(b)));
}
