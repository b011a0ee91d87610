#include "../example.h"

EXAMPLE("EqMakeTable EqSetTableIndex EqTableRead")
{
    EquationSystem es;
    EqSystemInitialize(&es);
    char name[] = "RAND", names[] = "y", text[] = "y = RAND";
    EqParseVariables(&es, names, 0);
    EqParseEquation(&es, text); // one place that names it: one column
    const int rand = EqLookupFunction(&es, name);
    EqSeed(3);
    EqMakeTable(&es, rand, 10, 1); // ten rows of steady noise
    EqSetTableIndex(&es, 4);
    const double there = EqTableRead(&es, rand);
    EqSetTableIndex(&es, 5);
    EqTableRead(&es, rand);
    EqSetTableIndex(&es, 4); // and back
    std::printf("%s\n", EqTableRead(&es, rand) == there ? "the same value" : "another");
    EqSystemDispose(&es);
    // > the same value
}

EXAMPLE("EqMakeTableByName")
{
    EquationSystem es;
    EqSystemInitialize(&es);
    char name[] = "GAUSS", sine[] = "SIN", names[] = "y", text[] = "y = GAUSS + GAUSS";
    EqParseVariables(&es, names, 0);
    EqParseEquation(&es, text);
    std::printf("%d, ", EqMakeTableByName(&es, name, 10, 1));
    const auto* table = static_cast<DATAstruct*>(es.tables->pvals[EqLookupFunction(&es, name)]);
    std::printf("[%d][%d]\n", table->count, table->dim); // two places, two columns
    std::printf("%d: it has an argument\n", EqMakeTableByName(&es, sine, 10, 1));
    EqSystemDispose(&es);
    // > 1, [10][2]
    // > -1: it has an argument
}
