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

std::vector<int32_t> outer_of(const std::vector<Coordinates>& outlines)
{
    std::vector<korvale_points> views;
    for (const Coordinates& outline : outlines)
        views.push_back(points_of(outline));
    std::vector<int32_t> outer(outlines.size(), -7);
    korvale_error error = {};
    EXPECT_EQ(korvale_shapes(views.data(), static_cast<int64_t>(views.size()), outer.data(), &error), KORVALE_OK)
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

TEST(Shapes, OutlinesWithoutAreaAreWhereTheyBegin)
{
    EXPECT_THAT(outer_of({{1, 1, 0}, box(0, 0, 4, 4), {}, {1, 2, 0, 3, 2, 0}, {9, 9, 0, 9, 9, 0}}),
                ElementsAre(1, 1, -1, 1, 4));
}

TEST(Shapes, AreSeenAlongZ)
{
    const Coordinates high = {1, 1, 50, 3, 1, -50, 3, 3, 7, 1, 3, 0};
    EXPECT_THAT(outer_of({high, box(0, 0, 4, 4)}), ElementsAre(1, 1));
    const float flat[] = {1, 1, 3, 1, 3, 3, 1, 3};
    const Coordinates plate = box(0, 0, 4, 4);
    const korvale_points outlines[] = {{flat, 4, 0, 2, KORVALE_FLOAT}, points_of(plate)};
    int32_t outer[2];
    EXPECT_EQ(korvale_shapes(outlines, 2, outer, nullptr), KORVALE_OK);
    EXPECT_THAT(outer, ElementsAre(1, 1));
    EXPECT_EQ(korvale_shapes(nullptr, 0, nullptr, nullptr), KORVALE_OK);
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
        const std::vector<int32_t> outer = outer_of(outlines);
        for (size_t k = 0; k < outer.size(); ++k) {
            EXPECT_EQ(outer[k] == -1, outlines[k].empty());
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
                           [&](korvale_error* error) { return korvale_shapes(from, count, to, error); });
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
    const int64_t failed = fail_each_allocation([&](int64_t) {
        korvale_error error = {};
        int32_t outer[3] = {-7, -7, -7};
        if (korvale_shapes(outlines, 3, outer, &error) == KORVALE_OK) {
            EXPECT_THAT(outer, ElementsAre(0, 0, -2));
        } else {
            EXPECT_STREQ(error.text, "korvale_shapes: the heap is exhausted");
            EXPECT_THAT(outer, ElementsAre(-7, -7, -7));
        }
    });
    EXPECT_GT(failed, 10);
}

} // namespace
} // namespace korvale::test
