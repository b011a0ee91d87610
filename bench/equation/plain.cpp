#include "bench/equation/plain.h"

#include <cstdlib>
#include <cstring>
#include <string>

namespace korvale::bench {
namespace {

const DATAstruct* child(const EquationSystem* es, int equation, int which)
{
    return static_cast<const DATAstruct*>(es->equations->pvals[3 * equation + which]);
}

DATAstruct* new_doubles(int count)
{
    DATAstruct* const values = DATANew();
    values->count = count;
    values->dim = 1;
    values->type = DATA_TYPE_DOUBLE;
    DATAAllocate(values);
    return values;
}

void release(DATAstruct* values)
{
    DATADispose(values);
    std::free(values);
}

} // namespace

double evaluate_plainly(EquationSystem* es, int equation)
{
    const int32_t* const kinds = child(es, equation, 0)->ivals;
    const int32_t* const operands = child(es, equation, 1)->ivals;
    const double* const constants = child(es, equation, 2)->dvals;
    const int count = child(es, equation, 0)->count;
    if (kinds[0] != EQ_ITEM_TARGET)
        return 0.0;
    DATAstruct* const stack = new_doubles(51);
    double* const values = stack->dvals;
    int n = 0;
    for (int p = 0; p < count && kinds[p] != EQ_ITEM_END; ++p) {
        void* const function =
            kinds[p] >= EQ_ITEM_UNARY && kinds[p] <= EQ_ITEM_BINARY ? es->funcs->pvals[operands[p]] : nullptr;
        switch (kinds[p]) {
        case EQ_ITEM_CONSTANT:
            values[n++] = constants[p];
            break;
        case EQ_ITEM_VARIABLE:
            values[n++] = es->var_vals->dvals[operands[p]];
            break;
        case EQ_ITEM_SAMPLE:
            values[n++] = EqTableRead(es, operands[p]);
            break;
        case EQ_ITEM_UNARY:
            values[n - 1] = reinterpret_cast<double (*)(double)>(function)(values[n - 1]);
            break;
        case EQ_ITEM_BINARY:
            values[n - 2] = reinterpret_cast<double (*)(double, double)>(function)(values[n - 2], values[n - 1]);
            --n;
            break;
        default:
            break;
        }
    }
    const double result = n == 0 ? 0.0 : values[n - 1];
    release(stack);
    if (es->var_flags->bvals[operands[0]] == 0)
        es->var_vals->dvals[operands[0]] = result;
    return result;
}

int evaluate_all_plainly(EquationSystem* es)
{
    DATAstruct* const after = new_doubles(es->var_vals->count);
    std::memcpy(after->dvals, es->var_vals->dvals, sizeof(double) * static_cast<size_t>(after->count));
    for (int i = 0; i < es->equations->count; ++i)
        if (child(es, i, 0)->ivals[0] == EQ_ITEM_TARGET)
            after->dvals[child(es, i, 1)->ivals[0]] = evaluate_plainly(es, i);
    std::memcpy(es->var_vals->dvals, after->dvals, sizeof(double) * static_cast<size_t>(after->count));
    release(after);
    return 1;
}

int declare_plainly(EquationSystem* es, const char* text, int flag)
{
    const int before = es->var_vals->count;
    int count = before;
    char* const names = static_cast<char*>(std::malloc(13 * (static_cast<size_t>(before) + std::strlen(text))));
    std::memcpy(names, es->var_names->bvals, 13 * static_cast<size_t>(before));
    std::string name;
    for (const char* at = text;; ++at) {
        if ((*at >= 'a' && *at <= 'z') || (*at >= 'A' && *at <= 'Z')) {
            name += *at;
            continue;
        }
        for (int f = 0; f < es->funcs->count && !name.empty(); ++f)
            if (std::strcmp(reinterpret_cast<const char*>(es->func_names->bvals) + 13 * f, name.c_str()) == 0)
                std::abort(); // no text of a benchmark names a function
        bool known = name.empty();
        for (int v = 0; v < count && !known; ++v)
            known = std::strcmp(names + 13 * static_cast<size_t>(v), name.c_str()) == 0;
        if (!known)
            std::strcpy(names + 13 * static_cast<size_t>(count++), name.c_str());
        name.clear();
        if (*at == '\0')
            break;
    }
    for (DATAstruct* array : {es->var_names, es->var_vals, es->var_flags}) {
        array->count = count;
        DATAReAllocate(array);
    }
    std::memcpy(es->var_names->bvals, names, 13 * static_cast<size_t>(count));
    std::free(names);
    for (int v = before; v < count; ++v) {
        es->var_vals->dvals[v] = 0.0;
        es->var_flags->bvals[v] = static_cast<uint8_t>(flag);
    }
    return count;
}

} // namespace korvale::bench
