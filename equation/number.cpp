#include "equation/internal/number.h"

#include <charconv>
#include <cmath>
#include <system_error>

namespace korvale::inside {
namespace {

/// Whether the digits before the point are worth more than nothing.
bool has_whole_part(const char* first, const char* last)
{
    while (first != last && *first == '0')
        ++first;
    return first != last && *first != '.';
}

} // namespace

double read_number(const char* first, const char* last)
{
    double number = 0.0;
    const std::from_chars_result read = std::from_chars(first, last, number, std::chars_format::fixed);
    if (read.ec == std::errc::result_out_of_range) // without an exponent only size decides which end was passed
        return has_whole_part(first, last) ? HUGE_VAL : 0.0;
    return number;
}

} // namespace korvale::inside
