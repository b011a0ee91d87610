// How a refusal becomes a status and a sentence.
#include "door/internal/failure.h"

#include <limits>
#include <string>

#include <gtest/gtest.h>

namespace korvale::door {
namespace {

TEST(Failure, SaysFunctionArgumentWantedAndGiven)
{
    korvale_error error;
    const auto refuse = [] { throw Refusal("outline", Text() << "have at least " << counted(3, "point"), "it has 2"); };
    EXPECT_EQ(answer(&error, "korvale_offset", refuse), KORVALE_BAD_ARGUMENT);
    EXPECT_EQ(error.status, KORVALE_BAD_ARGUMENT);
    EXPECT_EQ(error.place, -1);
    EXPECT_STREQ(error.function, "korvale_offset");
    EXPECT_STREQ(error.argument, "outline");
    EXPECT_STREQ(error.wanted, "have at least 3 points");
    EXPECT_STREQ(error.given, "it has 2");
    EXPECT_STREQ(error.word, "");
    EXPECT_STREQ(error.text, "korvale_offset: outline must have at least 3 points, but it has 2");
    EXPECT_EQ(answer(nullptr, "korvale_offset", refuse), KORVALE_BAD_ARGUMENT);
}

TEST(Failure, OfAnEquationHasAPlaceAndAWord)
{
    korvale_error error;
    EXPECT_EQ(answer(&error, "korvale_equations_add", [] { throw Refusal(4, "q", "\"q\" is no name"); }),
              KORVALE_BAD_EQUATION);
    EXPECT_EQ(error.status, KORVALE_BAD_EQUATION);
    EXPECT_EQ(error.place, 4);
    EXPECT_STREQ(error.word, "q");
    EXPECT_STREQ(error.text, "korvale_equations_add: text must be an equation, but \"q\" is no name");
}

TEST(Failure, OfTheHeapIsOneLikeAnyOther)
{
    korvale_error error;
    EXPECT_EQ(answer(&error, "korvale_offset", [] { throw std::bad_alloc(); }), KORVALE_NO_MEMORY);
    EXPECT_EQ(error.status, KORVALE_NO_MEMORY);
    EXPECT_STREQ(error.text, "korvale_offset: the heap is exhausted");
    EXPECT_STREQ(error.argument, "");
    EXPECT_EQ(answer(&error, "korvale_grid_cast", [] { throw Stop(); }), KORVALE_STOPPED);
    EXPECT_STREQ(error.text, "korvale_grid_cast: it was asked to stop");
}

TEST(Failure, OfSuccessOnlyTheStatusIsWritten)
{
    korvale_error error;
    std::memset(&error, 'x', sizeof error);
    EXPECT_EQ(answer(&error, "korvale_offset", [] {}), KORVALE_OK);
    EXPECT_EQ(error.status, KORVALE_OK);
    EXPECT_EQ(error.text[0], 'x');
    EXPECT_EQ(error.function[0], 'x');
}

TEST(Failure, TextsTooLongEndInThreeDots)
{
    korvale_error error;
    const std::string name(63, 'a'), longer(64, 'a');
    answer(&error, "f", [&] { throw Refusal(name, "w", "g"); });
    EXPECT_EQ(error.argument, name);
    answer(&error, "f", [&] { throw Refusal(longer, "w", "g"); });
    EXPECT_EQ(error.argument, std::string(60, 'a') + "...");
    answer(&error, "f", [&] { throw Refusal(longer, std::string(500, 'w'), std::string(5000, 'g')); });
    EXPECT_EQ(error.given, std::string(636, 'g') + "...");
    EXPECT_EQ(std::string(error.text), "f: " + std::string(60, 'a') + "... must " + std::string(204, 'w') +
                                           "..., but " + std::string(636, 'g') + "...");
}

TEST(Failure, NumbersAreTheShortestThatReadBack)
{
    Text text;
    text << 0.1 << " " << 1e300 << " " << -7 << " " << std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(std::string_view(text), "0.1 1e+300 -7 nan");
    Text integers;
    integers << 0 << " " << std::numeric_limits<int64_t>::min() << " " << std::numeric_limits<uint64_t>::max();
    EXPECT_EQ(std::string_view(integers), "0 -9223372036854775808 18446744073709551615");
    EXPECT_EQ(std::string_view(counted(1, "point")), "1 point");
    const double p[] = {1, 2.5, std::numeric_limits<double>::infinity()};
    EXPECT_EQ(std::string_view(text_of_point(p)), "(1, 2.5, inf)");
}

} // namespace
} // namespace korvale::door
