// Random sequences of all operations on a system, beside a plain model of its state.
#include <functional>
#include <string>
#include <utility>

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

/// What the functions below do to the side that calls them.
std::function<void(double)> meddle;

double meddling(double x)
{
    meddle(x);
    return -x;
}

/// Set to the same before either side runs.
double count;

double counting()
{
    meddle(count);
    return ++count;
}

double mean(double a, double b)
{
    return (a + b) / 2;
}

double less(double a, double b)
{
    return a < b ? 1 : 0;
}

template <class Function>
void* erased(Function* function)
{
    return reinterpret_cast<void*>(function);
}

/// What functions of a host do to either side, in the same words.
struct LibrarySide {
    System& es;

    void set(int v, double value) { EqSetVariable(es, v, value); }
    void declare(const std::string& names, int flag) { es.declare(names, flag); }
    void add(const std::string& name) { es.add(name, mean); }
    void parse(const std::string& text) { es.parse(text); }
    void tabulate(int rows) { EqMakeTable(es, 15, rows, 1); }
    void set_row_position(double x) { EqSetTableIndex(es, x); }
    int equations() { return es->equations->count; }
    void set_count(int equation, int items) { es.kinds(equation)->count = items; }
    void evaluate(int equation) { EqEvaluate(es, equation); }
    void evaluate_all() { EqSystemEvaluate(es); }
    void simplify(int equation) { EqSimplify(es, equation); }
};

struct ModelSide {
    EquationModel& model;

    void set(int v, double value) { model.set_variable(v, value); }
    void declare(const std::string& names, int flag) { model.parse_variables(names, flag); }
    void add(const std::string& name) { model.add_function(name, 2, erased(mean)); }
    void parse(std::string text) { model.parse_equation(text); }
    void tabulate(int rows) { model.make_table(15, rows, 1); }
    void set_row_position(double x) { model.set_table_index(x); }
    int equations() { return model.equations(); }
    void set_count(int equation, int items) { model.set_count(equation, items); }
    void evaluate(int equation) { model.evaluate(equation); }
    void evaluate_all() { model.evaluate_all(); }
    void simplify(int equation) { model.simplify(equation); }
};

/// The functions of a host in one run, which do the same to both sides.
template <class Side>
class Meddler {
public:
    Meddler(Side side, int seed, bool may_simplify)
        : side_(side), random_(static_cast<uint64_t>(seed)), may_simplify_(may_simplify)
    {
    }

    void operator()(double x)
    {
        side_.set(2, x);
        side_.set(4, x + 1);
        if (!random_.one_in(6))
            return;
        const int equations = side_.equations(), equation = equations == 0 ? 0 : random_.below(equations);
        const std::string names[] = {"x", "z", "s", "m", "ma", "mb"};
        const std::string& name = names[random_.below(6)];
        switch (random_.below(8)) {
        case 0:
            side_.declare(name, random_.below(2));
            break;
        case 1:
            side_.add("M" + name);
            break;
        case 2:
        case 3:
            if (parses_++ < 2) // or a pass would never end
                side_.parse(name + (random_.one_in(2) ? "= MEDDLE(x) + COUNT" : "= 2 * 3 + RAND - s"));
            break;
        case 4:
            side_.tabulate(random_.between(1, 3));
            side_.set_row_position(random_.uniform(-1.5, 3));
            break;
        case 5:
            if (equations > 0)
                side_.set_count(equation, random_.below(20));
            break;
        case 6:
            if (may_simplify_)
                side_.simplify(equation);
            break;
        default:
            if (std::exchange(is_evaluating_, true))
                break;
            if (random_.one_in(3))
                side_.evaluate_all();
            else
                side_.evaluate(equation);
            is_evaluating_ = false;
            break;
        }
    }

private:
    Side side_;
    Random random_;
    bool may_simplify_;
    int parses_ = 0;
    bool is_evaluating_ = false;
};

/// A system and its model, which are given the same operations.
class Twins {
public:
    explicit Twins(Random& random) : random_(random)
    {
        add("MEAN", 2, erased(mean));
        add("LESS", 2, erased(less));
        if (random.one_in(2)) {
            add("MEDDLE", 1, erased(meddling));
            add("COUNT", 0, erased(counting));
        }
        declare("x y z", random.one_in(3) ? 1 : 0);
        declare("r, s, t", random.one_in(2) ? 1 : 0);
        if (random.one_in(3))
            declare_many();
    }

    /// One operation on both sides, then everything compared. Named in `done`.
    void step(std::string& done)
    {
        const uint64_t kind = static_cast<uint64_t>(random_.below(16));
        const int seed = random_.below(1000000);
        switch (kind) {
        case 0:
        case 1:
        case 2: {
            std::string text = " =" + random_expression(random_, 2);
            exchange(text, "SIN", "MEDDLE");
            exchange(text, "GAUSS", "COUNT");
            text = name() + (random_.one_in(4) ? mutated(random_, text) : text);
            done = "parse " + text;
            same([&] { return EqParseEquation(es_, copy(text).data()); },
                 [&] { return model_.parse_equation(copy(text)); }, seed);
            break;
        }
        case 3: {
            const std::string text = std::string(random_.one_in(5) ? "SIN " : "") + name() + " " + name() + name();
            done = "declare " + text;
            declare(text, random_.one_in(2) ? random_.below(300) : 0);
            break;
        }
        case 4:
            done = "set";
            set(random_.between(-1, 12), random_.awkward());
            break;
        case 5: {
            const char* const names[] = {"MEDDLE", "COUNT", "r", "F", "toolongforaname", "MEAN"};
            const int which = random_.below(6);
            done = std::string("add ") + names[which];
            if (which == 1)
                add(names[which], 0, erased(counting));
            else if (which == 5)
                add(names[which], 2, erased(less));
            else
                add(names[which], 1, erased(meddling));
            break;
        }
        case 6: {
            const int f = random_.one_in(4) ? random_.between(-1, 24) : random_.between(15, 16);
            const int rows = random_.one_in(8) ? random_.between(-3, 0) : random_.between(1, 5);
            const int columns = random_.one_in(8) ? random_.between(-2, 0) : 1;
            done = "table " + std::to_string(f);
            same([&] { return EqMakeTable(es_, f, rows, columns); },
                 [&] { return model_.make_table(f, rows, columns); }, seed);
            break;
        }
        case 7: {
            const double index = random_.one_in(3) ? random_.between(-2, 6) : random_.uniform(-1.5, 6);
            done = "row";
            EqSetTableIndex(es_, index);
            model_.set_table_index(index);
            break;
        }
        case 8: {
            const int f = random_.one_in(3) ? random_.between(-1, 24) : random_.between(15, 16);
            done = "read " + std::to_string(f);
            same([&] { return EqTableRead(es_, f); }, [&] { return model_.read_table(f); }, seed);
            break;
        }
        case 9:
            if (random_.one_in(3)) {
                const int f = random_.between(0, 4);
                done = "replace " + std::to_string(f);
                void* const function = random_.one_in(6) ? nullptr : erased(random_.one_in(2) ? mean : less);
                es_->funcs->pvals[f] = function;
                model_.replace_function(f, function);
            } else {
                const int f = random_.between(0, 4);
                double (*const functions[])(double, double) = {EqFuncAdd, EqFuncSubtract, EqFuncMultiply, EqFuncDivide,
                                                               std::pow};
                done = "restore " + std::to_string(f);
                es_->funcs->pvals[f] = erased(functions[f]);
                model_.replace_function(f, erased(functions[f]));
            }
            break;
        case 10:
            if (!all_functions_exist())
                break;
            {
                const int row = random_.between(-1, model_.equations());
                done = "simplify " + std::to_string(row);
                same([&] { return EqSimplify(es_, row); }, [&] { return model_.simplify(row); }, seed);
            }
            break;
        case 11:
            if (!all_functions_exist() || !random_.one_in(4))
                break;
            done = "simplify all";
            same([&] { return EqSystemSimplify(es_); }, [&] { return model_.simplify_all(); }, seed);
            break;
        case 12:
        case 13: {
            const int row = random_.between(-1, model_.equations());
            done = "evaluate " + std::to_string(row);
            same([&] { return EqEvaluate(es_, row); }, [&] { return model_.evaluate(row); }, seed);
            break;
        }
        default:
            done = "evaluate all";
            same([&] { return EqSystemEvaluate(es_); }, [&] { return model_.evaluate_all(); }, seed);
            break;
        }
        EXPECT_EQ(state_of(*es_.get()), model_.state());
    }

private:
    /// A hundred more variables, and equations for most of them.
    void declare_many()
    {
        std::string names;
        for (char first : {'a', 'b', 'c', 'd'})
            for (char second = 'a'; second <= 'y'; ++second)
                names += {first, second, ' '};
        declare(names, random_.one_in(3) ? 0 : 1);
        const int equations = random_.one_in(2) ? 5 : 80;
        for (int i = 0; i < equations; ++i) {
            const std::string text = names.substr(static_cast<size_t>(3 * i), 3) + "= 2 * ab + x + RAND";
            EXPECT_EQ(EqParseEquation(es_, copy(text).data()), model_.parse_equation(copy(text)));
        }
    }

    /// Half the time, another function where one is named.
    void exchange(std::string& text, const std::string& from, const std::string& to)
    {
        for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + 1))
            if (random_.one_in(2))
                text.replace(at, from.size(), to);
    }

    std::string name()
    {
        const char* const names[] = {"x", "y", "z", "r", "s", "t", "longernameab", "u"};
        return names[random_.below(8)];
    }

    std::string& copy(const std::string& text) { return copy_ = text; }

    bool all_functions_exist()
    {
        for (int f = 0; f < 5; ++f)
            if (es_->funcs->pvals[f] == nullptr)
                return false;
        return true;
    }

    void declare(const std::string& text, int flag)
    {
        EXPECT_EQ(es_.declare(text, flag), model_.parse_variables(text, flag));
    }

    void set(int v, double value)
    {
        EqSetVariable(es_, v, value);
        model_.set_variable(v, value);
    }

    void add(const std::string& name, int arity, void* function)
    {
        const int expected = model_.add_function(name, arity, function);
        const int added = arity == 2   ? es_.add(name, reinterpret_cast<double (*)(double, double)>(function))
                          : arity == 1 ? es_.add(name, reinterpret_cast<double (*)(double)>(function))
                                       : es_.add(name, reinterpret_cast<double (*)()>(function));
        EXPECT_EQ(added, expected);
    }

    /// Both sides from the same random numbers, each with functions that meddle with it alike.
    template <class Library, class Model>
    void same(Library library, Model model, int seed)
    {
        const bool may_simplify = all_functions_exist();
        EqSeed(seed);
        count = seed;
        Meddler on_library(LibrarySide{es_}, seed, may_simplify);
        meddle = std::ref(on_library);
        const double result = library();
        const int drawn = Mwrand();
        EqSeed(seed);
        count = seed;
        Meddler on_model(ModelSide{model_}, seed, may_simplify);
        meddle = std::ref(on_model);
        EXPECT_TRUE(same_bits(static_cast<double>(model()), result));
        EXPECT_EQ(Mwrand(), drawn);
    }

    Random& random_;
    System es_;
    EquationModel model_;
    std::string copy_;
};

TEST(EquationSystemSteps, RandomOperationsLeaveTheDocumentedState)
{
    Random random(20260105);
    for (int system = 0; system < korvale::test::rounds(45); ++system) {
        Twins twins(random);
        for (int step = 0; step < 100; ++step) {
            std::string done = "nothing";
            twins.step(done);
            ASSERT_FALSE(testing::Test::HasFailure()) << "system " << system << ", step " << step << ": " << done;
        }
    }
}

} // namespace
} // namespace korvale::test
