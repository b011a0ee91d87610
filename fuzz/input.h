#pragma once

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

// What fuzzers share: their input taken apart, and how they say that something does not hold.
namespace korvale::fuzz {

/// Ends the program, which the fuzzer reports with its input, unless a fact holds.
inline void require(bool holds)
{
    if (!holds)
        std::abort();
}

/// Whether both have the same bits or both are not numbers.
inline bool is_same(double a, double b)
{
    return std::memcmp(&a, &b, sizeof a) == 0 || (std::isnan(a) && std::isnan(b));
}

/// The input, from front to back; zeros once it is used up.
class Input {
public:
    Input(const uint8_t* bytes, size_t count) : bytes_(bytes), left_(count) {}

    bool is_used_up() const { return left_ == 0; }

    uint8_t byte()
    {
        if (left_ == 0)
            return 0;
        --left_;
        return *bytes_++;
    }

    /// 0 .. n - 1, for n up to 256.
    int below(int n) { return byte() % n; }

    /// The bytes of a number, as they come.
    template <class T>
    T any()
    {
        uint8_t raw[sizeof(T)];
        for (uint8_t& b : raw)
            b = byte();
        T value;
        std::memcpy(&value, raw, sizeof value);
        return value;
    }

private:
    const uint8_t* bytes_;
    size_t left_;
};

/// All of the input as numbers; what does not fill one at the end is left out.
inline std::vector<double> doubles_of(const uint8_t* bytes, size_t count)
{
    std::vector<double> values(count / sizeof(double));
    if (!values.empty())
        std::memcpy(values.data(), bytes, values.size() * sizeof(double));
    return values;
}

} // namespace korvale::fuzz
