// Systems of equations of the C++ face: columns, refusals, functions made of lambdas.
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
        {"h = r + sin(t)", 8, "sin", "\"sin\" is neither a variable nor a function: write SIN, capitals count"},
        {"h = 2 3", 6, "3", "there is no operator between \"2\" and \"3\""},
        {"h = r t", 6, "t", "there is no operator between \"r\" and \"t\""},
        {"h = 1e5", 4, "1e5", "\"1e5\" is no number: numbers have digits and a point, but no letters; write 100000"},
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

TEST(FaceEquations, CallWhateverHasValuesOfItsOwn)
{
    Equations e = drum();
    const std::vector<double> heights = {10, 20, 30};
    double scale = 2;
    e.function("HEIGHT", [heights](double i) { return heights[static_cast<size_t>(i)]; });
    e.function("SCALED", [&scale](double x) { return scale * x; });
    e.function("NEXT", [n = 0]() mutable { return static_cast<double>(++n); });
    e.function("BOTH", std::function<double(double, double)>([](double a, double b) { return 100 * a + b; }));
    e.function("FLOOR", static_cast<double (*)(double)>(std::floor));
    e.function("WHOLE", [](double x) { return static_cast<int>(x); });
    const int h = e.add("h = SCALED(HEIGHT(r)) + NEXT BOTH FLOOR(t) + WHOLE(t)");
    e.set("r", 1);
    e.set("t", 3.5);
    EXPECT_EQ(e.evaluate(h), 4100 + 6);
    scale = 3;
    EXPECT_EQ(e.evaluate(h), 6200 + 6);
    Equations other = std::move(e);
    EXPECT_EQ(other.evaluate(h), 6300 + 6);
    EXPECT_EQ(EqEvaluate(&other.system(), h), 6400 + 6);
}

TEST(FaceEquations, LetGoOfWhatFunctionsKeep)
{
    const auto kept = std::make_shared<int>(5);
    {
        Equations e = drum();
        e.function("FIVE", [kept] { return static_cast<double>(*kept); });
        EXPECT_EQ(kept.use_count(), 2);
        EXPECT_THROW(e.function("FIVE", [kept] { return static_cast<double>(*kept); }), Error);
        EXPECT_EQ(kept.use_count(), 2);
    }
    EXPECT_EQ(kept.use_count(), 1);
}

TEST(FaceEquations, ThrowOnWhatAFunctionThrows)
{
    Equations e = drum();
    int calls = 0;
    e.function("PICKY", [&calls](double x) {
        ++calls;
        if (x > 2)
            throw std::range_error("too much");
        return x;
    });
    e.function("NEVER", []() -> double { throw 5; });
    const int h = e.add("h = PICKY(r) + PICKY(r + 1)"), never = e.add("h = NEVER");
    const std::vector<double> radii = {0, 1, 2, 3, 4};
    std::vector<double> heights(5, 7);
    const Column column = {"r", radii};
    EXPECT_THROW(e.evaluate(h, std::span(&column, 1), heights), std::range_error);
    EXPECT_EQ(heights, (std::vector<double>{1, 3, 7, 7, 7}));
    EXPECT_EQ(calls, 6); // none after the one that threw
    e.set("r", 1);
    EXPECT_EQ(e.evaluate(h), 3);
    EXPECT_THROW(e.evaluate(never), int);
    EXPECT_THROW(e.evaluate_all(), int);
    EXPECT_THROW(e.make_table("NEVER", 3), int);
    EXPECT_TRUE(std::isnan(EqEvaluate(&e.system(), never))); // nothing is thrown through the record
}

TEST(FaceEquations, OfFunctionsThatRunOtherSystemsEachThrowsItsOwn)
{
    Equations inner = drum(), outer = drum();
    inner.function("BAD", [](double x) -> double { throw x; });
    const int bad = inner.add("h = BAD(r)");
    outer.function("TRY", [&inner, bad](double x) {
        inner.set("r", x);
        try {
            return inner.evaluate(bad);
        } catch (double thrown) {
            return 10 * thrown;
        }
    });
    outer.function("PASS", [&inner, bad] { return inner.evaluate(bad); });
    const int tried = outer.add("h = TRY(r)"), passed = outer.add("h = PASS");
    outer.set("r", 4);
    EXPECT_EQ(outer.evaluate(tried), 40);
    EXPECT_THROW(outer.evaluate(passed), double);
}

TEST(FaceEquations, AThousandSystemsUseOneLambda)
{
    std::vector<Equations> systems;
    for (int i = 0; i < 1000; ++i) {
        systems.push_back(drum());
        systems.back().function("HALF", [](double x) { return x / 2; });
    }
    systems.back().set("r", 5);
    EXPECT_EQ(systems.back().evaluate(systems.back().add("h = HALF(r)")), 2.5);
}

TEST(FaceEquations, RepeatTheOneValueOfAColumnWithoutStride)
{
    Equations e = drum();
    const int h = e.add("h = r + t");
    const std::vector<double> radii = {1, 2, 3}, time = {10};
    std::vector<double> heights(3);
    const Column columns[] = {{"r", radii}, {"t", time.data(), 3, 0}};
    e.evaluate(h, columns, heights);
    EXPECT_EQ(heights, (std::vector<double>{11, 12, 13}));
    EXPECT_EQ(refusal_of([&] { e.evaluate(h, columns, heights.data(), 3, 0); }),
              "Equations::evaluate: column \"output\" must have a place for each row, but its stride is 0");
}

TEST(FaceEquations, SayWhatTheyRefuse)
{
    Equations e = drum();
    EXPECT_EQ(refusal_of([&] { e.declare("good x1"); }),
              "Equations::declare: names must be 1 to 12 letters each, but \"x1\" is among them");
    EXPECT_EQ(refusal_of([&] { e.declare(std::string_view("x\0y", 3)); }),
              "Equations::declare: names must be 1 to 12 letters each, but \"x?y\" is among them");
    EXPECT_EQ(refusal_of([&] { e.get(std::string_view("r\0", 2)); }),
              "Equations::get: name must be a variable, but \"r?\" is none");
    EXPECT_EQ(refusal_of([&] { e.declare("SIN"); }),
              "Equations::declare: names must be no functions', but \"SIN\" is one");
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

TEST(FaceEquations, RepeatWithASeedOfTheirOwn)
{
    Equations a = drum(), b = drum();
    const int h = a.add("h = RAND + GAUSS");
    b.add("h = RAND + GAUSS");
    EXPECT_EQ(a.seeded(), std::nullopt);
    a.seed(77);
    b.seed(77);
    const double first = a.evaluate(h);
    Equations moved = std::move(a);
    const double second = moved.evaluate(h);
    EqFuncRand();
    EXPECT_EQ(b.evaluate(h), first);
    EXPECT_EQ(b.evaluate(h), second);
    EXPECT_EQ(b.seeded(), moved.seeded());
}

TEST(FaceEquations, TellWhichWayTheLatestColumnsTook)
{
    Equations e = drum();
    const int h = e.add("h = r * t");
    const std::vector<double> r(100, 3.0);
    EXPECT_FALSE(e.ran_in_blocks());
    e.set("t", 2);
    EXPECT_EQ(e.evaluate(h, {{"r", r}})[99], 6);
    EXPECT_TRUE(e.ran_in_blocks());
    EXPECT_EQ(e.evaluate(h, {{"r", {r.data(), 5}}})[4], 6);
    EXPECT_FALSE(e.ran_in_blocks()); // too few rows
    e.system().var_vals->dvals[EqLookupVariable(&e.system(), std::string("t").data())] = 4;
    EXPECT_EQ(e.evaluate(h, {{"r", r}})[99], 12); // what the host has written to the record
    EXPECT_TRUE(e.ran_in_blocks());
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
