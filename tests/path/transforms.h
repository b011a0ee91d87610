#pragma once

#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "data/data.h"
#include "data/datastruct.h"
#include "math/transform.h"
#include "path/flatten.h"
#include "tests/support/arrays.h"

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

/// The pair of transforms of a path.
struct Flattened {
    Matrix forward, reverse;
    int result = 0; // of the Data flavour
};

inline Flattened flattened(Data* path, int closed)
{
    Flattened f;
    f.result = data_to_xy_xfms(path, f.forward.m, f.reverse.m, closed);
    return f;
}

inline Flattened flattened(DATAstruct* path, int closed)
{
    Flattened f;
    DATA_to_xy_xfms(path, f.forward.m, f.reverse.m, closed);
    return f;
}

template <class Array>
Flattened flattened_points(const std::vector<double>& xyz, int closed)
{
    auto path = points<Array>(xyz);
    return flattened(path.get(), closed);
}

/// The points carried by a transform.
inline std::vector<double> carried(std::vector<double> xyz, Matrix by)
{
    for (size_t i = 0; i + 2 < xyz.size(); i += 3)
        TransformPoint(by.m, &xyz[i], &xyz[i]);
    return xyz;
}

/// Twice the area an outline encloses in the xy plane, positive when it runs counter-clockwise.
inline double doubled_area(const std::vector<double>& xyz)
{
    const size_t n = xyz.size() / 3;
    double area = 0;
    for (size_t i = 0; i < n; ++i) {
        const double* const p = &xyz[3 * i];
        const double* const q = &xyz[3 * ((i + 1) % n)];
        area += p[0] * q[1] - q[0] * p[1];
    }
    return area;
}

} // namespace korvale::test
