// EqParseEquation: the items of a text, and the texts that are refused.
#include "equation/parse.h"

#include <cstring>
#include <string>
#include <sys/mman.h>

#include <gtest/gtest.h>

#include "tests/equation/system.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"

namespace korvale::test {
namespace {

double doubled(double x)
{
    return 2 * x;
}

double nothing()
{
    return 0;
}

double left(double a, double)
{
    return a;
}

/// A system with the variables x, y, z (indices 2, 3, 4).
struct Parser : System {
    Parser() { declare("x y z"); }

    /// The program of `text`, or "refused".
    std::string of(const std::string& text) { return parse(text) < 0 ? "refused" : program(); }
};

std::string repeat(const std::string& part, int n)
{
    std::string text;
    for (int i = 0; i < n; ++i)
        text += part;
    return text;
}

TEST(EqParseEquation, TranslatesToPostfix)
{
    Parser es;
    EXPECT_EQ(es.parse("y = 2 + 3 * 4"), 6);
    EXPECT_EQ(es.program(), "y = 2 3 4 MULTIPLY ADD");
    EXPECT_EQ(es.kinds(0)->count, 6);
    EXPECT_EQ(es.of("y = 2 * 3 + 4"), "y = 2 3 MULTIPLY 4 ADD");
    EXPECT_EQ(es.of("y = (2 + 3) * 4"), "y = 2 3 ADD 4 MULTIPLY");
    EXPECT_EQ(es.of("y = 2 / 3 * 4"), "y = 2 3 DIVIDE 4 MULTIPLY");
    EXPECT_EQ(es.of("y = 2 + 3 * 4 ^ 5 - x"), "y = 2 3 4 5 POWER MULTIPLY ADD x SUBTRACT");
}

TEST(EqParseEquation, ShapesTheThreeChildren)
{
    Parser es;
    es.parse("y = x + 2.5");
    const DATAstruct *const kinds = es.kinds(0), *const operands = es.operands(0), *const constants = es.constants(0);
    EXPECT_EQ(kinds->type, DATA_TYPE_INT);
    EXPECT_EQ(operands->type, DATA_TYPE_INT);
    EXPECT_EQ(constants->type, DATA_TYPE_DOUBLE);
    EXPECT_EQ(operands->count, 100);
    EXPECT_EQ(constants->count, 100);
    for (const DATAstruct* child : {kinds, operands, constants}) {
        EXPECT_EQ(child->dim, 1);
        EXPECT_EQ(child->alloc_count, 100);
    }
    const int expected_kinds[] = {EQ_ITEM_TARGET, EQ_ITEM_VARIABLE, EQ_ITEM_CONSTANT, EQ_ITEM_BINARY};
    const int expected_operands[] = {3, 2, -1, 0};
    for (int p = 0; p < 100; ++p) {
        EXPECT_EQ(kinds->ivals[p], p < 4 ? expected_kinds[p] : 0);
        EXPECT_EQ(operands->ivals[p], p < 4 ? expected_operands[p] : -1);
        EXPECT_TRUE(same_bits(p == 2 ? 2.5 : 0.0, constants->dvals[p]));
    }
}

TEST(EqParseEquation, TheKindsOfItemsHaveTheirNumbers)
{
    Parser es;
    ASSERT_EQ(es.parse("y = SIN(x) + RAND * 1"), 7);
    const int kinds[] = {16, 5, 8, 7, 4, 9, 9, 0};
    const int operands[] = {3, 2, 6, 15, -1, 2, 0, -1};
    for (int p = 0; p < 8; ++p) {
        EXPECT_EQ(es.kinds(0)->ivals[p], kinds[p]);
        EXPECT_EQ(es.operands(0)->ivals[p], operands[p]);
    }
}

TEST(EqParseEquation, GroupsFromTheLeftAndPowersFromTheRight)
{
    Parser es;
    EXPECT_EQ(es.of("y = 8 - 3 - 2"), "y = 8 3 SUBTRACT 2 SUBTRACT");
    EXPECT_EQ(es.of("y = 8 - 3 + 2"), "y = 8 3 SUBTRACT 2 ADD");
    EXPECT_EQ(es.of("y = 8 / 4 / 2"), "y = 8 4 DIVIDE 2 DIVIDE");
    EXPECT_EQ(es.of("y = 2 ^ 3 ^ 2"), "y = 2 3 2 POWER POWER");
    EXPECT_EQ(es.of("y = x ANGLE y ANGLE z"), "y = x y ANGLE z ANGLE");
    EXPECT_EQ(es.of("y = x ANGLE y + 1"), "y = x y 1 ADD ANGLE");
    EXPECT_EQ(es.of("y = x + 1 ANGLE y"), "y = x 1 ADD y ANGLE");
}

TEST(EqParseEquation, PrefixMinusTakesTheNextOperandOrGroup)
{
    Parser es;
    EXPECT_EQ(es.of("y = -x"), "y = x NEGATE");
    EXPECT_EQ(es.of("y = -(x + 1)"), "y = x 1 ADD NEGATE");
    EXPECT_EQ(es.of("y = -x ^ 2"), "y = x NEGATE 2 POWER");
    EXPECT_EQ(es.of("y = 2 ^ -x"), "y = 2 x NEGATE POWER");
    EXPECT_EQ(es.of("y = 2 - -x"), "y = 2 x NEGATE SUBTRACT");
    EXPECT_EQ(es.of("y = --x"), "y = x NEGATE NEGATE");
    EXPECT_EQ(es.of("y = x - 1"), "y = x 1 SUBTRACT");
    EXPECT_EQ(es.of("y = x -1"), "y = x 1 SUBTRACT");
    EXPECT_EQ(es.of("y = (x) - 1"), "y = x 1 SUBTRACT");
    EXPECT_EQ(es.of("y = (-1)"), "y = 1 NEGATE");
    EXPECT_EQ(es.of("y = x - (-1)"), "y = x 1 NEGATE SUBTRACT");
    EXPECT_EQ(es.of("y = x --- 1"), "y = x 1 NEGATE NEGATE SUBTRACT");
}

TEST(EqParseEquation, FunctionsOfOneArgumentCloseAtTheirDepth)
{
    Parser es;
    EXPECT_EQ(es.of("y = SIN(PI / 2)"), "y = PI 2 DIVIDE SIN");
    EXPECT_EQ(es.of("y = SIN x + 1"), "y = x SIN 1 ADD");
    EXPECT_EQ(es.of("y = SIN(COS(x) + 1)"), "y = x COS 1 ADD SIN");
    EXPECT_EQ(es.of("y = SIN COS x"), "y = x COS SIN");
    EXPECT_EQ(es.of("y = SIN -x"), "y = x NEGATE SIN");
    EXPECT_EQ(es.of("y = -SIN(x)"), "y = x SIN NEGATE");
    EXPECT_EQ(es.of("y = SIN((x))"), "y = x SIN");
    EXPECT_EQ(es.of("y = SIN 2 ^ 2"), "y = 2 SIN 2 POWER");
    EXPECT_EQ(es.of("y = NEGATE x"), "y = x NEGATE");
}

TEST(EqParseEquation, TwoArgumentFunctionsStandBetweenTheirOperands)
{
    Parser es;
    EXPECT_EQ(es.of("y = x ANGLE z"), "y = x z ANGLE");
    EXPECT_EQ(es.of("y = x ADD z * 2"), "y = x z 2 MULTIPLY ADD");
    EXPECT_EQ(es.of("y = x MULTIPLY z + 2"), "y = x z MULTIPLY 2 ADD");
    EXPECT_EQ(es.of("y = x POWER y POWER z"), "y = x y z POWER POWER");
    es.add("LEFT", left);
    EXPECT_EQ(es.of("y = x LEFT -z"), "y = x z NEGATE LEFT");
}

TEST(EqParseEquation, AcceptsAListOfArgumentsAfterATwoArgumentFunction)
{
    Parser es;
    EXPECT_EQ(es.of("y = ANGLE(x, z)"), "y = x z ANGLE");
    EXPECT_EQ(es.of("y = ANGLE x z"), "y = x z ANGLE");
    EXPECT_EQ(es.of("y = 1 2 +"), "y = 1 2 ADD");
}

TEST(EqParseEquation, AnEmptyExpressionIsTheTargetAlone)
{
    Parser es;
    for (const char* text : {"y =", "y = ", "y = ()", "y = (())", "y = , , ;"}) {
        EXPECT_EQ(es.parse(text), 1) << text;
        EXPECT_EQ(es.program(), "y =") << text;
        EXPECT_EQ(es.kinds(es->equations->count - 1)->count, 1) << text;
    }
}

TEST(EqParseEquation, LoneFunctionsAreItemsWithoutOperands)
{
    Parser es;
    EXPECT_EQ(es.parse("y = SIN"), 2);
    EXPECT_EQ(es.program(), "y = SIN");
    EXPECT_EQ(es.parse("y = -"), 2);
    EXPECT_EQ(es.program(), "y = NEGATE");
    EXPECT_EQ(es.parse("y = SIN()"), 2);
}

TEST(EqParseEquation, ATextWithoutEqualsAddsAnEmptyEquation)
{
    Parser es;
    EXPECT_EQ(es.parse("y + 2"), 1);
    EXPECT_EQ(es.parse(""), 1);
    EXPECT_EQ(es->equations->count, 2);
    EXPECT_EQ(es.program(0), "");
    EXPECT_EQ(es.kinds(0)->count, 0);
}

TEST(EqParseEquation, RefusesMissingAndLeftOverOperands)
{
    Parser es;
    for (const char* text : {"y = 1 2", "y = 1 +", "y = + 1", "y = * x", "y = x y", "y = 1 + * 2", "y = (1 +) 2",
                             "y = x RAND", "y = SIN x y", "y = 1 2 3 +", "y = ANGLE", "y = x ANGLE", "y = ^"})
        EXPECT_EQ(es.parse(text), -1) << text;
}

TEST(EqParseEquation, RefusesUnbalancedParentheses)
{
    Parser es;
    for (const char* text : {"y = (1 + 2", "y = 1 + 2)", "y = (", "y = )", "y = )(", "y = ((1)", "y = (1))"})
        EXPECT_EQ(es.parse(text), -1) << text;
}

TEST(EqParseEquation, RefusesUnknownNames)
{
    Parser es;
    for (const char* text : {"y = q", "y = sin(x)", "y = X", "y = SINx", "q = 1", "= 1", "  = 1", "x1 = 1", "yy = 1"})
        EXPECT_EQ(es.parse(text), -1) << text;
    EXPECT_EQ(es->equations->count, 9);
}

TEST(EqParseEquation, TheTargetIsTheFirstWord)
{
    Parser es;
    EXPECT_EQ(es.of("  \t\n\v\f\ry of no account = 1"), "y = 1");
    EXPECT_EQ(es.of("y=1"), "y = 1");
    EXPECT_EQ(es.of("y = 1 = 2"), "refused");
    EXPECT_EQ(es.of("y == 1"), "y = 1");
}

TEST(EqParseEquation, AFirstWordLongerThanAnyNameIsNoVariable)
{
    Parser es;
    es.declare("twelveletter");
    EXPECT_EQ(es.of("twelveletter = 1"), "twelveletter = 1");
    EXPECT_EQ(es.of("twelveletters = 1"), "refused");
    EXPECT_EQ(es.of(std::string(100000, 'y') + " = 1"), "refused");
}

TEST(EqParseEquation, LeavesTheEqualsOverwrittenWithoutATarget)
{
    Parser es;
    char unknown[] = "q = 1", missing[] = " = 1";
    EXPECT_EQ(EqParseEquation(es, unknown), -1);
    EXPECT_EQ(std::memcmp(unknown, "q \0 1", 6), 0);
    EXPECT_EQ(EqParseEquation(es, missing), -1);
    EXPECT_EQ(std::memcmp(missing, " \0 1", 5), 0);
}

TEST(EqParseEquation, LeavesTheTextAsItWasOtherwise)
{
    Parser es;
    for (const char* text : {"y = 1 + x", "y = (", "y = q", "no equals", "y ="}) {
        std::string copy = text;
        EqParseEquation(es, copy.data());
        EXPECT_EQ(copy, text);
    }
}

TEST(EqParseEquation, ReadsATextInReadOnlyMemory)
{
    Parser es;
    constexpr size_t kPage = 4096;
    void* const page = mmap(nullptr, kPage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(page, MAP_FAILED);
    // Against the end of the page, so that reading beyond the text is seen as well.
    for (const char* text : {"y = SIN(x) * 2.5", "y = (1", "y = q", "y =", "y", ""}) {
        char* const at = static_cast<char*>(page) + kPage - std::strlen(text) - 1;
        std::strcpy(at, text);
        ASSERT_EQ(mprotect(page, kPage, PROT_READ), 0);
        EqParseEquation(es, at);
        ASSERT_EQ(mprotect(page, kPage, PROT_READ | PROT_WRITE), 0);
    }
    EXPECT_EQ(es.program(0), "y = x SIN 2.5 MULTIPLY");
    munmap(page, kPage);
}

TEST(EqParseEquation, LooksNamesUpByArityFirst)
{
    Parser es;
    es.add("F", left);
    es.add("F", nothing);
    EXPECT_EQ(es.of("y = F"), "y = F"); // without arguments comes before two arguments
    EXPECT_EQ(es.kinds(0)->ivals[1], EQ_ITEM_SAMPLE);
    EXPECT_EQ(es.operands(0)->ivals[1], 19);
    es.add("F", doubled);
    es.add("F", doubled);
    EXPECT_EQ(es.parse("y = F x"), 3); // one argument before both, the first of that kind
    EXPECT_EQ(es.kinds(1)->ivals[2], EQ_ITEM_UNARY);
    EXPECT_EQ(es.operands(1)->ivals[2], 20);
}

TEST(EqParseEquation, AFunctionComesBeforeAVariable)
{
    Parser es;
    es.add("z", doubled);
    EXPECT_EQ(es.of("y = z x"), "y = x z");
    EXPECT_EQ(es.kinds(0)->ivals[2], EQ_ITEM_UNARY);
    EXPECT_EQ(es.of("z = x"), "z = x"); // on the left it is still the variable
}

TEST(EqParseEquation, AThirteenthLetterStartsTheNextName)
{
    Parser es;
    es.declare("twelveletter");
    EXPECT_EQ(es.of("y = twelveletterx +"), "y = twelveletter x ADD");
    EXPECT_EQ(es.of("y = twelveletter + x"), "y = twelveletter x ADD");
    EXPECT_EQ(es.of("y = twelveletterq"), "refused");
}

TEST(EqParseEquation, ANumberMayFollowAName)
{
    Parser es;
    EXPECT_EQ(es.of("y = x2 +"), "y = x 2 ADD");
    EXPECT_EQ(es.of("y = x.5 *"), "y = x 0.5 MULTIPLY");
    EXPECT_EQ(es.of("y = x2"), "refused"); // two operands
}

TEST(EqParseEquation, ALetterThatEndsANumberIsSkipped)
{
    Parser es;
    EXPECT_EQ(es.of("y = 2x"), "y = 2");
    EXPECT_EQ(es.parse("y = 2x + 1"), 4);
    EXPECT_EQ(es.program(), "y = 2 1 ADD");
    EXPECT_EQ(es.of("y = 2M"), "y = 2"); // no variable of that name is asked for
    EXPECT_EQ(es.of("y = .5x - 1"), "y = 0.5 1 SUBTRACT");
    EXPECT_EQ(es.of("y = -2x"), "y = 2 NEGATE");
    EXPECT_EQ(es.of("y = 2xx *"), "y = 2 x MULTIPLY"); // one letter only
    EXPECT_EQ(es.of("y = 2xSIN x +"), "y = 2 x SIN ADD");
    EXPECT_EQ(es.of("y = 2SIN x"), "refused"); // IN is no name
    EXPECT_EQ(es.of("y = 2x *"), "refused");
    EXPECT_EQ(es.of("y = 1e5"), "refused"); // 1 and 5
    EXPECT_EQ(es.of("y = 1e5 +"), "y = 1 5 ADD");
    EXPECT_EQ(es.of("y = 0x10"), "refused");
}

TEST(EqParseEquation, OtherCharactersOnlySeparate)
{
    Parser es;
    EXPECT_EQ(es.of("y = x,+_1\n;!"), "y = x 1 ADD");
    EXPECT_EQ(es.of("y = \xc3\xa4 x \xff"), "y = x");
    EXPECT_EQ(es.of("y = [x] + {1}"), "y = x 1 ADD");
}

TEST(EqParseEquation, EachOccurrenceOfANoArgumentFunctionAddsAColumn)
{
    Parser es;
    EXPECT_EQ(es.of("y = RAND + RAND * GAUSS"), "y = RAND RAND GAUSS MULTIPLY ADD");
    EXPECT_EQ(es.table(15)->dim, 2);
    EXPECT_EQ(es.table(16)->dim, 1);
    es.parse("y = RAND");
    EXPECT_EQ(es.table(15)->dim, 3);
}

TEST(EqParseEquation, ARefusedEquationWidensTablesToo)
{
    Parser es;
    EXPECT_EQ(es.parse("y = RAND + q"), -1);
    EXPECT_EQ(es.parse("y = (RAND"), -1);
    EXPECT_EQ(es.parse("q = RAND"), -1); // not reached
    EXPECT_EQ(es.table(15)->dim, 2);
}

TEST(EqParseEquation, ARefusedEquationLeavesItsRowWithoutItems)
{
    Parser es;
    EXPECT_EQ(es.parse("y = 1 + q"), -1);
    EXPECT_EQ(es.parse("q = 1"), -1);
    EXPECT_EQ(es->equations->count, 2);
    EXPECT_EQ(es.kinds(0)->count, 0);
    EXPECT_EQ(es.kinds(0)->ivals[0], EQ_ITEM_TARGET);
    EXPECT_EQ(es.operands(0)->ivals[0], 3);
    EXPECT_EQ(es.kinds(1)->count, 0);
    EXPECT_EQ(es.kinds(1)->ivals[0], EQ_ITEM_END);
}

TEST(EqParseEquation, TheTwentyFirstEquationMakesRoomForFortyOne)
{
    Parser es;
    for (int i = 0; i < 20; ++i)
        ASSERT_EQ(es.parse("y = " + std::to_string(i)), 2);
    EXPECT_EQ(es->equations->alloc_count, 20);
    ASSERT_EQ(es.parse("y = 20"), 2);
    EXPECT_EQ(es->equations->count, 21);
    EXPECT_EQ(es->equations->alloc_count, 41);
    for (int slot = 63; slot < 123; ++slot)
        EXPECT_EQ(es->equations->pvals[slot], nullptr);
    while (es->equations->count < 42)
        ASSERT_EQ(es.parse("y = 1"), 2);
    EXPECT_EQ(es->equations->alloc_count, 62);
    EXPECT_EQ(es.program(0), "y = 0");
    EXPECT_EQ(es.program(20), "y = 20");
}

/// Has the array judged by count * dim, as one whose buffer a host has made.
void wrap(DATAstruct* d, int count)
{
    d->count = count;
    d->alloc_count = d->alloc_dim = -1;
}

TEST(EqParseEquation, EquationsInMemoryOfTheHostDoNotGrow)
{
    Parser es;
    es.parse("y = 1");
    es.parse("y = 2 + RAND");
    wrap(es->equations, 2);
    const std::string before = state_of(*es.get());
    EXPECT_EQ(es.parse("y = 3 + RAND"), -1);
    EXPECT_EQ(es.parse("no equals"), -1);
    char unknown[] = "q = 1";
    EXPECT_EQ(EqParseEquation(es, unknown), -1);
    EXPECT_STREQ(unknown, "q = 1"); // not read
    EXPECT_EQ(state_of(*es.get()), before);
    EXPECT_EQ(es->equations->pvals[6], nullptr);
    EXPECT_EQ(EqEvaluate(es, 0), 1.0);
    EXPECT_EQ(EqSystemEvaluate(es), 1);
    es->equations->alloc_count = 20;
    es->equations->alloc_dim = 3;
}

TEST(EqParseEquation, CountsBeyondAnyArrayAreRefused)
{
    Parser es;
    for (int count : {2147483647, 2147483640, 715827880}) {
        es->equations->count = count;
        EXPECT_EQ(es.parse("y = 1"), -1) << count;
        EXPECT_EQ(es->equations->count, count);
    }
    es->equations->count = 0;
    EXPECT_EQ(es.parse("y = 1"), 2);
}

TEST(EqParseEquation, RowsThatAHostCountedBeyondTheArrayAreEmpty)
{
    Parser es;
    es->equations->count = 25; // there is room for 20
    EXPECT_EQ(es.parse("y = 1"), 2);
    EXPECT_EQ(es->equations->alloc_count, 46);
    for (int slot = 0; slot < 75; ++slot)
        EXPECT_EQ(es->equations->pvals[slot], nullptr);
    EXPECT_EQ(EqEvaluate(es, 25), 1.0);
    EXPECT_EQ(EqEvaluate(es, 24), 0.0);
    EXPECT_EQ(EqSystemSimplify(es), 1);
}

TEST(EqParseEquation, AHundredItemsFitAndOneMoreIsRefused)
{
    Parser es;
    // The target, and 50 operands with 49 operators between them.
    EXPECT_EQ(es.parse("y = x" + repeat(" + x", 49)), 100);
    EXPECT_EQ(es.kinds(0)->count, 100);
    EXPECT_EQ(es.parse("y = -x" + repeat(" + x", 49)), -1);
    EXPECT_EQ(es.parse("y = -x" + repeat(" + x", 48)), 99);
    EXPECT_EQ(es.parse("y = x" + repeat(" + x", 50)), -1);
    EXPECT_EQ(es.kinds(1)->count, 0);
    EXPECT_EQ(es.kinds(3)->count, 0);
    // The 101st item of every sort.
    const std::string full = "y = x" + repeat(" + x", 49);
    for (const char* more : {" x", " 1", " RAND", " SIN"})
        EXPECT_EQ(es.parse(full + more), -1) << more;
}

TEST(EqParseEquation, FiftyOneParenthesesFitAndOneMoreIsRefused)
{
    Parser es;
    EXPECT_EQ(es.parse("y = " + repeat("(", 51) + "x" + repeat(")", 51)), 2);
    EXPECT_EQ(es.parse("y = " + repeat("(", 52) + "x" + repeat(")", 52)), -1);
    EXPECT_EQ(es.parse("y = " + repeat("(", 50) + "x + 1" + repeat(")", 50)), 4);
    EXPECT_EQ(es.parse("y = " + repeat("(", 51) + "x + 1" + repeat(")", 51)), -1);
}

TEST(EqParseEquation, FiftyOnePendingFunctionsFitAndOneMoreIsRefused)
{
    Parser es;
    EXPECT_EQ(es.parse("y = " + repeat("-", 51) + "x"), 53);
    EXPECT_EQ(es.parse("y = " + repeat("-", 52) + "x"), -1);
    EXPECT_EQ(es.parse("y = " + repeat("SIN ", 51) + "x"), 53);
    EXPECT_EQ(es.parse("y = " + repeat("SIN ", 52) + "x"), -1);
}

TEST(EqParseEquation, AnExhaustedHeapIsRefusedAndSafe)
{
    NEEDS_HEAP_FAILURES();
    for (int rows : {0, 20}) {
        bool failed = true;
        int failures = 0;
        for (; failed && failures < 20; failures += failed) {
            Parser es;
            while (es->equations->count < rows)
                es.parse("y = 1");
            std::string text = "y = x + 1";
            int parsed;
            {
                const korvale::test::HeapFailure failure(failures + 1);
                parsed = EqParseEquation(es, text.data());
                failed = failure.happened();
            }
            EXPECT_EQ(parsed, failed ? -1 : 4);
            EXPECT_EQ(text, "y = x + 1");
            const int last = es->equations->count - 1;
            EXPECT_EQ(EqEvaluate(es, last), failed && (rows == 0 || failures > 0) ? 0.0 : 1.0);
            EXPECT_EQ(EqSystemSimplify(es), 1);
            EXPECT_EQ(EqSystemEvaluate(es), 1);
            EXPECT_EQ(es.parse("y = 3"), 2);
            EXPECT_EQ(EqEvaluate(es, es->equations->count - 1), 3.0);
        }
        EXPECT_EQ(failures, rows == 0 ? 6 : 7); // three records with a buffer each, and the grown array
    }
}

TEST(op_isp, IsThePriorityOnTheStack)
{
    const int expected[] = {0, 2, 2, 3, 3, 4, 1, 1};
    for (int code = -1; code <= 6; ++code)
        EXPECT_EQ(op_isp(code), expected[code + 1]) << code;
    EXPECT_EQ(op_isp(17), 1);
    EXPECT_EQ(op_isp(-2), 1);
}

TEST(op_icp, IsThePriorityOnArrival)
{
    const int expected[] = {5, 2, 2, 3, 3, 5, 1, 1};
    for (int code = -1; code <= 6; ++code)
        EXPECT_EQ(op_icp(code), expected[code + 1]) << code;
    EXPECT_EQ(op_icp(17), 1);
    EXPECT_EQ(op_icp(-2), 1);
}

/// The arguments of `new_bi_item`, with arrays of a host.
struct Operators {
    int32_t kind_values[100] = {}, operand_values[100] = {}, codes[51] = {};
    DATAstruct kinds, operands, stack;
    int top = 51, counter = 5, position = 1;

    Operators()
    {
        wrap(kinds, kind_values, 100);
        wrap(operands, operand_values, 100);
        wrap(stack, codes, 51);
    }
    static void wrap(DATAstruct& d, int32_t* values, int32_t count)
    {
        DATAInitialize(&d);
        d.count = count;
        d.dim = 1;
        d.type = DATA_TYPE_INT;
        d.ivals = values;
    }
    int add(int code) { return new_bi_item(code, &top, &counter, &position, &kinds, &operands, &stack); }
};

TEST(new_bi_item, FillsTheStackFromItsLastEntryDownward)
{
    Operators o;
    EXPECT_EQ(o.add(0), 1);
    EXPECT_EQ(o.top, 50);
    EXPECT_EQ(o.codes[50], 0);
    EXPECT_EQ(o.add(2), 1);
    EXPECT_EQ(o.top, 49);
    EXPECT_EQ(o.codes[49], 2);
    EXPECT_EQ(o.position, 1);
    EXPECT_EQ(o.counter, 5);
}

TEST(new_bi_item, MovesOperatorsOfAtLeastItsPriority)
{
    Operators o;
    o.add(0);
    o.add(2);
    EXPECT_EQ(o.add(1), 1);
    EXPECT_EQ(o.top, 50);
    EXPECT_EQ(o.codes[50], 1);
    EXPECT_EQ(o.position, 3);
    EXPECT_EQ(o.counter, 3);
    EXPECT_EQ(o.kind_values[1], EQ_ITEM_BINARY);
    EXPECT_EQ(o.operand_values[1], 2);
    EXPECT_EQ(o.kind_values[2], EQ_ITEM_BINARY);
    EXPECT_EQ(o.operand_values[2], 0);
}

TEST(new_bi_item, AnOpenParenthesisMovesNothing)
{
    Operators o;
    o.add(4);
    EXPECT_EQ(o.add(-1), 1);
    EXPECT_EQ(o.add(0), 1);
    EXPECT_EQ(o.top, 48);
    EXPECT_EQ(o.position, 1);
}

TEST(new_bi_item, StopsWhereOperandsAreMissing)
{
    Operators o;
    o.counter = 2;
    o.add(0);
    o.add(2);
    EXPECT_EQ(o.add(17), -1);
    EXPECT_EQ(o.counter, 0);
    EXPECT_EQ(o.top, 51);
    EXPECT_EQ(o.position, 3);
    o.counter = 2;
    o.add(0);
    EXPECT_EQ(o.add(0), 1); // exactly 1 is left
    EXPECT_EQ(o.counter, 1);
}

TEST(new_bi_item, RefusesAFullStackAndAFullProgram)
{
    Operators o;
    for (int i = 0; i < 51; ++i)
        EXPECT_EQ(o.add(-1), 1);
    EXPECT_EQ(o.add(-1), -1);
    EXPECT_EQ(o.top, 0);
    Operators full;
    full.add(2);
    full.position = 99;
    EXPECT_EQ(full.add(0), 1);
    EXPECT_EQ(full.position, 100);
    EXPECT_EQ(full.add(0), -1);
}

TEST(new_bi_item, TakesTheOperatorOffTheStackThoughTheProgramIsFull)
{
    Operators o;
    o.add(0);
    o.add(2);
    o.position = 100;
    EXPECT_EQ(o.add(1), -1);
    EXPECT_EQ(o.top, 50);
    EXPECT_EQ(o.codes[50], 0);
    EXPECT_EQ(o.position, 100);
    EXPECT_EQ(o.counter, 5);
}

TEST(new_bi_item, RefusesWhatLeadsOutside)
{
    Operators o;
    EXPECT_EQ(new_bi_item(0, nullptr, &o.counter, &o.position, &o.kinds, &o.operands, &o.stack), -1);
    EXPECT_EQ(new_bi_item(0, &o.top, nullptr, &o.position, &o.kinds, &o.operands, &o.stack), -1);
    EXPECT_EQ(new_bi_item(0, &o.top, &o.counter, nullptr, &o.kinds, &o.operands, &o.stack), -1);
    EXPECT_EQ(new_bi_item(0, &o.top, &o.counter, &o.position, nullptr, &o.operands, &o.stack), -1);
    EXPECT_EQ(new_bi_item(0, &o.top, &o.counter, &o.position, &o.kinds, nullptr, &o.stack), -1);
    EXPECT_EQ(new_bi_item(0, &o.top, &o.counter, &o.position, &o.kinds, &o.operands, nullptr), -1);
    for (int top : {-1, 52, 2147483647}) {
        o.top = top;
        EXPECT_EQ(o.add(0), -1);
    }
    o.top = 50;
    o.codes[50] = 0;
    o.position = -1;
    EXPECT_EQ(o.add(0), -1);
    o.position = 0;
    o.kinds.ivals = nullptr;
    o.top = 50;
    EXPECT_EQ(o.add(0), -1);
    o.stack.ivals = nullptr;
    EXPECT_EQ(o.add(-1), -1);
}

} // namespace
} // namespace korvale::test
