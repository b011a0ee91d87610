#pragma once

#include <cstddef>
#include <cstdint>

#include "math/transform.h"
#include "ray/grid.h"

namespace korvale::ray {

/// Triangles that are gathered before they are tested: enough to hide the latency of their prefetches. Chosen.
constexpr int32_t kMostWaiting = 256;

/// One query on its way through the cells.
struct Cast {
    Xfm frame;               // into the frame of the ray; row 3 is (0, 0, 0, 1)
    const double* triangles; // [count][9]
    int32_t count;
    uint8_t* marks; // [marks_held], count or more: 1 once tested or gathered
    size_t marks_held;
    int hits;
    double nearest; // meaningful once there are hits
    int32_t waiting;
    int32_t numbers[kMostWaiting]; // [waiting] of triangles to be tested next, in order

    const double* triangle(int64_t t) const { return triangles + 9 * t; }
};

/// Takes the triangles of a cell that exist and are not marked yet, in the order of its chain: marks each, and tests it
/// or gathers it to be tested later.
void take_cell(Cast& cast, const data_list_struct& cell);

/// Tests the gathered triangles.
void test_waiting(Cast& cast);

} // namespace korvale::ray
