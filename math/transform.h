#pragma once

#include <cstdio>

#include "../platform/export.h"

/// A 4x4 transform, row-major. Points are column vectors multiplied on the right, p' = M (x, y, z, 1), so the
/// translation is in column 3 and a product A B applies B first. Row 3 is (0, 0, 0, 1) for affine transforms.
///
/// As a flat array, element [row][col] is at 4 row + col. Arguments are not checked for null.
typedef double Xfm[4][4];

/// Makes `m` the identity.
KORVALE_API void make_identity(Xfm m);

/// Applies the upper 3x3 block of `m` to `v`: no translation, no division. `out` may be `v`.
KORVALE_API void TransformVector(Xfm m, double* v, double* out);

/// Applies `m` to the point `p` and divides by the fourth coordinate unless that is exactly 1. `out` may be `p`.
///
/// Deliberate: a fourth coordinate of 0 is not caught; the result is then infinite or NaN.
KORVALE_API void TransformPoint(Xfm m, double* p, double* out);

/// `TransformPoint` with a flat matrix [16].
KORVALE_API void xfm_pnt(double* m16, double* p, double* out);

/// out = a b. `out` may be `a` or `b`.
KORVALE_API void MatrixMultiply(Xfm a, Xfm b, Xfm out);

/// Writes the transpose of `in`. `out` must be another matrix.
KORVALE_API void MatrixTranspose(Xfm in, Xfm out);

/// Makes `out` the scale by s[3].
KORVALE_API void ScaleMatrix(double* s, Xfm out);

/// Makes `out` the translation by t[3].
KORVALE_API void TranslateMatrix(double* t, Xfm out);

/// Copies `m` to the flat array a16[16].
KORVALE_API void xfm2array(Xfm m, double* a16);

/// Copies the flat array a16[16] to `m`.
KORVALE_API void array2xfm(double* a16, Xfm m);

/// Writes four lines to `stream`, each of four elements as "%f  ", with a point in every locale.
KORVALE_API void PrintMatrix(FILE* stream, Xfm m);
