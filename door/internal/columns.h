#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "include/korvale_c.h"

// Columns of the host: the values of one variable, one a row, wherever they stand.
namespace korvale::door {

/// Values of one variable where the host keeps them, one a row.
struct Column {
    const char* data;
    int64_t stride; ///< bytes from one value to the next
    int32_t kind;
    int32_t variable;
};

/// Where values of one variable go, one a row; of a single equation its result, whatever `variable` says.
struct ColumnOut {
    char* data;
    int64_t stride; ///< bytes from one value to the next
    int32_t kind;
    int32_t variable;
};

inline double value_at(const Column& column, int64_t row)
{
    const char* const at = column.data + row * column.stride;
    if (column.kind == KORVALE_FLOAT) {
        float value;
        std::memcpy(&value, at, sizeof value);
        return double{value};
    }
    double value;
    std::memcpy(&value, at, sizeof value);
    return value;
}

inline void put_value(const ColumnOut& column, int64_t row, double value)
{
    char* const at = column.data + row * column.stride;
    if (column.kind == KORVALE_FLOAT) {
        const auto rounded = static_cast<float>(value);
        std::memcpy(at, &rounded, sizeof rounded);
    } else {
        std::memcpy(at, &value, sizeof value);
    }
}

template <class AnyColumn>
int64_t element_size(const AnyColumn& column)
{
    return column.kind == KORVALE_FLOAT ? int64_t{sizeof(float)} : int64_t{sizeof(double)};
}

enum class Overlap { none, same, shifted };

/// Whether two buffers of `rows` elements have memory in common, and whether each element only its own.
template <class A, class B>
Overlap overlap_of(const A& a, const B& b, int64_t rows)
{
    const auto first = [](const auto& c) { return static_cast<int64_t>(reinterpret_cast<uintptr_t>(c.data)); };
    const auto low = [&](const auto& c) { return first(c) + std::min<int64_t>((rows - 1) * c.stride, 0); };
    const auto high = [&](const auto& c) {
        return first(c) + std::max<int64_t>((rows - 1) * c.stride, 0) + element_size(c);
    };
    if (high(a) <= low(b) || high(b) <= low(a))
        return Overlap::none;
    if (a.stride != b.stride)
        return Overlap::shifted;
    const int64_t apart = first(a) - first(b), stride = std::abs(a.stride);
    if (apart == 0 && a.kind == b.kind)
        return Overlap::same;
    const int64_t within = (apart % stride + stride) % stride; // such as the y of points beside their x
    const bool is_beside = within >= element_size(b) && within + element_size(a) <= stride;
    return is_beside ? Overlap::none : Overlap::shifted;
}

template <class AnyColumn>
bool is_packed(const AnyColumn& column)
{
    return column.kind == KORVALE_DOUBLE && column.stride == sizeof(double) &&
           reinterpret_cast<uintptr_t>(column.data) % alignof(double) == 0;
}

} // namespace korvale::door
