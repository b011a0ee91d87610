// The nine arrays of a system: five that belong to functions, three to variables, one to equations. They are made in
// one go or not at all; the functions, variables and rows in them each come from the source of their own.
#include "equation/system.h"

#include <cstddef>
#include <cstdlib>

#include "data/internal/record.h"
#include "equation/internal/functions.h"
#include "equation/internal/names.h"
#include "equation/internal/program.h"
#include "equation/variables.h"
#include "platform/internal/pointers.h"

static_assert(korvale::platform::kNarrowPointers ||
              (sizeof(EquationSystem) == 80 && offsetof(EquationSystem, funcs) == 0 &&
               offsetof(EquationSystem, func_names) == 8 && offsetof(EquationSystem, func_nargs) == 16 &&
               offsetof(EquationSystem, var_names) == 24 && offsetof(EquationSystem, var_vals) == 32 &&
               offsetof(EquationSystem, var_flags) == 40 && offsetof(EquationSystem, equations) == 48 &&
               offsetof(EquationSystem, tables) == 56 && offsetof(EquationSystem, table_pos) == 64 &&
               offsetof(EquationSystem, table_index) == 72));

namespace korvale::equation {
namespace {

constexpr int32_t kFirstFunctions = 20; ///< functions there is room for at first
constexpr int32_t kFirstEquations = 20; ///< equations there is room for at first

/// All arrays of a system, in the order in which they are released.
struct Arrays {
    DATAstruct** fields[9];
};

Arrays arrays_of(EquationSystem& es)
{
    return {{&es.funcs, &es.func_names, &es.func_nargs, &es.var_names, &es.var_vals, &es.var_flags, &es.tables,
             &es.table_pos, &es.equations}};
}

/// Makes the nine empty arrays; those the heap has no room for are null.
bool make_arrays(EquationSystem& es)
{
    bool made = true;
    for (DATAstruct** field : arrays_of(es).fields) {
        *field = DATANew();
        made = made && *field != nullptr;
    }
    return made;
}

bool allocate_functions(EquationSystem& es)
{
    shape_as(*es.funcs, DATA_TYPE_POINTER, kFirstFunctions, 1);
    shape_as(*es.func_nargs, DATA_TYPE_INT, kFirstFunctions, 1);
    shape_as(*es.func_names, DATA_TYPE_BYTE, kFirstFunctions, kNameBytes);
    shape_as(*es.tables, DATA_TYPE_DATA, kFirstFunctions, 1);
    shape_as(*es.table_pos, DATA_TYPE_INT, kFirstFunctions, 1);
    es.table_index = 0.0;
    for (DATAstruct* array : {es.funcs, es.func_nargs, es.func_names, es.tables, es.table_pos})
        if (DATAAllocate(array) < 0)
            return false;
    for (int32_t f = 0; f < kFirstFunctions; ++f) { // pointers are null already
        es.func_nargs->ivals[f] = 0;
        es.func_names->bvals[int64_t{f} * kNameBytes] = 0;
        es.table_pos->ivals[f] = 0;
    }
    es.funcs->count = 0;
    return true;
}

void declare_built_ins(EquationSystem& es)
{
    shape_as(*es.var_vals, DATA_TYPE_DOUBLE, 0, 1);
    shape_as(*es.var_names, DATA_TYPE_BYTE, 0, kNameBytes);
    shape_as(*es.var_flags, DATA_TYPE_BYTE, 0, 1);
    char pi[] = "PI", e[] = "E", both[] = "PI, E";
    EqParseVariables(&es, both, 0);
    EqSetVariableByName(&es, pi, 3.141592653589793);
    EqSetVariableByName(&es, e, 2.718281828459045);
}

bool allocate_equations(EquationSystem& es)
{
    shape_as(*es.equations, DATA_TYPE_DATA, kFirstEquations, kChildren);
    if (DATAAllocate(es.equations) < 0) // its slots are null
        return false;
    es.equations->count = 0;
    return true;
}

} // namespace
} // namespace korvale::equation

using namespace korvale::equation;

int EqSystemInitialize(EquationSystem* es)
{
    if (es == nullptr)
        return -1;
    if (!make_arrays(*es) || !allocate_functions(*es)) {
        EqSystemDispose(es);
        return -1;
    }
    register_built_ins(*es);
    declare_built_ins(*es);
    if (!allocate_equations(*es)) {
        EqSystemDispose(es);
        return -1;
    }
    return 1;
}

void EqSystemDispose(EquationSystem* es)
{
    if (es == nullptr)
        return;
    for (DATAstruct** field : arrays_of(*es).fields) {
        DATADispose(*field);
        std::free(*field);
        *field = nullptr;
    }
}
