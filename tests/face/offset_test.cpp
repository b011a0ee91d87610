// Offsets of the C++ face: results to expect, and what is told of those that are empty or inside out.
#include "direct.h"

#include "tests/support/heap.h"

namespace korvale::test {
namespace {

const Outline kSquare = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}};
const std::vector<Outline> kPlate = {{{0, 0, 0}, {10, 0, 0}, {10, 10, 0}, {0, 10, 0}},
                                     {{3, 3, 0}, {7, 3, 0}, {7, 7, 0}, {3, 7, 0}}};
// Moved in by d, the tip of the notch is at 1.5 - 1.25 d and the foot at d: they meet at 2/3. Without splits the area
// is 72 - 51 d + 5.25 d^2, nothing at 12/7. The sides vanish at 2.5, the other three edges never.
const Outline kNotched = {{0, 0, 0}, {16, 0, 0}, {16, 7.5, 0}, {8, 1.5, 0}, {0, 7.5, 0}};

void expect_near(std::span<const Point> points, const Outline& expected)
{
    ASSERT_EQ(points.size(), expected.size());
    for (size_t i = 0; i < points.size(); ++i)
        for (size_t k = 0; k < 3; ++k)
            EXPECT_NEAR(points[i][k], expected[i][k], 1e-14) << i; // below 16: rounded by 9e-16 a few times
}

TEST(FaceOffset, GrowsASquareByHalfAUnit)
{
    const Offset border = offset(kSquare, 0.5);
    expect_near(border.points, {{-0.5, -0.5, 0}, {4.5, -0.5, 0}, {4.5, 4.5, 0}, {-0.5, 4.5, 0}});
    EXPECT_FALSE(border.collapsed);
    EXPECT_EQ(std::vector<int>(border.removed.begin(), border.removed.end()), (std::vector<int>{0, 0, 0, 0}));
    EXPECT_EQ(std::vector<int>(border.merged_into.begin(), border.merged_into.end()), (std::vector<int>{0, 1, 2, 3}));
}

TEST(FaceOffset, GrowsEitherWayRound)
{
    const Outline clockwise(kSquare.rbegin(), kSquare.rend());
    expect_near(offset(clockwise, 0.5).points, {{-0.5, 4.5, 0}, {4.5, 4.5, 0}, {4.5, -0.5, 0}, {-0.5, -0.5, 0}});
}

TEST(FaceOffset, TellsThatNothingIsLeft)
{
    EXPECT_FALSE(offset(kSquare, -1.99).collapsed);
    EXPECT_TRUE(offset(kSquare, -2.0).collapsed); // four live points within rounding of each other
    EXPECT_TRUE(offset(kSquare, -2.5).collapsed);
    EXPECT_TRUE(offset(kSquare, -2.5, {.keep_vertices = false}).collapsed);
    EXPECT_TRUE(offset({{0, 0, 0}, {4, 0, 0}, {4, 2, 0}, {0, 2, 0}}, -1).collapsed); // a ridge is left
    EXPECT_TRUE(offset({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}}, 1).collapsed);             // a straight line has no inside
}

TEST(FaceOffset, TellsThatAnOutlineWithoutSplitsHasTurnedInsideOut)
{
    const Offset border = offset(kNotched, -4, {.split = false});
    expect_near(border.points, {{-2, 4, 0}, {18, 4, 0}, {18, 4, 0}, {8, -3.5, 0}, {-2, 4, 0}});
    EXPECT_TRUE(border.collapsed);
    EXPECT_TRUE(offset(kNotched, -4, {.height = 3, .keep_vertices = false, .split = false}).collapsed);
    EXPECT_TRUE(offset(Outline(kNotched.rbegin(), kNotched.rend()), -4, {.split = false}).collapsed);
    EXPECT_FALSE(offset(kNotched, -0.5, {.split = false}).collapsed);
    EXPECT_FALSE(offset(kNotched, -1.71, {.split = false}).collapsed); // the lobes at the sides outweigh the rest
    EXPECT_TRUE(offset(kNotched, -1.72, {.split = false}).collapsed);
    EXPECT_FALSE(offset(kNotched, 4, {.split = false}).collapsed);
}

TEST(FaceOffset, NothingIsLeftOfAnOutlineMovedInFurtherThanItIsWide)
{
    Random random(1203);
    for (int round = 0; round < rounds(500); ++round) {
        Outline outline = random_outline(random, random.between(3, 40), 0, 0, 10);
        if (random.one_in(2))
            std::ranges::reverse(outline);
        random_placement(random).apply(outline);
        for (const bool split : {false, true}) {
            const double distance = random.uniform(10, 25);
            EXPECT_TRUE(offset(outline, -distance, {.split = split}).collapsed) << "round " << round;
            EXPECT_FALSE(offset(outline, distance, {.split = split}).collapsed) << "round " << round;
        }
    }
}

TEST(FaceOffset, AnOutlineWhosePartsCancelTurnsNoWay)
{
    Random random(1204);
    for (int round = 0; round < rounds(50); ++round) {
        Outline eight = {{0, 0, 0}, {4, 4, 0}, {4, 0, 0}, {0, 4, 0}};
        random_placement(random).apply(eight);
        for (const double distance : {-0.5, 0.5})
            EXPECT_FALSE(offset(eight, distance, {.split = false}).collapsed) << "round " << round;
    }
}

TEST(FaceOffset, LeavesRemovedVerticesOutWhenAsked)
{
    const Outline notched = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {2.1, 4, 0}, {2, 3.9, 0}, {1.9, 4, 0}, {0, 4, 0}};
    const Offset kept = offset(notched, 1), dropped = offset(notched, 1, {.keep_vertices = false});
    EXPECT_EQ(kept.points.size(), 7u);
    size_t live = 0;
    for (size_t i = 0; i < 7; ++i)
        if (kept.removed[i] == 0) {
            EXPECT_EQ(dropped.points[live++], kept.points[i]);
        }
    EXPECT_EQ(live, dropped.points.size());
    EXPECT_LT(live, 7u);
}

TEST(FaceOffset, IsBORDERToTheBit)
{
    Random random(1201);
    for (int round = 0; round < rounds(200); ++round) {
        Outline outline = random_outline(random, random.between(3, 40), 0, 0, 10);
        random_placement(random).apply(outline);
        const double distance = random.uniform(-8, 8), height = random.one_in(2) ? 0 : random.uniform(-5, 5);
        const bool keep = random.one_in(2), split = random.one_in(2);
        const DirectBorder direct = border_by_record(outline, distance, height, keep, split);
        const Offset border = offset(outline, distance, {height, keep, split});
        ASSERT_TRUE(same_bits(direct.border, coordinates(border.points)));
        ASSERT_EQ(direct.dead, std::vector<int>(border.removed.begin(), border.removed.end()));
        ASSERT_EQ(direct.merge, std::vector<int>(border.merged_into.begin(), border.merged_into.end()));
    }
}

TEST(FaceOffset, OfAShapeIsBORDEROnAListToTheBit)
{
    Random random(1202);
    for (int round = 0; round < rounds(100); ++round) {
        std::vector<Outline> shape = {random_outline(random, random.between(8, 40), 0, 0, 30)};
        for (int hole = random.between(0, 3); hole > 0; --hole) {
            shape.push_back(random_outline(random, random.between(3, 12), 8.0 * hole - 16, 0, 3));
            if (random.one_in(2))
                std::ranges::reverse(shape.back());
        }
        const Transform placement = random_placement(random);
        for (Outline& outline : shape)
            placement.apply(outline);
        const double distance = random.uniform(-4, 4), height = random.uniform(-5, 5);
        const bool keep = random.one_in(2), split = random.one_in(2);
        const auto direct = borders_by_record(shape, distance, height, keep, split);
        const auto borders = offset(shape, distance, {height, keep, split});
        ASSERT_EQ(direct.size(), borders.size());
        for (size_t k = 0; k < direct.size(); ++k)
            ASSERT_TRUE(same_bits(direct[k], coordinates(borders[k].points)));
    }
}

TEST(FaceOffset, GrowsThePlateAndShrinksItsHole)
{
    const auto borders = offset(kPlate, 1, {.height = 2});
    ASSERT_EQ(borders.size(), 2u);
    expect_near(borders[0].points, {{-1, -1, 2}, {11, -1, 2}, {11, 11, 2}, {-1, 11, 2}});
    expect_near(borders[1].points, {{4, 4, 2}, {6, 4, 2}, {6, 6, 2}, {4, 6, 2}});
    EXPECT_TRUE(offset(kPlate, 2.5)[1].collapsed);
    EXPECT_FALSE(offset(kPlate, 2.5)[0].collapsed);
}

TEST(FaceOffset, ReadsPointsOfAnyTypeInPlace)
{
    struct Vertex {
        double x, y, z;
    };
    const Vertex vertices[] = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}};
    const std::vector<double> flat = {0, 0, 0, 4, 0, 0, 4, 4, 0, 0, 4, 0};
    EXPECT_EQ(PointView(vertices).data(), &vertices[0].x);
    EXPECT_EQ(PointView(flat).data(), flat.data());
    const auto expected = coordinates(offset(kSquare, 1).points);
    EXPECT_EQ(coordinates(offset(vertices, 1).points), expected);
    EXPECT_EQ(coordinates(offset(flat, 1).points), expected);
    EXPECT_EQ(coordinates(offset({{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}}, 1).points), expected);
}

TEST(FaceOffsetter, ReusesItsArrays)
{
    Offsetter offsetter;
    const double* const first = offsetter(kSquare, 0.5).points()[0].data();
    EXPECT_EQ(offsetter(kSquare, 1).points()[0].data(), first);
    EXPECT_EQ(offsetter.points()[2], (Point{5, 5, 0}));
    EXPECT_EQ(offsetter.removed().size(), 4u);
    EXPECT_EQ(offsetter.merged_into()[3], 3);
    const Offset taken = offsetter.take();
    EXPECT_EQ(taken.points.data()->data(), first);
    EXPECT_EQ(offsetter(kSquare, 2).points()[2], (Point{6, 6, 0}));
    EXPECT_EQ(taken.points[2], (Point{5, 5, 0}));
}

void expect_nothing(Offsetter& offsetter)
{
    EXPECT_TRUE(offsetter.points().empty());
    EXPECT_TRUE(offsetter.removed().empty());
    EXPECT_TRUE(offsetter.merged_into().empty());
    EXPECT_TRUE(offsetter.collapsed());
    const Offset taken = offsetter.take();
    EXPECT_TRUE(taken.points.empty());
    EXPECT_TRUE(taken.removed.empty());
    EXPECT_TRUE(taken.merged_into.empty());
    EXPECT_TRUE(taken.collapsed);
}

TEST(FaceOffsetter, ShowsNothingBeforeItsFirstOutlineAndOnceItsResultIsTaken)
{
    Offsetter offsetter;
    expect_nothing(offsetter);
    EXPECT_FALSE(offsetter(kSquare, 1).collapsed());
    EXPECT_EQ(offsetter.take().points.size(), 4u);
    expect_nothing(offsetter);
    expect_nothing(offsetter);
    EXPECT_EQ(offsetter(kSquare, 1).points()[2], (Point{5, 5, 0}));
}

TEST(FaceOffsetter, OfAShapeHandsAllBordersOverAndShowsNothing)
{
    Offsetter offsetter;
    offsetter(kSquare, 1);
    const std::vector<Offset> borders = offsetter.shape(kPlate, 1, {.height = 2});
    ASSERT_EQ(borders.size(), 2u);
    expect_near(borders[0].points, {{-1, -1, 2}, {11, -1, 2}, {11, 11, 2}, {-1, 11, 2}});
    expect_near(borders[1].points, {{4, 4, 2}, {6, 4, 2}, {6, 6, 2}, {4, 6, 2}});
    EXPECT_EQ(borders[1].removed.size(), 4u);
    EXPECT_EQ(borders[1].merged_into[3], 3);
    expect_nothing(offsetter);
    EXPECT_EQ(offsetter(kSquare, 1).points().size(), 4u);
}

TEST(FaceOffsetter, ShowsTheBorderBeforeWhereAnOutlineIsRefused)
{
    Offsetter offsetter;
    offsetter(kSquare, 1);
    EXPECT_THROW(offsetter({{0, 0, 0}}, 1), Error);
    EXPECT_EQ(offsetter.points()[2], (Point{5, 5, 0}));
}

TEST(FaceOffsetter, ShowsNothingAfterTheHeapWasExhausted)
{
    NEEDS_HEAP_FAILURES();
    int64_t failed = 0;
    for (bool happened = true; happened; ++failed) {
        Offsetter offsetter;
        offsetter(kSquare, 1);
        bool threw = false;
        {
            const HeapFailure failure(failed + 1, HeapFailure::all_after);
            try {
                offsetter(kNotched, 1); // more vertices, so every array grows
            } catch (const std::bad_alloc&) {
                threw = true;
            }
            happened = failure.happened();
        }
        EXPECT_EQ(threw, happened);
        if (threw)
            expect_nothing(offsetter);
    }
    EXPECT_EQ(failed, 3 + 3 + 1); // work arrays, the border
}

TEST(FaceOffsetter, LeavesNothingBehindInAnyOrderOfCalls)
{
    NEEDS_HEAP_COUNTS();
    Random random(1205);
    for (int round = 0; round < rounds(100); ++round) {
        offset(kNotched, 1); // the library keeps its working memory
        const HeapWatch heap;
        {
            Offsetter offsetter;
            std::vector<Offset> taken;
            for (int call = random.between(0, 8); call > 0; --call) {
                const OffsetOptions options = {0.0, random.one_in(2), random.one_in(2)};
                switch (random.below(4)) {
                case 0:
                    offsetter.shape(random.one_in(2) ? kPlate : std::vector<Outline>{kNotched}, 1, options);
                    break;
                case 1:
                    taken.push_back(offsetter.take());
                    break;
                default:
                    offsetter(random.one_in(2) ? kSquare : kNotched, random.uniform(-5, 5), options);
                }
            }
        }
        EXPECT_EQ(heap.live_blocks(), 0) << "round " << round;
    }
}

TEST(FaceOffset, SaysWhatItRefuses)
{
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(refusal_of([] {
                  offset({{0, 0, 0}, {1, 0, 0}}, 1);
              }),
              "offset: outline must have at least 3 points, but it has 2");
    EXPECT_EQ(refusal_of([&] {
                  offset({{0, 0, 0}, {1, nan, 0}, {0, 1, 0}}, 1);
              }),
              "offset: outline must be finite, but its point 1 is (1, nan, 0)");
    EXPECT_EQ(refusal_of([&] { offset(kSquare, nan); }), "offset: distance must be finite, but it is nan");
    EXPECT_EQ(refusal_of([&] { offset(kSquare, 1, {.height = nan}); }),
              "offset: options.height must be finite, but it is nan");
    EXPECT_EQ(refusal_of([&] { offset(std::vector<Outline>{}, 1); }),
              "offset: outlines must have an outer outline, but there is none");
    EXPECT_EQ(refusal_of([&] {
                  offset(std::vector<Outline>{kSquare, {{1, 1, 0}}}, 1);
              }),
              "offset: outline 1 must have at least 3 points, but it has 1");
    EXPECT_EQ(refusal_of([] {
                  offset(std::vector<double>{1, 2, 3, 4}, 1);
              }),
              "points: the coordinates must come in threes, but there are 4");
    try {
        offset(kSquare, nan);
        FAIL();
    } catch (const Error& error) {
        EXPECT_EQ(error.function(), "offset");
        EXPECT_EQ(error.argument(), "distance");
    }
}

// ---- Many outlines

/// What `offset` gives of an outline alone, against outline k of many whose first vertex is number `start`.
void expect_alone(const Borders& many, std::size_t k, const Offset& alone, std::size_t start, std::size_t vertices)
{
    EXPECT_TRUE(std::ranges::equal(many[k], alone.points)) << k;
    EXPECT_EQ(many.collapsed[k] != 0, alone.collapsed) << k;
    for (std::size_t i = 0; i < vertices; ++i) {
        const std::size_t v = start + i - many.first;
        EXPECT_EQ(many.removed[v], alone.removed[i]) << k;
        EXPECT_EQ(many.merged_into[v], static_cast<int>(start) + alone.merged_into[i]) << k;
    }
}

TEST(FaceOffsetRings, GivesEveryPiece)
{
    // Two squares of side 4 with a waist of 1 between them, which is narrowest in the middle.
    const Outline waist = {{0, 0, 0},  {4, 0, 0}, {4, 1.5, 0}, {5, 1.6, 0}, {6, 1.5, 0}, {6, 0, 0}, {10, 0, 0},
                           {10, 4, 0}, {6, 4, 0}, {6, 2.5, 0}, {5, 2.4, 0}, {4, 2.5, 0}, {4, 4, 0}, {0, 4, 0}};
    const Rings rings = offset_rings(waist, -1, {.height = 2});
    std::size_t left = 0;
    for (std::size_t k = 0; k < rings.size(); ++k) {
        left += !rings.collapsed[k];
        EXPECT_EQ(rings[k].empty(), rings.collapsed[k] != 0);
        for (const Point& p : rings[k])
            EXPECT_EQ(p[2], 2);
    }
    EXPECT_EQ(left, 2u);
    EXPECT_EQ(rings.parents[0], -1);
    EXPECT_EQ(rings.parents[1], 0);
    EXPECT_LT(rings.births[1], -0.39);
    EXPECT_EQ(rings.ends[0], -1);
    const Points plain = offset(waist, -1, {.height = 2, .keep_vertices = false}).points;
    EXPECT_TRUE(std::ranges::equal(rings[0], plain));
    EXPECT_EQ(rings.clone(), rings);
    EXPECT_NE(offset_rings(waist, -0.25), rings);
    EXPECT_EQ(offset_rings(waist, -1, {.split = false}).size(), 1u);
    EXPECT_EQ(refusal_of([] {
                  offset_rings(Outline{{0, 0, 0}, {1, 0, 0}}, 1);
              }),
              "offset_rings: outline must have at least 3 points, but it has 2");
    EXPECT_EQ(try_offset_rings(waist, NAN).error().what(),
              std::string("offset_rings: distance must be finite, but it is nan"));
}

TEST(FaceOffsetRings, OfManyDistancesAreThoseOfEachAlone)
{
    const Outline waist = {{0, 0, 0},  {4, 0, 0}, {4, 1.5, 0}, {5, 1.6, 0}, {6, 1.5, 0}, {6, 0, 0}, {10, 0, 0},
                           {10, 4, 0}, {6, 4, 0}, {6, 2.5, 0}, {5, 2.4, 0}, {4, 2.5, 0}, {4, 4, 0}, {0, 4, 0}};
    const std::vector<double> distances = {-1, 0.5, -3, 0, -0.25, -1};
    const OffsetOptions options = {.height = 2, .join = Join::bevel};
    const std::vector<Rings> rings = offset_rings(waist, distances, options);
    ASSERT_EQ(rings.size(), distances.size());
    for (std::size_t i = 0; i < distances.size(); ++i)
        EXPECT_EQ(rings[i], offset_rings(waist, distances[i], options)) << i;
    EXPECT_EQ(rings[0].parents[1], 0);
    EXPECT_EQ(rings[5].parents[1], 0);
    EXPECT_EQ(offset_rings(waist, {-1, 2}).size(), 2u);
    EXPECT_EQ(offset_rings(waist, std::vector<float>{-1}).front(), offset_rings(waist, -1));
    EXPECT_TRUE(offset_rings(waist, std::vector<double>()).empty());
    EXPECT_EQ(refusal_of([&] {
                  offset_rings(waist, {1, INFINITY});
              }),
              "offset_rings: distances must be finite, but number 1 is inf");
}

TEST(FaceOffsetMany, GivesWhatEachOutlineGivesAlone)
{
    Random random(1221);
    for (int round = 0; round < rounds(30); ++round) {
        std::vector<Outline> outlines;
        Outline flat = {{9, 9, 9}};
        std::vector<std::uint16_t> starts = {1};
        std::vector<double> distances;
        for (int k = random.below(20); k > 0; --k) {
            outlines.push_back(random_outline(random, random.between(3, 40), random.uniform(-9, 9), 0, 5));
            flat.insert(flat.end(), outlines.back().begin(), outlines.back().end());
            starts.push_back(static_cast<std::uint16_t>(flat.size()));
            distances.push_back(random.uniform(-2, 2));
        }
        const OffsetOptions options = {.height = 1, .keep_vertices = random.one_in(2)};
        const Borders many = offset_many(flat, starts, distances, options);
        const Borders apart = offset_many(outlines, distances, options), one = offset_many(outlines, 0.5, options);
        ASSERT_EQ(many.size(), outlines.size());
        EXPECT_EQ(many.first, 1u);
        EXPECT_EQ(apart.first, 0u);
        EXPECT_EQ(apart.points, many.points);
        EXPECT_EQ(apart.clone(), apart);
        std::size_t start = 0;
        for (std::size_t k = 0; k < outlines.size(); ++k) {
            const std::size_t n = outlines[k].size();
            expect_alone(many, k, offset(outlines[k], distances[k], options), start + 1, n);
            expect_alone(apart, k, offset(outlines[k], distances[k], options), start, n);
            expect_alone(one, k, offset(outlines[k], 0.5, options), start, n);
            start += n;
        }
    }
}

TEST(FaceOffset, JoinsCorners)
{
    const auto sources_of = [](const Offset& border) {
        return std::vector<int>(border.sources.begin(), border.sources.end());
    };
    const Offset bevelled = offset(kSquare, 1, {.join = Join::bevel});
    expect_near(bevelled.points,
                {{-1, 0, 0}, {0, -1, 0}, {4, -1, 0}, {5, 0, 0}, {5, 4, 0}, {4, 5, 0}, {0, 5, 0}, {-1, 4, 0}});
    EXPECT_EQ(sources_of(bevelled), (std::vector<int>{0, 0, 1, 1, 2, 2, 3, 3}));
    EXPECT_EQ(bevelled.clone(), bevelled);
    EXPECT_EQ(offset(kSquare, 1, {.join = Join::round, .tolerance = 0.1}).points.size(), 8u);
    EXPECT_EQ(offset(kSquare, 1, {.miter_limit = 1}).points.size(), 8u);
    EXPECT_TRUE(offset(kSquare, 1).sources.empty());
    const Join each[] = {Join::bevel, Join::miter, Join::miter, Join::round};
    EXPECT_EQ(sources_of(offset(kSquare, 1, {.tolerance = 0.1, .corner_joins = each})),
              (std::vector<int>{0, 0, 1, 2, 3, 3}));
    const std::vector<Offset> plate = offset(kPlate, 1, {.join = Join::bevel});
    EXPECT_EQ(sources_of(plate[0]).size(), 8u);
    EXPECT_EQ(sources_of(plate[1]), (std::vector<int>{0, 1, 2, 3}));
    EXPECT_EQ(offset_many(kPlate, {1, -1}, {.join = Join::bevel}).points.size(), 12u);
    EXPECT_EQ(offset_rings(kSquare, 1, {.join = Join::bevel}).points, bevelled.points);

    Offsetter offsetter;
    EXPECT_EQ(offsetter(kSquare, 1, {.join = Join::bevel}).sources().size(), 8u);
    EXPECT_TRUE(offsetter(kSquare, 1).sources().empty());
    EXPECT_EQ(refusal_of([] { offset(kSquare, 1, {.miter_limit = 0.5}); }),
              "offset: options.miter_limit must be 1 or more, or 0 for none, but it is 0.5");
}

TEST(FaceOffsetMany, TakesListsFloatsAndPointsWrittenOut)
{
    const Borders written = offset_many({{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}}, {0, 4}, {0.5});
    expect_near(written[0], {{-0.5, -0.5, 0}, {4.5, -0.5, 0}, {4.5, 4.5, 0}, {-0.5, 4.5, 0}});
    const std::vector<std::array<float, 2>> floats = {{0, 0}, {4, 0}, {4, 4}, {0, 4}};
    EXPECT_EQ(offset_many(floats, std::vector<int>{0, 4}, 0.5), written);
    const std::vector<std::vector<std::array<float, 2>>> apart = {floats, floats};
    const Borders two = offset_many(apart, {0.5, -0.5}, {.height = 2});
    expect_near(two[1], {{0.5, 0.5, 2}, {3.5, 0.5, 2}, {3.5, 3.5, 2}, {0.5, 3.5, 2}});
    EXPECT_EQ(std::vector<int>(two.sources.begin(), two.sources.end()), (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(offset_many(std::vector<Outline>{}, 1).size(), 0u);
}

TEST(FaceOffsetMany, SaysWhatItRefusesAndStops)
{
    EXPECT_EQ(refusal_of([] {
                  offset_many(kSquare, {0, 2, 4}, 1);
              }),
              "offset_many: outline 0 must have at least 3 points, but it has 2");
    EXPECT_EQ(refusal_of([] {
                  offset_many({kSquare, kSquare}, {1, 2, 3});
              }),
              "offset_many: distances must have 1 value, or 2, one for each outline, but they have 3");
    const Result<Borders> none = try_offset_many({kSquare, {{0, 0, 0}}}, 1);
    ASSERT_FALSE(none);
    EXPECT_EQ(none.error().argument(), "outline 1");
    const std::vector<Outline> many(2000, kSquare);
    const Result<Borders> stopped = try_offset_many(many, 1, {.progress = {[](double) { return false; }}});
    ASSERT_FALSE(stopped);
    EXPECT_EQ(stopped.error().status(), KORVALE_STOPPED);
}

} // namespace
} // namespace korvale::test
