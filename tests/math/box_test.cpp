// bbox_intersect.
#include "math/box.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace korvale::test {
namespace {

TEST(bbox_intersect, CountsTouchingBoxes)
{
    for (int k = 0; k < 3; ++k) {
        double a[] = {0, 0, 0, 1, 1, 1}, b[] = {0, 0, 0, 1, 1, 1};
        b[k] = 1;
        b[k + 3] = 2;
        EXPECT_TRUE(bbox_intersect(a, b)) << k;
        EXPECT_TRUE(bbox_intersect(b, a)) << k;
    }
}

TEST(bbox_intersect, SeparatesBoxesThatMissBySomeAxis)
{
    for (int k = 0; k < 3; ++k)
        for (const double start : {std::nextafter(1.0, 2.0), 1.5}) {
            double a[] = {0, 0, 0, 1, 1, 1}, b[] = {0, 0, 0, 1, 1, 1};
            b[k] = start;
            b[k + 3] = 2;
            EXPECT_FALSE(bbox_intersect(a, b)) << k;
            EXPECT_FALSE(bbox_intersect(b, a)) << k;
        }
}

TEST(bbox_intersect, FindsABoxInsideAnother)
{
    double a[] = {0, 0, 0, 3, 3, 3}, b[] = {1, 1, 1, 2, 2, 2};
    EXPECT_TRUE(bbox_intersect(a, b));
    EXPECT_TRUE(bbox_intersect(b, a));
}

TEST(bbox_intersect, IsNotSeparatedByABoundThatIsNotANumber)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    double a[] = {0, 0, 0, nan, 1, 1}, b[] = {5, 0, 0, 6, 1, 1};
    EXPECT_TRUE(bbox_intersect(a, b));
    EXPECT_TRUE(bbox_intersect(b, a));
}

} // namespace
} // namespace korvale::test
