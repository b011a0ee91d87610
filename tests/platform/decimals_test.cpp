// Decimal text by <charconv>, and the way of C++ libraries that lack it, which gives the same characters and bits.
#include "platform/internal/decimals.h"

#include <cmath>
#include <cstdio>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/bits.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

std::string shortest(double value)
{
    char text[32];
    return {text, platform::write_shortest(text, sizeof text, value)};
}

std::string shortest_by_printf(double value)
{
    char text[32];
    return {text, platform::write_shortest_by_printf(text, sizeof text, value)};
}

std::string with_six_decimals(double value)
{
    char text[320];
    return {text, platform::write_fixed(text, sizeof text, value, 6)};
}

std::string with_six_decimals_by_printf(double value)
{
    char text[320];
    return {text, platform::write_fixed_by_printf(text, sizeof text, value, 6)};
}

double read(const std::string& text)
{
    return platform::read_fixed(text.data(), text.data() + text.size());
}

double read_by_strtod(const std::string& text)
{
    return platform::read_fixed_by_strtod(text.data(), text.data() + text.size());
}

TEST(Decimals, TheShortestTextIsPlainUnlessAnExponentIsShorter)
{
    for (const auto write : {shortest, shortest_by_printf}) {
        EXPECT_EQ(write(0.5), "0.5");
        EXPECT_EQ(write(-0.0), "-0");
        EXPECT_EQ(write(0.001), "0.001");
        EXPECT_EQ(write(0.0001), "1e-04");
        EXPECT_EQ(write(0.00012), "0.00012");
        EXPECT_EQ(write(10000), "10000");
        EXPECT_EQ(write(100000), "1e+05");
        EXPECT_EQ(write(120000), "120000");
        EXPECT_EQ(write(0x1p64), "18446744073709551616");
        EXPECT_EQ(write(-std::numeric_limits<double>::min()), "-2.2250738585072014e-308");
        EXPECT_EQ(write(std::numeric_limits<double>::denorm_min()), "5e-324");
        EXPECT_EQ(write(-std::numeric_limits<double>::infinity()), "-inf");
        EXPECT_EQ(write(std::numeric_limits<double>::quiet_NaN()), "nan");
        EXPECT_EQ(write(0x1p-44),
                  "5.684341886080802e-14"); // nearest of 16 digits is 5.684341886080801e-14, too far below
    }
}

TEST(Decimals, TheShortestTextIsTheSameByEitherWay)
{
    for (int exponent = -1074; exponent < 1024; ++exponent) {
        const double power = std::ldexp(1.0, exponent);
        for (const double value : {power, std::nextafter(power, 0.0), std::nextafter(power, HUGE_VAL)})
            ASSERT_EQ(shortest(value), shortest_by_printf(value));
    }
    Random random(20261122);
    for (int i = 0; i < rounds(100000); ++i) {
        const double few_digits = std::round(random.uniform(-1e6, 1e6)) / std::pow(10.0, random.between(-12, 12));
        for (const double value : {random.awkward(), random.spread(), few_digits, few_digits * 1e12})
            ASSERT_EQ(shortest(value), shortest_by_printf(value));
    }
}

TEST(Decimals, SixDecimalsAreTheSameByEitherWay)
{
    EXPECT_EQ(with_six_decimals(0.0000005), "0.000000"); // just below one half
    EXPECT_EQ(with_six_decimals(std::numeric_limits<double>::max()).size(), 309u + 7u);
    Random random(20261123);
    for (int i = 0; i < rounds(100000); ++i)
        for (const double value : {random.awkward(), random.spread(), random.uniform(-1, 1)})
            ASSERT_EQ(with_six_decimals(value), with_six_decimals_by_printf(value));
}

TEST(Decimals, EitherWayReadsUpToTheSecondPoint)
{
    for (const auto number : {read, read_by_strtod}) {
        EXPECT_EQ(number("00012.50.9"), 12.5);
        EXPECT_EQ(number(".5.5"), 0.5);
        EXPECT_EQ(number("7."), 7.0);
        EXPECT_TRUE(same_bits(0.0, number(".")));
        EXPECT_TRUE(same_bits(0.0, number("")));
        EXPECT_TRUE(same_bits(0.0, number("..7")));
        EXPECT_EQ(number(std::string(400, '9')), HUGE_VAL);
        EXPECT_TRUE(same_bits(0.0, number("0." + std::string(400, '0') + "1")));
        EXPECT_EQ(number(std::string(2000, '0') + "3"), 3.0);
    }
}

/// A text of digits near halfway between two doubles, whichever digit decides.
TEST(Decimals, EitherWayReadsTheNearestDouble)
{
    Random random(20261124);
    for (int i = 0; i < rounds(20000); ++i) {
        const double from = std::fabs(random.spread()) * std::pow(10.0, random.between(-310, 20));
        const double to = std::nextafter(from, HUGE_VAL);
        char text[1500]; // both are exact, and so is the last digit of what lies halfway
        std::snprintf(text, sizeof text, "%.1080Lf", (static_cast<long double>(from) + to) / 2);
        std::string halfway = text;
        const std::string behind(static_cast<size_t>(random.between(0, 400)), '0');
        for (const std::string& given : {halfway, halfway + behind + "1", halfway + behind + ".1"})
            ASSERT_TRUE(same_bits(read(given), read_by_strtod(given))) << given;
        halfway.resize(static_cast<size_t>(random.between(1, static_cast<int>(halfway.size()))));
        ASSERT_TRUE(same_bits(read(halfway), read_by_strtod(halfway))) << halfway;
    }
}

} // namespace
} // namespace korvale::test
