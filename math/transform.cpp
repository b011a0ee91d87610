#include "math/transform.h"

#include "math/internal/mat.h"

using namespace korvale::inside;

void make_identity(Xfm m)
{
    set_identity(m);
}

void TransformVector(Xfm m, double* v, double* out)
{
    double turned[3];
    for (int i = 0; i < 3; ++i)
        turned[i] = m[i][0] * v[0] + m[i][1] * v[1] + m[i][2] * v[2];
    std::memcpy(out, turned, sizeof turned);
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
    multiply(a, b, out);
}

void MatrixTranspose(Xfm in, Xfm out)
{
    transpose(in, out);
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
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j)
            std::fprintf(stream, "%f  ", m[i][j]);
        std::fputc('\n', stream);
    }
}
