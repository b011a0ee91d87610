// Points scattered over triangles.
#include <korvale.h>

#include <algorithm>
#include <cmath>
#include <thread>

#include <gmock/gmock.h>

#include "support.h"
#include "tests/reference/sampling.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

using testing::AnyOf;
using testing::Each;
using testing::ElementsAre;

// A unit square of two triangles, and a third of ten times their area beside it.
const std::vector<double> kPoints = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 5, 0, 1, 5, 4, 1, 10, 0, 1};
const std::vector<int32_t> kCorners = {0, 1, 2, 0, 2, 3, 4, 5, 6};

korvale_indices indices_of(const std::vector<int32_t>& numbers)
{
    return {numbers.data(), static_cast<int64_t>(numbers.size()), 0, KORVALE_INT32};
}

korvale_triangles mesh()
{
    return {points_of(kPoints), indices_of(kCorners)};
}

std::vector<double> corners_of_mesh()
{
    std::vector<double> corners;
    for (const int32_t c : kCorners)
        corners.insert(corners.end(), kPoints.begin() + 3 * c, kPoints.begin() + 3 * c + 3);
    return corners;
}

DATAstruct record_of(std::vector<double>& values, int32_t dim)
{
    DATAstruct d;
    DATAInitialize(&d);
    d.type = DATA_TYPE_DOUBLE;
    d.dim = dim;
    d.count = static_cast<int32_t>(values.size()) / dim;
    d.dvals = values.data();
    return d;
}

/// `n` triangles side by side along x, all of height 1, as wide as told.
template <class Width>
std::vector<double> row_of(int n, Width width)
{
    std::vector<double> corners;
    for (int i = 0; i < n; ++i)
        for (const double c : {1.0 * i, 0.0, 0.0, i + width(i), 0.0, 0.0, 1.0 * i, 1.0, 0.0})
            corners.push_back(c);
    return corners;
}

TEST(Scatter, MakesThePointsOfTheArraySamplingWhereStepsOfADrawAreWithinTriangles)
{
    for (const int n : {1, 2, 64, 32768}) { // each of so many steps of 1/32768 of the area
        std::vector<double> corners = row_of(n, [](int) { return 1.0; }), values;
        for (int i = 0; i < 6 * n; ++i)
            values.push_back(static_cast<double>(int64_t{i} * i % 101));
        for (const int32_t count : {1, 33, 20000}) {
            std::vector<double> plain(3 * static_cast<size_t>(count)), carried(2 * static_cast<size_t>(count));
            std::vector<double> points(plain.size()), blended(carried.size());
            DATAstruct from = record_of(corners, 9), to = record_of(plain, 3), at = record_of(values, 2),
                       out = record_of(carried, 2);
            DATATriSample(&from, 4000000000u, &to, &at, &out);

            const korvale_triangles triangles = {points_of(corners), {}};
            const korvale_points_out output = points_to(points);
            const korvale_numbers attributes = rows_of(values, 2);
            const korvale_numbers_out results = rows_to(blended, 2);
            ASSERT_EQ(
                korvale_scatter(&triangles, 4000000000u, nullptr, &output, nullptr, &attributes, &results, nullptr),
                KORVALE_OK);
            EXPECT_TRUE(same_bits(plain, points)) << n;
            EXPECT_TRUE(same_bits(carried, blended)) << n;
        }
    }
}

TEST(Scatter, TakesTheStepsWrittenOutPlainly)
{
    Random random(1107);
    for (int round = 0; round < rounds(300); ++round) {
        const int n = random.one_in(4) ? 1 : random.between(2, random.one_in(4) ? 3000 : 40);
        const int count = random.one_in(10) ? random.between(6000, 12000) : random.between(1, 80);
        std::vector<double> corners = random.uniforms(9 * static_cast<size_t>(n), -5, 5);
        const bool are_spread = random.one_in(2);
        for (int i = 0; i < n; ++i) {
            double* const t = &corners[static_cast<size_t>(9 * i)];
            if (i != n / 2 && random.one_in(5)) // no area
                std::copy_n(t, 3, t + 3);
            if (are_spread)
                for (int j = 0; j < 9; ++j)
                    t[j] = std::ldexp(t[j], random.between(-40, 40));
        }
        std::vector<double> weights = random.uniforms(random.one_in(2) ? static_cast<size_t>(n) : 0, 0, 3);
        for (size_t i = 0; i < weights.size(); ++i)
            if (i != static_cast<size_t>(n / 2) && random.one_in(3))
                weights[i] = 0;
        const std::vector<double> values = random.uniforms(6 * static_cast<size_t>(n), -1, 1);
        const auto seed = static_cast<uint32_t>(random.bits());
        const reference::Samples expected = reference::scatter_triangles(corners, weights, seed, count, values);

        std::vector<double> points(expected.points.size()), blended(expected.attributes.size());
        std::vector<int32_t> numbers(static_cast<size_t>(count));
        const korvale_triangles triangles = {points_of(corners), {}};
        const korvale_points_out output = points_to(points);
        const korvale_numbers attributes = rows_of(values, 2);
        const korvale_numbers_out results = rows_to(blended, 2);
        korvale_scatter_options options;
        korvale_scatter_defaults(&options, sizeof options);
        options.weights = rows_of(weights);
        ASSERT_EQ(korvale_scatter(&triangles, seed, &options, &output, numbers.data(), &attributes, &results, nullptr),
                  KORVALE_OK);
        ASSERT_EQ(numbers, expected.triangles) << "round " << round;
        ASSERT_TRUE(same_bits(expected.points, points)) << "round " << round;
        ASSERT_TRUE(same_bits(expected.attributes, blended)) << "round " << round;
    }
}

TEST(Scatter, DrawsEveryOfAHundredThousandTrianglesByItsArea)
{
    // Widths 1, 2 and 3 in turn: 33,334 + 2 * 33,333 + 3 * 33,333 = 199,999. Of 6 million points each unit gets some
    // 30, give or take 5.5, so that a triangle of width 1 is left out once in e^30, about 10^13, times.
    const std::vector<double> corners = row_of(100000, [](int i) { return 1.0 + i % 3; });
    const korvale_triangles triangles = {points_of(corners), {}};
    std::vector<double> points(600000);
    const korvale_points_out output = points_to(points);
    std::vector<int32_t> numbers(200000), times(100000);
    for (uint32_t seed = 1; seed <= 30; ++seed) {
        ASSERT_EQ(korvale_scatter(&triangles, seed, nullptr, &output, numbers.data(), nullptr, nullptr, nullptr),
                  KORVALE_OK);
        for (const int32_t number : numbers)
            ++times[static_cast<size_t>(number)];
    }
    double deviation = 0; // squares of those from the mean, each over the mean
    for (size_t i = 0; i < times.size(); ++i) {
        ASSERT_GT(times[i], 0) << i;
        const double mean = 6e6 / 199999 * (1.0 + static_cast<double>(i % 3));
        deviation += (times[i] - mean) * (times[i] - mean) / mean;
    }
    // By chance alone 99,999, give or take the root of twice that: 447. Five times that to either side.
    EXPECT_GT(deviation, 97764);
    EXPECT_LT(deviation, 102234);
}

TEST(Scatter, GivesATriangleWithoutAreaNoPoint)
{
    // Draw 0 would be the first triangle's, and one beyond all shares the last one's.
    const std::vector<double> corners = row_of(5, [](int i) { return i % 2 == 1 ? 1.0 : 0.0; });
    const korvale_triangles triangles = {points_of(corners), {}};
    std::vector<double> points(600000);
    std::vector<int32_t> numbers(200000);
    const korvale_points_out output = points_to(points);
    ASSERT_EQ(korvale_scatter(&triangles, 3, nullptr, &output, numbers.data(), nullptr, nullptr, nullptr), KORVALE_OK);
    EXPECT_THAT(numbers, Each(AnyOf(1, 3)));
    EXPECT_NEAR(static_cast<double>(std::count(numbers.begin(), numbers.end(), 1)), 100000, 1200); // 224 is usual
}

korvale_scatter_options weighed_by(const korvale_numbers& weights)
{
    korvale_scatter_options options;
    korvale_scatter_defaults(&options, sizeof options);
    options.weights = weights;
    return options;
}

TEST(Scatter, TakesWeightsTimesAreas)
{
    // Areas 0.5, 0.5, 10 and weights 6, 0, 0.3: chances 3, 0, 3. Then floats in steps of two, 1, 4, 0: 0.5, 2, 0.
    const korvale_triangles triangles = mesh();
    const std::vector<double> weights = {6, 0, 0.3};
    const float floats[] = {1, -7, 4, -7, 0};
    std::vector<double> points(300000);
    std::vector<int32_t> numbers(100000);
    const korvale_points_out output = points_to(points);
    korvale_scatter_options options = weighed_by(rows_of(weights));
    const auto times = [&](int32_t triangle) {
        return static_cast<double>(std::count(numbers.begin(), numbers.end(), triangle));
    };
    ASSERT_EQ(korvale_scatter(&triangles, 8, &options, &output, numbers.data(), nullptr, nullptr, nullptr), KORVALE_OK);
    EXPECT_NEAR(times(0), 50000, 800); // 158 is usual
    EXPECT_EQ(times(1), 0);
    EXPECT_NEAR(times(2), 50000, 800);
    options = weighed_by({floats, 3, 2 * sizeof(float), 1, KORVALE_FLOAT});
    ASSERT_EQ(korvale_scatter(&triangles, 8, &options, &output, numbers.data(), nullptr, nullptr, nullptr), KORVALE_OK);
    EXPECT_NEAR(times(0), 20000, 650); // 126 is usual
    EXPECT_NEAR(times(1), 80000, 650);
    EXPECT_EQ(times(2), 0);
}

TEST(Scatter, WeightsOfOneChangeNothing)
{
    const korvale_triangles triangles = mesh();
    const std::vector<double> ones(3, 1.0), twos(3, 2.0);
    std::vector<double> plain(3000), weighed(3000);
    const korvale_points_out to_plain = points_to(plain), to_weighed = points_to(weighed);
    ASSERT_EQ(korvale_scatter(&triangles, 8, nullptr, &to_plain, nullptr, nullptr, nullptr, nullptr), KORVALE_OK);
    for (const auto& weights : {ones, twos}) {
        const korvale_scatter_options options = weighed_by(rows_of(weights));
        weighed.assign(weighed.size(), 0.0);
        ASSERT_EQ(korvale_scatter(&triangles, 8, &options, &to_weighed, nullptr, nullptr, nullptr, nullptr),
                  KORVALE_OK);
        EXPECT_TRUE(same_bits(plain, weighed));
    }
}

TEST(Scatter, RefusesWeightsThatAreNone)
{
    const korvale_triangles triangles = mesh();
    std::vector<double> points = {7, 7, 7};
    const korvale_points_out output = points_to(points);
    const auto text = [&](const korvale_numbers& weights, const korvale_triangles& over) {
        const korvale_scatter_options options = weighed_by(weights);
        return sentence_of(KORVALE_BAD_ARGUMENT, [&](auto* e) {
            return korvale_scatter(&over, 1, &options, &output, nullptr, nullptr, nullptr, e);
        });
    };
    const std::vector<double> below = {1, -0.5, 1}, odd = {1, 1, NAN}, endless = {1, INFINITY, 1}, none = {0, 0, 0},
                              few = {1, 1}, huge = {1e308, 1e308, 1e308}, points_of_one = {3, 4, 5, 3, 4, 5, 3, 4, 5};
    const korvale_triangles flat = {points_of(points_of_one), {}};
    EXPECT_EQ(text(rows_of(below), triangles),
              "korvale_scatter: options.weights must be finite and 0 or more, but its row 1 is -0.5");
    EXPECT_EQ(text(rows_of(odd), triangles),
              "korvale_scatter: options.weights must be finite and 0 or more, but its row 2 is nan");
    EXPECT_EQ(text(rows_of(endless), triangles),
              "korvale_scatter: options.weights must be finite and 0 or more, but its row 1 is inf");
    EXPECT_EQ(text(rows_of(none), triangles),
              "korvale_scatter: options.weights must be above 0 for a triangle with an area, but it is for none");
    EXPECT_EQ(text(rows_of(huge), triangles),
              "korvale_scatter: options.weights must leave an area that is finite, but it is not");
    EXPECT_EQ(text(rows_of(few), triangles),
              "korvale_scatter: options.weights must have a row for each of 3 triangles, but it has 2");
    EXPECT_EQ(text(rows_of(kPoints, 7), triangles),
              "korvale_scatter: options.weights must have a width of 1, but it has 7");
    EXPECT_EQ(text({nullptr, 3, 0, 1, KORVALE_DOUBLE}, triangles),
              "korvale_scatter: options.weights must have data, but it is null");
    EXPECT_EQ(text({}, flat), "korvale_scatter: triangles must have an area, but it is 0");
    const std::vector<double> far = {0, 0, 0, 1e200, 0, 0, 0, 1e200, 0};
    EXPECT_EQ(text({}, {points_of(far), {}}),
              "korvale_scatter: triangles must leave an area that is finite, but it is not");
    EXPECT_THAT(points, ElementsAre(7, 7, 7));
}

TEST(Scatter, TellsOfManyPointsAndStopsWhenAsked)
{
    const korvale_triangles triangles = mesh();
    std::vector<double> points(3 * 65536), plain(3 * 65536);
    const korvale_points_out output = points_to(points), to_plain = points_to(plain);
    ASSERT_EQ(korvale_scatter(&triangles, 1, nullptr, &to_plain, nullptr, nullptr, nullptr, nullptr), KORVALE_OK);
    Told told;
    korvale_scatter_options options;
    korvale_scatter_defaults(&options, sizeof options);
    options.progress = &Told::tell;
    options.user = &told;
    ASSERT_EQ(korvale_scatter(&triangles, 1, &options, &output, nullptr, nullptr, nullptr, nullptr), KORVALE_OK);
    EXPECT_THAT(told.done, ElementsAre(0, 0.25, 0.5, 0.75, 1)); // each 16,384 points
    EXPECT_TRUE(same_bits(plain, points));

    points.assign(points.size(), 7);
    told = {{}, 0.5};
    korvale_error error;
    EXPECT_EQ(korvale_scatter(&triangles, 1, &options, &output, nullptr, nullptr, nullptr, &error), KORVALE_STOPPED);
    EXPECT_STREQ(error.text, "korvale_scatter: it was asked to stop");
    EXPECT_THAT(told.done, ElementsAre(0, 0.25, 0.5));
    EXPECT_EQ(points[3 * 32767], plain[3 * 32767]);
    EXPECT_EQ(points[3 * 32768], 7);
}

TEST(Scatter, NeitherSeedsNorDrawsFromTheProcess)
{
    const korvale_triangles triangles = mesh();
    std::vector<double> points(300);
    const korvale_points_out output = points_to(points);
    Mwsrand(7);
    const int first = Mwrand(), second = Mwrand();
    Mwsrand(7);
    EXPECT_EQ(Mwrand(), first);
    ASSERT_EQ(korvale_scatter(&triangles, 42, nullptr, &output, nullptr, nullptr, nullptr, nullptr), KORVALE_OK);
    EXPECT_EQ(Mwrand(), second);
}

TEST(Scatter, ThreadsMakeTheSamePoints)
{
    const korvale_triangles triangles = mesh();
    std::vector<std::vector<double>> points(4, std::vector<double>(30000));
    std::vector<std::thread> threads;
    for (auto& mine : points)
        threads.emplace_back([&triangles, &mine] {
            const korvale_points_out output = points_to(mine);
            korvale_scatter(&triangles, 5, nullptr, &output, nullptr, nullptr, nullptr, nullptr);
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_THAT(points, Each(points[0]));
    EXPECT_NE(points[0][0], 0);
}

TEST(Scatter, TellsTheTriangleOfEachPoint)
{
    const korvale_triangles triangles = mesh();
    std::vector<double> points(3000);
    std::vector<int32_t> numbers(1000, -1);
    const korvale_points_out output = points_to(points);
    ASSERT_EQ(korvale_scatter(&triangles, 1, nullptr, &output, numbers.data(), nullptr, nullptr, nullptr), KORVALE_OK);
    int on_third = 0;
    for (size_t i = 0; i < 1000; ++i) {
        const double x = points[3 * i], y = points[3 * i + 1], z = points[3 * i + 2];
        ASSERT_EQ(numbers[i], z > 0.5 ? 2 : x >= y ? 0 : 1) << x << " " << y;
        on_third += numbers[i] == 2;
    }
    EXPECT_GT(on_third, 880); // 10 of 11, give or take
    EXPECT_LT(on_third, 940);
}

TEST(Scatter, ReadsAMeshAndWritesWhereTheHostLikes)
{
    std::vector<double> corners = corners_of_mesh(), plain(60), point(60);
    const korvale_triangles loose = {points_of(corners), {}}, shared = mesh();
    const korvale_points_out to_plain = points_to(plain);
    std::vector<double> heights = {1, 2, 3, 4, 5, 6, 7}, blended(20);
    std::vector<double> at_corners;
    for (const int32_t c : kCorners)
        at_corners.push_back(heights[static_cast<size_t>(c)]);
    std::vector<double> plainly_blended(20);
    const korvale_numbers rows = rows_of(at_corners), vertex_rows = rows_of(heights);
    const korvale_numbers_out to_plainly = rows_to(plainly_blended), to_blended = rows_to(blended);
    ASSERT_EQ(korvale_scatter(&loose, 3, nullptr, &to_plain, nullptr, &rows, &to_plainly, nullptr), KORVALE_OK);

    float flat[20][4] = {};
    const korvale_points_out to_floats = {flat, 20, sizeof flat[0], 2, KORVALE_FLOAT};
    ASSERT_EQ(korvale_scatter(&shared, 3, nullptr, &to_floats, nullptr, &vertex_rows, &to_blended, nullptr),
              KORVALE_OK);
    EXPECT_EQ(blended, plainly_blended);
    for (size_t i = 0; i < 20; ++i) {
        EXPECT_EQ(flat[i][0], static_cast<float>(plain[3 * i]));
        EXPECT_EQ(flat[i][1], static_cast<float>(plain[3 * i + 1]));
        EXPECT_EQ(flat[i][2], 0.0f);
    }
    const korvale_points_out none = {nullptr, 0, 0, 3, KORVALE_DOUBLE};
    EXPECT_EQ(korvale_scatter(&shared, 3, nullptr, &none, nullptr, nullptr, nullptr, nullptr), KORVALE_OK);
}

TEST(Scatter, RefusesWhatDoesNotFit)
{
    std::vector<double> points = {7, 7, 7}, two(2), odd = kPoints;
    const korvale_points_out output = points_to(points);
    const korvale_numbers rows = rows_of(kPoints, 3), few = rows_of(two);
    const korvale_numbers_out results = rows_to(two);
    const auto text = [&](const korvale_triangles* triangles, const korvale_points_out* to,
                          const korvale_numbers* attributes = nullptr, const korvale_numbers_out* blended = nullptr) {
        return sentence_of(KORVALE_BAD_ARGUMENT, [&](auto* e) {
            return korvale_scatter(triangles, 1, nullptr, to, nullptr, attributes, blended, e);
        });
    };
    const korvale_triangles sound = mesh();
    EXPECT_EQ(text(nullptr, &output), "korvale_scatter: triangles must be given, but it is null");
    EXPECT_EQ(text(&sound, nullptr), "korvale_scatter: output must be given, but it is null");
    korvale_triangles bad = {points_of(kPoints), {}};
    EXPECT_EQ(text(&bad, &output), "korvale_scatter: triangles must have corners in threes, but there are 7");
    bad = {};
    EXPECT_EQ(text(&bad, &output), "korvale_scatter: triangles must have at least 1 triangle, but there is none");
    const std::vector<int32_t> astray = {0, 1, 7}, four = {0, 1, 2, 3};
    bad = {points_of(kPoints), indices_of(astray)};
    EXPECT_EQ(text(&bad, &output), "korvale_scatter: triangles must name vertices 0 to 6, but its corner 2 is 7");
    bad = {points_of(kPoints), indices_of(four)};
    EXPECT_EQ(text(&bad, &output), "korvale_scatter: triangles must have corners in threes, but there are 4");
    odd[3] = NAN;
    bad = {points_of(odd), indices_of(kCorners)};
    EXPECT_EQ(text(&bad, &output), "korvale_scatter: triangles must be finite, but its point 1 is (nan, 0, 0)");
    EXPECT_EQ(text(&sound, &output, &rows), "korvale_scatter: blended must be given, but it is null");
    EXPECT_EQ(text(&sound, &output, &few, &results),
              "korvale_scatter: attributes must have a row for each of 7 points, but it has 2");
    EXPECT_EQ(text(&sound, &output, &rows, &results),
              "korvale_scatter: blended must have a row for each of 1 point, but it has 2");
    std::vector<double> one(1);
    const korvale_numbers_out narrow = rows_to(one);
    EXPECT_EQ(text(&sound, &output, &rows, &narrow),
              "korvale_scatter: blended must have a width of 3 like the attributes, but it has 1");
    EXPECT_THAT(points, ElementsAre(7, 7, 7));
}

TEST(ScatterWithAnExhaustedHeap, WritesNothing)
{
    NEEDS_HEAP_FAILURES();
    std::vector<double> corners; // of more triangles than need no heap
    for (int i = 0; i < 9 * 20; ++i)
        corners.push_back(i % 7);
    std::vector<int32_t> numbers(60);
    for (int32_t i = 0; i < 60; ++i)
        numbers[static_cast<size_t>(i)] = 59 - i;
    const korvale_triangles triangles = {points_of(corners), indices_of(numbers)};
    const float weights[20] = {0, 1, 2, 3};
    const korvale_scatter_options options = weighed_by({weights, 20, 0, 1, KORVALE_FLOAT});
    EXPECT_GT(fail_each_allocation([&](int64_t) {
                  float points[4][3] = {};
                  const korvale_points_out output = {points, 4, 0, 3, KORVALE_FLOAT};
                  korvale_error error;
                  if (korvale_scatter(&triangles, 1, &options, &output, nullptr, nullptr, nullptr, &error) !=
                      KORVALE_OK) {
                      EXPECT_STREQ(error.text, "korvale_scatter: the heap is exhausted");
                      for (const auto& point : points)
                          EXPECT_THAT(point, Each(0.0f));
                  } else {
                      EXPECT_NE(points[0][0], 0.0f);
                  }
              }),
              3);
}

} // namespace
} // namespace korvale::test
