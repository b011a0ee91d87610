#include "tests/reference/equation_steps.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>

#include "equation/tables.h"

namespace korvale::reference {
namespace {

/// Numbers or slots of one array that exist: what was allocated, or, around memory of a host, what is counted.
int64_t room(const DATAstruct* d, const void* buffer)
{
    if (d == nullptr || buffer == nullptr)
        return 0;
    const bool is_hosts = d->alloc_count < 1 || d->alloc_dim < 1;
    return is_hosts ? static_cast<int64_t>(d->count) * d->dim : static_cast<int64_t>(d->alloc_count) * d->alloc_dim;
}

/// Whether entry `i` of a list is counted and exists.
bool has(const DATAstruct* d, const void* buffer, int64_t i)
{
    return i >= 0 && i < room(d, buffer) && i < d->count;
}

void* function(const EquationSystem& es, int f)
{
    return es.funcs != nullptr && has(es.funcs, es.funcs->pvals, f) ? es.funcs->pvals[f] : nullptr;
}

double* variable(const EquationSystem& es, int v)
{
    return es.var_vals != nullptr && has(es.var_vals, es.var_vals->dvals, v) ? es.var_vals->dvals + v : nullptr;
}

bool is_reserved(const EquationSystem& es, int v)
{
    return es.var_flags != nullptr && has(es.var_flags, es.var_flags->bvals, v) && es.var_flags->bvals[v] != 0;
}

double call(const EquationSystem& es, int f, double x)
{
    void* const called = function(es, f);
    return called == nullptr ? 0.0 : reinterpret_cast<double (*)(double)>(called)(x);
}

double call(const EquationSystem& es, int f, double a, double b)
{
    void* const called = function(es, f);
    return called == nullptr ? 0.0 : reinterpret_cast<double (*)(double, double)>(called)(a, b);
}

struct Items {
    const int32_t* kinds = nullptr;
    const int32_t* operands = nullptr;
    const double* constants = nullptr;
    int64_t room = 0;
    int count = 0;
    bool has_target() const { return room > 0 && kinds[0] == EQ_ITEM_TARGET; }
};

Items items_of(const EquationSystem& es, int equation)
{
    const DATAstruct* const equations = es.equations;
    if (equations == nullptr || equation < 0 || equation >= equations->count ||
        3 * (equation + int64_t{1}) > room(equations, equations->pvals))
        return {};
    const auto* const kinds = static_cast<const DATAstruct*>(equations->pvals[3 * int64_t{equation}]);
    const auto* const operands = static_cast<const DATAstruct*>(equations->pvals[3 * int64_t{equation} + 1]);
    const auto* const constants = static_cast<const DATAstruct*>(equations->pvals[3 * int64_t{equation} + 2]);
    if (kinds == nullptr || operands == nullptr || constants == nullptr)
        return {};
    const int64_t items =
        std::min({room(kinds, kinds->ivals), room(operands, operands->ivals), room(constants, constants->dvals)});
    if (items < 1)
        return {};
    return {kinds->ivals, operands->ivals, constants->dvals, items,
            static_cast<int>(std::min<int64_t>(items, kinds->count))};
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

/// Asks for the items anew each time: a function that is called may have changed them.
double run(EquationSystem* es, int equation, double* values)
{
    int n = 0;
    for (int p = 0;; ++p) {
        const Items items = items_of(*es, equation);
        if (p >= items.count || items.kinds[p] == EQ_ITEM_END)
            break;
        const int kind = items.kinds[p], operand = items.operands[p];
        if (kind == EQ_ITEM_CONSTANT || kind == EQ_ITEM_VARIABLE || kind == EQ_ITEM_SAMPLE) {
            const double* const value = kind == EQ_ITEM_VARIABLE ? variable(*es, operand) : nullptr;
            const double pushed = kind == EQ_ITEM_CONSTANT ? items.constants[p]
                                  : kind == EQ_ITEM_SAMPLE ? EqTableRead(es, operand)
                                  : value == nullptr       ? 0.0
                                                           : *value;
            if (n == 51)
                break;
            values[n++] = pushed;
        } else if (kind == EQ_ITEM_UNARY && n >= 1) {
            values[n - 1] = call(*es, operand, values[n - 1]);
        } else if (kind == EQ_ITEM_BINARY && n >= 2) {
            values[n - 2] = call(*es, operand, values[n - 2], values[n - 1]);
            --n;
        }
    }
    return n == 0 ? 0.0 : values[n - 1];
}

} // namespace

double evaluate(EquationSystem* es, int equation)
{
    if (!items_of(*es, equation).has_target())
        return 0.0;
    DATAstruct* const stack = new_doubles(51);
    const double result = run(es, equation, stack->dvals);
    release(stack);
    const Items items = items_of(*es, equation);
    const int target = items.room == 0 ? -1 : items.operands[0];
    if (double* const value = variable(*es, target); value != nullptr && !is_reserved(*es, target))
        *value = result;
    return result;
}

int evaluate_all(EquationSystem* es)
{
    if (variable(*es, 0) == nullptr)
        return -1;
    const int count = static_cast<int>(std::min<int64_t>(es->var_vals->count, room(es->var_vals, es->var_vals->dvals)));
    DATAstruct* const after = new_doubles(count);
    std::memcpy(after->dvals, es->var_vals->dvals, sizeof(double) * static_cast<size_t>(count));
    for (int i = 0; es->equations != nullptr && i < es->equations->count; ++i) {
        const Items items = items_of(*es, i);
        if (!items.has_target())
            continue;
        const int target = items.operands[0];
        const double result = evaluate(es, i);
        if (target >= 0 && target < count)
            after->dvals[target] = result;
    }
    for (int v = 0; v < count; ++v)
        if (double* const value = variable(*es, v); value != nullptr)
            *value = after->dvals[v];
    release(after);
    return 1;
}

int declare(EquationSystem* es, const char* text, int flag)
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
                std::abort();
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

} // namespace korvale::reference
