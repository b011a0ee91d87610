#include "math/solve.h"

#include "math/internal/solve.h"

using namespace korvale::math;

double TwoByTwoDeterminant(double m[2][2])
{
    return determinant(m[0][0], m[0][1], m[1][0], m[1][1]);
}

int SolveTwoByTwo(double m[2][3], double* x, double* y)
{
    return solve_two_by_two(m, x, y) ? 1 : 0;
}
