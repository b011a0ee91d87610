#include "tests/reference/transform.h"

#include <cmath>
#include <cstring>

namespace korvale::reference {

void make_identity(Xfm m)
{
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            m[i][j] = 0.0;
    for (int i = 0; i < 4; ++i)
        m[i][i] = 1.0;
}

void multiply(const Xfm a, const Xfm b, Xfm out)
{
    Xfm product;
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            product[i][j] = a[i][0] * b[0][j] + a[i][1] * b[1][j] + a[i][2] * b[2][j] + a[i][3] * b[3][j];
    std::memcpy(out, product, sizeof product);
}

void transpose(const Xfm in, Xfm out)
{
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            out[i][j] = in[j][i];
}

void transform_vector(const Xfm m, const double* v, double* out)
{
    double turned[3];
    for (int i = 0; i < 3; ++i)
        turned[i] = m[i][0] * v[0] + m[i][1] * v[1] + m[i][2] * v[2];
    std::memcpy(out, turned, sizeof turned);
}

int normalize(double* v)
{
    const double n = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
    if (n < 1e-06)
        return -1;
    for (int k = 0; k < 3; ++k)
        v[k] /= n;
    return 1;
}

double power(double x, int n)
{
    if (n <= 0)
        return 1.0;
    double result = x;
    for (int i = 1; i < n; ++i)
        result *= x;
    return result;
}

} // namespace korvale::reference
