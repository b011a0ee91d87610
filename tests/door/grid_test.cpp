// Triangles for rays.
#include <korvale.h>

#include <cmath>
#include <cstring>
#include <optional>
#include <thread>

#include <gmock/gmock.h>

#include "support.h"
#include "tests/reference/ray.h"
#include "tests/support/heap.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

using testing::ElementsAre;
using testing::EndsWith;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// A unit square of two triangles at z = 0 and one above its lower half at z = 1.
const std::vector<double> kPoints = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 0, 0, 1, 1, 0, 1, 1, 1, 1};
const std::vector<int32_t> kCorners = {0, 1, 2, 0, 2, 3, 4, 5, 6};

korvale_indices indices_of(const std::vector<int32_t>& numbers)
{
    return {numbers.data(), static_cast<int64_t>(numbers.size()), 0, KORVALE_INT32};
}

/// A grid that is released with the value.
struct Grid {
    Grid(const korvale_triangles& triangles, std::array<int32_t, 3> cells = {}, bool borrow = false)
    {
        korvale_grid_options options;
        korvale_grid_defaults(&options, sizeof options);
        options.borrow = borrow;
        std::copy(cells.begin(), cells.end(), options.cells);
        korvale_error error = {};
        EXPECT_EQ(korvale_grid_new(&triangles, &options, &grid, &error), KORVALE_OK) << error.text;
    }
    explicit Grid(const std::vector<double>& corners, std::array<int32_t, 3> cells = {}, bool borrow = false)
        : Grid(korvale_triangles{points_of(corners), {}}, cells, borrow)
    {
    }
    ~Grid() { korvale_grid_free(grid); }
    Grid(const Grid&) = delete;
    Grid& operator=(const Grid&) = delete;

    korvale_grid* grid = nullptr;
};

/// The record on the same triangles and cells.
struct Record {
    Record(std::vector<double>& corners, const korvale_grid* grid)
    {
        DataInitialize(&triangles);
        triangles.dim = 9;
        triangles.count = static_cast<int32_t>(corners.size() / 9);
        triangles.dvals = corners.data();
        EXPECT_EQ(ray_initialize(&status), 1);
        int32_t cells[3] = {};
        korvale_grid_cells(grid, cells);
        status.nx = cells[0];
        status.ny = cells[1];
        status.nz = cells[2];
        ray_set_triangles(&triangles, &status);
        ray_classify(&status);
    }
    ~Record()
    {
        ray_declassify(&status);
        DataDispose(&status.bbox);
    }

    Data triangles;
    RayStatus status = {};
};

std::vector<double> times(std::vector<double> numbers, double factor)
{
    for (double& number : numbers)
        number *= factor;
    return numbers;
}

korvale_triangles mesh()
{
    return {points_of(kPoints), indices_of(kCorners)};
}

TEST(Grid, TellsWhatARayMeets)
{
    const Grid g(mesh());
    EXPECT_EQ(korvale_grid_size(g.grid), 3);
    EXPECT_EQ(korvale_grid_face(g.grid, 2), 2);
    EXPECT_EQ(korvale_grid_face(g.grid, 3), -1);
    EXPECT_EQ(korvale_grid_triangles(g.grid)[3], 1);
    const double origin[3] = {0.5, 0.25, 5}, beside[3] = {9, 9, 5}, down[3] = {0, 0, -2};
    double distance = 7;
    EXPECT_EQ(korvale_grid_count(g.grid, beside, down, &distance), 0);
    EXPECT_EQ(distance, 7);
    EXPECT_EQ(korvale_grid_count(g.grid, origin, down, &distance), 2);
    EXPECT_EQ(distance, 4);
    const korvale_hit hit = korvale_grid_nearest(g.grid, origin, down);
    EXPECT_EQ(hit.distance, 4);
    EXPECT_EQ(hit.triangle, 2);
    EXPECT_THAT(hit.corners, ElementsAre(4, 5, 6));
    EXPECT_THAT(hit.weights, ElementsAre(0.5, 0.25, 0.25));
    const korvale_hit none = korvale_grid_nearest(g.grid, beside, down);
    EXPECT_EQ(none.distance, kInfinity);
    EXPECT_EQ(none.triangle, -1);
    EXPECT_THAT(none.corners, ElementsAre(-1, -1, -1));

    korvale_hit hits[2] = {};
    int64_t met = 0;
    ASSERT_EQ(korvale_grid_hits(g.grid, origin, down, hits, 1, &met, nullptr), KORVALE_OK);
    EXPECT_EQ(met, 2);
    EXPECT_EQ(hits[0].triangle, 2);
    EXPECT_EQ(hits[1].triangle, 0);
    ASSERT_EQ(korvale_grid_hits(g.grid, origin, down, hits, 2, &met, nullptr), KORVALE_OK);
    EXPECT_EQ(hits[1].distance, 5);
    EXPECT_EQ(korvale_grid_hits(g.grid, origin, down, nullptr, 0, &met, nullptr), KORVALE_OK);

    EXPECT_EQ(korvale_grid_any(g.grid, origin, down, kInfinity), 1);
    EXPECT_EQ(korvale_grid_any(g.grid, origin, down, 4), 1);
    EXPECT_EQ(korvale_grid_any(g.grid, origin, down, 3.999), 0);
    EXPECT_EQ(korvale_grid_any(g.grid, origin, down, NAN), 0);
    EXPECT_EQ(korvale_grid_any(g.grid, beside, down, kInfinity), 0);
}

TEST(Grid, AnswersNullWithNothing)
{
    const double origin[3] = {}, along[3] = {0, 0, 1};
    EXPECT_EQ(korvale_grid_size(nullptr), 0);
    EXPECT_EQ(korvale_grid_face(nullptr, 0), -1);
    EXPECT_EQ(korvale_grid_triangles(nullptr), nullptr);
    EXPECT_EQ(korvale_grid_count(nullptr, origin, along, nullptr), 0);
    EXPECT_EQ(korvale_grid_nearest(nullptr, origin, along).triangle, -1);
    EXPECT_EQ(korvale_grid_any(nullptr, origin, along, 1), 0);
    EXPECT_EQ(korvale_grid_record(nullptr), nullptr);
    korvale_grid_cells(nullptr, nullptr);
    korvale_grid_free(nullptr);
    const Grid g(mesh());
    EXPECT_EQ(korvale_grid_count(g.grid, nullptr, along, nullptr), 0);
    EXPECT_EQ(korvale_grid_nearest(g.grid, origin, nullptr).triangle, -1);
    const Grid empty(std::vector<double>{});
    EXPECT_EQ(korvale_grid_count(empty.grid, origin, along, nullptr), 0);
    EXPECT_EQ(korvale_grid_nearest(empty.grid, origin, along).triangle, -1);
}

/// Triangles small and large, slivers, points, some in planes of axes and on a lattice, anywhere and of any size.
std::vector<double> hostile_triangles(Random& random, int n)
{
    const double size = std::pow(10, random.one_in(10) ? random.uniform(-8, 16) : random.uniform(-2, 5));
    const bool is_lattice = random.one_in(4);
    double at[3] = {0, 0, 0};
    if (random.one_in(3))
        for (double& c : at)
            c = size * random.uniform(-1, 1) * std::pow(10, random.uniform(0, 4));
    std::vector<double> corners;
    for (int t = 0; t < n; ++t) {
        const double length = std::pow(10, random.uniform(-3, 0.3));
        double middle[3], a[3], b[3];
        for (int k = 0; k < 3; ++k) {
            middle[k] = random.uniform(-1, 1);
            a[k] = random.uniform(-length, length);
            b[k] = random.uniform(-length, length);
        }
        const int kind = random.between(0, 7);
        const double turn = random.uniform(0, 2), width = std::pow(10, random.uniform(-16, -1));
        if (kind == 0)
            for (int k = 0; k < 3; ++k)
                b[k] = turn * a[k] + width * random.uniform(-1, 1);
        if (kind == 1)
            a[t % 3] = b[t % 3] = 0;
        if (kind == 2)
            b[0] = b[1] = b[2] = 0;
        for (int v = 0; v < 3; ++v)
            for (int k = 0; k < 3; ++k) {
                const double c = middle[k] + (v == 1 ? a[k] : v == 2 ? b[k] : 0);
                corners.push_back(at[k] + size * (is_lattice ? std::round(4 * c) / 4 : c));
            }
    }
    return corners;
}

/// A ray at a triangle of many, in its plane, from its corners, along axes, in faces of cells, from afar, or anywhere.
void hostile_ray(Random& random, const std::vector<double>& corners, const RayStatus& s, double (&o)[3], double (&d)[3])
{
    const double* const box = s.bbox.dvals;
    const auto n = static_cast<int>(corners.size() / 9);
    const double* const t = corners.data() + 9 * random.between(0, n - 1);
    const int cells[3] = {s.nx, s.ny, s.nz}, kind = random.between(0, 8), axis = random.between(0, 2);
    const double u = random.uniform(0, 1), v = random.uniform(-2, 2), w = random.uniform(-1, 1);
    for (int k = 0; k < 3; ++k) {
        o[k] = box[k] + (box[k + 3] - box[k]) * random.uniform(-0.5, 1.5);
        d[k] = random.uniform(-1, 1);
    }
    for (int k = 0; k < 3; ++k) {
        const double a = t[k + 3] - t[k], b = t[k + 6] - t[k];
        switch (kind) {
        case 0: // at an edge
            d[k] = t[k] + u * a - o[k];
            break;
        case 1: // in the plane of a triangle
            o[k] = t[k] + v * a + w * b;
            d[k] = u * a + w * b;
            break;
        case 2: // from a corner
            o[k] = t[k];
            break;
        case 3: // along an axis
            d[k] = k == axis ? std::copysign(1, w) : 0;
            break;
        case 4: // from afar
            o[k] = t[k] + (box[3] - box[0]) * std::pow(10, 8 * u) * d[k];
            d[k] = t[k] + 0.3 * a + 0.3 * b - o[k];
            break;
        case 5: // nearly along z
            d[k] = k == 2 ? std::copysign(1, w) : 2e-06 * random.uniform(-1, 1);
            break;
        default:
            break;
        }
    }
    if (kind == 6) { // in a face of a cell
        o[axis] = box[axis] + random.between(0, cells[axis]) * ((box[axis + 3] - box[axis]) / cells[axis]);
        d[axis] = random.one_in(2) ? 0 : d[axis];
    }
}

TEST(Grid, MeetsWhatTheRecordMeetsToTheBit)
{
    Random random(1216);
    int64_t hits = 0, several = 0, small = 0;
    for (int round = 0; round < 60; ++round) {
        std::vector<double> corners = hostile_triangles(random, random.between(1, random.one_in(4) ? 900 : 60));
        const std::array<int32_t, 3> cells = {random.between(0, 9), random.between(0, 9), random.between(0, 9)};
        const Grid g(corners, random.one_in(2) ? cells : std::array<int32_t, 3>{});
        const double scale = reference::grid_scale(corners.data(), static_cast<int32_t>(corners.size() / 9));
        std::vector<double> of_cells = times(corners, scale);
        Record record(of_cells, g.grid);
        for (int ray = 0; ray < 100; ++ray) {
            double origin[3], along[3], in_cells[3], direction[3], of_record = -1, distance = -1;
            hostile_ray(random, of_cells, record.status, in_cells, along);
            for (int k = 0; k < 3; ++k) {
                origin[k] = in_cells[k] / scale;
                direction[k] = along[k];
            }
            reference::bring_to_length(direction);
            const int met = ray_intersect(in_cells, direction, &record.status, &of_record);
            of_record = met > 0 ? of_record / scale : -1;
            small += scale != 1 && met > 0;
            ASSERT_EQ(korvale_grid_count(g.grid, origin, along, &distance), met);
            ASSERT_EQ(std::memcmp(&distance, &of_record, sizeof distance), 0) << distance << " " << of_record;
            const korvale_hit nearest = korvale_grid_nearest(g.grid, origin, along);
            std::vector<korvale_hit> all(static_cast<size_t>(met) + 1);
            int64_t found = 0;
            ASSERT_EQ(korvale_grid_hits(g.grid, origin, along, all.data(), met + 1, &found, nullptr), KORVALE_OK);
            ASSERT_EQ(found, met);
            ASSERT_EQ(korvale_grid_any(g.grid, origin, along, kInfinity), met > 0 ? 1 : 0);
            if (met == 0) {
                ASSERT_EQ(nearest.triangle, -1);
                continue;
            }
            ASSERT_EQ(nearest.distance, of_record);
            ASSERT_EQ(nearest.triangle, all[0].triangle);
            ASSERT_EQ(korvale_grid_any(g.grid, origin, along, of_record), 1);
            for (int i = 0; i < met; ++i) { // the record has tested it
                ASSERT_EQ(record.status.tri_marks.bvals[all[static_cast<size_t>(i)].triangle], 1);
                ASSERT_TRUE(i == 0 || all[static_cast<size_t>(i) - 1].distance <= all[static_cast<size_t>(i)].distance);
            }
            hits += met;
            several += met > 1;
        }
    }
    EXPECT_GT(hits, 2000);
    EXPECT_GT(several, 300);
    EXPECT_GT(small, 50);
}

/// All that a grid tells of rays.
struct Answers {
    std::vector<double> distances, weights;
    std::vector<int32_t> triangles, counts, nearest, any, found;
    std::vector<uint8_t> inside;

    Answers(const korvale_grid* grid, const std::vector<double>& origins, const std::vector<double>& directions)
    {
        const size_t n = origins.size() / 3;
        distances.resize(n);
        weights.resize(3 * n);
        triangles.resize(n);
        counts.resize(n);
        inside.resize(n);
        const korvale_points from = points_of(origins), along = points_of(directions);
        const korvale_ray_columns columns = {distances.data(), triangles.data(), counts.data(), weights.data()};
        korvale_grid_cast(grid, &from, &along, &columns, nullptr, nullptr, nullptr);
        EXPECT_EQ(korvale_grid_contains(grid, &from, inside.data(), nullptr, nullptr, nullptr), KORVALE_OK);
        for (size_t i = 0; i < n; ++i) {
            const double *o = &origins[3 * i], *d = &directions[3 * i];
            nearest.push_back(korvale_grid_nearest(grid, o, d).triangle);
            any.push_back(korvale_grid_any(grid, o, d, 1));
            int64_t met = 0;
            korvale_grid_hits(grid, o, d, nullptr, 0, &met, nullptr);
            found.push_back(static_cast<int32_t>(met));
        }
    }

    friend bool operator==(const Answers&, const Answers&) = default;
};

TEST(Grid, ASmallModelAnswersAsALargeOne)
{
    // Tetrahedra. It reaches 64 to 128, to which small ones are brought. Some triangles come twice.
    Random random(1223);
    std::vector<double> corners, origins, directions;
    for (int i = 0; i < 50; ++i) {
        const std::vector<double> points = random.uniforms(12, -48, 48);
        for (const int corner : {0, 2, 1, 0, 1, 3, 0, 3, 2, 1, 2, 3})
            corners.insert(corners.end(), points.begin() + 3 * corner, points.begin() + 3 * corner + 3);
    }
    corners.insert(corners.end(), corners.begin(), corners.begin() + 36 * 12);
    constexpr int kRays = 300;
    for (int i = 0; i < 3 * kRays; ++i) {
        origins.push_back(random.uniform(-60, 60));
        directions.push_back(random.uniform(-2, 2));
    }
    const Grid large(corners);
    const Answers expected(large.grid, origins, directions);
    EXPECT_GT(*std::max_element(expected.counts.begin(), expected.counts.end()), 20);
    for (const int k : {7, 8, 9, 10, 12, 15, 17, 20, 24, 27, 30, 100, 500, 900}) {
        const double shrunk = std::ldexp(1, -k);
        const Grid small(times(corners, shrunk));
        for (const double longer : {1.0, shrunk, 1e10}) {
            const std::vector<double> from = times(origins, shrunk), along = times(directions, longer);
            const Answers answers(small.grid, from, along);
            ASSERT_EQ(answers.counts, expected.counts);
            ASSERT_EQ(answers.triangles, expected.triangles);
            ASSERT_EQ(answers.inside, expected.inside);
            ASSERT_EQ(answers.nearest, expected.nearest);
            ASSERT_EQ(answers.found, expected.found);
            if (longer == 1e10) // which rounds
                continue;
            ASSERT_EQ(answers.distances, times(expected.distances, shrunk));
            ASSERT_EQ(answers.weights, expected.weights);
            for (size_t i = 0; i < kRays; ++i) {
                const double nearest = answers.distances[i];
                const bool is_met = nearest < kInfinity;
                ASSERT_EQ(korvale_grid_any(small.grid, &from[3 * i], &along[3 * i], nearest), is_met);
                ASSERT_EQ(korvale_grid_any(small.grid, &from[3 * i], &along[3 * i], std::nextafter(nearest, 0)), 0);
            }
        }
    }
}

/// A ball of 20 * 4^times triangles around a point.
std::vector<double> ball(const std::array<double, 3>& middle, double radius, int times)
{
    const double g = (1 + std::sqrt(5)) / 2;
    const double points[12][3] = {{-1, g, 0},  {1, g, 0},  {-1, -g, 0}, {1, -g, 0}, {0, -1, g},  {0, 1, g},
                                  {0, -1, -g}, {0, 1, -g}, {g, 0, -1},  {g, 0, 1},  {-g, 0, -1}, {-g, 0, 1}};
    const int corners[20][3] = {{0, 11, 5},  {0, 5, 1},  {0, 1, 7},  {0, 7, 10}, {0, 10, 11}, {1, 5, 9}, {5, 11, 4},
                                {11, 10, 2}, {10, 7, 6}, {7, 1, 8},  {3, 9, 4},  {3, 4, 2},   {3, 2, 6}, {3, 6, 8},
                                {3, 8, 9},   {4, 9, 5},  {2, 4, 11}, {6, 2, 10}, {8, 6, 7},   {9, 8, 1}};
    using Corner = std::array<double, 3>;
    const auto on_ball = [](const Corner& p) {
        const double length = std::sqrt(p[0] * p[0] + p[1] * p[1] + p[2] * p[2]);
        return Corner{p[0] / length, p[1] / length, p[2] / length};
    };
    std::vector<std::array<Corner, 3>> triangles;
    for (const auto& t : corners) {
        std::array<Corner, 3> triangle;
        for (size_t k = 0; k < 3; ++k)
            triangle[k] = on_ball({points[t[k]][0], points[t[k]][1], points[t[k]][2]});
        triangles.push_back(triangle);
    }
    for (; times > 0; --times) {
        std::vector<std::array<Corner, 3>> finer;
        for (const auto& [a, b, c] : triangles) {
            const auto half_way = [&](const Corner& p, const Corner& q) {
                return on_ball({p[0] + q[0], p[1] + q[1], p[2] + q[2]});
            };
            const Corner ab = half_way(a, b), bc = half_way(b, c), ca = half_way(c, a);
            finer.insert(finer.end(), {{a, ab, ca}, {ab, b, bc}, {ca, bc, c}, {ab, bc, ca}});
        }
        triangles = finer;
    }
    std::vector<double> result;
    for (const auto& triangle : triangles)
        for (const Corner& p : triangle)
            for (size_t k = 0; k < 3; ++k)
                result.push_back(middle[k] + radius * p[k]);
    return result;
}

TEST(Grid, KnowsTheInsideOfFineMeshes)
{
    // A ball of 327,680 triangles that reaches 1.2, and one of 20,480 in a corner of a box that reaches 9. Points are
    // nearer to a surface than its facets are flat nowhere.
    Random random(1225);
    const auto wrong = [&](const std::vector<double>& corners, const std::array<double, 3>& middle, double radius) {
        const Grid g(corners);
        std::vector<double> points;
        for (int i = 0; i < 3 * 4000; ++i)
            points.push_back(middle[static_cast<size_t>(i % 3)] + radius * random.uniform(-1, 1));
        std::vector<uint8_t> inside(4000);
        const korvale_points at = points_of(points);
        EXPECT_EQ(korvale_grid_contains(g.grid, &at, inside.data(), nullptr, nullptr, nullptr), KORVALE_OK);
        int differ = 0;
        for (size_t i = 0; i < 4000; ++i) {
            const double away =
                std::hypot(points[3 * i] - middle[0], points[3 * i + 1] - middle[1], points[3 * i + 2] - middle[2]) /
                radius;
            if (std::fabs(away - 1) > 1e-3)
                differ += inside[i] != (away < 1);
        }
        return differ;
    };
    EXPECT_EQ(wrong(ball({0, 0, 0}, 0.6, 7), {0, 0, 0}, 0.6), 0);
    std::vector<double> both = ball({-3, 4, 2}, 0.02, 5);
    const std::vector<double> far = ball({5, 4, 2}, 0.5, 0);
    both.insert(both.end(), far.begin(), far.end());
    EXPECT_EQ(wrong(both, {-3, 4, 2}, 0.02), 0);
}

TEST(Grid, MeetsSmallTrianglesOfLargeModels)
{
    // A triangle that reaches `reach`, and half a unit above it one of legs of `leg`, met where the record does not.
    // Both are `away` along x.
    const auto met = [](double reach, double leg, bool borrow, double away = 0) {
        std::vector<double> corners = {0,   0,   0,   reach,     0,   0,   0,   reach,     0,
                                       0.1, 0.1, 0.5, 0.1 + leg, 0.1, 0.5, 0.1, 0.1 + leg, 0.5};
        for (size_t i = 0; i < corners.size(); i += 3)
            corners[i] += away;
        const Grid g(corners, {}, borrow);
        const double origin[3] = {away + 0.1 + 0.1 * leg, 0.1 + 0.1 * leg, 2}, down[3] = {0, 0, -1};
        double distance = 0;
        const int32_t count = korvale_grid_count(g.grid, origin, down, &distance);
        EXPECT_EQ(distance, count == 2 ? 1.5 : 2);
        return count;
    };
    EXPECT_EQ(met(1, 9e-4, true), 1); // twice its area is 8.1e-07
    EXPECT_EQ(met(1, 9e-4, false), 2);
    EXPECT_EQ(met(4000, 1.1e-3, false), 2); // as it is
    EXPECT_EQ(met(4000, 9e-4, false), 1);   // 8000 is too far
    EXPECT_EQ(met(2000, 9e-4, false), 2);   // twice as large
    EXPECT_EQ(met(2000, 4e-4, false), 1);
    EXPECT_EQ(met(4, 1e-5, false), 2);        // 512 times as large
    EXPECT_EQ(met(32, 9e-4, false, 5000), 2); // twice as large although it is far off: it reaches 64
    EXPECT_EQ(met(64, 9e-4, false, 5000), 1);
    EXPECT_EQ(met(2, 9e-4, false, 1e6), 2); // 32 times as large
}

TEST(Grid, TheLengthOfADirectionDoesNotMatter)
{
    const std::vector<double> corners = {0, 0, 0, 4, 0, 0, 0, 4, 0};
    const double origin[3] = {1, 1, 3};
    for (const bool borrow : {false, true}) {
        const Grid g(corners, {}, borrow);
        for (const double length : {5e-324, 1e-310, 1e-7, 1.0, 1e150, 1e155, 1.7e308}) {
            const double down[3] = {0, 0, -length}, skew[3] = {0, length / 2, -length};
            double distance = 0;
            EXPECT_EQ(korvale_grid_count(g.grid, origin, down, &distance), 1) << length;
            EXPECT_EQ(distance, 3) << length;
            EXPECT_EQ(korvale_grid_nearest(g.grid, origin, down).triangle, 0) << length;
            EXPECT_EQ(korvale_grid_any(g.grid, origin, skew, 3.4), 1) << length;
        }
        const double nowhere[3] = {0, 0, 0}, beyond[3] = {0, 0, -kInfinity};
        EXPECT_EQ(korvale_grid_count(g.grid, origin, nowhere, nullptr), 0);
        EXPECT_EQ(korvale_grid_count(g.grid, origin, beyond, nullptr), 0);
    }
}

TEST(Grid, ASmallModelIsNotMetFromBeyondAllNumbers)
{
    const std::vector<double> corners = {0, 0, 0, 1e-250, 0, 0, 0, 1e-250, 0};
    const Grid g(corners);
    const double near[3] = {2e-251, 2e-251, 1e-250}, far[3] = {2e-251, 2e-251, 1e300}, down[3] = {0, 0, -1e-290};
    double distance = 0;
    EXPECT_EQ(korvale_grid_count(g.grid, near, down, &distance), 1);
    EXPECT_EQ(distance, 1e-250);
    EXPECT_EQ(korvale_grid_count(g.grid, far, down, nullptr), 0);
    EXPECT_EQ(korvale_grid_nearest(g.grid, far, down).triangle, -1);
}

TEST(Grid, MeetsWhatTheRecordMeetsWhereNumbersAreNot)
{
    Random random(1217);
    for (int round = 0; round < 20; ++round) {
        std::vector<double> corners;
        for (int i = 0; i < 9 * 40; ++i)
            corners.push_back(random.one_in(3) ? random.between(-2, 2) : random.uniform(-2, 2));
        if (round % 2 == 1) // planes that are not in order
            corners[7] = 1.5e308, corners[16] = -1.5e308;
        const Grid g(corners);
        Record record(corners, g.grid);
        for (int ray = 0; ray < 60; ++ray) {
            double origin[3], along[3], of_record = -1, distance = -1;
            for (int k = 0; k < 3; ++k) {
                origin[k] = random.between(-2, 2);
                along[k] = random.between(-1, 1);
            }
            (random.one_in(2) ? origin : along)[random.between(0, 2)] = std::vector<double>{
                NAN, kInfinity, -1e200, 1e300, 0.0, -0.0}[static_cast<size_t>(random.between(0, 5))];
            double direction[3] = {along[0], along[1], along[2]};
            reference::bring_to_length(direction);
            const int met = ray_intersect(origin, direction, &record.status, &of_record);
            ASSERT_EQ(korvale_grid_count(g.grid, origin, along, &distance), met);
            if (std::isnan(of_record))
                ASSERT_TRUE(std::isnan(distance));
            else
                ASSERT_EQ(std::memcmp(&distance, &of_record, sizeof distance), 0) << distance << " " << of_record;
        }
    }
}

TEST(Grid, MeetsWhatTheRecordMeetsWhereTrianglesCrowd)
{
    // Small ones nearer and nearer to the origin, the same one again and again, and one around them all.
    Random random(1222);
    std::vector<double> corners = {-9, -9, 3, 9, -9, 3, 0, 9, 3};
    for (int t = 0; t < 3000; ++t) {
        const double size = std::ldexp(1, -(t % 40)), wide = std::max(0.02, 0.3 * size);
        for (int v = 0; v < 3; ++v)
            for (int k = 0; k < 3; ++k)
                corners.push_back(size * (k + 1) + (t >= 2000 ? 0.1 * (v == k) : wide * random.uniform(-1, 1)));
    }
    corners = times(corners, 256); // beyond which smaller ones are not brought to a size
    const Grid g(corners, {4, 4, 4});
    Record record(corners, g.grid);
    int64_t hits = 0;
    for (int ray = 0; ray < 300; ++ray) {
        double origin[3], along[3], of_record = -1, distance = -1;
        for (int k = 0; k < 3; ++k) {
            const double size = std::ldexp(256, -random.between(0, 40));
            origin[k] = random.uniform(-256, 256);
            along[k] = size * (k + 1) - origin[k];
        }
        const int met = ray_intersect(origin, along, &record.status, &of_record);
        ASSERT_EQ(korvale_grid_count(g.grid, origin, along, &distance), met);
        ASSERT_EQ(distance, of_record);
        ASSERT_EQ(korvale_grid_nearest(g.grid, origin, along).distance, met > 0 ? of_record : kInfinity);
        hits += met;
    }
    EXPECT_GT(hits, 10000);
}

TEST(Grid, CastsManyRaysLikeSingleOnes)
{
    Random random(1218);
    std::vector<double> corners, origins, directions;
    for (int i = 0; i < 9 * 300; ++i)
        corners.push_back(random.uniform(-3, 3));
    for (int i = 0; i < 3 * 600; ++i) {
        origins.push_back(random.uniform(-3, 3));
        directions.push_back(random.uniform(-1, 1));
    }
    for (const bool borrow : {false, true}) {
        const Grid g(corners, {}, borrow);
        std::vector<double> distances(600), weights(1800);
        std::vector<int32_t> triangles(600), counts(600), alone(600);
        const korvale_points from = points_of(origins), along = points_of(directions);
        const korvale_ray_columns columns = {distances.data(), triangles.data(), counts.data(), weights.data()};
        const korvale_ray_columns nearest_only = {nullptr, alone.data(), nullptr, nullptr};
        ASSERT_EQ(korvale_grid_cast(g.grid, &from, &along, &columns, nullptr, nullptr, nullptr), KORVALE_OK);
        ASSERT_EQ(korvale_grid_cast(g.grid, &from, &along, &nearest_only, nullptr, nullptr, nullptr), KORVALE_OK);
        EXPECT_EQ(alone, triangles);
        for (size_t i = 0; i < 600; ++i) {
            const korvale_hit hit = korvale_grid_nearest(g.grid, &origins[3 * i], &directions[3 * i]);
            ASSERT_EQ(distances[i], hit.distance);
            ASSERT_EQ(triangles[i], hit.triangle);
            ASSERT_EQ(counts[i], korvale_grid_count(g.grid, &origins[3 * i], &directions[3 * i], nullptr));
            for (size_t k = 0; k < 3; ++k)
                ASSERT_EQ(weights[3 * i + k], hit.weights[k]);
            for (size_t k = 0; k < 3 && hit.triangle >= 0; ++k) { // all three lead to the same place
                const double* const t = &corners[9 * static_cast<size_t>(hit.triangle)];
                const double* const d = &directions[3 * i];
                const double met = hit.weights[0] * t[k] + hit.weights[1] * t[k + 3] + hit.weights[2] * t[k + 6];
                const double unit = d[k] / std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
                ASSERT_NEAR(met, origins[3 * i + k] + hit.distance * unit, 1e-13); // weights are rounded, too
            }
        }
        const korvale_points one = {origins.data(), 1, 0, 3, KORVALE_DOUBLE};
        ASSERT_EQ(korvale_grid_cast(g.grid, &one, &along, &columns, nullptr, nullptr, nullptr), KORVALE_OK);
        EXPECT_EQ(counts[9], korvale_grid_count(g.grid, &origins[0], &directions[27], nullptr));
    }
}

TEST(Grid, AMillionRaysMeetWhatTheRecordMeets)
{
    constexpr int kRays = 5000;
    Random random(1224);
    std::vector<double> origins(3 * kRays), directions(3 * kRays), distances(kRays);
    std::vector<int32_t> triangles(kRays), counts(kRays);
    const korvale_points from = points_of(origins), along = points_of(directions);
    const korvale_ray_columns columns = {distances.data(), triangles.data(), counts.data(), nullptr};
    int64_t hits = 0;
    for (int round = 0; round < rounds(200); ++round) {
        std::vector<double> corners = hostile_triangles(random, random.between(1, random.one_in(8) ? 3000 : 200));
        corners = times(corners, reference::grid_scale(corners.data(), static_cast<int32_t>(corners.size() / 9)));
        const Grid g(corners);
        Record record(corners, g.grid);
        for (size_t i = 0; i < kRays; ++i) {
            double o[3], d[3];
            hostile_ray(random, corners, record.status, o, d);
            std::copy_n(o, 3, &origins[3 * i]);
            std::copy_n(d, 3, &directions[3 * i]);
        }
        ASSERT_EQ(korvale_grid_cast(g.grid, &from, &along, &columns, nullptr, nullptr, nullptr), KORVALE_OK);
        for (size_t i = 0; i < kRays; ++i) {
            double nearest = kInfinity;
            ASSERT_EQ(ray_intersect(&origins[3 * i], &directions[3 * i], &record.status, &nearest), counts[i]);
            ASSERT_EQ(std::memcmp(&nearest, &distances[i], sizeof nearest), 0) << nearest << " " << distances[i];
            ASSERT_TRUE(triangles[i] < 0 || record.status.tri_marks.bvals[triangles[i]] == 1);
            hits += counts[i];
        }
    }
    EXPECT_GT(hits, 300000);
}

TEST(Grid, ThreadsMayAskOneGrid)
{
    Random random(1219);
    std::vector<double> corners, origins, directions;
    for (int i = 0; i < 9 * 500; ++i)
        corners.push_back(random.uniform(-3, 3));
    for (int i = 0; i < 3 * 700; ++i) {
        origins.push_back(random.uniform(-3, 3));
        directions.push_back(random.uniform(-1, 1));
    }
    std::vector<double> closed = corners; // as each triangle comes twice
    closed.insert(closed.end(), corners.begin(), corners.end());
    const Grid g(closed);
    const Answers expected(g.grid, origins, directions);
    EXPECT_GT(*std::max_element(expected.counts.begin(), expected.counts.end()), 3);
    std::vector<std::optional<Answers>> answers(4);
    std::vector<std::thread> threads;
    for (auto& mine : answers)
        threads.emplace_back([&] { mine.emplace(g.grid, origins, directions); });
    for (std::thread& thread : threads)
        thread.join();
    for (const auto& mine : answers)
        EXPECT_TRUE(mine == expected);
}

TEST(Grid, BorrowedTrianglesMayMove)
{
    std::vector<double> corners = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    const Grid borrowed(corners, {}, true), owned(corners);
    const double origin[3] = {0.2, 0.2, 1}, down[3] = {0, 0, -1};
    for (size_t k = 2; k < 9; k += 3)
        corners[k] = 1e-7;
    EXPECT_EQ(korvale_grid_nearest(borrowed.grid, origin, down).distance, 1 - 1e-7);
    EXPECT_EQ(korvale_grid_nearest(owned.grid, origin, down).distance, 1);
    EXPECT_EQ(korvale_grid_any(borrowed.grid, origin, down, 1), 1);
    EXPECT_EQ(korvale_grid_triangles(borrowed.grid), corners.data());
}

TEST(Grid, KnowsInsideFromOutside)
{
    // A cube of side 2 around the origin, of squares; rays from its centre meet edges and corners.
    std::vector<double> cube;
    for (int i = 0; i < 8; ++i)
        for (int k = 0; k < 3; ++k)
            cube.push_back((i >> k & 1) != 0 ? 1 : -1);
    const std::vector<int32_t> sizes(6, 4),
        corners = {0, 1, 3, 2, 4, 6, 7, 5, 0, 4, 5, 1, 2, 3, 7, 6, 0, 2, 6, 4, 1, 5, 7, 3};
    const korvale_faces faces = {points_of(cube), indices_of(sizes), indices_of(corners)};
    korvale_grid* grid = nullptr;
    ASSERT_EQ(korvale_grid_of_faces(&faces, nullptr, &grid, nullptr), KORVALE_OK);
    EXPECT_EQ(korvale_grid_size(grid), 12);
    EXPECT_EQ(korvale_grid_face(grid, 11), 5);
    Random random(1220);
    std::vector<double> points = {0, 0, 0, 0.5, 0.5, 0.5};
    for (int i = 0; i < 3000; ++i)
        points.push_back(random.uniform(-1.5, 1.5));
    const auto n = points.size() / 3;
    std::vector<uint8_t> inside(n, 7);
    const korvale_points at = points_of(points);
    ASSERT_EQ(korvale_grid_contains(grid, &at, inside.data(), nullptr, nullptr, nullptr), KORVALE_OK);
    for (size_t i = 0; i < n; ++i)
        ASSERT_EQ(inside[i],
                  std::fabs(points[3 * i]) < 1 && std::fabs(points[3 * i + 1]) < 1 && std::fabs(points[3 * i + 2]) < 1);
    // A ray from here along the first direction meets the diagonal of a face; another one is taken.
    const double through[3] = {1 - 0.7821 - 0.3149, 1 - 0.7821, 1 - 0.7821};
    const korvale_points one = {through, 1, 0, 3, KORVALE_DOUBLE};
    ASSERT_EQ(korvale_grid_contains(grid, &one, inside.data(), nullptr, nullptr, nullptr), KORVALE_OK);
    EXPECT_EQ(inside[0], 1);
    korvale_grid_free(grid);
}

TEST(Grid, RefusesToTellTheInsideOfOpenMeshes)
{
    const std::vector<double> points = {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1};
    const auto text = [&](const std::vector<int32_t>& corners, korvale_status status, bool borrow = false) {
        std::vector<double> packed;
        for (const int32_t c : corners)
            packed.insert(packed.end(), points.begin() + 3 * c, points.begin() + 3 * c + 3);
        const Grid g = borrow ? Grid(packed, {}, true) : Grid({points_of(points), indices_of(corners)});
        const double at[3] = {0.1, 0.1, 0.1};
        const korvale_points one = {at, 1, 0, 3, KORVALE_DOUBLE};
        uint8_t inside = 7;
        const std::string sentence = sentence_of(
            status, [&](auto* e) { return korvale_grid_contains(g.grid, &one, &inside, nullptr, nullptr, e); });
        EXPECT_EQ(inside, status == KORVALE_OK ? 1 : 7);
        return sentence;
    };
    const std::vector<int32_t> closed = {0, 2, 1, 0, 1, 3, 0, 3, 2, 1, 2, 3},
                               turned = {0, 2, 1, 0, 1, 3, 0, 3, 2, 1, 3, 2}, open = {0, 2, 1, 0, 1, 3, 0, 3, 2};
    for (const bool borrow : {false, true}) {
        EXPECT_EQ(text(closed, KORVALE_OK, borrow), "");
        EXPECT_EQ(text(turned, KORVALE_OK, borrow), "");
        EXPECT_EQ(text(open, KORVALE_BAD_ARGUMENT, borrow),
                  std::string("korvale_grid_contains: grid must be of closed meshes, but 3 edges are open, one of "
                              "them between ") +
                      (borrow ? "corners 1 and 2" : "points 1 and 2"));
    }
    // A triangle there and back on an edge of the others closes nothing and opens nothing.
    EXPECT_EQ(text({0, 2, 1, 0, 1, 3, 0, 3, 2, 1, 2, 3, 0, 1, 1}, KORVALE_OK), "");
}

TEST(Grid, HasARecordForHostsInCpp)
{
    std::vector<double> corners = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    double origin[3] = {0.2, 0.2, 1}, down[3] = {0, 0, -1}, distance = 0;
    for (const bool borrow : {false, true}) {
        const Grid g(corners, {2, 3, 4}, borrow);
        auto* const status = static_cast<RayStatus*>(korvale_grid_record(g.grid));
        ASSERT_NE(status, nullptr);
        EXPECT_EQ(korvale_grid_record(g.grid), status);
        EXPECT_EQ(status->ny, 3);
        EXPECT_EQ(ray_intersect(origin, down, status, &distance), 1);
        EXPECT_EQ(distance, 1);
    }
}

TEST(Grid, RefusesWhatDoesNotFit)
{
    const auto text = [](const korvale_triangles* triangles, const korvale_grid_options* options = nullptr) {
        korvale_grid* grid = reinterpret_cast<korvale_grid*>(1);
        const std::string sentence =
            sentence_of(KORVALE_BAD_ARGUMENT, [&](auto* e) { return korvale_grid_new(triangles, options, &grid, e); });
        EXPECT_EQ(grid, nullptr);
        return sentence;
    };
    EXPECT_EQ(text(nullptr), "korvale_grid_new: triangles must be given, but it is null");
    const std::vector<double> few(12), odd = {0, 0, 0, 1, 0, 0, 1, NAN, 0};
    korvale_triangles triangles = {points_of(few), {}};
    EXPECT_EQ(text(&triangles), "korvale_grid_new: triangles must have corners in threes, but there are 4");
    triangles = {points_of(odd), {}};
    EXPECT_EQ(text(&triangles), "korvale_grid_new: triangles must be finite, but its point 2 is (1, nan, 0)");
    const std::vector<int32_t> astray = {0, 1, -1};
    triangles = {points_of(kPoints), indices_of(astray)};
    EXPECT_EQ(text(&triangles), "korvale_grid_new: triangles must name vertices 0 to 6, but its corner 2 is -1");
    korvale_grid_options options;
    korvale_grid_defaults(&options, sizeof options);
    options.borrow = 1;
    triangles = mesh();
    EXPECT_EQ(text(&triangles, &options), "korvale_grid_new: triangles must be packed doubles without corner numbers, "
                                          "but they would have to be copied");
    options.borrow = 0;
    options.cells[0] = options.cells[1] = 1 << 16;
    EXPECT_EQ(text(&triangles, &options),
              "korvale_grid_new: options.cells must be at most 2147483647 together, but they are 4294967296");
    EXPECT_EQ(
        sentence_of(KORVALE_BAD_ARGUMENT, [&](auto* e) { return korvale_grid_new(&triangles, nullptr, nullptr, e); }),
        "korvale_grid_new: grid must be given, but it is null");
    korvale_grid* grid = nullptr;
    EXPECT_EQ(
        sentence_of(KORVALE_BAD_ARGUMENT, [&](auto* e) { return korvale_grid_of_faces(nullptr, nullptr, &grid, e); }),
        "korvale_grid_of_faces: faces must be given, but it is null");
    options.cells[0] = options.cells[1] = 0;
    options.borrow = 1;
    const std::vector<int32_t> sizes = {3};
    const std::vector<int32_t> first = {0, 1, 2};
    const korvale_faces faces = {points_of(kPoints), indices_of(sizes), indices_of(first)};
    EXPECT_EQ(
        sentence_of(KORVALE_BAD_ARGUMENT, [&](auto* e) { return korvale_grid_of_faces(&faces, &options, &grid, e); }),
        "korvale_grid_of_faces: options.borrow must be 0 for faces, but it is set");

    const Grid g(mesh());
    const korvale_points three = {kPoints.data(), 3, 0, 3, KORVALE_DOUBLE}, two = {kPoints.data(), 2, 0, 3, 0};
    const korvale_ray_columns columns = {};
    const auto cast_text = [&](const korvale_grid* grid_, const korvale_points* from, const korvale_points* along,
                               const korvale_ray_columns* to) {
        return sentence_of(KORVALE_BAD_ARGUMENT,
                           [&](auto* e) { return korvale_grid_cast(grid_, from, along, to, nullptr, nullptr, e); });
    };
    EXPECT_EQ(cast_text(g.grid, &three, &two, &columns),
              "korvale_grid_cast: directions must be 1 or as many as the 3 origins, but there are 2");
    EXPECT_THAT(cast_text(nullptr, &three, &two, &columns), EndsWith(": grid must be given, but it is null"));
    EXPECT_THAT(cast_text(g.grid, nullptr, &two, &columns), EndsWith(": origins must be given, but it is null"));
    EXPECT_THAT(cast_text(g.grid, &three, nullptr, &columns), EndsWith(": directions must be given, but it is null"));
    EXPECT_THAT(cast_text(g.grid, &three, &two, nullptr), EndsWith(": columns must be given, but it is null"));
    int64_t met = 7;
    EXPECT_THAT(
        sentence_of(KORVALE_BAD_ARGUMENT,
                    [&](auto* e) { return korvale_grid_hits(g.grid, nullptr, kPoints.data(), nullptr, 0, &met, e); }),
        EndsWith(": origin must be given, but it is null"));
    EXPECT_EQ(met, 7);
    EXPECT_THAT(sentence_of(KORVALE_BAD_ARGUMENT,
                            [&](auto* e) { return korvale_grid_contains(g.grid, &two, nullptr, nullptr, nullptr, e); }),
                EndsWith(": inside must be given, but it is null"));
}

/// Stops at the n-th report.
struct Stopper {
    int reports_left;
    std::vector<double> told;

    static int32_t tell(double done, void* user)
    {
        auto& self = *static_cast<Stopper*>(user);
        self.told.push_back(done);
        return --self.reports_left > 0 ? 1 : 0;
    }
};

TEST(Grid, ProgressStopsTheWorkAndLeavesNothing)
{
    NEEDS_HEAP_COUNTS();
    std::vector<double> corners;
    Random random(1221);
    for (int i = 0; i < 9 * 30000; ++i)
        corners.push_back(random.uniform(-9, 9));
    const korvale_triangles triangles = {points_of(corners), {}};
    korvale_grid_options options;
    korvale_grid_defaults(&options, sizeof options);
    options.progress = Stopper::tell;
    for (int reports = 1; reports < 4; ++reports) {
        Stopper stopper = {reports, {}};
        options.user = &stopper;
        stopper.told.reserve(100);
        korvale_grid* grid = reinterpret_cast<korvale_grid*>(1);
        const HeapWatch heap;
        EXPECT_EQ(korvale_grid_new(&triangles, &options, &grid, nullptr), KORVALE_STOPPED);
        EXPECT_EQ(heap.live_blocks(), 0);
        EXPECT_EQ(grid, nullptr);
        EXPECT_EQ(stopper.told.size(), static_cast<size_t>(reports));
        EXPECT_TRUE(std::is_sorted(stopper.told.begin(), stopper.told.end()));
    }
    const Grid g(triangles);
    const korvale_points from = points_of(corners);
    const std::vector<double> along = {0, 0, 1};
    const korvale_points direction = points_of(along);
    std::vector<int32_t> counts(90000, -1);
    const korvale_ray_columns columns = {nullptr, nullptr, counts.data(), nullptr};
    Stopper stopper = {2, {}};
    EXPECT_EQ(sentence_of(KORVALE_STOPPED,
                          [&](auto* e) {
                              stopper.reports_left = 2;
                              return korvale_grid_cast(g.grid, &from, &direction, &columns, Stopper::tell, &stopper, e);
                          }),
              "korvale_grid_cast: it was asked to stop");
    EXPECT_GE(counts[255], 0);
    EXPECT_EQ(counts[256], -1);
}

TEST(Grid, ProgressStopsTheFirstLookForOpenEdges)
{
    const Grid g(ball({0, 0, 0}, 1, 6)); // 81,920 triangles
    const double at[3] = {0, 0, 0};
    const korvale_points middle = {at, 1, 0, 3, KORVALE_DOUBLE};
    Stopper counting = {1 << 30, {}};
    uint8_t inside = 7;
    for (const int reports : {1, 2, 4, 20, 30}) {
        Stopper stopper = {reports, {}};
        EXPECT_EQ(korvale_grid_contains(g.grid, &middle, &inside, Stopper::tell, &stopper, nullptr), KORVALE_STOPPED);
        EXPECT_EQ(stopper.told, std::vector<double>(static_cast<size_t>(reports))); // points are still to come
        EXPECT_EQ(inside, 7);
    }
    EXPECT_EQ(korvale_grid_contains(g.grid, &middle, &inside, Stopper::tell, &counting, nullptr), KORVALE_OK);
    EXPECT_EQ(inside, 1);
    EXPECT_GT(counting.told.size(), 30u);
    counting.told.clear();
    EXPECT_EQ(korvale_grid_contains(g.grid, &middle, &inside, Stopper::tell, &counting, nullptr), KORVALE_OK);
    EXPECT_THAT(counting.told, ElementsAre(0, 1)); // it looks once
}

TEST(Grid, FindsTheOpenEdgesOfAMeshAroundAHub)
{
    // A wheel of 30,000 triangles around one point: more than are sorted without a question.
    std::vector<double> points = {0, 0, 0};
    std::vector<int32_t> corners;
    constexpr int kSpokes = 30000;
    for (int i = 0; i < kSpokes; ++i) {
        points.insert(points.end(), {std::cos(2e-4 * i), std::sin(2e-4 * i), 0});
        corners.insert(corners.end(), {0, 1 + i, 1 + (i + 1) % kSpokes});
    }
    const Grid g({points_of(points), indices_of(corners)});
    const korvale_points middle = {points.data(), 1, 0, 3, KORVALE_DOUBLE};
    uint8_t inside = 7;
    EXPECT_EQ(
        sentence_of(KORVALE_BAD_ARGUMENT,
                    [&](auto* e) { return korvale_grid_contains(g.grid, &middle, &inside, nullptr, nullptr, e); }),
        "korvale_grid_contains: grid must be of closed meshes, but 30000 edges are open, one of them between "
        "points 1 and 2");
}

TEST(GridWithAnExhaustedHeap, FailsWhole)
{
    NEEDS_HEAP_FAILURES();
    const korvale_triangles triangles = mesh();
    const double origin[3] = {0.5, 0.25, 5}, down[3] = {0, 0, -1};
    EXPECT_GT(fail_each_allocation([&](int64_t) {
                  korvale_grid* grid = nullptr;
                  korvale_error error;
                  if (korvale_grid_new(&triangles, nullptr, &grid, &error) != KORVALE_OK) {
                      EXPECT_STREQ(error.text, "korvale_grid_new: the heap is exhausted");
                      EXPECT_EQ(grid, nullptr);
                      return;
                  }
                  EXPECT_EQ(korvale_grid_count(grid, origin, down, nullptr), 2);
                  int64_t met = 0;
                  if (korvale_grid_hits(grid, origin, down, nullptr, 0, &met, &error) == KORVALE_OK)
                      EXPECT_EQ(met, 2);
                  else
                      EXPECT_EQ(error.status, KORVALE_NO_MEMORY);
                  const auto* const status = static_cast<const RayStatus*>(korvale_grid_record(grid));
                  EXPECT_TRUE(status == nullptr || status->cells != nullptr);
                  korvale_grid_free(grid);
              }),
              8);
}

} // namespace
} // namespace korvale::test
