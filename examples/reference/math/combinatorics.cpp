#include "../example.h"

EXAMPLE("factorial")
{
    std::printf("%d %d %d\n", factorial(0), factorial(5), factorial(12));
    // > 1 120 479001600
}

EXAMPLE("binomial")
{
    for (int k = 0; k <= 4; ++k) // the weights of a curve of degree 4
        std::printf("%d ", binomial(4, k));
    std::printf("\n");
    // > 1 4 6 4 1
}

EXAMPLE("power")
{
    std::printf("%g %g %g\n", power(2, 10), power(2, 0), power(2, -1)); // a negative exponent does not invert
    // > 1024 1 1
}
