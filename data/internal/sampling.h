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

/// Scatters one or more points over one or more triangles as `DATATriSample` does, with generators of its own: the
/// process's generator is neither drawn from nor seeded. False, with nothing written, where the heap is exhausted.
///
/// A draw says in which of 32,768 equal steps of the area a point lies, and a second one where in that step. So points
/// are those of `DATATriSample` wherever a step lies within one triangle, and a triangle without area gets none.
bool scatter_alone(const SampledTriangles& triangles, uint32_t seed, const SamplePoints& points,
                   const SampledAttributes& attributes);

} // namespace korvale::inside
