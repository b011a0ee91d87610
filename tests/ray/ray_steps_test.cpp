// The grid and its queries against the plain steps: equal bits for boxes, lists, marks, hits and distances.
#include "tests/reference/ray.h"

#include <cmath>
#include <cstring>
#include <limits>

#include <gtest/gtest.h>

#include "ray/grid.h"
#include "ray/query.h"
#include "tests/ray/host_cells.h"
#include "tests/ray/scene.h"
#include "tests/support/bits.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// What the coordinates of a mesh are drawn from.
enum class Mesh { small_triangles, large_triangles, lattice, flat, point, tiny, huge, far, awkward, awkward_finite };

constexpr Mesh kMeshes[] = {Mesh::small_triangles,
                            Mesh::large_triangles,
                            Mesh::lattice,
                            Mesh::flat,
                            Mesh::point,
                            Mesh::tiny,
                            Mesh::huge,
                            Mesh::far,
                            Mesh::awkward,
                            Mesh::awkward_finite};

double coordinate(Mesh mesh, Random& random, int axis)
{
    switch (mesh) {
    case Mesh::lattice:
        return random.between(-4, 4);
    case Mesh::flat:
        return axis == 2 ? 3.0 : random.uniform(-2, 2);
    case Mesh::point:
        return 1.25;
    case Mesh::tiny:
        return random.uniform(-1e-9, 1e-9);
    case Mesh::huge:
        return random.uniform(-1e9, 1e9);
    case Mesh::far:
        return 1e9 + random.uniform(-1e-6, 1e-6);
    case Mesh::awkward:
        return random.one_in(12) ? random.awkward() : random.uniform(-2, 2);
    case Mesh::awkward_finite:
        return random.awkward_finite();
    default:
        return random.uniform(-2, 2);
    }
}

std::vector<double> random_triangles(Mesh mesh, Random& random, int count)
{
    std::vector<double> all(9 * static_cast<size_t>(count));
    for (size_t t = 0; t < all.size(); t += 9)
        for (size_t i = 0; i < 9; ++i)
            all[t + i] = mesh == Mesh::small_triangles && i >= 3 ? all[t + i % 3] + random.uniform(-0.2, 0.2)
                                                                 : coordinate(mesh, random, static_cast<int>(i % 3));
    return all;
}

/// A component of a direction: often 0 or about the threshold of the faces.
double slope(Random& random)
{
    switch (random.below(8)) {
    case 0:
        return 0.0;
    case 1:
        return -0.0;
    case 2:
        return std::nextafter(random.one_in(2) ? 1e-06 : -1e-06, random.between(-1, 1));
    case 3:
        return random.uniform(-2e-06, 2e-06);
    case 4:
        return random.one_in(2) ? 1 : -1;
    default:
        return random.uniform(-1, 1);
    }
}

struct Ray {
    double origin[3], direction[3];
};

/// The boxes of all cells.
std::vector<Box> boxes_of(Scene& s)
{
    std::vector<Box> boxes(static_cast<size_t>(s->nx * s->ny * s->nz));
    for (size_t c = 0; c < boxes.size(); ++c)
        std::copy(s->cells[c].dvals, s->cells[c].dvals + 6, boxes[c].begin());
    return boxes;
}

/// A ray that has to do with the triangles: from near them, from a plane of the grid, or towards a vertex.
Ray random_ray(Random& random, Scene& s, const std::vector<Box>& boxes)
{
    Ray ray;
    const Data& triangles = s.triangles();
    const double* const target = triangles.dvals + 3 * random.below(3 * triangles.count);
    const Box& box = boxes[static_cast<size_t>(random.below(static_cast<int>(boxes.size())))];
    for (int k = 0; k < 3; ++k) {
        const double low = s->bbox.dvals[k], high = s->bbox.dvals[k + 3];
        switch (random.below(4)) {
        case 0:
            ray.origin[k] = box[static_cast<size_t>(k + 3 * random.below(2))];
            break;
        case 1:
            ray.origin[k] = target[k];
            break;
        default:
            ray.origin[k] = low + (high - low) * random.uniform(-1, 2);
            break;
        }
    }
    const bool aimed = random.one_in(2);
    for (int k = 0; k < 3; ++k)
        ray.direction[k] = aimed ? target[k] - ray.origin[k] : slope(random);
    if (random.one_in(20))
        ray.origin[random.below(3)] = random.awkward();
    if (random.one_in(20))
        ray.direction[random.below(3)] = random.awkward();
    return ray;
}

Ray random_ray(Random& random, Scene& s)
{
    return random_ray(random, s, boxes_of(s));
}

void expect_same_cells(Scene& s)
{
    const std::vector<reference::RayCell> expected =
        reference::sort_triangles(s->triangles->dvals, s->triangles->count, s->bbox.dvals, s->nx, s->ny, s->nz);
    for (size_t c = 0; c < expected.size(); ++c) {
        ASSERT_TRUE(same_bits(expected[c].box, s->cells[c].dvals, 6)) << "box of cell " << c;
        ASSERT_EQ(expected[c].numbers, s.numbers(static_cast<int>(c))) << "cell " << c;
    }
}

/// Casts one ray both ways. Returns the number of hits. `boxes` are those of the library's cells, null for a host's.
int expect_same_answer(Scene& s, Ray ray, Random& random, const Box* boxes = nullptr)
{
    std::memset(s->tri_marks.bvals, random.below(256), static_cast<size_t>(s->tri_marks.count));
    double expected_distance = -7, distance = -7;
    const int expected = reference::intersect(ray.origin, ray.direction, *s, &expected_distance, boxes);
    const std::vector<int> expected_marks = s.marks();

    std::memset(s->tri_marks.bvals, random.below(256), static_cast<size_t>(s->tri_marks.count));
    const int hits = ray_intersect(ray.origin, ray.direction, s, &distance);
    const auto where = [&ray] {
        std::string text = "ray";
        for (int k = 0; k < 3; ++k)
            text += " " + describe(ray.origin[k]) + " + t " + describe(ray.direction[k]);
        return text;
    };
    EXPECT_EQ(expected, hits) << where();
    EXPECT_TRUE(same_bits(expected_distance, distance)) << where();
    EXPECT_EQ(expected_marks, s.marks()) << where();
    return hits;
}

class RaySteps : public testing::TestWithParam<Mesh> {};

INSTANTIATE_TEST_SUITE_P(Meshes, RaySteps, testing::ValuesIn(kMeshes));

TEST_P(RaySteps, SortAnyMesh)
{
    Random random(901 + static_cast<uint64_t>(GetParam()));
    for (int i = 0; i < rounds(60); ++i) {
        Scene s(random_triangles(GetParam(), random, random.between(1, 150)), random.between(1, 7),
                random.between(1, 7), random.between(1, 7));
        expect_same_cells(s);
        if (HasFatalFailure())
            return;
    }
    Scene s(random_triangles(GetParam(), random, 400), 3, 7, 11);
    expect_same_cells(s);
}

TEST_P(RaySteps, CastAtAnyMesh)
{
    Random random(951 + static_cast<uint64_t>(GetParam()));
    int64_t hits = 0;
    for (int i = 0; i < rounds(40) && !HasFailure(); ++i) {
        Scene s(random_triangles(GetParam(), random, random.between(1, 150)), random.between(1, 7),
                random.between(1, 7), random.between(1, 7));
        for (int r = 0; r < 100 && !HasFailure(); ++r)
            hits += expect_same_answer(s, random_ray(random, s), random);
    }
    if (GetParam() != Mesh::point && GetParam() != Mesh::tiny && GetParam() != Mesh::far) {
        EXPECT_GT(hits, 500);
    }
}

TEST_P(RaySteps, CastInFineGrids)
{
    Random random(981 + static_cast<uint64_t>(GetParam()));
    const int sizes[][3] = {{16, 16, 16}, {3, 7, 11}, {40, 1, 1}, {1, 30, 2}, {1, 1, 1}, {2, 1, 50}};
    for (const auto& n : sizes) {
        Scene s(random_triangles(GetParam(), random, 500), n[0], n[1], n[2]);
        for (int r = 0; r < rounds(60) && !HasFailure(); ++r)
            expect_same_answer(s, random_ray(random, s), random);
    }
}

TEST_P(RaySteps, CastBetweenMovements)
{
    Random random(991 + static_cast<uint64_t>(GetParam()));
    Scene s(random_triangles(GetParam(), random, 100), 4, 4, 4);
    for (int r = 0; r < rounds(300) && !HasFailure(); ++r) {
        double* const vertex = s.triangles().dvals + 3 * random.below(300);
        for (int k = 0; k < 3; ++k)
            vertex[k] = random.one_in(10) ? random.awkward() : vertex[k] + random.uniform(-0.5, 0.5);
        expect_same_answer(s, random_ray(random, s), random);
    }
}

/// Changes a cell of the library as a host may; `boxes` are those of all cells.
void edit(Scene& s, const std::vector<Box>& boxes, Random& random)
{
    const int c = random.below(static_cast<int>(boxes.size()));
    const int t = random.below(s.triangles().count);
    data_list_struct& cell = s->cells[c];
    switch (random.below(5)) {
    case 0:
        DataListDispose(&cell);
        break;
    case 1:
        DataDispose(&cell);
        break;
    case 2: // wherever it is then, the cell stays where it was made
        if (cell.dvals == nullptr)
            give_box(cell, boxes[static_cast<size_t>(random.below(static_cast<int>(boxes.size())))]);
        break;
    case 3: {
        data_list_struct* const node = number_node({t, random.below(s.triangles().count)});
        node->next = cell.next;
        cell.next = node;
        break;
    }
    default:
        ray_add_tri_to_bbox(s, t, c);
        break;
    }
}

TEST_P(RaySteps, CastInEditedCells)
{
    Random random(1001 + static_cast<uint64_t>(GetParam()));
    for (int i = 0; i < rounds(20) && !HasFailure(); ++i) {
        Scene s(random_triangles(GetParam(), random, random.between(1, 150)), random.between(1, 7),
                random.between(1, 7), random.between(1, 7));
        const std::vector<Box> boxes = boxes_of(s);
        for (int r = 0; r < 60 && !HasFailure(); ++r) {
            for (int edits = random.below(4); edits > 0; --edits)
                edit(s, boxes, random);
            expect_same_answer(s, random_ray(random, s, boxes), random, boxes.data());
        }
    }
}

/// More triangles than a query tests at once: those of small cells wait for each other.
TEST_P(RaySteps, CastAtThousandsOfTriangles)
{
    Random random(1041 + static_cast<uint64_t>(GetParam()));
    std::vector<double> triangles = random_triangles(GetParam(), random, 8193);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (size_t t = 0; t < triangles.size(); t += 9 * 50) // met at a distance that is not a number, if it is met
        std::fill_n(&triangles[t + 3 + 3 * (t / 9 % 2)], 3, nan);
    const int sizes[][3] = {{8, 8, 8}, {12, 5, 9}, {1, 1, 40}};
    for (const auto& n : sizes) {
        Scene s(triangles, n[0], n[1], n[2]);
        const std::vector<Box> boxes = boxes_of(s);
        for (int r = 0; r < rounds(25) && !HasFailure(); ++r) {
            for (int edits = random.below(20); edits > 0; --edits)
                edit(s, boxes, random);
            expect_same_answer(s, random_ray(random, s, boxes), random, boxes.data());
        }
    }
}

TEST_P(RaySteps, CastInCellsOfTheHost)
{
    Random random(1021 + static_cast<uint64_t>(GetParam()));
    for (int i = 0; i < rounds(40) && !HasFailure(); ++i) {
        Scene s(random_triangles(GetParam(), random, random.between(1, 60)));
        std::vector<Box> boxes(static_cast<size_t>(random.between(1, 30)));
        for (Box& box : boxes)
            for (int k = 0; k < 6; ++k)
                box[static_cast<size_t>(k)] = coordinate(GetParam(), random, k % 3);
        make_cells(s, boxes);
        std::copy(boxes[0].begin(), boxes[0].end(), s->bbox.dvals);
        for (int n = random.below(80); n > 0; --n)
            ray_add_tri_to_bbox(s, random.below(s.triangles().count), random.below(s->nz));
        for (int r = 0; r < 40 && !HasFailure(); ++r)
            expect_same_answer(s, random_ray(random, s, boxes), random);
    }
}

TEST(RayStepsAnywhere, HoldForBoxesThatAreNotFinite)
{
    Random random(999);
    const double ends[] = {-kInfinity,
                           -1.0,
                           0.0,
                           2.0,
                           kInfinity,
                           std::numeric_limits<double>::max(),
                           std::numeric_limits<double>::quiet_NaN()};
    for (int i = 0; i < 500 && !HasFailure(); ++i) {
        std::vector<double> triangles = random_triangles(Mesh::large_triangles, random, 20);
        for (int changes = random.between(1, 4); changes > 0; --changes)
            triangles[static_cast<size_t>(random.below(180))] = ends[random.below(7)];
        Scene s(triangles, random.between(1, 4), random.between(1, 4), random.between(1, 4));
        expect_same_cells(s);
        for (int r = 0; r < 10; ++r)
            expect_same_answer(s, random_ray(random, s), random);
    }
}

} // namespace
} // namespace korvale::test
