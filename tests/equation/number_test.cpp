// read_number, which the parser calls.
#include "equation/internal/number.h"

#include <cmath>
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/bits.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

double read(const std::string& text)
{
    return equation::read_number(text.data(), text.data() + text.size());
}

TEST(ReadNumber, StopsAtTheEndItIsGiven)
{
    const char text[] = "12345";
    EXPECT_EQ(equation::read_number(text, text + 2), 12.0);
    EXPECT_EQ(equation::read_number(text, text + 5), 12345.0);
    EXPECT_TRUE(same_bits(0.0, equation::read_number(text, text)));
}

TEST(ReadNumber, TakesTheLongestNumber)
{
    EXPECT_EQ(read("1.2.3"), 1.2);
    EXPECT_EQ(read(".5.5"), 0.5);
    EXPECT_EQ(read("5."), 5.0);
    EXPECT_TRUE(same_bits(0.0, read(".")));
    EXPECT_TRUE(same_bits(0.0, read("..7")));
}

TEST(ReadNumber, RoundsCorrectlyAtTheEndsOfExactness)
{
    EXPECT_EQ(read("9007199254740992"), 9007199254740992.0);
    EXPECT_EQ(read("9007199254740993"), 9007199254740992.0); // 2^53 + 1, halfway, to even
    EXPECT_EQ(read("9007199254740995"), 9007199254740996.0);
    EXPECT_EQ(read("900719925474099.3"), 900719925474099.3);
    EXPECT_EQ(read("0.0000000000000000000001"), 1e-22);
    EXPECT_EQ(read("0.00000000000000000000001"), 1e-23);
    EXPECT_EQ(read("10000000000000000000000"), 1e22);
    EXPECT_EQ(read("100000000000000000000000"), 1e23);
    EXPECT_EQ(read("1844674407370955.1615"), 1844674407370955.1615);
    EXPECT_EQ(read("18446744073709551615"), 18446744073709551615.0);
    EXPECT_EQ(read("18446744073709551616"), 18446744073709551616.0);
}

TEST(ReadNumber, EqualsTheCLibraryForShortNumbers)
{
    Random random(20260302);
    for (int i = 0; i < rounds(100000); ++i) {
        std::string text;
        const int digits = random.between(1, 24), point = random.between(0, digits + 2);
        for (int d = 0; d < digits; ++d)
            text +=
                std::string(d == point ? "." : "") + static_cast<char>(random.one_in(3) ? '0' : '0' + random.below(10));
        ASSERT_TRUE(same_bits(std::strtod(text.c_str(), nullptr), read(text))) << text;
    }
}

} // namespace
} // namespace korvale::test
