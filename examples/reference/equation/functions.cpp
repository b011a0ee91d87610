#include "../example.h"

EXAMPLE("EqAddFuncBinary")
{
    EquationSystem es;
    EqSystemInitialize(&es);
    char name[] = "MAX", names[] = "y", text[] = "y = 3 MAX 7"; // it stands between its operands
    EqAddFuncBinary(&es, name, [](double a, double b) { return a > b ? a : b; });
    EqParseVariables(&es, names, 0);
    EqParseEquation(&es, text);
    std::printf("%g\n", EqEvaluate(&es, 0));
    EqSystemDispose(&es);
    // > 7
}

EXAMPLE("EqAddFuncUnary")
{
    EquationSystem es;
    EqSystemInitialize(&es);
    char name[] = "HALF", names[] = "y", text[] = "y = HALF(10) + 1";
    EqAddFuncUnary(&es, name, [](double a) { return a / 2; });
    EqParseVariables(&es, names, 0);
    EqParseEquation(&es, text);
    std::printf("%g\n", EqEvaluate(&es, 0));
    EqSystemDispose(&es);
    // > 6
}

EXAMPLE("EqAddFuncNoArg")
{
    EquationSystem es;
    EqSystemInitialize(&es);
    char name[] = "FRAMERATE", names[] = "t", text[] = "t = 1 / FRAMERATE";
    EqAddFuncNoArg(&es, name, [] { return 25.0; });
    EqParseVariables(&es, names, 0);
    EqParseEquation(&es, text);
    std::printf("%g\n", EqEvaluate(&es, 0));
    EqSystemDispose(&es);
    // > 0.04
}

EXAMPLE("EqAnotherFunc")
{
    EquationSystem es;
    EqSystemInitialize(&es);
    const int reserved = EqAnotherFunc(&es);
    std::printf("index %d of %d\n", reserved, es.funcs->count);
    EqSystemDispose(&es);
    // > index 18 of 19
}

EXAMPLE("EqLookupFunction")
{
    EquationSystem es;
    EqSystemInitialize(&es);
    char sine[] = "SIN", small[] = "sin";
    std::printf("%d %d\n", EqLookupFunction(&es, sine), EqLookupFunction(&es, small));
    EqSystemDispose(&es);
    // > 6 -1
}

EXAMPLE("EqSeed gauss_init")
{
    EqSeed(7);
    const double first = EqFuncRand();
    gauss_init(7); // under another name
    std::printf("%s\n", EqFuncRand() == first ? "the same number" : "another");
    // > the same number
}

EXAMPLE("EqFuncRand")
{
    EqSeed(1);
    double least = 1, most = 0;
    for (int i = 0; i < 1000; ++i) {
        const double drawn = EqFuncRand();
        least = std::min(least, drawn), most = std::max(most, drawn);
    }
    std::printf("from %.1f to %.1f\n", least, most);
    // > from 0.0 to 1.0
}

EXAMPLE("gauss")
{
    gauss_init(1);
    double sum = 0, squares = 0;
    for (int i = 0; i < 10000; ++i) {
        const double drawn = gauss();
        sum += drawn, squares += drawn * drawn;
    }
    std::printf("mean %.1f, deviation %.1f\n", std::fabs(sum / 10000), std::sqrt(squares / 10000));
    // > mean 0.0, deviation 1.0
}

EXAMPLE("EqFuncAdd EqFuncSubtract EqFuncMultiply EqFuncNegate")
{
    std::printf("%g %g %g %g\n", EqFuncAdd(7, 2), EqFuncSubtract(7, 2), EqFuncMultiply(7, 2), EqFuncNegate(7));
    // > 9 5 14 -7
}

EXAMPLE("EqFuncDivide")
{
    std::printf("%g %g\n", EqFuncDivide(7, 2), EqFuncDivide(7, 0)); // 0 in place of infinity
    // > 3.5 0
}
