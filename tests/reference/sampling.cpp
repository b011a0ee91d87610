#include "tests/reference/sampling.h"

#include <cmath>

#include "platform/layer.h"

namespace korvale::reference {
namespace {

double area(const double* t)
{
    const double a[] = {t[3] - t[0], t[4] - t[1], t[5] - t[2]};
    const double b[] = {t[6] - t[0], t[7] - t[1], t[8] - t[2]};
    const double c[] = {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
    return 0.5 * std::sqrt(c[0] * c[0] + c[1] * c[1] + c[2] * c[2]);
}

} // namespace

Samples sample_triangles(const std::vector<double>& triangles, unsigned seed, int64_t count,
                         const std::vector<double>& attributes)
{
    const size_t n = triangles.size() / 9;
    const size_t k = attributes.size() / (3 * n);
    Mwsrand(seed);
    std::vector<double> shares;
    double sum = 0.0;
    for (size_t i = 0; i < n; ++i) {
        shares.push_back(area(&triangles[9 * i]));
        sum += shares[i];
    }
    for (size_t i = 0; i < n; ++i) {
        shares[i] /= sum;
        if (i > 0)
            shares[i] = shares[i - 1] + shares[i];
    }
    Samples samples;
    samples.points.reserve(static_cast<size_t>(3 * count));
    for (int64_t s = 0; s < count; ++s) {
        const double r = Mwrand() / 32767.0;
        size_t i = 0;
        while (i < n && !(r <= shares[i]))
            ++i;
        if (i == n)
            i = n - 1;
        double u = Mwrand() / 32767.0;
        double v = Mwrand() / 32767.0;
        if (u + v > 1) {
            u = 1 - u;
            v = 1 - v;
        }
        const double w = 1 - u - v;
        const double* const t = &triangles[9 * i];
        for (int axis = 0; axis < 3; ++axis)
            samples.points.push_back(u * t[axis] + v * t[3 + axis] + w * t[6 + axis]);
        for (size_t j = 0; j < k; ++j) {
            const double* const a = &attributes[3 * k * i];
            samples.attributes.push_back(u * a[j] + v * a[k + j] + w * a[2 * k + j]);
        }
    }
    return samples;
}

} // namespace korvale::reference
