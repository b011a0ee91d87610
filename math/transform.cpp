#include "math/transform.h"

#include <charconv>

#include "math/internal/matrix.h"

namespace korvale::inside {
namespace {

constexpr int kDecimals = 6;
/// The longest element: a sign, 309 digits, the point and the decimals.
constexpr size_t kLongestElement = 1 + 309 + 1 + kDecimals;

KORVALE_FOUR_LANES void multiply_wide(const double (*a)[4], const double (*b)[4], double (*out)[4])
{
    multiply_in_lanes<Quad>(a, b, out);
}

} // namespace
} // namespace korvale::inside

using namespace korvale::inside;

void make_identity(Xfm m)
{
    set_identity(m);
}

void TransformVector(Xfm m, double* v, double* out)
{
    const double x = m[0][0] * v[0] + m[0][1] * v[1] + m[0][2] * v[2];
    const double y = m[1][0] * v[0] + m[1][1] * v[1] + m[1][2] * v[2];
    const double z = m[2][0] * v[0] + m[2][1] * v[1] + m[2][2] * v[2];
    out[0] = x;
    out[1] = y;
    out[2] = z;
}

void TransformPoint(Xfm m, double* p, double* out)
{
    carry_point(m, p, out);
}

void xfm_pnt(double* m16, double* p, double* out)
{
    Xfm m;
    array2xfm(m16, m);
    carry_point(m, p, out);
}

void MatrixMultiply(Xfm a, Xfm b, Xfm out)
{
    widest([&] { multiply_wide(a, b, out); }, [&] { multiply(a, b, out); });
}

void MatrixTranspose(Xfm in, Xfm out)
{
    if (in + 4 <= out || out + 4 <= in)
        return transpose(in, out);
    for (int i = 0; i < 4; ++i) // each element is written at once, over what is still to be read
        for (int j = 0; j < 4; ++j)
            out[i][j] = in[j][i];
}

void ScaleMatrix(double* s, Xfm out)
{
    set_identity(out);
    for (int k = 0; k < 3; ++k)
        out[k][k] = s[k];
}

void TranslateMatrix(double* t, Xfm out)
{
    set_identity(out);
    for (int k = 0; k < 3; ++k)
        out[k][3] = t[k];
}

void xfm2array(Xfm m, double* a16)
{
    std::memcpy(a16, m, sizeof(Xfm));
}

void array2xfm(double* a16, Xfm m)
{
    std::memcpy(m, a16, sizeof(Xfm));
}

void PrintMatrix(FILE* stream, Xfm m)
{
    char text[kLongestElement]; // by to_chars, since printf writes the point of the locale
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) {
            const char* const end =
                std::to_chars(text, text + sizeof text, m[i][j], std::chars_format::fixed, kDecimals).ptr;
            std::fprintf(stream, "%.*s  ", static_cast<int>(end - text), text);
        }
        std::fputc('\n', stream);
    }
}
