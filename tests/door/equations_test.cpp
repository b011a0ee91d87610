// Equations through the C interface.
#include <korvale.h>

#include <cmath>
#include <cstring>
#include <string>

#include <gmock/gmock.h>

#include "support.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

using testing::ElementsAre;

/// A system that releases itself.
class Handle {
public:
    explicit Handle(const char* names = "h r t")
    {
        EXPECT_EQ(korvale_equations_new(&equations_, nullptr), KORVALE_OK);
        EXPECT_EQ(korvale_equations_declare(equations_, names, 0, nullptr), KORVALE_OK);
    }
    ~Handle() { korvale_equations_free(equations_); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    operator korvale_equations*() const { return equations_; } // NOLINT: a handle is one
    EquationSystem* record() const { return static_cast<EquationSystem*>(korvale_equations_record(equations_)); }

    int32_t add(const char* text) const
    {
        int32_t number = -1;
        EXPECT_EQ(korvale_equations_add(equations_, text, &number, nullptr), KORVALE_OK) << text;
        return number;
    }
    double evaluate(int32_t equation) const
    {
        double result = NAN;
        EXPECT_EQ(korvale_equations_evaluate(equations_, equation, &result, nullptr), KORVALE_OK);
        return result;
    }
    void set(const char* name, double value) const
    {
        EXPECT_EQ(korvale_equations_set(equations_, name, value, nullptr), KORVALE_OK);
    }
    double get(const char* name) const
    {
        double value = NAN;
        EXPECT_EQ(korvale_equations_get(equations_, name, &value, nullptr), KORVALE_OK);
        return value;
    }

private:
    korvale_equations* equations_ = nullptr;
};

/// Why a text is refused, without what all refusals say, and the place and the word.
struct Refused {
    int32_t place;
    std::string word, why;
    friend bool operator==(const Refused&, const Refused&) = default;
    friend void PrintTo(const Refused& r, std::ostream* to) { *to << r.place << " '" << r.word << "' " << r.why; }
};

Refused refusal(korvale_equations* equations, const std::string& text)
{
    korvale_error error;
    if (korvale_equations_add(equations, text.c_str(), nullptr, &error) == KORVALE_OK)
        return {-1, "", "it was taken"};
    EXPECT_EQ(error.status, KORVALE_BAD_EQUATION);
    EXPECT_STREQ(error.argument, "text");
    const std::string given = error.given, told = " is refused at character " + std::to_string(error.place + 1) + ": ";
    const size_t why = given.rfind(told);
    EXPECT_NE(why, std::string::npos) << given;
    EXPECT_EQ(error.text, "korvale_equations_add: text must be an equation, but " + given);
    return {error.place, error.word, given.substr(why + told.size())};
}

// --- Variables and equations -----------------------------------------------------------------------------------------

TEST(DoorEquations, RunAsTheyWereAdded)
{
    Handle e;
    EXPECT_EQ(korvale_equations_variables(e), 5);
    EXPECT_STREQ(korvale_equations_name(e, 1), "E");
    EXPECT_STREQ(korvale_equations_name(e, 4), "t");
    EXPECT_EQ(korvale_equations_name(e, 5), nullptr);
    EXPECT_EQ(korvale_equations_name(e, -1), nullptr);
    EXPECT_EQ(e.add("h = r * 2 + t"), 0);
    EXPECT_EQ(e.add("t = h ^ 2"), 1);
    EXPECT_EQ(korvale_equations_count(e), 2);
    e.set("r", 3);
    e.set("t", 0.5);
    EXPECT_EQ(e.evaluate(0), 6.5);
    EXPECT_EQ(e.get("h"), 6.5);
    EXPECT_EQ(korvale_equations_pass(e, nullptr), KORVALE_OK);
    EXPECT_EQ(e.get("t"), 42.25);
    EXPECT_EQ(e.record()->equations->count, 2);
}

TEST(DoorEquations, ReservedVariablesChangeAtTheEndOfAPass)
{
    Handle e("");
    EXPECT_EQ(korvale_equations_declare(e, "a, b", 1, nullptr), KORVALE_OK);
    e.add("a = b + 1");
    e.add("b = a + 1");
    EXPECT_EQ(korvale_equations_pass(e, nullptr), KORVALE_OK);
    EXPECT_EQ(e.get("a"), 1);
    EXPECT_EQ(e.get("b"), 1);
    EXPECT_EQ(e.evaluate(0), 2);
    EXPECT_EQ(e.get("a"), 1);
}

TEST(DoorEquations, RefuseArgumentsByName)
{
    Handle e;
    e.add("h = r");
    korvale_equations* const none = nullptr;
    const auto text = [](auto call) { return sentence_of(KORVALE_BAD_ARGUMENT, call); };
    EXPECT_EQ(text([&](auto* x) { return korvale_equations_declare(e, "good x1", 0, x); }),
              "korvale_equations_declare: names must be 1 to 12 letters each, but \"x1\" is among them");
    EXPECT_EQ(text([&](auto* x) { return korvale_equations_declare(e, "good SIN", 0, x); }),
              "korvale_equations_declare: names must be no functions', but \"SIN\" is one");
    EXPECT_EQ(korvale_equations_variables(e), 5); // "good" neither
    EXPECT_EQ(text([&](auto* x) { return korvale_equations_set(e, "q", 1, x); }),
              "korvale_equations_set: name must be a variable, but \"q\" is none");
    EXPECT_EQ(text([&](auto* x) { return korvale_equations_get(e, "q", nullptr, x); }),
              "korvale_equations_get: name must be a variable, but \"q\" is none");
    EXPECT_EQ(text([&](auto* x) { return korvale_equations_get(e, "r", nullptr, x); }),
              "korvale_equations_get: value must be given, but it is null");
    EXPECT_EQ(text([&](auto* x) { return korvale_equations_evaluate(e, 1, nullptr, x); }),
              "korvale_equations_evaluate: equation must be the number of one of 1 equations, but it is 1");
    EXPECT_EQ(text([&](auto* x) { return korvale_equations_make_table(e, "SIN", 3, x); }),
              "korvale_equations_make_table: name must be a function without arguments, but it is \"SIN\"");
    EXPECT_EQ(text([&](auto* x) { return korvale_equations_make_table(e, "RAND", 0, x); }),
              "korvale_equations_make_table: rows must be 1 or more, but it is 0");
    EXPECT_EQ(text([&](auto* x) { return korvale_equations_make_table(e, "RAND", 3, x); }),
              "korvale_equations_make_table: name must stand in an equation, but no equation names \"RAND\" yet");
    EXPECT_EQ(text([&](auto* x) { return korvale_equations_new(nullptr, x); }),
              "korvale_equations_new: equations must be given, but it is null");
    EXPECT_EQ(text([&](auto* x) { return korvale_equations_add(none, "h = 1", nullptr, x); }),
              "korvale_equations_add: equations must be given, but it is null");
    EXPECT_EQ(text([&](auto* x) { return korvale_equations_add(e, nullptr, nullptr, x); }),
              "korvale_equations_add: text must be given, but it is null");
    EXPECT_EQ(text([&](auto* x) { return korvale_equations_declare(e, nullptr, 0, x); }),
              "korvale_equations_declare: names must be given, but it is null");
    EXPECT_EQ(text([&](auto* x) { return korvale_equations_set(e, nullptr, 0, x); }),
              "korvale_equations_set: name must be given, but it is null");
    for (const auto call : {korvale_equations_pass, korvale_equations_simplify})
        EXPECT_EQ(call(nullptr, nullptr), KORVALE_BAD_ARGUMENT);
    EXPECT_EQ(korvale_equations_count(nullptr), 0);
    EXPECT_EQ(korvale_equations_variables(nullptr), 0);
    EXPECT_EQ(korvale_equations_name(nullptr, 0), nullptr);
    EXPECT_EQ(korvale_equations_record(nullptr), nullptr);
    korvale_equations_set_table_position(nullptr, 1);
    korvale_equations_stop(nullptr);
    korvale_equations_free(nullptr);
}

TEST(DoorEquations, TablesKeepNoise)
{
    Handle e;
    const int32_t h = e.add("h = RAND");
    korvale_seed(5);
    const double first = EqFuncRand(), second = EqFuncRand();
    korvale_seed(5);
    EXPECT_EQ(korvale_equations_make_table(e, "RAND", 2, nullptr), KORVALE_OK);
    EXPECT_EQ(e.evaluate(h), first);
    korvale_equations_set_table_position(e, 0.5);
    EXPECT_EQ(e.evaluate(h), 0.5 * first + 0.5 * second);
}

TEST(DoorEquations, SimplifyFoldsConstants)
{
    Handle e;
    const int32_t h = e.add("h = r + 2 * 3");
    EXPECT_EQ(korvale_equations_simplify(e, nullptr), KORVALE_OK);
    const auto* kinds = static_cast<const DATAstruct*>(e.record()->equations->pvals[0]);
    EXPECT_EQ(kinds->ivals[3], EQ_ITEM_BINARY);
    EXPECT_EQ(kinds->ivals[4], EQ_ITEM_END);
    EXPECT_EQ(e.evaluate(h), 6);
}

TEST(DoorEquations, MayHaveAGeneratorOfTheirOwn)
{
    Handle e, other;
    const int32_t even = e.add("h = RAND"), normal = e.add("h = GAUSS");
    uint32_t seed = 9;
    EXPECT_EQ(korvale_equations_seeded(e, &seed), 0);
    EXPECT_EQ(seed, 9u);
    korvale_seed(5);
    const double first = EqFuncRand(), second = gauss(), third = EqFuncRand();
    const int next = Mwrand();
    korvale_seed(5);
    for (int i = 0; i < 6; ++i)
        Mwrand();
    EXPECT_EQ(korvale_equations_seed(e, 5, nullptr), KORVALE_OK);
    EXPECT_EQ(korvale_equations_seeded(e, &seed), 1);
    EXPECT_EQ(seed, 5u);
    EXPECT_EQ(e.evaluate(even), first);
    EXPECT_EQ(e.evaluate(normal), second);
    EXPECT_EQ(korvale_equations_seeded(e, &seed), 1);
    EXPECT_EQ(EqEvaluate(e.record(), even), third);
    EXPECT_EQ(Mwrand(), next); // none of them was drawn from the process
    EXPECT_EQ(korvale_equations_seed(e, seed, nullptr), KORVALE_OK);
    EXPECT_EQ(e.evaluate(even), third);
    EXPECT_EQ(korvale_equations_seed(e, 5, nullptr), KORVALE_OK);
    EXPECT_EQ(korvale_equations_make_table(e, "RAND", 2, nullptr), KORVALE_OK);
    EXPECT_EQ(e.evaluate(even), first);
    EXPECT_EQ(korvale_equations_seeded(other, nullptr), 0);
    EXPECT_EQ(sentence_of(KORVALE_BAD_ARGUMENT, [](auto* x) { return korvale_equations_seed(nullptr, 1, x); }),
              "korvale_equations_seed: equations must be given, but it is null");
    EXPECT_EQ(korvale_equations_seeded(nullptr, &seed), 0);
}

// --- Columns ---------------------------------------------------------------------------------------------------------

TEST(DoorEquations, RunOverColumnsOfAnyLayout)
{
    Handle e("z x y");
    const int32_t z = e.add("z = x + 10 * y");
    double points[] = {1, 2, 0, 3, 4, 0};
    const float ys[] = {9, 0.5f, 9, 1.5f};
    float rounded[2];
    const korvale_column in_place[] = {{"x", {points, 2, 24, 1, KORVALE_DOUBLE}},
                                       {"y", {points + 1, 2, 24, 0, KORVALE_DOUBLE}}};
    const korvale_numbers_out into = {points + 2, 2, 24, 1, KORVALE_DOUBLE};
    EXPECT_EQ(korvale_equations_evaluate_rows(e, z, in_place, 2, &into, nullptr, nullptr, nullptr), KORVALE_OK);
    EXPECT_THAT(points, ElementsAre(1, 2, 21, 3, 4, 43));
    EXPECT_EQ(e.get("x"), 3);
    EXPECT_EQ(e.get("z"), 43);
    const korvale_column floats[] = {{"y", {ys + 1, 2, 8, 1, KORVALE_FLOAT}}};
    const korvale_numbers_out to_floats = {rounded, 2, 0, 1, KORVALE_FLOAT};
    e.set("x", 0.1);
    EXPECT_EQ(korvale_equations_evaluate_rows(e, z, floats, 1, &to_floats, nullptr, nullptr, nullptr), KORVALE_OK);
    EXPECT_THAT(rounded, ElementsAre(5.1f, 15.1f));
    EXPECT_EQ(e.get("z"), 15.1);
    const korvale_column backwards[] = {{"x", {points + 3, 2, -24, 1, KORVALE_DOUBLE}}};
    EXPECT_EQ(korvale_equations_evaluate_rows(e, z, backwards, 1, &to_floats, nullptr, nullptr, nullptr), KORVALE_OK);
    EXPECT_THAT(rounded, ElementsAre(18, 16));
}

TEST(DoorEquations, PassOverColumns)
{
    Handle e("s");
    EXPECT_EQ(korvale_equations_declare(e, "a b", 1, nullptr), KORVALE_OK);
    e.add("a = b + 1");
    e.add("b = a + 1");
    e.add("s = s + a");
    const std::vector<double> as = {0, 10}, bs = {0, 20};
    std::vector<double> a(2), b(2);
    const korvale_column columns[] = {{"a", rows_of(as)}, {"b", rows_of(bs)}};
    const korvale_column_out results[] = {{"a", rows_to(a)}, {"b", rows_to(b)}};
    EXPECT_EQ(korvale_equations_pass_rows(e, columns, 2, results, 2, nullptr, nullptr, nullptr), KORVALE_OK);
    EXPECT_THAT(a, ElementsAre(1, 21));
    EXPECT_THAT(b, ElementsAre(1, 11));
    EXPECT_EQ(e.get("s"), 10);
    EXPECT_EQ(korvale_equations_pass_rows(e, nullptr, 0, results, 1, nullptr, nullptr, nullptr),
              KORVALE_OK); // as many rows as a has
    EXPECT_THAT(a, ElementsAre(12, 23));
    EXPECT_EQ(korvale_equations_pass_rows(e, nullptr, 0, nullptr, 0, nullptr, nullptr, nullptr), KORVALE_OK);
}

TEST(DoorEquations, RefuseColumnsBeforeAnythingIsComputed)
{
    Handle e;
    e.add("h = r + 1");
    const std::vector<double> three = {1, 2, 3}, two = {1, 2};
    std::vector<double> out = {7, 7, 7};
    const korvale_numbers_out to = rows_to(out);
    const auto text = [&](std::vector<korvale_column> columns) {
        const auto n = static_cast<int64_t>(columns.size());
        return sentence_of(KORVALE_BAD_ARGUMENT, [&](auto* error) {
            return korvale_equations_evaluate_rows(e, 0, columns.data(), n, &to, nullptr, nullptr, error);
        });
    };
    const std::string function = "korvale_equations_evaluate_rows: ";
    EXPECT_EQ(text({{"r", rows_of(three)}, {"t", rows_of(two)}}),
              function + "column \"t\" must have 3 values, but it has 2");
    EXPECT_EQ(text({{"q", rows_of(three)}}), function + "name must be a variable, but \"q\" is none");
    EXPECT_EQ(text({{nullptr, rows_of(three)}}), function + "name must be given, but it is null");
    EXPECT_EQ(text({{"r", {nullptr, 3, 0, 1, KORVALE_DOUBLE}}}),
              function + "column \"r\" must have data, but it is null");
    EXPECT_EQ(text({{"r", {three.data(), 3, 0, 3, KORVALE_DOUBLE}}}),
              function + "column \"r\" must have a width of 1, but it is 3");
    EXPECT_EQ(text({{"r", {three.data(), 3, 0, 1, 2}}}),
              function + "column \"r\" must be of kind KORVALE_DOUBLE or KORVALE_FLOAT, but its kind is 2");
    EXPECT_EQ(text({{"r", {three.data(), -1, 0, 1, KORVALE_DOUBLE}}}),
              function + "column \"r\" must have a count of 0 or more, but it is -1");
    EXPECT_EQ(sentence_of(
                  KORVALE_BAD_ARGUMENT,
                  [&](auto* x) { return korvale_equations_evaluate_rows(e, 0, nullptr, 1, &to, nullptr, nullptr, x); }),
              function + "columns must be given, but it is null");
    EXPECT_EQ(sentence_of(KORVALE_BAD_ARGUMENT,
                          [&](auto* x) {
                              return korvale_equations_evaluate_rows(e, 0, nullptr, -1, &to, nullptr, nullptr, x);
                          }),
              function + "columns must be 0 or more, but there are -1");
    EXPECT_EQ(sentence_of(KORVALE_BAD_ARGUMENT,
                          [&](auto* x) {
                              return korvale_equations_evaluate_rows(e, 0, nullptr, 0, nullptr, nullptr, nullptr, x);
                          }),
              function + "output must be given, but it is null");
    const korvale_column column = {"r", rows_of(three)};
    const korvale_column_out result = {"h", {out.data(), 2, 0, 1, KORVALE_DOUBLE}};
    EXPECT_EQ(sentence_of(
                  KORVALE_BAD_ARGUMENT,
                  [&](auto* x) { return korvale_equations_pass_rows(e, &column, 1, &result, 1, nullptr, nullptr, x); }),
              "korvale_equations_pass_rows: column \"h\" must have 3 values, but it has 2");
    EXPECT_THAT(out, ElementsAre(7, 7, 7));
    EXPECT_EQ(e.get("r"), 0);
}

// --- What is refused of a text ---------------------------------------------------------------------------------------

TEST(DoorEquations, RefuseWhatTheLanguageDoesNotHave)
{
    Handle e("h r t x y");
    const std::string no = " is no sign of equations: ", letters = " is no number: numbers have digits and a point, "
                                                                   "but no letters";
    const struct {
        const char* text;
        Refused expected;
    } cases[] = {
        {"h = 1e-3", {4, "1e-3", "\"1e-3\"" + letters + "; write 0.001"}},
        {"h = 2.5E2", {4, "2.5E2", "\"2.5E2\"" + letters + "; write 250"}},
        {"h = 12.5e-1 + x", {4, "12.5e-1", "\"12.5e-1\"" + letters + "; write 1.25"}},
        {"h = .5e+1", {4, ".5e+1", "\".5e+1\"" + letters + "; write 5"}},
        {"h = 1e-300", {4, "1e-300", "\"1e-300\"" + letters + "; write 1 * 10 ^ -300"}},
        {"h = 0x10", {4, "0x10", "\"0x10\"" + letters}},
        {"h = 2q", {4, "2q", "\"2q\"" + letters}},
        {"h = 2x", {4, "2x", "\"2x\" has no operator: write 2 * x"}},
        {"h = 2SIN(x)", {4, "2SIN", "\"2SIN\" has no operator: write 2 * SIN"}},
        {"h = 2E", {4, "2E", "\"2E\" has no operator: write 2 * E"}},
        {"h = 2ANGLE x", {4, "2ANGLE", "\"2ANGLE\" has no space: write 2 ANGLE"}},
        {"h = 1.2.3", {4, "1.2.3", "\"1.2.3\" is no number"}},
        {"h = .", {4, ".", "\".\" is no number"}},
        {"h = |x|", {4, "|", "\"|\"" + no + "for an absolute value write SQRT(x * x)"}},
        {"h = x\u00b2", {5, "\u00b2", "\"\u00b2\"" + no + "write ^ 2"}},
        {"h = \u221ax", {4, "\u221a", "\"\u221a\"" + no + "write SQRT(x)"}},
        {"h = 2 * \u03c0", {8, "\u03c0", "\"\u03c0\"" + no + "write PI"}},
        {"h = \u03b1", {4, "\u03b1", "\"\u03b1\" is no character of equations, which are ASCII"}},
        {"h = 2\u00a0* x", {5, "\u00a0", "\"\u00a0\"" + no + "write a plain space"}},
        {"h = 10%", {6, "%", "\"%\"" + no + "for per cent write / 100, for a remainder add a function"}},
        {"h = x!", {5, "!", "\"!\"" + no + "there are no factorials and there is no logic"}},
        {"h == x", {2, "==", "\"==\"" + no + "write one \"=\""}},
        {"h := x", {2, ":=", "\":=\"" + no + "write ="}},
        {"h:=x", {1, ":=", "\":=\"" + no + "write ="}},
        {"h += x", {2, "+=", "\"+=\"" + no + "write h = h +"}},
        {"h + 1 = x", {2, "+", "only a variable stands before the \"=\""}},
        {"h x = x", {2, "x", "only a variable stands before the \"=\""}},
        {"h = x = y", {6, "=", "\"=\"" + no + "it stands once, after the variable that is changed"}},
        {"H = x", {0, "H", "\"H\" is not a variable: write h, capitals count"}},
        {"h =", {3, "", "an operand is missing after \"=\""}},
        {"h = SIN", {7, "", "an operand is missing after \"SIN\""}},
        {"h = -", {5, "", "an operand is missing after \"-\""}},
        {"h = ()", {5, ")", "an operand is missing before \")\""}},
        {"h = SIN()", {8, ")", "an operand is missing before \")\""}},
        {"h = (x +)", {8, ")", "an operand is missing before \")\""}},
        {"h = x ** 2", {6, "**", "\"**\"" + no + "write ^"}},
        {"h = sin(x)", {4, "sin", "\"sin\" is neither a variable nor a function: write SIN, capitals count"}},
        {"h = CSO(x)", {4, "CSO", "\"CSO\" is neither a variable nor a function: write COS"}},
        {"h = sqtr(x)", {4, "sqtr", "\"sqtr\" is neither a variable nor a function: write SQRT"}},
        {"h = OCS(x)", {4, "OCS", "\"OCS\" is neither a variable nor a function: write COS"}},
        {"h = SOC(x)", {4, "SOC", "\"SOC\" is neither a variable nor a function"}},
        {"h = CSOX", {4, "CSOX", "\"CSOX\" is neither a variable nor a function"}},
        {"h = IP", {4, "IP", "\"IP\" is neither a variable nor a function"}},
        {"h = Sine(x)", {4, "Sine", "\"Sine\" is neither a variable nor a function: write SIN(x)"}},
        {"h = pi", {4, "pi", "\"pi\" is neither a variable nor a function: write PI, capitals count"}},
        {"h = abs(x)", {4, "abs", "\"abs\" is neither a variable nor a function: write SQRT(x * x)"}},
        {"h = MAX(x, y)",
         {4, "MAX", "\"MAX\" is neither a variable nor a function: write (a + b + SQRT((a - b) * (a - b))) / 2"}},
        {"h = min(x, y)",
         {4, "min", "\"min\" is neither a variable nor a function: write (a + b - SQRT((a - b) * (a - b))) / 2"}},
        {"h = FLOOR(x)", {4, "FLOOR", "\"FLOOR\" is neither a variable nor a function: add a function of that name"}},
        {"h = sign(x)", {4, "sign", "\"sign\" is neither a variable nor a function: write x / SQRT(x * x)"}},
        {"h = log10(x)", {4, "log10", "\"log10\" is no function: write LOG(x) / LOG(10)"}},
        {"h = ATAN2(y, x)", {4, "ATAN2", "\"ATAN2\" is no function: write (y ANGLE x)"}},
        {"h = if(x, y)", {4, "if", "\"if\" is neither a variable nor a function: there are no conditions"}},
        {"h = x < y", {6, "<", "\"<\"" + no + "there are no comparisons"}},
        {"h = x <= y", {6, "<=", "\"<=\"" + no + "there are no comparisons"}},
        {"x <= y", {2, "<=", "\"<=\"" + no + "there are no comparisons"}},
        {"h = x && y", {6, "&&", "\"&&\"" + no + "there is no logic"}},
        {"h = x ? 1 : 2", {6, "?", "\"?\"" + no + "there are no conditions"}},
        {"h = [x]", {4, "[", "\"[\"" + no + "write ("}},
        {"h = {x}", {4, "{", "\"{\"" + no + "write ("}},
        {"h = x;", {5, ";", "\";\"" + no + "add equations one by one"}},
        {"h = x # y", {6, "#", "\"#\"" + no + "there are no comments"}},
        {"h = x_1", {5, "_", "\"_\"" + no + "names have letters only"}},
        {"h = \"x\"", {4, "\"", "\"\"\" is no sign of equations"}},
        {"h = x\x01", {5, "\x01", "\"\x01\" is no character of equations, which are ASCII"}},
        {"h = \xff", {4, "\xff", "\"\xff\" is no character of equations, which are ASCII"}},
        {"h = 1,5", {5, ",", "a number has a point: write 1.5 for 1,5"}},
        {"h = x, + y", {5, ",", "a comma stands only between the two operands of a function"}},
        {"h = SIN(x,)", {9, ",", "a comma stands only between the two operands of a function"}},
        {"h = 1 2 +", {6, "2", "there is no operator between \"1\" and \"2\""}},
        {"h = SIN2", {4, "SIN2", "\"SIN2\" is no name: names have letters only"}},
        {"h = x ANGLE2", {6, "ANGLE2", "\"ANGLE2\" is no name: names have letters only"}},
        {"h = x2", {5, "2", "there is no operator between \"x\" and \"2\""}},
        {"h = ANGLE x", {4, "ANGLE", "an operand is missing before \"ANGLE\""}},
        {"h = x()", {5, "(", "there is no operator between \"x\" and \"(\""}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(refusal(e, c.text), c.expected) << c.text;
    EXPECT_EQ(korvale_equations_count(e), 0);
    EXPECT_EQ(e.record()->equations->count, 0);
}

TEST(DoorEquations, ComputeWhatTheyAdviseForFunctionsThatAreNotThere)
{
    Handle e("h x y a b t");
    const auto value = [&](const char* text) { return e.evaluate(e.add(text)); };
    e.set("a", 3);
    e.set("b", -5);
    EXPECT_EQ(value("h = (a + b + SQRT((a - b) * (a - b))) / 2"), 3);
    EXPECT_EQ(value("h = (a + b - SQRT((a - b) * (a - b))) / 2"), -5);
    e.set("t", 0.25);
    EXPECT_EQ(value("h = a + (b - a) * t"), 1);
    e.set("x", -2);
    EXPECT_EQ(value("h = x / SQRT(x * x)"), -1);
    EXPECT_DOUBLE_EQ(value("h = (EXP(x) - EXP(0 - x)) / 2"), std::sinh(-2));
    EXPECT_DOUBLE_EQ(value("h = (EXP(x) + EXP(0 - x)) / 2"), std::cosh(-2));
    EXPECT_DOUBLE_EQ(value("h = 1 - 2 / (EXP(2 * x) + 1)"), std::tanh(-2));
    e.set("y", 3);
    EXPECT_EQ(value("h = (y ANGLE x)"), std::atan2(3.0, -2.0));
    e.set("x", 0);
    EXPECT_EQ(value("h = x / SQRT(x * x)"), 0);
    e.set("x", 1000);
    EXPECT_DOUBLE_EQ(value("h = LOG(x) / LOG(10)"), 3);
    EXPECT_DOUBLE_EQ(value("h = LOG(x) / LOG(2)"), std::log2(1000));
    EXPECT_DOUBLE_EQ(value("h = x ^ (1 / 3)"), 10);
}

// `ANGLE(a + 1, b)` would be a ANGLE (1 + b), `2 + ANGLE(a, b)` lacks an operand, `ADD(a, b) * 2` would be a + b * 2.
TEST(DoorEquations, RefuseAFunctionOfTwoBeforeItsOperandsWhereItWouldTakeOthers)
{
    Handle e("h x y");
    const std::string why = "a function of two arguments stands between them: write (a ADD b) for ADD(a, b)";
    EXPECT_EQ(refusal(e, "h = ANGLE(x + 1, y)"), (Refused{15, ",", why}));
    EXPECT_EQ(refusal(e, "h = ANGLE(ANGLE(x, y), y)"), (Refused{21, ",", why}));
    EXPECT_EQ(refusal(e, "h = 2 + ANGLE(x, y)"), (Refused{8, "ANGLE", why}));
    EXPECT_EQ(refusal(e, "h = -ADD(x, y)"), (Refused{5, "ADD", why}));
    EXPECT_EQ(refusal(e, "h = ADD(x, y) * 2"), (Refused{14, "*", why}));
    EXPECT_EQ(refusal(e, "h = ADD(x, -y)"), (Refused{11, "-", why}));
    EXPECT_EQ(refusal(e, "h = ADD(x)"), (Refused{9, ")", "an operand is missing before \")\""}));
    EXPECT_EQ(refusal(e, "h = ADD(x, y, 1)").why, "a comma stands only between the two operands of a function");
    e.set("x", 3);
    e.set("y", 4);
    EXPECT_EQ(e.evaluate(e.add("h = ADD(x, y * 2) - 1")), 10);
    EXPECT_EQ(e.evaluate(e.add("h = 2 * POWER(x, y) + (ADD(-x, 1))")), 160);
    EXPECT_EQ(e.evaluate(e.add("h = MULTIPLY((x + 1), SQRT y)")), 8);
}

TEST(DoorEquations, RefuseNamesOfMoreThanTwelveLetters)
{
    Handle e("h ABCDEFGHIJKL");
    EXPECT_EQ(refusal(e, "h = ABCDEFGHIJKLADD 2"), (Refused{4, "ABCDEFGHIJKLADD", "names have at most 12 letters"}));
    EXPECT_EQ(refusal(e, "h = ABCDEFGHIJKMX"),
              (Refused{4, "ABCDEFGHIJKM", "\"ABCDEFGHIJKM\" is neither a variable nor a function"}));
}

TEST(DoorEquations, SayWhatIsBeyondTheParsersLimits)
{
    Handle e("h r");
    std::string sum = "h = r", nested = "h = ";
    for (int i = 0; i < 60; ++i)
        sum += " + r";
    for (int i = 0; i < 60; ++i)
        nested += '(';
    nested += 'r' + std::string(60, ')');
    EXPECT_EQ(refusal(e, sum).why, "it has more than 100 numbers, names and operators");
    EXPECT_EQ(refusal(e, nested).why, "it nests deeper than 51 operators or functions, or operators lack operands");
    EXPECT_EQ(korvale_equations_count(e), 0);
}

TEST(DoorEquations, QuoteOfALongTextOnlyWhatThereIsRoomFor)
{
    Handle e("h r");
    std::string text = "h = q + ";
    for (int i = 0; i < 500; ++i)
        text += "r + ";
    korvale_error error;
    EXPECT_EQ(korvale_equations_add(e, text.c_str(), nullptr, &error), KORVALE_BAD_EQUATION);
    std::string given = error.given;
    EXPECT_TRUE(given.starts_with("\"h = q + r + r")) << given;
    EXPECT_TRUE(given.ends_with("...\" is refused at character 5: \"q\" is neither a variable nor a function"))
        << given;
    EXPECT_GT(given.size(), 600u);

    text += "zz";
    text[4] = 'r';
    EXPECT_EQ(korvale_equations_add(e, text.c_str(), nullptr, &error), KORVALE_BAD_EQUATION);
    given = error.given;
    EXPECT_EQ(error.place, 2008);
    EXPECT_TRUE(given.starts_with("\"...")) << given;
    EXPECT_TRUE(given.ends_with("r + zz\" is refused at character 2009: \"zz\" is neither a variable nor a function"))
        << given;

    std::string accents = "h = "; // two bytes each: none is cut in two
    for (int i = 0; i < 600; ++i)
        accents += "\u00e9";
    EXPECT_EQ(korvale_equations_add(e, accents.c_str(), nullptr, &error), KORVALE_BAD_EQUATION);
    given = error.given;
    const size_t end = given.find("...\"");
    ASSERT_NE(end, std::string::npos);
    EXPECT_EQ(end % 2, 1u);
    EXPECT_EQ(given.substr(end - 2, 2), "\u00e9");
}

TEST(DoorEquations, ARefusedTextLeavesNothingBehind)
{
    Handle e("h r");
    const auto* table = static_cast<const DATAstruct*>(e.record()->tables->pvals[15]);
    std::string sum = "h = RAND";
    for (int i = 0; i < 60; ++i)
        sum += " + RAND";
    EXPECT_EQ(korvale_equations_add(e, sum.c_str(), nullptr, nullptr), KORVALE_BAD_EQUATION);
    EXPECT_EQ(table->dim, 0);
    EXPECT_EQ(e.record()->equations->count, 0);
    EXPECT_EQ(e.add("h = r"), 0);
}

/// The value of an expression as it reads: prefixes first, then ^ from the right, * and /, + and -, other functions of
/// two from the left.
class Plain {
public:
    Plain(const std::string& text, double x, double y) : at_(text.c_str()), x_(x), y_(y) {}
    double value() { return chain(0); }

private:
    void skip()
    {
        while (*at_ == ' ')
            ++at_;
    }
    bool take(const char* word)
    {
        skip();
        const size_t n = std::strlen(word);
        if (std::strncmp(at_, word, n) != 0 || (std::isalpha(word[0]) && std::isalpha(at_[n])))
            return false;
        at_ += n;
        return true;
    }
    double operand()
    {
        if (take("-"))
            return -operand();
        if (take("SQRT"))
            return std::sqrt(operand());
        for (const auto& [name, function] : kTwo)
            if (take(name) && take("(")) {
                const double a = chain(0);
                EXPECT_TRUE(take(","));
                const double b = chain(0);
                EXPECT_TRUE(take(")"));
                return function(a, b);
            }
        if (take("(")) {
            const double inside = chain(0);
            EXPECT_TRUE(take(")"));
            return inside;
        }
        if (take("x"))
            return x_;
        if (take("y"))
            return y_;
        char* end;
        const double number = std::strtod(at_, &end);
        EXPECT_NE(end, at_);
        at_ = end;
        return number;
    }
    /// Whether an operator of a level comes: ANGLE, then + and -, then * and /, then ^.
    double (*operation(int level))(double, double)
    {
        if (level == 0)
            return take("ANGLE") ? kTwo[0].second : nullptr;
        if (level == 1)
            return take("+") || take("ADD") ? EqFuncAdd : take("-") ? EqFuncSubtract : nullptr;
        if (level == 2)
            return take("*") || take("MULTIPLY") ? EqFuncMultiply : take("/") ? EqFuncDivide : nullptr;
        return take("^") || take("POWER") ? kTwo[3].second : nullptr;
    }
    double chain(int level)
    {
        double value = level == 3 ? operand() : chain(level + 1);
        while (auto* const function = operation(level)) {
            if (level == 3)
                return function(value, chain(3)); // from the right
            value = function(value, chain(level + 1));
        }
        return value;
    }

    static constexpr std::pair<const char*, double (*)(double, double)> kTwo[] = {
        {"ANGLE", std::atan2}, {"ADD", EqFuncAdd}, {"MULTIPLY", EqFuncMultiply}, {"POWER", std::pow}};
    const char* at_;
    double x_, y_;
};

TEST(DoorEquations, WhatIsTakenMeansWhatItSays)
{
    const char* const words[] = {"x",     "y",          "2",       "0.5",       " + ",    " - ",         " * ",
                                 " / ",   " ^ ",        "(",       ")",         "SQRT ",  "-",           " ANGLE ",
                                 " ADD ", " MULTIPLY ", " POWER ", "ADD(x, y)", "ANGLE(", "POWER(y, 2)", ", "};
    Random random(1212);
    Handle e("h x y");
    e.set("x", 1.5);
    e.set("y", 0.75);
    int taken = 0;
    for (int round = 0; round < rounds(60000); ++round) {
        std::string text;
        bool wants_operand = true; // more often than not, so that many are whole
        for (int i = random.between(1, 9); i > 0; --i) {
            const char* word;
            do
                word = words[random.below(std::size(words))];
            while (!random.one_in(8) && wants_operand != (std::strchr("xy20(S-", word[0]) != nullptr ||
                                                          word[1] == 'D' || word[1] == 'N' || (word[0] == 'P')));
            text += word;
            wants_operand = std::strchr("xy2.05)", text.back()) == nullptr;
        }
        int32_t number;
        if (korvale_equations_add(e, ("h = " + text).c_str(), &number, nullptr) != KORVALE_OK)
            continue;
        ++taken;
        ASSERT_TRUE(same_bits(Plain(text, 1.5, 0.75).value(), e.evaluate(number))) << text;
    }
    EXPECT_GT(taken, rounds(60000) / 20);
}

// --- Functions of the host -------------------------------------------------------------------------------------------

double scaled(const double* arguments, void* user)
{
    return arguments[0] * *static_cast<double*>(user);
}

double five(const double*, void*)
{
    return 5;
}

double twice_the_first(const double* arguments, void*)
{
    return 2 * arguments[0] + arguments[1];
}

TEST(DoorFunctions, AreCalledWithTheirUser)
{
    double two = 2, three = 3;
    Handle e("h x");
    EXPECT_EQ(korvale_equations_function(e, "DOUBLE", 1, scaled, &two, nullptr, nullptr), KORVALE_OK);
    EXPECT_EQ(korvale_equations_function(e, "TRIPLE", 1, scaled, &three, nullptr, nullptr), KORVALE_OK);
    EXPECT_EQ(korvale_equations_function(e, "FIVE", 0, five, nullptr, nullptr, nullptr), KORVALE_OK);
    EXPECT_EQ(korvale_equations_function(e, "MORE", 2, twice_the_first, nullptr, nullptr, nullptr), KORVALE_OK);
    const int32_t h = e.add("h = DOUBLE x + TRIPLE x * FIVE MORE 1");
    e.set("x", 7);
    EXPECT_EQ(e.evaluate(h), 2 * (14 + 105) + 1);
    EXPECT_EQ(EqEvaluate(e.record(), h), 239); // on the record as well
    two = 0;
    EXPECT_EQ(e.evaluate(h), 211);
}

TEST(DoorFunctions, ReleaseTheirUserOnce)
{
    int released = 0;
    const auto release = [](void* user) { ++*static_cast<int*>(user); };
    {
        Handle e("h x");
        EXPECT_EQ(korvale_equations_function(e, "A", 0, five, &released, release, nullptr), KORVALE_OK);
        EXPECT_EQ(korvale_equations_function(e, "B", 0, five, &released, release, nullptr),
                  KORVALE_OK); // the same slot
        EXPECT_EQ(released, 0);
        EXPECT_EQ(korvale_equations_function(e, "A", 0, five, &released, release, nullptr), KORVALE_BAD_ARGUMENT);
        EXPECT_EQ(released, 1); // at once where it fails
    }
    EXPECT_EQ(released, 3);
    EXPECT_EQ(korvale_equations_function(nullptr, "A", 0, five, &released, release, nullptr), KORVALE_BAD_ARGUMENT);
    EXPECT_EQ(released, 4);
}

TEST(DoorFunctions, RefuseWhatIsNone)
{
    Handle e("h x");
    const auto text = [&](const char* name, int32_t arguments, korvale_function function) {
        return sentence_of(KORVALE_BAD_ARGUMENT, [&](auto* error) {
            return korvale_equations_function(e, name, arguments, function, nullptr, nullptr, error);
        });
    };
    const std::string function = "korvale_equations_function: ";
    EXPECT_EQ(text("x", 0, five), function + "name must be new, but \"x\" is a function or a variable");
    EXPECT_EQ(text("SIN", 0, five), function + "name must be new, but \"SIN\" is a function or a variable");
    EXPECT_EQ(text("x1", 0, five), function + "name must be 1 to 12 letters, but it is \"x1\"");
    EXPECT_EQ(text("F", 3, five), function + "arguments must be 0, 1 or 2, but it is 3");
    EXPECT_EQ(text("F", 0, nullptr), function + "function must be given, but it is null");
    EXPECT_EQ(text(nullptr, 0, five), function + "name must be given, but it is null");
}

TEST(DoorFunctions, HaveRoomFor512OfEachNumberOfArguments)
{
    std::vector<double> users(513, 1);
    std::vector<std::unique_ptr<Handle>> systems;
    const auto add = [&](void* user) {
        systems.push_back(std::make_unique<Handle>("h x"));
        korvale_error error;
        const auto status = korvale_equations_function(*systems.back(), "F", 1, scaled, user, nullptr, &error);
        return status == KORVALE_OK ? "" : std::string(error.text);
    };
    for (size_t i = 0; i < 512; ++i) {
        users[i] = static_cast<double>(i);
        ASSERT_EQ(add(&users[i]), "");
    }
    EXPECT_EQ(add(&users[512]), "korvale_equations_function: function must be one of 512 of 1 argument in the process, "
                                "but there are as many");
    for (int i = 0; i < 1000; ++i) // one slot for all
        ASSERT_EQ(add(&users[7]), "");
    for (size_t i = 0; i < 512; ++i) {
        systems[i]->set("x", 2);
        ASSERT_EQ(systems[i]->evaluate(systems[i]->add("h = F(x)")), 2.0 * static_cast<double>(i));
    }
    systems.clear();
    EXPECT_EQ(add(&users[512]), "");
}

/// Stops its system at the third call.
struct Stopper {
    korvale_equations* equations;
    int calls;

    static double call(const double* arguments, void* user)
    {
        auto& self = *static_cast<Stopper*>(user);
        if (++self.calls == 3)
            korvale_equations_stop(self.equations);
        return arguments[0];
    }
};

TEST(DoorFunctions, MayStopTheEvaluation)
{
    Handle e("h x");
    Stopper stopper = {e, 0};
    EXPECT_EQ(korvale_equations_function(e, "F", 1, Stopper::call, &stopper, nullptr, nullptr), KORVALE_OK);
    const int32_t h = e.add("h = F(x)");
    const std::vector<double> xs = {1, 2, 3, 4, 5};
    std::vector<double> out(5, 7);
    const korvale_column column = {"x", rows_of(xs)};
    const korvale_numbers_out to = rows_to(out);
    korvale_error error;
    EXPECT_EQ(korvale_equations_evaluate_rows(e, h, &column, 1, &to, nullptr, nullptr, &error), KORVALE_STOPPED);
    EXPECT_STREQ(error.text, "korvale_equations_evaluate_rows: it was asked to stop");
    EXPECT_THAT(out, ElementsAre(1, 2, 7, 7, 7));
    EXPECT_EQ(stopper.calls, 3);
    EXPECT_EQ(e.evaluate(h), 3); // the next call goes on
    stopper.calls = 2;
    double result = 9;
    EXPECT_EQ(korvale_equations_evaluate(e, h, &result, nullptr), KORVALE_STOPPED);
    EXPECT_EQ(result, 9);
    stopper.calls = 2;
    EXPECT_EQ(korvale_equations_pass(e, nullptr), KORVALE_STOPPED);
}

/// Adds to its own system while it runs, and runs it.
double meddle(const double* arguments, void* user)
{
    auto* const e = static_cast<korvale_equations*>(user);
    for (int i = 0; i < 40; ++i) {
        const std::string name(static_cast<size_t>(i / 26 + 1), static_cast<char>('a' + i % 26));
        EXPECT_EQ(korvale_equations_declare(e, name.c_str(), 0, nullptr), KORVALE_OK);
    }
    EXPECT_EQ(korvale_equations_set(e, "b", arguments[0], nullptr), KORVALE_OK);
    double b = 0;
    EXPECT_EQ(korvale_equations_get(e, "b", &b, nullptr), KORVALE_OK);
    int32_t number = 0;
    EXPECT_EQ(korvale_equations_add(e, "b = b + 1", &number, nullptr), KORVALE_OK);
    EXPECT_EQ(korvale_equations_evaluate(e, number, &b, nullptr), KORVALE_OK);
    return b;
}

TEST(DoorFunctions, MayUseTheirOwnSystem)
{
    Handle e("h x");
    EXPECT_EQ(korvale_equations_function(e, "MEDDLE", 1, meddle, static_cast<korvale_equations*>(e), nullptr, nullptr),
              KORVALE_OK);
    const int32_t h = e.add("h = MEDDLE(x) * 2");
    const std::vector<double> xs = {1, 2, 3};
    std::vector<double> out(3);
    const korvale_column column = {"x", rows_of(xs)};
    const korvale_numbers_out to = rows_to(out);
    EXPECT_EQ(korvale_equations_evaluate_rows(e, h, &column, 1, &to, nullptr, nullptr, nullptr), KORVALE_OK);
    EXPECT_THAT(out, ElementsAre(4, 6, 8));
    EXPECT_EQ(korvale_equations_count(e), 4);
}

TEST(DoorEquationsWithAnExhaustedHeap, FailWhole)
{
    NEEDS_HEAP_FAILURES();
    EXPECT_GT(fail_each_allocation([](int64_t) {
                  korvale_equations* e = nullptr;
                  korvale_error error;
                  double two = 2, result = 9;
                  const auto check = [&](korvale_status status) {
                      if (status != KORVALE_OK) {
                          EXPECT_EQ(status, KORVALE_NO_MEMORY) << error.text;
                          EXPECT_TRUE(std::string(error.text).ends_with(": the heap is exhausted"));
                      }
                      return status == KORVALE_OK;
                  };
                  if (!check(korvale_equations_new(&e, &error))) {
                      EXPECT_EQ(e, nullptr);
                      return;
                  }
                  if (check(korvale_equations_declare(e, "h x", 0, &error)) &&
                      check(korvale_equations_function(e, "F", 1, scaled, &two, nullptr, &error)) &&
                      check(korvale_equations_function(e, "G", 0, five, nullptr, nullptr, &error)) &&
                      check(korvale_equations_function(e, "K", 0, five, nullptr, nullptr, &error))) {
                      const bool is_added = check(korvale_equations_add(e, "h = F(x) + RAND", nullptr, &error));
                      EXPECT_EQ(korvale_equations_count(e), is_added ? 1 : 0);
                      if (is_added && check(korvale_equations_make_table(e, "RAND", 5, &error))) {
                          EXPECT_TRUE(check(korvale_equations_evaluate(e, 0, &result, &error)));
                      }
                  }
                  korvale_equations_free(e);
              }),
              20);
}

} // namespace
} // namespace korvale::test
