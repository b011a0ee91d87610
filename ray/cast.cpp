// Testing triangles, arranged around cache misses. Triangles lie far apart in memory, and the few of a small cell would
// be tested before the next could arrive. So in large meshes the triangles of small cells are gathered and prefetched
// first, and tested when the last cell has been seen or the list is full. Cells with long lists prefetch ahead as they
// are walked. The triangles of small meshes stay in the cache, and are tested at once.
//
// Most triangles of a cell lie wholly beside the ray or behind its start. With four lanes they are rejected early: one
// value of lanes takes a vertex into the frame of the ray, by the operations of the plain transform in their order, and
// one comparison of all three vertices decides. The rest go through the plain test.
#include "ray/internal/cast.h"

#include "math/internal/matrix.h"
#include "platform/internal/lanes.h"
#include "ray/internal/cells.h"
#include "ray/internal/meet.h"

namespace korvale::ray {
namespace {

/// The prefetch distance in a long list of numbers. Chosen.
constexpr int32_t kPrefetchDistance = 32;

/// Triangles that fit the processor's own caches from one query to the next: at 72 bytes each, 576 KiB.
constexpr int32_t kFewTriangles = 8192;

void prefetch_triangle(const Cast& cast, int32_t t)
{
    if (t < 0 || t >= cast.count)
        return;
    __builtin_prefetch(cast.triangle(t));
    __builtin_prefetch(cast.triangle(t) + 8);
}

[[gnu::noinline]] void test_triangle(Cast& cast, int32_t t)
{
    const double* const triangle = cast.triangle(t);
    const double start[3] = {0, 0, 0};
    double seen[9], z;
    for (int v = 0; v < 9; v += 3)
        carry_point(cast.frame, triangle + v, seen + v);
    if (!meets_triangle(start, seen, &z))
        return;
    if (cast.hits == 0 || z < cast.nearest)
        cast.nearest = z;
    ++cast.hits;
}

/// Marks each triangle of a cell that exists and is not marked yet, and calls `test` with its number, in the order of
/// the chain.
template <class Test>
KORVALE_OVER_LANES void for_each_new(const Cast& cast, const data_list_struct& cell, const Test& test)
{
    uint8_t* const marks = cast.marks; // in locals: a store of a byte may alias anything, `cast` too
    const int32_t count = cast.count;
    for (const data_list_struct* node = cell.next; node != nullptr; node = node->next) {
        const int32_t* const numbers = node->ivals;
        const int32_t n = numbers_held(*node);
        for (int32_t i = 0; i < n; ++i) {
            if (i + kPrefetchDistance < n)
                prefetch_triangle(cast, numbers[i + kPrefetchDistance]);
            const int32_t t = numbers[i];
            if (t < 0 || t >= count || marks[t] != 0)
                continue;
            marks[t] = 1;
            test(t);
        }
    }
}

/// The columns of a frame.
struct WideFrame {
    Quad x, y, z, translation;
};

KORVALE_QUAD Quad column(const double (*m)[4], int j)
{
    return Quad(m[0][j], m[1][j], m[2][j], m[3][j]);
}

/// The four coordinates of a vertex in the frame.
KORVALE_QUAD Quad carried(const WideFrame& m, const double* p)
{
    return m.x * p[0] + m.y * p[1] + m.z * p[2] + m.translation;
}

/// Early rejection: whether all vertices lie on one side of the ray, or behind its start.
KORVALE_QUAD bool is_beside(const WideFrame& m, const double* triangle)
{
    const Quad p0 = carried(m, triangle), p1 = carried(m, triangle + 3), p2 = carried(m, triangle + 6);
    const int lower = bits((p0 < 0.0) & (p1 < 0.0) & (p2 < 0.0));
    const int upper = bits((p0 > 0.0) & (p1 > 0.0) & (p2 > 0.0));
    // The fourth coordinates are 1, or NaN where a vertex is not finite: such a triangle takes the plain way.
    const bool is_finite = (upper & 8) != 0;
    return is_finite && ((lower & 7) | (upper & 3)) != 0;
}

KORVALE_QUAD WideFrame wide(const double (*m)[4])
{
    return {column(m, 0), column(m, 1), column(m, 2), column(m, 3)};
}

// The triangles of a cell, and the gathered ones, each with four lanes and plainly.

KORVALE_FOUR_LANES void test_cell_wide(Cast& cast, const data_list_struct& cell)
{
    const WideFrame m = wide(cast.frame);
    for_each_new(cast, cell, [&](int32_t t) {
        if (!is_beside(m, cast.triangle(t)))
            test_triangle(cast, t);
    });
}

void test_cell(Cast& cast, const data_list_struct& cell)
{
    for_each_new(cast, cell, [&](int32_t t) { test_triangle(cast, t); });
}

KORVALE_FOUR_LANES void test_waiting_wide(Cast& cast)
{
    const WideFrame m = wide(cast.frame);
    for (int32_t i = 0; i < cast.waiting; ++i)
        if (!is_beside(m, cast.triangle(cast.numbers[i])))
            test_triangle(cast, cast.numbers[i]);
}

void test_waiting_plainly(Cast& cast)
{
    for (int32_t i = 0; i < cast.waiting; ++i)
        test_triangle(cast, cast.numbers[i]);
}

/// Marks the new triangles of a node of at most kMostWaiting numbers, prefetches and gathers them.
void gather(Cast& cast, const data_list_struct& node)
{
    const int32_t n = numbers_held(node);
    if (n > kMostWaiting - cast.waiting)
        test_waiting(cast);
    uint8_t* const marks = cast.marks; // in locals: a store of a byte may alias anything, `cast` too
    const double* const triangles = cast.triangles;
    const int32_t count = cast.count;
    int32_t waiting = cast.waiting;
    for (int32_t i = 0; i < n; ++i) {
        const int32_t t = node.ivals[i];
        if (t < 0 || t >= count)
            continue;
        __builtin_prefetch(triangles + 9 * int64_t{t});
        __builtin_prefetch(triangles + 9 * int64_t{t} + 8);
        cast.numbers[waiting] = t; // branchless: whether a triangle is marked is unpredictable
        waiting += marks[t] == 0 ? 1 : 0;
        marks[t] = 1;
    }
    cast.waiting = waiting;
}

} // namespace

void take_cell(Cast& cast, const data_list_struct& cell)
{
    const data_list_struct* const node = cell.next;
    if (cast.count > kFewTriangles && node != nullptr && node->next == nullptr && node->count <= kNodeRoom) {
        gather(cast, *node);
        return;
    }
    test_waiting(cast); // they come first in the documented order
    widest([&] { test_cell_wide(cast, cell); }, [&] { test_cell(cast, cell); });
}

void test_waiting(Cast& cast)
{
    if (cast.waiting == 0)
        return;
    widest([&] { test_waiting_wide(cast); }, [&] { test_waiting_plainly(cast); });
    cast.waiting = 0;
}

} // namespace korvale::ray
