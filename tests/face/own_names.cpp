// A host that has names of its own where korvale.h has its: it includes the face alone.
#include <cmath>

struct Data {
    double value;
};
enum class DATA { none };
class Border;
typedef float Xfm;
int RayStatus = 1;
int PreserveStatus(int status)
{
    return status + 1;
}
struct EquationSystem {
    int order;
};
double norm(double* v) // even with the arguments of the library's
{
    return -std::sqrt(v[0] * v[0] + v[1] * v[1]);
}
int ray_intersect()
{
    return 7;
}

#include <korvale/face.hpp>

#include <gtest/gtest.h>

namespace {

TEST(FaceBesideNamesOfAHost, TakesNoneOfThem)
{
    double v[] = {3, 4};
    EXPECT_EQ(norm(v), -5);
    EXPECT_EQ(Data{2}.value, 2);
    EXPECT_EQ(RayStatus + PreserveStatus(1) + ray_intersect() + EquationSystem{1}.order, 11);
    EXPECT_EQ(DATA::none, DATA{});
    EXPECT_EQ(Xfm{0.5f}, 0.5f);
}

TEST(FaceBesideNamesOfAHost, ComputesWithTheLibrarysOwn)
{
    const korvale::Offset border = korvale::offset({{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}}, 0.5);
    EXPECT_EQ(border.points[2], (korvale::Point{4.5, 4.5, 0}));
    const korvale::RayGrid grid({{0, 0, 2}, {4, 0, 2}, {0, 4, 2}});
    EXPECT_EQ(grid.distance({1, 1, 0}, {0, 0, 1}), 2.0);
    korvale::Equations equations;
    equations.declare("y");
    EXPECT_EQ(equations.evaluate(equations.add("y = 2 * 3")), 6);
}

TEST(FaceVersion, IsThatOfTheLibraryThatRuns)
{
    EXPECT_EQ(korvale::version(), korvale_version());
    EXPECT_EQ(korvale::version_number(), korvale_version_number());
    EXPECT_GE(korvale::version_number(), 10100);
}

} // namespace
