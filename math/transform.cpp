#include "math/transform.h"

#include "math/internal/matrix.h"
#include "math/internal/vector.h"
#include "platform/internal/decimals.h"

namespace korvale::math {
namespace {

constexpr int kDecimals = 6;
/// The longest element: a sign, 309 digits, the point, the decimals and a 0 behind them.
constexpr size_t kLongestElement = 1 + 309 + 1 + kDecimals + 1;

/// The columns of `m`: a transpose in registers, by eight shuffles.
KORVALE_QUAD void load_columns(const double* m, Quad& x, Quad& y, Quad& z, Quad& w)
{
    const Quad::Lanes a = load_quad(m).lanes, b = load_quad(m + 4).lanes;
    const Quad::Lanes c = load_quad(m + 8).lanes, d = load_quad(m + 12).lanes;
    const Quad::Lanes xz1 = __builtin_shufflevector(a, b, 0, 4, 2, 6), xz2 = __builtin_shufflevector(c, d, 0, 4, 2, 6);
    const Quad::Lanes yw1 = __builtin_shufflevector(a, b, 1, 5, 3, 7), yw2 = __builtin_shufflevector(c, d, 1, 5, 3, 7);
    x = Quad(__builtin_shufflevector(xz1, xz2, 0, 1, 4, 5));
    y = Quad(__builtin_shufflevector(yw1, yw2, 0, 1, 4, 5));
    z = Quad(__builtin_shufflevector(xz1, xz2, 2, 3, 6, 7));
    w = Quad(__builtin_shufflevector(yw1, yw2, 2, 3, 6, 7));
}

/// As `carry_point`, with a row of the matrix in each lane, so that the three quotients are one divide instruction.
KORVALE_FOUR_LANES void carry_wide(const double* m, const double* point, double* out)
{
    const Lanes3<double> p = vector_of(point);
    Quad x, y, z, w;
    load_columns(m, x, y, z, w);
    Quad h = x * p.x + y * p.y + z * p.z + w;
    if (h[3] != 1.0)
        h = h / h[3];
    store_points(out, Lanes3<double>{h[0], h[1], h[2]});
}

} // namespace
} // namespace korvale::math

using namespace korvale::math;

void make_identity(Xfm m)
{
    set_identity(m);
}

void TransformVector(Xfm m, double* v, double* out)
{
    const Lanes3<double> p = vector_of(v);
    const double x = m[0][0] * p.x + m[0][1] * p.y + m[0][2] * p.z;
    const double y = m[1][0] * p.x + m[1][1] * p.y + m[1][2] * p.z;
    const double z = m[2][0] * p.x + m[2][1] * p.y + m[2][2] * p.z;
    out[0] = x;
    out[1] = y;
    out[2] = z;
}

void TransformPoint(Xfm m, double* p, double* out)
{
    widest([&] { carry_wide(m[0], p, out); }, [&] { carry_point(m, p, out); });
}

void xfm_pnt(double* m16, double* p, double* out)
{
    const auto plain = [&] {
        Xfm m;
        array2xfm(m16, m);
        carry_point(m, p, out);
    };
    widest([&] { carry_wide(m16, p, out); }, plain);
}

void MatrixMultiply(Xfm a, Xfm b, Xfm out)
{
    over_lanes([]<class V>(auto... of) { multiply_in_lanes<V>(of...); }, a, b, out);
}

void MatrixTranspose(Xfm in, Xfm out)
{
    if (in + 4 <= out || out + 4 <= in)
        return transpose(in, out);
    // Where the two overlap the documented order counts: each element is read after those before it are written.
    for (int i = 0; i < 4; ++i)
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
    char text[kLongestElement]; // printf would write the locale's decimal point
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) {
            const char* const end = write_fixed(text, sizeof text, m[i][j], kDecimals);
            std::fprintf(stream, "%.*s  ", static_cast<int>(end - text), text);
        }
        std::fputc('\n', stream);
    }
}
