#include "ray/internal/cast.h"

#include "math/internal/mat.h"
#include "platform/module_start.h"
#include "ray/internal/meet.h"

namespace korvale {
namespace {

/// Tests a triangle seen[9] in the frame of the ray.
void test_seen(Cast& cast, const double* seen)
{
    const double start[3] = {0, 0, 0};
    double z;
    if (!meets_triangle(start, seen, &z))
        return;
    if (cast.hits == 0 || z < cast.nearest)
        cast.nearest = z;
    ++cast.hits;
}

/// Whether a triangle is there and not marked yet; marks it.
bool is_new(Cast& cast, int32_t t)
{
    if (t < 0 || t >= cast.count || cast.marks[t] != 0)
        return false;
    cast.marks[t] = 1;
    return true;
}

void test_triangle(Cast& cast, int32_t t)
{
    const double* const triangle = cast.triangles + 9 * static_cast<int64_t>(t);
    double seen[9];
    for (int v = 0; v < 9; v += 3)
        carry_point(cast.frame, triangle + v, seen + v);
    test_seen(cast, seen);
}

} // namespace

void test_cell(Cast& cast, const data_list_struct& cell)
{
    for (const data_list_struct* node = cell.next; node != nullptr; node = node->next)
        for (int32_t i = 0; i < node->count; ++i)
            if (is_new(cast, node->ivals[i]))
                test_triangle(cast, node->ivals[i]);
}

} // namespace korvale
