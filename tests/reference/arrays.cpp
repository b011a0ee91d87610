#include "tests/reference/arrays.h"

namespace korvale::reference {

void bounds(const double* values, int64_t count, int64_t dim, double* least, double* greatest)
{
    for (int64_t k = 0; k < dim; ++k)
        least[k] = greatest[k] = values[k];
    for (int64_t i = 1; i < count; ++i)
        for (int64_t k = 0; k < dim; ++k) {
            const double value = values[i * dim + k];
            if (least[k] > value)
                least[k] = value;
            if (value > greatest[k])
                greatest[k] = value;
        }
}

void carry_points(const double (*m)[4], const double* from, int64_t count, double* to)
{
    for (int64_t i = 0; i < count; ++i) {
        const double x = from[3 * i], y = from[3 * i + 1], z = from[3 * i + 2];
        double h[4];
        for (int r = 0; r < 4; ++r)
            h[r] = m[r][0] * x + m[r][1] * y + m[r][2] * z + m[r][3];
        for (int r = 0; r < 3; ++r)
            to[3 * i + r] = h[3] == 1.0 ? h[r] : h[r] / h[3];
    }
}

void mix(const double* a, const double* b, double wa, double wb, int64_t n, double* to)
{
    for (int64_t j = 0; j < n; ++j)
        to[j] = wa * a[j] + wb * b[j];
}

void mix_four(const double* a, const double* b, const double* c, const double* d, const double* weights, int64_t n,
              double* to)
{
    for (int64_t j = 0; j < n; ++j)
        to[j] = ((weights[0] * a[j] + weights[1] * b[j]) + weights[2] * c[j]) + weights[3] * d[j];
}

} // namespace korvale::reference
