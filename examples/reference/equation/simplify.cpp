#include "../example.h"

EXAMPLE("EqSimplify EqSystemSimplify")
{
    EquationSystem es;
    EqSystemInitialize(&es);
    char names[] = "x, y", text[] = "y = x + 2 * 3", more[] = "x = SQRT(16)";
    EqParseVariables(&es, names, 0);
    EqParseEquation(&es, text);
    EqParseEquation(&es, more);
    std::printf("%d: ", EqSimplify(&es, 0)); // 2 * 3 is a constant now
    std::printf("%g\n", EqEvaluate(&es, 0));
    std::printf("%d: ", EqSystemSimplify(&es)); // of all equations
    std::printf("%g\n", EqEvaluate(&es, 1));
    EqSystemDispose(&es);
    // > 1: 6
    // > 1: 4
}
