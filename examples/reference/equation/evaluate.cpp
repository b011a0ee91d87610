#include "../example.h"

EXAMPLE("EqEvaluate")
{
    EquationSystem es;
    EqSystemInitialize(&es);
    char names[] = "x, y", x[] = "x", text[] = "y = x ^ 2 - 1";
    EqParseVariables(&es, names, 0);
    EqParseEquation(&es, text);
    for (double value : {1.0, 2.0, 3.0}) {
        EqSetVariableByName(&es, x, value);
        std::printf("%g ", EqEvaluate(&es, 0));
    }
    std::printf("\n");
    EqSystemDispose(&es);
    // > 0 3 8
}

EXAMPLE("EqSystemEvaluate")
{
    EquationSystem es;
    EqSystemInitialize(&es);
    char names[] = "a, b", a[] = "a", b[] = "b", first[] = "a = 3 * 4", second[] = "b = a + 1";
    EqParseVariables(&es, names, 0);
    EqParseEquation(&es, first);
    EqParseEquation(&es, second); // which reads what the first one gave
    EqSystemEvaluate(&es);
    std::printf("%g %g\n", EqReadVariableByName(&es, a), EqReadVariableByName(&es, b));
    EqSystemDispose(&es);
    // > 12 13
}
