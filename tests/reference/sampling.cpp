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

/// The cumulative shares of the area, weighed where there are weights.
std::vector<double> shares_of(const std::vector<double>& triangles, const std::vector<double>& weights = {})
{
    const size_t n = triangles.size() / 9;
    std::vector<double> shares;
    double sum = 0.0;
    for (size_t i = 0; i < n; ++i) {
        shares.push_back(area(&triangles[9 * i]) * (weights.empty() ? 1.0 : weights[i]));
        sum += shares[i];
    }
    for (size_t i = 0; i < n; ++i) {
        shares[i] /= sum;
        if (i > 0)
            shares[i] = shares[i - 1] + shares[i];
    }
    return shares;
}

/// Adds the point of triangle i at two draws.
void add_point(const std::vector<double>& triangles, const std::vector<double>& attributes, size_t i, double u,
               double v, Samples& samples)
{
    const size_t k = attributes.size() / (triangles.size() / 3);
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
    samples.triangles.push_back(static_cast<int32_t>(i));
}

} // namespace

Samples sample_triangles(const std::vector<double>& triangles, unsigned seed, int64_t count,
                         const std::vector<double>& attributes)
{
    Mwsrand(seed);
    const std::vector<double> shares = shares_of(triangles);
    Samples samples;
    for (int64_t s = 0; s < count; ++s) {
        const double r = Mwrand() / 32767.0;
        size_t i = 0;
        while (i < shares.size() && !(r <= shares[i]))
            ++i;
        if (i == shares.size())
            i = shares.size() - 1;
        const double u = Mwrand() / 32767.0;
        const double v = Mwrand() / 32767.0;
        add_point(triangles, attributes, i, u, v, samples);
    }
    return samples;
}

Samples scatter_triangles(const std::vector<double>& triangles, const std::vector<double>& weights, uint32_t seed,
                          int64_t count, const std::vector<double>& attributes)
{
    uint32_t state = seed;
    const auto draw = [&] {
        state = state * 214013 + 2531011;
        return (state >> 16) % 32768;
    };
    uint64_t counter = seed;
    const auto draw_64_bits = [&] {
        counter += 0x9e3779b97f4a7c15u;
        uint64_t bits = counter;
        bits = (bits ^ (bits >> 30)) * 0xbf58476d1ce4e5b9u;
        bits = (bits ^ (bits >> 27)) * 0x94d049bb133111ebu;
        return bits ^ (bits >> 31);
    };
    const std::vector<double> shares = shares_of(triangles, weights);
    size_t last = 0; // that adds to the area
    for (size_t i = 1; i < shares.size(); ++i)
        if (shares[i] > shares[last])
            last = i;
    Samples samples;
    for (int64_t s = 0; s < count; ++s) {
        const uint32_t step = draw();
        // The middle of one of 2^37 parts of the step.
        const double within = (static_cast<double>(draw_64_bits() / (uint64_t{1} << 27)) + 0.5) / 0x1p37;
        const double r = (step + within) / 32768.0;
        size_t i = 0;
        while (i < last && !(r <= shares[i]))
            ++i;
        const double u = draw() / 32767.0;
        const double v = draw() / 32767.0;
        add_point(triangles, attributes, i, u, v, samples);
    }
    return samples;
}

} // namespace korvale::reference
