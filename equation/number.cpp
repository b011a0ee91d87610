#include "equation/internal/number.h"

#include <cstddef>
#include <cstdint>

#include "platform/internal/decimals.h"

namespace korvale::equation {
namespace {

/// Powers of ten that are exact in a double.
constexpr double kPowers[] = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
constexpr std::ptrdiff_t kExactDigits = 15; ///< any integer of so many digits is exact in a double

/// A number of few digits: both its digits as an integer and the power of ten they are divided by are exact, so that
/// the quotient is correctly rounded (W. D. Clinger, "How to read floating point numbers accurately", 1990).
double read_short_number(const char* first, const char* last)
{
    int64_t digits = 0;
    const char* at = first;
    for (; at != last && *at != '.'; ++at)
        digits = 10 * digits + (*at - '0');
    if (at == last)
        return static_cast<double>(digits);
    const char* const point = at++;
    for (; at != last && *at != '.'; ++at)
        digits = 10 * digits + (*at - '0');
    return static_cast<double>(digits) / kPowers[at - point - 1];
}

} // namespace

double read_number(const char* first, const char* last)
{
    return last - first <= kExactDigits ? read_short_number(first, last) : read_fixed(first, last);
}

} // namespace korvale::equation
