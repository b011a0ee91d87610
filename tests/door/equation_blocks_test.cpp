// Equations over columns a block of rows at a time: against the documented steps, row by row.
#include <korvale.h>

#include <cmath>
#include <cstring>
#include <string>

#include <gmock/gmock.h>

#include "support.h"
#include "tests/reference/equation_steps.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

using testing::ElementsAre;

double half(const double* arguments, void*)
{
    return arguments[0] / 2;
}

double one(const double*, void*)
{
    return 1;
}

class System {
public:
    System()
    {
        EXPECT_EQ(korvale_equations_new(&equations_, nullptr), KORVALE_OK);
        EXPECT_EQ(korvale_equations_declare(equations_, "x y z w", 0, nullptr), KORVALE_OK);
        EXPECT_EQ(korvale_equations_declare(equations_, "r s", 1, nullptr), KORVALE_OK);
        EXPECT_EQ(korvale_equations_function(equations_, "HALF", 1, half, nullptr, nullptr, nullptr), KORVALE_OK);
        EXPECT_EQ(korvale_equations_function(equations_, "ONE", 0, one, nullptr, nullptr, nullptr), KORVALE_OK);
    }
    ~System() { korvale_equations_free(equations_); }
    System(const System&) = delete;
    System& operator=(const System&) = delete;

    operator korvale_equations*() const { return equations_; } // NOLINT: it is one
    EquationSystem* record() const { return static_cast<EquationSystem*>(korvale_equations_record(equations_)); }
    bool in_blocks() const { return korvale_equations_ran_in_blocks(equations_) != 0; }
    bool add(const std::string& text) const
    {
        return korvale_equations_add(equations_, text.c_str(), nullptr, nullptr) == KORVALE_OK;
    }
    double& value(const char* name) const
    {
        std::string text = name;
        return record()->var_vals->dvals[EqLookupVariable(record(), text.data())];
    }

private:
    korvale_equations* equations_ = nullptr;
};

/// A buffer of `rows` numbers with any stride and kind inside `bytes`.
struct Buffer {
    std::vector<char> bytes;
    korvale_numbers_out values;

    Buffer(Random& random, int64_t rows) : values{}
    {
        values.kind = random.one_in(4) ? KORVALE_FLOAT : KORVALE_DOUBLE;
        const int64_t size = values.kind == KORVALE_FLOAT ? 4 : 8;
        const int64_t stride = random.one_in(2) ? size : size * random.between(1, 4) + (random.one_in(5) ? 3 : 0);
        const bool is_backwards = random.one_in(6);
        bytes.resize(static_cast<size_t>(rows * stride + 16));
        values.count = rows;
        values.stride = is_backwards ? -stride : stride;
        values.data = bytes.data() + (random.one_in(5) ? 1 : 0) + (is_backwards ? (rows - 1) * stride : 0);
        for (int64_t i = 0; i < rows; ++i)
            put(values, i, random.one_in(4) ? random.awkward() : random.uniform(-3, 3));
    }

    static double get(const korvale_numbers_out& v, int64_t i)
    {
        const char* const at = static_cast<const char*>(v.data) + i * v.stride;
        float f;
        double d;
        std::memcpy(&f, at, sizeof f);
        if (v.kind == KORVALE_FLOAT)
            return double{f};
        std::memcpy(&d, at, sizeof d);
        return d;
    }
    static void put(const korvale_numbers_out& v, int64_t i, double value)
    {
        char* const at = static_cast<char*>(v.data) + i * v.stride;
        const auto f = static_cast<float>(value);
        if (v.kind == KORVALE_FLOAT)
            std::memcpy(at, &f, sizeof f);
        else
            std::memcpy(at, &value, sizeof value);
    }
};

korvale_numbers to_read(const korvale_numbers_out& v)
{
    return {v.data, v.count, v.stride, v.width, v.kind};
}

std::string random_term(Random& random, int depth)
{
    static const char* const kLeaves[] = {"x", "y", "z", "w", "r", "s", "1.25", "0", "7", "PI"};
    static const char* const kOne[] = {"SIN", "COS", "SQRT", "EXP", "LOG", "ATAN", "-", "NEGATE"};
    static const char* const kTwo[] = {" + ", " - ", " * ", " / ", " ^ ", " ANGLE ", " ADD "};
    if (random.one_in(60))
        return random.one_in(2) ? "HALF(x)" : "ONE";
    if (random.one_in(25))
        return random.one_in(3) ? "GAUSS" : "RAND";
    if (depth == 0 || random.one_in(4))
        return kLeaves[random.below(10)];
    if (random.one_in(4))
        return std::string(kOne[random.below(8)]) + "(" + random_term(random, depth - 1) + ")";
    const std::string left = random_term(random, depth - 1), sign = kTwo[random.below(7)];
    return "(" + left + sign + random_term(random, depth - 1) + ")";
}

bool is_same_state(const System& a, const System& b)
{
    const EquationSystem &p = *a.record(), &q = *b.record();
    for (int32_t f = 0; f < p.funcs->count; ++f)
        if (p.table_pos->ivals[f] != q.table_pos->ivals[f])
            return false;
    return bool{same_bits(p.var_vals->dvals, q.var_vals->dvals, p.var_vals->count)};
}

constexpr int64_t kRows[] = {0, 1, 8, 23, 24, 25, 31, 511, 512, 513, 1024, 1100};

/// Two systems alike, of which `plain` goes by the documented steps.
struct Pair {
    System quick, plain;
    int32_t equations = 0;

    explicit Pair(Random& random)
    {
        static const char* const kTargets[] = {"x = ", "y = ", "z = ", "w = ", "r = ", "s = "};
        for (int i = random.between(1, 4); i > 0; --i) {
            const std::string text = kTargets[random.below(6)] + random_term(random, 4);
            const bool is_added = quick.add(text);
            EXPECT_EQ(plain.add(text), is_added);
            equations += is_added ? 1 : 0;
        }
        const double position = random.uniform(-1.5, 6);
        const int seed = random.below(1000);
        for (const System* system : {&quick, &plain}) {
            EqSeed(seed);
            if (seed % 3 != 0)
                for (const char* name : {"RAND", "GAUSS", "ONE"})
                    korvale_equations_make_table(*system, name, 5, nullptr);
            korvale_equations_set_table_position(*system, position);
        }
        for (const char* name : {"x", "y", "z", "w", "r", "s"})
            quick.value(name) = plain.value(name) = random.awkward();
        EqSeed(7);
    }
};

TEST(EquationBlocks, GiveWhatTheStepsGiveRowByRow)
{
    Random random(1213);
    int in_blocks = 0, by_rows = 0;
    for (int round = 0; round < rounds(1500); ++round) {
        Pair pair(random);
        if (pair.equations == 0)
            continue;
        const int32_t equation = random.below(pair.equations);
        const int64_t rows = kRows[random.below(std::size(kRows))];
        std::vector<Buffer> buffers;
        for (int i = 0; i < 3; ++i)
            buffers.emplace_back(random, rows);
        korvale_numbers_out output = buffers[2].values;
        const bool is_first = random.one_in(3);
        if (is_first) { // onto a column, in place or shifted
            output = buffers[0].values;
            if (rows > 1 && random.one_in(2)) {
                output.data = static_cast<char*>(output.data) + output.stride;
                output.count -= 1;
            }
        }
        korvale_column columns[] = {{"x", to_read(buffers[0].values)}, {"r", to_read(buffers[1].values)}};
        for (korvale_column& column : columns)
            column.values.count = output.count;
        const auto count = static_cast<int64_t>(random.below(3));

        // The plain way first, into copies that are put back.
        const std::vector<char> bytes0 = buffers[0].bytes, bytes2 = buffers[2].bytes;
        for (int64_t row = 0; row < output.count; ++row) {
            for (int64_t c = 0; c < count; ++c) {
                const korvale_numbers_out& from = buffers[static_cast<size_t>(c)].values;
                pair.plain.value(columns[c].name) = Buffer::get(from, row);
            }
            Buffer::put(output, row, reference::evaluate(pair.plain.record(), equation));
        }
        const int next_draw = Mwrand();
        const std::vector<char> expected0 = buffers[0].bytes, expected2 = buffers[2].bytes;
        std::copy(bytes0.begin(), bytes0.end(), buffers[0].bytes.begin());
        std::copy(bytes2.begin(), bytes2.end(), buffers[2].bytes.begin());

        EqSeed(7);
        ASSERT_EQ(
            korvale_equations_evaluate_rows(pair.quick, equation, columns, count, &output, nullptr, nullptr, nullptr),
            KORVALE_OK);
        (pair.quick.in_blocks() ? in_blocks : by_rows) += 1;
        EXPECT_EQ(Mwrand(), next_draw);
        ASSERT_TRUE(is_same_state(pair.quick, pair.plain)) << round << " " << pair.quick.in_blocks();
        const std::vector<char>& wanted = is_first ? expected0 : expected2;
        Buffer& got = buffers[is_first ? 0 : 2];
        for (int64_t row = 0; row < output.count; ++row) {
            const double value = Buffer::get(output, row);
            korvale_numbers_out moved = output;
            moved.data = const_cast<char*>(wanted.data()) + (static_cast<char*>(output.data) - got.bytes.data());
            ASSERT_TRUE(same_bits(Buffer::get(moved, row), value)) << round << " row " << row;
        }
    }
    EXPECT_GT(in_blocks, rounds(1500) / 4);
    EXPECT_GT(by_rows, rounds(1500) / 4);
}

TEST(EquationBlocks, GiveWhatPassesGiveRowByRow)
{
    Random random(1214);
    int in_blocks = 0, by_rows = 0;
    for (int round = 0; round < rounds(1500); ++round) {
        Pair pair(random);
        const auto rows = static_cast<size_t>(kRows[random.below(std::size(kRows))]);
        std::vector<double> x(rows), r(rows), quick_x, quick_r, plain_x, plain_r, w(rows), plain_w(rows);
        for (size_t i = 0; i < rows; ++i) {
            x[i] = random.one_in(4) ? random.awkward() : random.uniform(-3, 3);
            r[i] = random.uniform(-3, 3);
        }
        quick_x = plain_x = x;
        quick_r = plain_r = r;
        const char* const first = random.one_in(3) ? "z" : "x";
        const korvale_column columns[] = {{first, rows_of(quick_x)}, {"r", rows_of(quick_r)}};
        // Results onto the columns, exchanged.
        const char *const to_r = random.one_in(2) ? "x" : "s", *const to_x = random.one_in(2) ? "r" : "y";
        const korvale_column_out results[] = {{to_r, rows_to(quick_r)}, {to_x, rows_to(quick_x)}, {"w", rows_to(w)}};
        for (size_t row = 0; row < rows; ++row) {
            pair.plain.value(first) = plain_x[row];
            pair.plain.value("r") = plain_r[row];
            ASSERT_EQ(reference::evaluate_all(pair.plain.record()), 1);
            plain_r[row] = pair.plain.value(to_r);
            plain_x[row] = pair.plain.value(to_x);
            plain_w[row] = pair.plain.value("w");
        }
        const int next_draw = Mwrand();
        EqSeed(7);
        ASSERT_EQ(korvale_equations_pass_rows(pair.quick, columns, 2, results, 3, nullptr, nullptr, nullptr),
                  KORVALE_OK);
        (pair.quick.in_blocks() ? in_blocks : by_rows) += 1;
        EXPECT_EQ(Mwrand(), next_draw);
        ASSERT_TRUE(is_same_state(pair.quick, pair.plain)) << round << " " << pair.quick.in_blocks();
        ASSERT_TRUE(same_bits(plain_x, quick_x)) << round;
        ASSERT_TRUE(same_bits(plain_r, quick_r)) << round;
        ASSERT_TRUE(same_bits(plain_w, w)) << round;
    }
    EXPECT_GT(in_blocks, rounds(1500) / 8);
    EXPECT_GT(by_rows, rounds(1500) / 4);
}

/// A million rows a time, so that the columns stay in little memory.
TEST(EquationBlocks, TenMillionRowsGiveWhatTheyGiveOneByOne)
{
    static const char* const kTexts[] = {"y = x * 2 + z * (x - 1) / 3 - x * x", "y = z * x ^ 2",
                                         "y = SIN(x * 2) * COS(z) + SQRT(x)", "y = (x ANGLE w) / (x - w) - -x * RAND",
                                         "y = w * x + RAND * EXP(0 - x)"};
    const System e;
    for (const char* text : kTexts)
        EXPECT_TRUE(e.add(text));
    korvale_equations_make_table(e, "RAND", 3, nullptr);
    korvale_equations_set_table_position(e, 0.5);
    Random random(1222);
    constexpr size_t kMany = 1000002; // even: the table's two columns come round
    std::vector<double> x(kMany), w(kMany), y(kMany);
    const korvale_column columns[] = {{"x", rows_of(x)}, {"w", rows_of(w)}};
    const korvale_numbers_out output = rows_to(y);
    double &at_x = e.value("x"), &at_w = e.value("w");
    for (int32_t round = 0; round < rounds(10); ++round) {
        for (size_t i = 0; i < kMany; ++i) {
            x[i] = random.one_in(8) ? random.awkward() : random.uniform(-3, 300);
            w[i] = random.one_in(8) ? x[i] : random.unit();
        }
        e.value("z") = random.uniform(-3, 3);
        ASSERT_EQ(korvale_equations_evaluate_rows(e, round % 5, columns, 2, &output, nullptr, nullptr, nullptr),
                  KORVALE_OK);
        ASSERT_TRUE(e.in_blocks());
        for (size_t i = 0; i < kMany; ++i) {
            at_x = x[i];
            at_w = w[i];
            ASSERT_TRUE(is_same(y[i], EqEvaluate(e.record(), round % 5))) << kTexts[round % 5] << ", row " << i;
        }
    }
}

/// Whether one equation over 600 rows of x runs in blocks.
bool runs_in_blocks(const System& system, const char* text)
{
    int32_t number;
    EXPECT_EQ(korvale_equations_add(system, text, &number, nullptr), KORVALE_OK);
    std::vector<double> x(600, 1), y(600);
    const korvale_column column = {"x", rows_of(x)};
    const korvale_numbers_out output = rows_to(y);
    EXPECT_EQ(korvale_equations_evaluate_rows(system, number, &column, 1, &output, nullptr, nullptr, nullptr),
              KORVALE_OK);
    return system.in_blocks();
}

TEST(EquationBlocks, GoRowByRowWhereRowsOrOrderCount)
{
    const System e;
    EXPECT_TRUE(runs_in_blocks(e, "y = x + 1"));
    EXPECT_TRUE(runs_in_blocks(e, "y = 3"));
    EXPECT_TRUE(runs_in_blocks(e, "y = x"));
    EXPECT_TRUE(runs_in_blocks(e, "x = x * 2"));     // the column comes anew for each row
    EXPECT_FALSE(runs_in_blocks(e, "y = y + x"));    // the row before
    EXPECT_TRUE(runs_in_blocks(e, "r = r + x"));     // reserved: not set
    EXPECT_FALSE(runs_in_blocks(e, "y = x + RAND")); // draws
    EXPECT_FALSE(runs_in_blocks(e, "y = HALF(x)"));  // a function of the host
    korvale_equations_make_table(e, "RAND", 4, nullptr);
    EXPECT_FALSE(runs_in_blocks(e, "y = x + RAND")); // one column more than the table was made with
    korvale_equations_make_table(e, "RAND", 4, nullptr);
    std::vector<double> x(600, 1), y(600);
    const korvale_column column = {"x", rows_of(x)};
    const korvale_numbers_out output = rows_to(y);
    EXPECT_EQ(korvale_equations_evaluate_rows(e, 6, &column, 1, &output, nullptr, nullptr, nullptr), KORVALE_OK);
    EXPECT_TRUE(e.in_blocks()); // a table
    korvale_equations_set_table_position(e, 4);
    EXPECT_EQ(korvale_equations_evaluate_rows(e, 6, &column, 1, &output, nullptr, nullptr, nullptr), KORVALE_OK);
    EXPECT_FALSE(e.in_blocks()); // behind it
    const korvale_numbers_out few = {y.data(), 23, 0, 1, KORVALE_DOUBLE};
    EXPECT_EQ(korvale_equations_evaluate_rows(e, 1, nullptr, 0, &few, nullptr, nullptr, nullptr), KORVALE_OK);
    EXPECT_FALSE(e.in_blocks());
    EXPECT_EQ(korvale_equations_ran_in_blocks(nullptr), 0);
}

TEST(EquationBlocks, ReadTheRecordsAnew)
{
    const System e;
    EXPECT_TRUE(runs_in_blocks(e, "y = x + z"));
    std::vector<double> x(24, 1), y(24);
    const korvale_column column = {"x", rows_of(x)};
    const korvale_numbers_out output = rows_to(y);
    e.value("z") = 5;
    static_cast<DATAstruct*>(e.record()->equations->pvals[1])->ivals[3] = 2; // ADD becomes MULTIPLY
    EXPECT_EQ(korvale_equations_evaluate_rows(e, 0, &column, 1, &output, nullptr, nullptr, nullptr), KORVALE_OK);
    EXPECT_TRUE(e.in_blocks());
    EXPECT_EQ(y[23], 5);
    e.record()->funcs->pvals[2] = reinterpret_cast<void*>(EqFuncSubtract); // and means something else
    EXPECT_EQ(korvale_equations_evaluate_rows(e, 0, &column, 1, &output, nullptr, nullptr, nullptr), KORVALE_OK);
    EXPECT_FALSE(e.in_blocks());
    EXPECT_EQ(y[23], -4);
}

/// Changes what a host may change between calls, in both systems alike.
void edit(Random& random, const Pair& pair)
{
    const int32_t equation = random.below(pair.equations), p = random.between(1, 12);
    const int32_t what = random.below(6), variable = random.below(8), function = random.below(5);
    const double value = random.awkward();
    const bool is_end = random.one_in(4);
    char rand[] = "RAND";
    for (const System* system : {&pair.quick, &pair.plain}) {
        EquationSystem& es = *system->record();
        const auto child = [&](int32_t which) {
            return static_cast<DATAstruct*>(es.equations->pvals[3 * equation + which]);
        };
        const bool is_item = p < child(0)->count;
        int32_t &kind = child(0)->ivals[p], &operand = child(1)->ivals[p];
        const auto* const table = static_cast<const DATAstruct*>(es.tables->pvals[EqLookupFunction(&es, rand)]);
        if (what == 0 && is_item)
            child(2)->dvals[p] = value;
        else if (what == 1 && is_item && kind == EQ_ITEM_VARIABLE)
            operand = variable;
        else if (what == 2 && is_item && kind == EQ_ITEM_BINARY)
            operand = function;
        else if (what == 3 && is_item && is_end)
            kind = EQ_ITEM_END;
        else if (what == 4 && table->count > 0 && table->dim > 0)
            table->dvals[0] = value;
        else if (what == 5)
            es.var_vals->dvals[variable] = value;
    }
}

TEST(EquationBlocks, GiveWhatTheStepsGiveWhateverTheHostHasEdited)
{
    Random random(1223);
    int in_blocks = 0;
    for (int round = 0; round < rounds(300); ++round) {
        Pair pair(random);
        if (pair.equations == 0)
            continue;
        const int32_t equation = random.below(pair.equations);
        std::vector<double> x(40), y(40), expected(40);
        for (double& number : x)
            number = random.uniform(-3, 3);
        const korvale_column column = {"x", rows_of(x)};
        const korvale_numbers_out output = rows_to(y);
        for (int again = 0; again < 5; ++again) {
            EqSeed(again);
            for (size_t row = 0; row < x.size(); ++row) {
                pair.plain.value("x") = x[row];
                expected[row] = reference::evaluate(pair.plain.record(), equation);
            }
            EqSeed(again);
            ASSERT_EQ(
                korvale_equations_evaluate_rows(pair.quick, equation, &column, 1, &output, nullptr, nullptr, nullptr),
                KORVALE_OK);
            in_blocks += pair.quick.in_blocks() ? 1 : 0;
            ASSERT_TRUE(same_bits(expected, y)) << round;
            ASSERT_TRUE(is_same_state(pair.quick, pair.plain)) << round;
            edit(random, pair);
        }
    }
    EXPECT_GT(in_blocks, rounds(300));
}

TEST(EquationBlocks, DivideAndTakeZerosAsRowsDo)
{
    const System e;
    EXPECT_TRUE(runs_in_blocks(e, "y = 1 / x"));
    std::vector<double> x = {0, -0.0, 2, INFINITY, -INFINITY, 0, 4, NAN, -0.0}, y(24);
    x.resize(24); // enough for a block
    const korvale_column column = {"x", rows_of(x)};
    const korvale_numbers_out output = rows_to(y);
    EXPECT_EQ(korvale_equations_evaluate_rows(e, 0, &column, 1, &output, nullptr, nullptr, nullptr), KORVALE_OK);
    EXPECT_TRUE(e.in_blocks());
    y.resize(9);
    EXPECT_TRUE(same_bits({0, 0, 0.5, 0, -0.0, 0, 0.25, NAN, 0}, y));
}

/// With a table of its own three columns, of which the first equation reads one a row.
void add_noise(const System& e)
{
    EXPECT_EQ(korvale_equations_seed(e, 5, nullptr), KORVALE_OK);
    EXPECT_TRUE(e.add("y = x + RAND") && e.add("z = RAND") && e.add("w = RAND"));
    EXPECT_EQ(korvale_equations_make_table(e, "RAND", 2, nullptr), KORVALE_OK);
}

TEST(EquationBlocks, KeepWhatIsDoneWhereTheyAreStopped)
{
    const System whole, parts;
    add_noise(whole);
    add_noise(parts);
    std::vector<double> x(2000), expected(2000), y(2000, 7);
    for (size_t i = 0; i < x.size(); ++i)
        x[i] = static_cast<double>(i);
    korvale_column column = {"x", rows_of(x)};
    korvale_numbers_out output = rows_to(expected);
    Told told;
    EXPECT_EQ(korvale_equations_evaluate_rows(whole, 0, &column, 1, &output, &Told::tell, &told, nullptr), KORVALE_OK);
    EXPECT_TRUE(whole.in_blocks());
    EXPECT_THAT(told.done, ElementsAre(0, 0.256, 0.512, 0.768, 1)); // each block of 512 rows

    output = rows_to(y);
    told = {{}, 0.5};
    korvale_error error;
    EXPECT_EQ(korvale_equations_evaluate_rows(parts, 0, &column, 1, &output, &Told::tell, &told, &error),
              KORVALE_STOPPED);
    EXPECT_STREQ(error.text, "korvale_equations_evaluate_rows: it was asked to stop");
    EXPECT_TRUE(parts.in_blocks());
    EXPECT_THAT(told.done, ElementsAre(0, 0.256, 0.512));
    EXPECT_EQ(y[1023], expected[1023]);
    EXPECT_EQ(y[1024], 7);
    EXPECT_EQ(parts.value("x"), 1023);
    EXPECT_EQ(parts.value("y"), y[1023]);
    const korvale_column rest = {"x", {x.data() + 1024, 976, 0, 1, KORVALE_DOUBLE}};
    const korvale_numbers_out to_rest = {y.data() + 1024, 976, 0, 1, KORVALE_DOUBLE};
    EXPECT_EQ(korvale_equations_evaluate_rows(parts, 0, &rest, 1, &to_rest, nullptr, nullptr, nullptr), KORVALE_OK);
    EXPECT_TRUE(same_bits(expected, y)); // the table goes on where it was

    told = {{}, 0};
    y.assign(2000, 7);
    EXPECT_EQ(korvale_equations_evaluate_rows(parts, 0, &column, 1, &output, &Told::tell, &told, nullptr),
              KORVALE_STOPPED);
    EXPECT_EQ(y[0], 7);
    EXPECT_EQ(parts.value("x"), 1999);
}

TEST(EquationBlocks, RowByRowKeepWhatIsDoneAsWell)
{
    const System e;
    EXPECT_TRUE(e.add("y = y + x"));
    std::vector<double> x(2000, 1), y(2000, 7);
    const korvale_column column = {"x", rows_of(x)};
    const korvale_column_out result = {"y", rows_to(y)};
    Told told = {{}, 0.5};
    EXPECT_EQ(korvale_equations_pass_rows(e, &column, 1, &result, 1, &Told::tell, &told, nullptr), KORVALE_STOPPED);
    EXPECT_FALSE(e.in_blocks());
    EXPECT_EQ(told.done.size(), 51u); // each hundredth
    EXPECT_EQ(y[999], 1000);
    EXPECT_EQ(y[1000], 7);
    EXPECT_EQ(e.value("y"), 1000);
    told = {};
    EXPECT_EQ(korvale_equations_pass_rows(e, &column, 1, &result, 1, &Told::tell, &told, nullptr), KORVALE_OK);
    EXPECT_EQ(told.done.size(), 101u);
    EXPECT_EQ(told.done.back(), 1);
    EXPECT_EQ(y[1999], 3000);
}

TEST(EquationBlocksWithAnExhaustedHeap, WriteNothing)
{
    NEEDS_HEAP_FAILURES();
    const System e;
    EXPECT_TRUE(e.add("y = SQRT(x) * z + x / 3"));
    std::vector<double> x(600, 4), y(600, 7);
    const korvale_column column = {"x", rows_of(x)};
    const korvale_numbers_out output = rows_to(y);
    const int64_t failures = fail_each_allocation([&](int64_t) {
        std::fill(y.begin(), y.end(), 7.0);
        const auto status = korvale_equations_evaluate_rows(e, 0, &column, 1, &output, nullptr, nullptr, nullptr);
        EXPECT_EQ(y[0], status == KORVALE_OK ? 4.0 / 3 : 7.0);
    });
    EXPECT_GE(failures, 5);
}

} // namespace
} // namespace korvale::test
