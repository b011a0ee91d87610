// Whole arrays and the random generator.
#include <korvale.h>

#include <cmath>
#include <limits>

#include <gmock/gmock.h>

#include "support.h"
#include "tests/support/heap.h"

namespace korvale::test {
namespace {

using testing::ElementsAre;

TEST(Mix, SumsTwoAndFourFromTheLeft)
{
    const std::vector<double> a = {1, 2}, b = {10, 20}, c = {100, 200}, d = {1e17, -1e17};
    std::vector<double> out(2);
    const korvale_numbers arrays[] = {rows_of(a), rows_of(b), rows_of(c), rows_of(d)};
    const double weights[] = {1, 2, 3, 1};
    const korvale_numbers_out to = rows_to(out);
    EXPECT_EQ(korvale_mix(arrays, weights, 2, &to, nullptr), KORVALE_OK);
    EXPECT_THAT(out, ElementsAre(21, 42));
    EXPECT_EQ(korvale_mix(arrays, weights, 4, &to, nullptr), KORVALE_OK);
    EXPECT_THAT(out, ElementsAre(321 + 1e17, 642 - 1e17));
}

TEST(Mix, MayWriteIntoAnInputAndThroughStrides)
{
    std::vector<double> a = {1, 2, 3};
    float b[] = {10, 0, 20, 0, 30, 0};
    const korvale_numbers arrays[] = {rows_of(a), {b, 3, 8, 1, KORVALE_FLOAT}};
    const double weights[] = {0.5, 1};
    const korvale_numbers_out in_place = rows_to(a), apart = {b + 1, 3, 8, 1, KORVALE_FLOAT};
    EXPECT_EQ(korvale_mix(arrays, weights, 2, &apart, nullptr), KORVALE_OK);
    EXPECT_THAT(b, ElementsAre(10, 10.5f, 20, 21, 30, 31.5f));
    EXPECT_EQ(korvale_mix(arrays, weights, 2, &in_place, nullptr), KORVALE_OK);
    EXPECT_THAT(a, ElementsAre(10.5, 21, 31.5));
}

TEST(Mix, OfNothingIsNothing)
{
    std::vector<double> none;
    const korvale_numbers arrays[] = {rows_of(none, 3), rows_of(none, 3)};
    const double weights[] = {1, 1};
    const korvale_numbers_out to = rows_to(none, 3);
    EXPECT_EQ(korvale_mix(arrays, weights, 2, &to, nullptr), KORVALE_OK);
}

TEST(Mix, RefusesOtherShapesAndCounts)
{
    std::vector<double> a = {1, 2, 3, 4}, out(4, 7.0);
    const korvale_numbers arrays[] = {rows_of(a), rows_of(a, 2)};
    const double weights[] = {1, 1};
    const korvale_numbers_out to = rows_to(out);
    const auto text = [&](int64_t count) {
        return sentence_of(KORVALE_BAD_ARGUMENT, [&](auto* e) { return korvale_mix(arrays, weights, count, &to, e); });
    };
    EXPECT_EQ(text(2), "korvale_mix: arrays[1] must be 4 x 1 like output, but it is 2 x 2");
    EXPECT_EQ(text(3), "korvale_mix: count must be 2 or 4, but it is 3");
    EXPECT_EQ(sentence_of(KORVALE_BAD_ARGUMENT, [&](auto* e) { return korvale_mix(nullptr, weights, 2, &to, e); }),
              "korvale_mix: arrays must be given, but it is null");
    EXPECT_EQ(sentence_of(KORVALE_BAD_ARGUMENT, [&](auto* e) { return korvale_mix(arrays, nullptr, 2, &to, e); }),
              "korvale_mix: weights must be given, but it is null");
    EXPECT_EQ(sentence_of(KORVALE_BAD_ARGUMENT, [&](auto* e) { return korvale_mix(arrays, weights, 2, nullptr, e); }),
              "korvale_mix: output must be given, but it is null");
    EXPECT_THAT(out, ElementsAre(7, 7, 7, 7));
}

TEST(Bounds, OfEachColumn)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::vector<double> rows = {3, -1, nan, nan, 5, 2, -2, nan, 4};
    double least[3], greatest[3];
    const korvale_numbers array = rows_of(rows, 3);
    EXPECT_EQ(korvale_bounds(&array, least, greatest, nullptr), KORVALE_OK);
    EXPECT_EQ(least[0], -2);
    EXPECT_EQ(greatest[0], 3);
    EXPECT_EQ(least[1], -1);
    EXPECT_EQ(greatest[1], 5);
    EXPECT_TRUE(std::isnan(least[2]) && std::isnan(greatest[2])); // the first is NaN
}

TEST(Bounds, RefusesAnArrayWithoutRows)
{
    double least[1] = {7}, greatest[1] = {7};
    const korvale_numbers none = {nullptr, 0, 0, 1, KORVALE_DOUBLE};
    EXPECT_EQ(sentence_of(KORVALE_BAD_ARGUMENT, [&](auto* e) { return korvale_bounds(&none, least, greatest, e); }),
              "korvale_bounds: array must have at least 1 row, but it has 0");
    EXPECT_EQ(sentence_of(KORVALE_BAD_ARGUMENT, [&](auto* e) { return korvale_bounds(&none, nullptr, greatest, e); }),
              "korvale_bounds: least must be given, but it is null");
    EXPECT_EQ(least[0], 7);
    EXPECT_EQ(greatest[0], 7);
}

TEST(Reverse, TurnsTheRowsRoundInPlace)
{
    std::vector<double> rows = {1, 2, 3, 4, 5, 6};
    const korvale_numbers_out pairs = rows_to(rows, 2), every_other = {rows.data(), 3, 16, 1, KORVALE_DOUBLE};
    EXPECT_EQ(korvale_reverse(&pairs, nullptr), KORVALE_OK);
    EXPECT_THAT(rows, ElementsAre(5, 6, 3, 4, 1, 2));
    EXPECT_EQ(korvale_reverse(&every_other, nullptr), KORVALE_OK);
    EXPECT_THAT(rows, ElementsAre(1, 6, 3, 4, 5, 2));
    EXPECT_EQ(sentence_of(KORVALE_BAD_ARGUMENT, [&](auto* e) { return korvale_reverse(nullptr, e); }),
              "korvale_reverse: array must be given, but it is null");
}

TEST(Seed, IsThatOfTheProcess)
{
    korvale_seed(5);
    const double first = EqFuncRand();
    EqSeed(5);
    EXPECT_EQ(EqFuncRand(), first);
}

TEST(ArraysWithAnExhaustedHeap, FailWhole)
{
    NEEDS_HEAP_FAILURES();
    std::vector<double> a = {1, 2, 3, 4}, out(2);
    float place[2];
    const korvale_numbers arrays[] = {{a.data(), 2, 16, 1, KORVALE_DOUBLE}, rows_of(out)};
    const double weights[] = {1, 1};
    const korvale_numbers_out to = {place, 2, 0, 1, KORVALE_FLOAT};
    double bounds[2];
    const auto expect_none = [](korvale_status status, const korvale_error& error, const char* text) {
        if (status != KORVALE_OK) {
            EXPECT_EQ(status, KORVALE_NO_MEMORY);
            EXPECT_STREQ(error.text, text);
        }
    };
    EXPECT_GE(fail_each_allocation([&](int64_t) {
                  korvale_error error;
                  place[0] = 7;
                  const korvale_status status = korvale_mix(arrays, weights, 2, &to, &error);
                  expect_none(status, error, "korvale_mix: the heap is exhausted");
                  EXPECT_EQ(place[0], status == KORVALE_OK ? 1.0f : 7.0f);
              }),
              2); // copies of the array with a stride and of the floats
    EXPECT_GE(fail_each_allocation([&](int64_t) {
                  korvale_error error;
                  expect_none(korvale_bounds(&arrays[0], bounds, bounds + 1, &error), error,
                              "korvale_bounds: the heap is exhausted");
              }),
              2);
}

} // namespace
} // namespace korvale::test
