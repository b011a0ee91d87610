// Relaxers of the C++ face, beside the direct calls.
#include "direct.h"

namespace korvale::test {
namespace {

Outline deformed(Random& random, const Outline& points, double by)
{
    Outline copy = points;
    for (Point& p : copy)
        for (double& v : p)
            v += random.uniform(-by, by);
    return copy;
}

/// A mesh by direct calls.
struct Direct {
    explicit Direct(const Mesh& mesh)
        : points_(test::points<DATAstruct>(coordinates(mesh.vertices))),
          sizes_(ints<DATAstruct>(1, std::vector<int>(mesh.triangles.size(), 3))),
          corners_(ints<DATAstruct>(1, corners_of(mesh))),
          tags_(array_of<DATAstruct>(DATA_TYPE_BYTE, static_cast<int>(mesh.vertices.size()), 1))
    {
        EXPECT_EQ(PreserveInitialize(&status, points_, nullptr, sizes_, corners_), 1);
        PreserveSetTag(&status, tags_);
    }
    ~Direct()
    {
        DATADispose(status.edges);
        std::free(status.edges);
        PreserveDispose(&status);
    }
    static std::vector<int> corners_of(const Mesh& mesh)
    {
        std::vector<int> corners;
        for (const Triangle& t : mesh.triangles)
            corners.insert(corners.end(), t.begin(), t.end());
        return corners;
    }
    void hold(int point) { tags_->bvals[point] = 1; }
    std::vector<double> relaxed(const Outline& from, int steps)
    {
        auto record = test::points<DATAstruct>(coordinates(from));
        EXPECT_EQ(PreserveCompute(&status, record, steps), 1);
        return {record->dvals, record->dvals + 3 * from.size()};
    }
    PreserveStatus status = {};

private:
    OwnedDATA points_, sizes_, corners_, tags_;
};

TEST(FaceRelaxer, StepsLikeTheDirectCallToTheBit)
{
    Random random(1212);
    const Mesh mesh = cube();
    for (int round = 0; round < rounds(20); ++round) {
        Direct direct(mesh);
        Relaxer relaxer(mesh.vertices, mesh.triangles);
        const std::pair<const char*, int> measures[] = {{"lengths", PRESERVE_LENGTH},
                                                        {"angles", PRESERVE_FACE_ANGLE},
                                                        {"volume", PRESERVE_VOLUME},
                                                        {"area", PRESERVE_AREA}};
        for (const auto& [name, bit] : measures) {
            if (bit != PRESERVE_LENGTH && random.one_in(2))
                continue;
            const double weight = random.uniform(0.001, 1);
            relaxer.keep(name, weight);
            ASSERT_EQ(PreservePreserve(&direct.status, bit, weight), 1);
        }
        std::vector<bool> mask(8);
        mask[3] = true;
        relaxer.hold(mask);
        direct.hold(3);
        const Outline start = deformed(random, mesh.vertices, 0.2);
        Outline stepped = start, run = start;
        const int steps = random.between(1, 20);
        const double energy = relaxer.step(stepped, steps);
        ASSERT_TRUE(same_bits(direct.relaxed(start, steps), coordinates(stepped)));
        ASSERT_TRUE(same_bits(direct.status.energy, energy));
        ASSERT_EQ(stepped[3], start[3]);
        const Relaxation result = relaxer.run(run, {.steps = steps});
        if (result.stop == Stop::steps) {
            ASSERT_EQ(run, stepped); // one by one as all at once
        }

        auto at = test::points<DATAstruct>(coordinates(start)), force = OwnedDATA();
        ASSERT_EQ(PreserveGetForce(&direct.status, at, force), 1);
        ASSERT_TRUE(same_bits(force->dvals, relaxer.forces(start).coordinates().data(), 24));
        ASSERT_TRUE(same_bits(direct.status.energy, relaxer.energy(start)));
    }
}

TEST(FaceRelaxer, TakesFacesOfAnySizeAndEdgesAlone)
{
    const Outline corners = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {2, 0.5, 0}};
    const std::vector<int32_t> sizes = {4, 3}, points = {0, 1, 2, 3, 1, 4, 2};
    Relaxer faces(corners, sizes, points);
    EXPECT_EQ(faces.edges().size(), 6u);
    faces.keep(Measure::lengths).keep(Measure::angles);
    const std::vector<std::array<int32_t, 2>> edges = {{0, 1}, {1, 2}};
    Relaxer wires = Relaxer::of_edges(corners, edges);
    EXPECT_EQ(wires.edges()[1], (std::array<int32_t, 2>{1, 2}));
    wires.keep("lengths");
    EXPECT_EQ(refusal_of([&] { wires.keep("volume"); }),
              "Relaxer::keep: measure must be one that the mesh has, but the mesh has no faces or edges for it");
}

TEST(FaceRelaxer, RunStopsForTheReasonItGives)
{
    Random random(1213);
    const Mesh mesh = cube();
    Relaxer relaxer(mesh.vertices, mesh.triangles);
    relaxer.keep("lengths");
    const Outline start = deformed(random, mesh.vertices, 0.2);

    Outline points = mesh.vertices;
    EXPECT_EQ(relaxer.run(points).stop, Stop::energy); // in shape from the start
    EXPECT_EQ(points, mesh.vertices);

    points = start;
    Relaxation result = relaxer.run(points, {.steps = 3});
    EXPECT_EQ(result.stop, Stop::steps);
    EXPECT_EQ(result.steps, 3);
    EXPECT_EQ(result.energy, relaxer.energy(points));

    points = start;
    result = relaxer.run(points, {.steps = 10000, .energy = 1e-4});
    EXPECT_EQ(result.stop, Stop::energy);
    EXPECT_LE(result.energy, 1e-4);
    EXPECT_LE(relaxer.energy(points), 1e-4);

    points = start;
    std::vector<int> told;
    result = relaxer.run(points, {.progress = [&](int step, double) {
                             told.push_back(step);
                             return step < 2;
                         }});
    EXPECT_EQ(result.stop, Stop::cancelled);
    EXPECT_EQ(told, (std::vector<int>{1, 2}));

    points = start;
    result = relaxer.run(points, {.steps = 100000, .least_drop = 0.5});
    EXPECT_EQ(result.stop, Stop::stalled);
    EXPECT_LT(result.steps, 100000);
}

TEST(FaceRelaxer, NeverMakesNaNWhereNothingCanMove)
{
    const Mesh mesh = cube();
    Relaxer relaxer(mesh.vertices, mesh.triangles);
    relaxer.keep("volume").hold(std::vector<bool>(8, true));
    Outline points = mesh.vertices;
    points[0][0] -= 0.5;
    const Outline before = points;
    EXPECT_GT(relaxer.step(points), 0);
    EXPECT_EQ(points, before);
    const Relaxation result = relaxer.run(points);
    EXPECT_EQ(result.stop, Stop::no_force);
    EXPECT_EQ(result.steps, 0);
    EXPECT_EQ(points, before);
    relaxer.hold(std::vector<bool>{}); // frees all
    EXPECT_NE(relaxer.run(points, {.steps = 5}).stop, Stop::no_force);
}

TEST(FaceRelaxer, TellsThatNothingIsKeptOrAllIsHeld)
{
    const Mesh mesh = cube();
    Relaxer relaxer(mesh.vertices, mesh.triangles);
    Outline points = mesh.vertices;
    points[0][0] -= 0.5;
    EXPECT_EQ(refusal_of([&] { relaxer.run(points); }),
              "Relaxer::run: the relaxer must keep a measure, but it keeps none");
    EXPECT_EQ(refusal_of([&] { relaxer.step(points); }),
              "Relaxer::step: the relaxer must keep a measure, but it keeps none");
    relaxer.keep("lengths").hold(std::vector<bool>(8, true));
    EXPECT_EQ(relaxer.run(points), (Relaxation{0, 0, Stop::held}));
    EXPECT_EQ(
        refusal_of([&] { Relaxer(mesh.vertices, std::span(mesh.triangles).first(11)).keep("volume"); }),
        "Relaxer::keep: measure must be one that the mesh has, but a volume is that of a closed mesh, and 3 edges "
        "are open, one of them between points 1 and 5");
}

TEST(FaceRelaxer, SaysWhatItRefuses)
{
    const Mesh mesh = cube();
    const std::vector<Triangle> astray = {{0, 1, 8}};
    EXPECT_EQ(refusal_of([&] { Relaxer(mesh.vertices, astray); }),
              "Relaxer: corners must name vertices 0 to 7, but its corner 2 is 8");
    Relaxer relaxer(mesh.vertices, mesh.triangles);
    EXPECT_EQ(refusal_of([&] { relaxer.keep("colour"); }),
              "Relaxer::keep: measure must be lengths, angles, volume or area, but it is \"colour\"");
    EXPECT_EQ(refusal_of([&] { relaxer.keep("lengths", -1); }),
              "Relaxer::keep: weight must be finite and above 0, but it is -1");
    EXPECT_EQ(refusal_of([&] { relaxer.hold(std::vector<bool>(7)); }),
              "Relaxer::hold: mask must have one value for each of 8 points, but it has 7");
    Outline few(3);
    EXPECT_EQ(refusal_of([&] { relaxer.step(few); }),
              "Relaxer::step: points must be 8 like the mesh's, but there are 3");
}

} // namespace
} // namespace korvale::test
