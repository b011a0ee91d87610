// Runs a script of lines: each line's first byte chooses what is done with the rest, most lines are equations. The
// documented steps run beside the library, from the same random numbers, and both come to the same.
#include <cstdint>
#include <string>

#include "fuzz/functions.h"
#include "fuzz/input.h"
#include "korvale.h"
#include "platform/layer.h"
#include "tests/equation/system.h"
#include "tests/reference/equation.h"

using namespace korvale::fuzz;

namespace {

/// The library's system and that of the steps.
struct Twins {
    EquationSystem es;
    korvale::reference::EquationModel model;

    Twins() { require(EqSystemInitialize(&es) == 1); }
    ~Twins() { EqSystemDispose(&es); }
    Twins(const Twins&) = delete;
    Twins& operator=(const Twins&) = delete;

    /// Both results, each from the same random numbers, of which as many are drawn.
    template <class Library, class Model>
    double same(Library library, Model steps)
    {
        EqSeed(1);
        const double result = library();
        const int drawn = Mwrand();
        EqSeed(1);
        require(is_same(result, steps()));
        require(Mwrand() == drawn);
        return result;
    }

    void require_same_state() { require(korvale::test::state_of(es) == model.state()); }
};

void register_name(Twins& twins, std::string name)
{
    const int nargs = name.size() % 3 == 0 ? 1 : name.size() % 3 == 1 ? 2 : 0;
    void* const function = nargs == 1   ? reinterpret_cast<void*>(half)
                           : nargs == 2 ? reinterpret_cast<void*>(least)
                                        : reinterpret_cast<void*>(three);
    const int result = nargs == 1   ? EqAddFuncUnary(&twins.es, name.data(), half)
                       : nargs == 2 ? EqAddFuncBinary(&twins.es, name.data(), least)
                                    : EqAddFuncNoArg(&twins.es, name.data(), three);
    std::string formatted; // two percent signs stand for one, any other directive is refused
    bool is_plain = name.size() <= 12;
    for (size_t i = 0; i < name.size(); ++i) {
        formatted += name[i];
        if (name[i] == '%')
            is_plain = is_plain && name[++i] == '%'; // a zero behind the last
    }
    require(result == (is_plain ? twins.model.add_function(formatted, nargs, function) : -1));
}

double evaluate(Twins& twins, int row)
{
    return twins.same([&] { return EqEvaluate(&twins.es, row); }, [&] { return twins.model.evaluate(row); });
}

void set_table_index(Twins& twins, double index)
{
    EqSetTableIndex(&twins.es, index);
    twins.model.set_table_index(index);
}

/// An equation keeps its value when it is simplified.
void parse(Twins& twins, std::string text)
{
    EquationSystem& es = twins.es;
    const int row = es.equations->count;
    std::string left_by_model = text;
    const int items = EqParseEquation(&es, text.data());
    require(items == twins.model.parse_equation(left_by_model));
    require(text.compare(0, left_by_model.size(), left_by_model) == 0);
    require(korvale::test::state_of_equation(es, row) == twins.model.state_of_equation(row));
    evaluate(twins, row);

    const auto* const operands = static_cast<const DATAstruct*>(es.equations->pvals[3 * row + 1]);
    const int target = operands->ivals[0];
    const double index = es.table_index, before = target < 0 ? 0.0 : EqReadVariable(&es, target);
    set_table_index(twins, -1); // every sample is a fresh draw
    const double value = evaluate(twins, row);
    if (target >= 0) {
        EqSetVariable(&es, target, before);
        twins.model.set_variable(target, before);
    }
    require(EqSimplify(&es, row) == 1 && twins.model.simplify(row) == 1);
    require(is_same(evaluate(twins, row), value));
    set_table_index(twins, index);
}

/// All names, or none of them.
void declare(Twins& twins, std::string names, int flag)
{
    const int before = twins.es.var_vals->count;
    const int result = EqParseVariables(&twins.es, names.data(), flag);
    require(result == -1 ? twins.es.var_vals->count == before : twins.es.var_vals->count == result);
    require(result == twins.model.parse_variables(names, flag));
}

void make_table(Twins& twins, std::string name)
{
    const int rows = 1 + static_cast<int>(name.size() % 5);
    twins.same([&] { return EqMakeTableByName(&twins.es, name.data(), rows, 1); },
               [&] { return twins.model.make_table(twins.model.look_up_function(name), rows, 1); });
}

void run_line(Twins& twins, const std::string& line)
{
    const std::string rest = line.substr(1);
    switch (line[0]) {
    case 'v':
        declare(twins, rest, 0);
        break;
    case 'V':
        declare(twins, rest, 1);
        break;
    case 'f':
        register_name(twins, rest);
        break;
    case 't':
        make_table(twins, rest);
        break;
    case 'i':
        set_table_index(twins, static_cast<double>(rest.size()) / 4 - 1.5);
        break;
    case 'a':
        twins.same([&] { return EqSystemEvaluate(&twins.es); }, [&] { return twins.model.evaluate_all(); });
        break;
    case 's':
        require(EqSystemSimplify(&twins.es) == 1 && twins.model.simplify_all() == 1);
        break;
    default:
        parse(twins, "x =" + line);
        parse(twins, line);
        break;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count)
{
    Twins twins;
    declare(twins, "x y", 0);
    std::string line;
    for (size_t i = 0; i <= count; ++i) {
        if (i < count && bytes[i] != '\n') {
            if (bytes[i] != 0) // which would end the line for the library
                line += static_cast<char>(bytes[i]);
            continue;
        }
        if (!line.empty())
            run_line(twins, line);
        line.clear();
    }
    twins.require_same_state();
    return 0;
}
