// Numbers in the text of equations.
#include "equation/parse.h"

#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "tests/equation/system.h"
#include "tests/support/bits.h"
#include "tests/support/decimal_comma.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

/// The value of the number item that `text` is read as.
double read(System& es, const std::string& text)
{
    EXPECT_EQ(es.parse("E = " + text), 2) << text;
    const int row = es->equations->count - 1;
    EXPECT_EQ(es.kinds(row)->ivals[1], EQ_ITEM_CONSTANT) << text;
    return es.constants(row)->dvals[1];
}

TEST(EquationNumbers, ReadTheLongestNumericPrefix)
{
    System es;
    EXPECT_EQ(read(es, "1.2.3"), 1.2);
    EXPECT_EQ(read(es, "1..3"), 1.0);
    EXPECT_EQ(read(es, "5."), 5.0);
    EXPECT_EQ(read(es, ".5"), 0.5);
    EXPECT_EQ(read(es, "."), 0.0);
    EXPECT_EQ(read(es, ".."), 0.0);
    EXPECT_EQ(read(es, "..5"), 0.0);
    EXPECT_EQ(read(es, ".5.5"), 0.5);
    EXPECT_EQ(read(es, "007"), 7.0);
    EXPECT_TRUE(same_bits(0.0, read(es, "000.000")));
}

TEST(EquationNumbers, AreCorrectlyRounded)
{
    System es;
    EXPECT_EQ(read(es, "0.1"), 0.1);
    EXPECT_EQ(read(es, "3.141592653589793238462643383279502884"), 3.141592653589793);
    EXPECT_EQ(read(es, "9007199254740993"), 9007199254740992.0);       // halfway, to even
    EXPECT_EQ(read(es, "9007199254740993.00001"), 9007199254740994.0); // just above halfway
    EXPECT_EQ(read(es, "0.500000000000000166533453693773481063544750213623046875"), 0.5000000000000002);
    // Halfway from the greatest number to the first power beyond.
    const std::string halfway = "17976931348623158079372897140530341507993413271003782693617377898044496829276475"
                                "09466490179775872070963302864166928879109465555478519404026306574886715058206819"
                                "08902000708383676273854845817711531764475730270069855571366959622842914819860834"
                                "936475292719074168444365510704342711559699508093042880177904174497792";
    EXPECT_EQ(read(es, halfway), HUGE_VAL);
    EXPECT_EQ(read(es, halfway.substr(0, 308) + "1.9"), std::numeric_limits<double>::max());
}

TEST(EquationNumbers, OverflowToInfinityAndUnderflowToZero)
{
    System es;
    EXPECT_EQ(read(es, std::string(309, '9')), HUGE_VAL);
    EXPECT_EQ(read(es, "1" + std::string(308, '0')), 1e308);
    EXPECT_EQ(read(es, "000" + std::string(400, '9') + ".5"), HUGE_VAL);
    EXPECT_EQ(read(es, "0." + std::string(323, '0') + "5"), std::numeric_limits<double>::denorm_min());
    EXPECT_TRUE(same_bits(0.0, read(es, "0." + std::string(323, '0') + "2")));
    EXPECT_TRUE(same_bits(0.0, read(es, "." + std::string(5000, '0') + "9")));
    EXPECT_TRUE(same_bits(0.0, read(es, "00." + std::string(5000, '0') + "9")));
}

TEST(EquationNumbers, OfTenThousandCharactersAreReadWhole)
{
    System es;
    EXPECT_EQ(read(es, std::string(10000, '7')), HUGE_VAL);
    EXPECT_EQ(read(es, "0." + std::string(9998, '3')), 0.3333333333333333);
    EXPECT_EQ(read(es, std::string(9999, '0') + "8"), 8.0);
    // The last of ten thousand digits decides a tie.
    EXPECT_EQ(read(es, "9007199254740993." + std::string(9982, '0') + "1"), 9007199254740994.0);
    EXPECT_EQ(read(es, "9007199254740993." + std::string(9983, '0')), 9007199254740992.0);
}

/// Random digits with a point somewhere or nowhere.
std::string random_number(Random& random)
{
    std::string text;
    const int digits = random.between(1, random.one_in(10) ? 800 : 25);
    const int zeros = random.one_in(5) ? random.between(0, 330) : 0;
    const int point = random.between(0, digits + 5);
    for (int i = 0; i < digits; ++i) {
        if (i == point)
            text += "." + std::string(static_cast<size_t>(zeros), '0');
        text += static_cast<char>('0' + random.below(10));
    }
    return text;
}

TEST(EquationNumbers, EqualTheCLibrarysInTheCLocale)
{
    Random random(20260102);
    System es;
    for (int i = 0; i < korvale::test::rounds(20000); ++i) {
        if (i % 1000 == 0) {
            EqSystemDispose(es);
            ASSERT_EQ(EqSystemInitialize(es), 1);
        }
        const std::string text = random_number(random);
        ASSERT_TRUE(same_bits(std::strtod(text.c_str(), nullptr), read(es, text))) << text;
    }
}

TEST(EquationNumbers, AreReadAlikeUnderADecimalComma)
{
    const korvale::test::DecimalComma comma;
    ASSERT_TRUE(comma.is_in_force()) << "localedef, which needs the sources of Debian's package locales, ended with "
                                     << comma.status();
    System es;
    EXPECT_EQ(read(es, "1.5"), 1.5);
    EXPECT_EQ(read(es, "1.25.5"), 1.25);
    EXPECT_EQ(es.parse("E = 1,5"), -1); // two operands
    EXPECT_EQ(read(es, std::string(10000, '7')), HUGE_VAL);
    EXPECT_TRUE(comma.is_in_force());
}

} // namespace
} // namespace korvale::test
