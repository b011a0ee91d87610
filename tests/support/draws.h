#pragma once

#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "platform/internal/bit_cast.h"

namespace korvale::test {

/// Random numbers that are the same on every machine for a seed.
class Draws {
public:
    explicit Draws(uint64_t seed) : state_(seed) {}

    /// 64 random bits (splitmix, Steele, Lea, Flood, 2014).
    uint64_t bits()
    {
        uint64_t z = state_ += 0x9e3779b97f4a7c15u;
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
        return z ^ (z >> 31);
    }

    /// 0 .. n - 1; n is 1 or more.
    int below(int n) { return static_cast<int>(bits() % static_cast<uint64_t>(n)); }

    /// low .. high, both included.
    int between(int low, int high) { return low + below(high - low + 1); }

    /// True once in `n` times.
    bool one_in(int n) { return below(n) == 0; }

    /// A value in [0, 1).
    double unit() { return static_cast<double>(bits() >> 11) * 0x1p-53; }

    /// A value in [low, high).
    double uniform(double low, double high) { return low + (high - low) * unit(); }

    /// A value of either sign whose size runs over many powers of ten, 1e-12 to 1e12.
    double spread()
    {
        const double size = std::pow(10.0, uniform(-12, 12));
        return one_in(2) ? -size : size;
    }

    /// A value that often is one of those arithmetic treats specially: zeros of both signs, denormal, huge, infinite,
    /// NaN, exact integers, any bits at all.
    double awkward()
    {
        constexpr double infinity = std::numeric_limits<double>::infinity();
        constexpr double denormal = std::numeric_limits<double>::denorm_min();
        const double sign = one_in(2) ? -1.0 : 1.0;
        switch (below(12)) {
        case 0:
            return sign * 0.0;
        case 1:
            return sign * denormal * static_cast<double>(1 + below(1000));
        case 2:
            return sign * std::numeric_limits<double>::max() / static_cast<double>(1 + below(4));
        case 3:
            return sign * infinity;
        case 4:
            return std::copysign(std::numeric_limits<double>::quiet_NaN(), sign);
        case 5:
            return static_cast<double>(between(-3, 3));
        case 6:
            return platform::bit_cast<double>(bits());
        case 7:
            return spread();
        default:
            return uniform(-10, 10);
        }
    }

    /// `awkward` without infinities and NaN.
    double awkward_finite()
    {
        for (;;)
            if (const double value = awkward(); std::isfinite(value))
                return value;
    }

    std::vector<double> uniforms(int64_t n, double low, double high)
    {
        std::vector<double> values(static_cast<size_t>(n));
        for (double& value : values)
            value = uniform(low, high);
        return values;
    }

    std::vector<double> awkwards(int64_t n)
    {
        std::vector<double> values(static_cast<size_t>(n));
        for (double& value : values)
            value = awkward();
        return values;
    }

private:
    uint64_t state_;
};

} // namespace korvale::test
