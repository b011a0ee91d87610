#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

#include "data/data.h"
#include "data/datastruct.h"
#include "platform/internal/bit_cast.h"

namespace korvale::test {

/// A number for all results of a fixed workload (FNV-1a, Fowler, Noll and Vo, 1991). It is the same for every compiler,
/// optimisation level and width of lanes, so a change of it is a change of results. All NaN count as one.
class Hash {
public:
    Hash& add(uint64_t bits)
    {
        for (int shift = 0; shift < 64; shift += 8)
            value_ = (value_ ^ ((bits >> shift) & 0xff)) * 0x100000001b3u;
        return *this;
    }
    Hash& add(int value) { return add(static_cast<uint64_t>(int64_t{value})); }
    Hash& add(double value)
    {
        return add(platform::bit_cast<uint64_t>(std::isnan(value) ? std::numeric_limits<double>::quiet_NaN() : value));
    }

    template <class T>
    Hash& add(const T* values, int64_t n)
    {
        for (int64_t i = 0; i < n; ++i)
            add(values[i]);
        return *this;
    }

    /// Shape and numbers.
    template <class Array>
    Hash& add_array(const Array& array)
    {
        add(array.count).add(array.dim).add(array.type);
        const int64_t n = int64_t{array.count} * array.dim;
        if (array.type == DATA_TYPE_DOUBLE)
            return add(array.dvals, n);
        if (array.type == DATA_TYPE_INT)
            return add(array.ivals, n);
        for (int64_t i = 0; i < n; ++i)
            add(int{array.bvals[i]});
        return *this;
    }

    uint64_t value() const { return value_; }

private:
    uint64_t value_ = 0xcbf29ce484222325u;
};

} // namespace korvale::test
