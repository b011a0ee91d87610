#include "tests/preserve/input.h"

#include <cstdlib>
#include <cstring>

#include <gtest/gtest.h>

#include "tests/support/heap.h"

namespace korvale::test {

Input square(const std::vector<int>& edges, const std::vector<int>& sizes, const std::vector<int>& corners)
{
    return {korvale::test::points<DATAstruct>({0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0}), ints<DATAstruct>(2, edges),
            ints<DATAstruct>(1, sizes), ints<DATAstruct>(1, corners)};
}

Input two_triangles(const std::vector<int>& edges)
{
    return square(edges, {3, 3}, {0, 1, 2, 2, 3, 0});
}

Input two_edges()
{
    return {korvale::test::points<DATAstruct>({0, 0, 0, 1, 0, 0, 1, 1, 0}), ints<DATAstruct>(2, {0, 1, 2, 1}), {}, {}};
}

void release(Input& input)
{
    DATAstruct* const edges = input.status.edges;
    PreserveDispose(&input.status);
    if (edges == input.edges.get())
        return;
    DATADispose(edges);
    std::free(edges);
}

void expect_refused(Input& input)
{
    PreserveStatus before = input.status;
    const HeapWatch heap;
    EXPECT_EQ(input.initialize(), -1);
    EXPECT_EQ(heap.live_blocks(), 0);
    EXPECT_EQ(std::memcmp(&before, &input.status, sizeof before), 0);
    PreserveDispose(&input.status);
}

void expect_accepted(Input& input)
{
    EXPECT_EQ(input.initialize(), 1);
    release(input);
}

} // namespace korvale::test
