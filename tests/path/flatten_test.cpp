#include "path/flatten.h"

#include <vector>

#include <gtest/gtest.h>

namespace {

/// A path of each generation over the same points, which it only borrows.
struct Paths {
    explicit Paths(std::vector<double> coordinates) : points(std::move(coordinates))
    {
        const auto n = static_cast<int32_t>(points.size() / 3);
        data = {3, n, DATA_TYPE_DOUBLE, points.data(), nullptr, nullptr};
        DATAInitialize(&datastruct);
        datastruct.dim = 3;
        datastruct.count = n;
        datastruct.dvals = points.data();
    }

    std::vector<double> points;
    Data data;
    DATAstruct datastruct;
};

/// Twice the signed area of the outline in the plane its forward transform lays it into.
double doubled_area(std::vector<double> points, Xfm xfm)
{
    double area = 0;
    const size_t n = points.size() / 3;
    for (size_t i = 0; i < n; ++i)
        TransformPoint(xfm, &points[3 * i], &points[3 * i]);
    for (size_t i = 0; i < n; ++i) {
        const double* const p = &points[3 * i];
        const double* const q = &points[3 * ((i + 1) % n)];
        area += p[0] * q[1] - q[0] * p[1];
    }
    return area;
}

} // namespace

TEST(data_to_xy_xfms, ASinglePointIsMovedAlongZ)
{
    Paths path({1, 2, 5});
    Xfm xfm, reverse;
    EXPECT_EQ(data_to_xy_xfms(&path.data, xfm, reverse, 1), 1);
    EXPECT_EQ(xfm[2][3], -5.0);
    EXPECT_EQ(reverse[2][3], 5.0);
}

TEST(data_to_xy_xfms, ThreeCollinearPointsHaveNoPlane)
{
    Paths path({0, 0, 0, 1, 1, 1, 2, 2, 2});
    Xfm xfm, reverse;
    EXPECT_EQ(data_to_xy_xfms(&path.data, xfm, reverse, 1), -1);
    EXPECT_EQ(xfm[0][0], 1.0);
}

TEST(DATA_to_xy_xfms, AClockwiseSquareGetsANormalOfMinusZ)
{
    Paths path({0, 0, 0, 0, 1, 0, 1, 1, 0, 1, 0, 0});
    Xfm xfm, reverse;
    DATA_to_xy_xfms(&path.datastruct, xfm, reverse, 1);
    EXPECT_EQ(xfm[2][2], -1.0);
    EXPECT_GT(doubled_area(path.points, xfm), 0.0);
}

TEST(DATA_to_xy_xfms, AReflexFirstCornerStillGivesACounterClockwiseOutline)
{
    Paths path({1, 0.5, 0, 2, 2, 0, 0, 2, 0, 0, 0, 0, 2, 0, 0}); // the notch of a chevron comes first
    Xfm xfm, reverse;
    DATA_to_xy_xfms(&path.datastruct, xfm, reverse, 1);
    EXPECT_GT(doubled_area(path.points, xfm), 0.0);
    EXPECT_EQ(xfm[2][2], 1.0);
}
