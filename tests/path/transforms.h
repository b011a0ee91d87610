#pragma once

#include <vector>

#include "data/data.h"
#include "data/datastruct.h"
#include "math/transform.h"
#include "path/flatten.h"
#include "tests/path/matrix.h"
#include "tests/support/arrays.h"

namespace korvale::test {

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
