#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "data/data.h"
#include "data/datastruct.h"

// Comparison to the last bit. +0 and -0 differ; a NaN equals any NaN, whatever its sign and payload.
//
//     EXPECT_TRUE(same_bits({1.0, -0.0, 2.5}, record->dvals));
namespace korvale::test {

/// Whether both have the same bits or both are NaN.
bool is_same(double a, double b);

/// The value with 17 digits and its bits, "0.10000000000000001 [3fb999999999999a]".
std::string describe(double value);

testing::AssertionResult same_bits(double expected, double actual);

/// The failure names the first differing elements. A null array equals only a null array or one of 0 elements.
testing::AssertionResult same_bits(const double* expected, const double* actual, int64_t n);
testing::AssertionResult same_bits(const std::vector<double>& expected, const double* actual);
testing::AssertionResult same_bits(const std::vector<double>& expected, const std::vector<double>& actual);

testing::AssertionResult same_values(const int32_t* expected, const int32_t* actual, int64_t n);
testing::AssertionResult same_values(const uint8_t* expected, const uint8_t* actual, int64_t n);
testing::AssertionResult same_values(const std::vector<int>& expected, const int32_t* actual);

/// Shape, kind and elements. Of a `DATAstruct` the capacity is not compared, children of the owned kind are compared as
/// arrays, untyped pointers as pointers, and `next` is not followed.
testing::AssertionResult same_array(const Data& expected, const Data& actual);
testing::AssertionResult same_array(const DATAstruct& expected, const DATAstruct& actual);

} // namespace korvale::test
