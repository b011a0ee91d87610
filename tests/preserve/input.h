#pragma once

#include <vector>

#include "preserve/status.h"
#include "tests/support/arrays.h"

namespace korvale::test {

/// The arrays of one call of `PreserveInitialize`, kept apart so that each can be spoilt.
struct Input {
    OwnedDATA points, edges, sizes, corners;
    PreserveStatus status = {};

    int initialize() { return PreserveInitialize(&status, points, edges, sizes, corners); }
};

/// The corners of the unit square.
Input square(const std::vector<int>& edges, const std::vector<int>& sizes, const std::vector<int>& corners);

/// The unit square as two triangles, 0 1 2 and 2 3 0.
Input two_triangles(const std::vector<int>& edges = {});

/// Three points, edges 0 1 and 2 1.
Input two_edges();

/// Releases a status, edges that the library made included.
void release(Input& input);

/// Expects that the call is refused, with the status and the heap untouched.
void expect_refused(Input& input);

/// Expects that the call succeeds, and releases the status.
void expect_accepted(Input& input);

} // namespace korvale::test
