// Results that are values or failures, and the failure of each `try_` function.
#include "direct.h"

#include <thread>

#include "tests/support/heap.h"

namespace korvale::test {
namespace {

const Outline kSquare = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}};
const Outline kTwo = {{0, 0, 0}, {1, 0, 0}};
const std::vector<Triangle> kTriangles = {{0, 1, 2}, {0, 2, 3}};

/// That a result has failed with the sentence that its function without `try_` throws.
template <class T>
void expect_refused(const Result<T>& result, const std::function<void()>& call)
{
    const std::string thrown = refusal_of(call);
    EXPECT_NE(thrown, "");
    ASSERT_FALSE(result.has_value()) << thrown;
    EXPECT_EQ(result.error().what(), thrown);
    EXPECT_EQ(refusal_of([&] { (void)result.value(); }), thrown);
    EXPECT_EQ(thrown.substr(0, thrown.find(": ")), result.error().function());
    EXPECT_EQ(result.error().status(), KORVALE_BAD_ARGUMENT);
}

TEST(FaceResult, IsAValueOrSaysWhyNot)
{
    const Result<Offset> border = try_offset(kSquare, 0.5);
    ASSERT_TRUE(border);
    EXPECT_EQ(*border, offset(kSquare, 0.5));
    EXPECT_EQ(border->points.size(), 4u);
    EXPECT_EQ(border.value().points[2], (Point{4.5, 4.5, 0}));

    const Result<Offset> none = try_offset(kTwo, 0.5);
    ASSERT_FALSE(none);
    EXPECT_STREQ(none.error().what(), "offset: outline must have at least 3 points, but it has 2");
    EXPECT_EQ(none.error().function(), "offset");
    EXPECT_EQ(none.error().argument(), "outline");
    EXPECT_EQ(none.error().status(), KORVALE_BAD_ARGUMENT);
    EXPECT_EQ(none.error().place(), -1);
    EXPECT_EQ(none.error().word(), "");
    EXPECT_THROW(none.value(), Error);
}

TEST(FaceResult, GivesAnotherValueInsteadOfNone)
{
    EXPECT_EQ(try_offset(kTwo, 0.5).value_or(Offset()).points.size(), 0u);
    EXPECT_EQ(try_offset(kSquare, 0.5).value_or(Offset()).points.size(), 4u);
}

TEST(FaceResult, FailuresAreCopiedWhole)
{
    const Failure failure = try_offset(kTwo, 0.5).error();
    Failure copy = failure;
    EXPECT_STREQ(copy.what(), failure.what());
    copy = try_band(kTwo, 0).error();
    EXPECT_EQ(copy.argument(), "distance");
    EXPECT_EQ(failure.argument(), "outline");
}

TEST(FaceResult, OutlinesAndLinesTellWhatTheyRefuse)
{
    EXPECT_EQ(*try_band(kTwo, 1), band(kTwo, 1));
    EXPECT_EQ(*try_thin(kSquare, 0.1), thin(kSquare, 0.1));
    EXPECT_EQ(*try_flatten(kSquare), flatten(kSquare));
    EXPECT_EQ(*try_frames(kSquare), frames(kSquare));
    EXPECT_EQ(*try_offset({kSquare, kSquare}, 1), offset({kSquare, kSquare}, 1));
    std::vector<Transform> few(2), places(4);
    EXPECT_TRUE(try_frames(kSquare, places));
    expect_refused(try_frames(kSquare, few), [&] { frames(kSquare, few); });
    expect_refused(try_frames(Outline(1)), [] { frames(Outline(1)); });
    expect_refused(try_flatten(Outline()), [] { flatten(Outline()); });
    expect_refused(try_band(kTwo, 0), [] { band(kTwo, 0); });
    expect_refused(try_thin(kTwo, -1), [] { thin(kTwo, -1); });
    expect_refused(try_offset({kSquare, kTwo}, 1), [] { offset({kSquare, kTwo}, 1); });
    Offsetter offsetter = *Offsetter::try_make();
    EXPECT_TRUE(offsetter.try_offset(kSquare, 1));
    EXPECT_EQ(offsetter.points().size(), 4u);
    expect_refused(offsetter.try_offset(kTwo, 1), [&] { offsetter(kTwo, 1); });
    expect_refused(offsetter.try_shape({kTwo}, 1), [&] { offsetter.shape({kTwo}, 1); });
}

TEST(FaceResult, TransformsTellWhatTheyRefuse)
{
    EXPECT_EQ(*Transform::scaling({2, 2, 2}).try_inverse(), Transform::scaling({0.5, 0.5, 0.5}));
    expect_refused(Transform::scaling({0, 1, 1}).try_inverse(), [] { Transform::scaling({0, 1, 1}).inverse(); });
    expect_refused(Transform::try_into_frame({}, {0, 0, 1}, {0, 0, 1}), [] {
        Transform::into_frame({}, {0, 0, 1}, {0, 0, 1});
    });
    Outline one(1);
    expect_refused(Transform().try_apply(kTwo, one), [&] { Transform().apply(kTwo, one); });
    EXPECT_TRUE(Transform::translation({1, 2, 3}).try_apply(one));
    EXPECT_EQ(one[0], (Point{1, 2, 3}));
}

TEST(FaceResult, MeshesTellWhatTheyRefuse)
{
    const BevelStep wall[] = {{0, 0}, {0, 1}};
    const Mesh box = *try_bevel(kSquare, wall);
    EXPECT_EQ(box, bevel(kSquare, wall));
    EXPECT_EQ(*try_tube({{0, 0, 0}, {0, 0, 1}}, kSquare), tube({{0, 0, 0}, {0, 0, 1}}, kSquare));
    EXPECT_EQ(*try_triangulate(kSquare), triangulate(kSquare));
    EXPECT_EQ(*try_shapes({kSquare}), shapes({kSquare}));
    EXPECT_EQ(*box.try_volume(), box.volume());
    EXPECT_EQ(*box.try_bounds(), box.bounds());
    EXPECT_EQ(*box.try_normals(), box.normals());
    EXPECT_EQ(*box.try_areas(), box.areas());
    expect_refused(try_bevel(kSquare, std::span(wall, 1)), [&] { bevel(kSquare, std::span(wall, 1)); });
    expect_refused(try_bevel(kTwo, wall), [&] { bevel(kTwo, wall); });
    expect_refused(try_tube(Outline(1), kSquare), [] { tube(Outline(1), kSquare); });
    expect_refused(try_triangulate(kTwo), [] { triangulate(kTwo); });
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const Outline bad = {{nan, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    expect_refused(try_shapes(std::vector<Outline>{bad}), [&] { shapes(std::vector<Outline>{bad}); });
    expect_refused(Mesh().try_bounds(), [] { (void)Mesh().bounds(); });
    const Mesh open = {kSquare, kTriangles}, wild = {kSquare, {{0, 1, 9}}};
    expect_refused(open.try_volume(), [&] { (void)open.volume(); });
    expect_refused(wild.try_normals(), [&] { (void)wild.normals(); });
    expect_refused(wild.try_areas(), [&] { (void)wild.areas(); });
}

TEST(FaceResult, ScatteringTellsWhatItRefuses)
{
    EXPECT_EQ(*try_scatter(kSquare, kTriangles, 9, 1), scatter(kSquare, kTriangles, 9, 1));
    const Outline corners(kSquare.begin(), kSquare.begin() + 3);
    EXPECT_EQ(*try_scatter(corners, 9, 1), scatter(corners, 9, 1));
    const std::vector<double> five(5);
    expect_refused(try_scatter(kSquare, kTriangles, 9, 1, five), [&] { scatter(kSquare, kTriangles, 9, 1, five); });
    expect_refused(try_scatter(Outline(), 9, 1), [] { scatter(Outline(), 9, 1); });
    expect_refused(try_scatter(kSquare, std::vector<Triangle>(), 9, 1),
                   [] { scatter(kSquare, std::vector<Triangle>(), 9, 1); });
    expect_refused(try_scatter(corners, size_t{1} << 40, 1), [&] { scatter(corners, size_t{1} << 40, 1); });
}

TEST(FaceResult, GridsTellWhatTheyRefuse)
{
    const RayGrid grid = *RayGrid::try_make(kSquare, kTriangles);
    EXPECT_EQ(grid.size(), 2u);
    EXPECT_EQ(RayGrid::try_make(kSquare, {4}, {0, 1, 2, 3})->size(), 2u);
    EXPECT_EQ(RayGrid::try_make(kSquare, {{0, 1, 2}, {0, 2, 3}})->size(), 2u);
    EXPECT_EQ(RayGrid::try_make({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}})->size(), 1u);
    const Outline corners(kSquare.begin(), kSquare.begin() + 3);
    EXPECT_EQ(RayGrid::try_over(corners)->size(), 1u);
    EXPECT_EQ(*grid.try_face(1), 1);
    EXPECT_EQ(grid.try_hits({1, 2, -1}, {0, 0, 1})->size(), 1u);
    const std::vector<Triangle> bad = {{0, 1, 9}};
    expect_refused(RayGrid::try_make(kSquare, bad), [&] { RayGrid(kSquare, bad); });
    expect_refused(RayGrid::try_make(kSquare, {3}, {0, 1}), [&] { RayGrid(kSquare, {3}, {0, 1}); });
    expect_refused(grid.try_face(2), [&] { (void)grid.face(2); });
    expect_refused(grid.try_cast(kTwo, kSquare, {}), [&] { grid.cast(kTwo, kSquare, {}); });
    std::vector<double> three(3);
    expect_refused(grid.try_cast(kTwo, kTwo, {.distances = three}),
                   [&] { grid.cast(kTwo, kTwo, {.distances = three}); });
    std::vector<std::array<float, 3>> floats(2);
    expect_refused(grid.try_cast(kTwo, kTwo, {.weights = floats}), [&] { grid.cast(kTwo, kTwo, {.weights = floats}); });
}

TEST(FaceResult, RelaxersTellWhatTheyRefuse)
{
    Relaxer relaxer = *Relaxer::try_make(kSquare, kTriangles);
    EXPECT_TRUE(relaxer.try_keep("lengths"));
    EXPECT_TRUE(relaxer.try_hold(std::vector<bool>(4)));
    EXPECT_EQ(*relaxer.try_energy(kSquare), 0);
    EXPECT_EQ(relaxer.try_forces(kSquare)->front(), Point{});
    Outline points = kSquare;
    EXPECT_EQ(*relaxer.try_step(points), 0);
    EXPECT_EQ(relaxer.try_run(points)->stop, Stop::energy);
    EXPECT_EQ(Relaxer::try_make(kSquare, {4}, {0, 1, 2, 3})->size(), 4u);
    EXPECT_EQ(Relaxer::try_of_edges(kSquare, {{0, 1}})->size(), 4u);
    const std::vector<Triangle> bad = {{0, 1, 9}};
    expect_refused(Relaxer::try_make(kSquare, bad), [&] { Relaxer(kSquare, bad); });
    expect_refused(Relaxer::try_of_edges(kSquare, {{0, 9}}), [&] { Relaxer::of_edges(kSquare, {{0, 9}}); });
    expect_refused(relaxer.try_keep("weight"), [&] { relaxer.keep("weight"); });
    expect_refused(relaxer.try_keep(Measure::area, -1), [&] { relaxer.keep(Measure::area, -1); });
    expect_refused(relaxer.try_hold(std::vector<bool>(3)), [&] { relaxer.hold(std::vector<bool>(3)); });
    expect_refused(relaxer.try_energy(kTwo), [&] { relaxer.energy(kTwo); });
    expect_refused(relaxer.try_forces(kTwo), [&] { relaxer.forces(kTwo); });
    Outline two = kTwo;
    expect_refused(relaxer.try_step(two), [&] { relaxer.step(two); });
    expect_refused(relaxer.try_run(two), [&] { relaxer.run(two); });
}

TEST(FaceResult, EquationsTellWhatTheyRefuse)
{
    Equations e = *Equations::try_make();
    EXPECT_TRUE(e.try_declare("y x"));
    const int y = *e.try_add("y = x * 2");
    EXPECT_TRUE(e.try_set("x", 3));
    EXPECT_EQ(*e.try_evaluate(y), 6);
    EXPECT_EQ(*e.try_get("y"), 6);
    EXPECT_TRUE(e.try_function("TWICE", [](double v) { return 2 * v; }));
    EXPECT_TRUE(e.try_seed(7));
    EXPECT_TRUE(e.try_simplify());
    EXPECT_TRUE(e.try_evaluate_all());
    const std::vector<double> x = {1, 2};
    EXPECT_EQ(*e.try_evaluate(y, {{"x", x}}), (std::vector<double>{2, 4}));
    std::vector<double> z(2);
    const Column columns[] = {{"x", x}}, unknown[] = {{"q", x}};
    const ResultColumn results[] = {{"y", z}}, narrow[] = {{"y", z.data(), 2, 0}};
    EXPECT_TRUE(e.try_evaluate_all(columns, results));
    EXPECT_EQ(z[1], 4);
    expect_refused(e.try_declare("TWICE"), [&] { e.declare("TWICE"); });
    expect_refused(e.try_set("q", 1), [&] { e.set("q", 1); });
    expect_refused(e.try_get("q"), [&] { (void)e.get("q"); });
    expect_refused(e.try_evaluate(5), [&] { e.evaluate(5); });
    expect_refused(e.try_evaluate(y, unknown, z), [&] { e.evaluate(y, unknown, z); });
    expect_refused(e.try_evaluate(y, columns, z.data(), 2, 0), [&] { e.evaluate(y, columns, z.data(), 2, 0); });
    expect_refused(e.try_evaluate_all(columns, narrow), [&] { e.evaluate_all(columns, narrow); });
    expect_refused(e.try_function("SIN", [](double v) { return v; }),
                   [&] { e.function("SIN", [](double v) { return v; }); });
    expect_refused(e.try_make_table("NONE", 2), [&] { e.make_table("NONE", 2); });
}

TEST(FaceResult, RefusedEquationsKnowTheWordAndItsPlace)
{
    Equations e;
    e.declare("y x");
    for (const std::string_view text :
         {std::string_view("y = x + frequency"), std::string_view("y = x +"), std::string_view("y = \0x", 6)}) {
        const Result<int> number = e.try_add(text);
        ASSERT_FALSE(number);
        EXPECT_EQ(number.error().status(), KORVALE_BAD_EQUATION);
        try {
            e.add(text);
            FAIL();
        } catch (const EquationError& error) {
            EXPECT_STREQ(number.error().what(), error.what());
            EXPECT_EQ(number.error().place(), static_cast<std::ptrdiff_t>(error.place()));
            EXPECT_EQ(number.error().word(), error.word());
        }
    }
    EXPECT_EQ(e.try_add("y = x + frequency").error().word(), "frequency");
    EXPECT_EQ(e.try_add("y = x + frequency").error().place(), 8);
}

TEST(FaceResult, WhatAFunctionOfTheHostThrowsIsThrownOn)
{
    Equations e;
    e.declare("y");
    e.function("FAIL", []() -> double { throw std::runtime_error("mine"); });
    const int y = e.add("y = FAIL");
    EXPECT_THROW((void)e.try_evaluate(y), std::runtime_error);
}

TEST(FaceResult, NothingIsThrownWhereTheHeapIsExhausted)
{
    NEEDS_HEAP_FAILURES();
    const auto is_whole = [](const char* what, auto call) {
        const int64_t failures = fail_each_allocation([&](int64_t) {
            const auto result = call();
            if (!result) {
                EXPECT_EQ(result.error().status(), KORVALE_NO_MEMORY) << result.error().what();
                EXPECT_THROW((void)result.value(), std::bad_alloc);
            }
        });
        EXPECT_GT(failures, 0) << what;
    };
    is_whole("outline", [] { return try_offset(kSquare, 0.5); });
    is_whole("shape", [] { return try_offset(std::vector<Outline>{kSquare}, 0.5); });
    is_whole("band", [] { return try_band(kSquare, 0.5); });
    is_whole("scatter", [] { return try_scatter(kSquare, kTriangles, 9, 1); });
    is_whole("grid", [] { return RayGrid::try_make(kSquare, kTriangles); });
    is_whole("relaxer", [] { return Relaxer::try_make(kSquare, kTriangles); });
    is_whole("equations", [] { return Equations::try_make(); });
    Equations e;
    e.declare("y x");
    e.add("y = x * 2");
    const std::vector<double> x(9, 1.0);
    is_whole("columns", [&] { return e.try_evaluate(0, {{"x", x}}); });
}

TEST(FaceResult, AFailureThatFindsNoMemoryTellsThat)
{
    NEEDS_HEAP_FAILURES();
    fail_each_allocation([&](int64_t) {
        const Result<Flattening> result = try_flatten(Outline());
        ASSERT_FALSE(result);
        if (result.error().status() == KORVALE_NO_MEMORY)
            EXPECT_STREQ(result.error().what(), "the heap is exhausted");
        else
            EXPECT_EQ(result.error().argument(), "path");
    });
}

// --- Stopping --------------------------------------------------------------------------------------------------------

TEST(FaceStop, EndsEquationsOverColumns)
{
    Equations e;
    e.declare("y x");
    e.add("y = x + 1");
    const std::vector<double> x(2000, 2);
    std::vector<double> y(2000, 7);
    double last = 0;
    const auto half = [&](double done) { return (last = done) < 0.5; };
    EXPECT_EQ(e.try_evaluate(0, {{"x", x}}, half).error().status(), KORVALE_STOPPED);
    EXPECT_EQ(last, 0.512);
    EXPECT_EQ(refusal_of([&] { e.evaluate(0, std::array{korvale::Column("x", x)}, y, half); }),
              "Equations::evaluate: progress must go on, but it has stopped the work");
    EXPECT_EQ(y[1023], 3);
    EXPECT_EQ(y[1024], 7);
    std::stop_source stop;
    stop.request_stop();
    EXPECT_EQ(refusal_of([&] { e.evaluate_all({}, std::array{korvale::ResultColumn("y", y)}, stop.get_token()); }),
              "Equations::evaluate_all: progress must go on, but it has stopped the work");
    EXPECT_EQ(e.evaluate(0, {{"x", x}}, std::stop_source().get_token()).back(), 3);
    struct Enough {};
    EXPECT_THROW(e.evaluate(0, {{"x", x}}, [](double) -> bool { throw Enough(); }), Enough);
}

TEST(FaceStop, TakesStepsBack)
{
    const Mesh mesh = cube();
    Relaxer relaxer(mesh.vertices, mesh.triangles);
    relaxer.keep("lengths");
    Outline points = mesh.vertices;
    points[0][0] -= 0.25;
    const Outline before = points;
    const auto told = [](double done) { return done < 0.5; };
    EXPECT_EQ(relaxer.try_step(points, 100, told).error().status(), KORVALE_STOPPED);
    EXPECT_EQ(refusal_of([&] { relaxer.step(points, 100, told); }),
              "Relaxer::step: progress must go on, but it has stopped the work");
    EXPECT_EQ(points, before);
}

TEST(FaceStop, EndsARunBetweenTwoSteps)
{
    const Mesh mesh = cube();
    Relaxer relaxer(mesh.vertices, mesh.triangles);
    relaxer.keep("lengths");
    Outline points = mesh.vertices, expected;
    points[0][0] -= 0.25;
    expected = points;
    relaxer.step(expected, 3);
    std::stop_source stop;
    const auto told = [&](int step, double) { return step < 3 || stop.request_stop(); };
    const Relaxation relaxation = relaxer.run(points, {.progress = told, .stop = stop.get_token()});
    EXPECT_EQ(relaxation.stop, korvale::Stop::cancelled);
    EXPECT_EQ(relaxation.steps, 3);
    EXPECT_EQ(points, expected);
    EXPECT_EQ(relaxer.run(points, {.stop = stop.get_token()}).steps, 1);
}

TEST(FaceStop, EndsWorkOfGrids)
{
    const Outline corners(3 * 40000, Point{0, 0, 0});
    std::stop_source stop;
    EXPECT_EQ(RayGrid(corners, {}, stop.get_token()).size(), 40000u);
    stop.request_stop();
    EXPECT_EQ(refusal_of([&] { RayGrid(corners, {}, stop.get_token()); }),
              "RayGrid: progress must go on, but it has stopped the work");
    EXPECT_EQ(RayGrid::try_make(corners, {}, stop.get_token()).error().status(), KORVALE_STOPPED);

    const RayGrid grid(kSquare, kTriangles);
    const Outline rays(100000, Point{1, 2, -1});
    std::vector<double> depth(rays.size());
    EXPECT_FALSE(grid.cast(rays, {{0, 0, 1}}, {.distances = depth}, stop.get_token()));
    EXPECT_EQ(grid.try_cast(rays, {{0, 0, 1}}, {.distances = depth}, stop.get_token()).error().status(),
              KORVALE_STOPPED);
    EXPECT_EQ(grid.try_contains(rays).error().status(), KORVALE_BAD_ARGUMENT);
    EXPECT_EQ(
        refusal_of([&] { grid.contains(rays); }),
        "RayGrid::contains: the grid must be of closed meshes, but 4 edges are open, one of them between points 0 "
        "and 1");
    const RayGrid closed({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, {{0, 2, 1}, {0, 1, 3}, {0, 3, 2}, {1, 2, 3}});
    EXPECT_EQ(closed.try_contains(rays, stop.get_token()).error().status(), KORVALE_STOPPED);
    EXPECT_EQ(refusal_of([&] { closed.contains(rays, stop.get_token()); }),
              "RayGrid::contains: progress must go on, but it has stopped the work");
    EXPECT_TRUE(grid.cast(rays, {{0, 0, 1}}, {.distances = depth}, std::stop_source().get_token()));
    EXPECT_EQ(depth.back(), 1);
}

TEST(FaceStop, EndsOffsetsAndBands)
{
    Outline wheel, zigzag; // with teeth of many heights, and with turns that a border gives way to
    for (int i = 0; i < 8000; ++i) {
        const double turn = 3.141592653589793 * i / 4000, radius = i % 2 == 0 ? 10 : 9.9 - 0.001 * (i % 37);
        wheel.push_back({radius * std::cos(turn), radius * std::sin(turn), 0});
    }
    for (int i = 0; i < 3000; ++i)
        zigzag.push_back({0.4 * i, 0.3 * (i % 3) + 0.1 * (i % 7), 0});
    std::stop_source stop;
    EXPECT_EQ(offset(wheel, 0.3, {.progress = stop.get_token()}), offset(wheel, 0.3));
    EXPECT_EQ(band(zigzag, 2, {.progress = stop.get_token()}), band(zigzag, 2));
    stop.request_stop();
    EXPECT_EQ(refusal_of([&] { offset(wheel, 0.3, {.progress = stop.get_token()}); }),
              "offset: progress must go on, but it has stopped the work");
    EXPECT_EQ(refusal_of([&] { band(zigzag, 2, {.progress = stop.get_token()}); }),
              "band: progress must go on, but it has stopped the work");
    Offsetter offsetter;
    const Result<void> done = offsetter.try_offset(wheel, 0.3, {.progress = stop.get_token()});
    ASSERT_FALSE(done);
    EXPECT_EQ(done.error().status(), KORVALE_STOPPED);
    EXPECT_TRUE(offsetter.points().empty());
    EXPECT_THROW(offset(wheel, 0.3, {.progress = [](double) -> bool { throw 7; }}), int);
}

TEST(FaceStop, EndsSolidsAndShapes)
{
    Outline wheel, path;
    for (int i = 0; i < 4096; ++i)
        wheel.push_back({std::cos(3.141592653589793 * i / 2048), std::sin(3.141592653589793 * i / 2048), 0});
    for (int i = 0; i < 20000; ++i)
        path.push_back({0, 0, 1.0 * i});
    std::vector<Outline> squares;
    for (int i = 0; i < 1000; ++i)
        squares.push_back({{5.0 * i, 0, 0}, {5.0 * i + 4, 0, 0}, {5.0 * i, 4, 0}});
    const BevelStep wall[] = {{0, 0}, {0, 1}};
    std::stop_source stop;
    const Progress progress = stop.get_token();
    EXPECT_EQ(triangulate(wheel, progress), triangulate(wheel));
    EXPECT_EQ(bevel(wheel, wall, true, progress), bevel(wheel, wall));
    EXPECT_EQ(tube(path, kSquare, {.progress = progress}), tube(path, kSquare));
    EXPECT_EQ(shapes(squares, {.progress = progress}), shapes(squares));
    stop.request_stop();
    EXPECT_EQ(refusal_of([&] { triangulate(wheel, progress); }),
              "triangulate: progress must go on, but it has stopped the work");
    EXPECT_EQ(refusal_of([&] {
                  bevel(wheel, {{0, 0}, {0, 1}}, true, progress);
              }),
              "bevel: progress must go on, but it has stopped the work");
    EXPECT_EQ(refusal_of([&] { tube(path, kSquare, {.progress = progress}); }),
              "tube: progress must go on, but it has stopped the work");
    EXPECT_EQ(refusal_of([&] { shapes(squares, {.progress = progress}); }),
              "shapes: progress must go on, but it has stopped the work");
}

TEST(FaceStop, GoesWithAFunction)
{
    std::stop_source stop;
    double last = 0;
    const Progress progress([&](double done) { return last = done, true; }, stop.get_token());
    EXPECT_TRUE(progress(0.5));
    EXPECT_EQ(last, 0.5);
    stop.request_stop();
    EXPECT_FALSE(progress(0.75));
    EXPECT_EQ(last, 0.75);
    EXPECT_FALSE(Progress());
    EXPECT_FALSE(Progress(std::stop_token()));
    EXPECT_TRUE(Progress(stop.get_token()));
}

TEST(FaceStop, ComesFromAnotherThread)
{
    const Mesh mesh = cube();
    Relaxer relaxer(mesh.vertices, mesh.triangles);
    relaxer.keep("lengths").keep("angles");
    Outline points = mesh.vertices;
    points[0][0] -= 0.25;
    std::jthread worker([&](std::stop_token stop) {
        Relaxation relaxation = {};
        do
            relaxation = relaxer.run(points, {.steps = 1 << 30, .energy = -1, .stop = stop});
        while (!stop.stop_requested());
        EXPECT_GE(relaxation.steps, 0);
    });
    worker.request_stop();
    worker.join();
}

} // namespace
} // namespace korvale::test
