// Meshes that remember their shape.
#include <korvale.h>

#include <cmath>

#include <gmock/gmock.h>

#include "support.h"
#include "tests/support/heap.h"

namespace korvale::test {
namespace {

using testing::ElementsAre;

// A unit square of two triangles.
const std::vector<double> kSquare = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
const std::vector<int32_t> kTriangles = {0, 1, 2, 0, 2, 3};

korvale_indices indices_of(const std::vector<int32_t>& numbers)
{
    return {numbers.data(), static_cast<int64_t>(numbers.size()), 0, KORVALE_INT32};
}

korvale_faces square_faces()
{
    return {points_of(kSquare), {}, indices_of(kTriangles)};
}

/// A relaxer of the square, released with the value.
struct Square {
    Square()
    {
        const korvale_faces faces = square_faces();
        EXPECT_EQ(korvale_relaxer_new(&faces, nullptr, &relaxer, nullptr), KORVALE_OK);
    }
    ~Square() { korvale_relaxer_free(relaxer); }

    korvale_relaxer* relaxer = nullptr;
};

TEST(Relaxer, KnowsItsPointsAndEdges)
{
    const Square square;
    EXPECT_EQ(korvale_relaxer_size(square.relaxer), 4);
    int64_t count = 0;
    const int32_t* const edges = korvale_relaxer_edges(square.relaxer, &count);
    ASSERT_EQ(count, 5);
    EXPECT_THAT(std::vector<int32_t>(edges, edges + 10), ElementsAre(0, 1, 1, 2, 0, 2, 2, 3, 0, 3));
    EXPECT_EQ(korvale_relaxer_size(nullptr), 0);
    EXPECT_EQ(korvale_relaxer_edges(nullptr, &count), nullptr);
    EXPECT_EQ(count, 0);
    EXPECT_NE(korvale_relaxer_record(square.relaxer), nullptr);
    EXPECT_EQ(korvale_relaxer_record(nullptr), nullptr);
    korvale_relaxer_free(nullptr);
}

TEST(Relaxer, StepsAsTheRecordDoes)
{
    const Square square;
    std::vector<double> moved = kSquare, plain = kSquare;
    moved[0] = plain[0] = -0.25;
    ASSERT_EQ(korvale_relaxer_keep(square.relaxer, KORVALE_LENGTHS, 0.1, nullptr), KORVALE_OK);
    ASSERT_EQ(korvale_relaxer_keep(square.relaxer, KORVALE_AREA, 0.2, nullptr), KORVALE_OK);
    const korvale_points_out points = points_to(moved);
    double energy = 0;
    ASSERT_EQ(korvale_relaxer_step(square.relaxer, &points, 3, &energy, nullptr, nullptr, nullptr), KORVALE_OK);

    auto& status = *static_cast<PreserveStatus*>(korvale_relaxer_record(square.relaxer));
    DATAstruct record;
    DATAInitialize(&record);
    record.type = DATA_TYPE_DOUBLE;
    record.count = 4;
    record.dim = 3;
    record.dvals = plain.data();
    ASSERT_EQ(PreserveCompute(&status, &record, 3), 1);
    EXPECT_EQ(moved, plain);
    EXPECT_EQ(energy, status.energy);
    EXPECT_LT(energy, 0.1);
}

struct Weighed {
    int32_t measure;
    double weight;
};

/// What a run of 20 steps makes of a tetrahedron that is `unit` large and whose last corner is a quarter too far.
struct Relaxed {
    Relaxed(double unit, const std::vector<Weighed>& kept)
    {
        const std::vector<int32_t> triangles = {0, 2, 1, 0, 1, 3, 0, 3, 2, 1, 2, 3};
        for (const double number : {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1})
            points.push_back(unit * number);
        const korvale_faces faces = {points_of(points), {}, indices_of(triangles)};
        korvale_relaxer* relaxer = nullptr;
        EXPECT_EQ(korvale_relaxer_new(&faces, nullptr, &relaxer, nullptr), KORVALE_OK);
        for (const auto [measure, weight] : kept)
            EXPECT_EQ(korvale_relaxer_keep(relaxer, measure, weight, nullptr), KORVALE_OK);
        points.back() = 1.25 * unit;
        const korvale_points_out moving = points_to(points);
        korvale_run_options options;
        korvale_run_defaults(&options, sizeof options);
        options.steps = 20;
        EXPECT_EQ(korvale_relaxer_run(relaxer, &moving, &options, &came_to, nullptr), KORVALE_OK);
        korvale_relaxer_free(relaxer);
        for (double& number : points)
            number /= unit;
    }

    std::vector<double> points; ///< in units
    korvale_relaxation came_to = {};
};

TEST(Relaxer, WeightsThatFollowTheUnitScaleTheRunToTheBit)
{
    const auto kept = [](double s) {
        return std::vector<Weighed>{{KORVALE_LENGTHS, 0.1 / s},
                                    {KORVALE_ANGLES, 0.1 * s},
                                    {KORVALE_AREA, 0.1 / (s * s * s)},
                                    {KORVALE_VOLUME, 0.1 / (s * s * s * s * s)}};
    };
    const Relaxed plain(1, kept(1));
    EXPECT_EQ(plain.came_to.steps, 20);
    EXPECT_LT(plain.points.back(), 1.15);
    for (const double unit : {0x1p-3, 0x1p4, 0x1p20}) {
        const Relaxed scaled(unit, kept(unit));
        EXPECT_EQ(scaled.points, plain.points) << unit;
        EXPECT_EQ(scaled.came_to.energy, unit * plain.came_to.energy) << unit;
    }
    // What differs by less than 1e-06 in volume or area, and what is shorter, exerts no force.
    for (const auto measure : {KORVALE_LENGTHS, KORVALE_AREA, KORVALE_VOLUME}) {
        const double unit = measure == KORVALE_LENGTHS ? 0x1p-21 : measure == KORVALE_AREA ? 0x1p-10 : 0x1p-6;
        const Relaxed small(unit, {{measure, 1}});
        EXPECT_EQ(small.came_to.stop, KORVALE_RUN_NO_FORCE) << measure;
        EXPECT_EQ(small.points, (std::vector<double>{0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1.25})) << measure;
    }
}

TEST(Relaxer, MovesFloatsOfAHostWhereTheyAre)
{
    struct Vertex {
        float x, y, z, u;
    };
    const Square square;
    korvale_relaxer_keep(square.relaxer, KORVALE_LENGTHS, 0.1, nullptr);
    std::vector<double> packed = kSquare;
    packed[0] = -0.25;
    Vertex vertices[4];
    for (size_t i = 0; i < 4; ++i)
        vertices[i] = {static_cast<float>(packed[3 * i]), static_cast<float>(packed[3 * i + 1]), 0, 7};
    const korvale_points_out points = points_to(packed);
    const korvale_points_out floats = {&vertices[0].x, 4, sizeof(Vertex), 3, KORVALE_FLOAT};
    ASSERT_EQ(korvale_relaxer_step(square.relaxer, &points, 2, nullptr, nullptr, nullptr, nullptr), KORVALE_OK);
    ASSERT_EQ(korvale_relaxer_step(square.relaxer, &floats, 2, nullptr, nullptr, nullptr, nullptr), KORVALE_OK);
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(vertices[i].x, static_cast<float>(packed[3 * i]));
        EXPECT_EQ(vertices[i].y, static_cast<float>(packed[3 * i + 1]));
        EXPECT_EQ(vertices[i].u, 7);
    }
}

TEST(Relaxer, HeldPointsStayUntilNoMaskFreesThem)
{
    const Square square;
    korvale_relaxer_keep(square.relaxer, KORVALE_LENGTHS, 0.1, nullptr);
    std::vector<double> moved = kSquare;
    moved[0] = -0.25;
    const std::vector<double> before = moved;
    const uint8_t mask[] = {1, 0, 255, 0};
    ASSERT_EQ(korvale_relaxer_hold(square.relaxer, mask, 4, nullptr), KORVALE_OK);
    const korvale_points_out points = points_to(moved);
    korvale_relaxer_step(square.relaxer, &points, 1, nullptr, nullptr, nullptr, nullptr);
    EXPECT_EQ(moved[0], before[0]);
    EXPECT_EQ(moved[6], before[6]);
    EXPECT_NE(moved[3], before[3]);
    ASSERT_EQ(korvale_relaxer_hold(square.relaxer, nullptr, 0, nullptr), KORVALE_OK);
    korvale_relaxer_step(square.relaxer, &points, 1, nullptr, nullptr, nullptr, nullptr);
    EXPECT_NE(moved[0], before[0]);
}

TEST(Relaxer, NothingThatCanMoveLeavesPointsAsTheyWere)
{
    const Square square;
    korvale_relaxer_keep(square.relaxer, KORVALE_AREA, 1, nullptr);
    const uint8_t mask[] = {1, 1, 1, 1};
    korvale_relaxer_hold(square.relaxer, mask, 4, nullptr);
    std::vector<double> moved = kSquare;
    moved[0] = -0.25;
    const std::vector<double> before = moved;
    const korvale_points_out points = points_to(moved);
    double energy = 0;
    EXPECT_EQ(korvale_relaxer_step(square.relaxer, &points, 5, &energy, nullptr, nullptr, nullptr), KORVALE_OK);
    EXPECT_EQ(moved, before);
    EXPECT_EQ(energy, 0.0625); // twice the area is 2.25 and was 2
    korvale_relaxation result = {};
    EXPECT_EQ(korvale_relaxer_run(square.relaxer, &points, nullptr, &result, nullptr), KORVALE_OK);
    EXPECT_EQ(result.stop, KORVALE_RUN_NO_FORCE);
    EXPECT_EQ(result.steps, 0);
    EXPECT_EQ(result.energy, 0.0625);
    EXPECT_EQ(moved, before);
}

TEST(Relaxer, SaysThatAllThatIsKeptIsHeld)
{
    const Square square;
    korvale_relaxer* const r = square.relaxer;
    korvale_relaxer_keep(r, KORVALE_LENGTHS, 0.1, nullptr);
    korvale_relaxer_keep(r, KORVALE_ANGLES, 0.1, nullptr);
    std::vector<double> moved = kSquare;
    moved[0] = -0.25;
    const std::vector<double> before = moved;
    const korvale_points_out points = points_to(moved);
    korvale_run_options options;
    korvale_run_defaults(&options, sizeof options);
    options.steps = 3;
    const auto stop = [&](std::vector<uint8_t> mask) {
        korvale_relaxer_hold(r, mask.data(), 4, nullptr);
        korvale_relaxation result = {7, 7, 7};
        EXPECT_EQ(korvale_relaxer_run(r, &points, &options, &result, nullptr), KORVALE_OK);
        return result.stop;
    };
    EXPECT_EQ(stop({1, 1, 1, 1}), KORVALE_RUN_HELD);
    EXPECT_EQ(moved, before);
    options.energy = 1;
    EXPECT_EQ(stop({1, 1, 1, 1}), KORVALE_RUN_HELD);
    EXPECT_EQ(stop({1, 1, 1, 0}), KORVALE_RUN_ENERGY);
    options.energy = -1;
    EXPECT_EQ(stop({1, 1, 1, 0}), KORVALE_RUN_STEPS);
    korvale_relaxer_keep(r, KORVALE_AREA, 0.1, nullptr); // of the whole mesh, whatever is held
    EXPECT_EQ(stop({1, 1, 1, 1}), KORVALE_RUN_NO_FORCE);
}

TEST(Relaxer, StepsTellOfThemselvesAndEndWhereAllInOneGoDo)
{
    const Square square;
    korvale_relaxer* const r = square.relaxer;
    korvale_relaxer_keep(r, KORVALE_LENGTHS, 0.1, nullptr);
    korvale_relaxer_keep(r, KORVALE_ANGLES, 0.01, nullptr);
    const std::vector<double> start = {-0.25, 0, 0.5, 1, 0, 0, 1, 1, 0, 0, 1, 0};
    std::vector<double> moved = start, plain = start;
    const korvale_points_out points = points_to(moved), plainly = points_to(plain);
    double energy = 0, plain_energy = 0;
    ASSERT_EQ(korvale_relaxer_step(r, &plainly, 250, &plain_energy, nullptr, nullptr, nullptr), KORVALE_OK);
    Told told;
    ASSERT_EQ(korvale_relaxer_step(r, &points, 250, &energy, &Told::tell, &told, nullptr), KORVALE_OK);
    EXPECT_EQ(moved, plain);
    EXPECT_EQ(energy, plain_energy);
    ASSERT_EQ(told.done.size(), 126u); // a hundredth of 250 steps is 2
    EXPECT_EQ(told.done[1], 2 / 250.0);
    EXPECT_EQ(told.done.back(), 1);

    moved = start;
    told = {{}, 0.5};
    energy = 7;
    korvale_error error;
    EXPECT_EQ(korvale_relaxer_step(r, &points, 250, &energy, &Told::tell, &told, &error), KORVALE_STOPPED);
    EXPECT_STREQ(error.text, "korvale_relaxer_step: it was asked to stop");
    EXPECT_EQ(told.done.back(), 126 / 250.0);
    EXPECT_EQ(moved, start);
    EXPECT_EQ(energy, 7);
}

TEST(Relaxer, StepsDoNothingOnceThereIsNoEnergy)
{
    // An edge of length 1 pulled to 2: the first step, as long as the energy, is 1 and takes it back exactly.
    const std::vector<double> ends = {0, 0, 0, 1, 0, 0}, pulled = {0, 0, 0, 2, 0, 0};
    const std::vector<int32_t> edge = {0, 1};
    const korvale_faces none = {points_of(ends), {}, {}};
    const korvale_indices edges = indices_of(edge);
    korvale_relaxer* relaxer = nullptr;
    ASSERT_EQ(korvale_relaxer_new(&none, &edges, &relaxer, nullptr), KORVALE_OK);
    korvale_relaxer_keep(relaxer, KORVALE_LENGTHS, 1, nullptr);
    const uint8_t mask[] = {1, 0};
    korvale_relaxer_hold(relaxer, mask, 2, nullptr);
    for (const int32_t steps : {1, 2, 500})
        for (const korvale_progress progress : {korvale_progress{}, &Told::tell}) {
            std::vector<double> moved = pulled;
            const korvale_points_out points = points_to(moved);
            double energy = 7;
            Told told;
            EXPECT_EQ(korvale_relaxer_step(relaxer, &points, steps, &energy, progress, &told, nullptr), KORVALE_OK);
            EXPECT_EQ(moved, ends) << steps;
            EXPECT_EQ(energy, 0) << steps;
        }
    korvale_relaxer_free(relaxer);
}

/// What keeping the volume of a mesh comes to.
std::string volume_of(const std::vector<double>& points, const std::vector<int32_t>& sizes,
                      const std::vector<int32_t>& corners)
{
    const korvale_faces faces = {points_of(points), sizes.empty() ? korvale_indices{} : indices_of(sizes),
                                 indices_of(corners)};
    korvale_relaxer* relaxer = nullptr;
    EXPECT_EQ(korvale_relaxer_new(&faces, nullptr, &relaxer, nullptr), KORVALE_OK);
    korvale_error error = {};
    korvale_relaxer_keep(relaxer, KORVALE_VOLUME, 1, &error);
    EXPECT_EQ(static_cast<PreserveStatus*>(korvale_relaxer_record(relaxer))->flags,
              error.status == KORVALE_OK ? PRESERVE_VOLUME : 0);
    korvale_relaxer_free(relaxer);
    return error.text;
}

TEST(Relaxer, KeepsTheVolumeOfClosedMeshesAlone)
{
    const std::vector<double> corner = {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1};
    EXPECT_EQ(volume_of(corner, {}, {0, 2, 1, 0, 1, 3, 0, 3, 2, 1, 2, 3}), "");
    EXPECT_EQ(volume_of(corner, {}, {0, 2, 1, 0, 1, 3, 0, 3, 2}),
              "korvale_relaxer_keep: measure must be one that the mesh has, but a volume is that of a closed mesh, and "
              "3 edges are open, one of them between points 1 and 2");
    EXPECT_EQ(volume_of(corner, {}, {0, 2, 1, 0, 1, 3, 0, 3, 2, 1, 3, 2}),
              "korvale_relaxer_keep: measure must be one that the mesh has, but a volume is that of a mesh turned one "
              "way, and faces are turned two ways at 3 edges, one of them between points 1 and 2");
    // A pyramid over a square, whose tip is there four times.
    const std::vector<double> pyramid = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1};
    EXPECT_EQ(volume_of(pyramid, {4, 3, 3, 3, 3}, {3, 2, 1, 0, 0, 1, 4, 1, 2, 5, 2, 3, 6, 3, 0, 7}), "");
    EXPECT_EQ(volume_of(pyramid, {4, 3, 3, 3}, {3, 2, 1, 0, 0, 1, 4, 1, 2, 5, 2, 3, 6}),
              "korvale_relaxer_keep: measure must be one that the mesh has, but a volume is that of a closed mesh, and "
              "3 edges are open, one of them between points 0 and 3");
    EXPECT_EQ(volume_of(kSquare, {}, {0, 1, 2, 0, 2, 0}), // there and back, on edges of the other triangle
              "korvale_relaxer_keep: measure must be one that the mesh has, but a volume is that of a closed mesh, and "
              "3 edges are open, one of them between points 0 and 1");
}

int32_t stop_at_second(int32_t step, double, void* user)
{
    static_cast<std::vector<int32_t>*>(user)->push_back(step);
    return step < 2;
}

TEST(Relaxer, RunSaysWhyItEnded)
{
    const Square square;
    korvale_relaxer_keep(square.relaxer, KORVALE_LENGTHS, 0.1, nullptr);
    korvale_run_options options;
    korvale_run_defaults(&options, sizeof options);
    EXPECT_EQ(options.steps, 1000);
    EXPECT_EQ(options.energy, 0.0);
    EXPECT_EQ(options.least_drop, 0.0);
    EXPECT_EQ(options.progress, nullptr);
    const auto run = [&] {
        std::vector<double> moved = kSquare;
        moved[0] = -0.25;
        const korvale_points_out points = points_to(moved);
        korvale_relaxation result = {};
        EXPECT_EQ(korvale_relaxer_run(square.relaxer, &points, &options, &result, nullptr), KORVALE_OK);
        return result;
    };
    options.steps = 3;
    EXPECT_EQ(run().stop, KORVALE_RUN_STEPS);
    EXPECT_EQ(run().steps, 3);
    options.energy = 1.0;
    EXPECT_EQ(run().stop, KORVALE_RUN_ENERGY);
    EXPECT_EQ(run().steps, 0);
    options.energy = 0.0;
    options.least_drop = 0.99;
    options.steps = 1000;
    EXPECT_EQ(run().stop, KORVALE_RUN_STALLED);
    options.least_drop = 0.0;
    std::vector<int32_t> told;
    options.progress = stop_at_second;
    options.user = &told;
    const korvale_relaxation result = run();
    EXPECT_EQ(result.stop, KORVALE_RUN_CANCELLED);
    EXPECT_EQ(result.steps, 2);
    EXPECT_THAT(told, ElementsAre(1, 2));
}

TEST(Relaxer, TellsEnergyAndForces)
{
    const Square square;
    korvale_relaxer_keep(square.relaxer, KORVALE_AREA, 1, nullptr);
    std::vector<double> moved = kSquare;
    moved[0] = -0.25;
    const korvale_points points = points_of(moved);
    double energy = 0, forces[12] = {};
    EXPECT_EQ(korvale_relaxer_energy(square.relaxer, &points, &energy, nullptr), KORVALE_OK);
    EXPECT_EQ(energy, 0.0625);
    EXPECT_EQ(korvale_relaxer_forces(square.relaxer, &points, forces, nullptr), KORVALE_OK);
    EXPECT_GT(forces[0], 0); // back inwards
    EXPECT_EQ(forces[2], 0);
}

TEST(Relaxer, TakesFacesOfAnySizeAndEdgesAlone)
{
    const std::vector<int32_t> sizes = {4}, corners = {0, 1, 2, 3}, edges = {0, 2};
    const korvale_faces quad = {points_of(kSquare), indices_of(sizes), indices_of(corners)};
    const korvale_faces none = {points_of(kSquare), {}, {}};
    const korvale_indices ends = indices_of(edges);
    korvale_relaxer* relaxer = nullptr;
    ASSERT_EQ(korvale_relaxer_new(&quad, nullptr, &relaxer, nullptr), KORVALE_OK);
    int64_t count = 0;
    korvale_relaxer_edges(relaxer, &count);
    EXPECT_EQ(count, 4);
    korvale_relaxer_free(relaxer);

    ASSERT_EQ(korvale_relaxer_new(&none, &ends, &relaxer, nullptr), KORVALE_OK);
    korvale_relaxer_edges(relaxer, &count);
    EXPECT_EQ(count, 1);
    EXPECT_EQ(korvale_relaxer_keep(relaxer, KORVALE_LENGTHS, 1, nullptr), KORVALE_OK);
    EXPECT_EQ(
        sentence_of(KORVALE_BAD_ARGUMENT, [&](auto* e) { return korvale_relaxer_keep(relaxer, KORVALE_AREA, 1, e); }),
        "korvale_relaxer_keep: measure must be one that the mesh has, but the mesh has no faces or edges for it");
    korvale_relaxer_free(relaxer);
}

TEST(Relaxer, RefusesMeshesThatAreNone)
{
    const auto text = [](const korvale_faces& faces, const korvale_indices* edges = nullptr) {
        korvale_relaxer* relaxer = reinterpret_cast<korvale_relaxer*>(1);
        const std::string sentence =
            sentence_of(KORVALE_BAD_ARGUMENT, [&](auto* e) { return korvale_relaxer_new(&faces, edges, &relaxer, e); });
        EXPECT_EQ(relaxer, nullptr);
        return sentence;
    };
    const std::vector<double> odd = {0, 0, NAN};
    const std::vector<int32_t> astray = {0, 1, 4}, two = {0, 1}, sizes = {3, 2}, below = {-1};
    const korvale_indices ends = indices_of(astray);
    EXPECT_EQ(text({{}, {}, {}}), "korvale_relaxer_new: vertices must have at least 1 point, but it has 0");
    EXPECT_EQ(text({points_of(odd), {}, {}}),
              "korvale_relaxer_new: vertices must be finite, but its point 0 is (0, 0, nan)");
    EXPECT_EQ(text({points_of(kSquare), {}, indices_of(astray)}),
              "korvale_relaxer_new: corners must name vertices 0 to 3, but its corner 2 is 4");
    EXPECT_EQ(text({points_of(kSquare), {}, indices_of(two)}),
              "korvale_relaxer_new: corners must come in threes, but there are 2");
    EXPECT_EQ(text({points_of(kSquare), indices_of(sizes), indices_of(kTriangles)}),
              "korvale_relaxer_new: corners must be as many as the faces have together, 5, but there are 6");
    EXPECT_EQ(text({points_of(kSquare), indices_of(below), {}}),
              "korvale_relaxer_new: face_sizes must be 0 or more, but face 0 has -1");
    EXPECT_EQ(text({points_of(kSquare), {}, {}}, &ends),
              "korvale_relaxer_new: edges must be pairs of points, but there are 3 ends");
    EXPECT_EQ(
        sentence_of(KORVALE_BAD_ARGUMENT, [&](auto* e) { return korvale_relaxer_new(nullptr, nullptr, nullptr, e); }),
        "korvale_relaxer_new: relaxer must be given, but it is null");
}

TEST(Relaxer, RefusesWhatDoesNotFit)
{
    const Square square;
    korvale_relaxer* const r = square.relaxer;
    std::vector<double> few = {0, 0, 0}, odd = kSquare, sound = kSquare;
    odd[4] = INFINITY;
    const korvale_points_out three = points_to(few), infinite = points_to(odd), sound_points = points_to(sound);
    const korvale_points at_three = points_of(few);
    const uint8_t mask[] = {1, 1, 1};
    double energy = 7, forces[12] = {7};
    const auto text = [](auto call) { return sentence_of(KORVALE_BAD_ARGUMENT, call); };
    EXPECT_EQ(text([&](auto* e) { return korvale_relaxer_keep(r, KORVALE_LENGTHS, 0, e); }),
              "korvale_relaxer_keep: weight must be finite and above 0, but it is 0");
    EXPECT_EQ(text([&](auto* e) { return korvale_relaxer_keep(r, 3, 1, e); }),
              "korvale_relaxer_keep: measure must be lengths, angles, volume or area, but it is 3");
    EXPECT_EQ(text([&](auto* e) { return korvale_relaxer_hold(r, mask, 3, e); }),
              "korvale_relaxer_hold: mask must have one value for each of 4 points, but it has 3");
    EXPECT_EQ(text([&](auto* e) { return korvale_relaxer_step(r, &three, 1, &energy, nullptr, nullptr, e); }),
              "korvale_relaxer_step: points must be 4 like the mesh's, but there are 1");
    EXPECT_EQ(text([&](auto* e) { return korvale_relaxer_step(r, &sound_points, 1, &energy, nullptr, nullptr, e); }),
              "korvale_relaxer_step: relaxer must keep a measure, but it keeps none");
    EXPECT_EQ(text([&](auto* e) { return korvale_relaxer_run(r, &sound_points, nullptr, nullptr, e); }),
              "korvale_relaxer_run: relaxer must keep a measure, but it keeps none");
    korvale_relaxer_keep(r, KORVALE_LENGTHS, 1, nullptr);
    EXPECT_EQ(text([&](auto* e) { return korvale_relaxer_run(r, &infinite, nullptr, nullptr, e); }),
              "korvale_relaxer_run: points must be finite, but its point 1 is (1, inf, 0)");
    EXPECT_EQ(text([&](auto* e) { return korvale_relaxer_energy(r, &at_three, &energy, e); }),
              "korvale_relaxer_energy: points must be 4 like the mesh's, but there are 1");
    EXPECT_EQ(text([&](auto* e) { return korvale_relaxer_forces(r, &at_three, forces, e); }),
              "korvale_relaxer_forces: points must be 4 like the mesh's, but there are 1");
    EXPECT_EQ(text([&](auto* e) { return korvale_relaxer_step(r, &sound_points, -1, &energy, nullptr, nullptr, e); }),
              "korvale_relaxer_step: steps must be 0 or more, but it is -1");
    for (const auto& sentence :
         {text([&](auto* e) { return korvale_relaxer_keep(nullptr, KORVALE_LENGTHS, 1, e); }),
          text([&](auto* e) { return korvale_relaxer_hold(nullptr, mask, 3, e); }),
          text([&](auto* e) { return korvale_relaxer_step(nullptr, &sound_points, 1, nullptr, nullptr, nullptr, e); }),
          text([&](auto* e) { return korvale_relaxer_run(nullptr, &sound_points, nullptr, nullptr, e); }),
          text([&](auto* e) { return korvale_relaxer_energy(nullptr, &at_three, &energy, e); }),
          text([&](auto* e) { return korvale_relaxer_forces(nullptr, &at_three, forces, e); })})
        EXPECT_THAT(sentence, testing::EndsWith(": relaxer must be given, but it is null"));
    EXPECT_EQ(energy, 7);
    EXPECT_EQ(forces[0], 7);
    EXPECT_THAT(few, ElementsAre(0, 0, 0));
}

TEST(RelaxerWithAnExhaustedHeap, FailsWhole)
{
    NEEDS_HEAP_FAILURES();
    const korvale_faces faces = square_faces();
    EXPECT_GT(fail_each_allocation([&](int64_t) {
                  korvale_relaxer* relaxer = nullptr;
                  korvale_error error;
                  if (korvale_relaxer_new(&faces, nullptr, &relaxer, &error) != KORVALE_OK) {
                      EXPECT_STREQ(error.text, "korvale_relaxer_new: the heap is exhausted");
                      EXPECT_EQ(relaxer, nullptr);
                      return;
                  }
                  const bool keeps = korvale_relaxer_keep(relaxer, KORVALE_LENGTHS, 1, &error) == KORVALE_OK;
                  std::vector<double> moved = kSquare;
                  moved[0] = -0.25;
                  const korvale_points_out points = points_to(moved);
                  const korvale_points at = points_of(moved);
                  double forces[12];
                  korvale_relaxer_hold(relaxer, nullptr, 0, &error);
                  if (korvale_relaxer_step(relaxer, &points, 1, nullptr, nullptr, nullptr, &error) != KORVALE_OK) {
                      EXPECT_EQ(error.status, keeps ? KORVALE_NO_MEMORY : KORVALE_BAD_ARGUMENT);
                      EXPECT_EQ(moved[0], -0.25);
                  } else {
                      EXPECT_NE(moved[0], -0.25);
                  }
                  korvale_relaxer_forces(relaxer, &at, forces, &error);
                  korvale_relaxer_free(relaxer);
              }),
              10);
}

TEST(RelaxerWithAnExhaustedHeap, KeepsNoVolume)
{
    NEEDS_HEAP_FAILURES();
    const std::vector<double> points = {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1};
    const std::vector<int32_t> corners = {0, 2, 1, 0, 1, 3, 0, 3, 2, 1, 2, 3};
    const korvale_faces faces = {points_of(points), {}, indices_of(corners)};
    korvale_relaxer* relaxer = nullptr;
    ASSERT_EQ(korvale_relaxer_new(&faces, nullptr, &relaxer, nullptr), KORVALE_OK);
    const auto& status = *static_cast<PreserveStatus*>(korvale_relaxer_record(relaxer));
    EXPECT_EQ(fail_each_allocation([&](int64_t) {
                  const bool is_kept = korvale_relaxer_keep(relaxer, KORVALE_VOLUME, 1, nullptr) == KORVALE_OK;
                  EXPECT_EQ(status.flags, is_kept ? PRESERVE_VOLUME : 0);
              }),
              6);
    korvale_relaxer_free(relaxer);
}

} // namespace
} // namespace korvale::test
