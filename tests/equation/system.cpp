#include "tests/equation/system.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "platform/internal/bit_cast.h"

namespace korvale::test {
namespace {

const char* name_at(const DATAstruct& names, int32_t i)
{
    return reinterpret_cast<const char*>(names.bvals + 13 * i);
}

/// A number to the last bit; all NaNs are alike.
std::string exact(double value)
{
    if (std::isnan(value))
        return "nan";
    char text[40];
    std::snprintf(text, sizeof text, "%a", value);
    return text;
}

std::string shape(const DATAstruct& d)
{
    return "[" + std::to_string(d.count) + "][" + std::to_string(d.dim) + "] kind " + std::to_string(d.type) + " of [" +
           std::to_string(d.alloc_count) + "][" + std::to_string(d.alloc_dim) + "]";
}

} // namespace

System::System()
{
    if (EqSystemInitialize(&record_) != 1)
        std::abort();
}

System::~System()
{
    EqSystemDispose(&record_);
}

int System::declare(std::string names, int flag)
{
    return EqParseVariables(&record_, names.data(), flag);
}

int System::parse(std::string text)
{
    return EqParseEquation(&record_, text.data());
}

int System::function(std::string name)
{
    return EqLookupFunction(&record_, name.data());
}

int System::variable(std::string name)
{
    return EqLookupVariable(&record_, name.data());
}

int System::add(std::string name, double (*called)(double, double))
{
    return EqAddFuncBinary(&record_, name.data(), called);
}

int System::add(std::string name, double (*called)(double))
{
    return EqAddFuncUnary(&record_, name.data(), called);
}

int System::add(std::string name, double (*called)())
{
    return EqAddFuncNoArg(&record_, name.data(), called);
}

void System::set(std::string name, double value)
{
    if (EqSetVariableByName(&record_, name.data(), value) != 1)
        std::abort();
}

double System::get(std::string name)
{
    return EqReadVariableByName(&record_, name.data());
}

double System::value(std::string text)
{
    if (parse(std::move(text)) < 1)
        std::abort();
    return EqEvaluate(&record_, record_.equations->count - 1);
}

std::string System::program(int equation)
{
    const DATAstruct *const k = kinds(equation), *const o = operands(equation), *const c = constants(equation);
    std::string text;
    for (int p = 0; p < 100 && k->ivals[p] != EQ_ITEM_END; ++p) {
        if (p > 0)
            text += ' ';
        const int operand = o->ivals[p];
        char number[40];
        switch (k->ivals[p]) {
        case EQ_ITEM_TARGET:
            text += std::string(name_at(*record_.var_names, operand)) + " =";
            break;
        case EQ_ITEM_CONSTANT:
            std::snprintf(number, sizeof number, "%.17g", c->dvals[p]);
            text += number;
            break;
        case EQ_ITEM_VARIABLE:
            text += name_at(*record_.var_names, operand);
            break;
        default:
            text += name_at(*record_.func_names, operand);
            break;
        }
    }
    return text;
}

std::string System::program()
{
    return program(record_.equations->count - 1);
}

DATAstruct* System::table(int function)
{
    return static_cast<DATAstruct*>(record_.tables->pvals[function]);
}

DATAstruct* System::child(int equation, int which)
{
    return static_cast<DATAstruct*>(record_.equations->pvals[3 * equation + which]);
}

std::string state_of_equation(const EquationSystem& es, int equation)
{
    const auto* const kinds = static_cast<const DATAstruct*>(es.equations->pvals[3 * equation]);
    const auto* const operands = static_cast<const DATAstruct*>(es.equations->pvals[3 * equation + 1]);
    const auto* const constants = static_cast<const DATAstruct*>(es.equations->pvals[3 * equation + 2]);
    std::string text = "  " + shape(*kinds) + shape(*operands) + shape(*constants);
    for (int p = 0; p < 100; ++p)
        if (kinds->ivals[p] != 0 || operands->ivals[p] != -1 || platform::bit_cast<uint64_t>(constants->dvals[p]) != 0)
            text += " " + std::to_string(p) + ":" + std::to_string(kinds->ivals[p]) + "," +
                    std::to_string(operands->ivals[p]) + "," + exact(constants->dvals[p]);
    return text + "\n";
}

std::string state_of(const EquationSystem& es)
{
    std::string text = "functions " + shape(*es.funcs) + shape(*es.func_names) + shape(*es.func_nargs) +
                       shape(*es.tables) + shape(*es.table_pos) + "\n";
    for (int32_t f = 0; f < es.funcs->count; ++f) {
        text += std::string("  ") + name_at(*es.func_names, f) + " " + std::to_string(es.func_nargs->ivals[f]) +
                " at " + std::to_string(es.table_pos->ivals[f]);
        const auto* const table = static_cast<const DATAstruct*>(es.tables->pvals[f]);
        text += " table " + shape(*table);
        if (table->dvals != nullptr)
            for (int32_t i = 0; i < table->alloc_count * table->alloc_dim; ++i)
                text += " " + exact(table->dvals[i]);
        text += "\n";
    }
    text += "variables " + shape(*es.var_names) + shape(*es.var_vals) + shape(*es.var_flags) + "\n";
    for (int32_t v = 0; v < es.var_vals->count; ++v)
        text += std::string("  ") + name_at(*es.var_names, v) + " " + exact(es.var_vals->dvals[v]) + " flag " +
                std::to_string(es.var_flags->bvals[v]) + "\n";
    text += "equations " + shape(*es.equations) + "\n";
    for (int32_t row = 0; row < es.equations->count; ++row)
        text += state_of_equation(es, row);
    return text + "row position " + exact(es.table_index) + "\n";
}

} // namespace korvale::test
