// Runs a script of lines: each line's first byte chooses what is done with the rest, most lines are equations.
#include <cstdint>
#include <string>

#include "fuzz/input.h"
#include "korvale.h"

using namespace korvale::fuzz;

namespace {

double half(double x)
{
    return x / 2;
}

double least(double a, double b)
{
    return a < b ? a : b;
}

double three()
{
    return 3;
}

void register_name(EquationSystem& es, std::string name)
{
    const int before = es.funcs->count;
    const int result = name.size() % 3 == 0   ? EqAddFuncUnary(&es, name.data(), half)
                       : name.size() % 3 == 1 ? EqAddFuncBinary(&es, name.data(), least)
                                              : EqAddFuncNoArg(&es, name.data(), three);
    require(result == 1 ? es.funcs->count == before + 1 : es.funcs->count == before);
}

/// An equation keeps its value when it is simplified.
void parse(EquationSystem& es, std::string text)
{
    const int row = es.equations->count;
    const int items = EqParseEquation(&es, text.data());
    require(es.equations->count == row + 1);
    require(items == -1 || (items >= 1 && items <= 100));
    if (items < 1)
        return;
    const auto* const operands = static_cast<const DATAstruct*>(es.equations->pvals[3 * row + 1]);
    const int target = operands->ivals[0];
    if (target < 0)
        return; // a text without "="
    const double before = EqReadVariable(&es, target), index = es.table_index;
    EqSetTableIndex(&es, -1); // every sample is a fresh draw
    EqSeed(row);
    const double value = EqEvaluate(&es, row);
    EqSetVariable(&es, target, before);
    require(EqSimplify(&es, row) == 1);
    EqSeed(row);
    require(is_same(EqEvaluate(&es, row), value));
    EqSetTableIndex(&es, index);
}

/// All names, or none of them.
void declare(EquationSystem& es, std::string names, int flag)
{
    const int before = es.var_vals->count;
    const int result = EqParseVariables(&es, names.data(), flag);
    require(result == -1 ? es.var_vals->count == before : es.var_vals->count == result && result >= before);
}

void run_line(EquationSystem& es, const std::string& line)
{
    std::string rest = line.substr(1);
    switch (line[0]) {
    case 'v':
        declare(es, rest, 0);
        break;
    case 'V':
        declare(es, rest, 1);
        break;
    case 'f':
        register_name(es, rest);
        break;
    case 't':
        EqMakeTableByName(&es, rest.data(), 1 + static_cast<int>(rest.size() % 5), 1);
        break;
    case 'i':
        EqSetTableIndex(&es, static_cast<double>(rest.size()) / 4 - 1.5);
        break;
    case 'a':
        require(EqSystemEvaluate(&es) == 1);
        break;
    case 's':
        require(EqSystemSimplify(&es) == 1);
        break;
    default:
        parse(es, "x =" + line);
        parse(es, line);
        break;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count)
{
    EquationSystem es;
    require(EqSystemInitialize(&es) == 1);
    declare(es, "x y", 0);
    std::string line;
    for (size_t i = 0; i <= count; ++i) {
        if (i < count && bytes[i] != '\n') {
            line += static_cast<char>(bytes[i]);
            continue;
        }
        if (!line.empty())
            run_line(es, line);
        line.clear();
    }
    EqSystemDispose(&es);
    return 0;
}
