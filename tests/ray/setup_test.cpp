// Setting a record up: its defaults, its triangles and their marks.
#include "ray/grid.h"

#include <gtest/gtest.h>

#include "tests/ray/scene.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"

namespace korvale::test {
namespace {

TEST(ray_initialize, SetsTheDefaults)
{
    Data other;
    RayStatus s;
    s.triangles = &other;
    EXPECT_EQ(ray_initialize(&s), 1);
    EXPECT_EQ(s.triangles, nullptr);
    EXPECT_EQ(s.cells, nullptr);
    EXPECT_EQ(s.nx, 4);
    EXPECT_EQ(s.ny, 4);
    EXPECT_EQ(s.nz, 4);
    EXPECT_EQ(s.bbox.dim, 6);
    EXPECT_EQ(s.bbox.count, 1);
    EXPECT_EQ(s.bbox.type, DATA_TYPE_DOUBLE);
    EXPECT_TRUE(same_bits({0, 0, 0, 0, 0, 0}, s.bbox.dvals));
    EXPECT_EQ(s.tri_marks.dim, -1);
    EXPECT_EQ(s.tri_marks.count, -1);
    EXPECT_EQ(s.tri_marks.type, 0);
    EXPECT_EQ(s.tri_marks.bvals, nullptr);
    DataDispose(&s.bbox);
}

TEST(ray_initialize, RefusesANullRecord)
{
    EXPECT_EQ(ray_initialize(nullptr), -1);
}

TEST(ray_initialize, ReportsAnExhaustedHeap)
{
    NEEDS_HEAP_FAILURES();
    RayStatus s;
    {
        const HeapFailure failure(1);
        EXPECT_EQ(ray_initialize(&s), -1);
    }
    EXPECT_EQ(s.bbox.dvals, nullptr);
    EXPECT_EQ(s.triangles, nullptr);
    EXPECT_EQ(s.cells, nullptr);
    EXPECT_EQ(s.nz, 4);

    auto triangles = doubles<Data>(9, spanning(0, 0, 0, 1, 1, 1));
    ray_set_triangles(triangles, &s);
    ray_classify(&s);
    EXPECT_EQ(s.cells, nullptr);
    ray_declassify(&s);
}

TEST(ray_set_triangles, GivesEveryTriangleAMark)
{
    Scene s(copies(5));
    EXPECT_EQ(s->triangles, &s.triangles());
    EXPECT_EQ(s->tri_marks.dim, 1);
    EXPECT_EQ(s->tri_marks.count, 5);
    EXPECT_EQ(s->tri_marks.type, DATA_TYPE_BYTE);
    EXPECT_NE(s->tri_marks.bvals, nullptr);
    EXPECT_EQ(s->cells, nullptr);
}

TEST(ray_set_triangles, TakesAnEmptyArrayWithoutMarks)
{
    Scene s({});
    EXPECT_EQ(s->triangles, &s.triangles());
    EXPECT_EQ(s->tri_marks.bvals, nullptr);
    EXPECT_EQ(s->tri_marks.count, -1);
}

TEST(ray_set_triangles, LeavesTheMarksForAnEmptyArray)
{
    Scene s(copies(5));
    OwnedData none;
    none->count = 0;
    ray_set_triangles(none, s);
    EXPECT_EQ(s->triangles, none.get());
    EXPECT_EQ(s->tri_marks.count, 5);
}

TEST(ray_set_triangles, ReplacesTheMarksOfAnotherArray)
{
    NEEDS_HEAP_COUNTS();
    const HeapWatch heap;
    {
        Scene s(copies(5));
        auto three = doubles<Data>(9, copies(3));
        ray_set_triangles(three, s);
        EXPECT_EQ(s->triangles, three.get());
        EXPECT_EQ(s->tri_marks.count, 3);
        ray_set_triangles(three, s);
        EXPECT_EQ(s->tri_marks.count, 3);
    }
    EXPECT_EQ(heap.live_blocks(), 0);
}

TEST(ray_set_triangles, TakesNull)
{
    Scene s(copies(1));
    ray_set_triangles(nullptr, s);
    EXPECT_EQ(s->triangles, nullptr);
    ray_set_triangles(&s.triangles(), nullptr);
}

TEST(ray_set_triangles, LeavesTheMarksWithoutABufferWhenTheHeapIsExhausted)
{
    NEEDS_HEAP_FAILURES();
    auto triangles = doubles<Data>(9, copies(2));
    Scene s({});
    {
        const HeapFailure failure(1);
        ray_set_triangles(triangles, s);
    }
    EXPECT_EQ(s->triangles, triangles.get());
    EXPECT_EQ(s->tri_marks.count, 2);
    EXPECT_EQ(s->tri_marks.bvals, nullptr);
}

} // namespace
} // namespace korvale::test
