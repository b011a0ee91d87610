#include "equation/system.h"

#include <cstddef>
#include <cstdlib>

#include "equation/internal/program.h"
#include "equation/internal/registry.h"
#include "equation/internal/variables.h"

static_assert(sizeof(EquationSystem) == 80 && offsetof(EquationSystem, funcs) == 0 &&
              offsetof(EquationSystem, func_names) == 8 && offsetof(EquationSystem, func_nargs) == 16 &&
              offsetof(EquationSystem, var_names) == 24 && offsetof(EquationSystem, var_vals) == 32 &&
              offsetof(EquationSystem, var_flags) == 40 && offsetof(EquationSystem, equations) == 48 &&
              offsetof(EquationSystem, tables) == 56 && offsetof(EquationSystem, table_pos) == 64 &&
              offsetof(EquationSystem, table_index) == 72);

namespace korvale::inside {
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

void shape(DATAstruct& d, int32_t count, int32_t type, int32_t dim)
{
    d.count = count;
    d.type = type;
    d.dim = dim;
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
    shape(*es.funcs, kFirstFunctions, DATA_TYPE_POINTER, 1);
    shape(*es.func_nargs, kFirstFunctions, DATA_TYPE_INT, 1);
    shape(*es.func_names, kFirstFunctions, DATA_TYPE_BYTE, kNameBytes);
    shape(*es.tables, kFirstFunctions, DATA_TYPE_DATA, 1);
    shape(*es.table_pos, kFirstFunctions, DATA_TYPE_INT, 1);
    es.table_index = 0.0;
    for (DATAstruct* array : {es.funcs, es.func_nargs, es.func_names, es.tables, es.table_pos})
        if (DATAAllocate(array) < 0)
            return false;
    for (int32_t f = 0; f < kFirstFunctions; ++f) { // pointers are null already
        es.func_nargs->ivals[f] = 0;
        es.func_names->bvals[components(f, kNameBytes)] = 0;
        es.table_pos->ivals[f] = 0;
    }
    es.funcs->count = 0;
    return true;
}

void declare_built_ins(EquationSystem& es)
{
    shape(*es.var_vals, 0, DATA_TYPE_DOUBLE, 1);
    shape(*es.var_names, 0, DATA_TYPE_BYTE, kNameBytes);
    shape(*es.var_flags, 0, DATA_TYPE_BYTE, 1);
    declare_variables(es, "PI, E", 0);
    EqSetVariable(&es, find_variable(es, "PI", 2), 3.141592653589793);
    EqSetVariable(&es, find_variable(es, "E", 1), 2.718281828459045);
}

bool allocate_equations(EquationSystem& es)
{
    shape(*es.equations, kFirstEquations, DATA_TYPE_DATA, kChildren);
    if (DATAAllocate(es.equations) < 0) // its slots are null
        return false;
    es.equations->count = 0;
    return true;
}

} // namespace
} // namespace korvale::inside

using namespace korvale::inside;

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
