// Systems whose records a host has edited: items of any kind and operand, counts that are not true, arrays that wrap
// memory of the host, other functions in the registry. Whatever runs, an evaluation gives what the documented steps
// give, and memory of the host neither moves nor grows.
#include <array>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "fuzz/functions.h"
#include "fuzz/input.h"
#include "korvale.h"
#include "platform/layer.h"
#include "tests/reference/equation_steps.h"

using namespace korvale::fuzz;

namespace {

/// A small number or one of those where arithmetic ends.
int count_of(Input& in)
{
    const int values[] = {-1, INT32_MIN, INT32_MAX, INT32_MAX - 19, 715827880};
    const int which = in.below(16);
    return which < 5 ? values[which] : in.below(150);
}

/// Words of equations in any order.
std::string text_of(Input& in)
{
    static const char* const kWords[] = {"a",    "b",     "c ",    "d",     "12", ".5", "2x", "SIN ",
                                         "HALF", "LEAST", "THREE", "RAND ", "+",  "-",  "*",  "/",
                                         "^",    "(",     ")",     " ",     "=",  "e",  "A",  "_"};
    std::string words;
    for (int n = in.below(24); n > 0; --n)
        words += kWords[in.below(24)];
    return words;
}

std::array<DATAstruct*, 9> arrays_of(const EquationSystem& es)
{
    return {es.funcs,     es.func_names, es.func_nargs, es.var_names, es.var_vals,
            es.var_flags, es.equations,  es.tables,     es.table_pos};
}

DATAstruct* child(const EquationSystem& es, int row, int which)
{
    const DATAstruct& equations = *es.equations;
    return row < equations.alloc_count ? static_cast<DATAstruct*>(equations.pvals[3 * row + which]) : nullptr;
}

/// An index of a function with `nargs` arguments, or one that is no function's.
int function_index(const EquationSystem& es, int nargs, Input& in)
{
    const int f = in.below(24);
    const bool exists = f < es.func_nargs->alloc_count && f < es.funcs->alloc_count;
    return exists && es.func_nargs->ivals[f] != nargs ? -1 - f : f;
}

void edit_items(const EquationSystem& es, Input& in)
{
    const int row = in.below(4), p = in.below(100);
    DATAstruct *const kinds = child(es, row, 0), *const operands = child(es, row, 1),
                      *const constants = child(es, row, 2);
    if (kinds == nullptr || operands == nullptr || constants == nullptr || p >= kinds->alloc_count ||
        p >= operands->alloc_count || p >= constants->alloc_count)
        return;
    const int all[] = {EQ_ITEM_CONSTANT, EQ_ITEM_VARIABLE, EQ_ITEM_SAMPLE, EQ_ITEM_UNARY,
                       EQ_ITEM_BINARY,   EQ_ITEM_BINARY,   EQ_ITEM_TARGET, EQ_ITEM_END};
    const int which = in.below(9);
    const int kind = which < 8 ? all[which] : in.any<int32_t>();
    kinds->ivals[p] = kind;
    operands->ivals[p] = kind == EQ_ITEM_UNARY    ? function_index(es, 1, in)
                         : kind == EQ_ITEM_BINARY ? function_index(es, 2, in)
                         : in.below(8) == 0       ? in.any<int32_t>()
                                                  : in.below(20);
    constants->dvals[p] = in.any<double>();
}

/// Values only, up to more of them than an evaluation can hold.
void fill_with_values(const EquationSystem& es, Input& in)
{
    const int row = in.below(4), n = in.below(100), variable = in.below(8);
    DATAstruct *const kinds = child(es, row, 0), *const operands = child(es, row, 1);
    if (kinds == nullptr || operands == nullptr)
        return;
    for (int p = 1; p <= n && p < kinds->alloc_count && p < operands->alloc_count; ++p) {
        kinds->ivals[p] = p % 8 < variable ? EQ_ITEM_VARIABLE : EQ_ITEM_CONSTANT;
        operands->ivals[p] = p % 6;
    }
    kinds->count = 100;
}

DATAstruct* table_of(const EquationSystem& es, int f)
{
    return f < es.tables->alloc_count ? static_cast<DATAstruct*>(es.tables->pvals[f]) : nullptr;
}

/// Memory of the host for the table of a function, as long as rows times columns say.
void wrap_table(const EquationSystem& es, Input& in)
{
    const int f = in.below(24), rows = in.below(5), columns = in.below(5) - 1;
    DATAstruct* const table = table_of(es, f);
    if (table == nullptr)
        return;
    DATADispose(table);
    table->count = rows;
    table->dim = columns;
    table->dvals =
        static_cast<double*>(std::calloc(static_cast<size_t>(columns < 0 ? 0 : rows * columns), sizeof(double)));
}

/// A table of the library's making; memory of the host that it takes the place of is the host's to release.
void make_table(EquationSystem& es, Input& in)
{
    const int f = in.below(24), rows = in.below(6) - 1, columns = in.below(4) - 1;
    const DATAstruct* const table = table_of(es, f);
    double* const hosts = table != nullptr && (table->alloc_count < 1 || table->alloc_dim < 1) ? table->dvals : nullptr;
    EqMakeTable(&es, f, rows, columns);
    if (hosts != nullptr && table->dvals != hosts)
        std::free(hosts);
}

/// Another size for one of the arrays of items, or none at all.
void reshape_items(const EquationSystem& es, Input& in)
{
    const int row = in.below(4), which = in.below(3), count = in.below(130);
    DATAstruct* const items = child(es, row, which);
    if (items == nullptr)
        return;
    if (count == 129) {
        DATADispose(items);
        std::free(items);
        es.equations->pvals[3 * row + which] = nullptr;
        return;
    }
    const int held = items->alloc_count;
    items->count = count;
    require(DATAReAllocate(items) == 1);
    for (int p = held < 0 ? 0 : held; p < count; ++p)
        if (which == 2)
            items->dvals[p] = 0.0;
        else
            items->ivals[p] = -1;
}

struct Values {
    std::vector<double> variables;
    std::vector<int32_t> positions;

    explicit Values(const EquationSystem& es)
        : variables(es.var_vals->dvals, es.var_vals->dvals + es.var_vals->alloc_count),
          positions(es.table_pos->ivals, es.table_pos->ivals + es.table_pos->alloc_count)
    {
    }
    void restore(const EquationSystem& es) const
    {
        std::copy(variables.begin(), variables.end(), es.var_vals->dvals);
        std::copy(positions.begin(), positions.end(), es.table_pos->ivals);
    }
    bool are(const Values& other) const
    {
        for (size_t v = 0; v < variables.size(); ++v)
            if (!is_same(variables[v], other.variables[v]))
                return false;
        return positions == other.positions;
    }
};

/// The library's work and the steps, from the same values and random numbers.
template <class Library, class Steps>
void same(EquationSystem& es, Library library, Steps steps)
{
    const Values before(es);
    EqSeed(1);
    const double expected = steps();
    const int drawn = Mwrand();
    const Values after_steps(es);
    before.restore(es);
    EqSeed(1);
    require(is_same(library(), expected));
    require(Mwrand() == drawn);
    require(Values(es).are(after_steps));
}

/// Anything that adds to the system.
void grow(EquationSystem& es, Input& in)
{
    std::string text = text_of(in);
    switch (in.below(4)) {
    case 0:
        EqParseVariables(&es, text.data(), in.below(2));
        break;
    case 1:
        EqAnotherFunc(&es);
        break;
    case 2:
        EqAddFuncUnary(&es, text.data(), half);
        break;
    default:
        text = in.below(8) == 0 ? text : "a = " + text;
        EqParseEquation(&es, text.data());
        break;
    }
}

/// Growth with some of the arrays wrapped around exactly what they count: those stay as they are.
void grow_wrapped(EquationSystem& es, Input& in)
{
    const int mask = in.any<uint16_t>();
    struct Shape {
        DATAstruct* array;
        int32_t count, alloc_dim, alloc_count;
        const void* buffers[4];
    };
    std::vector<Shape> wrapped;
    const auto arrays = arrays_of(es);
    for (size_t i = 0; i < arrays.size(); ++i) {
        DATAstruct& d = *arrays[i];
        if ((mask >> i & 1) == 0 || d.alloc_count < 1)
            continue;
        wrapped.push_back({&d, d.count, d.alloc_dim, d.alloc_count, {d.dvals, d.ivals, d.bvals, d.pvals}});
        d.count = d.count < 0 ? 0 : d.count < d.alloc_count ? d.count : d.alloc_count;
        d.alloc_dim = d.alloc_count = -1;
    }
    grow(es, in);
    for (const Shape& shape : wrapped) {
        DATAstruct& d = *shape.array;
        require(d.dvals == shape.buffers[0] && d.ivals == shape.buffers[1] && d.bvals == shape.buffers[2] &&
                d.pvals == shape.buffers[3]);
        require(d.count <= shape.alloc_count);
        d.alloc_dim = shape.alloc_dim;
        d.alloc_count = shape.alloc_count;
    }
}

/// Growth and evaluation with counts that are not true. `funcs` is left out where its 8 bytes a slot would exist.
void run_miscounted(EquationSystem& es, Input& in)
{
    DATAstruct* const arrays[] = {es.funcs, es.func_nargs, es.var_vals, es.equations, es.tables, es.var_flags};
    DATAstruct& d = *arrays[in.below(6)];
    const int32_t count = d.count;
    d.count = count_of(in);
    if (&d == es.funcs && d.count == 715827880)
        d.count = INT32_MAX;
    const int32_t untrue = d.count;
    if (in.below(2) == 0 && (untrue < 0 || untrue >= count)) // what a host drops from a list is its own to release
        grow(es, in);
    else
        same(
            es, [&] { return EqEvaluate(&es, 0); }, [&] { return korvale::reference::evaluate(&es, 0); });
    if (d.count == untrue) // otherwise it has grown
        d.count = count;
}

void replace_function(const EquationSystem& es, Input& in)
{
    void* const unary[] = {nullptr, reinterpret_cast<void*>(half), reinterpret_cast<void*>(EqFuncNegate)};
    void* const binary[] = {nullptr, reinterpret_cast<void*>(least), reinterpret_cast<void*>(EqFuncAdd),
                            reinterpret_cast<void*>(EqFuncSubtract), reinterpret_cast<void*>(EqFuncDivide)};
    const int f = in.below(es.funcs->alloc_count), which = in.byte();
    if (es.func_nargs->ivals[f] == 1)
        es.funcs->pvals[f] = unary[which % 3];
    else if (es.func_nargs->ivals[f] == 2)
        es.funcs->pvals[f] = binary[which % 5];
}

void step(EquationSystem& es, Input& in)
{
    const int row = in.below(5) - 1;
    switch (in.below(16)) {
    case 0:
    case 1:
    case 2:
    case 3:
        edit_items(es, in);
        break;
    case 4:
        if (DATAstruct* const kinds = child(es, row < 0 ? 0 : row, 0); kinds != nullptr && kinds->alloc_count > 0)
            kinds->count = count_of(in);
        break;
    case 5:
        reshape_items(es, in);
        break;
    case 6:
        grow(es, in);
        break;
    case 7:
        grow_wrapped(es, in);
        break;
    case 8:
        run_miscounted(es, in);
        break;
    case 9:
        replace_function(es, in);
        break;
    case 10:
        EqSimplify(&es, row);
        break;
    case 11:
        make_table(es, in);
        EqSetTableIndex(&es, in.below(40) / 4.0 - 2);
        break;
    case 12:
        same(
            es, [&] { return EqSystemEvaluate(&es); }, [&] { return korvale::reference::evaluate_all(&es); });
        break;
    case 13:
        fill_with_values(es, in);
        break;
    case 14:
        wrap_table(es, in);
        break;
    default:
        EqSetVariable(&es, in.below(8), in.any<double>());
        same(
            es, [&] { return EqEvaluate(&es, row); }, [&] { return korvale::reference::evaluate(&es, row); });
        break;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count)
{
    Input in(bytes, count);
    EquationSystem es;
    require(EqSystemInitialize(&es) == 1);
    char names[] = "a b c d", unary[] = "HALF", binary[] = "LEAST", none[] = "THREE",
         text[] = "c = HALF(a + 2 * b) - d / 3";
    require(EqParseVariables(&es, names, in.below(2)) == 6);
    require(EqAddFuncUnary(&es, unary, half) == 1 && EqAddFuncBinary(&es, binary, least) == 1);
    require(EqAddFuncNoArg(&es, none, three) == 1);
    for (int row = 0; row < 3; ++row)
        require(EqParseEquation(&es, text) > 0);
    for (int steps = 0; steps < 100 && !in.is_used_up(); ++steps)
        step(es, in);
    EqSystemDispose(&es);
    return 0;
}
