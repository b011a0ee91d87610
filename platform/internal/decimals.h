#pragma once

#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <system_error>

#include "platform/internal/namespaces.h"

// Doubles as decimal text, and back: by <charconv>, which no locale changes. Where the C++ library has that for
// integers only (no __cpp_lib_to_chars), printf and strtod give the same characters and bits, as long as the locale is
// "C". It always is for WebAssembly.
namespace korvale::platform {

/// One more in the last digit of "d.ddde+dd"; all are 0 where they were all 9.
inline void raise_last_digit(char* text)
{
    for (char* digit = std::strchr(text, 'e') - 1; digit >= text && *digit != '-'; --digit) {
        if (*digit == '.')
            continue;
        if (*digit != '9') {
            ++*digit;
            return;
        }
        *digit = '0';
    }
}

inline char* write_shortest_by_printf(char* to, size_t room, double value)
{
    if (!std::isfinite(value))
        return to + std::snprintf(to, room, "%f", value);
    const auto reads_back = [&] { return std::strtod(to, nullptr) == value; };
    int decimals = -1, size;
    do {
        size = std::snprintf(to, room, "%.*e", ++decimals, value);
        if (reads_back())
            break;
        // Doubles lie closer below a power of two than above it: the nearest text may be too far below, and the next
        // one near enough.
        raise_last_digit(to);
    } while (!reads_back());
    const int exponent = std::atoi(std::strchr(to, 'e') + 1);
    char plain[32]; // one that does not fit is not the shorter one
    const int plain_size =
        std::snprintf(plain, sizeof plain, "%.*f", exponent < decimals ? decimals - exponent : 0, value);
    if (plain_size > size)
        return to + size;
    std::memcpy(to, plain, static_cast<size_t>(plain_size));
    return to + plain_size;
}

inline char* write_fixed_by_printf(char* to, size_t room, double value, int decimals)
{
    return to + std::snprintf(to, room, "%.*f", decimals, value);
}

inline double read_fixed_by_strtod(const char* first, const char* last)
{
    // Which double is nearest takes 768 digits, and whether any other than 0 follows. Up to 323 zeros lie between the
    // point and the first of them.
    constexpr size_t kDeciding = 1 + 323 + 768;
    char text[kDeciding + 2];
    size_t size = 0;
    bool has_point = false;
    const auto is_at_end = [&] { return first == last || (*first == '.' && has_point); };
    while (!is_at_end() && *first == '0')
        ++first;
    for (; !is_at_end() && size < kDeciding; ++first) {
        has_point = has_point || *first == '.';
        text[size++] = *first;
    }
    while (!is_at_end() && *first == '0')
        ++first;
    if (!is_at_end())
        text[size++] = '1';
    text[size] = '\0';
    return std::strtod(text, nullptr);
}

/// Writes the shortest text that reads back as the number, plain or with an exponent, whichever is shorter, and returns
/// its end. Wants room for 32 characters; there may be a 0 behind the end.
inline char* write_shortest(char* to, size_t room, double value)
{
#ifdef __cpp_lib_to_chars
    return std::to_chars(to, to + room, value).ptr;
#else
    return write_shortest_by_printf(to, room, value);
#endif
}

/// Writes a number with so many decimals and returns the end of its text. There must be room for a 0 behind it.
inline char* write_fixed(char* to, size_t room, double value, int decimals)
{
#ifdef __cpp_lib_to_chars
    return std::to_chars(to, to + room, value, std::chars_format::fixed, decimals).ptr;
#else
    return write_fixed_by_printf(to, room, value, decimals);
#endif
}

/// The double nearest to a text of digits with or without a point, read up to a second one: infinity where it is too
/// large.
inline double read_fixed(const char* first, const char* last)
{
#ifdef __cpp_lib_to_chars
    double number = 0.0;
    if (std::from_chars(first, last, number, std::chars_format::fixed).ec != std::errc::result_out_of_range)
        return number;
    while (first != last && *first == '0')
        ++first;
    const bool has_whole_part = first != last && *first != '.'; // without an exponent only size decides which end it is
    return has_whole_part ? HUGE_VAL : 0.0;
#else
    return read_fixed_by_strtod(first, last);
#endif
}

} // namespace korvale::platform
