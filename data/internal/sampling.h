#pragma once

#include <cstdint>

#include "platform/internal/namespaces.h"

// Points scattered at random over triangles, with draws from wherever the caller has them.
namespace korvale::data {

/// Elements that stand `stride` values apart.
struct SampledTriangles {
    const double* values; ///< vertices in the first nine
    int64_t count, stride;
    const double* weights = nullptr; ///< [count] of the area of each, where they are not 1
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

/// Asked at the beginning, now and then, and in the end whether to go on, with what is done, from 0 to 1.
struct SamplingCourse {
    bool (*ask)(double done, void* user); ///< null: nobody is asked
    void* user;
};

/// What came of it. Nothing is written unless it is `done`, but some of the points where it is `stopped`.
enum class Sampled {
    done,
    no_room,   ///< the heap is exhausted
    no_area,   ///< the areas times the weights add up to 0
    too_large, ///< or to more than numbers go
    stopped
};

/// Scatters one or more points over one or more triangles as `DATATriSample` does, with generators of its own: the
/// process's generator is neither drawn from nor seeded.
///
/// A draw says in which of 32,768 equal steps of the area a point lies, and a second one where in that step. So points
/// are those of `DATATriSample` wherever a step lies within one triangle, and a triangle without area gets none.
Sampled scatter_alone(const SampledTriangles& triangles, uint32_t seed, const SamplePoints& points,
                      const SampledAttributes& attributes, const SamplingCourse& course);

} // namespace korvale::data
