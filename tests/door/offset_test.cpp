// Outlines moved sideways through the C interface.
#include <korvale.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "support.h"
#include "tests/support/heap.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

const Numbers kSquare = {0, 0, 0, 4, 0, 0, 4, 4, 0, 0, 4, 0};
const Numbers kHole = {1, 1, 0, 3, 1, 0, 3, 3, 0, 1, 3, 0};
// The notch vanishes when the outline grows by 1.
const Numbers kNotched = {0, 0, 0, 4, 0, 0, 4, 4, 0, 2.1, 4, 0, 2, 3.9, 0, 1.9, 4, 0, 0, 4, 0};

/// A border with its memory.
struct Moved {
    Numbers points;
    std::vector<uint8_t> removed;
    std::vector<int32_t> merged_into;
    bool collapsed;

    bool operator==(const Moved&) const = default;
};

Moved moved(const Numbers& outline, double distance, korvale_offset_options options = offset_options(0))
{
    const korvale_points points = points_of(outline);
    Moved result = {Numbers(outline.size()), std::vector<uint8_t>(outline.size() / 3, 9),
                    std::vector<int32_t>(outline.size() / 3, 9), false};
    korvale_border border = {result.points.data(), result.removed.data(), result.merged_into.data(), 0, 0, 0, 0};
    EXPECT_EQ(korvale_offset(&points, distance, &options, &border, nullptr), KORVALE_OK);
    EXPECT_EQ(border.vertices, points.count);
    result.points.resize(static_cast<size_t>(3 * border.count));
    result.collapsed = border.collapsed != 0;
    return result;
}

/// Twice the area of an outline in a plane z = const.
double doubled_area(const Numbers& outline)
{
    double sum = 0;
    for (size_t i = 0; i < outline.size(); i += 3) {
        const size_t j = (i + 3) % outline.size();
        sum += (outline[i] - outline[0]) * (outline[j + 1] - outline[1]) -
               (outline[j] - outline[0]) * (outline[i + 1] - outline[1]);
    }
    return sum;
}

Numbers regular(int n, double radius, double turn = 0)
{
    Numbers outline;
    for (int i = 0; i < n; ++i) {
        const double angle = turn + 6.283185307179586 * i / n;
        outline.insert(outline.end(), {radius * std::cos(angle), radius * std::sin(angle), 0});
    }
    return outline;
}

/// Three numbers of the generator after `body` and after a seed alone are the same.
template <class Body>
void expect_no_draw(Body body)
{
    std::array<int, 3> expected, after;
    Mwsrand(5);
    for (int& number : expected)
        number = Mwrand();
    Mwsrand(5);
    body();
    for (int& number : after)
        number = Mwrand();
    EXPECT_EQ(after, expected);
}

TEST(DoorOffset, GrowsASquareByHalfAUnit)
{
    const Moved grown = moved(kSquare, 0.5);
    expect_near(grown.points, {-0.5, -0.5, 0, 4.5, -0.5, 0, 4.5, 4.5, 0, -0.5, 4.5, 0});
    EXPECT_THAT(grown.removed, ElementsAre(0, 0, 0, 0));
    EXPECT_THAT(grown.merged_into, ElementsAre(0, 1, 2, 3));
    EXPECT_FALSE(grown.collapsed);
}

TEST(DoorOffset, LiftsTheBorder)
{
    expect_near(moved(kSquare, -1, offset_options(2)).points, {1, 1, 2, 3, 1, 2, 3, 3, 2, 1, 3, 2});
}

TEST(DoorOffset, LeavesRemovedVerticesOutWhenAsked)
{
    const Moved kept = moved(kNotched, 1), packed = moved(kNotched, 1, offset_options(0, 0));
    EXPECT_EQ(kept.points.size(), 21u);
    EXPECT_EQ(packed.removed, kept.removed);
    Numbers live;
    for (size_t i = 0; i < 7; ++i)
        if (kept.removed[i] == 0)
            live.insert(live.end(), kept.points.begin() + static_cast<std::ptrdiff_t>(3 * i),
                        kept.points.begin() + static_cast<std::ptrdiff_t>(3 * i + 3));
    EXPECT_EQ(packed.points, live);
    EXPECT_LT(live.size(), 21u);
}

TEST(DoorOffset, TellsThatNothingIsLeft)
{
    EXPECT_FALSE(moved(kSquare, -1.99).collapsed);
    EXPECT_TRUE(moved(kSquare, -2).collapsed);
    EXPECT_TRUE(moved({0, 0, 0, 1, 0, 0, 2, 0, 0}, 1).collapsed);
}

TEST(DoorOffset, ReadsFloatsStridesAndTwoCoordinates)
{
    const Moved expected = moved(kSquare, 0.5);
    const float floats[] = {0, 0, 7, 4, 0, 7, 4, 4, 7, 0, 4, 7};
    const korvale_points flat = {floats, 4, 12, 2, KORVALE_FLOAT};
    Numbers points(12);
    korvale_border border = {};
    border.points = points.data();
    EXPECT_EQ(korvale_offset(&flat, 0.5, nullptr, &border, nullptr), KORVALE_OK);
    EXPECT_EQ(points, expected.points);
    EXPECT_EQ(border.count, 4);
    EXPECT_EQ(border.vertices, 4);
}

TEST(DoorOffset, MayBeWrittenOverTheOutline)
{
    Numbers outline = kNotched;
    const korvale_points points = points_of(outline);
    korvale_border border = {};
    border.points = outline.data();
    EXPECT_EQ(korvale_offset(&points, 1, nullptr, &border, nullptr), KORVALE_OK);
    EXPECT_EQ(outline, moved(kNotched, 1).points);
}

TEST(DoorOffset, SmallSquaresNeverTurnOverAndDrawNothing)
{
    expect_no_draw([] {
        for (const double side : {0.1, 0.01, 1e-3, 1e-6, 1e-9, 1e6, 1e9})
            for (int round = 0; round < 100; ++round) {
                const Numbers outline = {0, 0, 0, side, 0, 0, side, side, 0, 0, side, 0};
                const double d = 0.1 * side;
                expect_near(moved(outline, d).points,
                            {-d, -d, 0, side + d, -d, 0, side + d, side + d, 0, -d, side + d, 0}, 1e-15 * side);
            }
    });
}

TEST(DoorOffset, SmallPolygonsComeOutTheSameInEveryThread)
{
    std::vector<Numbers> outlines;
    for (int k = 0; k < 400; ++k)
        outlines.push_back(regular(3 + k % 50, 0.05, 0.37 * k));
    std::vector<Moved> serial;
    for (const Numbers& outline : outlines)
        serial.push_back(moved(outline, 0.01));
    for (size_t k = 0; k < outlines.size(); ++k)
        EXPECT_GT(doubled_area(serial[k].points), doubled_area(outlines[k]));
    const auto again = [&] {
        for (size_t k = 0; k < outlines.size(); ++k)
            EXPECT_EQ(moved(outlines[k], 0.01), serial[k]);
    };
    std::thread other(again);
    again();
    other.join();
}

TEST(DoorOffset, OutlinesFromTinyToHugeGrowWhicheverWayTheyLie)
{
    Random random(1210);
    for (int round = 0; round < rounds(400); ++round) {
        const double size = std::pow(10.0, random.uniform(-9, 9));
        Numbers outline;
        const int n = random.between(3, 60);
        for (int i = 0; i < n; ++i) {
            const double angle = 6.283185307179586 * i / n, r = size * random.uniform(0.4, 1);
            outline.insert(outline.end(), {r * std::cos(angle), r * std::sin(angle), 0});
        }
        double turn[16];
        const double radians[] = {random.uniform(0, 6), random.uniform(0, 6), random.uniform(0, 6)};
        korvale_transform_rotation(radians, turn);
        const korvale_points points = points_of(outline);
        const korvale_points_out output = {outline.data(), n, 0, 3, KORVALE_DOUBLE};
        korvale_transform_points(turn, &points, &output, nullptr);
        const Moved grown = moved(outline, 0.01 * size);
        double back[16];
        korvale_transform_invert(turn, back, nullptr);
        Numbers flat = outline, flat_grown = grown.points;
        const korvale_points flat_points = points_of(flat), flat_border = points_of(flat_grown);
        const korvale_points_out flat_out = {flat.data(), n, 0, 3, KORVALE_DOUBLE};
        const korvale_points_out border_out = {flat_grown.data(), n, 0, 3, KORVALE_DOUBLE};
        korvale_transform_points(back, &flat_points, &flat_out, nullptr);
        korvale_transform_points(back, &flat_border, &border_out, nullptr);
        EXPECT_GT(doubled_area(flat_grown), doubled_area(flat)) << "round " << round << ", size " << size;
        EXPECT_FALSE(grown.collapsed);
    }
}

TEST(DoorOffset, AnOutlineWhosePointsAreAllThereTwiceIsNotTurnedOver)
{
    // The first three places are a corner that goes in; nowhere do three neighbours make a corner.
    const Numbers hook = {2, 4, 0, 2, 2, 0, 0, 2, 0, 0, 0, 0, 4, 0, 0, 4, 4, 0};
    const Numbers grown = {1.5, 4.5, 0, 1.5, 2.5, 0, -0.5, 2.5, 0, -0.5, -0.5, 0, 4.5, -0.5, 0, 4.5, 4.5, 0};
    const auto each_twice = [](const Numbers& outline) {
        Numbers twice;
        for (size_t i = 0; i < outline.size(); i += 3)
            for (int k = 0; k < 2; ++k)
                twice.insert(twice.end(), outline.begin() + static_cast<ptrdiff_t>(i),
                             outline.begin() + static_cast<ptrdiff_t>(i) + 3);
        return twice;
    };
    const Moved result = moved(each_twice(hook), 0.5);
    EXPECT_EQ(result.points, each_twice(grown));
    EXPECT_EQ(std::ranges::count(result.removed, 1), 6);
    Random random(1217);
    for (int round = 0; round < rounds(500); ++round) {
        Numbers star;
        const int corners = random.between(4, 20);
        for (int i = 0; i < corners; ++i) {
            const double angle = 6.283185307179586 * i / corners, radius = random.uniform(1, 3);
            star.insert(star.end(), {radius * std::cos(angle), radius * std::sin(angle), 1});
        }
        const double distance = random.uniform(0.001, 0.1);
        ASSERT_GT(doubled_area(moved(each_twice(star), distance).points), doubled_area(star)) << "round " << round;
    }
}

TEST(DoorOffset, ScalingByAPowerOfTwoScalesTheBorder)
{
    Random random(1211);
    for (int round = 0; round < rounds(100); ++round) {
        Numbers outline = regular(random.between(3, 40), 5, random.uniform(0, 6));
        for (double& number : outline)
            number *= random.uniform(0.6, 1);
        for (size_t i = 2; i < outline.size(); i += 3)
            outline[i] = 0;
        const double distance = random.uniform(-3, 3), height = random.uniform(-3, 3);
        const Moved plain = moved(outline, distance, offset_options(height));
        for (const int exponent : {-40, -30, -10, -4, 30}) {
            const double scale = std::ldexp(1.0, exponent);
            const Moved scaled = moved(times(scale, outline), scale * distance, offset_options(scale * height));
            ASSERT_EQ(scaled.points, times(scale, plain.points)) << "round " << round << ", 2^" << exponent;
            ASSERT_EQ(scaled.removed, plain.removed);
            ASSERT_EQ(scaled.collapsed, plain.collapsed);
        }
    }
}

TEST(DoorOffset, NeighboursAMillionthOfASmallOutlineApartMerge)
{
    const Numbers outline = {0, 0, 0, 1, 0, 0, 1, 1, 0, 1, 1 + 1.1e-06, 0, 0, 1, 0};
    EXPECT_THAT(moved(outline, 0.25).removed, ElementsAre(0, 0, 1, 0, 0));
    EXPECT_THAT(moved(times(0x1p-20, outline), 0x1p-22).removed, ElementsAre(0, 0, 1, 0, 0));
    EXPECT_THAT(moved(times(16, outline), 4).removed, ElementsAre(0, 0, 0, 0, 0));
}

TEST(DoorOffset, ACornerMadeByRoundingDoesNotTiltThePlane)
{
    // The first step is so short that its direction is rounding, in a plane through no axis.
    Numbers outline = {0, 0, 0, 1e-3, 0, 0, 3e8, 0, 0, 3e8, 3e8, 0, 0, 3e8, 0};
    double turn[16];
    const double radians[] = {0.4, 0.5, 0.6};
    korvale_transform_rotation(radians, turn);
    turn[3] = 1e9;
    const korvale_points points = points_of(outline);
    const korvale_points_out output = {outline.data(), 5, 0, 3, KORVALE_DOUBLE};
    korvale_transform_points(turn, &points, &output, nullptr);
    const Moved grown = moved(outline, 1e8);
    double back[16];
    korvale_transform_invert(turn, back, nullptr);
    Numbers flat = grown.points;
    const korvale_points border = points_of(flat);
    const korvale_points_out flat_out = {flat.data(), 5, 0, 3, KORVALE_DOUBLE};
    korvale_transform_points(back, &border, &flat_out, nullptr);
    // Coordinates of 1e9 are rounded by 1e-7, and the plane that is found moves them. Measured: by 0.2.
    EXPECT_NEAR(flat[6], 4e8, 1);
    EXPECT_NEAR(flat[7], -1e8, 1);
    EXPECT_NEAR(flat[8], 0, 1);
    EXPECT_NEAR(flat[12], -1e8, 1);
}

TEST(DoorOffset, SaysWhatItRefuses)
{
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    Numbers output(12, 9);
    const auto refusal = [&](const korvale_points* points, double distance, const korvale_offset_options* options) {
        korvale_error error;
        korvale_border border = {output.data(), nullptr, nullptr, 7, 7, 7, 7};
        EXPECT_EQ(korvale_offset(points, distance, options, &border, &error), KORVALE_BAD_ARGUMENT);
        EXPECT_EQ(border.count, 7);
        return std::string(error.text);
    };
    const korvale_points square = points_of(kSquare);
    korvale_points line = square;
    line.count = 2;
    EXPECT_EQ(refusal(&line, 1, nullptr), "korvale_offset: outline must have at least 3 points, but it has 2");
    EXPECT_EQ(refusal(nullptr, 1, nullptr), "korvale_offset: outline must be given, but it is null");
    Numbers holed = kSquare;
    holed[4] = nan;
    const korvale_points not_finite = points_of(holed);
    EXPECT_EQ(refusal(&not_finite, 1, nullptr),
              "korvale_offset: outline must be finite, but its point 1 is (4, nan, 0)");
    EXPECT_EQ(refusal(&square, nan, nullptr), "korvale_offset: distance must be finite, but it is nan");
    korvale_offset_options options = offset_options(nan);
    EXPECT_EQ(refusal(&square, 1, &options), "korvale_offset: options.height must be finite, but it is nan");
    options.size = 0;
    EXPECT_EQ(refusal(&square, 1, &options),
              "korvale_offset: options.size must be the size of the struct, but it is 0");
    EXPECT_THAT(output, testing::Each(9));

    korvale_error error;
    EXPECT_EQ(korvale_offset(&square, 1, nullptr, nullptr, &error), KORVALE_BAD_ARGUMENT);
    EXPECT_STREQ(error.text, "korvale_offset: border must be given, but it is null");
    korvale_border border = {};
    EXPECT_EQ(korvale_offset(&square, 1, nullptr, &border, &error), KORVALE_BAD_ARGUMENT);
    EXPECT_STREQ(error.text, "korvale_offset: border.points must be given, but it is null");
}

/// A wheel of n teeth of many heights.
Numbers wheel(size_t n)
{
    Numbers points;
    for (size_t i = 0; i < 2 * n; ++i) {
        const double turn = 3.141592653589793 * static_cast<double>(i) / static_cast<double>(n);
        const double radius = i % 2 == 0 ? 10 : 9.9 - 0.001 * static_cast<double>(i % 37);
        points.insert(points.end(), {radius * std::cos(turn), radius * std::sin(turn), 0});
    }
    return points;
}

TEST(DoorOffset, TellsOfItsProgressAndStopsWhenAsked)
{
    const Numbers outline = wheel(20000);
    Course course = {{}, SIZE_MAX};
    korvale_offset_options options = offset_options(0);
    options.progress = &Course::tell;
    options.user = &course;
    EXPECT_EQ(moved(outline, 0.3, options), moved(outline, 0.3));
    EXPECT_GT(course.told.size(), 3);
    EXPECT_TRUE(std::ranges::is_sorted(course.told));
    EXPECT_GE(course.told.front(), 0);
    EXPECT_LE(course.told.back(), 1);

    course = {{}, 2};
    const korvale_points points = points_of(outline);
    Numbers output(outline.size(), 9);
    korvale_border border = {output.data(), nullptr, nullptr, 7, 7, 7, 7};
    korvale_error error;
    EXPECT_EQ(korvale_offset(&points, 0.3, &options, &border, &error), KORVALE_STOPPED);
    EXPECT_STREQ(error.text, "korvale_offset: it was asked to stop");
    EXPECT_EQ(course.told.size(), 3);
    EXPECT_EQ(border.count, 7);
    EXPECT_THAT(output, testing::Each(9));
}

TEST(DoorOffset, TellsOfOutlinesWithHolesAsOneWork)
{
    const Numbers outline = wheel(20000), hole = times(0.5, outline);
    const std::array<korvale_points, 2> outlines = {points_of(outline), points_of(hole)};
    Course course = {{}, SIZE_MAX};
    korvale_offset_options options = offset_options(0);
    options.progress = &Course::tell;
    options.user = &course;
    korvale_offsetter* offsetter;
    ASSERT_EQ(korvale_offsetter_new(&offsetter, nullptr), KORVALE_OK);
    EXPECT_EQ(korvale_offsetter_run(offsetter, outlines.data(), 2, 0.3, &options, nullptr), KORVALE_OK);
    EXPECT_TRUE(std::ranges::is_sorted(course.told));
    EXPECT_LT(course.told.front(), 0.5);
    EXPECT_GT(course.told.back(), 0.5);
    EXPECT_EQ(korvale_offsetter_count(offsetter), 2);

    course = {{}, 0};
    EXPECT_EQ(korvale_offsetter_run(offsetter, outlines.data(), 2, 0.3, &options, nullptr), KORVALE_STOPPED);
    EXPECT_EQ(korvale_offsetter_count(offsetter), 0);
    korvale_offsetter_free(offsetter);
}

TEST(DoorOffset, OptionsOfAnOlderHostHaveDefaultsForTheRest)
{
    korvale_offset_options options = offset_options(5, 0);
    options.size = offsetof(korvale_offset_options, height);
    EXPECT_EQ(moved(kNotched, 1, options).points, moved(kNotched, 1, offset_options(0, 0)).points);
}

TEST(DoorOffset, AnExhaustedHeapWritesNothing)
{
    NEEDS_HEAP_FAILURES();
    const korvale_points outline = points_of(kNotched);
    const int64_t failed = fail_each_allocation([&](int64_t) {
        std::array<double, 21> points;
        std::array<uint8_t, 7> removed;
        points.fill(9);
        removed.fill(9);
        korvale_border border = {points.data(), removed.data(), nullptr, 7, 7, 7, 7};
        korvale_error error;
        const korvale_status status = korvale_offset(&outline, 1, nullptr, &border, &error);
        if (status == KORVALE_OK)
            return;
        EXPECT_EQ(status, KORVALE_NO_MEMORY);
        EXPECT_STREQ(error.text, "korvale_offset: the heap is exhausted");
        EXPECT_THAT(points, testing::Each(9));
        EXPECT_THAT(removed, testing::Each(9));
        EXPECT_EQ(border.count, 7);
    });
    EXPECT_GE(failed, 3); // numbers, flags, links
}

// ---- Many outlines

struct Offsetter {
    korvale_offsetter* handle;
    Offsetter() { EXPECT_EQ(korvale_offsetter_new(&handle, nullptr), KORVALE_OK); }
    ~Offsetter() { korvale_offsetter_free(handle); }
    Offsetter(const Offsetter&) = delete;
    Offsetter& operator=(const Offsetter&) = delete;

    korvale_status run(const std::vector<Numbers>& outlines, double distance, double height = 0,
                       korvale_error* error = nullptr)
    {
        std::vector<korvale_points> points;
        for (const Numbers& outline : outlines)
            points.push_back(points_of(outline));
        const korvale_offset_options options = offset_options(height);
        return korvale_offsetter_run(handle, points.data(), static_cast<int64_t>(points.size()), distance, &options,
                                     error);
    }
    Numbers border(int64_t k) const
    {
        const korvale_border border = korvale_offsetter_border(handle, k);
        return {border.points, border.points + 3 * border.count};
    }
};

TEST(DoorOffsetter, GrowsTheOutlineAndShrinksItsHoles)
{
    Offsetter offsetter;
    Numbers clockwise;
    for (size_t i = 4; i-- > 0;)
        clockwise.insert(clockwise.end(), {kHole[3 * i], kHole[3 * i + 1], 0});
    ASSERT_EQ(offsetter.run({kSquare, kHole, clockwise}, 0.5, 2), KORVALE_OK);
    EXPECT_EQ(korvale_offsetter_count(offsetter.handle), 3);
    expect_near(offsetter.border(0), {-0.5, -0.5, 2, 4.5, -0.5, 2, 4.5, 4.5, 2, -0.5, 4.5, 2});
    expect_near(offsetter.border(1), {1.5, 1.5, 2, 2.5, 1.5, 2, 2.5, 2.5, 2, 1.5, 2.5, 2});
    expect_near(offsetter.border(2), {1.5, 2.5, 2, 2.5, 2.5, 2, 2.5, 1.5, 2, 1.5, 1.5, 2});
    const korvale_border hole = korvale_offsetter_border(offsetter.handle, 1);
    EXPECT_EQ(hole.vertices, 4);
    EXPECT_EQ(hole.removed[3], 0);
    EXPECT_EQ(hole.merged_into[3], 3);
    EXPECT_EQ(hole.collapsed, 0);
}

TEST(DoorOffsetter, KeepsItsArrays)
{
    Offsetter offsetter;
    ASSERT_EQ(offsetter.run({kNotched}, 1), KORVALE_OK);
    const double* const first = korvale_offsetter_border(offsetter.handle, 0).points;
    const HeapWatch heap;
    ASSERT_EQ(offsetter.run({kSquare}, 1), KORVALE_OK);
    EXPECT_EQ(korvale_offsetter_border(offsetter.handle, 0).points, first);
    if (heap_can_fail()) {
        EXPECT_EQ(heap.allocations(), 0);
    }
    EXPECT_EQ(offsetter.border(0), moved(kSquare, 1).points);
}

TEST(DoorOffsetter, HandsBordersOver)
{
    Offsetter offsetter;
    ASSERT_EQ(offsetter.run({kSquare, kHole}, 0.5), KORVALE_OK);
    const Numbers expected = offsetter.border(1);
    const korvale_border taken = korvale_offsetter_take(offsetter.handle, 1);
    EXPECT_THAT(Numbers(taken.points, taken.points + 12), ElementsAreArray(expected));
    EXPECT_EQ(taken.count, 4);
    EXPECT_EQ(korvale_offsetter_border(offsetter.handle, 1).points, nullptr);
    EXPECT_EQ(korvale_offsetter_take(offsetter.handle, 1).points, nullptr);
    EXPECT_EQ(offsetter.border(0).size(), 12u);
    std::free(taken.points);
    std::free(taken.removed);
    std::free(taken.merged_into);
    ASSERT_EQ(offsetter.run({kSquare, kHole}, 0.5), KORVALE_OK);
    EXPECT_EQ(offsetter.border(1), expected);
}

TEST(DoorOffsetter, ShowsNoBorderWhereThereIsNone)
{
    Offsetter offsetter;
    EXPECT_EQ(korvale_offsetter_count(offsetter.handle), 0);
    EXPECT_EQ(korvale_offsetter_count(nullptr), 0);
    EXPECT_EQ(korvale_offsetter_border(nullptr, 0).points, nullptr);
    ASSERT_EQ(offsetter.run({kSquare}, 1), KORVALE_OK);
    for (const int64_t k : {-1, 1, 1000}) {
        const korvale_border border = korvale_offsetter_border(offsetter.handle, k);
        EXPECT_EQ(border.points, nullptr);
        EXPECT_EQ(border.count, 0);
        EXPECT_EQ(border.vertices, 0);
    }
    korvale_offsetter_free(nullptr);
}

TEST(DoorOffsetter, ARefusalLeavesTheBordersBefore)
{
    Offsetter offsetter;
    ASSERT_EQ(offsetter.run({kSquare}, 1), KORVALE_OK);
    korvale_error error;
    EXPECT_EQ(offsetter.run({kSquare, {1, 1, 0}}, 1, 0, &error), KORVALE_BAD_ARGUMENT);
    EXPECT_STREQ(error.text, "korvale_offsetter_run: outline 1 must have at least 3 points, but it has 1");
    EXPECT_EQ(offsetter.run({{1, 1, 0}}, 1, 0, &error), KORVALE_BAD_ARGUMENT);
    EXPECT_STREQ(error.argument, "outline 0");
    EXPECT_EQ(offsetter.run({}, 1, 0, &error), KORVALE_BAD_ARGUMENT);
    EXPECT_STREQ(error.text, "korvale_offsetter_run: outlines must have an outer outline, but there is none");
    EXPECT_EQ(offsetter.run({kSquare}, NAN, 0, &error), KORVALE_BAD_ARGUMENT);
    EXPECT_STREQ(error.text, "korvale_offsetter_run: distance must be finite, but it is nan");
    EXPECT_EQ(korvale_offsetter_run(offsetter.handle, nullptr, 1, 1, nullptr, &error), KORVALE_BAD_ARGUMENT);
    EXPECT_STREQ(error.text, "korvale_offsetter_run: outlines must be given, but it is null");
    EXPECT_EQ(korvale_offsetter_run(nullptr, nullptr, 1, 1, nullptr, &error), KORVALE_BAD_ARGUMENT);
    EXPECT_STREQ(error.text, "korvale_offsetter_run: offsetter must be given, but it is null");
    EXPECT_EQ(offsetter.border(0), moved(kSquare, 1).points);
    EXPECT_EQ(korvale_offsetter_new(nullptr, &error), KORVALE_BAD_ARGUMENT);
    EXPECT_STREQ(error.text, "korvale_offsetter_new: offsetter must be given, but it is null");
}

TEST(DoorOffsetter, AnExhaustedHeapLeavesNoBorders)
{
    NEEDS_HEAP_FAILURES();
    const std::array<korvale_points, 2> outlines = {points_of(kSquare), points_of(kNotched)};
    const int64_t failed = fail_each_allocation([&](int64_t) {
        korvale_offsetter* offsetter = nullptr;
        korvale_error error;
        if (korvale_offsetter_new(&offsetter, &error) != KORVALE_OK) {
            EXPECT_EQ(offsetter, nullptr);
            return;
        }
        const korvale_status status = korvale_offsetter_run(offsetter, outlines.data(), 2, 1, nullptr, &error);
        EXPECT_EQ(korvale_offsetter_count(offsetter), status == KORVALE_OK ? 2 : 0);
        EXPECT_EQ(korvale_offsetter_border(offsetter, 0).points == nullptr, status != KORVALE_OK);
        korvale_offsetter_free(offsetter);
    });
    EXPECT_GE(failed, 10); // the handle, views and borders, work and results of two
}

} // namespace
} // namespace korvale::test
