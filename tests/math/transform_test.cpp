// 4x4 matrices: applied, multiplied, transposed, converted, printed.
#include "math/transform.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/bits.h"
#include "tests/support/decimal_comma.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

void fill(Xfm m, Random& random)
{
    for (int i = 0; i < 16; ++i)
        m[i / 4][i % 4] = random.uniform(-5, 5);
}

testing::AssertionResult same_matrix(const std::vector<double>& expected, const Xfm& m)
{
    return same_bits(expected, &m[0][0]);
}

std::string printed(Xfm m)
{
    char* text = nullptr;
    size_t size = 0;
    FILE* const stream = open_memstream(&text, &size);
    PrintMatrix(stream, m);
    std::fclose(stream);
    const std::string result(text, size);
    std::free(text);
    return result;
}

TEST(make_identity, SetsAllSixteenElements)
{
    Xfm m;
    std::memset(m, 0xff, sizeof m);
    make_identity(m);
    EXPECT_TRUE(same_matrix({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, m));
}

TEST(TransformVector, AppliesTheUpperBlockOnly)
{
    Xfm m = {{1, 2, 3, 100}, {4, 5, 6, 100}, {7, 8, 9, 100}, {1, 1, 1, 5}};
    double v[] = {1, -1, 2}, out[3];
    TransformVector(m, v, out);
    EXPECT_TRUE(same_bits({5, 11, 17}, out));
    EXPECT_TRUE(same_bits({1, -1, 2}, v));
}

TEST(TransformVector, WritesOverItsInput)
{
    Xfm m = {{1, 2, 3, 100}, {4, 5, 6, 100}, {7, 8, 9, 100}, {1, 1, 1, 5}};
    double v[] = {1, -1, 2};
    TransformVector(m, v, v);
    EXPECT_TRUE(same_bits({5, 11, 17}, v));
}

TEST(TransformVector, SumsFromTheLeft)
{
    Xfm m = {{1, 1, 1, 0}, {1, 1, 1, 0}, {1, 1, 1, 0}, {0, 0, 0, 1}};
    double v[] = {1e16, -1e16, 1}, out[3];
    TransformVector(m, v, out);
    EXPECT_TRUE(same_bits({1, 1, 1}, out));
    double w[] = {1, 1e16, -1e16};
    TransformVector(m, w, out);
    EXPECT_TRUE(same_bits({0, 0, 0}, out));
}

TEST(TransformVector, IsLeftAloneByATranslation)
{
    double t[] = {1, 2, 3}, v[] = {7, -8, 9}, out[3];
    Xfm m;
    TranslateMatrix(t, m);
    TransformVector(m, v, out);
    EXPECT_TRUE(same_bits({7, -8, 9}, out));
}

TEST(TransformPoint, AppliesAnAffineMatrix)
{
    Xfm m = {{1, 2, 3, 10}, {4, 5, 6, 20}, {7, 8, 9, 30}, {0, 0, 0, 1}};
    double p[] = {1, -1, 2}, out[3];
    TransformPoint(m, p, out);
    EXPECT_TRUE(same_bits({15, 31, 47}, out));
}

TEST(TransformPoint, DividesByTheFourthCoordinate)
{
    Xfm m = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 2}};
    double p[] = {3, -5, 7}, out[3];
    TransformPoint(m, p, out);
    EXPECT_TRUE(same_bits({1.5, -2.5, 3.5}, out));
}

TEST(TransformPoint, DividesUnlessTheFourthCoordinateIsExactlyOne)
{
    const double above = std::nextafter(1.0, 2.0), below = std::nextafter(1.0, 0.0);
    Xfm m = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, above}};
    double p[] = {3, -5, 7}, out[3];
    TransformPoint(m, p, out);
    EXPECT_TRUE(same_bits({3 / above, -5 / above, 7 / above}, out));
    EXPECT_NE(out[0], 3.0);
    m[3][3] = below;
    TransformPoint(m, p, out);
    EXPECT_TRUE(same_bits({3 / below, -5 / below, 7 / below}, out));
    EXPECT_NE(out[0], 3.0);
}

TEST(TransformPoint, DoesNotGuardAFourthCoordinateOfZero)
{
    Xfm m = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 0}};
    double p[] = {3, -5, 0}, out[3];
    TransformPoint(m, p, out);
    EXPECT_TRUE(same_bits({kInfinity, -kInfinity, kNaN}, out));
}

TEST(TransformPoint, WritesOverItsInput)
{
    Xfm m = {{1, 2, 3, 10}, {4, 5, 6, 20}, {7, 8, 9, 30}, {0, 0, 0, 2}};
    double p[] = {1, -1, 2};
    TransformPoint(m, p, p);
    EXPECT_TRUE(same_bits({7.5, 15.5, 23.5}, p));
}

TEST(TransformPoint, AddsTheTranslationLast)
{
    Xfm m = {{1, 1, 1, 1}, {1, 1, 1, 1}, {1, 1, 1, 1}, {0, 0, 0, 1}};
    double p[] = {1e16, 1, -1e16}, out[3];
    TransformPoint(m, p, out);
    EXPECT_TRUE(same_bits({1, 1, 1}, out));
}

TEST(xfm_pnt, EqualsTransformPointOnAFlatMatrix)
{
    Random random(2);
    for (int i = 0; i < korvale::test::rounds(1000); ++i) {
        double flat[16], p[3], out[3], expected[3];
        for (double& value : flat)
            value = random.awkward();
        for (double& value : p)
            value = random.awkward();
        Xfm m;
        array2xfm(flat, m);
        TransformPoint(m, p, expected);
        xfm_pnt(flat, p, out);
        ASSERT_TRUE(same_bits(expected, out, 3));
        xfm_pnt(flat, p, p);
        ASSERT_TRUE(same_bits(expected, p, 3));
    }
}

TEST(MatrixMultiply, MultipliesRowsByColumns)
{
    Xfm a = {{1, 2, 3, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}, {13, 14, 15, 16}};
    Xfm b = {{1, 0, 2, 0}, {0, 1, 0, 2}, {3, 0, 1, 0}, {0, 3, 0, 1}}, out;
    MatrixMultiply(a, b, out);
    EXPECT_TRUE(same_matrix({10, 14, 5, 8, 26, 30, 17, 20, 42, 46, 29, 32, 58, 62, 41, 44}, out));
}

TEST(MatrixMultiply, MayWriteOverEitherFactor)
{
    Random random(3);
    Xfm a, b, expected, out;
    fill(a, random);
    fill(b, random);
    MatrixMultiply(a, b, expected);
    std::memcpy(out, a, sizeof out);
    MatrixMultiply(out, b, out);
    EXPECT_TRUE(same_bits(&expected[0][0], &out[0][0], 16));
    std::memcpy(out, b, sizeof out);
    MatrixMultiply(a, out, out);
    EXPECT_TRUE(same_bits(&expected[0][0], &out[0][0], 16));
    MatrixMultiply(a, a, expected);
    MatrixMultiply(a, a, a);
    EXPECT_TRUE(same_bits(&expected[0][0], &a[0][0], 16));
}

TEST(MatrixMultiply, SumsFromTheLeft)
{
    Xfm ones, out;
    for (auto& row : ones)
        for (double& value : row)
            value = 1;
    Xfm a = {{1e16, 1, -1e16, 0}, {1e16, -1e16, 1, 0}, {1, 1e16, -1e16, 1}, {1e16, -1e16, 0, 1}};
    MatrixMultiply(a, ones, out);
    EXPECT_TRUE(same_matrix({0, 0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}, out));
}

TEST(MatrixMultiply, AppliesTheRightFactorFirst)
{
    double s[] = {2, 2, 2}, t[] = {1, 0, 0}, p[] = {0, 0, 0};
    Xfm scale, move, both;
    ScaleMatrix(s, scale);
    TranslateMatrix(t, move);
    MatrixMultiply(scale, move, both);
    TransformPoint(both, p, p);
    EXPECT_TRUE(same_bits({2, 0, 0}, p));
}

TEST(MatrixTranspose, ExchangesRowsAndColumns)
{
    Xfm in = {{1, 2, 3, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}, {13, 14, 15, 16}}, out;
    MatrixTranspose(in, out);
    EXPECT_TRUE(same_matrix({1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15, 4, 8, 12, 16}, out));
}

TEST(ScaleMatrix, SetsTheDiagonal)
{
    double s[] = {2, -3, 0};
    Xfm m;
    std::memset(m, 0xff, sizeof m);
    ScaleMatrix(s, m);
    EXPECT_TRUE(same_matrix({2, 0, 0, 0, 0, -3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}, m));
}

TEST(TranslateMatrix, SetsTheLastColumn)
{
    double t[] = {1, 2, 3}, origin[] = {0, 0, 0}, out[3];
    Xfm m;
    std::memset(m, 0xff, sizeof m);
    TranslateMatrix(t, m);
    EXPECT_TRUE(same_matrix({1, 0, 0, 1, 0, 1, 0, 2, 0, 0, 1, 3, 0, 0, 0, 1}, m));
    TransformPoint(m, origin, out);
    EXPECT_TRUE(same_bits({1, 2, 3}, out));
}

TEST(xfm2array, CopiesRowByRow)
{
    Xfm m = {{1, 2, 3, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}, {13, 14, 15, 16}};
    double flat[16];
    xfm2array(m, flat);
    EXPECT_TRUE(same_bits({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}, flat));
}

TEST(array2xfm, CopiesRowByRow)
{
    double flat[16];
    for (int i = 0; i < 16; ++i)
        flat[i] = i;
    Xfm m;
    array2xfm(flat, m);
    EXPECT_EQ(m[0][3], 3.0);
    EXPECT_EQ(m[3][0], 12.0);
    EXPECT_TRUE(same_matrix({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}, m));
}

TEST(PrintMatrix, WritesFourLinesOfFourElements)
{
    Xfm m = {{1, 0, 0, -2.5}, {0, 1, 0, 1e6}, {0, 0, 1, 1e-7}, {-0.0, 0, 0.125, 1}};
    EXPECT_EQ(printed(m), "1.000000  0.000000  0.000000  -2.500000  \n"
                          "0.000000  1.000000  0.000000  1000000.000000  \n"
                          "0.000000  0.000000  1.000000  0.000000  \n"
                          "-0.000000  0.000000  0.125000  1.000000  \n");
}

TEST(PrintMatrix, WritesEveryValueAsPrintfDoes)
{
    Random random(31);
    for (int round = 0; round < rounds(500); ++round) {
        Xfm m;
        std::string expected;
        for (int i = 0; i < 16; ++i) {
            m[i / 4][i % 4] = round == 0 ? std::copysign(std::numeric_limits<double>::max(), i - 8) : random.awkward();
            char element[400];
            std::snprintf(element, sizeof element, "%f  ", m[i / 4][i % 4]);
            expected += element;
            if (i % 4 == 3)
                expected += '\n';
        }
        ASSERT_EQ(printed(m), expected);
    }
}

TEST(PrintMatrix, WritesAPointUnderADecimalComma)
{
    const korvale::test::DecimalComma comma;
    ASSERT_TRUE(comma.is_in_force()) << "localedef, which needs the sources of Debian's package locales, ended with "
                                     << comma.status();
    Xfm m = {{1.5, 0, 0, -2.5}, {0, 1, 0, 1e6}, {0, 0, 1, 0}, {0, 0, 0.125, 1}};
    EXPECT_EQ(printed(m), "1.500000  0.000000  0.000000  -2.500000  \n"
                          "0.000000  1.000000  0.000000  1000000.000000  \n"
                          "0.000000  0.000000  1.000000  0.000000  \n"
                          "0.000000  0.000000  0.125000  1.000000  \n");
}

} // namespace
} // namespace korvale::test
