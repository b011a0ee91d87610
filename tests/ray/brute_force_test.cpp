// Queries against every triangle tested on its own, without a grid and without a frame. Where the two differ, a rule of
// the library must explain it, and how often each one did is counted:
//
//     edge_on    the triangle shows less than the least determinant
//     snapped    the ray runs within 1e-06 of the z axis and was taken to lie on it
//     faces      no cell that lists the triangle has a face that the ray meets
//     rim        the meeting lies on an edge, at the origin or at a threshold, as far as rounding can tell
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

#include "math/vector.h"
#include "ray/grid.h"
#include "ray/query.h"
#include "tests/ray/scene.h"
#include "tests/support/meshes.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

constexpr double kEpsilon = std::numeric_limits<double>::epsilon();
constexpr long double kLeastDeterminant = 1e-06L;

struct Point {
    long double x, y, z;
};

Point point(const double* p)
{
    return {p[0], p[1], p[2]};
}

Point operator-(const Point& a, const Point& b)
{
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}

Point cross(const Point& a, const Point& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

long double dot(const Point& a, const Point& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

long double length(const Point& a)
{
    return std::sqrt(dot(a, a));
}

long double size(const Point& a)
{
    return std::max({std::fabs(a.x), std::fabs(a.y), std::fabs(a.z)});
}

enum class Verdict { out, in, on_the_rim };

struct Meeting {
    Verdict verdict;
    long double distance, error; ///< of the distance
    bool edge_on;                ///< shows less than the least determinant, or as good as
    bool about_edge_on;          ///< too near to that to tell
};

/// Whether the ray o + t d, d of length 1, meets triangle[9] (Moeller, Trumbore, 1997), allowing for what the library's
/// double arithmetic may lose.
Meeting meet(const Point& o, const Point& d, const double* triangle)
{
    const Point p2 = point(triangle + 6), e0 = point(triangle) - p2, e1 = point(triangle + 3) - p2, s = o - p2;
    const Point h = cross(d, e1), q = cross(s, e0);
    const long double determinant = dot(e0, h);
    Meeting m = {Verdict::out, 0, 0, std::fabs(determinant) < kLeastDeterminant, false};
    if (determinant == 0)
        return m;
    const long double w0 = dot(s, h) / determinant, w1 = dot(d, q) / determinant;
    m.distance = dot(e1, q) / determinant;
    const long double coordinates = std::max(size(o), std::max(size(p2), size(point(triangle))));
    const long double edge = std::max(length(e0), length(e1));
    const long double position = 32 * kEpsilon * (coordinates + size(point(triangle + 3)));
    const long double weight = position * edge / std::fabs(determinant);
    m.error = position * (1 + edge * edge / std::fabs(determinant));
    m.about_edge_on = std::fabs(std::fabs(determinant) - kLeastDeterminant) < 2 * position * edge;
    const long double inside = std::min({w0, w1, 1 - w0 - w1});
    if (inside > weight && m.distance > m.error)
        m.verdict = Verdict::in;
    else if (inside >= -weight && m.distance >= -m.error)
        m.verdict = Verdict::on_the_rim;
    return m;
}

struct Causes {
    int64_t rays, hits, edge_on, snapped, faces, rim;
};

struct Ray {
    double origin[3], direction[3];
};

/// A mesh in one grid, and what came of the rays cast at it.
class Comparison {
public:
    Comparison(const std::vector<double>& triangles, int nx, int ny, int nz)
        : scene_(triangles, nx, ny, nz), count_(static_cast<int>(triangles.size() / 9))
    {
        listing_.resize(static_cast<size_t>(count_));
        for (int c = 0; c < nx * ny * nz; ++c)
            for (const int t : scene_.numbers(c))
                listing_[static_cast<size_t>(t)].push_back(c);
    }

    const Causes& causes() const { return causes_; }
    const double* vertex(Random& random) { return scene_.triangles().dvals + 3 * random.below(3 * count_); }
    const double* triangle(Random& random) { return scene_.triangles().dvals + 9 * random.below(count_); }
    const double* box() { return scene_->bbox.dvals; }

    void cast(Ray ray)
    {
        double nearest = 0;
        const int hits = ray_intersect(ray.origin, ray.direction, scene_, &nearest);
        const long double norm = length(point(ray.direction));
        const Point d = {ray.direction[0] / norm, ray.direction[1] / norm, ray.direction[2] / norm};
        const bool snaps = std::hypot(static_cast<double>(d.x), static_cast<double>(d.y)) < 1e-06;
        const Point taken = snaps ? Point{0, 0, d.z < 0 ? -1.0L : 1.0L} : d;
        const Point o = point(ray.origin);

        ++causes_.rays;
        causes_.hits += hits;
        int sure = 0, possible = 0;
        long double least_sure = kFar, least_possible = kFar, error = 0;
        for (int t = 0; t < count_; ++t) {
            const double* const triangle = scene_.triangles().dvals + 9 * int64_t{t};
            const Meeting m = meet(o, taken, triangle);
            if (snaps && meet(o, d, triangle).verdict != m.verdict)
                ++causes_.snapped;
            if (m.verdict == Verdict::out)
                continue;
            if (m.edge_on && !m.about_edge_on) {
                ++causes_.edge_on;
                continue;
            }
            if (scene_->tri_marks.bvals[t] == 0) {
                EXPECT_FALSE(is_reached(ray, t)) << "triangle " << t << " was not tested";
                ++causes_.faces;
                continue;
            }
            error = std::max(error, m.error);
            least_possible = std::min(least_possible, m.distance);
            if (m.verdict == Verdict::in && !m.about_edge_on) {
                ++sure;
                least_sure = std::min(least_sure, m.distance);
            } else {
                ++possible;
                ++causes_.rim;
            }
        }
        EXPECT_GE(hits, sure);
        EXPECT_LE(hits, sure + possible);
        if (hits > 0) {
            EXPECT_LE(nearest, least_sure + error);
            EXPECT_GE(nearest, least_possible - error);
        }
    }

private:
    static constexpr long double kFar = std::numeric_limits<long double>::infinity();

    /// Whether a cell that lists the triangle has a face the ray meets.
    bool is_reached(Ray ray, int t)
    {
        normalize(ray.direction);
        return std::any_of(listing_[static_cast<size_t>(t)].begin(), listing_[static_cast<size_t>(t)].end(),
                           [&](int c) { return ray_int_bbox(ray.origin, ray.direction, scene_->cells[c].dvals) == 1; });
    }

    Scene scene_;
    int count_;
    std::vector<std::vector<int>> listing_; ///< the cells that list each triangle
    Causes causes_ = {};
};

void set(double* to, double x, double y, double z)
{
    to[0] = x;
    to[1] = y;
    to[2] = z;
}

/// A point of the box, or of its surroundings up to `reach` times its size.
void pick_point(Random& random, const double* box, double reach, double* to)
{
    const double size = std::max({box[3] - box[0], box[4] - box[1], box[5] - box[2]});
    for (int k = 0; k < 3; ++k)
        to[k] = random.uniform(box[k] - reach * size, box[k + 3] + reach * size);
}

void aim(Ray& ray, const double* target)
{
    for (int k = 0; k < 3; ++k)
        ray.direction[k] = target[k] - ray.origin[k];
}

bool has_direction(const Ray& ray)
{
    return length(point(ray.direction)) > 2e-06L;
}

/// Rays that have something to do with the mesh, of every kind in turn.
Ray pick_ray(int kind, Random& random, Comparison& mesh)
{
    Ray ray;
    double target[3];
    pick_point(random, mesh.box(), 0, target);
    pick_point(random, mesh.box(), 1, ray.origin);
    const int axis = random.below(3);
    switch (kind % 8) {
    case 0: // from around
        aim(ray, target);
        break;
    case 1: // from within
        pick_point(random, mesh.box(), 0, ray.origin);
        aim(ray, target);
        break;
    case 2: // along an axis
        set(ray.direction, 0, 0, 0);
        ray.direction[axis] = random.one_in(2) ? 1 : -1;
        break;
    case 3: // through a vertex
        aim(ray, mesh.vertex(random));
        break;
    case 4: { // through an edge
        const double* const triangle = mesh.triangle(random);
        const double share = random.unit();
        for (int k = 0; k < 3; ++k)
            target[k] = triangle[k] + share * (triangle[3 + k] - triangle[k]);
        aim(ray, target);
        break;
    }
    case 5: { // inside the plane of a triangle
        const double* const triangle = mesh.triangle(random);
        for (int k = 0; k < 3; ++k) {
            ray.origin[k] = triangle[k] + 2 * (triangle[k] - triangle[3 + k]);
            ray.direction[k] = triangle[3 + k] - ray.origin[k] + 0.25 * (triangle[6 + k] - triangle[3 + k]);
        }
        break;
    }
    case 6: // pointing away
        aim(ray, target);
        for (double& component : ray.direction)
            component = -component;
        break;
    default: // from far away
        pick_point(random, mesh.box(), 1e4, ray.origin);
        aim(ray, target);
        break;
    }
    if (!has_direction(ray))
        set(ray.direction, 0.6, 0, 0.8);
    return ray;
}

void report(const Causes& c)
{
    testing::Test::RecordProperty("rays", std::to_string(c.rays));
    testing::Test::RecordProperty("hits", std::to_string(c.hits));
    testing::Test::RecordProperty("edge_on", std::to_string(c.edge_on));
    testing::Test::RecordProperty("snapped", std::to_string(c.snapped));
    testing::Test::RecordProperty("faces", std::to_string(c.faces));
    testing::Test::RecordProperty("rim", std::to_string(c.rim));
}

/// Casts rays 0, `step`, 2 `step` ... at the mesh in each of the usual grids. Returns the causes of all differences.
Causes compare(const std::vector<double>& triangles, int rays, uint64_t seed, int step = 1)
{
    Causes all = {};
    const int grids[][3] = {{1, 1, 1}, {4, 4, 4}, {16, 16, 16}, {3, 7, 11}};
    for (const auto& n : grids) {
        Random random(seed);
        Comparison mesh(triangles, n[0], n[1], n[2]);
        for (int r = 0; r < rays && !testing::Test::HasFailure(); r += step)
            mesh.cast(pick_ray(r, random, mesh));
        const Causes& c = mesh.causes();
        all = {all.rays + c.rays,       all.hits + c.hits,   all.edge_on + c.edge_on,
               all.snapped + c.snapped, all.faces + c.faces, all.rim + c.rim};
    }
    report(all);
    return all;
}

std::vector<double> random_triangles(int count, double size, uint64_t seed)
{
    Random random(seed);
    std::vector<double> all;
    for (int t = 0; t < count; ++t) {
        double centre[3];
        for (double& c : centre)
            c = random.uniform(0, 10);
        for (int i = 0; i < 9; ++i)
            all.push_back(centre[i % 3] + random.uniform(-size, size));
    }
    return all;
}

TEST(RayAgainstBruteForce, AgreesOnTheTeapot)
{
    const std::vector<double> teapot = triangles_of(read_obj(KORVALE_EXAMPLE_DATA "/teapot.obj"));
    ASSERT_EQ(teapot.size(), 9u * 992u);
    const Causes c = compare(teapot, 240, 11);
    EXPECT_GT(c.hits, c.rays / 2);
    EXPECT_EQ(c.faces, 0);
}

TEST(RayAgainstBruteForce, LeavesNothingToRoundingForRaysAtRandom)
{
    const Causes c = compare(triangles_of(read_obj(KORVALE_EXAMPLE_DATA "/teapot.obj")), 1600, 10, 8);
    EXPECT_GT(c.hits, c.rays / 2);
    EXPECT_EQ(c.rim, 0);
    EXPECT_EQ(c.snapped, 0);
    EXPECT_EQ(c.faces, 0);
}

TEST(RayAgainstBruteForce, AgreesOnALandscape)
{
    const Causes c = compare(landscape(20), 240, 12);
    EXPECT_GT(c.hits, c.rays / 8);
    EXPECT_EQ(c.faces, 0);
}

TEST(RayAgainstBruteForce, AgreesOnManySmallTriangles)
{
    const Causes c = compare(random_triangles(600, 0.5, 101), 320, 13);
    EXPECT_GT(c.hits, c.rays / 4);
    EXPECT_EQ(c.faces, 0);
}

TEST(RayAgainstBruteForce, AgreesOnLargeTriangles)
{
    const Causes c = compare(random_triangles(200, 8, 102), 400, 14);
    EXPECT_GT(c.hits, 5 * c.rays);
    EXPECT_EQ(c.faces, 0);
}

TEST(RayAgainstBruteForce, AgreesOnAMeshWithoutThickness)
{
    for (int axis = 0; axis < 3; ++axis) {
        const std::vector<double> flat = scaled(random_triangles(200, 2, 103), axis != 0, axis != 1, axis != 2);
        const Causes c = compare(flat, 300, 15);
        EXPECT_GT(c.hits, c.rays / 2);
        EXPECT_LT(c.faces, c.hits / 100); // where a ray meets the rim of the box, rounding decides
    }
}

/// Whether this run calculates more exactly in long double than in double, which valgrind does not.
bool has_long_double()
{
    volatile long double one = 1, tiny = 0x1p-60L;
    return one + tiny != one;
}

TEST(RayAgainstBruteForce, AgreesFarFromOne)
{
    if (!has_long_double())
        GTEST_SKIP() << "far from one, the plain answers need a long double";
    const Causes c = compare(scaled(random_triangles(300, 1, 104), 1e9, 1e9, 1e9), 300, 16);
    EXPECT_GT(c.hits, c.rays / 2);
    EXPECT_EQ(c.edge_on, 0);
    EXPECT_EQ(c.faces, 0);
}

TEST(RayAgainstBruteForce, MissesTinyTrianglesByTheDeterminant)
{
    const Causes c = compare(scaled(random_triangles(300, 1, 105), 1e-9, 1e-9, 1e-9), 300, 17);
    EXPECT_EQ(c.hits, 0);
    EXPECT_GT(c.edge_on, 100);
}

TEST(RayAgainstBruteForce, MissesSmallTrianglesSeenAtASlantByTheDeterminant)
{
    const Causes c = compare(random_triangles(1500, 0.002, 106), 240, 18);
    EXPECT_GT(c.edge_on, 0);
    EXPECT_GT(c.hits, 0);
    EXPECT_EQ(c.faces, 0);
}

TEST(RayAgainstBruteForce, SnapsToTheZAxis)
{
    Random random(19);
    Comparison mesh(scaled(random_triangles(300, 1, 107), 0.001, 0.001, 1000), 4, 4, 4);
    for (int r = 0; r < rounds(400); ++r) {
        Ray ray;
        pick_point(random, mesh.box(), 0, ray.origin);
        ray.origin[2] = -1000;
        set(ray.direction, random.uniform(-7e-07, 7e-07), random.uniform(-7e-07, 7e-07), 1);
        mesh.cast(ray);
    }
    report(mesh.causes());
    EXPECT_GT(mesh.causes().snapped, 0);
    EXPECT_GT(mesh.causes().hits, 0);
}

TEST(RayAgainstBruteForce, MissesCellsWhoseFacesTheRayNearlyRunsAlong)
{
    // Long cells: a ray crosses several of them in x, always by less than the least approach, before it leaves any in
    // z.
    Random random(20);
    Comparison mesh(scaled(random_triangles(300, 1, 108), 0.001, 1, 1000), 16, 1, 1);
    for (int r = 0; r < rounds(400); ++r) {
        Ray ray;
        pick_point(random, mesh.box(), 0, ray.origin);
        set(ray.direction, random.uniform(-9e-07, 9e-07), 1e-05, 1);
        mesh.cast(ray);
    }
    report(mesh.causes());
    EXPECT_GT(mesh.causes().faces, 0);
    EXPECT_GT(mesh.causes().hits, 0);
}

} // namespace
} // namespace korvale::test
