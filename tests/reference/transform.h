#pragma once

#include "math/transform.h"

namespace korvale::reference {

void make_identity(Xfm m);

/// out = a b, summed element by element into a temporary.
void multiply(const Xfm a, const Xfm b, Xfm out);

/// out[i][j] = in[j][i], row by row, directly into `out`.
void transpose(const Xfm in, Xfm out);

/// The upper 3x3 block of `m` applied to `v`.
void transform_vector(const Xfm m, const double* v, double* out);

/// `v` divided by its length, component by component. Returns 1, or -1 for a vector shorter than 1e-06.
int normalize(double* v);

/// x multiplied by itself n - 1 times; 1 for n below 1.
double power(double x, int n);

} // namespace korvale::reference
