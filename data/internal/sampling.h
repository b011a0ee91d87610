#pragma once

#include <cstdint>

// Points scattered at random over triangles, with draws from wherever the caller has them.
namespace korvale::inside {

/// Elements that stand `stride` values apart.
struct SampledTriangles {
    const double* values; ///< vertices in the first nine
    int64_t count, stride;
};

struct SamplePoints {
    double* values; ///< x y z in the first three
    int64_t count, stride;
    int32_t* triangles; ///< [count] the triangle of each point; null where that is not wanted
};

struct SampledAttributes {
    const double* from; ///< [triangles][3][width]
    double* to;         ///< [points][width]
    int64_t width;      ///< 0 where none are carried
};

/// Scatters one or more points over one or more triangles as `DATATriSample` does, with a generator of its own: the
/// process's generator is neither drawn from nor seeded. False, with nothing written, where the heap is exhausted.
bool scatter_alone(const SampledTriangles& triangles, uint32_t seed, const SamplePoints& points,
                   const SampledAttributes& attributes);

} // namespace korvale::inside
