// Compiled with -ffast-math, under which a compiler takes every number for finite.
#include <korvale.hpp>

#include <gtest/gtest.h>

#ifndef __FAST_MATH__
#error "not compiled with -ffast-math"
#endif

namespace {

using korvale::Point;

TEST(FaceUnderFastMath, StillRefusesWhatIsNotFinite)
{
    for (const uint64_t bits : {0x7ff8000000000000u, 0x7ff0000000000000u, 0xfff0000000000000u}) {
        const std::vector<Point> outline = {{0, 0, 0}, {4, std::bit_cast<double>(uint64_t{bits}), 0}, {4, 4, 0}};
        EXPECT_THROW(korvale::offset(outline, 1), korvale::Error);
        EXPECT_THROW(korvale::frames(outline), korvale::Error);
        EXPECT_THROW(korvale::offset({{0, 0, 0}, {4, 0, 0}, {4, 4, 0}}, outline[1][1]), korvale::Error);
    }
}

TEST(FaceUnderFastMath, StillMendsPlanarLoops)
{
    int mended = 0;
    for (int k = 0; k < 50; ++k) {
        std::vector<Point> loop = {{0, 0, 0}, {4, 0, 0}, {4, 3 + 0.1 * k, 0}, {1, 5, 0}, {-1, 2, 0}};
        korvale::Transform::rotation({0.1 * k, 0.7, 0.05 * k}).apply(loop);
        std::vector<korvale::Transform> direct(loop.size());
        DATAstruct record;
        DATAInitialize(&record);
        record.type = DATA_TYPE_DOUBLE;
        record.count = static_cast<int>(loop.size());
        record.dim = 3;
        record.dvals = loop[0].data();
        PATH2xfm(&record, 1, &direct[0].m);
        mended += korvale::detail::is_nan(direct[1](0, 0));
        for (const korvale::Transform& place : korvale::frames(loop, true))
            for (const double v : place.rows())
                ASSERT_TRUE(korvale::detail::is_finite(v));
    }
    EXPECT_GT(mended, 0);
}

TEST(FaceUnderFastMath, EquationsKeepTheirBits)
{
    korvale::Equations e;
    e.declare("y x");
    e.function("THIRD", EqFuncDivide);
    const int y = e.add("y = (x * 0.1 + 0.2) / (x - x / 3) THIRD 3");
    const std::vector<double> x = {1, 3, 0, 7};
    const std::vector<double> values = e.evaluate(y, {{"x", x}});
    const double expected[] = {0x1.3333333333333p-3, 0x1.5555555555555p-4, 0, 0x1.0750750750752p-4};
    for (std::size_t i = 0; i < x.size(); ++i)
        EXPECT_EQ(std::bit_cast<std::uint64_t>(values[i]), std::bit_cast<std::uint64_t>(expected[i]));
}

TEST(FaceUnderFastMath, BordersAndBandsKeepTheirBits)
{
    const Point offset[] = {{-0x1.b91ab47587979p-7, -0x1.da70733ee7bb3p-7, 0x0p+0},
                            {0x1.f316cb8a9b031p-4, 0x1.abda55b21a7cap-6, 0x0p+0},
                            {0x1.bda8b54c8b8b8p-7, 0x1.b77fdd154dcc3p-4, 0x0p+0}};
    // The first corner and the last are at the miter limit, 2.8 from their points.
    const Point band[] = {{-0x1.3d769b2e9a49bp+1, -0x1.4cabf2750086dp+0, 0x0p+0},
                          {0x1.bf8b01f828811p+1, 0x1.b5dfdc408c05ep-2, 0x0p+0},
                          {0x1.72d26abb96e46p+2, 0x1.4994c3a09d52cp+2, 0x0p+0}};
    const korvale::Offset small = korvale::offset({{0, 0, 0}, {0.1, 0.03, 0}, {0.02, 0.09, 0}}, 0.01);
    const korvale::Band ring = korvale::band({{0, 0, 0}, {3, 1, 0}, {4, 3, 0}}, 0.7, {.closed = true});
    for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t k = 0; k < 3; ++k) {
            EXPECT_EQ(std::bit_cast<std::uint64_t>(small.points[i][k]), std::bit_cast<std::uint64_t>(offset[i][k]));
            EXPECT_EQ(std::bit_cast<std::uint64_t>(ring.outline[i][k]), std::bit_cast<std::uint64_t>(band[i][k]));
        }
}

TEST(FaceUnderFastMath, SolidsKeepTheirBits)
{
    const Point bevel[] = {{0x1.47ae147ae147dp-6, 0x1.70a3d70a3d70ap-4, 0x0p+0},
                           {0x1.999999999999cp-4, 0x1.eb851eb851ebap-6, 0x0p+0},
                           {0x0p+0, 0x0p+0, 0x0p+0},
                           {0x1.401c67a898306p-4, 0x1.1597f3df44ad4p-5, 0x1.47ae147ae147bp-6},
                           {0x1.b91ab47587979p-7, 0x1.da70733ee7bb3p-7, 0x1.47ae147ae147bp-6},
                           {0x1.b087ce4f7cc9bp-6, 0x1.29c7d0ff2d151p-4, 0x1.47ae147ae147bp-6}};
    const Point ring[] = {{0x1.999999999999ap-4, 0x1.eb851eb851eb8p-6, -0x1.47ae147ae147bp-7},
                          {0x1.c1ed55abb509p-4, 0x1.ced4481bc7e35p-6, 0x0p+0},
                          {0x1.7145dd877e2a4p-4, 0x1.041afaaa6df9dp-5, 0x1.47ae147ae147bp-7}};
    const std::vector<Point> outline = {{0, 0, 0}, {0.1, 0.03, 0}, {0.02, 0.09, 0}};
    const korvale::BevelStep profile[] = {{0, 0}, {-0.01, 0.02}};
    const korvale::Mesh solid = korvale::bevel({outline}, profile);
    const korvale::Mesh pipe = korvale::tube(outline, {{0.01, 0, 0}, {0, 0.01, 0}, {-0.01, -0.01, 0}});
    const auto same = [](double a, double b) {
        return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
    };
    for (std::size_t k = 0; k < 3; ++k) {
        for (std::size_t i = 0; i < 6; ++i)
            EXPECT_TRUE(same(solid.vertices[i][k], bevel[i][k])) << i << ' ' << k;
        for (std::size_t i = 0; i < 3; ++i)
            EXPECT_TRUE(same(pipe.vertices[3 + i][k], ring[i][k])) << i << ' ' << k;
    }
    EXPECT_TRUE(same(solid.volume(), 0x1.e51f3b5742d1fp-15));
    EXPECT_TRUE(same(solid.areas()[3], 0x1.2515fdab8464fp-10));
}

} // namespace
