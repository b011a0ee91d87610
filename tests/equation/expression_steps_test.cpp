// Parser and evaluator against recursive descent, on random, short, mutated and truncated texts.
#include <cmath>
#include <map>
#include <string>

#include <gtest/gtest.h>

#include "platform/layer.h"
#include "tests/equation/expressions.h"
#include "tests/equation/system.h"
#include "tests/reference/equation.h"
#include "tests/support/bits.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

using korvale::reference::EquationModel;

double mean(double a, double b)
{
    return (a + b) / 2;
}

double less(double a, double b)
{
    return a < b ? 1 : 0;
}

/// A system and its model with the variables x, y, z and the functions MEAN and LESS.
struct Pair {
    System es;
    EquationModel model;

    Pair()
    {
        es.add("MEAN", mean);
        es.add("LESS", less);
        model.add_function("MEAN", 2, reinterpret_cast<void*>(mean));
        model.add_function("LESS", 2, reinterpret_cast<void*>(less));
        es.declare("x y z");
        model.parse_variables("x y z", 0);
    }
    void set(int v, double value)
    {
        EqSetVariable(es, v, value);
        model.set_variable(v, value);
    }

    /// Parses, evaluates, simplifies and evaluates on both sides.
    void check(const std::string& text)
    {
        std::string read = text, read_by_model = text;
        const int items = EqParseEquation(es, read.data());
        ASSERT_EQ(items, model.parse_equation(read_by_model)) << text;
        ASSERT_EQ(read.substr(0, read_by_model.size()), read_by_model) << text;
        const int row = es->equations->count - 1;
        ASSERT_EQ(state_of_equation(*es.get(), row), model.state_of_equation(row)) << text;
        check_value(text, row);
        ASSERT_EQ(EqSimplify(es, row), model.simplify(row)) << text;
        ASSERT_EQ(state_of_equation(*es.get(), row), model.state_of_equation(row)) << text;
        check_value(text, row);
    }

private:
    void check_value(const std::string& text, int row)
    {
        EqSeed(row);
        const double value = EqEvaluate(es, row);
        const int draws = Mwrand();
        EqSeed(row);
        ASSERT_TRUE(same_bits(model.evaluate(row), value)) << text;
        ASSERT_EQ(Mwrand(), draws) << text; // as many samples were drawn
        for (int v = 0; v < 5; ++v)
            ASSERT_TRUE(same_bits(model.read_variable(v), EqReadVariable(es, v))) << text;
    }
};

/// Evaluates an expression while reading it, each level of priority by a function of its own.
class Descent {
public:
    Descent(const std::string& text, std::map<std::string, double> variables)
        : at_(text.c_str()), variables_(std::move(variables))
    {
        next();
    }

    double value() { return loose(); }
    int items() const { return items_; }
    bool is_at_end() const { return token_.empty(); }

private:
    static bool is_letter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
    static bool is_digit(char c) { return (c >= '0' && c <= '9') || c == '.'; }

    void next()
    {
        while (*at_ == ' ' || *at_ == '\t' || *at_ == ',')
            ++at_;
        token_.clear();
        if (is_letter(*at_))
            while (is_letter(*at_))
                token_ += *at_++;
        else if (is_digit(*at_))
            while (is_digit(*at_))
                token_ += *at_++;
        else if (*at_ != '\0')
            token_ = *at_++;
    }
    bool accept(const char* symbol, const char* word)
    {
        if (token_ != symbol && token_ != word)
            return false;
        ++items_;
        next();
        return true;
    }

    double loose()
    {
        double a = sum();
        for (;;)
            if (accept("ANGLE", "ANGLE"))
                a = std::atan2(a, sum());
            else if (accept("MEAN", "MEAN"))
                a = mean(a, sum());
            else if (accept("LESS", "LESS"))
                a = less(a, sum());
            else
                return a;
    }
    double sum()
    {
        double a = product();
        for (;;)
            if (accept("+", "ADD"))
                a = a + product();
            else if (accept("-", "SUBTRACT"))
                a = a - product();
            else
                return a;
    }
    double product()
    {
        double a = power();
        for (;;)
            if (accept("*", "MULTIPLY")) {
                a = a * power();
            } else if (accept("/", "DIVIDE")) {
                const double b = power();
                a = b == 0 ? 0 : a / b;
            } else {
                return a;
            }
    }
    double power()
    {
        const double a = prefixed();
        if (!accept("^", "POWER"))
            return a;
        return std::pow(a, power());
    }
    double prefixed()
    {
        if (accept("-", "NEGATE"))
            return -prefixed();
        const std::map<std::string, double (*)(double)> functions = {
            {"SIN", std::sin}, {"COS", std::cos},   {"TAN", std::tan},   {"SQRT", std::sqrt}, {"EXP", std::exp},
            {"LOG", std::log}, {"ASIN", std::asin}, {"ACOS", std::acos}, {"ATAN", std::atan}};
        if (const auto found = functions.find(token_); found != functions.end()) {
            accept(token_.c_str(), "");
            return found->second(prefixed());
        }
        return operand();
    }
    double operand()
    {
        if (token_ == "(") {
            next();
            const double inner = loose();
            EXPECT_EQ(token_, ")");
            next();
            return inner;
        }
        ++items_;
        const std::string word = token_;
        next();
        if (is_digit(word[0]))
            return std::stod(word);
        if (word == "RAND")
            return EqFuncRand();
        if (word == "GAUSS")
            return gauss();
        return variables_.at(word);
    }

    const char* at_;
    std::map<std::string, double> variables_;
    std::string token_;
    int items_ = 0;
};

TEST(EqEvaluateSteps, AgreesWithRecursiveDescentOnRandomExpressions)
{
    Random random(20260103);
    int evaluated = 0, refused = 0;
    while (evaluated < 20000) {
        System es;
        es.add("MEAN", mean);
        es.add("LESS", less);
        es.declare("x y z r");
        std::map<std::string, double> variables = {{"PI", 3.141592653589793}, {"E", 2.718281828459045}};
        for (const char* name : {"x", "y", "z"})
            es.set(name, variables[name] = random.one_in(3) ? random.awkward() : random.uniform(-5, 5));
        for (int i = 0; i < 500; ++i) {
            const std::string text = random_expression(random, random.between(0, 5));
            EqSeed(i);
            Descent descent(text, variables);
            const double expected = descent.value();
            ASSERT_TRUE(descent.is_at_end()) << text;
            const int items = es.parse("r =" + text);
            if (descent.items() + 1 > 100) {
                ASSERT_EQ(items, -1) << text;
                ++refused;
                continue;
            }
            ASSERT_EQ(items, descent.items() + 1) << text;
            const int row = es->equations->count - 1;
            EqSeed(i);
            ASSERT_TRUE(same_bits(expected, EqEvaluate(es, row))) << text;
            ASSERT_TRUE(same_bits(expected, es.get("r"))) << text;
            ASSERT_EQ(EqSimplify(es, row), 1);
            EqSeed(i);
            ASSERT_TRUE(same_bits(expected, EqEvaluate(es, row))) << text;
            ++evaluated;
        }
    }
    EXPECT_GT(refused, 0);
}

TEST(EqParseEquationSteps, TreatsAllShortTokenSequencesAsDocumented)
{
    const char* const tokens[] = {" x ", " 2 ", " RAND ", " SIN ", " MEAN ", "+", "-", "^", "(", ")", " q "};
    constexpr int kTokens = sizeof tokens / sizeof *tokens;
    int sequences = 0, accepted = 0;
    for (int length = 0, of_length = 1; length <= 4; ++length, of_length *= kTokens) {
        for (int first = 0; first < of_length; first += 500) {
            Pair pair;
            pair.set(2, 0.75);
            for (int sequence = first; sequence < of_length && sequence < first + 500; ++sequence) {
                std::string text = "y =";
                for (int t = 0, code = sequence; t < length; ++t, code /= kTokens)
                    text += tokens[code % kTokens];
                pair.check(text);
                if (HasFatalFailure())
                    return;
                ++sequences;
                accepted += pair.es.kinds(pair.es->equations->count - 1)->count > 0;
            }
        }
    }
    EXPECT_EQ(sequences, 1 + 11 + 121 + 1331 + 14641);
    EXPECT_GT(accepted, 100);
}

TEST(EqParseEquationSteps, TreatsMutatedTextsAsDocumented)
{
    Random random(20260104);
    int accepted = 0;
    for (int i = 0; i < korvale::test::rounds(60); ++i) {
        Pair pair;
        for (int v = 2; v < 5; ++v)
            pair.set(v, random.uniform(-3, 3));
        for (int j = 0; j < 150; ++j) {
            const std::string text = (random.one_in(2) ? "y =" : " z \t=") + random_expression(random, 3);
            pair.check(random.one_in(10) ? text : mutated(random, text));
            if (HasFatalFailure())
                return;
            accepted += pair.es.kinds(pair.es->equations->count - 1)->count > 0;
        }
    }
    EXPECT_GT(accepted, korvale::test::rounds(1000));
    EXPECT_LT(accepted, korvale::test::rounds(8000));
}

TEST(EqParseEquationSteps, TreatsAllTruncationsAsDocumented)
{
    const std::string text = " y = -SIN(x ^ 2.25 * (PI - RAND)) / 3 MEAN z";
    Pair pair;
    for (size_t length = 0; length <= text.size(); ++length) {
        pair.check(text.substr(0, length));
        ASSERT_FALSE(HasFatalFailure());
    }
}

} // namespace
} // namespace korvale::test
