#include "math/combinatorics.h"

#include <cmath>

#include "platform/internal/wrapping.h"

using namespace korvale::math;

int factorial(int n)
{
    if (n <= 0)
        return 1;
    int result = n;
    for (int i = 2; i < n && result != 0; ++i) // once wrapped to 0 it stays 0
        result = wrapping_product(result, i);
    return result;
}

int binomial(int n, int k)
{
    if (n <= 0 || k <= 0 || n <= k)
        return 1;
    return wrapping_quotient(factorial(n), wrapping_product(factorial(k), factorial(n - k)));
}

double power(double x, int n)
{
    if (n <= 0)
        return 1.0;
    double result = x;
    for (int i = 1; i < n; ++i) {
        const double next = result * x;
        if (std::isnan(next))
            return next;
        // A factor that leaves the magnitude as it is does so from then on; the parity of those left decides the sign.
        if (std::fabs(next) == std::fabs(result))
            return (n - i) % 2 == 0 ? result : next;
        result = next;
    }
    return result;
}
