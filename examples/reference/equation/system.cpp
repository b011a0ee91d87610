#include "../example.h"

EXAMPLE("EqSystemInitialize EqSystemDispose")
{
    EquationSystem es;
    std::printf("%d: ", EqSystemInitialize(&es));
    std::printf("%d functions, %d variables\n", es.funcs->count, es.var_vals->count); // PI and E
    EqSystemDispose(&es);
    // > 1: 18 functions, 2 variables
}
