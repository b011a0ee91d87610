#include "direct.h"

namespace korvale::test {
namespace {

Equations drum()
{
    Equations e;
    e.declare("h r t");
    return e;
}

TEST(FaceEquations, EvaluateWholeColumnsLikeSingleCalls)
{
    Equations e = drum();
    const int h = e.add("h = SIN(r * 6 - t) * EXP(0 - r)");
    Random random(1210);
    const auto radii = random.uniforms(100, 0, 3), times = random.uniforms(100, 0, 9);
    const auto heights = e.evaluate(h, {{"r", radii}, {"t", times}});
    ASSERT_EQ(heights.size(), 100u);

    EquationSystem direct;
    EqSystemInitialize(&direct);
    char names[] = "h r t", text[] = "h = SIN(r * 6 - t) * EXP(0 - r)";
    EqParseVariables(&direct, names, 0);
    ASSERT_GT(EqParseEquation(&direct, text), 0);
    for (size_t i = 0; i < 100; ++i) {
        EqSetVariable(&direct, 3, radii[i]);
        EqSetVariable(&direct, 4, times[i]);
        ASSERT_TRUE(same_bits(EqEvaluate(&direct, 0), heights[i]));
    }
    EqSystemDispose(&direct);
    EXPECT_EQ(e.get("r"), radii[99]);
    EXPECT_EQ(e.get("h"), heights[99]);
    EXPECT_EQ(e.variables(), (std::vector<std::string>{"PI", "E", "h", "r", "t"}));
}

TEST(FaceEquations, ReadAndWriteStridedColumns)
{
    Equations e;
    e.declare("x y z");
    const int z = e.add("z = x + 10 * y");
    Outline points = {{1, 2, 0}, {3, 4, 0}};
    const Column columns[] = {{"x", &points[0][0], 2, 3}, {"y", &points[0][1], 2, 3}};
    e.evaluate(z, columns, &points[0][2], 2, 3);
    EXPECT_EQ(points, (Outline{{1, 2, 21}, {3, 4, 43}}));
}

TEST(FaceEquations, RunAllEquationsOverColumns)
{
    Equations e;
    e.declare("a b", true);
    e.declare("s");
    e.add("a = b + 1");
    e.add("b = a + 1");
    e.add("s = s + a");
    const std::vector<double> as = {0, 10}, bs = {0, 20};
    std::vector<double> a(2), b(2);
    const Column columns[] = {{"a", as}, {"b", bs}};
    const ResultColumn results[] = {{"a", a}, {"b", b}};
    e.evaluate_all(columns, results);
    EXPECT_EQ(a, (std::vector<double>{1, 21})); // reserved: both see the old values
    EXPECT_EQ(b, (std::vector<double>{1, 11}));
    EXPECT_EQ(e.get("s"), 10);
}

struct Refused {
    const char* text;
    size_t place;
    const char* word;
    const char* why;
};

TEST(FaceEquations, SayWhichWordIsRefusedWhereAndWhy)
{
    const Refused texts[] = {
        {"h 2", 3, "", "there is no \"=\""},
        {"y = 2", 0, "y", "\"y\" is not a variable"},
        {"  q2 = 2", 2, "q2", "\"q2\" is not a variable"},
        {" = 2", 1, "=", "the variable before \"=\" is missing"},
        {"h = SIM(r)", 4, "SIM", "\"SIM\" is neither a variable nor a function"},
        {"h = r + sin(t)", 8, "sin", "\"sin\" is neither a variable nor a function"},
        {"h = 2 3", 6, "3", "there is no operator between \"2\" and \"3\""},
        {"h = r t", 6, "t", "there is no operator between \"r\" and \"t\""},
        {"h = 1e5", 4, "1e5", "\"1e5\" is no number: numbers have digits and a point, but no letters"},
        {"h = 2 + 0x10 * r", 8, "0x10", "\"0x10\" is no number: numbers have digits and a point, but no letters"},
        {"h = (2", 4, "(", "the parenthesis is not closed"},
        {"h = 2)", 5, ")", "there is no \"(\" to this parenthesis"},
        {"h = 2 *", 7, "", "an operand is missing after \"*\""},
        {"h = * 2", 4, "*", "an operand is missing before \"*\""},
        {"h = ANGLE(r, t) 7", 16, "7", "there is no operator between \")\" and \"7\""},
        {"h = ABCDEFGHIJKLMNO", 4, "ABCDEFGHIJKL", "\"ABCDEFGHIJKL\" is neither a variable nor a function"},
    };
    Equations e = drum();
    for (const Refused& refused : texts) {
        try {
            e.add(refused.text);
            ADD_FAILURE() << refused.text << " was accepted";
        } catch (const EquationError& error) {
            EXPECT_EQ(error.place(), refused.place) << refused.text;
            EXPECT_EQ(error.word(), refused.word) << refused.text;
            EXPECT_EQ(error.what(), std::string("Equations::add: text must be an equation, but \"") + refused.text +
                                        "\" is refused at character " + std::to_string(refused.place + 1) + ": " +
                                        refused.why);
        }
    }
    EXPECT_EQ(e.size(), 0);
}

TEST(FaceEquations, GiveAReasonForEveryTextThatTheLibraryRefuses)
{
    const char* const words[] = {"r", "t", "2",   "1.5",  "+",     "-", "*", "/", "^",
                                 "(", ")", "SIN", "RAND", "ANGLE", ",", " ", "q"};
    Random random(1211);
    Equations e = drum();
    int refused = 0;
    for (int round = 0; round < rounds(3000); ++round) {
        std::string text = "h = ";
        for (int i = random.between(1, 8); i > 0; --i)
            text += words[random.below(std::size(words))];
        const int before = e.size();
        try {
            EXPECT_EQ(e.add(text), before);
            EquationSystem direct;
            EqSystemInitialize(&direct);
            char names[] = "h r t";
            EqParseVariables(&direct, names, 0);
            EXPECT_GT(EqParseEquation(&direct, text.data()), 0) << text;
            EqSystemDispose(&direct);
        } catch (const EquationError& error) {
            ++refused;
            EXPECT_LE(error.place(), text.size()) << text;
            EXPECT_EQ(text.substr(error.place(), error.word().size()), error.word()) << text;
            EXPECT_EQ(e.size(), before);
        }
    }
    EXPECT_GT(refused, 100);
}

TEST(FaceEquations, ARefusedTextLeavesNothingBehind)
{
    Equations e = drum();
    e.set("h", 7);
    EXPECT_THROW(e.add("h = RAND + RAND + nothing"), EquationError);
    e.evaluate_all();
    EXPECT_EQ(e.get("h"), 7); // a refused equation left in the system would make it 0
    const int h = e.add("h = RAND");
    EXPECT_EQ(h, 0);
    EqSeed(5);
    e.make_table("RAND", 3); // one column: the refused places count no more
    EqSeed(5);
    const double first = EqFuncRand(), second = EqFuncRand();
    e.set_table_position(0);
    EXPECT_EQ(e.evaluate(h), first);
    EXPECT_EQ(e.evaluate(h), first);
    e.set_table_position(0.5);
    EXPECT_EQ(e.evaluate(h), 0.5 * first + 0.5 * second);
}

TEST(FaceEquations, CallFunctionsMadeOfLambdas)
{
    Equations e = drum();
    e.function("STEP", [](double x) { return x < 0 ? 0.0 : 1.0; });
    e.function("LARGER", [](double a, double b) { return a > b ? a : b; });
    e.function("FIVE", [] { return 5.0; });
    const int h = e.add("h = STEP(r) * FIVE + t LARGER 2");
    e.set("r", 1);
    e.set("t", 3);
    EXPECT_EQ(e.evaluate(h), 8); // a two-argument function binds loosest: (STEP(r) * FIVE + t) LARGER 2
}

TEST(FaceEquations, SayWhatTheyRefuse)
{
    Equations e = drum();
    EXPECT_EQ(refusal_of([&] { e.declare("good x1"); }),
              "Equations::declare: a name must be 1 to 12 letters, but it is \"x1\"");
    EXPECT_EQ(refusal_of([&] { e.declare("SIN"); }),
              "Equations::declare: a name must be no function's, but \"SIN\" is one");
    EXPECT_EQ(refusal_of([&] { e.set("q", 1); }), "Equations::set: name must be a variable, but \"q\" is none");
    EXPECT_EQ(refusal_of([&] { e.evaluate(0); }),
              "Equations::evaluate: equation must be the number of one of 0 equations, but it is 0");
    e.add("h = r");
    const std::vector<double> three(3), two(2);
    EXPECT_EQ(refusal_of([&] {
                  e.evaluate(0, {{"r", three}, {"t", two}});
              }),
              "Equations::evaluate: column \"t\" must have 3 values, but it has 2");
    EXPECT_EQ(refusal_of([&] { e.function("r", [] { return 1.0; }); }),
              "Equations::function: name must be new, but \"r\" is a function or a variable");
    EXPECT_EQ(refusal_of([&] { e.make_table("SIN", 3); }),
              "Equations::make_table: name must be a function without arguments, but it is \"SIN\"");
    EXPECT_EQ(refusal_of([&] { e.make_table("RAND", 3); }),
              "Equations::make_table: name must stand in an equation, but no equation names \"RAND\" yet");
}

TEST(FaceEquations, Move)
{
    Equations e = drum();
    e.add("h = r + 1");
    Equations other = std::move(e);
    other.set("r", 2);
    EXPECT_EQ(other.evaluate(0), 3);
}

} // namespace
} // namespace korvale::test
