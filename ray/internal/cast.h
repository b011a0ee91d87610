#pragma once

#include <cstdint>

#include "math/transform.h"
#include "ray/grid.h"

namespace korvale::inside {

/// One query on its way through the cells.
struct Cast {
    Xfm frame;               // into the frame of the ray; row 3 is (0, 0, 0, 1)
    const double* triangles; // [count][9]
    int32_t count;
    uint8_t* marks; // [count] 1 once tested
    int hits;
    double nearest; // meaningful once there are hits

    const double* triangle(int64_t t) const { return triangles + 9 * t; }
};

/// Tests the triangles of a cell that are not marked yet, in the order of its chain.
void test_cell(Cast& cast, const data_list_struct& cell);

/// Asks for the first triangles of a cell, to be tested soon.
void prefetch_triangles(const Cast& cast, const data_list_struct& cell);

} // namespace korvale::inside
