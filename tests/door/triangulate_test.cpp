// Triangles of outlines with holes.
#include <korvale.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <set>
#include <tuple>

#include <gmock/gmock.h>

#include "support.h"
#include "tests/support/heap.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

using testing::ElementsAre;

using Coordinates = std::vector<double>;
using Corners = std::vector<int32_t>;

/// Corners of the triangles of some outlines.
Corners triangles_of(const std::vector<Coordinates>& outlines)
{
    std::vector<korvale_points> views;
    size_t room = 0;
    for (const Coordinates& outline : outlines) {
        views.push_back(points_of(outline));
        room += outline.size() / 3 + 2;
    }
    Corners triangles(3 * room);
    int64_t written = -1;
    korvale_error error = {};
    EXPECT_EQ(korvale_triangulate(views.data(), static_cast<int64_t>(views.size()), triangles.data(),
                                  static_cast<int64_t>(room), &written, nullptr, nullptr, &error),
              KORVALE_OK)
        << error.text;
    triangles.resize(3 * static_cast<size_t>(std::max<int64_t>(0, written)));
    return triangles;
}

/// Outlines on a lattice, whose areas are sums without rounding.
struct Lattice {
    std::vector<Coordinates> outlines;

    void add(const std::vector<std::pair<int, int>>& outline)
    {
        outlines.emplace_back();
        for (const auto& [x, y] : outline)
            outlines.back().insert(outlines.back().end(), {double(x), double(y), 0.0});
    }

    /// Twice the area of the first outline less that of the others.
    double area() const
    {
        double sum = 0;
        for (size_t k = 0; k < outlines.size(); ++k)
            sum += (k == 0 ? 1 : -1) * std::fabs(area_of(outlines[k]));
        return sum;
    }

    static double area_of(const Coordinates& p)
    {
        double sum = 0;
        for (size_t i = 0, n = p.size(); i < n; i += 3)
            sum += p[i] * p[(i + 4) % n] - p[(i + 3) % n] * p[i + 1];
        return sum;
    }

    /// Expects triangles that run the right way and whose areas add up to that of the shape.
    void expect_covered() const
    {
        Coordinates all;
        for (const Coordinates& outline : outlines)
            all.insert(all.end(), outline.begin(), outline.end());
        const double way = area_of(outlines[0]) < 0 ? -1 : 1;
        const Corners corners = triangles_of(outlines);
        double covered = 0;
        for (size_t t = 0; t < corners.size(); t += 3) {
            Coordinates triangle;
            for (size_t k = 0; k < 3; ++k)
                triangle.insert(triangle.end(), &all[3 * static_cast<size_t>(corners[t + k])],
                                &all[3 * static_cast<size_t>(corners[t + k])] + 3);
            EXPECT_GE(way * area_of(triangle), 0);
            covered += way * area_of(triangle);
        }
        EXPECT_EQ(covered, area());
    }
};

TEST(Triangulate, NumbersThePointsOfAllOutlines)
{
    EXPECT_THAT(triangles_of({{0, 0, 0, 4, 0, 0, 4, 4, 0, 0, 4, 0}}), ElementsAre(3, 0, 1, 1, 2, 3));
    const Corners plate = triangles_of({{0, 0, 5, 9, 0, 5, 9, 9, 5, 0, 9, 5}, {3, 3, 5, 3, 6, 5, 6, 6, 5, 6, 3, 5}});
    EXPECT_EQ(plate.size(), 3u * 8u);
    for (int32_t point = 0; point < 8; ++point)
        EXPECT_NE(std::ranges::find(plate, point), plate.end());
}

TEST(Triangulate, RunsAsTheOuterOutlineDoesInAnyPlane)
{
    // seen from -x the outline runs counter-clockwise
    EXPECT_THAT(triangles_of({{7, 0, 0, 7, 0, 4, 7, 4, 4, 7, 4, 0}}), ElementsAre(3, 0, 1, 1, 2, 3));
    EXPECT_THAT(triangles_of({{0, 7, 0, 0, 7, 4, 4, 7, 0}}), ElementsAre(2, 0, 1));
}

TEST(Triangulate, ReadsFloatsStridesAndTwoCoordinates)
{
    const float rows[] = {0, 0, 9, 4, 0, 9, 4, 4, 9, 0, 4, 9};
    const korvale_points outline = {rows, 4, 12, 2, KORVALE_FLOAT};
    int32_t triangles[6];
    int64_t written = 0;
    EXPECT_EQ(korvale_triangulate(&outline, 1, triangles, 2, &written, nullptr, nullptr, nullptr), KORVALE_OK);
    EXPECT_EQ(written, 2);
    EXPECT_THAT(triangles, ElementsAre(3, 0, 1, 1, 2, 3));
}

TEST(Triangulate, HolesMayFillAllOfTheirOutline)
{
    Lattice lattice; // the holes share two edges, and all others with the outline
    lattice.add({{3000000, 4000000}, {4000040, 3999980}, {5000010, 5000000}, {5000017, 3999970}, {5000000, 3000015}});
    lattice.add({{5000000, 3000015}, {5000017, 3999970}, {4259000, 3999990}, {4000040, 3999980}, {3000000, 4000000}});
    lattice.add({{5000017, 3999970}, {5000010, 5000000}, {4000040, 3999980}, {4259000, 3999990}});
    EXPECT_EQ(lattice.area(), 0);
    lattice.expect_covered();
}

TEST(Triangulate, AreasAddUpExactly)
{
    Random random(1301);
    for (int round = 0; round < rounds(300); ++round) {
        const testing::ScopedTrace trace(__FILE__, __LINE__, testing::Message() << "round " << round);
        // a skyline above and one below, with square holes in a row between them
        Lattice lattice;
        std::vector<std::pair<int, int>> outer;
        const int towers = random.between(1, 12);
        for (int i = 0; i < towers; ++i)
            for (const int x : {10 * i, 10 * i + random.between(1, 10)})
                outer.emplace_back(x, random.between(-9, 0));
        for (int i = towers; i-- > 0;)
            for (const int x : {10 * i + random.between(5, 9), 10 * i})
                outer.emplace_back(x, 10 + random.between(0, 9));
        outer.erase(std::unique(outer.begin(), outer.end()), outer.end());
        if (random.one_in(2))
            std::ranges::reverse(outer);
        lattice.add(outer);
        for (int i = 0; i + 1 < towers; ++i)
            if (random.one_in(2)) {
                const int x = 10 * i + 1, y = random.between(1, 4), size = random.between(1, 3);
                std::vector<std::pair<int, int>> hole = {{x, y}, {x + size, y}, {x + size, y + size}, {x, y + size}};
                if (random.one_in(2))
                    std::ranges::reverse(hole);
                lattice.add(hole);
            }
        lattice.expect_covered();
    }
}

TEST(Triangulate, PointsOnOneLineGetTrianglesWithArea)
{
    Lattice lattice; // each side of a square and of its hole in ten pieces
    for (const int size : {30, 10}) {
        std::vector<std::pair<int, int>> square;
        const int first = (30 - size) / 2, step = size / 10;
        for (int i = 0; i < 10; ++i)
            square.emplace_back(first + i * step, first);
        for (int i = 0; i < 10; ++i)
            square.emplace_back(first + size, first + i * step);
        for (int i = 10; i > 0; --i)
            square.emplace_back(first + i * step, first + size);
        for (int i = 10; i > 0; --i)
            square.emplace_back(first, first + i * step);
        lattice.add(square);
    }
    lattice.expect_covered();
    EXPECT_EQ(triangles_of(lattice.outlines).size(), 3u * 80u);
}

TEST(Triangulate, HolesMayTouchAtCorners)
{
    Lattice lattice;
    lattice.add({{0, 0}, {12, 0}, {12, 12}, {0, 12}});
    lattice.add({{0, 0}, {4, 1}, {1, 4}});
    lattice.add({{4, 1}, {6, 1}, {6, 3}});
    lattice.add({{6, 3}, {8, 5}, {6, 6}});
    lattice.add({{12, 12}, {8, 11}, {11, 8}});
    lattice.expect_covered();
}

TEST(Triangulate, HolesMayTouchEachOtherAndTheOuterOutline)
{
    Random random(1304);
    for (int round = 0; round < rounds(500); ++round) {
        const testing::ScopedTrace trace(__FILE__, __LINE__, testing::Message() << "round " << round);
        Lattice lattice; // diamonds whose tips meet, some of them at the sides of the square or at points there
        const int n = random.between(1, 5), far = 4 * n + random.between(0, 1);
        lattice.add({{0, 0}, {far, 0}, {far, far}, {0, far}});
        if (random.one_in(2))
            lattice.outlines[0].insert(lattice.outlines[0].begin() + 3, {2, 0, 0, 4, 0, 0});
        for (int i = 0; i < n; ++i)
            for (int k = 0; k < n; ++k)
                if (random.one_in(2)) {
                    const int x = 4 * i, y = 4 * k;
                    std::vector<std::pair<int, int>> tips = {{x, y + 2}, {x + 2, y}, {x + 4, y + 2}, {x + 2, y + 4}};
                    std::rotate(tips.begin(), tips.begin() + random.between(0, 3), tips.end());
                    lattice.add(tips);
                }
        std::shuffle(lattice.outlines.begin() + 1, lattice.outlines.end(), std::mt19937(static_cast<unsigned>(round)));
        lattice.expect_covered();
    }
}

TEST(Triangulate, HolesMayShareEdges)
{
    Lattice lattice; // three holes around a point, two of them along the outer outline
    lattice.add({{0, 0}, {16, 0}, {16, 16}, {0, 16}});
    lattice.add({{16, 8}, {8, 0}, {8, 8}});
    lattice.add({{8, 16}, {0, 16}, {0, 0}});
    lattice.add({{8, 8}, {16, 8}, {12, 12}});
    lattice.expect_covered();
}

/// Takes the cells of a rectangle, unless one of them is taken.
bool take(int x, int y, int right, int top, std::set<std::pair<int, int>>& taken)
{
    std::vector<std::pair<int, int>> cells;
    for (int i = x; i < right; ++i)
        for (int k = y; k < top; ++k)
            cells.emplace_back(i, k);
    if (std::ranges::any_of(cells, [&](const auto& cell) { return taken.contains(cell); }))
        return false;
    taken.insert(cells.begin(), cells.end());
    return true;
}

TEST(Triangulate, HolesMayShareEdgesWhollyAndInPart)
{
    Random random(1305);
    for (int round = 0; round < rounds(2000); ++round) {
        const testing::ScopedTrace trace(__FILE__, __LINE__, testing::Message() << "round " << round);
        const int n = random.between(2, 7), margin = random.one_in(3) ? 1 : 0, slant = random.between(0, 2);
        const auto slanted = [&](std::vector<std::pair<int, int>> outline) {
            constexpr int kSlants[][4] = {{1, 0, 0, 1}, {1, 2, -1, 1}, {3, 1, 1, -2}};
            const int(&m)[4] = kSlants[slant];
            for (auto& [x, y] : outline)
                std::tie(x, y) = std::pair(m[0] * x + m[1] * y, m[2] * x + m[3] * y);
            return outline;
        };
        Lattice lattice; // rectangles of cells two wide side by side, and halves of such
        const int low = -margin, high = 2 * n + margin;
        lattice.add(slanted({{low, low}, {high, low}, {high, high}, {low, high}}));
        std::set<std::pair<int, int>> taken;
        for (int tries = random.between(2, 15); tries > 0; --tries) {
            const int x = random.between(0, n - 1), y = random.between(0, n - 1);
            const int right = std::min(n, x + random.between(1, 3)), top = std::min(n, y + random.between(1, 3));
            if (!take(x, y, right, top, taken))
                continue;
            std::vector<std::pair<int, int>> hole = {{2 * x, 2 * y}, {2 * right, 2 * y}, {2 * right, 2 * top}};
            if (random.one_in(4))
                hole[1] = {2 * x, 2 * top}; // the other half
            else if (!random.one_in(3))
                hole.emplace_back(2 * x, 2 * top);
            if (hole.size() == 4 && random.one_in(3)) // a point on a side
                hole.insert(hole.begin() + 1, {x + right, 2 * y});
            std::rotate(hole.begin(), hole.begin() + random.between(0, 2), hole.end());
            if (random.one_in(2))
                std::ranges::reverse(hole);
            lattice.add(slanted(hole));
        }
        lattice.expect_covered();
    }
}

TEST(Triangulate, TurnedPlatesAreCoveredOnce)
{
    Random random(1406);
    for (int round = 0; round < rounds(3000); ++round) {
        const testing::ScopedTrace trace(__FILE__, __LINE__, testing::Message() << "round " << round);
        const int n = random.between(2, 7);
        const double angle = random.uniform(0, 6.3), c = std::cos(angle), s = std::sin(angle);
        const double far = random.one_in(2) ? 0 : 100;
        std::vector<Coordinates> outlines;
        double area = 4 * n * n;
        const auto add = [&](std::vector<std::pair<int, int>> outline) { // turned and moved
            if (random.one_in(2))
                std::ranges::reverse(outline);
            std::rotate(outline.begin(), outline.begin() + random.between(0, 2), outline.end());
            outlines.emplace_back();
            for (const auto& [x, y] : outline)
                outlines.back().insert(outlines.back().end(), {c * x - s * y + far, s * x + c * y - far, 0.0});
        };
        add({{0, 0}, {2 * n, 0}, {2 * n, 2 * n}, {0, 2 * n}});
        std::set<std::pair<int, int>> taken; // cells two wide, of which most holes lie along the sides
        for (int tries = random.between(1, 12); tries > 0; --tries) {
            int x = random.between(0, n - 1), y = random.between(0, n - 1);
            if (!random.one_in(3))
                (random.one_in(2) ? x : y) = random.one_in(2) ? 0 : n - 1;
            const int right = std::min(n, x + random.between(1, 2)), top = std::min(n, y + random.between(1, 2));
            if (!take(x, y, right, top, taken))
                continue;
            std::vector<std::pair<int, int>> hole = {{2 * x, 2 * y}, {2 * right, 2 * y}, {2 * right, 2 * top}};
            const bool is_half = random.one_in(4);
            if (!is_half)
                hole.emplace_back(2 * x, 2 * top);
            if (random.one_in(4)) // a point on a side
                hole.insert(hole.begin() + 1, {x + right, 2 * y});
            add(hole);
            area -= (is_half ? 2 : 4) * (right - x) * (top - y);
        }
        Coordinates all;
        for (const Coordinates& outline : outlines)
            all.insert(all.end(), outline.begin(), outline.end());
        const Corners corners = triangles_of(outlines);
        constexpr double kRounding = 1e-11; // of areas in coordinates up to 114
        const double way = Lattice::area_of(outlines[0]) < 0 ? -0.5 : 0.5;
        double covered = 0;
        for (size_t t = 0; t < corners.size(); t += 3) {
            const auto at = [&](size_t k) { return &all[3 * static_cast<size_t>(corners[t + k])]; };
            const double *const p = at(0), *const q = at(1), *const r = at(2);
            const double share = way * ((q[0] - p[0]) * (r[1] - p[1]) - (q[1] - p[1]) * (r[0] - p[0]));
            EXPECT_GE(share, -kRounding);
            covered += std::fabs(share);
        }
        EXPECT_NEAR(covered, area, kRounding);
    }
}

TEST(Triangulate, DoubledPointsGetTrianglesWithoutArea)
{
    const Coordinates doubled = {0, 0, 0, 0, 0, 0, 4, 0, 0, 4, 0, 0, 4, 4, 0, 0, 4, 0, 0, 4, 0, 0, 0, 0};
    EXPECT_EQ(triangles_of({doubled}).size(), 3u * 6u);
    EXPECT_THAT(triangles_of({{1, 1, 0, 1, 1, 0, 1, 1, 0}}), ElementsAre(2, 0, 1));
    EXPECT_EQ(triangles_of({{0, 0, 0, 1, 0, 0, 2, 0, 0, 3, 0, 0}}).size(), 3u * 2u);
}

TEST(Triangulate, IsTheSameForAnySize)
{
    const Coordinates outline = {0, 0, 0, 5, 1, 0, 9, 0, 0, 7, 4, 0, 9, 8, 0, 4, 7, 0, 0, 9, 0, 2, 4, 0};
    const Corners wanted = triangles_of({outline});
    EXPECT_EQ(wanted.size(), 18u);
    for (const double size : {1e-300, 1e-9, 1e9, 1e300}) {
        Coordinates other = outline;
        for (double& v : other)
            v *= size;
        EXPECT_EQ(triangles_of({other}), wanted) << size;
    }
}

TEST(Triangulate, OutlinesThatCrossGetTrianglesToo)
{
    Random random(1302);
    for (int round = 0; round < rounds(300); ++round) {
        std::vector<Coordinates> outlines(static_cast<size_t>(random.between(1, 4)));
        size_t most = 0;
        for (Coordinates& outline : outlines) {
            const int n = random.between(3, 30), steps = random.one_in(2) ? 3 : 1000;
            for (int i = 0; i < n; ++i)
                outline.insert(outline.end(),
                               {double(random.between(0, steps)), double(random.between(0, steps)), 0.0});
            most += static_cast<size_t>(n) + 2;
        }
        EXPECT_EQ(triangles_of(outlines).size(), 3 * (most - 4));
    }
}

TEST(Triangulate, ThousandsOfHolesOnOneAnotherTakeNoLong)
{
    std::vector<Coordinates> outlines(3000, {3, 3, 0, 3, 6, 0, 6, 6, 0, 6, 3, 0});
    outlines[0] = {0, 0, 0, 9, 0, 0, 9, 9, 0, 0, 9, 0};
    EXPECT_EQ(triangles_of(outlines).size(), 3u * (4 * 3000 + 2 * 3000 - 4));
}

TEST(Triangulate, SaysWhatItRefuses)
{
    const Coordinates square = {0, 0, 0, 4, 0, 0, 4, 4, 0, 0, 4, 0}, wrong = {0, 0, 0, 4, NAN, 0, 4, 4, 0};
    int32_t triangles[6] = {-7, -7, -7, -7, -7, -7};
    int64_t written = -7;
    const auto text = [&](const std::vector<korvale_points>& outlines, int64_t room) {
        return sentence_of(KORVALE_BAD_ARGUMENT, [&](korvale_error* error) {
            return korvale_triangulate(outlines.data(), static_cast<int64_t>(outlines.size()), triangles, room,
                                       &written, nullptr, nullptr, error);
        });
    };
    EXPECT_EQ(text({}, 2), "korvale_triangulate: outlines must have an outer outline, but there is none");
    EXPECT_EQ(text({points_of(square), {square.data(), 2, 0, 3, 0}}, 2),
              "korvale_triangulate: outline 1 must have at least 3 points, but it has 2");
    EXPECT_EQ(text({points_of(wrong)}, 2),
              "korvale_triangulate: outline 0 must be finite, but its point 1 is (4, nan, 0)");
    EXPECT_EQ(text({points_of(square)}, 1), "korvale_triangulate: room must be at least 2, but it is 1");
    const korvale_points outline = points_of(square);
    const auto sentence = [&](const korvale_points* outlines, int64_t count, int32_t* to, int64_t* how_many) {
        return sentence_of(KORVALE_BAD_ARGUMENT, [&](korvale_error* error) {
            return korvale_triangulate(outlines, count, to, 2, how_many, nullptr, nullptr, error);
        });
    };
    EXPECT_EQ(sentence(nullptr, 1, triangles, &written), "korvale_triangulate: outlines must be given, but it is null");
    EXPECT_EQ(sentence(&outline, -1, triangles, &written),
              "korvale_triangulate: count must be 0 or more, but it is -1");
    EXPECT_EQ(sentence(&outline, 1, nullptr, &written), "korvale_triangulate: triangles must be given, but it is null");
    EXPECT_EQ(sentence(&outline, 1, triangles, nullptr), "korvale_triangulate: written must be given, but it is null");
    EXPECT_EQ(written, -7);
    EXPECT_THAT(triangles, testing::Each(-7));
}

TEST(Triangulate, SaysWhenTheHeapIsExhausted)
{
    NEEDS_HEAP_FAILURES();
    const Coordinates square = {0, 0, 0, 9, 0, 0, 9, 9, 0, 0, 9, 0}, hole = {3, 3, 0, 3, 6, 0, 6, 6, 0};
    const korvale_points outlines[] = {points_of(square), points_of(hole)};
    int32_t triangles[21];
    const int64_t failed = fail_each_allocation([&](int64_t) {
        korvale_error error = {};
        int64_t written = -7;
        const korvale_status status =
            korvale_triangulate(outlines, 2, triangles, 7, &written, nullptr, nullptr, &error);
        EXPECT_EQ(written, status == KORVALE_OK ? 7 : -7);
        if (status != KORVALE_OK) {
            EXPECT_STREQ(error.text, "korvale_triangulate: the heap is exhausted");
        }
    });
    EXPECT_GT(failed, 10);
}

/// A ring of n corners on a circle of that radius.
Coordinates round_ring(int n, double radius)
{
    Coordinates ring;
    for (int i = 0; i < n; ++i)
        ring.insert(ring.end(), {radius * std::cos(2 * M_PI * i / n), radius * std::sin(2 * M_PI * i / n), 0});
    return ring;
}

TEST(Triangulate, TellsOfManyPointsAndStopsWhenAsked)
{
    const Coordinates ring = round_ring(4096, 9);
    const korvale_points outline = points_of(ring);
    Corners triangles(3 * 4094, 7);
    int64_t written = 7;
    Told told;
    ASSERT_EQ(korvale_triangulate(&outline, 1, triangles.data(), 4094, &written, &Told::tell, &told, nullptr),
              KORVALE_OK);
    EXPECT_THAT(told.done, ElementsAre(0.25, 0.5, 0.75)); // each 1,024 triangles
    EXPECT_EQ(triangles, triangles_of({ring}));

    triangles.assign(triangles.size(), 7);
    written = 7;
    told = {{}, 0.5};
    korvale_error error;
    EXPECT_EQ(korvale_triangulate(&outline, 1, triangles.data(), 4094, &written, &Told::tell, &told, &error),
              KORVALE_STOPPED);
    EXPECT_STREQ(error.text, "korvale_triangulate: it was asked to stop");
    EXPECT_THAT(told.done, ElementsAre(0.25, 0.5));
    EXPECT_EQ(written, 7);
    EXPECT_EQ(triangles, Corners(triangles.size(), 7));
}

TEST(Triangulate, OfVeryManyPointsAsksBeforeTheFirstTriangle)
{
    const Coordinates ring = round_ring(70000, 9);
    const korvale_points outline = points_of(ring);
    Corners triangles(3 * 69998);
    int64_t written = 7;
    Told told = {{}, 0.0}; // stops at once
    EXPECT_EQ(korvale_triangulate(&outline, 1, triangles.data(), 69998, &written, &Told::tell, &told, nullptr),
              KORVALE_STOPPED);
    EXPECT_THAT(told.done, ElementsAre(0.0));
    EXPECT_EQ(written, 7);
}

TEST(Triangulate, TellsOfBridgesToHolesInAQuarterOfTheWork)
{
    const std::vector<Coordinates> rings = {round_ring(1024, 9), round_ring(1024, 5)};
    const korvale_points outlines[] = {points_of(rings[0]), points_of(rings[1])};
    Corners triangles(3 * 2048);
    int64_t written = 0;
    Told told;
    ASSERT_EQ(korvale_triangulate(outlines, 2, triangles.data(), 2048, &written, &Told::tell, &told, nullptr),
              KORVALE_OK);
    std::erase(told.done, 0.0); // told while holes that touch something are looked for
    // 1,024 of 2,048 corners, 2,048 of them, then 1,024 of the 2,050 corners that there are with the bridge and 2,048.
    EXPECT_THAT(told.done, ElementsAre(0.25 * 1023 / 2048, 0.25 * 2047 / 2048, 0.25 + 0.75 * (1.0 - 1026.0 / 2050),
                                       0.25 + 0.75 * (1.0 - 2.0 / 2050)));
}

} // namespace
} // namespace korvale::test
