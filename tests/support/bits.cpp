#include "tests/support/bits.h"

#include <bit>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace korvale::test {
namespace {

constexpr int kMostReported = 5;

using test::describe;
using test::is_same;

std::string describe(int value)
{
    return std::to_string(value);
}

bool is_same(int a, int b)
{
    return a == b;
}

template <class T>
testing::AssertionResult compare(const T* expected, const T* actual, int64_t n)
{
    if (n <= 0 || expected == actual)
        return testing::AssertionSuccess();
    if (expected == nullptr || actual == nullptr)
        return testing::AssertionFailure() << (actual == nullptr ? "no elements" : "elements where none are expected");
    std::string differences;
    int64_t differing = 0;
    for (int64_t i = 0; i < n; ++i)
        if (!is_same(expected[i], actual[i]) && ++differing <= kMostReported)
            differences +=
                "\n  [" + std::to_string(i) + "] expected " + describe(expected[i]) + ", is " + describe(actual[i]);
    if (differing == 0)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << differing << " of " << n << " elements differ:" << differences;
}

template <class Array>
testing::AssertionResult same_shape(const Array& expected, const Array& actual)
{
    if (expected.count == actual.count && expected.dim == actual.dim && expected.type == actual.type)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "shape [" << actual.count << "][" << actual.dim << "] of kind " << actual.type
                                       << " instead of [" << expected.count << "][" << expected.dim << "] of kind "
                                       << expected.type;
}

template <class Array>
testing::AssertionResult same_numbers(const Array& expected, const Array& actual)
{
    const int64_t n = expected.count < 1 || expected.dim < 1 ? 0 : static_cast<int64_t>(expected.count) * expected.dim;
    switch (expected.type) {
    case DATA_TYPE_DOUBLE:
        return compare(expected.dvals, actual.dvals, n);
    case DATA_TYPE_INT:
        return compare(expected.ivals, actual.ivals, n);
    case DATA_TYPE_BYTE:
        return compare(expected.bvals, actual.bvals, n);
    default:
        return testing::AssertionSuccess();
    }
}

testing::AssertionResult same_children(const DATAstruct& expected, const DATAstruct& actual)
{
    const int64_t n = static_cast<int64_t>(expected.count) * expected.dim;
    if (expected.pvals == nullptr || actual.pvals == nullptr)
        return expected.pvals == actual.pvals ? testing::AssertionSuccess()
                                              : testing::AssertionFailure() << "slots in one array only";
    for (int64_t i = 0; i < n; ++i) {
        const void *const e = expected.pvals[i], *const a = actual.pvals[i];
        if (e == a)
            continue;
        if (expected.type == DATA_TYPE_POINTER || e == nullptr || a == nullptr)
            return testing::AssertionFailure() << "slot " << i << " is " << a << " instead of " << e;
        if (auto same = same_array(*static_cast<const DATAstruct*>(e), *static_cast<const DATAstruct*>(a)); !same)
            return testing::AssertionFailure() << "slot " << i << ": " << same.message();
    }
    return testing::AssertionSuccess();
}

} // namespace

bool is_same(double a, double b)
{
    if (std::isnan(a) || std::isnan(b))
        return std::isnan(a) && std::isnan(b);
    return std::bit_cast<uint64_t>(a) == std::bit_cast<uint64_t>(b);
}

std::string describe(double value)
{
    char text[64];
    std::snprintf(text, sizeof text, "%.17g [%016llx]", value,
                  static_cast<unsigned long long>(std::bit_cast<uint64_t>(value)));
    return text;
}

testing::AssertionResult same_bits(double expected, double actual)
{
    if (is_same(expected, actual))
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "expected " << describe(expected) << ", is " << describe(actual);
}

testing::AssertionResult same_bits(const double* expected, const double* actual, int64_t n)
{
    return compare(expected, actual, n);
}

testing::AssertionResult same_bits(const std::vector<double>& expected, const double* actual)
{
    return compare(expected.data(), actual, static_cast<int64_t>(expected.size()));
}

testing::AssertionResult same_bits(const std::vector<double>& expected, const std::vector<double>& actual)
{
    if (expected.size() != actual.size())
        return testing::AssertionFailure() << actual.size() << " elements instead of " << expected.size();
    return same_bits(expected, actual.data());
}

testing::AssertionResult same_values(const int32_t* expected, const int32_t* actual, int64_t n)
{
    return compare(expected, actual, n);
}

testing::AssertionResult same_values(const uint8_t* expected, const uint8_t* actual, int64_t n)
{
    return compare(expected, actual, n);
}

testing::AssertionResult same_values(const std::vector<int>& expected, const int32_t* actual)
{
    return compare(expected.data(), actual, static_cast<int64_t>(expected.size()));
}

testing::AssertionResult same_array(const Data& expected, const Data& actual)
{
    if (auto same = same_shape(expected, actual); !same)
        return same;
    return same_numbers(expected, actual);
}

testing::AssertionResult same_array(const DATAstruct& expected, const DATAstruct& actual)
{
    if (auto same = same_shape(expected, actual); !same)
        return same;
    if (expected.type == DATA_TYPE_POINTER || expected.type == DATA_TYPE_DATA)
        return same_children(expected, actual);
    return same_numbers(expected, actual);
}

} // namespace korvale::test
