// Outlines sorted into shapes.
#include <korvale.h>

#include <algorithm>
#include <cmath>

#include <gmock/gmock.h>

#include "support.h"
#include "tests/support/heap.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

using testing::ElementsAre;

using Coordinates = std::vector<double>;

korvale_shapes_options options_of(double tolerance, int32_t crossing)
{
    korvale_shapes_options options;
    korvale_shapes_defaults(&options, sizeof options);
    options.tolerance = tolerance;
    options.crossing = crossing;
    return options;
}

std::vector<int32_t> outer_of(const std::vector<Coordinates>& outlines, double tolerance = 0, int32_t crossing = 0)
{
    const korvale_shapes_options options = options_of(tolerance, crossing);
    std::vector<korvale_points> views;
    for (const Coordinates& outline : outlines)
        views.push_back(points_of(outline));
    std::vector<int32_t> outer(outlines.size(), -7);
    korvale_error error = {};
    EXPECT_EQ(korvale_shapes(views.data(), static_cast<int64_t>(views.size()), &options, outer.data(), &error),
              KORVALE_OK)
        << error.text;
    return outer;
}

Coordinates box(double x0, double y0, double x1, double y1)
{
    return {x0, y0, 0, x1, y0, 0, x1, y1, 0, x0, y1, 0};
}

Coordinates reversed(const Coordinates& outline)
{
    Coordinates result;
    for (size_t i = outline.size(); i > 0; i -= 3)
        result.insert(result.end(), &outline[i - 3], &outline[i - 3] + 3);
    return result;
}

TEST(Shapes, NestToAnyDepth)
{
    EXPECT_THAT(outer_of({box(1, 1, 3, 3), box(0, 0, 4, 4), box(9, 9, 10, 10)}), ElementsAre(1, 1, 2));
    std::vector<Coordinates> nest;
    for (int i = 0; i < 2000; ++i)
        nest.push_back(i % 3 == 0 ? reversed(box(i, i, 9000 - i, 8000 - i)) : box(i, i, 9000 - i, 8000 - i));
    const std::vector<int32_t> outer = outer_of(nest);
    for (int i = 0; i < 2000; ++i)
        EXPECT_EQ(outer[static_cast<size_t>(i)], i - i % 2);
}

TEST(Shapes, OutlinesMayTouch)
{
    const Coordinates plate = box(0, 0, 8, 8);
    for (const Coordinates& hole :
         {box(4, 2, 8, 6), box(2, 4, 6, 8), box(0, 2, 4, 6), box(2, 0, 6, 4), box(0, 0, 8, 4), box(4, 4, 8, 8),
          Coordinates{4, 0, 0, 8, 4, 0, 4, 8, 0, 0, 4, 0}, Coordinates{0, 0, 0, 8, 8, 0, 0, 8, 0}})
        for (const Coordinates& inner : {hole, reversed(hole)}) {
            EXPECT_THAT(outer_of({plate, inner}), ElementsAre(0, 0));
            EXPECT_THAT(outer_of({inner, reversed(plate)}), ElementsAre(1, 1));
        }
    for (const Coordinates& beside : {box(8, 0, 12, 8), box(8, 8, 9, 9), box(-4, -4, 0, 0), box(0, 8, 8, 9)})
        EXPECT_THAT(outer_of({plate, beside}), ElementsAre(0, 1));
}

TEST(Shapes, MayTouchAtPointsThatAreThereTwice)
{
    const Coordinates plate = {0, 0, 0, 0, 0, 0, 8, 0, 0, 8, 8, 0, 0, 8, 0},
                      hole = {0, 0, 0, 0, 0, 0, 6, 3, 0, 3, 6, 0};
    for (const double tolerance : {0.0, 0.5}) {
        EXPECT_THAT(outer_of({plate, hole}, tolerance), ElementsAre(0, 0));
        EXPECT_THAT(outer_of({hole, reversed(plate)}, tolerance), ElementsAre(1, 1));
    }
}

TEST(Shapes, MayTouchButForRounding)
{
    Random random(2214);
    for (int round = 0; round < rounds(300); ++round) {
        const double c = std::cos(0.01 * round), s = std::sin(0.01 * round);
        const auto tile = [&](double x0, double y0, double x1, double y1) {
            Coordinates turned;
            const double corners[][2] = {{x0, y0}, {x1, y0}, {x1, y1}, {x0, y1}};
            for (int i = 0; i < 4; ++i) {
                const double *const a = corners[i], *const b = corners[(i + 1) % 4];
                for (double share : {0.0, random.one_in(3) ? 1 / 3.0 : 0.0}) {
                    const double x = a[0] + share * (b[0] - a[0]), y = a[1] + share * (b[1] - a[1]);
                    turned.insert(turned.end(), {c * x - s * y, s * x + c * y, 0});
                }
            }
            return random.one_in(2) ? reversed(turned) : turned;
        };
        std::vector<Coordinates> outlines = {tile(-9, -9, 9, 9)};
        for (int i = 0; i < 25; ++i)
            outlines.push_back(tile(i % 5, i / 5, i % 5 + 1, i / 5 + 1));
        outlines.push_back(tile(2.25, 2.25, 2.75, 2.75));
        std::vector<int32_t> expected(26, 0);
        expected.push_back(26);
        for (const double tolerance : {0.0, 0.001})
            for (const int32_t crossing : {0, 1})
                ASSERT_EQ(outer_of(outlines, tolerance, crossing), expected) << "round " << round;
    }
}

TEST(Shapes, WhatFillsANotchIsBesideIt)
{
    const Coordinates notched = {0, 0, 0, 8, 0, 0, 8, 8, 0, 4, 2, 0, 0, 8, 0}, wedge = {0, 8, 0, 4, 2, 0, 8, 8, 0};
    EXPECT_THAT(outer_of({notched, wedge}), ElementsAre(0, 1));
    EXPECT_THAT(outer_of({wedge, reversed(notched), box(-1, -1, 9, 9)}), ElementsAre(2, 2, 2));
}

TEST(Shapes, OneThatIsThereTwiceIsTakenOnce)
{
    const Coordinates plate = box(0, 0, 8, 8), hole = box(2, 2, 4, 4);
    EXPECT_THAT(outer_of({plate, hole, plate, reversed(hole)}), ElementsAre(0, 0, -2, -3));
    // from another corner, with points on its sides and doubled ones
    const Coordinates again = {8, 4, 0, 8, 8, 0, 8, 8, 0, 4, 8, 0, 0, 8, 0, 0, 0, 0, 8, 0, 0};
    EXPECT_THAT(outer_of({again, plate, again}), ElementsAre(0, -2, -2));
    EXPECT_THAT(outer_of({plate, box(0, 0, 8, 8.5), {0, 0, 0, 8, 0, 0, 8, 8, 0}}), ElementsAre(1, 1, 2));
}

TEST(Shapes, OneThatIsNearlyThereTwiceIsTakenOnceWithinATolerance)
{
    const Coordinates plate = box(0, 0, 8, 8), hole = box(2, 2, 4, 4), nearly = box(0.001, -0.001, 7.999, 8.001);
    EXPECT_THAT(outer_of({plate, hole, nearly}, 0.01), ElementsAre(0, 0, -2));
    EXPECT_THAT(outer_of({nearly, plate, reversed(nearly), hole}, 0.01), ElementsAre(0, -2, -2, 0));
    EXPECT_THAT(outer_of({plate, box(0.1, 0.1, 7.9, 7.9)}, 0.01), ElementsAre(0, 0));
    EXPECT_THAT(outer_of({plate, box(0.25, 0, 8, 8)}, 0.25), ElementsAre(0, -2)); // by just as much
    EXPECT_THAT(outer_of({plate, box(0.25, 0, 8, 8)}, 0.125), ElementsAre(0, 0));
    // with more points, and one that differs by a notch only
    const Coordinates finer = {0, 0.001, 0, 4, -0.001, 0, 8, 0, 0, 8.001, 4, 0, 8, 8, 0, 0, 8, 0, 0.001, 4, 0};
    const Coordinates notched = {0, 0, 0, 8, 0, 0, 8, 8, 0, 4, 7, 0, 0, 8, 0};
    EXPECT_THAT(outer_of({plate, finer, notched}, 0.01), ElementsAre(0, -2, 0));
    EXPECT_THAT(outer_of({notched, plate, finer, notched}, 0.01), ElementsAre(1, 1, -3, -2));
}

Coordinates moved(Coordinates outline, double x, double y)
{
    for (size_t i = 0; i < outline.size(); i += 3) {
        outline[i] += x;
        outline[i + 1] += y;
    }
    return outline;
}

TEST(Shapes, DoubleContoursAreKnownByTheirEdges)
{
    const Coordinates plate = box(0, 0, 8, 8), again = moved(plate, 0.0045, 0.0045), hole = box(2, 2, 4, 4);
    EXPECT_THAT(outer_of({plate, hole, again}, 0.005), ElementsAre(0, 0, -2)); // whose corners are 0.0064 apart
    EXPECT_THAT(outer_of({reversed(again), plate}, 0.005), ElementsAre(0, -2));
    const Coordinates triangle = {0, 0, 0, 8, 0, 0, 4, 6, 0};
    EXPECT_THAT(outer_of({triangle, moved(triangle, 0.003, 0.004)}, 0.005), ElementsAre(0, -2));
    // corners may be up to twice the tolerance apart
    EXPECT_THAT(outer_of({plate, {0, 0, 0, 8, 0, 0, 8.007, 8.007, 0, 0, 8, 0}}, 0.005), ElementsAre(0, -2));
    EXPECT_THAT(outer_of({plate, {0, 0, 0, 8, 0, 0, 8.008, 8.008, 0, 0, 8, 0}}, 0.005), ElementsAre(1, 1));
}

TEST(Shapes, DoubleContoursHangTogetherInChains)
{
    const Coordinates plate = box(0, 0, 8, 8), hole = box(2, 2, 4, 4);
    std::vector<Coordinates> chain = {hole};
    std::vector<int32_t> expected = {1, 1};
    for (int i = 0; i < 100; ++i)
        chain.push_back(moved(plate, 0.0045 * i, 0.0045 * i));
    expected.resize(chain.size(), -3);
    EXPECT_EQ(outer_of(chain, 0.005), expected);
    std::reverse(chain.begin() + 1, chain.end());
    EXPECT_EQ(outer_of(chain, 0.005), expected);
    EXPECT_THAT(outer_of({plate, moved(plate, 0.009, 0), moved(plate, 0.0045, 0)}, 0.005), ElementsAre(0, -2, -2));
}

TEST(Shapes, WhatLiesWithinTheToleranceTouches)
{
    const Coordinates plate = box(0, 0, 8, 8);
    for (const double over : {-0.001, 0.0, 0.001}) { // where the hole begins
        const Coordinates hole = {2, -over, 0, 4, 2, 0, 2, 4, 0};
        EXPECT_THAT(outer_of({plate, hole}, 0.01), ElementsAre(0, 0)) << over;
        EXPECT_THAT(outer_of({plate, box(8 - over, 0, 12, 8)}, 0.01), ElementsAre(0, 1)) << over;
        EXPECT_THAT(outer_of({plate, box(0, 8 - over, 8, 12), box(-1, -1, 13, 13)}, 0.01), ElementsAre(2, 2, 2))
            << over;
    }
}

std::string refusal(const std::vector<Coordinates>& outlines, double tolerance)
{
    std::vector<korvale_points> views;
    for (const Coordinates& outline : outlines)
        views.push_back(points_of(outline));
    std::vector<int32_t> outer(outlines.size());
    const korvale_shapes_options options = options_of(tolerance, 0);
    return sentence_of(KORVALE_BAD_ARGUMENT, [&](korvale_error* error) {
        return korvale_shapes(views.data(), static_cast<int64_t>(views.size()), &options, outer.data(), error);
    });
}

TEST(Shapes, OutlinesThatCrossAreRefused)
{
    const Coordinates plate = box(0, 0, 8, 8), far = box(20, 0, 22, 2);
    EXPECT_EQ(refusal({plate, far, box(6, 2, 10, 4)}, 0),
              "korvale_shapes: outlines must not cross each other, but outlines 0 and 2 do, near (8, 2); set "
              "tolerance to allow small ones, or crossing to allow all");
    EXPECT_EQ(refusal({box(2, -2, 4, 10), plate}, 0.5), // a cross without a corner of one in the other
              "korvale_shapes: outlines must not cross each other, but outlines 0 and 1 do, near (4, 0); set "
              "tolerance to allow small ones, or crossing to allow all");
    EXPECT_THAT(outer_of({plate, box(6, 2, 8.25, 4)}, 0.25), ElementsAre(0, 0));
    EXPECT_NE(refusal({plate, box(6, 2, 8.25, 4)}, 0.125), "");
    // through corners of both
    EXPECT_NE(refusal({plate, {4, 4, 0, 8, 8, 0, 12, 4, 0, 8, 0, 0}}, 0), "");
    EXPECT_NE(refusal({plate, {8, 0, 0, 12, 4, 0, 0, 8, 0}}, 0), "");
    // through gaps that are narrower than the tolerance
    EXPECT_NE(refusal({{0, 0, 0, 8, 0, 0, 8, 8, 0, 4, 8, 0, 4, 9, 0, 3.999, 8, 0, 0, 8, 0},
                       {0, 0, 0, 8, 0, 0, 8, 4, 0, 9, 4, 0, 8, 4.001, 0, 8, 8, 0, 0, 8, 0}},
                      0.01),
              "");
    EXPECT_THAT(outer_of({plate, box(6, 2, 10, 4)}, 0, 1), ElementsAre(0, 0)); // where it begins
}

TEST(Shapes, OutlinesThatCrossThemselvesAreRefused)
{
    const Coordinates plate = box(0, 0, 8, 8), bow = {1, 1, 0, 3, 1, 0, 1, 3, 0, 3, 3, 0};
    EXPECT_EQ(refusal({plate, bow}, 0),
              "korvale_shapes: outline 1 must not cross itself, but it does near (2, 2); set tolerance to "
              "allow small ones, or crossing to allow all");
    EXPECT_EQ(refusal({plate, reversed(bow), box(6, 2, 10, 4)}, 0.5), // before outlines 0 and 2, which cross each other
              "korvale_shapes: outlines must not cross each other, but outlines 0 and 2 do, near (8, 2); set tolerance "
              "to allow small ones, or crossing to allow all");
    EXPECT_THAT(outer_of({plate, bow}, 0, 1), ElementsAre(0, 0));
    EXPECT_NE(refusal({{0, 0, 0, 2, 2, 0, 4, 4, 0, 4, 0, 0, 2, 2, 0, 0, 4, 0}}, 0), ""); // through a corner
    EXPECT_NE(refusal({{0, 0, 0, 9, 0, 0, 9, 9, 0, 4, 9, 0, 4, 5, 0, 12, 5, 0, 12, 12, 0, 0, 12, 0}}, 0), ""); // a loop
    Coordinates loop = plate; // of 0.01 at a corner
    loop.insert(loop.end(), {-0.01, 0, 0, -0.01, 0.01, 0, 0.01, 0.01, 0, 0.01, -0.01, 0});
    EXPECT_NE(refusal({loop}, 0.001), "");
    EXPECT_THAT(outer_of({loop}, 0.1), ElementsAre(0));
}

TEST(Shapes, OutlinesMayTouchThemselves)
{
    const std::vector<Coordinates> touching = {
        {0, 0, 0, 4, 0, 0, 2, 2, 0, 4, 4, 0, 0, 4, 0, 2, 2, 0},                     // at a corner
        {0, 0, 0, 4, 0, 0, 8, 0, 0, 8, 8, 0, 4, 0, 0, 0, 8, 0},                     // at a side
        {0, 0, 0, 9, 0, 0, 9, 9, 0, 5, 9, 0, 5, 12, 0, 5, 11, 0, 5, 9, 0, 0, 9, 0}, // along a way there and back
        {0, 0, 0, 9, 0, 0, 9, 9, 0, 0, 9, 0, 0, 5, 0, 1, 5, 0, 3, 5, 0,
         3, 6, 0, 6, 6, 0, 6, 3, 0, 3, 3, 0, 3, 5, 0, 2, 5, 0, 0, 5, 0}, // along a way to a hole
    };
    for (const Coordinates& outline : touching)
        for (int k = 0; k < rounds(300); ++k) {
            const double c = std::cos(0.01 * k), s = std::sin(0.01 * k);
            Coordinates turned;
            for (size_t i = 0; i < outline.size(); i += 3)
                turned.insert(turned.end(),
                              {c * outline[i] - s * outline[i + 1], s * outline[i] + c * outline[i + 1], 0});
            std::rotate(turned.begin(), turned.begin() + 3 * (k % 5), turned.end());
            ASSERT_THAT(outer_of({k % 2 == 0 ? turned : reversed(turned)}), ElementsAre(0)) << "turned by " << k;
        }
}

/// What shapes says of an outline.
korvale_status status_of(const Coordinates& outline, double tolerance)
{
    const korvale_shapes_options options = options_of(tolerance, 0);
    const korvale_points view = points_of(outline);
    int32_t outer[1];
    return korvale_shapes(&view, 1, &options, outer, nullptr);
}

/// An outline from another of its points on, on average every third point of it there twice or more often.
Coordinates with_points_again(Random& random, const Coordinates& outline)
{
    Coordinates result;
    const int n = static_cast<int>(outline.size() / 3), first = random.below(n);
    for (int i = 0; i < n; ++i)
        do
            result.insert(result.end(), &outline[static_cast<size_t>(3 * ((first + i) % n))],
                          &outline[static_cast<size_t>(3 * ((first + i) % n))] + 3);
        while (random.one_in(4));
    return result;
}

TEST(Shapes, WhatCrossesItselfDoesSoFromAnyPointOnAndWithPointsThereTwice)
{
    EXPECT_THAT(outer_of({{246.97384129697002, 151.76000000000008, 0, 246.97384129697002, 151.76000000000008, 0,
                           115.82000000000001, 151.75999999999996, 0, 115.82000000000002, 113.69699275796452, 0}}),
                ElementsAre(0)); // the middle of the edge that is nearly upright is rounded to the inside
    Random random(823);
    int taken = 0, refused = 0;
    for (int round = 0; round < rounds(20000) && !testing::Test::HasFailure(); ++round) {
        const int points = random.between(3, 7);
        const double east = 500000.0 * random.below(2);
        Coordinates outline; // nearly on a lattice, whose lines most of its edges run along
        for (int i = 0; i < points; ++i) {
            for (const double origin : {east, 13.2 * east}) {
                double value = origin + 100.1 + 37.7 * random.below(5);
                for (int k = random.below(4); k > 0; --k)
                    value = std::nextafter(value, 1e9 * random.between(-1, 1));
                outline.push_back(value);
            }
            outline.push_back(0.0);
        }
        double area = 0.0;
        for (size_t i = 3; i + 3 < outline.size(); i += 3)
            area += (outline[i] - outline[0]) * (outline[i + 4] - outline[1]) -
                    (outline[i + 1] - outline[1]) * (outline[i + 3] - outline[0]);
        if (std::fabs(area) < 1.0)
            continue; // rounding tells whether there is any, and without there is nothing to cross
        for (const double tolerance : {0.0, 0.001}) {
            const korvale_status status = status_of(outline, tolerance);
            (status == KORVALE_OK ? taken : refused) += 1;
            EXPECT_EQ(status_of(with_points_again(random, outline), tolerance), status)
                << testing::PrintToString(outline) << " within " << tolerance;
        }
    }
    EXPECT_GT(taken, 10000);
    EXPECT_GT(refused, 10000);
}

TEST(Shapes, ScribblesTakeNoLong)
{
    Random random(1405);
    Coordinates scribble;
    for (int i = 0; i < 5000; ++i)
        scribble.insert(scribble.end(), {random.uniform(0, 1), random.uniform(0, 1), 0.0});
    EXPECT_NE(refusal({scribble}, 0), "");
    EXPECT_NE(refusal({scribble}, 0.01), "");
}

TEST(Shapes, SayWhichTolerancesTheyRefuse)
{
    int32_t outer[1];
    const Coordinates plate = box(0, 0, 8, 8);
    const korvale_points outline = points_of(plate);
    for (const auto& [tolerance, given] :
         {std::pair(-1.0, "be 0 or more, but it is -1"), {NAN, "be finite, but it is nan"}}) {
        const korvale_shapes_options options = options_of(tolerance, 0);
        EXPECT_EQ(
            sentence_of(KORVALE_BAD_ARGUMENT,
                        [&](korvale_error* error) { return korvale_shapes(&outline, 1, &options, outer, error); }),
            std::string("korvale_shapes: options.tolerance must ") + given);
    }
    Told told;
    korvale_shapes_options options = {77, 77, 77, &Told::tell, &told, nullptr};
    korvale_shapes_defaults(&options, sizeof options);
    EXPECT_EQ(options.size, sizeof options);
    EXPECT_EQ(options.crossing, 0);
    EXPECT_EQ(options.tolerance, 0);
    EXPECT_EQ(options.progress, nullptr);
    EXPECT_EQ(options.user, nullptr);
}

TEST(Shapes, OutlinesWithoutAreaAreWhereTheyBegin)
{
    EXPECT_THAT(
        outer_of(
            {{1, 1, 0, 1, 1, 0, 1, 1, 0}, box(0, 0, 4, 4), {1, 2, 0, 3, 2, 0, 2, 2, 0}, {9, 9, 0, 9, 8, 0, 9, 9, 0}}),
        ElementsAre(1, 1, 1, 3));
}

TEST(Shapes, OutlinesOfFewerThanThreePointsAreLeftOut)
{
    const Coordinates plate = box(0, 0, 4, 4);
    EXPECT_THAT(outer_of({{1, 1, 0}, plate, {}, {1, 2, 0, 3, 2, 0}, {9, 9, 0, 9, 9, 0}, {1, 1, 0}}),
                ElementsAre(-1, 1, -1, -1, -1, -1));
    EXPECT_THAT(outer_of({{-1, 2, 0, 5, 2, 0}, plate}, 0.5), ElementsAre(-1, 1)); // across the plate
    const Coordinates far = {1e300, 1e300, 0};
    EXPECT_THAT(outer_of({far, plate, box(1, 1, 2, 2)}), ElementsAre(-1, 1, 1)); // nothing is small beside it
}

TEST(Shapes, AreSeenAlongZ)
{
    const Coordinates high = {1, 1, 50, 3, 1, -50, 3, 3, 7, 1, 3, 0};
    EXPECT_THAT(outer_of({high, box(0, 0, 4, 4)}), ElementsAre(1, 1));
    const float flat[] = {1, 1, 3, 1, 3, 3, 1, 3};
    const Coordinates plate = box(0, 0, 4, 4);
    const korvale_points outlines[] = {{flat, 4, 0, 2, KORVALE_FLOAT}, points_of(plate)};
    int32_t outer[2];
    EXPECT_EQ(korvale_shapes(outlines, 2, nullptr, outer, nullptr), KORVALE_OK);
    EXPECT_THAT(outer, ElementsAre(1, 1));
    EXPECT_EQ(korvale_shapes(nullptr, 0, nullptr, nullptr, nullptr), KORVALE_OK);
}

TEST(Shapes, AreTheSameForAnySize)
{
    for (const double size : {1e-300, 1e-9, 1e9, 1e300}) {
        std::vector<Coordinates> outlines = {box(0.1, 0.1, 0.5, 0.7), box(0, 0, 0.9, 0.9), box(0.2, 0.1, 0.4, 0.3)};
        for (Coordinates& outline : outlines)
            for (double& v : outline)
                v *= size;
        EXPECT_THAT(outer_of(outlines), ElementsAre(1, 1, 2));
    }
}

TEST(Shapes, AnyOutlinesGetAnAnswer)
{
    Random random(1303);
    for (int round = 0; round < rounds(500); ++round) {
        std::vector<Coordinates> outlines(static_cast<size_t>(random.between(1, 30)));
        const int steps = random.one_in(2) ? 4 : 1000;
        for (Coordinates& outline : outlines)
            for (int i = random.between(0, 9); i > 0; --i)
                outline.insert(outline.end(),
                               {double(random.between(0, steps)), double(random.between(0, steps)), 0.0});
        const std::vector<int32_t> outer = outer_of(outlines, random.one_in(2) ? 0 : steps * 0.01, 1);
        for (size_t k = 0; k < outer.size(); ++k) {
            EXPECT_EQ(outer[k] == -1, outlines[k].size() < 9);
            if (outer[k] == -1)
                continue;
            const auto named = static_cast<size_t>(outer[k] >= 0 ? outer[k] : -2 - outer[k]);
            ASSERT_LT(named, outer.size());
            EXPECT_GE(outer[named], 0);
            if (outer[k] >= 0) {
                EXPECT_EQ(outer[named], outer[k]);
            }
        }
    }
}

TEST(Shapes, SayWhatTheyRefuse)
{
    const Coordinates wrong = {0, 0, 0, 4, INFINITY, 0, 4, 4, 0}, plate = box(0, 0, 4, 4);
    const korvale_points outlines[] = {points_of(plate), points_of(wrong)};
    int32_t outer[2] = {-7, -7};
    const auto text = [&](const korvale_points* from, int64_t count, int32_t* to) {
        return sentence_of(KORVALE_BAD_ARGUMENT,
                           [&](korvale_error* error) { return korvale_shapes(from, count, nullptr, to, error); });
    };
    EXPECT_EQ(text(outlines, 2, outer), "korvale_shapes: outline 1 must be finite, but its point 1 is (4, inf, 0)");
    EXPECT_EQ(text(outlines, -1, outer), "korvale_shapes: count must be 0 or more, but it is -1");
    EXPECT_EQ(text(nullptr, 1, outer), "korvale_shapes: outlines must be given, but it is null");
    EXPECT_EQ(text(outlines, 1, nullptr), "korvale_shapes: outer must be given, but it is null");
    EXPECT_THAT(outer, ElementsAre(-7, -7));
}

TEST(Shapes, SayWhenTheHeapIsExhausted)
{
    NEEDS_HEAP_FAILURES();
    const Coordinates plate = box(0, 0, 8, 8), hole = box(2, 2, 4, 4);
    const korvale_points outlines[] = {points_of(plate), points_of(hole), points_of(plate)};
    const korvale_shapes_options options = options_of(0.5, 0);
    const int64_t failed = fail_each_allocation([&](int64_t) {
        korvale_error error = {};
        int32_t outer[3] = {-7, -7, -7};
        if (korvale_shapes(outlines, 3, &options, outer, &error) == KORVALE_OK) {
            EXPECT_THAT(outer, ElementsAre(0, 0, -2));
        } else {
            EXPECT_STREQ(error.text, "korvale_shapes: the heap is exhausted");
            EXPECT_THAT(outer, ElementsAre(-7, -7, -7));
        }
    });
    EXPECT_GT(failed, 10);
}

TEST(Shapes, TellOfManyOutlinesAndStopWhenAsked)
{
    std::vector<Coordinates> boxes;
    std::vector<korvale_points> views;
    for (int i = 0; i < 1024; ++i)
        boxes.push_back(box(i, 0, i + 1, 1 + i % 2)); // each touches the next
    for (const Coordinates& outline : boxes)
        views.push_back(points_of(outline));
    std::vector<int32_t> outer(1024), stopped(1024, -7);
    Told told;
    korvale_shapes_options options = options_of(0.125, 0);
    options.progress = &Told::tell;
    options.user = &told;
    ASSERT_EQ(korvale_shapes(views.data(), 1024, &options, outer.data(), nullptr), KORVALE_OK);
    EXPECT_EQ(outer, outer_of(boxes, 0.125));
    EXPECT_TRUE(std::ranges::is_sorted(told.done));
    EXPECT_GT(told.done.size(), 1024u);
    EXPECT_GE(told.done.front(), 0);
    EXPECT_LE(told.done.back(), 1);
    for (const double end : {0.0, 0.3, 0.6, 0.75, 0.9}) {
        told = {{}, end};
        korvale_error error;
        EXPECT_EQ(korvale_shapes(views.data(), 1024, &options, stopped.data(), &error), KORVALE_STOPPED) << end;
        EXPECT_STREQ(error.text, "korvale_shapes: it was asked to stop");
        EXPECT_EQ(stopped, std::vector<int32_t>(1024, -7));
    }
}

} // namespace
} // namespace korvale::test
