#include <functional>
#include <string>

#include <gtest/gtest.h>

#include "platform/layer.h"
#include "tests/equation/expressions.h"
#include "tests/equation/system.h"
#include "tests/reference/equation.h"
#include "tests/support/bits.h"
#include "tests/support/random.h"

namespace {

using korvale::reference::EquationModel;
using korvale::test::mutated;
using korvale::test::Random;
using korvale::test::random_expression;
using korvale::test::same_bits;
using korvale::test::state_of;
using korvale::test::System;

/// How the functions below change a variable of the side that calls them.
std::function<void(int, double)> meddle;

double meddling(double x)
{
    meddle(2, x);
    meddle(4, x + 1);
    return -x;
}

/// Set to the same before either side runs.
double count;

double counting()
{
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

/// A system and its model, which are given the same operations.
class Twins {
public:
    explicit Twins(Random& random) : random_(random)
    {
        add("MEAN", 2, erased(mean));
        add("LESS", 2, erased(less));
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

    /// Both sides from the same random numbers, each with functions that meddle with its own variables.
    template <class Library, class Model>
    void same(Library library, Model model, int seed)
    {
        EqSeed(seed);
        count = seed;
        meddle = [&](int v, double value) { EqSetVariable(es_, v, value); };
        const double result = library();
        const int drawn = Mwrand();
        EqSeed(seed);
        count = seed;
        meddle = [&](int v, double value) { model_.set_variable(v, value); };
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
