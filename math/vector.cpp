#include "math/vector.h"

#include "math/internal/vec.h"

double dot_product(double* a, double* b)
{
    return korvale::dot(a, b);
}

void cross_product(double* a, double* b, double* out)
{
    korvale::cross(a, b, out);
}

double norm(double* v)
{
    return korvale::length(v);
}

int normalize(double* v)
{
    return korvale::make_unit(v) ? 1 : -1;
}

double angle(double* a, double* b)
{
    return std::acos(korvale::dot(a, b) / (korvale::length(a) * korvale::length(b)));
}
