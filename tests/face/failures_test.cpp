// The C++ face on an exhausted heap: what throws, and that nothing leaks.
#include "direct.h"

#include "tests/support/heap.h"

namespace korvale::test {
namespace {

// Every call with each of the library's allocations failing in turn: it throws `std::bad_alloc` or gives the right
// result, and leaves nothing behind.
template <class Call>
void expect_whole_or_thrown(Call call)
{
    NEEDS_HEAP_FAILURES();
    const auto expected = call();
    const int64_t failures = fail_each_allocation([&](int64_t) {
        try {
            EXPECT_TRUE(call() == expected);
        } catch (const std::bad_alloc&) {
        }
    });
    EXPECT_GT(failures, 0);
}

const Outline kSquare = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}};

TEST(FaceOnAnExhaustedHeap, OffsetThrows)
{
    expect_whole_or_thrown([] { return coordinates(offset(kSquare, 0.5).points); });
    expect_whole_or_thrown([] { return coordinates(offset(std::vector<Outline>{kSquare}, 0.5)[0].points); });
}

TEST(FaceOnAnExhaustedHeap, BandThrows)
{
    expect_whole_or_thrown([] { return coordinates(band({{0, 0, 0}, {2, 0, 0}, {4, 1, 0}}, 1).outline); });
}

TEST(FaceOnAnExhaustedHeap, RayGridThrows)
{
    const Mesh mesh = cube();
    expect_whole_or_thrown([&mesh] {
        RayGrid grid(mesh.vertices, mesh.triangles, GridSize{2, 2, 2});
        return std::pair(grid.hits({-5, 0.1, 0.2}, {1, 0, 0}), grid.nearest({-5, 0.1, 0.2}, {1, 0, 0}));
    });
}

TEST(FaceHeap, NothingStaysBehind)
{
    NEEDS_HEAP_COUNTS();
    const Mesh mesh = cube();
    const Outline ess = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {2, 1, 0}}, climb = {{0, 0, 0}, {3, 0, 1}, {3, 3, 7}};
    const BevelStep wall[] = {{0, 0}, {0, 1}};
    const auto use_all = [&] {
        offset(kSquare, -3);
        offset(std::vector<Outline>{kSquare, kSquare}, 0.5, {.keep_vertices = false});
        for (const double distance : {0.4, -0.4})
            for (const bool both : {false, true}) {
                band(ess, distance, {.both_sides = both}); // the wings, then the detour
                band(climb, distance, {.both_sides = both, .up = Point{0, 0, 1}});
            }
        bevel(std::vector<Outline>{kSquare}, wall);
        tube(climb, kSquare);
        scatter(mesh.vertices, mesh.triangles, 9, 1, coordinates(mesh.vertices));
        RayGrid grid(mesh.vertices, mesh.triangles);
        RayGrid moved(std::move(grid));
        moved.hits({-5, 0.1, 0.2}, {1, 0, 0});
        Relaxer relaxer(mesh.vertices, mesh.triangles);
        relaxer.keep("lengths").keep("angles").keep("volume").keep("area").hold(std::vector<bool>(8, true));
        Outline points = mesh.vertices;
        points[0][0] -= 0.25;
        relaxer.run(points);
        relaxer.forces(points);
        Equations e;
        e.declare("y x");
        e.add("y = RAND + x");
        e.make_table("RAND", 5);
        refusal_of([&] { e.add("y = nothing + RAND"); });
        refusal_of([&] { e.add("y"); });
        Equations other(std::move(e));
        other.evaluate_all();
    };
    use_all(); // what the runtime keeps for itself is there now
    const HeapWatch heap;
    use_all();
    EXPECT_EQ(heap.live_blocks(), 0);
}

TEST(FaceOnAnExhaustedHeap, ScatterThrows)
{
    std::vector<double> triangles(9 * 5000); // more than fit on the stack
    for (size_t i = 0; i < triangles.size(); ++i)
        triangles[i] = static_cast<double>(i * i % 101);
    expect_whole_or_thrown([&] { return coordinates(scatter(triangles, 9, 1).points); });
}

TEST(FaceOnAnExhaustedHeap, EquationsThrow)
{
    expect_whole_or_thrown([] {
        Equations e;
        e.declare("y x");
        const int equation = e.add("y = x * 2 + 1");
        e.set("x", 3);
        return e.evaluate(equation);
    });
}

TEST(FaceOnAnExhaustedHeap, RelaxerThrows)
{
    const Mesh mesh = cube();
    expect_whole_or_thrown([&] {
        Relaxer relaxer(mesh.vertices, mesh.triangles);
        relaxer.keep("lengths").keep("angles");
        Outline points = mesh.vertices;
        points[0][0] -= 0.25;
        relaxer.step(points, 3);
        return points;
    });
}

} // namespace
} // namespace korvale::test
