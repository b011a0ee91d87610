#include "../example.h"

EXAMPLE("EqParseVariables")
{
    EquationSystem es;
    EqSystemInitialize(&es);
    char names[] = "x, y, time", taken[] = "SIN";
    std::printf("%d with PI and E\n", EqParseVariables(&es, names, 0));
    std::printf("%d: the name of a function\n", EqParseVariables(&es, taken, 0));
    EqSystemDispose(&es);
    // > 5 with PI and E
    // > -1: the name of a function
}

EXAMPLE("EqLookupVariable EqSetVariable EqReadVariable")
{
    EquationSystem es;
    EqSystemInitialize(&es);
    char names[] = "x, y", name[] = "y", other[] = "Y";
    EqParseVariables(&es, names, 0);
    const int y = EqLookupVariable(&es, name); // once, outside the loop
    EqSetVariable(&es, y, 2.5);
    std::printf("variable %d is %g; Y is %d\n", y, EqReadVariable(&es, y), EqLookupVariable(&es, other));
    EqSystemDispose(&es);
    // > variable 3 is 2.5; Y is -1
}

EXAMPLE("EqSetVariableByName EqReadVariableByName")
{
    EquationSystem es;
    EqSystemInitialize(&es);
    char pi[] = "PI", names[] = "x", x[] = "x", unknown[] = "q";
    EqParseVariables(&es, names, 0);
    std::printf("%d, ", EqSetVariableByName(&es, x, 4));
    std::printf("%g, %.6f\n", EqReadVariableByName(&es, x), EqReadVariableByName(&es, pi));
    std::printf("%d\n", EqSetVariableByName(&es, unknown, 4));
    EqSystemDispose(&es);
    // > 1, 4, 3.141593
    // > -1
}

EXAMPLE("EqReserveVariable EqReserveVariableByName")
{
    EquationSystem es;
    EqSystemInitialize(&es);
    char names[] = "x", x[] = "x";
    EqParseVariables(&es, names, 0);
    es.var_flags->ivals = static_cast<int32_t*>(std::calloc(20, sizeof(int32_t))); // without it nothing is stored
    EqReserveVariable(&es, 0, 1);
    std::printf("%d: ", EqReserveVariableByName(&es, x, 1));
    std::printf("%d %d %d\n", es.var_flags->ivals[0], es.var_flags->ivals[1], es.var_flags->ivals[2]);
    EqSystemDispose(&es); // with the buffer
    // > 1: 1 0 1
}
