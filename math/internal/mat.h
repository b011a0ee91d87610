#pragma once

#include <cstring>

// The matrix arithmetic of the library, inline. The exported functions of math/transform.h are doors to these.
namespace korvale::inside {

inline void set_identity(double (*m)[4])
{
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            m[i][j] = i == j ? 1.0 : 0.0;
}

/// Row `i` of `m` applied to (x, y, z, 1), summed from the left.
inline double carried(const double (*m)[4], int i, double x, double y, double z)
{
    return m[i][0] * x + m[i][1] * y + m[i][2] * z + m[i][3];
}

/// Applies `m` to the point `p`; `out` may be `p`.
inline void carry_point(const double (*m)[4], const double* p, double* out)
{
    const double x = p[0], y = p[1], z = p[2];
    const double hx = carried(m, 0, x, y, z);
    const double hy = carried(m, 1, x, y, z);
    const double hz = carried(m, 2, x, y, z);
    const double hw = carried(m, 3, x, y, z);
    if (hw == 1.0) {
        out[0] = hx;
        out[1] = hy;
        out[2] = hz;
    } else {
        out[0] = hx / hw;
        out[1] = hy / hw;
        out[2] = hz / hw;
    }
}

/// out = a b; `out` may be either.
inline void multiply(const double (*a)[4], const double (*b)[4], double (*out)[4])
{
    double product[4][4];
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            product[i][j] = a[i][0] * b[0][j] + a[i][1] * b[1][j] + a[i][2] * b[2][j] + a[i][3] * b[3][j];
    std::memcpy(out, product, sizeof product);
}

/// `out` must be another matrix than `in`.
inline void transpose(const double (*in)[4], double (*out)[4])
{
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            out[i][j] = in[j][i];
}

} // namespace korvale::inside
