#pragma once

#include <initializer_list>

#include <gtest/gtest.h>

#include "math/transform.h"

namespace korvale::test {

/// A matrix as a value; starts as a number no transform contains.
struct Matrix {
    Xfm m;

    Matrix() { fill(777.0); }
    Matrix(std::initializer_list<std::initializer_list<double>> rows)
    {
        int i = 0;
        for (const auto& row : rows) {
            int j = 0;
            for (const double value : row)
                m[i][j++] = value;
            ++i;
        }
    }
    void fill(double value)
    {
        for (auto& row : m)
            for (double& element : row)
                element = value;
    }
};

inline const Matrix kIdentity = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};

/// Element by element; zeros of both signs are equal.
inline testing::AssertionResult equal(const Matrix& expected, const Matrix& actual)
{
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            if (!(expected.m[i][j] == actual.m[i][j]))
                return testing::AssertionFailure() << "element [" << i << "][" << j << "] is " << actual.m[i][j]
                                                   << ", expected " << expected.m[i][j];
    return testing::AssertionSuccess();
}

} // namespace korvale::test
