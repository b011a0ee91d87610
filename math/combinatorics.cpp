#include "math/combinatorics.h"

#include <cmath>
#include <cstdint>

namespace korvale::inside {
namespace {

/// The 32-bit product as it wraps.
int wrapping_product(int a, int b)
{
    return static_cast<int>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}

/// The truncating 32-bit quotient as it wraps; 0 for a divisor of 0.
int wrapping_quotient(int a, int b)
{
    if (b == 0)
        return 0;
    if (b == -1)
        return static_cast<int>(0u - static_cast<uint32_t>(a));
    return a / b;
}

} // namespace
} // namespace korvale::inside

using namespace korvale::inside;

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
        if (std::fabs(next) == std::fabs(result)) // the size stays, the sign follows the number of factors left
            return (n - i) % 2 == 0 ? result : next;
        result = next;
    }
    return result;
}
